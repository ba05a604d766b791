#pragma once

#include <memory>

#include <tessel/data/data_frame_vector.h>
#include <tessel/framework/capabilities.h>
#include <tessel/framework/ladon.h>
#include <tessel/framework/supervised.h>

// Scoring with models that come from texts: each class loads a PMML, JSON or `Ladon` text of whatever family,
// and forwards to the model that it found.
//
//   Scoring::Predictor predictor;
//   predictor.fromPMMLString(text);
//   DataFrame predictions = predictor.predict(table);
//
// Loading replaces the model; a text that cannot be loaded leaves the object as it was. Copies share the
// loaded model. Any number of threads may score with one object at once; loading and setting needs it alone.
// A call that the loaded model does not support throws the error of the capability; before anything was
// loaded every call throws NoModels.

namespace Tessel {
namespace Scaler {
class Model;  // <tessel/scaler.h>
}

namespace Scoring {

class IFacade;  // private

/// What all of them have in common.
class TESSEL_API Facade : public Identifiable,
                          public ModelNameIdentifiable,
                          public DataFrameVectorExportable {
 public:
    ~Facade() override;

    /// @throws UnsupportedPMMLFormat with the reason
    void fromPMMLString(WString text);
    /// @throws UnsupportedJSONModel with the reason
    void fromJSONString(const WString& text);
    /// @throws UnsupportedJSONModel with the reason
    void fromLadonString(const WString& text);
    /// Whatever the text is: `fromPMMLString` when it starts as XML does, else `fromLadonString` for an
    /// object with the member "fittedModel", else `fromJSONString`.
    void fromString(WString text);
    bool isLoaded() const;

    const WString& getName() const override;
    const WString& getModelName() const override;
    /// The kind of task: "classification", "regression", "clustering", "timeSeries", "transformation".
    const WString& getKind() const;
    /// The algorithm as texts name it, such as "decisionTree".
    const WString& getAlgorithm() const;
    /// Columns that the model was trained on, without index columns.
    StringVector getColNames() const;
    /// Those of them whose cells are categories, also where these look like numbers.
    StringVector getCategoricalColNames() const;
    StringVector getIndexColNames() const;
    /// The report tables of the model.
    DataFrameVector toDataFrameVector() const override;
    // Texts of the model under the name of this object.
    WString toJSON() const;
    WString toPMML() const;
    WString toLadon() const;

 protected:
    explicit Facade(std::unique_ptr<IFacade> implementation);
    Facade(const Facade&);
    Facade& operator=(const Facade&);

    template <class Implementation>
    Implementation& as() const {
        return static_cast<Implementation&>(*implementation_);
    }

 private:
    void assignName(const WString& name) override;
    void assignModelName(const WString& modelName) override;

    std::unique_ptr<IFacade> implementation_;
};

/// Predictions of classifiers, regressors and clusterings.
class TESSEL_API Predictor : public Facade {
 public:
    Predictor();

    /// Columns are found by name, others are ignored. @throws NotAPredictor, NotAValidColName
    DataFrame predict(const DataFrame& features) const;
    const WString& getTargetColName() const;
    /// The scaling of inputs that the text contains, null when it has none. `predict` applies it itself.
    std::shared_ptr<Scaler::Model> getScaler() const;
};

/// Predictions and probabilities of classifiers. Loads what a `Predictor` loads; what only classifiers can do
/// throws NotAClassifier for other models.
class TESSEL_API Classifier : public Predictor {
 public:
    Classifier();

    /// A column per class. @throws NotAClassifier, NotAValidColName
    DataFrame posteriorProbability(const DataFrame& features) const;
    const StringVector& getClasses() const;
    /// @throws InvalidSuccessLabel
    Classifier& setSuccessClass(const WString& label);
    const WString& getSuccessClass() const;
    /// @throws ValueOutOfRange
    Classifier& setSuccessProbability(double cutOff);
    double getSuccessProbability() const;
};

/// Forecasts of time series.
class TESSEL_API Forecaster : public Facade {
 public:
    Forecaster();

    /// @throws NotAForecaster
    DataFrame forecast(const DataFrameColumn& series) const;
    /// The fitted values of the series. @throws NotAForecaster
    DataFrame transform(const DataFrameColumn& series) const;
    /// Periods to forecast; at least 1, default 1. @throws ValueOutOfRange
    Forecaster& setNumForecasts(int count);
    int getNumForecasts() const;
    /// In (0, 1), default 0.95. @throws ValueOutOfRange
    Forecaster& setConfidenceLevel(double level);
    double getConfidenceLevel() const;
};

/// Transformations of tables.
class TESSEL_API Transformer : public Facade {
 public:
    Transformer();

    /// @throws NotATransformer, NotAValidColName
    DataFrame transform(const DataFrame& table) const;
};

/// Clusterings.
class TESSEL_API Clusterizer : public Facade {
 public:
    Clusterizer();

    /// The cluster of each row of a table. @throws NotAPredictor, NotAValidColName
    DataFrame predict(const DataFrame& table) const;
    /// The cluster of each row of the training table, which some models remember. @throws NotAPredictor
    DataFrame predict() const;
    /// For models of nested clusters: how many to tell apart; at least 1. @throws ValueOutOfRange
    Clusterizer& setNumClusters(int count);
    /// 0 while nothing was set.
    int getNumClusters() const;
};

}  // namespace Scoring
}  // namespace Tessel
