#include "data/io/xml_formatter.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <tessel/data/convert.h>

#include "data/column_access.h"
#include "data/io/block_writer.h"
#include "data/io/text_formatter.h"

namespace Tessel::IO {
namespace {

constexpr std::size_t kCellsPerBlock = 1 << 16;

/// The text as content of an element or of a quoted attribute.
std::string escaped(WStringView text) {
    WString clean;
    for (const wchar_t c : text) {
        switch (c) {
            case L'&':
                clean += L"&amp;";
                break;
            case L'<':
                clean += L"&lt;";
                break;
            case L'>':
                clean += L"&gt;";
                break;
            case L'"':
                clean += L"&quot;";
                break;
            case L'\t':
                clean += L"&#9;";
                break;
            case L'\n':
                clean += L"&#10;";
                break;
            case L'\r':
                clean += L"&#13;";
                break;
            default:
                clean += c < L' ' || c == 0xFFFE || c == 0xFFFF ? wchar_t{0xFFFD} : c;
        }
    }
    return Convert::toUtf8(clean);
}

std::string attribute(const char* name, WStringView value) {
    return std::string(" ") + name + "=\"" + escaped(value) + '"';
}

struct Column {
    const ColumnCells* cells;
    std::vector<std::string> levels;
};

void appendRow(std::string& text, const std::vector<Column>& columns, int row) {
    for (const Column& column : columns) {
        if (column.cells->isMissing(row)) {
            text += "<cell/>";
            continue;
        }
        text += "<cell>";
        if (column.cells->isNumeric())
            appendNumber(text, column.cells->number(row));
        else
            text += column.levels[static_cast<std::size_t>(column.cells->code(row))];
        text += "</cell>";
    }
}

}  // namespace

void writeXml(const DataFrame& table, std::ostream& stream) {
    stream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<table" << attribute("name", table.getName())
           << ">\n";
    std::vector<Column> columns;
    for (int i = 0; i < table.getNumCols(); ++i) {
        stream << "<column" << attribute("name", table.getColName(i))
               << attribute("type", table.getTypeName(i))
               << (ColumnAccess::isIndex(table, i) ? " index=\"true\"/>\n" : "/>\n");
        Column column{ColumnAccess::cells(table, i).get(), {}};
        if (!column.cells->isNumeric())
            for (const WString& level : column.cells->dictionary().levels())
                column.levels.push_back(escaped(level));
        columns.push_back(std::move(column));
    }
    const RowNames::Pointer& rowNames = ColumnAccess::rowNames(table);
    const auto numRows = static_cast<std::size_t>(table.getNumRows());
    const std::size_t numBlockRows = std::max<std::size_t>(1, kCellsPerBlock / (columns.size() + 1));
    writeBlocks(stream, (numRows + numBlockRows - 1) / numBlockRows, [&](std::size_t i, std::string& text) {
        const std::size_t end = std::min(numRows, (i + 1) * numBlockRows);
        for (std::size_t position = i * numBlockRows; position < end; ++position) {
            const int row = static_cast<int>(position);
            text += rowNames ? "<row" + attribute("name", RowNames::at(rowNames, row)) + ">" : "<row>";
            appendRow(text, columns, row);
            text += "</row>\n";
        }
    });
    stream << "</table>\n";
}

}  // namespace Tessel::IO
