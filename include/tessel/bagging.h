#pragma once

#include <tessel/ensemble.h>

// Bagging: each weak learner is fitted on a bootstrap sample of the training data, n rows out of n with
// replacement; classes are chosen by vote, numbers averaged. The learners are fitted side by side by all
// threads, with the same result for any number of them.
// Source: L. Breiman, Bagging predictors, Machine Learning 24, 1996.
//
// The report has the table "Out-of-bag Error": for each number of learners the misclassification rate or the
// mean squared error of the training rows, each predicted by the learners whose sample lacks it.

namespace Tessel {

namespace Classification::Bagging {

/// A fitted ensemble. Posteriors are the shares of the votes; their columns have the names of the classes.
/// The success class is the second one of the class list unless another was chosen.
class TESSEL_API Model : public ClassifierModelOf<Model>, public Ensemble::ClassifierMembersHandle {
 public:
    using ClassifierModelOf::ClassifierModelOf;

    /// "Out-of-bag Error": a row per number of learners with "Error Rate" and "#Records", the rows that were
    /// judged; a share without rows is NaN. No rows where numbers of rows and classes multiply to more than
    /// 2^27.
    DataFrame getOutOfBagError() const;

 private:
    const Ensemble::IClassifierMembers& members() const override;
};

/// Fits bagged classifiers. A prior-probability method that was set here goes to the weak learners.
///
///     auto model = Bagging::Estimator().setBaseEstimator(NaiveBayes::Estimator()).fit(features, target);
class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model>,
                             public Ensemble::ParametersOf<Estimator>,
                             public Ensemble::BootstrapOf<Estimator>,
                             public Ensemble::BaseEstimatorOf<Estimator, Ensemble::ClassifierBase> {
 public:
    /// @throws EnsembleSamplingMissedClass by fits where a sample lacks a class.
    Estimator();

 private:
    Ensemble::IParameters& ensembleParameters() const override;
    Ensemble::IBootstrap& bootstrap() const override;
    void assignBaseEstimator(const ClassifierEstimator& estimator) override;
};

}  // namespace Classification::Bagging

namespace Regression::Bagging {

/// A fitted ensemble; its prediction is the mean of those of the learners.
class TESSEL_API Model : public RegressorModelOf<Model>, public Ensemble::RegressorMembersHandle {
 public:
    using RegressorModelOf::RegressorModelOf;

    /// "Out-of-bag Error": a row per number of learners with "MSE" and "#Records".
    DataFrame getOutOfBagError() const;

 private:
    const Ensemble::IRegressorMembers& members() const override;
};

/// Fits bagged regressors.
class TESSEL_API Estimator : public RegressorEstimatorOf<Estimator, Model>,
                             public Ensemble::ParametersOf<Estimator>,
                             public Ensemble::BootstrapOf<Estimator>,
                             public Ensemble::BaseEstimatorOf<Estimator, Ensemble::RegressorBase> {
 public:
    Estimator();

 private:
    Ensemble::IParameters& ensembleParameters() const override;
    Ensemble::IBootstrap& bootstrap() const override;
    void assignBaseEstimator(const RegressorEstimator& estimator) override;
};

}  // namespace Regression::Bagging
}  // namespace Tessel
