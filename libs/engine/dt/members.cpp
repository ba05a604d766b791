#include "engine/dt/members.h"

#include <algorithm>
#include <numeric>

namespace Tessel::Engine::DT {

void Members::reset(std::size_t numRecords, Crew& crew) {
    members_.resize(numRecords);
    parted_.resize(numRecords);
    forEachStretch(crew, numRecords, [&](std::size_t begin, std::size_t end) {
        std::iota(members_.data() + begin, members_.data() + end, static_cast<std::uint32_t>(begin));
    });
}

void Members::appendStretches(std::size_t node, std::uint32_t begin, std::uint32_t end,
                              std::vector<Stretch>& stretches) {
    while (begin < end) {
        const std::uint32_t size = std::min(kSizeOfStretches, end - begin);
        stretches.push_back({.node = node, .begin = begin, .end = begin + size});
        begin += size;
    }
}

void Members::addUp(Stretch& stretch, std::span<const double> targets, double origin) const {
    const auto sumsOf = [&](const std::uint32_t* side, std::size_t size) {
        // Several, as an addition waits for the one before it.
        constexpr std::size_t kNumParts = 4;
        std::array<TargetSums, kNumParts> parts;
        std::size_t i = 0;
        for (; i + kNumParts <= size; i += kNumParts)
            for (std::size_t part = 0; part < kNumParts; ++part)
                parts[part].add(targets[side[i + part]] - origin);
        for (; i < size; ++i) parts[0].add(targets[side[i]] - origin);
        for (std::size_t part = 1; part < kNumParts; ++part) parts[0] += parts[part];
        return parts[0];
    };
    const std::uint32_t* const left = parted_.data() + stretch.begin;
    stretch.sums = {sumsOf(left, stretch.numLeft), sumsOf(left + stretch.numLeft, stretch.numRight())};
}

std::uint32_t Members::join(std::span<Stretch> stretches) {
    std::uint32_t next = stretches.front().begin;
    for (Stretch& stretch : stretches) {
        stretch.leftTo = next;
        next += stretch.numLeft;
    }
    const std::uint32_t middle = next;
    for (Stretch& stretch : stretches) {
        stretch.rightTo = next;
        next += stretch.numRight();
    }
    return middle;
}

void Members::place(const Stretch& stretch) {
    const std::uint32_t* const left = parted_.data() + stretch.begin;
    const std::uint32_t* const right = left + stretch.numLeft;
    std::copy(left, right, members_.data() + stretch.leftTo);
    std::reverse_copy(right, right + stretch.numRight(), members_.data() + stretch.rightTo);
}

}  // namespace Tessel::Engine::DT
