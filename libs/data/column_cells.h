#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <tessel/data/types.h>

#include "data/dictionary.h"
#include "data/lazy.h"

namespace Tessel {

/// Positions of rows in a column, each checked by whoever made the list.
using RowIndexes = std::vector<std::int32_t>;

/// The cells of a numeric column as dense ranks.
struct RankCodes {
    std::vector<std::uint32_t> codes;      ///< per row 0 .. numDistinct - 1; `numDistinct` when missing
    std::uint32_t numDistinct = 0;         ///< distinct values without NaN; -0 and 0 are one
    double smallest = 0.0, largest = 0.0;  ///< 0 when all cells are missing
};

/// The cells of one column: doubles (NaN = missing) or codes into a dictionary (`kMissingCode` = missing).
///
/// Cells are shared between tables and do not change while they are shared. A *root* owns its cells; a
/// *selection* is a root and a list of its rows, gathered into contiguous memory when somebody asks for
/// it. Reading is safe from several threads.
class ColumnCells {
 public:
    static std::shared_ptr<ColumnCells> ofNumbers(std::vector<double> numbers);
    /// @pre every code is `kMissingCode` or a position in `dictionary`.
    static std::shared_ptr<ColumnCells> ofCodes(std::shared_ptr<const Dictionary> dictionary,
                                                std::vector<std::int32_t> codes);
    static std::shared_ptr<ColumnCells> ofTexts(std::span<const WString> texts);

    ColumnCells(const ColumnCells&) = delete;
    ColumnCells& operator=(const ColumnCells&) = delete;

    TypeCode type() const { return type_; }
    bool isNumeric() const { return type_ == TypeCode::NUMERIC; }
    int numRows() const { return numRows_; }

    // One cell, without gathering. @pre the type fits, 0 <= row < numRows()
    double number(int row) const { return root().numbers_[rootRow(row)]; }
    std::int32_t code(int row) const { return root().codes_[rootRow(row)]; }
    bool isMissing(int row) const;
    /// The text of a cell of either type; empty when missing.
    WString text(int row) const;

    // All cells as contiguous memory. @pre the type fits
    std::span<const double> numbers() const;
    std::span<const std::int32_t> codes() const;
    const Dictionary& dictionary() const { return *root().dictionary_; }
    const std::shared_ptr<const Dictionary>& sharedDictionary() const { return root().dictionary_; }

    /// Ranks of a numeric column, computed once and kept with the cells.
    const RankCodes& rankCodes() const;
    bool hasRankCodes() const { return ranks_.isReady(); }
    /// The distinct values of a numeric column by their rank, without NaN; computed once and kept.
    const std::vector<double>& distinctNumbers() const;
    /// Codes that occur in a text column, in order of first appearance in its rows; computed once.
    const std::vector<std::int32_t>& presentCodes() const;

    /// The cells that this column shows: itself, or for a selection the column it was cut from.
    const ColumnCells& root() const { return root_ ? *root_ : *this; }
    /// The rows of the root that a selection shows; null for a root.
    const std::shared_ptr<const RowIndexes>& selection() const { return selection_; }

    /// Writes a cell. Cells that others share, or that are a selection, are first replaced by a copy.
    static void assign(std::shared_ptr<ColumnCells>& cells, int row, double number);
    static void assign(std::shared_ptr<ColumnCells>& cells, int row, const WString& text);

 private:
    friend class RowSelector;
    ColumnCells(TypeCode type, std::size_t numRows);
    std::size_t rootRow(int row) const {
        const auto position = static_cast<std::size_t>(row);
        return selection_ ? static_cast<std::size_t>((*selection_)[position]) : position;
    }
    static void detach(std::shared_ptr<ColumnCells>& cells);
    std::int32_t addLevel(const WString& text);

    TypeCode type_;
    int numRows_;
    std::vector<double> numbers_;
    std::vector<std::int32_t> codes_;
    std::shared_ptr<const Dictionary> dictionary_;
    std::shared_ptr<Dictionary> grownDictionary_;  // the same, once a written cell made a copy that can grow
    std::shared_ptr<const ColumnCells> root_;
    std::shared_ptr<const RowIndexes> selection_;
    Lazy<std::vector<double>> gatheredNumbers_;
    Lazy<std::vector<std::int32_t>> gatheredCodes_;
    Lazy<RankCodes> ranks_;
    Lazy<std::vector<double>> distinctNumbers_;
    Lazy<std::vector<std::int32_t>> presentCodes_;
};

/// Takes one list of rows out of many columns; columns that were cut alike share the composed list.
class RowSelector {
 public:
    explicit RowSelector(std::shared_ptr<const RowIndexes> rows) : rows_(std::move(rows)) {}
    /// @pre every row is a row of `cells`
    std::shared_ptr<ColumnCells> select(const std::shared_ptr<ColumnCells>& cells);

 private:
    std::shared_ptr<const RowIndexes> rows_;
    std::shared_ptr<const RowIndexes> lastOuter_;     // the selection met last ...
    std::shared_ptr<const RowIndexes> lastComposed_;  // ... and what it became
};

}  // namespace Tessel
