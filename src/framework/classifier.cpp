#include <tessel/framework/classifier.h>

#include "framework/classification.h"

namespace Tessel {

using Classification::IEstimator;

// ---- estimator

ClassifierEstimator::~ClassifierEstimator() = default;

void ClassifierEstimator::validate() const { as<IEstimator>().validate(); }
void ClassifierEstimator::validate(const DataFrame& features, const DataFrameColumn& target) const {
    as<IEstimator>().validate(features, target);
}

PriorProbMethodType ClassifierEstimator::getPriorProbMethod() const {
    return as<IEstimator>().priorProbMethod.get();
}
double ClassifierEstimator::getPriorProb(const WString& classLabel) const {
    return as<IEstimator>().getPriorProb(classLabel);
}
void ClassifierEstimator::assignPriorProbMethod(PriorProbMethodType method) {
    as<IEstimator>().priorProbMethod.set(method);
}
void ClassifierEstimator::assignPriorProb(const WString& classLabel, double probability) {
    as<IEstimator>().setPriorProb(classLabel, probability);
}

ClassifierEstimator& ClassifierEstimator::setSuccessClass(const WString& label) {
    as<IEstimator>().successClass.set(label);
    return *this;
}
const WString& ClassifierEstimator::getSuccessClass() const { return as<IEstimator>().successClass.get(); }
ClassifierEstimator& ClassifierEstimator::setSuccessProbability(double cutOff) {
    as<IEstimator>().successProbability.set(cutOff);
    return *this;
}
double ClassifierEstimator::getSuccessProbability() const {
    return as<IEstimator>().successProbability.get();
}

std::shared_ptr<Classification::IModelable> ClassifierEstimator::fitImplementation(
    const DataFrame& features, const DataFrameColumn& target) const {
    return as<IEstimator>().fit(features, target);
}

// ---- model

ClassifierModel::ClassifierModel(std::shared_ptr<Classification::IModelable> implementation)
    : implementation_(std::move(implementation)) {}
ClassifierModel::ClassifierModel(const ClassifierModel&) = default;
ClassifierModel& ClassifierModel::operator=(const ClassifierModel&) = default;
ClassifierModel::~ClassifierModel() = default;

const WString& ClassifierModel::getName() const { return implementation_->getName(); }
void ClassifierModel::assignName(const WString& name) { implementation_->setName(name); }
const WString& ClassifierModel::getModelName() const { return implementation_->getModelName(); }
void ClassifierModel::assignModelName(const WString& modelName) { implementation_->setModelName(modelName); }

StringVector ClassifierModel::getColNames() const { return implementation_->schema.featureNames(); }
StringVector ClassifierModel::getIndexColNames() const { return implementation_->schema.indexColNames; }
const WString& ClassifierModel::getTargetColName() const { return implementation_->schema.targetName; }
StringVector ClassifierModel::getRowNames() const { return implementation_->schema.trainingRowNames(); }
const StringVector& ClassifierModel::getClasses() const { return implementation_->classSchema.classes; }

DataFrame ClassifierModel::priorProbability() const { return implementation_->priorProbability(); }
const WString& ClassifierModel::getSuccessClass() const { return implementation_->classSchema.successClass; }
void ClassifierModel::assignSuccessClass(const WString& label) { implementation_->setSuccessClass(label); }
double ClassifierModel::getSuccessProbability() const {
    return implementation_->classSchema.successProbability;
}
void ClassifierModel::assignSuccessProbability(double cutOff) {
    implementation_->setSuccessProbability(cutOff);
}
void ClassifierModel::validate() const { implementation_->validate(); }

DataFrame ClassifierModel::predict(const DataFrame& features) const {
    return implementation_->predict(features);
}
DataFrame ClassifierModel::posteriorProbability(const DataFrame& features) const {
    return implementation_->posteriorProbability(features);
}
DataFrame ClassifierModel::predictWithPosterior(const DataFrame& features) const {
    return implementation_->predictWithPosterior(features);
}
DataFrameVector ClassifierModel::toDataFrameVector() const { return implementation_->toDataFrameVector(); }
WString ClassifierModel::toString() const { return toDataFrameVector().toString(); }

}  // namespace Tessel
