#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>

#include "data/random.h"
#include "engine/dt/tree_table.h"

namespace {

using namespace Tessel;
using namespace Tessel::Testing;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

DT::Cells numbers(const std::vector<double>& values) { return {.numbers = values, .codes = {}}; }
DT::Cells codes(const std::vector<std::int32_t>& values) { return {.numbers = {}, .codes = values}; }

TEST(TreeModel, MissingGoesLeftAndUnseenGoesRight) {
    // number < 2.5 or missing
    //   yes: 1.0 (3 records)
    //   no:  category in {1} or missing
    //          yes: 5.0 (2 records)
    //          no:  9.0 (2 records)
    TreeTable table;
    table.addNumbers({1, 2, kNan, 3, 4, 3, 4});
    table.addCategories({1, 2, 0, 1, -1, 3, 2}, 6);
    DT::RegressionModel model;
    model.fit(table.data(), std::vector<double>{1, 1, 1, 5, 5, 9, 9});
    ASSERT_EQ(model.tree().nodes.size(), 5u);
    EXPECT_EQ(model.tree().nodes[0].threshold, 2.5);
    EXPECT_EQ(model.tree().categorySets, (std::vector<std::vector<std::int32_t>>{{1}}));

    // The category 0 did not occur in the second node, 4 and 5 not in training, 6 and -7 are no codes.
    const std::vector<double> number{2.4, 2.5, kNan, 9, 9, 9, 9, 9, 9, 9};
    const std::vector<std::int32_t> category{3, 1, 3, -1, 0, 4, 6, 1000, -7, 2};
    const std::vector<DT::Cells> cells{numbers(number), codes(category)};
    EXPECT_EQ(model.predict(cells, number.size()), (std::vector<double>{1, 5, 1, 5, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(model.findNode(cells, 3), 3);
    EXPECT_THROW(model.predict(std::vector{cells[0]}, 1), NumColumnsMismatch);
    EXPECT_THROW(model.predict(cells, 11), NumElementsMismatch);
    EXPECT_THROW(model.predict(std::vector{cells[1], cells[0]}, 1), NumElementsMismatch);
}

TEST(TreeModel, ThresholdLiesBetweenItsNeighbours) {
    const double tiny = std::numeric_limits<double>::denorm_min(), huge = std::numeric_limits<double>::max();
    const double one = std::nextafter(1.0, 2.0);
    const std::pair<double, double> neighbours[] = {{1.0, one},    {one, std::nextafter(one, 2.0)},
                                                    {-huge, huge}, {0.9 * huge, huge},
                                                    {0.0, tiny},   {tiny, 2 * tiny},
                                                    {-tiny, 0.0},  {-1.0, 3.0}};
    for (const auto& [lower, upper] : neighbours) {
        TreeTable table;
        table.addNumbers({lower, upper});
        DT::RegressionModel model;
        model.fit(table.data(), std::vector<double>{1, 2});
        const double threshold = model.tree().nodes[0].threshold;
        EXPECT_TRUE(lower < threshold && threshold <= upper) << lower << ' ' << upper;
        EXPECT_EQ(model.predict(table.cells(), 2), (std::vector<double>{1, 2}));
    }
    EXPECT_EQ(DT::thresholdBetween(-1.0, 3.0), 1.0);
}

TEST(TreeModel, TiesGoToTheFirstFeatureAndTheLowestThreshold) {
    TreeTable table;
    table.addNumbers({0, 0, 0, 0});
    table.addNumbers({1, 2, 3, 4});
    table.addNumbers({4, 3, 2, 1});
    for (const bool isRegression : {false, true}) {
        DT::RegressionModel regression;
        DT::ClassificationModel classification = classifier(2);
        if (isRegression)
            regression.fit(table.data(), std::vector<double>{0, 1, 1, 0});
        else
            classification.fit(table.data(), std::vector<std::int32_t>{0, 1, 1, 0});
        const DT::Tree& tree = isRegression ? regression.tree() : classification.tree();
        EXPECT_EQ(tree.nodes[0].feature, 1);
        EXPECT_EQ(tree.nodes[0].threshold, 1.5);
    }
    // Three classes, one category each: {0}, {1} and {0, 1} on the left; the smallest mask is {0}.
    TreeTable categories;
    categories.addCategories({0, 1, 2}, 3);
    DT::ClassificationModel model = classifier(3);
    model.fit(categories.data(), std::vector<std::int32_t>{2, 0, 1});
    EXPECT_EQ(model.tree().categorySets[0], std::vector<std::int32_t>{0});
}

TEST(TreeModel, WithoutGainNoSplit) {
    TreeTable table;  // exclusive or: no split of the root helps
    table.addNumbers({0, 0, 1, 1, 0, 0, 1, 1});
    table.addNumbers({0, 1, 0, 1, 0, 1, 0, 1});
    const std::vector<std::int32_t> exclusive{0, 1, 1, 0, 0, 1, 1, 0}, same(8, 1);
    for (const auto* classes : {&exclusive, &same})
        for (const std::size_t numClasses : {std::size_t{2}, std::size_t{3}}) {
            DT::ClassificationModel model = classifier(numClasses);
            model.fit(table.data(), *classes);
            EXPECT_EQ(model.tree().nodes.size(), 1u);
        }
    TreeTable constant;
    constant.addNumbers({kNan, kNan, 3, 3});
    constant.addCategories({-1, -1, -1, 2}, 3);
    DT::RegressionModel model;
    model.fit(constant.data(), std::vector<double>{1, 2, 3, 4});
    EXPECT_EQ(model.predict(constant.cells(), 4), (std::vector<double>(4, 2.5)));
}

TEST(TreeModel, ManyCategoriesOfThreeClassesAreOrderedWell) {
    // Categories 0-19 hold class 0, 20-39 class 1, 40-59 class 2: the order by the principal component must
    // separate one class at the root, and the tree end with pure leaves after two splits.
    std::vector<std::int32_t> category, classes;
    for (std::int32_t row = 0; row < 600; ++row) {
        category.push_back(row * 7 % 60);
        classes.push_back(category.back() / 20);
    }
    TreeTable table;
    table.addCategories(category, 60);
    DT::ClassificationModel model = classifier(3);
    model.fit(table.data(), classes);
    EXPECT_EQ(model.tree().nodes.size(), 5u);
    EXPECT_EQ(model.predict(table.cells(), 600), classes);
}

TEST(TreeModel, SuccessClassAndCutoff) {
    TreeTable table;
    table.addNumbers({1, 1, 1, 1, 2, 2, 2, 2});
    DT::ClassificationModel model = classifier(2);
    model.fit(table.data(), std::vector<std::int32_t>{0, 0, 0, 1, 0, 0, 1, 1});
    const auto predicted = [&] { return model.predict(table.cells(), 8); };
    EXPECT_EQ(model.posteriorProbability(table.cells(), 5),
              (std::vector<double>{.75, .25, .75, .25, .75, .25, .75, .25, .5, .5}));
    EXPECT_EQ(predicted(), (std::vector<std::int32_t>(8, 0)));  // a tie goes to the first class
    model.setSuccessClass(1);
    EXPECT_EQ(predicted(), (std::vector<std::int32_t>{0, 0, 0, 0, 1, 1, 1, 1}));
    model.setSuccessProbabilityCutoff(0.25);
    EXPECT_EQ(predicted(), (std::vector<std::int32_t>(8, 1)));
    model.setSuccessClass(0);
    model.setSuccessProbabilityCutoff(0.7);
    EXPECT_EQ(predicted(), (std::vector<std::int32_t>{0, 0, 0, 0, 1, 1, 1, 1}));
}

TEST(TreeModel, TextOfATree) {
    TreeTable table;
    table.addNumbers({1, 2, 3, 4});
    table.addCategories({0, 1, 0, 1}, 2);
    DT::ClassificationModel model = classifier(2);
    model.fit(table.data(), std::vector<std::int32_t>{0, 0, 0, 1});
    const DT::Names names{{L"Dose", L"Sex"}, {{}, {L"f", L"m"}}, {L"well", L"ill"}};
    EXPECT_EQ(model.toString(5, {}, names),
              L"1) root  n = 4  well (0.750)\n"
              L"  2) Dose < 3.5  n = 3  well (1.000) *\n"
              L"  3) Dose >= 3.5  n = 1  ill (1.000) *\n");
    EXPECT_EQ(model.toString(0, {.numDigits = 3, .indentation = 1, .numShareDecimals = 0, .firstNumber = 0}),
              L"0) root  n = 4  Class 0 (1)\n");
    EXPECT_EQ(DT::RegressionModel().toString(3), L"");
    DT::ClassificationModel cautious = model;  // the text tells the class that is predicted
    cautious.setSuccessClass(1);
    cautious.setSuccessProbabilityCutoff(0.25);
    EXPECT_EQ(cautious.toString(0, {}, names), L"1) root  n = 4  ill (0.250)\n");
    DT::RegressionModel regression;
    regression.fit(table.data(), std::vector<double>{0.5, 2, 0.5, 2});
    EXPECT_EQ(regression.toString(1, {.numDigits = 2, .indentation = 4}, names),
              L"1) root  n = 4  1.2\n"
              L"    2) Sex in {f}  n = 2  0.5 *\n"
              L"    3) Sex not in {f}  n = 2  2 *\n");
}

TEST(TreeModel, ScoresManyRecordsAsOneByOne) {
    Random random(11);
    TreeTable table;
    std::vector<double> targets;
    for (int feature = 0; feature < 3; ++feature) {
        std::vector<double> column;
        for (int row = 0; row < 30001; ++row)
            column.push_back(random.nextBelow(20) == 0 ? kNan : random.nextNormal());
        table.addNumbers(std::move(column));
    }
    std::vector<std::int32_t> category;
    for (int row = 0; row < 30001; ++row) {
        category.push_back(static_cast<std::int32_t>(random.nextBelow(101)) - 1);
        targets.push_back(random.nextNormal() + category.back() % 3);
    }
    table.addCategories(category, 100);
    DT::RegressionModel model;
    model.fit(table.data(), targets);
    const DT::RegressionModel copy = model;
    model = DT::RegressionModel();
    const auto cells = table.cells();
    const std::vector<std::int32_t> leaves = copy.findNodes(cells, 30001);
    std::vector<std::int64_t> numRecords(copy.tree().nodes.size(), 0);
    for (std::size_t row = 0; row < leaves.size(); ++row) {
        ASSERT_EQ(leaves[row], copy.findNode(cells, row));
        ++numRecords[static_cast<std::size_t>(leaves[row])];
    }
    for (std::size_t node = 0; node < numRecords.size(); ++node)
        EXPECT_EQ(numRecords[node],
                  copy.tree().nodes[node].isLeaf() ? copy.tree().nodes[node].numRecords : 0);
}

TEST(TreeModel, RestoresATreeButNoNonsense) {
    TreeTable table;
    table.addNumbers({1, 2, 3, 4, kNan, 6});
    table.addCategories({0, 1, 2, 0, 1, -1}, 3);
    DT::ClassificationModel model = classifier(3), restored = classifier(3);
    const std::vector<std::int32_t> classes{0, 1, 2, 1, 0, 2};
    model.fit(table.data(), classes);
    DT::Tree tree = model.tree();
    for (DT::Node& node : tree.nodes) node.parent = 77;
    EXPECT_THROW(restored.predict(table.cells(), 6), ConstraintViolation);  // not yet
    EXPECT_THROW(restored.select(DT::TreeType::FULL_GROWN), ConstraintViolation);
    EXPECT_THROW(restored.select(1), ConstraintViolation);
    EXPECT_THROW(restored.prune(table.cells(), classes), ConstraintViolation);
    restored.restore(tree, 2);
    EXPECT_TRUE(areSame(restored.tree(), model.tree()));
    EXPECT_EQ(restored.predict(table.cells(), 6), classes);

    const auto refused = [&](auto&& spoil) {
        DT::Tree bad = tree;
        spoil(bad);
        EXPECT_THROW(restored.restore(bad, 2), ConstraintViolation);
    };
    refused([](DT::Tree& bad) { bad.nodes.clear(); });
    refused([](DT::Tree& bad) { bad.nodes[0].left = 0; });
    refused([](DT::Tree& bad) { bad.nodes[0].left = static_cast<std::int32_t>(bad.nodes.size()) - 1; });
    refused([](DT::Tree& bad) { bad.nodes[0].left = 3; });
    refused([](DT::Tree& bad) { bad.nodes[0].feature = 2; });
    refused([](DT::Tree& bad) { bad.nodes[0].categorySet = 99; });
    refused([](DT::Tree& bad) { bad.nodes[1].weight = 0.0; });
    refused([](DT::Tree& bad) { bad.nodes[1].response = 3.0; });
    refused([](DT::Tree& bad) { bad.classWeights.pop_back(); });
    refused([](DT::Tree& bad) { bad.categorySets.push_back({}); });
    EXPECT_EQ(restored.predict(table.cells(), 6), classes);
}

TEST(TreeModel, ChainOfFiftyThousandLevels) {
    // Alternating classes: cutting off the first record is the first of the best splits, again and again.
    constexpr int kNumRows = 50001;
    std::vector<double> column;
    std::vector<std::int32_t> classes;
    for (int row = 0; row < kNumRows; ++row) {
        column.push_back(row);
        classes.push_back(row % 2);
    }
    TreeTable table;
    table.addNumbers(std::move(column));
    DT::ClassificationModel model = classifier(2);
    model.fit(table.data(), classes);
    ASSERT_EQ(model.numDecisionNodes(), kNumRows - 1);
    ASSERT_EQ(model.tree().nodes.back().parent, 2 * (kNumRows - 2));  // one decision node a level
    const DT::ClassificationModel copy = model;
    TreeTable some;  // all depths, in a hurry
    std::vector<std::int32_t> expected;
    std::vector<double> values;
    for (int row = 0; row < kNumRows; row += 97) {
        values.push_back(row);
        expected.push_back(row % 2);
    }
    some.addNumbers(values);
    EXPECT_EQ(copy.predict(some.cells(), values.size()), expected);
    const WString text = copy.toString(DT::Limits::kNone);
    EXPECT_EQ(std::count(text.begin(), text.end(), L'\n'), 2 * kNumRows - 1);
    model.prune(some.cells(), expected);
    model.select(DT::TreeType::MIN_ERROR);
    EXPECT_EQ(model.predict(some.cells(), values.size()), expected);
    model.selectManual(10);
    EXPECT_EQ(model.numDecisionNodes(), 0);
}

}  // namespace
