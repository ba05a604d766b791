#include <algorithm>
#include <numeric>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>

#include "data/column_access.h"

namespace Tessel {
namespace {

/// The positions below `count` that are not listed. @pre every listed position is below `count`
IntVector complement(const IntVector& listed, int count) {
    std::vector<bool> leave(static_cast<std::size_t>(count), false);
    for (const int position : listed) leave[static_cast<std::size_t>(position)] = true;
    IntVector kept;
    for (int position = 0; position < count; ++position)
        if (!leave[static_cast<std::size_t>(position)]) kept.push_back(position);
    return kept;
}

void requireSize(std::size_t expected, std::size_t actual) {
    if (expected != actual)
        throw NumElementsMismatch(static_cast<std::int64_t>(expected), static_cast<std::int64_t>(actual));
}

/// The name of a vector that becomes the column at `position`.
WString columnNameOf(const WString& vectorName, int position) {
    return vectorName.empty() ? L"Var" + Convert::toString(position + 1) : vectorName;
}

}  // namespace

DataFrame::DataFrame() = default;
DataFrame::DataFrame(WString name) : name_(std::move(name)) {}
DataFrame::DataFrame(const DataFrame&) = default;
DataFrame::DataFrame(DataFrame&&) noexcept = default;
DataFrame& DataFrame::operator=(const DataFrame&) = default;
DataFrame& DataFrame::operator=(DataFrame&&) noexcept = default;
DataFrame::~DataFrame() = default;

DataFrame::DataFrame(const Matrix& matrix) : name_(matrix.getName()) {
    for (int column = 0; column < matrix.getNumCols(); ++column)
        append(DataFrameColumn(columnNameOf(WString(), column), matrix.getColumn(column)));
}

void DataFrame::clear() {
    columns_.clear();
    rowNames_.reset();
}

int DataFrame::getNumRows() const { return columns_.empty() ? 0 : columns_.front().cells->numRows(); }

int DataFrame::checkedColumn(int column) const {
    if (column < 0 || column >= getNumCols()) throw ColumnIndexOutOfRange(column, getNumCols());
    return column;
}

int DataFrame::checkedRow(int row) const {
    if (row < 0 || row >= getNumRows()) throw IndexOutOfRange(row, getNumRows());
    return row;
}

// ---- column names

const WString& DataFrame::getColName(int column) const {
    return columns_[static_cast<std::size_t>(checkedColumn(column))].name;
}

StringVector DataFrame::getColNames() const {
    StringVector names;
    for (const Column& column : columns_) names.push_back(column.name);
    return names;
}

StringVector DataFrame::getColNames(const IntVector& columns) const {
    StringVector names;
    for (const int column : columns) names.push_back(getColName(column));
    return names;
}

void DataFrame::setColName(int column, WString name) {
    columns_[static_cast<std::size_t>(checkedColumn(column))].name = std::move(name);
}

void DataFrame::setColName(const WString& oldName, WString newName) {
    setColName(getColIndex(oldName), std::move(newName));
}

void DataFrame::setColNames(const StringVector& names) {
    requireSize(columns_.size(), names.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) columns_[i].name = names[i];
}

int DataFrame::getColIndex(const WString& name) const {
    const auto hasName = [&](const Column& column) { return column.name == name; };
    const auto found = std::find_if(columns_.begin(), columns_.end(), hasName);
    if (found == columns_.end()) throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
    if (std::any_of(found + 1, columns_.end(), hasName)) throw DuplicateName(Convert::toUtf8Lossy(name));
    return static_cast<int>(found - columns_.begin());
}

IntVector DataFrame::getColIndexes(const StringVector& names) const {
    // A scan of the columns for each name suits few names; many are looked up in one sorted list.
    constexpr std::size_t kManyNames = 16;
    IntVector indexes;
    indexes.reserve(names.size());
    if (names.size() < kManyNames) {
        for (const WString& name : names) indexes.push_back(getColIndex(name));
        return indexes;
    }
    std::vector<int> sorted(columns_.size());
    std::iota(sorted.begin(), sorted.end(), 0);
    const auto nameOf = [&](int column) -> const WString& {
        return columns_[static_cast<std::size_t>(column)].name;
    };
    std::sort(sorted.begin(), sorted.end(), [&](int a, int b) { return nameOf(a) < nameOf(b); });
    for (const WString& name : names) {
        const auto found =
            std::lower_bound(sorted.begin(), sorted.end(), name,
                             [&](int column, const WString& text) { return nameOf(column) < text; });
        if (found == sorted.end() || nameOf(*found) != name)
            throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
        if (found + 1 != sorted.end() && nameOf(found[1]) == name)
            throw DuplicateName(Convert::toUtf8Lossy(name));
        indexes.push_back(*found);
    }
    return indexes;
}

bool DataFrame::isColumn(const WString& name) const {
    return std::any_of(columns_.begin(), columns_.end(),
                       [&](const Column& column) { return column.name == name; });
}

// ---- row names

WString DataFrame::getRowName(int row) const { return RowNames::at(rowNames_, checkedRow(row)); }
StringVector DataFrame::getRowNames() const { return RowNames::all(rowNames_, getNumRows()); }

StringVector DataFrame::getRowNames(const IntVector& rows) const {
    StringVector names;
    for (const int row : rows) names.push_back(getRowName(row));
    return names;
}

void DataFrame::setRowName(int row, const WString& name) {
    RowNames::assign(rowNames_, getNumRows(), checkedRow(row), name);
}

void DataFrame::setRowNames(const StringVector& names) {
    requireSize(static_cast<std::size_t>(getNumRows()), names.size());
    rowNames_ = RowNames::of(names.elements());
}

int DataFrame::getRowIndex(const WString& name) const {
    const int row = RowNames::find(rowNames_, getNumRows(), name);
    if (row < 0) throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
    return row;
}

// ---- types and index columns

TypeCode DataFrame::getTypeCode(int column) const {
    return columns_[static_cast<std::size_t>(checkedColumn(column))].cells->type();
}
TypeCode DataFrame::getTypeCode(const WString& column) const { return getTypeCode(getColIndex(column)); }
WString DataFrame::getTypeName(int column) const { return isNumeric(column) ? L"numeric" : L"text"; }
bool DataFrame::isNumeric(int column) const { return getTypeCode(column) == TypeCode::NUMERIC; }
bool DataFrame::isNumeric(const WString& column) const { return isNumeric(getColIndex(column)); }

void DataFrame::setIndexedColNames(const StringVector& names) {
    const IntVector indexes = getColIndexes(names);
    for (Column& column : columns_) column.isIndex = false;
    for (const int index : indexes) columns_[static_cast<std::size_t>(index)].isIndex = true;
}

StringVector DataFrame::getIndexedColNames() const { return getColNames(getIndexedColIndices()); }

IntVector DataFrame::getIndexedColIndices() const {
    IntVector indexes;
    for (std::size_t i = 0; i < columns_.size(); ++i)
        if (columns_[i].isIndex) indexes.push_back(static_cast<int>(i));
    return indexes;
}

bool DataFrame::isIndexColumn(const WString& name) const {
    return columns_[static_cast<std::size_t>(getColIndex(name))].isIndex;
}

// ---- selection

DataFrameColumn DataFrame::operator()(Util::All all, const WString& column) const {
    return (*this)(all, getColIndex(column));
}

DataFrameColumn DataFrame::operator()(Util::All, int column) const {
    const Column& source = columns_[static_cast<std::size_t>(checkedColumn(column))];
    return {source.name, source.cells, rowNames_};
}

DataFrame DataFrame::operator()(Util::All all, const StringVector& columns) const {
    return (*this)(all, getColIndexes(columns));
}

DataFrame DataFrame::operator()(Util::All, const IntVector& columns) const {
    DataFrame taken(name_);
    taken.columns_.reserve(columns.size());
    for (const int column : columns)
        taken.columns_.push_back(columns_[static_cast<std::size_t>(checkedColumn(column))]);
    if (!taken.columns_.empty()) taken.rowNames_ = rowNames_;
    return taken;
}

DataFrame DataFrame::operator()(Util::All all, const Except& columns) const {
    const IntVector listed = columns.byName() ? getColIndexes(columns.names()) : columns.positions();
    for (const int column : listed) checkedColumn(column);
    return (*this)(all, complement(listed, getNumCols()));
}

DataFrame DataFrame::withRows(std::shared_ptr<const RowIndexes> rows) const {
    DataFrame taken(name_);
    taken.columns_.reserve(columns_.size());
    taken.rowNames_ = RowNames::select(rowNames_, rows);
    RowSelector selector(std::move(rows));
    for (const Column& column : columns_)
        taken.columns_.push_back({column.name, selector.select(column.cells), column.isIndex});
    return taken;
}

DataFrame DataFrame::operator()(const IntVector& rows, Util::All) const {
    for (const int row : rows) checkedRow(row);
    return withRows(std::make_shared<const RowIndexes>(rows.begin(), rows.end()));
}

DataFrame DataFrame::operator()(const StringVector& rows, Util::All all) const {
    IntVector indexes;
    for (const WString& row : rows) indexes.push_back(getRowIndex(row));
    return (*this)(indexes, all);
}

DataFrame DataFrame::operator()(const Except& rows, Util::All all) const {
    IntVector listed = rows.positions();
    for (const WString& row : rows.names()) listed.push_back(getRowIndex(row));
    for (const int row : listed) checkedRow(row);
    return (*this)(complement(listed, getNumRows()), all);
}

DataFrameElement DataFrame::operator()(int row, int column) {
    auto& cells = columns_[static_cast<std::size_t>(checkedColumn(column))].cells;
    return {&cells, checkedRow(row), true};
}

const DataFrameElement DataFrame::operator()(int row, int column) const {
    const auto& cells = columns_[static_cast<std::size_t>(checkedColumn(column))].cells;
    return {const_cast<std::shared_ptr<ColumnCells>*>(&cells), checkedRow(row), false};
}

DataFrameElement DataFrame::operator()(int row, const WString& column) {
    return (*this)(row, getColIndex(column));
}
const DataFrameElement DataFrame::operator()(int row, const WString& column) const {
    return (*this)(row, getColIndex(column));
}
DataFrameElement DataFrame::operator()(const WString& row, int column) {
    return (*this)(getRowIndex(row), column);
}
const DataFrameElement DataFrame::operator()(const WString& row, int column) const {
    return (*this)(getRowIndex(row), column);
}
DataFrameElement DataFrame::operator()(const WString& row, const WString& column) {
    return (*this)(getRowIndex(row), getColIndex(column));
}
const DataFrameElement DataFrame::operator()(const WString& row, const WString& column) const {
    return (*this)(getRowIndex(row), getColIndex(column));
}

// ---- growth

void DataFrame::insertColumns(int position, std::vector<Column> columns, const RowNames::Pointer& rowNames) {
    if (position < 0 || position > getNumCols()) throw ColumnIndexOutOfRange(position, getNumCols());
    if (columns.empty()) return;
    const bool wasEmpty = columns_.empty();
    const int numRows = columns.front().cells->numRows();
    if (!wasEmpty && numRows != getNumRows()) throw NumRowsMismatch(getNumRows(), numRows);
    columns_.insert(columns_.begin() + position, std::make_move_iterator(columns.begin()),
                    std::make_move_iterator(columns.end()));
    if (wasEmpty) rowNames_ = rowNames;
}

void DataFrame::append(const DataFrame& columns) { insert(getNumCols(), columns); }

void DataFrame::append(const DataFrameColumn& column) {
    insertColumns(getNumCols(), {{column.name_, column.cells_}}, column.rowNames_);
}

void DataFrame::append(const Vector& values) {
    append(DataFrameColumn(columnNameOf(values.getName(), getNumCols()), values));
}

void DataFrame::append(const IntVector& values) {
    append(DataFrameColumn(columnNameOf(values.getName(), getNumCols()), values));
}

void DataFrame::append(const StringVector& texts) {
    append(DataFrameColumn(columnNameOf(texts.getName(), getNumCols()), texts));
}

void DataFrame::insert(int position, const DataFrame& columns) {
    insertColumns(position, columns.columns_, columns.rowNames_);
}

}  // namespace Tessel
