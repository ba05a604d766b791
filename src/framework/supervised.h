#pragma once

#include <tessel/data/data_frame_vector.h>

#include "framework/estimatable.h"
#include "framework/schema.h"

// The implementations that classifiers and regressors have in common.

namespace Tessel::Supervised {

/// The implementation of any fitted supervised model: what it remembers of its training data, and its report.
class IModelable : public IIdentifiable {
 public:
    /// @param modelName  the kind of model, such as "Naive Bayes".
    explicit IModelable(const WString& modelName) : IIdentifiable(modelName) { setModelName(modelName); }

    FittedSchema schema;

    /// The model summary, the family's tables, the training summary.
    DataFrameVector toDataFrameVector() const;

 protected:
    /// Adds rows of the model summary: label and text.
    virtual void describe(StringVector& labels, StringVector& values) const = 0;
    /// Adds the tables between the two summaries.
    virtual void report(DataFrameVector& tables) const = 0;
    /// Adds rows of the training summary.
    virtual void describeTraining(StringVector& /*labels*/, StringVector& /*values*/) const {}
};

/// The implementation of any supervised estimator.
class IEstimator : public IEstimatable {
 public:
    using IEstimatable::IEstimatable;
    using IEstimatable::validate;
    virtual void validate(const DataFrame& features, const DataFrameColumn& target) const = 0;

 protected:
    /// Checks the parameters, then the data against them, and reads the features.
    TrainingFeatures checkedFeatures(const DataFrame& features, const DataFrameColumn& target) const;

    /// Checks of a family's parameters against the training table; the table has as many rows as the target.
    virtual void validateAgainst(const DataFrame& /*features*/) const {}
    /// Positions of numeric columns that the user wants treated as categorical.
    virtual IntVector categoricalColumns(const DataFrame& /*features*/) const { return {}; }
};

}  // namespace Tessel::Supervised
