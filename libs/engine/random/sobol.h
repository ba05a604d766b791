#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/random/generators.h"

namespace Tessel::Engine::Random {

/// One coordinate of Sobol's sequence, in 52 bits.
class SobolDimension {
 public:
    static constexpr std::size_t kNumBits = 52;

    /// Scrambles the digits by a random lower triangular matrix and a digital shift.
    void randomise(RandomStream& stream);
    /// The coordinates of points `first`, `first` + 1, ... in Gray-code order, point 0 being the origin
    /// before randomisation: the middle of the interval of 2^-52 that holds the point, which is neither 0
    /// nor 1.
    /// @pre less than 2^52 points.
    void fill(std::uint64_t first, std::span<double> result) const;

 private:
    friend std::vector<SobolDimension> sobolDimensions(std::size_t count);

    std::array<std::uint64_t, kNumBits> directions_{};  // the leading bit of a number is bit 51
    std::uint64_t shift_ = 0;
};

/// The first coordinates of the sequence, not randomised. @pre count <= 3667
std::vector<SobolDimension> sobolDimensions(std::size_t count);

}  // namespace Tessel::Engine::Random
