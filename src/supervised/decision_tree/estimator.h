#pragma once

#include "framework/classification.h"
#include "framework/regression.h"
#include "supervised/decision_tree/parameters.h"
#include "supervised/decision_tree/tree_model.h"

namespace Tessel::Classification::DecisionTree {

class IEstimator : public Classification::IEstimator, public Tessel::DecisionTree::IParameters {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;

    using Classification::IEstimator::fit;
    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrame& validFeatures,
                                    const DataFrameColumn& target,
                                    const DataFrameColumn& validTarget) const override;
    void validateAgainst(const DataFrame& features) const override { validateTreeAgainst(features); }
    IntVector categoricalColumns(const DataFrame& features) const override {
        return categoricalPositions(features);
    }
    bool takesMultiplicities() const override { return true; }
    bool isFittedAlone(int numRows) const override {
        return numRows > Tessel::DecisionTree::kMaxNumRowsOfResamples;
    }
    std::unique_ptr<Supervised::Preparation> prepare(const TrainingFeatures& features, bool useAllRows,
                                                     Engine::Crew* crew) const override {
        return Tessel::DecisionTree::sortTable(features, useAllRows, crew);
    }

 protected:
    std::vector<double> classSizes(const ClassTarget& target, const std::vector<double>& counts,
                                   std::span<const std::int32_t> multiplicities) const override;
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Tessel::Classification::DecisionTree

namespace Tessel::Regression::DecisionTree {

class IEstimator : public Regression::IEstimator, public Tessel::DecisionTree::IParameters {
 public:
    IEstimator();

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return treeParameters(); }

    using Regression::IEstimator::fit;
    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrame& validFeatures,
                                    const DataFrameColumn& target,
                                    const DataFrameColumn& validTarget) const override;
    void validateAgainst(const DataFrame& features) const override { validateTreeAgainst(features); }
    IntVector categoricalColumns(const DataFrame& features) const override {
        return categoricalPositions(features);
    }
    bool takesMultiplicities() const override { return true; }
    bool isFittedAlone(int numRows) const override {
        return numRows > Tessel::DecisionTree::kMaxNumRowsOfResamples;
    }
    std::unique_ptr<Supervised::Preparation> prepare(const TrainingFeatures& features, bool useAllRows,
                                                     Engine::Crew* crew) const override {
        return Tessel::DecisionTree::sortTable(features, useAllRows, crew);
    }

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
    bool fillsFitted(const TrainingSet& data) const override {
        return weights.get().empty() && data.multiplicities.empty();
    }
};

}  // namespace Tessel::Regression::DecisionTree
