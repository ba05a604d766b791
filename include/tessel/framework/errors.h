#pragma once

#include <cstdint>
#include <string>

#include <tessel/data/errors.h>

// The errors of the SDK above the data library. Message and code are fixed per class; three codes are shared
// on purpose: 208, 215 and 232.

namespace Tessel {

/// Too few rows to form clusters. Code 202.
class TESSEL_API InsufficientDataForClustering : public Exception {
 public:
    InsufficientDataForClustering();
    ~InsufficientDataForClustering() override;
};

/// A boosting round whose weak learner errs on half of the weight or more. Code 205.
class TESSEL_API WorseThanRandomGuess : public Exception {
 public:
    WorseThanRandomGuess();
    ~WorseThanRandomGuess() override;
};

/// A classification target with fewer than two distinct values. Code 206.
class TESSEL_API TooFewClassLabels : public Exception {
 public:
    TooFewClassLabels();
    ~TooFewClassLabels() override;
};

/// The success class is none of the classes. Code 207.
class TESSEL_API InvalidSuccessLabel : public Exception {
 public:
    InvalidSuccessLabel();
    ~InvalidSuccessLabel() override;
};

/// Features and target, or two parts of one input, differ in their number of rows. Code 208.
class TESSEL_API IncompatibleNumRows : public Exception {
 public:
    IncompatibleNumRows();
    ~IncompatibleNumRows() override;
};

/// Sizes that do not fit together; the message is given. Code 208.
class TESSEL_API IncompatibleSizes : public Exception {
 public:
    explicit IncompatibleSizes(const std::string& message);
    ~IncompatibleSizes() override;
};

/// A remote summary by more variables than the service takes. Code 213.
class TESSEL_API BigDataSummarizationTooManyGroupingVars : public Exception {
 public:
    BigDataSummarizationTooManyGroupingVars();
    ~BigDataSummarizationTooManyGroupingVars() override;
};

/// A remote summary of group counts without groups. Code 214.
class TESSEL_API BigDataSummarizationNoGroupingVars : public Exception {
 public:
    BigDataSummarizationNoGroupingVars();
    ~BigDataSummarizationNoGroupingVars() override;
};

/// Hidden activations of a network without hidden layers. Code 215.
class TESSEL_API NeuralNetworkNoHiddenLayers : public Exception {
 public:
    NeuralNetworkNoHiddenLayers();
    ~NeuralNetworkNoHiddenLayers() override;
};

/// A hidden layer without neurons. Code 215.
class TESSEL_API NeuralNetworkNoNeurons : public Exception {
 public:
    NeuralNetworkNoNeurons();
    ~NeuralNetworkNoNeurons() override;
};

/// More bins than values to put into them. Code 216.
class TESSEL_API FeatureSelectionTooManyBins : public Exception {
 public:
    FeatureSelectionTooManyBins();
    ~FeatureSelectionTooManyBins() override;
};

/// A dissimilarity of binary data asked for other data. Code 218.
class TESSEL_API HierarchicalClusteringDataNotBinary : public Exception {
 public:
    HierarchicalClusteringDataNotBinary();
    ~HierarchicalClusteringDataNotBinary() override;
};

/// A class of the validation part that the training part lacks. Code 219.
class TESSEL_API LabelUnseenInTraining : public Exception {
 public:
    LabelUnseenInTraining();
    ~LabelUnseenInTraining() override;
};

/// A fit that stops by validation error without validation data. Code 220.
class TESSEL_API NeuralNetworkPartitionMissing : public Exception {
 public:
    NeuralNetworkPartitionMissing();
    ~NeuralNetworkPartitionMissing() override;
};

/// A binary method given another number of classes. Code 223.
class TESSEL_API LogisticRegressionNonBinary : public Exception {
 public:
    LogisticRegressionNonBinary();
    ~LogisticRegressionNonBinary() override;
};

/// Start values of a season of another length. Code 225.
class TESSEL_API SeasonalityVectorSizeMismatch : public Exception {
 public:
    explicit SeasonalityVectorSizeMismatch(std::int32_t expectedSize);
    ~SeasonalityVectorSizeMismatch() override;
};

/// A mapping of categories that does not cover the column. Code 226.
class TESSEL_API CategoryReductionIllegalCategories : public Exception {
 public:
    CategoryReductionIllegalCategories();
    ~CategoryReductionIllegalCategories() override;
};

/// A PMML text that is malformed or not of the wanted kind. Code 227.
class TESSEL_API UnsupportedPMMLFormat : public Exception {
 public:
    UnsupportedPMMLFormat();
    /// @param reason  what cannot be read, as a sentence; it follows the fixed text.
    explicit UnsupportedPMMLFormat(const std::string& reason);
    ~UnsupportedPMMLFormat() override;
};

/// The same for a text that is no well-formed XML at all.
class TESSEL_API MalformedPMML : public UnsupportedPMMLFormat {
 public:
    /// @param reason  of the XML parser.
    explicit MalformedPMML(const std::string& reason);
    ~MalformedPMML() override;
};

/// The remote analytics service does not answer. Code 228.
class TESSEL_API ClusterNotResponding : public Exception {
 public:
    ClusterNotResponding();
    ~ClusterNotResponding() override;
};

/// Text asked of an object that has none. Code 229.
class TESSEL_API NotStringExportable : public Exception {
 public:
    NotStringExportable();
    ~NotStringExportable() override;
};

/// Predictions asked of a model that makes none. Code 230.
class TESSEL_API NotAPredictor : public Exception {
 public:
    NotAPredictor();
    ~NotAPredictor() override;
};

/// Posterior probabilities asked of a model that has none. Code 231.
class TESSEL_API NotAClassifier : public Exception {
 public:
    NotAClassifier();
    ~NotAClassifier() override;
};

/// Forecasts asked of a model that makes none. Code 232.
class TESSEL_API NotAForecaster : public Exception {
 public:
    NotAForecaster();
    ~NotAForecaster() override;
};

/// A transformation asked of a model that makes none; shares the code of NotAForecaster. Code 232.
class TESSEL_API NotATransformer : public Exception {
 public:
    NotATransformer();
    ~NotATransformer() override;
};

/// A resample of an ensemble that lacks a class. Code 236.
class TESSEL_API EnsembleSamplingMissedClass : public Exception {
 public:
    EnsembleSamplingMissedClass();
    ~EnsembleSamplingMissedClass() override;
};

/// A weight that is zero, negative or not a number. Code 237.
class TESSEL_API NonPositiveWeights : public Exception {
 public:
    NonPositiveWeights();
    ~NonPositiveWeights() override;
};

/// A partition asked for by a name that none has. Code 238.
class TESSEL_API NoSuchPartition : public Exception {
 public:
    explicit NoSuchPartition(const std::string& name);
    ~NoSuchPartition() override;
};

/// A JSON or Ladon text that is malformed or describes another object. Code 239.
class TESSEL_API UnsupportedJSONModel : public Exception {
 public:
    UnsupportedJSONModel();
    /// @param reason  what cannot be read, as a sentence; it follows the fixed text.
    explicit UnsupportedJSONModel(const std::string& reason);
    ~UnsupportedJSONModel() override;
};

/// An ensemble's description names a learner that cannot be made. Code 244.
class TESSEL_API UnableToCreateWeakLearner : public Exception {
 public:
    UnableToCreateWeakLearner();
    ~UnableToCreateWeakLearner() override;
};

/// A stored model whose columns cannot be told. Code 245.
class TESSEL_API FailedToExtractFittedModelInfo : public Exception {
 public:
    FailedToExtractFittedModelInfo();
    ~FailedToExtractFittedModelInfo() override;
};

/// Data to score in none of the readable forms. Code 246.
class TESSEL_API IncorrectDataFormat : public Exception {
 public:
    IncorrectDataFormat();
    ~IncorrectDataFormat() override;
};

/// A model asked for by a name that none has. Code 247.
class TESSEL_API NoSuchModel : public Exception {
 public:
    explicit NoSuchModel(const std::string& name);
    ~NoSuchModel() override;
};

/// The best of no models, or a score without a model. Code 249.
class TESSEL_API NoModels : public Exception {
 public:
    NoModels();
    explicit NoModels(const std::string& messages);
    ~NoModels() override;
};

/// The best learner asked for before a search found one. Code 250.
class TESSEL_API NoBestLearner : public Exception {
 public:
    NoBestLearner();
    ~NoBestLearner() override;
};

/// A fit that its progress callback stopped. Code 252.
class TESSEL_API FitCancelled : public Exception {
 public:
    FitCancelled();
    ~FitCancelled() override;
};

/// A correlation matrix of a group of columns that was not fitted. Code 253.
class TESSEL_API SDGNoCorrelationSigma : public Exception {
 public:
    explicit SDGNoCorrelationSigma(const std::string& name);
    ~SDGNoCorrelationSigma() override;
};

/// An object larger than memory or the index type allows. Code 254.
class TESSEL_API BadAllocation : public Exception {
 public:
    explicit BadAllocation(const std::string& name);
    ~BadAllocation() override;
};

/// A model text that is neither readable PMML nor readable JSON. Code 255.
class TESSEL_API UnableToParseModel : public Exception {
 public:
    UnableToParseModel();
    ~UnableToParseModel() override;
};

}  // namespace Tessel
