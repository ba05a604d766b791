#pragma once

#include <tessel/ensemble.h>

// Boosting: weak learners one after the other, each on what those before it got wrong. The result does not
// depend on the number of threads; each learner uses them as it does alone.

namespace Tessel {

// AdaBoost by resampling: each round fits the weak learner on n rows out of n, drawn by the weights of the
// rows, and makes the rows that it misclassifies weigh more. Learners vote with weights.
// Sources: Y. Freund & R. Schapire, Experiments with a new boosting algorithm, ICML 1996; L. Breiman, Arcing
// classifiers, The Annals of Statistics 26, 1998; J. Zhu, H. Zou, S. Rosset & T. Hastie, Multi-class
// AdaBoost, Statistics and Its Interface 2, 2009.
namespace Classification::Boosting {

/// How the weighted error of a learner becomes the weight of its vote, with a = ln(1 / error - 1) and K
/// classes. A learner without error gets the largest finite double and is the last.
enum class MethodType : int {
    M1_BREIMAN = 2,  ///< a
    M1_FREUND = 1,   ///< a / 2
    SAMME = 3        ///< a + ln(K - 1)
};

/// A fitted ensemble. Posteriors are the weights of the votes as shares; their columns have the names of the
/// classes. The success class is the second one of the class list unless another was chosen.
class TESSEL_API Model : public ClassifierModelOf<Model>, public Ensemble::ClassifierMembersHandle {
 public:
    using ClassifierModelOf::ClassifierModelOf;

 private:
    const Ensemble::IClassifierMembers& members() const override;
};

/// Fits boosted classifiers, at most `numWeakLearners` of them. A prior-probability method that was set here
/// goes to the weak learners.
class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model>,
                             public Ensemble::ParametersOf<Estimator>,
                             public Ensemble::BaseEstimatorOf<Estimator, Ensemble::ClassifierBase> {
 public:
    /// @throws EnsembleSamplingMissedClass by fits where a resample lacks a class, WorseThanRandomGuess where
    /// a learner's weighted error on the training rows is 0.5 or more.
    Estimator();

    /// Default M1_BREIMAN.
    Estimator& setMethod(MethodType method);
    MethodType getMethod() const;
    /// The seed by which each round draws its resample. Any integer; default 12345.
    Estimator& setResamplingSeed(int value);
    int getResamplingSeed() const;

 private:
    Ensemble::IParameters& ensembleParameters() const override;
    void assignBaseEstimator(const ClassifierEstimator& estimator) override;
};

}  // namespace Classification::Boosting

// Least-squares boosting: each round fits the weak learner on the residuals of the rounds before, which start
// as the deviations from the mean; a step of its prediction is then taken off. Source: J. Friedman, Greedy
// function approximation: a gradient boosting machine, The Annals of Statistics 29, 2001.
namespace Regression::Boosting {

/// A fitted ensemble; it predicts the mean response plus the step size times the sum of what the learners
/// predict.
class TESSEL_API Model : public RegressorModelOf<Model>, public Ensemble::RegressorMembersHandle {
 public:
    using RegressorModelOf::RegressorModelOf;

    /// The mean of the training targets.
    double getMeanResponse() const;
    double getStepSize() const;

 private:
    const Ensemble::IRegressorMembers& members() const override;
};

/// Fits boosted regressors.
class TESSEL_API Estimator : public RegressorEstimatorOf<Estimator, Model>,
                             public Ensemble::ParametersOf<Estimator>,
                             public Ensemble::BaseEstimatorOf<Estimator, Ensemble::RegressorBase> {
 public:
    Estimator();

    /// The part of each learner's prediction that is used. Range [0, 1e9], sensible up to 1; default 0.3.
    Estimator& setStepSize(double value);
    double getStepSize() const;

 private:
    Ensemble::IParameters& ensembleParameters() const override;
    void assignBaseEstimator(const RegressorEstimator& estimator) override;
};

}  // namespace Regression::Boosting
}  // namespace Tessel
