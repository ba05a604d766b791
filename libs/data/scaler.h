#pragma once

#include <span>
#include <vector>

// Shift and scale of numeric columns: x -> (x - shift) * scale, and back.
//
// A column is read twice: first its extremes and its mean, then the deviations from that mean, divided by a
// power of two so that their squares neither overflow nor vanish, which also give what the mean lacked: the
// corrected two-pass method of T. Chan, G. Golub & R. LeVeque, Algorithms for Computing the Sample Variance,
// The American Statistician 37 (1983) 242-247. Sums are taken by blocks, and the blocks with compensation. So
// the results are right to the last digits whatever the size of the numbers and of their mean.
//
// O(n) time a column, no memory. Columns are shared out among threads; each column is summed by one thread
// from top to bottom, so that the number of threads does not change a bit.

namespace Tessel::Engine::Scaler {

/// The map x -> (x - shift) * scale.
struct Rescaling {
    double shift = 0.0;
    double scale = 1.0;
};

// The map that one column asks for. Missing cells (NaN) are left out. Where a scale cannot be told it is 1:
// for a column without any value, without spread, or whose spread is below 1e-308, so that its inverse
// overflows. Both numbers are NaN when a value is infinite, else finite.

/// To mean 0 and standard deviation (divisor count - 1) 1.
Rescaling standardization(std::span<const double> values);
/// To the range from 0 to 1: the smallest value becomes 0, the largest 1 or the number below it.
Rescaling normalization(std::span<const double> values);
/// To mean 0; the scale is 1.
Rescaling meanShift(std::span<const double> values);
/// To Euclidean length 1; the shift is 0. Equal values have a length, too.
Rescaling unitNorm(std::span<const double> values);

using Columns = std::span<const std::span<const double>>;

/// The maps of several columns, by one of the functions above.
std::vector<Rescaling> fit(Columns columns, Rescaling (*method)(std::span<const double>));

/// (x - shift) * scale of every value; a difference that overflows does so only if the result does.
std::vector<double> transform(std::span<const double> values, const Rescaling& rescaling);
/// The same for several columns. @pre one map per column.
std::vector<std::vector<double>> transform(Columns columns, std::span<const Rescaling> rescalings);

/// x / scale + shift of every value. A scale of 0 has taken the values away: what is not missing becomes the
/// shift. @pre one map per column.
std::vector<std::vector<double>> inverseTransform(Columns columns, std::span<const Rescaling> rescalings);

}  // namespace Tessel::Engine::Scaler
