#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>
#include <tessel/data/util/error_measures.h>

using namespace Tessel;

namespace {

using Measure = double (*)(const Vector&, const Vector&);

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Case {
    const char* name;
    Measure measure;
    double expected;
    double ofNothing;
};

// Errors 2, -2, -3, 4, -5 by hand; R 4.2.2: 100 * mean(abs(e / a)) over the actual values other than 0.
const Case kCases[] = {{"sum of squares", Util::sumOfSquaredErrors, 58, 0},
                       {"mean square", Util::meanSquaredError, 11.6, kNaN},
                       {"mean absolute deviation", Util::meanAbsoluteDeviation, 3.2, kNaN},
                       {"percentage", Util::meanAbsolutePercentageError, 2.57127710936343190, kNaN},
                       {"mean error", Util::meanForecastError, -0.8, kNaN},
                       {"cumulative error", Util::cumulativeForecastError, -4, 0},
                       {"tracking signal", Util::trackingSignalError, -1.25, kNaN}};

}  // namespace

TEST(ErrorMeasures, CompareActualWithPredicted) {
    const Vector actual{112, 118, 0, 129, 121, 135, kNaN};
    const Vector predicted{110, 120, 3, 125, kNaN, 140, 5};
    for (const Case& test : kCases) {
        EXPECT_NEAR(test.measure(actual, predicted), test.expected, 4e-15 * std::abs(test.expected))
            << test.name;
        EXPECT_THROW(test.measure(actual, Vector{1}), NumElementsMismatch) << test.name;
        const double nothing = test.measure(Vector{kNaN}, Vector{1});
        EXPECT_TRUE(std::isnan(test.ofNothing) ? std::isnan(nothing) : nothing == test.ofNothing)
            << test.name;
    }
}

TEST(ErrorMeasures, AreUndefinedWhereTheyDivideByZero) {
    EXPECT_TRUE(std::isnan(Util::meanAbsolutePercentageError({0, 0}, {1, 2})));
    EXPECT_EQ(Util::meanAbsolutePercentageError({-4, 0}, {-5, 2}), 25.0);
    EXPECT_TRUE(std::isnan(Util::trackingSignalError({1, 2}, {1, 2})));
    EXPECT_EQ(Util::trackingSignalError({3, 5, 9}, {1, 1, 1}), 3.0);  // all errors of one sign: n
}
