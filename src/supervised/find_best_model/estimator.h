#pragma once

#include <functional>

#include "supervised/find_best_model/learners.h"
#include "supervised/find_best_model/model.h"

namespace Tessel {

namespace FindBestModel {

/// What the estimators of searches of both kinds share.
/// @tparam Base       the implementation of the estimators of the kind.
/// @tparam Modelable  that of their models.
/// @tparam Searched   the model of the search.
template <class Base, class Modelable, class Searched>
class ISearch : public Base {
 public:
    using Base::Base;

    Candidates<Base> candidates;  // never changed, so that copies of the search share them

    /// @throws ConstraintViolation for a learner that is not offered.
    void addLearner(const Base& learner);
    void reset() override;

    std::shared_ptr<Modelable> fit(const DataFrame& features, const DataFrameColumn& target) const override;
    std::shared_ptr<Modelable> fit(const DataFrame& features, const DataFrame& validFeatures,
                                   const DataFrameColumn& target,
                                   const DataFrameColumn& validTarget) const override;

 protected:
    void writeLearners(web::json::value& description) const override;
    /// @throws UnsupportedJSONModel
    void readLearners(const web::json::value& description) override;
    void describeLearners(StringVector& names, StringVector& values) const override;

    /// Hands on to a candidate what was set for all of them.
    virtual void instruct(Base& /*candidate*/) const {}
    /// Takes over from the first fitted candidate what all have in common.
    virtual void adopt(Searched& model, const Modelable& first) const { model.schema = first.schema; }

 private:
    using Fit = std::function<std::shared_ptr<Modelable>(const Base&)>;
    std::shared_ptr<Modelable> searchWith(const DataFrame& features, const DataFrameColumn& target,
                                          const Fit& fit) const;
    /// Fits the candidates one after the other; those that fail are logged.
    void fitCandidates(Searched& model, const Fit& fit) const;
};

}  // namespace FindBestModel

namespace Classification::FindBestModel {

class IEstimator : public Tessel::FindBestModel::ISearch<Classification::IEstimator, IModelable, IModel> {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return classificationParameters(); }

 protected:
    void instruct(Classification::IEstimator& candidate) const override;
    void adopt(IModel& model, const IModelable& first) const override;
    /// There is none: the fits go to the candidates.
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& /*data*/) const override { return nullptr; }
};

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

class IEstimator : public Tessel::FindBestModel::ISearch<Regression::IEstimator, IModelable, IModel> {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return {}; }

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& /*data*/) const override { return nullptr; }
};

}  // namespace Regression::FindBestModel
}  // namespace Tessel
