#include <cmath>
#include <vector>

#include "engine/dist/family_frame.h"
#include "engine/dist/likelihood.h"
#include "engine/dist/special_functions.h"

// The gamma distribution and its relatives.

namespace Tessel::Engine::Dist {
namespace {

constexpr double kHalfLogTwoPi = 0.91893853320467274178;

/// The shape whose log(shape) - digamma(shape) is `excess`, log(mean) - mean of logs of the sample. NaN for a
/// sample without spread.
double gammaShape(double excess) {
    if (!(excess > 0.0)) return kNaN;
    // T. Minka, Estimating a Gamma distribution (2002), the start; logarithms make the function nearly
    // linear.
    const double start =
        (3.0 - excess + std::sqrt((excess - 3.0) * (excess - 3.0) + 24.0 * excess)) / (12.0 * excess);
    return positiveRoot(
        [excess](double shape) {
            const double value = logLessDigamma(shape);
            return ValueAndSlope{std::log(value / excess), (1.0 / shape - trigamma(shape)) / value};
        },
        start);
}

/// log(mean) - mean of logs, as the mean of u - log(1 + u) with u = x / mean - 1: nothing cancels when the
/// sample has little spread.
double logMeanExcess(const Sample& sample, double mean) {
    return sample.meanOf([mean](double x) { return poissonDeviance(mean, x) / mean; });
}

}  // namespace

struct Gamma {
    static constexpr FamilyDescription kDescription{
        .code = 18,
        .displayName = L"Gamma",
        .functionName = L"LyrGamma",
        .sentence =
            L"LyrGamma is a continuous distribution of positive values, for whole shapes the waiting "
            L"time until that many random events.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"shape", 4.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    double shape, scale, logFactor;

    explicit Gamma(const Parameters& p) : Gamma(p[0], p[1]) {}
    Gamma(double shape_, double scale_)
        : shape(shape_),
          scale(scale_),
          logFactor(shape > 0.0 ? 0.5 * std::log(shape) - stirlingError(shape) - kHalfLogTwoPi : kNaN) {}

    bool isValid() const { return isPositive(shape) && isPositive(scale); }
    Interval support() const { return kPositive; }
    double logPdf(double x) const {
        if (x == 0.0) return shape < 1.0 ? kInfinity : shape > 1.0 ? -kInfinity : -std::log(scale);
        return logFactor - poissonDeviance(shape, x / scale) - std::log(x);
    }
    double cdf(double x) const { return gammaLowerTail(shape, x / scale); }
    double complementaryCdf(double x) const { return gammaUpperTail(shape, x / scale); }
    double inverseCdf(double p) const {
        return scale * (p < 0.5 ? tailQuantile(true, p) : tailQuantile(false, 1.0 - p));
    }
    /// Of the distribution with scale 1.
    double tailQuantile(bool isLower, double target) const {
        return gammaTailQuantile(shape, logFactor, isLower, target);
    }
    Moments moments() const {
        return {shape * scale, shape * scale * scale, 2.0 / std::sqrt(shape), 6.0 / shape,
                std::max(0.0, shape - 1.0) * scale};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const double mean = sample.mean();
        const double shape = gammaShape(logMeanExcess(sample, mean));
        return {shape, mean / shape};
    }
};

struct Erlang : Gamma {
    static constexpr FamilyDescription kDescription{
        .code = 16,
        .displayName = L"Erlang",
        .functionName = L"LyrErlang",
        .sentence =
            L"LyrErlang is a continuous distribution, the waiting time until a whole number of random "
            L"events.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"shape", 2.0}, {L"scale", 1.0}}},
        .numParameters = 2};

    using Gamma::Gamma;
    bool isValid() const { return Gamma::isValid() && shape == std::floor(shape); }

    /// The likelihood has one maximum over real shapes; the best whole one is next to it.
    static Parameters fit(const Sample& sample, const Parameters&) {
        const double mean = sample.mean(), excess = logMeanExcess(sample, mean);
        const double best = gammaShape(excess), below = std::max(1.0, std::floor(best)), above = below + 1.0;
        // The mean of the log-densities at scale = mean / shape, up to what is the same for all shapes.
        const auto likelihood = [excess](double shape) {
            return 0.5 * std::log(shape) - stirlingError(shape) - shape * excess;
        };
        const double shape = likelihood(above) > likelihood(below) ? above : below;
        return {std::isnan(best) ? kNaN : shape, mean / shape};
    }
};

struct ChiSq : Gamma {
    static constexpr FamilyDescription kDescription{
        .code = 8,
        .displayName = L"Chi-square",
        .functionName = L"LyrChiSquare",
        .sentence =
            L"LyrChiSquare is a continuous distribution of positive values, the sum of squares of "
            L"standard normal ones.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"nu", 5.0}}},
        .numParameters = 1};

