#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>

#include "supervised/tables.h"

namespace Tessel {
namespace {

using DecisionTree::TreeType;
using Testing::LabelledTable;
using Testing::labelledTable;
using Classifier = Classification::DecisionTree::Estimator;
using Regressor = Regression::DecisionTree::Estimator;

std::string messageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Exception& error) {
        return error.what();
    }
    return "nothing was thrown";
}

Vector column(const DataFrame& table, int position) { return table(Util::all, position).toDoubleVector(); }

/// Six records; by hand: size < 2.5 is small, of the others red ones are big and blue ones are huge.
///
///               size < 2.5
///              /           |
///           small    colour in {red}
///                      /        |
///                    big       huge
struct Fruit {
    DataFrame features;
    DataFrameColumn label{L"label", StringVector{L"small", L"small", L"big", L"big", L"huge", L"huge"}};
    DataFrameColumn weight{L"weight", Vector{1, 1, 5, 5, 9, 9}};
    Fruit() {
        features.append(DataFrameColumn(L"size", Vector{1, 2, 3, 4, 3, 4}));
        features.append(
            DataFrameColumn(L"colour", StringVector{L"red", L"blue", L"red", L"red", L"blue", L"blue"}));
    }
};

TEST(DecisionTree, FindsTheTreeThatIsPlainToSee) {
    const Fruit fruit;
    const auto model = Classifier().fit(fruit.features, fruit.label);
    EXPECT_EQ(model.treeRules(9),
              (StringVector{L"IF size < 2.5 THEN small (2 records)",
                            L"IF size >= 2.5 AND colour IN {red} THEN big (2 records)",
                            L"IF size >= 2.5 AND colour NOT IN {red} THEN huge (2 records)"}));
    EXPECT_EQ(model.treeRules(0).size(), 1u);
    EXPECT_EQ(model.predict(fruit.features)(Util::all, 0).toStringVector(), fruit.label.toStringVector());
    EXPECT_EQ(model.getModelName(), L"Classification Tree");

    const auto regressor = Regressor().fit(fruit.features, fruit.weight);
    EXPECT_EQ(regressor.getModelName(), L"Regression Tree");
    EXPECT_EQ(column(regressor.predict(fruit.features), 0), fruit.weight.toDoubleVector());
    EXPECT_EQ(regressor.predict(fruit.features).getColName(0), L"Prediction: weight");
    EXPECT_EQ(regressor.predict(fruit.features).getName(), L"Scores");
}

TEST(DecisionTree, RulesTellTheNarrowestConditionsOnly) {
    // Whole numbers of 8 digits whose thresholds must stay apart, and categories split off one after the
    // other.
    DataFrame days, groups;
    days.append(DataFrameColumn(L"day", Vector{20230114, 20230115, 20230116, 20230117}));
    groups.append(DataFrameColumn(L"group", StringVector{L"a", L"b", L"c", L"d"}));
    const DataFrameColumn target(L"y", Vector{1, 10, 100, 1000});
    EXPECT_EQ(Regressor().fit(days, target).treeRules(9),
              (StringVector{L"IF day < 20230114.5 THEN 1 (1 records)",
                            L"IF day < 20230115.5 AND day >= 20230114.5 THEN 10 (1 records)",
                            L"IF day < 20230116.5 AND day >= 20230115.5 THEN 100 (1 records)",
                            L"IF day >= 20230116.5 THEN 1000 (1 records)"}));
    EXPECT_EQ(Regressor().fit(groups, target).treeRules(9),
              (StringVector{L"IF group IN {a} THEN 1 (1 records)",
                            L"IF group IN {a, b} AND group NOT IN {a} THEN 10 (1 records)",
                            L"IF group IN {a, b, c} AND group NOT IN {a, b} THEN 100 (1 records)",
                            L"IF group NOT IN {a, b, c} THEN 1000 (1 records)"}));
    const DataFrameColumn falling(L"y", Vector{-1, -10, -100, -1000});
    EXPECT_EQ(Regressor().fit(groups, falling).treeRules(9),
              (StringVector{L"IF group IN {d} THEN -1000 (1 records)",
                            L"IF group NOT IN {d} AND group IN {c} THEN -100 (1 records)",
                            L"IF group NOT IN {c, d} AND group IN {b} THEN -10 (1 records)",
                            L"IF group NOT IN {b, c, d} THEN -1 (1 records)"}));
}

