#include <cmath>
#include <numbers>
#include <vector>

#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "engine/dist/family_frame.h"
#include "engine/dist/likelihood.h"
#include "engine/dist/special_functions.h"
#include "engine/dist/tail_quantile.h"

// The normal distribution and its relatives.

namespace Tessel::Engine::Dist {
namespace {

constexpr double kHalfLogTwoPi = 0.91893853320467274178;

/// Mean and the standard deviation with divisor n.
LocationScale meanAndDeviation(const Sample& sample) {
    const double mean = sample.mean();
    return {mean, std::sqrt(sample.meanOf([mean](double x) { return (x - mean) * (x - mean); }))};
}

// Mills' ratio M(z) = (1 - cdf) / density of the standard normal distribution, for z >= 0.

/// 1 / M(z) - z by Laplace's continued fraction, for z >= 5; so many terms give all digits.
double inverseMillsExcess(double z) {
    double tail = 0.0;
    for (int k = 9 + static_cast<int>(520.0 / (z * z)); k > 0; --k) tail = k / (z + tail);
    return tail;
}
double millsRatio(double z) {
    return z < 5.0 ? normalCdf(-z) * std::exp(0.5 * z * z + kHalfLogTwoPi)
                   : 1.0 / (z + inverseMillsExcess(z));
}
/// M(z) - M(z + width), also where the width is small.
double millsDrop(double z, double width) {
    if (width > 0.02) return millsRatio(z) - millsRatio(z + width);
    // Taylor's series about the middle, to the fifth derivative.
    const double middle = z + 0.5 * width, ratio = millsRatio(middle);
    const double first = middle < 5.0 ? middle * ratio - 1.0 : -ratio * inverseMillsExcess(middle);
    const double second = ratio + middle * first, third = 2.0 * first + middle * second;
    const double fourth = 3.0 * second + middle * third, fifth = 4.0 * third + middle * fourth;
    const double square = width * width;
    return -width * (first + square * (third / 24.0 + square * fifth / 1920.0));
}

}  // namespace

struct Normal {
    static constexpr FamilyDescription kDescription{
        .code = 36,
        .displayName = L"Normal",
        .functionName = L"LyrNormal",
        .sentence =
            L"LyrNormal is a continuous distribution, symmetric about its mean, whose density falls "
            L"with the square of the distance.",
        .parameters = {{{L"mean", 0.0}, {L"stdev", 1.0}}},
        .numParameters = 2};

    double location, scale, logScale;

    explicit Normal(const Parameters& p) : Normal(p[0], p[1]) {}
    Normal(double mean, double stdev) : location(mean), scale(stdev), logScale(std::log(stdev)) {}

    bool isValid() const { return isLocationScale(location, scale); }
    Interval support() const { return {}; }
    double z(double x) const { return (x - location) / scale; }
    double logPdf(double x) const { return -0.5 * z(x) * z(x) - logScale - kHalfLogTwoPi; }
    double cdf(double x) const { return normalCdf(z(x)); }
    double complementaryCdf(double x) const { return normalCdf(-z(x)); }
    double inverseCdf(double p) const { return location + scale * normalQuantile(p); }
    Moments moments() const { return {location, scale * scale, 0.0, 0.0, location}; }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const auto [mean, deviation] = meanAndDeviation(sample);
        return {mean, deviation};
    }
};

struct Erf : Normal {
    static constexpr FamilyDescription kDescription{
        .code = 15,
        .displayName = L"Error function",
        .functionName = L"LyrErf",
        .sentence =
            L"LyrErf is a continuous distribution, the normal one of measurement errors with mean 0 "
            L"and precision h.",
        .parameters = {{{L"h", 1.0}}},
        .numParameters = 1};

    explicit Erf(const Parameters& p) : Normal(0.0, 1.0 / (p[0] * std::numbers::sqrt2)) {}

    static Parameters fit(const Sample& sample, const Parameters&) {
        return {1.0 / std::sqrt(2.0 * sample.meanOf([](double x) { return x * x; }))};
    }
};

struct LogNormal {
    static constexpr FamilyDescription kDescription{
        .displayName = L"Lognormal",
        .functionName = L"LyrLogNormal",
        .sentence =
            L"LyrLogNormal is a continuous distribution of positive values whose logarithms are "
            L"normally distributed.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"mean", 0.0}, {L"stdev", 1.0}}},
        .numParameters = 2};

