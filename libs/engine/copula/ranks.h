#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "engine/copula/dependence.h"

namespace Tessel::Engine::Copula {

/// The ranks of the complete observations. Functions of a rank are tables over `twiceRanks`, computed once
/// for all variables, and `codes` are positions in it.
struct Ranks {
    std::size_t numRows = 0;
    std::vector<std::uint32_t> twiceRanks;  ///< Twice the average ranks that occur, ascending: 2 .. 2 n.
    std::vector<std::vector<std::uint32_t>> codes;  ///< One row per variable.

    std::size_t numVars() const { return codes.size(); }
    /// rank / (n + 1) of a code.
    double pseudoObservation(std::size_t code) const {
        return 0.5 * twiceRanks[code] / (static_cast<double>(numRows) + 1.0);
    }
};

/// The common length of the rows; nothing when they differ, are longer than 2^31 - 1, or there are none.
template <class Row>
std::optional<std::size_t> commonLength(std::span<const Row> rows) {
    if (rows.empty() || rows.front().size() > std::numeric_limits<std::int32_t>::max()) return {};
    for (const Row& row : rows)
        if (row.size() != rows.front().size()) return {};
    return rows.front().size();
}

/// Whether a number of the rows is NaN.
template <class Row>
bool hasNaN(std::span<const Row> rows) {
    return std::any_of(rows.begin(), rows.end(), [](const Row& row) {
        return std::any_of(row.begin(), row.end(), [](double x) { return std::isnan(x); });
    });
}

/// Nothing for no variable, rows of different lengths, fewer than two or more than 2^31 - 1 complete
/// observations, or a variable that is constant in them.
std::optional<Ranks> rankRows(DataMatrix data);

/// The positions of a row's numbers in ascending order. @pre fewer than 2^31 numbers
std::vector<std::uint32_t> ascendingOrder(std::span<const double> row);

/// Kendall's tau-b of all pairs of variables, row-major, in O(n log n) each (W. Knight, Journal of the
/// American Statistical Association 61 (1966) 436-439).
std::vector<double> kendallMatrix(const Ranks& ranks);

}  // namespace Tessel::Engine::Copula
