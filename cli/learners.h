#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "data.h"
#include "terminal.h"

// The one table of the algorithms that this program can fit, and how their parameters are set by texts.

namespace Tessel::Cli {

/// What a fit gives.
struct FitResult {
    std::shared_ptr<Supervised::Modelable> model;
    // Of a search among learners:
    WString best;           ///< the display name of the learner that was best
    DataFrame comparison;   ///< the metrics of all of them
    StringVector failures;  ///< a message for each one that could not be fitted
};

/// An estimator of whatever algorithm.
class Learner {
 public:
    virtual ~Learner() = default;
    virtual EstimatorHandle& estimator() = 0;
    /// @param validation  for estimators that choose among models by it; null when there is none
    virtual FitResult fit(const TrainingData& training, const TrainingData* validation) const = 0;
};

struct Algorithm {
    WString name;  ///< as in `Ladon` texts
    WString kind;  ///< "classification" or "regression"
    /// Whether it works through other learners: one that it repeats, or several that it compares.
    enum class Learners { NONE, ONE, SEVERAL } learners;
    std::unique_ptr<Learner> (*makeLearner)();
};

const std::vector<Algorithm>& algorithms();
bool isAlgorithm(const std::string& name);
/// "decisionTree, naiveBayes"
std::string algorithmNames();
/// @param kind  empty: classification when the algorithm can do it. @throws Failure
const Algorithm& algorithmOf(const std::string& name, const std::string& kind);

/// An estimator as a `Ladon` text describes it. What estimators would pass over is refused.
/// @param source  of the text, for messages
/// @throws Failure for an unknown algorithm or parameter and for a value that is not of its type
std::pair<const Algorithm*, std::unique_ptr<Learner>> learnerOf(const WString& ladon,
                                                                const std::string& source);

/// One `--set parameter=value`. Parameters of learners are "learner.parameter".
struct Setting {
    WString parameter;
    WString value;
};
/// @throws Failure for a text without "="
std::vector<Setting> settingsOf(const std::vector<std::string>& texts);

/// How an estimator shall be.
struct Wishes {
    std::vector<Setting> settings;
    StringVector learners;  ///< empty: a decision tree as the one, all as several
    const int* seed;        ///< for the parameters that are seeds and are not set; null: their defaults
};

/// Sets parameters and learners; parameters that are not named get their defaults.
/// @throws Failure for an unknown parameter or learner and for a value that is not of its type
void setParameters(const Algorithm& algorithm, EstimatorHandle& estimator, const Wishes& wishes);

// ---- parts of the above

/// The texts of a row of an estimator's table of parameters.
struct ParameterInfo {
    WString key, type, admissibleValues;
};
std::vector<ParameterInfo> parametersOf(const EstimatorHandle& estimator);
/// The parameter of that name, whatever its case. @throws Failure with the known ones
const ParameterInfo& parameterOf(const std::vector<ParameterInfo>& parameters, const Algorithm& algorithm,
                                 const WString& key);
/// @param what  the value that is none, as the message begins
Failure notAValue(const ParameterInfo& parameter, const WString& what);
/// A text as JSON string.
WString quoted(const WString& text);

}  // namespace Tessel::Cli
