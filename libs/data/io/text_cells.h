#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace Tessel::IO {

/// A record that breaks the rules, where it begins and which column, from 0, breaks them.
struct BadRecord {
    const char* reason;
    const char* begin;
    std::size_t column;
};

/// The content of a cell as it stands in the text; of a quoted cell what is between the quotes.
struct Cell {
    const char* begin;
    const char* end;
    bool isQuoted = false;
    bool hasDoubledQuotes = false;

    std::string_view text() const { return {begin, static_cast<std::size_t>(end - begin)}; }
};

inline std::string_view withoutBlanks(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// Replaces doubled quotes by single ones.
inline std::string undoubled(std::string_view text) {
    std::string single;
    single.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        single += text[i];
        if (text[i] == '"') ++i;
    }
    return single;
}

/// Goes through delimited text cell by cell.
struct CellCursor {
    const char* position;
    const char* end;
    char delimiter;

    bool atEnd() const { return position == end; }
    bool atDelimiter() const { return position != end && *position == delimiter; }
    bool atLineEnd() const { return lineEndLength() != 0; }
    /// At what ends a cell: delimiter, line end or end of the text.
    bool atCellEnd() const { return atEnd() || *position == delimiter || atLineEnd(); }
    void skipLineEnd() { position += lineEndLength(); }

    /// The cell that begins here; the cursor moves to what ends it. Errors are thrown as `BadRecord` of the
    /// record and column that are given.
    Cell next(const char* record, std::size_t column) {
        return position != end && *position == '"' ? nextQuoted(record, column) : nextPlain(record, column);
    }

 private:
    /// LF, CR LF, or a CR as the very last character; any other CR is a character like others.
    int lineEndLength() const {
        if (position == end) return 0;
        if (*position == '\n') return 1;
        if (*position != '\r') return 0;
        return position + 1 == end ? 1 : position[1] == '\n' ? 2 : 0;
    }

    Cell nextPlain(const char* record, std::size_t column) {
        const char* const begin = position;
        while (position != end && *position != delimiter && *position != '\n' && *position != '"') ++position;
        if (position != end && *position == '"')
            throw BadRecord{"a quote inside a cell that does not begin with one", record, column};
        const bool endsLine = position == end || *position == '\n';
        if (endsLine && position != begin && position[-1] == '\r') --position;
        return {begin, position};
    }

    Cell nextQuoted(const char* record, std::size_t column) {
        Cell cell{++position, position, true};
        for (;; position += 2) {
            position = static_cast<const char*>(
                std::memchr(position, '"', static_cast<std::size_t>(end - position)));
            if (position == nullptr) throw BadRecord{"a quote is not closed", record, column};
            if (position + 1 == end || position[1] != '"') break;
            cell.hasDoubledQuotes = true;
        }
        cell.end = position++;
        if (!atCellEnd()) throw BadRecord{"text behind a closing quote", record, column};
        return cell;
    }
};

}  // namespace Tessel::IO
