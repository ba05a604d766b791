#include "evaluator/row_weights.h"

#include <algorithm>
#include <cmath>

namespace Tessel {

void requireSameNumRows(std::size_t expected, std::size_t actual) {
    if (expected != actual)
        throw NumRowsMismatch(static_cast<std::int32_t>(expected), static_cast<std::int32_t>(actual));
}

RowWeights::RowWeights(const Vector& weights, std::size_t numRows)
    : weights_(weights.empty() ? nullptr : weights.data()) {
    if (weights.empty()) return;
    if (weights.size() != numRows)
        throw NumElementsMismatch(static_cast<std::int64_t>(numRows),
                                  static_cast<std::int64_t>(weights.size()));
    const auto isWeight = [](double weight) { return std::isfinite(weight) && weight >= 0.0; };
    if (!std::all_of(weights.begin(), weights.end(), isWeight))
        throw ConstraintViolation("Weights", "Each weight must be finite and not negative.");
    if (std::all_of(weights.begin(), weights.end(), [](double weight) { return weight == 0.0; }))
        throw ConstraintViolation("Weights", "The sum must be positive.");
}

}  // namespace Tessel
