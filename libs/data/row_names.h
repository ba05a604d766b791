#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include <tessel/data/types.h>
#include <tessel/data/vectors.h>

#include "data/column_cells.h"
#include "data/lazy.h"

namespace Tessel {

/// The names of a table's rows, immutable and shared. Default names ("Record 1", "Record 2", ...) are
/// never stored: a null pointer stands for them, and a selection of rows remembers the rows' numbers, so
/// that a row keeps its name wherever it goes.
class RowNames {
 public:
    using Pointer = std::shared_ptr<const RowNames>;

    static Pointer of(std::vector<WString> names);
    /// The names of the listed rows, in that order. @pre every row exists
    static Pointer select(const Pointer& names, const std::shared_ptr<const RowIndexes>& rows);

    /// The names of one table's rows and then those of another's.
    static Pointer concatenate(const Pointer& first, int numFirst, const Pointer& second, int numSecond);
    /// Renames one row; names that others share are first replaced by a copy. @pre the row exists
    static void assign(Pointer& names, int numRows, int row, const WString& name);

    static WString at(const Pointer& names, int row);
    static StringVector all(const Pointer& names, int numRows);
    /// The row of that name, or -1. @throws DuplicateName when several rows bear it.
    static int find(const Pointer& names, int numRows, const WString& name);

 private:
    using RowOfName = std::unordered_map<WString, int>;

    std::shared_ptr<std::vector<WString>> texts_;  // null: default names
    std::shared_ptr<const RowIndexes> rows_;       // null: all rows in order
    Lazy<RowOfName> index_;
};

}  // namespace Tessel
