#pragma once

#include <memory>
#include <span>
#include <vector>

#include "framework/progress.h"
#include "framework/supervised.h"

// The implementations that every regressor builds on.

namespace Tessel::Regression {

/// The implementation of a fitted regressor. A family derives its IModel, adds the fitted state of its
/// engine, and says how it scores and what it reports.
class IModelable : public Supervised::IModelable {
 public:
    using Supervised::IModelable::IModelable;

    /// "Scores", one column "Prediction: " and the target's name.
    virtual DataFrame predict(const DataFrame& features) const;
    /// Fills `predictions`, which has its size, for rows whose columns stand in the order of the schema.
    virtual void score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const = 0;
};

/// The numbers of a target. @throws NonNumericData for text, ConstraintViolation for missing and infinite
/// cells.
std::span<const double> readNumericTarget(const DataFrameColumn& target);

/// What a family's engine is given to fit on; the data are borrowed.
struct TrainingSet {
    const TrainingFeatures& features;
    std::span<const double> target;
    /// How often each row is a record, for families that take multiplicities; empty for once.
    std::span<const std::int32_t> multiplicities = {};
    const Supervised::Preparation* preparation = nullptr;  ///< of the family itself, or null
    Progress progress = {};
    /// Receives what the model predicts of each row; empty for no interest.
    std::span<double> fitted = {};
};

/// The implementation of a regressor's estimator: the checks of the data in their order, and the frame of the
/// fit.
class IEstimator : public Supervised::IEstimator {
 public:
    using Supervised::IEstimator::IEstimator;

    using Supervised::IEstimator::validate;
    void validate(const DataFrame& features, const DataFrameColumn& target) const override;
    virtual std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrameColumn& target) const;
    /// The same with data to prune by, for families that do; others leave them unread.
    virtual std::shared_ptr<IModelable> fit(const DataFrame& features, const DataFrame& /*validFeatures*/,
                                            const DataFrameColumn& target,
                                            const DataFrameColumn& /*validTarget*/) const {
        return fit(features, target);
    }
    /// Fits on a resample of data that were checked for this learner, as an ensemble does.
    /// @param resample     is left without its rows, to save memory, where the learner takes multiplicities.
    /// @param preparation  what `prepare` made of the features, or null.
    /// @param fitted       receives what the model predicts of each row of the table; empty for no interest.
    std::shared_ptr<IModelable> fitResample(const TrainingFeatures& features, std::span<const double> target,
                                            Supervised::Resample& resample,
                                            const Supervised::Preparation* preparation,
                                            const Progress& progress, std::span<double> fitted = {}) const;

 protected:
    /// Fits the family's engine. Infinite numbers among the features are still in the data: the family
    /// refuses them by `requireFinite`. The framework adds the schema to the model that it returns.
    virtual std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const = 0;
    /// For families that know what they predict of the training rows without scoring them: whether the fit on
    /// these data fills `fitted`.
    virtual bool fillsFitted(const TrainingSet& /*data*/) const { return false; }

 private:
    TrainingFeatures checkedData(const DataFrame& features, const DataFrameColumn& target) const;
};

}  // namespace Tessel::Regression
