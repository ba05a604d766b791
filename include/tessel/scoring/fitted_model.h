#pragma once

#include <tessel/data/interfaces.h>
#include <tessel/data/vectors.h>

namespace Tessel::Scoring {

/// A model as text: what it is, and scoring of data that are text as well. The text may be PMML or JSON.
///
///   const Scoring::FittedModel model(text);
///   WString predictions = model.score(text, L"[[5.1, 3.5], [6.2, 2.9]]", 0, false);
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
    /// @param data       the table, row by row in the order of the variables, as a JSON array of rows, as a
    ///                   JSON array of cells (row after row), or as text whose cells are separated by commas,
    ///                   tabs, semicolons or bars. Delimited text may begin with a line of the variables'
    ///                   names, which may then stand in any order; quotes and missing texts are as `Reader`
    ///                   takes them. JSON cells of continuous variables are numbers, null (missing) or one of
    ///                   "NaN", "Infinity", "-Infinity"; those of categorical ones are strings, numbers or
    ///                   null. For time series a first column "TimeVariable" of texts comes in front.
    /// @param horizon    periods to forecast; only time series use it
    /// @param withPosteriors  for classifiers: the probabilities of the classes behind the predicted class
    /// @return the resulting table as `DataFrame::toJson` writes it: for classifiers, regressors and
    ///         clusterings the predictions, for time series the forecasts, else the transformed table
    /// @throws FailedToExtractFittedModelInfo
    /// @throws IncorrectDataFormat  when the data are not of this form, or without rows
    /// @throws UnsupportedPMMLFormat, UnsupportedJSONModel  for a model that cannot be loaded
    WString score(const WString& modelText, const WString& data, int horizon, bool withPosteriors) const;

    /// {"modelName", "format", "type", "algorithm", "features": [{"name", "type"}], "targetName"}
    WString toJSON() const;
    /// A line per field.
    WString toString() const override;

    /// A `Ladon` scoring model: JSON that binds a source of data to a fitted model and says what to do.
    /// @param name            of the scoring model; "Scoring" is appended
    /// @param dataSourceType  such as "csv"; see Ladon::Keyword
    /// @param connection      where the data are
    /// @param modelText       the fitted model, PMML or JSON; when empty, the model that was parsed
    /// @throws FailedToExtractFittedModelInfo also without any model
    WString generateScoringModel(const WString& name, const WString& dataSourceType,
                                 const WString& connection, const WString& modelText) const;
};

}  // namespace Tessel::Scoring
