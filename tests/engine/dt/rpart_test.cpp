#include <gtest/gtest.h>

#include "engine/dt/reference_tables.h"
#include "engine/dt/tree_table.h"

// Trees of R's rpart 4.1.19, rpart(cp = -1, minbucket = m, minsplit = 2 m, maxsurrogate = 0, xval = 0). Sides
// are as here: numbers up to the threshold left.

namespace {

using namespace Tessel;
using namespace Tessel::Testing;

struct ExpectedNode {
    std::int64_t numRecords;
    double deviance, response;
    int feature;  // -1 in a leaf
    double threshold;
    std::vector<std::int32_t> left;  // categories
};

/// Nodes level by level.
void expectTree(const DT::Tree& tree, const std::vector<ExpectedNode>& expected) {
    ASSERT_EQ(tree.nodes.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        const DT::Node& node = tree.nodes[i];
        EXPECT_EQ(node.numRecords, expected[i].numRecords);
        EXPECT_NEAR(node.error, expected[i].deviance, 1e-11 * (1.0 + expected[i].deviance));
        EXPECT_NEAR(node.response, expected[i].response, 1e-12 * (1.0 + expected[i].response));
        ASSERT_EQ(node.feature, expected[i].feature);
        if (node.isLeaf()) continue;
        ASSERT_EQ(node.categorySet >= 0, !expected[i].left.empty());
        if (node.categorySet < 0)
            EXPECT_DOUBLE_EQ(node.threshold, expected[i].threshold);
        else
            EXPECT_EQ(tree.categorySets[static_cast<std::size_t>(node.categorySet)], expected[i].left);
    }
}

struct ExpectedStep {
    double cp;  // complexity / error of the root
    int numSplits;
    double relativeError;
};

/// rpart's cp table from its end: the whole tree first.
void expectSteps(const DT::Tree& tree, const std::vector<ExpectedStep>& expected) {
    const auto& steps = DT::pruningSequence(tree).steps;
    ASSERT_EQ(steps.size(), expected.size());
    const double root = tree.nodes[0].error / tree.nodes[0].weight;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        EXPECT_NEAR(steps[i].complexity / root, expected[i].cp, 1e-12);
        EXPECT_EQ(steps[i].numDecisionNodes, expected[i].numSplits);
        EXPECT_NEAR(steps[i].trainingError / root, expected[i].relativeError, 1e-12);
    }
}

TEST(TreesOfRpart, Kyphosis) {
    TreeTable table;
    for (const auto* numbers : {&kKyphosisAge, &kKyphosisNumber, &kKyphosisStart}) table.addNumbers(*numbers);
    DT::Limits limits;
    limits.minNumRecordsInLeaves = 5;
    DT::ClassificationModel model = classifier(2, limits);
    model.fit(table.data(), kKyphosisClass);
    // Node 1 could as well be split by Start: a tie, and the first feature counts there and here.
    expectTree(model.tree(), {{81, 17, 0, 2, 8.5, {}},
                              {19, 8, 1, 0, 93, {}},
                              {62, 6, 0, 2, 14.5, {}},
                              {10, 4, 0, -1, 0, {}},
                              {9, 2, 1, -1, 0, {}},
                              {33, 6, 0, 0, 55, {}},
                              {29, 0, 0, -1, 0, {}},
                              {12, 0, 0, -1, 0, {}},
                              {21, 6, 0, 0, 98, {}},
                              {5, 1, 1, -1, 0, {}},
                              {16, 2, 0, 1, 3.5, {}},
                              {8, 2, 0, -1, 0, {}},
                              {8, 0, 0, -1, 0, {}}});
    expectSteps(model.tree(), {{0, 6, 0.529411764705882},
                               {0, 5, 0.529411764705882},
                               {0.0588235294117647, 2, 0.705882352941176},
                               {0.117647058823529, 1, 0.823529411764706},
                               {0.176470588235294, 0, 1}});
    const std::vector<double> importance = model.featureImportance();
    EXPECT_NEAR(importance[0], 6.07022860180755, 1e-12);
    EXPECT_NEAR(importance[1], 0.5, 1e-12);
    EXPECT_NEAR(importance[2], 7.78285781794554, 1e-12);
}

