#include <algorithm>
#include <cmath>

#include <boost/math/special_functions/beta.hpp>

#include "engine/dist/family_frame.h"
#include "engine/dist/likelihood.h"
#include "engine/dist/special_functions.h"
#include "engine/dist/tail_quantile.h"

// The families between two bounds.

namespace Tessel::Engine::Dist {
namespace {

constexpr double kHalfLogTwoPi = 0.91893853320467274178;

struct Shapes {
    double a = kNaN;
    double b = kNaN;
};

/// The shapes of a beta distribution whose mean logarithms of x and of 1 - x are given: Newton's method on
/// the logarithms of the shapes, halving steps that do not raise the (concave) likelihood.
Shapes betaShapes(double meanLog, double meanLogRest, Shapes start) {
    const auto likelihood = [&](const Shapes& s) {
        return s.a * meanLog + s.b * meanLogRest + logGamma(s.a + s.b) - logGamma(s.a) - logGamma(s.b);
    };
    Shapes best = start;
    double height = likelihood(best);
    for (int iteration = 0; iteration < 200 && std::isfinite(height); ++iteration) {
        const double both = digamma(best.a + best.b), bothSlope = trigamma(best.a + best.b);
        const double g[2] = {meanLog - digamma(best.a) + both, meanLogRest - digamma(best.b) + both};
        // The negative of the Hessian, positive definite.
        const double h[2] = {trigamma(best.a) - bothSlope, trigamma(best.b) - bothSlope};
        const double determinant = h[0] * h[1] - bothSlope * bothSlope;
        const double step[2] = {(h[1] * g[0] + bothSlope * g[1]) / determinant,
                                (h[0] * g[1] + bothSlope * g[0]) / determinant};
        const double length = std::max(std::abs(step[0]) / best.a, std::abs(step[1]) / best.b);
        for (double factor = length > 0.5 ? 0.5 / length : 1.0;; factor *= 0.5) {
            const Shapes next{best.a + factor * step[0], best.b + factor * step[1]};
            if (length < 1e-9) return next;
            const double nextHeight = likelihood(next);
            if (nextHeight > height || factor * length < 1e-5) {
                best = next;
                height = nextHeight;
                break;
            }
        }
    }
    return {};
}

/// Shapes for a sample strictly between the bounds, from its moments on.
Shapes fitBeta(const Sample& sample, double lower, double upper) {
    const double width = upper - lower;
    const double mean = sample.meanOf([&](double x) { return (x - lower) / width; });
    const double variance =
        sample.meanOf([&](double x) { return std::pow((x - lower) / width - mean, 2.0); });
    if (!(variance > 0.0)) return {};
    const double sum = std::max(mean * (1.0 - mean) / variance - 1.0, 1e-3);
    return betaShapes(sample.meanOf([&](double x) { return std::log((x - lower) / width); }),
                      sample.meanOf([&](double x) { return std::log((upper - x) / width); }),
                      {mean * sum, (1.0 - mean) * sum});
}

}  // namespace

struct Beta {
    static constexpr FamilyDescription kDescription{
        .code = 2,
        .displayName = L"Beta",
        .functionName = L"LyrBeta",
        .sentence =
            L"LyrBeta is a continuous distribution between 0 and 1 with a shape parameter for either "
            L"end.",
        .isBoundedBelow = true,
        .dataDomain = {0.0, 1.0},
        .parameters = {{{L"shape1", 1.5}, {L"shape2", 3.0}}},
        .numParameters = 2};

    double a, b, logFactor;

    explicit Beta(const Parameters& p) : a(p[0]), b(p[1]), logFactor(kNaN) {
        if (isValid())
            logFactor = 0.5 * (std::log(a) + std::log(b) - std::log(a + b)) - kHalfLogTwoPi +
                        stirlingError(a + b) - stirlingError(a) - stirlingError(b);
    }

