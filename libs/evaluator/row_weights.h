#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <tessel/data/vectors.h>

#include "evaluator/sums.h"

namespace Tessel {

/// @throws NumRowsMismatch
void requireSameNumRows(std::size_t expected, std::size_t actual);

/// The checked weights of rows. It refers to the vector it was made from.
class RowWeights {
 public:
    /// @throws NumElementsMismatch, ConstraintViolation
    RowWeights(const Vector& weights, std::size_t numRows);

    bool areOne() const { return weights_ == nullptr; }
    double operator[](std::size_t row) const { return weights_ ? weights_[row] : 1.0; }

 private:
    const double* weights_;  // null: all weights are 1
};

/// The weight of the rows in each of `numCells` cells; `cellOf(row)` tells a row's cell, negative when
/// it is left out. @throws TooFewNumRows when all rows are.
template <class CellOf>
std::vector<double> tally(std::size_t numCells, std::size_t numRows, const RowWeights& weights,
                          const CellOf& cellOf) {
    // Without weights plain counting is exact and several times faster.
    const auto collect = [&](auto cells, auto add, auto valueOf) {
        for (std::size_t row = 0; row < numRows; ++row) {
            const std::int64_t cell = cellOf(row);
            if (cell >= 0) add(cells[static_cast<std::size_t>(cell)], row);
        }
        std::vector<double> values(numCells);
        bool any = false;
        for (std::size_t cell = 0; cell < numCells; ++cell) {
            values[cell] = valueOf(cells[cell]);
            any = any || values[cell] > 0.0;
        }
        if (!any) throw TooFewNumRows();
        return values;
    };
    if (weights.areOne())
        return collect(
            std::vector<std::int64_t>(numCells), [](std::int64_t& count, std::size_t) { ++count; },
            [](std::int64_t count) { return static_cast<double>(count); });
    return collect(
        std::vector<CompensatedSum>(numCells),
        [&](CompensatedSum& sum, std::size_t row) { sum.add(weights[row]); },
        [](const CompensatedSum& sum) { return sum.value(); });
}

}  // namespace Tessel
