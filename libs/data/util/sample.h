#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include <tessel/data/util/statistics.h>

// What statistics, correlations and tests of a sample share: plain numbers without missing values.

namespace Tessel::Numeric {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The values without NaN, in their order.
std::vector<double> presentValues(std::span<const double> values);

/// The members of the pairs of which neither is NaN.
struct Pairs {
    std::vector<double> x;
    std::vector<double> y;
};

/// @throws NumElementsMismatch for different lengths.
Pairs completePairs(std::span<const double> x, std::span<const double> y);

/// A mean in twice the precision, so that deviations of values around 1e9 keep their digits.
struct Centre {
    double high = kNaN;
    double low = 0.0;

    double value() const { return high + low; }
    double deviation(double x) const { return (x - high) - low; }
};

/// The mean of values without NaN; NaN when there are none.
Centre centreOf(std::span<const double> values);

/// The deviations from the mean, scaled by a power of two so that squares and fourth powers neither
/// overflow nor vanish: x[i] - mean = scaled[i] * 2^exponent with |scaled[i]| <= 1.
struct Deviations {
    Centre centre;
    std::vector<double> scaled;
    int exponent = 0;

    std::size_t count() const { return scaled.size(); }
    /// sum(scaled^power), power >= 1.
    double powerSum(int power) const;
    /// sum((x - mean)^2) / (n - 1); NaN for n < 2.
    double variance() const;
    double standardDeviation() const;
    double skewness() const;        ///< adjusted, see Util::skewness
    double excessKurtosis() const;  ///< adjusted, see Util::excessKurtosis
};

/// @param values  without NaN.
Deviations deviationsOf(std::vector<double> values);

/// The percentiles of values without NaN.
/// @pre the probabilities lie in [0, 1]
std::vector<double> percentilesOf(std::vector<double> values, std::span<const double> probabilities,
                                  Util::PercentileDefinition definition);

/// The positions of the numeric columns that are not index columns.
IntVector numericFeatures(const DataFrame& table);

}  // namespace Tessel::Numeric
