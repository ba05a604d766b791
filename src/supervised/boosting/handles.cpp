#include <tessel/boosting.h>

#include "framework/learner_access.h"
#include "supervised/boosting/estimator.h"
#include "supervised/boosting/model.h"

namespace Tessel {

namespace Classification::Boosting {

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}
Ensemble::IParameters& Estimator::ensembleParameters() const { return as<IEstimator>(); }
void Estimator::assignBaseEstimator(const ClassifierEstimator& estimator) {
    as<IEstimator>().setBaseEstimator(LearnerAccess::implementation(estimator));
}
Estimator& Estimator::setMethod(MethodType method) {
    as<IEstimator>().method.set(method);
    return *this;
}
MethodType Estimator::getMethod() const { return as<IEstimator>().method.get(); }
Estimator& Estimator::setResamplingSeed(int value) {
    as<IEstimator>().resamplingSeed.set(value);
    return *this;
}
int Estimator::getResamplingSeed() const { return as<IEstimator>().resamplingSeed.get(); }

const Ensemble::IClassifierMembers& Model::members() const { return as<IModel>(); }

}  // namespace Classification::Boosting

namespace Regression::Boosting {

Estimator::Estimator() : RegressorEstimatorOf(std::make_unique<IEstimator>()) {}
Ensemble::IParameters& Estimator::ensembleParameters() const { return as<IEstimator>(); }
void Estimator::assignBaseEstimator(const RegressorEstimator& estimator) {
    as<IEstimator>().setBaseEstimator(LearnerAccess::implementation(estimator));
}
Estimator& Estimator::setStepSize(double value) {
    as<IEstimator>().stepSize.set(value);
    return *this;
}
double Estimator::getStepSize() const { return as<IEstimator>().stepSize.get(); }

double Model::getMeanResponse() const { return as<IModel>().meanResponse; }
double Model::getStepSize() const { return as<IModel>().stepSize; }
const Ensemble::IRegressorMembers& Model::members() const { return as<IModel>(); }

}  // namespace Regression::Boosting
}  // namespace Tessel
