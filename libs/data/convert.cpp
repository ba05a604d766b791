#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>

#include "data/column_access.h"
#include "data/number_text.h"

namespace Tessel::Convert {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// The text of a number must be ASCII; anything wider becomes a character that no number has.
std::string narrowed(WStringView text) {
    std::string narrow(text.size(), '\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        narrow[i] = text[i] > 0 && text[i] < 128 ? static_cast<char>(text[i]) : '?';
    return narrow;
}

const char* nonFinite(double value) {
    return std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity";
}

template <class... Format>
WString numberText(double value, Format... format) {
    if (!std::isfinite(value)) {
        const std::string_view text = nonFinite(value);
        return WString(text.begin(), text.end());
    }
    const NumberText text(value, format...);
    return WString(text.begin(), text.end());
}

template <class Integer>
WString integerText(Integer value) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return WString(digits.data(), end.ptr);
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether a decimal number, given without sign, is at least 1: its first significant digit stands before
/// the point after the exponent has moved it. @pre the text is a number in fixed or exponent form
bool isAtLeastOne(std::string_view number) {
    const std::size_t exponentMark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, exponentMark);
    const std::size_t first = digits.find_first_of("123456789");
    if (first == std::string_view::npos) return false;
    const std::size_t point = std::min(digits.find('.'), digits.size());
    // 1 for the digit left of the point, 0 for the digit right of it.
    const auto place = first < point ? static_cast<std::int64_t>(point - first)
                                     : 1 - static_cast<std::int64_t>(first - point);

    // An exponent beyond the length of any text decides alone, whatever its further digits.
    constexpr std::int64_t kLargeExponent = 1'000'000'000'000'000;
    std::string_view exponentText = number.substr(exponentMark);
    std::int64_t exponent = 0;
    for (const char c : exponentText)
        if (isDigit(c)) exponent = std::min(kLargeExponent, exponent * 10 + (c - '0'));
    if (exponentText.find('-') != std::string_view::npos) exponent = -exponent;
    return place + exponent >= 1;
}

}  // namespace

WString toString(int value) { return integerText(value); }
WString toString(long value) { return integerText(value); }
WString toString(long long value) { return integerText(value); }
WString toString(unsigned value) { return integerText(value); }
WString toString(unsigned long value) { return integerText(value); }
WString toString(unsigned long long value) { return integerText(value); }

WString toString(double value) { return numberText(value); }
WString toDigits(double value) { return numberText(value, std::chars_format::general, 17); }

WString toString(double value, int numDecimals) {
    if (numDecimals < 0 || numDecimals > 17) throw ValueOutOfRange("Number of decimals", 0, 17);
    return numberText(value, std::chars_format::fixed, numDecimals);
}

WString toString(const DataFrameElement& cell) { return cell.toString(); }
WString toString(const WString& text) { return text; }

int toInt(const WString& text) {
    const std::string narrow = narrowed(text);
    std::string_view digits = trimmed(narrow);
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-') digits.remove_prefix(1);
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size())
        throw ConversionFailure(toUtf8Lossy(text), "an integer");
    return value;
}

bool tryToDouble(std::string_view text, double& value) noexcept {
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    if (text.empty()) return false;
    double parsed = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (end != text.data() + text.size()) return false;
    if (std::isnan(parsed) && text.back() == ')') return false;  // the C form nan(payload) is no number text
    if (error == std::errc::result_out_of_range) {
        // from_chars leaves the value alone; IEEE reading rounds to zero or infinity.
        const bool isNegative = text.front() == '-';
        parsed =
            isAtLeastOne(text.substr(isNegative ? 1 : 0)) ? std::numeric_limits<double>::infinity() : 0.0;
        if (isNegative) parsed = -parsed;
    } else if (error != std::errc()) {
        return false;
    }
    value = parsed;
    return true;
}

double toDouble(const WString& text) {
    double value = 0.0;
    if (!tryToDouble(narrowed(text), value)) throw ConversionFailure(toUtf8Lossy(text), "a number");
    return value;
}

Vector toDoubleVector(const DataFrame& table) {
    Vector all;
    for (int column = 0; column < table.getNumCols(); ++column)
        all.append(table(Util::all, column).toDoubleVector());
    return all;
}

Vector toDoubleVector(const DataFrameColumn& column) { return column.toDoubleVector(); }

Vector toDoubleVector(const StringVector& texts) {
    Vector numbers;
    numbers.reserve(texts.size());
    for (const WString& text : texts)
        numbers.push_back(text.empty() ? std::numeric_limits<double>::quiet_NaN() : toDouble(text));
    numbers.setName(texts.getName());
    return numbers;
}

StringVector toStringVector(const DataFrame& table) {
    StringVector all;
    for (int column = 0; column < table.getNumCols(); ++column)
        all.append(table(Util::all, column).toStringVector());
    return all;
}

StringVector toStringVector(const DataFrameColumn& column) { return column.toStringVector(); }

StringVector toStringVector(const IntVector& values) {
    StringVector texts;
    texts.reserve(values.size());
    for (const int value : values) texts.push_back(toString(value));
    texts.setName(values.getName());
    return texts;
}

DataFrame toDataFrame(const Vector& values) {
    DataFrame table;
    table.append(values);
    return table;
}

DataFrame toDataFrame(const StringVector& texts) {
    DataFrame table;
    table.append(texts);
    return table;
}

DataFrame toDataFrame(const DataFrameExportable& object) { return object.toDataFrame(); }

DataFrameColumn toTimeSeries(const DataFrame& table) {
    IntVector candidates;
    for (int column = 0; column < table.getNumCols(); ++column)
        if (table.isNumeric(column) && !ColumnAccess::isIndex(table, column)) candidates.push_back(column);
    if (candidates.empty()) throw TooFewNumColumns(0);
    if (candidates.size() > 1) throw NumColumnsMismatch(1, static_cast<std::int32_t>(candidates.size()));
    if (table.getNumRows() == 0) throw TooFewNumRows(0);
    DataFrameColumn series = table(Util::all, candidates.front());
    const IntVector indexColumns = table.getIndexedColIndices();
    if (!indexColumns.empty()) series.setRowNames(table(Util::all, indexColumns.front()).toStringVector());
    return series;
}

}  // namespace Tessel::Convert