    bool isValid() const { return isPositive(a) && isPositive(b) && a + b <= kLargestShape; }
    Interval support() const { return {0.0, 1.0}; }
    double logPdf(double x) const { return logPdf(x, 1.0 - x); }
    /// With 1 - x given apart, for callers who know more of its digits.
    double logPdf(double x, double rest) const {
        if (x == 0.0) return atEnd(a, b);
        if (rest == 0.0) return atEnd(b, a);
        const double sum = a + b;
        return logFactor - poissonDeviance(a, sum * x) - poissonDeviance(b, sum * rest) - std::log(x) -
               std::log(rest);
    }
    double cdf(double x) const { return lowerTail(x, 1.0 - x); }
    double complementaryCdf(double x) const { return upperTail(x, 1.0 - x); }
    double lowerTail(double x, double rest) const { return tail(a, b, x, rest); }
    double upperTail(double x, double rest) const { return tail(b, a, rest, x); }
    double inverseCdf(double p) const;
    Moments moments() const {
        const double sum = a + b;
        return {a / sum, a / sum * (b / sum) / (sum + 1.0),
                2.0 * (b - a) / (sum + 2.0) * std::sqrt((sum + 1.0) / a / b),
                6.0 * ((a - b) * (a - b) * (sum + 1.0) / a / b - (sum + 2.0)) / ((sum + 2.0) * (sum + 3.0)),
                mode()};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const Shapes shapes = fitBeta(sample, 0.0, 1.0);
        return {shapes.a, shapes.b};
    }

 private:
    static constexpr double kLargeSum = 1000.0;

    /// The chance on the side of the shape `near` at `x` from its end.
    double tail(double near, double far, double x, double rest) const {
        return a + b > kLargeSum || x == 0.0 || rest == 0.0
                   ? betaLowerTail(near, far, x)
                   : tail(near, far, x, rest, power(near, far, x, rest));
    }
    static double tail(double near, double far, double x, double rest, double power) {
        return x <= (near + 1.0) / (near + far + 2.0) ? power * betaFraction(near, far, x, rest)
                                                      : 1.0 - power * betaFraction(far, near, rest, x);
    }
    /// x^near rest^far / B(near, far), which is the density times x rest.
    double power(double near, double far, double x, double rest) const {
        const double sum = near + far;
        return std::exp(logFactor - poissonDeviance(near, sum * x) - poissonDeviance(far, sum * rest));
    }
    double quantileOdds(bool isLower, double target) const;
    /// The logarithm of the density at the end of the shape `near`.
    static double atEnd(double near, double far) {
        return near < 1.0 ? kInfinity : near > 1.0 ? -kInfinity : std::log(far);
    }
    double mode() const {
        if (a > 1.0 && b > 1.0) return (a - 1.0) / (a + b - 2.0);
        if (a <= 1.0 && b <= 1.0) return a < 1.0 || b == 1.0 ? 0.0 : 1.0;
        return a < b ? 0.0 : 1.0;
    }
};

/// A place to look for the quantile x from, as x / (1 - x).
double Beta::quantileOdds(bool isLower, double target) const {
    const double near = isLower ? a : b, far = isLower ? b : a, sum = a + b;
    double odds = 0.0;  // of the distance from the end that the tail is at
    if (near > 1.0 && far > 1.0) {
        // A. Carter's approximation (Biometrika 34, 1947), as M. Abramowitz & I. Stegun, 26.5.22.
        const double z = -normalQuantile(target), part = (z * z - 3.0) / 6.0;
        const double r = 1.0 / (2.0 * near - 1.0), s = 1.0 / (2.0 * far - 1.0), h = 2.0 / (r + s);
        const double w = z * std::sqrt(h + part) / h - (s - r) * (part + 5.0 / 6.0 - 2.0 / (3.0 * h));
        odds = near / far * std::exp(-2.0 * w);
    }
    if (!(odds > 0.2 * near / far)) {
        // Far out the chance is x^near / (near B(near, far)) (1 - near (far - 1) x / (near + 1) + ...).
        const double logBeta = near * std::log(near / sum) + far * std::log(far / sum) - logFactor;
        const double first = std::exp((std::log(target * near) + logBeta) / near);
        const double x = std::min(first * (1.0 + (far - 1.0) / (near + 1.0) * first), 0.75);
        odds = x / (1.0 - x);
    }
    return isLower ? odds : 1.0 / odds;
}

double Beta::inverseCdf(double p) const {
    const bool isLower = p < 0.5;
    const double target = isLower ? p : 1.0 - p;
    if (a + b <= kLargeSum && std::min(a, b) > 0.1) {
        // As a distance from the nearer end, which keeps its digits.
        const double odds = quantileOdds(isLower, target);
        const bool isFromZero = odds < 1.0;
        const double near = isFromZero ? a : b, far = isFromZero ? b : a;
        const bool isNearTail = isLower == isFromZero;
        const auto tailAt = [&](double x) {
            const double rest = 1.0 - x, factor = power(near, far, x, rest), r = 1.0 / x, s = 1.0 / rest;
            const double first = (near - 1.0) * r, last = (far - 1.0) * s;
            return TailPoint{isNearTail ? tail(near, far, x, rest, factor) : tail(far, near, rest, x, factor),
                             factor * r * s, first - last, -first * r - last * s,
                             2.0 * (first * r * r - last * s * s)};
        };
        const double start = isFromZero ? odds / (1.0 + odds) : 1.0 / (1.0 + odds);
        const double x = tailQuantile(tailAt, isNearTail, target, start, 0.0, 1.0);
        if (x >= 0.0) return isFromZero ? x : 1.0 - x;
    }
    try {
        return isLower ? boost::math::ibeta_inv(a, b, target, Quiet())
                       : boost::math::ibetac_inv(a, b, target, Quiet());
    } catch (const boost::math::evaluation_error&) {  // the search within knows no policy
        return std::numeric_limits<double>::quiet_NaN();
    }
}

struct BetaGeneral {
    static constexpr FamilyDescription kDescription{
        .code = 4,
        .displayName = L"Beta between bounds",
        .functionName = L"LyrBetaGen",
        .sentence =
            L"LyrBetaGen is a continuous distribution between two bounds with a shape parameter for "
            L"either end.",
        .isBoundedBelow = true,
        .parameters = {{{L"shape1", 1.5}, {L"shape2", 3.0}, {L"lower", 0.0}, {L"upper", 10.0}}},
        .numParameters = 4};

