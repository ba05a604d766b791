#include "scoring/text_data.h"

#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/data/reader.h>
#include <tessel/framework/errors.h>

#include "data/json_value.h"
#include "scoring/model_info.h"

namespace Tessel::Scoring {
namespace {

constexpr wchar_t kDelimiters[] = {L',', L'\t', L';', L'|'};

bool isBlank(wchar_t unit) { return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n'; }

// ---- JSON

/// Cells that come row by row, sorted into columns.
class TableFiller {
 public:
    TableFiller(const StringVector& names, const StringVector& types)
        : names_(names), types_(types), numbers_(names.size()), texts_(names.size()) {}

    void add(const web::json::value& cell) {
        if (types_[column_] == kContinuous)
            numbers_[column_].push_back(JSON::toNumber(cell, "A cell"));
        else
            texts_[column_].push_back(textOf(cell));
        if (++column_ == names_.size()) column_ = 0;
    }

    DataFrame finish() {
        DataFrame table;
        for (std::size_t column = 0; column < names_.size(); ++column)
            table.append(types_[column] == kContinuous
                             ? DataFrameColumn(names_[column], std::move(numbers_[column]))
                             : DataFrameColumn(names_[column], texts_[column]));
        return table;
    }

 private:
    static WString textOf(const web::json::value& cell) {
        if (cell.is_null()) return WString();
        if (cell.is_number()) return Convert::toString(JSON::toNumber(cell, "A cell"));
        return JSON::toText(cell, "A cell");
    }

    const StringVector& names_;
    const StringVector& types_;
    std::vector<Vector> numbers_;
    std::vector<StringVector> texts_;
    std::size_t column_ = 0;
};

DataFrame readJSON(const WString& text, const StringVector& names, const StringVector& types) {
    const web::json::value value = JSON::parse(text);
    const web::json::array& elements = JSON::toArray(value, "Data");
    if (elements.size() == 0) throw IncorrectDataFormat();
    TableFiller filler(names, types);
    if (elements.begin()->is_array()) {
        for (const web::json::value& element : elements) {
            const web::json::array& row = JSON::toArray(element, "A row");
            if (row.size() != names.size()) throw IncorrectDataFormat();
            for (const web::json::value& cell : row) filler.add(cell);
        }
    } else {
        if (elements.size() % names.size() != 0) throw IncorrectDataFormat();
        for (const web::json::value& cell : elements) filler.add(cell);
    }
    return filler.finish();
}

// ---- Delimited text

/// The first record with its line end. A stray quote can only make it longer, which does no harm to those
/// who look at the first record of what they get.
WString firstRecord(const WString& text) {
    bool isQuoted = false;
    std::size_t end = 0;
    for (; end < text.size(); ++end) {
        if (text[end] == L'"') isQuoted = !isQuoted;
        if (text[end] == L'\n' && !isQuoted) break;
    }
    return text.substr(0, end + 1);
}

bool arePermuted(StringVector some, StringVector others) {
    std::sort(some.begin(), some.end());
    std::sort(others.begin(), others.end());
    return some == others;
}

/// The cells of the first record when that delimiter cuts it into as many as there are columns, else none.
StringVector cellsOfFirstRecord(const WString& record, wchar_t delimiter, std::size_t numColumns) {
    try {
        TextOptions options;
        options.delimiter = delimiter;
        StringVector cells = Reader::parseText(record, options).getColNames();
        return cells.size() == numColumns ? cells : StringVector();
    } catch (const MalformedFile&) {
        return StringVector();
    }
}

DataFrame readDelimited(const WString& text, const StringVector& names, const StringVector& types) {
    const WString record = firstRecord(text);
    TextOptions options;
    StringVector cells;
    for (const wchar_t delimiter : kDelimiters) {
        options.delimiter = delimiter;
        cells = cellsOfFirstRecord(record, delimiter, names.size());
        if (!cells.empty()) break;
    }
    if (cells.empty()) throw IncorrectDataFormat();
    options.hasHeader = arePermuted(cells, names);
    StringVector defaults;
    for (std::size_t column = 0; column < names.size(); ++column) {
        defaults.push_back(L"Var" + Convert::toString(column + 1));
        options.columnTypes[options.hasHeader ? names[column] : defaults[column]] =
            types[column] == kContinuous ? TypeCode::NUMERIC : TypeCode::TEXT;
    }
    DataFrame table = Reader::parseText(text, options);
    if (table.empty()) throw IncorrectDataFormat();
    if (options.hasHeader) return table(Util::all, names);
    table.setColNames(names);
    return table;
}

}  // namespace

DataFrame readTextData(WString text, const StringVector& names, const StringVector& types) {
    if (text.starts_with(L'\uFEFF')) text.erase(0, 1);  // a byte-order mark
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    if (names.empty() || first == text.end()) throw IncorrectDataFormat();
    // Empty lines in front are no records, except that they are missing cells where there is one column.
    const std::size_t start = names.size() == 1 ? 0 : text.find_first_not_of(L"\r\n");
    try {
        if (*first == L'[') return readJSON(text, names, types);
        return readDelimited(start == 0 ? text : text.substr(start), names, types);
    } catch (const IncorrectDataFormat&) {
        throw;
    } catch (const Exception&) {
        throw IncorrectDataFormat();
    }
}

}  // namespace Tessel::Scoring
