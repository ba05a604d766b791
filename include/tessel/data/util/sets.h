#pragma once

#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>
#include <tessel/data/vectors.h>

/// Distinct elements, groups, orders and small helpers for vectors. Missing elements (NaN, the empty text)
/// belong to no set and no group. The numbers 0 and -0 are one element.
namespace Tessel::Util {

enum class SortDirection : int { ASCENDING = 0, DESCENDING = 1 };

/// The distinct elements, missing ones left out, in order of first appearance. The result keeps the name.
/// Linear time.
TESSEL_API Vector uniqueElements(const Vector& values);
TESSEL_API IntVector uniqueElements(const IntVector& values);
TESSEL_API StringVector uniqueElements(const StringVector& texts);
/// Of a column of either type, as texts; numbers in shortest round-trip form.
TESSEL_API StringVector uniqueElements(const DataFrameColumn& column);

/// The number of distinct elements, missing ones not counted.
TESSEL_API int numUniqueElements(const Vector& values);
TESSEL_API int numUniqueElements(const IntVector& values);
TESSEL_API int numUniqueElements(const StringVector& texts);
TESSEL_API int numUniqueElements(const DataFrameColumn& column);

/// The distinct texts of `a` that `b` has, too, in the order of `a`. Without regard to case the form in
/// which `a` has a text first stands for all of its forms; upper and lower case letters of the Latin, Greek
/// and Cyrillic alphabets are then the same, one letter for one letter, whatever the locale.
TESSEL_API StringVector intersection(const StringVector& a, const StringVector& b, bool caseSensitive = true);

/// True when every distinct element of `x` is an element of `y`; always for an `x` without elements.
TESSEL_API bool uniqueElementsOfXexistInY(const Vector& x, const Vector& y);
TESSEL_API bool uniqueElementsOfXexistInY(const IntVector& x, const IntVector& y);
TESSEL_API bool uniqueElementsOfXexistInY(const StringVector& x, const StringVector& y);

/// The elements at the listed positions, in that order, repetitions allowed. The result keeps the name.
/// @throws IndexOutOfRange
TESSEL_API Vector bind(const Vector& values, const IntVector& positions);
TESSEL_API IntVector bind(const IntVector& values, const IntVector& positions);
TESSEL_API StringVector bind(const StringVector& texts, const IntVector& positions);

/// The arithmetic means of the values of each group: a table with the column "Mean" and one row per group,
/// named after it, in order of first appearance. Missing values are left out, and rows without a group; a
/// group without values has the mean NaN. Groups in a numeric column are named by their shortest texts.
/// @throws NumElementsMismatch, for columns NumRowsMismatch; ConversionFailure for a value that is a text
/// but no number.
TESSEL_API DataFrame groupMean(const Vector& values, const StringVector& groups);
TESSEL_API DataFrame groupMean(const DataFrameColumn& values, const DataFrameColumn& groups);
/// The same for medians, in the column "Median"; of an even number of values the middle of the two inner.
TESSEL_API DataFrame groupMedian(const Vector& values, const StringVector& groups);
TESSEL_API DataFrame groupMedian(const DataFrameColumn& values, const DataFrameColumn& groups);

/// The positions of the elements in sorted order. Equal elements stay in their order; NaN comes last in
/// either direction.
TESSEL_API IntVector argSort(const Vector& values, SortDirection direction = SortDirection::ASCENDING);

/// Per row the position of its largest number, the first one of equals. NaN is passed over; a row of
/// nothing else has -1.
TESSEL_API IntVector indexesOfRowMax(const Matrix& matrix);
/// The same for a table; index columns are passed over, the positions are those in the table.
/// @throws NonNumericData
TESSEL_API IntVector indexesOfRowMax(const DataFrame& table);

/// The integers from, from + 1, ..., to; none when `to` lies below `from`.
TESSEL_API IntVector range(int from, int to);

/// prefix + "from", prefix + "from + 1", ...: `count` names. @throws ValueOutOfRange when count < 0.
TESSEL_API StringVector generateNames(const WString& prefix, int from, int count);

/// The elements one after the other with `separator` between them, all between `opening` and `closing`:
/// join({1, 2}, ", ", "{", "}") is "{1, 2}". Numbers in shortest round-trip form.
TESSEL_API WString join(const StringVector& texts, const WString& separator, const WString& opening = {},
                        const WString& closing = {});
TESSEL_API WString join(const IntVector& values, const WString& separator, const WString& opening = {},
                        const WString& closing = {});
TESSEL_API WString join(const Vector& values, const WString& separator, const WString& opening = {},
                        const WString& closing = {});

}  // namespace Tessel::Util
