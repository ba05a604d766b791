#include <cmath>

#include <tessel/evaluator/metrics.h>

#include "evaluator/row_weights.h"

namespace Tessel::Metrics {
namespace {

/// The rows that count, for sums over them.
class Pairs {
 public:
    Pairs(const Numbers& actual, const Numbers& predicted, const Vector& weights)
        : actual_(actual.values()), predicted_(predicted.values()), weights_(weights, actual_.size()) {
        requireSameNumRows(actual_.size(), predicted_.size());
        totalWeight_ = sum([](double, double) { return 1.0; });
        if (totalWeight_ == 0.0) throw TooFewNumRows();
    }

    double totalWeight() const { return totalWeight_; }

    /// The sum of weight * term(actual, predicted).
    template <class Term>
    double sum(const Term& term) const {
        return pairwiseSum(0, actual_.size(), [&](std::size_t row) {
            return counts(row) ? weights_[row] * term(actual_[row], predicted_[row]) : 0.0;
        });
    }

    /// The mean of the actual values.
    double mean() const {
        std::size_t first = 0;
        while (!counts(first)) ++first;
        // Taken from one of the values, so that the mean of equal values is exactly that value.
        const double origin = actual_[first];
        return origin + sum([origin](double actual, double) { return actual - origin; }) / totalWeight_;
    }

    double SSE() const {
        return sum(
            [](double actual, double predicted) { return (actual - predicted) * (actual - predicted); });
    }
    double MSE() const { return SSE() / totalWeight_; }

 private:
    bool counts(std::size_t row) const {
        return weights_[row] > 0.0 && !std::isnan(actual_[row]) && !std::isnan(predicted_[row]);
    }

    std::span<const double> actual_;
    std::span<const double> predicted_;
    RowWeights weights_;
    double totalWeight_ = 0.0;
};

}  // namespace

double SSE(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    return Pairs(actual, predicted, weights).SSE();
}

double MSE(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    return Pairs(actual, predicted, weights).MSE();
}

double RMSE(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    return std::sqrt(Pairs(actual, predicted, weights).MSE());
}

double MAD(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    const Pairs pairs(actual, predicted, weights);
    return pairs.sum([](double a, double p) { return std::abs(a - p); }) / pairs.totalWeight();
}

double R2(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    const Pairs pairs(actual, predicted, weights);
    const double mean = pairs.mean();
    const double total = pairs.sum([mean](double a, double) { return (a - mean) * (a - mean); });
    return 1.0 - ratio(pairs.SSE(), total);
}

double MAPE(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    const Pairs pairs(actual, predicted, weights);
    const double total = pairs.sum([](double a, double) { return a == 0.0 ? 0.0 : 1.0; });
    const double errors =
        pairs.sum([](double a, double p) { return a == 0.0 ? 0.0 : std::abs((a - p) / a); });
    return 100.0 * ratio(errors, total);
}

}  // namespace Tessel::Metrics
