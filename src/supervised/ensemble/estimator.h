#pragma once

#include <memory>

#include "framework/classification.h"
#include "framework/regression.h"
#include "supervised/ensemble/model.h"
#include "supervised/ensemble/parameters.h"

namespace Tessel::Ensemble {

/// What the estimators of ensembles of both kinds share.
/// @tparam Kind  the implementation of estimators of their kind, and of their weak learners.
template <class Kind>
class IEnsembleOf : public Kind, public IParameters {
 public:
    using Kind::Kind;
    using Learner = std::shared_ptr<const Kind>;

    using Kind::validate;
    void validate() const override {
        Kind::validate();
        learner(0)->validate();
    }
    void validateAgainst(const DataFrame& features) const override { learner(0)->validateAgainst(features); }
    IntVector categoricalColumns(const DataFrame& features) const override {
        return learner(0)->categoricalColumns(features);
    }

    /// What the fits of the learners share, or null.
    /// @throws ConstraintViolation for infinite cells, also for those that no resample has.
    std::unique_ptr<Supervised::Preparation> prepareLearners(const TrainingFeatures& features,
                                                             bool useAllRows,
                                                             Engine::Crew* crew = nullptr) const {
        auto preparation = learner(0)->prepare(features, useAllRows, crew);
        if (!preparation) requireFinite(features);  // what was prepared was looked at
        return preparation;
    }

    /// The weak learner to fit at a position of the ensemble.
    virtual Learner learner(int position) const = 0;
};

/// The estimator of a classification ensemble.
class IClassifierEnsemble : public IEnsembleOf<Classification::IEstimator> {
 public:
    using IEnsembleOf::IEnsembleOf;
    void validateClasses(const ClassTarget& target) const override;

 protected:
    WString defaultSuccessClass(const StringVector& classes) const override { return classes[1]; }
};

using IRegressorEnsemble = IEnsembleOf<Regression::IEstimator>;

/// Ensembles whose weak learner is chosen by `setBaseEstimator`.
template <class Ensemble>
class IWithBaseEstimator : public Ensemble {
 public:
    using typename Ensemble::Learner;

    explicit IWithBaseEstimator(const WString& modelName);
    void setBaseEstimator(const typename Learner::element_type& estimator);
    void reset() override;
    Learner learner(int position) const override;

 protected:
    void writeLearners(web::json::value& description) const override;
    /// @throws UnableToCreateWeakLearner, UnsupportedJSONModel
    void readLearners(const web::json::value& description) override;
    void describeLearners(StringVector& names, StringVector& values) const override;

 private:
    static Learner defaultBase();

    Learner base_ = defaultBase();  // never changed, so that copies of the ensemble share it
};

extern template class IWithBaseEstimator<IClassifierEnsemble>;
extern template class IWithBaseEstimator<IRegressorEnsemble>;

/// Fits the learners of an ensemble on bootstrap samples, side by side.
/// @throws EnsembleSamplingMissedClass
void fitBootstrapped(const IClassifierEnsemble& estimator, const Classification::TrainingSet& data, int seed,
                     IClassifierMembers& members, IOutOfBag& outOfBag);
void fitBootstrapped(const IRegressorEnsemble& estimator, const Regression::TrainingSet& data, int seed,
                     IRegressorMembers& members, IOutOfBag& outOfBag);

}  // namespace Tessel::Ensemble
