#include "data.h"

#include <algorithm>
#include <cmath>

#include <CLI/CLI.hpp>

#include "terminal.h"

namespace Tessel::Cli {
namespace {

wchar_t delimiterOf(const std::string& text) {
    if (text == "tab" || text == "\\t") return L'\t';
    const WString wide = Convert::fromUtf8(text);
    if (wide.size() != 1) throw Failure("the delimiter is one character or the word tab, not '" + text + "'");
    return wide.front();
}

void requireColumn(const DataFrame& table, const WString& column, const std::string& source) {
    if (table.isColumn(column)) return;
    throw Failure(source + ": there is no column '" + Convert::toUtf8(column) + "'; the columns are " +
                  Convert::toUtf8(Util::join(table.getColNames(), L", ")));
}

}  // namespace

void addDataOptions(CLI::App& command, DataOptions& options) {
    const auto addList = [&](const char* name, std::vector<std::string>& list, const char* text) {
        command.add_option(name, list, text)
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("COLUMNS")
            ->group("Data");
    };
    command
        .add_option("--delimiter", options.delimiter, "What separates cells: a character, or the word tab")
        ->capture_default_str()
        ->type_name("CHARACTER")
        ->group("Data");
    command
        .add_flag("--no-header", options.hasNoHeader, "The first line is data; columns are Var1, Var2, ...")
        ->group("Data");
    command
        .add_option("--missing", options.missingTexts,
                    "A text that stands for a missing cell; repeatable; NA unless given")
        ->allow_extra_args(false)
        ->type_name("TEXT")
        ->group("Data");
    command
        .add_flag("--literal-quotes", options.hasLiteralQuotes,
                  "Quoted cells are texts, even when they look like numbers")
        ->group("Data");
    addList("--index", options.indexColumns, "Columns that identify rows and are no inputs");
    addList("--categorical", options.categoricalColumns,
            "Columns whose numbers are names of categories; text columns are categorical anyway");
}

std::string sourceName(const std::string& path) { return path == "-" ? "standard input" : path; }

std::string readAll(const std::string& path) {
    const Progress progress("reading " + sourceName(path));
    if (path == "-") return readStandardInput();
    try {
        return Convert::toUtf8(Util::readFile(Convert::fromUtf8(path)));
    } catch (const FileNotFound&) {
        throw Failure(path + ": cannot be read");
    } catch (const Exception& error) {
        throw Failure(path + ": " + error.what());
    }
}

StringVector toStringVector(const std::vector<std::string>& texts) {
    StringVector wide;
    for (const std::string& text : texts) wide.push_back(Convert::fromUtf8(text));
    return wide;
}

DataSource::DataSource(const DataOptions& options) : options_(options) {
    if (options.path != "-") return;
    text_ = readStandardInput();
    isTextInMemory_ = true;
}

DataSource::DataSource(const DataOptions& options, std::string text)
    : options_(options), text_(std::move(text)), isTextInMemory_(true) {}

DataFrame DataSource::read(const std::map<WString, TypeCode>& types) const {
    TextOptions format;
    format.delimiter = delimiterOf(options_.delimiter);
    format.hasHeader = !options_.hasNoHeader;
    format.literalQuotes = options_.hasLiteralQuotes;
    if (!options_.missingTexts.empty()) format.missingTexts = toStringVector(options_.missingTexts);
    format.columnTypes = types;
    format.indexColumns = toStringVector(options_.indexColumns);
    for (const WString& column : format.indexColumns) format.columnTypes[column] = TypeCode::TEXT;
    for (const WString& column : toStringVector(options_.categoricalColumns))
        format.columnTypes[column] = TypeCode::TEXT;

    const std::string source = sourceName(options_.path);
    const Progress progress("reading " + source);
    try {
        DataFrame table = isTextInMemory_ ? Reader::parseText(text_, format)
                                          : Reader::readText(Convert::fromUtf8(options_.path), format);
        if (table.getNumCols() == 0) throw Failure(source + ": the file is empty");
        return table;
    } catch (const FileNotFound&) {
        throw Failure(source + ": cannot be read");
    } catch (const NonExistingNamedIndex& error) {
        throw Failure(source + ": " + error.what() + " (a column named by an option)");
    } catch (const Exception& error) {
        throw Failure(source + ": " + error.what());
    }
}

void addTargetOptions(CLI::App& command, TargetOptions& options) {
    const auto addList = [&](const char* name, std::vector<std::string>& list, const char* text) {
        return command.add_option(name, list, text)
            ->delimiter(',')
            ->allow_extra_args(false)
            ->type_name("COLUMNS")
            ->group("Columns");
    };
    command.add_option("--target", options.target, "The column to predict")
        ->type_name("COLUMN")
        ->group("Columns");
    CLI::Option* const features =
        addList("--features", options.features, "The inputs; all other columns unless given");
    addList("--ignore", options.ignored, "Columns that are no inputs")->excludes(features);
    command.add_option("--weights", options.weights, "The column of the observation weights")
        ->type_name("COLUMN")
        ->group("Columns");
}

int TrainingData::numFeatures() const {
    return features.getNumCols() - static_cast<int>(features.getIndexedColIndices().size());
}

TrainingData TrainingData::rows(const IntVector& rows) const {
    return {features(rows, Util::all), target.select(rows),
            weights.empty() ? weights : Util::bind(weights, rows)};
}

TrainingData cutTable(const DataFrame& table, const TargetOptions& options, const std::string& source) {
    if (options.target.empty())
        throw Failure("--target is needed: the column to predict; the columns are " +
                      Convert::toUtf8(Util::join(table.getColNames(), L", ")));
    const WString target = Convert::fromUtf8(options.target);
    StringVector others = toStringVector(options.ignored);
    others.push_back(target);
    if (!options.weights.empty()) others.push_back(Convert::fromUtf8(options.weights));
    for (const WString& column : others) requireColumn(table, column, source);

    StringVector features = toStringVector(options.features);
    for (const WString& column : features) requireColumn(table, column, source);
    if (features.empty()) {
        for (const WString& column : table.getColNames())
            if (!others.exists(column)) features.push_back(column);
    } else {
        if (features.exists(target)) throw Failure("the target is among the --features");
        features.append(table.getIndexedColNames());
    }
    TrainingData data{table(Util::all, features), table(Util::all, target), {}};
    if (!options.weights.empty()) data.weights = weightsOf(table, options.weights, source);
    if (data.numFeatures() == 0) throw Failure(source + ": there is no column left to predict from");
    return data;
}

Vector weightsOf(const DataFrame& table, const std::string& column, const std::string& source) {
    const WString name = Convert::fromUtf8(column);
    requireColumn(table, name, source);
    if (!table.isNumeric(name))
        throw Failure(source + ": the weights in column '" + column + "' are no numbers");
    return table(Util::all, name).toDoubleVector();
}

Partition split(int numRows, double share, int seed) {
    const int numValidation = static_cast<int>(std::lround(share * numRows));
    if (numValidation < 1 || numValidation >= numRows)
        throw Failure("a validation part of " + Convert::toUtf8(Convert::toString(share)) +
                      " leaves one of " + std::to_string(numRows) + " rows' two parts empty");
    Partition partition;
    partition.validation =
        Util::sample(numRows, numValidation, seed, Sampling::ReplaceType::WITHOUT_REPLACEMENT);
    std::sort(partition.validation.begin(), partition.validation.end());
    auto next = partition.validation.begin();
    for (int row = 0; row < numRows; ++row) {
        if (next != partition.validation.end() && *next == row)
            ++next;
        else
            partition.training.push_back(row);
    }
    return partition;
}

}  // namespace Tessel::Cli
