#include "output.h"

#include <limits>

#include <CLI/CLI.hpp>

#include "terminal.h"

namespace Tessel::Cli {
namespace {

/// The header of the names of the rows; empty when they have only the default names "Record 1", ...
WString rowNamesHeader(const DataFrame& table) {
    if (table.getNumRows() == 0 || table.getRowName(0) == L"Record 1") return {};
    return table.isColumn(L"Name") ? L"Label" : L"Name";
}

void printCSV(const DataFrame& table, const OutputOptions& options, const WString& rowNamesColumn) {
    TextFormat format;
    format.rowNamesColumn = rowNamesColumn;
    format.endsWithLineFeed = true;
    writeBytes(Writer::formatText(table, format), options.path);
}

}  // namespace

void addOutputOptions(CLI::App& command, OutputOptions& options, bool ofSeveral) {
    command.add_option("-o,--output", options.path, "The file to write; standard output unless given")
        ->type_name("FILE")
        ->group("Output");
    command
        .add_option("--format", options.format,
                    ofSeveral ? "csv, json or table; by the ending of the file, else table"
                              : "csv, json or table; by the ending of the file, else csv")
        ->check(CLI::IsMember({"csv", "json", "table"}).description(""))
        ->type_name("FORMAT")
        ->group("Output");
    command.add_option("--rows", options.maxRows, "Rows to show of a table for people")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""))
        ->capture_default_str()
        ->type_name("NUMBER")
        ->group("Output");
    if (!ofSeveral) return;
    command.add_option("--table", options.table, "Print this one of the tables only")
        ->type_name("NAME")
        ->group("Output");
}

std::string formatOf(const OutputOptions& options, const std::string& usual) {
    if (!options.format.empty()) return options.format;
    if (options.path.ends_with(".csv")) return "csv";
    if (options.path.ends_with(".json")) return "json";
    if (options.path.ends_with(".txt")) return "table";
    return usual;
}

void printData(const DataFrame& table, const OutputOptions& options) {
    const std::string format = formatOf(options, "csv");
    if (format == "json") return writeBytes(Convert::toUtf8(table.toJson()) + "\n", options.path);
    if (format == "table") return writeBytes(Convert::toUtf8(table.toString(options.maxRows)), options.path);
    printCSV(table, options, L"");
}

void printReport(const DataFrameVector& tables, const OutputOptions& options) {
    StringVector names;
    for (const DataFrame& table : tables) names.push_back(table.getName());
    DataFrameVector chosen = tables;
    if (!options.table.empty()) {
        const WString name = Convert::fromUtf8(options.table);
        if (!names.exists(name))
            throw Failure("there is no table '" + options.table + "'; the tables are " +
                          Convert::toUtf8(Util::join(names, L", ")));
        chosen = DataFrameVector();
        chosen.push_back(tables.at(name));
    }

    const std::string format = formatOf(options, "table");
    if (format == "csv") {
        if (chosen.size() != 1)
            throw Failure("CSV holds one table; choose it with --table: " +
                          Convert::toUtf8(Util::join(names, L", ")));
        return printCSV(chosen[0], options, rowNamesHeader(chosen[0]));
    }
    WString text;
    if (format == "json") {
        StringVector objects;
        for (const DataFrame& table : chosen) objects.push_back(table.toJson());
        text = (options.table.empty() ? Util::join(objects, L",\n", L"[", L"]") : objects[0]) + L"\n";
    } else {
        for (const DataFrame& table : chosen)
            text += (text.empty() ? L"" : L"\n") + table.toString(options.maxRows);
    }
    writeBytes(Convert::toUtf8(text), options.path);
}

}  // namespace Tessel::Cli
