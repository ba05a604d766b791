#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/scoring/facades.h>
#include <tessel/scoring/fitted_model.h>

#include "data/json_value.h"
#include "scoring/model_texts.h"
#include "supervised/tables.h"

namespace Tessel::Scoring {
namespace {

using Testing::describedModel;
using Testing::regressionTree;

const Testing::LabelledTable kTable = Testing::labelledTable(120, 3);

auto fittedClassifier() {
    return Classification::NaiveBayes::Estimator().setName(L"Kinds").fit(kTable.features, kTable.target);
}

DataFrame tableOf(const WString& json) {
    DataFrame table;
    table.fromJsonString(json);
    return table;
}

TEST(FittedModel, TellsWhatPMMLAndJSONTextsHold) {
    const auto classifier = fittedClassifier();
    for (const bool isPMML : {true, false}) {
        const FittedModel model(isPMML ? classifier.toPMML() : classifier.toJSON());
        EXPECT_EQ(model.modelName, L"Kinds");
        EXPECT_EQ(model.format, isPMML ? L"PMML" : L"JSON");
        EXPECT_EQ(model.type, L"classification");
        EXPECT_EQ(model.algorithm, isPMML ? L"NaiveBayes" : L"naiveBayes");
        EXPECT_EQ(model.variableNames, (StringVector{L"first", L"second", L"group"}));
        EXPECT_EQ(model.variableTypes, (StringVector{L"continuous", L"continuous", L"categorical"}));
        EXPECT_EQ(model.targetName, L"label");
    }
}

TEST(FittedModel, TargetsWithoutANameAreNoInputs) {
    DataFrameColumn target = kTable.target;
    target.setColName(L"");
    const auto model = Classification::NaiveBayes::Estimator().fit(kTable.features, target);
    for (const WString& text : {model.toPMML(), model.toJSON()}) {
        const FittedModel told(text);
        EXPECT_EQ(told.variableNames, (StringVector{L"first", L"second", L"group"}));
        EXPECT_EQ(told.targetName, L"");
    }
}

TEST(FittedModel, ReadsTheColumnsByTheKindOfTheDocument) {
    const WString predicted = L"<MiningField name=\"a\" usageType=\"predicted\"/>";
    const struct {
        WString function, miningFields;
        StringVector names, types;
        WString target;
    } cases[] = {
        {L"transformation", L"", {L"a", L"b"}, {L"continuous", L"categorical"}, L""},
        {L"timeSeries", predicted, {L"a"}, {L"continuous"}, L"a"},
        {L"regression", predicted, {L"b"}, {L"categorical"}, L"a"},
        {L"regression",
         L"<MiningField name=\"b\"/><MiningField name=\"a\" usageType=\"target\"/>",
         {L"b"},
         {L"categorical"},
         L"a"},
        {L"clustering", L"", {L"a", L"b"}, {L"continuous", L"categorical"}, L""},
    };
    for (const auto& expected : cases) {
        const FittedModel model(
            describedModel(L"SomeModel", expected.function, L"Some", expected.miningFields));
        EXPECT_EQ(model.modelName, L"Described");
        EXPECT_EQ(model.type, expected.function);
        EXPECT_EQ(model.algorithm, L"Some");
        EXPECT_EQ(model.variableNames, expected.names);
        EXPECT_EQ(model.variableTypes, expected.types);
        EXPECT_EQ(model.targetName, expected.target);
    }
}

TEST(FittedModel, RefusesOtherTextsAndStaysAsItWas) {
    FittedModel model(regressionTree(1, 2));
    const WString before = model.toJSON();
    for (const wchar_t* text :
         {L"", L" ", L"x", L"{}", L"[1]", L"<PMML/>", L"<PMML><Header description=\"M\"/></PMML>",
          L"<PMML><Header description=\"M\"/><M functionName=\"regression\"/></PMML>",
          L"{\"modelName\":\"m\"}",
          L"{\"modelName\":\"m\",\"type\":\"regression\",\"algorithm\":\"a\",\"variables\":\"x\"}"}) {
        try {
            model.parse(text);
            ADD_FAILURE() << Convert::toUtf8(text);
        } catch (const FailedToExtractFittedModelInfo& error) {
            EXPECT_EQ(error.code(), 245);
            EXPECT_STREQ(error.what(), "Failed to extract fitted model info.");
        }
        EXPECT_THROW(model.score(text, L"[1]", 1, false), FailedToExtractFittedModelInfo);
    }
    EXPECT_EQ(model.toJSON(), before);
}

TEST(FittedModel, DescribesItself) {
    const FittedModel model(regressionTree(1, 2, L"Say \"x\""));
    EXPECT_EQ(model.toJSON(),
              LR"({"modelName":"Say \"x\"","format":"PMML","type":"regression","algorithm":"DecisionTree",)"
              LR"("features":[{"name":"x","type":"continuous"}],"targetName":"y"})");
    EXPECT_EQ(model.toString(),
              L"\tModel Name: Say \"x\"\n\tFormat: PMML\n\tType: regression\n\tAlgorithm: DecisionTree\n"
              L"\tVariableNames: {x}\n\tVariableTypes: {continuous}\n\tTargetName: y\n");
    EXPECT_EQ(FittedModel().toJSON(),
              LR"({"modelName":"","format":"","type":"","algorithm":"",)"
              LR"("features":[],"targetName":""})");
}

TEST(FittedModel, ScoresTheSameRowsInEveryForm) {
    const auto classifier = fittedClassifier();
    DataFrame table;
    table.append(DataFrameColumn(L"first", Vector{0.5, 4.5}));
    table.append(DataFrameColumn(L"second", Vector{std::nan(""), -1.5}));
    table.append(DataFrameColumn(L"group", StringVector{L"g0", L""}));
    const DataFrame expected = classifier.predictWithPosterior(table);
    const FittedModel scorer;
    for (const WString& text : {classifier.toPMML(), classifier.toJSON()})
        for (const wchar_t* data :
             {L"[[0.5, null, \"g0\"], [4.5, -1.5, null]]", L"[0.5, \"NaN\", \"g0\", 4.5, -1.5, \"\"]",
              L"0.5,,g0\n4.5,-1.5,\n", L"0.5;NA;g0\r\n4.5;-1.5;", L"\n0.5\t\t\"g0\"\n4.5\t-1.5\t",
              L"\"0.5\"|NA|g0\n4.5|-1.5|NA\n", L"first,second,group\n0.5,,g0\n4.5,-1.5,\n",
              L"group;first;second\r\ng0;0.5;\r\n;4.5;-1.5"}) {
            SCOPED_TRACE(Convert::toUtf8(data));
            const DataFrame scored = tableOf(scorer.score(text, data, 0, true));
            ASSERT_EQ(scored.getColNames(), expected.getColNames());
            EXPECT_EQ(scored.toJson(), expected.toJson());
            EXPECT_EQ(scorer.score(text, data, 0, false), classifier.predict(table).toJson());
        }
}

TEST(FittedModel, ScoresOneVariableAsAColumn) {
    const FittedModel scorer;
    for (const wchar_t* data : {L"[-1, 1, 2]", L"[[-1], [1], [2]]", L"-1\n1\n2", L"x\n-1\n1\n2\n"})
        EXPECT_EQ(tableOf(scorer.score(regressionTree(10, 20), data, 0, true))(Util::all, 0).toDoubleVector(),
                  (Vector{10, 20, 20}))
            << Convert::toUtf8(data);
}

TEST(FittedModel, MarksOfByteOrderAreNoData) {
    const WString text = regressionTree(-1.0, 1.0);
    const FittedModel model(text);
    WString row;
    for (std::size_t i = 0; i < model.variableNames.size(); ++i) row += i == 0 ? L"1" : L",1";
    const WString expected = model.score(text, L"[" + row + L"]", 0, false);
    for (const WString& data : {L"[" + row + L"]", L"[[" + row + L"]]", row})
        EXPECT_EQ(model.score(text, L"\uFEFF" + data, 0, false), expected);
}

TEST(FittedModel, RefusesDataThatDoNotFit) {
    const WString text = fittedClassifier().toPMML();
    const FittedModel scorer;
    for (const wchar_t* data : {L"",
                                L"  \n",
                                L"[]",
                                L"[[]]",
                                L"[1, 2]",
                                L"[[1, 2]]",
                                L"[[1, 2, \"g\"], [1, 2]]",
                                L"[[1, 2, \"g\"], 3]",
                                L"[1, 2, \"g\", [1, 2, \"g\"]]",
                                L"[[\"1\", 2, \"g\"]]",
                                L"[[1, true, \"g\"]]",
                                L"[[1, 2, true]]",
                                L"[[1, 2, \"g\"]",
                                L"[{}]",
                                L"1,2",
                                L"1,2,g,4",
                                L"1,2,g\n1,2",
                                L"1,x,g",
                                L"first,second,group\n",
                                L"first,second,other\n1,2,g",
                                L"first,first,group\n1,2,g",
                                L"1,2,\"g"}) {
        try {
            scorer.score(text, data, 0, false);
            ADD_FAILURE() << Convert::toUtf8(data);
        } catch (const IncorrectDataFormat& error) {
            EXPECT_EQ(error.code(), 246);
        }
    }
}

TEST(FittedModel, PassesOnWhatTheScoringSays) {
    const FittedModel scorer;
    const WString predicted = L"<MiningField name=\"a\" usageType=\"predicted\"/>";
    EXPECT_THROW(scorer.score(describedModel(L"TimeSeriesModel", L"timeSeries", L"NoSuch", predicted),
                              L"TimeVariable,a\n2001,5\n2002,6", 2, false),
                 UnsupportedPMMLFormat);
    EXPECT_THROW(scorer.score(describedModel(L"TimeSeriesModel", L"timeSeries", L"NoSuch", predicted),
                              L"[5, 6, 7]", 2, false),
                 IncorrectDataFormat);  // a time is missing
    for (const wchar_t* function : {L"clustering", L"transformation", L"else"})
        EXPECT_THROW(scorer.score(describedModel(L"NoModel", function, L"A", L""), L"1,u", 2, false),
                     UnsupportedPMMLFormat);
}

TEST(FittedModel, WritesAScoringModel) {
    const WString text = regressionTree(1, 2);
    const WString expected =
        LR"({"comment":"Auto-generated LADON Scoring model","modelName":"mineScoring",)"
        LR"("datasources":{"myDataSource":{"type":"csv","connection":"a.csv"}},)"
        LR"("datasets":{"myDataset":{"binding":"myDataSource"}},)"
        LR"("fittedModel":{"myFittedModel":{"modelName":"Steps"}},)"
        LR"("actions":{"myScore":{"data":"myDataset","fittedModel":"myFittedModel",)"
        LR"("action":"predict","evaluations":["prediction"]}}})";
    EXPECT_EQ(FittedModel(text).generateScoringModel(L"mine", L"csv", L"a.csv", L""), expected);
    EXPECT_EQ(FittedModel().generateScoringModel(L"mine", L"csv", L"a.csv", text), expected);
    EXPECT_THROW(FittedModel().generateScoringModel(L"mine", L"csv", L"a.csv", L""),
                 FailedToExtractFittedModelInfo);
    const std::pair<const wchar_t*, const wchar_t*> actions[] = {
        {L"classification", LR"("action":"predict","evaluations":["prediction"])"},
        {L"timeSeries", LR"("action":"forecast","evaluations":["forecast"])"},
        {L"clustering", LR"("action":"transform","evaluations":["transformation"])"},
        {L"transformation", LR"("action":"transform","evaluations":["transformation"])"}};
    for (const auto& [function, action] : actions) {
        const FittedModel model(describedModel(L"M", function, L"A", L""));
        EXPECT_NE(model.generateScoringModel(L"n", L"json", L"c", L"").find(action), WString::npos);
    }
}

}  // namespace
}  // namespace Tessel::Scoring
