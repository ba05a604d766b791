#include "framework/learner_access.h"
#include "supervised/find_best_model/estimator.h"
#include "supervised/find_best_model/model.h"
#include "supervised/learner_catalog.h"

namespace Tessel {

using FindBestModel::Kind;

namespace {

template <class Names, class Metric>
void requireMember(const Names& names, Metric metric) {
    if (!names.contains(metric))
        throw ConstraintViolation("Metric for best learner", "The value must be a pre-defined set member.");
}

}  // namespace

namespace Classification::FindBestModel {

WString getLearnerName(LearnerType type) {
    return Tessel::FindBestModel::learnerName(Kind::CLASSIFICATION, type);
}

// ---- model

int Model::getNumModels() const { return static_cast<int>(as<IModel>().models.size()); }
std::shared_ptr<Supervised::Classification::Modelable> Model::getModel(LearnerType type) const {
    const auto& model = as<IModel>().modelOf(type);
    const WString algorithm = Tessel::FindBestModel::algorithmOfType(Kind::CLASSIFICATION, type);
    return LearnerCatalog::findClassifier(algorithm)->makeModel(model);
}
const StringVector& Model::getFittingLog() const { return as<IModel>().log; }

Model& Model::setScoringMetric(ClassificationMetricType metric) {
    requireMember(metricNames(), metric);
    as<IModel>().metric = metric;
    return *this;
}
ClassificationMetricType Model::getScoringMetric() const { return as<IModel>().metric; }
WString Model::getScoringMetricString(ClassificationMetricType metric) {
    requireMember(metricNames(), metric);
    return metricNames().at(metric);
}

WString Model::findBestLearner(const DataFrame& features, const DataFrameColumn& target, bool useForScoring) {
    return as<IModel>().findBestLearner(features, target, useForScoring);
}
WString Model::findBestLearner(const DataFrame& features, const DataFrame& target, bool useForScoring) {
    return findBestLearner(features, Supervised::targetColumn(target), useForScoring);
}
WString Model::getBestLearnerName() const { return getLearnerName(getBestLearnerType()); }
LearnerType Model::getBestLearnerType() const { return as<IModel>().bestLearner(); }
DataFrame Model::getMetrics() const { return as<IModel>().metrics; }

DataFrame Model::predict(LearnerType type, const DataFrame& features) const {
    return as<IModel>().modelOf(type)->predict(features);
}
DataFrame Model::posteriorProbability(LearnerType type, const DataFrame& features) const {
    return as<IModel>().modelOf(type)->posteriorProbability(features);
}

// ---- estimator

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}

Estimator& Estimator::addLearner(const Bagging::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const Boosting::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const DecisionTree::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const NaiveBayes::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const RandomTrees::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::add(const ClassifierEstimator& learner) {
    as<IEstimator>().addLearner(LearnerAccess::implementation(learner));
    return *this;
}
int Estimator::getNumLearners() const { return static_cast<int>(as<IEstimator>().candidates.size()); }

Model Estimator::fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
                     const DataFrameColumn& trainingTarget, const DataFrameColumn& validationTarget) const {
    return Model(
        as<IEstimator>().fit(trainingFeatures, validationFeatures, trainingTarget, validationTarget));
}
Model Estimator::fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
                     const DataFrame& trainingTarget, const DataFrame& validationTarget) const {
    return fit(trainingFeatures, validationFeatures, Supervised::targetColumn(trainingTarget),
               Supervised::targetColumn(validationTarget));
}

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

WString getLearnerName(LearnerType type) {
    return Tessel::FindBestModel::learnerName(Kind::REGRESSION, type);
}

// ---- model

int Model::getNumModels() const { return static_cast<int>(as<IModel>().models.size()); }
std::shared_ptr<Supervised::Regression::Modelable> Model::getModel(LearnerType type) const {
    const auto& model = as<IModel>().modelOf(type);
    const WString algorithm = Tessel::FindBestModel::algorithmOfType(Kind::REGRESSION, type);
    return LearnerCatalog::findRegressor(algorithm)->makeModel(model);
}
const StringVector& Model::getFittingLog() const { return as<IModel>().log; }

Model& Model::setScoringMetric(RegressionMetricType metric) {
    requireMember(metricNames(), metric);
    as<IModel>().metric = metric;
    return *this;
}
RegressionMetricType Model::getScoringMetric() const { return as<IModel>().metric; }
WString Model::getScoringMetricString(RegressionMetricType metric) {
    requireMember(metricNames(), metric);
    return metricNames().at(metric);
}

WString Model::findBestLearner(const DataFrame& features, const DataFrameColumn& target, bool useForScoring) {
    return as<IModel>().findBestLearner(features, target, useForScoring);
}
WString Model::findBestLearner(const DataFrame& features, const DataFrame& target, bool useForScoring) {
    return findBestLearner(features, Supervised::targetColumn(target), useForScoring);
}
WString Model::getBestLearnerName() const { return getLearnerName(getBestLearnerType()); }
LearnerType Model::getBestLearnerType() const { return as<IModel>().bestLearner(); }
DataFrame Model::getMetrics() const { return as<IModel>().metrics; }

DataFrame Model::predict(LearnerType type, const DataFrame& features) const {
    return as<IModel>().modelOf(type)->predict(features);
}

// ---- estimator

Estimator::Estimator() : RegressorEstimatorOf(std::make_unique<IEstimator>()) {}

Estimator& Estimator::addLearner(const Bagging::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const Boosting::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const DecisionTree::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::addLearner(const RandomTrees::Estimator& learner) {
    return add(LearnerCatalog::asLearner(learner));
}
Estimator& Estimator::add(const RegressorEstimator& learner) {
    as<IEstimator>().addLearner(LearnerAccess::implementation(learner));
    return *this;
}
int Estimator::getNumLearners() const { return static_cast<int>(as<IEstimator>().candidates.size()); }

Model Estimator::fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
                     const DataFrameColumn& trainingTarget, const DataFrameColumn& validationTarget) const {
    return Model(
        as<IEstimator>().fit(trainingFeatures, validationFeatures, trainingTarget, validationTarget));
}
Model Estimator::fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
                     const DataFrame& trainingTarget, const DataFrame& validationTarget) const {
    return fit(trainingFeatures, validationFeatures, Supervised::targetColumn(trainingTarget),
               Supervised::targetColumn(validationTarget));
}

}  // namespace Regression::FindBestModel
}  // namespace Tessel
