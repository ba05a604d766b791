// Times one ensemble of trees: fit and scoring of the training rows.
//
// Usage: ensemble_benchmark FILE ROWS FEATURES CLASSES METHOD LEARNERS LEVELS SELECTED RUNS
// FILE holds doubles column by column: FEATURES columns, then the target, codes when CLASSES > 0. METHOD is
// bagging, randomTrees or boosting (SAMME for classes); LEVELS 0 means no limit, SELECTED 0 all features.
// Prints one line of JSON: the best seconds of RUNS runs, the share of training rows predicted right or R2,
// the memory of the program before the fit and at its peak.
// benchmarks/ensembles_vs_peers.py makes the files and times the same work elsewhere.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/decision_tree.h>
#include <tessel/evaluator/metrics.h>
#include <tessel/random_trees.h>

namespace {

using namespace Tessel;

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Megabytes by the name of a line of /proc/self/status, where there is one.
double megabytes(const std::string& name) {
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;)
        if (double kilobytes = 0.0; word == name + ":" && file >> kilobytes) return kilobytes / 1024.0;
    return 0.0;
}

struct Task {
    DataFrame features;
    DataFrameColumn target;
    std::string method;
    int numLearners = 0, numLevels = 0, numSelected = 0, numRuns = 1;
};

template <class Estimator>
void run(const Task& task, const Estimator& estimator) {
    const double before = megabytes("VmRSS");
    double fit = 1e300, score = 1e300, quality = 0.0;
    for (int i = 0; i < task.numRuns; ++i) {
        auto start = std::chrono::steady_clock::now();
        const auto model = estimator.fit(task.features, task.target);
        fit = std::min(fit, secondsSince(start));
        start = std::chrono::steady_clock::now();
        const DataFrameColumn predicted = model.predict(task.features)(Util::all, 0);
        score = std::min(score, secondsSince(start));
        quality = task.target.isNumeric() ? Metrics::R2(task.target, predicted)
                                          : Metrics::accuracy(task.target, predicted);
    }
    std::printf("{\"fit\": %.6g, \"score\": %.6g, \"quality\": %.6g, \"before\": %.6g, \"peak\": %.6g}\n",
                fit, score, quality, before, megabytes("VmHWM"));
}

template <class Tree>
Tree limited(const Task& task, Tree tree) {
    if (task.numLevels > 0) tree.setMaxNumLevels(task.numLevels);
    if (task.numSelected > 0) tree.setNumSelectedFeatures(task.numSelected);
    return tree;
}

/// The families of one kind, by their public names.
template <class Tree, class Bag, class Boost, class Forest>
void runKind(const Task& task, Boost boosting) {
    if (task.method == "randomTrees")
        run(task, limited(task, Forest().setNumWeakLearners(task.numLearners)));
    else if (task.method == "bagging")
        run(task, Bag().setBaseEstimator(limited(task, Tree())).setNumWeakLearners(task.numLearners));
    else
        run(task, boosting.setBaseEstimator(limited(task, Tree())).setNumWeakLearners(task.numLearners));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 10) return 2;
    const int numRows = std::atoi(argv[2]), numFeatures = std::atoi(argv[3]), numClasses = std::atoi(argv[4]);
    Task task{.features = {},
              .target = {},
              .method = argv[5],
              .numLearners = std::atoi(argv[6]),
              .numLevels = std::atoi(argv[7]),
              .numSelected = std::atoi(argv[8]),
              .numRuns = std::atoi(argv[9])};
    std::ifstream file(argv[1], std::ios::binary);
    const auto next = [&] {
        Vector column(static_cast<std::size_t>(numRows));
        file.read(reinterpret_cast<char*>(column.data()),
                  static_cast<std::streamsize>(column.size() * sizeof(double)));
        return column;
    };
    for (int i = 0; i < numFeatures; ++i)
        task.features.append(DataFrameColumn(L"x" + std::to_wstring(i), next()));
    Vector target = next();
    if (!file) return 1;
    if (numClasses > 0) {
        StringVector labels;
        for (const double code : target)
            labels.push_back(L"class " + std::to_wstring(static_cast<int>(code)));
        task.target = DataFrameColumn(L"y", labels);
        runKind<Classification::DecisionTree::Estimator, Classification::Bagging::Estimator,
                Classification::Boosting::Estimator, Classification::RandomTrees::Estimator>(
            task,
            Classification::Boosting::Estimator().setMethod(Classification::Boosting::MethodType::SAMME));
    } else {
        task.target = DataFrameColumn(L"y", std::move(target));
        runKind<Regression::DecisionTree::Estimator, Regression::Bagging::Estimator,
                Regression::Boosting::Estimator, Regression::RandomTrees::Estimator>(
            task, Regression::Boosting::Estimator().setStepSize(0.1));
    }
}
