#pragma once

#include <memory>
#include <vector>

#include "framework/supervised.h"

// The implementations that every regressor builds on.

namespace Tessel::Regression {

/// The implementation of a fitted regressor. A family derives its IModel, adds the fitted state of its
/// engine, and says how it scores and what it reports.
class IModelable : public Supervised::IModelable {
 public:
    using Supervised::IModelable::IModelable;

    /// "Scores", one column "Prediction: " and the target's name.
    DataFrame predict(const DataFrame& features) const;

 protected:
    /// Fills `predictions`, which has its size, for rows whose columns stand in the order of the schema.
    virtual void score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const = 0;
};

/// The numbers of a target. @throws NonNumericData for text, ConstraintViolation for missing and infinite
/// cells.
std::span<const double> readNumericTarget(const DataFrameColumn& target);

/// What a family's engine is given to fit on.
struct TrainingSet {
    TrainingFeatures features;
    std::span<const double> target;
};

/// The implementation of a regressor's estimator: the checks of the data in their order, and the frame of the
/// fit.
class IEstimator : public Supervised::IEstimator {
 public:
    using Supervised::IEstimator::IEstimator;

    using Supervised::IEstimator::validate;
    void validate(const DataFrame& features, const DataFrameColumn& target) const override;
    std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrameColumn& target) const;

 protected:
    /// Fits the family's engine. Infinite numbers among the features are still in the data: the family
    /// refuses them by `requireFinite`. The framework adds the schema to the model that it returns.
    virtual std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const = 0;

 private:
    TrainingSet checkedData(const DataFrame& features, const DataFrameColumn& target) const;
};

}  // namespace Tessel::Regression
