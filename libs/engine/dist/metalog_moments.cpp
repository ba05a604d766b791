#include <algorithm>
#include <cmath>

#include "data/util/compensated_sum.h"
#include "engine/dist/metalog.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The expectation of a function of the logit under the logistic density, by the trapezoidal rule in t with
/// logit = sinh t: the integrand decays at least exponentially in the logit, doubly so in t, and the rule
/// then converges geometrically (H. Takahasi & M. Mori, Double Exponential Formulas for Numerical
/// Integration, Publ. RIMS 9 (1974) 721-741).
/// @param term  of a probability and the logarithm of its weight, returning value times weight.
template <class Term>
double expectation(Term&& term) {
    // Logits of 1e17: a tail with any weight below 1 in double precision has decayed there.
    constexpr double kEnd = 40.0;
    constexpr int kMostHalvings = 9;
    constexpr double kPrecision = 1e-14;
    Numeric::CompensatedSum sum, absolute;
    const auto addAt = [&](double t) {
        const MetalogProbability y = MetalogProbability::ofLogit(std::sinh(t));
        const double size = std::abs(y.logit);
        const double value = term(y, -size - 2.0 * std::log1p(std::exp(-size))) * std::cosh(t);
        if (value == 0.0) return;
        sum.add(value);
        absolute.add(std::abs(value));
    };
    double step = 0.5, previous = kNaN;
    for (double t = -kEnd; t <= kEnd; t += step) addAt(t);
    for (int halving = 0;; ++halving) {
        const double value = step * sum.value();
        if (std::abs(value - previous) <= kPrecision * step * absolute.value() || halving == kMostHalvings)
            return value;
        previous = value;
        step *= 0.5;
        for (double t = -kEnd + step; t <= kEnd; t += 2.0 * step) addAt(t);
    }
}

/// The tail of a distribution with one bound decays like |x|^(-1 / weight) on the other side.
double tailWeight(const MetalogCurve& curve, const MetalogBounds& bounds) {
    if (bounds.hasLower() == bounds.hasUpper()) return 0.0;
    double weight = 0.0, sign = bounds.hasLower() ? 1.0 : -1.0;
    for (std::size_t k = curve.logits().size(); k-- > 0;) weight = weight * (0.5 * sign) + curve.logits()[k];
    return weight;
}

}  // namespace

MetalogMoments momentsOf(const MetalogCurve& curve, const MetalogBounds& bounds) {
    const double weight = tailWeight(curve, bounds);
    if (weight >= 1.0) return {bounds.hasLower() ? kInfinity : -kInfinity, kNaN, kNaN, kNaN};

    // The distance from the finite bound as exp(+-M) keeps its digits and, taken with the weight, stays
    // finite.
    const auto deviation = [&](const MetalogProbability& y, double center, double logWeight) {
        const double z = curve.value(y);
        if (bounds.hasLower() == bounds.hasUpper())
            return (bounds.fromLine(z) - center) * std::exp(logWeight);
        const double sign = bounds.hasLower() ? 1.0 : -1.0;
        const double bound = bounds.hasLower() ? bounds.lower : bounds.upper;
        return sign * std::exp(sign * z + logWeight) - (center - bound) * std::exp(logWeight);
    };
    const auto momentAbout = [&](double center, int order) {
        return expectation([&](const MetalogProbability& y, double logWeight) {
            const double share = logWeight / order;  // each factor takes its share of the weight
            const double factor = deviation(y, center, share);
            double value = factor;
            for (int i = 1; i < order; ++i) value *= factor;
            return std::isnan(value) ? 0.0 : value;
        });
    };

    // Twice, the second time about the first result, where nothing large is left to cancel.
    const MetalogProbability middle = MetalogProbability::ofLogit(0.0);
    const double near = bounds.fromLine(curve.value(middle));
    const double mean = near + momentAbout(near, 1);
    if (2.0 * weight >= 1.0) return {mean, kInfinity, kNaN, kNaN};
    const double variance = momentAbout(mean, 2), deviationUnit = std::sqrt(variance);
    MetalogMoments moments{mean, variance, bounds.hasLower() ? kInfinity : -kInfinity, kInfinity};
    if (3.0 * weight < 1.0) moments.skewness = momentAbout(mean, 3) / (variance * deviationUnit);
    if (4.0 * weight < 1.0) moments.excessKurtosis = momentAbout(mean, 4) / (variance * variance) - 3.0;
    return moments;
}

}  // namespace Tessel::Engine::Dist
