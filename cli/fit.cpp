#include <memory>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "fitting.h"
#include "models.h"
#include "terminal.h"

namespace Tessel::Cli {
namespace {

struct Options {
    FittingOptions fitting;
    DataOptions data;
    TargetOptions target;
    double validationShare = 0.0;
    std::string model, as;
};

constexpr const char* kExamples = R"(
Examples:
  A tree of at most four levels, as PMML:
    tessel fit decisionTree iris.csv --target Species --set maxNumLevels=4 --model iris.pmml
  A regression, with weights and without two of the columns:
    tessel fit decisionTree sales.csv --target revenue --weights count --ignore id,comment -m sales.json
  A tree that is grown on 70 % of the rows and pruned by the other 30 %:
    tessel fit decisionTree iris.csv --target Species --validation 0.3 --set prunedTreeType=BEST_PRUNED -m iris.pmml
  Boosting of small trees, and the best of several algorithms by the rows that are held out:
    tessel fit boosting iris.csv --target Species --set decisionTree.maxNumLevels=2 -m iris.pmml
    tessel fit findBestModel iris.csv --target Species --validation 0.3 --learner naiveBayes,bagging -m iris.pmml
  An estimator that is described by a file; the model goes to the next program:
    tessel fit --estimator tree.ladon iris.csv --target Species | tessel score - new.csv)";

void fit(Options& options) {
    // With an estimator file the only argument is the data.
    if (!options.fitting.estimatorFile.empty()) {
        if (!options.data.path.empty())
            throw Failure("--estimator names the algorithm; do not give '" + options.fitting.algorithm +
                          "', too");
        std::swap(options.data.path, options.fitting.algorithm);
    }
    if (options.data.path.empty()) throw Failure("no data are given: a CSV file, or - for standard input");
    const std::string format = modelFormat(options.model, options.as);  // before the work

    const std::string source = sourceName(options.data.path);
    const TrainingData all = cutTable(DataSource(options.data).read(), options.target, source);
    TrainingData training = all, validation = all;
    if (options.validationShare > 0.0) {
        const Partition parts =
            split(all.features.getNumRows(), options.validationShare, seedOf(options.fitting));
        training = all.rows(parts.training);
        validation = all.rows(parts.validation);
    }
    const Fitted fitted =
        fitModel(options.fitting, training, options.validationShare > 0.0 ? &validation : nullptr);
    writeBytes(Convert::toUtf8(modelText(*fitted.model, format)), options.model);
    if (options.model.empty() || options.model == "-") return;
    WString told = fitted.algorithm + L" (" + fitted.kind + L") of " + all.target.getColName() + L": " +
                   Convert::toString(training.features.getNumRows()) + L" rows, " +
                   Convert::toString(all.numFeatures()) + L" inputs\n";
    for (const WString& failure : fitted.failures) told += failure + L"\n";
    if (!fitted.best.empty())
        told += L"best learner: " + fitted.best + L"\n\n" + fitted.comparison.toString() + L"\n";
    writeBytes(Convert::toUtf8(told) + "model written to " + options.model + "\n", "");
}

}  // namespace

void addFit(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = *program.add_subcommand("fit", "Fit a model to data");
    command.footer(kExamples);
    command.add_option("ALGORITHM", options->fitting.algorithm, "One of " + algorithmNames())->type_name("");
    command.add_option("DATA", options->data.path, "A CSV file, or - for standard input")->type_name("");
    command
        .add_option("-m,--model", options->model,
                    "The file for the model, its format told by the ending .pmml, .xml, .json or .ladon; "
                    "standard output unless given")
        ->type_name("FILE");
    command.add_option("--as", options->as, "The format of the model: pmml, json or ladon")
        ->check(CLI::IsMember({"pmml", "json", "ladon"}).description(""))
        ->type_name("FORMAT");
    command
        .add_option("--validation", options->validationShare,
                    "The share of rows that are held out and given to estimators that prune by them")
        ->check(CLI::Range(0.0, 1.0).description(""))
        ->type_name("SHARE");
    addTargetOptions(command, options->target);
    addFittingOptions(command, options->fitting);
    addDataOptions(command, options->data);
    command.callback([options] { fit(*options); });
}

}  // namespace Tessel::Cli
