#include "engine/dist/elementary.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

using namespace Tessel::Engine::Dist;

namespace {

/// 1.5 units of the last place here, less than 1 in the C library.
constexpr double kTolerance = 2.5 * std::numeric_limits<double>::epsilon();

void expectNear(double actual, double expected, double at) {
    const double smallest = std::numeric_limits<double>::denorm_min();
    EXPECT_NEAR(actual, expected, std::max(kTolerance * std::abs(expected), smallest)) << at;
}

}  // namespace

TEST(Elementary, AgreesWithTheCLibrary) {
    for (double x = -745.0; x < 709.0; x += 0.3701) {
        expectNear(fastExp(x), std::exp(x), x);
        expectNear(expOfMinus(std::abs(x)), std::exp(-std::abs(x)), x);
    }
    for (double x = 1e-320; x < 1e300; x *= 1.7) {
        expectNear(fastLog(x), std::log(x), x);
        expectNear(oneLessExp(x), -std::expm1(-x), x);
    }
    for (double p = 1e-310; p < 0.5; p *= 1.31)
        for (const double t : {p, 0.5 - p, 1.0 - p}) {
            if (t == 1.0) continue;
            expectNear(fastLogOfModerate(t), std::log(t), t);
            expectNear(logOnePlus(-t), std::log1p(-t), t);
            expectNear(logOnePlus(t), std::log1p(t), t);
            const double exact = static_cast<double>(std::log(static_cast<long double>(t) / (1.0L - t)));
            expectNear(logit(t), t > 0.25 && t < 0.75 ? 2.0 * std::atanh(2.0 * t - 1.0) : exact, t);
        }
}

TEST(Elementary, HasLimits) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(fastExp(kInfinity), kInfinity);
    EXPECT_EQ(fastExp(710.0), kInfinity);
    EXPECT_EQ(fastExp(-kInfinity), 0.0);
    EXPECT_EQ(fastExp(0.0), 1.0);
    EXPECT_EQ(expOfMinus(kInfinity), 0.0);
    EXPECT_EQ(oneLessExp(kInfinity), 1.0);
    EXPECT_EQ(oneLessExp(0.0), 0.0);
    EXPECT_LT(fastLog(0.0), std::log(std::numeric_limits<double>::denorm_min()));
    EXPECT_EQ(fastLog(1.0), 0.0);
    EXPECT_EQ(logit(0.5), 0.0);
    for (const double x : {-2.5, -2.0, -0.5, 0.0, 0.5, 0.75, 3.0, 1e15})
        EXPECT_EQ(wholeBelow(x), std::floor(x));
}
