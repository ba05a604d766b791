#pragma once

#include <memory>

#include <tessel/framework/classifier.h>
#include <tessel/framework/regressor.h>

// Model search: fits several learners on the same data, scores all that could be fitted by one metric and
// names the best, which then scores new data. A learner that fails does not stop the search; its message is
// kept in the fitting log.

namespace Tessel {

// The learners; their own headers declare them in full.
namespace Classification {
namespace Bagging {
class Estimator;
}
namespace Boosting {
class Estimator;
}
namespace DecisionTree {
class Estimator;
}
namespace NaiveBayes {
class Estimator;
}
namespace RandomTrees {
class Estimator;
}
}  // namespace Classification
namespace Regression {
namespace Bagging {
class Estimator;
}
namespace Boosting {
class Estimator;
}
namespace DecisionTree {
class Estimator;
}
namespace RandomTrees {
class Estimator;
}
}  // namespace Regression

/// How classifiers are compared; more is better. Specificity, sensitivity, precision and F1 score are those
/// of the success class; with more than two classes and no chosen success class the means of the classes.
enum class ClassificationMetricType : int {
    ACCURACY = 1,
    SPECIFICITY = 2,
    SENSITIVITY = 3,
    PRECISION = 4,
    F1_SCORE = 5,
    PERCENT_CORRECT = 6  ///< the accuracy in percent
};

/// How regressors are compared; of R2 more is better, of the others less.
enum class RegressionMetricType : int { SSE = 1, MSE = 2, RMSE = 3, MAD = 4, R2 = 5 };

namespace FindBestModel {

/// The families that can be searched. Logistic regression is for classes what linear regression is for
/// numbers, so they share a value.
enum class LearnerType : int {
    UNKNOWN = 0,
    LOGISTIC_REGRESSION = 1,
    LINEAR_REGRESSION = 1,
    DECISION_TREE = 2,
    NEAREST_NEIGHBORS = 3,
    NEURAL_NETWORK = 4,
    DISCRIMINANT_ANALYSIS = 5,
    NAIVE_BAYES = 6,
    BAGGING = 7,
    BOOSTING = 8,
    RANDOM_TREES = 9
};

/// The type of a display name of either kind; UNKNOWN when it is none.
TESSEL_API LearnerType getLearnerType(const WString& name);

}  // namespace FindBestModel

namespace Classification::FindBestModel {

using Tessel::FindBestModel::LearnerType;

/// The display name, such as "Logistic Regression"; "Unknown" for a type that is not offered.
TESSEL_API WString getLearnerName(LearnerType type);

/// The fitted candidates. `predict` and the posteriors are those of the learner that `findBestLearner` chose
/// for scoring. So is the PMML, which a facade reads or a model of that family; JSON and `Ladon` hold the
/// whole search. @throws NoModels when no learner could be fitted, NoBestLearner before one was chosen.
class TESSEL_API Model : public ClassifierModelOf<Model> {
 public:
    using ClassifierModelOf::ClassifierModelOf;

    int getNumModels() const;
    /// The fitted model of a learner; its class is the `Model` of the family. @throws NoSuchModel
    std::shared_ptr<Supervised::Classification::Modelable> getModel(LearnerType type) const;
    /// One message for each learner that failed: its display name, " Fitting: " and the error's message. At
    /// the end "No models were fit." when all did.
    const StringVector& getFittingLog() const;

    /// Default PERCENT_CORRECT. @throws ConstraintViolation for a value that is no member.
    Model& setScoringMetric(ClassificationMetricType metric);
    ClassificationMetricType getScoringMetric() const;
    /// The name of the metric's column in `getMetrics`.
    static WString getScoringMetricString(ClassificationMetricType metric);

