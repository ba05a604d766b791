#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <numbers>

// Exponentials and logarithms without a branch or a call, so that compilers work on several numbers of an
// array at once. Errors stay below 1.7 units of the last place unless told otherwise. Reduction of the
// argument and series as in J.-M. Muller, Elementary Functions (3rd ed., Birkhauser 2016), ch. 4 and 11.

namespace Tessel::Engine::Dist {

namespace Elementary {

/// log 2 in two parts; the first has so few digits that its products with exponents are exact.
inline constexpr double kLn2High = 0x1.62e42fee00000p-1, kLn2Low = 0x1.a39ef35793c76p-33;
/// A number plus it has the nearest whole number in its last digits.
inline constexpr double kRounder = 0x1.8p52;

/// 2^n for -1022 <= n <= 1023 from n + kRounder.
inline double powerOfTwo(double rounded) {
    return std::bit_cast<double>((std::bit_cast<std::uint64_t>(rounded) + 1023) << 52);
}

/// exp(r) - 1 for |r| <= log(2) / 2, by Taylor's series to r^13.
inline double expm1Series(double r) {
    const double r2 = r * r, r4 = r2 * r2;
    const double a = (1.0 / 2 + r * (1.0 / 6)) + r2 * (1.0 / 24 + r * (1.0 / 120));
    const double b = (1.0 / 720 + r * (1.0 / 5040)) + r2 * (1.0 / 40320 + r * (1.0 / 362880));
    const double c =
        (1.0 / 3628800 + r * (1.0 / 39916800)) + r2 * (1.0 / 479001600 + r * (1.0 / 6227020800.0));
    return r + r2 * ((a + r4 * b) + (r4 * r4) * c);
}

/// exp(x) for -746 <= x <= 710; at these ends it is 0 and infinite.
inline double expBetween(double x) {
    const double place = x * std::numbers::log2e + kRounder, n = place - kRounder;
    const double r = (x - n * kLn2High) - n * kLn2Low;
    // In two steps, as neither the result nor 2^n need be a normal number.
    const double halfPlace = 0.5 * n + kRounder, restPlace = (n - (halfPlace - kRounder)) + kRounder;
    return (1.0 + expm1Series(r)) * powerOfTwo(halfPlace) * powerOfTwo(restPlace);
}

}  // namespace Elementary

/// exp(x) for any x but NaN.
inline double fastExp(double x) {
    const double atLeast = x < -746.0 ? -746.0 : x;
    return Elementary::expBetween(atLeast > 710.0 ? 710.0 : atLeast);
}

/// exp(-x) for x >= 0
inline double expOfMinus(double x) { return Elementary::expBetween(x > 746.0 ? -746.0 : -x); }

/// 1 - exp(-x) for x >= 0, to full relative precision also where x is small.
inline double oneLessExp(double x) {
    using namespace Elementary;
    x = x > 40.0 ? 40.0 : x;  // 1
    const double place = kRounder - x * std::numbers::log2e, n = place - kRounder;
    const double r = (-x - n * kLn2High) - n * kLn2Low, power = powerOfTwo(place);
    return (1.0 - power) - power * expm1Series(r);
}

namespace Elementary {

/// x = 2^exponent (1 + excess), 1 + excess between sqrt(1/2) and sqrt(2).
struct Split {
    double exponent, excess;
};
/// @pre x > 0 is a normal number.
inline Split split(double x) {
    constexpr std::uint64_t kRootOfHalf = std::bit_cast<std::uint64_t>(0.5 * std::numbers::sqrt2);
    constexpr std::uint64_t kMantissa = (std::uint64_t{1} << 52) - 1, kBias = std::uint64_t{1024} << 52;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x) - kRootOfHalf + kBias;
    const double biased = std::bit_cast<double>((bits >> 52) | std::bit_cast<std::uint64_t>(0x1p52));
    return {biased - (0x1p52 + 1024.0), std::bit_cast<double>((bits & kMantissa) + kRootOfHalf) - 1.0};
}

/// 2 artanh(s) - 2 s for |s| <= (sqrt(2) - 1) / (sqrt(2) + 1), by its series to s^21.
inline double artanhRest(double s) {
    const double z = s * s, z2 = z * z, z4 = z2 * z2;
    const double a = (2.0 / 3 + z * (2.0 / 5)) + z2 * (2.0 / 7 + z * (2.0 / 9));
    const double b = (2.0 / 11 + z * (2.0 / 13)) + z2 * (2.0 / 15 + z * (2.0 / 17));
    const double c = 2.0 / 19 + z * (2.0 / 21);
    return s * (z * ((a + z4 * b) + (z4 * z4) * c));
}

/// log x - bias log 2. @pre x > 0 is a normal number
inline double logOfNormal(double x, double bias) {
    const auto [exponent, f] = split(x);
    const double k = exponent - bias;
    // log(1 + f) = 2 artanh(s) with 2 s = f - f^2 / 2 + s f^2 / 2
    const double s = f / (2.0 + f), half = 0.5 * f * f;
    return k * kLn2High - ((half - ((s * half + artanhRest(s)) + k * kLn2Low)) - f);
}

/// What makes a normal number of a subnormal one, and its bias.
inline constexpr double kLift = 0x1p54, kLiftBias = 54.0;

}  // namespace Elementary

/// log x for finite x > 0; less than the logarithm of the smallest number for 0.
inline double fastLog(double x) {
    using namespace Elementary;
    const bool isNormal = x >= std::numeric_limits<double>::min();
    return logOfNormal(x * (isNormal ? 1.0 : kLift), isNormal ? 0.0 : kLiftBias);
}

/// The same for 0 < x <= 1e290, somewhat faster.
inline double fastLogOfModerate(double x) {
    using namespace Elementary;
    return logOfNormal(x * kLift, kLiftBias);
}

/// log(1 + t) for -1 < t <= 1, to full relative precision also where t is small.
inline double logOnePlus(double t) {
    const double sum = 1.0 + t, lost = t - (sum - 1.0);  // 0 unless sum is near 1, the slope there
    return Elementary::logOfNormal(sum, 0.0) + lost;
}

/// log(p / (1 - p)) for 0 < p < 1, with small relative errors also where p is near 1/2: below 5 units of the
/// last place.
inline double logit(double p) {
    using namespace Elementary;
    const auto [exponent, f] = split(p * kLift / (1.0 - p));
    const double k = exponent - kLiftBias;
    // Without an exponent f / (2 + f) is p - (1 - p); so it has no rounding error.
    const double s = k == 0.0 ? 2.0 * p - 1.0 : f / (2.0 + f);
    return k * kLn2High + (2.0 * s + (artanhRest(s) + k * kLn2Low));
}

/// The nearest whole number. @pre |x| <= kMostForWhole
inline constexpr double kMostForWhole = 0x1p51;
inline double wholeNear(double x) { return (x + Elementary::kRounder) - Elementary::kRounder; }
/// The largest whole number that is not above x. @pre |x| <= kMostForWhole
inline double wholeBelow(double x) {
    const double nearest = wholeNear(x);
    return nearest > x ? nearest - 1.0 : nearest;
}

}  // namespace Tessel::Engine::Dist
