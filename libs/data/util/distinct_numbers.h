#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tessel {

/// Numbers the distinct values that it meets 0, 1, 2, ... in order of first appearance: a hash table with
/// open addressing and linear probing, at most half full.
template <class Number>
class DistinctNumbers {
 public:
    /// The number's position among the distinct ones. 0 and -0 are the same. @pre not NaN
    std::uint32_t encode(Number number) {
        if (slots_.size() <= 2 * distinct_.size()) grow();
        std::size_t slot = slotOf(number);
        while (slots_[slot] != kFree) {
            if (distinct_[slots_[slot]] == number) return slots_[slot];
            slot = (slot + 1) & (slots_.size() - 1);
        }
        slots_[slot] = static_cast<std::uint32_t>(distinct_.size());
        distinct_.push_back(number);
        return slots_[slot];
    }

    std::size_t size() const { return distinct_.size(); }
    const std::vector<Number>& distinct() const& { return distinct_; }
    std::vector<Number> distinct() && { return std::move(distinct_); }

 private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFFu;
    static constexpr std::size_t kFewestSlots = 64;  // a power of two, like all sizes

    std::size_t slotOf(Number number) const {
        // Adding 0 turns -0 into 0, so that equal numbers have equal bits.
        auto bits = std::bit_cast<std::uint64_t>(static_cast<double>(number) + 0.0);
        bits = (bits ^ (bits >> 32)) * 0x9E3779B97F4A7C15u;
        return static_cast<std::size_t>(bits >> 32) & (slots_.size() - 1);
    }

    void grow() {
        slots_.assign(slots_.empty() ? kFewestSlots : 2 * slots_.size(), kFree);
        for (std::size_t i = 0; i < distinct_.size(); ++i) {
            std::size_t slot = slotOf(distinct_[i]);
            while (slots_[slot] != kFree) slot = (slot + 1) & (slots_.size() - 1);
            slots_[slot] = static_cast<std::uint32_t>(i);
        }
    }

    std::vector<Number> distinct_;
    std::vector<std::uint32_t> slots_;  // positions in `distinct_`
};

}  // namespace Tessel
