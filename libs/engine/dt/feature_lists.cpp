#include "engine/dt/feature_lists.h"

#include <algorithm>
#include <utility>

namespace Tessel::Engine::DT {

namespace {

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

FeatureLists listCategories(const TrainingFeature& feature, const PreparedRecords& prepared) {
    FeatureLists lists;
    lists.form = FeatureLists::Form::CATEGORIES;
    lists.numCodes = static_cast<std::uint32_t>(feature.numCategories);
    lists.codes.resize(prepared.records.size);
    for (std::uint32_t record = 0; record < prepared.records.size; ++record) {
        const std::int32_t code = feature.codes[prepared.rowOf(record)];
        lists.codes[record] = code < 0 ? lists.numCodes : static_cast<std::uint32_t>(code);
    }
    return lists;
}

/// Codes instead of the sorted list where there are few values.
FeatureLists listNumbers(std::vector<SortedRecord> sorted, const TrainingFeature& feature,
                         const PreparedRecords& prepared) {
    FeatureLists lists;
    lists.sorted = std::move(sorted);
    for (const SortedRecord entry : lists.sorted) lists.numCodes += entry.startsValue();
    if (lists.numCodes > kMaxNumValuesInBins) return lists;

    lists.form = FeatureLists::Form::NUMBERS;
    lists.codes.resize(prepared.records.size);
    for (const SortedRecord entry : lists.sorted) {
        if (entry.startsValue() != 0)
            lists.values.push_back(feature.numbers[feature.columnRow(prepared.rowOf(entry.record()))]);
        lists.codes[entry.record()] =
            lists.values.empty() ? lists.numCodes : static_cast<std::uint32_t>(lists.values.size() - 1);
    }
    lists.sorted = {};
    return lists;
}

}  // namespace

FeatureLists takeLists(const TrainingFeature& feature, const PreparedRecords& prepared,
                       const SharedColumn& column, const std::vector<std::uint32_t>& recordOf,
                       std::vector<SortedRecord> memory) {
    if (feature.isCategorical()) return listCategories(feature, prepared);
    if (recordOf.empty()) return listNumbers(column.rows, feature, prepared);
    // One entry more, where rows that are no record are written to and overwritten.
    memory.resize(prepared.records.size + 1);
    SortedRecord* next = memory.data();
    std::uint32_t startsValue = 0;  // a value may start with a row that is no record
    for (const SortedRecord entry : column.rows) {
        const std::uint32_t record = recordOf[entry.record()], isRecord = record != kNoRecord;
        startsValue |= entry.startsValue();
        *next = {record, startsValue};
        next += isRecord;
        startsValue &= 1 - isRecord;
    }
    memory.pop_back();
    return listNumbers(std::move(memory), feature, prepared);
}

FeatureLists takeLists(const TrainingFeature& feature, const PreparedRecords& prepared,
                       const SharedColumn& column, const std::vector<std::uint8_t>& markOf,
                       const std::vector<std::uint32_t>& begins, std::vector<SortedRecord> memory) {
    if (column.hasFewValues) return listNumbers(column.rows, feature, prepared);
    const auto numRecords = static_cast<std::uint32_t>(prepared.records.size);
    // Records without a list are written to one entry more. A record starts a value of its node where its
    // value is not the one of the record before it.
    struct Place {
        std::uint32_t next, step, value;
    };
    std::vector<Place> places;
    for (const std::uint32_t begin : begins)
        places.push_back(begin == kNoRecord ? Place{numRecords, 0, 0} : Place{begin, 1, 0});
    FeatureLists lists;
    lists.sorted = std::move(memory);
    lists.sorted.resize(std::size_t{numRecords} + 1);
    std::uint32_t value = 0;
    for (const SortedRecord entry : column.rows) {
        Place& place = places[markOf[entry.record()]];
        value += entry.startsValue();
        lists.sorted[place.next] = {entry.record(), value != place.value};
        place.next += place.step;
        place.value = value;
    }
    return lists;
}

FeatureLists makeLists(const TrainingFeature& feature, const PreparedRecords& prepared, bool keepRanks) {
    if (feature.isCategorical()) return listCategories(feature, prepared);
    const auto numRecords = static_cast<std::uint32_t>(prepared.records.size);
    const auto rowOf = [&](std::uint32_t record) { return feature.columnRow(prepared.rowOf(record)); };
    const auto numberOf = [&](std::uint32_t record) { return feature.numbers[rowOf(record)]; };
    // Few records are sorted sooner than all ranks are counted.
    const bool useRanks = keepRanks || (feature.column->hasRankCodes() &&
                                        feature.column->rankCodes().numDistinct / 8 <= numRecords);
    if (!useRanks) return listNumbers(RecordSorter().sort(numRecords, numberOf), feature, prepared);
    const RankCodes& ranks = feature.column->rankCodes();
    const auto codeOf = [&](std::uint32_t record) { return ranks.codes[rowOf(record)]; };
    return listNumbers(sortByCode(numRecords, ranks.numDistinct, codeOf), feature, prepared);
}

void part(std::span<SortedRecord> range, std::size_t numLeft, const std::vector<std::uint8_t>& goesLeft,
          bool keepLeft, bool keepRight, std::vector<SortedRecord>& scratch) {
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
    const std::size_t numRight = range.size() - numLeft;
    if (scratch.size() < numRight + 1) scratch.resize(numRight + 1);
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