    Normal logarithm;

    explicit LogNormal(const Parameters& p) : logarithm(p) {}

    bool isValid() const { return logarithm.isValid(); }
    Interval support() const { return kPositive; }
    double logPdf(double x) const {
        return x == 0.0 ? -kInfinity : logarithm.logPdf(std::log(x)) - std::log(x);
    }
    auto cdfChain() const {
        return Chain([](double x) { return fastLog(x); },
                     [own = logarithm](double logX) { return own.cdf(logX); });
    }
    auto quantileChain() const {
        return Chain([own = logarithm](double p) { return own.inverseCdf(p); },
                     [](double logX) { return fastExp(logX); });
    }
    double cdf(double x) const { return x == 0.0 ? 0.0 : cdfChain()(x); }
    double complementaryCdf(double x) const {
        return x == 0.0 ? 1.0 : logarithm.complementaryCdf(fastLog(x));
    }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const {
        const double mean = logarithm.location, square = logarithm.scale * logarithm.scale;
        const double excess = std::expm1(square), w = excess + 1.0;
        return {std::exp(mean + 0.5 * square), excess * std::exp(2.0 * mean + square),
                (w + 2.0) * std::sqrt(excess), excess * (6.0 + w * (6.0 + w * (3.0 + w))),
                std::exp(mean - square)};
    }

    static Parameters fit(const Sample& sample, const Parameters& current) {
        const std::vector<double> logs = sample.transformed([](double x) { return std::log(x); });
        return Normal::fit(Sample(logs, 0.0), current);
    }
};

struct InvGauss {
    static constexpr FamilyDescription kDescription{
        .code = 25,
        .displayName = L"Inverse normal",
        .functionName = L"LyrInvNormal",
        .sentence =
            L"LyrInvNormal is a continuous distribution of positive values, the time in which a "
            L"Brownian motion with drift first reaches a level.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"mean", 10.0}, {L"shape", 40.0}}},
        .numParameters = 2};

    double mean, shape, logShape, factor;

    explicit InvGauss(const Parameters& p)
        : mean(p[0]), shape(p[1]), logShape(std::log(shape)), factor(std::exp(2.0 * (shape / mean))) {}

    bool isValid() const { return isPositive(mean) && isPositive(shape); }
    Interval support() const { return kPositive; }
    /// The distance from the mean in the unit of the two normal probabilities that make the cdf.
    double z(double x) const { return std::sqrt(shape / x) * ((x - mean) / mean); }
    /// The other of them, z + 2 sqrt(shape / x); the densities at both differ by a factor that cancels.
    double reflected(double x) const { return std::sqrt(shape / x) * (x / mean + 1.0); }

    double logPdf(double x) const {
        if (x == 0.0) return -kInfinity;
        return 0.5 * (logShape - 3.0 * std::log(x) - z(x) * z(x)) - kHalfLogTwoPi;
    }
    double cdf(double x) const {
        if (x == 0.0) return 0.0;
        if (z(x) > -2.0 && hasExactFactor()) return normalCdf(z(x)) + factor * normalCdf(-reflected(x));
        return z(x) < 0.0 ? exp(-z(x), millsRatio(-z(x)) + millsRatio(reflected(x)))
                          : normalCdf(z(x)) + exp(z(x), millsRatio(reflected(x)));
    }
    double complementaryCdf(double x) const {
        if (x == 0.0) return 1.0;
        return z(x) < 0.0 ? normalCdf(-z(x)) - exp(z(x), millsRatio(reflected(x)))
                          : exp(z(x), millsDrop(z(x), 2.0 * std::sqrt(shape / x)));
    }
    double inverseCdf(double p) const {
        const bool isLower = p < 0.5;
        // x = mean y. Log y is nearly normal (G. Whitmore & M. Yalovsky, Technometrics 20, 1978) unless the
        // ratio is small: then 1 / y has nearly a chi-square distribution, but for the far end.
        const double ratio = shape / mean, root = std::sqrt(ratio);
        const double start = ratio > 0.5 ? std::exp((normalQuantile(p) - 0.5 / root) / root)
                                         : 1.0 / (std::pow(normalQuantile(0.5 * p), 2) / ratio + 0.1 * ratio);
        const auto tailAt = [&](double y) {
            const double x = mean * y, inverse = 1.0 / y;
            return TailPoint{isLower ? cdf(x) : complementaryCdf(x), mean * std::exp(logPdf(x)),
                             0.5 * (ratio * (inverse * inverse - 1.0) - 3.0 * inverse),
                             inverse * inverse * (1.5 - ratio * inverse),
                             inverse * inverse * inverse * (3.0 * ratio * inverse - 3.0)};
        };
        return mean * tailQuantile(tailAt, isLower, isLower ? p : 1.0 - p, start, 0.0, kInfinity);
    }
    Moments moments() const {
        const double ratio = mean / shape, half = 1.5 * ratio;
        // sqrt(1 + half^2) - half without cancellation.
        return {mean, mean * mean * ratio, 3.0 * std::sqrt(ratio), 15.0 * ratio,
                mean / (std::hypot(1.0, half) + half)};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const double mean = sample.mean();
        const double inverse = sample.meanOf([mean](double x) {
            const double relative = (x - mean) / mean;
            return relative * relative / x;
        });
        return {mean, 1.0 / inverse};
    }

