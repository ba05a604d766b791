#pragma once

#include <limits>

#include <tessel/data/data_frame.h>
#include <tessel/data/vectors.h>

/// Descriptive statistics.
///
/// Missing values (NaN) are left out everywhere: n is the number of values that are present. A statistic
/// that does not exist, such as the mean of no values or the variance of one, is NaN. Sums carry the
/// rounding errors along, so they are exact to about one unit in the last place however long the input is,
/// and they are taken in a fixed order. Overloads for columns throw `NonNumericData` for text columns.
namespace Tessel::Util {

/// The sum of the values; 0 without values.
TESSEL_API double sum(const Vector& values);
TESSEL_API double sum(const DataFrameColumn& column);

/// The arithmetic mean m = sum(x) / n.
TESSEL_API double mean(const Vector& values);
TESSEL_API double mean(const DataFrameColumn& column);

/// The middle of the ordered values, the mean of the two middle ones when n is even.
TESSEL_API double median(const Vector& values);
TESSEL_API double median(const DataFrameColumn& column);

/// The sample variance sum((x - m)^2) / (n - 1), computed from the deviations; NaN for n < 2.
TESSEL_API double variance(const Vector& values);
TESSEL_API double variance(const DataFrameColumn& column);

/// The square root of the sample variance; NaN for n < 2.
TESSEL_API double standardDeviation(const Vector& values);
TESSEL_API double standardDeviation(const DataFrameColumn& column);

/// The adjusted skewness G1 = sqrt(n (n - 1)) / (n - 2) * m3 / m2^1.5 with the central moments
/// mk = sum((x - m)^k) / n. NaN for n < 3 and for constant values.
TESSEL_API double skewness(const Vector& values);
TESSEL_API double skewness(const DataFrameColumn& column);

/// The adjusted excess kurtosis G2 = (n - 1) / ((n - 2) (n - 3)) * ((n + 1) (m4 / m2^2 - 3) + 6), which is
/// about 0 for normal samples. NaN for n < 4 and for constant values.
TESSEL_API double excessKurtosis(const Vector& values);
TESSEL_API double excessKurtosis(const DataFrameColumn& column);

/// The smallest and the largest value; NaN without values.
TESSEL_API double minValue(const Vector& values);
TESSEL_API double minValue(const DataFrameColumn& column);
TESSEL_API double maxValue(const Vector& values);
TESSEL_API double maxValue(const DataFrameColumn& column);

/// The position, counted from 0, of the first smallest or largest value; -1 without values.
TESSEL_API int minIndex(const Vector& values);
TESSEL_API int minIndex(const DataFrameColumn& column);
TESSEL_API int maxIndex(const Vector& values);
TESSEL_API int maxIndex(const DataFrameColumn& column);

/// |x|; of a vector element by element, NaN staying NaN.
TESSEL_API double absolute(double value);
TESSEL_API Vector absolute(const Vector& values);

/// x * x; of a vector element by element, NaN staying NaN.
TESSEL_API double sqr(double value);
TESSEL_API Vector sqr(const Vector& values);

/// True when |value| <= tolerance; NaN is not zero.
/// @param tolerance  at least 0; default the machine epsilon, 2^-52. @throws ConstraintViolation
TESSEL_API bool isZero(double value, double tolerance = std::numeric_limits<double>::epsilon());

/// The nine sample quantiles of Hyndman & Fan (1996), Sample Quantiles in Statistical Packages, The American
/// Statistician 50(4), with their numbers. x[1] <= ... <= x[n] are the ordered values and p the probability.
/// The first three pick a value; n * p is taken as whole when it is so up to four roundings. The others
/// interpolate: with h as given, the result is x[k] + (h - k) (x[k + 1] - x[k]) for k = floor(h), where
/// positions outside 1..n mean the nearest value.
enum class PercentileDefinition : int {
    INVERSE_CDF = 1,           ///< x[ceil(n p)]
    AVERAGED_INVERSE_CDF = 2,  ///< the same, but (x[n p] + x[n p + 1]) / 2 where n p is whole
    NEAREST_EVEN = 3,          ///< x[k], k the whole number nearest to n p, the even one of two
    INTERPOLATED_CDF = 4,      ///< h = n p
    HAZEN = 5,                 ///< h = n p + 1/2
    WEIBULL = 6,               ///< h = (n + 1) p
    LINEAR = 7,                ///< h = (n - 1) p + 1
    MEDIAN_UNBIASED = 8,       ///< h = (n + 1/3) p + 1/3
    NORMAL_UNBIASED = 9        ///< h = (n + 1/4) p + 3/8
};

/// The percentiles at the given probabilities, in their order; NaN each without values.
/// @param probabilities  each in [0, 1]. @throws ValueOutOfRange
/// @throws ConstraintViolation when the definition is not one of the nine.
TESSEL_API Vector percentiles(const Vector& values, const Vector& probabilities,
                              PercentileDefinition definition = PercentileDefinition::LINEAR);
TESSEL_API Vector percentiles(const DataFrameColumn& column, const Vector& probabilities,
                              PercentileDefinition definition = PercentileDefinition::LINEAR);
/// A table named "Percentiles": a row per numeric column that is not an index column, named after it, and a
/// column per probability, named like "2.5%".
TESSEL_API DataFrame percentiles(const DataFrame& table, const Vector& probabilities,
                                 PercentileDefinition definition = PercentileDefinition::LINEAR);

/// A table named "Summary": a row per numeric column that is not an index column, named after it, and the
/// columns "Count" (of values present), "Missing", "Mean", "Std. dev.", "Min", "Q1", "Median", "Q3" and
/// "Max"; the quartiles by `PercentileDefinition::LINEAR`.
TESSEL_API DataFrame summary(const DataFrame& table);

/// The table of `summary`, named "Advanced summary", with these columns behind:
/// "Variance"; "Std. error" = Std. dev. / sqrt(n); "Skewness" and "Excess kurtosis" as the functions above;
/// "Sum"; "Range" = Max - Min; "Interquartile range" = Q3 - Q1; "Coef. of variation" = Std. dev. / |Mean|
/// (a fraction, NaN for mean 0); "1%", "5%", "10%", "90%", "95%", "99%" by `PercentileDefinition::LINEAR`;
/// "Mode", the most frequent value, of several the smallest; "Mode count", how often it occurs.
TESSEL_API DataFrame advancedSummary(const DataFrame& table);

/// Limits of a process characteristic, in its unit. NaN stands for a limit that does not exist.
struct ToleranceLimits {
    double lower = std::numeric_limits<double>::quiet_NaN();   ///< LSL
    double upper = std::numeric_limits<double>::quiet_NaN();   ///< USL
    double target = std::numeric_limits<double>::quiet_NaN();  ///< T; NaN: midway between two limits
};

/// Process capability for values with mean m and sample standard deviation s, as a table named "Six sigma
/// summary" with one row and the columns
///   "Count", "Mean", "Std. dev.";
///   "Lower limit", "Upper limit", "Target": the limits used;
///   "Cp"  = (USL - LSL) / (6 s);
///   "Cpl" = (m - LSL) / (3 s), "Cpu" = (USL - m) / (3 s), "Cpk" = the smaller of the two that exist;
///   "Cpm" = (USL - LSL) / (6 sqrt(s^2 + (m - T)^2));
///   "DPM" = 1e6 p, the defects per million expected of a normal distribution with
///           p = P(Z > (m - LSL) / s) + P(Z > (USL - m) / s), Z standard normal, a missing limit adding 0;
///   "Yield" = 100 (1 - p), in percent;
///   "Sigma level" = the z with P(Z > z) = p, without the customary shift of 1.5: add 1.5 for a long-term
///           sample when the short-term level is wanted; infinite when p is 0 in double precision;
///   "Observed DPM" = 1e6 times the share of the values below LSL or above USL.
/// An index that needs a missing limit is NaN, and so are Cp to "Sigma level" for n < 2 and constant values.
/// The row bears the name of the vector or column.
/// @throws ConstraintViolation ("Tolerance limits") without any limit, for an infinite limit or target,
/// and for lower >= upper.
TESSEL_API DataFrame sixSigmaSummary(const Vector& values, const ToleranceLimits& limits);
TESSEL_API DataFrame sixSigmaSummary(const DataFrameColumn& column, const ToleranceLimits& limits);
/// The same limits for every numeric column that is not an index column, one row each.
TESSEL_API DataFrame sixSigmaSummary(const DataFrame& table, const ToleranceLimits& limits);

/// The two-sided deviate of the standard normal distribution: the z with P(|Z| <= z) = level, for example
/// 1.959963984540054 for 0.95.
/// @param level  between 0 and 1, both excluded. @throws ValueOutOfRange
TESSEL_API double deviateFactor(double level);

}  // namespace Tessel::Util
