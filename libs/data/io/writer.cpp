#include <sstream>
#include <stdexcept>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/writer.h>

#include "data/files.h"
#include "data/io/spreadsheet.h"
#include "data/io/text_formatter.h"
#include "data/io/xml_formatter.h"

namespace Tessel {

void Writer::writeText(const DataFrame& table, const WString& path, const TextFormat& format) {
    const IO::TextFormatter formatter(table, format);
    Files::write(path, [&](std::ostream& file) { formatter.write(file); });
}

std::string Writer::formatText(const DataFrame& table, const TextFormat& format) {
    std::ostringstream text;
    IO::TextFormatter(table, format).write(text);
    return std::move(text).str();
}

void Writer::writeJson(const DataFrame& table, const WString& path) {
    Files::writeBytes(path, Convert::toUtf8(table.toJson()));
}

void Writer::writeXml(const DataFrame& table, const WString& path) {
    Files::write(path, [&](std::ostream& file) { IO::writeXml(table, file); });
}

void Writer::writeSpreadsheet(const DataFrame& table, const WString& path, bool withRowNames) {
    DataFrameVector tables;
    tables.push_back(table);
    writeSpreadsheet(tables, path, withRowNames);
}

void Writer::writeSpreadsheet(const DataFrameVector& tables, const WString& path, bool withRowNames) {
    std::string workbook;
    try {
        workbook = IO::makeWorkbook(tables, withRowNames);
    } catch (const std::runtime_error&) {
        throw UnableToWriteFile(Convert::toUtf8Lossy(path));
    }
    Files::writeBytes(path, workbook);
}

}  // namespace Tessel
