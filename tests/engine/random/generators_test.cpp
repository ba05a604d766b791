#include "engine/random/generators.h"

#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Tessel::Engine::Random {
namespace {

using Numbers = std::vector<double>;
using enum RandomGeneratorType;

Numbers draw(RandomStream stream, std::size_t count) {
    Numbers numbers(count);
    stream.fill(numbers);
    return numbers;
}

/// The first number of each stream.
Numbers firstNumbers(RandomGeneratorType type, std::int64_t seed, std::size_t numStreams) {
    RandomGenerator generator = *RandomGenerator::create(type, seed, 1, 0);
    generator.prepareStreams(numStreams);
    Numbers first;
    for (std::size_t i = 0; i < numStreams; ++i) first.push_back(generator.stream(i).next());
    return first;
}

TEST(Generators, BeginWithThePublishedNumbers) {
    // Park & Miller 1988: from seed 1 the states 16807, 282475249, 1622650073. RngStreams, MT19937's authors'
    // code (genrand_res53; 5489 is its own seed) and WELL1024a from the state of that code's seeding.
    const struct {
        RandomGeneratorType type;
        std::uint32_t seed;
        Numbers expected;
    } cases[] = {
        {PARK_MILLER, 1, {16807 / 2147483647.0, 282475249 / 2147483647.0, 1622650073 / 2147483647.0}},
        {PARK_MILLER, 12345, {0.09661652850760917, 0.8339946273872604, 0.9477024976851895}},
        {LECUYER_CMRG,
         12345,
         {0.12701112204657714, 0.3185275653967945, 0.3091860155832701, 0.8258468629271135}},
        {LECUYER_CMRG, 2147483647, {0.7567927316792514, 0.6255405003001038, 0.26398546991613175}},
        {WELL, 1, {0.5377408256754279, 0.6805959586054087, 0.8927662197966129}},
        {WELL, 12345, {0.6308082160539925, 0.8711833851411939, 0.6552680793683976}},
        {MERSENNE_TWISTER, 5489, {0.8147236863931789, 0.9057919370756192, 0.12698681629350606}},
        {MERSENNE_TWISTER, 1, {0.417022004702574, 0.7203244934421581, 0.00011437481734488664}},
    };
    for (const auto& [type, seed, expected] : cases) {
        const Numbers numbers = draw(RandomStream(type, seed), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_NEAR(numbers[i], expected[i], 3e-16) << static_cast<int>(type) << ' ' << seed << ' ' << i;
    }
}

TEST(Generators, KeepToThePublishedNumbersFarOn) {
    RandomStream parkMiller(PARK_MILLER, 1);
    parkMiller.discard(9999);
    EXPECT_EQ(parkMiller.next() * 2147483647.0, 1043618065.0);  // Park & Miller 1988

    for (const auto& [seed, thousandth] : {std::pair{1u, 44196595u}, std::pair{12345u, 2816913011u}}) {
        Well1024a well(seed);  // recurrence checked against the authors' code
        for (int i = 0; i < 999; ++i) well.nextWord();
        EXPECT_EQ(well.nextWord(), thousandth);
    }
}

TEST(Generators, FillAsTheyDrawOneByOne) {
    // From seed 308753 the first block of the Mersenne Twister has a word so small that 0 might be drawn.
    for (int type = 0; type <= 4; ++type)
        for (const std::uint32_t seed : {42u, 308753u}) {
            RandomStream filled(RandomGeneratorType{type}, seed), drawn = filled;
            for (const std::size_t count : {1u, 311u, 313u, 5u, 0u, 1000u}) {
                Numbers numbers(count);
                filled.fill(numbers);
                for (const double number : numbers) EXPECT_EQ(number, drawn.next());
                EXPECT_EQ(filled.next(), drawn.next());
            }
        }
}

TEST(Generators, ShortNumbersTakeAWordEach) {
    // The first words of the published code, whose genrand_res53 takes two for a number. After an odd count
    // the numbers go on with the next pair of words.
    RandomStream stream(MERSENNE_TWISTER, 5489), whole(MERSENNE_TWISTER, 5489);
    std::vector<double> numbers(3);
    stream.fillShort(numbers);
    const double words[] = {3499211612, 581869302, 3890346734};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(numbers[i], (words[i] + 0.5) / 4294967296.0);
    whole.discard(2);
    EXPECT_EQ(stream.next(), whole.next());
    numbers.resize(2001);
    stream.fillShort(numbers);  // over several blocks of words
    whole.discard(1001);
    EXPECT_EQ(stream.next(), whole.next());
    RandomStream well(WELL, 7), same(WELL, 7);
    well.fillShort(numbers);
    for (const double number : numbers) EXPECT_EQ(number, same.next());
}

TEST(Generators, HubbardsNumbersAreThoseOfTheFormula) {
    const struct {
        std::uint64_t inputs[5];
        double expected;
    } cases[] = {{{1, 0, 0, 0, 0}, 0.3000069559784606},
                 {{2, 0, 0, 0, 0}, 0.6749957237625495},
                 {{1, 1, 0, 0, 0}, 0.19655135844368488},
                 {{1, 10, 7, 37, 1}, 0.8814611852867529},
                 {{2, 10, 7, 37, 1}, 0.7891972797224298},
                 {{1000, 3, 12345, 0, 0}, 0.8656616430962458},
                 {{99999999, 99999999, 1, 2, 3}, 0.3551096896408126}};
    for (const auto& [in, expected] : cases)
        EXPECT_NEAR(HubbardDecisionResearch::at(in[0], in[1], in[2], in[3], in[4]), expected, 1e-16);
}

TEST(Generators, StreamsJumpWhereTheyShould) {
    const struct {
        RandomGeneratorType type;
        std::int64_t seed;
        std::size_t stream;
        double expected;  // first number of the stream
    } cases[] = {
        // Powers of the multiplier modulo 2^31 - 1 by Python's pow.
        {PARK_MILLER, 1, 1, 1991360840 / 2147483647.0},
        {PARK_MILLER, 12345, 2, 1781809908 / 2147483647.0},
        {PARK_MILLER, 12345, 7, 850621147 / 2147483647.0},
        // From the states of parallel::nextRNGStream of R 4.2.2.
        {LECUYER_CMRG, 12345, 1, 0.7595818622487195},
        {LECUYER_CMRG, 12345, 2, 0.7285097861965271},
        {LECUYER_CMRG, 1, 2, 0.4095377850308687},
        // The 1024 x 1024 matrix of the step over two elements, squared 512 times in Python.
        {WELL, 1, 1, 489935693 * 0x1p-32},
        {WELL, 1, 2, 3424096065 * 0x1p-32},
        {WELL, 12345, 1, 1323811383 * 0x1p-32},
        {WELL, 12345, 2, 1347747728 * 0x1p-32},
        // numpy.random.RandomState([seed, stream]) of NumPy 1.24.2.
        {MERSENNE_TWISTER, 12345, 1, 0.06996149327896617},
        {MERSENNE_TWISTER, 1, 3, 0.48378543930180984},
        {HDR, 0, 1, 0.19655135844368488},
    };
    for (const auto& [type, seed, stream, expected] : cases) {
        EXPECT_NEAR(firstNumbers(type, seed, stream + 1)[stream], expected, 3e-16) << static_cast<int>(type);
        RandomStream direct(type, static_cast<std::uint32_t>(seed));
        direct.advanceStreams(stream);
        EXPECT_NEAR(direct.next(), expected, 3e-16) << static_cast<int>(type);
    }
}

TEST(Generators, TakeEverySeedAndForgetWhatIsDiscarded) {
    for (int type = 0; type <= 4; ++type)
        for (const std::int64_t seed : {0LL, 1LL, 2147483646LL, 2147483647LL}) {
            RandomGenerator fresh = *RandomGenerator::create(RandomGeneratorType{type}, seed, 2, 0);
            RandomGenerator warm = *RandomGenerator::create(RandomGeneratorType{type}, seed, 2, 100);
            fresh.prepareStreams(2);
            warm.prepareStreams(2);
            fresh.stream(1).discard(100);
            double sum = 0.0;
            for (int i = 0; i < 1000; ++i) {
                const double number = fresh.stream(1).next();
                EXPECT_EQ(number, warm.stream(1).next());
                EXPECT_TRUE(number > 0.0 && number < 1.0);
                sum += number;
            }
            EXPECT_NEAR(sum / 1000, 0.5, 0.05) << type << ' ' << seed;  // five deviations of the mean
        }
}

TEST(Generators, RefuseArgumentsOutsideTheirRange) {
    EXPECT_FALSE(RandomGenerator::create(static_cast<RandomGeneratorType>(5), 1, 0, 0));
    EXPECT_FALSE(RandomGenerator::create(static_cast<RandomGeneratorType>(-1), 1, 0, 0));
    EXPECT_FALSE(RandomGenerator::create(WELL, -1, 0, 0));
    EXPECT_FALSE(RandomGenerator::create(WELL, 2147483648, 0, 0));
    EXPECT_FALSE(RandomGenerator::create(WELL, 1, -1, 0));
    EXPECT_FALSE(RandomGenerator::create(WELL, 1, 0, -1));
}

}  // namespace
}  // namespace Tessel::Engine::Random
