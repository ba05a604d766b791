#include <cmath>
#include <numbers>
#include <vector>

#include "engine/dist/family_frame.h"
#include "engine/dist/likelihood.h"
#include "engine/dist/special_functions.h"

// Families with exponential tails to both sides, and those of their exponentials.

namespace Tessel::Engine::Dist {
namespace {

/// Maximum likelihood of the logistic distribution; unique unless all values are equal. Reorders x.
LocationScale fitLogistic(std::vector<double>& x) {
    const double median = medianOf(x);
    const Sample sample(x, 0.0);
    const double spread = sample.meanOf([median](double value) { return std::abs(value - median); });
    if (!(spread > 0.0)) return {};
    return fitLocationScale(x, {median, 0.72 * spread}, [](double z) {  // mean distance: 2 log(2) scale
        const double e = std::exp(-std::abs(z)), d = 1.0 / (1.0 + e);
        return LogDensity{-std::abs(z) - 2.0 * std::log1p(e), -std::copysign((1.0 - e) * d, z),
                          -2.0 * e * d * d};
    });
}

}  // namespace

struct Laplace {
    static constexpr FamilyDescription kDescription{
        .code = 26,
        .displayName = L"Laplace",
        .functionName = L"LyrLaplace",
        .sentence =
            L"LyrLaplace is a continuous distribution, symmetric and falling exponentially to both "
            L"sides of its peak.",
        .parameters = {{{L"location", 0.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    double location, scale, logFactor;

    explicit Laplace(const Parameters& p)
        : location(p[0]), scale(p[1]), logFactor(-std::log(scale) - std::numbers::ln2) {}

    bool isValid() const { return isLocationScale(location, scale); }
    Interval support() const { return {}; }
    double z(double x) const { return (x - location) / scale; }
    static double lowerTail(double z) {
        const double nearer = 0.5 * expOfMinus(std::abs(z));
        return z < 0.0 ? nearer : 1.0 - nearer;
    }
    double logPdf(double x) const { return logFactor - std::abs(z(x)); }
    auto cdfChain() const {
        return Chain([own = *this](double x) { return own.z(x); }, [](double z) { return lowerTail(z); });
    }
    double cdf(double x) const { return cdfChain()(x); }
    double complementaryCdf(double x) const { return lowerTail(-z(x)); }
    auto quantileChain() const {
        return Chain(
            [](double p) {
                const double rest = 1.0 - p, nearer = p < rest ? p : rest;
                return std::copysign(fastLogOfModerate(2.0 * nearer), p - 0.5);
            },
            [own = *this](double z) { return own.location + own.scale * z; });
    }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const { return {location, 2.0 * scale * scale, 0.0, 3.0, location}; }

    static Parameters fit(const Sample& sample, const Parameters&) {
        std::vector<double> x = sample.transformed([](double value) { return value; });
        const double median = medianOf(x);
        return {median, sample.meanOf([median](double value) { return std::abs(value - median); })};
    }
};

struct Logistic {
    static constexpr FamilyDescription kDescription{
        .code = 28,
        .displayName = L"Logistic",
        .functionName = L"LyrLogistic",
        .sentence =
            L"LyrLogistic is a continuous distribution, symmetric, with a cdf that is the curve of "
            L"limited growth.",
        .parameters = {{{L"location", 0.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    double location, scale, logScale;

    explicit Logistic(const Parameters& p) : location(p[0]), scale(p[1]), logScale(std::log(scale)) {}

    bool isValid() const { return isLocationScale(location, scale); }
    Interval support() const { return {}; }
    double z(double x) const { return (x - location) / scale; }
    double logPdf(double x) const { return standardLogPdf(z(x)) - logScale; }
    auto cdfChain() const {
        return Chain([own = *this](double x) { return own.z(x); }, [](double z) { return standardCdf(z); });
    }
    double cdf(double x) const { return cdfChain()(x); }
    double complementaryCdf(double x) const { return standardCdf(-z(x)); }
    auto quantileChain() const {
        return Chain([](double p) { return logit(p); },
                     [own = *this](double z) { return own.location + own.scale * z; });
    }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const {
        constexpr double kVariance = std::numbers::pi * std::numbers::pi / 3.0;
        return {location, scale * scale * kVariance, 0.0, 1.2, location};
    }

    static double standardLogPdf(double z) { return -std::abs(z) - 2.0 * std::log1p(std::exp(-std::abs(z))); }
    static double standardCdf(double z) { return 1.0 / (1.0 + fastExp(-z)); }

    static Parameters fit(const Sample& sample, const Parameters&) {
        std::vector<double> x = sample.transformed([](double value) { return value; });
        const auto [location, scale] = fitLogistic(x);
        return {location, scale};
    }
};

struct LogLogistic {
    static constexpr FamilyDescription kDescription{
        .code = 29,
        .displayName = L"Log-logistic",
        .functionName = L"LyrLogLogistic",
        .sentence =
            L"LyrLogLogistic is a continuous distribution of the values above a location; the "
            L"logarithms of the distances from it have a logistic distribution.",
        .isBoundedBelow = true,
        .parameters = {{{L"location", 0.0}, {L"scale", 1.0}, {L"shape", 5.0}}},
        .numParameters = 3};

    double location, scale, shape, logFactor;

    explicit LogLogistic(const Parameters& p)
        : location(p[0]), scale(p[1]), shape(p[2]), logFactor(std::log(shape) - std::log(scale)) {}

    bool isValid() const { return isLocationScale(location, scale) && isPositive(shape); }
    Interval support() const { return {location, kInfinity}; }
    double z(double x) const { return shape * fastLog((x - location) / scale); }
    auto cdfChain() const {
        return Chain([own = *this](double x) { return own.z(x); },
                     [](double logOdds) { return Logistic::standardCdf(logOdds); });
    }
    auto quantileChain() const {
        return Chain([own = *this](double p) { return logit(p) / own.shape; },
                     [own = *this](double logRatio) { return own.location + own.scale * fastExp(logRatio); });
    }
    double logPdf(double x) const {
        if (x == location) return shape < 1.0 ? kInfinity : shape > 1.0 ? -kInfinity : logFactor;
        const double logRatio = std::log((x - location) / scale);
        return logFactor + Logistic::standardLogPdf(shape * logRatio) - logRatio;
    }
    double cdf(double x) const { return x == location ? 0.0 : cdfChain()(x); }
    double complementaryCdf(double x) const { return x == location ? 1.0 : Logistic::standardCdf(-z(x)); }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const;

    /// Scale and shape; the location stays as it is, because the likelihood of all three has no maximum (it
    /// grows without end as the location nears the smallest value). No estimate when a value is not above it.
    static Parameters fit(const Sample& sample, const Parameters& current) {
        const double location = current[0];
        std::vector<double> logs = sample.transformed([&](double x) { return std::log(x - location); });
        if (!(sample.smallest() > location)) return kNoParameters;
        const auto [meanLog, scale] = fitLogistic(logs);
        return {location, std::exp(meanLog), 1.0 / scale};
    }
};

Moments LogLogistic::moments() const {
    // The moments about the location are scale^k g(k angle) with g(t) = t / sin(t), for k < shape.
    const double angle = std::numbers::pi / shape;
    const auto logG = [](double t) {
        if (t > 0.1) return std::log(t / std::sin(t));
        const double s = t * t;
        return s * (1.0 / 6.0 + s * (1.0 / 180.0 + s * (1.0 / 2835.0 + s * (1.0 / 37800.0 + s / 467775.0))));
    };
    // Ratios to powers of the mean, less 1, keep the digits that differences of moments lose.
    const auto excess = [&](double k) { return std::expm1(logG(k * angle) - k * logG(angle)); };
    Moments result{
        kInfinity, shape > 1.0 ? kInfinity : kNaN, shape > 2.0 ? kInfinity : kNaN,
        shape > 2.0 ? kInfinity : kNaN,
        location + (shape > 1.0 ? scale * std::pow((shape - 1.0) / (shape + 1.0), 1.0 / shape) : 0.0)};
    if (shape > 1.0) result.mean = location + scale * std::exp(logG(angle));
    if (shape <= 2.0) return result;
    const double e2 = excess(2.0);
    result.variance = std::pow(scale * std::exp(logG(angle)), 2.0) * e2;
    // From here on the limit of large shapes, the logistic distribution, is nearer than the rounded ratios.
    const bool isLimit = angle < 1e-4;
    if (shape > 3.0) result.skewness = isLimit ? 0.0 : (excess(3.0) - 3.0 * e2) / std::pow(e2, 1.5);
    if (shape > 4.0)
        result.excessKurtosis =
            isLimit ? 1.2 : (excess(4.0) - 4.0 * excess(3.0) + 6.0 * e2) / (e2 * e2) - 3.0;
    return result;
}

template class FamilyDist<Laplace>;
template class FamilyDist<Logistic>;
template class FamilyDist<LogLogistic>;

}  // namespace Tessel::Engine::Dist
