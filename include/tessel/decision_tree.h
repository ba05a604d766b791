#pragma once

#include <tessel/framework/classifier.h>
#include <tessel/framework/regressor.h>

// Classification and regression trees: binary splits, each the exact best one over all features and places,
// by the decrease of Gini's index or of the sum of squares; pruning by cost complexity with validation data.
// Source: L. Breiman, J. Friedman, R. Olshen & C. Stone, Classification and Regression Trees (1984).
//
// Text columns are categorical by themselves, numeric ones when they are named. A missing cell goes to the
// left child, in training as in scoring; a category that did not occur in the node goes to the right one.

namespace Tessel {
namespace DecisionTree {

class IParameters;  // private: the parameters of all tree estimators
class ITreeModel;   // private: the fitted trees of both kinds

/// Trees to choose between after pruning.
enum class TreeType : int {
    FULL_GROWN = 0,  ///< the tree as grown
    BEST_PRUNED =
        1,          ///< the smallest tree whose validation error is within one standard error of the minimum
    MIN_ERROR = 2,  ///< the tree with the least validation error, the smallest of equals
    MANUAL = 3      ///< the largest tree with at most the given number of decision nodes
};

/// The display name: "Full Grown", "Best Pruned", "Minimum Error" or "Manual".
TESSEL_API WString getTreeTypeName(TreeType type);

/// The parameters that all estimators of trees have, compiled once; `ParametersOf` lets its setters chain.
/// Values out of range are refused when the estimator is validated or fits.
class TESSEL_API ParametersHandle : public WeightsAdmissible, public CategoricalVariables::Admissible {
 public:
    /// The least number of training records of a leaf, whatever their weights. Range 1 .. number of rows;
    /// default 1.
    ParametersHandle& setMinNumRecordsInLeaves(int value);
    int getMinNumRecordsInLeaves() const;
    /// The largest number of nodes, decision nodes and leaves, the root counted. The tree then grows best
    /// split first. Range 1 .. 2147483647, which is the default and means no limit.
    ParametersHandle& setMaxNumNodes(int value);
    int getMaxNumNodes() const;
    /// The largest number of splits on the way to a leaf: the root is level 0. Range 0 .. 2147483647, which
    /// is the default and means no limit.
    ParametersHandle& setMaxNumLevels(int value);
    int getMaxNumLevels() const;
    /// The largest number of splits. The tree then grows best split first. Range 0 .. 2147483647, which is
    /// the default and means no limit.
    ParametersHandle& setMaxNumSplits(int value);
    int getMaxNumSplits() const;
    /// How many features are drawn afresh for the split of each node. Range 1 .. number of features; all of
    /// them until set.
    ParametersHandle& setNumSelectedFeatures(int value);
    int getNumSelectedFeatures() const;
    /// Seed of these draws. Range 1 .. 2147483647; default 12345.
    ParametersHandle& setFeatureSelectionSeed(int value);
    int getFeatureSelectionSeed() const;
    /// The tree that a fit with validation data selects after pruning; it does not prune until this is set.
    ParametersHandle& setPrunedTreeType(TreeType value);
    TreeType getPrunedTreeType() const;
    bool isPrunedTreeTypeSet() const;
    /// The number of decision nodes of TreeType::MANUAL. Range 0 .. 2147483647; default 2147483647.
    ParametersHandle& setPrunedTreeNumDecisionNodes(int value);
    int getPrunedTreeNumDecisionNodes() const;
    /// How many levels of splits `treeToString()` shows. Range 1 .. 2147483647; default 2.
    ParametersHandle& setMaxNumLevelsTreeDiagram(int value);
    int getMaxNumLevelsTreeDiagram() const;

    const Vector& getWeights() const override;
    const StringVector& getCategoricalFeaturesNames() const override;
    const IntVector& getCategoricalFeaturesOffsets() const override;
    DataFrame getCategoricalFeaturesInfo() const override;

 private:
    void assignWeights(const Vector& weights) override;
    void assignCategoricalFeaturesNames(const StringVector& names) override;
    void assignCategoricalFeaturesOffsets(const IntVector& offsets) override;
    virtual IParameters& treeParameters() const = 0;
};

/// Lets the setters of the tree parameters return the family's own estimator.
template <class Self>
class ParametersOf : public ParametersHandle {
 public:
    Self& setMinNumRecordsInLeaves(int value) {
        return chain(ParametersHandle::setMinNumRecordsInLeaves(value));
    }
    Self& setMaxNumNodes(int value) { return chain(ParametersHandle::setMaxNumNodes(value)); }
    Self& setMaxNumLevels(int value) { return chain(ParametersHandle::setMaxNumLevels(value)); }
    Self& setMaxNumSplits(int value) { return chain(ParametersHandle::setMaxNumSplits(value)); }
    Self& setNumSelectedFeatures(int value) { return chain(ParametersHandle::setNumSelectedFeatures(value)); }
    Self& setFeatureSelectionSeed(int value) {
        return chain(ParametersHandle::setFeatureSelectionSeed(value));
    }
    Self& setPrunedTreeType(TreeType value) { return chain(ParametersHandle::setPrunedTreeType(value)); }
    Self& setPrunedTreeNumDecisionNodes(int value) {
        return chain(ParametersHandle::setPrunedTreeNumDecisionNodes(value));
    }
    Self& setMaxNumLevelsTreeDiagram(int value) {
        return chain(ParametersHandle::setMaxNumLevelsTreeDiagram(value));
    }
    Self& setWeights(const Vector& weights) { return chain(ParametersHandle::setWeights(weights)); }
    Self& setCategoricalFeaturesNames(const StringVector& names) {
        return chain(ParametersHandle::setCategoricalFeaturesNames(names));
    }
    Self& setCategoricalFeaturesOffsets(const IntVector& offsets) {
        return chain(ParametersHandle::setCategoricalFeaturesOffsets(offsets));
    }

