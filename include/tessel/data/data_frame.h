#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <vector>

#include <tessel/data/interfaces.h>
#include <tessel/data/types.h>
#include <tessel/data/vectors.h>

namespace Tessel {

class ColumnCells;  // private: the shared cells of a column
class RowNames;     // private: the shared names of rows

/// Selects every column or every row but the listed ones; made by `Util::except`.
class Except {
 public:
    explicit Except(StringVector names) : names_(std::move(names)), byName_(true) {}
    explicit Except(IntVector positions) : positions_(std::move(positions)), byName_(false) {}

    bool byName() const { return byName_; }
    const StringVector& names() const { return names_; }
    const IntVector& positions() const { return positions_; }

 private:
    StringVector names_;
    IntVector positions_;
    bool byName_;
};

namespace Util {

/// Selects every row or every column.
struct All {};
inline constexpr All all{};

inline Except except(StringVector names) { return Except(std::move(names)); }
inline Except except(IntVector positions) { return Except(std::move(positions)); }

}  // namespace Util

/// One cell of a table or column, for reading and, where the table is not constant, writing. It points
/// into its table or column: like an iterator it is valid until that object is destroyed or changes its
/// shape. Made for people and small tables; loops over many cells use `DataFrameColumn::values`.
class TESSEL_API DataFrameElement {
 public:
    /// True for NaN and for the empty text.
    bool isMissing() const;
    /// The number; a text is parsed, a missing cell gives NaN. @throws ConversionFailure
    double toDouble() const;
    /// The number as an integer. @throws ConversionFailure also for missing cells and fractions.
    int toInt() const;
    /// The text; a number in shortest round-trip form, a missing cell gives the empty text.
    WString toString() const;

    /// Stores a number; a text column stores its shortest text, NaN as a missing cell. The first write
    /// to a column that shares its cells with other tables copies that one column, later ones do not.
    /// @throws Exception when the table is constant.
    DataFrameElement& operator=(double value);
    /// Stores a text. @throws ConversionFailure in a numeric column when the text is not a number.
    DataFrameElement& operator=(const WString& text);
    /// Stores the value of another cell, as a number or as a text like that cell's column.
    DataFrameElement& operator=(const DataFrameElement& cell);
    /// A copy points to the same cell.
    DataFrameElement(const DataFrameElement&) = default;

 private:
    friend class DataFrame;
    friend class DataFrameColumn;
    DataFrameElement(std::shared_ptr<ColumnCells>* cells, int row, bool writable)
        : cells_(cells), row_(row), writable_(writable) {}
    std::shared_ptr<ColumnCells>& writableCells() const;

    std::shared_ptr<ColumnCells>* cells_;
    int row_;
    bool writable_;
};

/// One named column of cells with its row names. Copies share the cells; writing a cell copies them once.
/// Moving copies, too, so that there is never a column without cells.
class TESSEL_API DataFrameColumn {
 public:
    DataFrameColumn();
    DataFrameColumn(const DataFrameColumn&);
    DataFrameColumn& operator=(const DataFrameColumn&);
    ~DataFrameColumn();
    /// Columns made from a vector: `values` is moved, not copied, when the caller moves it in.
    DataFrameColumn(WString name, Vector values);
    DataFrameColumn(WString name, const IntVector& values);
    DataFrameColumn(WString name, const StringVector& texts);

    const WString& getColName() const { return name_; }
    void setColName(WString name) { name_ = std::move(name); }
    /// The same as the column name.
    const WString& getName() const { return name_; }

    int getNumRows() const;
    bool empty() const { return getNumRows() == 0; }
    TypeCode getTypeCode() const;
    /// "numeric" or "text".
    WString getTypeName() const;
    bool isNumeric() const { return getTypeCode() == TypeCode::NUMERIC; }

