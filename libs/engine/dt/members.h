#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/dt/records.h"
#include "engine/parallel.h"

// The records of the nodes of a growing tree, and how they part.

namespace Tessel::Engine::DT {

/// Up to `kSizeOfStretches` members of a node that is split. Threads part the stretches of a node side by
/// side; what they find does not depend on the threads, as the stretches do not.
struct Stretch {
    std::size_t node = 0;  ///< among those that are split at once
    std::uint32_t begin = 0, end = 0;
    std::uint32_t numLeft = 0;
    std::array<TargetSums, 2> sums;  ///< of the left and the right side, where they are measured
};

/// The members of all nodes: those of a node are a range, ascending.
class Members {
 public:
    /// All records are members of the root.
    void reset(std::size_t numRecords);

    std::span<const std::uint32_t> range(std::uint32_t begin, std::uint32_t end) const {
        return std::span(members_).subspan(begin, end - begin);
    }

    /// Appends the stretches of a range.
    static void appendStretches(std::size_t node, std::uint32_t begin, std::uint32_t end,
                                std::vector<Stretch>& stretches);

    /// Parts one stretch of a node; both sides keep their order. Nothing else is touched.
    /// @param goesLeft  of a record 1 or 0.
    template <class GoesLeft>
    void part(Stretch& stretch, GoesLeft&& goesLeft);
    /// Adds up the deviations of targets from `origin` on both sides of a stretch that was parted.
    void addUp(Stretch& stretch, std::span<const double> targets, double origin) const;
    /// Joins the sides of all stretches of a node, once each is parted; returns where the right side begins.
    std::uint32_t join(std::span<const Stretch> stretches);

 private:
    std::vector<std::uint32_t> members_;
    std::vector<std::uint32_t> right_;  // of each stretch the right side, from where the stretch begins
};

template <class GoesLeft>
void Members::part(Stretch& stretch, GoesLeft&& goesLeft) {
    // Without a branch: which side is no habit that a processor could learn.
    const std::uint32_t* const end = members_.data() + stretch.end;
    std::uint32_t* left = members_.data() + stretch.begin;
    std::uint32_t* right = right_.data() + stretch.begin;
    for (const std::uint32_t* next = left; next != end; ++next) {
        const std::uint32_t member = *next, isLeft = goesLeft(member);
        *left = member;
        *right = member;
        left += isLeft;
        right += 1 - isLeft;
    }
    stretch.numLeft = static_cast<std::uint32_t>(left - members_.data()) - stretch.begin;
}

}  // namespace Tessel::Engine::DT
