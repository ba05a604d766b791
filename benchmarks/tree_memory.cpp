// Tells how much memory a fit of one tree takes: the peak of the process from before the table is made until
// the tree stands, in units of the table (8 bytes a cell). For systems that tell the peak in
// /proc/self/status.
//
// Usage: tree_memory [ROWS [FEATURES [LEVELS [CLASSES]]]]     (800000 10 10 2; 0 classes: regression)

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <string>

#include <tessel/tessel.h>

using namespace Tessel;

namespace {

/// The most memory that the process has held so far, in bytes.
double peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (word == "VmHWM:") {
            double kilobytes = 0.0;
            status >> kilobytes;
            return 1024.0 * kilobytes;
        }
    return std::numeric_limits<double>::quiet_NaN();
}

template <class Estimator>
void fit(Estimator estimator, const DataFrame& features, const DataFrameColumn& target, int numLevels) {
    estimator.setMaxNumLevels(numLevels);
    estimator.fit(features, target);
}

}  // namespace

int main(int numArguments, char** arguments) {
    const auto argument = [&](int i, int otherwise) {
        return numArguments > i ? std::atoi(arguments[i]) : otherwise;
    };
    const int numRows = argument(1, 800000), numFeatures = argument(2, 10), numLevels = argument(3, 10);
    const int numClasses = argument(4, 2);
    const double before = peakMemory();
    std::mt19937_64 random(12345);
    std::normal_distribution<double> normal;
    DataFrame features(L"table");
    Vector response(static_cast<std::size_t>(numRows));
    for (int i = 0; i < numFeatures; ++i) {
        Vector column;
        column.reserve(static_cast<std::size_t>(numRows));
        for (int row = 0; row < numRows; ++row) {
            column.push_back(normal(random));
            response[static_cast<std::size_t>(row)] += column.back() * normal(random);
        }
        features.append(DataFrameColumn(L"x" + std::to_wstring(i), std::move(column)));
    }
    if (numClasses > 0)
        for (double& value : response) value = value > 0.0 ? 1.0 : value < -1.0 && numClasses > 2 ? 2.0 : 0.0;
    const DataFrameColumn target(L"y", std::move(response));
    const double table = 8.0 * numRows * numFeatures, withTable = peakMemory();
    const auto start = std::chrono::steady_clock::now();
    if (numClasses > 0)
        fit(Classification::DecisionTree::Estimator(), features, target, numLevels);
    else
        fit(Regression::DecisionTree::Estimator(), features, target, numLevels);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("table %.1f MB; peak with target %.2f, with fit %.2f of the table; fit %.3f s\n", table / 1e6,
                (withTable - before) / table, (peakMemory() - before) / table, seconds);
}
