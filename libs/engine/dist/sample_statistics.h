#pragma once

#include <cstddef>
#include <limits>
#include <span>

namespace Tessel::Engine::Dist {

/// What is told of a sample of n finite values. NaN where a statistic does not exist.
struct SampleStatistics {
    std::size_t count = 0;
    double mean = std::numeric_limits<double>::quiet_NaN();
    double variance = std::numeric_limits<double>::quiet_NaN();           ///< With divisor n - 1.
    double standardDeviation = std::numeric_limits<double>::quiet_NaN();  ///< Its root.
    /// sqrt(n (n - 1)) / (n - 2) * m3 / m2^1.5 with the central moments mk = sum((x - mean)^k) / n.
    double skewness = std::numeric_limits<double>::quiet_NaN();
    /// (n - 1) / ((n - 2) (n - 3)) * ((n + 1) (m4 / m2^2 - 3) + 6).
    double excessKurtosis = std::numeric_limits<double>::quiet_NaN();
    double minimum = std::numeric_limits<double>::quiet_NaN();
    double maximum = std::numeric_limits<double>::quiet_NaN();
    double median = std::numeric_limits<double>::quiet_NaN();
    double lowerQuartile = std::numeric_limits<double>::quiet_NaN();  ///< `percentile` at 0.25.
    double upperQuartile = std::numeric_limits<double>::quiet_NaN();  ///< `percentile` at 0.75.
    double mode = std::numeric_limits<double>::quiet_NaN();           ///< Of the engine that asks; see there.
};

/// All statistics but the mode, of values in ascending order.
///
/// The moments read the values once, by blocks whose sums of powers of deviations are merged: P. Pebay,
/// Formulas for Robust, One-pass Parallel Computation of Covariances and Arbitrary-order Statistical Moments,
/// Sandia Report SAND2008-6212 (2008).
SampleStatistics statisticsOf(std::span<const double> sorted);

/// The value at position (n - 1) p + 1 of the sorted values, interpolated (R. Hyndman & Y. Fan, The American
/// Statistician 50 (1996) 361-365, number 7); NaN without values or for p outside [0, 1].
double percentile(std::span<const double> sorted, double p);

/// The value that occurs most often among values in ascending order, of several the smallest.
double mostFrequent(std::span<const double> sorted);

}  // namespace Tessel::Engine::Dist
