#include <cmath>
#include <numbers>
#include <vector>

#include "engine/dist/family_frame.h"
#include "engine/dist/likelihood.h"
#include "engine/dist/special_functions.h"

// The families of extreme values and lifetimes.

namespace Tessel::Engine::Dist {
namespace {

constexpr double kPiSquared = std::numbers::pi * std::numbers::pi;
constexpr double kGumbelSkewness = 1.13954709940464865749;  // 12 sqrt(6) zeta(3) / pi^3
constexpr double kGumbelKurtosis = 2.4;

/// Location and scale of the Gumbel distribution of maxima: the scale is the root of
/// mean - (mean weighted by exp(-x / scale)) - scale; the location follows.
LocationScale fitMaxima(const std::vector<double>& x) {
    const Sample sample(x, 0.0);
    const double lowest = sample.smallest(), mean = sample.mean() - lowest;
    const double deviation =
        std::sqrt(sample.meanOf([&](double value) { return std::pow(value - lowest - mean, 2.0); }));
    if (!(deviation > 0.0)) return {};
    double meanWeight = 1.0;
    const double scale = positiveRoot(
        [&](double candidate) {
            Numeric::CompensatedSum weights, first, second;
            for (const double value : x) {
                const double y = value - lowest, weight = std::exp(-y / candidate);
                weights.add(weight);
                first.add(weight * y);
                second.add(weight * y * y);
            }
            meanWeight = weights.value() / static_cast<double>(x.size());
            const double weighted = first.value() / weights.value();
            const double variance = second.value() / weights.value() - weighted * weighted;
            return ValueAndSlope{mean - weighted - candidate, -1.0 - variance / (candidate * candidate)};
        },
        deviation * std::sqrt(6.0) / std::numbers::pi);
    return {lowest - scale * std::log(meanWeight), scale};
}

}  // namespace

struct MaxExtreme {
    static constexpr FamilyDescription kDescription{
        .code = 32,
        .displayName = L"Extreme value, maximum",
        .functionName = L"LyrMaxExtreme",
        .sentence =
            L"LyrMaxExtreme is a continuous distribution, the limit of the largest of many values "
            L"(Gumbel).",
        .parameters = {{{L"location", 0.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    double location, scale, logScale;

    explicit MaxExtreme(const Parameters& p) : MaxExtreme(p[0], p[1]) {}
    MaxExtreme(double location_, double scale_)
        : location(location_), scale(scale_), logScale(std::log(scale)) {}

    bool isValid() const { return isLocationScale(location, scale); }
    Interval support() const { return {}; }
    double z(double x) const { return (x - location) / scale; }
    double logPdf(double x) const { return -z(x) - std::exp(-z(x)) - logScale; }
    auto cdfChain() const {
        return Chain([own = *this](double x) { return fastExp(-own.z(x)); },
                     [](double hazard) { return expOfMinus(hazard); });
    }
    auto quantileChain() const {
        return Chain(
            [](double p) { return -fastLogOfModerate(p); },
            [own = *this](double hazard) { return own.location - own.scale * fastLogOfModerate(hazard); });
    }
    double cdf(double x) const { return cdfChain()(x); }
    double complementaryCdf(double x) const { return oneLessExp(fastExp(-z(x))); }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const {
        return {location + scale * std::numbers::egamma, scale * scale * kPiSquared / 6.0, kGumbelSkewness,
                kGumbelKurtosis, location};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const auto [location, scale] = fitMaxima(sample.transformed([](double x) { return x; }));
        return {location, scale};
    }
};

struct MinExtreme {
    static constexpr FamilyDescription kDescription{
        .code = 33,
        .displayName = L"Extreme value, minimum",
        .functionName = L"LyrMinExtreme",
        .sentence =
            L"LyrMinExtreme is a continuous distribution, the limit of the smallest of many values "
            L"(Gumbel).",
        .parameters = {{{L"location", 0.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    MaxExtreme reflected;  ///< The distribution of -x.

    explicit MinExtreme(const Parameters& p) : reflected(-p[0], p[1]) {}

    bool isValid() const { return reflected.isValid(); }
    Interval support() const { return {}; }
    double logPdf(double x) const { return reflected.logPdf(-x); }
    auto cdfChain() const {
        return Chain([own = reflected](double x) { return fastExp(-own.z(-x)); },
                     [](double hazard) { return oneLessExp(hazard); });
    }
    auto quantileChain() const {
        return Chain([](double p) { return -logOnePlus(-p); },
                     [own = reflected](double hazard) {
                         return own.scale * fastLogOfModerate(hazard) - own.location;
                     });
    }
    double cdf(double x) const { return cdfChain()(x); }
    double complementaryCdf(double x) const { return reflected.cdf(-x); }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const {
        const Moments m = reflected.moments();
        return {-m.mean, m.variance, -m.skewness, m.excessKurtosis, -m.mode};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const auto [location, scale] = fitMaxima(sample.transformed([](double x) { return -x; }));
        return {-location, scale};
    }
};

struct Weibull {
    static constexpr FamilyDescription kDescription{
        .code = 52,
        .displayName = L"Weibull",
        .functionName = L"LyrWeibull",
        .sentence =
            L"LyrWeibull is a continuous distribution of positive values, a lifetime whose risk of "
            L"ending is a power of the age.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"shape", 2.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    double shape, scale, logFactor;

    explicit Weibull(const Parameters& p)
        : shape(p[0]), scale(p[1]), logFactor(std::log(shape) - std::log(scale)) {}

    bool isValid() const { return isPositive(shape) && isPositive(scale); }
    Interval support() const { return kPositive; }
    /// Cumulative.
    double hazard(double x) const { return x == 0.0 ? 0.0 : fastExp(shape * fastLog(x / scale)); }
    double logPdf(double x) const {
        if (x == 0.0 && shape == 1.0) return logFactor;
        const double logRatio = std::log(x / scale);
        return logFactor + (shape - 1.0) * logRatio - std::exp(shape * logRatio);
    }
    auto cdfChain() const {
        return Chain([own = *this](double x) { return own.shape * fastLog(x / own.scale); },
                     [](double logHazard) { return fastExp(logHazard); },
                     [](double hazardOfX) { return oneLessExp(hazardOfX); });
    }
    auto quantileChain() const {
        return Chain([](double p) { return -logOnePlus(-p); },
                     [own = *this](double hazardOfX) { return fastLogOfModerate(hazardOfX) / own.shape; },
                     [own = *this](double logRatio) { return own.scale * fastExp(logRatio); });
    }
    double cdf(double x) const { return x == 0.0 ? 0.0 : cdfChain()(x); }
    double complementaryCdf(double x) const { return expOfMinus(hazard(x)); }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const;

    /// The logarithms have the distribution of minima, location log(scale) and scale 1 / shape.
    static Parameters fit(const Sample& sample, const Parameters&) {
        const auto [location, scale] = fitMaxima(sample.transformed([](double x) { return -std::log(x); }));
        return {1.0 / scale, std::exp(-location)};
    }
};

Moments Weibull::moments() const {
    // The moments about 0 are scale^k Gamma(1 + k / shape). Ratios to powers of the mean, less 1, keep the
    // digits that differences of moments lose when the shape is large.
    const double t = 1.0 / shape;
    const double logMean = logGamma(1.0 + t);
    const auto excess = [&](double k) { return std::expm1(logGamma(1.0 + k * t) - k * logMean); };
    const double e2 = excess(2.0), e3 = excess(3.0), e4 = excess(4.0);
    const double mean = scale * std::exp(logMean);
    // From here on the limit of large shapes, the distribution of minima, is nearer than the rounded ratios.
    const bool isLimit = t < 1e-5;
    return {mean, isLimit ? std::pow(scale * t, 2.0) * kPiSquared / 6.0 : mean * mean * e2,
            isLimit ? -kGumbelSkewness : (e3 - 3.0 * e2) / std::pow(e2, 1.5),
            isLimit ? kGumbelKurtosis : (e4 - 4.0 * e3 + 6.0 * e2) / (e2 * e2) - 3.0,
            shape > 1.0 ? scale * std::pow(1.0 - t, t) : 0.0};
}

struct Rayleigh {
    static constexpr FamilyDescription kDescription{
        .code = 43,
        .displayName = L"Rayleigh",
        .functionName = L"LyrRayleigh",
        .sentence =
            L"LyrRayleigh is a continuous distribution of positive values, the length of a plane "
            L"vector with independent normal components.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"scale", 1.0}}},
        .numParameters = 1};

    double scale, logScale;

    explicit Rayleigh(const Parameters& p) : scale(p[0]), logScale(std::log(scale)) {}

    bool isValid() const { return isPositive(scale); }
    Interval support() const { return kPositive; }
    double halfSquare(double x) const { return 0.5 * (x / scale) * (x / scale); }
    double logPdf(double x) const { return std::log(x / scale) - logScale - halfSquare(x); }
    double cdf(double x) const { return oneLessExp(halfSquare(x)); }
    double complementaryCdf(double x) const { return expOfMinus(halfSquare(x)); }
    double inverseCdf(double p) const { return scale * std::sqrt(-2.0 * logOnePlus(-p)); }
    Moments moments() const {
        constexpr double kPi = std::numbers::pi, kRest = 4.0 - kPi;
        return {scale * std::sqrt(0.5 * kPi), 0.5 * kRest * scale * scale,
                2.0 * std::sqrt(kPi) * (kPi - 3.0) / std::pow(kRest, 1.5),
                -(6.0 * kPiSquared - 24.0 * kPi + 16.0) / (kRest * kRest), scale};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        return {std::sqrt(0.5 * sample.meanOf([](double x) { return x * x; }))};
    }
};

struct Pareto {
    static constexpr FamilyDescription kDescription{
        .code = 37,
        .displayName = L"Pareto",
        .functionName = L"LyrPareto",
        .sentence =
            L"LyrPareto is a continuous distribution of the values above a smallest one, of which a "
            L"power of the value remains.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"theta", 20.0}, {L"smallest", 100.0}}},
        .numParameters = 2};

    double shape, smallest, logFactor;

    explicit Pareto(const Parameters& p)
        : shape(p[0]), smallest(p[1]), logFactor(std::log(shape) - std::log(smallest)) {}

    bool isValid() const { return isPositive(shape) && isPositive(smallest); }
    Interval support() const { return {smallest, kInfinity}; }
    /// log(x / smallest), also just above the smallest value.
    static double logRatio(double x, double smallest) {
        return x < 2.0 * smallest ? std::log1p((x - smallest) / smallest) : std::log(x / smallest);
    }
    /// The same without branches.
    double fastLogRatio(double x) const {
        const bool isNear = x < 2.0 * smallest;
        const double quotient = (isNear ? x - smallest : x) / smallest;
        const double ratio = isNear ? 1.0 + quotient : quotient;
        return fastLog(ratio) + (isNear ? quotient - (ratio - 1.0) : 0.0);
    }
    double logPdf(double x) const { return logFactor - (shape + 1.0) * logRatio(x, smallest); }
    auto cdfChain() const {
        return Chain([own = *this](double x) { return own.shape * own.fastLogRatio(x); },
                     [](double hazard) { return oneLessExp(hazard); });
    }
    auto quantileChain() const {
        return Chain([own = *this](double p) { return -logOnePlus(-p) / own.shape; },
                     [own = *this](double ratio) { return own.smallest * fastExp(ratio); });
    }
    double cdf(double x) const { return cdfChain()(x); }
    double complementaryCdf(double x) const { return expOfMinus(shape * fastLogRatio(x)); }
    double inverseCdf(double p) const { return quantileChain()(p); }
    Moments moments() const {
        const double a = shape, mean = smallest * a / (a - 1.0);
        return {a > 1.0 ? mean : kInfinity, a > 2.0 ? mean * (smallest / (a - 1.0)) / (a - 2.0) : kInfinity,
                a > 3.0   ? 2.0 * (1.0 + a) / (a - 3.0) * std::sqrt((a - 2.0) / a)
                : a > 2.0 ? kInfinity
                          : kNaN,
                a > 4.0   ? 6.0 * (a * (a * (a + 1.0) - 6.0) - 2.0) / (a * (a - 3.0) * (a - 4.0))
                : a > 2.0 ? kInfinity
                          : kNaN,
                smallest};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const double smallest = sample.smallest();
        return {1.0 / sample.meanOf([smallest](double x) { return logRatio(x, smallest); }), smallest};
    }
};

template class FamilyDist<MaxExtreme>;
template class FamilyDist<MinExtreme>;
template class FamilyDist<Weibull>;
template class FamilyDist<Rayleigh>;
template class FamilyDist<Pareto>;

}  // namespace Tessel::Engine::Dist
