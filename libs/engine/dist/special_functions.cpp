#include "engine/dist/special_functions.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>

namespace Tessel::Engine::Dist {
namespace {

constexpr double kHalfLogTwoPi = 0.91893853320467274178;

/// Where Boost.Math may choose a series that needs more terms than it allows itself.
constexpr double kLargeShape = 1e8;

/// Both tails of the gamma distribution with a large shape, by the first terms of the uniform expansion of
/// N. Temme (1979), SIAM Journal on Mathematical Analysis 10(4); the next are below 1e-15 of the result.
/// @param side  1 for the upper tail, -1 for the lower.
double gammaTailOfLargeShape(double shape, double x, double side) {
    const double excess = (x - shape) / shape;
    if (!(excess > -1.0)) return side > 0.0 ? 1.0 : 0.0;
    if (excess == std::numeric_limits<double>::infinity()) return side > 0.0 ? 0.0 : 1.0;
    const double halfSquare = poissonDeviance(shape, x) / shape;
    const double eta = std::copysign(std::sqrt(2.0 * halfSquare), excess);
    const double coefficient =
        -1.0 / 3.0 + eta * (1.0 / 12.0 + eta * (-2.0 / 135.0 + eta / 864.0)) - 1.0 / (540.0 * shape);
    return 0.5 * boost::math::erfc(side * eta * std::sqrt(0.5 * shape), Quiet()) +
           side * std::exp(-shape * halfSquare) / std::sqrt(2.0 * std::numbers::pi * shape) * coefficient;
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
    const double difference = x - mean;
    if (std::abs(difference) < 0.1 * (x + mean)) {
        // log(x / mean) = 2 atanh(v) with v = (x - mean) / (x + mean).
        const double v = difference / (x + mean), square = v * v;
        double sum = difference * v, term = 2.0 * x * v;
        for (double odd = 3.0;; odd += 2.0) {
            term *= square;
            const double next = sum + term / odd;
            if (next == sum) return sum;
            sum = next;
        }
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

double gammaQuantile(double shape, double p) {
    if (shape < kLargeShape) return boost::math::gamma_p_inv(shape, p, Quiet());
    // Wilson & Hilferty (1931): the error of their cube root is below 1e-12 of x for such shapes.
    const double ninth = 1.0 / (9.0 * shape);
    return shape * std::pow(1.0 - ninth + normalQuantile(p) * std::sqrt(ninth), 3.0);
}
double gammaUpperQuantile(double shape, double q) {
    if (shape < kLargeShape) return boost::math::gamma_q_inv(shape, q, Quiet());
    const double ninth = 1.0 / (9.0 * shape);
    return shape * std::pow(1.0 - ninth - normalQuantile(q) * std::sqrt(ninth), 3.0);
}

double betaLowerTail(double a, double b, double x) { return boost::math::ibeta(a, b, x, Quiet()); }
double betaUpperTail(double a, double b, double x) { return boost::math::ibetac(a, b, x, Quiet()); }

double normalCdf(double z) { return 0.5 * boost::math::erfc(-z / std::numbers::sqrt2, Quiet()); }
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

double logit(double p) {
    return p > 0.25 && p < 0.75 ? std::log1p((2.0 * p - 1.0) / (1.0 - p)) : std::log(p / (1.0 - p));
}

}  // namespace Tessel::Engine::Dist
