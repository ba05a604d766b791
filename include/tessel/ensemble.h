#pragma once

#include <memory>

#include <tessel/framework/classifier.h>
#include <tessel/framework/regressor.h>

// What bagging, boosting and random trees have in common: many fitted copies of one weak learner that vote or
// are averaged. Classes have the order of their first rows in the whole table, in the weak learners too,
// where it decides between classes that are alike.

namespace Tessel {

// The weak learners; their own headers declare them in full.
namespace Classification::DecisionTree {
class Estimator;
}
namespace Classification::NaiveBayes {
class Estimator;
}
namespace Regression::DecisionTree {
class Estimator;
}

namespace Ensemble {

class IParameters;         // private: the parameters of all ensembles
class IBootstrap;          // private: those of ensembles of bootstrap samples
class IClassifierMembers;  // private: the fitted weak learners
class IRegressorMembers;

/// The parameter that all ensembles have.
class TESSEL_API ParametersHandle {
 public:
    virtual ~ParametersHandle();
    /// How many weak learners to fit. Range 1 .. 2147483647; default 10.
    ParametersHandle& setNumWeakLearners(int value);
    int getNumWeakLearners() const;

 private:
    virtual IParameters& ensembleParameters() const = 0;
};

/// The seed of ensembles whose learners are fitted on bootstrap samples: n rows out of n, drawn with
/// replacement.
class TESSEL_API BootstrapHandle {
 public:
    virtual ~BootstrapHandle();
    /// Learner m, counted from 0, draws its sample by the seed + m. Any integer; default 12345.
    BootstrapHandle& setBootstrapSeed(int value);
    int getBootstrapSeed() const;

 private:
    virtual IBootstrap& bootstrap() const = 0;
};

/// Takes the weak learner of a classification ensemble, one form per family. The estimator is copied.
class TESSEL_API ClassifierBase {
 public:
    virtual ~ClassifierBase();
    ClassifierBase& setBaseEstimator(const Classification::DecisionTree::Estimator& estimator);
    ClassifierBase& setBaseEstimator(const Classification::NaiveBayes::Estimator& estimator);

 private:
    virtual void assignBaseEstimator(const ClassifierEstimator& estimator) = 0;
};

/// The same for regression.
class TESSEL_API RegressorBase {
 public:
    virtual ~RegressorBase();
    RegressorBase& setBaseEstimator(const Regression::DecisionTree::Estimator& estimator);

 private:
    virtual void assignBaseEstimator(const RegressorEstimator& estimator) = 0;
};

/// Lets the setters return the family's own estimator.
template <class Self>
class ParametersOf : public ParametersHandle {
 public:
    Self& setNumWeakLearners(int value) {
        ParametersHandle::setNumWeakLearners(value);
        return static_cast<Self&>(*this);
    }
};

template <class Self>
class BootstrapOf : public BootstrapHandle {
 public:
    Self& setBootstrapSeed(int value) {
        BootstrapHandle::setBootstrapSeed(value);
        return static_cast<Self&>(*this);
    }
};

/// @tparam Base  ClassifierBase or RegressorBase, which list the learners that can be weak.
template <class Self, class Base>
class BaseEstimatorOf : public Base {
 public:
    /// The weak learner, a decision tree with its defaults until set.
    template <class Learner>
    requires requires(Base& base, const Learner& learner) { base.setBaseEstimator(learner); }
    Self& setBaseEstimator(const Learner& estimator) {
        Base::setBaseEstimator(estimator);
        return static_cast<Self&>(*this);
    }
};

/// The fitted weak learners of a classification ensemble.
class TESSEL_API ClassifierMembersHandle {
 public:
    virtual ~ClassifierMembersHandle();
    int getNumWeakLearners() const;
    /// The algorithm of the weak learners as texts name it, such as "decisionTree".
    const WString& getWeakLearnerAlgorithm() const;
    /// What the vote of each learner weighs.
    const Vector& getLearnerWeights() const;
    /// A weak learner's model, counted from 0; its class is the `Model` of its family. It is shared with the
    /// ensemble. @throws IndexOutOfRange
    std::shared_ptr<Supervised::Classification::Modelable> getWeakModel(int position) const;

 private:
    virtual const IClassifierMembers& members() const = 0;
};

/// The fitted weak learners of a regression ensemble.
class TESSEL_API RegressorMembersHandle {
 public:
    virtual ~RegressorMembersHandle();
    int getNumWeakLearners() const;
    const WString& getWeakLearnerAlgorithm() const;
    const Vector& getLearnerWeights() const;
    std::shared_ptr<Supervised::Regression::Modelable> getWeakModel(int position) const;

 private:
    virtual const IRegressorMembers& members() const = 0;
};

}  // namespace Ensemble
}  // namespace Tessel
