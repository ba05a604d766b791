#pragma once

#include <tessel/data/interfaces.h>
#include <tessel/data/vectors.h>

namespace Tessel::Scoring {

/// A model as text: what it is, and scoring of data that are text as well. The text may be PMML or JSON.
class TESSEL_API FittedModel : public virtual StringExportable {
 public:
    FittedModel();
    /// Parses at once. @throws FailedToExtractFittedModelInfo
    explicit FittedModel(const WString& modelText);
    FittedModel(const FittedModel&);
    FittedModel(FittedModel&&) noexcept;
    FittedModel& operator=(const FittedModel&);
    FittedModel& operator=(FittedModel&&) noexcept;
    ~FittedModel() override;

    WString modelName;           ///< the model's name in the text
    WString format;              ///< "PMML" or "JSON"
    WString type;                ///< "classification", "regression", "clustering", "timeSeries", ...
    WString algorithm;           ///< its name in the text
    StringVector variableNames;  ///< input variables, in the text's order
    StringVector variableTypes;  ///< "continuous" or "categorical", one per variable
    WString targetName;          ///< empty when there is no target

    /// Fills the fields; tries PMML first and JSON second. A failure leaves them as they were.
    /// @throws FailedToExtractFittedModelInfo
    void parse(const WString& modelText);

    /// Scores data with a model.
    /// @param modelText  PMML or JSON; this object's fields are not used and stay as they are.
    /// @param data       a one-dimensional JSON array (one row, or one column when there is one variable), a
    ///                   two-dimensional one row by row in the order of the variables, or delimited text with
    ///                   or without a line of column names, which are then those of the variables in any
    ///                   order. For time series a first column of times comes in front.
    /// @param horizon    periods to forecast; only time series use it
    /// @param withPosteriors  for classifiers: the probabilities of the classes behind the predicted class
    /// @return JSON text of the resulting table
    /// @throws FailedToExtractFittedModelInfo, IncorrectDataFormat, and what scoring throws
    WString score(const WString& modelText, const WString& data, int horizon, bool withPosteriors) const;

    /// {"modelName", "format", "type", "algorithm", "features": [{"name", "type"}], "targetName"}
    WString toJSON() const;
    /// A line per field.
    WString toString() const override;

    /// A `Ladon` scoring model that binds a data source to the fitted model that was parsed.
    /// @param name            of the scoring model; "Scoring" is appended
    /// @param dataSourceType  such as "csv"; see Ladon::Keyword
    /// @param connection      where the data are
    /// @param modelText       the fitted model, PMML or JSON
    WString generateScoringModel(const WString& name, const WString& dataSourceType,
                                 const WString& connection, const WString& modelText) const;

 private:
    bool parsePMML(const WString& modelText) noexcept;
    bool parseJSON(const WString& modelText) noexcept;
};

}  // namespace Tessel::Scoring
