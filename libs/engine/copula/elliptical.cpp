#include "engine/copula/elliptical.h"

#include <cmath>
#include <numbers>

#include "engine/copula/likelihood.h"
#include "engine/copula/special_functions.h"

namespace Tessel::Engine::Copula {

namespace {

using Rows = std::vector<std::vector<double>>;

/// The numbers of the table that the ranks stand for.
Rows scoresOf(const Ranks& ranks, const std::vector<double>& table) {
    Rows scores(ranks.numVars());
    IO::forEachIndex(scores.size(), scores.size() * ranks.numRows, [&](std::size_t variable) {
        const std::vector<std::uint32_t>& codes = ranks.codes[variable];
        scores[variable].resize(codes.size());
        for (std::size_t row = 0; row < codes.size(); ++row) scores[variable][row] = table[codes[row]];
    });
    return scores;
}

/// Takes the means off; they are not 0 when ranks are tied.
void centre(Rows& rows) {
    IO::forEachIndex(rows.size(), rows.size() * rows.front().size(), [&](std::size_t variable) {
        std::vector<double>& row = rows[variable];
        double sum = 0.0;
        for (const double number : row) sum += number;
        const double mean = sum / static_cast<double>(row.size());
        for (double& number : row) number -= mean;
    });
}

/// log |L L'|
double logDeterminant(std::span<const double> factor, std::size_t size) {
    double sum = 0.0;
    for (std::size_t i = 0; i < size; ++i) sum += 2.0 * std::log(factor[i * size + i]);
    return sum;
}

/// trace((L L')^-1 S): the sum over the columns of S of the entries of both matrices' quotient on the
/// diagonal.
double traceOfQuotient(std::span<const double> factor, std::vector<double> products, std::size_t size) {
    // Forward substitution over all columns, then the columns of its transpose: both leave L^-1 S L^-T.
    for (int side = 0; side < 2; ++side) {
        for (std::size_t i = 0; i < size; ++i) {
            double* const row = products.data() + i * size;
            for (std::size_t j = 0; j < i; ++j)
                for (std::size_t k = 0; k < size; ++k)
                    row[k] -= factor[i * size + j] * products[j * size + k];
            for (std::size_t k = 0; k < size; ++k) row[k] /= factor[i * size + i];
        }
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t j = 0; j < i; ++j) std::swap(products[i * size + j], products[j * size + i]);
    }
    double trace = 0.0;
    for (std::size_t i = 0; i < size; ++i) trace += products[i * size + i];
    return trace;
}

}  // namespace

int fitRankCorrelation(DataMatrix data, Dependence& result) {
    const std::optional<Ranks> ranks = rankRows(data);
    if (!ranks) return 0;
    std::vector<double> deviations(ranks->twiceRanks.size());  // from the mean rank, (n + 1) / 2, twice
    for (std::size_t code = 0; code < deviations.size(); ++code)
        deviations[code] = ranks->twiceRanks[code] - (static_cast<double>(ranks->numRows) + 1.0);
    Dependence fitted;
    fitted.sigma = correlationOfCentred(scoresOf(*ranks, deviations));
    fitted.isRepaired = repairCorrelation(fitted.sigma, data.size());
    result = std::move(fitted);
    return 1;
}

int fitGauss(const Ranks& ranks, Dependence& result) {
    const std::size_t size = ranks.numVars();
    std::vector<double> table;
    tabulate(ranks, normalQuantile, table);
    Rows scores = scoresOf(ranks, table);
    std::vector<double> products = meanProducts(scores);
    centre(scores);
    Dependence fitted;
    fitted.sigma = correlationOfCentred(scores);
    fitted.isRepaired = repairCorrelation(fitted.sigma, size);
    // log density = -(log |R| + x' R^-1 x - x' x) / 2
    const std::vector<double> factor = choleskyFactor(fitted.sigma, size);
    if (factor.empty()) return 0;
    double trace = 0.0;
    for (std::size_t i = 0; i < size; ++i) trace += products[i * size + i];
    fitted.statistic =
        -0.5 * static_cast<double>(ranks.numRows) *
        (logDeterminant(factor, size) + traceOfQuotient(factor, std::move(products), size) - trace);
    result = std::move(fitted);
    return 1;
}

double studentLogLikelihood(std::span<const double> factor, double degreesOfFreedom, const Ranks& ranks,
                            const StudentScores& scores) {
    const std::size_t size = ranks.numVars();
    const auto d = static_cast<double>(size);
    const double nu = degreesOfFreedom;
    const std::vector<double> quantiles = scores.at(nu);
    std::vector<double> margins(quantiles.size());
    for (std::size_t code = 0; code < margins.size(); ++code)
        margins[code] = 0.5 * (nu + 1.0) * std::log1p(quantiles[code] * quantiles[code] / nu);
    const double constant = std::lgamma(0.5 * (nu + d)) - std::lgamma(0.5 * nu) -
                            d * (std::lgamma(0.5 * (nu + 1.0)) - std::lgamma(0.5 * nu)) -
                            0.5 * logDeterminant(factor, size);
    const auto blockSum = [&](std::size_t first, std::size_t count) {
        std::vector<double> numbers(size * kBlock, 0.0);
        double sum = 0.0;
        for (std::size_t variable = 0; variable < size; ++variable)
            for (std::size_t i = 0; i < count; ++i) {
                const std::uint32_t code = ranks.codes[variable][first + i];
                numbers[variable * kBlock + i] = quantiles[code];
                sum += margins[code];
            }
        solveLower(factor, size, numbers);
        for (std::size_t i = 0; i < count; ++i) {
            double square = 0.0;
            for (std::size_t variable = 0; variable < size; ++variable)
                square += numbers[variable * kBlock + i] * numbers[variable * kBlock + i];
            sum += constant - 0.5 * (nu + d) * std::log1p(square / nu);
        }
        return sum;
    };
    return sumOverBlocks(ranks.numRows, ranks.numRows * size * size, blockSum);
}

int fitStudent(const Ranks& ranks, Dependence& result) {
    constexpr double kFewest = 0.5, kMost = 1000.0;
    const std::size_t size = ranks.numVars();
    if (size < 2) return 0;
    Dependence fitted;
    fitted.sigma = kendallMatrix(ranks);
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < size; ++j)
            if (i != j)
                fitted.sigma[i * size + j] = std::sin(0.5 * std::numbers::pi * fitted.sigma[i * size + j]);
    fitted.isRepaired = repairCorrelation(fitted.sigma, size);
    const std::vector<double> factor = choleskyFactor(fitted.sigma, size);
    if (factor.empty()) return 0;
    const StudentScores scores(ranks);
    const Maximum maximum =
        maximise([&](double nu) { return studentLogLikelihood(factor, nu, ranks, scores); }, kFewest, kMost);
    if (!std::isfinite(maximum.value)) return 0;
    fitted.degreesOfFreedom = maximum.argument;
    fitted.statistic = maximum.value;
    fitted.isAtLimit = maximum.argument > (1.0 - 1e-4) * kMost || maximum.argument < (1.0 + 1e-4) * kFewest;
    result = std::move(fitted);
    return 1;
}

}  // namespace Tessel::Engine::Copula
