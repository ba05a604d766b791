// Brings the numeric columns of a table to one scale, fits a naive Bayes classifier on them, and writes a
// PMML text that takes the unscaled table. usage: example_scaling [FILE.csv [TARGET]]

#include <exception>
#include <iostream>

#include <tessel/tessel.h>

using namespace Tessel;

namespace {

void print(const WString& text) { std::cout << Convert::toUtf8(text) << '\n'; }

void run(const WString& path, const WString& target) {
    const DataFrame table = Reader::readText(path);
    const DataFrame features = table(Util::all, Util::except(StringVector{target}));

    const Scaler::Model scaler =
        Scaler::Estimator().setScalingType(Scaler::ScalingType::STANDARDIZATION).fit(features);
    print(scaler.toString());

    const DataFrame scaled = scaler.transform(features);
    print(Util::summary(scaled).toString(5));

    const auto model = Classification::NaiveBayes::Estimator().fit(scaled, table(Util::all, target));
    auto stored = model;
    stored.fromPMMLString(model.toPMML(scaler));
    print(stored.predict(features).toString(5));
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
