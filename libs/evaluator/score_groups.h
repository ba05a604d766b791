#pragma once

#include <span>
#include <vector>

#include <tessel/evaluator/metrics.h>

#include "evaluator/row_weights.h"

namespace Tessel {

/// The rows of one score.
struct ScoreGroup {
    double score;
    double weight;    ///< sum of the rows' weights, positive
    double response;  ///< sum of weight times response
};

/// The rows by descending score. Rows with a missing score or response or without weight are left out.
/// O(n) time for the sorting by digits. @throws NumRowsMismatch, TooFewNumRows
std::vector<ScoreGroup> groupByScore(std::span<const double> scores, std::span<const double> responses,
                                     const Vector& weights);

/// The same with response 1 for rows of the success class, 0 for other rows.
/// @throws UnspecifiedStringParameter
std::vector<ScoreGroup> groupByScore(const Metrics::Labels& actual, const Metrics::Numbers& scores,
                                     const WString& successClass, const Vector& weights);

}  // namespace Tessel
