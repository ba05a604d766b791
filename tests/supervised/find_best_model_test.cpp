#include <cmath>

#include <gtest/gtest.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/decision_tree.h>
#include <tessel/evaluator/metrics.h>
#include <tessel/find_best_model.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "supervised/tables.h"

namespace Tessel {
namespace {

using FindBestModel::LearnerType;
using Testing::LabelledTable;
using Testing::labelledTable;
using Testing::numericTable;

namespace C = Classification;
namespace R = Regression;

const C::DecisionTree::Estimator kStump = C::DecisionTree::Estimator().setMaxNumSplits(1);
const C::DecisionTree::Estimator kGuess = C::DecisionTree::Estimator().setMaxNumSplits(0);

TEST(FindBestModel, NamesOfLearnersAndMetrics) {
    struct Case {
        int value;
        const wchar_t *classifier, *regressor;
    };
    for (const Case& c :
         {Case{1, L"Logistic Regression", L"Linear Regression"}, Case{2, L"Decision Tree", L"Decision Tree"},
          Case{3, L"Nearest Neighbors", L"Nearest Neighbors"}, Case{4, L"Neural Network", L"Neural Network"},
          Case{5, L"Discriminant Analysis", L"Unknown"}, Case{6, L"Naive Bayes", L"Unknown"},
          Case{7, L"Bagging", L"Bagging"}, Case{8, L"Boosting", L"Boosting"},
          Case{9, L"Random Trees", L"Random Trees"}, Case{0, L"Unknown", L"Unknown"},
          Case{10, L"Unknown", L"Unknown"}}) {
        const auto type = static_cast<LearnerType>(c.value);
        EXPECT_EQ(C::FindBestModel::getLearnerName(type), c.classifier);
        EXPECT_EQ(R::FindBestModel::getLearnerName(type), c.regressor);
        if (c.value >= 1 && c.value <= 9) {
            EXPECT_EQ(FindBestModel::getLearnerType(c.classifier), type);
        }
    }
    EXPECT_EQ(FindBestModel::getLearnerType(L"Linear Regression"), LearnerType::LINEAR_REGRESSION);
    EXPECT_EQ(FindBestModel::getLearnerType(L"decision tree"), LearnerType::UNKNOWN);
    EXPECT_EQ(FindBestModel::getLearnerType(L""), LearnerType::UNKNOWN);

    const wchar_t* const classification[] = {L"Accuracy",  L"Specificity", L"Sensitivity",
                                             L"Precision", L"F1 score",    L"Accuracy (%correct)"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(
            C::FindBestModel::Model::getScoringMetricString(static_cast<ClassificationMetricType>(i + 1)),
            classification[i]);
    const wchar_t* const regression[] = {L"SSE", L"MSE", L"RMSE", L"MAD", L"R2"};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(R::FindBestModel::Model::getScoringMetricString(static_cast<RegressionMetricType>(i + 1)),
                  regression[i]);
    EXPECT_THROW(C::FindBestModel::Model::getScoringMetricString(static_cast<ClassificationMetricType>(0)),
                 ConstraintViolation);
}

TEST(FindBestModel, ChoosesTheBestByEachMetric) {
    LabelledTable data = labelledTable(120, 2);
    for (int row = 0; row < 120; row += 7) data.target(row) = WString(L"class 0");
    auto model = C::FindBestModel::Estimator()
                     .addLearner(C::RandomTrees::Estimator())
                     .addLearner(C::NaiveBayes::Estimator())
                     .addLearner(kGuess)
                     .addLearner(kStump)  // replaces the other tree
                     .fit(data.features, data.target);
    EXPECT_EQ(model.getNumModels(), 3);
    EXPECT_TRUE(model.getFittingLog().empty());
    EXPECT_EQ(model.getScoringMetric(), ClassificationMetricType::PERCENT_CORRECT);
    EXPECT_EQ(model.findBestLearner(data.features, data.target), L"Random Trees");
    EXPECT_EQ(model.getBestLearnerName(), L"Random Trees");
    EXPECT_EQ(model.getBestLearnerType(), LearnerType::RANDOM_TREES);

    const DataFrame metrics = model.getMetrics();
    EXPECT_EQ(metrics.getName(), L"Metrics");
    EXPECT_EQ(metrics.getRowNames(), (StringVector{L"Decision Tree", L"Naive Bayes", L"Random Trees"}));
    const auto measures = {
        std::pair(ClassificationMetricType::ACCURACY, 0), std::pair(ClassificationMetricType::SPECIFICITY, 1),
        std::pair(ClassificationMetricType::SENSITIVITY, 2),
        std::pair(ClassificationMetricType::PRECISION, 3), std::pair(ClassificationMetricType::F1_SCORE, 4)};
    for (const auto& [metric, which] : measures) {
        Vector values;
        for (const auto type :
             {LearnerType::DECISION_TREE, LearnerType::NAIVE_BAYES, LearnerType::RANDOM_TREES}) {
            const DataFrameColumn predicted = model.predict(type, data.features)(Util::all, 0);
            const WString success = L"class 0";  // of the first row
            values.push_back(which == 0   ? Metrics::accuracy(data.target, predicted)
                             : which == 1 ? Metrics::specificity(data.target, predicted, success)
                             : which == 2 ? Metrics::sensitivity(data.target, predicted, success)
                             : which == 3 ? Metrics::precision(data.target, predicted, success)
                                          : Metrics::F1(data.target, predicted, success));
        }
        const WString column = C::FindBestModel::Model::getScoringMetricString(metric);
        EXPECT_EQ(metrics(Util::all, column).toDoubleVector(), values);
        const auto best = std::max_element(values.begin(), values.end()) - values.begin();
        EXPECT_EQ(model.setScoringMetric(metric).findBestLearner(data.features, data.target, false),
                  metrics.getRowName(static_cast<int>(best)));
    }
    EXPECT_THROW(model.setScoringMetric(static_cast<ClassificationMetricType>(7)), ConstraintViolation);

    const DataFrameVector report = model.toDataFrameVector();
    EXPECT_EQ(report.getName(), L"Model Search for Classification");
    EXPECT_EQ(report[0](L"Metric for best learner", 0).toString(), L"F1 score");
    EXPECT_TRUE(report.exists(L"Metrics"));
    EXPECT_EQ(report.at(L"Fitting Log").getNumRows(), 0);
}

TEST(FindBestModel, EqualLearnersGoByTheirType) {
    const LabelledTable data = labelledTable(60, 2);
    auto model = C::FindBestModel::Estimator()
                     .addLearner(C::Boosting::Estimator().setBaseEstimator(kStump).setNumWeakLearners(1))
                     .addLearner(C::Bagging::Estimator().setBaseEstimator(kStump).setNumWeakLearners(1))
                     .addLearner(kStump)
                     .fit(data.features, data.target);
    EXPECT_EQ(model.getNumModels(), 3);
    EXPECT_EQ(model.findBestLearner(data.features, data.target), L"Decision Tree");
    const Vector accuracies = model.getMetrics()(Util::all, L"Accuracy").toDoubleVector();
    EXPECT_EQ(accuracies, Vector(3, 1.0));
    EXPECT_EQ(model.getMetrics()(Util::all, L"Accuracy (%correct)").toDoubleVector(), Vector(3, 100.0));
}

TEST(FindBestModel, OnlyTheChosenLearnerScores) {
    const LabelledTable data = labelledTable(60, 2);
    auto model = C::FindBestModel::Estimator()
                     .addLearner(kGuess)
                     .addLearner(C::NaiveBayes::Estimator())
                     .fit(data.features, data.target);
    EXPECT_THROW(model.predict(data.features), NoBestLearner);
    EXPECT_THROW(model.posteriorProbability(data.features), NoBestLearner);
    EXPECT_THROW(model.getBestLearnerName(), NoBestLearner);
    EXPECT_EQ(model.findBestLearner(data.features, data.target, false), L"Naive Bayes");
    EXPECT_EQ(model.getBestLearnerName(), L"Naive Bayes");
    EXPECT_THROW(model.predict(data.features), NoBestLearner);
    model.findBestLearner(data.features, data.target, true);

    const auto alone = C::NaiveBayes::Estimator().fit(data.features, data.target);
    EXPECT_EQ(model.predict(data.features).toJson(), alone.predict(data.features).toJson());
    EXPECT_EQ(model.predictWithPosterior(data.features).toJson(),
              alone.predictWithPosterior(data.features).toJson());
    EXPECT_EQ(model.posteriorProbability(LearnerType::NAIVE_BAYES, data.features).toJson(),
              alone.posteriorProbability(data.features).toJson());
    EXPECT_EQ(model.getColNames(), (StringVector{L"first", L"second", L"group"}));
    EXPECT_EQ(model.getTargetColName(), L"label");
    EXPECT_NE(std::dynamic_pointer_cast<C::NaiveBayes::Model>(model.getModel(LearnerType::NAIVE_BAYES)),
              nullptr);
    try {
        model.predict(LearnerType::BAGGING, data.features);
        FAIL();
    } catch (const NoSuchModel& error) {
        EXPECT_STREQ(error.what(), "Model 'Bagging' is not available.");
    }
    EXPECT_THROW(model.findBestLearner(data.features, labelledTable(59, 2).target), IncompatibleNumRows);
    const DataFrame none = data.features(IntVector(), Util::all);
    EXPECT_THROW(model.findBestLearner(none, DataFrameColumn(L"label", StringVector())), TooFewNumRows);
    // A success class and cut-off set here hold for all models.
    model.setSuccessClass(L"class 1").setSuccessProbability(0.0);
    for (int row = 0; row < 60; ++row)
        EXPECT_EQ(model.predict(LearnerType::DECISION_TREE, data.features)(row, 0).toString(), L"class 1");
}

TEST(FindBestModel, FailuresAreLogged) {
    const LabelledTable data = labelledTable(60, 2);
    const auto tooLarge = C::DecisionTree::Estimator().setMinNumRecordsInLeaves(61);
    auto search = C::FindBestModel::Estimator().addLearner(tooLarge).addLearner(C::NaiveBayes::Estimator());
    auto model = search.fit(data.features, data.target);
    const WString tree =
        L"Decision Tree Fitting: Min #records in leaves violated a constraint: Acceptable range: [1,60]";
    EXPECT_EQ(model.getFittingLog(), (StringVector{tree}));
    EXPECT_EQ(model.findBestLearner(data.features, data.target), L"Naive Bayes");

    const DataFrameColumn constant(L"label", StringVector(60, L"same"));
    auto failed = search.addLearner(kStump).fit(data.features, constant);
    const WString few = L" Fitting: There must be at least 2 distinct class labels.";
    EXPECT_EQ(failed.getFittingLog(),
              (StringVector{L"Decision Tree" + few, L"Naive Bayes" + few, L"No models were fit."}));
    EXPECT_EQ(failed.getNumModels(), 0);
    const std::string narrow = " Fitting: There must be at least 2 distinct class labels.";
    const std::string message = "There are no fitted models available. Messages: Decision Tree" + narrow +
                                "; Naive Bayes" + narrow + "; No models were fit.";
    const auto expectNoModels = [&](const auto& work) {
        try {
            work();
            FAIL();
        } catch (const NoModels& error) {
            EXPECT_EQ(error.what(), message);
        }
    };
    expectNoModels([&] { failed.findBestLearner(data.features, data.target); });
    expectNoModels([&] { failed.predict(data.features); });
    EXPECT_EQ(failed.getColNames(), (StringVector{L"first", L"second", L"group"}));
    EXPECT_EQ(failed.toDataFrameVector().at(L"Fitting Log").getNumRows(), 3);

    const auto empty = C::FindBestModel::Estimator().fit(data.features, data.target);
    EXPECT_EQ(empty.getFittingLog(), (StringVector{L"No models were fit."}));
    for (const auto& nothing : {failed, empty}) {
        model.fromJSONString(nothing.toJSON());
        EXPECT_EQ(model.toJSON(), nothing.toJSON());
    }
}

TEST(FindBestModel, PMMLIsThatOfTheChosenModelUnderTheNameOfTheSearch) {
    const LabelledTable data = labelledTable(60, 2);
    auto search = C::FindBestModel::Estimator().addLearner(kStump);
    auto model = search.fit(data.features, data.target);
    EXPECT_THROW(model.toPMML(), NoBestLearner);
    model.findBestLearner(data.features, data.target);
    const WString element = L"<TreeModel modelName=\"";
    EXPECT_NE(model.toPMML().find(element + L"Classification Tree\""), WString::npos);
    auto named = search.setName(L"mine").fit(data.features, data.target);
    named.findBestLearner(data.features, data.target);
    EXPECT_NE(named.toPMML().find(element + L"mine\""), WString::npos);
    EXPECT_NE(named.toPMML().find(L"<ModelName>mine<"), WString::npos);
    const WString before = model.toJSON();
    EXPECT_THROW(model.fromPMMLString(model.toPMML()), UnsupportedPMMLFormat);
    EXPECT_EQ(model.toJSON(), before);
}

TEST(FindBestModel, ModelsKeepTheirSuccessClassUntilOneIsSet) {
    const LabelledTable data = labelledTable(60, 2);
    const auto fitted = [&](const auto& search) { return search.fit(data.features, data.target); };
    const auto success = [](const auto& model, LearnerType type) {
        return model.getModel(type)->getSuccessClass();
    };
    const auto bagging = C::FindBestModel::Estimator().addLearner(C::Bagging::Estimator());
    EXPECT_EQ(fitted(bagging).getSuccessClass(), L"class 1");  // that of the only model
    auto both = fitted(C::FindBestModel::Estimator(bagging).addLearner(kStump));
    EXPECT_EQ(both.getSuccessClass(), L"class 0");
    both.setSuccessProbability(0.3);
    EXPECT_EQ(success(both, LearnerType::BAGGING), L"class 1");
    EXPECT_EQ(success(both, LearnerType::DECISION_TREE), L"class 0");
    EXPECT_EQ(both.getModel(LearnerType::BAGGING)->getSuccessProbability(), 0.3);
    both.setSuccessClass(L"class 0");
    EXPECT_EQ(success(both, LearnerType::BAGGING), L"class 0");
}

TEST(FindBestModel, HandsOnWhatIsSetForAllLearners) {
    const LabelledTable data = labelledTable(60, 2);
    const auto model = C::FindBestModel::Estimator()
                           .setSuccessClass(L"class 1")
                           .setSuccessProbability(0.75)
                           .setPriorProbMethod(PriorProbMethodType::UNIFORM)
                           .addLearner(kStump)
                           .addLearner(C::Boosting::Estimator())
                           .fit(data.features, data.target);
    for (const LearnerType type : {LearnerType::DECISION_TREE, LearnerType::BOOSTING}) {
        EXPECT_EQ(model.getModel(type)->getSuccessClass(), L"class 1");
        EXPECT_EQ(model.getModel(type)->getSuccessProbability(), 0.75);
    }
    // More than two classes are compared by the means of the classes.
    const LabelledTable three = labelledTable(90, 3);
    auto search = C::FindBestModel::Estimator().addLearner(kStump).fit(three.features, three.target);
    search.setScoringMetric(ClassificationMetricType::SENSITIVITY)
        .findBestLearner(three.features, three.target);
    double mean = 0.0;
    const DataFrameColumn predicted =
        search.predict(LearnerType::DECISION_TREE, three.features)(Util::all, 0);
    for (const wchar_t* const label : {L"class 0", L"class 1", L"class 2"})
        mean += Metrics::sensitivity(three.target, predicted, label) / 3.0;
    EXPECT_NEAR(search.getMetrics()(0, L"Sensitivity").toDouble(), mean, 1e-15);
    // A stump never predicts one of the three, whose precision is undefined.
    EXPECT_THROW(search.setScoringMetric(ClassificationMetricType::PRECISION)
                     .findBestLearner(three.features, three.target),
                 NoBestLearner);
}

TEST(FindBestModel, ValidationDataPruneTheTrees) {
    const LabelledTable data = labelledTable(120, 2);
    LabelledTable noisy = data;
    for (int row = 0; row < 120; row += 4) noisy.target(row) = WString(L"class 1");
    const auto pruned = C::DecisionTree::Estimator().setPrunedTreeType(DecisionTree::TreeType::MIN_ERROR);
    const auto model = C::FindBestModel::Estimator()
                           .addLearner(pruned)
                           .addLearner(C::NaiveBayes::Estimator())
                           .fit(noisy.features, data.features, noisy.target, data.target);
    const auto alone = pruned.fit(noisy.features, data.features, noisy.target, data.target);
    EXPECT_EQ(model.getNumModels(), 2);
    EXPECT_EQ(model.getModel(LearnerType::DECISION_TREE)->toString(), alone.toString());
    EXPECT_GT(alone.getPruningLog().getNumRows(), 1);
}

TEST(FindBestModel, RegressionTakesTheLeastErrorOrTheGreatestR2) {
    const LabelledTable data = numericTable(150);
    auto model = R::FindBestModel::Estimator()
                     .addLearner(R::DecisionTree::Estimator().setMaxNumSplits(1))
                     .addLearner(R::Bagging::Estimator())
                     .addLearner(R::Boosting::Estimator())
                     .addLearner(R::RandomTrees::Estimator().setNumSelectedFeatures(1))
                     .fit(data.features, data.target);
    EXPECT_EQ(model.getScoringMetric(), RegressionMetricType::RMSE);
    EXPECT_THROW(model.predict(data.features), NoBestLearner);
    for (int value = 1; value <= 5; ++value) {
        const auto metric = static_cast<RegressionMetricType>(value);
        const WString best = model.setScoringMetric(metric).findBestLearner(data.features, data.target);
        const DataFrame metrics = model.getMetrics();
        ASSERT_EQ(metrics.getNumRows(), 4);
        EXPECT_EQ(metrics.getRowName(0), L"Decision Tree");
        const WString column = R::FindBestModel::Model::getScoringMetricString(metric);
        const Vector values = metrics(Util::all, column).toDoubleVector();
        const auto row = value == 5 ? std::max_element(values.begin(), values.end())
                                    : std::min_element(values.begin(), values.end());
        EXPECT_EQ(best, metrics.getRowName(static_cast<int>(row - values.begin())));
        EXPECT_NE(best, L"Decision Tree");
        EXPECT_EQ(model.predict(data.features).toJson(),
                  model.predict(model.getBestLearnerType(), data.features).toJson());
    }
    EXPECT_EQ(model.toDataFrameVector().getName(), L"Model Search for Regression");
    DataFrame texts;
    texts.append(DataFrameColumn(L"y", StringVector(150, L"text")));
    const auto failed =
        R::FindBestModel::Estimator().addLearner(R::Boosting::Estimator()).fit(data.features, texts);
    EXPECT_EQ(failed.getNumModels(), 0);
    EXPECT_EQ(failed.getFittingLog()[0].find(L"Boosting Fitting: "), 0u);
}

TEST(FindBestModel, LadonHoldsTheLearners) {
    const auto estimator = C::FindBestModel::Estimator()
                               .setSuccessProbability(0.25)
                               .addLearner(C::Boosting::Estimator().setNumWeakLearners(3))
                               .addLearner(C::NaiveBayes::Estimator());
    EXPECT_EQ(estimator.toDataFrame().getName(), L"Estimator: Model Search for Classification");
    EXPECT_EQ(estimator.toDataFrame()(L"Learners", 0).toString(), L"Naive Bayes, Boosting");
    EXPECT_EQ(R::FindBestModel::Estimator().toDataFrame().getName(),
              L"Estimator: Model Search for Regression");
    const WString text = estimator.toLadon();
    const WString kind = L"{\"objectType\":\"estimator\",\"type\":\"classification\",\"algorithm\":";
    EXPECT_EQ(text, kind + L"\"findBestModel\",\"parameters\":{\"successProbability\":0.25},\"learners\":[" +
                        kind + L"\"naiveBayes\",\"parameters\":{}}," + kind +
                        L"\"boosting\",\"parameters\":{\"numWeakLearners\":3},\"weakLearner\":" + kind +
                        L"\"decisionTree\",\"parameters\":{}}}]}");
    C::FindBestModel::Estimator read;
    read.fromLadonString(text);
    EXPECT_EQ(read.toLadon(), text);
    EXPECT_EQ(read.getNumLearners(), 2);
    const auto replaced = [&](const WString& from, const WString& to) {
        WString changed = text;
        return changed.replace(changed.find(from), from.size(), to);
    };
    for (const auto& [from, to] :
         {std::pair(L"naiveBayes", L"findBestModel"), std::pair(L"naiveBayes", L"nobody"),
          std::pair(L"\"learners\":[", L"\"learners\":3,\"x\":["),
          std::pair(L"\"numWeakLearners\":3}", L"3}"), std::pair(L"\"learners\":[", L"\"learners\":[[],")})
        EXPECT_THROW(read.fromLadonString(replaced(from, to)), UnsupportedJSONModel);
    EXPECT_THROW(read.fromLadonString(replaced(L"decisionTree", L"bagging")), UnableToCreateWeakLearner);
    EXPECT_EQ(read.toLadon(), text);
    read.reset();
    EXPECT_EQ(read.getNumLearners(), 0);
    EXPECT_TRUE(read.isValid());
    EXPECT_FALSE(read.setSuccessProbability(2.0).isValid());
}

}  // namespace
}  // namespace Tessel
