#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "engine/dist/family_frame.h"
#include "engine/dist/likelihood.h"
#include "engine/dist/special_functions.h"

// The discrete families.

namespace Tessel::Engine::Dist {
namespace {

constexpr double kHalfLogTwoPi = 0.91893853320467274178;
/// Whole numbers beyond this are not all doubles.
constexpr double kLargestWhole = 9007199254740992.0;
constexpr Interval kCounts{0.0, kInfinity};

bool isWhole(double value) { return std::abs(value) <= kLargestWhole && value == std::floor(value); }

/// log of successes! failures! / n! to the power -1 times p^successes q^failures, for real counts: the
/// probability of the binomial distribution, p + q = 1.
double logBinomial(double successes, double failures, double p, double q) {
    const double n = successes + failures;
    if (successes == 0.0) return n == 0.0 ? 0.0 : n * (q > 0.5 ? std::log1p(-p) : std::log(q));
    if (failures == 0.0) return n * (p > 0.5 ? std::log1p(-q) : std::log(p));
    if (p == 0.0 || q == 0.0) return -kInfinity;
    return stirlingError(n) - stirlingError(successes) - stirlingError(failures) -
           poissonDeviance(successes, n * p) - poissonDeviance(failures, n * q) - kHalfLogTwoPi -
           0.5 * std::log(successes * (failures / n));
}

/// The distinct values of a sample of whole numbers, ascending, and how often each is there.
struct Counts {
    std::vector<double> values, counts;

    explicit Counts(const Sample& sample) {
        std::vector<double> sorted = sample.transformed([](double x) { return x; });
        std::sort(sorted.begin(), sorted.end());
        for (const double x : sorted) {
            if (values.empty() || values.back() != x) {
                values.push_back(x);
                counts.push_back(0.0);
            }
            counts.back() += 1.0;
        }
    }
    template <class Function>
    double sumOf(Function&& function) const {
        return Numeric::sumOf(values.size(), [&](std::size_t i) { return counts[i] * function(values[i]); });
    }
};

/// A value in the middle of a discrete distribution, from which quantiles are near.
struct Middle {
    double x = kNaN, chance = kNaN, density = kNaN;  ///< P(X <= x), P(X = x).
};

/// The quantile by adding up probabilities from the middle on; NaN when it is many steps away, or rounding
/// might decide.
/// @param ratio  x -> P(X = x + 1) / P(X = x)
template <class Ratio>
double walkFrom(const Middle& middle, double p, Ratio&& ratio) {
    constexpr int kMaxSteps = 100;
    constexpr double kMargin = 1e-13;  // far more than the rounding of as many sums
    auto [x, chance, density] = middle;
    for (int count = 0; count < kMaxSteps; ++count) {
        if (!(std::abs(chance - p) > kMargin)) break;
        const bool wasReached = chance >= p;
        if (wasReached) {
            chance -= density;
            if (chance < p - kMargin) return x;
            x -= 1.0;
            density /= ratio(x);
        } else {
            density *= ratio(x);
            x += 1.0;
            chance += density;
            if (chance > p + kMargin) return x;
        }
    }
    return kNaN;
}

}  // namespace

namespace Frame {
double cornishFisher(double mean, double variance, double skewness, double p) {
    const double z = normalQuantile(p);
    return mean + std::sqrt(variance) * (z + skewness * (z * z - 1.0) / 6.0);
}
}  // namespace Frame

struct Binomial {
    static constexpr FamilyDescription kDescription{
        .code = 6,
        .displayName = L"Binomial",
        .functionName = L"LyrBinomial",
        .sentence =
            L"LyrBinomial is a discrete distribution, the number of successes in a fixed number of "
            L"independent trials.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .dataDomain = kCounts,
        .parameters = {{{L"trials", 10.0}, {L"prob", 0.5}}},
        .numParameters = 2};

    double trials, p, q;
    Middle middle;  ///< None where quantiles may be many steps away.

