#include "engine/random/uniform_sample.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>
#include <omp.h>

#include "engine/random/sobol.h"

namespace Tessel::Engine::Random {
namespace {

using Numbers = std::vector<double>;
using enum RandomGeneratorType;
using enum SamplingMethodType;

std::vector<Numbers> sample(SamplingMethodType method, std::size_t numVars, std::size_t size,
                            RandomGeneratorType type = MERSENNE_TWISTER, std::int64_t numStreams = 1) {
    std::vector<Numbers> rows(numVars, Numbers(size));
    RandomGenerator generator = *RandomGenerator::create(type, 42, numStreams, 100);
    EXPECT_TRUE(uniformSample(generator, method, std::vector<std::span<double>>(rows.begin(), rows.end())));
    return rows;
}

double correlation(const Numbers& x, const Numbers& y) {  // of uniform numbers
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) sum += (x[i] - 0.5) * (y[i] - 0.5);
    return 12.0 * sum / static_cast<double>(x.size());
}

TEST(UniformSample, LatinHypercubeHasOneNumberInEachPart) {
    for (int type = 0; type <= 4; ++type)
        for (const std::size_t size : {1u, 2u, 1000u, 65535u, 65536u, 100003u}) {  // short draws from 2^16 on
            const std::vector<Numbers> rows = sample(LATIN_HYPERCUBE, 3, size, RandomGeneratorType{type});
            double jitter = 0.0;
            for (Numbers row : rows) {
                std::sort(row.begin(), row.end());
                for (std::size_t i = 0; i < size; ++i) {
                    const double place = row[i] * static_cast<double>(size) - static_cast<double>(i);
                    EXPECT_TRUE(place > -1e-9 && place < 1.0 + 1e-9);
                    EXPECT_TRUE(row[i] > 0.0 && row[i] < 1.0);
                    jitter += place;
                }
            }
            if (size < 1000) continue;
            const double fiveDeviations = 5.0 / std::sqrt(static_cast<double>(size));
            EXPECT_NEAR(jitter / (3.0 * static_cast<double>(size)), 0.5, fiveDeviations / 6.0);
            EXPECT_NEAR(correlation(rows[0], rows[1]), 0.0, fiveDeviations);
            EXPECT_NEAR(correlation(rows[0], rows[2]), 0.0, fiveDeviations);
            Numbers next(rows[0].begin() + 1, rows[0].end()), previous(rows[0].begin(), rows[0].end() - 1);
            EXPECT_NEAR(correlation(next, previous), 0.0, fiveDeviations);
        }
}

TEST(UniformSample, LatinHypercubeOrdersAllPermutationsAlike) {
    // 24 orders of 4 parts from 24000 samples: chi-square of 23 degrees of freedom, 1e-6 above 74.
    RandomGenerator generator = *RandomGenerator::create(WELL, 7, 0, 100);
    std::vector<int> counts(256, 0);
    for (int repeat = 0; repeat < 24000; ++repeat) {
        Numbers row(4);
        const std::span<double> rows[] = {row};
        ASSERT_TRUE(uniformSample(generator, LATIN_HYPERCUBE, rows));
        std::size_t code = 0;
        for (const double number : row) code = 4 * code + static_cast<std::size_t>(4.0 * number);
        ++counts[code];
    }
    double chiSquare = 0.0;
    int numSeen = 0;
    for (const int count : counts) {
        if (count > 0) chiSquare += std::pow(count - 1000.0, 2) / 1000.0;
        numSeen += count > 0;
    }
    EXPECT_EQ(numSeen, 24);
    EXPECT_LT(chiSquare, 74.0);
}

TEST(Sobol, PointsAreThoseOfJoeAndKuo) {
    // new-joe-kuo-6.21201 in Gray-code order (Joe & Kuo 2008).
    const double expected[][6] = {{0.0, 0.0, 0.0, 0.0, 0.0, 0.0},
                                  {0.5, 0.5, 0.5, 0.5, 0.5, 0.5},
                                  {0.75, 0.25, 0.25, 0.25, 0.75, 0.75},
                                  {0.25, 0.75, 0.75, 0.75, 0.25, 0.25},
                                  {0.375, 0.375, 0.625, 0.875, 0.375, 0.125},
                                  {0.875, 0.875, 0.125, 0.375, 0.875, 0.625},
                                  {0.625, 0.125, 0.875, 0.625, 0.625, 0.875},
                                  {0.125, 0.625, 0.375, 0.125, 0.125, 0.375},
                                  {0.1875, 0.3125, 0.9375, 0.4375, 0.5625, 0.3125},
                                  {0.6875, 0.8125, 0.4375, 0.9375, 0.0625, 0.8125}};
    const std::vector<SobolDimension> dimensions = sobolDimensions(6);
    for (std::size_t variable = 0; variable < 6; ++variable) {
        Numbers points(1024), behind(700);
        dimensions[variable].fill(0, points);
        for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(points[i], expected[i][variable] + 0x1p-53);
        dimensions[variable].fill(300, behind);
        EXPECT_TRUE(std::equal(behind.begin(), behind.end(), points.begin() + 300));
        const double last[] = {0.0009765625, 0.7529296875};
        if (variable < 2) {
            EXPECT_EQ(points[1023], last[variable] + 0x1p-53);
        }
    }
}

TEST(Sobol, RandomisedPointsRemainANet) {
    const std::size_t numVars = 500, size = 256;
    const std::vector<Numbers> rows = sample(SOBOL_RQMC, numVars, size, LECUYER_CMRG);
    const std::vector<Numbers> other = sample(SOBOL_RQMC, 2, size, PARK_MILLER, 0);
    EXPECT_NE(rows[0], other[0]);
    for (const Numbers& row : rows) {  // one in each of 256 parts
        std::vector<int> counts(size, 0);
        for (const double number : row) ++counts.at(static_cast<std::size_t>(number * size));
        EXPECT_EQ(std::count(counts.begin(), counts.end(), 1), static_cast<std::ptrdiff_t>(size));
    }
    for (const std::vector<Numbers>& table : {rows, other})  // the first two: one in each box of area 1/256
        for (int bits = 0; bits <= 8; ++bits) {
            std::vector<int> counts(size, 0);
            for (std::size_t i = 0; i < size; ++i) {
                const auto x = static_cast<std::size_t>(std::ldexp(table[0][i], bits));
                const auto y = static_cast<std::size_t>(std::ldexp(table[1][i], 8 - bits));
                ++counts.at((x << (8 - bits)) + y);
            }
            EXPECT_EQ(std::count(counts.begin(), counts.end(), 1), static_cast<std::ptrdiff_t>(size)) << bits;
        }
}

TEST(UniformSample, StreamsAreSingleOrOnePerVariable) {
    const std::vector<Numbers> single = sample(MONTE_CARLO, 2, 5, WELL, 0);
    RandomStream stream(WELL, 42);
    stream.discard(100);
    for (const Numbers& row : single)
        for (const double number : row) EXPECT_EQ(number, stream.next());
    for (const SamplingMethodType method : {MONTE_CARLO, LATIN_HYPERCUBE, SOBOL_RQMC}) {
        const std::vector<Numbers> few = sample(method, 2, 50, HDR, 2), many = sample(method, 5, 50, HDR, 2);
        EXPECT_EQ(few[1], many[1]);
        EXPECT_NE(many[2], many[3]);
    }
}

TEST(UniformSample, DoesNotDependOnThreads) {
    const int numThreads = omp_get_max_threads();
    for (const SamplingMethodType method : {MONTE_CARLO, LATIN_HYPERCUBE, SOBOL_RQMC}) {
        omp_set_num_threads(1);
        const std::vector<Numbers> serial = sample(method, 4, 70001);
        omp_set_num_threads(3);
        EXPECT_EQ(sample(method, 4, 70001), serial);
        omp_set_num_threads(numThreads);
    }
}

TEST(UniformSample, RefusesBadArguments) {
    RandomGenerator generator = *RandomGenerator::create(WELL, 1, 1, 0);
    Numbers numbers(3 * 3668);
    const std::span<double> unequal[] = {std::span(numbers).first(2), std::span(numbers).first(3)};
    EXPECT_FALSE(uniformSample(generator, MONTE_CARLO, unequal));
    EXPECT_FALSE(uniformSample(generator, SamplingMethodType{0}, std::span(unequal).first(1)));
    EXPECT_FALSE(uniformSample(generator, SamplingMethodType{4}, std::span(unequal).first(1)));
    std::vector<std::span<double>> rows;
    for (std::size_t i = 0; i < 3668; ++i) rows.push_back(std::span(numbers).subspan(3 * i, 3));
    EXPECT_FALSE(uniformSample(generator, SOBOL_RQMC, rows));
    EXPECT_EQ(numbers, Numbers(numbers.size()));
    rows.pop_back();
    EXPECT_TRUE(uniformSample(generator, SOBOL_RQMC, rows));
    EXPECT_TRUE(uniformSample(generator, LATIN_HYPERCUBE, {}));
}

}  // namespace
}  // namespace Tessel::Engine::Random
