#include "evaluator/score_groups.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "evaluator/label_pairs.h"

namespace Tessel {
namespace {

struct RankedRow {
    std::uint64_t key;  // ascending keys are descending scores
    std::uint32_t row;
};

std::uint64_t descendingKey(double score) {
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    const auto bits = std::bit_cast<std::uint64_t>(score + 0.0);  // makes a negative zero positive
    // The bits of positive doubles ascend with the value; negative ones descend and lie above them.
    return (bits & kSign) ? bits : ~(bits | kSign);
}

/// Stable sort by digits of 11 bits, lowest first; digits that all keys share cost nothing.
void sortByKey(std::vector<RankedRow>& rows) {
    constexpr int kDigitBits = 11;
    constexpr std::size_t kNumDigits = 6;
    constexpr std::size_t kNumBuckets = std::size_t{1} << kDigitBits;
    const auto bucketOf = [](std::uint64_t key, std::size_t digit) {
        return static_cast<std::size_t>(key >> (digit * kDigitBits)) & (kNumBuckets - 1);
    };

    std::vector<std::array<std::uint32_t, kNumBuckets>> counts(kNumDigits);
    for (const RankedRow& row : rows)
        for (std::size_t digit = 0; digit < kNumDigits; ++digit) ++counts[digit][bucketOf(row.key, digit)];

    std::vector<RankedRow> sorted(rows.size());
    for (std::size_t digit = 0; digit < kNumDigits; ++digit) {
        auto& positions = counts[digit];
        if (rows.empty() || positions[bucketOf(rows.front().key, digit)] == rows.size()) continue;
        std::uint32_t position = 0;
        for (std::uint32_t& entry : positions) position += std::exchange(entry, position);
        for (const RankedRow& row : rows) sorted[positions[bucketOf(row.key, digit)]++] = row;
        rows.swap(sorted);
    }
}

}  // namespace

std::vector<ScoreGroup> groupByScore(std::span<const double> scores, std::span<const double> responses,
                                     const Vector& weights) {
    requireSameNumRows(responses.size(), scores.size());
    const RowWeights rowWeights(weights, scores.size());
    std::vector<RankedRow> rows;
    rows.reserve(scores.size());
    for (std::size_t row = 0; row < scores.size(); ++row)
        if (!std::isnan(scores[row]) && !std::isnan(responses[row]) && rowWeights[row] > 0.0)
            rows.push_back({descendingKey(scores[row]), static_cast<std::uint32_t>(row)});
    if (rows.empty()) throw TooFewNumRows();
    sortByKey(rows);

    std::vector<ScoreGroup> groups;
    for (std::size_t first = 0, next = 0; first < rows.size(); first = next) {
        CompensatedSum weight;
        CompensatedSum response;
        for (; next < rows.size() && rows[next].key == rows[first].key; ++next) {
            const std::size_t row = rows[next].row;
            weight.add(rowWeights[row]);
            response.add(rowWeights[row] * responses[row]);
        }
        groups.push_back({scores[rows[first].row], weight.value(), response.value()});
    }
    return groups;
}

std::vector<ScoreGroup> groupByScore(const Metrics::Labels& actual, const Metrics::Numbers& scores,
                                     const WString& successClass, const Vector& weights) {
    const auto cells = labelCells(actual);
    const auto codes = cells->codes();
    const std::int32_t success = successCode(*cells, successClass);
    std::vector<double> responses(codes.size());
    for (std::size_t row = 0; row < codes.size(); ++row)
        responses[row] = codes[row] == kMissingCode ? std::numeric_limits<double>::quiet_NaN()
                                                    : static_cast<double>(codes[row] == success);
    return groupByScore(scores.values(), responses, weights);
}

}  // namespace Tessel
