#include <gtest/gtest.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/data/convert.h>
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
    EXPECT_EQ(read.getMetrics().toJson(), model.getMetrics().toJson());
    EXPECT_EQ(read.toString(), model.toString());
    WString odd = model.toJSON();  // a model with another class than the search
    odd.replace(odd.find(L"\"class 1\"", odd.find(L"\"learners\"")), 9, L"\"no class\"");
    EXPECT_THROW(read.fromJSONString(odd), UnsupportedJSONModel);
    const WString text = model.toJSON();
    for (const auto& [from, to] :
         {std::pair(L"\"metrics\":[", L"\"metrics\":[3,"),
          std::pair(L"\"metrics\":[", L"\"metrics\":[{\"name\":\"x\",\"values\":[1]},"),
          std::pair(L"\"metrics\":[", L"\"metrics\":[],\"x\":[")}) {
        WString changed = text;
        changed.replace(changed.find(from), WString(from).size(), to);
        EXPECT_THROW(read.fromJSONString(changed), UnsupportedJSONModel);
    }
    EXPECT_EQ(read.toJSON(), text);

    const LabelledTable numbers = numericTable(60);
    auto regression = Regression::FindBestModel::Estimator()
                          .addLearner(Regression::Boosting::Estimator())
                          .fit(numbers.features, numbers.target);
    regression.findBestLearner(numbers.features, numbers.target);
    expectRoundTrip(regression, Regression::FindBestModel::Estimator().fit(numbers.features, numbers.target),
                    numbers.features);
}

