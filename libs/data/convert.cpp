#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>

#include "data/column_access.h"

namespace Tessel::Convert {
namespace {

/// Room for any double in shortest or 17-digit form; fixed form needs 309 digits more.
constexpr std::size_t kNumberLength = 32;

WString widen(const char* first, const char* last) { return WString(first, last); }

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
    std::array<char, kNumberLength> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
    return widen(buffer.data(), end.ptr);
}

}  // namespace

WString toString(int value) {
    std::array<char, kNumberLength> buffer;
    return widen(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr);
}

WString toString(double value) { return numberText(value); }
WString toDigits(double value) { return numberText(value, std::chars_format::general, 17); }

WString toString(double value, int numDecimals) {
    if (numDecimals < 0 || numDecimals > 17) throw ValueOutOfRange("Number of decimals", 0, 17);
    if (!std::isfinite(value)) return toString(value);
    std::array<char, kNumberLength + 310> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                   std::chars_format::fixed, numDecimals);
    return widen(buffer.data(), end.ptr);
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
        const std::size_t exponent = text.find_first_of("eE");
        const bool isTiny = exponent != std::string_view::npos
                                ? text[exponent + 1] == '-'
                                : text.front() == '0' || text.starts_with("-0") || text.starts_with('.');
        parsed = isTiny ? 0.0 : std::numeric_limits<double>::infinity();
        if (text.front() == '-') parsed = -parsed;
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
