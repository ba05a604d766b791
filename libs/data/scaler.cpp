#include "data/scaler.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>

#include "data/util/compensated_sum.h"
#include "data/util/sample.h"

namespace Tessel::Engine::Scaler {
namespace {

using Numeric::Centre;
using Numeric::CompensatedSum;
using Values = std::span<const double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// Values that fit into the first-level cache; several loops over them cost little more than one.
constexpr std::size_t kBlockSize = 2048;
/// Below this number of cells waking threads costs more than they save.
constexpr std::size_t kParallelCells = 1 << 15;

/// What the first reading of a column tells.
struct Extent {
    std::size_t count = 0;  ///< values that are not missing
    double smallest = kInfinity, largest = -kInfinity;

    bool isEmpty() const { return count == 0; }
    bool isFinite() const { return std::isfinite(smallest) && std::isfinite(largest); }
    bool isConstant() const { return smallest == largest; }
};

/// Comparisons with NaN are false, so missing values change nothing. Lanes are what processors do at once.
void addBlock(Values block, Extent& extent) {
    constexpr std::size_t numLanes = 8;
    std::array<double, numLanes> smallest, largest, count{};
    smallest.fill(extent.smallest);
    largest.fill(extent.largest);
    std::size_t i = 0;
    for (; i + numLanes <= block.size(); i += numLanes)
        for (std::size_t lane = 0; lane < numLanes; ++lane) {
            const double value = block[i + lane];
            smallest[lane] = value < smallest[lane] ? value : smallest[lane];
            largest[lane] = value > largest[lane] ? value : largest[lane];
            count[lane] += std::isnan(value) ? 0.0 : 1.0;
        }
    for (; i < block.size(); ++i) {
        smallest[0] = block[i] < smallest[0] ? block[i] : smallest[0];
        largest[0] = block[i] > largest[0] ? block[i] : largest[0];
        count[0] += std::isnan(block[i]) ? 0.0 : 1.0;
    }
    for (std::size_t lane = 0; lane < numLanes; ++lane) {
        extent.smallest = std::min(extent.smallest, smallest[lane]);
        extent.largest = std::max(extent.largest, largest[lane]);
        extent.count += static_cast<std::size_t>(count[lane]);
    }
}

/// Calls `use` with one block of the column after the other.
template <class Use>
void forEachBlock(Values values, Use use) {
    for (std::size_t start = 0; start < values.size(); start += kBlockSize)
        use(values.subspan(start, std::min(kBlockSize, values.size() - start)));
}

Extent extentOf(Values values) {
    Extent extent;
    forEachBlock(values, [&](Values block) { addBlock(block, extent); });
    return extent;
}

double presentOrZero(double value) { return std::isnan(value) ? 0.0 : value; }

/// The extremes and the mean of a column.
struct Location : Extent {
    Centre centre;
};

Location locate(Values values) {
    Location location;
    CompensatedSum sum;
    forEachBlock(values, [&](Values block) {
        addBlock(block, location);
        sum.add(
            Numeric::compensatedSumOf(block.size(), [&](std::size_t i) { return presentOrZero(block[i]); }));
    });
    if (location.isEmpty() || !location.isFinite()) return location;
    if (location.isConstant()) {
        location.centre = {location.smallest, 0.0};
        return location;
    }
    location.centre = Numeric::centreOf(sum, location.count);
    if (!std::isfinite(location.centre.high)) {
        // The sum of huge values may overflow although their mean does not.
        const auto count = static_cast<double>(location.count);
        location.centre.high =
            Numeric::sumOf(values.size(), [&](std::size_t i) { return presentOrZero(values[i] / count); });
        location.centre.low = 0.0;
    }
    return location;
}

/// The binary exponent to divide by so that numbers up to twice `half` become at most 1. Dividing by it is
/// exact, and the inverse of its power of two is finite.
int exponentOf(double half) {
    int exponent = 0;
    std::frexp(half, &exponent);
    return std::max(exponent + 1, -1000);
}

/// The sum of ((x - centre) / 2^exponent)^2.
double sumOfSquares(Values values, const Centre& centre, int exponent) {
    const double factor = std::ldexp(1.0, -exponent);
    const double high = centre.high * factor, low = centre.low * factor;
    CompensatedSum sum;
    forEachBlock(values, [&](Values block) {
        sum.add(Numeric::compensatedSumOf(block.size(), [&](std::size_t i) {
            const double deviation = (block[i] * factor - high) - low;
            return presentOrZero(deviation * deviation);
        }));
    });
    return sum.value();
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
    const auto [shift, scale] = rescaling;
    if (std::abs(shift) < 1e290) {  // too small to make a difference overflow
        appendMapped(values, result, [shift, scale](double x) { return (x - shift) * scale; });
    } else {
        const double half = 0.5 * shift;
        appendMapped(values, result, [half, scale](double x) { return (0.5 * x - half) * scale * 2.0; });
    }
}

void appendInverse(Values values, const Rescaling& rescaling, std::vector<double>& result) {
    const auto [shift, scale] = rescaling;
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
    const Location location = locate(values);
    if (location.isEmpty()) return {};
    if (!location.isFinite()) return unknown();
    const Centre& centre = location.centre;
    if (location.isConstant()) return {centre.high, 1.0};
    const int exponent = exponentOf(
        std::max(0.5 * location.largest - 0.5 * centre.high, 0.5 * centre.high - 0.5 * location.smallest));
    const double variance = sumOfSquares(values, centre, exponent) / static_cast<double>(location.count - 1);
    return {centre.value(), inverseOf(std::sqrt(variance), exponent)};
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
    const Location location = locate(values);
    if (location.isEmpty()) return {};
    return location.isFinite() ? Rescaling{location.centre.value(), 1.0} : unknown();
}

Rescaling unitNorm(Values values) {
    const Extent extent = extentOf(values);
    if (extent.isEmpty()) return {};
    if (!extent.isFinite()) return unknown();
    const int exponent = exponentOf(0.5 * std::max(std::abs(extent.smallest), std::abs(extent.largest)));
    return {0.0, inverseOf(std::sqrt(sumOfSquares(values, {0.0, 0.0}, exponent)), exponent)};
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
