#include <algorithm>
#include <cmath>
#include <functional>

#include <tessel/data/errors.h>
#include <tessel/data/util/statistics.h>

#include "data/util/compensated_sum.h"
#include "data/util/sample.h"
#include "data/util/tail_probabilities.h"

namespace Tessel::Util {
namespace {

using Numeric::deviationsOf;
using Numeric::kNaN;
using Numeric::presentValues;

using Values = std::span<const double>;

double sumOfPresent(Values values) {
    return Numeric::sumOf(values.size(),
                          [&](std::size_t i) { return std::isnan(values[i]) ? 0.0 : values[i]; });
}

/// The first position whose value comes before all others, -1 without values.
template <class Before>
int firstIndex(Values values, Before before) {
    int found = -1;
    double best = kNaN;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isnan(values[i]) || (found >= 0 && !before(values[i], best))) continue;
        found = static_cast<int>(i);
        best = values[i];
    }
    return found;
}

template <class Before>
double firstValue(Values values, Before before) {
    const int index = firstIndex(values, before);
    return index < 0 ? kNaN : values[static_cast<std::size_t>(index)];
}

double medianOf(Values values) {
    constexpr double middle[] = {0.5};
    return Numeric::percentilesOf(presentValues(values), middle, PercentileDefinition::LINEAR).front();
}

Vector checkedPercentiles(Values values, const Vector& probabilities, PercentileDefinition definition) {
    for (const double probability : probabilities)
        if (!(probability >= 0.0 && probability <= 1.0)) throw ValueOutOfRange("Probabilities", 0.0, 1.0);
    if (definition < PercentileDefinition::INVERSE_CDF || definition > PercentileDefinition::NORMAL_UNBIASED)
        throw ConstraintViolation("Percentile definition", "The value must be a pre-defined set member.");
    return Vector(Numeric::percentilesOf(presentValues(values), probabilities, definition));
}

}  // namespace

double sum(const Vector& values) { return sumOfPresent(values); }
double sum(const DataFrameColumn& column) { return sumOfPresent(column.values()); }

double mean(const Vector& values) { return Numeric::centreOf(presentValues(values)).value(); }
double mean(const DataFrameColumn& column) {
    return Numeric::centreOf(presentValues(column.values())).value();
}

double median(const Vector& values) { return medianOf(values); }
double median(const DataFrameColumn& column) { return medianOf(column.values()); }

double variance(const Vector& values) { return deviationsOf(presentValues(values)).variance(); }
double variance(const DataFrameColumn& column) {
    return deviationsOf(presentValues(column.values())).variance();
}

double standardDeviation(const Vector& values) {
    return deviationsOf(presentValues(values)).standardDeviation();
}
double standardDeviation(const DataFrameColumn& column) {
    return deviationsOf(presentValues(column.values())).standardDeviation();
}

double skewness(const Vector& values) { return deviationsOf(presentValues(values)).skewness(); }
double skewness(const DataFrameColumn& column) {
    return deviationsOf(presentValues(column.values())).skewness();
}

double excessKurtosis(const Vector& values) { return deviationsOf(presentValues(values)).excessKurtosis(); }
double excessKurtosis(const DataFrameColumn& column) {
    return deviationsOf(presentValues(column.values())).excessKurtosis();
}

double minValue(const Vector& values) { return firstValue(values, std::less<>()); }
double minValue(const DataFrameColumn& column) { return firstValue(column.values(), std::less<>()); }
double maxValue(const Vector& values) { return firstValue(values, std::greater<>()); }
double maxValue(const DataFrameColumn& column) { return firstValue(column.values(), std::greater<>()); }

int minIndex(const Vector& values) { return firstIndex(values, std::less<>()); }
int minIndex(const DataFrameColumn& column) { return firstIndex(column.values(), std::less<>()); }
int maxIndex(const Vector& values) { return firstIndex(values, std::greater<>()); }
int maxIndex(const DataFrameColumn& column) { return firstIndex(column.values(), std::greater<>()); }

double absolute(double value) { return std::abs(value); }
Vector absolute(const Vector& values) {
    Vector result(values.size());
    std::transform(values.begin(), values.end(), result.begin(),
                   [](double value) { return std::abs(value); });
    return result;
}

double sqr(double value) { return value * value; }
Vector sqr(const Vector& values) {
    Vector result(values.size());
    std::transform(values.begin(), values.end(), result.begin(), [](double value) { return value * value; });
    return result;
}

bool isZero(double value, double tolerance) {
    if (!(tolerance >= 0.0)) throw ConstraintViolation("Tolerance", "The value must not be negative.");
    return std::abs(value) <= tolerance;
}

Vector percentiles(const Vector& values, const Vector& probabilities, PercentileDefinition definition) {
    return checkedPercentiles(values, probabilities, definition);
}
Vector percentiles(const DataFrameColumn& column, const Vector& probabilities,
                   PercentileDefinition definition) {
    return checkedPercentiles(column.values(), probabilities, definition);
}

double deviateFactor(double level) {
    if (!(level > 0.0 && level < 1.0)) throw ValueOutOfRange("Confidence level", 0.0, 1.0);
    return Numeric::normalTwoSidedQuantile(level);
}

}  // namespace Tessel::Util
