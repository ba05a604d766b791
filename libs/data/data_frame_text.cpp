#include <algorithm>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>

#include "data/column_access.h"
#include "data/json_text.h"
#include "data/json_value.h"
#include "data/text_table.h"

// Tables as text for people and as JSON.

namespace Tessel {
namespace {

WString cellText(const ColumnCells& cells, int row) {
    return cells.isNumeric() ? TextTable::numberText(cells.number(row)) : cells.text(row);
}

void appendCells(WString& json, const ColumnCells& cells) {
    if (cells.isNumeric()) {
        JSON::appendArray(json, cells.numbers(), JSON::appendNumber);
        return;
    }
    const Dictionary& dictionary = cells.dictionary();
    JSON::appendArray(json, cells.codes(), [&](WString& text, std::int32_t code) {
        if (code == kMissingCode)
            text += L"null";
        else
            JSON::appendString(text, dictionary[code]);
    });
}

StringVector textCells(const web::json::value& value) {
    StringVector texts;
    texts.reserve(JSON::toArray(value, "the values of a column").size());
    for (const web::json::value& cell : value.as_array())
        texts.push_back(cell.is_null() ? WString() : JSON::toText(cell, "a text cell"));
    return texts;
}

DataFrameColumn readColumn(const web::json::value& value) {
    const JSON::Members members(value, "a column");
    WString name = JSON::toText(members.at("name"), "the name of a column");
    const WString type = JSON::toText(members.at("type"), "the type of a column");
    const web::json::value& values = members.at("values");
    if (type == L"numeric")
        return DataFrameColumn(std::move(name), JSON::toVector(values, "the values of a column"));
    if (type == L"text") return DataFrameColumn(std::move(name), textCells(values));
    throw MalformedJSON("the type of a column must be \"numeric\" or \"text\".");
}

}  // namespace

WString DataFrame::toString(int maxRows) const {
    if (maxRows < 0) throw ValueOutOfRange("maxRows", 0, std::numeric_limits<std::int32_t>::max());
    const int numShown = std::min(maxRows, getNumRows());
    const auto linesUnder = [&](const WString& header, auto textOfRow) {
        std::vector<WString> lines{header};
        for (int row = 0; row < numShown; ++row) lines.push_back(textOfRow(row));
        return lines;
    };

    TextTable lines;
    lines.addColumn(linesUnder(L"", [&](int row) { return RowNames::at(rowNames_, row); }),
                    TextTable::Align::LEFT);
    for (const Column& column : columns_)
        lines.addColumn(linesUnder(column.name, [&](int row) { return cellText(*column.cells, row); }),
                        column.cells->isNumeric() ? TextTable::Align::RIGHT : TextTable::Align::LEFT);

    WString text = name_.empty() ? WString() : name_ + L'\n';
    if (!columns_.empty()) text += lines.toString();
    if (const int numHidden = getNumRows() - numShown; numHidden > 0)
        text += L"... " + Convert::toString(numHidden) + (numHidden == 1 ? L" more row\n" : L" more rows\n");
    return text;
}

WString DataFrame::toJson() const {
    WString json = L"{\"name\":";
    JSON::appendString(json, name_);
    if (rowNames_ && !columns_.empty()) {
        json += L",\"rowNames\":";
        JSON::appendArray(json, getRowNames(), JSON::appendString);
    }
    json += L",\"indexColumns\":";
    JSON::appendArray(json, getIndexedColIndices(), JSON::appendNumber);
    json += L",\"columns\":";
    JSON::appendArray(json, columns_, [](WString& text, const Column& column) {
        text += L"{\"name\":";
        JSON::appendString(text, column.name);
        text += column.cells->isNumeric() ? L",\"type\":\"numeric\",\"values\":"
                                          : L",\"type\":\"text\",\"values\":";
        appendCells(text, *column.cells);
        text += L'}';
    });
    json += L'}';
    return json;
}

void DataFrame::fromJsonString(const WString& json) {
    const web::json::value tree = JSON::parse(json);
    const JSON::Members members(tree, "the table");
    DataFrame table(JSON::toText(members.at("name"), "the name of the table"));
    for (const web::json::value& value : JSON::toArray(members.at("columns"), "the columns")) {
        const DataFrameColumn column = readColumn(value);
        if (!table.columns_.empty() && column.getNumRows() != table.getNumRows())
            throw MalformedJSON("the columns must be equally long.");
        table.append(column);
    }
    for (const web::json::value& value : JSON::toArray(members.at("indexColumns"), "the index columns")) {
        const int position = JSON::toInteger(value, "an index column");
        if (position < 0 || position >= table.getNumCols())
            throw MalformedJSON("an index column does not exist.");
        table.columns_[static_cast<std::size_t>(position)].isIndex = true;
    }
    if (const web::json::value* rowNames = members.find("rowNames")) {
        const StringVector names = JSON::toStringVector(*rowNames, "the row names");
        if (names.size() != static_cast<std::size_t>(table.getNumRows()))
            throw MalformedJSON("there must be as many row names as rows.");
        table.setRowNames(names);
    }
    *this = std::move(table);
}

}  // namespace Tessel
