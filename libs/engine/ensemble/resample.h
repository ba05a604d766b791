#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Tessel::Engine::Ensemble {

/// The seed of an ensemble's learner: seed + index, beyond the largest int on from the smallest one.
inline int learnerSeed(int seed, int index) {
    return static_cast<int>(static_cast<std::uint32_t>(seed) + static_cast<std::uint32_t>(index));
}

/// Whether each of the codes 0 .. numClasses - 1 is the class of one of the rows.
bool coversClasses(std::span<const std::int32_t> rows, std::span<const std::int32_t> classes,
                   std::size_t numClasses);

}  // namespace Tessel::Engine::Ensemble
