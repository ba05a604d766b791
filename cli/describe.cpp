#include <algorithm>
#include <limits>
#include <memory>
#include <unordered_map>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "learners.h"
#include "models.h"
#include "output.h"
#include "terminal.h"

namespace Tessel::Cli {
namespace {

struct Options {
    std::string kind;
    DataOptions data;  // its path may be that of a model, or an algorithm
    OutputOptions output;
};

constexpr const char* kExamples = R"(
Examples:
  The columns of a file with their statistics:
    tessel describe iris.csv
    tessel describe iris.csv --table Columns --output columns.csv
  What a model is, and which inputs it needs:
    tessel describe iris.pmml
  The parameters of an algorithm, with defaults and admissible values:
    tessel describe decisionTree --kind regression

A file is taken as data when it ends with .csv, .tsv or .txt, as a model when it ends with .pmml, .xml, .json or
.ladon, and else by its first character.)";

// ---- data

/// The most frequent text, of several the one that appears first, and how often it occurs.
std::pair<WString, int> modeOf(const StringVector& texts) {
    std::unordered_map<WString, int> counts;
    for (const WString& text : texts)
        if (!text.empty()) ++counts[text];
    std::pair<WString, int> mode;
    for (const WString& text : texts)
        if (!text.empty() && counts[text] > mode.second) mode = {text, counts[text]};
    return mode;
}

/// "Columns": a row per column. The statistics of numbers are missing for texts and the other way round.
DataFrame columnsOf(const DataFrame& table) {
    const auto numColumns = static_cast<std::size_t>(table.getNumCols());
    const double none = std::numeric_limits<double>::quiet_NaN();
    const DataFrame numbers = Util::summary(table);
    StringVector types(numColumns), modes(numColumns);
    Vector present(numColumns), missing(numColumns), distinct(numColumns), modeCounts(numColumns, none);
    std::vector<Vector> statistics(static_cast<std::size_t>(numbers.getNumCols()), Vector(numColumns, none));
    int numericRow = 0;
    for (std::size_t i = 0; i < numColumns; ++i) {
        const DataFrameColumn column = table(Util::all, static_cast<int>(i));
        types[i] = column.getTypeName();
        distinct[i] = Util::numUniqueElements(column);
        if (column.isNumeric()) {
            for (std::size_t k = 0; k < statistics.size(); ++k)
                statistics[k][i] = numbers(numericRow, static_cast<int>(k)).toDouble();
            present[i] = numbers(numericRow, L"Count").toDouble();
            ++numericRow;
        } else {
            const StringVector texts = column.toStringVector();
            present[i] = static_cast<double>(
                std::count_if(texts.begin(), texts.end(), [](const WString& text) { return !text.empty(); }));
            const auto [mode, count] = modeOf(texts);
            modes[i] = mode;
            if (count > 0) modeCounts[i] = count;
        }
        missing[i] = table.getNumRows() - present[i];
    }

    DataFrame columns(L"Columns");
    columns.append(DataFrameColumn(L"Type", types));
    columns.append(DataFrameColumn(L"Count", present));
    columns.append(DataFrameColumn(L"Missing", missing));
    columns.append(DataFrameColumn(L"Distinct", distinct));
    for (std::size_t k = 0; k < statistics.size(); ++k) {
        const WString& name = numbers.getColName(static_cast<int>(k));
        if (name != L"Count" && name != L"Missing") columns.append(DataFrameColumn(name, statistics[k]));
    }
    columns.append(DataFrameColumn(L"Most frequent", modes));
    columns.append(DataFrameColumn(L"Frequency", modeCounts));
    columns.setRowNames(table.getColNames());
    return columns;
}

DataFrame dataFacts(const DataFrame& table) {
    DataFrame facts(L"Data");
    facts.append(DataFrameColumn(
        L"Value", Vector{static_cast<double>(table.getNumRows()), static_cast<double>(table.getNumCols())}));
    facts.setRowNames(StringVector{L"#Rows", L"#Columns"});
    return facts;
}

// ---- models

/// "Model": what it is. "Inputs": its variables.
DataFrameVector modelTables(const LoadedModel& model) {
    StringVector labels, values;
    const auto add = [&](const wchar_t* label, const WString& value) {
        if (value.empty()) return;
        labels.push_back(label);
        values.push_back(value);
    };
    add(L"Name", model.getName());
    add(L"Kind", model.getKind());
    add(L"Algorithm", model.getAlgorithm());
    add(L"Target", model.getTargetColName());
    if (model.getKind() == Ladon::TaskKind::CLASSIFICATION) {
        add(L"Classes", Util::join(model.getClasses(), L", "));
        if (!model.getSuccessClass().empty()) {
            add(L"Success class", model.getSuccessClass());
            add(L"Success probability", Convert::toString(model.getSuccessProbability()));
        }
    }
    add(L"Index columns", Util::join(model.getIndexColNames(), L", "));
    DataFrame facts(L"Model"), inputs(L"Inputs");
    facts.append(DataFrameColumn(L"Value", values));
    facts.setRowNames(labels);
    const StringVector names = model.getColNames(), categorical = model.getCategoricalColNames();
    StringVector types;
    for (const WString& name : names)
        types.push_back(categorical.exists(name) ? L"categorical" : L"continuous");
    inputs.append(DataFrameColumn(L"Type", types));
    inputs.setRowNames(names);
    return DataFrameVector(facts, inputs);
}

// ---- the command

bool endsWithOneOf(const std::string& path, std::initializer_list<const char*> endings) {
    return std::any_of(endings.begin(), endings.end(),
                       [&](const char* ending) { return path.ends_with(ending); });
}

/// Model texts are XML or JSON objects.
bool startsAsModel(const std::string& text) {
    std::size_t first = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    first = text.find_first_not_of(" \t\r\n", first);
    return first != std::string::npos && (text[first] == '<' || text[first] == '{');
}

DataFrameVector describeData(const DataSource& source) {
    const DataFrame table = source.read();
    return DataFrameVector(dataFacts(table), columnsOf(table));
}

DataFrameVector describeAlgorithm(const std::string& name, const std::string& kind) {
    const std::unique_ptr<Learner> learner = algorithmOf(name, kind).makeLearner();
    const DataFrameVector tables = learner->estimator().toDataFrameVector();
    DataFrameVector parameters;
    parameters.push_back(tables.at(tables.size() - 1));
    return parameters;
}

DataFrameVector describe(const Options& options) {
    const std::string& path = options.data.path;
    if (isAlgorithm(path)) return describeAlgorithm(path, options.kind);
    if (!options.kind.empty()) throw Failure("--kind is for describing an algorithm: " + algorithmNames());
    if (endsWithOneOf(path, {".csv", ".tsv", ".txt"})) return describeData(DataSource(options.data));
    if (endsWithOneOf(path, {".pmml", ".xml", ".json", ".ladon"})) return modelTables(loadModel(path));
    std::string text = readAll(path);
    if (startsAsModel(text)) return modelTables(modelOf(text, sourceName(path)));
    return describeData(DataSource(options.data, std::move(text)));
}

}  // namespace

void addDescribe(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        *program.add_subcommand("describe", "Tell what data, a model or an algorithm consist of");
    command.footer(kExamples);
    command
        .add_option("WHAT", options->data.path,
                    "A CSV file, a model file, or - for either; or an algorithm: " + algorithmNames())
        ->required()
        ->type_name("");
    command.add_option("--kind", options->kind, "Of an algorithm: classification or regression")
        ->check(CLI::IsMember({"classification", "regression"}).description(""))
        ->type_name("KIND");
    addOutputOptions(command, options->output, true);
    addDataOptions(command, options->data);
    command.callback([options] { printReport(describe(*options), options->output); });
}

}  // namespace Tessel::Cli
