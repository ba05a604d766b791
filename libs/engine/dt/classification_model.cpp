#include <algorithm>
#include <cmath>
#include <utility>

#include <tessel/data/errors.h>

#include "engine/dt/model.h"

namespace Tessel::Engine::DT {

/// Altered priors: the weight of a record times prior(j) total / weight of class j.
void ClassificationModel::alterWeights(Records& records) const {
    if (prior_.empty()) return;
    std::vector<double> classWeights(classes_.size(), 0.0);
    for (std::uint32_t record = 0; record < records.size; ++record)
        classWeights[records.classes[record]] += records.weight(record);
    double total = 0.0, priorSum = 0.0;
    for (std::size_t k = 0; k < prior_.size(); ++k)
        if (classWeights[k] > 0.0) {
            total += classWeights[k];
            priorSum += prior_[k];
        }
    if (!(priorSum > 0.0)) throw ConstraintViolation("prior", "must be above 0 for a class that has records");
    constexpr double kRounding = 1e-12;
    std::vector<double> factors(prior_.size(), 1.0);
    bool isAltered = false;
    for (std::size_t k = 0; k < prior_.size(); ++k) {
        if (classWeights[k] == 0.0) continue;
        factors[k] = prior_[k] / priorSum * total / classWeights[k];
        isAltered = isAltered || std::abs(factors[k] - 1.0) > kRounding;
    }
    if (!isAltered) return;
    if (records.isUnit()) {
        records.weights.assign(records.size, 1.0);
        records.counts.assign(records.size, 1);
    }
    for (std::size_t record = 0; record < records.size; ++record)
        records.weights[record] *= factors[records.classes[record]];
}

void ClassificationModel::fit(const TrainingData& data, std::span<const std::int32_t> classes) {
    constexpr std::size_t kMaxNumClasses = 65536;
    if (classes_.empty() || classes_.size() > kMaxNumClasses)
        throw ValueOutOfRange("#Classes", 1, static_cast<std::int32_t>(kMaxNumClasses));
    if (!prior_.empty() && prior_.size() != classes_.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(classes_.size()),
                                  static_cast<std::int64_t>(prior_.size()));
    for (const double prior : prior_)
        if (!(prior >= 0.0) || std::isinf(prior))
            throw ConstraintViolation("prior", "must be finite and >= 0");
    const auto numClasses = static_cast<std::int32_t>(classes_.size());
    FitCrew threads(data);
    Crew& crew = threads.crew;
    const auto isBad = [&](std::int32_t code) { return code < 0 || code >= numClasses; };
    const double numBad =
        sumByStretches(crew, classes.size(), [&](std::size_t i) { return isBad(classes[i]); });
    if (numBad > 0.0) throw IndexOutOfRange(*std::find_if(classes.begin(), classes.end(), isBad), numClasses);

    PreparedRecords prepared = prepareRecords(data, classes.size(), crew);
    Records& records = prepared.records;
    records.numClasses = numClasses;
    records.classes.resize(records.size);
    forEachStretch(crew, records.size, [&](std::size_t begin, std::size_t end) {
        for (std::size_t record = begin; record < end; ++record)
            records.classes[record] =
                static_cast<std::uint16_t>(classes[prepared.rowOf(static_cast<std::uint32_t>(record))]);
    });
    alterWeights(records);
    records.checkExactness(crew);
    Tree grown = grow(data, prepared, limits_, crew);
    sumClassWeights(grown);
    grown.weightExponent = prepared.weightExponent;
    adopt(std::move(grown), data.features.size());
}

void ClassificationModel::prune(std::span<const Cells> features, std::span<const std::int32_t> classes) {
    if (classes.empty()) throw TooFewNumRows(0);
    checkCells(features, classes.size());
    const Tree& grown = tree();
    const std::size_t numNodes = grown.nodes.size(), numClasses = classes_.size();
    // Records by node and class, the last class for codes that are none of ours.
    const std::size_t width = numClasses + 1;
    std::vector<double> counts(numNodes * width, 0.0);
    std::vector<std::int32_t> leaves(classes.size());
    Scorer(grown, {}).findLeaves(features, leaves);
    std::vector<std::size_t> positions(classes.size());
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const bool isKnown = classes[i] >= 0 && static_cast<std::size_t>(classes[i]) < numClasses;
        positions[i] = isKnown ? static_cast<std::size_t>(classes[i]) : numClasses;
        ++counts[static_cast<std::size_t>(leaves[i]) * width + positions[i]];
    }
    for (std::size_t node = numNodes; node-- > 1;)
        for (std::size_t k = 0; k < width; ++k)
            counts[static_cast<std::size_t>(grown.nodes[node].parent) * width + k] +=
                counts[node * width + k];

