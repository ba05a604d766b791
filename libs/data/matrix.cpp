#include <limits>
#include <utility>

#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>

#include "data/json_text.h"
#include "data/json_value.h"
#include "data/text_table.h"

namespace Tessel {
namespace {

std::size_t numCells(int numRows, int numCols) {
    constexpr int kMost = std::numeric_limits<int>::max();
    if (numRows < 0) throw ValueOutOfRange("Number of rows", 0, kMost);
    if (numCols < 0) throw ValueOutOfRange("Number of columns", 0, kMost);
    return static_cast<std::size_t>(numRows) * static_cast<std::size_t>(numCols);
}

void requireSize(int expected, std::size_t actual) {
    if (static_cast<std::size_t>(expected) != actual)
        throw NumElementsMismatch(expected, static_cast<std::int64_t>(actual));
}

}  // namespace

Matrix::Matrix(Matrix&& other) noexcept
    : name_(std::move(other.name_)),
      numRows_(std::exchange(other.numRows_, 0)),
      numCols_(std::exchange(other.numCols_, 0)),
      order_(other.order_),
      values_(std::move(other.values_)) {}

Matrix& Matrix::operator=(Matrix&& other) noexcept {
    Matrix moved(std::move(other));
    std::swap(name_, moved.name_);
    std::swap(numRows_, moved.numRows_);
    std::swap(numCols_, moved.numCols_);
    std::swap(order_, moved.order_);
    std::swap(values_, moved.values_);
    return *this;
}

Matrix::Matrix(int numRows, int numCols, double fill, MatrixOrderType order)
    : numRows_(numRows), numCols_(numCols), order_(order), values_(numCells(numRows, numCols), fill) {}

Matrix::Matrix(int numRows, int numCols, const Vector& values, MatrixOrderType order)
    : numRows_(numRows), numCols_(numCols), order_(order), values_(values) {
    const std::size_t expected = numCells(numRows, numCols);
    if (values.size() != expected)
        throw NumElementsMismatch(static_cast<std::int64_t>(expected),
                                  static_cast<std::int64_t>(values.size()));
}

Matrix::Matrix(const DataFrame& table)
    : Matrix(table.getNumRows(), table.getNumCols(), 0.0, MatrixOrderType::COLUMN_MAJOR) {
    name_ = table.getName();
    for (int column = 0; column < numCols_; ++column) {
        const DataFrameColumn source = table(Util::all, column);
        const auto cells = source.values();
        std::copy(cells.begin(), cells.end(),
                  values_.begin() + static_cast<std::ptrdiff_t>(offset(0, column)));
    }
}

Matrix DataFrame::toMatrix() const { return Matrix(*this); }

Vector Matrix::getRow(int row) const {
    if (row < 0 || row >= numRows_) throw IndexOutOfRange(row, numRows_);
    Vector values(static_cast<std::size_t>(numCols_));
    for (int column = 0; column < numCols_; ++column)
        values[static_cast<std::size_t>(column)] = (*this)(row, column);
    return values;
}

void Matrix::setRow(int row, const Vector& values) {
    if (row < 0 || row >= numRows_) throw IndexOutOfRange(row, numRows_);
    requireSize(numCols_, values.size());
    for (int column = 0; column < numCols_; ++column)
        (*this)(row, column) = values[static_cast<std::size_t>(column)];
}

Vector Matrix::getColumn(int column) const {
    if (column < 0 || column >= numCols_) throw ColumnIndexOutOfRange(column, numCols_);
    Vector values(static_cast<std::size_t>(numRows_));
    for (int row = 0; row < numRows_; ++row) values[static_cast<std::size_t>(row)] = (*this)(row, column);
    return values;
}

void Matrix::setColumn(int column, const Vector& values) {
    if (column < 0 || column >= numCols_) throw ColumnIndexOutOfRange(column, numCols_);
    requireSize(numRows_, values.size());
    for (int row = 0; row < numRows_; ++row) (*this)(row, column) = values[static_cast<std::size_t>(row)];
}

Matrix Matrix::transpose() const {
    Matrix transposed(numCols_, numRows_, 0.0, order_);
    // Square blocks that fit the fastest cache, since one of the two matrices is read against its order.
    constexpr int kBlock = 32;
    for (int firstRow = 0; firstRow < numRows_; firstRow += kBlock)
        for (int firstColumn = 0; firstColumn < numCols_; firstColumn += kBlock)
            for (int row = firstRow; row < std::min(firstRow + kBlock, numRows_); ++row)
                for (int column = firstColumn; column < std::min(firstColumn + kBlock, numCols_); ++column)
                    transposed(column, row) = (*this)(row, column);
    transposed.name_ = name_;
    return transposed;
}

void Matrix::resize(int numRows, int numCols) {
    Matrix resized(numRows, numCols, 0.0, order_);
    for (int row = 0; row < std::min(numRows, numRows_); ++row)
        for (int column = 0; column < std::min(numCols, numCols_); ++column)
            resized(row, column) = (*this)(row, column);
    resized.name_ = name_;
    *this = std::move(resized);
}

bool Matrix::operator==(const Matrix& other) const {
    if (numRows_ != other.numRows_ || numCols_ != other.numCols_) return false;
    if (order_ == other.order_) return values_ == other.values_;
    for (int row = 0; row < numRows_; ++row)
        for (int column = 0; column < numCols_; ++column)
            if ((*this)(row, column) != other(row, column)) return false;
    return true;
}

WString Matrix::toString() const {
    TextTable lines;
    for (int column = 0; column < numCols_; ++column) {
        std::vector<WString> texts(static_cast<std::size_t>(numRows_));
        for (int row = 0; row < numRows_; ++row)
            texts[static_cast<std::size_t>(row)] = TextTable::numberText((*this)(row, column));
        lines.addColumn(std::move(texts), TextTable::Align::RIGHT);
    }
    return (name_.empty() ? WString() : name_ + L'\n') + lines.toString();
}

WString Matrix::toJson() const {
    WString json = L"[";
    for (int row = 0; row < numRows_; ++row) {
        if (row > 0) json += L',';
        JSON::appendArray(json, getRow(row), JSON::appendNumber);
    }
    json += L']';
    return json;
}

void Matrix::fromJsonString(const WString& json) {
    const web::json::value tree = JSON::parse(json);
    const web::json::array& rows = JSON::toArray(tree, "the matrix");
    const std::size_t numCols = rows.size() == 0 ? 0 : JSON::toArray(rows.at(0), "a row").size();
    Matrix read(static_cast<int>(rows.size()), static_cast<int>(numCols), 0.0, order_);
    int row = 0;
    for (const web::json::value& value : rows) {
        const Vector cells = JSON::toVector(value, "a row");
        if (cells.size() != numCols) throw MalformedJSON("the rows must be equally long.");
        read.setRow(row++, cells);
    }
    read.name_ = std::move(name_);
    *this = std::move(read);
}

}  // namespace Tessel
