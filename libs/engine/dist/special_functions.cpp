#include "engine/dist/special_functions.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>

#include "engine/dist/tail_quantile.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kHalfLogTwoPi = 0.91893853320467274178;

/// From here on Boost.Math takes a number of steps that grows with the root of the shape, at last more than
/// it allows itself.
constexpr double kLargeShape = 1e5;

/// Both tails of the gamma distribution with a large shape, by the uniform expansion of N. Temme (1979), SIAM
/// Journal on Mathematical Analysis 10(4); the terms left out are below 1e-14 of the result down to tails of
/// 1e-300.
/// @param side  1 for the upper tail, -1 for the lower.
double gammaTailOfLargeShape(double shape, double x, double side) {
    const double excess = (x - shape) / shape;
    const double exponent = poissonDeviance(shape, x);
    if (!(exponent < 750.0)) return (excess > 0.0) == (side > 0.0) ? 0.0 : 1.0;  // below the smallest number
    const double t = std::copysign(std::sqrt(2.0 * exponent / shape), excess);
    const double c0 =
        -1.0 / 3.0 +
        t * (1.0 / 12.0 + t * (-2.0 / 135.0 + t * (1.0 / 864.0 + t * (1.0 / 2835.0 + t * (-139.0 / 777600.0 +
                                                                                          t / 25515.0)))));
    const double c1 = -1.0 / 540.0 + t * (-1.0 / 288.0 + t * (1.0 / 378.0 - t * 77.0 / 77760.0));
    const double c2 = 25.0 / 6048.0 - t * 139.0 / 51840.0;
    return 0.5 * boost::math::erfc(side * std::copysign(std::sqrt(exponent), excess), Quiet()) +
           side * std::exp(-exponent) / std::sqrt(2.0 * std::numbers::pi * shape) *
               (c0 + (c1 + c2 / shape) / shape);
}

}  // namespace

double stirlingError(double x) {
    if (x < 10.0) return logGamma(x + 1.0) - (x + 0.5) * std::log(x) + x - kHalfLogTwoPi;
    // Bernoulli numbers B_2k / (2k (2k - 1)); the first term left out is below 1e-16 of the sum.
    const double r = 1.0 / (x * x);
    const double series =
        1.0 / 12.0 -
        r * (1.0 / 360.0 -
             r * (1.0 / 1260.0 -
                  r * (1.0 / 1680.0 - r * (1.0 / 1188.0 - r * (691.0 / 360360.0 -
                                                               r * (1.0 / 156.0 - r * 3617.0 / 122400.0))))));
    return series / x;
}

double poissonDeviance(double x, double mean) {
    if (std::isinf(mean)) return mean;
    const double difference = x - mean, halfSum = 0.5 * x + 0.5 * mean;
    if (std::abs(difference) < 0.2 * halfSum) {
        // log(x / mean) = 2 atanh(v) with v = (x - mean) / (x + mean), |v| < 0.1.
        const double v = 0.5 * difference / halfSum, square = v * v;
        double sum = difference * v, term = 2.0 * v * x;
        for (double odd = 3.0; odd < 40.0; odd += 2.0) {
            term *= square;
            const double next = sum + term / odd;
            if (next == sum) break;
            sum = next;
        }
        return sum;
    }
    return x == 0.0 ? mean : x * std::log(x / mean) + mean - x;
}

double gammaLowerTail(double shape, double x) {
    return shape < kLargeShape ? boost::math::gamma_p(shape, x, Quiet())
                               : gammaTailOfLargeShape(shape, x, -1.0);
}
double gammaUpperTail(double shape, double x) {
    return shape < kLargeShape ? boost::math::gamma_q(shape, x, Quiet())
                               : gammaTailOfLargeShape(shape, x, 1.0);
}

namespace {

/// From here on the error of the cube root of Wilson & Hilferty (1931) is below 1e-12 of x.
constexpr double kNearlyNormalShape = 1e8;

/// Their quantile, from that of the standard normal distribution.
double cubeRootQuantile(double shape, double z) {
    const double ninth = 1.0 / (9.0 * shape), root = 1.0 - ninth + z * std::sqrt(ninth);
    return shape * root * root * root;
}

}  // namespace

