#include <algorithm>
#include <array>
#include <atomic>
#include <cassert>
#include <cmath>
#include <cstddef>

#include <omp.h>

#include "data/util/interleaved_sum.h"
#include "engine/nb/naive_bayes.h"

namespace Tessel::Engine::NB {
namespace {

/// Rows are taken in blocks whose cells of one column stay in the first-level cache for the second pass.
constexpr std::size_t kBlockRows = 2048;
/// Cells below which starting threads costs more than it gains.
constexpr std::size_t kParallelCells = 100'000;

constexpr double kFloorOfClassVariance = 1e-9;
constexpr double kFloorOfColumnVariance = 1e-24;

/// The rows of one class within one block of rows.
struct Run {
    std::size_t blockBegin;
    std::size_t begin;  ///< Into ClassRuns::offsets.
    std::size_t length;
    std::size_t classCode;
};

/// All rows sorted by class within each block. Sorting once lets every column be summed class by class at
/// full speed; adding each cell to the sums of its row's class would wait for the previous store.
struct ClassRuns {
    std::vector<std::uint16_t> offsets;  ///< One per row: its place in its block.
    std::vector<Run> runs;
};

ClassRuns sortByClass(std::span<const std::int32_t> classes, std::size_t numClasses) {
    ClassRuns sorted;
    sorted.offsets.resize(classes.size());
    std::vector<std::size_t> next(numClasses);
    for (std::size_t blockBegin = 0; blockBegin < classes.size(); blockBegin += kBlockRows) {
        const auto block = classes.subspan(blockBegin, std::min(kBlockRows, classes.size() - blockBegin));
        std::fill(next.begin(), next.end(), 0);
        for (const std::int32_t code : block) ++next[static_cast<std::size_t>(code)];
        std::size_t begin = blockBegin;
        for (std::size_t code = 0; code < numClasses; ++code) {
            const std::size_t length = next[code];
            if (length > 0) sorted.runs.push_back({blockBegin, begin, length, code});
            next[code] = begin;
            begin += length;
        }
        for (std::size_t row = 0; row < block.size(); ++row)
            sorted.offsets[next[static_cast<std::size_t>(block[row])]++] = static_cast<std::uint16_t>(row);
    }
    return sorted;
}

/// Eight parts hide the latency of the additions.
template <class Term>
double sum(std::size_t count, Term&& term) {
    return Numeric::interleavedSum<8>(count, term);
}

/// The mean is kept as an exact value of the data and a small rest, so that merging loses no digits where
/// all values are far from 0.
struct Moments {
    double count = 0.0;
    double shift = 0.0;
    double center = 0.0;   ///< Mean - shift.
    double squares = 0.0;  ///< Sum of squared deviations from the mean.

