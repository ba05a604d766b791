#pragma once

#include <memory>
#include <span>
#include <vector>

#include <tessel/framework/classifier.h>
#include <tessel/framework/regressor.h>

#include "framework/classification.h"
#include "framework/regression.h"

// The one table that makes a learner from the name of its algorithm. A new family joins by a row here, and by
// a line of the functions below that ensembles and model search take it through.

namespace Tessel {

namespace Classification::Bagging {
class Estimator;
}
namespace Classification::Boosting {
class Estimator;
}
namespace Classification::DecisionTree {
class Estimator;
}
namespace Classification::NaiveBayes {
class Estimator;
}
namespace Classification::RandomTrees {
class Estimator;
}
namespace Regression::Bagging {
class Estimator;
}
namespace Regression::Boosting {
class Estimator;
}
namespace Regression::DecisionTree {
class Estimator;
}
namespace Regression::RandomTrees {
class Estimator;
}

namespace LearnerCatalog {

/// A family of classifiers.
struct ClassifierFamily {
    WString algorithm;  ///< of `Ladon::ModelAlgorithm`
    bool canBeWeak;     ///< whether ensembles take it as their weak learner
    std::unique_ptr<ClassifierEstimator> (*makeEstimator)();
    /// A model without anything in it, to be read from a text.
    std::shared_ptr<Classification::IModelable> (*makeBlank)();
    /// The family's own handle around a fitted model.
    std::shared_ptr<Supervised::Classification::Modelable> (*makeModel)(
        std::shared_ptr<Classification::IModelable>);
};

/// A family of regressors.
struct RegressorFamily {
    WString algorithm;
    bool canBeWeak;
    std::unique_ptr<RegressorEstimator> (*makeEstimator)();
    std::shared_ptr<Regression::IModelable> (*makeBlank)();
    std::shared_ptr<Supervised::Regression::Modelable> (*makeModel)(std::shared_ptr<Regression::IModelable>);
};

/// The family of that algorithm, or null.
const ClassifierFamily* findClassifier(const WString& algorithm);
const RegressorFamily* findRegressor(const WString& algorithm);

/// All families, in a fixed order.
std::span<const ClassifierFamily> classifiers();
std::span<const RegressorFamily> regressors();

/// The family of weak learners whose models are this PMML element, or null.
const ClassifierFamily* findWeakClassifierOfPMML(WStringView element);
const RegressorFamily* findWeakRegressorOfPMML(WStringView element);

// The estimators of families that their users see as names only.
const ClassifierEstimator& asLearner(const Classification::Bagging::Estimator& estimator);
const ClassifierEstimator& asLearner(const Classification::Boosting::Estimator& estimator);
const ClassifierEstimator& asLearner(const Classification::DecisionTree::Estimator& estimator);
const ClassifierEstimator& asLearner(const Classification::NaiveBayes::Estimator& estimator);
const ClassifierEstimator& asLearner(const Classification::RandomTrees::Estimator& estimator);
const RegressorEstimator& asLearner(const Regression::Bagging::Estimator& estimator);
const RegressorEstimator& asLearner(const Regression::Boosting::Estimator& estimator);
const RegressorEstimator& asLearner(const Regression::DecisionTree::Estimator& estimator);
const RegressorEstimator& asLearner(const Regression::RandomTrees::Estimator& estimator);

}  // namespace LearnerCatalog
}  // namespace Tessel
