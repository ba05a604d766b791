#pragma once

#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include <tessel/data/data_frame.h>
#include <tessel/data/writer.h>

namespace Tessel::IO {

/// Appends the shortest text that reads back to the same bits; NaN as nothing.
void appendNumber(std::string& text, double value);

/// The rows of a table as delimited text.
class TextFormatter {
 public:
    /// Checks the format and prepares the texts of all columns. @pre the table outlives this object
    TextFormatter(const DataFrame& table, const TextFormat& format);
    void write(std::ostream& stream) const;

 private:
    struct Column {
        std::span<const double> numbers;      // of a numeric column,
        std::span<const std::int32_t> codes;  // of a text column
        std::vector<std::string> levels;      // with their quotes where they need them
        std::string missing;
        bool isNumeric;
    };

    Column prepare(const DataFrame& table, int column) const;
    const char* lineEnd() const { return format_.endsWithLineFeed ? "\n" : "\r\n"; }
    bool needsQuotes(std::string_view text) const;
    std::string quotedWhereNeeded(std::string text) const;
    void appendHeader(std::string& text) const;
    void appendRows(int begin, int end, std::string& text) const;
    void appendFormatted(std::string& text, double number) const;

    const DataFrame& table_;
    const TextFormat format_;
    const char delimiter_;
    bool numbersMayHoldDelimiter_;
    std::vector<Column> columns_;
};

}  // namespace Tessel::IO
