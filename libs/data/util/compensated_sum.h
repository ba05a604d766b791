#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Tessel::Numeric {

/// A running sum that carries the rounding error of every addition along (Knuth's two-sum): n values are
/// added with about twice the precision of double.
class CompensatedSum {
 public:
    void add(double value) {
        const double next = sum_ + value;
        const double taken = next - sum_;
        error_ += (sum_ - (next - taken)) + (value - taken);
        sum_ = next;
    }
    void add(const CompensatedSum& other) {
        add(other.sum_);
        error_ += other.error_;
    }
    /// Once a sum is infinite its error is NaN, the plain sum is then the answer.
    double value() const { return std::isfinite(sum_) ? sum_ + error_ : sum_; }
    /// What the finite value lacks of the sum: value() + remainder() has the full precision.
    double remainder() const { return error_ - (value() - sum_); }

 private:
    double sum_ = 0.0;
    double error_ = 0.0;
};

/// The sum of term(0) .. term(count - 1). The order is fixed: four interleaved sums, which processors add
/// side by side, then the four together.
template <class Term>
CompensatedSum compensatedSumOf(std::size_t count, Term&& term) {
    std::array<CompensatedSum, 4> lanes;
    std::size_t i = 0;
    for (; i + lanes.size() <= count; i += lanes.size())
        for (std::size_t lane = 0; lane < lanes.size(); ++lane) lanes[lane].add(term(i + lane));
    for (; i < count; ++i) lanes[0].add(term(i));
    for (std::size_t lane = 1; lane < lanes.size(); ++lane) lanes[0].add(lanes[lane]);
    return lanes[0];
}

/// The same sum rounded to double.
template <class Term>
double sumOf(std::size_t count, Term&& term) {
    return compensatedSumOf(count, std::forward<Term>(term)).value();
}

}  // namespace Tessel::Numeric
