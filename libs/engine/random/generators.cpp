#include "engine/random/generators.h"

#include <algorithm>
#include <utility>

#include "engine/random/well_jump.h"

namespace Tessel::Engine::Random {

namespace {

constexpr double kPerWord = 0x1p-32;

// ---- Park-Miller

/// The golden section of the period, 2^31 - 2.
constexpr std::uint64_t kParkMillerJump = 1327217885;

/// base^exponent modulo a number below 2^32.
constexpr std::uint64_t powerModulo(std::uint64_t base, std::uint64_t exponent, std::uint64_t modulus) {
    std::uint64_t power = 1;
    for (; exponent > 0; exponent /= 2) {
        if (exponent % 2 == 1) power = power * base % modulus;
        base = base * base % modulus;
    }
    return power;
}

// ---- L'Ecuyer CMRG

constexpr std::uint64_t kModulus1 = 4294967087, kModulus2 = 4294944443;

using Words = LecuyerCmrg::Words;
using Matrix = std::array<Words, 3>;

constexpr Matrix kStep1{{{0, 1, 0}, {0, 0, 1}, {kModulus1 - 810728, 1403580, 0}}};
constexpr Matrix kStep2{{{0, 1, 0}, {0, 0, 1}, {kModulus2 - 1370589, 0, 527612}}};

constexpr Words multiply(const Matrix& a, const Words& x, std::uint64_t modulus) {
    Words product{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < 3; ++k) product[i] = (product[i] + a[i][k] * x[k] % modulus) % modulus;
    return product;
}

constexpr Matrix multiply(const Matrix& a, const Matrix& b, std::uint64_t modulus) {
    Matrix product{};
    for (std::size_t j = 0; j < 3; ++j) {
        const Words column = multiply(a, Words{b[0][j], b[1][j], b[2][j]}, modulus);
        for (std::size_t i = 0; i < 3; ++i) product[i][j] = column[i];
    }
    return product;
}

/// 2^127 steps at once.
constexpr Matrix streamJump(Matrix step, std::uint64_t modulus) {
    for (int squaring = 0; squaring < 127; ++squaring) step = multiply(step, step, modulus);
    return step;
}

constexpr Matrix kStreamJump1 = streamJump(kStep1, kModulus1);
constexpr Matrix kStreamJump2 = streamJump(kStep2, kModulus2);

Words jump(Matrix step, Words state, std::uint64_t count, std::uint64_t modulus) {
    for (; count > 0; count /= 2) {
        if (count % 2 == 1) state = multiply(step, state, modulus);
        step = multiply(step, step, modulus);
    }
    return state;
}

// ---- Mersenne Twister

/// The recurrence that fills states from one word (`init_genrand`).
template <std::size_t size>
std::array<std::uint32_t, size> stateFromSeed(std::uint32_t seed) {
    std::array<std::uint32_t, size> state;
    state[0] = seed;
    for (std::uint32_t i = 1; i < size; ++i)
        state[i] = 1812433253u * (state[i - 1] ^ (state[i - 1] >> 30)) + i;
    return state;
}

/// `init_by_array`.
MersenneTwister::State stateFromKey(std::span<const std::uint32_t> key) {
    constexpr std::size_t kSize = MersenneTwister::kSize;
    MersenneTwister::State state = stateFromSeed<kSize>(19650218u);
    std::size_t i = 1;
    const auto next = [&](std::uint32_t multiplier) {
        const std::uint32_t previous = state[i - 1];
        state[i] ^= (previous ^ (previous >> 30)) * multiplier;
    };
    const auto moveOn = [&] {
        if (++i < kSize) return;
        state[0] = state[kSize - 1];
        i = 1;
    };
    for (std::size_t round = 0; round < std::max(kSize, key.size()); ++round) {
        const std::size_t j = round % key.size();
        next(1664525u);
        state[i] += key[j] + static_cast<std::uint32_t>(j);
        moveOn();
    }
    for (std::size_t round = 0; round + 1 < kSize; ++round) {
        next(1566083941u);
        state[i] -= static_cast<std::uint32_t>(i);
        moveOn();
    }
    state[0] = 0x80000000u;
    return state;
}

}  // namespace

ParkMiller::ParkMiller(std::uint32_t seed) : state_(std::max<std::uint64_t>(seed % kModulus, 1)) {}

void ParkMiller::advanceStreams(std::uint64_t count) {
    const std::uint64_t jump = powerModulo(kMultiplier, kParkMillerJump, kModulus);
    state_ = state_ * powerModulo(jump, count, kModulus) % kModulus;
}

LecuyerCmrg::LecuyerCmrg(std::uint32_t seed) {
    first_.fill(seed == 0 ? 12345 : seed);
    second_ = first_;
}

double LecuyerCmrg::next() {
    const std::uint64_t x = (1403580 * first_[1] + 810728 * (kModulus1 - first_[0])) % kModulus1;
    const std::uint64_t y = (527612 * second_[2] + 1370589 * (kModulus2 - second_[0])) % kModulus2;
    first_ = {first_[1], first_[2], x};
    second_ = {second_[1], second_[2], y};
    const std::uint64_t difference = x > y ? x - y : x + kModulus1 - y;
    return static_cast<double>(difference) * 2.328306549295727688e-10;  // 1 / (kModulus1 + 1), as published
}

void LecuyerCmrg::advanceStreams(std::uint64_t count) {
    first_ = jump(kStreamJump1, first_, count, kModulus1);
    second_ = jump(kStreamJump2, second_, count, kModulus2);
}

Well1024a::Well1024a(std::uint32_t seed) : state_(stateFromSeed<32>(seed)) {}

inline std::uint32_t Well1024a::step(std::uint32_t index) {
    const auto word = [&](std::uint32_t offset) -> std::uint32_t& { return state_[(index + offset) % 32]; };
    const std::uint32_t z0 = word(31);
    const std::uint32_t z1 = word(0) ^ word(3) ^ (word(3) >> 8);
    const std::uint32_t z2 = word(24) ^ (word(24) << 19) ^ word(10) ^ (word(10) << 14);
    word(0) = z1 ^ z2;
    word(31) = z0 ^ (z0 << 11) ^ z1 ^ (z1 << 7) ^ z2 ^ (z2 << 13);
    index_ = (index + 31) % 32;
    return word(31);
}

std::uint32_t Well1024a::nextWord() { return step(index_); }

double Well1024a::next() {
    for (;;)
        if (const std::uint32_t word = nextWord(); word != 0) return static_cast<double>(word) * kPerWord;
}

void Well1024a::fill(std::span<double> result) {
    std::size_t i = 0;
    for (; i < result.size() && index_ != 0; ++i) result[i] = next();
    // All 32 steps in a row, so that the places in the state are known to the compiler.
    for (; i + 32 <= result.size();) {
        std::array<std::uint32_t, 32> words;
        [&]<std::uint32_t... k>(std::integer_sequence<std::uint32_t, k...>) {
            ((words[k] = step((32 - k) % 32)), ...);
        }
        (std::make_integer_sequence<std::uint32_t, 32>());
        for (const std::uint32_t word : words)
            if (word != 0) result[i++] = static_cast<double>(word) * kPerWord;
    }
    for (; i < result.size(); ++i) result[i] = next();
}

void Well1024a::advanceStreams(std::uint64_t count) {
    for (; count > 0; --count) {
        // The state 2^512 steps on is the sum of the next states that the jump polynomial selects.
        const WellPolynomial& polynomial = wellStreamJump();
        std::array<std::uint32_t, 32> sum{};
        for (std::size_t power = 0; power < kWellDegree; ++power) {
            if (polynomial.test(power))
                for (std::uint32_t i = 0; i < 32; ++i) sum[i] ^= state_[(index_ + i) % 32];
            nextWord();
        }
        state_ = sum;
        index_ = 0;
    }
}

MersenneTwister::MersenneTwister(std::uint32_t seed) : seed_(seed), state_(stateFromSeed<kSize>(seed)) {}

void MersenneTwister::refill() {
    constexpr std::size_t kShift = 397;
    std::uint32_t signs = 0;
    const auto twist = [&](std::size_t i, std::size_t next, std::size_t other) {
        const std::uint32_t joined = (state_[i] & 0x80000000u) | (state_[next] & 0x7FFFFFFFu);
        std::uint32_t word = state_[other] ^ (joined >> 1) ^ ((0u - (joined & 1u)) & 0x9908B0DFu);
        state_[i] = word;
        word ^= word >> 11;
        word ^= (word << 7) & 0x9D2C5680u;
        word ^= (word << 15) & 0xEFC60000u;
        word ^= word >> 18;
        words_[i] = word;
        signs |= (word >> 6) - 1;  // negative when word < 64
    };
    for (std::size_t i = 0; i < kSize - kShift; ++i) twist(i, i + 1, i + kShift);
    for (std::size_t i = kSize - kShift; i + 1 < kSize; ++i) twist(i, i + 1, i - (kSize - kShift));
    twist(kSize - 1, 0, kShift - 1);
    hasSmallWords_ = (signs & 0x80000000u) != 0;
    used_ = 0;
}

void MersenneTwister::fill(std::span<double> result) {
    for (std::size_t begin = 0; begin < result.size();) {
        if (used_ == kSize) refill();
        double* const out = result.data() + begin;
        const std::size_t count = std::min((kSize - used_) / 2, result.size() - begin);
        begin += count;
        if (hasSmallWords_) {
            std::generate_n(out, count, [this] { return next(); });
            continue;
        }
        const std::uint32_t* const words = words_.data() + used_;
        used_ += 2 * count;
        // Signed numbers, which processors convert several of at once.
        for (std::size_t i = 0; i < count; ++i) {
            const auto high = static_cast<std::int32_t>(words[2 * i] >> 5);
            const auto low = static_cast<std::int32_t>(words[2 * i + 1] >> 6);
            out[i] = (high * 67108864.0 + low) * 0x1p-53;
        }
    }
}

void MersenneTwister::fillShort(std::span<double> result) {
    for (std::size_t begin = 0; begin < result.size();) {
        if (used_ == kSize) refill();
        double* const out = result.data() + begin;
        const std::size_t count = std::min(kSize - used_, result.size() - begin);
        const std::uint32_t* const words = words_.data() + used_;
        begin += count;
        used_ += count + count % 2;
        // Signed numbers, as above.
        for (std::size_t i = 0; i < count; ++i)
            out[i] = (static_cast<std::int32_t>(words[i] ^ 0x80000000u) + (0x1p31 + 0.5)) * kPerWord;
    }
}

void MersenneTwister::advanceStreams(std::uint64_t count) {
    stream_ += static_cast<std::uint32_t>(count);
    const std::array<std::uint32_t, 2> key{seed_, stream_};
    if (stream_ > 0) state_ = stateFromKey(key);
    used_ = kSize;
}

double HubbardDecisionResearch::at(std::uint64_t counter, std::uint64_t variable, std::uint64_t entity,
                                   std::uint64_t seed3, std::uint64_t seed4) {
    constexpr std::uint64_t kLarge = 999999999999989;
    const std::uint64_t a =
        (counter * 2499997 + variable * 1800451 + entity * 2000371 + seed3 * 1796777 + seed4 * 2299603) %
        7450589;
    const std::uint64_t b =
        (counter * 2246527 + variable * 2399993 + entity * 2100869 + seed3 * 1918303 + seed4 * 1624729) %
        7450987;
    const std::uint64_t x = kLarge % (a * 4658 + 7450581) * 383 % 99991;
    const std::uint64_t y = kLarge % (b * 7580 + 7560584) * 17669 % 7440893;
    const auto word = static_cast<std::uint32_t>((x * 7440893 + y) * 1343);
    return (word + 0.5) * kPerWord;
}

namespace {

template <class... Generators>
std::variant<Generators...> generatorOf(std::variant<Generators...>*, RandomGeneratorType type,
                                        std::uint32_t seed) {
    switch (type) {
        case RandomGeneratorType::PARK_MILLER:
            return ParkMiller(seed);
        case RandomGeneratorType::LECUYER_CMRG:
            return LecuyerCmrg(seed);
        case RandomGeneratorType::WELL:
            return Well1024a(seed);
        case RandomGeneratorType::HDR:
            return HubbardDecisionResearch(seed);
        default:
            return MersenneTwister(seed);
    }
}

}  // namespace

RandomStream::RandomStream(RandomGeneratorType type, std::uint32_t seed)
    : generator_(generatorOf(static_cast<decltype(generator_)*>(nullptr), type, seed)) {}

void RandomStream::fill(std::span<double> result) {
    std::visit(
        [&](auto& generator) {
            if constexpr (requires { generator.fill(result); })
                generator.fill(result);
            else
                for (double& number : result) number = generator.next();
        },
        generator_);
}

void RandomStream::fillShort(std::span<double> result) {
    if (auto* const generator = std::get_if<MersenneTwister>(&generator_))
        generator->fillShort(result);
    else
        fill(result);
}

std::uint64_t RandomStream::next52Bits() {
    const auto half = [&] { return static_cast<std::uint64_t>(next() * 0x1p26); };
    const std::uint64_t high = half();
    return high << 26 | half();
}

void RandomStream::discard(std::int64_t count) {
    for (; count > 0; --count) next();
}

void RandomStream::advanceStreams(std::uint64_t count) {
    std::visit([&](auto& generator) { generator.advanceStreams(count); }, generator_);
}

std::optional<RandomGenerator> RandomGenerator::create(RandomGeneratorType type, std::int64_t seed,
                                                       std::int64_t numStreams, std::int64_t numDiscarded) {
    if (type < RandomGeneratorType::PARK_MILLER || type > RandomGeneratorType::HDR) return {};
    if (seed < 0 || seed > 2147483647 || numStreams < 0 || numDiscarded < 0) return {};
    RandomGenerator generator(RandomStream(type, static_cast<std::uint32_t>(seed)), numStreams == 0,
                              numDiscarded);
    generator.prepareStreams(1);
    return generator;
}

RandomGenerator::RandomGenerator(const RandomStream& origin, bool hasSingleStream, std::int64_t numDiscarded)
    : next_(origin), hasSingleStream_(hasSingleStream), numDiscarded_(numDiscarded) {}

void RandomGenerator::prepareStreams(std::size_t numVars) {
    const std::size_t count = hasSingleStream_ ? 1 : numVars;
    while (streams_.size() < count) {
        streams_.push_back(next_);
        streams_.back().discard(numDiscarded_);
        if (!hasSingleStream_) next_.advanceStreams(1);
    }
}

}  // namespace Tessel::Engine::Random