    explicit Binomial(const Parameters& parameters) : Binomial(parameters[0], parameters[1]) {
        const double variance = trials * p * q;
        if (!isValid() || !(variance > 0.0 && variance < 400.0)) return;
        const double x = std::floor(trials * p);
        middle = {x, cdf(x), Frame::pdf(*this, x)};
    }
    Binomial(double trials_, double p_) : trials(trials_), p(p_), q(1.0 - p) {}

    bool isValid() const {
        return trials >= 1.0 && trials <= kLargestShape && isWhole(trials) && isProbability(p);
    }
    Interval support() const { return {0.0, trials}; }
    double logPdf(double x) const { return logBinomial(x, trials - x, p, q); }
    double cdf(double x) const { return x >= trials ? 1.0 : betaUpperTail(x + 1.0, trials - x, p); }
    double complementaryCdf(double x) const {
        return x >= trials ? 0.0 : betaLowerTail(x + 1.0, trials - x, p);
    }
    double inverseCdf(double chance) const {
        const double odds = p / q;
        const double x =
            walkFrom(middle, chance, [&](double from) { return odds * (trials - from) / (from + 1.0); });
        return x >= 0.0 ? x : Frame::wholeQuantile(*this, chance);
    }
    Moments moments() const {
        const double variance = trials * p * q;
        return {trials * p, variance, (q - p) / std::sqrt(variance), (1.0 - 6.0 * p * q) / variance,
                // Where (n + 1) p is whole it and the number below are as likely.
                std::min(std::max(std::ceil((trials + 1.0) * p) - 1.0, 0.0), trials)};
    }

    static Parameters fit(const Sample& sample, const Parameters&);
};

/// Trials and probability. For n trials the best probability is mean / n; the likelihood with it has one
/// maximum by n, or grows without end where the variance is not below the mean: B. Levin & J. Reeds,
/// Compound Multinomial Likelihood Functions are Unimodal, Annals of Statistics 5 (1977).
Parameters Binomial::fit(const Sample& sample, const Parameters&) {
    const double mean = sample.mean();
    const double variance = sample.meanOf([mean](double x) { return (x - mean) * (x - mean); });
    const Counts counts(sample);
    const double size = static_cast<double>(sample.size()), largest = std::max(1.0, counts.values.back());
    if (largest > kLargestShape || (variance > 0.0 && variance >= mean)) return kNoParameters;
    // How much the likelihood of n + 1 trials is above that of n.
    const auto rise = [&](double n) {
        const auto entropy = [mean](double k) {
            return k > mean ? (k - mean) * std::log1p(-mean / k) : 0.0;  // (k - mean) log(q)
        };
        return counts.sumOf([n](double x) { return -std::log1p(-x / (n + 1.0)); }) +
               size * (mean * std::log(n / (n + 1.0)) + entropy(n + 1.0) - entropy(n));
    };
    double below = largest - 1.0, above = largest;  // rise(below) > 0 >= rise(above)
    for (double step = 1.0; rise(above) > 0.0; step *= 2.0) {
        below = above;
        above += step;
        if (above > kLargestShape) return kNoParameters;
    }
    while (above - below > 1.0) {
        const double middle = std::floor(below + 0.5 * (above - below));
        (rise(middle) > 0.0 ? below : above) = middle;
    }
    return {above, mean / above};
}

struct Bernoulli : Binomial {
    static constexpr FamilyDescription kDescription{
        .code = 1,
        .displayName = L"Bernoulli",
        .functionName = L"LyrBernoulli",
        .sentence = L"LyrBernoulli is a discrete distribution, 1 with a given probability and 0 else.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .dataDomain = {0.0, 1.0},
        .parameters = {{{L"prob", 0.5}}},
        .numParameters = 1};

    explicit Bernoulli(const Parameters& parameters) : Binomial(1.0, parameters[0]) {}