    /// Scores all models on these data and returns the display name of the best; of equals the one of the
    /// lowest type.
    /// @param useForScoring  whether `predict(features)` and the posteriors are from now on those of the
    /// best.
    /// @throws NoModels with the fitting log when there are no models, NoBestLearner when the metric is
    /// undefined for all of them, IncompatibleNumRows, TooFewNumRows, and what scoring throws.
    WString findBestLearner(const DataFrame& features, const DataFrameColumn& target,
                            bool useForScoring = true);
    /// The target as a one-column table. @throws NumColumnsMismatch
    WString findBestLearner(const DataFrame& features, const DataFrame& target, bool useForScoring = true);
    /// What `findBestLearner` found last. @throws NoBestLearner before that.
    WString getBestLearnerName() const;
    LearnerType getBestLearnerType() const;
    /// "Metrics": a row per model, a column per metric, of the last `findBestLearner`; empty before.
    DataFrame getMetrics() const;

    using ClassifierModelOf::posteriorProbability;
    using ClassifierModelOf::predict;
    /// By the model of one learner, chosen or not. @throws NoSuchModel
    DataFrame predict(LearnerType type, const DataFrame& features) const;
    DataFrame posteriorProbability(LearnerType type, const DataFrame& features) const;
};

/// Searches among classifiers. A success class, success probability or prior-probability method that was set
/// here goes to all of them.
///
///     auto model = FindBestModel::Estimator().addLearner(DecisionTree::Estimator())
///                      .addLearner(NaiveBayes::Estimator()).fit(features, target);
///     model.findBestLearner(otherFeatures, otherTarget, true);
class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model> {
 public:
    Estimator();

    // Adds a copy of a learner; a second one of the same family replaces the first.
    Estimator& addLearner(const Bagging::Estimator& learner);
    Estimator& addLearner(const Boosting::Estimator& learner);
    Estimator& addLearner(const DecisionTree::Estimator& learner);
    Estimator& addLearner(const NaiveBayes::Estimator& learner);
    Estimator& addLearner(const RandomTrees::Estimator& learner);
    int getNumLearners() const;

    using ClassifierEstimatorOf::fit;
    /// With validation data for learners that prune by them.
    Model fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
              const DataFrameColumn& trainingTarget, const DataFrameColumn& validationTarget) const;
    Model fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
              const DataFrame& trainingTarget, const DataFrame& validationTarget) const;

 private:
    Estimator& add(const ClassifierEstimator& learner);
};

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

using Tessel::FindBestModel::LearnerType;

/// The display name, such as "Linear Regression"; "Unknown" for a type that is not offered.
TESSEL_API WString getLearnerName(LearnerType type);

/// The fitted candidates, as in classification.
class TESSEL_API Model : public RegressorModelOf<Model> {
 public:
    using RegressorModelOf::RegressorModelOf;

    int getNumModels() const;
    std::shared_ptr<Supervised::Regression::Modelable> getModel(LearnerType type) const;
    const StringVector& getFittingLog() const;

    /// Default RMSE. @throws ConstraintViolation for a value that is no member.
    Model& setScoringMetric(RegressionMetricType metric);
    RegressionMetricType getScoringMetric() const;
    static WString getScoringMetricString(RegressionMetricType metric);

    WString findBestLearner(const DataFrame& features, const DataFrameColumn& target,
                            bool useForScoring = true);
    WString findBestLearner(const DataFrame& features, const DataFrame& target, bool useForScoring = true);
    WString getBestLearnerName() const;
    LearnerType getBestLearnerType() const;
    DataFrame getMetrics() const;

    using RegressorModelOf::predict;
    DataFrame predict(LearnerType type, const DataFrame& features) const;
};

/// Searches among regressors.
class TESSEL_API Estimator : public RegressorEstimatorOf<Estimator, Model> {
 public:
    Estimator();

    // Adds a copy of a learner; a second one of the same family replaces the first.
    Estimator& addLearner(const Bagging::Estimator& learner);
    Estimator& addLearner(const Boosting::Estimator& learner);
    Estimator& addLearner(const DecisionTree::Estimator& learner);
    Estimator& addLearner(const RandomTrees::Estimator& learner);
    int getNumLearners() const;

    using RegressorEstimatorOf::fit;
    Model fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
              const DataFrameColumn& trainingTarget, const DataFrameColumn& validationTarget) const;
    Model fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
              const DataFrame& trainingTarget, const DataFrame& validationTarget) const;

 private:
    Estimator& add(const RegressorEstimator& learner);
};

}  // namespace Regression::FindBestModel
}  // namespace Tessel
