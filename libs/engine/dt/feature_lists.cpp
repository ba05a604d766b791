#include "engine/dt/feature_lists.h"

#include <algorithm>
#include <utility>

namespace Tessel::Engine::DT {

namespace {

// Up to this many values a histogram is cheaper than a sorted list, whatever the size of the node.
constexpr std::size_t kMaxNumBins = 256;

/// Records by code, missing ones first, equal codes in the order of the records.
template <class CodeOf>
std::vector<SortedRecord> sortByCode(std::uint32_t numRecords, std::uint32_t numCodes, CodeOf codeOf) {
    // Where the next record of a code goes, times two, and 1 until one went there.
    std::vector<std::uint32_t> next(std::size_t{numCodes} + 1, 0);
    for (std::uint32_t record = 0; record < numRecords; ++record) ++next[codeOf(record)];
    std::uint32_t begin = next[numCodes];
    for (std::uint32_t code = 0; code < numCodes; ++code) begin += std::exchange(next[code], begin << 1 | 1);
    next[numCodes] = 0;
    std::vector<SortedRecord> sorted(numRecords);
    for (std::uint32_t record = 0; record < numRecords; ++record) {
        std::uint32_t& place = next[codeOf(record)];
        sorted[place >> 1] = {record, place & 1};
        place = (place & ~1u) + 2;
    }
    return sorted;
}

}  // namespace

FeatureLists makeLists(const TrainingFeature& feature, std::span<const std::uint32_t> tableRows) {
    FeatureLists lists;
    if (feature.isCategorical()) {
        lists.form = FeatureLists::Form::CATEGORIES;
        lists.numCodes = static_cast<std::uint32_t>(feature.numCategories);
        lists.codes.resize(tableRows.size());
        for (std::size_t i = 0; i < tableRows.size(); ++i) {
            const std::int32_t code = feature.codes[tableRows[i]];
            lists.codes[i] = code < 0 ? lists.numCodes : static_cast<std::uint32_t>(code);
        }
        return lists;
    }
    lists.numCodes = feature.ranks->numDistinct;
    const auto rankedRow = [&](std::uint32_t record) { return feature.rankedRow(tableRows[record]); };
    const auto codeOf = [&](std::uint32_t record) { return feature.ranks->codes[rankedRow(record)]; };
    const auto numRecords = static_cast<std::uint32_t>(tableRows.size());
    if (lists.numCodes > kMaxNumBins) {
        lists.sorted = sortByCode(numRecords, lists.numCodes, codeOf);
        return lists;
    }
    lists.form = FeatureLists::Form::NUMBERS;
    lists.codes.resize(numRecords);
    lists.values.resize(std::size_t{lists.numCodes} + 1);
    for (std::uint32_t record = 0; record < numRecords; ++record) {
        lists.codes[record] = codeOf(record);
        lists.values[lists.codes[record]] = feature.numbers[rankedRow(record)];
    }
    return lists;
}

void part(std::span<SortedRecord> range, const std::vector<std::uint8_t>& goesLeft, bool keepLeft,
          bool keepRight, std::vector<SortedRecord>& scratch) {
    if (!keepLeft && !keepRight) return;
    SortedRecord* const entries = range.data();
    const std::uint8_t* const goesLeftOf = goesLeft.data();
    if (!keepRight) {
        SortedRecord* left = entries;
        std::uint32_t startsLeft = 0;
        for (std::size_t i = 0; i < range.size(); ++i) {
            const SortedRecord entry = entries[i];
            const std::uint32_t isLeft = goesLeftOf[entry.record()];
            startsLeft |= entry.startsValue();
            *left = {entry.record(), startsLeft};
            left += isLeft;
            startsLeft &= 1 - isLeft;
        }
        return;
    }
    // A value that starts in the range starts on both sides, with the next entry that goes there.
    if (scratch.size() < range.size() + 1) scratch.resize(range.size() + 1);
    SortedRecord* left = entries;
    SortedRecord* right = scratch.data();
    std::uint32_t startsLeft = 0, startsRight = 0;
    for (std::size_t i = 0; i < range.size(); ++i) {
        const SortedRecord entry = entries[i];
        const std::uint32_t isLeft = goesLeftOf[entry.record()];
        startsLeft |= entry.startsValue();
        startsRight |= entry.startsValue();
        *left = {entry.record(), startsLeft};
        *right = {entry.record(), startsRight};
        left += isLeft;
        right += 1 - isLeft;
        startsLeft &= 1 - isLeft;
        startsRight &= isLeft;
    }
    std::copy(scratch.data(), right, left);
}

}  // namespace Tessel::Engine::DT
