#pragma once

#include <memory>
#include <vector>

#include <tessel/data/data_frame.h>

#include "data/column_cells.h"
#include "data/row_names.h"

namespace Tessel {

/// The way from the public containers to their shared cells, for code that works on whole columns.
class ColumnAccess {
 public:
    static const std::shared_ptr<ColumnCells>& cells(const DataFrameColumn& column) { return column.cells_; }
    static const std::shared_ptr<ColumnCells>& cells(const DataFrame& table, int column) {
        return table.columns_[static_cast<std::size_t>(column)].cells;
    }
    /// Puts other cells into a column, which keeps its name and stays an index column if it is one.
    /// @pre as many rows
    static void setCells(DataFrame& table, int column, std::shared_ptr<ColumnCells> cells) {
        table.columns_[static_cast<std::size_t>(column)].cells = std::move(cells);
    }
    static bool isIndex(const DataFrame& table, int column) {
        return table.columns_[static_cast<std::size_t>(column)].isIndex;
    }
    static const RowNames::Pointer& rowNames(const DataFrame& table) { return table.rowNames_; }
    static const RowNames::Pointer& rowNames(const DataFrameColumn& column) { return column.rowNames_; }

    /// A column of its own around shared cells.
    static DataFrameColumn makeColumn(WString name, std::shared_ptr<ColumnCells> cells,
                                      RowNames::Pointer rowNames = nullptr) {
        return DataFrameColumn(std::move(name), std::move(cells), std::move(rowNames));
    }
};

}  // namespace Tessel
