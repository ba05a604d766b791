#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <tessel/data/data_frame_vector.h>

#include "framework/estimatable.h"
#include "framework/portable.h"
#include "framework/schema.h"

// The implementations that classifiers and regressors have in common.

namespace Tessel::Engine {
class Crew;
}

namespace Tessel::Supervised {

/// The implementation of any fitted supervised model: what it remembers of its training data, and its report.
class IModelable : public IPortableModel {
 public:
    /// @param modelName  the kind of model, such as "Naive Bayes".
    explicit IModelable(const WString& modelName) : IPortableModel(modelName) { setModelName(modelName); }

    FittedSchema schema;
    /// A new model of the same family without anything in it, to be read from a text.
    virtual std::shared_ptr<IModelable> blank() const = 0;

    web::json::value toJSONValue() const override;
    void readJSONValue(const web::json::value& value) override;

    /// The model summary, the family's tables, the training summary.
    DataFrameVector toDataFrameVector() const;

 protected:
    /// Adds rows of the model summary: label and text.
    virtual void describe(StringVector& labels, StringVector& values) const = 0;
    /// Adds the tables between the two summaries.
    virtual void report(DataFrameVector& tables) const = 0;
    /// Adds rows of the training summary.
    virtual void describeTraining(StringVector& /*labels*/, StringVector& /*values*/) const {}

    // Texts: what a kind says of its target, and what the family has learned. PMML first, then JSON.
    /// `Output` and `Targets`.
    virtual void writeTarget(PMML::ModelWriter& writer) const;
    virtual void readTarget(const PMML::ModelReader& reader);
    virtual void writeTarget(web::json::value& model) const;
    virtual void readTarget(const JSON::Members& model);
    /// Attributes of the model element behind the common ones.
    virtual void writeAttributes(PMML::ModelWriter& /*writer*/) const {}
    virtual void writeBody(PMML::ModelWriter& writer) const = 0;
    virtual void readBody(const PMML::ModelReader& reader) = 0;
    virtual void writeBody(web::json::value& model) const = 0;
    virtual void readBody(const JSON::Members& model) = 0;

    void readIndexColumns(const PMML::ModelReader& reader);
    void readMiningSchema(PMML::ModelReader& reader);
    void readTransformations(PMML::ModelReader& reader);
    void writeDataDictionary(PMML::ModelWriter& writer) const override;
    void writeElement(PMML::ModelWriter& writer) const override;
    void readElement(PMML::ModelReader& reader) override;
    /// The target's categories in the data dictionary; none for a continuous one.
    virtual StringVector targetCategories() const { return {}; }
    /// Trees and ensembles put the scaling of inputs in front of the mining schema, others behind it.
    virtual bool writesTransformationsFirst() const { return false; }
};

/// Rows of a table drawn with repetition, as ensembles draw them for their learners. Without rows it stands
/// for the table as it is.
struct Resample {
    std::vector<std::int32_t> rows;            ///< in the order of the draws
    std::vector<std::int32_t> multiplicities;  ///< by row of the table, how often it was drawn

    static Resample of(std::vector<std::int32_t> rows, int numTableRows);
};

/// What fits on many resamples of one table share, made once for all of them.
class Preparation {
 public:
    virtual ~Preparation() = default;
};

/// The implementation of any supervised estimator.
class IEstimator : public IEstimatable {
 public:
    using IEstimatable::IEstimatable;
    using IEstimatable::validate;
    virtual void validate(const DataFrame& features, const DataFrameColumn& target) const = 0;

    // What an ensemble asks its weak learner on behalf of the whole table.

    /// Checks of a family's parameters against the training table; the table has as many rows as the target.
    virtual void validateAgainst(const DataFrame& /*features*/) const {}
    /// Positions of numeric columns that the user wants treated as categorical.
    virtual IntVector categoricalColumns(const DataFrame& /*features*/) const { return {}; }
    /// True for families whose engine takes a resample as the multiplicities of rows; for others the rows
    /// are gathered.
    virtual bool takesMultiplicities() const { return false; }
    /// Whether an ensemble fits its learners on so many rows one after another, each by all threads, rather
    /// than side by side: for families whose fits take much memory and use threads well.
    virtual bool isFittedAlone(int /*numRows*/) const { return false; }
    /// What many fits on these features can share; null when there is nothing. Infinite cells are refused.
    /// @param useAllRows  whether each of the fits is on every row, not on a resample.
    /// @param crew        threads for each of the fits, which follow one another; null: fits find their own.
    virtual std::unique_ptr<Preparation> prepare(const TrainingFeatures& /*features*/, bool /*useAllRows*/,
                                                 Engine::Crew* /*crew*/) const {
        return nullptr;
    }

 protected:
    /// Checks the parameters, then the data against them, and reads the features.
    TrainingFeatures checkedFeatures(const DataFrame& features, const DataFrameColumn& target) const;
};

}  // namespace Tessel::Supervised
