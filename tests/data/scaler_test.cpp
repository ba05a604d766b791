#include "data/scaler.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace Tessel::Engine::Scaler {
namespace {

using Values = std::vector<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// Fuel consumption of 32 cars, column mpg of the R data set mtcars, and a missing cell.
const Values kCars{21.0, 21.0, 22.8, 21.4, 18.7, 18.1, 14.3, 24.4, 22.8, 19.2, 17.8,
                   16.4, 17.3, 15.2, 10.4, 10.4, 14.7, 32.4, 30.4, 33.9, 21.5, 15.5,
                   15.2, kNaN, 13.3, 19.2, 27.3, 26.0, 30.4, 15.8, 19.7, 15.0, 21.4};

using Method = Rescaling (*)(std::span<const double>);
constexpr Method kMethods[] = {standardization, normalization, meanShift, unitNorm};

void expectRescaling(const Rescaling& actual, double shift, double scale, double relative, const char* what) {
    if (std::isnan(shift)) {
        EXPECT_TRUE(std::isnan(actual.shift)) << what;
        EXPECT_TRUE(std::isnan(actual.scale)) << what;
        return;
    }
    EXPECT_NEAR(actual.shift, shift, relative * std::abs(shift)) << what;
    EXPECT_NEAR(actual.scale, scale, relative * std::abs(scale)) << what;
}

TEST(ScalerEngine, AgreesWithR) {  // R 4.2.2: mean, sd, min, max and sqrt(sum(x^2)) of mtcars$mpg
    expectRescaling(standardization(kCars), 20.090624999999999, 0.16592145665721689, 2 * kEpsilon, "std");
    expectRescaling(normalization(kCars), 10.4, 0.042553191489361701, 2 * kEpsilon, "range");
    expectRescaling(meanShift(kCars), 20.090624999999999, 1.0, kEpsilon, "mean");
    expectRescaling(unitNorm(kCars), 0.0, 0.0084388005366842437, 2 * kEpsilon, "norm");
}

TEST(ScalerEngine, MeetsClosedFormsAtTheEdges) {
    const double r = std::sqrt(0.5);
    struct Case {
        const char* what;
        Values values;
        Rescaling expected[4];  // standardization, normalization, meanShift, unitNorm
    };
    const Case cases[] = {
        {"no row", {}, {{0, 1}, {0, 1}, {0, 1}, {0, 1}}},
        {"all missing", {kNaN, kNaN}, {{0, 1}, {0, 1}, {0, 1}, {0, 1}}},
        {"one value", {kNaN, 5.0}, {{5, 1}, {5, 1}, {5, 1}, {0, 0.2}}},
        {"zeros", {0, 0, 0}, {{0, 1}, {0, 1}, {0, 1}, {0, 1}}},
        {"constant", {0.1, 0.1, 0.1}, {{0.1, 1}, {0.1, 1}, {0.1, 1}, {0, 10 / std::sqrt(3.0)}}},
        {"two values", {-1, 1}, {{0, r}, {-1, 0.5}, {0, 1}, {0, r}}},
        {"an infinity", {1, kInfinity, 2}, {{kNaN}, {kNaN}, {kNaN}, {kNaN}}},
        {"two infinities", {-kInfinity, kInfinity}, {{kNaN}, {kNaN}, {kNaN}, {kNaN}}},
        // Sum, range, deviation and squares overflow, the results do not.
        {"largest",
         {kLargest, kLargest, -kLargest, -kLargest},
         {{0, std::sqrt(0.75) / kLargest}, {-kLargest, 0.5 / kLargest}, {0, 1}, {0, 0.5 / kLargest}}},
        {"large sum",
         {1e308, 1e308, 1.5e308, 1.5e308},
         {{1.25e308, 1e-308 / std::sqrt(0.25 / 3)},
          {1e308, 2e-308},
          {1.25e308, 1},
          {0, 1e-308 / std::sqrt(6.5)}}},
        // Squares vanish, the results do not.
        {"small",
         {1e-300, 3e-300},
         {{2e-300, r * 1e300}, {1e-300, 5e299}, {2e-300, 1}, {0, 1e300 / std::sqrt(10.0)}}},
        // The inverse of the spread overflows.
        {"tiny", {0, 4e-320}, {{2e-320, 1}, {0, 1}, {2e-320, 1}, {0, 1}}},
        // Deviations that are exact beside a mean that is much larger.
        {"large mean",
         {1e15, 1e15 + 1, 1e15 + 2},
         {{1e15 + 1, 1}, {1e15, 0.5}, {1e15 + 1, 1}, {0, 1e-15 / std::sqrt(3.0)}}},
    };
    for (const Case& c : cases)
        for (std::size_t i = 0; i < std::size(kMethods); ++i)
            // Subnormal numbers have fewer digits; so has the closed form of the unit norm of a large mean.
            expectRescaling(kMethods[i](c.values), c.expected[i].shift, c.expected[i].scale, 4e-15, c.what);
}

TEST(ScalerEngine, LongColumnsKeepTheirDigits) {
    // 0, 1, .., n - 1 beside 1e9, in an order that is not sorted: mean and variance have closed forms.
    constexpr std::size_t n = 100'003;  // prime: no multiple of any block
    Values values;
    for (std::size_t i = 0; i < n; ++i) {
        values.push_back(1e9 + static_cast<double>(i * 7919 % n));
        if (i % 5 == 0) values.push_back(kNaN);
    }
    const double count = n;
    const double sd = std::sqrt(count * (count + 1) / 12);
    expectRescaling(standardization(values), 1e9 + (count - 1) / 2, 1 / sd, 2 * kEpsilon, "std");
    expectRescaling(normalization(values), 1e9, 1 / (count - 1), kEpsilon, "range");

    // Sums of 4e15 + digit lose the digit each time; 8 digits with sum 31, sum of squares 173.
    values.clear();
    const double digits[] = {3, 1, 4, 1, 5, 9, 2, 6};
    for (int i = 0; i < 100'000; ++i) values.push_back(4e15 + digits[i % 8]);
    const double variance = (173 - 31.0 * 31 / 8) * 12'500 / 99'999;
    expectRescaling(standardization(values), 4e15 + 4, 1 / std::sqrt(variance), 2 * kEpsilon, "digits");
    EXPECT_EQ(meanShift(values).shift, 4e15 + 4);  // 4e15 + 3.875, as near as doubles go there
}

TEST(ScalerEngine, ZerosHaveNoSign) {
    for (const Values& values : {Values{-0.0, 0.0}, Values{0.0, -0.0, -0.0}, Values{-0.0, 1.0}})
        for (const Method method : kMethods) EXPECT_FALSE(std::signbit(method(values).shift));
}

TEST(ScalerEngine, TransformsAndInverts) {
    const Values values{-2.5, 0.0, kNaN, 1e300, kInfinity, 3.0};
    const Rescaling rescaling{0.5, -4.0};
    const Values scaled = transform(values, rescaling);
    const Values expected{12.0, 2.0, kNaN, -4e300, -kInfinity, -10.0};
    const std::span<const double> columns[] = {scaled};
    const Values back = inverseTransform(columns, std::span(&rescaling, 1)).front();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isnan(values[i])) {
            EXPECT_TRUE(std::isnan(scaled[i]) && std::isnan(back[i]));
        } else {
            EXPECT_EQ(scaled[i], expected[i]);
            EXPECT_EQ(back[i], values[i]);
        }
    }
}

