#pragma once

#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>

namespace Tessel {

/// The generator behind every random draw of the library: the same seed gives the same numbers on every
/// platform. Not for cryptography.
///
/// Generator: xoshiro256++ (Blackman & Vigna, Scrambled linear pseudorandom number generators, ACM
/// Transactions on Mathematical Software 47, 2021), period 2^256 - 1. Its state is filled by SplitMix64
/// (Steele, Lea & Flood, OOPSLA 2014).
///
/// Work that may run in parallel draws from one stream per item, Random(seed, index of the item), so that
/// the result does not depend on the threads. Streams start at unrelated places of the period.
class Random {
 public:
    /// Stream 0 is the generator whose state is the first four outputs of SplitMix64 started at `seed`.
    explicit Random(std::uint64_t seed, std::uint64_t stream = 0) {
        // Scrambled streams keep (seed, stream + 1) away from (seed + 1, stream); scramble(0) is 0.
        std::uint64_t counter = seed + scramble(stream);
        for (std::uint64_t& word : state_) word = scramble(counter += kGoldenGamma);
    }

    std::uint64_t nextUInt64() {
        const std::uint64_t result = std::rotl(state_[0] + state_[3], 23) + state_[0];
        const std::uint64_t shifted = state_[1] << 17;
        state_[2] ^= state_[0];
        state_[3] ^= state_[1];
        state_[1] ^= state_[2];
        state_[0] ^= state_[3];
        state_[2] ^= shifted;
        state_[3] = std::rotl(state_[3], 45);
        return result;
    }

    /// Uniform on 0 .. bound - 1, without bias. @pre bound > 0
    ///
    /// Bounds of 32 bits: multiplication and rare rejection (Lemire, Fast random integer generation in an
    /// interval, ACM Transactions on Modeling and Computer Simulation 29, 2019). Larger ones: rejection of
    /// as many bits as the bound has.
    std::uint64_t nextBelow(std::uint64_t bound) {
        assert(bound > 0);
        if (bound > 0xFFFFFFFFu) {
            const int unused = std::countl_zero(bound - 1);
            std::uint64_t bits = nextUInt64() >> unused;
            while (bits >= bound) bits = nextUInt64() >> unused;
            return bits;
        }
        const auto range = static_cast<std::uint32_t>(bound);
        std::uint64_t product = (nextUInt64() >> 32) * range;
        if (static_cast<std::uint32_t>(product) < range) {
            const std::uint32_t excess = (0u - range) % range;  // 2^32 modulo the bound
            while (static_cast<std::uint32_t>(product) < excess) product = (nextUInt64() >> 32) * range;
        }
        return product >> 32;
    }

    /// Uniform on the multiples of 2^-53 in [0, 1).
    double nextUniform() { return static_cast<double>(nextUInt64() >> 11) * 0x1p-53; }
    /// Uniform on (0, 1), symmetric about 1/2: never 0 or 1, so that logarithms are finite.
    double nextOpenUniform() { return (static_cast<double>(nextUInt64() >> 12) + 0.5) * 0x1p-52; }

    /// Exponential with mean 1.
    double nextExponential() { return -std::log(nextOpenUniform()); }

    /// Standard normal, by the polar method (Marsaglia & Bray, SIAM Review 6, 1964). The second deviate of
    /// each pair is dropped, so that the generator has no state but its words.
    double nextNormal() {
        for (;;) {
            const double x = 2.0 * nextUniform() - 1.0;
            const double y = 2.0 * nextUniform() - 1.0;
            const double radius = x * x + y * y;
            if (radius > 0.0 && radius < 1.0) return x * std::sqrt(-2.0 * std::log(radius) / radius);
        }
    }

 private:
    static constexpr std::uint64_t kGoldenGamma = 0x9E3779B97F4A7C15u;

    /// The output function of SplitMix64.
    static constexpr std::uint64_t scramble(std::uint64_t z) {
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    std::array<std::uint64_t, 4> state_;
};

}  // namespace Tessel
