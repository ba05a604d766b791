#include <gtest/gtest.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/decision_tree.h>
#include <tessel/find_best_model.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "supervised/tables.h"

// Fitted ensembles and searches as JSON and Ladon texts.

namespace Tessel {
namespace {

using Testing::LabelledTable;
using Testing::labelledTable;
using Testing::numericTable;

/// A model read from the texts of another one scores alike and has the same texts.
template <class Model>
void expectRoundTrip(const Model& fitted, Model other, const DataFrame& table) {
    Model fromLadon = other;
    other.fromJSONString(fitted.toJSON());
    fromLadon.fromLadonString(fitted.toLadon());
    for (const Model& read : {other, fromLadon}) {
        EXPECT_EQ(read.predict(table).toJson(), fitted.predict(table).toJson());
        EXPECT_EQ(read.toJSON(), fitted.toJSON());
        EXPECT_EQ(read.getModelName(), fitted.getModelName());
    }
}

TEST(EnsembleTexts, ModelsScoreAlikeAfterReading) {
    const LabelledTable three = labelledTable(120, 3), two = labelledTable(60, 2);
    const auto expectClassifier = [&](const auto& estimator) {
        const auto model = estimator.fit(three.features, three.target);
        expectRoundTrip(model, estimator.fit(two.features, two.target), three.features);
        auto read = estimator.fit(two.features, two.target);
        read.fromJSONString(model.toJSON());
        EXPECT_EQ(read.posteriorProbability(three.features).toJson(),
                  model.posteriorProbability(three.features).toJson());
    };
    expectClassifier(Classification::Bagging::Estimator());
    expectClassifier(
        Classification::Bagging::Estimator().setBaseEstimator(Classification::NaiveBayes::Estimator()));
    expectClassifier(Classification::Boosting::Estimator());
    expectClassifier(Classification::RandomTrees::Estimator().setNumSelectedFeatures(1));
    const LabelledTable many = numericTable(90), few = numericTable(30);
    const auto expectRegressor = [&](const auto& estimator) {
        expectRoundTrip(estimator.fit(many.features, many.target), estimator.fit(few.features, few.target),
                        many.features);
    };
    expectRegressor(Regression::Bagging::Estimator());
    expectRegressor(Regression::Boosting::Estimator().setStepSize(0.7));
    expectRegressor(Regression::RandomTrees::Estimator());
}

TEST(EnsembleTexts, SearchesKeepTheirModelsAndTheirChoice) {
    const LabelledTable data = labelledTable(90, 2);
    const auto search =
        Classification::FindBestModel::Estimator()
            .addLearner(Classification::NaiveBayes::Estimator())
            .addLearner(Classification::RandomTrees::Estimator())
            .addLearner(Classification::DecisionTree::Estimator().setMinNumRecordsInLeaves(91));
    auto model = search.fit(data.features, data.target);
    auto read = search.fit(data.features, data.target);
    read.fromJSONString(model.toJSON());
    EXPECT_THROW(read.predict(data.features), NoBestLearner);
    EXPECT_EQ(read.getFittingLog(), model.getFittingLog());
    model.setScoringMetric(ClassificationMetricType::F1_SCORE).findBestLearner(data.features, data.target);
    expectRoundTrip(model, read, data.features);
    read.fromLadonString(model.toLadon());
    EXPECT_EQ(read.getBestLearnerName(), model.getBestLearnerName());
    EXPECT_EQ(read.getScoringMetric(), ClassificationMetricType::F1_SCORE);
    EXPECT_EQ(read.getNumModels(), 2);

    const LabelledTable numbers = numericTable(60);
    auto regression = Regression::FindBestModel::Estimator()
                          .addLearner(Regression::Boosting::Estimator())
                          .fit(numbers.features, numbers.target);
    regression.findBestLearner(numbers.features, numbers.target);
    expectRoundTrip(regression, Regression::FindBestModel::Estimator().fit(numbers.features, numbers.target),
                    numbers.features);
}

TEST(EnsembleTexts, RefuseWhatIsNoEnsemble) {
    const LabelledTable data = labelledTable(60, 2);
    auto model = Classification::Boosting::Estimator().setNumWeakLearners(2).fit(data.features, data.target);
    const WString text = model.toJSON();
    const auto replaced = [&](const WString& from, const WString& to) {
        WString changed = text;
        return changed.replace(changed.find(from), from.size(), to);
    };
    const WString tree = L"\"wlAlgorithm\":\"decisionTree\"";
    EXPECT_THROW(model.fromJSONString(replaced(tree, L"\"wlAlgorithm\":\"nobody\"")),
                 UnableToCreateWeakLearner);
    EXPECT_THROW(model.fromJSONString(replaced(tree, L"\"wlAlgorithm\":\"bagging\"")),
                 UnableToCreateWeakLearner);
    for (const auto& [from, to] :
         {std::pair(L"\"wlAlgorithm\":\"decisionTree\"", L"\"wlAlgorithm\":\"naiveBayes\""),
          std::pair(L"\"weakLearners\":[", L"\"weakLearners\":[3,"),
          std::pair(L"\"weakLearners\":[", L"\"weakLearners\":[],\"x\":["),
          std::pair(L"\"weights\":[", L"\"weights\":[-1,"), std::pair(L"boosting", L"bagging"),
          std::pair(L"\"variables\":[\"first\"", L"\"variables\":[\"last\"")})
        EXPECT_THROW(model.fromJSONString(replaced(from, to)), UnsupportedJSONModel);
    EXPECT_EQ(model.toJSON(), text);
    EXPECT_THROW(model.fromLadonString(text), UnsupportedJSONModel);
}

}  // namespace
}  // namespace Tessel
