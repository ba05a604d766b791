#pragma once

#include <span>

namespace Tessel::Engine::Dist {

/// The largest |r[k]| over the lags k = 1 .. n - 1 of a series in its order, where
///
///   r[k] = (sum over i = 1 .. n - k of (x[i] - mean) (x[i + k] - mean)) / (n - k) / variance
///
/// with the sample variance (divisor n - 1). At long lags few products enter: values well above 1 are
/// possible, and usual for independent values. NaN for fewer than two values or a constant.
///
/// Long series: all sums by a fast Fourier transform in O(n log n) (D. Percival & A. Walden, Spectral
/// Analysis for Physical Applications (1993), ch. 6), then the largest again as defined, so that the result
/// has full precision.
double serialDependence(std::span<const double> values);

}  // namespace Tessel::Engine::Dist
