#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>
#include <vector>

// The published random generators that a simulation may choose from, each with its streams. The same seed
// gives the same numbers on every platform.
//
// - Park-Miller: S. Park & K. Miller, Communications of the ACM 31 (1988) 1192-1201: x = 16807 x modulo m,
// the
//   number is x / m, m = 2^31 - 1. Stream i begins 1327217885 i steps on, the golden section of the period,
//   so that k streams are about 0.38 / k of the period apart, however many there will be.
// - L'Ecuyer CMRG: MRG32k3a, P. L'Ecuyer, Operations Research 47 (1999) 159-164. Stream i begins 2^127 i
//   steps on (P. L'Ecuyer, R. Simard, E. Chen & D. Kelton, Operations Research 50 (2002) 1073-1075).
// - WELL: WELL1024a, F. Panneton, P. L'Ecuyer & M. Matsumoto, ACM Transactions on Mathematical Software 32
//   (2006) 1-16, the number is x / 2^32. It costs what WELL512a does and leaves room for more and longer
//   streams. Stream i begins 2^512 i steps on, by the polynomials of H. Haramoto et al., INFORMS Journal on
//   Computing 20 (2008) 385-390.
// - Mersenne Twister: MT19937, M. Matsumoto & T. Nishimura, ACM Transactions on Modeling and Computer
//   Simulation 8 (1998) 3-30 with the initialisation of 2002; a number takes 53 bits of two words
//   (`genrand_res53`). Stream 0 has the state of `init_genrand(seed)`, stream i > 0 that of
//   `init_by_array({seed, i})`: unrelated places of a period of 2^19937 - 1, where a jump would take
//   milliseconds a stream.
// - HDR: D. Hubbard, A multi-dimensional, counter-based pseudo random number generator as a standard for
//   Monte Carlo simulations, Winter Simulation Conference 2019; the number is (x + 1/2) / 2^32. Streams
//   differ in one of the inputs of the formula, as the variables of the paper do.
//
// Uniform numbers are strictly within (0, 1): a draw of 0 is drawn again.

namespace Tessel::Engine::Random {

enum class RandomGeneratorType {
    PARK_MILLER = 0,
    LECUYER_CMRG = 1,
    WELL = 2,
    MERSENNE_TWISTER = 3,
    HDR = 4,
};

/// Park & Miller's minimal standard. Seeds 0 and 2^31 - 1, which it does not have, count as 1.
class ParkMiller {
 public:
    explicit ParkMiller(std::uint32_t seed);
    double next() {
        const std::uint64_t product =
            state_ * kMultiplier;  // modulo 2^31 - 1 by adding its digits of 31 bits
        state_ = (product & kModulus) + (product >> 31);
        if (state_ >= kModulus) state_ -= kModulus;
        return static_cast<double>(state_) / static_cast<double>(kModulus);
    }
    void advanceStreams(std::uint64_t count);

 private:
    static constexpr std::uint64_t kModulus = 2147483647, kMultiplier = 16807;

    std::uint64_t state_;
};

/// MRG32k3a. All six words of the state are the seed; seed 0, which it does not have, counts as 12345.
class LecuyerCmrg {
 public:
    using Words = std::array<std::uint64_t, 3>;

    explicit LecuyerCmrg(std::uint32_t seed);
    double next();
    void advanceStreams(std::uint64_t count);

 private:
    Words first_, second_;  // oldest word first
};

/// WELL1024a. The state is filled from the seed by the recurrence of the Mersenne Twister's `init_genrand`.
class Well1024a {
 public:
    explicit Well1024a(std::uint32_t seed);
    std::uint32_t nextWord();
    double next();
    void fill(std::span<double> result);
    void advanceStreams(std::uint64_t count);

 private:
    std::uint32_t step(std::uint32_t index);

    std::array<std::uint32_t, 32> state_;
    std::uint32_t index_ = 0;
};

/// MT19937, a block of words at a time, so that processors work on several of them at once.
class MersenneTwister {
 public:
    static constexpr std::size_t kSize = 624;
    using State = std::array<std::uint32_t, kSize>;

