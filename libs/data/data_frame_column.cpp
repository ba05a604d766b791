#include <cmath>
#include <limits>

#include <tessel/data/convert.h>

#include "data/column_access.h"

namespace Tessel {
namespace {

void requireRow(int row, int numRows) {
    if (row < 0 || row >= numRows) throw IndexOutOfRange(row, numRows);
}

}  // namespace

// ---- one cell

bool DataFrameElement::isMissing() const { return (*cells_)->isMissing(row_); }

double DataFrameElement::toDouble() const {
    const ColumnCells& cells = **cells_;
    if (cells.isNumeric()) return cells.number(row_);
    return cells.isMissing(row_) ? std::numeric_limits<double>::quiet_NaN()
                                 : Convert::toDouble(cells.text(row_));
}

int DataFrameElement::toInt() const {
    const double value = toDouble();
    const bool isInt = value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max() &&
                       value == std::trunc(value);
    if (!isInt) throw ConversionFailure(Convert::toUtf8Lossy(toString()), "an integer");
    return static_cast<int>(value);
}

WString DataFrameElement::toString() const { return (*cells_)->text(row_); }

std::shared_ptr<ColumnCells>& DataFrameElement::writableCells() const {
    if (!writable_) throw Exception("The cell belongs to a constant table and cannot be changed.", 252);
    return *cells_;
}

DataFrameElement& DataFrameElement::operator=(double value) {
    ColumnCells::assign(writableCells(), row_, value);
    return *this;
}

DataFrameElement& DataFrameElement::operator=(const WString& text) {
    ColumnCells::assign(writableCells(), row_, text);
    return *this;
}

DataFrameElement& DataFrameElement::operator=(const DataFrameElement& cell) {
    return (*cell.cells_)->isNumeric() ? *this = cell.toDouble() : *this = cell.toString();
}

// ---- one column

DataFrameColumn::DataFrameColumn() : DataFrameColumn(WString(), Vector()) {}
DataFrameColumn::DataFrameColumn(const DataFrameColumn&) = default;
DataFrameColumn& DataFrameColumn::operator=(const DataFrameColumn&) = default;
DataFrameColumn::~DataFrameColumn() = default;

DataFrameColumn::DataFrameColumn(WString name, Vector values)
    : DataFrameColumn(std::move(name), ColumnCells::ofNumbers(std::move(values).elements()), nullptr) {}

DataFrameColumn::DataFrameColumn(WString name, const IntVector& values)
    : DataFrameColumn(std::move(name), Vector(values.begin(), values.end())) {}

DataFrameColumn::DataFrameColumn(WString name, const StringVector& texts)
    : DataFrameColumn(std::move(name), ColumnCells::ofTexts(texts.elements()), nullptr) {}

DataFrameColumn::DataFrameColumn(WString name, std::shared_ptr<ColumnCells> cells,
                                 std::shared_ptr<const RowNames> rowNames)
    : name_(std::move(name)), cells_(std::move(cells)), rowNames_(std::move(rowNames)) {}

int DataFrameColumn::getNumRows() const { return cells_->numRows(); }
TypeCode DataFrameColumn::getTypeCode() const { return cells_->type(); }
WString DataFrameColumn::getTypeName() const { return isNumeric() ? L"numeric" : L"text"; }

WString DataFrameColumn::getRowName(int row) const {
    requireRow(row, getNumRows());
    return RowNames::at(rowNames_, row);
}

StringVector DataFrameColumn::getRowNames() const { return RowNames::all(rowNames_, getNumRows()); }

void DataFrameColumn::setRowNames(const StringVector& names) {
    if (names.size() != static_cast<std::size_t>(getNumRows()))
        throw NumElementsMismatch(getNumRows(), static_cast<std::int64_t>(names.size()));
    rowNames_ = RowNames::of(names.elements());
}

DataFrameElement DataFrameColumn::operator()(int row) {
    requireRow(row, getNumRows());
    return {&cells_, row, true};
}

const DataFrameElement DataFrameColumn::operator()(int row) const {
    requireRow(row, getNumRows());
    return {const_cast<std::shared_ptr<ColumnCells>*>(&cells_), row, false};
}

DataFrameColumn DataFrameColumn::select(const IntVector& rows) const {
    for (const int row : rows) requireRow(row, getNumRows());
    const auto indexes = std::make_shared<const RowIndexes>(rows.begin(), rows.end());
    return {name_, RowSelector(indexes).select(cells_), RowNames::select(rowNames_, indexes)};
}

Vector DataFrameColumn::toDoubleVector() const {
    Vector numbers;
    if (isNumeric()) {
        const auto cells = values();
        numbers = Vector(cells.begin(), cells.end());
    } else {
        // Each level is parsed once, at its first row.
        std::vector<double> ofLevel(cells_->dictionary().levels().size());
        for (const std::int32_t code : cells_->presentCodes())
            ofLevel[static_cast<std::size_t>(code)] = Convert::toDouble(cells_->dictionary()[code]);
        numbers.reserve(static_cast<std::size_t>(getNumRows()));
        for (int row = 0; row < getNumRows(); ++row) {
            const std::int32_t code = cells_->code(row);
            numbers.push_back(code == kMissingCode ? std::numeric_limits<double>::quiet_NaN()
                                                   : ofLevel[static_cast<std::size_t>(code)]);
        }
    }
    numbers.setName(name_);
    return numbers;
}

IntVector DataFrameColumn::toIntVector() const {
    IntVector integers;
    integers.reserve(static_cast<std::size_t>(getNumRows()));
    for (int row = 0; row < getNumRows(); ++row) integers.push_back((*this)(row).toInt());
    integers.setName(name_);
    return integers;
}

StringVector DataFrameColumn::toStringVector() const {
    StringVector texts;
    texts.reserve(static_cast<std::size_t>(getNumRows()));
    for (int row = 0; row < getNumRows(); ++row) texts.push_back(cells_->text(row));
    texts.setName(name_);
    return texts;
}

std::span<const double> DataFrameColumn::values() const {
    if (!isNumeric()) throw NonNumericData(Convert::toUtf8Lossy(name_));
    return cells_->numbers();
}

}  // namespace Tessel
