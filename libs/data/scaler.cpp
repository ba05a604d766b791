#include "data/scaler.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>

#include "data/util/compensated_sum.h"
#include "data/util/interleaved_sum.h"

namespace Tessel::Engine::Scaler {
namespace {

using Numeric::CompensatedSum;
using Values = std::span<const double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// So many values are summed plainly, the sums of blocks with compensation.
constexpr std::size_t kBlockSize = 512;
/// Below this number of cells waking threads costs more than they save.
constexpr std::size_t kParallelCells = 1 << 15;

using Block = std::array<double, kBlockSize>;

/// Calls `use` with one block of the column after the other.
template <class Use>
void forEachBlock(Values values, Use use) {
    for (std::size_t start = 0; start < values.size(); start += kBlockSize)
        use(values.subspan(start, std::min(kBlockSize, values.size() - start)));
}

/// The sum of term(value) over a block.
template <class Term>
double sumOf(Values block, Term term) {
    return Numeric::interleavedSum<4>(block.size(), [&](std::size_t i) { return term(block[i]); });
}

/// map(value) of a block's values, 0 for missing ones.
template <class Map>
Values mappedOrZero(Values block, Block& result, Map map) {
    std::transform(block.begin(), block.end(), result.begin(), [map](double value) {
        const double mapped = map(value);  // first of all, so that there is no branch
        return std::isnan(mapped) ? 0.0 : mapped;
    });
    return Values(result).first(block.size());
}

/// What the first reading of a column tells.
struct Extent {
    double count = 0.0;  ///< values that are not missing
    double smallest = kInfinity, largest = -kInfinity;
    double sum = 0.0;

