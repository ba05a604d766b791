#pragma once

#include <tessel/data/types.h>

/// `Ladon`, the JSON-based language that describes a data-mining task: an estimator or transformer with its
/// parameters, and the fitted model that results.
namespace Tessel::Ladon {

/// Structural keys and data-source types. `MODEL_TYPE` and `DATA_TYPE` are one text: inside an estimator it
/// names the kind of task, inside a data object the kind of source.
namespace Keyword {
inline constexpr WStringView OBJECT_TYPE = L"objectType";
inline constexpr WStringView ESTIMATOR = L"estimator";
inline constexpr WStringView TRANSFORMER = L"transformer";
inline constexpr WStringView MODEL = L"fittedModel";
inline constexpr WStringView MODEL_TYPE = L"type";
inline constexpr WStringView MODEL_ALGORITHM = L"algorithm";
inline constexpr WStringView PARAMETERS = L"parameters";
inline constexpr WStringView LEARNERS = L"learners";
inline constexpr WStringView WEAK_LEARNER = L"weakLearner";
inline constexpr WStringView ACTION_EVALUATIONS = L"evaluations";
inline constexpr WStringView EVALUATION_HEADER = L"header";
inline constexpr WStringView EVALUATION_DATAFRAME = L"dataFrame";
inline constexpr WStringView DATA_TYPE = L"type";
inline constexpr WStringView DATA_TYPE_CSV = L"csv";
inline constexpr WStringView DATA_TYPE_JSON = L"json";
inline constexpr WStringView DATA_TYPE_XML = L"xml";
inline constexpr WStringView DATA_TYPE_EXCEL = L"excel";
inline constexpr WStringView DATA_TYPE_ACCESS = L"access";
inline constexpr WStringView DATA_TYPE_MSACCESS = L"msaccess";
inline constexpr WStringView DATA_TYPE_MSSQL = L"mssql";
inline constexpr WStringView DATA_TYPE_ORACLE = L"oracle";
inline constexpr WStringView DATA_TYPE_ODBC = L"odbc";
inline constexpr WStringView DATA_TYPE_ODATA = L"odata";
inline constexpr WStringView DATA_TYPE_STAGE = L"stage";
}  // namespace Keyword

/// The values of the "algorithm" key. The big-data variants share their texts with the local ones; the object
/// around them tells them apart.
namespace ModelAlgorithm {
inline constexpr WStringView DECISION_TREE = L"decisionTree";
inline constexpr WStringView BAGGING = L"bagging";
inline constexpr WStringView BOOSTING = L"boosting";
inline constexpr WStringView RANDOM_TREES = L"randomTrees";
inline constexpr WStringView FIND_BEST_MODEL = L"findBestModel";
inline constexpr WStringView LINEAR_REGRESSION = L"linearRegression";
inline constexpr WStringView LOGISTIC_REGRESSION = L"logisticRegression";
inline constexpr WStringView DISCRIMINANT_ANALYSIS = L"discriminantAnalysis";
inline constexpr WStringView NAIVE_BAYES = L"naiveBayes";
inline constexpr WStringView NEAREST_NEIGHBORS = L"nearestNeighbors";
inline constexpr WStringView NEURAL_NETWORK = L"neuralNetwork";
inline constexpr WStringView FS_LINEAR = L"linearWrapping";
inline constexpr WStringView FS_LOGISTIC = L"logisticWrapping";
inline constexpr WStringView FS_UNIVARIATE = L"univariate";
inline constexpr WStringView ARIMA = L"arima";
inline constexpr WStringView EXPONENTIAL = L"exponential";
inline constexpr WStringView DOUBLE_EXPONENTIAL = L"doubleExponential";
inline constexpr WStringView MOVING_AVERAGE = L"movingAverage";
inline constexpr WStringView ADD_HOLT_WINTERS = L"addHoltWinters";
inline constexpr WStringView MUL_HOLT_WINTERS = L"mulHoltWinters";
inline constexpr WStringView NO_TREND_HOLT_WINTERS = L"noTrendHoltWinters";
inline constexpr WStringView LAG_ANALYSIS = L"lagAnalysis";
inline constexpr WStringView KMEANS = L"kMeans";
inline constexpr WStringView HIERARCHICAL = L"hierarchical";
inline constexpr WStringView ASSOCIATION_RULES = L"associationRules";
inline constexpr WStringView PCA = L"principalComponentAnalysis";
inline constexpr WStringView CVA = L"canonicalVariateAnalysis";
inline constexpr WStringView FACTORIZATION = L"factorization";
inline constexpr WStringView RESCALING = L"rescaling";
inline constexpr WStringView IMPUTATION = L"imputation";
inline constexpr WStringView BINNING = L"binning";
inline constexpr WStringView ONE_HOT_ENCODING = L"oneHotEncoding";
inline constexpr WStringView CAT_REDUCER = L"categoryReduction";
inline constexpr WStringView SQL_TRANSFORMER = L"sql";
inline constexpr WStringView SDG_TRANSFORMER = L"syntheticDataGenerator";
inline constexpr WStringView TF_IDF = L"tfIdf";
inline constexpr WStringView LSA = L"latentSemanticAnalysis";
inline constexpr WStringView SAMPLING = L"sampling";
inline constexpr WStringView STRATIFIED_SAMPLING = L"stratifiedSampling";
inline constexpr WStringView PARTITIONING = L"partitioning";
inline constexpr WStringView OVERSAMPLE_PARTITIONING = L"oversamplePartitioning";
inline constexpr WStringView SUMMARIZATION = L"summarization";
inline constexpr WStringView BD_SUMMARIZATION = L"summarization";
inline constexpr WStringView BD_SAMPLING = L"sampling";
}  // namespace ModelAlgorithm

/// The kinds of task, the values of the "type" key; the same words as in the other model texts.
namespace TaskKind {
inline constexpr WStringView CLASSIFICATION = L"classification";
inline constexpr WStringView REGRESSION = L"regression";
inline constexpr WStringView TRANSFORMATION = L"transformation";
inline constexpr WStringView TEXT_MINING = L"textMining";
inline constexpr WStringView CLUSTERING = L"clustering";
inline constexpr WStringView TIME_SERIES = L"timeSeries";
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
};

}  // namespace Tessel::Ladon