    /// The row's name; default names are "Record 1", "Record 2", ... @throws IndexOutOfRange
    WString getRowName(int row) const;
    StringVector getRowNames() const;
    /// @throws NumElementsMismatch
    void setRowNames(const StringVector& names);

    /// @throws IndexOutOfRange
    DataFrameElement operator()(int row);
    const DataFrameElement operator()(int row) const;
    DataFrameElement operator[](int row) { return (*this)(row); }
    const DataFrameElement operator[](int row) const { return (*this)(row); }

    /// The listed rows in the given order, repetitions allowed, sharing the cells. @throws IndexOutOfRange
    DataFrameColumn select(const IntVector& rows) const;

    /// The cells as numbers; texts are parsed, missing cells become NaN. @throws ConversionFailure
    Vector toDoubleVector() const;
    /// @throws ConversionFailure for missing cells and numbers that are no `int`.
    IntVector toIntVector() const;
    /// The cells as texts; numbers in shortest round-trip form, missing cells as the empty text.
    StringVector toStringVector() const;

    /// The cells of a numeric column as contiguous memory, valid while this column or any copy of it
    /// lives unchanged. @throws NonNumericData
    std::span<const double> values() const;

 private:
    friend class DataFrame;
    friend class ColumnAccess;
    DataFrameColumn(WString name, std::shared_ptr<ColumnCells> cells,
                    std::shared_ptr<const RowNames> rowNames);

    WString name_;
    std::shared_ptr<ColumnCells> cells_;
    std::shared_ptr<const RowNames> rowNames_;
};

/// A named table of numeric and text columns with named rows.
///
/// Cells are shared: copying a table and taking columns out of it copy pointers (cost in the number of
/// columns), taking rows stores one shared list of positions, and assigning a cell copies the one column
/// it touches. Rows and columns count from 0. A column name may occur more than once; asking for such a
/// name throws `DuplicateName`, positions always work. Reading one table from several threads is safe.
class TESSEL_API DataFrame : public JSON::StringExportable, public JSON::StringImportable {
 public:
    DataFrame();
    /// An empty table with a name.
    explicit DataFrame(WString name);
    /// Numeric columns named "Var1", "Var2", ...
    explicit DataFrame(const Matrix& matrix);
    DataFrame(const DataFrame&);
    DataFrame(DataFrame&&) noexcept;
    DataFrame& operator=(const DataFrame&);
    DataFrame& operator=(DataFrame&&) noexcept;
    ~DataFrame() override;

    /// Removes all columns, rows and row names; the table's name stays.
    void clear();
    /// True without columns or without rows.
    bool empty() const { return getNumRows() == 0 || getNumCols() == 0; }
    int getNumRows() const;
    int getNumCols() const { return static_cast<int>(columns_.size()); }

    const WString& getName() const { return name_; }
    void setName(WString name) { name_ = std::move(name); }

    // Column names. @throws ColumnIndexOutOfRange, NonExistingNamedIndex, DuplicateName
    const WString& getColName(int column) const;
    StringVector getColNames() const;
    StringVector getColNames(const IntVector& columns) const;
    void setColName(int column, WString name);
    void setColName(const WString& oldName, WString newName);
    /// @throws NumElementsMismatch
    void setColNames(const StringVector& names);
    int getColIndex(const WString& name) const;
    IntVector getColIndexes(const StringVector& names) const;
    bool isColumn(const WString& name) const;

    // Row names; "Record 1", "Record 2", ... until set. @throws IndexOutOfRange, NonExistingNamedIndex
    WString getRowName(int row) const;
    StringVector getRowNames() const;
    StringVector getRowNames(const IntVector& rows) const;
    void setRowName(int row, const WString& name);
    /// @throws NumElementsMismatch
    void setRowNames(const StringVector& names);
    int getRowIndex(const WString& name) const;

    // Types
    TypeCode getTypeCode(int column) const;
    TypeCode getTypeCode(const WString& column) const;
    /// "numeric" or "text".
    WString getTypeName(int column) const;
    bool isNumeric(int column) const;
    bool isNumeric(const WString& column) const;

