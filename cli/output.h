#pragma once

#include <string>

#include <tessel/tessel.h>

namespace CLI {
class App;
}

// How results leave the program: as CSV, as JSON or as aligned tables for people.

namespace Tessel::Cli {

struct OutputOptions {
    std::string path;
    std::string format;  ///< "csv", "json", "table"; empty: by the ending of the path, else the command's own
    std::string table;   ///< of several tables the one to print; empty: all
    int maxRows = 60;    ///< of a table for people
};

/// @param ofSeveral  whether the command makes several tables, of which one can be chosen
void addOutputOptions(CLI::App& command, OutputOptions& options, bool ofSeveral);

/// Prints one table of data: its rows are those of the input, so that their names say nothing.
void printData(const DataFrame& table, const OutputOptions& options);

/// Prints tables that report something; the names of their rows belong to them.
/// @throws Failure for several tables as CSV, which holds one, and for a table that is not there
void printReport(const DataFrameVector& tables, const OutputOptions& options);

/// The format that was asked for. @param usual  for a command without `--format` and without telling ending
std::string formatOf(const OutputOptions& options, const std::string& usual);

}  // namespace Tessel::Cli
