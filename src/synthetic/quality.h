#pragma once

#include <span>

#include <tessel/data/data_frame_vector.h>

namespace Tessel::SyntheticDataGeneration {

/// The largest difference of the empirical distribution functions of two samples in ascending order, without
/// NaN; NaN when one is empty.
double kolmogorovSmirnovDistance(std::span<const double> a, std::span<const double> b);

/// See `SyntheticDataGenerator::qualityReport`.
DataFrameVector qualityReport(const DataFrame& original, const DataFrame& generated);

}  // namespace Tessel::SyntheticDataGeneration