    double pdf(double x) const { return x == 0.0 ? q : p; }
    double logPdf(double x) const { return x == 0.0 ? std::log1p(-p) : std::log(p); }
    double cdf(double x) const { return x < 1.0 ? q : 1.0; }
    auto cdfChain() const {  // between whole numbers too
        return Chain([below = q](double x) { return x < 1.0 ? below : 1.0; });
    }
    double complementaryCdf(double x) const { return x < 1.0 ? p : 0.0; }
    double inverseCdf(double probability) const { return probability <= q ? 0.0 : 1.0; }

    static Parameters fit(const Sample& sample, const Parameters&) { return {sample.mean()}; }
};

struct NegBinomial {
    static constexpr FamilyDescription kDescription{
        .code = 35,
        .displayName = L"Negative binomial",
        .functionName = L"LyrNegBinomial",
        .sentence =
            L"LyrNegBinomial is a discrete distribution, the number of failures before a given number "
            L"of successes in independent trials.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .dataDomain = kCounts,
        .parameters = {{{L"successes", 5.0}, {L"prob", 0.5}}},
        .numParameters = 2};

    double successes, p, q;

    explicit NegBinomial(const Parameters& parameters) : NegBinomial(parameters[0], parameters[1]) {}
    NegBinomial(double successes_, double p_) : successes(successes_), p(p_), q(1.0 - p) {}

    bool isValid() const { return successes > 0.0 && successes <= kLargestShape && p > 0.0 && p <= 1.0; }
    Interval support() const { return {0.0, p < 1.0 ? kInfinity : 0.0}; }
    double logPdf(double x) const { return logBinomial(successes, x, p, q) - std::log1p(x / successes); }
    double cdf(double x) const { return betaLowerTail(successes, x + 1.0, p); }
    double complementaryCdf(double x) const { return betaUpperTail(successes, x + 1.0, p); }
    Moments moments() const {
        const double failures = successes * q;
        return {failures / p, failures / (p * p), (1.0 + q) / std::sqrt(failures),
                6.0 / successes + p * p / failures,
                std::max(0.0, std::ceil((successes - 1.0) * q / p) - 1.0)};
    }

    /// Successes (a real number) and probability. For s successes the best probability is s / (s + mean); no
    /// estimate when the variance is not above the mean: the likelihood then grows without end.
    static Parameters fit(const Sample& sample, const Parameters&) {
        const double mean = sample.mean();
        const double variance = sample.meanOf([mean](double x) { return (x - mean) * (x - mean); });
        if (!(variance > mean)) return kNoParameters;
        const Counts counts(sample);
        const double size = static_cast<double>(sample.size());
        const double successes = positiveRoot(
            [&](double s) {
                const double at = digamma(s), slopeAt = trigamma(s);
                return ValueAndSlope{
                    counts.sumOf([&](double x) { return digamma(s + x) - at; }) / size - std::log1p(mean / s),
                    counts.sumOf([&](double x) { return trigamma(s + x) - slopeAt; }) / size +
                        mean / (s * (s + mean))};
            },
            mean * mean / (variance - mean));
        return {successes, successes / (successes + mean)};
    }
};

struct Geom {
    static constexpr FamilyDescription kDescription{
        .code = 20,
        .displayName = L"Geometric",
        .functionName = L"LyrGeometric",
        .sentence =
            L"LyrGeometric is a discrete distribution, the number of failures before the first "
            L"success in independent trials.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .dataDomain = kCounts,
        .parameters = {{{L"prob", 0.5}}},
        .numParameters = 1};

    double p, logP, logQ, slack;

    explicit Geom(const Parameters& parameters)
        : p(parameters[0]), logP(std::log(p)), logQ(std::log1p(-p)), slack(-1e-15 / logQ) {}

