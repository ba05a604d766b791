#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>

namespace Tessel {
namespace {

constexpr auto kByRow = MatrixOrderType::ROW_MAJOR;
constexpr auto kByColumn = MatrixOrderType::COLUMN_MAJOR;

TEST(MatrixTest, memoryOrders) {
    const Vector values{1, 2, 3, 4, 5, 6};
    const Matrix byRow(2, 3, values, kByRow);
    const Matrix byColumn(2, 3, values, kByColumn);
    EXPECT_EQ(byRow.getRow(1), (Vector{4, 5, 6}));
    EXPECT_EQ(byColumn.getRow(1), (Vector{2, 4, 6}));
    EXPECT_EQ(byRow.getColumn(2), (Vector{3, 6}));
    EXPECT_EQ(byColumn.getColumn(2), (Vector{5, 6}));
    EXPECT_FALSE(byRow == byColumn);
    EXPECT_EQ(byRow.getAsDoubleVector(), byColumn.getAsDoubleVector());
    EXPECT_EQ(byRow, Matrix(2, 3, Vector{1, 4, 2, 5, 3, 6}, kByColumn));
    EXPECT_FALSE(Matrix(2, 3) == Matrix(3, 2));
}

TEST(MatrixTest, transposeTwiceIsTheSame) {
    for (const auto order : {kByRow, kByColumn})
        for (const auto& [numRows, numCols] : {std::pair{1, 1}, {0, 3}, {31, 33}, {64, 65}, {100, 1}}) {
            Matrix matrix(numRows, numCols, 0.0, order);
            for (int row = 0; row < numRows; ++row)
                for (int column = 0; column < numCols; ++column) matrix(row, column) = row * 1000 + column;
            const Matrix transposed = matrix.transpose();
            ASSERT_EQ(transposed.getNumRows(), numCols);
            for (int row = 0; row < numRows; ++row)
                for (int column = 0; column < numCols; ++column)
                    ASSERT_EQ(transposed(column, row), row * 1000 + column);
            EXPECT_EQ(transposed.getMatrixOrder(), order);
            EXPECT_EQ(transposed.transpose(), matrix);
        }
}

TEST(MatrixTest, changesAndBounds) {
    for (const auto order : {kByRow, kByColumn}) {
        Matrix matrix(2, 2, 7.0, order);
        matrix.setName(L"m");
        matrix.setRow(0, Vector{1, 2});
        matrix.setColumn(1, Vector{3, 4});
        matrix.resize(3, 1);
        EXPECT_EQ(matrix, Matrix(3, 1, Vector{1, 7, 0}));
        EXPECT_EQ(matrix.getName(), L"m");
        EXPECT_EQ(matrix.getMatrixOrder(), order);
        EXPECT_THROW(matrix.getRow(3), IndexOutOfRange);
        EXPECT_THROW(matrix.getColumn(-1), ColumnIndexOutOfRange);
        EXPECT_THROW(matrix.setRow(0, Vector{1, 2}), NumElementsMismatch);
        EXPECT_THROW(matrix.setColumn(0, Vector{1, 2}), NumElementsMismatch);
        EXPECT_THROW(matrix.resize(-1, 1), ValueOutOfRange);
        EXPECT_EQ(matrix, Matrix(3, 1, Vector{1, 7, 0}));
    }
    EXPECT_THROW(Matrix(2, 2, Vector{1, 2, 3}), NumElementsMismatch);
    EXPECT_THROW(Matrix(2, -1), ValueOutOfRange);
}

TEST(MatrixTest, whatWasMovedFromIsEmpty) {
    const Matrix original(2, 3, Vector{1, 2, 3, 4, 5, 6}, kByColumn);
    Matrix source = original, assigned(1, 1);
    Matrix target = std::move(source);
    EXPECT_EQ(target, original);
    EXPECT_EQ(source, Matrix());
    EXPECT_THROW(source.getRow(0), IndexOutOfRange);
    assigned = std::move(target);
    EXPECT_EQ(assigned, original);
    EXPECT_EQ(assigned.getMatrixOrder(), kByColumn);
    EXPECT_EQ(target, Matrix());
    source = original;
    EXPECT_EQ(source, original);
}

TEST(MatrixTest, tablesAndTexts) {
    Matrix matrix(2, 3, Vector{1, -2.5, 1e6, 1.23456789, std::numeric_limits<double>::quiet_NaN(), 1e-7});
    matrix.setName(L"m");
    EXPECT_EQ(matrix.toString(), L"m\n      1  -2.5  1000000\n1.23457          1e-07\n");
    EXPECT_EQ(matrix.toJson(), L"[[1,-2.5,1000000],[1.23456789,null,1e-07]]");

    Matrix plain(2, 2, Vector{1, 2, 3, 4});
    const DataFrame table(plain);
    EXPECT_EQ(table.getColNames(), (StringVector{L"Var1", L"Var2"}));
    EXPECT_EQ(table.toMatrix(), plain);
    EXPECT_EQ(table.toMatrix().getMatrixOrder(), kByColumn);
    DataFrame withText = table;
    withText.append(StringVector{L"a", L"b"});
    EXPECT_THROW(withText.toMatrix(), NonNumericData);

    for (const auto order : {kByRow, kByColumn}) {
        Matrix read(5, 1, 0.0, order);
        read.fromJsonString(plain.toJson());
        EXPECT_EQ(read, plain);
        EXPECT_EQ(read.getMatrixOrder(), order);
        read.fromJsonString(L"[]");
        EXPECT_TRUE(read.empty());
        read.fromJsonString(L"[[],[]]");
        EXPECT_EQ(read.getNumRows(), 2);
    }
}

}  // namespace
}  // namespace Tessel
