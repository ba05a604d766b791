#pragma once

#include <span>

#include <tessel/api.h>
#include <tessel/data/data_frame.h>

/// Measures of how well predictions agree with what really happened.
///
/// Rules that hold for every function here and in `Evaluator`, unless it says otherwise:
/// - Class labels are compared as texts; a numeric label is its shortest text (1.0 is "1").
/// - `weights` holds one finite weight >= 0 per row with a positive sum; empty means that all are 1.
/// - Rows whose actual value, prediction or score is missing (empty text or NaN), and rows of weight 0,
///   are left out.
/// - A ratio whose denominator is 0 is undefined and gives NaN.
/// - Sums are accurate and taken in a fixed order: results do not depend on the number of threads.
///
/// @throws TooFewNumRows        when no row is left.
/// @throws NumRowsMismatch      when actual values and predictions differ in length.
/// @throws NumElementsMismatch  when `weights` is not empty and has another length.
/// @throws ConstraintViolation  for bad weights.
/// @throws NonNumericData       for a text column where numbers are needed.
/// @throws UnspecifiedStringParameter  for an empty success class.
namespace Tessel::Metrics {

/// Class labels as an argument: a column of either type or a sequence of texts. Does not copy cells of a
/// column.
class Labels {
 public:
    Labels(const DataFrameColumn& labels) : column_(labels) {}
    Labels(const StringVector& labels) : column_(labels.getName(), labels) {}

    const DataFrameColumn& column() const { return column_; }

 private:
    DataFrameColumn column_;
};

/// Numbers as an argument: a numeric column or a vector. It refers to what it was made from, so it is to be
/// used as a parameter only.
class Numbers {
 public:
    /// @throws NonNumericData
    Numbers(const DataFrameColumn& numbers) : values_(numbers.values()) {}
    Numbers(const Vector& numbers) : values_(numbers.data(), numbers.size()) {}

    std::span<const double> values() const { return values_; }

 private:
    std::span<const double> values_;
};

// ---- Classification: labels. TP, FP, FN and TN are the weights of rows that are truly or falsely predicted
// to be of the success class ("positive") or not. O(n) time; a text column costs one pass over its codes.

/// The share of rows whose prediction is the actual class.
TESSEL_API double accuracy(const Labels& actual, const Labels& predicted, const Vector& weights = {});
/// The share of rows whose prediction is not the actual class.
TESSEL_API double error(const Labels& actual, const Labels& predicted, const Vector& weights = {});
/// TN / (TN + FP); NaN when every row is actually positive.
TESSEL_API double specificity(const Labels& actual, const Labels& predicted, const WString& successClass,
                              const Vector& weights = {});
/// Recall, TP / (TP + FN); NaN when no row is actually positive.
TESSEL_API double sensitivity(const Labels& actual, const Labels& predicted, const WString& successClass,
                              const Vector& weights = {});
/// TP / (TP + FP); NaN when no row is predicted to be positive.
TESSEL_API double precision(const Labels& actual, const Labels& predicted, const WString& successClass,
                            const Vector& weights = {});
/// 2 TP / (2 TP + FP + FN), the harmonic mean of precision and sensitivity; 0 when positives exist but none
/// is found, NaN when there is neither an actual nor a predicted positive.
TESSEL_API double F1(const Labels& actual, const Labels& predicted, const WString& successClass,
                     const Vector& weights = {});

// ---- Classification: scores

/// The area under the ROC curve by the Mann-Whitney statistic: the probability that a positive row has a
/// higher score than a negative one, ties counted half, rows drawn by their weights. Scores need not be
/// probabilities. NaN when all rows are positive or none is. O(n log n) time.
TESSEL_API double AUC(const Labels& actual, const Numbers& scores, const WString& successClass,
                      const Vector& weights = {});

/// Probabilities are clipped to [epsilon, 1 - epsilon] by `logLoss`, so that one certain but wrong
/// prediction costs about 36 and not infinity: epsilon is 2^-52.
inline constexpr double kLogLossEpsilon = 2.220446049250313e-16;

/// The weighted mean of -ln p, where p is the probability that was given to the row's actual class.
/// @param posteriors  one numeric column per class, named by the class with or without the prefix
///                    "Posterior Probability: "; index columns are ignored. Probabilities are clipped,
///                    then each row is divided by its sum. A row with a missing cell is left out.
/// @throws TooFewNumColumns  without a class column.
/// @throws DuplicateName     for two columns of one class.
/// @throws NotAValidColName  for an actual class without a column.
/// @throws ValueOutOfRange   for a probability more than 1e-9 outside [0, 1].
TESSEL_API double logLoss(const Labels& actual, const DataFrame& posteriors, const Vector& weights = {});
/// The same for two classes, given the probability of the success class; all other labels count as the
/// other class.
TESSEL_API double logLoss(const Labels& actual, const Numbers& successProbabilities,
                          const WString& successClass, const Vector& weights = {});

// ---- Regression: a = actual value, p = prediction, w = weight. O(n) time. Infinite values take part
// as they are and make the results infinite or NaN.

/// sum w (a - p)^2.
TESSEL_API double SSE(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});
/// SSE / sum w.
TESSEL_API double MSE(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});
/// The square root of MSE.
TESSEL_API double RMSE(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});
/// The mean absolute deviation, sum w |a - p| / sum w.
TESSEL_API double MAD(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});
/// 1 - SSE / sum w (a - mean)^2 with the weighted mean of the actual values; negative when the predictions
/// are worse than that mean. NaN when the actual values are constant.
TESSEL_API double R2(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});
/// The mean absolute percentage error in percent: 100 sum w |a - p| / |a|, divided by sum w, over the rows
/// with a != 0; NaN when there is no such row.
TESSEL_API double MAPE(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});

}  // namespace Tessel::Metrics
