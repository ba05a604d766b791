// Fits a naive Bayes classifier on 70 % of a table and scores the rest.
// usage: example_naive_bayes [FILE.csv [TARGET]]

#include <exception>
#include <iostream>

#include <tessel/tessel.h>

using namespace Tessel;

namespace {

void print(const WString& text) { std::cout << Convert::toUtf8(text) << '\n'; }

void run(const WString& path, const WString& target) {
    const DataFrame table = Reader::readText(path);
    const IntVector trainingRows = Util::sample(table.getNumRows(), table.getNumRows() * 7 / 10, 12345,
                                                Sampling::ReplaceType::WITHOUT_REPLACEMENT);
    const DataFrame training = table(trainingRows, Util::all);
    const DataFrame heldOut = table(Util::except(trainingRows), Util::all);
    const Except features = Util::except(StringVector{target});

    Classification::NaiveBayes::Estimator estimator;
    estimator.setName(L"Diagnosis").setSuccessProbability(0.5);
    print(estimator.toDataFrame().toString());

    const auto model = estimator.fit(training(Util::all, features), training(Util::all, target));
    const DataFrameVector report = model.toDataFrameVector();
    print(report.toString());

    const DataFrameColumn actual = heldOut(Util::all, target);
    const DataFrame scored = model.predictWithPosterior(heldOut);
    print(scored.toString(10));
    print(Evaluator::confusion(actual, scored(Util::all, 0)).toString());
    print(L"Accuracy on held-out rows: " +
          Convert::toString(Metrics::accuracy(actual, scored(Util::all, 0)), 4));
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(Convert::fromUtf8(argc > 1 ? argv[1] : "examples/data/breast_cancer.csv"),
            Convert::fromUtf8(argc > 2 ? argv[2] : "diagnosis"));
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << '\n';
        return 1;
    }
}
