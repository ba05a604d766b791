#pragma once

#include <memory>

#include <tessel/framework/estimator.h>
#include <tessel/framework/supervised.h>
#include <tessel/framework/supervised_model.h>

// The handles of classification. `ClassifierEstimator` and `ClassifierModel` forward everything that
// classifiers have in common to the implementation, compiled once; the templates below them only give setters
// the family's own type, so that calls chain. A family adds its parameters and nothing else:
//
//   class TESSEL_API Model : public ClassifierModelOf<Model> { using ClassifierModelOf::ClassifierModelOf; };
//   class TESSEL_API Estimator : public ClassifierEstimatorOf<Estimator, Model> { ... };

namespace Tessel {
namespace Classification {
class IModelable;  // private: the implementation of a fitted classifier
}

/// What all estimators of classifiers have in common.
class TESSEL_API ClassifierEstimator : public Supervised::Validatable,
                                       public Supervised::Classification::PriorProbsAdmissible,
                                       public EstimatorHandle {
 public:
    ~ClassifierEstimator() override;

    using Supervised::Validatable::validate;
    void validate() const override;
    void validate(const DataFrame& features, const DataFrameColumn& target) const override;

    PriorProbMethodType getPriorProbMethod() const override;
    double getPriorProb(const WString& classLabel) const override;

    /// The class whose posterior the success probability is compared with when there are two classes; by
    /// default the class of the first training row. With more classes it decides nothing.
    ClassifierEstimator& setSuccessClass(const WString& label);
    const WString& getSuccessClass() const;
    /// The cut-off in [0, 1]; default 0.5.
    ClassifierEstimator& setSuccessProbability(double cutOff);
    double getSuccessProbability() const;

    /// A copy as a new object, whatever the family.
    virtual std::unique_ptr<ClassifierEstimator> clone() const = 0;

 protected:
    using EstimatorHandle::EstimatorHandle;
    ClassifierEstimator(const ClassifierEstimator&) = default;
    ClassifierEstimator& operator=(const ClassifierEstimator&) = default;

    std::shared_ptr<Classification::IModelable> fitImplementation(const DataFrame& features,
                                                                  const DataFrameColumn& target) const;

 private:
    friend class LearnerAccess;  // ensembles and model search fit whatever learner they were given
    virtual std::shared_ptr<Supervised::Classification::Modelable> internal_fit(
        const DataFrame& features, const DataFrameColumn& target) const = 0;
    void assignPriorProbMethod(PriorProbMethodType method) override;
    void assignPriorProb(const WString& classLabel, double probability) override;
};

/// What all fitted classifiers have in common. Copies share the fitted model: a success class or cut-off set
/// on one holds for all of them.
class TESSEL_API ClassifierModel : public SupervisedModel<Supervised::Classification::Modelable> {
 public:
    explicit ClassifierModel(std::shared_ptr<Classification::IModelable> implementation);
    ~ClassifierModel() override;

    /// The class labels, in the order of the posterior columns: by first appearance in the training data.
    const StringVector& getClasses() const override;
    DataFrame priorProbability() const override;
    const WString& getSuccessClass() const override;
    double getSuccessProbability() const override;
    /// @throws InvalidSuccessLabel, ValueOutOfRange
    void validate() const;

    DataFrame predict(const DataFrame& features) const override;
    DataFrame posteriorProbability(const DataFrame& features) const override;
    DataFrame predictWithPosterior(const DataFrame& features) const override;

 protected:
    ClassifierModel(const ClassifierModel&) = default;
    ClassifierModel& operator=(const ClassifierModel&) = default;

 private:
    void assignSuccessClass(const WString& label) override;
    void assignSuccessProbability(double cutOff) override;
};

/// Gives a family's estimator chaining setters, copying and fits.
template <class Self, class Model>
class ClassifierEstimatorOf : public ClassifierEstimator, public Supervised::Fitable<Model> {
 public:
    Self& setName(const WString& name) { return chain(ClassifierEstimator::setName(name)); }
    Self& setPriorProbMethod(PriorProbMethodType method) {
        return chain(ClassifierEstimator::setPriorProbMethod(method));
    }
    Self& setPriorProb(const WString& classLabel, double probability) {
        return chain(ClassifierEstimator::setPriorProb(classLabel, probability));
    }
    Self& setSuccessClass(const WString& label) { return chain(ClassifierEstimator::setSuccessClass(label)); }
    Self& setSuccessProbability(double cutOff) {
        return chain(ClassifierEstimator::setSuccessProbability(cutOff));
    }

    using Supervised::Fitable<Model>::fit;
    Model fit(const DataFrame& features, const DataFrameColumn& target) const override {
        return Model(fitImplementation(features, target));
    }
    std::unique_ptr<ClassifierEstimator> clone() const override {
        return std::make_unique<Self>(static_cast<const Self&>(*this));
    }

 protected:
    using ClassifierEstimator::ClassifierEstimator;

 private:
    template <class Interface>
    Self& chain(Interface&) {
        return static_cast<Self&>(*this);
    }
    std::shared_ptr<Supervised::Classification::Modelable> internal_fit(
        const DataFrame& features, const DataFrameColumn& target) const override {
        return std::make_shared<Model>(fitImplementation(features, target));
    }
};

/// Gives a family's model chaining setters.
template <class Self>
class ClassifierModelOf : public ClassifierModel {
 public:
    using ClassifierModel::ClassifierModel;

    Self& setName(const WString& name) { return chain(ClassifierModel::setName(name)); }
    Self& setModelName(const WString& modelName) { return chain(ClassifierModel::setModelName(modelName)); }
    Self& setSuccessClass(const WString& label) { return chain(ClassifierModel::setSuccessClass(label)); }
    Self& setSuccessProbability(double cutOff) {
        return chain(ClassifierModel::setSuccessProbability(cutOff));
    }

 private:
    template <class Interface>
    Self& chain(Interface&) {
        return static_cast<Self&>(*this);
    }
};

}  // namespace Tessel
