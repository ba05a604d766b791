#pragma once

#include <memory>

#include <tessel/framework/estimator.h>
#include <tessel/framework/supervised.h>
#include <tessel/framework/supervised_model.h>

// The handles of regression, as classifier.h has those of classification.

namespace Tessel {
namespace Regression {
class IModelable;  // private: the implementation of a fitted regressor
}

/// What all estimators of regressors have in common.
class TESSEL_API RegressorEstimator : public Supervised::Validatable, public EstimatorHandle {
 public:
    ~RegressorEstimator() override;

    using Supervised::Validatable::validate;
    void validate() const override;
    void validate(const DataFrame& features, const DataFrameColumn& target) const override;

    /// A copy as a new object, whatever the family.
    virtual std::unique_ptr<RegressorEstimator> clone() const = 0;

 protected:
    using EstimatorHandle::EstimatorHandle;
    RegressorEstimator(const RegressorEstimator&) = default;
    RegressorEstimator& operator=(const RegressorEstimator&) = default;

    std::shared_ptr<Regression::IModelable> fitImplementation(const DataFrame& features,
                                                              const DataFrameColumn& target) const;

 private:
    friend class LearnerAccess;  // ensembles and model search fit whatever learner they were given
    virtual std::shared_ptr<Supervised::Regression::Modelable> internal_fit(
        const DataFrame& features, const DataFrameColumn& target) const = 0;
};

/// What all fitted regressors have in common. Copies share the fitted model.
class TESSEL_API RegressorModel : public SupervisedModel<Supervised::Regression::Modelable> {
 public:
    explicit RegressorModel(std::shared_ptr<Regression::IModelable> implementation);
    ~RegressorModel() override;

    /// The table "Scores" with the one column "Prediction: " and the target's name.
    DataFrame predict(const DataFrame& features) const override;

 protected:
    RegressorModel(const RegressorModel&) = default;
    RegressorModel& operator=(const RegressorModel&) = default;
};

/// Gives a family's estimator chaining setters, copying and fits.
template <class Self, class Model>
class RegressorEstimatorOf : public RegressorEstimator, public Supervised::Fitable<Model> {
 public:
    Self& setName(const WString& name) {
        RegressorEstimator::setName(name);
        return static_cast<Self&>(*this);
    }

    using Supervised::Fitable<Model>::fit;
    Model fit(const DataFrame& features, const DataFrameColumn& target) const override {
        return Model(fitImplementation(features, target));
    }
    std::unique_ptr<RegressorEstimator> clone() const override {
        return std::make_unique<Self>(static_cast<const Self&>(*this));
    }

 protected:
    using RegressorEstimator::RegressorEstimator;

 private:
    std::shared_ptr<Supervised::Regression::Modelable> internal_fit(
        const DataFrame& features, const DataFrameColumn& target) const override {
        return std::make_shared<Model>(fitImplementation(features, target));
    }
};

/// Gives a family's model chaining setters.
template <class Self>
class RegressorModelOf : public RegressorModel {
 public:
    using RegressorModel::RegressorModel;

    Self& setName(const WString& name) {
        RegressorModel::setName(name);
        return static_cast<Self&>(*this);
    }
    Self& setModelName(const WString& modelName) {
        RegressorModel::setModelName(modelName);
        return static_cast<Self&>(*this);
    }
};

}  // namespace Tessel
