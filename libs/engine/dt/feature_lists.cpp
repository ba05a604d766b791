#include "engine/dt/feature_lists.h"

#include <algorithm>

namespace Tessel::Engine::DT {

namespace {

// Up to this many values a histogram is cheaper than a sorted list, whatever the size of the node.
constexpr std::size_t kMaxNumBins = 256;

/// Records by rank, missing ones first, equal ranks in the order of the records.
std::vector<SortedRecord> sortByRank(const std::vector<std::uint32_t>& codes, std::uint32_t numCodes) {
    std::vector<std::uint32_t> next(std::size_t{numCodes} + 2, 0);
    const auto rankOf = [numCodes](std::uint32_t code) { return code == numCodes ? 0 : code + 1; };
    for (const std::uint32_t code : codes) ++next[rankOf(code) + 1];
    for (std::size_t rank = 1; rank < next.size(); ++rank) next[rank] += next[rank - 1];
    std::vector<SortedRecord> sorted(codes.size());
    for (std::uint32_t record = 0; record < codes.size(); ++record) {
        const std::uint32_t rank = rankOf(codes[record]);
        sorted[next[rank]++] = {record, rank};
    }
    return sorted;
}

}  // namespace

FeatureLists makeLists(const TrainingFeature& feature, std::span<const std::uint32_t> tableRows) {
    FeatureLists lists;
    lists.codes.resize(tableRows.size());
    if (feature.isCategorical()) {
        lists.form = FeatureLists::Form::CATEGORIES;
        lists.numCodes = static_cast<std::uint32_t>(feature.numCategories);
        for (std::size_t i = 0; i < tableRows.size(); ++i) {
            const std::int32_t code = feature.codes[tableRows[i]];
            lists.codes[i] = code < 0 ? lists.numCodes : static_cast<std::uint32_t>(code);
        }
        return lists;
    }
    lists.ranks = feature.ranks;
    lists.numCodes = static_cast<std::uint32_t>(feature.ranks->distinct.size());
    for (std::size_t i = 0; i < tableRows.size(); ++i) {
        const std::size_t row = feature.selection
                                    ? static_cast<std::size_t>((*feature.selection)[tableRows[i]])
                                    : std::size_t{tableRows[i]};
        lists.codes[i] = feature.ranks->codes[row];
    }
    if (lists.numCodes <= kMaxNumBins) {
        lists.form = FeatureLists::Form::NUMBERS;
        return lists;
    }
    lists.sorted = sortByRank(lists.codes, lists.numCodes);
    lists.codes = {};
    return lists;
}

void part(std::span<SortedRecord> range, std::size_t numLeft, const std::vector<std::uint8_t>& goesLeft,
          bool keepLeft, bool keepRight, std::vector<SortedRecord>& scratch) {
    SortedRecord* const entries = range.data();
    const std::uint8_t* const isLeft = goesLeft.data();
    if (!keepRight) {
        if (!keepLeft) return;
        SortedRecord* left = entries;
        for (std::size_t i = 0; i < range.size(); ++i) {
            const SortedRecord entry = entries[i];
            *left = entry;
            left += isLeft[entry.record];
        }
        return;
    }
    if (!keepLeft) {
        SortedRecord* right = entries + range.size() - 1;
        for (std::size_t i = range.size(); i-- > 0 && right >= entries + numLeft;) {
            const SortedRecord entry = entries[i];
            *right = entry;
            right -= 1 - isLeft[entry.record];
        }
        return;
    }
    if (scratch.size() < range.size() + 1) scratch.resize(range.size() + 1);
    SortedRecord* left = entries;
    SortedRecord* right = scratch.data();
    for (std::size_t i = 0; i < range.size(); ++i) {
        const SortedRecord entry = entries[i];
        *left = *right = entry;
        left += isLeft[entry.record];
        right += 1 - isLeft[entry.record];
    }
    std::copy(scratch.data(), right, left);
}

}  // namespace Tessel::Engine::DT
