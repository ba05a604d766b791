#pragma once

#include <cstddef>

#include <tessel/data/types.h>
#include <tessel/data/vectors.h>

namespace Tessel {

/// A dense matrix of doubles with an optional name, stored row by row or column by column.
/// Rows and columns count from 0.
class TESSEL_API Matrix {
 public:
    Matrix() = default;
    Matrix(const Matrix&) = default;
    /// The other matrix is left without rows and columns.
    Matrix(Matrix&& other) noexcept;
    Matrix& operator=(const Matrix&) = default;
    Matrix& operator=(Matrix&& other) noexcept;
    /// @throws ValueOutOfRange for a negative shape.
    Matrix(int numRows, int numCols, double fill = 0.0, MatrixOrderType order = MatrixOrderType::ROW_MAJOR);
    /// @param values  numRows * numCols values in the given order.
    /// @throws NumElementsMismatch, ValueOutOfRange
    Matrix(int numRows, int numCols, const Vector& values,
           MatrixOrderType order = MatrixOrderType::ROW_MAJOR);
    /// The cells of a table, index columns included, stored column by column.
    /// @throws NonNumericData for a text column.
    explicit Matrix(const DataFrame& table);

    const WString& getName() const { return name_; }
    void setName(WString name) { name_ = std::move(name); }

    int getNumRows() const { return numRows_; }
    int getNumCols() const { return numCols_; }
    bool empty() const { return values_.empty(); }
    MatrixOrderType getMatrixOrder() const { return order_; }

    /// Unchecked access.
    double& operator()(int row, int column) { return values_[offset(row, column)]; }
    double operator()(int row, int column) const { return values_[offset(row, column)]; }

    /// @throws IndexOutOfRange, ColumnIndexOutOfRange, NumElementsMismatch
    Vector getRow(int row) const;
    void setRow(int row, const Vector& values);
    Vector getColumn(int column) const;
    void setColumn(int column, const Vector& values);

    /// The transposed matrix, in the same memory order.
    Matrix transpose() const;
    /// Changes the shape; cells that both shapes have keep their values, new ones become 0.
    /// @throws ValueOutOfRange for a negative shape; the matrix is then unchanged.
    void resize(int numRows, int numCols);

    /// All cells in memory order (see `getMatrixOrder`).
    const Vector& getAsDoubleVector() const { return values_; }
    double* data() { return values_.data(); }
    const double* data() const { return values_.data(); }

    /// The rows as aligned lines for people, under the name when there is one; see `DataFrame::toString`.
    WString toString() const;
    /// A JSON array of rows, each an array of numbers (see `Vector::toJson` for NaN and infinities).
    /// A matrix without rows is written as [], so it comes back without columns too.
    WString toJson() const;
    /// Replaces shape and cells; the memory order and the name stay.
    /// @throws MalformedJSON when the text is not an array of equally long arrays of numbers.
    void fromJsonString(const WString& json);

    /// Same shape and cells, whatever the memory order.
    bool operator==(const Matrix& other) const;

 private:
    std::size_t offset(int row, int column) const {
        return order_ == MatrixOrderType::ROW_MAJOR
                   ? static_cast<std::size_t>(row) * static_cast<std::size_t>(numCols_) +
                         static_cast<std::size_t>(column)
                   : static_cast<std::size_t>(column) * static_cast<std::size_t>(numRows_) +
                         static_cast<std::size_t>(row);
    }

    WString name_;
    int numRows_ = 0;
    int numCols_ = 0;
    MatrixOrderType order_ = MatrixOrderType::ROW_MAJOR;
    Vector values_;
};

}  // namespace Tessel
