#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/crew.h"
#include "engine/dt/records.h"

// The records of the nodes of a growing tree, and how they part.

namespace Tessel::Engine::DT {

/// Up to `kSizeOfStretches` members of a node that is split. Threads part the stretches of a node side by
/// side; what they find does not depend on the threads, as the stretches do not.
struct Stretch {
    std::size_t node = 0;  ///< among those that are split at once
    std::uint32_t begin = 0, end = 0;
    std::uint32_t numLeft = 0;
    std::array<TargetSums, 2> sums = {};    ///< of the left and the right side, where they are measured
    std::uint32_t leftTo = 0, rightTo = 0;  ///< where the sides go

    std::uint32_t numRight() const { return end - begin - numLeft; }
};

/// The members of all nodes: those of a node are a range, ascending.
class Members {
 public:
    /// All records are members of the root.
    void reset(std::size_t numRecords, Crew& crew);

    std::span<const std::uint32_t> range(std::uint32_t begin, std::uint32_t end) const {
        return std::span(members_).subspan(begin, end - begin);
    }

    /// Appends the stretches of a range.
    static void appendStretches(std::size_t node, std::uint32_t begin, std::uint32_t end,
                                std::vector<Stretch>& stretches);

    /// Parts one stretch of a node, whose members stay where they are until the sides are placed.
    /// @param goesLeft  of a record 1 or 0.
    template <class GoesLeft>
    void part(Stretch& stretch, GoesLeft&& goesLeft);
    /// Adds up the deviations of targets from `origin` on both sides of a stretch that was parted.
    void addUp(Stretch& stretch, std::span<const double> targets, double origin) const;
    /// Sets where the sides of all stretches of a node go, once each is parted; returns where the right side
    /// of the node begins. Both sides keep their order.
    static std::uint32_t join(std::span<Stretch> stretches);
    /// Moves the sides of a stretch to where they go. Not before all stretches of the node are parted.
    void place(const Stretch& stretch);

 private:
    std::vector<std::uint32_t> members_;
    std::vector<std::uint32_t> parted_;  // of each stretch the left side, then backwards the right one
};

template <class GoesLeft>
void Members::part(Stretch& stretch, GoesLeft&& goesLeft) {
    // Without a branch: which side is no habit that a processor could learn.
    std::uint32_t* left = parted_.data() + stretch.begin;
    std::uint32_t* right = parted_.data() + stretch.end;
    for (const std::uint32_t member : range(stretch.begin, stretch.end)) {
        const std::uint32_t isLeft = goesLeft(member);
        *left = member;
        right[-1] = member;
        left += isLeft;
        right -= 1 - isLeft;
    }
    stretch.numLeft = static_cast<std::uint32_t>(left - parted_.data()) - stretch.begin;
}

}  // namespace Tessel::Engine::DT
