#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "evaluator/samples.h"

namespace Tessel {
namespace {

using namespace Metrics;
using namespace Samples;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Both sides round some twenty operations.
void expectClose(double value, double expected, const char* what) {
    EXPECT_NEAR(value, expected, 1e-14 * std::abs(expected)) << what;
}

TEST(ClassificationMetrics, AgreeWithScikitLearn) {
    DataFrame posteriors;  // the first two rows are certain and undecided
    Vector columns[3];
    for (std::size_t row = 0; row < scores.size(); ++row) {
        const double p = row == 0 ? 1.0 : row == 1 ? 0.0 : scores[row];
        columns[0].push_back(p);
        columns[1].push_back((1.0 - p) * (row == 1 ? 0.5 : 0.75));
        columns[2].push_back((1.0 - p) * (row == 1 ? 0.5 : 0.25));
    }
    posteriors.append(DataFrameColumn(L"Posterior Probability: a", columns[0]));
    posteriors.append(DataFrameColumn(L"c", columns[2]));
    posteriors.append(DataFrameColumn(L"Posterior Probability: b", columns[1]));

    struct Case {
        Vector weights;
        double accuracy, specificity, sensitivity, precision, F1, AUC, binaryLoss, loss;
    };
    const Case cases[] = {
        {{},
         0.75,
         0.9230769230769231,
         0.7142857142857143,
         0.8333333333333334,
         0.7692307692307692,
         0.9120879120879121,
         0.4433935158366548,
         2.711070656610004},
        {weights, 0.732142857142857, 0.9312714776632303, 0.6178343949044586, 0.829059829059829,
         0.708029197080292, 0.8918729616739992, 0.43339076154182066, 4.156546580046887}};
    for (const Case& c : cases) {
        expectClose(accuracy(actual, predicted, c.weights), c.accuracy, "accuracy");
        expectClose(error(actual, predicted, c.weights), 1.0 - c.accuracy, "error");
        expectClose(specificity(actual, predicted, L"a", c.weights), c.specificity, "specificity");
        expectClose(sensitivity(actual, predicted, L"a", c.weights), c.sensitivity, "sensitivity");
        expectClose(precision(actual, predicted, L"a", c.weights), c.precision, "precision");
        expectClose(F1(actual, predicted, L"a", c.weights), c.F1, "F1");
        expectClose(AUC(actual, scores, L"a", c.weights), c.AUC, "AUC");
        expectClose(logLoss(actual, scores, L"a", c.weights), c.binaryLoss, "binary log loss");
        expectClose(logLoss(actual, posteriors, c.weights), c.loss, "log loss");
    }
}

TEST(ClassificationMetrics, CompareLabelsAsTextsWhateverTheColumn) {
    const DataFrameColumn numbers(L"y", Vector{1, 0, -0.0, 2.5, kNaN});
    EXPECT_EQ(accuracy(numbers, StringVector{L"1", L"0", L"0", L"2.5", L"1"}), 1.0);
    // A selection keeps a dictionary with texts that it does not show.
    const DataFrameColumn texts(L"y", actual);
    EXPECT_EQ(accuracy(texts.select({9, 2, 4}), letters(L"aba")), 2.0 / 3.0);
    EXPECT_EQ(sensitivity(texts.select({9, 2, 4}), letters(L"aba"), L"c"), 0.0);
}

TEST(ClassificationMetrics, LeaveOutMissingRowsAndRowsWithoutWeight) {
    EXPECT_EQ(accuracy(letters(L"ab ab"), letters(L"aaaa "), {}), 2.0 / 3.0);
    EXPECT_EQ(accuracy(letters(L"abab"), letters(L"aabb"), {1, 0, 0, 3}), 1.0);
    EXPECT_EQ(AUC(letters(L"ab ab"), Vector{2, 1, 9, kNaN, -kInfinity}, L"a"), 1.0);
    EXPECT_EQ(logLoss(letters(L"ab "), Vector{0.5, kNaN, 0.1}, L"a"), std::log(2.0));
}

TEST(ClassificationMetrics, UndefinedRatiosAreNaN) {
    const StringVector as = letters(L"aa"), bs = letters(L"bb"), both = letters(L"ab");
    EXPECT_TRUE(std::isnan(precision(both, bs, L"a")));
    EXPECT_EQ(F1(both, bs, L"a"), 0.0);
    EXPECT_TRUE(std::isnan(F1(bs, bs, L"a")));
    EXPECT_TRUE(std::isnan(sensitivity(bs, both, L"a")));
    EXPECT_TRUE(std::isnan(specificity(as, both, L"a")));
    EXPECT_TRUE(std::isnan(AUC(as, Vector{1, 2}, L"a")));
    EXPECT_TRUE(std::isnan(AUC(bs, Vector{1, 2}, L"no such class")));
}

TEST(AUC, IsTheShareOfPairsInOrder) {
    // Signs, zeros of both signs, denormal and huge scores, all in one ranking.
    const Vector ranked{-kInfinity, -1e300, -2.0, -0.0, 0.0, 5e-324, 1.0, 1.0, 1e300, kInfinity};
    const StringVector labels = letters(L"nnpnppnpnp");
    const Vector w{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    double inOrder = 0.0, pairs = 0.0;
    for (std::size_t i = 0; i < ranked.size(); ++i)
        for (std::size_t j = 0; j < ranked.size(); ++j) {
            if (labels[i] != L"p" || labels[j] != L"n") continue;
            pairs += w[i] * w[j];
            inOrder += w[i] * w[j] * (ranked[i] > ranked[j] ? 1.0 : ranked[i] == ranked[j] ? 0.5 : 0.0);
        }
    expectClose(AUC(labels, ranked, L"p", w), inOrder / pairs, "AUC");
    EXPECT_EQ(AUC(labels, Vector(10, 3.0), L"p", w), 0.5);
}

TEST(RegressionMetrics, AgreeWithScikitLearn) {
    const Vector a{3, -0.5, 2, 7, 4.25, 1e-3, 12, -8}, p{2.5, 0, 2, 8, 4.5, 2e-3, 10, -9.5};
    struct Case {
        Vector weights;
        double totalWeight, MSE, RMSE, MAD, R2, MAPE;
    };
    const Case cases[] = {
        {{}, 8.0, 0.976562625, 0.9882118320481698, 0.7188749999999999, 0.967386728763176, 0.3403142507002801},
        {{1, 2, .5, 0, 3, .25, 1, 1},
         8.75,
         0.8214286000000001,
         0.9063269829371737,
         0.6571714285714286,
         0.9686283040456014,
         0.3368347338935574}};
    for (const Case& c : cases) {
        expectClose(SSE(a, p, c.weights), c.MSE * c.totalWeight, "SSE");
        expectClose(MSE(a, p, c.weights), c.MSE, "MSE");
        expectClose(RMSE(a, p, c.weights), c.RMSE, "RMSE");
        expectClose(MAD(a, p, c.weights), c.MAD, "MAD");
        expectClose(R2(a, p, c.weights), c.R2, "R2");
        expectClose(MAPE(a, p, c.weights), 100.0 * c.MAPE, "MAPE");
    }
}

TEST(RegressionMetrics, EdgesAreDefined) {
    // The sum of 1003 times 0.1 is not 1003 times 0.1 in doubles.
    EXPECT_TRUE(std::isnan(R2(Vector(1003, 0.1), Vector(1003, 0.2))));
    EXPECT_EQ(R2(Vector{1, 2, 3}, Vector{1, 2, 3}), 1.0);
    EXPECT_EQ(MAPE(Vector{0, 2, 4}, Vector{1, 3, 5}), 37.5);
    EXPECT_TRUE(std::isnan(MAPE(Vector{0, 0}, Vector{1, 3})));
    EXPECT_EQ(MSE(Vector{1, kNaN, 5}, Vector{2, 3, kNaN}), 1.0);
    EXPECT_EQ(SSE(Vector{1, kInfinity}, Vector{2, 0}), kInfinity);
    EXPECT_EQ(SSE(Vector{1, kInfinity}, Vector{2, 0}, {1, 0}), 1.0);
}

TEST(RegressionMetrics, KeepTheirDigitsOverAMillionRows) {
    const std::size_t n = 1'000'003;
    // 0.1^2 as a double, n times: a plain loop is off by more than 1e-12.
    const double expected = static_cast<double>(n) * (0.1 * 0.1);
    EXPECT_NEAR(SSE(Vector(n, 0.1), Vector(n, 0.0)), expected, 2e-15 * expected);
}

TEST(Metrics, RejectBadInput) {
    const Vector two{1, 2}, three{1, 2, 3};
    const StringVector labels = letters(L"ab");
    EXPECT_THROW(accuracy(letters(L"abc"), labels), NumRowsMismatch);
    EXPECT_THROW(AUC(labels, three, L"a"), NumRowsMismatch);
    EXPECT_THROW(RMSE(two, three), NumRowsMismatch);
    EXPECT_THROW(RMSE(two, two, three), NumElementsMismatch);
    EXPECT_THROW(accuracy(labels, labels, three), NumElementsMismatch);
    for (const Vector& bad : {Vector{1, -1}, Vector{1, kNaN}, Vector{kInfinity, 1}, Vector{0, 0}}) {
        EXPECT_THROW(accuracy(labels, labels, bad), ConstraintViolation);
        EXPECT_THROW(AUC(labels, two, L"a", bad), ConstraintViolation);
        EXPECT_THROW(MAD(two, two, bad), ConstraintViolation);
    }
    EXPECT_THROW(F1(labels, labels, L""), UnspecifiedStringParameter);
    EXPECT_THROW(MSE(DataFrameColumn(L"y", labels), two), NonNumericData);

    const std::function<double()> withoutRows[] = {
        [] { return accuracy(StringVector(), StringVector()); },
        [] { return precision(letters(L" a"), letters(L"a "), L"a"); },
        [] { return AUC(letters(L"a"), Vector{kNaN}, L"a"); },
        [] { return logLoss(letters(L" "), Vector{0.5}, L"a"); },
        [] { return R2(Vector(), Vector()); },
        [] {
            return MAD(Vector{1, kNaN}, Vector{1, 1}, {0, 1});
        }};
    for (const auto& metric : withoutRows) EXPECT_THROW(metric(), TooFewNumRows);
}

TEST(LogLoss, ChecksTheTableOfPosteriors) {
    const auto table = [](const WString& first, const WString& second, double probability) {
        DataFrame posteriors;
        posteriors.append(DataFrameColumn(first, Vector{probability}));
        posteriors.append(DataFrameColumn(second, Vector{1.0 - probability}));
        return posteriors;
    };
    const StringVector label = letters(L"a");
    EXPECT_NEAR(logLoss(label, table(L"a", L"b", 0.0)), 52 * std::log(2.0), 1e-12);
    DataFrame halved;  // a row that adds up to 1/2 is scaled to 1
    halved.append(DataFrameColumn(L"a", Vector{0.125}));
    halved.append(DataFrameColumn(L"b", Vector{0.375}));
    EXPECT_NEAR(logLoss(label, halved), std::log(4.0), 1e-15);
    EXPECT_THROW(logLoss(label, table(L"b", L"c", 0.5)), NotAValidColName);
    EXPECT_THROW(logLoss(label, table(L"a", L"Posterior Probability: a", 0.5)), DuplicateName);
    EXPECT_THROW(logLoss(label, table(L"a", L"b", 1.5)), ValueOutOfRange);
    EXPECT_THROW(logLoss(label, Vector{-0.5}, L"a"), ValueOutOfRange);
    EXPECT_THROW(logLoss(label, DataFrame()), TooFewNumColumns);
    EXPECT_THROW(logLoss(letters(L"aa"), table(L"a", L"b", 0.5)), NumRowsMismatch);
}

}  // namespace
}  // namespace Tessel
