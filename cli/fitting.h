#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "learners.h"

namespace CLI {
class App;
}

// From the options of a command to a fitted model, for `fit` and `evaluate`.

namespace Tessel::Cli {

struct FittingOptions {
    std::string algorithm;
    std::string estimatorFile;
    std::string kind;
    std::string name;
    std::vector<std::string> settings;
    std::vector<std::string> learners;
    std::string successClass;
    std::optional<double> cutOff;
    std::optional<int> seed;
};

/// The options, but for the argument with the algorithm, which is the command's own.
void addFittingOptions(CLI::App& command, FittingOptions& options);

/// The seed of the random parts of this run.
int seedOf(const FittingOptions& options);

struct Fitted : FitResult {
    WString algorithm, kind;
};

/// @param validation  null when there is none. @throws Failure, and what estimators throw
Fitted fitModel(const FittingOptions& options, const TrainingData& training, const TrainingData* validation);

}  // namespace Tessel::Cli
