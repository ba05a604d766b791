#pragma once

#include <tessel/framework/classifier.h>

/// Naive Bayes: the inputs are taken as independent within each class. Numeric inputs have a normal density
/// per class (mean and variance with divisor n - 1), text inputs a table of frequencies; missing cells and
/// categories that training did not show are left out of the product. Fitting is one pass over the data,
/// scoring works in log space. Source: T. Mitchell, Machine Learning (McGraw-Hill 1997), chapter 6.
namespace Tessel::Classification::NaiveBayes {

/// A fitted naive Bayes classifier. Beside the tables that all classifiers report it gives one table per
/// input: means, standard deviations and counts of a numeric input by class, or counts and probabilities of
/// the categories of a text input by class.
class TESSEL_API Model : public ClassifierModelOf<Model> {
 public:
    using ClassifierModelOf::ClassifierModelOf;
};

/// Fits naive Bayes classifiers. Observation weights are not part of the method's interface.
///
///     auto model = NaiveBayes::Estimator().setLaplaceSmoothing(1.0).fit(features, target);
///     DataFrame classes = model.predict(newFeatures);
class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model> {
 public:
    Estimator();

    /// Pseudo-count added to every category in every class. Range [0, 1e9]; default 0: the frequencies as
    /// they are, where a category never seen with a class gets the probability 1e-10 there. 1 is Laplace's
    /// rule.
    Estimator& setLaplaceSmoothing(double pseudoCount);
    double getLaplaceSmoothing() const;
};

}  // namespace Tessel::Classification::NaiveBayes