TEST(ScalerEngine, LargeShiftsDoNotOverflow) {
    const Values values{-kLargest, 0.0, kLargest};
    const std::span<const double> column[] = {values};
    for (const Method method : {standardization, normalization}) {
        const auto rescalings = fit(column, method);
        const auto scaled = transform(column, rescalings);
        const std::span<const double> again[] = {scaled.front()};
        const double start = method == standardization ? -1.0 : 0.0,
                     step = method == standardization ? 1 : 0.5;
        const auto back = inverseTransform(again, rescalings).front();
        for (std::size_t i = 0; i < 3; ++i) {
            // The scale, about 1e-308, is a subnormal number of 50 binary digits.
            EXPECT_NEAR(scaled.front()[i], start + step * static_cast<double>(i), 4e-15);
            EXPECT_NEAR(back[i] / kLargest, values[i] / kLargest, 8e-15);
        }
    }
}

TEST(ScalerEngine, ScaleZeroGoesBackToTheShift) {
    const Values values{7.0, kNaN};
    const std::span<const double> column[] = {values};
    const Rescaling gone[] = {{3.0, 0.0}};
    const auto back = inverseTransform(column, gone).front();
    EXPECT_EQ(back[0], 3.0);
    EXPECT_TRUE(std::isnan(back[1]));
}

TEST(ScalerEngine, ManyColumnsInParallelGiveWhatEachGivesAlone) {
    std::vector<Values> columns(9, Values(10'001));
    unsigned state = 12345;
    for (Values& column : columns)
        for (double& value : column) {
            state = state * 1664525u + 1013904223u;
            value = (state >> 8) % 17 == 0 ? kNaN : static_cast<double>(state >> 8) / 16777216.0 - 0.3;
        }
    const std::vector<std::span<const double>> spans(columns.begin(), columns.end());
    for (const Method method : kMethods) {
        const std::vector<Rescaling> rescalings = fit(spans, method);
        const auto scaled = transform(spans, rescalings);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            EXPECT_EQ(rescalings[i].shift, method(columns[i]).shift);
            EXPECT_EQ(rescalings[i].scale, method(columns[i]).scale);
            std::size_t numDifferent = 0;
            for (std::size_t row = 0; row < columns[i].size(); ++row) {
                const double expected = (columns[i][row] - rescalings[i].shift) * rescalings[i].scale;
                numDifferent += !(scaled[i][row] == expected || std::isnan(expected));
                numDifferent += std::isnan(scaled[i][row]) != std::isnan(expected);
            }
            EXPECT_EQ(numDifferent, 0u);
        }
    }
}

}  // namespace
}  // namespace Tessel::Engine::Scaler
