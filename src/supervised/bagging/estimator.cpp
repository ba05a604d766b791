#include "supervised/bagging/estimator.h"

#include <tessel/bagging.h>
#include <tessel/framework/ladon.h>

#include "framework/learner_access.h"
#include "supervised/bagging/model.h"

namespace Tessel {

namespace Classification::Bagging {

IEstimator::IEstimator() : IWithBaseEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::BAGGING};
}

ParameterList IEstimator::parameters() {
    ParameterList list{numWeakLearners, bootstrapSeed};
    for (const ParameterRef& parameter : classificationParameters()) list.push_back(parameter);
    return list;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    auto model = std::make_shared<IModel>();
    Ensemble::fitBootstrapped(*this, data, bootstrapSeed.get(), *model, *model);
    return model;
}

// ---- the public handles

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}
Ensemble::IParameters& Estimator::ensembleParameters() const { return as<IEstimator>(); }
Ensemble::IBootstrap& Estimator::bootstrap() const { return as<IEstimator>(); }
void Estimator::assignBaseEstimator(const ClassifierEstimator& estimator) {
    as<IEstimator>().setBaseEstimator(LearnerAccess::implementation(estimator));
}

DataFrame Model::getOutOfBagError() const { return as<IModel>().outOfBagError; }
const Ensemble::IClassifierMembers& Model::members() const { return as<IModel>(); }

}  // namespace Classification::Bagging

namespace Regression::Bagging {

IEstimator::IEstimator() : IWithBaseEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::BAGGING};
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    auto model = std::make_shared<IModel>();
    Ensemble::fitBootstrapped(*this, data, bootstrapSeed.get(), *model, *model);
    return model;
}

// ---- the public handles

Estimator::Estimator() : RegressorEstimatorOf(std::make_unique<IEstimator>()) {}
Ensemble::IParameters& Estimator::ensembleParameters() const { return as<IEstimator>(); }
Ensemble::IBootstrap& Estimator::bootstrap() const { return as<IEstimator>(); }
void Estimator::assignBaseEstimator(const RegressorEstimator& estimator) {
    as<IEstimator>().setBaseEstimator(LearnerAccess::implementation(estimator));
}

DataFrame Model::getOutOfBagError() const { return as<IModel>().outOfBagError; }
const Ensemble::IRegressorMembers& Model::members() const { return as<IModel>(); }

}  // namespace Regression::Bagging
}  // namespace Tessel
