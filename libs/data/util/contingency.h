#pragma once

#include <cstdint>
#include <vector>

#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>

namespace Tessel::Numeric {

/// The rows of a column as numbers of categories 0 .. numCategories - 1, or -1 when missing.
struct Categories {
    std::vector<std::int32_t> codes;
    std::size_t numCategories = 0;
};

/// Categories are the texts of a text column and the distinct values of a numeric one.
Categories categoriesOf(const DataFrameColumn& column);

/// How often each category occurs.
std::vector<double> countsOf(const Categories& categories);

/// A two-way table of counts that stores the cells that matter only, so that two columns of a million
/// distinct texts each need a million cells and not their product.
class ContingencyTable {
 public:
    /// The joint counts of two columns over the rows where neither is missing. @throws NumElementsMismatch
    ContingencyTable(const DataFrameColumn& x, const DataFrameColumn& y);
    /// @throws ConstraintViolation for a count that is negative, missing or infinite.
    explicit ContingencyTable(const Matrix& counts);

    double total() const { return total_; }
    /// (rows - 1) (columns - 1) of those rows and columns that have a count.
    double degreesOfFreedom() const;

    /// sum(expected * excess((observed - expected) / expected)) over all cells of rows and columns that have
    /// a count, with expected = row total * column total / total: the distance from independence. It is
    /// chi-squared for excess(d) = d^2, and total * mutual information for (1 + d) log(1 + d) - d, where
    /// every term is at least 0 and nothing cancels.
    /// @pre excess(-1) == 1: cells that are not stored are 0 and count as a whole.
    double divergence(double (*excess)(double)) const;

 private:
    struct Cell {
        std::size_t row;
        std::size_t column;
        double count;
    };

    void addCell(std::size_t row, std::size_t column, double count);

    std::vector<Cell> cells_;  // row by row; all cells of a matrix, those above 0 of two columns
    std::vector<double> rowTotals_;
    std::vector<double> columnTotals_;
    double total_ = 0.0;
};

}  // namespace Tessel::Numeric
