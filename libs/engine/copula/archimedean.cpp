#include "engine/copula/archimedean.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "engine/copula/likelihood.h"

// Notation of Hofert, Maechler & McNeil (2012): generator psi, t = sum of its inverse at the margins, d
// variables. The density is (-1)^d psi^(d)(t) times the product of the derivatives of the inverse. All
// polynomials below have positive coefficients by the recurrences used, so that nothing cancels; they are
// kept as logarithms, so that a thousand variables neither overflow nor vanish.

namespace Tessel::Engine::Copula {

namespace {

constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();

/// log(1 - exp(-x)) for x > 0, to all digits.
double log1MinusExp(double x) { return x > 0.7 ? std::log1p(-std::exp(-x)) : std::log(-std::expm1(-x)); }

/// log(exp(a) + exp(b))
double logSum(double a, double b) {
    if (a < b) std::swap(a, b);
    return b == kMinusInfinity ? a : a + std::log1p(std::exp(b - a));
}

/// log(sum(exp(logCoefficients[k] + k * logX)))
double logPolynomial(const std::vector<double>& logCoefficients, double logX) {
    double largest = kMinusInfinity;
    for (std::size_t k = 0; k < logCoefficients.size(); ++k)
        largest = std::max(largest, logCoefficients[k] + static_cast<double>(k) * logX);
    if (largest == kMinusInfinity) return largest;
    double sum = 0.0;
    for (std::size_t k = 0; k < logCoefficients.size(); ++k)
        sum += std::exp(logCoefficients[k] + static_cast<double>(k) * logX - largest);
    return largest + std::log(sum);
}

/// Sums over the variables of functions of the codes, for the observations of a block.
using BlockSums = std::array<double, kBlock>;
void sumOverVariables(const Ranks& ranks, const std::vector<double>& table, std::size_t first,
                      std::size_t count, BlockSums& sums) {
    sums.fill(0.0);
    for (const std::vector<std::uint32_t>& codes : ranks.codes)
        for (std::size_t i = 0; i < count; ++i) sums[i] += table[codes[first + i]];
}

/// log(offset + sum over the variables of exp(exponents[code])) of an observation whose terms overflow or
/// vanish.
double logSumOfExponentials(const Ranks& ranks, const std::vector<double>& exponents, std::size_t row,
                            double offset) {
    double largest = kMinusInfinity;
    for (const std::vector<std::uint32_t>& codes : ranks.codes)
        largest = std::max(largest, exponents[codes[row]]);
    double sum = offset == 0.0 ? 0.0 : offset * std::exp(-largest);
    for (const std::vector<std::uint32_t>& codes : ranks.codes)
        sum += std::exp(exponents[codes[row]] - largest);
    return largest + std::log(sum);
}

// psi(t) = (1 + t)^(-1 / theta)
double claytonLogLikelihood(double theta, const Ranks& ranks) {
    const auto d = static_cast<double>(ranks.numVars());
    double constant = 0.0;
    for (double k = 1.0; k < d; ++k) constant += std::log1p(k * theta);
    std::vector<double> exponents, powers, logs;
    tabulate(
        ranks, [&](double u) { return std::log(u); }, logs);
    tabulate(
        ranks, [&](double u) { return -theta * std::log(u); }, exponents);
    tabulate(
        ranks, [&](double u) { return std::expm1(-theta * std::log(u)); }, powers);
    return sumOverBlocks(
        ranks.numRows, ranks.numRows * ranks.numVars(), [&](std::size_t first, std::size_t count) {
            BlockSums t, sumOfLogs;
            sumOverVariables(ranks, powers, first, count, t);
            sumOverVariables(ranks, logs, first, count, sumOfLogs);
            double sum = 0.0;
            for (std::size_t i = 0; i < count; ++i) {
                const double logOfOnePlusT = std::isfinite(t[i])
                                                 ? std::log1p(t[i])
                                                 : logSumOfExponentials(ranks, exponents, first + i, 1.0 - d);
                sum += constant - (1.0 + theta) * sumOfLogs[i] - (d + 1.0 / theta) * logOfOnePlusT;
            }
            return sum;
        });
}

/// The logarithms of the Eulerian numbers <m, k> / m!, k = 0 .. m - 1, by
/// <m, k> = (k + 1) <m - 1, k> + (m - k) <m - 1, k - 1>.
std::vector<double> logEulerian(std::size_t m) {
    std::vector<double> row{0.0};
    for (std::size_t n = 2; n <= m; ++n) {
        row.push_back(kMinusInfinity);
        const auto size = static_cast<double>(n);
        for (std::size_t k = n; k-- > 0;) {
            const auto place = static_cast<double>(k);
            const double carried = k > 0 ? row[k - 1] + std::log(size - place) : kMinusInfinity;
            row[k] = logSum(row[k] + std::log(place + 1.0), carried) - std::log(size);
        }
    }
    return row;
}

// psi(t) = -log(1 - (1 - exp(-theta)) exp(-t)) / theta, whose derivatives are polylogarithms of negative
// order: Li_{-m}(h) = h sum(<m, k> h^k) / (1 - h)^(m + 1).
double frankLogLikelihood(double theta, const Ranks& ranks) {
    const std::size_t m = ranks.numVars() - 1;
    const auto order = static_cast<double>(m);
    const std::vector<double> polynomial = logEulerian(m);
    const double logP = log1MinusExp(theta);
    const double constant = order * std::log(theta) + std::lgamma(order + 1.0);
    std::vector<double> ratios, rest;
    tabulate(
        ranks, [&](double u) { return log1MinusExp(theta * u) - logP; }, ratios);
    tabulate(
        ranks, [&](double u) { return -theta * u - log1MinusExp(theta * u); }, rest);
    return sumOverBlocks(ranks.numRows, ranks.numRows * ranks.numVars(),
                         [&](std::size_t first, std::size_t count) {
                             BlockSums sumOfRatios, sumOfRest;
                             sumOverVariables(ranks, ratios, first, count, sumOfRatios);
                             sumOverVariables(ranks, rest, first, count, sumOfRest);
                             double sum = 0.0;
                             for (std::size_t i = 0; i < count; ++i) {
                                 const double logH = logP + sumOfRatios[i];
                                 sum += constant + sumOfRest[i] + logH + logPolynomial(polynomial, logH) -
                                        (order + 1.0) * log1MinusExp(-logH);
                             }
                             return sum;
                         });
}

/// The logarithms of the coefficients of x, x^2, ..., x^d of (-1)^d psi^(d)(t) t^d exp(x) / (d - 1)!, x =
/// t^alpha, for psi(t) = exp(-x): differentiating once more gives b[n + 1, k] = (alpha b[n, k - 1] + (n -
/// alpha k) b[n, k]) / n.
std::vector<double> logGumbelCoefficients(std::size_t d, double alpha) {
    std::vector<double> row{std::log(alpha)};
    for (std::size_t n = 1; n < d; ++n) {
        row.push_back(kMinusInfinity);
        const auto size = static_cast<double>(n);
        for (std::size_t i = n + 1; i-- > 0;) {  // entry i is of x^(i + 1)
            const double factor = size - alpha * static_cast<double>(i + 1);
            const double kept = i < n && factor > 0.0 ? row[i] + std::log(factor) : kMinusInfinity;
            const double carried = i > 0 ? row[i - 1] + std::log(alpha) : kMinusInfinity;
            row[i] = logSum(kept, carried) - std::log(size);
        }
    }
    return row;
}

// psi(t) = exp(-t^(1 / theta))
double gumbelLogLikelihood(double theta, const Ranks& ranks) {
    const std::size_t numVars = ranks.numVars();
    const auto d = static_cast<double>(numVars);
    const double alpha = 1.0 / theta;
    const std::vector<double> polynomial = logGumbelCoefficients(numVars, alpha);
    const double constant = d * std::log(theta) + std::lgamma(d);
    std::vector<double> exponents, powers, rest;
    tabulate(
        ranks, [&](double u) { return theta * std::log(-std::log(u)); }, exponents);
    tabulate(
        ranks, [&](double u) { return std::pow(-std::log(u), theta); }, powers);
    tabulate(
        ranks, [&](double u) { return (theta - 1.0) * std::log(-std::log(u)) - std::log(u); }, rest);
    return sumOverBlocks(ranks.numRows, ranks.numRows * numVars, [&](std::size_t first, std::size_t count) {
        BlockSums t, sumOfRest;
        sumOverVariables(ranks, powers, first, count, t);
        sumOverVariables(ranks, rest, first, count, sumOfRest);
        double sum = 0.0;
        for (std::size_t i = 0; i < count; ++i) {
            const double logT = t[i] > 1e-290 && std::isfinite(t[i])
                                    ? std::log(t[i])
                                    : logSumOfExponentials(ranks, exponents, first + i, 0.0);
            const double logX = alpha * logT;
            sum +=
                constant + sumOfRest[i] - d * logT - std::exp(logX) + logX + logPolynomial(polynomial, logX);
        }
        return sum;
    });
}

/// Whether the two variables go rather against than with each other.
bool isNegative(const Ranks& ranks) {
    double sum = 0.0;
    for (std::size_t row = 0; row < ranks.numRows; ++row)
        sum += (ranks.pseudoObservation(ranks.codes[0][row]) - 0.5) *
               (ranks.pseudoObservation(ranks.codes[1][row]) - 0.5);
    return sum < 0.0;
}

/// Turns the order of the second variable around. The ranks that occur may be others then.
void turnSecond(Ranks& ranks) {
    const auto turned = static_cast<std::uint32_t>(2 * ranks.numRows + 2);
    std::vector<std::uint32_t> values = ranks.twiceRanks;
    for (const std::uint32_t twiceRank : ranks.twiceRanks) values.push_back(turned - twiceRank);
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    const auto recode = [&](std::vector<std::uint32_t>& codes, auto&& twiceRankOf) {
        for (std::uint32_t& code : codes)
            code = static_cast<std::uint32_t>(
                std::lower_bound(values.begin(), values.end(), twiceRankOf(ranks.twiceRanks[code])) -
                values.begin());
    };
    recode(ranks.codes[0], [](std::uint32_t twiceRank) { return twiceRank; });
    recode(ranks.codes[1], [&](std::uint32_t twiceRank) { return turned - twiceRank; });
    ranks.twiceRanks = std::move(values);
}

}  // namespace

ThetaRange thetaRange(CopulaType type) {
    switch (type) {
        case CopulaType::CLAYTON:
            return {0.0, 198.0};
        case CopulaType::FRANK:
            return {0.0, 395.0};
        default:
            return {1.0, 100.0};
    }
}

double archimedeanLogLikelihood(CopulaType type, double theta, const Ranks& ranks) {
    switch (type) {
        case CopulaType::CLAYTON:
            return claytonLogLikelihood(theta, ranks);
        case CopulaType::FRANK:
            return frankLogLikelihood(theta, ranks);
        default:
            return gumbelLogLikelihood(theta, ranks);
    }
}

int fitArchimedean(CopulaType type, Ranks ranks, Dependence& result) {
    constexpr double kAlmostIndependent = 1e-6;
    if (ranks.numVars() < 2) return 0;
    const bool isTurned = type == CopulaType::FRANK && ranks.numVars() == 2 && isNegative(ranks);
    if (isTurned) turnSecond(ranks);

    const ThetaRange range = thetaRange(type);
    const double largest = range.upper - range.independence;
    const auto likelihood = [&](double beyond) {
        return archimedeanLogLikelihood(type, range.independence + beyond, ranks);
    };
    const Maximum maximum = maximise(likelihood, kAlmostIndependent, largest);
    if (!(maximum.value > 0.0)) return 0;
    Dependence fitted;
    fitted.isAtLimit = maximum.argument > (1.0 - 1e-4) * largest;
    const double theta = fitted.isAtLimit ? range.upper : range.independence + maximum.argument;
    fitted.theta = isTurned ? -theta : theta;
    fitted.statistic = fitted.isAtLimit ? likelihood(largest) : maximum.value;
    result = std::move(fitted);
    return 1;
}

}  // namespace Tessel::Engine::Copula