TEST(DecisionTree, MissingGoesLeftAndUnseenCategoriesGoRight) {
    const Fruit fruit;
    const auto model = Classifier().fit(fruit.features, fruit.label);
    DataFrame table;
    table.append(DataFrameColumn(L"size", Vector{std::nan(""), 3, 3}));
    table.append(DataFrameColumn(L"colour", StringVector{L"blue", L"", L"green"}));
    EXPECT_EQ(model.predict(table)(Util::all, 0).toStringVector(), (StringVector{L"small", L"big", L"huge"}));
}

TEST(DecisionTree, ChecksItsParametersInOrderUnderTheirDisplayNames) {
    const Fruit fruit;
    const std::string range = " violated a constraint: Acceptable range: ";
    Classifier estimator;
    // Each value set is the first violated rule: the list runs from the last check to the first.
    struct Case {
        std::function<void()> set;
        std::string message;
    };
    const Case cases[] = {
        {[&] { estimator.setMaxNumLevelsTreeDiagram(0); },
         "Max #levels on tree diagram" + range + "[1,2147483647]"},
        {[&] { estimator.setPrunedTreeNumDecisionNodes(-1); },
         "#Decision Nodes in pruned tree" + range + "[0,2147483647]"},
        {[&] { estimator.setPrunedTreeType(static_cast<TreeType>(9)); },
         "Selected pruned tree type violated a constraint: The value must be a pre-defined set member."},
        {[&] { estimator.setNumSelectedFeatures(0); }, "#Selected features" + range + "[1,2147483647]"},
        {[&] { estimator.setFeatureSelectionSeed(0); }, "Feature selection seed" + range + "[1,2147483647]"},
        {[&] { estimator.setMaxNumSplits(-1); }, "Max #splits" + range + "[0,2147483647]"},
        {[&] { estimator.setMaxNumLevels(-1); }, "Max #levels" + range + "[0,2147483647]"},
        {[&] { estimator.setMaxNumNodes(0); }, "Max #nodes" + range + "[1,2147483647]"},
        {[&] { estimator.setMinNumRecordsInLeaves(0); }, "Min #records in leaves" + range + "[1,2147483647]"},
    };
    EXPECT_TRUE(estimator.isValid());
    for (const Case& c : cases) {
        c.set();
        EXPECT_FALSE(estimator.isValid());
        EXPECT_EQ(messageOf([&] { estimator.validate(); }), c.message);
    }
    estimator.reset();

    // Against the data, again from the last check to the first.
    const Case dataCases[] = {
        {[&] {
             estimator.setWeights({1, 1, 1, 1, 1, 0});
         },
         "Observation weights must be positive."},
        {[&] { estimator.setCategoricalFeaturesNames({L"sise"}); },
         "Categorical features violated a constraint: sise is not a column name."},
        {[&] { estimator.setNumSelectedFeatures(3); }, "#Selected features" + range + "[1,2]"},
        {[&] { estimator.setMinNumRecordsInLeaves(7); }, "Min #records in leaves" + range + "[1,6]"},
    };
    EXPECT_TRUE(estimator.isValid(fruit.features, fruit.label));
    for (const Case& c : dataCases) {
        c.set();
        EXPECT_TRUE(estimator.isValid());
        EXPECT_EQ(messageOf([&] { estimator.fit(fruit.features, fruit.label); }), c.message);
    }
    EXPECT_NO_THROW(Classifier().setMinNumRecordsInLeaves(6).fit(fruit.features, fruit.label));
    EXPECT_THROW(Classifier().setWeights(Vector(6, 1e308)).fit(fruit.features, fruit.label),
                 ConstraintViolation);
    EXPECT_THROW(Classifier().setWeights({1}).fit(fruit.features, fruit.label), IncompatibleSizes);
}

/// Noisy labels, so that a full-grown tree overfits.
LabelledTable noisyTable(int numRows, int offset) {
    LabelledTable table = labelledTable(numRows, 2);
    for (int row = offset; row < numRows; row += 5)
        table.target(row) = table.target(row).toString() == L"class 0" ? L"class 1" : L"class 0";
    return table;
}

