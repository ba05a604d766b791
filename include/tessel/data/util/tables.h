#pragma once

#include <tessel/data/data_frame.h>

namespace Tessel::Util {

/// The columns of `a` and then those of `b`, with name and row names of `a`; cells are shared. A table
/// without columns adds nothing. @throws NumRowsMismatch
TESSEL_API DataFrame colBind(const DataFrame& a, const DataFrame& b);

/// The rows of `a` and then those of `b`, with name, index columns and column order of `a`; the columns of
/// `b` are found by their names. A table without columns adds nothing. Rows keep their names, but where
/// neither table was given names or is a selection of rows, the names stay the default ones.
/// @throws NumColumnsMismatch; NonExistingNamedIndex for a column of `a` that `b` lacks; DuplicateName when
/// names that occur more than once do not stand in the same order; ConversionFailure for a column that is
/// text in one table and numeric in the other.
TESSEL_API DataFrame rowBind(const DataFrame& a, const DataFrame& b);

/// One number per row, computed from the row's cells: a numeric column named like the expression, with the
/// table's row names.
///
/// - Columns: their names, when these are letters, digits and underscores and begin with no digit, or any
///   name in square brackets that has none itself: "[Petal length] / width". Columns must be numeric.
/// - Numbers: 12, 0.5, 1e-3; the constants _pi and _e, unless columns have these names.
/// - Operators, the most binding first: ^ (from the right: 2^3^2 is 2^9; -2^2 is -4); unary - and +;
///   * and /; + and -; < <= > >= == !=; &&; ||; condition ? a : b. Comparisons and logic give 1 or 0;
///   what is not 0 counts as true.
/// - Functions: sin cos tan asin acos atan sinh cosh tanh asinh acosh atanh exp log (natural, also ln) log2
///   log10 sqrt abs sign round (halves away from 0) rint (halves to even) trunc floor ceil; atan2(y, x);
///   min max sum avg of one or more arguments.
/// - Missing cells: arithmetic and functions give NaN when an operand is NaN, but a power with exponent 0 or
///   base 1 is 1. A comparison with NaN is false, only != is true; as a condition NaN counts as true. Ask
///   x != x ? a : b to tell missing cells apart.
///
/// There are no assignments; the table never changes. The length of an expression is limited to about
/// 20,000 characters.
/// @throws InvalidExpression with the reason and the place, counted from 1, also for unknown names;
/// NonNumericData for a text column; DuplicateName for a column name that several columns have.
TESSEL_API DataFrameColumn calculateExpression(const DataFrame& table, const WString& expression);

/// A whole UTF-8 text file; a byte-order mark at its start is left out.
/// @throws FileNotFound, InvalidEncoding
TESSEL_API WString readFile(const WString& path);

}  // namespace Tessel::Util