 private:
    template <class Interface>
    Self& chain(Interface&) {
        return static_cast<Self&>(*this);
    }
};

/// The fit with validation data of estimators of trees.
template <class Self, class Model>
class PruningFitable {
 public:
    /// Fits on the training part; when a pruned tree type is set, prunes with the validation part and
    /// selects.
    Model fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
              const DataFrameColumn& trainingTarget, const DataFrameColumn& validationTarget) const {
        const Self& self = static_cast<const Self&>(*this);
        Model model = self.fit(trainingFeatures, trainingTarget);
        if (self.isPrunedTreeTypeSet()) {
            model.prune(validationFeatures, validationTarget);
            model.select(self.getPrunedTreeType());
        }
        return model;
    }
    /// The targets as one-column tables. @throws NumColumnsMismatch
    Model fit(const DataFrame& trainingFeatures, const DataFrame& validationFeatures,
              const DataFrame& trainingTarget, const DataFrame& validationTarget) const {
        return fit(trainingFeatures, validationFeatures, Supervised::targetColumn(trainingTarget),
                   Supervised::targetColumn(validationTarget));
    }
};

/// What fitted trees of both kinds offer beyond predictions. Pruning and selecting act on the fitted model,
/// which copies share.
class TESSEL_API TreeHandle : public CategoricalVariables::Retrievable {
 public:
    /// Makes the nested sequence of pruned trees by cost complexity and judges them by validation data; the
    /// selected tree stays. Classes are those that the success class and cut-off of now predict. @throws
    /// LabelUnseenInTraining for a class that training did not have.
    void prune(const DataFrame& features, const DataFrameColumn& target);
    void prune(const DataFrame& features, const DataFrame& target);
    /// Selects the tree that scores and reports. May be repeated with another type. MANUAL takes the number
    /// of decision nodes of the estimator. @throws ConstraintViolation for BEST_PRUNED and MIN_ERROR before
    /// `prune`.
    void select(TreeType type);
    /// Selects the largest pruned tree with at most so many decision nodes; 0 is the root alone. The sequence
    /// of pruned trees comes from the training data, so this needs no `prune`. @throws ValueOutOfRange below
    /// 0.
    void select(int numDecisionNodes);

    /// One rule a leaf: "IF petal_length < 2.45 AND colour IN {red, blue} THEN setosa (50 records)". Of the
    /// conditions on one side of a feature only the narrowest is told. A missing cell fulfils < and IN,
    /// whatever the value. Thresholds have 7 digits, and always the first decimal; the report table "All
    /// Nodes Info" has them exactly.
    /// @param numLevels  splits to follow from the root; where the tree goes deeper the node there answers.
    StringVector treeRules(int numLevels) const;
    /// The selected tree as indented text, down to `numLevels` levels of splits.
    WString treeToString(int numLevels) const;
    /// The same down to the level that the estimator was given for diagrams.
    WString treeToString() const;

    /// "Feature Importance": for each feature the sum of the decreases of impurity by its splits.
    DataFrame getFeaturesImportance() const;
    /// "Training Log": the error on the training records of the root and after each split, best split first.
    DataFrame getTrainingLog() const;
    /// "Pruning Log": a row per pruned tree, the full-grown one first; no rows before `prune`.
    DataFrame getPruningLog() const;

    const StringVector& getCategoricalFeaturesNames() const override;
    const IntVector& getCategoricalFeaturesOffsets() const override;
    /// A row per categorical feature: name and categories.
    DataFrame getCategoricalFeaturesInfo() const override;

 private:
    virtual ITreeModel& treeModel() const = 0;
};

}  // namespace DecisionTree

namespace Classification::DecisionTree {

using Tessel::DecisionTree::TreeType;

/// A fitted classification tree.
class TESSEL_API Model : public ClassifierModelOf<Model>, public Tessel::DecisionTree::TreeHandle {
 public:
    using ClassifierModelOf::ClassifierModelOf;

 private:
    Tessel::DecisionTree::ITreeModel& treeModel() const override;
};

/// Grows classification trees.
class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model>,
                             public Tessel::DecisionTree::ParametersOf<Estimator>,
                             public Tessel::DecisionTree::PruningFitable<Estimator, Model> {
 public:
    Estimator();

    using ClassifierEstimatorOf::fit;
    using PruningFitable::fit;

 private:
    Tessel::DecisionTree::IParameters& treeParameters() const override;
};

}  // namespace Classification::DecisionTree

namespace Regression::DecisionTree {

using Tessel::DecisionTree::TreeType;

/// A fitted regression tree.
class TESSEL_API Model : public RegressorModelOf<Model>, public Tessel::DecisionTree::TreeHandle {
 public:
    using RegressorModelOf::RegressorModelOf;

 private:
    Tessel::DecisionTree::ITreeModel& treeModel() const override;
};

/// Grows regression trees.
class TESSEL_API Estimator : public RegressorEstimatorOf<Estimator, Model>,
                             public Tessel::DecisionTree::ParametersOf<Estimator>,
                             public Tessel::DecisionTree::PruningFitable<Estimator, Model> {
 public:
    Estimator();

    using PruningFitable::fit;
    using RegressorEstimatorOf::fit;

 private:
    Tessel::DecisionTree::IParameters& treeParameters() const override;
};

}  // namespace Regression::DecisionTree
}  // namespace Tessel