 private:
    /// Whether exp(2 shape / mean) has as many digits as what it is multiplied by.
    bool hasExactFactor() const { return factor < 1e7; }
    static double exp(double z, double times) { return times * std::exp(-0.5 * z * z - kHalfLogTwoPi); }
};

struct Student {
    static constexpr FamilyDescription kDescription{
        .code = 47,
        .displayName = L"Student",
        .functionName = L"LyrStudent",
        .sentence =
            L"LyrStudent is a continuous distribution, symmetric and with heavier tails than the "
            L"normal one, that of a mean divided by its estimated standard error.",
        .parameters = {{{L"nu", 5.0}, {L"location", 0.0}, {L"scale", 1.0}}},
        .numParameters = 1,
        .numHidden = 2};

    using Standard = boost::math::students_t_distribution<double, Quiet>;
    double nu, location, scale, logFactor;
    Standard standard;

    explicit Student(const Parameters& p)
        : nu(p[0]),
          location(p[1]),
          scale(p[2]),
          logFactor(isPositive(nu) ? logFactorOf(nu) - std::log(scale) : kNaN),
          standard(nu) {}

    bool isValid() const { return isPositive(nu) && isLocationScale(location, scale); }
    Interval support() const { return {}; }
    double z(double x) const { return (x - location) / scale; }
    double logPdf(double x) const { return logFactor - 0.5 * (nu + 1.0) * logOnePlusSquare(z(x)); }
    double cdf(double x) const { return upperTail(-z(x)); }
    double complementaryCdf(double x) const { return upperTail(z(x)); }
    double inverseCdf(double p) const {
        return location + scale * (p < 0.5 ? boost::math::quantile(standard, p)
                                           : -boost::math::quantile(standard, 1.0 - p));
    }
    Moments moments() const {
        return {nu > 1.0 ? location : kNaN,
                nu > 2.0   ? scale * scale * nu / (nu - 2.0)
                : nu > 1.0 ? kInfinity
                           : kNaN,
                nu > 3.0 ? 0.0 : kNaN,
                nu > 4.0   ? 6.0 / (nu - 4.0)
                : nu > 2.0 ? kInfinity
                           : kNaN,
                location};
    }

    /// Degrees of freedom only: the formula text does not tell location and scale, which stay as they are. A
    /// sample without heavier tails than the normal distribution has no estimate.
    static Parameters fit(const Sample& sample, const Parameters& current) {
        const double location = current[1], scale = current[2];
        const double nu = positiveRoot(
            [&](double value) {
                // The score of the likelihood by nu, and its slope, per observation and doubled.
                Numeric::CompensatedSum score, slope;
                for (std::size_t i = 0; i < sample.size(); ++i) {
                    const double z = (sample[i] - location) / scale, square = z * z;
                    const double ratio = (value + 1.0) * square / (value + square);
                    score.add(ratio / value - std::log1p(square / value));
                    const double both = value * (value + square);
                    slope.add(square * (value * (square - 2.0) - square) / (both * both));
                }
                const double n = static_cast<double>(sample.size());
                const double h = 0.5 * value;
                return ValueAndSlope{
                    score.value() / n + digamma(h + 0.5) - digamma(h) - 1.0 / value,
                    slope.value() / n + 0.5 * (trigamma(h + 0.5) - trigamma(h)) + 1.0 / (value * value)};
            },
            4.0, kNearlyNormal);
        return {nu, location, scale};
    }

