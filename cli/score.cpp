#include <memory>
#include <optional>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "models.h"
#include "output.h"
#include "terminal.h"

namespace Tessel::Cli {
namespace {

struct Options {
    std::string model;
    DataOptions data;
    OutputOptions output;
    bool withInput = false;
    bool withPrediction = false;
    std::string successClass;
    std::optional<double> cutOff;
};

constexpr const char* kScoreExamples = R"(
Examples:
  tessel score iris.pmml new.csv
  tessel score iris.pmml new.csv --with-input --output scored.csv
  cat new.csv | tessel score iris.json - --format json
  Predict "malignant" when its probability is at least 0.2:
    tessel score tumours.pmml new.csv --success-class malignant --cutoff 0.2

The columns of the data are found by their names; further columns do no harm. Index columns, those of the model
and of --index, come first in the output.)";

constexpr const char* kPosteriorsExamples = R"(
Examples:
  tessel posteriors iris.pmml new.csv
  tessel posteriors iris.pmml new.csv --with-prediction --with-input --output scored.csv

The output has a column for each class, with its probability.)";

/// The columns that stand before the scores: all of the input, or those that identify the rows.
DataFrame leadingColumns(const DataFrame& table, const StringVector& modelIndex, bool withInput) {
    if (withInput) return table;
    StringVector names = table.getIndexedColNames();
    for (const WString& column : modelIndex)
        if (table.isColumn(column) && !names.exists(column)) names.push_back(column);
    return table(Util::all, names);
}

void run(const Options& options, bool withPosteriors) {
    if (options.model == "-" && options.data.path == "-")
        throw Failure("model and data cannot both come from standard input");
    LoadedModel model = loadModel(options.model);
    const bool isAboutClasses = withPosteriors || !options.successClass.empty() || options.cutOff;
    if (isAboutClasses && model.getKind() != Ladon::TaskKind::CLASSIFICATION)
        throw Failure(sourceName(options.model) + ": is no classifier: it has no classes and probabilities");
    setClassRule(model, options.successClass, options.cutOff);

    const std::string source = sourceName(options.data.path);
    const DataFrame table = readFor(model, DataSource(options.data), source);
    DataFrame scored = leadingColumns(table, model.getIndexColNames(), options.withInput);
    {
        const Progress progress("scoring " + std::to_string(table.getNumRows()) + " rows");
        if (!withPosteriors || options.withPrediction) scored = Util::colBind(scored, model.predict(table));
        if (withPosteriors) scored = Util::colBind(scored, model.posteriorProbability(table));
    }
    scored.setName(withPosteriors ? L"Posterior Probabilities" : L"Scores");
    printData(scored, options.output);
}

std::pair<CLI::App*, std::shared_ptr<Options>> addCommand(CLI::App& program, const char* name,
                                                          const char* description, const char* examples) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = *program.add_subcommand(name, description);
    command.footer(examples);
    command.add_option("MODEL", options->model, "A PMML, JSON or Ladon file, or -")
        ->required()
        ->type_name("");
    command.add_option("DATA", options->data.path, "A CSV file, or - for standard input")
        ->required()
        ->type_name("");
    command.add_flag("--with-input", options->withInput, "Put the columns of the data before the scores");
    command.add_option("--success-class", options->successClass, "The class that the cut-off is for")
        ->type_name("CLASS");
    command
        .add_option(
            "--cutoff", options->cutOff,
            "The least probability to predict the success class of two; that of the model unless given")
        ->type_name("NUMBER");
    addOutputOptions(command, options->output, false);
    addDataOptions(command, options->data);
    return {&command, options};
}

}  // namespace

void addScore(CLI::App& program) {
    const auto [command, options] =
        addCommand(program, "score", "Predict the target of new rows", kScoreExamples);
    command->callback([options = options] { run(*options, false); });
}

void addPosteriors(CLI::App& program) {
    const auto [command, options] = addCommand(
        program, "posteriors", "Tell the probabilities of the classes of new rows", kPosteriorsExamples);
    command->add_flag("--with-prediction", options->withPrediction,
                      "Put the predicted class before the probabilities");
    command->callback([options = options] { run(*options, true); });
}

}  // namespace Tessel::Cli
