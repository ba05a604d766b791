#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>

#include <omp.h>

#include "engine/nb/naive_bayes.h"
#include "engine/parallel.h"

namespace Tessel::Engine::NB {
namespace {

/// Rows are scored in blocks whose scores of all classes stay in the cache while the inputs are added.
constexpr std::size_t kMaxBlockRows = 2048;
constexpr std::size_t kMinBlockRows = 64;
constexpr std::size_t kBlockScores = 16384;
/// Cells times classes below which starting threads costs more than it gains.
constexpr std::size_t kParallelTerms = 100'000;
/// Numbers farther away than this many deviations of the widest class are drawn in to that distance.
constexpr double kFarthestDeviations = 1e7;

/// A numeric input made ready: log density = -(x - mean)^2 * halfPrecision - halfLogVariance, but for a
/// constant that is the same in all classes. One entry per class.
struct NumericTerm {
    std::span<const double> cells;
    std::vector<double> mean, halfPrecision, halfLogVariance;
    double center, reach;  ///< Numbers are drawn in to center - reach .. center + reach.
    double logFloor;       ///< No log density is below this, the constant left out; minus infinity for none.
};

/// A categorical input made ready: logProbability[class * (numCategories + 1) + category + 1]; the first slot
/// of each class holds 0 and serves missing cells and unseen categories.
struct CategoricalTerm {
    std::span<const std::int32_t> codes;
    std::size_t numSlots;
    std::vector<double> logProbability;
};

struct Terms {
    std::size_t numClasses;
    std::size_t numRows;
    std::vector<double> start;  ///< Score of each class in a row without any missing number.
    std::vector<NumericTerm> numeric;
    std::vector<CategoricalTerm> categorical;
};

bool isInformative(const GaussianInput& input) {
    return std::all_of(input.variance.begin(), input.variance.end(),
                       [](double variance) { return variance > 0.0 && std::isfinite(variance); });
}

NumericTerm prepare(const Fitted& fitted, const GaussianInput& input, std::span<const double> cells) {
    constexpr double kHalfLogTwoPi = 0.91893853320467274;
    const double logFloor = std::log(fitted.densityFloor) + kHalfLogTwoPi;
    NumericTerm term{cells, input.mean, {}, {}, 0.0, 0.0, logFloor};
    for (const double variance : input.variance) {
        term.halfPrecision.push_back(0.5 / variance);
        term.halfLogVariance.push_back(0.5 * std::log(variance));
    }
    const auto [least, greatest] = std::minmax_element(input.mean.begin(), input.mean.end());
    const double widest = *std::max_element(input.variance.begin(), input.variance.end());
    term.center = *least + (*greatest - *least) / 2;
    term.reach = (*greatest - *least) / 2 + kFarthestDeviations * std::sqrt(widest);
    return term;
}

CategoricalTerm prepare(const Fitted& fitted, const CategoricalInput& input,
                        std::span<const std::int32_t> codes) {
    const std::size_t k = fitted.classCounts.size();
    const auto numCategories = static_cast<std::size_t>(input.numCategories);
    CategoricalTerm term{codes, numCategories + 1, std::vector<double>((numCategories + 1) * k)};
    const std::vector<double> probabilities = categoryProbabilities(fitted, input);
    for (std::size_t category = 0; category < numCategories; ++category)
        for (std::size_t code = 0; code < k; ++code)
            term.logProbability[code * term.numSlots + category + 1] =
                std::log(probabilities[category * k + code]);
    return term;
}

Terms prepare(const Fitted& fitted, std::span<const double> logPriors, std::span<const Input> inputs,
              std::size_t numRows) {
    assert(logPriors.size() == fitted.classCounts.size() && inputs.size() == fitted.inputs.size());
    Terms terms{logPriors.size(), numRows, {logPriors.begin(), logPriors.end()}, {}, {}};
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        if (const auto* gaussian = std::get_if<GaussianInput>(&fitted.inputs[i])) {
            assert(!inputs[i].isCategorical && inputs[i].numbers.size() == numRows);
            if (!isInformative(*gaussian)) continue;
            const NumericTerm& term =
                terms.numeric.emplace_back(prepare(fitted, *gaussian, inputs[i].numbers));
            for (std::size_t code = 0; code < terms.numClasses; ++code)
                terms.start[code] -= term.halfLogVariance[code];
        } else if (const auto* categorical = std::get_if<CategoricalInput>(&fitted.inputs[i])) {
            assert(inputs[i].isCategorical && inputs[i].codes.size() == numRows);
            terms.categorical.push_back(prepare(fitted, *categorical, inputs[i].codes));
        }
    }
    return terms;
}

/// False when a number is missing or out of reach. (Counting in doubles is what vectorises everywhere.)
bool allWithinReach(const NumericTerm& term, const double* numbers, std::size_t count) {
    const double center = term.center, reach = term.reach;
    double numWithin = 0.0;
#pragma omp simd reduction(+ : numWithin)
    for (std::size_t i = 0; i < count; ++i) numWithin += std::fabs(numbers[i] - center) <= reach ? 1.0 : 0.0;
    return numWithin == static_cast<double>(count);
}

/// Scores of a block of rows: one column of `stride` numbers per class, the first `count` of them in use.
struct Block {
    std::size_t firstRow;
    std::size_t count;
    std::size_t stride;
    double* scores;