    explicit MersenneTwister(std::uint32_t seed);
    double next() {
        for (;;) {
            if (used_ == kSize) refill();  // even, as is the number of words taken
            const std::uint32_t high = words_[used_] >> 5, low = words_[used_ + 1] >> 6;
            used_ += 2;
            if ((high | low) != 0) return (high * 67108864.0 + low) * 0x1p-53;
        }
    }
    void fill(std::span<double> result);
    /// The numbers (x + 1/2) / 2^32 of single words x. An even number of words is taken.
    void fillShort(std::span<double> result);
    void advanceStreams(std::uint64_t count);

 private:
    void refill();

    std::uint32_t seed_;
    std::uint32_t stream_ = 0;
    State state_;
    State words_;                 // the state tempered
    bool hasSmallWords_ = false;  // some word is below 64, so that a draw may be 0
    std::size_t used_ = kSize;
};

/// Its inputs are the number of the draw from 1, the stream, 0, the seed and 0.
class HubbardDecisionResearch {
 public:
    explicit HubbardDecisionResearch(std::uint32_t seed) : seed_(seed) {}
    double next() { return at(++counter_, stream_, 0, seed_, 0); }
    void advanceStreams(std::uint64_t count) { stream_ += count; }

    /// The number of five inputs below 2^31, in the order of the paper.
    static double at(std::uint64_t counter, std::uint64_t variable, std::uint64_t entity, std::uint64_t seed3,
                     std::uint64_t seed4);

 private:
    std::uint64_t seed_;
    std::uint64_t stream_ = 0;
    std::uint64_t counter_ = 0;
};

/// One sequence of uniform numbers. Copies continue independently with the same numbers.
class RandomStream {
 public:
    RandomStream(RandomGeneratorType type, std::uint32_t seed);

    /// Uniform on (0, 1).
    double next() {
        return std::visit([](auto& generator) { return generator.next(); }, generator_);
    }
    /// The next numbers, as many as there is room for.
    void fill(std::span<double> result);
    /// The same where some 31 bits of a number are enough: the Mersenne Twister then takes one word a number.
    void fillShort(std::span<double> result);
    /// The next 52 bits: the leading 26 bits of two numbers.
    std::uint64_t next52Bits();
    void discard(std::int64_t count);
    /// From the beginning of a stream to that of the stream `count` streams on. @pre nothing was drawn
    void advanceStreams(std::uint64_t count);

 private:
    std::variant<ParkMiller, LecuyerCmrg, Well1024a, MersenneTwister, HubbardDecisionResearch> generator_;
};

/// A generator with one stream for all variables, or one for each of them.
class RandomGenerator {
 public:
    /// @param type          one of the enum's values.
    /// @param seed          0 .. 2147483647.
    /// @param numStreams    0: all variables draw from one stream, one variable after the other. > 0: each
    ///                      variable has a stream of its own; more variables than streams get further
    ///                      streams.
    /// @param numDiscarded  >= 0: numbers that each stream draws and forgets before the first that is used,
    ///                      which takes small seeds out of the first numbers.
    /// @returns nothing when an argument is outside its range.
    static std::optional<RandomGenerator> create(RandomGeneratorType type, std::int64_t seed,
                                                 std::int64_t numStreams, std::int64_t numDiscarded);

    bool hasSingleStream() const { return hasSingleStream_; }
    /// Makes the streams of variables 0 .. numVars - 1, so that they can be used side by side.
    void prepareStreams(std::size_t numVars);
    /// The stream of a variable; it remembers what was drawn. @pre prepared
    RandomStream& stream(std::size_t variable) { return streams_[hasSingleStream_ ? 0 : variable]; }

 private:
    RandomGenerator(const RandomStream& origin, bool hasSingleStream, std::int64_t numDiscarded);

    RandomStream next_;  // beginning of the stream after the last of streams_
    bool hasSingleStream_;
    std::int64_t numDiscarded_;
    std::vector<RandomStream> streams_;
};

}  // namespace Tessel::Engine::Random
