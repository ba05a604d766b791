#pragma once

#include <tessel/decision_tree.h>

#include "engine/dt/tree.h"
#include "framework/admissible.h"

namespace Tessel::DecisionTree {

/// The parameters of every estimator of trees, with their checks.
class IParameters : public IWeightsAdmissible, public CategoricalVariables::IAdmissible {
 public:
    BoundedParameter<int> minNumRecordsInLeaves{L"minNumRecordsInLeaves", L"Min #records in leaves", 1, 1,
                                                kNoLimit};
    BoundedParameter<int> maxNumNodes{L"maxNumNodes", L"Max #nodes", kNoLimit, 1, kNoLimit};
    BoundedParameter<int> maxNumLevels{L"maxNumLevels", L"Max #levels", kNoLimit, 0, kNoLimit};
    BoundedParameter<int> maxNumSplits{L"maxNumSplits", L"Max #splits", kNoLimit, 0, kNoLimit};
    BoundedParameter<int> featureSelectionSeed{L"featureSelectionSeed", L"Feature selection seed", 12345, 1,
                                               kNoLimit};
    BoundedParameter<int> numSelectedFeatures{L"numSelectedFeatures", L"#Selected features", kNoLimit, 1,
                                              kNoLimit};
    EnumParameter<TreeType> prunedTreeType{L"prunedTreeType",
                                           L"Selected pruned tree type",
                                           TreeType::FULL_GROWN,
                                           {{TreeType::FULL_GROWN, L"FULL_GROWN"},
                                            {TreeType::BEST_PRUNED, L"BEST_PRUNED"},
                                            {TreeType::MIN_ERROR, L"MIN_ERROR"},
                                            {TreeType::MANUAL, L"MANUAL"}}};
    BoundedParameter<int> prunedTreeNumDecisionNodes{
        L"prunedTreeNumDecisionNodes", L"#Decision Nodes in pruned tree", kNoLimit, 0, kNoLimit};
    BoundedParameter<int> maxNumLevelsTreeDiagram{L"maxNumLevelsTreeDiagram", L"Max #levels on tree diagram",
                                                  2, 1, kNoLimit};

    /// All of them in the order of their checks, for the head of a family's list.
    ParameterList treeParameters();
    /// Number of rows, number of features, categorical columns, weights: in this order.
    /// @throws ValueOutOfRange, NotAValidColName, ColumnIndexOutOfRange, IncompatibleSizes,
    /// NonPositiveWeights
    void validateTreeAgainst(const DataFrame& features) const;
    Engine::DT::Limits limits() const;
    /// What a fit with validation data does with the tree that it grew.
    template <class TreeModel>
    void pruneAndSelect(TreeModel& tree, const DataFrame& features, const DataFrameColumn& target) const {
        tree.prune(features, target);
        tree.select(prunedTreeType.get());
    }
};

}  // namespace Tessel::DecisionTree
