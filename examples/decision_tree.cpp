// Grows a classification tree on half of a table, prunes it with a quarter and judges it by the rest.
// usage: example_decision_tree [FILE.csv [TARGET]]

#include <exception>
#include <iostream>

#include <tessel/tessel.h>

using namespace Tessel;

namespace {

void print(const WString& text) { std::cout << Convert::toUtf8(text) << '\n'; }

void run(const WString& path, const WString& target) {
    const DataFrame table = Reader::readText(path);
    const int numRows = table.getNumRows();
    const IntVector order = Util::sample(numRows, numRows, 12345, Sampling::ReplaceType::WITHOUT_REPLACEMENT);
    const auto part = [&](int from, int to) {
        return table(Util::bind(order, Util::range(from, to - 1)), Util::all);
    };
    const DataFrame training = part(0, numRows / 2);
    const DataFrame validation = part(numRows / 2, numRows * 3 / 4);
    const DataFrame heldOut = part(numRows * 3 / 4, numRows);
    const Except features = Util::except(StringVector{target});

    Classification::DecisionTree::Estimator estimator;
    estimator.setMinNumRecordsInLeaves(3).setPrunedTreeType(DecisionTree::TreeType::BEST_PRUNED);
    const auto model = estimator.fit(training(Util::all, features), validation(Util::all, features),
                                     training(Util::all, target), validation(Util::all, target));

    print(model.getPruningLog().toString());
    print(model.treeToString(10));
    for (const WString& rule : model.treeRules(10)) print(rule);

    const DataFrameColumn actual = heldOut(Util::all, target);
    const DataFrameColumn predicted = model.predict(heldOut)(Util::all, 0);
    print(L"\n" + Evaluator::classificationSummary(actual, predicted).toString());
    print(L"Accuracy on held-out rows: " + Convert::toString(Metrics::accuracy(actual, predicted), 4));
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
