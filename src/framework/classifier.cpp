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

using Classification::IModelable;

ClassifierModel::ClassifierModel(std::shared_ptr<IModelable> implementation)
    : SupervisedModel(std::move(implementation)) {}
ClassifierModel::~ClassifierModel() = default;

const StringVector& ClassifierModel::getClasses() const { return as<IModelable>().classSchema.classes; }
DataFrame ClassifierModel::priorProbability() const { return as<IModelable>().priorProbability(); }
const WString& ClassifierModel::getSuccessClass() const { return as<IModelable>().classSchema.successClass; }
void ClassifierModel::assignSuccessClass(const WString& label) { as<IModelable>().setSuccessClass(label); }
double ClassifierModel::getSuccessProbability() const {
    return as<IModelable>().classSchema.successProbability;
}
void ClassifierModel::assignSuccessProbability(double cutOff) {
    as<IModelable>().setSuccessProbability(cutOff);
}
void ClassifierModel::validate() const { as<IModelable>().validate(); }

DataFrame ClassifierModel::predict(const DataFrame& features) const {
    return as<IModelable>().predict(features);
}
DataFrame ClassifierModel::posteriorProbability(const DataFrame& features) const {
    return as<IModelable>().posteriorProbability(features);
}
DataFrame ClassifierModel::predictWithPosterior(const DataFrame& features) const {
    return as<IModelable>().predictWithPosterior(features);
}

}  // namespace Tessel
