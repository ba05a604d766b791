#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <omp.h>

#include <tessel/boosting.h>
#include <tessel/data/util/random.h>
#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>

#include "supervised/bagging/model.h"
#include "supervised/naive_bayes/model.h"
#include "supervised/tables.h"

namespace Tessel {
namespace {

using Classification::Boosting::MethodType;
using Testing::LabelledTable;
using Testing::labelledTable;
using Testing::numericTable;

Vector column(const DataFrame& table, int position) { return table(Util::all, position).toDoubleVector(); }

/// Classes that no learner tells apart without error.
LabelledTable checkedTable(int numRows, int numClasses) {
    LabelledTable data = labelledTable(numRows, numClasses);
    // No categories: which of two equally good subsets is taken depends on their order of appearance.
    data.features = data.features(Util::all, StringVector{L"first", L"second"});
    for (int row = 3; row < numRows; row += 10)
        data.target(row) = L"class " + std::to_wstring((row + 1) % numClasses);
    return data;
}

/// AdaBoost step by step with learners fitted on tables of their own, up to the round that fails.
template <class Learner>
void expectSteps(const Learner& learner, const LabelledTable& data, MethodType method, int numClasses) {
    const int n = data.target.getNumRows();
    Vector weights(static_cast<std::size_t>(n), 1.0 / n), alphas;
    std::vector<DataFrame> predictions;
    bool hasFailed = false;
    while (alphas.size() < 6) {
        const IntVector rows = Util::sample(weights, 7);
        const auto weak = learner.fit(data.features(rows, Util::all), data.target.select(rows));
        predictions.push_back(weak.predict(data.features));
        const auto isMissed = [&](int row) {
            return predictions.back()(row, 0).toString() != data.target(row).toString();
        };
        double error = 0.0, sum = 0.0;
        for (int row = 0; row < n; ++row)
            if (isMissed(row)) error += weights[static_cast<std::size_t>(row)];
        hasFailed = error >= 0.5;
        if (hasFailed) break;
        const double a = std::log(1.0 / error - 1.0);
        alphas.push_back(method == MethodType::M1_FREUND    ? 0.5 * a
                         : method == MethodType::M1_BREIMAN ? a
                                                            : a + std::log(numClasses - 1.0));
        for (int row = 0; row < n; ++row)
            if (isMissed(row)) weights[static_cast<std::size_t>(row)] *= std::exp(alphas.back());
        for (const double weight : weights) sum += weight;
        for (double& weight : weights) weight /= sum;
    }
    ASSERT_FALSE(alphas.empty());
    const auto estimator = [&](std::size_t numLearners) {
        return Classification::Boosting::Estimator()
            .setBaseEstimator(learner)
            .setMethod(method)
            .setResamplingSeed(7)
            .setNumWeakLearners(static_cast<int>(numLearners));
    };
    if (hasFailed) {
        EXPECT_THROW(estimator(alphas.size() + 1).fit(data.features, data.target), WorseThanRandomGuess);
    }
    const auto model = estimator(alphas.size()).fit(data.features, data.target);
    double total = 0.0;
    for (const double alpha : alphas) total += alpha;
    // A few rounds of a few hundred additions each, whose errors the logarithm hardly enlarges.
    ASSERT_EQ(model.getLearnerWeights().size(), alphas.size());
    for (std::size_t m = 0; m < alphas.size(); ++m)
        EXPECT_NEAR(model.getLearnerWeights()[m], alphas[m] / total, 1e-12);
    const DataFrame posteriors = model.posteriorProbability(data.features);
    for (int row = 0; row < n; ++row) {
        Vector votes(static_cast<std::size_t>(numClasses), 0.0);
        for (std::size_t m = 0; m < alphas.size(); ++m)
            votes[model.getClasses().find(predictions[m](row, 0).toString())] += alphas[m];
        for (int k = 0; k < numClasses; ++k)
            EXPECT_NEAR(posteriors(row, k).toDouble(), votes[static_cast<std::size_t>(k)] / total, 1e-12);
    }
}

TEST(Boosting, FollowsTheStepsOfAdaBoost) {
    const LabelledTable two = checkedTable(120, 2), three = checkedTable(150, 3);
    for (const MethodType method : {MethodType::M1_BREIMAN, MethodType::M1_FREUND, MethodType::SAMME}) {
        expectSteps(Classification::NaiveBayes::Estimator(), three, method, 3);
        expectSteps(Classification::DecisionTree::Estimator().setMaxNumSplits(6), two, method, 2);
        expectSteps(Classification::DecisionTree::Estimator().setMaxNumLevels(3), three, method, 3);
    }
    EXPECT_EQ(static_cast<int>(MethodType::M1_FREUND), 1);
    EXPECT_EQ(static_cast<int>(MethodType::M1_BREIMAN), 2);
    EXPECT_EQ(static_cast<int>(MethodType::SAMME), 3);
}

TEST(Boosting, ALearnerWithoutErrorIsTheLast) {
    LabelledTable data = labelledTable(60, 2);
    data.features = data.features(Util::all, StringVector{L"first"});
    for (int row = 0; row < 60; ++row) data.features(row, 0) = row % 2 == 0 ? 1.0 : 2.0;
    const auto perfect = Classification::Boosting::Estimator().fit(data.features, data.target);
    EXPECT_EQ(perfect.getNumWeakLearners(), 1);
    EXPECT_EQ(perfect.getLearnerWeights(), (Vector{1.0}));

    // Numbers that one tree of two levels can part, and that resamples leave gaps in: some rounds err before
    // one does not. After it earlier learners weigh nothing.
    bool isFound = false;
    for (int seed = 0; seed < 200 && !isFound; ++seed) {
        DataFrame features;
        Vector x;
        StringVector labels;
        for (int row = 0; row < 24; ++row) {
            x.push_back(row);
            labels.push_back(row < 11 ? L"a" : L"b");
        }
        features.append(DataFrameColumn(L"x", x));
        const auto model =
            Classification::Boosting::Estimator().setResamplingSeed(seed).setNumWeakLearners(50).fit(
                features, DataFrameColumn(L"y", labels));
        const int numLearners = model.getNumWeakLearners();
        if (numLearners == 1 || numLearners == 50) continue;
        isFound = true;
        EXPECT_EQ(model.getLearnerWeights().back(), 1.0);
        for (int m = 0; m + 1 < numLearners; ++m)
            EXPECT_LT(model.getLearnerWeights()[static_cast<std::size_t>(m)], 1e-300);
        EXPECT_EQ(column(model.posteriorProbability(features), 0)[10], 1.0);
    }
    EXPECT_TRUE(isFound);
}

TEST(Boosting, RoundsThatFailLeaveNoModel) {
    const LabelledTable data = labelledTable(60, 2);  // 30 rows of each class
    const auto guess = Classification::DecisionTree::Estimator().setMaxNumSplits(0);
    // One class for all rows: half of the weight exactly.
    EXPECT_THROW(
        Classification::Boosting::Estimator().setBaseEstimator(guess).fit(data.features, data.target),
        WorseThanRandomGuess);
    LabelledTable most = data;
    most.target(1) = WString(L"class 0");  // 31 of 60: better than a guess, but the next round is not
    const auto estimator = [&](int numLearners) {
        return Classification::Boosting::Estimator().setBaseEstimator(guess).setNumWeakLearners(numLearners);
    };
    const auto model = estimator(1).fit(most.features, most.target);
    EXPECT_EQ(model.getLearnerWeights(), (Vector{1.0}));
    EXPECT_THROW(estimator(10).fit(most.features, most.target), WorseThanRandomGuess);

    LabelledTable rare = labelledTable(40, 2);
    for (int row = 1; row < 40; ++row) rare.target(row) = WString(L"class 1");
    int numMissed = 0;
    for (int seed = 0; seed < 20; ++seed) {
        const IntVector rows = Util::sample(Vector(40, 1.0 / 40), seed);
        if (std::find(rows.begin(), rows.end(), 0) != rows.end()) continue;
        ++numMissed;
        EXPECT_THROW(
            Classification::Boosting::Estimator().setResamplingSeed(seed).fit(rare.features, rare.target),
            EnsembleSamplingMissedClass);
    }
    EXPECT_GT(numMissed, 0);
    auto unknown = Classification::Boosting::Estimator().setMethod(static_cast<MethodType>(4));
    EXPECT_THROW(unknown.fit(data.features, data.target), ConstraintViolation);
}

TEST(Boosting, RegressionFitsTheResiduals) {
    const LabelledTable data = numericTable(200);
    const auto tree = Regression::DecisionTree::Estimator().setMaxNumLevels(2);
    const auto model =
        Regression::Boosting::Estimator().setBaseEstimator(tree).setStepSize(0.25).setNumWeakLearners(8).fit(
            data.features, data.target);
    const Vector target = data.target.toDoubleVector();
    double mean = 0.0;
    for (const double value : target) mean += value / 200.0;
    Vector residuals = target, sum(200, 0.0);
    for (double& residual : residuals) residual -= mean;
    for (int m = 0; m < 8; ++m) {
        const Vector own =
            column(tree.fit(data.features, DataFrameColumn(L"y", residuals)).predict(data.features), 0);
        for (std::size_t row = 0; row < 200; ++row) {
            residuals[row] -= 0.25 * own[row];
            sum[row] += own[row];
        }
    }
    EXPECT_NEAR(model.getMeanResponse(), mean, 1e-13);
    EXPECT_EQ(model.getStepSize(), 0.25);
    const DataFrame predicted = model.predict(data.features);
    EXPECT_EQ(predicted.getColName(0), L"Prediction: y");
    for (std::size_t row = 0; row < 200; ++row) {
        EXPECT_NEAR(column(predicted, 0)[row], mean + 0.25 * sum[row], 1e-12);
        EXPECT_NEAR(target[row] - column(predicted, 0)[row], residuals[row], 1e-12);
    }
    // No step at all predicts the mean; a constant target is predicted as it is.
    const auto still = Regression::Boosting::Estimator().setStepSize(0.0).fit(data.features, data.target);
    EXPECT_EQ(column(still.predict(data.features), 0), Vector(200, still.getMeanResponse()));
    const auto constant =
        Regression::Boosting::Estimator().fit(data.features, DataFrameColumn(L"y", Vector(200, 0.1)));
    EXPECT_EQ(column(constant.predict(data.features), 0), Vector(200, 0.1));
    for (const double bad : {-0.1, 1e300, std::nan("")})
        EXPECT_THROW(Regression::Boosting::Estimator().setStepSize(bad).validate(), ValueOutOfRange);
}

// The rows are more than a stretch, so that threads share them.
TEST(Boosting, TheNumberOfThreadsChangesNothing) {
    const LabelledTable data = checkedTable(7001, 3), numbers = numericTable(7001);
    const auto tree = Classification::DecisionTree::Estimator().setMaxNumLevels(3);
    const auto shallow = Regression::DecisionTree::Estimator().setMaxNumLevels(5);
    const int before = omp_get_max_threads();
    std::vector<WString> models;
    for (const int numThreads : {1, 2, 5}) {
        omp_set_num_threads(numThreads);
        models.push_back(Classification::Boosting::Estimator()
                             .setBaseEstimator(tree)
                             .setNumWeakLearners(6)
                             .fit(data.features, data.target)
                             .toJSON() +
                         Regression::Boosting::Estimator()
                             .setBaseEstimator(shallow)
                             .setNumWeakLearners(6)
                             .fit(numbers.features, numbers.target)
                             .toJSON());
    }
    omp_set_num_threads(before);
    EXPECT_EQ(models[1], models[0]);
    EXPECT_EQ(models[2], models[0]);
}

/// Long tables, whose resamples are sorted anew, are sorted once where each round takes all of their rows.
TEST(Boosting, TreesOfLongTablesAreThoseOfTheResiduals) {
    constexpr int kNumRows = (1 << 18) + 1;
    Testing::Noise uniform(5);
    Vector first, second, residuals;
    for (int row = 0; row < kNumRows; ++row) {
        first.push_back(uniform());
        second.push_back(row % 17 == 3 ? std::nan("") : uniform());
        residuals.push_back(first.back() * first.back() + (row % 17 == 3 ? 0.5 : second.back()) +
                            0.1 * uniform());
    }
    DataFrame features;
    features.append(DataFrameColumn(L"first", first));
    features.append(DataFrameColumn(L"second", second));
    const auto tree = Regression::DecisionTree::Estimator().setMaxNumLevels(2);
    const auto model = Regression::Boosting::Estimator().setBaseEstimator(tree).setNumWeakLearners(2).fit(
        features, DataFrameColumn(L"y", residuals));
    for (double& residual : residuals) residual -= model.getMeanResponse();
    for (int m = 0; m < 2; ++m) {
        const Vector own = column(tree.fit(features, DataFrameColumn(L"y", residuals)).predict(features), 0);
        EXPECT_TRUE(column(model.getWeakModel(m)->predict(features), 0) == own);
        for (std::size_t row = 0; row < own.size(); ++row) residuals[row] -= 0.3 * own[row];
    }
    features(kNumRows - 1, 0) = std::numeric_limits<double>::infinity();
    EXPECT_THROW(Regression::Boosting::Estimator().fit(features, DataFrameColumn(L"y", residuals)),
                 ConstraintViolation);
}

TEST(Boosting, TablesAndTextsHoldItsParameters) {
    const LabelledTable data = labelledTable(60, 2);
    auto estimator = Classification::Boosting::Estimator()
                         .setMethod(MethodType::SAMME)
                         .setResamplingSeed(3)
                         .setBaseEstimator(Classification::NaiveBayes::Estimator());
    const DataFrame table = estimator.toDataFrame();
    EXPECT_EQ(table.getName(), L"Estimator: Boosting for Classification");
    EXPECT_EQ(table(L"AdaBoost Variant", 0).toString(), L"SAMME");
    EXPECT_EQ(table(L"Resampling Seed", 0).toString(), L"3");
    EXPECT_EQ(table(L"#Weak Learners", 0).toString(), L"10");
    EXPECT_EQ(table(L"Weak learner", 0).toString(), L"naiveBayes");
    Classification::Boosting::Estimator read;
    read.fromLadonString(estimator.toLadon());
    EXPECT_EQ(read.getMethod(), MethodType::SAMME);
    EXPECT_EQ(read.toLadon(), estimator.toLadon());
    const DataFrameVector report = estimator.fit(data.features, data.target).toDataFrameVector();
    EXPECT_EQ(report[0].getName(), L"Model: Boosting for Classification");
    EXPECT_EQ(report.at(L"Model: Ensemble")(L"Weak learner", 0).toString(), L"naiveBayes");
    EXPECT_TRUE(report.exists(L"Normal Density: first: Weak Learner 1"));

    const auto regression = Regression::Boosting::Estimator().setStepSize(0.5).setNumWeakLearners(2);
    EXPECT_EQ(regression.toDataFrame().getName(), L"Estimator: Boosting for Regression");
    EXPECT_EQ(regression.toLadon(),
              L"{\"objectType\":\"estimator\",\"type\":\"regression\",\"algorithm\":\"boosting\","
              L"\"parameters\":{\"numWeakLearners\":2,\"stepSize\":0.5},\"weakLearner\":"
              L"{\"objectType\":\"estimator\",\"type\":\"regression\",\"algorithm\":\"decisionTree\","
              L"\"parameters\":{}}}");
    const LabelledTable numbers = numericTable(60);
    const DataFrameVector tables = regression.fit(numbers.features, numbers.target).toDataFrameVector();
    EXPECT_EQ(tables[0].getName(), L"Model: Boosting for Regression");
    EXPECT_EQ(tables[0](L"Step size", 0).toString(), L"0.5");
    EXPECT_TRUE(tables.exists(L"All Nodes Info: Weak Learner 2"));
}

// A learner that knows other labels than the ensemble, as models from texts may.
class Stranger : public Classification::NaiveBayes::IModel {
 public:
    Stranger(StringVector labels, std::int32_t code) : code_(code) {
        classSchema.classes = std::move(labels);
    }
    void classify(const std::vector<FeatureColumn>&, std::vector<std::int32_t>& codes) const override {
        std::fill(codes.begin(), codes.end(), code_);
    }

