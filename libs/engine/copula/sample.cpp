#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "data/io/parallel.h"
#include "engine/copula/archimedean.h"
#include "engine/copula/correlation_matrix.h"
#include "engine/copula/ranks.h"
#include "engine/copula/special_functions.h"

namespace Tessel::Engine::Copula {

namespace {

/// Calls work(first observation, how many) for blocks of observations.
template <class Work>
void forEachBlock(MutableMatrix sample, const Work& work) {
    const std::size_t numRows = sample.front().size();
    IO::forEachIndex((numRows + kBlock - 1) / kBlock, 16 * numRows * sample.size(), [&](std::size_t block) {
        work(block * kBlock, std::min(kBlock, numRows - block * kBlock));
    });
}

// ---- Archimedean copulas. Frailties and exponentials are kept as logarithms: strong dependence makes them
// too large or too small for a double.

/// log V of a gamma variate V of shape 1 / theta.
double logGammaFrailty(double theta, double uniform) {
    const double shape = 1.0 / theta;
    const double variate = boost::math::gamma_p_inv(shape, uniform, MathPolicy());
    if (variate > 1e-280) return std::log(variate);
    return theta * (std::log(uniform) + std::lgamma(shape + 1.0));  // the distribution function next to 0
}

/// A variate of the logarithmic series with parameter 1 - exp(-theta).
double logarithmicFrailty(double theta, double uniform1, double uniform2) {
    const double p = -std::expm1(-theta), q = -std::expm1(-theta * uniform2);
    if (uniform1 >= p || uniform1 > q) return 1.0;
    return std::floor(1.0 + std::log(uniform1) / std::log1p(-std::exp(-theta * uniform2)));
}

/// log V of a positive stable variate with the Laplace transform exp(-t^(1 / theta)).
double logStableFrailty(double theta, double uniform1, double uniform2) {
    if (theta == 1.0) return 0.0;
    const double alpha = 1.0 / theta, angle = std::numbers::pi * uniform1;
    return std::log(std::sin(alpha * angle)) - theta * std::log(std::sin(angle)) +
           (theta - 1.0) * (std::log(std::sin((1.0 - alpha) * angle)) - std::log(-std::log(uniform2)));
}

double claytonMargin(double theta, double logRatio) {
    const double log1PlusRatio =
        logRatio > 35.0 ? logRatio : std::log1p(std::exp(logRatio));  // ratio: of exponential and frailty
    return std::exp(-log1PlusRatio / theta);
}

double frankMargin(double theta, double ratio) {
    const double pTimesExp = -std::expm1(-theta) * std::exp(-ratio);
    if (pTimesExp < 0.5) return -std::log1p(-pTimesExp) / theta;
    return -std::log(-std::expm1(-ratio) + std::exp(-theta - ratio)) / theta;
}

double gumbelMargin(double theta, double logRatio) { return std::exp(-std::exp(logRatio / theta)); }

/// Marshall & Olkin: frailty(mixing, row) for an observation, margin(exponential variate, frailty) for each
/// number.
template <class Frailty, class Margin>
void sampleByFrailty(DataMatrix mixing, MutableMatrix sample, const Frailty& frailty, const Margin& margin) {
    forEachBlock(sample, [&](std::size_t first, std::size_t count) {
        for (std::size_t row = first; row < first + count; ++row) {
            const double common = frailty(mixing, row);
            for (const std::span<double> variable : sample)
                variable[row] = strictlyInside(margin(-std::log(variable[row]), common));
        }
    });
}

void sampleClayton(double theta, DataMatrix mixing, MutableMatrix sample) {
    sampleByFrailty(
        mixing, sample,
        [&](DataMatrix uniforms, std::size_t row) { return logGammaFrailty(theta, uniforms[0][row]); },
        [&](double exponential, double frailty) {
            return claytonMargin(theta, std::log(exponential) - frailty);
        });
}

void sampleNegativeClayton(double theta, MutableMatrix sample) {
    // The inverse of the conditional distribution of the second variable at w.
    const double power = -theta / (1.0 + theta);
    forEachBlock(sample, [&](std::size_t first, std::size_t count) {
        for (std::size_t row = first; row < first + count; ++row) {
            const double u = sample[0][row], w = sample[1][row];
            const double base = 1.0 + std::pow(u, -theta) * std::expm1(power * std::log(w));
            sample[1][row] = strictlyInside(std::pow(std::max(base, 0.0), -1.0 / theta));
        }
    });
}

void sampleFrank(double theta, DataMatrix mixing, MutableMatrix sample) {
    const double strength = std::abs(theta);
    sampleByFrailty(
        mixing, sample,
        [&](DataMatrix uniforms, std::size_t row) {
            return logarithmicFrailty(strength, uniforms[0][row], uniforms[1][row]);
        },
        [&](double exponential, double frailty) { return frankMargin(strength, exponential / frailty); });
    if (theta < 0.0)
        for (double& number : sample[1]) number = strictlyInside(1.0 - number);
}

void sampleGumbel(double theta, DataMatrix mixing, MutableMatrix sample) {
    sampleByFrailty(
        mixing, sample,
        [&](DataMatrix uniforms, std::size_t row) {
            return logStableFrailty(theta, uniforms[0][row], uniforms[1][row]);
        },
        [&](double exponential, double frailty) {
            return gumbelMargin(theta, std::log(exponential) - frailty);
        });
}

bool hasTheta(CopulaType type, double theta, std::size_t numVars) {
    const auto [independence, upper] = thetaRange(type);
    const bool isPair = numVars == 2;
    const double lower = type == CopulaType::CLAYTON && isPair ? -1.0
                         : type == CopulaType::FRANK && isPair ? -upper
                                                               : independence;
    return theta >= lower && theta <= upper;
}

// ---- Gauss and Student

/// The Cholesky factor of a copy of sigma that is repaired if need be; empty for what is no correlation
/// matrix of this size.
std::vector<double> factorOf(std::span<const double> sigma, std::size_t size) {
    if (sigma.size() != size * size || !isCorrelationMatrix(sigma, size)) return {};
    std::vector<double> matrix(sigma.begin(), sigma.end());
    repairCorrelation(matrix, size);
    return choleskyFactor(matrix, size);
}

/// @param scale  of an observation's normal variates.
/// @param probability  of a scaled variate.
template <class Scale, class Probability>
void sampleElliptical(std::span<const double> factor, MutableMatrix sample, const Scale& scale,
                      const Probability& probability) {
    forEachBlock(sample, [&](std::size_t first, std::size_t count) {
        std::vector<double> numbers(sample.size() * kBlock, 0.0), scales(count);
        for (std::size_t i = 0; i < count; ++i) scales[i] = scale(first + i);
        for (std::size_t variable = 0; variable < sample.size(); ++variable)
            for (std::size_t i = 0; i < count; ++i)
                numbers[variable * kBlock + i] = normalQuantile(sample[variable][first + i]);
        multiplyLower(factor, sample.size(), numbers);
        for (std::size_t variable = 0; variable < sample.size(); ++variable)
            for (std::size_t i = 0; i < count; ++i)
                sample[variable][first + i] =
                    strictlyInside(probability(numbers[variable * kBlock + i] * scales[i]));
    });
}

void sampleGauss(std::span<const double> factor, MutableMatrix sample) {
    sampleElliptical(
        factor, sample, [](std::size_t) { return 1.0; }, normalProbability);
}

void sampleStudent(std::span<const double> factor, double nu, DataMatrix mixing, MutableMatrix sample) {
    const StudentsT student(nu);
    sampleElliptical(
        factor, sample,
        [&](std::size_t row) {
            const double gamma = boost::math::gamma_p_inv(0.5 * nu, mixing[0][row], MathPolicy());
            return std::sqrt(0.5 * nu / std::max(gamma, 1e-300));
        },
        [&](double x) { return boost::math::cdf(student, x); });
}

// ---- checks and orders

template <class Row>
bool isInside(std::span<const Row> rows) {
    return std::all_of(rows.begin(), rows.end(), [](const Row& row) {
        return std::all_of(row.begin(), row.end(), [](double u) { return u > 0.0 && u < 1.0; });
    });
}

/// Puts ascending numbers into the places that the numbers of the row have in their order.
void arrange(std::span<const double> ascending, std::span<double> row) {
    const std::vector<std::uint32_t> order = ascendingOrder(row);
    for (std::size_t i = 0; i < order.size(); ++i) row[order[i]] = ascending[i];
}

/// The van der Waerden scores of n ranks.
std::vector<double> normalScores(std::size_t size) {
    std::vector<double> scores(size);
    for (std::size_t i = 0; i < size; ++i)
        scores[i] = normalQuantile(static_cast<double>(i + 1) / (static_cast<double>(size) + 1.0));
    return scores;
}

}  // namespace

std::size_t numMixingRows(CopulaType type, const Dependence& copula) {
    switch (type) {
        case CopulaType::CLAYTON:
            return copula.theta < 0.0 ? 0 : 1;
        case CopulaType::FRANK:
        case CopulaType::GUMBEL:
            return 2;
        case CopulaType::STUDENT:
            return 1;
        default:
            return 0;
    }
}

int sampleCopula(CopulaType type, const Dependence& copula, DataMatrix mixing, MutableMatrix sample) {
    if (type < CopulaType::CLAYTON || type > CopulaType::STUDENT) return 0;
    const std::optional<std::size_t> length = commonLength(sample);
    if (!length || mixing.size() < numMixingRows(type, copula)) return 0;
    mixing = mixing.first(numMixingRows(type, copula));
    for (const std::span<const double> row : mixing)
        if (row.size() != *length) return 0;
    if (!isInside(sample) || !isInside(mixing)) return 0;

    if (type == CopulaType::GAUSS || type == CopulaType::STUDENT) {
        const double nu = copula.degreesOfFreedom;
        if (type == CopulaType::STUDENT && !(nu > 0.0 && nu <= 1e10)) return 0;
        const std::vector<double> factor = factorOf(copula.sigma, sample.size());
        if (factor.empty()) return 0;
        if (type == CopulaType::GAUSS)
            sampleGauss(factor, sample);
        else
            sampleStudent(factor, nu, mixing, sample);
        return 1;
    }
    const double theta = copula.theta;
    if (!hasTheta(type, theta, sample.size())) return 0;
    if (theta == 0.0) return 1;
    if (type == CopulaType::FRANK)
        sampleFrank(theta, mixing, sample);
    else if (type == CopulaType::GUMBEL)
        sampleGumbel(theta, mixing, sample);
    else if (theta < 0.0)
        sampleNegativeClayton(theta, sample);
    else
        sampleClayton(theta, mixing, sample);
    return 1;
}

int keepMargins(DataMatrix margins, MutableMatrix sample) {
    if (margins.size() != sample.size()) return 0;
    if (sample.empty()) return 1;
    const std::optional<std::size_t> length = commonLength(sample);
    if (!length || commonLength(margins) != length || hasNaN(margins) || hasNaN(sample)) return 0;
    IO::forEachIndex(sample.size(), sample.size() * *length, [&](std::size_t variable) {
        std::vector<double> ascending(margins[variable].begin(), margins[variable].end());
        std::sort(ascending.begin(), ascending.end());
        arrange(ascending, sample[variable]);
    });
    return 1;
}

int induceRankCorrelation(std::span<const double> sigma, MutableMatrix sample) {
    const std::optional<std::size_t> length = commonLength(sample);
    const std::size_t size = sample.size(), numRows = length.value_or(0);
    if (!length || sigma.size() != size * size || !isCorrelationMatrix(sigma, size) || hasNaN(sample))
        return 0;
    if (numRows < 2) return 1;

    std::vector<double> target(sigma.begin(), sigma.end());  // of the scores
    for (std::size_t i = 0; i < target.size(); ++i)
        if (i % (size + 1) != 0) target[i] = 2.0 * std::sin(std::numbers::pi / 6.0 * target[i]);
    repairCorrelation(target, size);
    const std::vector<double> wanted = choleskyFactor(target, size);
    if (wanted.empty()) return 0;

    const std::vector<double> scoreOfRank = normalScores(numRows);
    std::vector<std::vector<double>> scores(size), ascending(size);
    IO::forEachIndex(size, size * numRows, [&](std::size_t variable) {
        const std::vector<std::uint32_t> order = ascendingOrder(sample[variable]);
        scores[variable].resize(numRows);
        ascending[variable].resize(numRows);
        for (std::size_t rank = 0; rank < numRows; ++rank) {
            scores[variable][order[rank]] = scoreOfRank[rank];
            ascending[variable][rank] = sample[variable][order[rank]];
        }
    });
    const std::vector<double> found =
        choleskyFactor(correlationOfCentred(scores), size, -kSmallestEigenvalue);

    forEachBlock(sample, [&](std::size_t first, std::size_t count) {
        std::vector<double> numbers(size * kBlock, 0.0);
        for (std::size_t variable = 0; variable < size; ++variable)
            std::copy_n(scores[variable].begin() + static_cast<std::ptrdiff_t>(first), count,
                        numbers.begin() + static_cast<std::ptrdiff_t>(variable * kBlock));
        if (!found.empty()) solveLower(found, size, numbers);
        multiplyLower(wanted, size, numbers);
        for (std::size_t variable = 0; variable < size; ++variable)
            std::copy_n(numbers.begin() + static_cast<std::ptrdiff_t>(variable * kBlock), count,
                        scores[variable].begin() + static_cast<std::ptrdiff_t>(first));
    });
    IO::forEachIndex(size, size * numRows, [&](std::size_t variable) {
        arrange(ascending[variable], scores[variable]);
        std::copy(scores[variable].begin(), scores[variable].end(), sample[variable].begin());
    });
    return 1;
}

}  // namespace Tessel::Engine::Copula
