#include "engine/dt/records.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "data/util/interleaved_sum.h"

namespace Tessel::Engine::DT {

namespace {

void sumClassWeights(const Records& records, std::span<const std::uint32_t> members, double* classWeights) {
    std::fill_n(classWeights, static_cast<std::size_t>(records.numClasses), 0.0);
    for (const std::uint32_t member : members)
        classWeights[records.classes[member]] += records.weight(member);
}

void sumAllClassWeights(const Records& records, Crew& crew, double* classWeights) {
    const auto numClasses = static_cast<std::size_t>(records.numClasses);
    const std::size_t numStretches = numStretchesOf(records.size);
    std::fill_n(classWeights, numClasses, 0.0);
    if (numStretches * numClasses > records.size) {
        for (std::uint32_t record = 0; record < records.size; ++record)
            classWeights[records.classes[record]] += records.weight(record);
        return;
    }
    std::vector<double> sums(numStretches * numClasses);  // by stretch
    forEachStretch(crew, records.size, [&](std::size_t begin, std::size_t end) {
        double* const own = sums.data() + begin / kSizeOfStretches * numClasses;
        for (std::size_t i = begin; i < end; ++i)
            own[records.classes[i]] += records.weight(static_cast<std::uint32_t>(i));
    });
    for (std::size_t i = 0; i < sums.size(); ++i) classWeights[i % numClasses] += sums[i];
}

void describeClasses(const Records& records, const double* classWeights, Node& node) {
    node.weight = 0.0;
    const auto numClasses = static_cast<std::size_t>(records.numClasses);
    std::size_t most = 0;
    double squares = 0.0;
    for (std::size_t k = 0; k < numClasses; ++k) {
        node.weight += classWeights[k];
        squares += classWeights[k] * classWeights[k];
        if (classWeights[k] > classWeights[most]) most = k;
    }
    node.response = static_cast<double>(most);
    const bool isPure = classWeights[most] == node.weight;
    node.error = isPure ? 0.0 : node.weight - classWeights[most];
    node.impurity = isPure ? 0.0 : std::max(0.0, node.weight - squares / node.weight);
}

/// Two passes, the second about the mean; a node of equal targets has impurity 0 exactly.
/// @param sumOf  adds up a term of the members.
template <class SumOf>
void summarizeTargets(const Records& records, std::uint32_t first, SumOf&& sumOf, Node& node) {
    const double origin = records.targets[first];
    const double sum = sumOf(
        [&](std::uint32_t member) { return records.weight(member) * (records.targets[member] - origin); });
    node.weight = records.isUnit() ? static_cast<double>(node.numRecords)
                                   : sumOf([&](std::uint32_t member) { return records.weights[member]; });
    const double mean = node.response = origin + sum / node.weight;
    node.impurity = node.error = sumOf([&](std::uint32_t member) {
        const double deviation = records.targets[member] - mean;
        return records.weight(member) * deviation * deviation;
    });
}

}  // namespace

void Records::checkExactness(Crew& crew) {
    constexpr double kMaxSum = 67108864.0;  // 2^26: squares have 52 bits
    // A fraction adds more than any sum may be.
    const auto sizeOf = [&](std::size_t i) {
        return weights[i] == std::floor(weights[i]) ? weights[i] : 2.0 * kMaxSum;
    };
    areExact_ = sumByStretches(crew, weights.size(), sizeOf) <= kMaxSum;
}

int scaleExponent(double largest) {
    constexpr int kMaxUnscaled = 100;
    if (!(largest > 0.0)) return 0;
    const int exponent = std::ilogb(largest);
    return std::abs(exponent) <= kMaxUnscaled ? 0 : exponent;
}

void summarize(const Records& records, std::span<const std::uint32_t> members, Node& node,
               double* classWeights) {
    node.weight = node.impurity = node.error = node.response = 0.0;
    node.numRecords = static_cast<std::int64_t>(members.size());
    if (!records.isUnit()) {
        node.numRecords = 0;
        for (const std::uint32_t member : members) node.numRecords += records.counts[member];
    }
    if (records.numClasses == 0)
        return summarizeTargets(
            records, members.front(),
            [&](auto&& term) {
                constexpr std::size_t kNumParts = 8;
                return Numeric::interleavedSum<kNumParts>(members.size(),
                                                          [&](std::size_t i) { return term(members[i]); });
            },
            node);
    sumClassWeights(records, members, classWeights);
    describeClasses(records, classWeights, node);
}

void summarizeAll(const Records& records, Crew& crew, Node& node, double* classWeights) {
    node.weight = node.impurity = node.error = node.response = 0.0;
    node.numRecords = static_cast<std::int64_t>(records.size);
    if (!records.isUnit())
        node.numRecords = std::accumulate(records.counts.begin(), records.counts.end(), std::int64_t{0});
    if (records.numClasses == 0)
        return summarizeTargets(
            records, 0,
            [&](auto&& term) {
                return sumByStretches(crew, records.size,
                                      [&](std::size_t i) { return term(static_cast<std::uint32_t>(i)); });
            },
            node);
    sumAllClassWeights(records, crew, classWeights);
    describeClasses(records, classWeights, node);
}

void summarize(const Records& records, std::span<const std::uint32_t> members, const TargetSums& sums,
               double origin, Node& node) {
    // The squares about the mean are what is left when those of the mean are taken away.
    constexpr double kMinShareLeft = 0.125;
    const auto numRecords = static_cast<double>(members.size());
    const double left = sums.squares - sums.sum * sums.sum / numRecords;
    if (left < kMinShareLeft * sums.squares) return summarize(records, members, node, nullptr);
    node.numRecords = static_cast<std::int64_t>(members.size());
    node.weight = numRecords;
    node.response = origin + sums.sum / numRecords;
    node.impurity = node.error = left;
}

void summarizeChildren(const Records& records, std::span<const std::uint32_t> leftMembers,
                       std::span<const std::uint32_t> rightMembers, const Totals& parent, Node& left,
                       Node& right, double* classWeights) {
    const auto numClasses = static_cast<std::size_t>(records.numClasses);
    double* const rightWeights = classWeights + numClasses;
    if (numClasses == 0 || !records.areExact()) {
        summarize(records, leftMembers, left, classWeights);
        summarize(records, rightMembers, right, rightWeights);
        return;
    }
    const bool isLeftSmaller = leftMembers.size() < rightMembers.size();
    double* const smallerWeights = isLeftSmaller ? classWeights : rightWeights;
    double* const largerWeights = isLeftSmaller ? rightWeights : classWeights;
    Node& smaller = isLeftSmaller ? left : right;
    Node& larger = isLeftSmaller ? right : left;
    summarize(records, isLeftSmaller ? leftMembers : rightMembers, smaller, smallerWeights);
    for (std::size_t k = 0; k < numClasses; ++k)
        largerWeights[k] = parent.classWeights[k] - smallerWeights[k];
    larger.numRecords = parent.numRecords - smaller.numRecords;
    describeClasses(records, largerWeights, larger);
}

}  // namespace Tessel::Engine::DT