TEST(DecisionTree, LimitsGrowth) {
    const LabelledTable data = noisyTable(300, 0);
    const auto numNodes = [&](const Classifier& estimator) {
        return estimator.fit(data.features, data.target)
            .toDataFrameVector()
            .at(L"All Nodes Info")
            .getNumRows();
    };
    const int full = numNodes(Classifier());
    EXPECT_GT(full, 9);
    EXPECT_EQ(numNodes(Classifier().setMaxNumNodes(5)), 5);
    EXPECT_EQ(numNodes(Classifier().setMaxNumSplits(3)), 7);
    EXPECT_EQ(numNodes(Classifier().setMaxNumSplits(0)), 1);
    EXPECT_EQ(numNodes(Classifier().setMaxNumLevels(1)), 3);
    EXPECT_LT(numNodes(Classifier().setMinNumRecordsInLeaves(20)), full);
}

TEST(DecisionTree, NumericColumnsBecomeCategoricalByNameOrOffset) {
    // The code 2 is of one class, 1 and 3 of the other: one split by categories, two by numbers.
    DataFrame features;
    features.append(DataFrameColumn(L"code", Vector{1, 2, 3, 1, 2, 3}));
    const DataFrameColumn label(L"y", StringVector{L"a", L"b", L"a", L"a", L"b", L"a"});
    EXPECT_EQ(Classifier().fit(features, label).treeRules(9).size(), 3u);
    for (const Classifier& estimator : {Classifier().setCategoricalFeaturesNames({L"code"}),
                                        Classifier().setCategoricalFeaturesOffsets({0})}) {
        const auto model = estimator.fit(features, label);
        EXPECT_EQ(model.treeRules(9).size(), 2u);
        EXPECT_EQ(model.getCategoricalFeaturesInfo()(L"code", L"Categories").toString(), L"1, 2, 3");
    }
}

TEST(DecisionTree, WeightsCountLikeRepeatedRowsAndPriorsChangePosteriors) {
    const LabelledTable data = labelledTable(60, 2);
    IntVector repeated;
    Vector weights;
    for (int row = 0; row < 60; ++row) {
        weights.push_back(row % 3 == 0 ? 2.0 : 1.0);
        for (int i = 0; i < (row % 3 == 0 ? 2 : 1); ++i) repeated.push_back(row);
    }
    const auto expanded =
        Classifier().setMaxNumLevels(2).fit(data.features(repeated, Util::all), data.target.select(repeated));
    const Vector expected = column(expanded.posteriorProbability(data.features), 0);
    for (const double unit : {1.0, 1e300, 1e-300}) {
        Vector scaled = weights;
        for (double& weight : scaled) weight *= unit;
        const auto weighted =
            Classifier().setMaxNumLevels(2).setWeights(scaled).fit(data.features, data.target);
        const Vector actual = column(weighted.posteriorProbability(data.features), 0);
        for (std::size_t row = 0; row < actual.size(); ++row)
            EXPECT_NEAR(actual[row], expected[row], 1e-12) << row << " of unit " << unit;
    }

    // A root alone has the priors as posteriors.
    const auto root = Classifier()
                          .setMaxNumSplits(0)
                          .setPriorProb(L"class 0", 0.2)
                          .setPriorProb(L"class 1", 0.8)
                          .fit(data.features, data.target);
    EXPECT_NEAR(column(root.posteriorProbability(data.features), 0)[0], 0.2, 1e-15);
}

int numDecisionNodes(const DataFrameVector& report) {
    return Convert::toInt(report[0](L"#Decision nodes", L"Value").toString());
}

