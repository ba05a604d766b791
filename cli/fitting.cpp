#include "fitting.h"

#include <CLI/CLI.hpp>

#include "terminal.h"

namespace Tessel::Cli {
namespace {

constexpr int kDefaultSeed = 12345;

template <class Capability>
Capability& require(EstimatorHandle& estimator, const WString& algorithm, const char* what) {
    if (auto* const capability = dynamic_cast<Capability*>(&estimator)) return *capability;
    throw Failure(Convert::toUtf8(algorithm) + " takes no " + what);
}

/// The algorithm that was named and its estimator with its parameters.
std::pair<const Algorithm*, std::unique_ptr<Learner>> makeLearner(const FittingOptions& options,
                                                                  const DataFrameColumn& target) {
    if (!options.estimatorFile.empty()) {
        const std::string& file = options.estimatorFile;
        return learnerOf(Convert::fromUtf8(readAll(file)), sourceName(file));
    }
    std::string kind = options.kind;
    if (kind.empty() && !target.isNumeric()) kind = "classification";
    // A numeric target is classified by algorithms that do nothing else.
    if (kind.empty()) {
        for (const Algorithm& algorithm : algorithms())
            if (Convert::toUtf8(algorithm.name) == options.algorithm &&
                algorithm.kind == Ladon::TaskKind::REGRESSION)
                kind = "regression";
    }
    const Algorithm& algorithm = algorithmOf(options.algorithm, kind);
    std::pair<const Algorithm*, std::unique_ptr<Learner>> made(&algorithm, algorithm.makeLearner());
    setParameters(algorithm, made.second->estimator(),
                  {settingsOf(options.settings), toStringVector(options.learners),
                   options.seed ? &*options.seed : nullptr});
    return made;
}

}  // namespace

void addFittingOptions(CLI::App& command, FittingOptions& options) {
    CLI::Option* const file =
        command
            .add_option("--estimator", options.estimatorFile,
                        "A Ladon text with algorithm and parameters, in place of ALGORITHM")
            ->type_name("FILE")
            ->group("Estimator");
    command
        .add_option("--kind", options.kind,
                    "classification or regression; unless given a text target is classified")
        ->check(CLI::IsMember({"classification", "regression"}).description(""))
        ->type_name("KIND")
        ->excludes(file)
        ->group("Estimator");
    command
        .add_option("--set", options.settings,
                    "Sets a parameter; repeatable. `tessel describe ALGORITHM` lists the parameters")
        ->allow_extra_args(false)
        ->type_name("PARAMETER=VALUE")
        ->excludes(file)
        ->group("Estimator");
    command
        .add_option(
            "--learner", options.learners,
            "The algorithm that bagging and boosting repeat (decisionTree unless given), or those that "
            "findBestModel compares (all unless given). --set LEARNER.PARAMETER=VALUE sets its "
            "parameters")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("ALGORITHMS")
        ->excludes(file)
        ->group("Estimator");
    command.add_option("--success-class", options.successClass, "The class that the cut-off is for")
        ->type_name("CLASS")
        ->group("Estimator");
    command.add_option("--cutoff", options.cutOff, "The least probability to predict the success class; 0.5")
        ->type_name("NUMBER")
        ->group("Estimator");
    command.add_option("--name", options.name, "The name of the model")
        ->type_name("TEXT")
        ->group("Estimator");
    command
        .add_option("--seed", options.seed,
                    "Seed of the random split and of seed parameters that are not set; 12345")
        ->type_name("NUMBER")
        ->group("Estimator");
}

int seedOf(const FittingOptions& options) { return options.seed.value_or(kDefaultSeed); }

Fitted fitModel(const FittingOptions& options, const TrainingData& training, const TrainingData* validation) {
    const auto [algorithm, learner] = makeLearner(options, training.target);
    EstimatorHandle& estimator = learner->estimator();
    if (!options.name.empty()) estimator.setName(Convert::fromUtf8(options.name));
    if (!training.weights.empty())
        require<WeightsAdmissible>(estimator, algorithm->name, "observation weights")
            .setWeights(training.weights);
    if (!options.successClass.empty())
        require<ClassifierEstimator>(estimator, algorithm->name, "success class: it is no classifier")
            .setSuccessClass(Convert::fromUtf8(options.successClass));
    if (options.cutOff)
        require<ClassifierEstimator>(estimator, algorithm->name, "cut-off: it is no classifier")
            .setSuccessProbability(*options.cutOff);

    const InterruptNote note;
    Progress progress("fitting " + Convert::toUtf8(algorithm->name) + " on " +
                      std::to_string(training.features.getNumRows()) + " rows");
    estimator.setProgressCallback([&](double shareDone, const WString& activity) {
        progress.report(shareDone, Convert::toUtf8(activity));
        return !note.isInterrupted();
    });
    Fitted fitted{learner->fit(training, validation), algorithm->name, algorithm->kind};
    if (note.isInterrupted()) throw FitCancelled();  // behind the last time that the fit asked
    return fitted;
}

}  // namespace Tessel::Cli