    double* of(std::size_t code) const { return scores + code * stride; }
};

void addWithFloor(const NumericTerm& term, std::size_t numClasses, const Block& block) {
    const double* const numbers = term.cells.data() + block.firstRow;
    for (std::size_t code = 0; code < numClasses; ++code) {
        const double halfLogVariance = term.halfLogVariance[code];  // taken out of the start again
        for (std::size_t row = 0; row < block.count; ++row) {
            const double deviation = numbers[row] - term.mean[code];
            const double logDensity = -deviation * deviation * term.halfPrecision[code] - halfLogVariance;
            const double factor = std::isnan(logDensity) ? 0.0 : std::max(logDensity, term.logFloor);
            block.of(code)[row] += factor + halfLogVariance;
        }
    }
}

void add(const NumericTerm& term, std::size_t numClasses, const Block& block) {
    if (term.logFloor > -std::numeric_limits<double>::infinity())
        return addWithFloor(term, numClasses, block);
    const double* numbers = term.cells.data() + block.firstRow;
    const bool isOrdinary = allWithinReach(term, numbers, block.count);
    std::array<double, kMaxBlockRows> drawnIn;
    if (!isOrdinary) {
        std::transform(numbers, numbers + block.count, drawnIn.begin(), [&](double number) {
            return std::isnan(number)
                       ? number
                       : std::clamp(number, term.center - term.reach, term.center + term.reach);
        });
        numbers = drawnIn.data();
    }
    for (std::size_t code = 0; code < numClasses; ++code) {
        double* scores = block.of(code);
        const double mean = term.mean[code], halfPrecision = term.halfPrecision[code];
        if (isOrdinary) {
#pragma omp simd
            for (std::size_t row = 0; row < block.count; ++row) {
                const double deviation = numbers[row] - mean;
                scores[row] -= deviation * deviation * halfPrecision;
            }
        } else {
            const double halfLogVariance = term.halfLogVariance[code];  // taken out of the start again
#pragma omp simd
            for (std::size_t row = 0; row < block.count; ++row) {
                const double deviation = numbers[row] - mean;
                const double loss = deviation * deviation * halfPrecision;
                scores[row] -= loss == loss ? loss : -halfLogVariance;
            }
        }
    }
}

void add(const CategoricalTerm& term, std::size_t numClasses, const Block& block) {
    std::array<std::size_t, kMaxBlockRows> slots;
    for (std::size_t row = 0; row < block.count; ++row) {
        const std::int32_t code = term.codes[block.firstRow + row];
        const std::size_t slot = code < 0 ? 0 : static_cast<std::size_t>(code) + 1;
        slots[row] = slot < term.numSlots ? slot : 0;
    }
    for (std::size_t code = 0; code < numClasses; ++code) {
        const double* logProbability = term.logProbability.data() + code * term.numSlots;
        double* scores = block.of(code);
        for (std::size_t row = 0; row < block.count; ++row) scores[row] += logProbability[slots[row]];
    }
}

/// Computes the scores of all rows, block by block, and hands each block to `finish`.
template <class Finish>
void forEachBlock(const Terms& terms, Finish finish) {
    const std::size_t numClasses = terms.numClasses;
    const std::size_t blockRows = std::clamp(kBlockScores / numClasses, kMinBlockRows, kMaxBlockRows);
    const std::size_t numBlocks = (terms.numRows + blockRows - 1) / blockRows;
    const std::size_t numInputs = terms.numeric.size() + terms.categorical.size() + 1;
    const bool isLarge = terms.numRows * numInputs * numClasses >= kParallelTerms;
    const int numThreads = isLarge ? Engine::numThreads() : 1;
    // Memory is taken before the parallel loop, where nothing may throw.
    std::vector<double> scratch(static_cast<std::size_t>(numThreads) * blockRows * numClasses);

#pragma omp parallel for schedule(static) num_threads(numThreads)
    for (std::size_t i = 0; i < numBlocks; ++i) {
        const std::size_t firstRow = i * blockRows;
        const auto thread = static_cast<std::size_t>(omp_get_thread_num());
        const Block block{firstRow, std::min(blockRows, terms.numRows - firstRow), blockRows,
                          scratch.data() + thread * blockRows * numClasses};
        for (std::size_t code = 0; code < numClasses; ++code)
            std::fill_n(block.of(code), block.count, terms.start[code]);
        for (const NumericTerm& term : terms.numeric) add(term, numClasses, block);
        for (const CategoricalTerm& term : terms.categorical) add(term, numClasses, block);
        finish(block);
    }
}

/// The largest score of each row, from which the others are taken: exp of the rest cannot overflow.
std::array<double, kMaxBlockRows> largestScores(std::size_t numClasses, const Block& block) {
    std::array<double, kMaxBlockRows> largest;
    std::copy_n(block.of(0), block.count, largest.begin());
    for (std::size_t code = 1; code < numClasses; ++code) {
        const double* scores = block.of(code);
#pragma omp simd
        for (std::size_t row = 0; row < block.count; ++row)
            largest[row] = largest[row] < scores[row] ? scores[row] : largest[row];
    }
    return largest;
}

/// exp of this and of anything less is taken as 0: normal numbers end at -708.4.
constexpr double kLeastExponent = -709.0;

/// exp(x) for kLeastExponent <= x <= 0 within 1 unit in the last place. Without branches and calls, so that
/// compilers make it a vector operation, which the library's is not here; and the same on every platform.
/// With x = n log 2 + r, |r| <= log(2) / 2, it is 2^n times the Taylor polynomial of r, whose first term left
/// out is below 5e-18.
inline double expOfNonPositive(double x) {
    constexpr double kLog2High = 0x1.62e42fefa3800p-1, kLog2Low = 0x1.ef35793c76730p-45;  // n * high is exact
    constexpr double kLog2OfE = 0x1.71547652b82fep+0;
    // Adding 1.5 * 2^52 rounds to an integer and leaves it in the low bits.
    constexpr double kRound = 0x1.8p52;
    const double rounded = x * kLog2OfE + kRound, n = rounded - kRound;
    const double r = (x - n * kLog2High) - n * kLog2Low;
    double series = 1.0 / 6227020800;
    series = series * r + 1.0 / 479001600;
    series = series * r + 1.0 / 39916800;
    series = series * r + 1.0 / 3628800;
    series = series * r + 1.0 / 362880;
    series = series * r + 1.0 / 40320;
    series = series * r + 1.0 / 5040;
    series = series * r + 1.0 / 720;
    series = series * r + 1.0 / 120;
    series = series * r + 1.0 / 24;
    series = series * r + 1.0 / 6;
    series = series * r + 0.5;
    // This is 0 at n = -1023, the least.
    const double powerOfTwo = std::bit_cast<double>((std::bit_cast<std::uint64_t>(rounded) + 1023) << 52);
    return (1.0 + (r + r * r * series)) * powerOfTwo;
}

std::size_t numRowsOf(std::span<const std::span<double>> result) {
    return result.empty() ? 0 : result[0].size();
}

}  // namespace

