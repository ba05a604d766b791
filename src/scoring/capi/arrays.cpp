#include "scoring/capi/arrays.h"

#include <algorithm>
#include <limits>

#include <tessel/framework/errors.h>

#include "data/column_access.h"

namespace Tessel::Plain {
namespace {

/// Rows that are turned at a time: few enough to stay in the nearest cache with some columns.
constexpr std::size_t kBlockRows = 256;

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

std::vector<DataFrameColumn> numericColumns(const TableArrays& arrays) {
    const auto numRows = static_cast<std::size_t>(arrays.numRows);
    const std::size_t numColumns = arrays.numbers.size() / numRows;
    std::vector<std::vector<double>> cells(numColumns);
    for (std::vector<double>& column : cells) column.reserve(numRows);
    forEachBlock(numRows, [&](std::size_t first, std::size_t last) {
        for (std::size_t column = 0; column < numColumns; ++column) {
            const double* cell = arrays.numbers.data() + first * numColumns + column;
            for (std::size_t row = first; row < last; ++row, cell += numColumns)
                cells[column].push_back(*cell);
        }
    });
    std::vector<DataFrameColumn> columns;
    for (std::size_t column = 0; column < numColumns; ++column)
        columns.emplace_back(arrays.names[column], Vector(std::move(cells[column])));
    return columns;
}

/// Encodes the texts of one column.
class ColumnEncoder {
 public:
    explicit ColumnEncoder(std::size_t numRows) { codes_.reserve(numRows); }

    void add(const wchar_t* text) {
        if (!text) throw ConstraintViolation("Texts", "An element is a null pointer.");
        codes_.push_back(encoder_.encode(text));
    }
    DataFrameColumn finish(const wchar_t* name) {
        return ColumnAccess::makeColumn(name, ColumnCells::ofCodes(encoder_.finish(), std::move(codes_)));
    }

 private:
    TextEncoder encoder_;
    std::vector<std::int32_t> codes_;
};

DataFrameColumn textColumn(const TableArrays& arrays, std::size_t column, std::size_t numColumns,
                           const wchar_t* name) {
    const auto numRows = static_cast<std::size_t>(arrays.numRows);
    ColumnEncoder encoder(numRows);
    for (std::size_t row = 0; row < numRows; ++row) encoder.add(arrays.texts[row * numColumns + column]);
    return encoder.finish(name);
}

/// The columns of one type.
std::vector<DataFrameColumn> columnsOf(const DataFrame& table, TypeCode type) {
    std::vector<DataFrameColumn> columns;
    for (int column = 0; column < table.getNumCols(); ++column)
        if (table.getTypeCode(column) == type) columns.push_back(table(Util::all, column));
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
    DataFrame table;
    const std::vector<DataFrameColumn> numeric = numericColumns(arrays);
    for (const DataFrameColumn& column : numeric) table.append(column);
    const std::size_t numTexts = arrays.names.size() - numeric.size();
    for (std::size_t column = 0; column < numTexts; ++column)
        table.append(textColumn(arrays, column, numTexts, arrays.names[numeric.size() + column]));
    return table;
}

void storeNumbers(const DataFrame& table, TSLSDK_DoubleArray& array) {
    const std::vector<DataFrameColumn> columns = columnsOf(table, TypeCode::NUMERIC);
    if (columns.size() == 1) {
        array.shared = columns.front();
        array.view = array.shared.values();
        return;
    }
    std::vector<std::span<const double>> cells;
    for (const DataFrameColumn& column : columns) cells.push_back(column.values());
    const auto numRows = static_cast<std::size_t>(table.getNumRows());
    array.own.resize(columns.size() * numRows);
    forEachBlock(numRows, [&](std::size_t first, std::size_t last) {
        for (std::size_t column = 0; column < cells.size(); ++column)
            for (std::size_t row = first; row < last; ++row)
                array.own[row * cells.size() + column] = cells[column][row];
    });
    array.view = array.own;
}

void storeTexts(const DataFrame& table, TSLSDK_StringArray& array) {
    array.shared = columnsOf(table, TypeCode::TEXT);
    const auto numRows = static_cast<std::size_t>(table.getNumRows());
    const std::size_t numColumns = array.shared.size();
    array.view.resize(numColumns * numRows);
    for (std::size_t column = 0; column < numColumns; ++column) {
        const ColumnCells& cells = *ColumnAccess::cells(array.shared[column]);
        const Dictionary& dictionary = cells.dictionary();
        const wchar_t** text = array.view.data() + column;
        for (const std::int32_t code : cells.codes()) {
            *text = code == kMissingCode ? L"" : dictionary[code].c_str();
            text += numColumns;
        }
    }
}

void storeNames(const DataFrame& table, TSLSDK_StringArray& array) {
    for (const TypeCode type : {TypeCode::NUMERIC, TypeCode::TEXT})
        for (const DataFrameColumn& column : columnsOf(table, type)) array.own.push_back(column.getColName());
    for (const WString& name : array.own) array.view.push_back(name.c_str());
}

}  // namespace Tessel::Plain
