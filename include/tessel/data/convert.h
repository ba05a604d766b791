#pragma once

#include <string>
#include <string_view>

#include <tessel/data/data_frame.h>

/// Conversions between texts, numbers and containers. None depends on the locale.
namespace Tessel::Convert {

TESSEL_API WString toString(int value);
TESSEL_API WString toString(long value);
TESSEL_API WString toString(long long value);
TESSEL_API WString toString(unsigned value);
TESSEL_API WString toString(unsigned long value);
TESSEL_API WString toString(unsigned long long value);
/// The shortest text that reads back to the same double: "0.1", "1e+300", "NaN", "Infinity", "-Infinity".
/// Whole numbers up to 1e15 are written without exponent: "100000".
TESSEL_API WString toString(double value);
/// Fixed-point form with `numDecimals` decimals, 0..17: "3.14". @throws ValueOutOfRange
TESSEL_API WString toString(double value, int numDecimals);
TESSEL_API WString toString(const DataFrameElement& cell);
TESSEL_API WString toString(const WString& text);
/// 17 significant digits, enough to read back the same double.
TESSEL_API WString toDigits(double value);

/// A whole decimal number; blanks around it are ignored. @throws ConversionFailure
TESSEL_API int toInt(const WString& text);
/// A decimal number in fixed or exponent form, or NaN, Inf, Infinity in any case, with optional sign;
/// blanks around it are ignored. @throws ConversionFailure for anything else, the empty text included.
TESSEL_API double toDouble(const WString& text);
/// The same for UTF-8 text, answering false instead of throwing.
TESSEL_API bool tryToDouble(std::string_view text, double& value) noexcept;

/// UTF-8 of a wide text. @throws InvalidEncoding for lone surrogates and values beyond Unicode.
TESSEL_API std::string toUtf8(WStringView text);
/// Like `toUtf8`, but bad units become U+FFFD: for messages, which must not fail.
TESSEL_API std::string toUtf8Lossy(WStringView text);
/// Wide text of UTF-8. @throws InvalidEncoding with the offset of the first malformed byte.
TESSEL_API WString fromUtf8(std::string_view bytes);

/// All cells, column after column; texts are parsed, missing cells become NaN. @throws ConversionFailure
TESSEL_API Vector toDoubleVector(const DataFrame& table);
TESSEL_API Vector toDoubleVector(const DataFrameColumn& column);
TESSEL_API Vector toDoubleVector(const StringVector& texts);
/// All cells as texts, column after column; missing cells become empty texts.
TESSEL_API StringVector toStringVector(const DataFrame& table);
TESSEL_API StringVector toStringVector(const DataFrameColumn& column);
TESSEL_API StringVector toStringVector(const IntVector& values);
/// A one-column table; the column takes the vector's name.
TESSEL_API DataFrame toDataFrame(const Vector& values);
TESSEL_API DataFrame toDataFrame(const StringVector& texts);
TESSEL_API DataFrame toDataFrame(const DataFrameExportable& object);
/// The series of a table: its only numeric column that is not an index column, row names from the index
/// column when there is one. @throws TooFewNumColumns without, NumColumnsMismatch with several such
/// columns, TooFewNumRows without rows.
TESSEL_API DataFrameColumn toTimeSeries(const DataFrame& table);

}  // namespace Tessel::Convert
