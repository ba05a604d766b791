#include "scoring/capi/arrays.h"

#include <algorithm>
#include <limits>

#include <tessel/framework/errors.h>

#include "data/column_access.h"
#include "data/io/parallel.h"

namespace Tessel::Plain {
namespace {

/// Rows that are turned at a time: few enough to stay in the nearest cache with some columns.
constexpr std::size_t kBlockRows = 256;
/// Numeric columns that one thread turns: so many that they share the cache lines that are read.
constexpr std::size_t kGroupColumns = 4;

template <class Element, class Array>
std::span<const Element> checkedSpan(const Array* array, const char* what) {
    if (!array || array->size == 0) return {};
    if (!array->data) throw ConstraintViolation(what, "The array has a size but no data.");
    return {array->data, static_cast<std::size_t>(array->size)};
}

/// Calls work(firstRow, lastRow) for blocks of rows, in order.
template <class Work>
void forEachBlock(std::size_t numRows, Work work) {
    for (std::size_t first = 0; first < numRows; first += kBlockRows)
        work(first, std::min(first + kBlockRows, numRows));
}

/// Turns up to `kGroupColumns` numeric columns from `firstColumn` on.
void turnNumbers(const TableArrays& arrays, std::size_t firstColumn, std::span<std::vector<double>> columns) {
    const auto numRows = static_cast<std::size_t>(arrays.numRows);
    const std::size_t numColumns = arrays.numbers.size() / numRows;
    for (std::vector<double>& column : columns) column.reserve(numRows);
    forEachBlock(numRows, [&](std::size_t first, std::size_t last) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const double* const cells = arrays.numbers.data() + firstColumn + i;
            for (std::size_t row = first; row < last; ++row) columns[i].push_back(cells[row * numColumns]);
        }
    });
}

std::shared_ptr<ColumnCells> encodeTexts(const TableArrays& arrays, std::size_t column) {
    const auto numRows = static_cast<std::size_t>(arrays.numRows);
    const std::size_t numColumns = arrays.texts.size() / numRows;
    TextEncoder encoder;
    std::vector<std::int32_t> codes;
    codes.reserve(numRows);
    for (std::size_t row = 0; row < numRows; ++row) {
        const wchar_t* const text = arrays.texts[row * numColumns + column];
        if (!text) throw ConstraintViolation("Texts", "An element is a null pointer.");
        codes.push_back(encoder.encode(text));
    }
    return ColumnCells::ofCodes(encoder.finish(), std::move(codes));
}

/// The positions of the columns of one type.
std::vector<int> columnsOf(const DataFrame& table, TypeCode type) {
    std::vector<int> columns;
    for (int column = 0; column < table.getNumCols(); ++column)
        if (table.getTypeCode(column) == type) columns.push_back(column);
    return columns;
}

}  // namespace

TableArrays checkedArrays(std::uint64_t numRows, const Tessel_DoubleArray* numbers,
                          const Tessel_StringArray* texts, const Tessel_StringArray* names) {
    if (numRows == 0) throw IncompatibleSizes("There are no rows.");
    if (numRows > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
        throw BadAllocation("Input table");
    const TableArrays arrays{numRows, checkedSpan<double>(numbers, "Numbers"),
                             checkedSpan<const wchar_t*>(texts, "Texts"),
                             checkedSpan<const wchar_t*>(names, "Column names")};
    if (arrays.numbers.size() % numRows != 0 || arrays.texts.size() % numRows != 0)
        throw IncompatibleSizes("The number of values is not a multiple of the number of rows.");
    if (arrays.names.size() != arrays.numbers.size() / numRows + arrays.texts.size() / numRows)
        throw IncompatibleSizes("There are not as many column names as columns.");
    if (std::find(arrays.names.begin(), arrays.names.end(), nullptr) != arrays.names.end())
        throw ConstraintViolation("Column names", "An element is a null pointer.");
    return arrays;
}

DataFrame toTable(const TableArrays& arrays) {
    const auto numRows = static_cast<std::size_t>(arrays.numRows);
    const std::size_t numNumeric = arrays.numbers.size() / numRows, numTexts = arrays.texts.size() / numRows;
    const std::size_t numGroups = (numNumeric + kGroupColumns - 1) / kGroupColumns;
    std::vector<std::vector<double>> numbers(numNumeric);
    std::vector<std::shared_ptr<ColumnCells>> texts(numTexts);
    IO::forEachIndex(numTexts + numGroups, numRows * arrays.names.size(), [&](std::size_t i) {
        if (i < numTexts) {
            texts[i] = encodeTexts(arrays, i);
            return;
        }
        const std::size_t first = (i - numTexts) * kGroupColumns;
        turnNumbers(arrays, first,
                    std::span(numbers).subspan(first, std::min(kGroupColumns, numNumeric - first)));
    });
    DataFrame table;
    for (std::size_t column = 0; column < numNumeric; ++column)
        table.append(DataFrameColumn(arrays.names[column], Vector(std::move(numbers[column]))));
    for (std::size_t column = 0; column < numTexts; ++column)
        table.append(ColumnAccess::makeColumn(arrays.names[numNumeric + column], std::move(texts[column])));
    return table;
}

void storeNumbers(const DataFrame& table, TSLSDK_DoubleArray& array) {
    const std::vector<int> columns = columnsOf(table, TypeCode::NUMERIC);
    if (columns.size() == 1) {
        array.shared = ColumnAccess::cells(table, columns.front());
        array.view = array.shared->numbers();
        return;
    }
    std::vector<std::span<const double>> cells;
    for (const int column : columns) cells.push_back(ColumnAccess::cells(table, column)->numbers());
    const auto numRows = static_cast<std::size_t>(table.getNumRows());
    array.own.resize(cells.size() * numRows);
    forEachBlock(numRows, [&](std::size_t first, std::size_t last) {
        for (std::size_t column = 0; column < cells.size(); ++column)
            for (std::size_t row = first; row < last; ++row)
                array.own[row * cells.size() + column] = cells[column][row];
    });
    array.view = array.own;
}

void storeTexts(const DataFrame& table, TSLSDK_StringArray& array) {
    const std::vector<int> columns = columnsOf(table, TypeCode::TEXT);
    array.view.resize(columns.size() * static_cast<std::size_t>(table.getNumRows()));
    for (std::size_t column = 0; column < columns.size(); ++column) {
        const auto& cells = array.shared.emplace_back(ColumnAccess::cells(table, columns[column]));
        const Dictionary& dictionary = cells->dictionary();
        std::size_t position = column;
        for (const std::int32_t code : cells->codes()) {
            array.view[position] = code == kMissingCode ? L"" : dictionary[code].c_str();
            position += columns.size();
        }
    }
}

void storeNames(const DataFrame& table, TSLSDK_StringArray& array) {
    for (const TypeCode type : {TypeCode::NUMERIC, TypeCode::TEXT})
        for (const int column : columnsOf(table, type)) array.own.push_back(table.getColName(column));
    for (const WString& name : array.own) array.view.push_back(name.c_str());
}

}  // namespace Tessel::Plain