    void merge(const Moments& other) {
        if (other.count == 0.0) return;
        if (count == 0.0) {
            *this = other;
            return;
        }
        const double total = count + other.count, delta = (other.shift - shift) + (other.center - center);
        squares += other.squares + delta * delta * (count * other.count / total);
        center += delta * (other.count / total);
        count = total;
    }
    double mean() const { return shift + center; }
    double variance() const { return squares / (count - 1.0); }
};

/// Moments of the cells of a block at the given offsets (at least one).
/// Cells are first moved by one of them: an offset common to all then costs no digits, and constant cells
/// have sums of exactly 0.
Moments momentsOf(const double* block, std::span<const std::uint16_t> offsets) {
    std::array<double, kBlockRows> deviations;
    const std::size_t count = offsets.size();
    const double shift = block[offsets.front()];
    const double total = sum(count, [&](std::size_t i) { return deviations[i] = block[offsets[i]] - shift; });
    if (std::isnan(total)) {
        std::array<std::uint16_t, kBlockRows> present;
        const auto end = std::copy_if(offsets.begin(), offsets.end(), present.begin(),
                                      [&](std::uint16_t offset) { return !std::isnan(block[offset]); });
        const auto numPresent = static_cast<std::size_t>(end - present.begin());
        if (numPresent == 0) return {};
        if (numPresent < count) return momentsOf(block, {present.data(), numPresent});
    }
    const double center = total / static_cast<double>(count);
    const double squares = sum(count, [&](std::size_t i) {
        const double deviation = deviations[i] - center;
        return deviation * deviation;
    });
    return {static_cast<double>(count), shift, center, squares};
}

/// Fills the densities from the moments of the classes, by the rules told at GaussianInput.
void settle(const std::vector<Moments>& classes, GaussianInput& fitted) {
    Moments column;
    double squaresWithin = 0.0, freedomWithin = 0.0, largest = 0.0;
    for (const Moments& moments : classes) {
        column.merge(moments);
        if (moments.count < 2.0) continue;
        squaresWithin += moments.squares;
        freedomWithin += moments.count - 1.0;
        largest = std::max(largest, moments.variance());
    }
    const bool isInformative = column.squares > 0.0 && std::isfinite(column.squares);
    const double pooled = freedomWithin > 0.0 ? squaresWithin / freedomWithin : 0.0;
    const double lowest =
        isInformative ? std::max(kFloorOfClassVariance * largest, kFloorOfColumnVariance * column.variance())
                      : 0.0;
    for (std::size_t code = 0; code < classes.size(); ++code) {
        const Moments& own = classes[code];
        fitted.count[code] = own.count;
        fitted.mean[code] = own.count > 0.0 ? own.mean() : column.mean();
        if (!isInformative) continue;
        const double variance = own.count > 1.0   ? own.variance()
                                : own.count > 0.0 ? pooled
                                                  : column.variance();
        fitted.variance[code] = std::max(variance, lowest);
    }
}

void fitNumbers(std::span<const double> numbers, const ClassRuns& rows, GaussianInput& fitted,
                std::vector<Moments>& classes) {
    for (const Run& run : rows.runs)
        classes[run.classCode].merge(momentsOf(numbers.data() + run.blockBegin,
                                               std::span(rows.offsets).subspan(run.begin, run.length)));
    settle(classes, fitted);
}

void fitCodes(std::span<const std::int32_t> codes, std::span<const std::int32_t> classes,
              std::size_t numClasses, std::vector<double>& counts) {
    for (std::size_t row = 0; row < codes.size(); ++row)
        if (codes[row] >= 0)
            counts[static_cast<std::size_t>(codes[row]) * numClasses +
                   static_cast<std::size_t>(classes[row])] += 1.0;
}

FittedInput emptyInput(const Input& input, std::size_t numClasses) {
    if (input.isCategorical)
        return CategoricalInput{
            input.numCategories,
            std::vector<double>(static_cast<std::size_t>(input.numCategories) * numClasses)};
    const std::vector<double> zeros(numClasses);
    return GaussianInput{zeros, zeros, zeros};
}

}  // namespace

Fitted fit(std::span<const Input> inputs, std::span<const std::int32_t> classes, std::int32_t numClasses,
           double laplace, const Watch& watch) {
    assert(numClasses >= 1 && laplace >= 0.0);
    const auto k = static_cast<std::size_t>(numClasses);
    const ClassRuns rows = sortByClass(classes, k);

    Fitted fitted;
    fitted.laplace = laplace;
    fitted.classCounts.assign(k, 0.0);
    for (const Run& run : rows.runs) fitted.classCounts[run.classCode] += static_cast<double>(run.length);

    // All memory is taken here: nothing below can throw inside the parallel loop but the watch.
    for (const Input& input : inputs) fitted.inputs.push_back(emptyInput(input, k));
    std::vector<std::vector<Moments>> moments(inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (!inputs[i].isCategorical) moments[i].resize(k);

    ExceptionCarrier carrier;
    std::atomic<std::size_t> numLearned{0};
    // Each column is summed by one thread from top to bottom, so that threads cannot change the order.
    const auto learn = [&](std::size_t i) {
        if (watch && omp_get_thread_num() == 0)
            watch(static_cast<double>(numLearned) / static_cast<double>(inputs.size()));
        if (auto* gaussian = std::get_if<GaussianInput>(&fitted.inputs[i])) {
            assert(inputs[i].numbers.size() == classes.size());
            fitNumbers(inputs[i].numbers, rows, *gaussian, moments[i]);
        } else if (auto* categorical = std::get_if<CategoricalInput>(&fitted.inputs[i])) {
            assert(inputs[i].codes.size() == classes.size());
            fitCodes(inputs[i].codes, classes, k, categorical->counts);
        }
        ++numLearned;
    };
#pragma omp parallel for schedule(dynamic) if (inputs.size() * classes.size() >= kParallelCells)
    for (std::size_t i = 0; i < inputs.size(); ++i) carrier.run([&] { learn(i); });
    carrier.rethrow();
    return fitted;
}

std::vector<double> categoryProbabilities(const Fitted& fitted, const CategoricalInput& input) {
    const std::size_t k = fitted.classCounts.size();
    const auto numCategories = static_cast<std::size_t>(input.numCategories);
    std::vector<double> classTotals(k), categoryTotals(numCategories);
    double total = 0.0;
    for (std::size_t category = 0; category < numCategories; ++category)
        for (std::size_t code = 0; code < k; ++code) {
            const double count = input.counts[category * k + code];
            classTotals[code] += count;
            categoryTotals[category] += count;
            total += count;
        }

    const double laplace = fitted.laplace, pseudoTotal = laplace * static_cast<double>(numCategories);
    std::vector<double> probabilities(input.counts.size());
    for (std::size_t category = 0; category < numCategories; ++category)
        for (std::size_t code = 0; code < k; ++code) {
            const bool isUnknown = laplace == 0.0 && classTotals[code] == 0.0;
            const double count =
                isUnknown ? categoryTotals[category] : input.counts[category * k + code] + laplace;
            const double all = isUnknown ? total : classTotals[code] + pseudoTotal;
            probabilities[category * k + code] = count > 0.0 ? count / all : fitted.zeroProbability;
        }
    return probabilities;
}

}  // namespace Tessel::Engine::NB
