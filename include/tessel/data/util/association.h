#pragma once

#include <numbers>

#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>
#include <tessel/data/vectors.h>

/// Correlation, tests of hypotheses and information measures.
///
/// Missing values are left out: of pairs both members as soon as one is missing. Results that do not exist
/// are NaN. Small p-values are computed as upper tails, so they keep their digits down to about 1e-300.
namespace Tessel::Util {

/// Pearson's product-moment correlation, in [-1, 1]. NaN for fewer than two pairs, when either variable is
/// constant, and with infinite values. @throws NumElementsMismatch for different lengths.
TESSEL_API double pearsonCorrelation(const Vector& x, const Vector& y);
TESSEL_API double pearsonCorrelation(const DataFrameColumn& x, const DataFrameColumn& y);

/// Spearman's rank correlation: Pearson's of the ranks, equal values sharing their average rank. NaN for
/// fewer than two pairs and when either variable is constant. @throws NumElementsMismatch
TESSEL_API double spearmanCorrelation(const Vector& x, const Vector& y);
TESSEL_API double spearmanCorrelation(const DataFrameColumn& x, const DataFrameColumn& y);

/// Kendall's tau-b: (concordant - discordant pairs) / sqrt((pairs not tied in x) (pairs not tied in y)).
/// O(n log n) time by Knight (1966), Journal of the American Statistical Association 61. NaN for fewer than
/// two pairs and when either variable is constant. @throws NumElementsMismatch
TESSEL_API double kendallCorrelation(const Vector& x, const Vector& y);
TESSEL_API double kendallCorrelation(const DataFrameColumn& x, const DataFrameColumn& y);

enum class CorrelationType : int { PEARSON = 0, SPEARMAN = 1, KENDALL = 2 };

/// The correlations between the k numeric columns that are not index columns: a table named "Correlation
/// matrix" with k rows and k columns named after them. It is symmetric; each pair of columns uses the rows
/// where both are present. The diagonal is 1, NaN for a column without two distinct values.
/// @throws ConstraintViolation when the type is none of the three.
TESSEL_API DataFrame correlationMatrix(const DataFrame& table,
                                       CorrelationType type = CorrelationType::PEARSON);

/// The outcome of a chi-squared test.
struct ChiSquaredTestResult {
    double statistic;         ///< sum((observed - expected)^2 / expected)
    double degreesOfFreedom;  ///< a whole number
    double pValue;            ///< P(chi-squared >= statistic); NaN without a degree of freedom
};

/// Goodness of fit of k counts to the expected ones, with k - 1 - numEstimated degrees of freedom. Cells in
/// which either count is missing are left out.
/// @param observed      at least 0 each.
/// @param expected      greater than 0 each, with the same sum as `observed` up to a relative 1e-8.
/// @param numEstimated  how many parameters of the expected distribution came from the same data, >= 0.
/// @throws NumElementsMismatch, ConstraintViolation
TESSEL_API ChiSquaredTestResult chiSquaredTest(const Vector& observed, const Vector& expected,
                                               int numEstimated = 0);

/// Independence of the rows and columns of a table of r x c counts, without continuity correction:
/// expected = row total * column total / total, (r - 1) (c - 1) degrees of freedom. Rows and columns whose
/// total is 0 do not count. The statistic is NaN when all counts are 0.
/// @throws ConstraintViolation for a count that is negative, missing or infinite.
TESSEL_API ChiSquaredTestResult chiSquaredTest(const Matrix& counts);

/// Independence of two columns of categories: texts, or the distinct values of a numeric column. Memory
/// grows with the number of rows, not with the product of the numbers of categories.
/// @throws NumElementsMismatch
TESSEL_API ChiSquaredTestResult chiSquaredTest(const DataFrameColumn& x, const DataFrameColumn& y);

/// The outcome of an F test.
struct FTestResult {
    double statistic;                    ///< variance of x / variance of y
    double numeratorDegreesOfFreedom;    ///< n of x - 1
    double denominatorDegreesOfFreedom;  ///< n of y - 1
    double pValue;                       ///< two-sided: twice the smaller tail, at most 1
};

/// Whether two normal samples have equal variances, two-sided. Statistic and p-value are NaN when a sample
/// has fewer than two values or both are constant; when only one is constant the p-value is 0.
TESSEL_API FTestResult fTest(const Vector& x, const Vector& y);
TESSEL_API FTestResult fTest(const DataFrameColumn& x, const DataFrameColumn& y);

/// The outcome of Welch's test.
struct WelchTestResult {
    double statistic;         ///< difference / standardError
    double degreesOfFreedom;  ///< by Welch and Satterthwaite, in general not whole
    double pValue;            ///< two-sided: P(|T| >= |statistic|)
    double difference;        ///< mean of x - mean of y
    double standardError;     ///< sqrt(variance of x / n of x + variance of y / n of y)
    double lower;             ///< bounds of the confidence interval of the difference
    double upper;
};

/// Whether two normal samples have equal means, two-sided, their variances need not be equal. All but the
/// difference is NaN when a sample has fewer than two values; when both samples are constant the statistic,
/// the degrees of freedom, the p-value and the bounds are.
/// @param confidenceLevel  of the bounds, between 0 and 1, both excluded; default 0.95. @throws
/// ValueOutOfRange
TESSEL_API WelchTestResult welchTest(const Vector& x, const Vector& y, double confidenceLevel = 0.95);
TESSEL_API WelchTestResult welchTest(const DataFrameColumn& x, const DataFrameColumn& y,
                                     double confidenceLevel = 0.95);

/// The Gini impurity 1 - sum(p^2) of the shares p = count / total: 0 for one class, 1 - 1 / k for k equal
/// ones. NaN when the total is 0; missing counts are left out.
/// @param classCounts  at least 0 and finite each. @throws ConstraintViolation
TESSEL_API double giniIndex(const Vector& classCounts);
/// The impurity of a column: each text or distinct number is a class.
TESSEL_API double giniIndex(const DataFrameColumn& column);

/// The mutual information of two columns of categories (texts or distinct numbers),
/// sum(p(x, y) log(p(x, y) / (p(x) p(y)))) with the observed shares p: at least 0, and 0 exactly when they
/// are independent. NaN without a complete pair.
/// @param base  of the logarithm, greater than 1; default e (nats), 2 gives bits. @throws ConstraintViolation
/// @throws NumElementsMismatch
TESSEL_API double mutualInformation(const DataFrameColumn& x, const DataFrameColumn& y,
                                    double base = std::numbers::e);

}  // namespace Tessel::Util