    bool isValid() const { return p > 0.0 && p <= 1.0; }
    Interval support() const { return {0.0, p < 1.0 ? kInfinity : 0.0}; }
    double logPdf(double x) const { return x == 0.0 ? logP : logP + x * logQ; }
    double cdf(double x) const { return -std::expm1((x + 1.0) * logQ); }
    double complementaryCdf(double x) const { return std::exp((x + 1.0) * logQ); }
    /// The quantile is the largest whole number below it, but for rounding.
    double quantileGuess(double probability) const { return logOnePlus(-probability) / logQ; }
    double quickQuantile(double probability, double guess) const {
        const double middle = guess - 0.5, whole = wholeNear(middle);
        const double gap = 0.5 - std::abs(middle - whole);
        // Where rounding might decide, the cdf does.
        return (gap - 1e-12 * (1.0 + whole)) * (1.0 - probability) > slack ? whole : kNaN;
    }
    Moments moments() const {
        const double q = 1.0 - p;
        return {q / p, q / (p * p), (1.0 + q) / std::sqrt(q), 6.0 + p * p / q, 0.0};
    }

    static Parameters fit(const Sample& sample, const Parameters&) { return {1.0 / (1.0 + sample.mean())}; }
};

struct Poisson {
    static constexpr FamilyDescription kDescription{
        .code = 42,
        .displayName = L"Poisson",
        .functionName = L"LyrPoisson",
        .sentence = L"LyrPoisson is a discrete distribution, the number of random events in a span of time.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .dataDomain = kCounts,
        .parameters = {{{L"lambda", 1.0}}},
        .numParameters = 1};

    double mean;

    explicit Poisson(const Parameters& p) : mean(p[0]) {}

    bool isValid() const { return mean > 0.0 && mean <= kLargestWhole; }
    Interval support() const { return kCounts; }
    double logPdf(double x) const {
        if (x == 0.0) return -mean;
        return -stirlingError(x) - poissonDeviance(x, mean) - kHalfLogTwoPi - 0.5 * std::log(x);
    }
    double cdf(double x) const { return gammaUpperTail(x + 1.0, mean); }
    double complementaryCdf(double x) const { return gammaLowerTail(x + 1.0, mean); }
    Moments moments() const {
        return {mean, mean, 1.0 / std::sqrt(mean), 1.0 / mean, std::max(0.0, std::ceil(mean) - 1.0)};
    }

    static Parameters fit(const Sample& sample, const Parameters&) { return {sample.mean()}; }
};

struct Logarithmic {
    static constexpr FamilyDescription kDescription{
        .code = 27,
        .displayName = L"Logarithmic",
        .functionName = L"LyrLogarithmic",
        .sentence =
            L"LyrLogarithmic is a discrete distribution of positive counts, whose probabilities are "
            L"the terms of the series of a logarithm.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .dataDomain = {1.0, kInfinity},
        .parameters = {{{L"theta", 0.5}}},
        .numParameters = 1};

    double theta, logTheta, sum;  ///< `sum` of theta^k / k over all k.

    explicit Logarithmic(const Parameters& p)
        : theta(p[0]), logTheta(std::log(theta)), sum(-std::log1p(-theta)) {}

    bool isValid() const { return theta > 0.0 && theta < 1.0; }
    Interval support() const { return {1.0, kInfinity}; }
    double logPdf(double x) const { return x * logTheta - std::log(x * sum); }
    double cdf(double x) const { return isHead(x) ? head(x) / sum : 1.0 - tail(x) / sum; }
    double complementaryCdf(double x) const { return isHead(x) ? 1.0 - head(x) / sum : tail(x) / sum; }
    Moments moments() const {
        const double q = 1.0 - theta, mean = theta / (q * sum);
        double central2 = 0.0, central3 = 0.0, central4 = 0.0;
        if (theta < 0.1) {        // differences of moments have few digits; the sums have few terms
            double excess = 0.0;  // mean - 1
            for (double k = 2.0; k < 30.0; ++k) excess += (k - 1.0) * std::exp(logPdf(k));
            for (double k = 1.0; k < 30.0; ++k) {
                const double distance = k - 1.0 - excess, square = distance * distance,
                             chance = std::exp(logPdf(k));
                central2 += chance * square;
                central3 += chance * square * distance;
                central4 += chance * square * square;
            }
        } else {
            const double second = mean / q, third = second * (1.0 + theta) / q;
            const double fourth = second * (1.0 + theta * (4.0 + theta)) / (q * q);
            central2 = second - mean * mean;
            central3 = third - mean * (3.0 * second - 2.0 * mean * mean);
            central4 = fourth - mean * (4.0 * third - mean * (6.0 * second - 3.0 * mean * mean));
        }
        return {mean, central2, central3 / (central2 * std::sqrt(central2)),
                central4 / (central2 * central2) - 3.0, 1.0};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        const double mean = sample.mean();
        if (!(mean > 1.0)) return kNoParameters;
        // With theta = 1 - e^-s the mean is (e^s - 1) / s.
        const double s = positiveRoot(
            [mean](double value) {
                const double ratio = std::expm1(value) / value;
                const double slope =
                    value < 1e-4 ? -0.5 - value / 12.0 : 1.0 / value + 1.0 / std::expm1(-value);
                return ValueAndSlope{std::log(mean / ratio), slope};
            },
            2.0 * std::log(mean) + 1e-300, 700.0);
        return {-std::expm1(-s)};
    }

