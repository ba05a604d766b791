#include "data/util/tail_probabilities.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/log1p.hpp>

namespace Tessel::Numeric {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Beyond this Boost.Math may choose a series that does not converge.
constexpr double kManyDegreesOfFreedom = 1e8;

/// P(X > x) of the gamma distribution with a large shape, by the first two terms of the uniform expansion of
/// Temme (1979), SIAM Journal on Mathematical Analysis 10(4). From shape 5e7 on the next terms are
/// below 1e-15 of the result.
double gammaUpperTailOfLargeShape(double shape, double x) {
    const double excess = (x - shape) / shape;
    if (excess <= -1.0) return 1.0;
    const double halfSquare = -boost::math::log1pmx(excess);
    const double eta = std::copysign(std::sqrt(2.0 * halfSquare), excess);
    const double coefficient =
        -1.0 / 3.0 + eta * (1.0 / 12.0 + eta * (-2.0 / 135.0 + eta / 864.0)) - 1.0 / (540.0 * shape);
    return 0.5 * boost::math::erfc(eta * std::sqrt(0.5 * shape)) +
           std::exp(-shape * halfSquare) / std::sqrt(2.0 * std::numbers::pi * shape) * coefficient;
}

}  // namespace

double normalUpperTail(double z) { return 0.5 * boost::math::erfc(z / std::numbers::sqrt2); }

double normalUpperQuantile(double probability) {
    if (probability <= 0.0) return kInfinity;
    if (probability >= 1.0) return -kInfinity;
    return std::numbers::sqrt2 * boost::math::erfc_inv(2.0 * probability);
}

double normalTwoSidedQuantile(double level) {
    // 1 - level is exact in the upper half, and there the upper tail is the accurate side.
    return std::numbers::sqrt2 *
           (level < 0.5 ? boost::math::erf_inv(level) : boost::math::erfc_inv(1.0 - level));
}

double chiSquaredUpperTail(double statistic, double degreesOfFreedom) {
    if (std::isinf(statistic)) return 0.0;
    if (degreesOfFreedom > kManyDegreesOfFreedom)
        return gammaUpperTailOfLargeShape(0.5 * degreesOfFreedom, 0.5 * statistic);
    return boost::math::cdf(
        boost::math::complement(boost::math::chi_squared_distribution<double>(degreesOfFreedom), statistic));
}

double fTwoSided(double ratio, double numeratorDegreesOfFreedom, double denominatorDegreesOfFreedom) {
    if (std::isinf(ratio)) return 0.0;
    const boost::math::fisher_f_distribution<double> distribution(numeratorDegreesOfFreedom,
                                                                  denominatorDegreesOfFreedom);
    const double lower = boost::math::cdf(distribution, ratio);
    const double upper = boost::math::cdf(boost::math::complement(distribution, ratio));
    return std::min(1.0, 2.0 * std::min(lower, upper));
}

double studentTwoSided(double statistic, double degreesOfFreedom) {
    if (std::isinf(statistic)) return 0.0;
    const boost::math::students_t_distribution<double> distribution(degreesOfFreedom);
    return 2.0 * boost::math::cdf(boost::math::complement(distribution, std::abs(statistic)));
}

double studentTwoSidedQuantile(double level, double degreesOfFreedom) {
    const boost::math::students_t_distribution<double> distribution(degreesOfFreedom);
    return boost::math::quantile(boost::math::complement(distribution, 0.5 * (1.0 - level)));
}

double entropyExcess(double x) {
    if (x <= -1.0) return 1.0;
    if (std::abs(x) < 0.5) return (1.0 + x) * boost::math::log1pmx(x) + x * x;
    return (1.0 + x) * std::log1p(x) - x;
}

}  // namespace Tessel::Numeric
