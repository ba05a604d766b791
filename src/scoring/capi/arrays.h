#pragma once

#include <memory>
#include <vector>

#include <tessel/data/data_frame.h>
#include <tessel/scoring/capi/tessel_c.h>

// Between the arrays of the C interface and tables. Cells are stored row after row in arrays, column by
// column in tables.

/// A text that the library gives to the host.
struct TSLSDK_String {
    Tessel::WString text;
};

/// Numbers that the library gives to the host: its own, or the cells of a column that it keeps alive. Making
/// an empty one takes no memory beyond itself.
struct TSLSDK_DoubleArray {
    std::vector<double> own;
    std::shared_ptr<const Tessel::ColumnCells> shared;
    std::span<const double> view;
};

/// Texts that the library gives to the host: pointers to its own texts, or into the dictionaries of columns
/// that it keeps alive.
struct TSLSDK_StringArray {
    std::vector<Tessel::WString> own;
    std::vector<std::shared_ptr<const Tessel::ColumnCells>> shared;
    std::vector<const wchar_t*> view;
};

namespace Tessel::Plain {

/// The three arrays that hold a table of `numRows` rows: cells of numeric columns, cells of text columns, and
/// the names of the former and then of the latter.
struct TableArrays {
    std::uint64_t numRows;
    std::span<const double> numbers;
    std::span<const wchar_t* const> texts;
    std::span<const wchar_t* const> names;
};

/// Checks what can be checked without a model.
/// @throws IncompatibleSizes  without rows, when a size is no multiple of the rows, and when there are not as
///         many names as columns.
/// @throws ConstraintViolation for null pointers where cells are. @throws BadAllocation for too many rows.
TableArrays checkedArrays(std::uint64_t numRows, const Tessel_DoubleArray* numbers,
                          const Tessel_StringArray* texts, const Tessel_StringArray* names);

DataFrame toTable(const TableArrays& arrays);

// The cells of the columns of one type, and the names of all columns.
void storeNumbers(const DataFrame& table, TSLSDK_DoubleArray& array);
void storeTexts(const DataFrame& table, TSLSDK_StringArray& array);
void storeNames(const DataFrame& table, TSLSDK_StringArray& array);

}  // namespace Tessel::Plain