    // Index columns carry row identifiers and are no features.
    /// Replaces the set of index columns. @throws NonExistingNamedIndex
    void setIndexedColNames(const StringVector& names);
    StringVector getIndexedColNames() const;
    IntVector getIndexedColIndices() const;
    bool isIndexColumn(const WString& name) const;

    // Selection
    DataFrameColumn operator()(Util::All, const WString& column) const;
    DataFrameColumn operator()(Util::All, int column) const;
    DataFrame operator()(Util::All, const StringVector& columns) const;
    DataFrame operator()(Util::All, const IntVector& columns) const;
    DataFrame operator()(Util::All, const Except& columns) const;
    /// Rows in the given order, repetitions allowed.
    DataFrame operator()(const IntVector& rows, Util::All) const;
    DataFrame operator()(const StringVector& rows, Util::All) const;
    DataFrame operator()(const Except& rows, Util::All) const;
    // Lists between braces, which could otherwise be the characters of one name.
    DataFrame operator()(Util::All all, std::initializer_list<const wchar_t*> columns) const {
        return (*this)(all, StringVector(columns.begin(), columns.end()));
    }
    DataFrame operator()(Util::All all, std::initializer_list<int> columns) const {
        return (*this)(all, IntVector(columns));
    }
    DataFrame operator()(std::initializer_list<int> rows, Util::All all) const {
        return (*this)(IntVector(rows), all);
    }
    DataFrameElement operator()(int row, int column);
    const DataFrameElement operator()(int row, int column) const;
    DataFrameElement operator()(int row, const WString& column);
    const DataFrameElement operator()(int row, const WString& column) const;
    DataFrameElement operator()(const WString& row, int column);
    const DataFrameElement operator()(const WString& row, int column) const;
    DataFrameElement operator()(const WString& row, const WString& column);
    const DataFrameElement operator()(const WString& row, const WString& column) const;

    // Growth. A table without columns takes the row names of what it is given; a vector without a name
    // becomes "Var<position>", counted from 1. @throws NumRowsMismatch; the table is then unchanged.
    void append(const DataFrame& columns);
    void append(const DataFrameColumn& column);
    void append(const Vector& values);
    void append(const IntVector& values);
    void append(const StringVector& texts);
    /// Puts the columns of `columns` before the column at `position`. @throws ColumnIndexOutOfRange
    void insert(int position, const DataFrame& columns);

    /// All columns as one matrix, column-major. @throws NonNumericData
    Matrix toMatrix() const;
    /// The table with aligned columns for people: its name, the column names, and in each row its name and
    /// cells, numbers with at most 6 significant digits. Rows beyond `maxRows` are counted, not shown.
    /// @throws ValueOutOfRange when `maxRows` is negative.
    WString toString(int maxRows = 60) const;
    /// An object with the members "name", "rowNames" (absent for default names), "indexColumns"
    /// (their positions) and "columns", each column an object of "name", "type" (see `getTypeName`) and
    /// "values": numbers as `Vector::toJson` writes them, or strings with null for missing cells.
    WString toJson() const override;
    /// Reads what `toJson` writes; other members are ignored. @throws MalformedJSON; the table is then
    /// unchanged.
    void fromJsonString(const WString& json) override;

 private:
    friend class ColumnAccess;
    struct Column {
        WString name;
        std::shared_ptr<ColumnCells> cells;
        bool isIndex = false;
    };
    int checkedColumn(int column) const;
    int checkedRow(int row) const;
    DataFrame withRows(std::shared_ptr<const std::vector<std::int32_t>> rows) const;
    void insertColumns(int position, std::vector<Column> columns,
                       const std::shared_ptr<const RowNames>& rowNames);

    WString name_;
    std::vector<Column> columns_;
    std::shared_ptr<const RowNames> rowNames_;
};

}  // namespace Tessel