    // What a misclassified record of each class adds to the error rate.
    std::vector<double> cost(width, 1.0 / static_cast<double>(classes.size()));
    double priorSum = 0.0;
    for (std::size_t k = 0; k < prior_.size(); ++k) priorSum += counts[k] > 0.0 ? prior_[k] : 0.0;
    const bool hasPriors = priorSum > 0.0;
    if (hasPriors) {
        cost[numClasses] = 0.0;
        for (std::size_t k = 0; k < numClasses; ++k)
            cost[k] = counts[k] > 0.0 ? prior_[k] / priorSum / counts[k] : 0.0;
    }
    std::vector<double> errors(numNodes, 0.0);
    std::vector<std::int64_t> numRecords(numNodes, 0);
    for (std::size_t node = 0; node < numNodes; ++node) {
        const auto own = static_cast<std::size_t>(classOf(static_cast<std::int32_t>(node)));
        double numWrong = 0.0;
        for (std::size_t k = 0; k < width; ++k) {
            numRecords[node] += static_cast<std::int64_t>(counts[node * width + k]);
            if (k == own) continue;
            numWrong += counts[node * width + k];
            errors[node] += counts[node * width + k] * cost[k];
        }
        if (!hasPriors) errors[node] = numWrong;
    }
    PruningSequence sequence = judge(errors, hasPriors ? 1.0 : static_cast<double>(classes.size()));

    const std::size_t best = bestStep(sequence);
    double variance = 0.0;
    if (!hasPriors) {
        const double rate = sequence.steps[best].validationError;
        variance = rate * (1.0 - rate) / static_cast<double>(classes.size());
    } else {  // independent samples of the classes
        const Scorer scorer(grown, sequence.cutsOf(static_cast<std::int32_t>(best)));
        scorer.findLeaves(features, leaves);
        std::vector<double> numWrong(width, 0.0);
        for (std::size_t i = 0; i < classes.size(); ++i)
            if (static_cast<std::size_t>(classOf(leaves[i])) != positions[i]) ++numWrong[positions[i]];
        for (std::size_t k = 0; k < numClasses; ++k)
            variance += cost[k] * cost[k] * numWrong[k] * (1.0 - numWrong[k] / std::max(1.0, counts[k]));
    }
    adoptPruning(std::move(sequence), std::sqrt(variance), std::move(numRecords));
}

std::int32_t ClassificationModel::classOf(std::int32_t node) const {
    const Node& at = tree().nodes[static_cast<std::size_t>(node)];
    if (classes_.size() != 2 || successClass_ < 0) return static_cast<std::int32_t>(at.response);
    const double posterior = tree().classWeightsOf(node)[successClass_] / at.weight;
    return posterior >= cutoff_ ? successClass_ : 1 - successClass_;
}

std::vector<std::int32_t> ClassificationModel::predict(std::span<const Cells> features,
                                                       std::size_t numRecords) const {
    checkCells(features, numRecords);
    std::vector<std::int32_t> predicted(numRecords);
    scorer().findAnswers(
        features, [&](std::int32_t node) { return classOf(node); }, std::span(predicted));
    return predicted;
}

std::vector<double> ClassificationModel::posteriorProbability(std::span<const Cells> features,
                                                              std::size_t numRecords) const {
    const std::vector<std::int32_t> leaves = findNodes(features, numRecords);
    std::vector<double> posteriors;
    posteriors.reserve(numRecords * classes_.size());
    for (const std::int32_t leaf : leaves) {
        const double weight = tree().nodes[static_cast<std::size_t>(leaf)].weight;
        for (std::size_t k = 0; k < classes_.size(); ++k)
            posteriors.push_back(tree().classWeightsOf(leaf)[k] / weight);
    }
    return posteriors;
}

std::vector<double> ClassificationModel::pruningLog() const {
    std::vector<double> log;
    for (const PruningStep& step : pruningSteps()) log.push_back(step.validationError);
    return log;
}

}  // namespace Tessel::Engine::DT
