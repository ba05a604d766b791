#include "engine/dt/records.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Tessel::Engine::DT {

namespace {

void sumClassWeights(const Records& records, std::span<const std::uint32_t> members, double* classWeights) {
    std::fill_n(classWeights, static_cast<std::size_t>(records.numClasses), 0.0);
    for (const std::uint32_t member : members)
        classWeights[records.classes[member]] += records.weight(member);
}

void describeClasses(const Records& records, const double* classWeights, Node& node) {
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
void summarizeTargets(const Records& records, std::span<const std::uint32_t> members, Node& node) {
    const double origin = records.targets[members.front()];
    double weight = 0.0, sum = 0.0, squares = 0.0;
    bool isConstant = true;
    for (const std::uint32_t member : members) {
        const double deviation = records.targets[member] - origin;
        isConstant &= deviation == 0.0;
        weight += records.weight(member);
        sum += records.weight(member) * deviation;
    }
    const double mean = origin + sum / weight;
    node.weight = weight;
    node.response = mean;
    if (isConstant) return;
    for (const std::uint32_t member : members) {
        const double deviation = records.targets[member] - mean;
        squares += records.weight(member) * deviation * deviation;
    }
    node.impurity = node.error = squares;
}

}  // namespace

void Records::checkExactness() {
    constexpr double kMaxSum = 67108864.0;  // 2^26: squares have 52 bits
    double sum = 0.0;
    areExact_ = true;
    for (const double weight : weights) {
        sum += weight;
        areExact_ = areExact_ && weight == std::floor(weight);
    }
    areExact_ = areExact_ && sum <= kMaxSum;
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
    if (records.numClasses == 0) return summarizeTargets(records, members, node);
    sumClassWeights(records, members, classWeights);
    describeClasses(records, classWeights, node);
}

void summarizeChildren(const Records& records, std::span<const std::uint32_t> leftMembers,
                       std::span<const std::uint32_t> rightMembers, const Totals& parent, Node& left,
                       Node& right, double* classWeights) {
    const auto numClasses = static_cast<std::size_t>(records.numClasses);
    double* const rightWeights = classWeights + numClasses;
    if (numClasses == 0 || !records.isUnit()) {
        summarize(records, leftMembers, left, classWeights);
        summarize(records, rightMembers, right, rightWeights);
        return;
    }
    const bool isLeftSmaller = leftMembers.size() < rightMembers.size();
    double* const smaller = isLeftSmaller ? classWeights : rightWeights;
    double* const larger = isLeftSmaller ? rightWeights : classWeights;
    sumClassWeights(records, isLeftSmaller ? leftMembers : rightMembers, smaller);
    for (std::size_t k = 0; k < numClasses; ++k) larger[k] = parent.classWeights[k] - smaller[k];
    left.numRecords = static_cast<std::int64_t>(leftMembers.size());
    right.numRecords = static_cast<std::int64_t>(rightMembers.size());
    describeClasses(records, classWeights, left);
    describeClasses(records, rightWeights, right);
}

}  // namespace Tessel::Engine::DT
