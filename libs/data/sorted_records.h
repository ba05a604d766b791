#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

// Sorting the rows of a numeric column.

namespace Tessel {

/// A record in a list sorted by value, missing ones first. Whether it is the first of its value in the list
/// takes one bit: a list begins with missing records up to the first such mark, and neighbours have different
/// values where the latter has the mark.
class SortedRecord {
 public:
    SortedRecord() = default;
    /// @pre record < 2^31
    SortedRecord(std::uint32_t record, std::uint32_t startsValue) : bits_(record << 1 | startsValue) {}

    std::uint32_t record() const { return bits_ >> 1; }
    std::uint32_t startsValue() const { return bits_ & 1; }  ///< 0 or 1

 private:
    std::uint32_t bits_;
};

/// Sorts a column of numbers.
///
/// The records are first parted, by the bits that lead in their numbers, into chunks that fit the processor's
/// cache, and each chunk is sorted by digits of 11 bits, the lowest first (Knuth, The Art of Computer
/// Programming 3, section 5.2.5): of the 32 bits from the first in which its numbers differ. Runs that this
/// leaves equal are sorted again by what follows. Besides the list that takes 12 bytes a record of the
/// greatest chunk, some 64 thousand records unless most numbers share their leading bits.
class RecordSorter {
 public:
    /// The records 0 .. numRecords - 1 by ascending number, equal numbers by record; -0 equals 0.
    /// @param numberOf  the number of a record, NaN when missing; asked for several times.
    template <class NumberOf>
    std::vector<SortedRecord> sort(std::uint32_t numRecords, NumberOf numberOf);

 private:
    /// In which bits the numbers of some records differ.
    struct Spread {
        std::uint64_t any = 0, all = ~std::uint64_t{0};

        void add(std::uint64_t bits) {
            any |= bits;
            all &= bits;
        }
        int width() const { return static_cast<int>(std::bit_width(any ^ all)); }
    };

    /// Bits of a number so that they ascend with it: negative numbers are turned over, both zeros are one,
    /// and missing is 0, below all others.
    static std::uint64_t orderedBits(double number) {
        constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;
        if (std::isnan(number)) return 0;
        const auto bits = std::bit_cast<std::uint64_t>(number + 0.0);
        return bits ^ ((std::uint64_t{0} - (bits >> 63)) | kSignBit);
    }

    template <class NumberOf>
    void makeChunks(std::vector<SortedRecord>& records, const Spread& spread, NumberOf numberOf);
    template <class NumberOf>
    void sortRun(SortedRecord* records, std::uint32_t offset, std::uint32_t size, NumberOf numberOf);
    /// Sorts records by their keys, which begin at `offset` of `keys_`; equal keys keep their order.
    void sortByKeys(SortedRecord* records, std::uint32_t offset, std::uint32_t size);

    static constexpr int kNumLeadingBits = 14;
    static constexpr std::uint32_t kChunkSize = 1 << 16;
    std::vector<std::uint32_t> chunkOf_;    // by leading bits; while they are counted, how many have them
    std::vector<std::uint32_t> chunkEnds_;  // while chunks are filled, where the next record goes

    std::vector<std::uint32_t> keys_, lowerHalves_;
    std::vector<SortedRecord> otherRecords_;  // room for digits to move to; keys go where lower halves were
    std::vector<std::uint32_t> counts_;       // of the digits
    std::vector<std::uint64_t> shortRun_;     // keys and records of a run that is too short for digits
};

template <class NumberOf>
std::vector<SortedRecord> RecordSorter::sort(std::uint32_t numRecords, NumberOf numberOf) {
    std::vector<SortedRecord> records(numRecords);
    if (numRecords < 2 * kChunkSize) {
        for (std::uint32_t record = 0; record < numRecords; ++record) records[record] = {record, 0};
        sortRun(records.data(), 0, numRecords, numberOf);
        return records;
    }
    Spread spread;
    for (std::uint32_t record = 0; record < numRecords; ++record) spread.add(orderedBits(numberOf(record)));
    makeChunks(records, spread, numberOf);
    std::uint32_t begin = 0;
    for (const std::uint32_t end : chunkEnds_) {
        sortRun(records.data() + begin, 0, end - begin, numberOf);
        begin = end;
    }
    return records;
}

template <class NumberOf>
void RecordSorter::makeChunks(std::vector<SortedRecord>& records, const Spread& spread, NumberOf numberOf) {
    const int shift = std::max(0, spread.width() - kNumLeadingBits);
    const auto leadingBits = [&](std::uint32_t record) {
        return orderedBits(numberOf(record)) >> shift & ((1u << kNumLeadingBits) - 1);
    };
    const auto numRecords = static_cast<std::uint32_t>(records.size());
    chunkOf_.assign(std::size_t{1} << kNumLeadingBits, 0);
    for (std::uint32_t record = 0; record < numRecords; ++record) ++chunkOf_[leadingBits(record)];
    chunkEnds_.clear();
    std::uint32_t begin = 0, size = 0;
    for (std::uint32_t& chunk : chunkOf_) {
        if (chunkEnds_.empty() || size + chunk > kChunkSize) {
            begin += std::exchange(size, 0);
            chunkEnds_.push_back(begin);
        }
        size += std::exchange(chunk, static_cast<std::uint32_t>(chunkEnds_.size() - 1));
    }
    for (std::uint32_t record = 0; record < numRecords; ++record)
        records[chunkEnds_[chunkOf_[leadingBits(record)]]++] = {record, 0};
}

template <class NumberOf>
void RecordSorter::sortRun(SortedRecord* records, std::uint32_t offset, std::uint32_t size,
                           NumberOf numberOf) {
    const auto bitsOf = [&](std::uint32_t i) { return orderedBits(numberOf(records[i].record())); };
    const auto mark = [&](std::uint32_t i) { records[i] = {records[i].record(), 1}; };
    if (keys_.size() < offset + size) keys_.resize(offset + size);
    if (lowerHalves_.size() < size) lowerHalves_.resize(size);
    std::uint32_t* const keys = keys_.data() + offset;
    Spread spread;
    for (std::uint32_t i = 0; i < size; ++i) {
        const std::uint64_t bits = bitsOf(i);
        spread.add(bits);
        keys[i] = static_cast<std::uint32_t>(bits >> 32);
        lowerHalves_[i] = static_cast<std::uint32_t>(bits);
    }
    if (spread.width() == 0) {
        if (size > 0 && spread.any != 0) mark(0);  // not missing
        return;
    }
    const int shift = std::max(0, spread.width() - 32);
    for (std::uint32_t i = 0; i < size; ++i)
        keys[i] = static_cast<std::uint32_t>((std::uint64_t{keys[i]} << 32 | lowerHalves_[i]) >> shift);
    sortByKeys(records, offset, size);
    for (std::uint32_t begin = 0, end = 0; begin < size; begin = end) {
        while (end < size && keys[end] == keys[begin]) ++end;
        if (begin == 0 && bitsOf(0) == 0) continue;  // missing: no number shares its key
        if (shift == 0 || end - begin == 1)
            mark(begin);
        else
            sortRun(records + begin, offset + begin, end - begin, numberOf);
    }
}

}  // namespace Tessel
