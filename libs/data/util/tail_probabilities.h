#pragma once

// The distributions behind tests and capability figures, each upper tail computed as such (not as 1 - cdf).
// The one file behind this header includes the heavy headers of Boost.Math.

namespace Tessel::Numeric {

/// P(Z > z) of the standard normal distribution.
double normalUpperTail(double z);
/// The z with P(Z > z) = probability; infinite for 0 and 1. @pre 0 <= probability <= 1
double normalUpperQuantile(double probability);
/// The z with P(|Z| <= z) = level. @pre 0 < level < 1
double normalTwoSidedQuantile(double level);

/// P(X > statistic) of the chi-squared distribution. @pre statistic >= 0, degreesOfFreedom > 0
double chiSquaredUpperTail(double statistic, double degreesOfFreedom);

/// Twice the smaller tail of the F distribution, at most 1. @pre ratio >= 0, degrees of freedom > 0
double fTwoSided(double ratio, double numeratorDegreesOfFreedom, double denominatorDegreesOfFreedom);

/// P(|T| > |statistic|) of Student's distribution. @pre degreesOfFreedom > 0
double studentTwoSided(double statistic, double degreesOfFreedom);
/// The t with P(|T| <= t) = level. @pre 0 < level < 1, degreesOfFreedom > 0
double studentTwoSidedQuantile(double level, double degreesOfFreedom);

/// (1 + x) log(1 + x) - x, to full relative precision also near 0; 1 at -1. @pre x >= -1
double entropyExcess(double x);

}  // namespace Tessel::Numeric
