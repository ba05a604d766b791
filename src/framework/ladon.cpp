#include <tessel/framework/ladon.h>

#include "data/json_text.h"

namespace Tessel::Ladon {

namespace Keyword {
const WString OBJECT_TYPE = L"objectType";
const WString ESTIMATOR = L"estimator";
const WString TRANSFORMER = L"transformer";
const WString MODEL = L"fittedModel";
const WString MODEL_TYPE = L"type";
const WString MODEL_ALGORITHM = L"algorithm";
const WString PARAMETERS = L"parameters";
const WString LEARNERS = L"learners";
const WString WEAK_LEARNER = L"weakLearner";
const WString ACTION_EVALUATIONS = L"evaluations";
const WString EVALUATION_HEADER = L"header";
const WString EVALUATION_DATAFRAME = L"dataFrame";
const WString DATA_TYPE = L"type";
const WString DATA_TYPE_CSV = L"csv";
const WString DATA_TYPE_JSON = L"json";
const WString DATA_TYPE_XML = L"xml";
const WString DATA_TYPE_EXCEL = L"excel";
const WString DATA_TYPE_ACCESS = L"access";
const WString DATA_TYPE_MSACCESS = L"msaccess";
const WString DATA_TYPE_MSSQL = L"mssql";
const WString DATA_TYPE_ORACLE = L"oracle";
const WString DATA_TYPE_ODBC = L"odbc";
const WString DATA_TYPE_ODATA = L"odata";
const WString DATA_TYPE_STAGE = L"stage";
}  // namespace Keyword

namespace ModelAlgorithm {
const WString DECISION_TREE = L"decisionTree";
const WString BAGGING = L"bagging";
const WString BOOSTING = L"boosting";
const WString RANDOM_TREES = L"randomTrees";
const WString FIND_BEST_MODEL = L"findBestModel";
const WString LINEAR_REGRESSION = L"linearRegression";
const WString LOGISTIC_REGRESSION = L"logisticRegression";
const WString DISCRIMINANT_ANALYSIS = L"discriminantAnalysis";
const WString NAIVE_BAYES = L"naiveBayes";
const WString NEAREST_NEIGHBORS = L"nearestNeighbors";
const WString NEURAL_NETWORK = L"neuralNetwork";
const WString FS_LINEAR = L"linearWrapping";
const WString FS_LOGISTIC = L"logisticWrapping";
const WString FS_UNIVARIATE = L"univariate";
const WString ARIMA = L"arima";
const WString EXPONENTIAL = L"exponential";
const WString DOUBLE_EXPONENTIAL = L"doubleExponential";
const WString MOVING_AVERAGE = L"movingAverage";
const WString ADD_HOLT_WINTERS = L"addHoltWinters";
const WString MUL_HOLT_WINTERS = L"mulHoltWinters";
const WString NO_TREND_HOLT_WINTERS = L"noTrendHoltWinters";
const WString LAG_ANALYSIS = L"lagAnalysis";
const WString KMEANS = L"kMeans";
const WString HIERARCHICAL = L"hierarchical";
const WString ASSOCIATION_RULES = L"associationRules";
const WString PCA = L"principalComponentAnalysis";
const WString CVA = L"canonicalVariateAnalysis";
const WString FACTORIZATION = L"factorization";
const WString RESCALING = L"rescaling";
const WString IMPUTATION = L"imputation";
const WString BINNING = L"binning";
const WString ONE_HOT_ENCODING = L"oneHotEncoding";
const WString CAT_REDUCER = L"categoryReduction";
const WString SQL_TRANSFORMER = L"sql";
const WString SDG_TRANSFORMER = L"syntheticDataGenerator";
const WString TF_IDF = L"tfIdf";
const WString LSA = L"latentSemanticAnalysis";
const WString SAMPLING = L"sampling";
const WString STRATIFIED_SAMPLING = L"stratifiedSampling";
const WString PARTITIONING = L"partitioning";
const WString OVERSAMPLE_PARTITIONING = L"oversamplePartitioning";
const WString SUMMARIZATION = L"summarization";
const WString BD_SUMMARIZATION = L"summarization";
const WString BD_SAMPLING = L"sampling";
}  // namespace ModelAlgorithm

namespace TaskKind {
const WString CLASSIFICATION = L"classification";
const WString REGRESSION = L"regression";
const WString TRANSFORMATION = L"transformation";
const WString TEXT_MINING = L"textMining";
const WString CLUSTERING = L"clustering";
const WString TIME_SERIES = L"timeSeries";
}  // namespace TaskKind

WString Reporter::toLadon(const DataFrameVector& tables) {
    WString text = L"{";
    JSON::appendString(text, Keyword::ACTION_EVALUATIONS);
    text += L":";
    JSON::appendArray(text, tables, [](WString& json, const DataFrame& table) {
        json += L"{";
        JSON::appendString(json, Keyword::EVALUATION_HEADER);
        json += L":";
        JSON::appendString(json, table.getName());
        json += L",";
        JSON::appendString(json, Keyword::EVALUATION_DATAFRAME);
        json += L":" + table.toJson() + L"}";
    });
    return text + L"}";
}

}  // namespace Tessel::Ladon
