// Times one decision tree: growth, scoring of the training rows.
//
// Usage: tree_benchmark FILE ROWS FEATURES CATEGORICAL CLASSES LEVELS RUNS
// FILE holds doubles column by column: FEATURES columns, of which the last CATEGORICAL are codes, then the
// target: codes when CLASSES > 0, else numbers. LEVELS 0 means no limit. Prints one line of JSON with the
// best seconds of RUNS runs. benchmarks/trees_vs_peers.py makes the files and times the same work elsewhere.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <vector>

#include "engine/dt/model.h"

namespace {

using namespace Tessel;
namespace DT = Engine::DT;

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::vector<std::int32_t> toCodes(const std::vector<double>& numbers) {
    std::vector<std::int32_t> codes;
    codes.reserve(numbers.size());
    for (const double number : numbers) codes.push_back(static_cast<std::int32_t>(number));
    return codes;
}

struct Seconds {
    double grow = 1e300, score = 1e300;
    std::size_t numNodes = 0;
};

template <class Model, class Target>
void run(Model model, int numLevels, const std::vector<std::vector<double>>& numbers,
         const std::vector<std::vector<std::int32_t>>& codes, const Target& target, Seconds& best) {
    std::vector<std::shared_ptr<ColumnCells>> columns;
    for (const auto& column : numbers) columns.push_back(ColumnCells::ofNumbers(column));
    auto start = std::chrono::steady_clock::now();
    DT::TrainingData data;
    data.keepRanks = false;
    data.numRows = static_cast<int>(target.size());
    std::vector<DT::Cells> cells;
    for (const auto& column : columns) {
        data.features.push_back(DT::TrainingFeature::numeric(*column));
        cells.push_back({.numbers = column->numbers(), .codes = {}});
    }
    for (const auto& column : codes) {
        const std::int32_t numCategories = *std::max_element(column.begin(), column.end()) + 1;
        data.features.push_back(DT::TrainingFeature::categorical(column, numCategories));
        cells.push_back({.numbers = {}, .codes = column});
    }
    DT::Limits limits;
    if (numLevels > 0) limits.maxNumLevels = numLevels;
    model.setLimits(limits);
    model.fit(data, target);
    best.grow = std::min(best.grow, secondsSince(start));
    best.numNodes = model.tree().nodes.size();

    start = std::chrono::steady_clock::now();
    const auto predicted = model.predict(cells, target.size());
    best.score = std::min(best.score, secondsSince(start));
}

}  // namespace

int main(int numArguments, char** arguments) {
    if (numArguments != 8) return std::fputs("see the head of the source for the arguments\n", stderr), 1;
    const auto numRows = static_cast<std::size_t>(std::atoll(arguments[2]));
    const int numFeatures = std::atoi(arguments[3]), numCategorical = std::atoi(arguments[4]);
    const int numClasses = std::atoi(arguments[5]), numLevels = std::atoi(arguments[6]);
    std::ifstream file(arguments[1], std::ios::binary);
    std::vector<std::vector<double>> numbers;
    std::vector<std::vector<std::int32_t>> codes;
    std::vector<double> column(numRows);
    for (int i = 0; i <= numFeatures; ++i) {
        file.read(reinterpret_cast<char*>(column.data()),
                  static_cast<std::streamsize>(numRows * sizeof(double)));
        if (i < numFeatures - numCategorical)
            numbers.push_back(column);
        else if (i < numFeatures)
            codes.push_back(toCodes(column));
    }
    if (!file) return std::fputs("cannot read the file\n", stderr), 1;

    Seconds best;
    for (int repetition = 0; repetition < std::atoi(arguments[7]); ++repetition) {
        DT::ClassificationModel classifier;
        classifier.setClasses(std::vector<WString>(static_cast<std::size_t>(numClasses)));
        if (numClasses > 0)
            run(classifier, numLevels, numbers, codes, toCodes(column), best);
        else
            run(DT::RegressionModel(), numLevels, numbers, codes, column, best);
    }
    std::printf("{\"grow\": %.4f, \"score\": %.5f, \"nodes\": %zu}\n", best.grow, best.score, best.numNodes);
}