/// `text` with every `from` replaced.
WString everyReplaced(WString text, const WString& from, const WString& to) {
    EXPECT_NE(text.find(from), WString::npos);
    for (std::size_t at = text.find(from); at != WString::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

TEST(EnsembleTexts, BoostedModelsThatAreNoTreesVoteInPMML) {
    // The standard averages what members say of the classes: 0 and 1 it is only from a vote.
    LabelledTable noisy = labelledTable(120, 2);
    for (int row = 0; row < 120; row += 7) noisy.target(row) = L"class 0";
    const LabelledTable three = labelledTable(60, 3);
    const auto estimator = Classification::Boosting::Estimator().setNumWeakLearners(2).setBaseEstimator(
        Classification::NaiveBayes::Estimator());
    const auto model = estimator.fit(noisy.features, noisy.target);
    const WString text = model.toPMML();
    auto read = estimator.fit(three.features, three.target);
    read.fromPMMLString(text);
    EXPECT_EQ(read.posteriorProbability(noisy.features).toJson(),
              model.posteriorProbability(noisy.features).toJson());
    const WString vote = L"multipleModelMethod=\"majorityVote\"", member = L"<NaiveBayesModel";
    std::size_t numVotes = 0, numMembers = 0;
    for (std::size_t at = text.find(vote); at != WString::npos; at = text.find(vote, at + 1)) ++numVotes;
    for (std::size_t at = text.find(member); at != WString::npos; at = text.find(member, at + 1))
        ++numMembers;
    EXPECT_EQ(numVotes, 2u);
    EXPECT_EQ(numMembers, 2u);
    const WString before = read.toJSON();
    EXPECT_THROW(read.fromPMMLString(everyReplaced(text, vote, L"multipleModelMethod=\"average\"")),
                 UnsupportedPMMLFormat);
    EXPECT_THROW(read.fromPMMLString(everyReplaced(text, L"<Segment id=\"1\">",
                                                   L"<Segment><True/><TreeModel/></Segment><Segment>")),
                 UnsupportedPMMLFormat);
    EXPECT_EQ(read.toJSON(), before);
}

TEST(EnsembleTexts, CutOffsOfMembersAreInTheirCounts) {
    // Other programs know no cut-off: of classes with equal chances, one that needs 1/5 must count 4 times
    // the other, whose chance must be 4/5.
    LabelledTable data = labelledTable(120, 2);
    const auto counts = [&](double cutOff) {
        const auto member = Classification::NaiveBayes::Estimator()
                                .setPriorProbMethod(PriorProbMethodType::UNIFORM)
                                .setSuccessClass(L"class 1")
                                .setSuccessProbability(cutOff);
        const auto model =
            Classification::Bagging::Estimator().setNumWeakLearners(1).setBaseEstimator(member).fit(
                data.features, data.target);
        auto read = model;
        read.fromPMMLString(model.toPMML());
        EXPECT_EQ(read.predict(data.features).toJson(), model.predict(data.features).toJson());
        const WString text = model.toPMML();
        std::vector<double> found;
        for (std::size_t at = text.find(L"count=\"", text.find(L"<BayesOutput")); at != WString::npos;
             at = text.find(L"count=\"", at + 1))
            found.push_back(Convert::toDouble(text.substr(at + 7, text.find(L'"', at + 7) - at - 7)));
        return found;
    };
    EXPECT_EQ(counts(0.5), (std::vector{60.0, 60.0}));
    const std::vector<double> moved = counts(0.2);
    ASSERT_EQ(moved.size(), 2u);
    EXPECT_DOUBLE_EQ(moved[1], 4.0 * moved[0]);
}

/// An ensemble of two trees of one leaf, as another maker writes it: members with weights and shares.
WString twoLeaves(const WString& method, const WString& first, const WString& second) {
    const WString fields =
        L"<MiningSchema><MiningField name=\"x\"/>"
        L"<MiningField name=\"y\" usageType=\"target\"/></MiningSchema>";
    const auto segment = [&](const WString& weight, const WString& label, const WString& shares) {
        return L"<Segment weight=\"" + weight + L"\"><True/><TreeModel functionName=\"classification\">" +
               fields + L"<Node score=\"" + label + L"\" recordCount=\"4\"><True/>" + shares +
               L"</Node></TreeModel></Segment>";
    };
    return L"<PMML version=\"4.2\"><Header description=\"MiningModel\"/><DataDictionary>"
           L"<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"/>"
           L"<DataField name=\"y\" optype=\"categorical\" dataType=\"string\"><Value value=\"a\"/>"
           L"<Value value=\"b\"/></DataField></DataDictionary><MiningModel functionName=\"classification\">" +
           fields + L"<Segmentation multipleModelMethod=\"" + method + L"\">" + segment(L"3", L"a", first) +
           segment(L"1", L"b", second) + L"</Segmentation></MiningModel></PMML>";
}

TEST(EnsembleTexts, OtherMakersTextsScoreAsTheySayOrAreRefused) {
    const auto shares = [](const WString& ofA, const WString& ofB) {
        return L"<ScoreDistribution value=\"a\" " + ofA + L"/><ScoreDistribution value=\"b\" " + ofB + L"/>";
    };
    const WString three = L"recordCount=\"3\"", one = L"recordCount=\"1\"", none = L"recordCount=\"0\"";
    const WString certain = L" probability=\"1\"", never = L" probability=\"0\"";
    const WString often = L" probability=\"0.75\"", seldom = L" probability=\"0.25\"";
    const WString mixed = shares(three, one), pure = shares(three, none);
    const WString told = shares(one + never, three + certain), averaged = shares(one + seldom, three + often);
    const LabelledTable data = labelledTable(60, 2);
    DataFrame row;
    row.append(DataFrameColumn(L"x", Vector{1.0}));
    const auto ofA = [&](auto model, const WString& text) {
        model.fromPMMLString(text);
        return model.posteriorProbability(row)(0, 0).toDouble();
    };
    const auto bagging = Classification::Bagging::Estimator().fit(data.features, data.target);
    const auto boosting = Classification::Boosting::Estimator().fit(data.features, data.target);
    // Votes that count alike, whatever the segments weigh.
    EXPECT_EQ(ofA(bagging, twoLeaves(L"majorityVote", mixed, averaged)), 0.5);
    // Votes with weights, whatever the members' probabilities.
    EXPECT_EQ(ofA(boosting, twoLeaves(L"weightedMajorityVote", mixed, averaged)), 0.75);
    EXPECT_THROW(ofA(bagging, twoLeaves(L"weightedMajorityVote", mixed, averaged)), UnsupportedPMMLFormat);
    // Weighted averages of probabilities that are votes, told or implied.
    for (const WString& first : {pure, shares(three + certain, one + never), WString()})
        EXPECT_EQ(ofA(boosting, twoLeaves(L"weightedAverage", first, told)), 0.75);
    for (const WString& other : {mixed, shares(three + often, one + seldom)})
        EXPECT_THROW(ofA(boosting, twoLeaves(L"weightedAverage", other, told)), UnsupportedPMMLFormat);
    EXPECT_THROW(ofA(boosting, twoLeaves(L"weightedAverage", pure, averaged)), UnsupportedPMMLFormat);
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
    WString huge = text;  // weights that are finite, their sum is not
    const std::size_t begin = huge.find(L"\"weights\":["), end = huge.find(L']', begin);
    EXPECT_THROW(model.fromJSONString(huge.replace(begin, end - begin, L"\"weights\":[1.5e308,1.5e308")),
                 UnsupportedJSONModel);
    EXPECT_EQ(model.toJSON(), text);
    EXPECT_THROW(model.fromLadonString(text), UnsupportedJSONModel);
}

TEST(EnsembleTexts, SegmentsWeighWhereTheirMethodSaysSo) {
    const LabelledTable data = labelledTable(60, 2);
    const auto withWeights = [](WString pmml, const WString& weight) {
        const WString segment = L"<Segment ";
        for (std::size_t at = pmml.find(segment); at != WString::npos; at = pmml.find(segment, at + 1)) {
            const std::size_t end = pmml.find(L'>', at), old = pmml.find(L" weight=\"", at);
            if (old < end) pmml.erase(old, pmml.find(L'"', old + 9) + 1 - old);
            pmml.insert(at + segment.size(), L"weight=\"" + weight + L"\" ");
        }
        return pmml;
    };
    auto bagging = Classification::Bagging::Estimator().setNumWeakLearners(3).fit(data.features, data.target);
    bagging.fromPMMLString(withWeights(bagging.toPMML(), L"5"));
    EXPECT_EQ(bagging.getLearnerWeights(), Vector(3, 1.0));

    auto boosting = Classification::Boosting::Estimator()
                        .setBaseEstimator(Classification::DecisionTree::Estimator().setMaxNumSplits(1))
                        .setNumWeakLearners(3);
    LabelledTable mixed = data;  // no single split tells the classes apart
    for (int row = 0; row < 60; row += 6) mixed.target(row) = WString(L"class 1");
    auto model = boosting.fit(mixed.features, mixed.target);
    ASSERT_EQ(model.getNumWeakLearners(), 3);
    const WString pmml = model.toPMML();
    for (const wchar_t* const bad : {L"1e308", L"-1", L"NaN", L"INF", L"x"})
        EXPECT_THROW(model.fromPMMLString(withWeights(pmml, bad)), UnsupportedPMMLFormat) << bad;
    model.fromPMMLString(withWeights(pmml, L"0.25"));
    EXPECT_EQ(model.getLearnerWeights(), Vector(3, 0.25));
    const std::size_t begin = pmml.find(L"<Segment "), end = pmml.find(L"</Segmentation>");
    EXPECT_THROW(model.fromPMMLString(WString(pmml).erase(begin, end - begin)), UnsupportedPMMLFormat);
    EXPECT_EQ(model.getLearnerWeights(), Vector(3, 0.25));
}

}  // namespace
}  // namespace Tessel
