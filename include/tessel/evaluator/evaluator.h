#pragma once

#include <tessel/evaluator/metrics.h>

/// Tables that show where and how predictions go wrong. What `Metrics` says about labels, weights, missing
/// values, undefined ratios and errors holds here too. Counts of rows are sums of weights where weights
/// are given. Column names stated here are fixed.
namespace Tessel::Evaluator {

using Metrics::Labels;
using Metrics::Numbers;

/// How often each class was predicted as which: "Confusion Matrix", one row per actual and one column per
/// predicted class, both named by the classes; the cells add up to the number of rows (sum of weights).
/// @param classes  the classes to show, in this order. Empty: all that occur in either input, ascending,
///                 as numbers when all of them are numbers, else as texts by Unicode code points.
/// @throws NotASetMember  for a label that `classes` lacks.
/// @throws DuplicateName, ConstraintViolation  when `classes` holds a class twice or an empty text.
TESSEL_API DataFrame confusion(const Labels& actual, const Labels& predicted,
                               const StringVector& classes = {}, const Vector& weights = {});

/// Per row 1 when the prediction is not the actual class, else 0. No row is left out: a missing prediction
/// is a misclassification, and a row without an actual class has nothing to miss and gets 0. Empty input
/// gives an empty vector. @throws NumRowsMismatch
TESSEL_API IntVector misclassifications(const Labels& actual, const Labels& predicted);

/// "Classification Summary": one row per class in the order of `confusion`, and a last row "Overall".
/// Columns: "# Cases" (rows of that actual class), "# Predicted" (rows predicted to be of it), "# Errors"
/// (its cases that were predicted otherwise), "% Error", and with that class as success class "Precision",
/// "Sensitivity", "Specificity", "F1 score". The last row holds the totals and the plain means of the
/// classes' ratios (macro averages; NaN when one of them is undefined).
TESSEL_API DataFrame classificationSummary(const Labels& actual, const Labels& predicted,
                                           const Vector& weights = {});

/// "Metrics", one row "Value", for one success class. Columns: "Accuracy (#correct)",
/// "Accuracy (%correct)", "Accuracy", "Specificity", "Sensitivity", "Precision", "F1 score".
TESSEL_API DataFrame classificationMetrics(const Labels& actual, const Labels& predicted,
                                           const WString& successClass, const Vector& weights = {});

/// "ROC Curve": one row per distinct score, descending, that predicts the success class for all scores >=
/// "Threshold"; before them a row with the threshold Infinity, where nothing is predicted positive. Columns:
/// "Threshold", "True Positives", "False Positives", "False Negatives", "True Negatives",
/// "True Positive Rate", "False Positive Rate", "Precision", "F1 score", "Accuracy", "Predicted Positive
/// Rate" (the share of the rows that reach the threshold, of which the true positive rate is the gain) and
/// "Lift" (the ratio of these two rates; NaN where nothing is predicted positive). The trapezoids under
/// (false positive rate, true positive rate) add up to `Metrics::AUC`.
TESSEL_API DataFrame rocCurve(const Labels& actual, const Numbers& scores, const WString& successClass,
                              const Vector& weights = {});

/// "Gains": ten rows "Decile 1" (highest scores) to "Decile 10". Columns: "# Cases", "Response",
/// "Mean Response", "Lift" (mean response divided by that of all rows), "Cumulative Cases",
/// "Cumulative Response", "Cumulative Mean Response", "Cumulative Lift", "Cumulative Gain (%)" (share of
/// the total response). The response of a row is 1 for the success class, else 0.
///
/// Every decile is exactly a tenth of the rows (of the sum of weights), whatever n is: rows that lie across
/// a border are split, and rows of equal score share their mean response. So the table does not depend on
/// the order of the rows, and cumulative values are points on the linearly interpolated gain curve.
TESSEL_API DataFrame gains(const Labels& actual, const Numbers& scores, const WString& successClass,
                           const Vector& weights = {});
/// The same for a numeric target: rows are ranked by the prediction and respond with the actual value.
TESSEL_API DataFrame gains(const Numbers& actual, const Numbers& predicted, const Vector& weights = {});

/// "Metrics", one row "Value". Columns: "SSE", "MSE", "RMSE", "MAD", "R2", "MAPE".
TESSEL_API DataFrame regressionMetrics(const Numbers& actual, const Numbers& predicted,
                                       const Vector& weights = {});

/// "Residuals": columns "Actual", "Predicted", "Residual" (actual - predicted) and, when asked for,
/// "Standardized Residual" (residual / RMSE; NaN when RMSE is 0). All rows stay, with the row names of
/// `actual`; a row with a missing value has a missing residual. Empty input gives a table without rows.
/// @throws NumRowsMismatch, NonNumericData
TESSEL_API DataFrame regressionResiduals(const DataFrameColumn& actual, const DataFrameColumn& predicted,
                                         bool standardized = false);

}  // namespace Tessel::Evaluator