TEST(DecisionTree, PrunesWithValidationDataWhenATypeIsSet) {
    const LabelledTable training = noisyTable(400, 0), validation = noisyTable(300, 3);
    const auto fit = [&](const Classifier& estimator) {
        return estimator.fit(training.features, validation.features, training.target, validation.target);
    };
    auto full = fit(Classifier());
    EXPECT_EQ(full.getPruningLog().getNumRows(), 0);
    const int numFull = numDecisionNodes(full.toDataFrameVector());
    EXPECT_THROW(full.select(TreeType::MIN_ERROR), ConstraintViolation);
    full.select(1);
    EXPECT_EQ(numDecisionNodes(full.toDataFrameVector()), 1);
    EXPECT_EQ(full.getPruningLog().getNumRows(), 0);  // nothing has judged it

    auto best = fit(Classifier().setPrunedTreeType(TreeType::BEST_PRUNED));
    const int numBest = numDecisionNodes(best.toDataFrameVector());
    EXPECT_LT(numBest, numFull);
    best.select(TreeType::MIN_ERROR);
    EXPECT_GE(numDecisionNodes(best.toDataFrameVector()), numBest);
    best.select(TreeType::FULL_GROWN);
    EXPECT_EQ(numDecisionNodes(best.toDataFrameVector()), numFull);
    best.select(1);
    EXPECT_EQ(numDecisionNodes(best.toDataFrameVector()), 1);
    EXPECT_THROW(best.select(-1), ValueOutOfRange);

    const auto manual =
        fit(Classifier().setPrunedTreeType(TreeType::MANUAL).setPrunedTreeNumDecisionNodes(2));
    EXPECT_LE(numDecisionNodes(manual.toDataFrameVector()), 2);
    EXPECT_GT(manual.toDataFrameVector().at(L"All Nodes Info")(0, L"Validation Cases").toInt(), 299);

    // The error rate of the least tree in the log is that of its predictions on the validation part.
    best.select(0);
    const DataFrame log = best.getPruningLog();
    const DataFrameColumn predicted = best.predict(validation.features)(Util::all, 0);
    double errors = 0.0;
    for (int row = 0; row < 300; ++row)
        errors += predicted(row).toString() != validation.target(row).toString();
    EXPECT_NEAR(log(log.getNumRows() - 1, L"Error Rate").toDouble(), errors / 300.0, 1e-12);

    DataFrameColumn unseen = validation.target;
    unseen(0) = WString(L"class 7");
    EXPECT_THROW(best.prune(validation.features, unseen), LabelUnseenInTraining);
}

TEST(DecisionTree, RulesReportAndPruningFollowTheCutOff) {
    const LabelledTable training = noisyTable(400, 0), validation = noisyTable(300, 3);
    auto model = Classifier()
                     .setMaxNumLevels(1)
                     .setSuccessClass(L"class 1")
                     .setSuccessProbability(0.95)
                     .fit(training.features, training.target);
    model.prune(validation.features, validation.target);
    double errors = 0.0;  // no leaf reaches the cut-off, so that all is class 0
    for (int row = 0; row < 300; ++row) errors += validation.target(row).toString() != L"class 0";
    EXPECT_NEAR(model.getPruningLog()(0, 0).toDouble(), errors / 300.0, 1e-12);

    const auto responses = [&] {
        return model.toDataFrameVector().at(L"All Nodes Info")(Util::all, L"Response").toStringVector();
    };
    EXPECT_EQ(responses(), (StringVector{L"class 0", L"class 0", L"class 0"}));
    model.setSuccessProbability(0.01);
    EXPECT_EQ(responses(), (StringVector{L"class 1", L"class 1", L"class 1"}));
    for (const WString& rule : model.treeRules(9)) EXPECT_NE(rule.find(L"THEN class 1 ("), WString::npos);
}

TEST(DecisionTree, PredictsTheClassesOfThePosteriors) {
    // Many rows and few: labels are looked up by node or asked for by row.
    const LabelledTable training = noisyTable(400, 0), few = noisyTable(5, 3);
    auto model = Classifier().fit(training.features, training.target);
    for (const double cutOff : {0.0, 0.4, 0.5, 1.0}) {
        model.setSuccessProbability(cutOff);
        for (const DataFrame& features : {training.features, few.features}) {
            const StringVector labels = model.predict(features)(Util::all, 0).toStringVector();
            EXPECT_EQ(labels, model.predictWithPosterior(features)(Util::all, 0).toStringVector());
            EXPECT_EQ(labels.size(), static_cast<std::size_t>(features.getNumRows()));
        }
    }
    const LabelledTable three = labelledTable(90, 3);
    const auto shallow = Classifier().setMaxNumLevels(1).fit(three.features, three.target);
    EXPECT_EQ(shallow.predict(three.features)(Util::all, 0).toStringVector(),
              shallow.predictWithPosterior(three.features)(Util::all, 0).toStringVector());
}