 private:
    /// Whether the first terms are the smaller part of the work: x (1 - theta) is small.
    bool isHead(double x) const { return (1.0 - theta) * (x + 3.0) < 1.0; }

    /// Sum of theta^k / k over k <= x, which is H(x) less the integral from theta to 1 of (1 - t^x) / (1 -
    /// t): a series in 1 - theta.
    double head(double x) const {
        const double q = 1.0 - theta;
        double sumOfSeries = 0.0, term = 1.0;
        for (double n = 1.0; n <= x; ++n) {
            term *= -q * (x - n + 1.0) / n;
            const double next = sumOfSeries + term / n;
            if (next == sumOfSeries) break;
            sumOfSeries = next;
        }
        return digamma(x + 1.0) + std::numbers::egamma + sumOfSeries;
    }

    /// Sum of theta^k / k over k > x: the incomplete beta function B(theta; x + 1, 0).
    double tail(double x) const {
        const double power = std::exp((x + 1.0) * logTheta);
        return power == 0.0 ? 0.0 : power * betaFraction(x + 1.0, 0.0, theta, 1.0 - theta);
    }
};

struct IntUniform {
    static constexpr FamilyDescription kDescription{
        .code = 24,
        .displayName = L"Integer uniform",
        .functionName = L"LyrIntUniform",
        .sentence =
            L"LyrIntUniform is a discrete distribution whose whole numbers from one bound to the "
            L"other are all as likely.",
        .isContinuous = false,
        .isBoundedBelow = true,
        .parameters = {{{L"lower", 0.0}, {L"upper", 10.0}}},
        .numParameters = 2};

    double lower, upper, count;

    explicit IntUniform(const Parameters& p) : lower(p[0]), upper(p[1]), count(upper - lower + 1.0) {}

    bool isValid() const { return isWhole(lower) && isWhole(upper) && lower <= upper; }
    Interval support() const { return {lower, upper}; }
    double pdf(double) const { return 1.0 / count; }
    double cdf(double x) const { return (x - lower + 1.0) / count; }
    double complementaryCdf(double x) const { return (upper - x) / count; }
    double quantileGuess(double p) const { return lower + p * count - 1.0; }
    Moments moments() const {
        const double square = count * count;
        return {0.5 * (lower + upper), (square - 1.0) / 12.0, count > 1.0 ? 0.0 : kNaN,
                -1.2 * (square + 1.0) / (square - 1.0), lower};
    }

    static Parameters fit(const Sample& sample, const Parameters&) {
        return {sample.smallest(), sample.largest()};
    }
};

template class FamilyDist<Bernoulli>;
template class FamilyDist<Binomial>;
template class FamilyDist<Geom>;
template class FamilyDist<IntUniform>;
template class FamilyDist<Logarithmic>;
template class FamilyDist<NegBinomial>;
template class FamilyDist<Poisson>;

}  // namespace Tessel::Engine::Dist
