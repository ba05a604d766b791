#pragma once

#include "supervised/decision_tree/parameters.h"
#include "supervised/ensemble/estimator.h"

namespace Tessel {

namespace Classification::RandomTrees {

class IEstimator : public Ensemble::IClassifierEnsemble,
                   public Ensemble::IBootstrap,
                   public Tessel::DecisionTree::IParameters {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;
    Learner learner(int position) const override;

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Classification::RandomTrees

namespace Regression::RandomTrees {

class IEstimator : public Ensemble::IRegressorEnsemble,
                   public Ensemble::IBootstrap,
                   public Tessel::DecisionTree::IParameters {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;
    Learner learner(int position) const override;

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Regression::RandomTrees
}  // namespace Tessel