void logPosterior(const Fitted& fitted, std::span<const double> logPriors, std::span<const Input> inputs,
                  std::span<const std::span<double>> result) {
    const Terms terms = prepare(fitted, logPriors, inputs, numRowsOf(result));
    assert(result.size() == terms.numClasses);
    forEachBlock(terms, [&](const Block& block) {
        const auto largest = largestScores(terms.numClasses, block);
        for (std::size_t row = 0; row < block.count; ++row) {
            // The winner is left out of the sum: log1p then keeps the digits of a posterior close to 1.
            double others = 0.0;
            std::size_t winners = 0;
            for (std::size_t code = 0; code < terms.numClasses; ++code) {
                const double difference = block.of(code)[row] - largest[row];
                if (difference == 0.0 && winners++ == 0) continue;
                others += std::exp(difference);
            }
            const double logTotal = std::log1p(others);
            for (std::size_t code = 0; code < terms.numClasses; ++code)
                result[code][block.firstRow + row] = block.of(code)[row] - largest[row] - logTotal;
        }
    });
}

void posteriorProbability(const Fitted& fitted, std::span<const double> logPriors,
                          std::span<const Input> inputs, std::span<const std::span<double>> result) {
    const Terms terms = prepare(fitted, logPriors, inputs, numRowsOf(result));
    assert(result.size() == terms.numClasses);
    forEachBlock(terms, [&](const Block& block) {
        const auto largest = largestScores(terms.numClasses, block);
        std::array<double, kMaxBlockRows> totals{};
        for (std::size_t code = 0; code < terms.numClasses; ++code) {
            double* scores = block.of(code);
            // A loop of its own: together with exp, compilers make the bound a branch and do not vectorise.
#pragma omp simd
            for (std::size_t row = 0; row < block.count; ++row) {
                const double difference = scores[row] - largest[row];
                scores[row] = difference < kLeastExponent ? kLeastExponent : difference;
            }
#pragma omp simd
            for (std::size_t row = 0; row < block.count; ++row) {
                scores[row] = expOfNonPositive(scores[row]);
                totals[row] += scores[row];
            }
        }
        for (std::size_t code = 0; code < terms.numClasses; ++code) {
            const double* scores = block.of(code);
            double* probabilities = result[code].data() + block.firstRow;
            for (std::size_t row = 0; row < block.count; ++row)
                probabilities[row] = scores[row] / totals[row];
        }
    });
}

void predict(const Fitted& fitted, std::span<const double> logPriors, std::span<const Input> inputs,
             std::span<std::int32_t> result) {
    const Terms terms = prepare(fitted, logPriors, inputs, result.size());
    forEachBlock(terms, [&](const Block& block) {
        std::array<double, kMaxBlockRows> largest;
        std::copy_n(block.of(0), block.count, largest.begin());
        std::int32_t* winners = result.data() + block.firstRow;
        std::fill_n(winners, block.count, 0);
        for (std::size_t code = 1; code < terms.numClasses; ++code) {
            const double* scores = block.of(code);
            for (std::size_t row = 0; row < block.count; ++row)
                if (scores[row] > largest[row]) {
                    largest[row] = scores[row];
                    winners[row] = static_cast<std::int32_t>(code);
                }
        }
    });
}

}  // namespace Tessel::Engine::NB
