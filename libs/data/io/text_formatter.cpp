#include "data/io/text_formatter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "data/column_access.h"
#include "data/io/block_writer.h"
#include "data/io/delimiter.h"
#include "data/io/parallel.h"
#include "data/number_text.h"

namespace Tessel::IO {
namespace {

constexpr std::size_t kCellsPerBlock = 1 << 16;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool looksLikeNumber(std::string_view text) {
    double number = 0.0;
    return Convert::tryToDouble(text, number);
}

void appendQuoted(std::string& text, std::string_view cell) {
    text += '"';
    for (const char c : cell) text.append(c == '"' ? 2 : 1, c);
    text += '"';
}

template <class... Format>
void appendDigits(std::string& text, double value, Format... format) {
    if (std::isnan(value)) return;
    if (std::isinf(value)) {
        text += value > 0 ? "Infinity" : "-Infinity";
        return;
    }
    const NumberText digits(value, format...);
    text.append(digits.begin(), digits.end());
}

}  // namespace

void appendNumber(std::string& text, double value) { appendDigits(text, value); }

TextFormatter::TextFormatter(const DataFrame& table, const TextFormat& format)
    : table_(table), format_(format), delimiter_(checkedDelimiter(format.delimiter)) {
    if (format.numDecimals < -1 || format.numDecimals > 17)
        throw ValueOutOfRange("Number of decimals", -1, 17);
    numbersMayHoldDelimiter_ = mayStandInNumber(delimiter_) ||
                               std::string_view("Infinity").find(delimiter_) != std::string_view::npos;
    columns_.resize(static_cast<std::size_t>(table.getNumCols()));
    const std::size_t numCells = columns_.size() * static_cast<std::size_t>(table.getNumRows());
    forEachIndex(columns_.size(), numCells,
                 [&](std::size_t i) { columns_[i] = prepare(table, static_cast<int>(i)); });
}

TextFormatter::Column TextFormatter::prepare(const DataFrame& table, int column) const {
    const ColumnCells& cells = *ColumnAccess::cells(table, column);
    Column prepared{};
    prepared.isNumeric = cells.isNumeric();
    if (prepared.isNumeric) {
        prepared.numbers = cells.numbers();
        return prepared;
    }
    prepared.codes = cells.codes();
    prepared.levels.resize(cells.dictionary().levels().size());
    // Without quotes a column whose texts are all numbers would be read as numbers.
    bool looksNumeric = true;
    for (const std::int32_t code : cells.presentCodes()) {
        const std::string text = Convert::toUtf8(cells.dictionary()[code]);
        looksNumeric = looksNumeric && looksLikeNumber(text);
        prepared.levels[static_cast<std::size_t>(code)] = quotedWhereNeeded(text);
    }
    if (!looksNumeric) return prepared;
    for (std::string& level : prepared.levels)
        if (!level.empty() && level.front() != '"') level = '"' + level + '"';
    if (cells.presentCodes().empty()) prepared.missing = "\"\"";
    return prepared;
}

bool TextFormatter::needsQuotes(std::string_view text) const {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    const auto isSpecial = [this](char c) { return c == delimiter_ || c == '"' || c == '\n' || c == '\r'; };
    if (text.empty()) return false;
    return isBlank(text.front()) || isBlank(text.back()) || text == "NA" ||
           text.starts_with(kByteOrderMark) || std::any_of(text.begin(), text.end(), isSpecial);
}

std::string TextFormatter::quotedWhereNeeded(std::string text) const {
    if (!needsQuotes(text)) return text;
    std::string quoted;
    appendQuoted(quoted, text);
    return quoted;
}

void TextFormatter::write(std::ostream& stream) const {
    if (columns_.empty()) return;
    if (format_.hasHeader) {
        std::string header;
        appendHeader(header);
        stream.write(header.data(), static_cast<std::streamsize>(header.size()));
    }
    const auto numRows = static_cast<std::size_t>(table_.getNumRows());
    const std::size_t numBlockRows = std::max<std::size_t>(1, kCellsPerBlock / columns_.size());
    writeBlocks(stream, (numRows + numBlockRows - 1) / numBlockRows, [&](std::size_t i, std::string& text) {
        const std::size_t begin = i * numBlockRows, end = std::min(numRows, begin + numBlockRows);
        appendRows(static_cast<int>(begin), static_cast<int>(end), text);
    });
}

void TextFormatter::appendHeader(std::string& text) const {
    if (!format_.rowNamesColumn.empty())
        text += quotedWhereNeeded(Convert::toUtf8(format_.rowNamesColumn)) + delimiter_;
    for (int column = 0; column < table_.getNumCols(); ++column) {
        if (column > 0) text += delimiter_;
        text += quotedWhereNeeded(Convert::toUtf8(table_.getColName(column)));
    }
    text += lineEnd();
}

void TextFormatter::appendRows(int begin, int end, std::string& text) const {
    const RowNames::Pointer& rowNames = ColumnAccess::rowNames(table_);
    for (int row = begin; row < end; ++row) {
        if (!format_.rowNamesColumn.empty())
            text += quotedWhereNeeded(Convert::toUtf8(RowNames::at(rowNames, row))) + delimiter_;
        bool isFirst = true;
        for (const Column& column : columns_) {
            if (!isFirst) text += delimiter_;
            isFirst = false;
            if (column.isNumeric) {
                appendFormatted(text, column.numbers[static_cast<std::size_t>(row)]);
            } else {
                const std::int32_t code = column.codes[static_cast<std::size_t>(row)];
                text += code == kMissingCode ? column.missing : column.levels[static_cast<std::size_t>(code)];
            }
        }
        text += lineEnd();
    }
}

void TextFormatter::appendFormatted(std::string& text, double number) const {
    const std::size_t begin = text.size();
    if (format_.numDecimals < 0)
        appendNumber(text, number);
    else
        appendDigits(text, number, std::chars_format::fixed, format_.numDecimals);
    if (!numbersMayHoldDelimiter_ || text.find(delimiter_, begin) == std::string::npos) return;
    text.insert(begin, 1, '"');
    text += '"';
}

}  // namespace Tessel::IO
