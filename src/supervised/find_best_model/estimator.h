#pragma once

#include <functional>

#include "supervised/find_best_model/learners.h"

namespace Tessel {

namespace FindBestModel {

/// What the estimators of searches of both kinds share.
/// @tparam Base  the implementation of the estimators of the kind.
template <class Base>
class ISearch : public Base {
 public:
    using Base::Base;

    Candidates<Base> candidates;  // never changed, so that copies of the search share them

    /// @throws ConstraintViolation for a learner that is not offered.
    void addLearner(const Base& learner);
    void reset() override;

 protected:
    void writeLearners(web::json::value& description) const override;
    /// @throws UnsupportedJSONModel
    void readLearners(const web::json::value& description) override;
    void describeLearners(StringVector& names, StringVector& values) const override;

    /// Hands on to a candidate what was set for all of them.
    virtual void instruct(Base& /*candidate*/) const {}
    /// Fits the candidates one after the other; those that fail are logged.
    template <class Searched, class Fit>
    void search(Searched& searched, const Fit& fit) const;
};

}  // namespace FindBestModel

namespace Classification::FindBestModel {

class IEstimator : public Tessel::FindBestModel::ISearch<Classification::IEstimator> {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return classificationParameters(); }

    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrameColumn& target) const override;
    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrame& validFeatures,
                                    const DataFrameColumn& target,
                                    const DataFrameColumn& validTarget) const override;

 protected:
    void instruct(Classification::IEstimator& candidate) const override;
    /// There is none: the fits go to the candidates.
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& /*data*/) const override { return nullptr; }

 private:
    using Fit = std::function<std::shared_ptr<IModelable>(const Classification::IEstimator&)>;
    std::shared_ptr<IModelable> searchWith(const DataFrame& features, const DataFrameColumn& target,
                                           const Fit& fit) const;
};

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

class IEstimator : public Tessel::FindBestModel::ISearch<Regression::IEstimator> {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return {}; }

    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrameColumn& target) const override;
    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrame& validFeatures,
                                    const DataFrameColumn& target,
                                    const DataFrameColumn& validTarget) const override;

 protected:
    /// There is none: the fits go to the candidates.
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& /*data*/) const override { return nullptr; }

 private:
    using Fit = std::function<std::shared_ptr<IModelable>(const Regression::IEstimator&)>;
    std::shared_ptr<IModelable> searchWith(const DataFrame& features, const DataFrameColumn& target,
                                           const Fit& fit) const;
};

}  // namespace Regression::FindBestModel
}  // namespace Tessel
