#include "engine/dt/members.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace Tessel::Engine::DT {

void Members::reset(std::size_t numRecords) {
    members_.resize(numRecords);
    right_.resize(numRecords);
    std::iota(members_.begin(), members_.end(), 0u);
}

void Members::appendStretches(std::size_t node, std::uint32_t begin, std::uint32_t end,
                              std::vector<Stretch>& stretches) {
    while (begin < end) {
        const std::uint32_t size = std::min(kSizeOfStretches, end - begin);
        stretches.push_back({.node = node, .begin = begin, .end = begin + size, .numLeft = 0, .sums = {}});
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
    stretch.sums = {sumsOf(members_.data() + stretch.begin, stretch.numLeft),
                    sumsOf(right_.data() + stretch.begin, stretch.end - stretch.begin - stretch.numLeft)};
}

std::uint32_t Members::join(std::span<const Stretch> stretches) {
    std::uint32_t* next = members_.data() + stretches.front().begin;
    const auto append = [&](const std::uint32_t* side, std::size_t size) {
        std::memmove(next, side, size * sizeof *side);
        next += size;
    };
    for (const Stretch& stretch : stretches) append(members_.data() + stretch.begin, stretch.numLeft);
    const auto middle = static_cast<std::uint32_t>(next - members_.data());
    for (const Stretch& stretch : stretches)
        append(right_.data() + stretch.begin, stretch.end - stretch.begin - stretch.numLeft);
    return middle;
}

}  // namespace Tessel::Engine::DT
