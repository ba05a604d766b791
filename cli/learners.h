#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "data.h"

// The one table of the algorithms that this program can fit, and how their parameters are set by texts.

namespace Tessel::Cli {

/// An estimator of whatever algorithm.
class Learner {
 public:
    virtual ~Learner() = default;
    virtual EstimatorHandle& estimator() = 0;
    /// @param validation  for estimators that choose among models by it; null when there is none
    virtual std::unique_ptr<Supervised::Modelable> fit(const TrainingData& training,
                                                       const TrainingData* validation) const = 0;
};

struct Algorithm {
    WString name;  ///< as in `Ladon` texts
    WString kind;  ///< "classification" or "regression"
    std::unique_ptr<Learner> (*makeLearner)();
};

const std::vector<Algorithm>& algorithms();
bool isAlgorithm(const std::string& name);
/// "decisionTree, naiveBayes"
std::string algorithmNames();
/// @param kind  empty: classification when the algorithm can do it. @throws Failure
const Algorithm& algorithmOf(const std::string& name, const std::string& kind);

/// An estimator as a `Ladon` text describes it. @param source  of the text, for messages. @throws Failure
std::pair<const Algorithm*, std::unique_ptr<Learner>> learnerOf(const WString& ladon,
                                                                const std::string& source);

/// One `--set parameter=value`.
struct Setting {
    WString parameter;
    WString value;
};
/// @throws Failure for a text without "="
std::vector<Setting> settingsOf(const std::vector<std::string>& texts);

/// Sets parameters; those that are not named get their defaults.
/// @param seed  for the parameters that are seeds and are not named; null: their defaults
/// @throws Failure for an unknown parameter and for a value that is not of its type
void setParameters(const Algorithm& algorithm, EstimatorHandle& estimator,
                   const std::vector<Setting>& settings, const int* seed);

/// Refuses a `Ladon` text that was read and whose parameters the estimator passed over.
/// @throws Failure for an unknown parameter and for a value that is not of its type
void requireAllTaken(const Algorithm& algorithm, const EstimatorHandle& estimator, const WString& ladon);

}  // namespace Tessel::Cli