 private:
    std::int32_t code_;
};

TEST(Ensemble, VotesForUnknownLabelsAreDrawnAndCountLikeOthers) {
    Classification::Bagging::IModel ensemble;
    ensemble.setClassSchema({{L"a", L"b"}, {0.5, 0.5}, {}, L"b", 0.5});
    ensemble.add(std::make_shared<Stranger>(StringVector{L"b", L"a"}, 0), 3.0);  // b
    ensemble.add(std::make_shared<Stranger>(StringVector{L"x", L"a"}, 1), 2.0);  // a
    ensemble.add(std::make_shared<Stranger>(StringVector{L"x", L"a"}, 0), 1.0);  // unknown
    DataFrame table;
    table.append(DataFrameColumn(L"any", Vector(2000, 1.0)));
    const DataFrame posteriors = ensemble.posteriorProbability(table);
    EXPECT_EQ(posteriors.getName(), L"Posterior Probabilities");
    EXPECT_EQ(posteriors.getColNames(), (StringVector{L"a", L"b"}));
    int numForA = 0;
    for (int row = 0; row < 2000; ++row) {
        const bool isForA = posteriors(row, 0).toDouble() == 0.5;
        EXPECT_EQ(posteriors(row, 0).toDouble(), isForA ? 0.5 : 2.0 / 6.0);
        EXPECT_EQ(posteriors(row, 1).toDouble(), isForA ? 0.5 : 4.0 / 6.0);
        numForA += isForA;
    }
    EXPECT_NEAR(numForA, 1000, 112);  // five standard deviations
    EXPECT_EQ(ensemble.posteriorProbability(table).toJson(), posteriors.toJson());
    // The success class b is predicted even where its posterior is the cut-off exactly.
    const DataFrame predicted = ensemble.predict(table);
    for (int row = 0; row < 2000; ++row) EXPECT_EQ(predicted(row, 0).toString(), L"b");
    ensemble.weights = Vector(3, 0.0);
    EXPECT_EQ(column(ensemble.posteriorProbability(table), 0), Vector(2000, 0.0));
}

}  // namespace
}  // namespace Tessel
