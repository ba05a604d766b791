#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessel/framework/errors.h>

namespace Tessel {
namespace {

struct Case {
    std::unique_ptr<Exception> error;
    int code;
    std::string message;
};

template <class Error, class... Arguments>
void add(std::vector<Case>& cases, int code, const std::string& message, Arguments... arguments) {
    cases.push_back({std::make_unique<Error>(arguments...), code, message});
}

TEST(Errors, EveryClassHasItsFixedMessageAndCode) {
    std::vector<Case> cases;
    const std::string violated = "Trees violated a constraint: ";
    add<ConstraintViolation>(cases, 201, violated + "why", "Trees", "why");
    add<ValueOutOfRange>(cases, 201, violated + "Acceptable range: [2,100]", "Trees", 2, 100);
    add<ValueOutOfRange>(cases, 201, violated + "Acceptable range: [-5,2147483647]", "Trees", -5, 2147483647);
    add<ValueOutOfRange>(cases, 201, violated + "Acceptable range: [0.000000,1.000000]", "Trees", 0.0, 1.0);
    add<NotASetMember>(cases, 201, violated + "blue must be a set member.", "Trees", "blue");
    add<NotAValidColName>(cases, 201, violated + "age is not a column name.", "Trees", "age");
    add<IncorrectTotalValue>(cases, 201, violated + "sum = 0.500000.", "Trees", 0.5);
    add<UnspecifiedStringParameter>(cases, 201, violated + "Value is not specified.", "Trees");
    add<InsufficientDataForClustering>(cases, 202, "Clustering requires at least two data points.");
    add<WorseThanRandomGuess>(
        cases, 205,
        "AdaBoost requires a weak learner, which is better than random guess. Try using another "
        "Ensemble or weak learner.");
    add<TooFewClassLabels>(cases, 206, "There must be at least 2 distinct class labels.");
    add<InvalidSuccessLabel>(cases, 207, "Success class label doesn't exist.");
    add<IncompatibleNumRows>(cases, 208, "Number of rows are expected to be identical.");
    add<FitCancelled>(cases, 252, "The fit was cancelled.");
    add<IncompatibleSizes>(cases, 208, "3 rows, 2 weights", "3 rows, 2 weights");
    add<BigDataSummarizationTooManyGroupingVars>(cases, 213, "Too many grouping variables.");
    add<BigDataSummarizationNoGroupingVars>(
        cases, 214, "To compute group counts, please specify at least one grouping variable.");
    add<NeuralNetworkNoHiddenLayers>(
        cases, 215, "Unable to get/set hidden activations: network doesn't have hidden layers.");
    add<NeuralNetworkNoNeurons>(
        cases, 215,
        "Please specify one or more neurons on every hidden layer. If neural network with no "
        "hidden layers is desired, don't set the NumNeurons property.");
    add<FeatureSelectionTooManyBins>(
        cases, 216,
        "Number of bins specified is greater than number of records or number of unique elements.");
    add<HierarchicalClusteringDataNotBinary>(
        cases, 218, "Jaccard and Matching coefficients dissimilarity can be applied to binary data only.");
    add<LabelUnseenInTraining>(cases, 219, "Partition contains a label not seen in training data.");
    add<NeuralNetworkPartitionMissing>(
        cases, 220, "No validation partition supplied. Please use correct overloaded fit(...) method.");
    add<LogisticRegressionNonBinary>(cases, 223, "Target column does not have exactly two distinct classes.");
    add<SeasonalityVectorSizeMismatch>(cases, 225, "Seasonality vector must have size 12", 12);
    add<CategoryReductionIllegalCategories>(
        cases, 226, "Number of provided categories must be equal to number of unique values in data column.");
    add<UnsupportedPMMLFormat>(cases, 227, "Unsupported or Invalid PMML format.");
    add<ClusterNotResponding>(
        cases, 228,
        "Big Data cluster is not responding. Please check the connection and contact technical support.");
    add<NotStringExportable>(cases, 229, "The object does not implement toString() method.");
    add<NotAPredictor>(cases, 230, "The object does not implement predict() method.");
    add<NotAClassifier>(cases, 231, "The object does not implement posteriorProbability() method.");
    add<NotAForecaster>(cases, 232, "The object does not implement forecast() method.");
    add<NotATransformer>(cases, 232, "The object does not implement transform() method.");
    add<EnsembleSamplingMissedClass>(
        cases, 236,
        "Weak learner(s) has no information about one or more classes due to bootstrap or "
        "resampling. Try supplying more complete/balanced training data, reduce number of "
        "weak learner or change the random seed for bootstrap/resampling.");
    add<NonPositiveWeights>(cases, 237, "Observation weights must be positive.");
    add<NoSuchPartition>(cases, 238, "Partition 'test' does not exist.", "test");
    add<UnsupportedJSONModel>(cases, 239, "Unsupported or Invalid JSON model.");
    add<UnableToCreateWeakLearner>(cases, 244, "Unable to create a weak learner.");
    add<FailedToExtractFittedModelInfo>(cases, 245, "Failed to extract fitted model info.");
    add<IncorrectDataFormat>(
        cases, 246,
        "Incorrect data format. Must be 1D or 2D JSON array in row major or the delimited data "
        "compatible with the fitted model.");
    add<NoSuchModel>(cases, 247, "Model 'Tree' is not available.", "Tree");
    add<NoModels>(cases, 249, "There are no fitted models available.");
    add<NoModels>(cases, 249, "There are no fitted models available. Messages: a; b", "a; b");
    add<NoBestLearner>(cases, 250, "The best learner is not available.");
    add<SDGNoCorrelationSigma>(cases, 253, "Correlation matrix for Group 1 is not available", "Group 1");
    add<BadAllocation>(cases, 254, "Matrix is too large to be allocated in the given architecture.",
                       "Matrix");
    add<UnableToParseModel>(cases, 255, "Unable to parse model.");

    for (const Case& c : cases) {
        EXPECT_EQ(c.error->what(), c.message);
        EXPECT_EQ(c.error->code(), c.code) << c.message;
        const bool isViolation = dynamic_cast<const ConstraintViolation*>(c.error.get()) != nullptr;
        EXPECT_EQ(isViolation, c.code == 201) << c.message;
    }
}

}  // namespace
}  // namespace Tessel
