#pragma once

#include <tessel/data/vectors.h>

/// Error measures of predictions or forecasts.
///
/// The error of a pair is e = actual - predicted: positive when the prediction was too low. Pairs with a
/// missing member are left out; n is the number of complete pairs. Without any the sums are 0 and the means
/// NaN. All throw `NumElementsMismatch` when the vectors differ in length.
namespace Tessel::Util {

/// sum(e^2).
TESSEL_API double sumOfSquaredErrors(const Vector& actual, const Vector& predicted);

/// sum(e^2) / n.
TESSEL_API double meanSquaredError(const Vector& actual, const Vector& predicted);

/// The mean absolute deviation of the predictions from the actual values, sum(|e|) / n.
TESSEL_API double meanAbsoluteDeviation(const Vector& actual, const Vector& predicted);

/// The mean of |e / actual| in percent: 100 sum(|e / actual|) / n, so 5 stands for 5 %. Pairs whose actual
/// value is 0 have no percentage error and are left out of sum and n; NaN when no pair is left.
TESSEL_API double meanAbsolutePercentageError(const Vector& actual, const Vector& predicted);

/// The bias of the forecast, sum(e) / n: positive when it is too low on average.
TESSEL_API double meanForecastError(const Vector& actual, const Vector& predicted);

/// sum(e).
TESSEL_API double cumulativeForecastError(const Vector& actual, const Vector& predicted);

/// The tracking signal: cumulative forecast error / mean absolute deviation, in [-n, n]. NaN when every
/// error is 0.
TESSEL_API double trackingSignalError(const Vector& actual, const Vector& predicted);

}  // namespace Tessel::Util
