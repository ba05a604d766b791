#include "data/util/contingency.h"

#include <algorithm>
#include <cmath>

#include <tessel/data/errors.h>

#include "data/column_access.h"
#include "data/util/compensated_sum.h"
#include "data/util/sample.h"

namespace Tessel::Numeric {

Categories categoriesOf(const DataFrameColumn& column) {
    const ColumnCells& cells = *ColumnAccess::cells(column);
    if (!cells.isNumeric()) {
        const std::span<const std::int32_t> codes = cells.codes();
        return {{codes.begin(), codes.end()}, cells.dictionary().levels().size()};
    }
    const RankCodes& ranks = cells.rankCodes();
    Categories categories{std::vector<std::int32_t>(ranks.codes.size()), ranks.numDistinct};
    std::transform(ranks.codes.begin(), ranks.codes.end(), categories.codes.begin(), [&](std::uint32_t code) {
        return code == ranks.numDistinct ? kMissingCode : static_cast<std::int32_t>(code);
    });
    return categories;
}

std::vector<double> countsOf(const Categories& categories) {
    std::vector<double> counts(categories.numCategories, 0.0);
    for (const std::int32_t code : categories.codes)
        if (code != kMissingCode) counts[static_cast<std::size_t>(code)] += 1.0;
    return counts;
}

ContingencyTable::ContingencyTable(const DataFrameColumn& x, const DataFrameColumn& y) {
    if (x.getNumRows() != y.getNumRows()) throw NumElementsMismatch(x.getNumRows(), y.getNumRows());
    const Categories rows = categoriesOf(x);
    const Categories columns = categoriesOf(y);
    rowTotals_.resize(rows.numCategories, 0.0);
    columnTotals_.resize(columns.numCategories, 0.0);

    std::vector<std::pair<std::int32_t, std::int32_t>> pairs;
    pairs.reserve(rows.codes.size());
    for (std::size_t i = 0; i < rows.codes.size(); ++i)
        if (rows.codes[i] != kMissingCode && columns.codes[i] != kMissingCode)
            pairs.emplace_back(rows.codes[i], columns.codes[i]);
    std::sort(pairs.begin(), pairs.end());
    for (auto run = pairs.begin(); run != pairs.end();) {
        const auto end = std::find_if(run, pairs.end(), [&](const auto& pair) { return pair != *run; });
        addCell(static_cast<std::size_t>(run->first), static_cast<std::size_t>(run->second),
                static_cast<double>(end - run));
        run = end;
    }
}

ContingencyTable::ContingencyTable(const Matrix& counts)
    : rowTotals_(static_cast<std::size_t>(counts.getNumRows()), 0.0),
      columnTotals_(static_cast<std::size_t>(counts.getNumCols()), 0.0) {
    for (int row = 0; row < counts.getNumRows(); ++row) {
        for (int column = 0; column < counts.getNumCols(); ++column) {
            const double count = counts(row, column);
            if (!(count >= 0.0) || std::isinf(count))
                throw ConstraintViolation("Counts", "The values must be finite and not negative.");
            addCell(static_cast<std::size_t>(row), static_cast<std::size_t>(column), count);
        }
    }
}

void ContingencyTable::addCell(std::size_t row, std::size_t column, double count) {
    cells_.push_back({row, column, count});
    rowTotals_[row] += count;
    columnTotals_[column] += count;
    total_ += count;
}

double ContingencyTable::degreesOfFreedom() const {
    const auto positive = [](const std::vector<double>& totals) {
        return std::count_if(totals.begin(), totals.end(), [](double value) { return value > 0.0; });
    };
    const auto numRows = static_cast<double>(positive(rowTotals_));
    const auto numColumns = static_cast<double>(positive(columnTotals_));
    return std::max(0.0, numRows - 1.0) * std::max(0.0, numColumns - 1.0);
}

double ContingencyTable::divergence(double (*excess)(double)) const {
    if (total_ == 0.0) return kNaN;
    CompensatedSum sum;
    for (std::size_t next = 0; next < cells_.size();) {
        const std::size_t row = cells_[next].row;
        const std::size_t first = next;
        double unseen = total_;  // of the columns whose cells are not stored in this row
        for (; next < cells_.size() && cells_[next].row == row; ++next) {
            const auto& [cellRow, column, count] = cells_[next];
            const double product = rowTotals_[row] * columnTotals_[column];
            unseen -= columnTotals_[column];
            // Whole numbers up to 2^53 here, so that the difference is exact.
            if (product > 0.0) sum.add(product / total_ * excess((count * total_ - product) / product));
        }
        // With all columns stored nothing is left, though fractions may leave a rounding error.
        if (next - first < columnTotals_.size()) sum.add(rowTotals_[row] * unseen / total_);
    }
    return sum.value();
}

}  // namespace Tessel::Numeric
