#pragma once

#include <tessel/data/data_frame_vector.h>
#include <tessel/data/types.h>

/// `Ladon`, the JSON-based language that describes a data-mining task: an estimator or transformer with its
/// parameters, and the fitted model that results.
namespace Tessel::Ladon {

/// Structural keys and data-source types. `MODEL_TYPE` and `DATA_TYPE` are one text: inside an estimator it
/// names the kind of task, inside a data object the kind of source.
namespace Keyword {
extern TESSEL_API const WString OBJECT_TYPE;           // "objectType"
extern TESSEL_API const WString ESTIMATOR;             // "estimator"
extern TESSEL_API const WString TRANSFORMER;           // "transformer"
extern TESSEL_API const WString MODEL;                 // "fittedModel"
extern TESSEL_API const WString MODEL_TYPE;            // "type"
extern TESSEL_API const WString MODEL_ALGORITHM;       // "algorithm"
extern TESSEL_API const WString PARAMETERS;            // "parameters"
extern TESSEL_API const WString LEARNERS;              // "learners"
extern TESSEL_API const WString WEAK_LEARNER;          // "weakLearner"
extern TESSEL_API const WString ACTION_EVALUATIONS;    // "evaluations"
extern TESSEL_API const WString EVALUATION_HEADER;     // "header"
extern TESSEL_API const WString EVALUATION_DATAFRAME;  // "dataFrame"
extern TESSEL_API const WString DATA_TYPE;             // "type"
extern TESSEL_API const WString DATA_TYPE_CSV;         // "csv"
extern TESSEL_API const WString DATA_TYPE_JSON;        // "json"
extern TESSEL_API const WString DATA_TYPE_XML;         // "xml"
extern TESSEL_API const WString DATA_TYPE_EXCEL;       // "excel"
extern TESSEL_API const WString DATA_TYPE_ACCESS;      // "access"
extern TESSEL_API const WString DATA_TYPE_MSACCESS;    // "msaccess"
extern TESSEL_API const WString DATA_TYPE_MSSQL;       // "mssql"
extern TESSEL_API const WString DATA_TYPE_ORACLE;      // "oracle"
extern TESSEL_API const WString DATA_TYPE_ODBC;        // "odbc"
extern TESSEL_API const WString DATA_TYPE_ODATA;       // "odata"
extern TESSEL_API const WString DATA_TYPE_STAGE;       // "stage"
}  // namespace Keyword

/// The values of the "algorithm" key. The big-data variants share their texts with the local ones; the object
/// around them tells them apart.
namespace ModelAlgorithm {
extern TESSEL_API const WString DECISION_TREE;            // "decisionTree"
extern TESSEL_API const WString BAGGING;                  // "bagging"
extern TESSEL_API const WString BOOSTING;                 // "boosting"
extern TESSEL_API const WString RANDOM_TREES;             // "randomTrees"
extern TESSEL_API const WString FIND_BEST_MODEL;          // "findBestModel"
extern TESSEL_API const WString LINEAR_REGRESSION;        // "linearRegression"
extern TESSEL_API const WString LOGISTIC_REGRESSION;      // "logisticRegression"
extern TESSEL_API const WString DISCRIMINANT_ANALYSIS;    // "discriminantAnalysis"
extern TESSEL_API const WString NAIVE_BAYES;              // "naiveBayes"
extern TESSEL_API const WString NEAREST_NEIGHBORS;        // "nearestNeighbors"
extern TESSEL_API const WString NEURAL_NETWORK;           // "neuralNetwork"
extern TESSEL_API const WString FS_LINEAR;                // "linearWrapping"
extern TESSEL_API const WString FS_LOGISTIC;              // "logisticWrapping"
extern TESSEL_API const WString FS_UNIVARIATE;            // "univariate"
extern TESSEL_API const WString ARIMA;                    // "arima"
extern TESSEL_API const WString EXPONENTIAL;              // "exponential"
extern TESSEL_API const WString DOUBLE_EXPONENTIAL;       // "doubleExponential"
extern TESSEL_API const WString MOVING_AVERAGE;           // "movingAverage"
extern TESSEL_API const WString ADD_HOLT_WINTERS;         // "addHoltWinters"
extern TESSEL_API const WString MUL_HOLT_WINTERS;         // "mulHoltWinters"
extern TESSEL_API const WString NO_TREND_HOLT_WINTERS;    // "noTrendHoltWinters"
extern TESSEL_API const WString LAG_ANALYSIS;             // "lagAnalysis"
extern TESSEL_API const WString KMEANS;                   // "kMeans"
extern TESSEL_API const WString HIERARCHICAL;             // "hierarchical"
extern TESSEL_API const WString ASSOCIATION_RULES;        // "associationRules"
extern TESSEL_API const WString PCA;                      // "principalComponentAnalysis"
extern TESSEL_API const WString CVA;                      // "canonicalVariateAnalysis"
extern TESSEL_API const WString FACTORIZATION;            // "factorization"
extern TESSEL_API const WString RESCALING;                // "rescaling"
extern TESSEL_API const WString IMPUTATION;               // "imputation"
extern TESSEL_API const WString BINNING;                  // "binning"
extern TESSEL_API const WString ONE_HOT_ENCODING;         // "oneHotEncoding"
extern TESSEL_API const WString CAT_REDUCER;              // "categoryReduction"
extern TESSEL_API const WString SQL_TRANSFORMER;          // "sql"
extern TESSEL_API const WString SDG_TRANSFORMER;          // "syntheticDataGenerator"
extern TESSEL_API const WString TF_IDF;                   // "tfIdf"
extern TESSEL_API const WString LSA;                      // "latentSemanticAnalysis"
extern TESSEL_API const WString SAMPLING;                 // "sampling"
extern TESSEL_API const WString STRATIFIED_SAMPLING;      // "stratifiedSampling"
extern TESSEL_API const WString PARTITIONING;             // "partitioning"
extern TESSEL_API const WString OVERSAMPLE_PARTITIONING;  // "oversamplePartitioning"
extern TESSEL_API const WString SUMMARIZATION;            // "summarization"
extern TESSEL_API const WString BD_SUMMARIZATION;         // "summarization"
extern TESSEL_API const WString BD_SAMPLING;              // "sampling"
}  // namespace ModelAlgorithm

/// The kinds of task, the values of the "type" key; the same words as in the other model texts.
namespace TaskKind {
extern TESSEL_API const WString CLASSIFICATION;  // "classification"
extern TESSEL_API const WString REGRESSION;      // "regression"
extern TESSEL_API const WString TRANSFORMATION;  // "transformation"
extern TESSEL_API const WString TEXT_MINING;     // "textMining"
extern TESSEL_API const WString CLUSTERING;      // "clustering"
extern TESSEL_API const WString TIME_SERIES;     // "timeSeries"
}  // namespace TaskKind

/// Writes its `Ladon` description.
class TESSEL_API Exportable {
 public:
    virtual ~Exportable();
    virtual WString toLadon() const = 0;
    /// Writes the text to a file. A write that fails leaves no half-written file behind.
    /// @throws UnableToWriteFile
    virtual void toLadon(const WString& path) const;
};

/// Replaces its state by a `Ladon` description. A description that cannot be read leaves the object
/// unchanged.
class TESSEL_API Importable {
 public:
    virtual ~Importable();
    /// @throws UnsupportedJSONModel when the text is not JSON or describes another kind of object.
    virtual void fromLadonString(const WString& text) = 0;
    /// The same for a UTF-8 file, with or without byte-order mark. @throws FileNotFound, UnsupportedJSONModel
    virtual void fromLadonFile(const WString& path);

    // What a text describes, by the member "type" of its root. @throws UnsupportedJSONModel when the text is
    // no JSON object with such a member.
    static bool isClassifier(const WString& text);
    static bool isRegressor(const WString& text);
    static bool isPredictor(const WString& text);
    static bool isClusterizer(const WString& text);
    static bool isForecaster(const WString& text);
    static bool isTransformer(const WString& text);
};

/// Writes report tables as the evaluation block of a `Ladon` text: {"evaluations": [{"header": title,
/// "dataFrame": table}, ...]}, tables as `DataFrame::toJson` writes them.
class TESSEL_API Reporter {
 public:
    static WString toLadon(const DataFrameVector& tables);
};

}  // namespace Tessel::Ladon
