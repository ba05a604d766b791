#include "supervised/learner_catalog.h"

#include <algorithm>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/decision_tree.h>
#include <tessel/find_best_model.h>
#include <tessel/framework/ladon.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "supervised/bagging/model.h"
#include "supervised/boosting/model.h"
#include "supervised/decision_tree/model.h"
#include "supervised/find_best_model/model.h"
#include "supervised/naive_bayes/model.h"
#include "supervised/random_trees/model.h"

namespace Tessel::LearnerCatalog {
namespace {

template <class Estimator, class Implementation, class Model>
ClassifierFamily classifier(const WString& algorithm, bool canBeWeak) {
    return {
        algorithm, canBeWeak,
        []() -> std::unique_ptr<ClassifierEstimator> { return std::make_unique<Estimator>(); },
        []() -> std::shared_ptr<Classification::IModelable> { return std::make_shared<Implementation>(); },
        [](std::shared_ptr<Classification::IModelable> model)
            -> std::shared_ptr<Supervised::Classification::Modelable> {
            return std::make_shared<Model>(std::move(model));
        }};
}

template <class Estimator, class Implementation, class Model>
RegressorFamily regressor(const WString& algorithm, bool canBeWeak) {
    return {algorithm, canBeWeak,
            []() -> std::unique_ptr<RegressorEstimator> { return std::make_unique<Estimator>(); },
            []() -> std::shared_ptr<Regression::IModelable> { return std::make_shared<Implementation>(); },
            [](std::shared_ptr<Regression::IModelable> model)
                -> std::shared_ptr<Supervised::Regression::Modelable> {
                return std::make_shared<Model>(std::move(model));
            }};
}

}  // namespace

std::span<const ClassifierFamily> classifiers() {
    namespace Names = Ladon::ModelAlgorithm;
    namespace Kind = Classification;
    static const std::vector<ClassifierFamily> families{
        classifier<Kind::DecisionTree::Estimator, Kind::DecisionTree::IModel, Kind::DecisionTree::Model>(
            Names::DECISION_TREE, true),
        classifier<Kind::NaiveBayes::Estimator, Kind::NaiveBayes::IModel, Kind::NaiveBayes::Model>(
            Names::NAIVE_BAYES, true),
        classifier<Kind::Bagging::Estimator, Kind::Bagging::IModel, Kind::Bagging::Model>(Names::BAGGING,
                                                                                          false),
        classifier<Kind::Boosting::Estimator, Kind::Boosting::IModel, Kind::Boosting::Model>(Names::BOOSTING,
                                                                                             false),
        classifier<Kind::RandomTrees::Estimator, Kind::RandomTrees::IModel, Kind::RandomTrees::Model>(
            Names::RANDOM_TREES, false),
        classifier<Kind::FindBestModel::Estimator, Kind::FindBestModel::IModel, Kind::FindBestModel::Model>(
            Names::FIND_BEST_MODEL, false),
    };
    return families;
}

std::span<const RegressorFamily> regressors() {
    namespace Names = Ladon::ModelAlgorithm;
    namespace Kind = Regression;
    static const std::vector<RegressorFamily> families{
        regressor<Kind::DecisionTree::Estimator, Kind::DecisionTree::IModel, Kind::DecisionTree::Model>(
            Names::DECISION_TREE, true),
        regressor<Kind::Bagging::Estimator, Kind::Bagging::IModel, Kind::Bagging::Model>(Names::BAGGING,
                                                                                         false),
        regressor<Kind::Boosting::Estimator, Kind::Boosting::IModel, Kind::Boosting::Model>(Names::BOOSTING,
                                                                                            false),
        regressor<Kind::RandomTrees::Estimator, Kind::RandomTrees::IModel, Kind::RandomTrees::Model>(
            Names::RANDOM_TREES, false),
        regressor<Kind::FindBestModel::Estimator, Kind::FindBestModel::IModel, Kind::FindBestModel::Model>(
            Names::FIND_BEST_MODEL, false),
    };
    return families;
}

namespace {

template <class Family>
const Family* findOfPMML(std::span<const Family> families, WStringView element) {
    const auto found = std::find_if(families.begin(), families.end(), [&](const Family& family) {
        return family.canBeWeak && family.makeBlank()->type().pmmlElement == element;
    });
    return found == families.end() ? nullptr : &*found;
}

template <class Family>
const Family* find(std::span<const Family> families, const WString& algorithm) {
    const auto found = std::find_if(families.begin(), families.end(),
                                    [&](const Family& family) { return family.algorithm == algorithm; });
    return found == families.end() ? nullptr : &*found;
}

}  // namespace

const ClassifierFamily* findWeakClassifierOfPMML(WStringView element) {
    return findOfPMML(classifiers(), element);
}
const RegressorFamily* findWeakRegressorOfPMML(WStringView element) {
    return findOfPMML(regressors(), element);
}

const ClassifierFamily* findClassifier(const WString& algorithm) { return find(classifiers(), algorithm); }
const RegressorFamily* findRegressor(const WString& algorithm) { return find(regressors(), algorithm); }

const ClassifierEstimator& asLearner(const Classification::Bagging::Estimator& estimator) {
    return estimator;
}
const ClassifierEstimator& asLearner(const Classification::Boosting::Estimator& estimator) {
    return estimator;
}
const ClassifierEstimator& asLearner(const Classification::DecisionTree::Estimator& estimator) {
    return estimator;
}
const ClassifierEstimator& asLearner(const Classification::NaiveBayes::Estimator& estimator) {
    return estimator;
}
const ClassifierEstimator& asLearner(const Classification::RandomTrees::Estimator& estimator) {
    return estimator;
}
const RegressorEstimator& asLearner(const Regression::Bagging::Estimator& estimator) { return estimator; }
const RegressorEstimator& asLearner(const Regression::Boosting::Estimator& estimator) { return estimator; }
const RegressorEstimator& asLearner(const Regression::DecisionTree::Estimator& estimator) {
    return estimator;
}
const RegressorEstimator& asLearner(const Regression::RandomTrees::Estimator& estimator) { return estimator; }

}  // namespace Tessel::LearnerCatalog
