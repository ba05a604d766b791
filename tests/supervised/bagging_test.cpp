#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <omp.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/data/util/random.h>
#include <tessel/decision_tree.h>
#include <tessel/evaluator/metrics.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "supervised/tables.h"

// Bagging and random trees: both fit one learner per bootstrap sample.

namespace Tessel {
namespace {

using Sampling::ReplaceType::WITH_REPLACEMENT;
using Testing::LabelledTable;
using Testing::labelledTable;
using Testing::numericTable;

Vector column(const DataFrame& table, int position) { return table(Util::all, position).toDoubleVector(); }

/// What the learner that an ensemble fits at position m gives on its own, fitted on the rows that m draws.
template <class Learner>
auto fitAlone(const Learner& learner, const LabelledTable& data, int seed) {
    const int n = data.target.getNumRows();
    const IntVector rows = Util::sample(n, n, seed, WITH_REPLACEMENT);
    return learner.fit(data.features(rows, Util::all), data.target.select(rows));
}

template <class Model>
Vector shareOfSecondClass(const std::vector<Model>& models, const LabelledTable& data) {
    Vector share(static_cast<std::size_t>(data.target.getNumRows()), 0.0);
    for (const Model& model : models) {
        const DataFrame predicted = model.predict(data.features);
        for (std::size_t row = 0; row < share.size(); ++row)
            share[row] += predicted(static_cast<int>(row), 0).toString() == L"class 1";
    }
    for (double& value : share) value /= static_cast<double>(models.size());
    return share;
}

TEST(Bagging, VotesOfLearnersFittedOnTheirSamples) {
    using namespace Classification;
    const LabelledTable data = labelledTable(150, 3);
    const auto expectVotes = [&](const auto& learner) {
        using Learner = std::decay_t<decltype(learner)>;
        const auto ensemble =
            Bagging::Estimator().setBaseEstimator(learner).setNumWeakLearners(7).setBootstrapSeed(99).fit(
                data.features, data.target);
        std::vector<decltype(Learner().fit(data.features, data.target))> alone;
        for (int m = 0; m < 7; ++m) alone.push_back(fitAlone(learner, data, 99 + m));
        EXPECT_EQ(column(ensemble.posteriorProbability(data.features), 1), shareOfSecondClass(alone, data));
        for (int m = 0; m < 7; ++m)
            EXPECT_EQ(ensemble.getWeakModel(m)->predict(data.features).toJson(),
                      alone[static_cast<std::size_t>(m)].predict(data.features).toJson());
        EXPECT_EQ(ensemble.getLearnerWeights(), Vector(7, 1.0));
        EXPECT_THROW(ensemble.getWeakModel(7), IndexOutOfRange);
        EXPECT_THROW(ensemble.getWeakModel(-1), IndexOutOfRange);
    };
    expectVotes(NaiveBayes::Estimator());
    expectVotes(Classification::DecisionTree::Estimator());
    expectVotes(Classification::DecisionTree::Estimator().setMaxNumSplits(3).setPriorProbMethod(
        PriorProbMethodType::UNIFORM));
    // The default is a decision tree.
    const auto byDefault = Bagging::Estimator().fit(data.features, data.target);
    EXPECT_EQ(byDefault.getNumWeakLearners(), 10);
    EXPECT_EQ(byDefault.getWeakLearnerAlgorithm(), L"decisionTree");
    EXPECT_NE(std::dynamic_pointer_cast<Classification::DecisionTree::Model>(byDefault.getWeakModel(0)),
              nullptr);
}

TEST(RandomTrees, AreTreesThatDrawFeaturesByConsecutiveSeeds) {
    const LabelledTable data = labelledTable(150, 2);
    const auto forest = Classification::RandomTrees::Estimator()
                            .setNumWeakLearners(5)
                            .setNumSelectedFeatures(1)
                            .setMinNumRecordsInLeaves(4)
                            .setFeatureSelectionSeed(2147483646)
                            .fit(data.features, data.target);
    std::vector<Classification::DecisionTree::Model> trees;
    Vector importance(3, 0.0);
    for (int m = 0; m < 5; ++m) {
        trees.push_back(fitAlone(Classification::DecisionTree::Estimator()
                                     .setNumSelectedFeatures(1)
                                     .setMinNumRecordsInLeaves(4)
                                     .setFeatureSelectionSeed(m < 2 ? 2147483646 + m : m - 1),
                                 data, 12345 + m));
        const Vector own = column(trees.back().getFeaturesImportance(), 0);
        for (std::size_t i = 0; i < 3; ++i) importance[i] += own[i] / 5.0;
    }
    EXPECT_EQ(column(forest.posteriorProbability(data.features), 1), shareOfSecondClass(trees, data));
    const DataFrame table = forest.getFeaturesImportance();
    EXPECT_EQ(table.getName(), L"Features Importance");
    EXPECT_EQ(table.getRowNames(), (StringVector{L"first", L"second", L"group"}));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(table(static_cast<int>(i), L"Importance").toDouble(), importance[i], 1e-12);
}

TEST(Bagging, RegressionAveragesTheLearners) {
    // Large leaves and no categories: no two features part the rows of a node alike, so that no rounding
    // chooses between them.
    LabelledTable data = numericTable(120);
    data.features = data.features(Util::all, StringVector{L"first", L"second"});
    const auto tree = Regression::DecisionTree::Estimator().setMinNumRecordsInLeaves(10);
    const auto ensemble = Regression::Bagging::Estimator().setBaseEstimator(tree).setNumWeakLearners(4).fit(
        data.features, data.target);
    const auto forest =
        Regression::RandomTrees::Estimator().setMinNumRecordsInLeaves(10).setNumWeakLearners(4).fit(
            data.features, data.target);
    Vector mean(120, 0.0);
    for (int m = 0; m < 4; ++m) {
        const Vector own = column(fitAlone(tree, data, 12345 + m).predict(data.features), 0);
        for (std::size_t row = 0; row < 120; ++row) mean[row] += own[row] / 4.0;
    }
    const DataFrame predicted = ensemble.predict(data.features);
    EXPECT_EQ(predicted.getName(), L"Scores");
    EXPECT_EQ(predicted.getColName(0), L"Prediction: y");
    EXPECT_EQ(predicted.getRowName(4), L"Record 5");
    for (std::size_t row = 0; row < 120; ++row) EXPECT_NEAR(column(predicted, 0)[row], mean[row], 1e-12);
    EXPECT_EQ(column(forest.predict(data.features), 0), column(predicted, 0));  // all features are selected
    const DataFrame none = data.features(IntVector(), Util::all);
    EXPECT_EQ(ensemble.predict(none).getNumRows(), 0);
}

TEST(Bagging, OutOfBagErrorIsThatOfTheLearnersThatDidNotSeeTheRow) {
    const LabelledTable data = numericTable(60);
    const auto model =
        Regression::RandomTrees::Estimator().setNumSelectedFeatures(1).setNumWeakLearners(6).fit(
            data.features, data.target);
    const DataFrame table = model.getOutOfBagError();
    EXPECT_EQ(table.getName(), L"Out-of-bag Error");
    EXPECT_EQ(table.getRowNames(), (StringVector{L"1", L"2", L"3", L"4", L"5", L"6"}));
    Vector sums(60, 0.0), counts(60, 0.0);
    const Vector target = data.target.toDoubleVector();
    for (int m = 0; m < 6; ++m) {
        const IntVector rows = Util::sample(60, 60, 12345 + m, WITH_REPLACEMENT);
        const Vector own = column(model.getWeakModel(m)->predict(data.features), 0);
        double squares = 0.0, numJudged = 0.0;
        for (std::size_t row = 0; row < 60; ++row) {
            if (std::find(rows.begin(), rows.end(), static_cast<int>(row)) == rows.end()) {
                sums[row] += own[row];
                counts[row] += 1.0;
            }
            if (counts[row] == 0.0) continue;
            numJudged += 1.0;
            squares += std::pow(target[row] - sums[row] / counts[row], 2);
        }
        EXPECT_NEAR(table(m, L"MSE").toDouble(), squares / numJudged, 1e-12 * squares);
        EXPECT_EQ(table(m, L"#Records").toDouble(), numJudged);
    }
    const LabelledTable labelled = labelledTable(200, 3);
    const DataFrame rates = Classification::Bagging::Estimator()
                                .setNumWeakLearners(30)
                                .fit(labelled.features, labelled.target)
                                .getOutOfBagError();
    EXPECT_LT(rates(29, L"Error Rate").toDouble(), 0.1);
    EXPECT_EQ(rates(29, L"#Records").toDouble(), 200.0);
}

TEST(Bagging, TheNumberOfThreadsChangesNothing) {
    const LabelledTable data = labelledTable(300, 3);
    const LabelledTable numbers = numericTable(300);
    const int before = omp_get_max_threads();
    std::vector<WString> reports;
    for (const int numThreads : {1, 2, 5}) {
        omp_set_num_threads(numThreads);
        reports.push_back(Classification::RandomTrees::Estimator()
                              .setNumSelectedFeatures(2)
                              .fit(data.features, data.target)
                              .toString() +
                          Classification::Bagging::Estimator()
                              .setBaseEstimator(Classification::NaiveBayes::Estimator())
                              .fit(data.features, data.target)
                              .toString() +
                          Regression::Bagging::Estimator().fit(numbers.features, numbers.target).toString());
    }
    omp_set_num_threads(before);
    EXPECT_EQ(reports[1], reports[0]);
    EXPECT_EQ(reports[2], reports[0]);
}

TEST(Bagging, ASampleWithoutAClassIsAnError) {
    LabelledTable data = labelledTable(40, 2);
    for (int row = 1; row < 40; ++row) data.target(row) = WString(L"class 1");
    const auto fit = [&](int numLearners, int seed) {
        return Classification::Bagging::Estimator()
            .setNumWeakLearners(numLearners)
            .setBootstrapSeed(seed)
            .fit(data.features, data.target);
    };
    int numFits = 0;
    for (int seed = 0; seed < 20; ++seed) {
        const IntVector rows = Util::sample(40, 40, seed, WITH_REPLACEMENT);
        if (std::find(rows.begin(), rows.end(), 0) == rows.end()) {
            EXPECT_THROW(fit(1, seed), EnsembleSamplingMissedClass);
        } else {
            EXPECT_NO_THROW(fit(1, seed));
            ++numFits;
        }
        EXPECT_THROW(fit(50, seed), EnsembleSamplingMissedClass);
    }
    EXPECT_GT(numFits, 5);
}

TEST(Bagging, AnInfiniteCellIsAnErrorWhateverTheSampleDraws) {
    LabelledTable data = labelledTable(60, 2);
    data.features(17, L"first") = std::numeric_limits<double>::infinity();
    for (int seed = 0; seed < 10; ++seed) {
        Classification::Bagging::Estimator trees, bayes;
        bayes.setBaseEstimator(Classification::NaiveBayes::Estimator());
        for (auto* bagging : {&trees, &bayes})
            EXPECT_THROW(
                bagging->setNumWeakLearners(1).setBootstrapSeed(seed).fit(data.features, data.target),
                ConstraintViolation);
        EXPECT_THROW(Classification::Boosting::Estimator()
                         .setBaseEstimator(Classification::NaiveBayes::Estimator())
                         .setNumWeakLearners(1)
                         .setResamplingSeed(seed)
                         .fit(data.features, data.target),
                     ConstraintViolation);
    }
}

TEST(Bagging, ReportsItselfThenItsLearners) {
    const LabelledTable data = labelledTable(80, 2);
    const DataFrameVector report = Classification::RandomTrees::Estimator()
                                       .setNumWeakLearners(2)
                                       .fit(data.features, data.target)
                                       .toDataFrameVector();
    StringVector names;
    for (const DataFrame& table : report) names.push_back(table.getName());
    EXPECT_EQ(names, (StringVector{L"Model: Random Trees for Classification",
                                   L"Prior Probabilities",
                                   L"Model: Ensemble",
                                   L"Model: Classification Tree: Weak Learner 1",
                                   L"Prior Probabilities: Weak Learner 1",
                                   L"Pruning Log: Weak Learner 1",
                                   L"Feature Importance: Weak Learner 1",
                                   L"All Nodes Info: Weak Learner 1",
                                   L"Training Log: Weak Learner 1",
                                   L"Training Summary: Weak Learner 1",
                                   L"Model: Classification Tree: Weak Learner 2",
                                   L"Prior Probabilities: Weak Learner 2",
                                   L"Pruning Log: Weak Learner 2",
                                   L"Feature Importance: Weak Learner 2",
                                   L"All Nodes Info: Weak Learner 2",
                                   L"Training Log: Weak Learner 2",
                                   L"Training Summary: Weak Learner 2",
                                   L"Features Importance",
                                   L"Out-of-bag Error",
                                   L"Training Summary"}));
    EXPECT_EQ(report.at(L"Model: Ensemble")(L"#Weak Learners", 0).toString(), L"2");
    EXPECT_EQ(report.at(L"Model: Ensemble")(L"Weak learner", 0).toString(), L"decisionTree");
}

TEST(Bagging, LadonHoldsTheWeakLearner) {
    using namespace Classification;
    const auto estimator = Bagging::Estimator().setNumWeakLearners(3).setBaseEstimator(
        NaiveBayes::Estimator().setLaplaceSmoothing(2.0));
    const WString text = estimator.toLadon();
    EXPECT_EQ(text,
              L"{\"objectType\":\"estimator\",\"type\":\"classification\",\"algorithm\":\"bagging\","
              L"\"parameters\":{\"numWeakLearners\":3},\"weakLearner\":{\"objectType\":\"estimator\","
              L"\"type\":\"classification\",\"algorithm\":\"naiveBayes\",\"parameters\":"
              L"{\"laplaceSmoothing\":2}}}");
    Bagging::Estimator read;
    read.fromLadonString(text);
    EXPECT_EQ(read.toLadon(), text);
    const LabelledTable data = labelledTable(60, 2);
    EXPECT_EQ(read.fit(data.features, data.target).getWeakLearnerAlgorithm(), L"naiveBayes");

    const auto replaced = [&](const WString& from, const WString& to) {
        WString changed = text;
        return changed.replace(changed.find(from), from.size(), to);
    };
    for (const wchar_t* const unknown : {L"linearRegression", L"nobody", L"bagging"})
        EXPECT_THROW(read.fromLadonString(replaced(L"naiveBayes", unknown)), UnableToCreateWeakLearner);
    EXPECT_THROW(read.fromLadonString(replaced(L"\"algorithm\":\"naiveBayes\",", L"")), UnsupportedJSONModel);
    EXPECT_THROW(read.fromLadonString(replaced(L"{\"laplaceSmoothing\":2}", L"3")), UnsupportedJSONModel);
    EXPECT_EQ(read.toLadon(), text);
    read.reset();
    EXPECT_EQ(read.toLadon(), Bagging::Estimator().toLadon());
    EXPECT_EQ(RandomTrees::Estimator().toLadon().find(L"weakLearner"), WString::npos);
}

TEST(Bagging, RefusesWhatItsLearnerRefuses) {
    using namespace Classification;
    const LabelledTable data = labelledTable(60, 2);
    EXPECT_THROW(Bagging::Estimator().setNumWeakLearners(0).validate(), ValueOutOfRange);
    EXPECT_THROW(Bagging::Estimator()
                     .setBaseEstimator(NaiveBayes::Estimator().setLaplaceSmoothing(-1.0))
                     .fit(data.features, data.target),
                 ValueOutOfRange);
    const auto tooLarge = Bagging::Estimator().setBaseEstimator(
        Classification::DecisionTree::Estimator().setMinNumRecordsInLeaves(61));
    EXPECT_TRUE(tooLarge.isValid());
    EXPECT_FALSE(tooLarge.isValid(data.features, data.target));
    EXPECT_THROW(tooLarge.fit(data.features, data.target), ValueOutOfRange);
    EXPECT_THROW(Bagging::Estimator()
                     .setBaseEstimator(Classification::DecisionTree::Estimator().setSuccessClass(L"none"))
                     .validate(data.features, data.target),
                 InvalidSuccessLabel);
    EXPECT_THROW(RandomTrees::Estimator().setNumSelectedFeatures(4).fit(data.features, data.target),
                 ValueOutOfRange);
    EXPECT_NO_THROW(RandomTrees::Estimator().setBootstrapSeed(-2147483647).fit(data.features, data.target));
    // Priors that are set for the ensemble go to its learners.
    const auto model = Bagging::Estimator()
                           .setPriorProb(L"class 0", 0.25)
                           .setPriorProb(L"class 1", 0.75)
                           .fit(data.features, data.target);
    const auto weak = model.getWeakModel(0);
    EXPECT_EQ(column(weak->priorProbability(), 0), (Vector{0.25, 0.75}));
}

// Scores are made block by block.
TEST(Ensembles, ScoreLongTablesAsTheirParts) {
    constexpr int kNumRows = 2 * 8192 + 1;
    const LabelledTable training = labelledTable(200, 3), numericTraining = numericTable(200);
    const DataFrame table = labelledTable(kNumRows, 3).features;
    IntVector backwards;
    for (int row = kNumRows; row-- > 0;) backwards.push_back(row);
    const auto expectParts = [&](const auto& scoreOf) {
        const int numThreads = omp_get_max_threads();
        for (const DataFrame& whole : {table, table(backwards, Util::all)}) {
            IntVector first, middle;
            for (int row = 0; row < 8000; ++row) first.push_back(row);
            for (int row = 8000; row < 16000; ++row) middle.push_back(row);
            IntVector last;
            for (int row = 16000; row < kNumRows; ++row) last.push_back(row);
            Vector parts;
            for (const IntVector& rows : {first, middle, last}) parts.append(scoreOf(whole(rows, Util::all)));
            for (const int n : {1, 2}) {
                omp_set_num_threads(n);
                EXPECT_EQ(scoreOf(whole), parts) << n << " threads";
            }
            omp_set_num_threads(numThreads);
        }
    };
    const auto bagged = [&](const auto& learner) {
        const auto model =
            Classification::Bagging::Estimator().setBaseEstimator(learner).setNumWeakLearners(5).fit(
                training.features, training.target);
        expectParts([&](const DataFrame& rows) { return column(model.posteriorProbability(rows), 2); });
    };
    bagged(Classification::DecisionTree::Estimator());
    bagged(Classification::NaiveBayes::Estimator());
    const auto boosted = Regression::Boosting::Estimator().setNumWeakLearners(5).fit(numericTraining.features,
                                                                                     numericTraining.target);
    expectParts([&](const DataFrame& rows) { return column(boosted.predict(rows), 0); });
}

}  // namespace
}  // namespace Tessel
