#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <tessel/data/matrix.h>
#include <tessel/evaluator/evaluator.h>

#include "evaluator/samples.h"

namespace Tessel {
namespace {

using namespace Samples;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Vector column(const DataFrame& table, const WString& name) { return table(Util::all, name).toDoubleVector(); }

void expectNear(const Vector& values, const std::vector<double>& expected, const char* what) {
    ASSERT_EQ(values.size(), expected.size()) << what;
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(values[i], expected[i], 1e-14 * (1.0 + std::abs(expected[i]))) << what << ", row " << i;
}

TEST(Confusion, CountsActualByPredicted) {
    struct Case {
        StringVector classes;
        Vector weights;
        std::vector<std::vector<double>> columns;
    };
    const Case cases[] = {
        // scikit-learn's confusion_matrix, column by column
        {{L"a", L"b", L"c"}, {}, {{5, 0, 1}, {1, 6, 1}, {1, 1, 4}}},
        {{L"a", L"b", L"c"}, weights, {{4.85, 0, 1}, {2, 5.3, 1}, {1, 1, 6.25}}},
        {{L"c", L"a", L"x", L"b"}, {}, {{4, 1, 0, 1}, {1, 5, 0, 0}, {0, 0, 0, 0}, {1, 1, 0, 6}}}};
    for (const Case& c : cases) {
        const DataFrame table = Evaluator::confusion(actual, predicted, c.classes, c.weights);
        EXPECT_EQ(table.getName(), L"Confusion Matrix");
        EXPECT_EQ(table.getColNames(), c.classes);
        EXPECT_EQ(table.getRowNames(), c.classes);
        for (std::size_t k = 0; k < c.columns.size(); ++k)
            expectNear(column(table, c.classes[k]), c.columns[k], "confusion");
    }
    EXPECT_THROW(Evaluator::confusion(actual, predicted, {L"a", L"b"}), NotASetMember);
    EXPECT_THROW(Evaluator::confusion(actual, predicted, {L"a", L"b", L"c", L"a"}), DuplicateName);
    EXPECT_THROW(Evaluator::confusion(actual, predicted, {L"a", L"b", L"c", L""}), ConstraintViolation);
    EXPECT_THROW(Evaluator::confusion(StringVector(), StringVector()), TooFewNumRows);
}

TEST(Confusion, OrdersClassesByValueOrText) {
    const auto order = [](const StringVector& labels) {
        return Evaluator::confusion(labels, labels).getColNames();
    };
    EXPECT_EQ(order({L"10", L"9", L"-1", L"2.5"}), (StringVector{L"-1", L"2.5", L"9", L"10"}));
    EXPECT_EQ(order({L"10", L"9", L"b", L"B"}), (StringVector{L"10", L"9", L"B", L"b"}));
}

TEST(Misclassifications, MarkWrongAndMissingPredictions) {
    EXPECT_EQ(Evaluator::misclassifications(letters(L"ab a "), letters(L"bba  ")),
              (IntVector{1, 0, 0, 1, 0}));
    EXPECT_TRUE(Evaluator::misclassifications(StringVector(), StringVector()).empty());
    EXPECT_THROW(Evaluator::misclassifications(letters(L"a"), letters(L"ab")), NumRowsMismatch);
}

TEST(ClassificationTables, AgreeWithScikitLearn) {
    const DataFrame table = Evaluator::classificationSummary(actual, predicted, weights);
    EXPECT_EQ(table.getRowNames(), (StringVector{L"a", L"b", L"c", L"Overall"}));
    expectNear(column(table, L"# Cases"), {7.85, 6.3, 8.25, 22.4}, "cases");
    expectNear(column(table, L"# Predicted"), {5.85, 8.3, 8.25, 22.4}, "predicted");
    expectNear(column(table, L"# Errors"), {3, 1, 2, 6}, "errors");
    expectNear(column(table, L"% Error"), {300 / 7.85, 100 / 6.3, 200 / 8.25, 600 / 22.4}, "% error");
    // precision_recall_fscore_support by class and with average="macro"
    expectNear(column(table, L"Precision"),
               {0.829059829059829, 0.6385542168674698, 0.7575757575757576, 0.7417299345010188}, "precision");
    expectNear(column(table, L"Sensitivity"),
               {0.6178343949044586, 0.8412698412698413, 0.7575757575757576, 0.7388933312500191},
               "sensitivity");
    expectNear(column(table, L"F1 score"),
               {0.708029197080292, 0.7260273972602739, 0.7575757575757576, 0.7305441173054411}, "F1");

    const DataFrame metrics = Evaluator::classificationMetrics(actual, predicted, L"b");
    EXPECT_EQ(metrics(0, L"Accuracy (#correct)").toDouble(), 15.0);
    EXPECT_EQ(metrics(0, L"Accuracy (%correct)").toDouble(), 75.0);
    for (const wchar_t* name : {L"Precision", L"Sensitivity", L"Specificity", L"F1 score"})
        EXPECT_EQ(metrics(0, name).toDouble(),
                  Evaluator::classificationSummary(actual, predicted)(L"b", name).toDouble());
}

TEST(RocCurve, RunsOverDistinctScoresAndEnclosesTheAUC) {
    const DataFrame plain = Evaluator::rocCurve(actual, scores, L"a");
    // roc_curve(drop_intermediate=False), as counts of 7 positives and 13 negatives
    EXPECT_EQ(column(plain, L"True Positives"), (Vector{0, 1, 3, 4, 5, 5, 6, 6, 7, 7, 7, 7, 7, 7, 7}));
    EXPECT_EQ(column(plain, L"False Positives"), (Vector{0, 0, 0, 1, 1, 2, 2, 3, 6, 8, 9, 10, 11, 12, 13}));
    EXPECT_EQ(column(plain, L"Threshold"), (Vector{std::numeric_limits<double>::infinity(), .95, .9, .8, .7,
                                                   .6, .55, .5, .4, .35, .3, .2, .15, .1, .05}));
    EXPECT_TRUE(plain(0, L"Precision").isMissing());
    EXPECT_EQ(plain(4, L"Accuracy").toDouble(), 17.0 / 20.0);
    EXPECT_EQ(plain(4, L"Predicted Positive Rate").toDouble(), 6.0 / 20.0);  // 5 true, 1 false positive
    EXPECT_DOUBLE_EQ(plain(4, L"Lift").toDouble(), (5.0 / 6.0) / (7.0 / 20.0));
    EXPECT_TRUE(plain(0, L"Lift").isMissing());

    const Vector someWeights[] = {{}, weights};
    for (const Vector& w : someWeights) {
        const DataFrame table = Evaluator::rocCurve(actual, scores, L"a", w);
        const Vector x = column(table, L"False Positive Rate"), y = column(table, L"True Positive Rate");
        double area = 0.0;
        for (std::size_t i = 1; i < x.size(); ++i) area += (x[i] - x[i - 1]) * (y[i] + y[i - 1]) / 2.0;
        EXPECT_NEAR(area, Metrics::AUC(actual, scores, L"a", w), 1e-14);
        EXPECT_EQ(x.back(), 1.0);
        EXPECT_EQ(y.back(), 1.0);
    }
}

TEST(Gains, SplitRowsAtTheBordersOfDeciles) {
    // Three rows, worked by hand: a decile is 0.3 of a row; the fourth and seventh span two rows.
    const DataFrame few = Evaluator::gains(letters(L"ynn"), Vector{.9, .1, .5}, L"y");
    expectNear(column(few, L"Response"), {.3, .3, .3, .1, 0, 0, 0, 0, 0, 0}, "three rows");
    expectNear(column(few, L"Cumulative Lift"), {3, 3, 3, 2.5, 2, 10. / 6, 10. / 7, 10. / 8, 10. / 9, 1},
               "lift");
    EXPECT_EQ(few.getRowName(9), L"Decile 10");

    // Equal scores share the mean response: every decile looks like the whole, in any order of the rows.
    const DataFrame tied = Evaluator::gains(letters(L"yynnn"), Vector(5, .5), L"y");
    expectNear(column(tied, L"Mean Response"), std::vector<double>(10, .4), "ties");
    expectNear(column(tied, L"Lift"), std::vector<double>(10, 1), "ties");

    // A weight stands for so many rows.
    const DataFrame weighted = Evaluator::gains(letters(L"yny"), Vector{3, 2, 1}, L"y", {2, 5, 3});
    expectNear(column(weighted, L"Response"), {1, 1, 0, 0, 0, 0, 0, 1, 1, 1}, "weights");
    expectNear(column(weighted, L"Cumulative Gain (%)"), {20, 40, 40, 40, 40, 40, 40, 60, 80, 100}, "gain");

    const DataFrame values = Evaluator::gains(Vector{4, 8, -2, kNaN}, Vector{2, 3, 1, 9});
    expectNear(column(values, L"Mean Response"), {8, 8, 8, 16. / 3, 4, 4, 2, -2, -2, -2}, "numeric");

    const DataFrame sample = Evaluator::gains(actual, scores, L"a", weights);
    EXPECT_NEAR(sample(9, L"Cumulative Response").toDouble(), 7.85, 1e-14);
    EXPECT_EQ(sample(9, L"Cumulative Gain (%)").toDouble(), 100.0);
    EXPECT_TRUE(Evaluator::gains(letters(L"nn"), Vector{1, 2}, L"y")(9, L"Cumulative Gain (%)").isMissing());
    EXPECT_THROW(Evaluator::gains(Vector(), Vector()), TooFewNumRows);
}

TEST(RegressionTables, ShowMetricsAndResiduals) {
    DataFrameColumn a(L"price", Vector{1, 5, kNaN, 2});
    a.setRowNames({L"p", L"q", L"r", L"s"});
    const DataFrameColumn p(L"forecast", Vector{2, 3, 4, 4});
    const DataFrame metrics = Evaluator::regressionMetrics(a, p);  // errors -1, 2, -2
    expectNear(Matrix(metrics).getRow(0),
               {9, 3, std::sqrt(3.), 5. / 3, 1 - 9 / (26. / 3), 100 * (1 + .4 + 1) / 3},
               "SSE, MSE, RMSE, MAD, R2, MAPE");

    const DataFrame table = Evaluator::regressionResiduals(a, p, true);
    EXPECT_EQ(table.getColNames(),
              (StringVector{L"Actual", L"Predicted", L"Residual", L"Standardized Residual"}));
    EXPECT_EQ(table(L"q", L"Residual").toDouble(), 2.0);
    EXPECT_NEAR(table(L"s", L"Standardized Residual").toDouble(), -2.0 / std::sqrt(3.0), 1e-15);
    EXPECT_TRUE(table(L"r", L"Residual").isMissing());
    EXPECT_EQ(Evaluator::regressionResiduals(a, p).getNumCols(), 3);
    EXPECT_THROW(Evaluator::regressionResiduals(a, DataFrameColumn()), NumRowsMismatch);
}

}  // namespace
}  // namespace Tessel
