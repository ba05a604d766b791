#include "data/sorted_records.h"

#include <algorithm>
#include <numeric>

namespace Tessel {

void RecordSorter::sortByKeys(SortedRecord* records, std::uint32_t offset, std::uint32_t size) {
    constexpr std::uint32_t kMaxSizeForInsertion = 16, kMinSizeForDigits = 512;
    constexpr std::size_t kNumDigits = 3, kNumBuckets = 2048;
    std::uint32_t* keys = keys_.data() + offset;
    if (size <= kMaxSizeForInsertion) {
        for (std::uint32_t i = 1; i < size; ++i) {
            const std::uint32_t key = keys[i];
            const SortedRecord record = records[i];
            std::uint32_t at = i;
            for (; at > 0 && keys[at - 1] > key; --at) {
                keys[at] = keys[at - 1];
                records[at] = records[at - 1];
            }
            keys[at] = key;
            records[at] = record;
        }
        return;
    }
    if (size < kMinSizeForDigits) {
        // Records ascend where keys are equal, so that pairs of both have one order.
        shortRun_.clear();
        for (std::uint32_t i = 0; i < size; ++i)
            shortRun_.push_back(std::uint64_t{keys[i]} << 32 | records[i].record());
        std::sort(shortRun_.begin(), shortRun_.end());
        for (std::uint32_t i = 0; i < size; ++i) {
            keys[i] = static_cast<std::uint32_t>(shortRun_[i] >> 32);
            records[i] = {static_cast<std::uint32_t>(shortRun_[i]), 0};
        }
        return;
    }

    const auto digit = [](std::uint32_t key, std::size_t place) {
        return key >> (11 * place) & (kNumBuckets - 1);
    };
    counts_.assign(kNumDigits * kNumBuckets, 0);
    for (std::uint32_t i = 0; i < size; ++i)
        for (std::size_t place = 0; place < kNumDigits; ++place)
            ++counts_[place * kNumBuckets + digit(keys[i], place)];
    if (otherRecords_.size() < size) otherRecords_.resize(size);
    std::uint32_t* otherKeys = lowerHalves_.data();
    SortedRecord* otherRecords = otherRecords_.data();
    bool isElsewhere = false;
    for (std::size_t place = 0; place < kNumDigits; ++place) {
        std::uint32_t* const next = counts_.data() + place * kNumBuckets;
        if (next[digit(keys[0], place)] == size) continue;  // all share this digit
        std::exclusive_scan(next, next + kNumBuckets, next, std::uint32_t{0});
        for (std::uint32_t i = 0; i < size; ++i) {
            const std::uint32_t to = next[digit(keys[i], place)]++;
            otherKeys[to] = keys[i];
            otherRecords[to] = records[i];
        }
        std::swap(keys, otherKeys);
        std::swap(records, otherRecords);
        isElsewhere = !isElsewhere;
    }
    if (!isElsewhere) return;
    std::copy_n(keys, size, otherKeys);
    std::copy_n(records, size, otherRecords);
}

}  // namespace Tessel
