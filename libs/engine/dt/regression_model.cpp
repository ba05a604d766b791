#include <cmath>

#include <tessel/data/errors.h>

#include "engine/dt/model.h"

namespace Tessel::Engine::DT {

namespace {

/// Count, mean and sum of squares about the mean of validation targets, merged from child to parent (Chan,
/// Golub & LeVeque, Algorithms for computing the sample variance, The American Statistician 37, 1983).
struct Moments {
    double count = 0.0, mean = 0.0, squares = 0.0;

    void add(const Moments& other) {
        if (other.count == 0.0) return;
        const double total = count + other.count, difference = other.mean - mean;
        squares += other.squares + difference * difference * (count * other.count / total);
        mean += difference * (other.count / total);
        count = total;
    }
    double squaresAbout(double center) const { return squares + count * (mean - center) * (mean - center); }
};

void requireFinite(std::span<const double> targets) {
    for (const double target : targets)
        if (!std::isfinite(target)) throw ConstraintViolation("target", "must be finite numbers");
}

}  // namespace

void RegressionModel::fit(const TrainingData& data, std::span<const double> targets) {
    requireFinite(targets);
    PreparedRecords prepared = prepareRecords(data, targets.size());
    prepared.records.targets.reserve(prepared.records.size);
    for (std::uint32_t record = 0; record < prepared.records.size; ++record)
        prepared.records.targets.push_back(targets[prepared.rowOf(record)]);
    adopt(grow(data, prepared, limits_), data.features.size());
}

void RegressionModel::prune(std::span<const Cells> features, std::span<const double> targets) {
    if (targets.empty()) throw TooFewNumRows(0);
    requireFinite(targets);
    checkCells(features, targets.size());
    const Tree& grown = tree();
    std::vector<std::int32_t> leaves(targets.size());
    Scorer(grown, {}).findLeaves(features, leaves);
    std::vector<Moments> moments(grown.nodes.size());
    for (std::size_t i = 0; i < targets.size(); ++i)
        moments[static_cast<std::size_t>(leaves[i])].add({1.0, targets[i], 0.0});
    for (std::size_t node = moments.size(); node-- > 1;)
        moments[static_cast<std::size_t>(grown.nodes[node].parent)].add(moments[node]);
    std::vector<double> errors(moments.size());
    std::vector<std::int64_t> numRecords(moments.size());
    for (std::size_t node = 0; node < moments.size(); ++node) {
        errors[node] = moments[node].squaresAbout(grown.nodes[node].response);
        numRecords[node] = static_cast<std::int64_t>(moments[node].count);
    }
    const auto count = static_cast<double>(targets.size());
    PruningSequence sequence = judge(errors, count);

    // Variance of a mean of squared errors.
    Scorer(grown, sequence.cutsOf(static_cast<std::int32_t>(bestStep(sequence))))
        .findLeaves(features, leaves);
    Moments squaredErrors;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const double error = targets[i] - grown.nodes[static_cast<std::size_t>(leaves[i])].response;
        squaredErrors.add({1.0, error * error, 0.0});
    }
    adoptPruning(std::move(sequence), std::sqrt(squaredErrors.squares / count / count),
                 std::move(numRecords));
}

std::vector<double> RegressionModel::predict(std::span<const Cells> features, std::size_t numRecords) const {
    std::vector<double> predicted;
    predicted.reserve(numRecords);
    for (const std::int32_t leaf : findNodes(features, numRecords))
        predicted.push_back(tree().nodes[static_cast<std::size_t>(leaf)].response);
    return predicted;
}

std::vector<RegressionModel::Cost> RegressionModel::complexityLog() const {
    std::vector<Cost> log;
    for (const PruningStep& step : pruningSteps()) log.push_back({step.complexity, step.validationError});
    return log;
}

}  // namespace Tessel::Engine::DT
