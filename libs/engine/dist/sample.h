#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "data/util/compensated_sum.h"

namespace Tessel::Engine::Dist {

/// The observations of a fit less the shift: n >= 1 finite numbers.
class Sample {
 public:
    Sample(std::span<const double> values, double shift) : values_(values), shift_(shift) {}

    std::size_t size() const { return values_.size(); }
    double operator[](std::size_t i) const { return values_[i] - shift_; }

    /// The mean of function(value).
    template <class Function>
    double meanOf(Function&& function) const {
        return Numeric::sumOf(size(), [&](std::size_t i) { return function((*this)[i]); }) /
               static_cast<double>(size());
    }
    double mean() const {
        return meanOf([](double x) { return x; });
    }
    double smallest() const { return *std::min_element(values_.begin(), values_.end()) - shift_; }
    double largest() const { return *std::max_element(values_.begin(), values_.end()) - shift_; }

    template <class Function>
    std::vector<double> transformed(Function&& function) const {
        std::vector<double> result(size());
        for (std::size_t i = 0; i < size(); ++i) result[i] = function((*this)[i]);
        return result;
    }

 private:
    std::span<const double> values_;
    double shift_;
};

}  // namespace Tessel::Engine::Dist