    Beta standard;
    double lower, upper, width;

    explicit BetaGeneral(const Parameters& p) : standard(p), lower(p[2]), upper(p[3]), width(upper - lower) {}

    bool isValid() const {
        return standard.isValid() && lower < upper && std::abs(lower) <= kLargest &&
               std::abs(upper) <= kLargest;
    }
    Interval support() const { return {lower, upper}; }
    double place(double x) const { return (x - lower) / width; }
    double rest(double x) const { return (upper - x) / width; }
    double logPdf(double x) const { return standard.logPdf(place(x), rest(x)) - std::log(width); }
    double cdf(double x) const { return standard.lowerTail(place(x), rest(x)); }
    double complementaryCdf(double x) const { return standard.upperTail(place(x), rest(x)); }
    double inverseCdf(double p) const { return lower + width * standard.inverseCdf(p); }
    Moments moments() const {
        const Moments m = standard.moments();
        return {lower + width * m.mean, width * width * m.variance, m.skewness, m.excessKurtosis,
                lower + width * m.mode};
    }

    /// Shapes by maximum likelihood between bounds that lie beyond the range of the sample by the mean gap of
    /// a uniform sample, range / (n - 1). (The likelihood of all four parameters has no maximum: it grows
    /// without end as a bound nears the outermost value.)
    static Parameters fit(const Sample& sample, const Parameters&) {
        const double smallest = sample.smallest(), largest = sample.largest();
        const double gap = (largest - smallest) / static_cast<double>(sample.size() - 1);
        const double lower = smallest - gap, upper = largest + gap;
        if (!(lower < smallest && largest < upper)) return kNoParameters;
        const Shapes shapes = fitBeta(sample, lower, upper);
        return {shapes.a, shapes.b, lower, upper};
    }
};

struct Uniform {
    static constexpr FamilyDescription kDescription{
        .code = 50,
        .displayName = L"Uniform",
        .functionName = L"LyrUniform",
        .sentence =
            L"LyrUniform is a continuous distribution whose values between two bounds are all as "
            L"likely.",
        .isBoundedBelow = true,
        .parameters = {{{L"lower", 0.0}, {L"upper", 1.0}}},
        .numParameters = 2};

    double lower, upper;

    explicit Uniform(const Parameters& p) : lower(p[0]), upper(p[1]) {}

    bool isValid() const {
        return lower < upper && std::abs(lower) <= kLargest && std::abs(upper) <= kLargest;
    }
    Interval support() const { return {lower, upper}; }
    double pdf(double x) const { return lower < x && x < upper ? 1.0 / (upper - lower) : 0.0; }
    double cdf(double x) const { return (x - lower) / (upper - lower); }
    double complementaryCdf(double x) const { return (upper - x) / (upper - lower); }
    double inverseCdf(double p) const { return lower + p * (upper - lower); }
    Moments moments() const {
        const double width = upper - lower;
        return {0.5 * lower + 0.5 * upper, width * width / 12.0, 0.0, -1.2, lower};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        return {sample.smallest(), sample.largest()};
    }
};

template class FamilyDist<Beta>;
template class FamilyDist<BetaGeneral>;
template class FamilyDist<Uniform>;

}  // namespace Tessel::Engine::Dist