 private:
    /// P(T > t): half of I_x(nu / 2, 1 / 2) with x = nu / (nu + t^2), whose power is t times the density.
    double upperTail(double t) const {
        const double square = t * t, a = 0.5 * nu;
        if (!(nu < 1000.0 && square < 1e300)) return boost::math::cdf(standard, -t);
        const double x = nu / (nu + square), y = square / (nu + square);
        const double half =
            0.5 * std::abs(t) * scale * std::exp(logFactor - 0.5 * (nu + 1.0) * std::log1p(square / nu));
        if (x > (a + 1.0) / (a + 2.5)) return 0.5 - std::copysign(half * betaFraction(0.5, a, y, x), t);
        const double tail = half * betaFraction(a, 0.5, x, y);
        return t > 0.0 ? tail : 1.0 - tail;
    }

    static constexpr double kNearlyNormal = 1e6;  ///< The largest estimate.

    /// log(Gamma((nu + 1) / 2) / (Gamma(nu / 2) sqrt(nu pi))).
    static double logFactorOf(double nu) {
        return -std::log(boost::math::tgamma_delta_ratio(0.5 * nu, 0.5, Quiet())) -
               0.5 * std::log(nu * std::numbers::pi);
    }
    /// log(1 + z^2 / nu) when z^2 overflows, too.
    double logOnePlusSquare(double z) const {
        return std::abs(z) < 1e150 ? std::log1p(z * z / nu) : 2.0 * std::log(std::abs(z)) - std::log(nu);
    }
};

struct Cauchy {
    static constexpr FamilyDescription kDescription{
        .code = 7,
        .displayName = L"Cauchy",
        .functionName = L"LyrCauchy",
        .sentence =
            L"LyrCauchy is a continuous distribution, symmetric about its median and with tails so "
            L"heavy that it has no mean.",
        .parameters = {{{L"location", 0.0}, {L"scale", 50.0}}},
        .numParameters = 2};

    double location, scale;

    explicit Cauchy(const Parameters& p) : location(p[0]), scale(p[1]) {}

    bool isValid() const { return isLocationScale(location, scale); }
    Interval support() const { return {}; }
    double z(double x) const { return (x - location) / scale; }
    double pdf(double x) const { return 1.0 / (std::numbers::pi * scale * (1.0 + z(x) * z(x))); }
    double logPdf(double x) const {
        return -2.0 * std::log(std::hypot(1.0, z(x))) - std::log(std::numbers::pi * scale);
    }
    double cdf(double x) const { return lowerTail(z(x)); }
    double complementaryCdf(double x) const { return lowerTail(-z(x)); }
    double inverseCdf(double p) const {
        const double q = p < 0.5 ? p : 1.0 - p;  // nearest tail
        const double distance =
            q < 0.25 ? 1.0 / std::tan(std::numbers::pi * q) : std::tan(std::numbers::pi * (0.5 - q));
        return location + std::copysign(scale * distance, p - 0.5);
    }
    Moments moments() const { return {.mode = location}; }

    /// The likelihood has one maximum, unless half of the sample is one value (J. Copas, Biometrika 62,
    /// 1975).
    static Parameters fit(const Sample& sample, const Parameters&) {
        std::vector<double> x = sample.transformed([](double value) { return value; });
        const double median = medianOf(x);
        std::vector<double> distances(x.size());
        for (std::size_t i = 0; i < x.size(); ++i) distances[i] = std::abs(x[i] - median);
        const auto [location, scale] = fitLocationScale(x, {median, medianOf(distances)}, [](double z) {
            const double r = 1.0 / (1.0 + z * z);
            return LogDensity{std::log(r), -2.0 * z * r, -2.0 * (1.0 - z * z) * r * r};
        });
        return {location, scale};
    }

 private:
    static double lowerTail(double z) {
        const double distance = std::abs(z), inverse = 1.0 / distance;
        const double part = std::atan(distance > 1.0 ? inverse : distance) * std::numbers::inv_pi;
        const double nearer = distance > 1.0 ? part : 0.5 - part;
        return z < 0.0 ? nearer : 1.0 - nearer;
    }
};

template class FamilyDist<Normal>;
template class FamilyDist<Erf>;
template class FamilyDist<LogNormal>;
template class FamilyDist<InvGauss>;
template class FamilyDist<Student>;
template class FamilyDist<Cauchy>;

}  // namespace Tessel::Engine::Dist
