#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

// Sums whose error hardly grows with their length, in an order that depends on nothing but that length.

namespace Tessel {

/// The sum of term(first) ... term(last - 1) by halving: the error grows with log n, not with n
/// (Higham, Accuracy and Stability of Numerical Algorithms, 2nd ed., ch. 4).
template <class Term>
double pairwiseSum(std::size_t first, std::size_t last, const Term& term) {
    constexpr std::size_t kBlock = 128;
    if (last - first <= kBlock) {
        // Four running sums let the processor overlap the additions.
        double sums[4] = {0.0, 0.0, 0.0, 0.0};
        std::size_t i = first;
        for (; i + 4 <= last; i += 4)
            for (std::size_t lane = 0; lane < 4; ++lane) sums[lane] += term(i + lane);
        for (; i < last; ++i) sums[0] += term(i);
        return (sums[0] + sums[1]) + (sums[2] + sums[3]);
    }
    const std::size_t middle = first + (last - first) / 2;
    return pairwiseSum(first, middle, term) + pairwiseSum(middle, last, term);
}

/// A running sum that carries the rounding errors along (Neumaier, Z. angew. Math. Mech. 54 (1974) 39-51),
/// for cumulative values and for many sums side by side. Terms must be finite.
class CompensatedSum {
 public:
    void add(double term) {
        const double sum = sum_ + term;
        error_ += std::abs(sum_) >= std::abs(term) ? (sum_ - sum) + term : (term - sum) + sum_;
        sum_ = sum;
    }
    double value() const { return sum_ + error_; }

 private:
    double sum_ = 0.0;
    double error_ = 0.0;
};

/// numerator / denominator, undefined (NaN) for the denominator 0.
inline double ratio(double numerator, double denominator) {
    return denominator == 0.0 ? std::numeric_limits<double>::quiet_NaN() : numerator / denominator;
}

}  // namespace Tessel