double gammaTailQuantile(double shape, double logFactor, bool isLower, double target) {
    const double z = isLower ? normalQuantile(target) : -normalQuantile(target);
    double start = cubeRootQuantile(shape, z);
    if (shape >= kNearlyNormalShape) return start;
    // Near 0 the chance is x^shape / Gamma(shape + 1) (1 - x shape / (shape + 1) + ...).
    if ((isLower && start < 0.2 * shape) || (!isLower && shape < 1.0)) {
        const double near =
            isLower ? shape * std::exp((std::log(target * shape) - logFactor) / shape - 1.0)
                    : std::exp((std::log1p(-target) + std::log1p(boost::math::tgamma1pm1(shape, Quiet()))) /
                               shape);
        if (near < 1e-20) return near;
        if (isLower || near < 0.2 * shape) start = near * (1.0 + near / (shape + 1.0));
    }
    return tailQuantile(
        [&](double x) {
            const double inverse = 1.0 / x, slope = (shape - 1.0) * inverse;
            return TailPoint{isLower ? gammaLowerTail(shape, x) : gammaUpperTail(shape, x),
                             std::exp(logFactor - poissonDeviance(shape, x)) * inverse, slope - 1.0,
                             -slope * inverse, 2.0 * slope * inverse * inverse};
        },
        isLower, target, start, 0.0, std::numeric_limits<double>::infinity());
}

namespace {

/// Boost.Math takes powers of 1 - x as it comes rounded, which the shapes multiply: beyond this shape in long
/// double, where it matters less.
constexpr double kLargeBetaShape = 1000.0;
using QuietAndWide = Policies::normalise<Quiet, Policies::promote_double<true>>::type;

template <class Policy>
double betaTail(double a, double b, double x, bool isUpper, const Policy& policy) {
    return isUpper ? boost::math::ibetac(a, b, x, policy) : boost::math::ibeta(a, b, x, policy);
}

/// Beyond this shape the beta distribution is as good as a gamma distribution of -log(1 - x).
constexpr double kHugeBetaShape = 1e15;

double betaTail(double a, double b, double x, bool isUpper) {
    if (b > kHugeBetaShape) {  // M. Wise, Biometrika 37 (1950)
        const double y = -(b + 0.5 * (a - 1.0)) * std::log1p(-x);
        return isUpper ? gammaUpperTail(a, y) : gammaLowerTail(a, y);
    }
    return std::max(a, b) > kLargeBetaShape ? betaTail(a, b, x, isUpper, QuietAndWide())
                                            : betaTail(a, b, x, isUpper, Quiet());
}

}  // namespace

double betaLowerTail(double a, double b, double x) { return betaTail(a, b, x, false); }
double betaUpperTail(double a, double b, double x) { return betaTail(a, b, x, true); }

double betaFraction(double a, double b, double x, double y) {
    // Lentz's method.
    double value = a * (a * y - b * x + 1.0) / (a + 1.0), c = value, d = 0.0;
    for (double m = 1.0; m < 10000.0; ++m) {
        const double inverse = 1.0 / (a + 2.0 * m - 1.0), step = m * (b - m) * x * inverse;
        const double numerator = (a + m - 1.0) * (a + b + m - 1.0) * x * step * inverse;
        const double denominator =
            m + step + (a + m) * (a * y - b * x + 1.0 + m * (1.0 + y)) / (a + 2.0 * m + 1.0);
        d = 1.0 / (denominator + numerator * d);
        c = denominator + numerator / c;
        value *= c * d;
        if (std::abs(c * d - 1.0) < 2e-16) break;
    }
    return 1.0 / value;
}

double normalCdf(double z) { return 0.5 * std::erfc(-z / std::numbers::sqrt2); }
double normalQuantile(double p) { return -std::numbers::sqrt2 * boost::math::erfc_inv(2.0 * p, Quiet()); }

double digamma(double x) { return boost::math::digamma(x, Quiet()); }
double trigamma(double x) { return boost::math::trigamma(x, Quiet()); }
double logGamma(double x) { return boost::math::lgamma(x, Quiet()); }

double logLessDigamma(double x) {
    if (x < 10.0) return std::log(x) - digamma(x);
    const double r = 1.0 / (x * x);
    const double series =
        1.0 / 12.0 -
        r * (1.0 / 120.0 -
             r * (1.0 / 252.0 -
                  r * (1.0 / 240.0 -
                       r * (1.0 / 132.0 - r * (691.0 / 32760.0 - r * (1.0 / 12.0 - r * 3617.0 / 8160.0))))));
    return 0.5 / x + r * series;
}

}  // namespace Tessel::Engine::Dist
