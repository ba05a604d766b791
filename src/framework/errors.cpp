#include <tessel/framework/errors.h>

namespace Tessel {

InsufficientDataForClustering::InsufficientDataForClustering()
    : Exception("Clustering requires at least two data points.", 202) {}
InsufficientDataForClustering::~InsufficientDataForClustering() = default;

WorseThanRandomGuess::WorseThanRandomGuess()
    : Exception(
          "AdaBoost requires a weak learner, which is better than random guess. Try using another Ensemble "
          "or weak learner.",
          205) {}
WorseThanRandomGuess::~WorseThanRandomGuess() = default;

TooFewClassLabels::TooFewClassLabels() : Exception("There must be at least 2 distinct class labels.", 206) {}
TooFewClassLabels::~TooFewClassLabels() = default;

InvalidSuccessLabel::InvalidSuccessLabel() : Exception("Success class label doesn't exist.", 207) {}
InvalidSuccessLabel::~InvalidSuccessLabel() = default;

IncompatibleNumRows::IncompatibleNumRows() : Exception("Number of rows are expected to be identical.", 208) {}
IncompatibleNumRows::~IncompatibleNumRows() = default;

IncompatibleSizes::IncompatibleSizes(const std::string& message) : Exception(message, 208) {}
IncompatibleSizes::~IncompatibleSizes() = default;

BigDataSummarizationTooManyGroupingVars::BigDataSummarizationTooManyGroupingVars()
    : Exception("Too many grouping variables.", 213) {}
BigDataSummarizationTooManyGroupingVars::~BigDataSummarizationTooManyGroupingVars() = default;

BigDataSummarizationNoGroupingVars::BigDataSummarizationNoGroupingVars()
    : Exception("To compute group counts, please specify at least one grouping variable.", 214) {}
BigDataSummarizationNoGroupingVars::~BigDataSummarizationNoGroupingVars() = default;

NeuralNetworkNoHiddenLayers::NeuralNetworkNoHiddenLayers()
    : Exception("Unable to get/set hidden activations: network doesn't have hidden layers.", 215) {}
NeuralNetworkNoHiddenLayers::~NeuralNetworkNoHiddenLayers() = default;

NeuralNetworkNoNeurons::NeuralNetworkNoNeurons()
    : Exception(
          "Please specify one or more neurons on every hidden layer. If neural network with no hidden layers "
          "is desired, don't set the NumNeurons property.",
          215) {}
NeuralNetworkNoNeurons::~NeuralNetworkNoNeurons() = default;

FeatureSelectionTooManyBins::FeatureSelectionTooManyBins()
    : Exception("Number of bins specified is greater than number of records or number of unique elements.",
                216) {}
FeatureSelectionTooManyBins::~FeatureSelectionTooManyBins() = default;

HierarchicalClusteringDataNotBinary::HierarchicalClusteringDataNotBinary()
    : Exception("Jaccard and Matching coefficients dissimilarity can be applied to binary data only.", 218) {}
HierarchicalClusteringDataNotBinary::~HierarchicalClusteringDataNotBinary() = default;

LabelUnseenInTraining::LabelUnseenInTraining()
    : Exception("Partition contains a label not seen in training data.", 219) {}
LabelUnseenInTraining::~LabelUnseenInTraining() = default;

NeuralNetworkPartitionMissing::NeuralNetworkPartitionMissing()
    : Exception("No validation partition supplied. Please use correct overloaded fit(...) method.", 220) {}
NeuralNetworkPartitionMissing::~NeuralNetworkPartitionMissing() = default;

LogisticRegressionNonBinary::LogisticRegressionNonBinary()
    : Exception("Target column does not have exactly two distinct classes.", 223) {}
LogisticRegressionNonBinary::~LogisticRegressionNonBinary() = default;

SeasonalityVectorSizeMismatch::SeasonalityVectorSizeMismatch(std::int32_t expectedSize)
    : Exception("Seasonality vector must have size " + std::to_string(expectedSize), 225) {}
SeasonalityVectorSizeMismatch::~SeasonalityVectorSizeMismatch() = default;

CategoryReductionIllegalCategories::CategoryReductionIllegalCategories()
    : Exception("Number of provided categories must be equal to number of unique values in data column.",
                226) {}
CategoryReductionIllegalCategories::~CategoryReductionIllegalCategories() = default;

UnsupportedPMMLFormat::UnsupportedPMMLFormat() : Exception("Unsupported or Invalid PMML format.", 227) {}
UnsupportedPMMLFormat::UnsupportedPMMLFormat(const std::string& reason)
    : Exception("Unsupported or Invalid PMML format. " + reason, 227) {}
UnsupportedPMMLFormat::~UnsupportedPMMLFormat() = default;

MalformedPMML::MalformedPMML(const std::string& reason)
    : UnsupportedPMMLFormat("The text is no well-formed XML: " + reason + ".") {}
MalformedPMML::~MalformedPMML() = default;

ClusterNotResponding::ClusterNotResponding()
    : Exception(
          "Big Data cluster is not responding. Please check the connection and contact technical support.",
          228) {}
ClusterNotResponding::~ClusterNotResponding() = default;

NotStringExportable::NotStringExportable()
    : Exception("The object does not implement toString() method.", 229) {}
NotStringExportable::~NotStringExportable() = default;

NotAPredictor::NotAPredictor() : Exception("The object does not implement predict() method.", 230) {}
NotAPredictor::~NotAPredictor() = default;

NotAClassifier::NotAClassifier()
    : Exception("The object does not implement posteriorProbability() method.", 231) {}
NotAClassifier::~NotAClassifier() = default;

NotAForecaster::NotAForecaster() : Exception("The object does not implement forecast() method.", 232) {}
NotAForecaster::~NotAForecaster() = default;

NotATransformer::NotATransformer() : Exception("The object does not implement transform() method.", 232) {}
NotATransformer::~NotATransformer() = default;

EnsembleSamplingMissedClass::EnsembleSamplingMissedClass()
    : Exception(
          "Weak learner(s) has no information about one or more classes due to bootstrap or resampling. Try "
          "supplying more complete/balanced training data, reduce number of weak learner or change the "
          "random seed for bootstrap/resampling.",
          236) {}
EnsembleSamplingMissedClass::~EnsembleSamplingMissedClass() = default;

NonPositiveWeights::NonPositiveWeights() : Exception("Observation weights must be positive.", 237) {}
NonPositiveWeights::~NonPositiveWeights() = default;

NoSuchPartition::NoSuchPartition(const std::string& name)
    : Exception("Partition '" + name + "' does not exist.", 238) {}
NoSuchPartition::~NoSuchPartition() = default;

UnsupportedJSONModel::UnsupportedJSONModel() : Exception("Unsupported or Invalid JSON model.", 239) {}
UnsupportedJSONModel::UnsupportedJSONModel(const std::string& reason)
    : Exception("Unsupported or Invalid JSON model. " + reason, 239) {}
UnsupportedJSONModel::~UnsupportedJSONModel() = default;

UnableToCreateWeakLearner::UnableToCreateWeakLearner() : Exception("Unable to create a weak learner.", 244) {}
UnableToCreateWeakLearner::~UnableToCreateWeakLearner() = default;

FailedToExtractFittedModelInfo::FailedToExtractFittedModelInfo()
    : Exception("Failed to extract fitted model info.", 245) {}
FailedToExtractFittedModelInfo::~FailedToExtractFittedModelInfo() = default;

IncorrectDataFormat::IncorrectDataFormat()
    : Exception(
          "Incorrect data format. Must be 1D or 2D JSON array in row major or the delimited data compatible "
          "with the fitted model.",
          246) {}
IncorrectDataFormat::~IncorrectDataFormat() = default;

NoSuchModel::NoSuchModel(const std::string& name)
    : Exception("Model '" + name + "' is not available.", 247) {}
NoSuchModel::~NoSuchModel() = default;

NoModels::NoModels() : Exception("There are no fitted models available.", 249) {}
NoModels::NoModels(const std::string& messages)
    : Exception("There are no fitted models available. Messages: " + messages, 249) {}
NoModels::~NoModels() = default;

NoBestLearner::NoBestLearner() : Exception("The best learner is not available.", 250) {}
NoBestLearner::~NoBestLearner() = default;

FitCancelled::FitCancelled() : Exception("The fit was cancelled.", 252) {}
FitCancelled::~FitCancelled() = default;

SDGNoCorrelationSigma::SDGNoCorrelationSigma(const std::string& name)
    : Exception("Correlation matrix for " + name + " is not available", 253) {}
SDGNoCorrelationSigma::~SDGNoCorrelationSigma() = default;

BadAllocation::BadAllocation(const std::string& name)
    : Exception(name + " is too large to be allocated in the given architecture.", 254) {}
BadAllocation::~BadAllocation() = default;

UnableToParseModel::UnableToParseModel() : Exception("Unable to parse model.", 255) {}
UnableToParseModel::~UnableToParseModel() = default;

}  // namespace Tessel
