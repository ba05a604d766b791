#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>
#include <tessel/scaler.h>
#include <tessel/scoring/facades.h>

#include "scoring/catalog.h"
#include "supervised/tables.h"

namespace Tessel {
namespace {

using Scoring::Classifier;
using Scoring::Predictor;

const Testing::LabelledTable& data() {
    static const Testing::LabelledTable table = Testing::labelledTable(120, 2);
    return table;
}
Classification::DecisionTree::Model tree() {
    return Classification::DecisionTree::Estimator().setName(L"my tree").fit(data().features, data().target);
}
Regression::DecisionTree::Model regressionTree() {
    DataFrameColumn target = data().features(Util::all, 1);
    target.setColName(L"size");
    return Regression::DecisionTree::Estimator().fit(data().features, target);
}

WString replaced(WString text, const WString& from, const WString& to) {
    for (std::size_t at = text.find(from); at != WString::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

TEST(Facades, LoadEveryTextOfAClassifierAndScoreLikeIt) {
    const auto model = tree();
    Classifier fromPMML, fromJSON, fromLadon, fromAnything;
    fromPMML.fromPMMLString(model.toPMML());
    fromJSON.fromJSONString(model.toJSON());
    fromLadon.fromLadonString(model.toLadon());
    for (const WString& text : {model.toPMML(), model.toJSON(), model.toLadon()}) {
        fromAnything.fromString(L"\uFEFF" + text);
        EXPECT_EQ(fromAnything.getKind(), L"classification");
    }
    for (const Classifier& classifier : {fromPMML, fromJSON, fromLadon}) {
        EXPECT_EQ(classifier.predict(data().features).toString(), model.predict(data().features).toString());
        EXPECT_EQ(classifier.posteriorProbability(data().features).toString(),
                  model.posteriorProbability(data().features).toString());
        EXPECT_EQ(classifier.getName(), L"my tree");
        EXPECT_EQ(classifier.getModelName(), L"Classification Tree");
        EXPECT_EQ(classifier.getColNames(), model.getColNames());
        EXPECT_EQ(classifier.getCategoricalColNames(), (StringVector{L"group"}));
        EXPECT_EQ(classifier.getAlgorithm(), L"decisionTree");
        EXPECT_EQ(classifier.getIndexColNames(), (StringVector{L"id"}));
        EXPECT_EQ(classifier.getTargetColName(), model.getTargetColName());
        EXPECT_EQ(classifier.getClasses(), model.getClasses());
        EXPECT_EQ(classifier.getScaler(), nullptr);
        EXPECT_EQ(classifier.getSuccessClass(), model.getSuccessClass());
        EXPECT_GT(classifier.toDataFrameVector().size(), 2);
    }
    EXPECT_EQ(fromJSON.toLadon(), model.toLadon());
}

TEST(Facades, ScalingInTheTextIsAppliedAndTold) {
    const Scaler::Model scaler(StringVector{L"first", L"second"}, Vector{1.0, -0.25}, Vector{0.1, 3.0});
    const auto model =
        Classification::DecisionTree::Estimator().fit(scaler.transform(data().features), data().target);
    Classifier classifier;
    classifier.fromPMMLString(model.toPMML(scaler));
    EXPECT_EQ(classifier.posteriorProbability(data().features).toString(),
              model.posteriorProbability(scaler.transform(data().features)).toString());
    const auto read = classifier.getScaler();
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->getShift(L"second"), -0.25);
    EXPECT_EQ(read->getScale(L"first"), 0.1);

    Scoring::Transformer transformer;
    for (const WString& text : {scaler.toPMML(), scaler.toJSON(), scaler.toLadon()}) {
        transformer.fromString(text);
        EXPECT_EQ(transformer.transform(data().features).toString(),
                  scaler.transform(data().features).toString());
        EXPECT_EQ(transformer.getColNames(), scaler.getColNames());
        EXPECT_EQ(transformer.getKind(), L"transformation");
        EXPECT_EQ(transformer.getCategoricalColNames(), StringVector());
    }
    EXPECT_THROW(classifier.fromPMMLString(scaler.toPMML()), UnsupportedPMMLFormat);
}

TEST(Facades, RulesOfClassesReachTheModel) {
    Classifier classifier;
    classifier.fromJSONString(tree().toJSON());
    const WString other = classifier.getClasses()[1];
    classifier.setSuccessClass(other).setSuccessProbability(0.0);
    const DataFrame predicted = classifier.predict(data().features);
    for (int row = 0; row < 10; ++row) EXPECT_EQ(predicted(row, 0).toString(), other);
    EXPECT_EQ(classifier.getSuccessProbability(), 0.0);
    EXPECT_THROW(classifier.setSuccessClass(L"none"), InvalidSuccessLabel);
    EXPECT_THROW(classifier.setSuccessProbability(1.5), ValueOutOfRange);
}

TEST(Facades, ChooseTheFamilyByElementAlgorithmAndFunction) {
    const WString pmml = tree().toPMML();
    Predictor predictor;
    predictor.fromPMMLString(regressionTree().toPMML());
    EXPECT_EQ(predictor.getKind(), L"regression");
    predictor.fromPMMLString(replaced(pmml, L"algorithmName=\"DecisionTree\"", L"algorithmName=\"CART\""));
    EXPECT_EQ(predictor.getKind(), L"classification");

    struct {
        const wchar_t *element, *algorithm, *function;
    } const refused[] = {{L"TreeModel", L"DecisionTree", L"clustering"},
                         {L"TreeModel", L"DecisionTree", L""},
                         {L"MiningModel", L"Stacking", L"classification"},
                         {L"RegressionModel", L"Ridge", L"regression"},
                         {L"ClusteringModel", L"KMedoids", L"clustering"},
                         {L"SupportVectorMachineModel", L"", L"regression"},
                         {L"NaiveBayesModel", L"NaiveBayes", L"regression"},
                         {L"TimeSeriesModel", L"ARIMA", L"timeSeries"},
                         {L"NeuralNetwork", L"NeuralNetwork", L"regression"},
                         {L"ClusteringModel", L"KMeans", L"clustering"},
                         {L"MiningModel", L"Bagging", L"clustering"}};
    for (const auto& [element, algorithm, function] : refused) {
        WString text = replaced(pmml, L"TreeModel", element);
        text = replaced(text, L"algorithmName=\"DecisionTree\"",
                        WString(L"algorithmName=\"") + algorithm + L"\"");
        text = replaced(text, L"functionName=\"classification\"",
                        WString(L"functionName=\"") + function + L"\"");
        EXPECT_THROW(predictor.fromPMMLString(text), UnsupportedPMMLFormat) << element << ' ' << algorithm;
    }
    EXPECT_EQ(predictor.getKind(), L"classification") << "what was loaded stays";

    EXPECT_THROW(predictor.fromJSONString(replaced(tree().toJSON(), L"decisionTree", L"kMeans")),
                 UnsupportedJSONModel);
    EXPECT_THROW(predictor.fromJSONString(L"[1, 2]"), UnsupportedJSONModel);
    EXPECT_THROW(predictor.fromPMMLString(L""), MalformedPMML);
    EXPECT_THROW(predictor.fromString(L""), UnsupportedJSONModel);

    for (const wchar_t* element :
         {L"TreeModel", L"RegressionModel", L"MiningModel", L"TransformationModel", L"TextModel",
          L"TimeSeriesModel", L"NeuralNetwork", L"NearestNeighborModel", L"NaiveBayesModel",
          L"ClusteringModel", L"AssociationModel"})
        EXPECT_TRUE(Scoring::isModelElement(element)) << element;
    EXPECT_FALSE(Scoring::isModelElement(L""));
    EXPECT_FALSE(Scoring::isModelElement(L"Header"));
}

TEST(Facades, CallsThatTheModelCannotAnswerSaySo) {
    const DataFrame& table = data().features;
    const DataFrameColumn column = table(Util::all, 0);
    Classifier classifier;
    EXPECT_FALSE(classifier.isLoaded());
    EXPECT_THROW(classifier.predict(table), NoModels);
    EXPECT_THROW(classifier.getColNames(), NoModels);
    EXPECT_THROW(Scoring::Forecaster().forecast(column), NoModels);
    EXPECT_THROW(Scoring::Transformer().transform(table), NoModels);
    EXPECT_THROW(Scoring::Clusterizer().predict(), NoModels);
    classifier.fromPMMLString(regressionTree().toPMML());
    EXPECT_EQ(classifier.predict(table).getNumRows(), 120);
    EXPECT_THROW(classifier.posteriorProbability(table), NotAClassifier);
    EXPECT_THROW(classifier.getClasses(), NotAClassifier);
    EXPECT_THROW(classifier.predict(DataFrame()), NotAValidColName);
    Scoring::Clusterizer clusterizer;
    clusterizer.fromPMMLString(tree().toPMML());
    EXPECT_THROW(clusterizer.predict(table), NotAPredictor);
    EXPECT_THROW(Scoring::Forecaster().fromPMMLString(tree().toPMML()), UnsupportedPMMLFormat);
    EXPECT_THROW(Scoring::Transformer().fromJSONString(tree().toJSON()), UnsupportedJSONModel);
    EXPECT_THROW(Scoring::Forecaster().setNumForecasts(0), ValueOutOfRange);
    EXPECT_THROW(Scoring::Forecaster().setConfidenceLevel(1.0), ValueOutOfRange);
    EXPECT_THROW(Scoring::Clusterizer().setNumClusters(0), ValueOutOfRange);
}

TEST(Facades, ManyThreadsScoreWithOneModelAtOnce) {
    const DataFrame& features = data().features;
    const WString texts[] = {tree().toPMML(),
                             Classification::NaiveBayes::Estimator().fit(features, data().target).toJSON(),
                             Classification::RandomTrees::Estimator().fit(features, data().target).toLadon()};
    for (const WString& text : texts) {
        Classifier classifier, other;
        classifier.fromString(text);
        other.fromString(text);
        const WString expected = other.posteriorProbability(features).toString();
        std::vector<WString> found(8);
        std::vector<std::thread> threads;
        for (WString& result : found)
            threads.emplace_back([&] {
                for (int i = 0; i < 20; ++i) {
                    classifier.predict(features);
                    result = classifier.posteriorProbability(features).toString();
                }
            });
        for (std::thread& thread : threads) thread.join();
        for (const WString& result : found) EXPECT_EQ(result, expected);
    }
}

TEST(Facades, SettingsBelongToEachCopy) {
    Scoring::Forecaster forecaster;
    forecaster.setNumForecasts(7).setConfidenceLevel(0.8);
    Scoring::Forecaster copy = forecaster;
    copy.setNumForecasts(3);
    EXPECT_EQ(forecaster.getNumForecasts(), 7);
    EXPECT_EQ(copy.getNumForecasts(), 3);
    EXPECT_EQ(copy.getConfidenceLevel(), 0.8);
    EXPECT_EQ(Scoring::Clusterizer().getNumClusters(), 0);
}

TEST(Facades, ReportsBecomeEvaluations) {
    const DataFrameVector tables = tree().toDataFrameVector();
    const WString text = Ladon::Reporter::toLadon(tables);
    const WString head = L"{\"evaluations\":[{\"header\":\"Model: Classification Tree\",\"dataFrame\":{";
    EXPECT_EQ(text.substr(0, head.size()), head);
    DataFrame first;
    const std::size_t begin = head.size() - 1, end = text.find(L"},{\"header\"");
    first.fromJsonString(text.substr(begin, end - begin));
    EXPECT_EQ(first.toJson(), tables[0].toJson());
}

TEST(Facades, CopiesShareAndNamesAreTheirOwn) {
    Predictor predictor;
    predictor.fromPMMLString(tree().toPMML());
    Predictor copy = predictor;
    copy.setName(L"mine");
    EXPECT_EQ(predictor.getName(), L"my tree");
    for (const WString& text : {copy.toPMML(), copy.toJSON(), copy.toLadon()}) {
        EXPECT_EQ(text.find(L"my tree"), WString::npos);
        Predictor read;
        read.fromString(text);
        EXPECT_EQ(read.getName(), L"mine");
    }
    EXPECT_NE(predictor.toJSON().find(L"my tree"), WString::npos);
    predictor.fromPMMLString(regressionTree().toPMML());
    EXPECT_EQ(copy.getKind(), L"classification");
    EXPECT_EQ(copy.getName(), L"mine");
}

}  // namespace
}  // namespace Tessel
