#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/data/convert.h>
#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "scratch_folder.h"
#include "supervised/tables.h"

// What holds for the texts of every supervised family; a new one joins by its name in the list of types.

namespace Tessel {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

template <class Estimator>
class ModelTexts : public testing::Test {};
using Families = testing::Types<Classification::NaiveBayes::Estimator,
                                Classification::DecisionTree::Estimator, Classification::Bagging::Estimator,
                                Classification::Boosting::Estimator, Classification::RandomTrees::Estimator,
                                Regression::DecisionTree::Estimator, Regression::Bagging::Estimator,
                                Regression::Boosting::Estimator, Regression::RandomTrees::Estimator>;
TYPED_TEST_SUITE(ModelTexts, Families);

template <class Model>
constexpr bool kIsClassifier = std::is_base_of_v<Supervised::Classification::Modelable, Model>;

const WString kCities[] = {L"New York", L"Zürich", L"<a & b>", L"東京", L" 7", L"it's"};
const WString kClasses[] = {L"3", L"no answer", L"Ä"};

/// Numbers with missing cells and many digits, categories with blanks, letters of many scripts and XML's own
/// signs, and a numeric column; the classes may look like numbers.
DataFrame features(int numRows, unsigned seed) {
    Vector width, height;
    StringVector city;
    Testing::Noise noise(seed);
    for (int row = 0; row < numRows; ++row) {
        width.push_back(row % 11 == 3 ? kNan : noise() * 100.0 / 3.0);
        height.push_back(std::exp(20.0 * noise() - 10.0));
        city.push_back(row % 13 == 5 ? WString() : kCities[static_cast<int>(noise() * 6.0) % 6]);
    }
    DataFrame table(L"rooms");
    table.append(DataFrameColumn(L"room width", width));
    table.append(DataFrameColumn(L"height", height));
    table.append(DataFrameColumn(L"city & state", city));
    return table;
}

template <class Estimator>
auto fitted(int numClasses, const Estimator& estimator = {}) {
    const DataFrame table = features(300, 1);
    StringVector labels;
    Vector numbers;
    for (int row = 0; row < table.getNumRows(); ++row) {
        const double signal = table(row, 1).toDouble() > 1.0 ? 1.0 : 0.0;
        const double number = signal + (table(row, 2).toString() == kCities[1] ? 1.0 : 0.0) + 0.1 * (row % 7);
        numbers.push_back(number / 3.0);
        labels.push_back(kClasses[static_cast<int>(number) % numClasses]);
    }
    const DataFrameColumn classes(L"answer", labels), target(L"answer", numbers);
    return estimator.fit(table, kIsClassifier<decltype(estimator.fit(table, target))> ? classes : target);
}

/// Rows that training had not: missing everywhere, unseen and blank categories, infinite numbers.
DataFrame strangers() {
    DataFrame table = features(200, 2);
    for (int row = 0; row < 40; ++row) {
        if (row % 2 == 0) table(row, 0) = kNan;
        if (row % 3 == 0) table(row, 1) = row % 6 == 0 ? kNan : std::numeric_limits<double>::infinity();
        if (row % 5 == 0) table(row, 2) = row % 10 == 0 ? L"Atlantis" : L"";
    }
    return table;
}

template <class Model>
void expectSameScores(const Model& model, const Model& read, const char* format) {
    for (const DataFrame& table : {features(300, 1), strangers()}) {
        EXPECT_EQ(read.predict(table).toString(), model.predict(table).toString()) << format;
        const auto same = [&](const DataFrame& a, const DataFrame& b) {
            ASSERT_EQ(a.getColNames(), b.getColNames());
            for (int column = 0; column < a.getNumCols(); ++column) {
                const Vector x = a(Util::all, column).toDoubleVector(),
                             y = b(Util::all, column).toDoubleVector();
                ASSERT_EQ(x.elements(), y.elements()) << format << ", column " << column;
            }
        };
        if constexpr (kIsClassifier<Model>)
            same(read.posteriorProbability(table), model.posteriorProbability(table));
        else
            same(read.predict(table), model.predict(table));
    }
}

/// A text without the time at which it was written.
WString timeless(WString pmml) {
    const std::size_t begin = pmml.find(L"<Timestamp>"), end = pmml.find(L"</Timestamp>");
    return begin == WString::npos ? pmml : pmml.erase(begin, end - begin);
}

template <class Model>
void expectRoundTrips(const Model& model, const Model& other) {
    Model read = other;
    read.fromPMMLString(model.toPMML());
    expectSameScores(model, read, "PMML");
    EXPECT_EQ(timeless(read.toPMML()), timeless(model.toPMML()));
    EXPECT_EQ(read.getColNames(), model.getColNames());
    EXPECT_EQ(read.getTargetColName(), L"answer");
    EXPECT_EQ(read.getName(), model.getName());

    Model fromJSON = other;
    fromJSON.fromJSONString(model.toJSON());
    expectSameScores(model, fromJSON, "JSON");
    EXPECT_EQ(fromJSON.toJSON(), model.toJSON());
    EXPECT_EQ(timeless(fromJSON.toPMML()), timeless(model.toPMML()));
    EXPECT_EQ(fromJSON.toString(), model.toString()) << "JSON holds all that reports tell";
    EXPECT_EQ(fromJSON.getRowNames(), model.getRowNames());

    Model fromLadon = other;
    fromLadon.fromLadonString(model.toLadon());
    expectSameScores(model, fromLadon, "Ladon");
    EXPECT_EQ(fromLadon.toLadon(), model.toLadon());
}

TYPED_TEST(ModelTexts, RoundTripsScoreBitForBit) {
    const auto other = fitted<TypeParam>(2);
    for (const int numClasses : {2, 3}) {
        auto model = fitted<TypeParam>(numClasses);
        model.setName(L"Räume \"1\"");
        expectRoundTrips(model, other);
    }
}

TYPED_TEST(ModelTexts, PriorsAndCutOffSurvive) {
    using Model = decltype(fitted<TypeParam>(2));
    if constexpr (kIsClassifier<Model>) {
        const auto other = fitted<TypeParam>(2);
        TypeParam estimator;
        estimator.setPriorProb(kClasses[0], 1.0 / 3.0).setPriorProb(kClasses[1], 2.0 / 3.0);
        estimator.setSuccessClass(kClasses[1]).setSuccessProbability(0.137);
        const Model model = fitted<TypeParam>(2, estimator);
        expectRoundTrips(model, other);
        Model read = other;
        read.fromPMMLString(model.toPMML());
        EXPECT_EQ(read.getSuccessClass(), kClasses[1]);
        EXPECT_EQ(read.getSuccessProbability(), 0.137);
        EXPECT_EQ(read.priorProbability().toString(), model.priorProbability().toString());
    }
}

TYPED_TEST(ModelTexts, FilesHoldTheTexts) {
    const auto model = fitted<TypeParam>(3);
    auto read = fitted<TypeParam>(2);
    const ScratchFolder folder;
    const auto path = [&](const char* name) { return folder.wide(name); };
    model.toPMML(path("model.pmml"));
    read.fromPMMLFile(path("model.pmml"));
    expectSameScores(model, read, "PMML file");
    EXPECT_EQ(timeless(PMML::Importable::fromPMMLFileToString(path("model.pmml"))), timeless(model.toPMML()));
    model.toJSON(path("model.json"));
    read.fromJSONFile(path("model.json"));
    expectSameScores(model, read, "JSON file");
    model.toLadon(path("model.ladon"));
    read.fromLadonFile(path("model.ladon"));
    expectSameScores(model, read, "Ladon file");
    EXPECT_THROW(read.fromPMMLFile(path("none.pmml")), FileNotFound);
    EXPECT_THROW(read.fromJSONFile(path("none.json")), FileNotFound);
    EXPECT_THROW(read.fromLadonFile(path("none.ladon")), FileNotFound);
    EXPECT_THROW(model.toPMML(path("no such folder/model.pmml")), UnableToWriteFile);
    EXPECT_THROW(model.toJSON(path("no such folder/model.json")), UnableToWriteFile);
}

TYPED_TEST(ModelTexts, KindTestsTellWhatATextHolds) {
    const auto model = fitted<TypeParam>(2);
    constexpr bool isClassifier = kIsClassifier<std::remove_cvref_t<decltype(model)>>;
    const WString pmml = model.toPMML(), json = model.toJSON(), ladon = model.toLadon();
    EXPECT_EQ(PMML::Importable::isClassifier(pmml), isClassifier);
    EXPECT_EQ(PMML::Importable::isRegressor(pmml), !isClassifier);
    EXPECT_TRUE(PMML::Importable::isPredictor(pmml));
    EXPECT_FALSE(PMML::Importable::isClusterizer(pmml) || PMML::Importable::isForecaster(pmml) ||
                 PMML::Importable::isTransformer(pmml));
    EXPECT_EQ(JSONModel::Importable::isClassifier(json), isClassifier);
    EXPECT_EQ(JSONModel::Importable::isRegressor(json), !isClassifier);
    EXPECT_TRUE(JSONModel::Importable::isPredictor(json));
    EXPECT_FALSE(JSONModel::Importable::isTransformer(json));
    EXPECT_EQ(Ladon::Importable::isClassifier(ladon), isClassifier);
    EXPECT_TRUE(Ladon::Importable::isPredictor(ladon));
    EXPECT_TRUE(JSONModel::Importable::isTransformer(L"{\"type\":\"textMining\"}"));
    EXPECT_TRUE(JSONModel::Importable::isTransformer(L"{\"type\":\"transformation\"}"));
    EXPECT_THROW(JSONModel::Importable::isClassifier(L"{}"), UnsupportedJSONModel);
    EXPECT_THROW(PMML::Importable::isClassifier(L"no XML"), MalformedPMML);
}

TYPED_TEST(ModelTexts, WrongTextsAreRefusedAndChangeNothing) {
    auto model = fitted<TypeParam>(2);
    const WString before = model.toJSON();
    const WString pmml = model.toPMML(), json = model.toJSON(), ladon = model.toLadon();
    const auto replaced = [](WString text, const WString& from, const WString& to) {
        const std::size_t at = text.find(from);
        EXPECT_NE(at, WString::npos);
        return text.replace(at, from.size(), to);
    };
    for (const WString& text : {WString(), WString(L"<PMML>"), pmml.substr(0, pmml.size() / 2)})
        EXPECT_THROW(model.fromPMMLString(text), MalformedPMML);
    for (const WString& text : {WString(L"<PMML/>"), replaced(pmml, L"functionName=\"", L"functionName=\"x"),
                                replaced(pmml, L"description=\"", L"description=\"x"),
                                replaced(pmml, L"usageType=\"predicted\"", L""),
                                replaced(pmml, L"<DataDictionary", L"<DataDictionery")})
        EXPECT_THROW(model.fromPMMLString(text), UnsupportedPMMLFormat);
    for (const WString& text : {WString(), WString(L"{"), WString(L"[]"), json.substr(0, json.size() / 2),
                                replaced(json, L"\"type\":\"", L"\"type\":\"x"),
                                replaced(json, L"\"algorithm\":\"", L"\"algorithm\":\"x"),
                                replaced(json, L"\"variables\"", L"\"variable\""), ladon})
        EXPECT_THROW(model.fromJSONString(text), UnsupportedJSONModel);
    for (const WString& text : {WString(), json, replaced(ladon, L"\"objectType\":\"", L"\"objectType\":\"x"),
                                replaced(ladon, L"\"fittedModel\"", L"\"model\"")})
        EXPECT_THROW(model.fromLadonString(text), UnsupportedJSONModel);
    EXPECT_EQ(model.toJSON(), before);
}

TYPED_TEST(ModelTexts, ReadingLeavesModelsThatWereSharedAlone) {
    auto model = fitted<TypeParam>(2);
    const auto shared = model;
    const WString before = shared.toJSON();
    model.fromPMMLString(fitted<TypeParam>(3, TypeParam().setName(L"other")).toPMML());
    EXPECT_EQ(shared.toJSON(), before);
    EXPECT_EQ(model.getName(), L"other");
}

/// Damages every attribute of a text in turn: whatever comes of it, it is a model or the one error.
TYPED_TEST(ModelTexts, DamagedAttributesScoreOrAreRefused) {
    auto model = fitted<TypeParam>(2);
    const WString pmml = model.toPMML();
    const DataFrame table = features(20, 3);
    std::size_t numRead = 0, numRefused = 0, numAttributes = 0;
    const std::size_t begin = pmml.find(L"<Data");
    for (std::size_t at = pmml.find(L"=\"", begin); at != WString::npos; at = pmml.find(L"=\"", at + 2))
        ++numAttributes;
    const std::size_t step = 1 + numAttributes * pmml.size() / 30'000'000;  // a share of the large ones
    for (std::size_t at = pmml.find(L"=\"", begin), i = 0; at != WString::npos;
         at = pmml.find(L"=\"", at + 2), ++i) {
        if (i % step != 0) continue;
        const std::size_t name = pmml.rfind(L' ', at), end = pmml.find(L'"', at + 2) + 1;
        const WString attribute = pmml.substr(name, end - name);
        for (const WString& damaged :
             {WString(), attribute + attribute, WString(pmml.substr(name, at + 2 - name) + L"\""),
              WString(pmml.substr(name, at + 2 - name) + L"99999999999999999999\""),
              WString(pmml.substr(name, at + 2 - name) + L"-1\""),
              WString(pmml.substr(name, at + 2 - name) + L"NaN\"")}) {
            WString text = pmml;
            text.replace(name, attribute.size(), damaged);
            auto read = model;
            try {
                read.fromPMMLString(text);
                read.predict(table);
                ++numRead;
            } catch (const UnsupportedPMMLFormat&) {
                ++numRefused;
            } catch (const NotAValidColName&) {
                ++numRead;  // of other columns
            }
        }
    }
    EXPECT_GT(numRead, 0u);
    EXPECT_GT(numRefused, 10u);
}

/// A regression tree of one split a level as a text of another maker.
WString chainText(int numLevels) {
    const WString head =
        L"<PMML version=\"4.2\"><Header description=\"TreeModel\"/><DataDictionary>"
        L"<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"/>"
        L"<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/></DataDictionary>"
        L"<TreeModel functionName=\"regression\" missingValueStrategy=\"defaultChild\"><MiningSchema>"
        L"<MiningField name=\"x\"/><MiningField name=\"y\" usageType=\"target\"/></MiningSchema>";
    WString nodes, ends;
    for (int level = 0; level < numLevels; ++level) {
        const WString number = std::to_wstring(level), deeper = number + L".5";
        const WString above = std::to_wstring(level - 1) + L".5";
        nodes +=
            L"<Node id=\"r" + number + L"\" score=\"" + number + L"\" defaultChild=\"l" + number + L"\">" +
            (level == 0
                 ? WString(L"<True/>")
                 : L"<SimplePredicate field=\"x\" operator=\"greaterThan\" value=\"" + above + L"\"/>") +
            L"<Node id=\"l" + number + L"\" score=\"" + number +
            L"\"><SimplePredicate field=\"x\" operator=\"lessOrEqual\" value=\"" + deeper + L"\"/></Node>";
        ends += L"</Node>";
    }
    const WString last = std::to_wstring(numLevels - 1) + L".5";
    nodes += L"<Node id=\"end\" score=\"-1\"><SimplePredicate field=\"x\" operator=\"greaterThan\" value=\"" +
             last + L"\"/></Node>";
    return head + nodes + ends + L"</TreeModel></PMML>";
}

TEST(TreeTexts, TreesOfAnyDepthSurvive) {
    constexpr int kNumLevels = 10000;
    DataFrame table;
    table.append(
        DataFrameColumn(L"x", Vector{-1.0, 0.5, std::nextafter(0.5, 1.0), 9999.4, 9999.6, 77.0, kNan}));
    const Vector expected{0.0, 0.0, 1.0, 9999.0, -1.0, 77.0, 0.0};
    auto model = fitted<Regression::DecisionTree::Estimator>(2);
    model.fromPMMLString(chainText(kNumLevels));
    EXPECT_EQ(model.predict(table)(Util::all, 0).toDoubleVector(), expected);
    const WString pmml = model.toPMML(), json = model.toJSON(), ladon = model.toLadon();
    model.fromPMMLString(pmml);
    EXPECT_EQ(model.predict(table)(Util::all, 0).toDoubleVector(), expected);
    model.fromJSONString(json);
    EXPECT_EQ(model.predict(table)(Util::all, 0).toDoubleVector(), expected);
    EXPECT_EQ(model.toJSON(), json);
    model.fromLadonString(ladon);
    EXPECT_EQ(model.toLadon(), ladon);
}

/// A regression tree whose root has these children, and sends missing values to "low".
WString treeOf(const WString& children) {
    const WString chain = chainText(1);
    const WString root = L"<Node id=\"root\" score=\"0\" defaultChild=\"low\"><True/>";
    return chain.substr(0, chain.find(L"<Node")) + root + children + L"</Node></TreeModel></PMML>";
}

TEST(TreeTexts, ChildrenAreTheTwoSidesOfOneComparisonInEitherOrder) {
    auto model = fitted<Regression::DecisionTree::Estimator>(2);
    DataFrame table;
    table.append(DataFrameColumn(L"x", Vector{-1.0, 1.0, kNan}));
    const auto node = [](const WString& id, const WString& score, const WString& predicate) {
        return L"<Node id=\"" + id + L"\" score=\"" + score + L"\">" + predicate + L"</Node>";
    };
    const auto comparison = [](const WString& name, const WString& value) {
        return L"<SimplePredicate field=\"x\" operator=\"" + name + L"\" value=\"" + value + L"\"/>";
    };
    const WString low = node(L"low", L"1", comparison(L"lessThan", L"0"));
    const WString high = node(L"high", L"2", comparison(L"greaterOrEqual", L"0"));
    const WString always = node(L"high", L"2", L"<True/>");
    for (const WString& children : {low + high, high + low, low + always, L"<Extension/>" + low + high}) {
        model.fromPMMLString(treeOf(children));
        EXPECT_EQ(model.predict(table)(Util::all, 0).toDoubleVector(), (Vector{1.0, 2.0, 1.0}));
    }
    const WString before = model.toJSON();
    const WString behind = L"<ScoreDistribution value=\"1\" recordCount=\"1\"/>";
    for (const WString& children :
         {low, low + high + high, always + low, high + always, high + high, low + low, low + high + behind,
          low + node(L"high", L"2", comparison(L"greaterOrEqual", L"1")),
          low + node(L"high", L"2", comparison(L"greaterThan", L"0")), low + node(L"high", L"2", L""),
          node(L"other", L"1", comparison(L"lessThan", L"0")) + high})
        EXPECT_THROW(model.fromPMMLString(treeOf(children)), UnsupportedPMMLFormat)
            << Convert::toUtf8(children);
    EXPECT_EQ(model.toJSON(), before);
}

TEST(TreeTexts, SubtreesThatCannotBeAreRefused) {
    auto model = fitted<Regression::DecisionTree::Estimator>(2);
    model.fromPMMLString(chainText(100));
    const WString json = model.toJSON();
    const auto refuses = [&](const WString& from, const WString& to) {
        WString text = json;
        const std::size_t at = text.find(from);
        ASSERT_NE(at, WString::npos);
        EXPECT_THROW(model.fromJSONString(text.replace(at, from.size(), to)), UnsupportedJSONModel);
    };
    refuses(L"\"subtrees\":[", L"\"subtrees\":[{\"id\":65},");  // twice
    refuses(L"\"subtrees\"", L"\"trees\"");
    refuses(L"\"leftChild\"", L"\"firstChild\"");
    refuses(L"\"lessThan\"", L"\"isIn\"");
    refuses(L"\"field\":\"x\"", L"\"field\":\"z\"");
    refuses(L"\"recordCount\":0", L"\"recordCount\":0.5");
    refuses(L"\"gain\":[", L"\"gain\":[1,");
}

TEST(TreeTexts, OtherMakersTextsScoreAsTheySayOrAreRefused) {
    const auto model = fitted<Regression::DecisionTree::Estimator>(2);
    const auto refused = [&](const WString& from, const WString& to, const char* reason) {
        WString text = chainText(2);
        const std::size_t at = text.find(from);
        ASSERT_NE(at, WString::npos);
        try {
            auto read = model;
            read.fromPMMLString(text.replace(at, from.size(), to));
            ADD_FAILURE() << reason;
        } catch (const UnsupportedPMMLFormat& error) {
            EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
        }
    };
    refused(L"\"defaultChild\"", L"\"lastPrediction\"", "strategies for missing values");
    refused(L"defaultChild=\"l0\"", L"defaultChild=\"r1\"", "sends missing values");
    refused(L"operator=\"lessOrEqual\"", L"operator=\"equal\"", "operator equal");
    refused(L"operator=\"lessOrEqual\"", L"operator=\"lessThan\"", "two sides of one comparison");
    refused(L"<SimplePredicate", L"<CompoundPredicate", "CompoundPredicate");
    refused(L"field=\"x\"", L"field=\"z\"", "none of its inputs");
    refused(L"<MiningField name=\"x\"/>", L"", "none of its inputs");
    refused(L"<MiningField name=\"x\"/>", L"<MiningField name=\"x\" missingValueReplacement=\"0\"/>",
            "replaces missing values");
    refused(L"<MiningField name=\"x\"/>", L"<MiningField name=\"x\" outliers=\"asMissingValues\"/>",
            "or outliers");
    refused(L"<MiningField name=\"x\"/>", L"<MiningField name=\"x\" optype=\"categorical\"/>",
            "changes the type");
    refused(L"<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"/>",
            L"<DataField name=\"x\" optype=\"continuous\" dataType=\"double\">"
            L"<Value value=\"-99\" property=\"missing\"/></DataField>",
            "stand for missing");
    refused(L"score=\"0\"", L"", "no score");
    refused(L"<True/>", L"", "no predicate");
}

/// What a text leaves out of tables of `numClasses` classes must not take memory that the text is too short
/// for: here 7,000 nodes, members or categories, each by 7,000 classes.
TEST(TreeTexts, ShortTextsCannotStandForHugeTables) {
    constexpr int kMany = 7000;
    const auto repeated = [](const auto& textOf) {
        WString text;
        for (int i = 0; i < kMany; ++i) text += textOf(std::to_wstring(i));
        return text;
    };
    const WString values = repeated([](const WString& i) { return L"<Value value=\"" + i + L"\"/>"; });
    const WString schema =
        L"<MiningSchema><MiningField name=\"x\"/><MiningField name=\"y\" "
        L"usageType=\"target\"/></MiningSchema>";
    const auto document = [&](const WString& element, const WString& body) {
        return L"<PMML version=\"4.2\"><Header description=\"" + element +
               L"\"/><DataDictionary><DataField name=\"x\" optype=\"categorical\" dataType=\"string\">" +
               values + L"</DataField><DataField name=\"y\" optype=\"categorical\" dataType=\"string\">" +
               values + L"</DataField></DataDictionary><" + element +
               L" functionName=\"classification\" missingValueStrategy=\"defaultChild\" threshold=\"0.1\">" +
               schema + body + L"</" + element + L"></PMML>";
    };
    const auto predicate = [](const wchar_t* comparison, const WString& value) {
        return L"<SimplePredicate field=\"x\" operator=\"" + WString(comparison) + L"\" value=\"" + value +
               L"\"/>";
    };
    WString nodes, ends;
    for (int i = 0; i < kMany / 2; ++i) {
        const WString number = std::to_wstring(i), above = std::to_wstring(i - 1);
        nodes += L"<Node score=\"0\" defaultChild=\"l" + number + L"\">" +
                 (i == 0 ? WString(L"<True/>") : predicate(L"notEqual", above)) +
                 L"<Node score=\"0\" id=\"l" + number + L"\">" + predicate(L"equal", number) + L"</Node>";
        ends += L"</Node>";
    }
    nodes +=
        L"<Node score=\"0\">" + predicate(L"notEqual", std::to_wstring(kMany / 2 - 1)) + L"</Node>" + ends;
    const WString leaf = L"<TreeModel functionName=\"classification\">" + schema +
                         L"<Node score=\"0\"><True/></Node></TreeModel>";
    const auto refuses = [&](auto model, const WString& text) {
        try {
            model.fromPMMLString(text);
            ADD_FAILURE();
        } catch (const UnsupportedPMMLFormat& error) {
            EXPECT_NE(std::string(error.what()).find("Model text"), std::string::npos) << error.what();
        }
    };
    refuses(fitted<Classification::DecisionTree::Estimator>(2), document(L"TreeModel", nodes));
    refuses(fitted<Classification::NaiveBayes::Estimator>(2),
            document(L"NaiveBayesModel", L"<BayesInputs><BayesInput fieldName=\"x\"/></BayesInputs>"));
    refuses(fitted<Classification::Bagging::Estimator>(2),
            document(L"MiningModel",
                     L"<Segmentation multipleModelMethod=\"majorityVote\">" + repeated([&](const WString&) {
                         return L"<Segment><True/>" + leaf + L"</Segment>";
                     }) + L"</Segmentation>"));
}

TEST(TreeTexts, CategoriesThatTheFormatCannotHoldAreRefusedAtWriting) {
    for (const wchar_t* label : {L"say \"no\"", L"  ", L"bell \a"}) {
        DataFrame table;
        table.append(DataFrameColumn(L"word", StringVector{label, L"a", label, L"a"}));
        const auto model =
            Regression::DecisionTree::Estimator().fit(table, DataFrameColumn(L"y", Vector{1, 2, 1, 2}));
        EXPECT_THROW(model.toPMML(), ConstraintViolation) << label;
        auto read = model;
        read.fromJSONString(model.toJSON());
        EXPECT_EQ(read.predict(table).toString(), model.predict(table).toString());
    }
}

}  // namespace
}  // namespace Tessel
