#include "supervised/ensemble/estimator.h"

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "framework/learner_access.h"
#include "supervised/learner_catalog.h"

namespace Tessel::Ensemble {
namespace {

const LearnerCatalog::ClassifierFamily* find(const Classification::IEstimator*, const WString& algorithm) {
    return LearnerCatalog::findClassifier(algorithm);
}
const LearnerCatalog::RegressorFamily* find(const Regression::IEstimator*, const WString& algorithm) {
    return LearnerCatalog::findRegressor(algorithm);
}

/// A copy that nobody watches: it is fitted by any thread.
template <class Kind>
std::shared_ptr<Kind> copyOf(const Kind& estimator) {
    std::unique_ptr<IEstimatable> copy = estimator.clone();
    copy->progressCallback = nullptr;
    return std::shared_ptr<Kind>(static_cast<Kind*>(copy.release()));
}

/// A new weak learner of that algorithm. @throws UnableToCreateWeakLearner
template <class Kind>
std::shared_ptr<Kind> makeLearner(const WString& algorithm) {
    const auto* family = find(static_cast<const Kind*>(nullptr), algorithm);
    if (family == nullptr || !family->canBeWeak) throw UnableToCreateWeakLearner();
    return copyOf(LearnerAccess::implementation(*family->makeEstimator()));
}

}  // namespace

void IClassifierEnsemble::validateClasses(const ClassTarget& target) const {
    IEnsembleOf::validateClasses(target);
    learner(0)->validateClasses(target);
}

template <class Ensemble>
auto IWithBaseEstimator<Ensemble>::defaultBase() -> Learner {
    return makeLearner<std::remove_const_t<typename Learner::element_type>>(
        Ladon::ModelAlgorithm::DECISION_TREE);
}

template <class Ensemble>
IWithBaseEstimator<Ensemble>::IWithBaseEstimator(const WString& modelName) : Ensemble(modelName) {}

template <class Ensemble>
void IWithBaseEstimator<Ensemble>::setBaseEstimator(const typename Learner::element_type& estimator) {
    base_ = copyOf(estimator);
}

template <class Ensemble>
void IWithBaseEstimator<Ensemble>::reset() {
    Ensemble::reset();
    base_ = defaultBase();
}

template <class Ensemble>
auto IWithBaseEstimator<Ensemble>::learner(int /*position*/) const -> Learner {
    using Kind = std::remove_const_t<typename Learner::element_type>;
    if constexpr (std::is_same_v<Kind, Classification::IEstimator>)
        if (this->priorProbMethod.isSet()) {
            const std::shared_ptr<Kind> copy = copyOf(*base_);
            copy->priorProbMethod = this->priorProbMethod;
            copy->priorProb = this->priorProb;
            return copy;
        }
    return base_;
}

template <class Ensemble>
void IWithBaseEstimator<Ensemble>::writeLearners(web::json::value& description) const {
    description[JSON::toNative(Ladon::Keyword::WEAK_LEARNER)] = base_->toLadonValue();
}

template <class Ensemble>
void IWithBaseEstimator<Ensemble>::readLearners(const web::json::value& description) {
    using Kind = std::remove_const_t<typename Learner::element_type>;
    const utility::string_t key = JSON::toNative(Ladon::Keyword::WEAK_LEARNER);
    if (!description.has_field(key)) {
        base_ = defaultBase();
        return;
    }
    const web::json::value& learner = description.at(key);
    const std::shared_ptr<Kind> read = makeLearner<Kind>(algorithmOf(learner));
    read->fromLadonValue(learner);
    base_ = read;
}

template <class Ensemble>
void IWithBaseEstimator<Ensemble>::describeLearners(StringVector& names, StringVector& values) const {
    names.push_back(L"Weak learner");
    values.push_back(base_->ladonIdentity().algorithm);
}

template class IWithBaseEstimator<IClassifierEnsemble>;
template class IWithBaseEstimator<IRegressorEnsemble>;

}  // namespace Tessel::Ensemble