TEST(TreesOfRpart, KyphosisWithEqualPriors) {
    TreeTable table;
    for (const auto* numbers : {&kKyphosisAge, &kKyphosisNumber, &kKyphosisStart}) table.addNumbers(*numbers);
    DT::Limits limits;
    limits.minNumRecordsInLeaves = 8;
    DT::ClassificationModel model = classifier(2, limits);
    model.setPrior({3.0, 3.0});
    model.fit(table.data(), kKyphosisClass);
    // parms = list(prior = c(.5, .5))
    expectTree(model.tree(), {{81, 40.5, 0, 2, 12.5, {}},
                              {35, 12.65625, 1, 0, 34.5, {}},
                              {46, 4.7647058823529411, 0, 2, 14.5, {}},
                              {10, 2.3823529411764706, 0, -1, 0, {}},
                              {25, 6.9609375, 1, 1, 4.5, {}},
                              {17, 4.7647058823529411, 0, 0, 111, {}},
                              {29, 0, 0, -1, 0, {}},
                              {12, 4.4296875, 1, -1, 0, {}},
                              {13, 2.53125, 1, -1, 0, {}},
                              {8, 2.3823529411764706, 0, -1, 0, {}},
                              {9, 2.3823529411764706, 0, -1, 0, {}}});
    const double gains[] = {13.6707060063224155, 3.81485514753318888, 1.79233878178761685};
    const double posteriors[] = {0.5, 0.738461538461539, 0.146118721461187, 0.294930875576037};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(model.tree().nodes[i].gain, gains[i], 1e-12);
    for (std::int32_t i = 0; i < 4; ++i) {
        const double weight = model.tree().nodes[static_cast<std::size_t>(i)].weight;
        EXPECT_NEAR(model.tree().classWeightsOf(i)[1] / weight, posteriors[i], 1e-12);
    }
    expectSteps(model.tree(), {{0, 5, 0.348345588235294},
                               {0, 2, 0.348345588235294},
                               {0.0818014705882353, 1, 0.430147058823529},
                               {0.5698529411764706, 0, 1}});
}

TEST(TreesOfRpart, Cars) {
    TreeTable table;
    for (const auto* numbers : {&kCarsCyl, &kCarsHp, &kCarsWt}) table.addNumbers(*numbers);
    DT::RegressionModel model;
    DT::Limits limits;
    limits.minNumRecordsInLeaves = 4;
    model.setLimits(limits);
    model.fit(table.data(), kCarsMpg);
    expectTree(model.tree(), {{32, 1126.0471875, 20.090625, 2, 2.26, {}},
                              {6, 44.5533333333333, 30.0666666666667, -1, 0, {}},
                              {26, 346.566538461538, 17.7884615384615, 0, 7, {}},
                              {12, 42.1225, 20.925, 0, 5, {}},
                              {14, 85.2, 15.1, 1, 192.5, {}},
                              {5, 5.968, 22.58, -1, 0, {}},
                              {7, 12.6771428571428, 19.7428571428571, -1, 0, {}},
                              {7, 16.5885714285714, 16.7857142857143, -1, 0, {}},
                              {7, 28.8285714285714, 13.4142857142857, -1, 0, {}}});
    expectSteps(model.tree(), {{0, 4, 0.0964574311390649},
                               {0.0208493546304933, 3, 0.117306785769558},
                               {0.0353296536632548, 2, 0.152636439432813},
                               {0.194702354302127, 1, 0.34733879373494},
                               {0.65266120626506, 0, 1}});
}

TEST(TreesOfRpart, WarpBreaksByCategories) {
    TreeTable table;
    table.addCategories(kWarpWool, 2);
    table.addCategories(kWarpTension, 3);
    DT::RegressionModel model;
    DT::Limits limits;
    limits.minNumRecordsInLeaves = 5;
    model.setLimits(limits);
    model.fit(table.data(), kWarpBreaks);
    expectTree(model.tree(), {{54, 9232.81481481481, 28.1481481481481, 1, 0, {1, 2}},
                              {36, 2800.97222222222, 24.0277777777778, 1, 0, {2}},
                              {18, 4598.27777777778, 36.3888888888889, 0, 0, {1}},
                              {18, 1186, 21.6666666666667, 0, 0, {1}},
                              {18, 1414.27777777778, 26.3888888888889, 0, 0, {0}},
                              {9, 777.555555555556, 28.2222222222222, -1, 0, {}},
                              {9, 2620.22222222222, 44.5555555555556, -1, 0, {}},
                              {9, 191.555555555556, 18.7777777777778, -1, 0, {}},
                              {9, 844.222222222222, 24.5555555555556, -1, 0, {}},
                              {9, 600, 24, -1, 0, {}},
                              {9, 711.555555555556, 28.7777777777778, -1, 0, {}}});
    expectSteps(model.tree(), {{0, 5, 0.62224914355399},
                               {0.0111257752140112, 4, 0.633374918768002},
                               {0.0162704684579158, 3, 0.649645387225917},
                               {0.021737081103632, 2, 0.671382468329549},
                               {0.130025352406473, 1, 0.801407820736022},
                               {0.198592179263978, 0, 1}});
}

}  // namespace
