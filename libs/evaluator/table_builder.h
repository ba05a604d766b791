#pragma once

#include <initializer_list>
#include <utility>
#include <vector>

#include <tessel/data/data_frame.h>

namespace Tessel {

/// Collects a table of numbers row by row; the columns are fixed at the start.
class TableBuilder {
 public:
    TableBuilder(const WString& title, std::vector<WString> columnNames)
        : table_(title), names_(std::move(columnNames)), columns_(names_.size()) {}

    /// @pre one value per column
    void addRow(std::initializer_list<double> values) {
        auto column = columns_.begin();
        for (const double value : values) (column++)->push_back(value);
    }
    DataFrame finish() {
        for (std::size_t i = 0; i < names_.size(); ++i)
            table_.append(DataFrameColumn(std::move(names_[i]), std::move(columns_[i])));
        return std::move(table_);
    }
    DataFrame finish(const StringVector& rowNames) {
        DataFrame table = finish();
        table.setRowNames(rowNames);
        return table;
    }

 private:
    DataFrame table_;
    std::vector<WString> names_;
    std::vector<Vector> columns_;
};

}  // namespace Tessel
