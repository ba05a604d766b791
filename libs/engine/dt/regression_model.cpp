#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

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

/// The greatest magnitude, or infinity where not all targets are finite.
double largestOf(std::span<const double> targets) {
    // Several at once, without a branch.
    std::array<double, 8> largest{};
    std::size_t numInfinite = 0;
    const auto look = [&](double target, double& most) {
        const double magnitude = std::abs(target);
        numInfinite += !(magnitude <= std::numeric_limits<double>::max());
        most = magnitude > most ? magnitude : most;
    };
    std::size_t i = 0;
    for (; i + largest.size() <= targets.size(); i += largest.size())
        for (std::size_t part = 0; part < largest.size(); ++part) look(targets[i + part], largest[part]);
    for (; i < targets.size(); ++i) look(targets[i], largest[0]);
    return numInfinite > 0 ? std::numeric_limits<double>::infinity()
                           : *std::max_element(largest.begin(), largest.end());
}

/// Returns the greatest magnitude. @throws ConstraintViolation for missing and infinite targets.
double requireFinite(std::span<const double> targets, Crew& crew) {
    std::vector<double> largest(numStretchesOf(targets.size()));
    forEachStretch(crew, targets.size(), [&](std::size_t begin, std::size_t end) {
        largest[begin / kSizeOfStretches] = largestOf(targets.subspan(begin, end - begin));
    });
    const double all = largestOf(largest);
    if (std::isinf(all)) throw ConstraintViolation("target", "must be finite numbers");
    return all;
}

}  // namespace

void RegressionModel::fit(const TrainingData& data, std::span<const double> targets) {
    FitCrew threads(data);
    Crew& crew = threads.crew;
    double largest = requireFinite(targets, crew);
    PreparedRecords prepared = prepareRecords(data, targets.size(), crew);
    std::span<const double>& used = prepared.records.targets = targets;
    if (!prepared.tableRows.empty()) {
        prepared.targets.reserve(prepared.tableRows.size());
        for (const std::uint32_t row : prepared.tableRows) prepared.targets.push_back(targets[row]);
        used = prepared.targets;
        largest = requireFinite(used, crew);
    }
    const int exponent = scaleExponent(largest);
    if (exponent != 0) {
        if (prepared.targets.empty()) prepared.targets.assign(used.begin(), used.end());
        for (double& target : prepared.targets) target = std::ldexp(target, -exponent);
        used = prepared.targets;
    }
    Tree tree = grow(data, prepared, limits_, crew);
    if (exponent != 0)
        for (double& answer : data.fitted) answer = std::ldexp(answer, exponent);
    tree.weightExponent = prepared.weightExponent;
    tree.targetExponent = exponent;
    if (exponent != 0)
        for (Node& node : tree.nodes) node.response = std::ldexp(node.response, exponent);
    adopt(std::move(tree), data.features.size());
}

void RegressionModel::prune(std::span<const Cells> features, std::span<const double> targets) {
    if (targets.empty()) throw TooFewNumRows(0);
    Crew alone(1);
    requireFinite(targets, alone);
    checkCells(features, targets.size());
    const Tree& grown = tree();
    const auto scaled = [&](double value) { return std::ldexp(value, -grown.targetExponent); };
    std::vector<std::int32_t> leaves(targets.size());
    Scorer(grown, {}).findLeaves(features, leaves);
    std::vector<Moments> moments(grown.nodes.size());
    for (std::size_t i = 0; i < targets.size(); ++i)
        moments[static_cast<std::size_t>(leaves[i])].add({1.0, scaled(targets[i]), 0.0});
    for (std::size_t node = moments.size(); node-- > 1;)
        moments[static_cast<std::size_t>(grown.nodes[node].parent)].add(moments[node]);
    std::vector<double> errors(moments.size());
    std::vector<std::int64_t> numRecords(moments.size());
    for (std::size_t node = 0; node < moments.size(); ++node) {
        errors[node] = moments[node].squaresAbout(scaled(grown.nodes[node].response));
        numRecords[node] = static_cast<std::int64_t>(moments[node].count);
    }
    const auto count = static_cast<double>(targets.size());
    PruningSequence sequence = judge(errors, count);

    // Variance of a mean of squared errors.
    Scorer(grown, sequence.cutsOf(static_cast<std::int32_t>(bestStep(sequence))))
        .findLeaves(features, leaves);
    Moments squaredErrors;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const double error =
            scaled(targets[i]) - scaled(grown.nodes[static_cast<std::size_t>(leaves[i])].response);
        squaredErrors.add({1.0, error * error, 0.0});
    }
    adoptPruning(std::move(sequence), std::sqrt(squaredErrors.squares / count / count),
                 std::move(numRecords));
}

void RegressionModel::predict(std::span<const Cells> features, std::span<double> predictions) const {
    checkCells(features, predictions.size());
    const auto responseOf = [&](std::int32_t node) {
        return tree().nodes[static_cast<std::size_t>(node)].response;
    };
    scorer().findAnswers(features, responseOf, predictions);
}

std::vector<double> RegressionModel::predict(std::span<const Cells> features, std::size_t numRecords) const {
    std::vector<double> predictions(numRecords);
    predict(features, predictions);
    return predictions;
}

std::vector<RegressionModel::Cost> RegressionModel::complexityLog() const {
    std::vector<Cost> log;
    const int exponent = 2 * tree().targetExponent;
    for (const PruningStep& step : pruningSteps())
        log.push_back({std::ldexp(step.complexity, exponent), std::ldexp(step.validationError, exponent)});
    return log;
}

}  // namespace Tessel::Engine::DT
