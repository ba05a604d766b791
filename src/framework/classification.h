#pragma once

#include <memory>
#include <vector>

#include "framework/admissible.h"
#include "framework/progress.h"
#include "framework/supervised.h"

// The implementations that every classifier builds on.

namespace Tessel::Classification {

/// The classes of a fitted model and the rule that chooses between two of them.
struct ClassSchema {
    StringVector classes;
    Vector priors;               ///< one per class
    std::vector<double> counts;  ///< training rows per class
    WString successClass;
    double successProbability = 0.5;
};

/// Posterior probabilities: for each class a column of one number per row.
using Posteriors = std::vector<std::vector<double>>;

/// The implementation of a fitted classifier. A family derives its IModel, adds the fitted state of its
/// engine, and says how it scores and what it reports.
class IModelable : public Supervised::IModelable {
 public:
    using Supervised::IModelable::IModelable;

    ClassSchema classSchema;

    /// What the fit learnt of the classes.
    void setClassSchema(ClassSchema learnt);
    virtual void setSuccessClass(const WString& label);
    virtual void setSuccessProbability(double cutOff);
    /// @throws InvalidSuccessLabel, ValueOutOfRange
    void validate() const;

    virtual DataFrame priorProbability() const;
    virtual DataFrame predict(const DataFrame& features) const;
    virtual DataFrame posteriorProbability(const DataFrame& features) const;
    virtual DataFrame predictWithPosterior(const DataFrame& features) const;
    /// Fills `posteriors`, which has its size, for rows whose columns stand in the order of the schema.
    virtual void score(const std::vector<FeatureColumn>& columns, Posteriors& posteriors) const = 0;
    /// Fills `codes`, which has its size, with the position of the predicted class of each row. By the
    /// posteriors; a family whose engine tells the class with less work overrides it.
    virtual void classify(const std::vector<FeatureColumn>& columns, std::vector<std::int32_t>& codes) const;

 protected:
    void writeTarget(PMML::ModelWriter& writer) const override;
    void readTarget(const PMML::ModelReader& reader) override;
    void writeTarget(web::json::value& model) const override;
    void readTarget(const JSON::Members& model) override;
    StringVector targetCategories() const override { return classSchema.classes; }

    /// The column of a class in the table of posteriors.
    virtual WString posteriorColName(const WString& label) const {
        return L"Posterior Probability: " + label;
    }
    /// Whether no classes are right, as where nothing was fitted.
    virtual bool mayLackClasses() const { return false; }
    /// Called after classes, success class or cut-off changed, for engines that choose classes themselves.
    virtual void adoptClassRule() {}

    void describe(StringVector& labels, StringVector& values) const override;
    void report(DataFrameVector& tables) const override;
    void describeTraining(StringVector& labels, StringVector& values) const override;

 private:
    /// Checks of classes that were read. @throws TooFewClassLabels, DuplicateName and what `validate` throws.
    void requireClasses() const;
    void writeOutput(PMML::ModelWriter& writer) const;
    Posteriors posteriors(const std::vector<FeatureColumn>& columns, std::size_t numRows) const;
    Posteriors posteriors(const DataFrame& features) const;
    void chooseClasses(const Posteriors& posteriors, std::vector<std::int32_t>& codes) const;
    DataFrame predictionTable(const DataFrame& features, std::vector<std::int32_t> codes) const;
    DataFrame posteriorTable(const DataFrame& features, Posteriors posteriors) const;
};

/// What a family's engine is given to fit on; the data are borrowed.
struct TrainingSet {
    const TrainingFeatures& features;
    const ClassTarget& target;
    Vector priors;
    /// How often each row is a record, for families that take multiplicities; empty for once.
    std::span<const std::int32_t> multiplicities = {};
    const Supervised::Preparation* preparation = nullptr;  ///< of the family itself, or null
    Progress progress = {};
};

/// The implementation of a classifier's estimator: parameters that all classifiers have, the checks of the
/// data in their order, and the frame of the fit.
class IEstimator : public Supervised::IEstimator, public PriorProbability::IAdmissible {
 public:
    using Supervised::IEstimator::IEstimator;

    Parameter<WString> successClass{L"successClass", L"Success class"};
    BoundedParameter<double> successProbability{L"successProbability", L"Success probability", 0.5, 0.0, 1.0};

    void validate() const override;
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
    std::shared_ptr<IModelable> fitResample(const TrainingFeatures& features, const ClassTarget& target,
                                            Supervised::Resample& resample,
                                            const Supervised::Preparation* preparation,
                                            const Progress& progress) const;
    /// Checks of the parameters against the classes. @throws InvalidSuccessLabel, errors of priors
    virtual void validateClasses(const ClassTarget& target) const;

 protected:
    void completeParameters() override { completePriors(); }
    /// The parameters above, for the end of a family's list.
    ParameterList classificationParameters() {
        return {priorProbMethod, priorProb, successClass, successProbability};
    }
    /// How much of the training data each class is, for the empirical priors: its records, or their weights.
    /// @param counts          of the records, by class.
    /// @param multiplicities  how often each row counts; empty for once, always for families that take none.
    virtual std::vector<double> classSizes(const ClassTarget& /*target*/, const std::vector<double>& counts,
                                           std::span<const std::int32_t> /*multiplicities*/) const {
        return counts;
    }
    /// The success class while none was chosen: with two classes the one of the first row.
    virtual WString defaultSuccessClass(const StringVector& classes) const {
        return classes.size() == 2 ? classes.front() : WString();
    }
    /// Fits the family's engine. Infinite numbers among the features are still in the data: the family
    /// refuses them by `requireFinite`. The framework adds schema and classes to the model that it returns.
    virtual std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const = 0;

 private:
    struct CheckedData {
        TrainingFeatures features;
        ClassTarget target;
    };
    CheckedData checkedData(const DataFrame& features, const DataFrameColumn& target) const;
    void adopt(IModelable& model, const TrainingSet& data, FittedSchema schema, std::vector<double> counts,
               const WString& defaultSuccess) const;
};

}  // namespace Tessel::Classification
