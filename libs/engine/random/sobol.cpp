#include "engine/random/sobol.h"

#include <algorithm>
#include <bit>

#include <boost/random/sobol.hpp>

namespace Tessel::Engine::Random {

namespace {

constexpr std::uint64_t kAllBits = (std::uint64_t{1} << SobolDimension::kNumBits) - 1;

double middleOf(std::uint64_t bits) {
    // 1 <= number < 2; the subtraction is exact.
    const auto number = std::bit_cast<double>(bits | std::uint64_t{0x3FF} << SobolDimension::kNumBits);
    return number - (1.0 - 0x1p-53);
}

}  // namespace

std::vector<SobolDimension> sobolDimensions(std::size_t count) {
    std::vector<SobolDimension> dimensions(count);
    if (count == 0) return dimensions;
    boost::random::sobol sequence(count);
    for (std::size_t bit = 0; bit < SobolDimension::kNumBits; ++bit) {
        // Boost leaves the origin out, so this is point 2^bit: the sum of directions `bit` and `bit` - 1.
        sequence.seed((std::uint64_t{1} << bit) - 1);
        for (SobolDimension& dimension : dimensions) {
            std::uint64_t direction = sequence() >> (64 - SobolDimension::kNumBits);
            if (bit > 0) direction ^= dimension.directions_[bit - 1];
            dimension.directions_[bit] = direction;
        }
    }
    return dimensions;
}

void SobolDimension::randomise(RandomStream& stream) {
    std::array<std::uint64_t, kNumBits>
        columns;  // of the matrix: what a digit does to itself and those behind
    for (std::size_t digit = 0; digit < kNumBits; ++digit) {
        const std::uint64_t one = std::uint64_t{1} << (kNumBits - 1 - digit);
        columns[kNumBits - 1 - digit] = one | (stream.next52Bits() & (one - 1));
    }
    for (std::uint64_t& direction : directions_) {
        std::uint64_t scrambled = 0;
        for (std::uint64_t bits = direction; bits != 0; bits &= bits - 1)
            scrambled ^= columns[static_cast<std::size_t>(std::countr_zero(bits))];
        direction = scrambled;
    }
    shift_ = stream.next52Bits() & kAllBits;
}

void SobolDimension::fill(std::uint64_t first, std::span<double> result) const {
    const auto point = [&](std::uint64_t index) {
        std::uint64_t sum = 0;
        for (std::uint64_t gray = index ^ index >> 1; gray != 0; gray &= gray - 1)
            sum ^= directions_[static_cast<std::size_t>(std::countr_zero(gray))];
        return sum;
    };
    // The Gray code of block + i is the sum of both codes, and so are the points.
    constexpr std::uint64_t kBlock = 256;
    std::array<std::uint64_t, kBlock> inBlock;
    for (std::uint64_t i = 0; i < kBlock; ++i) inBlock[i] = point(i);
    for (std::size_t begin = 0; begin < result.size();) {
        const std::uint64_t index = first + begin, offset = index % kBlock;
        const std::uint64_t base = point(index - offset) ^ shift_;
        const std::size_t size = std::min<std::size_t>(kBlock - offset, result.size() - begin);
        double* const out = result.data() + begin;
        const std::uint64_t* const bits = inBlock.data() + offset;
        for (std::size_t i = 0; i < size; ++i) out[i] = middleOf(bits[i] ^ base);
        begin += size;
    }
}

}  // namespace Tessel::Engine::Random
