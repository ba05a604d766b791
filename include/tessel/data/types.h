#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessel/api.h>

namespace Tessel {

/// Wide text: UTF-16 units on Windows, UTF-32 elsewhere. `Convert` translates from and to UTF-8.
using WString = std::wstring;
using WStringView = std::wstring_view;

/// What the cells of a column are.
enum class TypeCode : int {
    NUMERIC = 0,  ///< doubles; NaN is a missing cell
    TEXT = 1      ///< wide texts; an empty text is a missing cell
};

/// Memory order of a `Matrix`.
enum class MatrixOrderType : int { ROW_MAJOR = 0, COLUMN_MAJOR = 1 };

class StringVector;
class IntVector;
class Vector;
class Matrix;
class DataFrame;
class DataFrameColumn;
class DataFrameElement;
class DataFrameVector;

}  // namespace Tessel
