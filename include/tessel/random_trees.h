#pragma once

#include <tessel/decision_tree.h>
#include <tessel/ensemble.h>

// Random trees: bagged decision trees whose nodes each draw the features that their split may use. With the
// parameter `numSelectedFeatures` unset every node uses all of them, which is bagging; the square root of the
// number of features is a common choice for classes, a third of them for numbers. Tree m, counted from 0,
// draws by `featureSelectionSeed` + m, from 2147483647 on from 1. Trees are fitted side by side by all
// threads, with the same result for any number of them; all of them share the columns and their sorted rows.
// Source: L. Breiman, Random forests, Machine Learning 45, 2001.

namespace Tessel {

namespace Classification::RandomTrees {

/// A fitted forest. Posteriors are the shares of the votes; their columns have the names of the classes. The
/// success class is the second one of the class list unless another was chosen.
class TESSEL_API Model : public ClassifierModelOf<Model>, public Ensemble::ClassifierMembersHandle {
 public:
    using ClassifierModelOf::ClassifierModelOf;

    /// "Features Importance": for each feature the decreases of impurity by its splits, the mean of the
    /// trees.
    DataFrame getFeaturesImportance() const;
    /// "Out-of-bag Error": a row per number of trees with "Error Rate" and "#Records"; see bagging.h.
    DataFrame getOutOfBagError() const;

 private:
    const Ensemble::IClassifierMembers& members() const override;
};

/// Fits forests of classification trees. Observation weights and priors are those of the trees.
class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model>,
                             public Ensemble::ParametersOf<Estimator>,
                             public Ensemble::BootstrapOf<Estimator>,
                             public Tessel::DecisionTree::ParametersOf<Estimator> {
 public:
    /// @throws EnsembleSamplingMissedClass by fits where a sample lacks a class.
    Estimator();

 private:
    Ensemble::IParameters& ensembleParameters() const override;
    Ensemble::IBootstrap& bootstrap() const override;
    Tessel::DecisionTree::IParameters& treeParameters() const override;
};

}  // namespace Classification::RandomTrees

namespace Regression::RandomTrees {

/// A fitted forest; its prediction is the mean of those of the trees.
class TESSEL_API Model : public RegressorModelOf<Model>, public Ensemble::RegressorMembersHandle {
 public:
    using RegressorModelOf::RegressorModelOf;

    DataFrame getFeaturesImportance() const;
    /// "Out-of-bag Error": a row per number of trees with "MSE" and "#Records".
    DataFrame getOutOfBagError() const;

 private:
    const Ensemble::IRegressorMembers& members() const override;
};

/// Fits forests of regression trees.
class TESSEL_API Estimator : public RegressorEstimatorOf<Estimator, Model>,
                             public Ensemble::ParametersOf<Estimator>,
                             public Ensemble::BootstrapOf<Estimator>,
                             public Tessel::DecisionTree::ParametersOf<Estimator> {
 public:
    Estimator();

 private:
    Ensemble::IParameters& ensembleParameters() const override;
    Ensemble::IBootstrap& bootstrap() const override;
    Tessel::DecisionTree::IParameters& treeParameters() const override;
};

}  // namespace Regression::RandomTrees
}  // namespace Tessel
