#pragma once

#include "supervised/ensemble/estimator.h"

namespace Tessel {

namespace Classification::Bagging {

class IEstimator : public Ensemble::IWithBaseEstimator<Ensemble::IClassifierEnsemble>,
                   public Ensemble::IBootstrap {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Classification::Bagging

namespace Regression::Bagging {

class IEstimator : public Ensemble::IWithBaseEstimator<Ensemble::IRegressorEnsemble>,
                   public Ensemble::IBootstrap {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return {numWeakLearners, bootstrapSeed}; }

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Regression::Bagging
}  // namespace Tessel