TEST(DecisionTree, ReportsItsTables) {
    const Fruit fruit;
    const DataFrameVector classifier = Classifier().fit(fruit.features, fruit.label).toDataFrameVector();
    EXPECT_EQ(classifier[0].getName(), L"Model: Classification Tree");
    EXPECT_EQ(classifier.at(L"Pruning Log").getColNames(), (StringVector{L"Error Rate"}));
    EXPECT_EQ(classifier.at(L"Feature Importance").getRowNames(), (StringVector{L"size", L"colour"}));
    EXPECT_EQ(classifier.at(L"Training Log").getRowNames(), (StringVector{L"0", L"1", L"2"}));
    EXPECT_EQ(column(classifier.at(L"Training Log"), 0), (Vector{2.0 / 3.0, 1.0 / 3.0, 0.0}));
    const DataFrame& nodes = classifier.at(L"All Nodes Info");
    EXPECT_EQ(nodes.getColNames(), (StringVector{L"Parent ID", L"Left Child ID", L"Right Child ID",
                                                 L"Split Var", L"Split Value/Set", L"Training Cases",
                                                 L"Validation Cases", L"Response", L"Node Type"}));
    EXPECT_EQ(nodes(Util::all, L"Node Type").toStringVector(),
              (StringVector{L"Decision", L"Terminal", L"Decision", L"Terminal", L"Terminal"}));
    EXPECT_EQ(nodes(Util::all, L"Split Value/Set").toStringVector(),
              (StringVector{L"2.5", L"", L"{red}", L"", L""}));
    EXPECT_EQ(nodes(L"3", L"Parent ID").toInt(), 1);
    EXPECT_EQ(nodes(L"3", L"Right Child ID").toInt(), 5);

    const auto regressor = Regressor().fit(fruit.features, fruit.weight);
    EXPECT_EQ(regressor.toDataFrameVector().at(L"Pruning Log").getColNames(),
              (StringVector{L"Cost Complexity", L"Validation MSE"}));
    EXPECT_EQ(Regressor().toDataFrame().getName(), L"Estimator: Regression Tree");
    EXPECT_EQ(Classifier().toDataFrame().getName(), L"Estimator: Classification Tree");
    EXPECT_EQ(regressor.treeToString(), regressor.treeToString(2));
    EXPECT_NE(regressor.treeToString(1), regressor.treeToString(2));
}

TEST(DecisionTree, LadonHoldsThePrunedTreeTypeByItsKeyword) {
    Regressor estimator;
    estimator.setPrunedTreeType(TreeType::BEST_PRUNED).setMaxNumNodes(9).setWeights({1.5, 2});
    const WString text = estimator.toLadon();
    EXPECT_NE(text.find(L"\"type\":\"regression\",\"algorithm\":\"decisionTree\""), WString::npos);
    EXPECT_NE(text.find(L"\"prunedTreeType\":\"BEST_PRUNED\""), WString::npos);
    Regressor read;
    read.fromLadonString(text);
    EXPECT_EQ(read.toLadon(), text);
    EXPECT_EQ(read.getWeights(), (Vector{1.5, 2}));
    EXPECT_THROW(Classifier().fromLadonString(text), UnsupportedJSONModel);
}

TEST(DecisionTree, RegressorsRefuseTargetsThatAreNoNumbers) {
    const Fruit fruit;
    EXPECT_THROW(Regressor().fit(fruit.features, fruit.label), NonNumericData);
    DataFrameColumn missing = fruit.weight;
    missing(2) = std::nan("");
    EXPECT_THROW(Regressor().fit(fruit.features, missing), ConstraintViolation);
    EXPECT_FALSE(Regressor().isValid(fruit.features, missing));
    EXPECT_THROW(Regressor().fit(DataFrame(), DataFrameColumn()), TooFewNumRows);
    const DataFrameColumn constant(L"weight", Vector(6, 4.0));
    EXPECT_EQ(column(Regressor().fit(fruit.features, constant).predict(fruit.features), 0), Vector(6, 4.0));
}

}  // namespace
}  // namespace Tessel
