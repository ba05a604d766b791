#pragma once

#include <map>
#include <string>
#include <vector>

#include <tessel/tessel.h>

namespace CLI {
class App;
}

// The table that a command works on: a CSV file or standard input.

namespace Tessel::Cli {

struct DataOptions {
    std::string path;
    std::string delimiter = ",";
    bool hasNoHeader = false;
    bool hasLiteralQuotes = false;
    std::vector<std::string> missingTexts;
    std::vector<std::string> indexColumns;
    std::vector<std::string> categoricalColumns;
};

/// The options of every command that reads data; the argument for the path is the command's own.
void addDataOptions(CLI::App& command, DataOptions& options);

/// "data.csv", or "standard input" for "-".
std::string sourceName(const std::string& path);
/// A whole text, a model or data, from a file or from standard input. @throws Failure
std::string readAll(const std::string& path);
StringVector toStringVector(const std::vector<std::string>& texts);

/// Data that can be read more than once, as standard input cannot.
class DataSource {
 public:
    explicit DataSource(const DataOptions& options);
    /// For data that were read already.
    DataSource(const DataOptions& options, std::string text);

    /// The table, with index columns marked. Index and categorical columns are text, whatever they look like.
    /// @param types  of further columns; the types of all others are inferred. @throws Failure
    DataFrame read(const std::map<WString, TypeCode>& types = {}) const;

 private:
    const DataOptions& options_;
    std::string text_;
    bool isTextInMemory_ = false;
};

struct TargetOptions {
    std::string target;
    std::string weights;
    std::vector<std::string> features;
    std::vector<std::string> ignored;
};

void addTargetOptions(CLI::App& command, TargetOptions& options);

/// A table cut into what a supervised method learns from.
struct TrainingData {
    DataFrame features;  ///< with the index columns
    DataFrameColumn target;
    Vector weights;  ///< empty when all rows count the same

    int numFeatures() const;
    TrainingData rows(const IntVector& rows) const;
};

/// @throws Failure for a column that is not there
TrainingData cutTable(const DataFrame& table, const TargetOptions& options, const std::string& source);

/// The numbers of a column of weights. @throws Failure
Vector weightsOf(const DataFrame& table, const std::string& column, const std::string& source);

/// A random part of the rows of a table and the rest of them, each in the order of the table.
struct Partition {
    IntVector training, validation;
};
/// @param share  of the rows that are for validation, between 0 and 1. @throws Failure for an empty part
Partition split(int numRows, double share, int seed);

}  // namespace Tessel::Cli
