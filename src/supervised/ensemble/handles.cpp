#include <tessel/data/errors.h>
#include <tessel/ensemble.h>

#include "supervised/ensemble/model.h"
#include "supervised/ensemble/parameters.h"
#include "supervised/learner_catalog.h"

namespace Tessel::Ensemble {
namespace {

template <class Members>
const auto& modelAt(const Members& members, int position) {
    const auto count = static_cast<std::int64_t>(members.weakModels.size());
    if (position < 0 || position >= count) throw IndexOutOfRange(position, count);
    return members.weakModels[static_cast<std::size_t>(position)];
}

}  // namespace

ParametersHandle::~ParametersHandle() = default;
ParametersHandle& ParametersHandle::setNumWeakLearners(int value) {
    ensembleParameters().numWeakLearners.set(value);
    return *this;
}
int ParametersHandle::getNumWeakLearners() const { return ensembleParameters().numWeakLearners.get(); }

BootstrapHandle::~BootstrapHandle() = default;
BootstrapHandle& BootstrapHandle::setBootstrapSeed(int value) {
    bootstrap().bootstrapSeed.set(value);
    return *this;
}
int BootstrapHandle::getBootstrapSeed() const { return bootstrap().bootstrapSeed.get(); }

ClassifierBase::~ClassifierBase() = default;
ClassifierBase& ClassifierBase::setBaseEstimator(const Classification::DecisionTree::Estimator& estimator) {
    assignBaseEstimator(LearnerCatalog::asLearner(estimator));
    return *this;
}
ClassifierBase& ClassifierBase::setBaseEstimator(const Classification::NaiveBayes::Estimator& estimator) {
    assignBaseEstimator(LearnerCatalog::asLearner(estimator));
    return *this;
}

RegressorBase::~RegressorBase() = default;
RegressorBase& RegressorBase::setBaseEstimator(const Regression::DecisionTree::Estimator& estimator) {
    assignBaseEstimator(LearnerCatalog::asLearner(estimator));
    return *this;
}

ClassifierMembersHandle::~ClassifierMembersHandle() = default;
int ClassifierMembersHandle::getNumWeakLearners() const {
    return static_cast<int>(members().weakModels.size());
}
const WString& ClassifierMembersHandle::getWeakLearnerAlgorithm() const { return members().algorithm; }
const Vector& ClassifierMembersHandle::getLearnerWeights() const { return members().weights; }
std::shared_ptr<Supervised::Classification::Modelable> ClassifierMembersHandle::getWeakModel(
    int position) const {
    const auto& model = modelAt(members(), position);
    return LearnerCatalog::findClassifier(members().algorithm)->makeModel(model);
}

RegressorMembersHandle::~RegressorMembersHandle() = default;
int RegressorMembersHandle::getNumWeakLearners() const {
    return static_cast<int>(members().weakModels.size());
}
const WString& RegressorMembersHandle::getWeakLearnerAlgorithm() const { return members().algorithm; }
const Vector& RegressorMembersHandle::getLearnerWeights() const { return members().weights; }
std::shared_ptr<Supervised::Regression::Modelable> RegressorMembersHandle::getWeakModel(int position) const {
    const auto& model = modelAt(members(), position);
    return LearnerCatalog::findRegressor(members().algorithm)->makeModel(model);
}

}  // namespace Tessel::Ensemble