    bool isEmpty() const { return count == 0.0; }
    bool isFinite() const { return std::isfinite(smallest) && std::isfinite(largest); }
    bool isConstant() const { return smallest == largest; }
};

/// Adds the extremes and the number of the values. The order of neither matters, so any vector will do.
void addExtremes(Values block, Extent& extent) {
    const double* const values = block.data();
    const std::size_t size = block.size();
    double smallest = extent.smallest, largest = extent.largest, count = 0.0;
#pragma omp simd reduction(min : smallest) reduction(max : largest) reduction(+ : count)
    for (std::size_t i = 0; i < size; ++i) {
        // Comparisons with NaN are false, so missing values change nothing.
        smallest = values[i] < smallest ? values[i] : smallest;
        largest = values[i] > largest ? values[i] : largest;
        count += values[i] == values[i] ? 1.0 : 0.0;
    }
    extent.smallest = smallest;
    extent.largest = largest;
    extent.count += count;
}

Extent extentOf(Values values) {
    Extent extent;
    CompensatedSum sum;
    Block copy;
    forEachBlock(values, [&](Values block) {
        const double countBefore = extent.count;
        addExtremes(block, extent);
        const bool isFull = extent.count - countBefore == static_cast<double>(block.size());
        const auto itself = [](double value) { return value; };
        sum.add(sumOf(isFull ? block : mappedOrZero(block, copy, itself), itself));
    });
    extent.sum = sum.value();
    // Which zero came first among -0 and 0 depends on the vectors; adding 0 makes all of them 0.
    extent.smallest += 0.0;
    extent.largest += 0.0;
    return extent;
}

/// The binary exponent to divide by so that numbers up to twice `half` become at most 1. Dividing by it is
/// exact, and the inverse of its power of two is finite.
int exponentOf(double half) {
    int exponent = 0;
    std::frexp(half, &exponent);
    return std::max(exponent + 1, -1000);
}

/// Sums of d = (x - origin) / 2^exponent and of its square.
struct Deviations {
    double sum = 0.0;
    double sumOfSquares = 0.0;
};

Deviations deviationsFrom(double origin, int exponent, Values values) {
    const double factor = std::ldexp(1.0, -exponent), start = origin * factor;
    CompensatedSum sum, sumOfSquares;
    Block buffer;
    forEachBlock(values, [&](Values block) {
        const Values deviations =
            mappedOrZero(block, buffer, [=](double value) { return value * factor - start; });
        sum.add(sumOf(deviations, [](double deviation) { return deviation; }));
        sumOfSquares.add(sumOf(deviations, [](double deviation) { return deviation * deviation; }));
    });
    return {sum.value(), sumOfSquares.value()};
}

/// A mean, and length * 2^exponent as the root of the sum of squared deviations from it.
struct Spread {
    double mean = 0.0;
    double length = 0.0;
    int exponent = 0;
};

/// The mean of the first reading is right but for some roundings of the size of the values. The second
/// reading finds what it lacks, with roundings of the size of the deviations.
/// @pre the extent is finite and not constant
Spread spreadOf(Values values, const Extent& extent) {
    double origin = extent.sum / extent.count;
    if (!std::isfinite(origin)) {
        // The sum of huge values may overflow although their mean does not.
        CompensatedSum sum;
        for (const double value : values)
            if (!std::isnan(value)) sum.add(value / extent.count);
        origin = sum.value();
    }
    const int exponent =
        exponentOf(std::max(0.5 * extent.largest - 0.5 * origin, 0.5 * origin - 0.5 * extent.smallest));
    const Deviations deviations = deviationsFrom(origin, exponent, values);
    const double lack = deviations.sum / extent.count;
    return {origin + std::ldexp(lack, exponent),
            std::sqrt(std::max(0.0, deviations.sumOfSquares - deviations.sum * lack)), exponent};
}

/// The inverse of length * 2^exponent, or 1 when there is none.
double inverseOf(double length, int exponent) {
    const double scale = std::ldexp(1.0 / length, -exponent);
    return std::isfinite(scale) ? scale : 1.0;
}

Rescaling unknown() {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    return {kNaN, kNaN};
}

std::size_t numCells(Columns columns) {
    std::size_t count = 0;
    for (const Values column : columns) count += column.size();
    return count;
}

/// Appends map(x) of every value. The memory has been reserved: so nothing throws, and since memory is taken
/// into use block by block it is still in the cache when the results get there.
template <class Map>
void appendMapped(Values values, std::vector<double>& result, Map map) {
    assert(result.empty() && result.capacity() >= values.size());
    forEachBlock(values, [&](Values block) {
        const std::size_t start = result.size();
        result.resize(start + block.size());
        std::transform(block.begin(), block.end(), result.data() + start, map);
    });
}

void appendTransformed(Values values, const Rescaling& rescaling, std::vector<double>& result) {
    const double shift = rescaling.shift, scale = rescaling.scale;
    if (std::abs(shift) < 1e290) {  // too small to make a difference overflow
        appendMapped(values, result, [shift, scale](double x) { return (x - shift) * scale; });
    } else {
        const double half = 0.5 * shift;
        appendMapped(values, result, [half, scale](double x) { return (0.5 * x - half) * scale * 2.0; });
    }
}

void appendInverse(Values values, const Rescaling& rescaling, std::vector<double>& result) {
    const double shift = rescaling.shift, scale = rescaling.scale;
    if (scale == 0.0) {
        appendMapped(values, result, [shift](double x) { return std::isnan(x) ? x : shift; });
    } else if (std::abs(scale) > 1e-290) {
        appendMapped(values, result, [shift, scale](double x) { return x / scale + shift; });
    } else {
        const double half = 0.5 * shift;
        appendMapped(values, result, [half, scale](double x) { return (0.5 * x / scale + half) * 2.0; });
    }
}

template <class Append>
std::vector<std::vector<double>> mapColumns(Columns columns, std::span<const Rescaling> rescalings,
                                            Append append) {
    assert(columns.size() == rescalings.size());
    std::vector<std::vector<double>> results(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) results[i].reserve(columns[i].size());
    const auto end = static_cast<std::int64_t>(columns.size());
#pragma omp parallel for schedule(dynamic, 1) if (end > 1 && numCells(columns) >= kParallelCells)
    for (std::int64_t column = 0; column < end; ++column) {
        const auto i = static_cast<std::size_t>(column);
        append(columns[i], rescalings[i], results[i]);
    }
    return results;
}

}  // namespace

Rescaling standardization(Values values) {
    const Extent extent = extentOf(values);
    if (extent.isEmpty()) return {};
    if (!extent.isFinite()) return unknown();
    if (extent.isConstant()) return {extent.smallest, 1.0};
    const Spread spread = spreadOf(values, extent);
    return {spread.mean, inverseOf(spread.length / std::sqrt(extent.count - 1.0), spread.exponent)};
}

Rescaling normalization(Values values) {
    const Extent extent = extentOf(values);
    if (extent.isEmpty()) return {};
    if (!extent.isFinite()) return unknown();
    // Half of the range is finite even when the range is not.
    const double half = 0.5 * extent.largest - 0.5 * extent.smallest;
    return {extent.smallest, inverseOf(half, 1)};
}

Rescaling meanShift(Values values) {
    const Extent extent = extentOf(values);
    if (extent.isEmpty()) return {};
    if (!extent.isFinite()) return unknown();
    return {extent.isConstant() ? extent.smallest : spreadOf(values, extent).mean, 1.0};
}

Rescaling unitNorm(Values values) {
    const Extent extent = extentOf(values);
    if (extent.isEmpty()) return {};
    if (!extent.isFinite()) return unknown();
    const int exponent = exponentOf(0.5 * std::max(std::abs(extent.smallest), std::abs(extent.largest)));
    return {0.0, inverseOf(std::sqrt(deviationsFrom(0.0, exponent, values).sumOfSquares), exponent)};
}

std::vector<Rescaling> fit(Columns columns, Rescaling (*method)(Values)) {
    std::vector<Rescaling> rescalings(columns.size());
    const auto end = static_cast<std::int64_t>(columns.size());
#pragma omp parallel for schedule(dynamic, 1) if (end > 1 && numCells(columns) >= kParallelCells)
    for (std::int64_t column = 0; column < end; ++column) {
        const auto i = static_cast<std::size_t>(column);
        rescalings[i] = method(columns[i]);
    }
    return rescalings;
}

std::vector<double> transform(Values values, const Rescaling& rescaling) {
    std::vector<double> result;
    result.reserve(values.size());
    appendTransformed(values, rescaling, result);
    return result;
}

std::vector<std::vector<double>> transform(Columns columns, std::span<const Rescaling> rescalings) {
    return mapColumns(columns, rescalings, appendTransformed);
}

std::vector<std::vector<double>> inverseTransform(Columns columns, std::span<const Rescaling> rescalings) {
    return mapColumns(columns, rescalings, appendInverse);
}

}  // namespace Tessel::Engine::Scaler
