#include <memory>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "fitting.h"
#include "models.h"
#include "output.h"
#include "terminal.h"

namespace Tessel::Cli {
namespace {

struct Options {
    FittingOptions fitting;  // its algorithm may be the path of a model
    DataOptions data;
    TargetOptions target;
    OutputOptions output;
    double validationShare = 0.0;
    bool withROC = false;
    bool withGains = false;
};

constexpr const char* kExamples = R"(
Examples:
  How good a model is on data that it has not seen:
    tessel evaluate iris.pmml held_out.csv
  How good an algorithm is: fitted on 70 % of the rows, judged by these and by the other 30 %:
    tessel evaluate decisionTree iris.csv --target Species --validation 0.3 --set maxNumLevels=3
  One table of it as CSV:
    tessel evaluate iris.pmml held_out.csv --table "Confusion Matrix" --format csv

For classes there are a confusion table (rows are actual, columns predicted classes), a summary by class and
metrics; for numbers the metrics of their errors. A log loss is told where the model knows all classes.)";

/// What a model says about a table.
struct Scores {
    DataFrame predicted;
    DataFrame posteriors = {};  ///< a column per class; none for regressions
    StringVector classes = {};
    WString successClass = {};  ///< empty for more than two classes without one

    bool isClassification() const { return !classes.empty(); }
    /// The probability of the success class.
    DataFrameColumn successProbability() const {
        return posteriors(Util::all, static_cast<int>(classes.find(successClass)));
    }
};

Scores scoresOf(const Supervised::Modelable& model, const DataFrame& table) {
    const auto* const classifier = dynamic_cast<const Supervised::Classification::Modelable*>(&model);
    if (!classifier) return {model.predict(table)};
    return {classifier->predict(table), classifier->posteriorProbability(table), classifier->getClasses(),
            classifier->getSuccessClass()};
}

Scores scoresOf(const LoadedModel& model, const DataFrame& table) {
    if (model.getKind() != Ladon::TaskKind::CLASSIFICATION) return {model.predict(table)};
    return {model.predict(table), model.posteriorProbability(table), model.getClasses(),
            model.getSuccessClass()};
}

/// One row of metrics; what does not exist for these classes is left out.
DataFrame classificationMetrics(const TrainingData& data, const Scores& scores) {
    const DataFrameColumn predicted = scores.predicted(Util::all, 0);
    DataFrame metrics(L"Metrics");
    const auto add = [&](const wchar_t* name, double value) {
        metrics.append(DataFrameColumn(name, Vector{value}));
    };
    const WString& success = scores.successClass;
    if (success.empty()) {
        add(L"Accuracy", Metrics::accuracy(data.target, predicted, data.weights));
    } else {
        metrics = Evaluator::classificationMetrics(data.target, predicted, success, data.weights);
        const DataFrameColumn ofSuccess = scores.successProbability();
        add(L"AUC", Metrics::AUC(data.target, ofSuccess, success, data.weights));
    }
    try {
        add(L"Log loss", Metrics::logLoss(data.target, scores.posteriors, data.weights));
    } catch (const NotAValidColName&) {  // a class occurs that the model does not know
    }
    metrics.setRowNames(StringVector{L"Value"});
    return metrics;
}

DataFrameVector tablesOf(const TrainingData& data, const Scores& scores, const Options& options,
                         const WString& part) {
    DataFrameVector tables;
    const DataFrameColumn predicted = scores.predicted(Util::all, 0);
    if (scores.isClassification()) {
        tables.push_back(Evaluator::confusion(data.target, predicted, {}, data.weights));
        tables.push_back(Evaluator::classificationSummary(data.target, predicted, data.weights));
        tables.push_back(classificationMetrics(data, scores));
    } else {
        tables.push_back(Evaluator::regressionMetrics(data.target, predicted, data.weights));
    }
    if ((options.withROC || options.withGains) && scores.isClassification()) {
        const WString& success = scores.successClass;
        if (success.empty()) throw Failure("ROC curve and gains need a --success-class");
        const DataFrameColumn ofSuccess = scores.successProbability();
        if (options.withROC)
            tables.push_back(Evaluator::rocCurve(data.target, ofSuccess, success, data.weights));
        if (options.withGains)
            tables.push_back(Evaluator::gains(data.target, ofSuccess, success, data.weights));
    } else if (options.withROC) {
        throw Failure("a ROC curve is for classifications");
    } else if (options.withGains) {
        tables.push_back(Evaluator::gains(data.target, predicted, data.weights));
    }
    for (DataFrame& table : tables)
        if (!part.empty()) table.setName(table.getName() + L": " + part);
    return tables;
}

DataFrameVector evaluateModel(Options& options) {
    if (options.validationShare > 0.0)
        throw Failure("--validation is for evaluating an algorithm; a model is judged by all rows");
    if (!options.fitting.settings.empty() || !options.fitting.kind.empty())
        throw Failure("--set and --kind are for evaluating an algorithm; '" + options.fitting.algorithm +
                      "' is a model");
    LoadedModel model = loadModel(options.fitting.algorithm);
    setClassRule(model, options.fitting.successClass, options.fitting.cutOff);
    if (options.target.target.empty()) options.target.target = Convert::toUtf8(model.getTargetColName());

    const std::string source = sourceName(options.data.path);
    const DataFrame table = readFor(model, DataSource(options.data), source);
    const TrainingData data = cutTable(table, options.target, source);
    return tablesOf(data, scoresOf(model, table), options, L"");
}

DataFrameVector evaluateAlgorithm(const Options& options) {
    const TrainingData all =
        cutTable(DataSource(options.data).read(), options.target, sourceName(options.data.path));
    if (options.validationShare == 0.0) {
        const Fitted fitted = fitModel(options.fitting, all, nullptr);
        DataFrameVector tables = tablesOf(all, scoresOf(*fitted.model, all.features), options, L"Training");
        if (!fitted.comparison.empty()) tables.push_back(fitted.comparison);
        return tables;
    }
    const Partition parts =
        split(all.features.getNumRows(), options.validationShare, seedOf(options.fitting));
    const TrainingData training = all.rows(parts.training), validation = all.rows(parts.validation);
    const Fitted fitted = fitModel(options.fitting, training, &validation);
    DataFrameVector tables =
        tablesOf(training, scoresOf(*fitted.model, training.features), options, L"Training");
    tables.append(tablesOf(validation, scoresOf(*fitted.model, validation.features), options, L"Validation"));
    if (!fitted.comparison.empty()) tables.push_back(fitted.comparison);
    return tables;
}

void evaluate(Options& options) {
    const bool isFromFile = !options.fitting.estimatorFile.empty();
    if (isFromFile && options.data.path.empty()) std::swap(options.data.path, options.fitting.algorithm);
    if (options.data.path.empty()) throw Failure("no data are given: a CSV file, or - for standard input");
    if (options.fitting.algorithm == "-" && options.data.path == "-")
        throw Failure("model and data cannot both come from standard input");
    const bool isFit = isFromFile || isAlgorithm(options.fitting.algorithm);
    printReport(isFit ? evaluateAlgorithm(options) : evaluateModel(options), options.output);
}

}  // namespace

void addEvaluate(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = *program.add_subcommand("evaluate", "Judge a model, or an algorithm, by data");
    command.footer(kExamples);
    command
        .add_option("MODEL", options->fitting.algorithm,
                    "A PMML, JSON or Ladon file, or -; or an algorithm to fit: " + algorithmNames())
        ->type_name("");
    command.add_option("DATA", options->data.path, "A CSV file, or - for standard input")->type_name("");
    command
        .add_option("--validation", options->validationShare,
                    "The share of rows that are held out from the fit of an algorithm")
        ->check(CLI::Range(0.0, 1.0).description(""))
        ->type_name("SHARE");
    command.add_flag("--roc", options->withROC, "Add the ROC curve of the success class");
    command.add_flag("--gains", options->withGains, "Add gains and lift by deciles");
    addOutputOptions(command, options->output, true);
    addTargetOptions(command, options->target);
    addFittingOptions(command, options->fitting);
    addDataOptions(command, options->data);
    command.callback([options] { evaluate(*options); });
}

}  // namespace Tessel::Cli
