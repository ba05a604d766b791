#include <iostream>

#include <tessel/tessel.h>

// A host: fits a classifier on a small table through the installed SDK and checks what it learned.
int main() {
    using namespace Tessel;
    try {
        DataFrame features(L"weather");
        features.append(DataFrameColumn(L"temperature", Vector{29, 27, 28, 21, 20, 18, 22, 24}));
        features.append(DataFrameColumn(L"outlook", StringVector{L"sunny", L"sunny", L"overcast", L"rainy",
                                                                 L"rainy", L"overcast", L"sunny", L"rainy"}));
        const DataFrameColumn played(
            L"played", StringVector{L"no", L"no", L"yes", L"yes", L"yes", L"yes", L"no", L"yes"});

        const auto model =
            Classification::NaiveBayes::Estimator().setLaplaceSmoothing(1.0).fit(features, played);
        const Supervised::Classification::Modelable& anyClassifier = model;
        const DataFrameColumn predicted = anyClassifier.predict(features)(Util::all, 0);
        const double accuracy = Metrics::accuracy(played, predicted);
        std::cout << Convert::toUtf8(model.toString()) << "accuracy " << accuracy << '\n';
        return accuracy == 1.0 ? 0 : 1;
    } catch (const Exception& error) {
        std::cerr << "error " << error.code() << ": " << error.what() << '\n';
        return 1;
    }
}
