#include "data/util/sample.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <tessel/data/errors.h>

#include "data/column_access.h"
#include "data/util/compensated_sum.h"

namespace Tessel::Numeric {

std::vector<double> presentValues(std::span<const double> values) {
    std::vector<double> present;
    present.reserve(values.size());
    std::copy_if(values.begin(), values.end(), std::back_inserter(present),
                 [](double value) { return !std::isnan(value); });
    return present;
}

Pairs completePairs(std::span<const double> x, std::span<const double> y) {
    if (x.size() != y.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(x.size()), static_cast<std::int64_t>(y.size()));
    Pairs pairs;
    pairs.x.reserve(x.size());
    pairs.y.reserve(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (std::isnan(x[i]) || std::isnan(y[i])) continue;
        pairs.x.push_back(x[i]);
        pairs.y.push_back(y[i]);
    }
    return pairs;
}

Centre centreOf(std::span<const double> values) {
    Centre centre;
    if (values.empty()) return centre;
    const auto count = static_cast<double>(values.size());
    const CompensatedSum sum = compensatedSumOf(values.size(), [&](std::size_t i) { return values[i]; });
    centre.high = sum.value() / count;
    if (std::isfinite(centre.high)) {
        // The rest of a division is a double, so the fused product finds it exactly.
        centre.low = (std::fma(-centre.high, count, sum.value()) + sum.remainder()) / count;
    } else {
        // The sum of huge values may overflow although their mean does not.
        centre.high = sumOf(values.size(), [&](std::size_t i) { return values[i] / count; });
    }
    return centre;
}

double Deviations::powerSum(int power) const {
    return sumOf(scaled.size(), [&](std::size_t i) {
        double product = scaled[i];
        for (int factor = 1; factor < power; ++factor) product *= scaled[i];
        return product;
    });
}

double Deviations::variance() const {
    if (count() < 2) return kNaN;
    return std::ldexp(powerSum(2) / static_cast<double>(count() - 1), 2 * exponent);
}

double Deviations::standardDeviation() const {
    if (count() < 2) return kNaN;
    return std::ldexp(std::sqrt(powerSum(2) / static_cast<double>(count() - 1)), exponent);
}

double Deviations::skewness() const {
    if (count() < 3) return kNaN;
    const auto n = static_cast<double>(count());
    const double secondMoment = powerSum(2) / n;
    if (secondMoment == 0.0) return kNaN;
    const double thirdMoment = powerSum(3) / n;
    return std::sqrt(n * (n - 1.0)) / (n - 2.0) * thirdMoment / (secondMoment * std::sqrt(secondMoment));
}

double Deviations::excessKurtosis() const {
    if (count() < 4) return kNaN;
    const auto n = static_cast<double>(count());
    const double secondMoment = powerSum(2) / n;
    if (secondMoment == 0.0) return kNaN;
    const double excess = powerSum(4) / n / (secondMoment * secondMoment) - 3.0;
    return (n - 1.0) / ((n - 2.0) * (n - 3.0)) * ((n + 1.0) * excess + 6.0);
}

Deviations deviationsOf(std::vector<double> values) {
    Deviations deviations;
    deviations.centre = centreOf(values);
    double largest = 0.0;
    for (double& value : values) {
        value = deviations.centre.deviation(value);
        largest = std::max(largest, std::abs(value));
    }
    if (largest > 0.0 && std::isfinite(largest)) {
        std::frexp(largest, &deviations.exponent);
        // 2^1000 and its inverse are both finite numbers; a spread beyond keeps enough room all the same.
        deviations.exponent = std::clamp(deviations.exponent, -1000, 1000);
        const double factor = std::ldexp(1.0, -deviations.exponent);
        for (double& value : values) value *= factor;
    }
    deviations.scaled = std::move(values);
    return deviations;
}

namespace {

/// Where a percentile lies: between the ordered values `low` and `low + 1`, counted from 0, at `weight` of
/// the way. Weight 0 needs the value `low` only.
struct Position {
    std::size_t low;
    double weight;
};

/// @param position  counted from 1 as in the paper; outside 1..count it means the nearest value.
Position clampedPosition(double position, std::size_t count) {
    const double inside = std::clamp(position, 1.0, static_cast<double>(count));
    const double whole = std::floor(inside);
    return {static_cast<std::size_t>(whole) - 1, inside - whole};
}

/// n * p, moved to a multiple of `grid` that is as near as four roundings.
double snapped(double product, double grid) {
    const double nearest = std::round(product / grid) * grid;
    const double tolerance = 4.0 * std::numeric_limits<double>::epsilon() * std::max(1.0, product);
    return std::abs(product - nearest) <= tolerance ? nearest : product;
}

double nearestEven(double product) {
    const double position = std::floor(product + 0.5);
    const bool halfway = position == product + 0.5;
    return halfway && std::fmod(position, 2.0) != 0.0 ? position - 1.0 : position;
}

Position locate(std::size_t count, double probability, Util::PercentileDefinition definition) {
    using enum Util::PercentileDefinition;
    const auto n = static_cast<double>(count);
    const double p = probability;
    double position = 0.0;
    switch (definition) {
        case INVERSE_CDF:
            position = std::ceil(snapped(n * p, 1.0));
            break;
        case AVERAGED_INVERSE_CDF: {
            const double product = snapped(n * p, 1.0);
            position = product == std::floor(product) ? product + 0.5 : std::ceil(product);
            break;
        }
        case NEAREST_EVEN:
            position = nearestEven(snapped(n * p, 0.5));
            break;
        case INTERPOLATED_CDF:
            position = n * p;
            break;
        case HAZEN:
            position = n * p + 0.5;
            break;
        case WEIBULL:
            position = (n + 1.0) * p;
            break;
        case LINEAR:
            position = (n - 1.0) * p + 1.0;
            break;
        case MEDIAN_UNBIASED:
            position = (n + 1.0 / 3.0) * p + 1.0 / 3.0;
            break;
        case NORMAL_UNBIASED:
            position = (n + 0.25) * p + 0.375;
            break;
    }
    return clampedPosition(position, count);
}

/// Puts the values of the given ascending ranks where sorting would put them.
/// @param offset  the rank of the first of `values`.
void placeRanks(std::span<double> values, std::span<const std::size_t> ranks, std::size_t offset) {
    if (ranks.empty() || values.size() < 2) return;
    const std::size_t middle = ranks.size() / 2;
    const std::size_t place = ranks[middle] - offset;
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(place), values.end());
    placeRanks(values.first(place), ranks.first(middle), offset);
    placeRanks(values.subspan(place + 1), ranks.subspan(middle + 1), offset + place + 1);
}

double between(double low, double high, double weight) {
    if (low == high) return low;  // also equal infinities
    return std::clamp((1.0 - weight) * low + weight * high, low, high);
}

}  // namespace

std::vector<double> percentilesOf(std::vector<double> values, std::span<const double> probabilities,
                                  Util::PercentileDefinition definition) {
    std::vector<double> percentiles(probabilities.size(), kNaN);
    if (values.empty()) return percentiles;

    std::vector<Position> positions;
    std::vector<std::size_t> ranks;
    for (const double probability : probabilities) {
        positions.push_back(locate(values.size(), probability, definition));
        ranks.push_back(positions.back().low);
        if (positions.back().weight > 0.0) ranks.push_back(positions.back().low + 1);
    }
    std::sort(ranks.begin(), ranks.end());
    ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
    placeRanks(values, ranks, 0);

    for (std::size_t i = 0; i < percentiles.size(); ++i) {
        const auto [low, weight] = positions[i];
        percentiles[i] = weight > 0.0 ? between(values[low], values[low + 1], weight) : values[low];
    }
    return percentiles;
}

IntVector numericFeatures(const DataFrame& table) {
    IntVector positions;
    for (int column = 0; column < table.getNumCols(); ++column)
        if (table.isNumeric(column) && !ColumnAccess::isIndex(table, column)) positions.push_back(column);
    return positions;
}

}  // namespace Tessel::Numeric