    explicit ChiSq(const Parameters& p) : Gamma(0.5 * p[0], 2.0) {}

    static Parameters fit(const Sample& sample, const Parameters&) {
        const double meanLog = sample.meanOf([](double x) { return std::log(0.5 * x); });
        return {2.0 * positiveRoot(
                          [meanLog](double shape) {
                              return ValueAndSlope{meanLog - digamma(shape), -trigamma(shape)};
                          },
                          std::exp(meanLog) + 0.5)};
    }
};

struct Pearson5 {
    static constexpr FamilyDescription kDescription{
        .code = 39,
        .displayName = L"Pearson type V",
        .functionName = L"LyrPearson5",
        .sentence =
            L"LyrPearson5 is a continuous distribution of positive values whose reciprocals have a "
            L"gamma distribution.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"shape", 10.0}, {L"scale", 100.0}}},
        .numParameters = 2};

    double scale;
    Gamma reciprocal;

    explicit Pearson5(const Parameters& p) : scale(p[1]), reciprocal(p[0], 1.0) {}

    bool isValid() const { return reciprocal.isValid() && isPositive(scale); }
    Interval support() const { return kPositive; }
    double logPdf(double x) const {
        const double y = scale / x;
        return std::isinf(y) ? -kInfinity : reciprocal.logPdf(y) + std::log(y) - std::log(x);
    }
    double cdf(double x) const { return reciprocal.complementaryCdf(scale / x); }
    double complementaryCdf(double x) const { return reciprocal.cdf(scale / x); }
    double inverseCdf(double p) const {
        return scale / (p < 0.5 ? reciprocal.tailQuantile(false, p) : reciprocal.tailQuantile(true, 1.0 - p));
    }
    Moments moments() const {
        const double a = reciprocal.shape, mean = scale / (a - 1.0);
        return {a > 1.0 ? mean : kInfinity, a > 2.0 ? mean * mean / (a - 2.0) : kInfinity,
                a > 3.0   ? 4.0 * std::sqrt(a - 2.0) / (a - 3.0)
                : a > 2.0 ? kInfinity
                          : kNaN,
                a > 4.0   ? 6.0 * (5.0 * a - 11.0) / ((a - 3.0) * (a - 4.0))
                : a > 2.0 ? kInfinity
                          : kNaN,
                scale / (a + 1.0)};
    }

    static Parameters fit(const Sample& sample, const Parameters& current) {
        const std::vector<double> reciprocals = sample.transformed([](double x) { return 1.0 / x; });
        const Parameters gamma = Gamma::fit(Sample(reciprocals, 0.0), current);
        return {gamma[0], 1.0 / gamma[1]};
    }
};

struct Expo {
    static constexpr FamilyDescription kDescription{
        .code = 17,
        .displayName = L"Exponential",
        .functionName = L"LyrExponential",
        .sentence =
            L"LyrExponential is a continuous distribution of positive values, the waiting time for an "
            L"event that is as likely at any time.",
        .isBoundedBelow = true,
        .dataDomain = kPositive,
        .parameters = {{{L"mean", 1.0}}},
        .numParameters = 1};

    double mean, logMean;

    explicit Expo(const Parameters& p) : mean(p[0]), logMean(std::log(mean)) {}

    bool isValid() const { return isPositive(mean); }
    Interval support() const { return kPositive; }
    double logPdf(double x) const { return -x / mean - logMean; }
    double cdf(double x) const { return oneLessExp(x / mean); }
    double complementaryCdf(double x) const { return expOfMinus(x / mean); }
    double inverseCdf(double p) const { return -mean * logOnePlus(-p); }
    Moments moments() const { return {mean, mean * mean, 2.0, 6.0, 0.0}; }

    static Parameters fit(const Sample& sample, const Parameters&) { return {sample.mean()}; }
};

template class FamilyDist<Gamma>;
template class FamilyDist<Erlang>;
template class FamilyDist<ChiSq>;
template class FamilyDist<Pearson5>;
template class FamilyDist<Expo>;

}  // namespace Tessel::Engine::Dist
