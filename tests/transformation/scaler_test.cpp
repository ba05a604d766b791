#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/scaler.h>

#include "serialization/pmml/document.h"

namespace Tessel::Scaler {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// An index column, two numeric columns with missing cells, a constant one and a text column.
DataFrame sampleTable() {
    DataFrame table(L"sample");
    table.append(DataFrameColumn(L"id", Vector{11, 12, 13, 14, 15}));
    table.append(DataFrameColumn(L"x", Vector{1, 2, kNaN, 3, 6}));
    table.append(DataFrameColumn(L"colour", StringVector{L"red", L"", L"blue", L"red", L"red"}));
    table.append(DataFrameColumn(L"größe", Vector{0.1, -0.2, 0.3, 1e-3, kNaN}));
    table.append(DataFrameColumn(L"same", Vector{4, 4, 4, 4, 4}));
    table.setIndexedColNames({L"id"});
    table.setRowNames({L"a", L"b", L"c", L"d", L"e"});
    return table;
}

Vector column(const DataFrame& table, const WString& name) { return table(Util::all, name).toDoubleVector(); }

/// The same bits, or missing in both.
void expectSame(const Vector& actual, const Vector& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
        EXPECT_TRUE(actual[i] == expected[i] || (std::isnan(actual[i]) && std::isnan(expected[i])))
            << i << ": " << actual[i] << " is not " << expected[i];
}

void expectSameTables(const DataFrame& actual, const DataFrame& expected) {
    ASSERT_EQ(actual.getColNames(), expected.getColNames());
    EXPECT_EQ(actual.toJson(), expected.toJson());  // numbers are written to the last bit
}

TEST(Scaler, ScalesNumericColumnsAndLeavesTheRest) {
    const DataFrame table = sampleTable();
    struct Case {
        ScalingType type;
        double shift,
            scale;  // of x, whose values are 1, 2, 3, 6: mean 3, squares of deviations 14, of values 50
        double ofConstant;
    };
    const Case cases[] = {{ScalingType::STANDARDIZATION, 3, 1 / std::sqrt(14.0 / 3), 0},
                          {ScalingType::NORMALIZATION, 1, 0.2, 0},
                          {ScalingType::SHIFT, 3, 1, 0},
                          {ScalingType::UNIT_NORM, 0, 1 / std::sqrt(50.0), 1 / std::sqrt(5.0)}};
    for (const Case& c : cases) {
        const Model model = Estimator().setScalingType(c.type).fit(table);
        EXPECT_EQ(model.getColNames(), (StringVector{L"x", L"größe", L"same"}));
        EXPECT_EQ(model.getIndexColNames(), StringVector{L"id"});
        EXPECT_TRUE(model.isScaled(L"x"));
        EXPECT_FALSE(model.isScaled(L"colour") || model.isScaled(L"id") || model.isScaled(L"none"));
        EXPECT_EQ(model.getShift(L"x"), c.shift);
        EXPECT_DOUBLE_EQ(model.getScale(L"x"), c.scale);
        EXPECT_THROW(model.getShift(L"colour"), NotAValidColName);

        const DataFrame scaled = model.transform(table);
        EXPECT_EQ(scaled.getName(), L"sample");
        EXPECT_EQ(scaled.getColNames(), table.getColNames());
        EXPECT_EQ(scaled.getRowNames(), table.getRowNames());
        EXPECT_EQ(scaled.getIndexedColNames(), StringVector{L"id"});
        EXPECT_EQ(column(scaled, L"id"), column(table, L"id"));
        EXPECT_EQ(scaled(Util::all, L"colour").toStringVector(),
                  table(Util::all, L"colour").toStringVector());
        EXPECT_EQ(scaled(L"d", L"x").toDouble(), (3 - c.shift) * model.getScale(L"x"));
        EXPECT_TRUE(scaled(L"c", L"x").isMissing());
        EXPECT_DOUBLE_EQ(scaled(L"a", L"same").toDouble(), c.ofConstant);
        EXPECT_EQ(column(table, L"same"), Vector(5, 4.0));  // the table itself stays

        const DataFrame back = model.inverseTransform(scaled);
        for (const WString name : {L"x", L"größe", L"same"})
            for (int row = 0; row < 5; ++row) {
                const double expected = table(row, name).toDouble(), actual = back(row, name).toDouble();
                if (std::isnan(expected))
                    EXPECT_TRUE(std::isnan(actual));
                else
                    EXPECT_NEAR(actual, expected, 1e-14);
            }
        expectSameTables(Estimator().setScalingType(c.type).fitTransform(table), scaled);
    }
}

TEST(Scaler, ScalesOtherTablesByName) {
    const Model model =
        Estimator().setColumns({L"größe", L"x"}).setScalingType(ScalingType::SHIFT).fit(sampleTable());
    EXPECT_EQ(model.getColNames(), (StringVector{L"größe", L"x"}));
    DataFrame table;
    table.append(DataFrameColumn(L"x", Vector{3, 10, kNaN}));
    table.append(DataFrameColumn(L"more", Vector{1, 2, 3}));
    table.append(
        DataFrameColumn(L"größe", StringVector{L"", L"", L""}));  // as an empty column of a file is read
    expectSame(column(model.transform(table), L"x"), {0, 7, kNaN});
    expectSame(column(model.transform(table), L"more"), {1, 2, 3});
    expectSame(column(model.transform(table), L"größe"), {kNaN, kNaN, kNaN});
    // Rows taken out of a table, in another order and twice.
    expectSame(column(model.transform(table({1, 0, 1}, Util::all)), L"x"), {7, 0, 7});
    EXPECT_EQ(model.transform(table(IntVector{}, Util::all)).getNumRows(), 0);

    const DataFrame alone =
        Estimator().setScalingType(ScalingType::NORMALIZATION).fitTransform(table(Util::all, L"more"));
    expectSame(column(alone, L"more"), {0, 0.5, 1});
}

TEST(Scaler, RefusesBadTablesAndArguments) {
    const DataFrame table = sampleTable();
    EXPECT_THROW(Estimator().fit(DataFrame()), TooFewNumRows);
    EXPECT_THROW(Estimator().fit(table(IntVector{}, Util::all)), TooFewNumRows);
    EXPECT_THROW(Estimator().fit(table(Util::all, {L"id", L"colour"})), TooFewNumColumns);
    EXPECT_THROW(Estimator().setColumns({L"x", L"none"}).fit(table), NotAValidColName);
    EXPECT_THROW(Estimator().setColumns({L"colour"}).fit(table), NonNumericData);
    EXPECT_THROW(Estimator().setColumns({L"x", L"x"}).fit(table), DuplicateName);
    EXPECT_THROW(Estimator().setScalingType(static_cast<ScalingType>(4)).fit(table), ConstraintViolation);

    DataFrame infinite = table;
    infinite(1, L"x") = -kInfinity;
    for (const auto type : {ScalingType::STANDARDIZATION, ScalingType::NORMALIZATION, ScalingType::SHIFT,
                            ScalingType::UNIT_NORM})
        EXPECT_THROW(Estimator().setScalingType(type).fit(infinite), ConstraintViolation);
    EXPECT_NO_THROW(Estimator().setColumns({L"same"}).fit(infinite));

    DataFrame twice = table;
    twice.append(DataFrameColumn(L"x", Vector{1, 2, 3, 4, 5}));
    EXPECT_THROW(Estimator().fit(twice), DuplicateName);
    const Model model = Estimator().fit(table);
    EXPECT_THROW(model.transform(twice), DuplicateName);
    EXPECT_THROW(model.transform(table(Util::all, {L"x", L"same"})), NotAValidColName);
    EXPECT_THROW(model.inverseTransform(DataFrame()), NotAValidColName);
    DataFrame texts = table(Util::all, {L"größe", L"same"});
    texts.append(DataFrameColumn(L"x", StringVector{L"1", L"2", L"3", L"4", L"5"}));
    EXPECT_THROW(model.transform(texts), NonNumericData);

    EXPECT_THROW(Model({L"a"}, {1, 2}, {1}), NumElementsMismatch);
    EXPECT_THROW(Model({L"a"}, {1}, {}), NumElementsMismatch);
    EXPECT_THROW(Model({L"a", L"a"}, {1, 2}, {1, 2}), DuplicateName);
    EXPECT_THROW(Model({L""}, {1}, {2}), ConstraintViolation);
    EXPECT_THROW(Model({L"a"}, {kNaN}, {2}), ConstraintViolation);
    EXPECT_THROW(Model({L"a"}, {1}, {kInfinity}), ConstraintViolation);
}

TEST(Scaler, DescribesItself) {
    Estimator estimator;
    EXPECT_EQ(estimator.getName(), L"Rescaling");
    EXPECT_EQ(estimator.getScalingType(), ScalingType::STANDARDIZATION);
    EXPECT_EQ(getScalingTypeName(ScalingType::UNIT_NORM), L"Unit Norm");
    EXPECT_EQ(estimator.toLadon(),
              L"{\"objectType\":\"transformer\",\"type\":\"transformation\",\"algorithm\":\"rescaling\","
              L"\"parameters\":{}}");
    estimator.setScalingType(ScalingType::UNIT_NORM).setColumns({L"x"}).setName(L"mine");
    Estimator copy;
    copy.fromLadonString(estimator.toLadon());
    EXPECT_EQ(copy.getScalingType(), ScalingType::UNIT_NORM);
    EXPECT_EQ(copy.getColumns(), StringVector{L"x"});
    EXPECT_EQ(estimator.fit(sampleTable()).getName(), L"mine");
    estimator.reset();
    EXPECT_TRUE(estimator.getColumns().empty());

    const Model model({L"a", L"b"}, {1, 2}, {3, 4});
    const DataFrameVector report = model.toDataFrameVector();
    ASSERT_EQ(report.size(), 2u);
    EXPECT_EQ(report.at(L"Model: Rescaling")(L"#Columns", L"Value").toString(), L"2");
    EXPECT_EQ(report.at(L"Scaling")(L"b", L"Shift").toDouble(), 2);
    EXPECT_EQ(report.at(L"Scaling")(L"b", L"Scale").toDouble(), 4);
    EXPECT_EQ(Model().transform(sampleTable()).toJson(), sampleTable().toJson());
}

// ---- texts

/// Numbers that need all their digits, zeros of either sign, the smallest and the largest.
Model awkwardModel() {
    Model model({L"a <&\"> b", L"größe", L"zero", L"tiny", L"x*"},
                {1.0 / 3, -0.1, -0.0, 4.9e-324, -123456789.125},
                {2.0 / 7, 1e308, 0.0, 2.2250738585072014e-308, -5e-324});
    model.setName(L"my \"scaler\"");
    return model;
}

void expectSameModels(const Model& actual, const Model& expected) {
    EXPECT_EQ(actual.getName(), expected.getName());
    EXPECT_EQ(actual.getColNames(), expected.getColNames());
    for (const WString& name : expected.getColNames()) {
        EXPECT_EQ(actual.getShift(name), expected.getShift(name)) << Convert::toUtf8(name);
        EXPECT_EQ(std::signbit(actual.getShift(name)), std::signbit(expected.getShift(name)));
        EXPECT_EQ(actual.getScale(name), expected.getScale(name)) << Convert::toUtf8(name);
    }
}

TEST(Scaler, TextsKeepEveryBit) {
    const DataFrame table = sampleTable();
    for (const Model& model : {awkwardModel(), Estimator().fit(table), Model()}) {
        Model json, ladon, pmml;
        json.fromJSONString(model.toJSON());
        ladon.fromLadonString(model.toLadon());
        pmml.fromPMMLString(model.toPMML());
        for (const Model& copy : {json, ladon, pmml}) expectSameModels(copy, model);
        EXPECT_EQ(json.toJSON(), model.toJSON());
        EXPECT_EQ(ladon.toLadon(), model.toLadon());
        EXPECT_EQ(json.getIndexColNames(), model.getIndexColNames());
    }
    // JSON also holds what two points cannot tell.
    const Model far({L"a"}, {1e300}, {1e-300});
    Model copy;
    copy.fromJSONString(far.toJSON());
    expectSameModels(copy, far);
    EXPECT_THROW(far.toPMML(), ConstraintViolation);
    EXPECT_THROW(far.toPMML(far), ConstraintViolation);
}

TEST(Scaler, TextsAreLaidOutAsOthersExpect) {
    const Model model({L"x", L"y"}, {3, -1}, {0.5, 2});
    PMML::Document document;
    document.parse(model.toPMML());
    EXPECT_EQ(document.getModelName(), L"TransformationModel");
    EXPECT_EQ(document.getAlgorithmName(), L"Rescaling");
    EXPECT_TRUE(document.isTransformer());
    EXPECT_TRUE(PMML::Importable::isTransformer(model.toPMML()));
    EXPECT_TRUE(JSONModel::Importable::isTransformer(model.toJSON()));
    EXPECT_TRUE(Ladon::Importable::isTransformer(model.toLadon()));
    EXPECT_EQ(document.getUnsupervisedFeatureNames(), (StringVector{L"x", L"y"}));
    EXPECT_EQ(document.getActiveFeatureNames(), (StringVector{L"x", L"y"}));
    EXPECT_EQ(document.getTargetColName(), L"");
    EXPECT_NE(
        model.toPMML().find(
            L"\t\t\t<DerivedField optype=\"continuous\" dataType=\"double\" name=\"y*\" displayName=\"y\">\n"
            L"\t\t\t\t<NormContinuous field=\"y\">\n"
            L"\t\t\t\t\t<LinearNorm orig=\"-1\" norm=\"0\"/>\n"
            L"\t\t\t\t\t<LinearNorm orig=\"0\" norm=\"2\"/>\n"),
        WString::npos);
    EXPECT_EQ(model.toJSON(),
              L"{\"type\":\"transformation\",\"algorithm\":\"rescaling\",\"modelName\":\"Rescaling\","
              L"\"targetColumn\":\"\",\"variables\":[\"x\",\"y\"],\"categoricalVariables\":[],"
              L"\"indexColumns\":[],\"shifts\":[3,-1],\"scales\":[0.5,2]}");
}

WString replaced(WString text, const WString& what, const WString& by) {
    const std::size_t start = text.find(what);
    EXPECT_NE(start, WString::npos) << Convert::toUtf8(what);
    return text.replace(start, what.size(), by);
}

TEST(Scaler, ReadsLinesOfOtherMakers) {
    // Two points anywhere on the line y = 2 x - 6, which are not the library's own.
    WString text = Model({L"x"}, {3}, {0.5}).toPMML();
    text = replaced(text, L"orig=\"3\" norm=\"0\"", L"orig=\"5\" norm=\"4\"");
    text = replaced(text, L"orig=\"4\" norm=\"0.5\"", L"orig=\"1\" norm=\"-4\"");
    Model model;
    model.fromPMMLString(text);
    EXPECT_EQ(model.getShift(L"x"), 3);
    EXPECT_EQ(model.getScale(L"x"), 2);
}

TEST(Scaler, RefusesOtherTextsAndStaysAsItWas) {
    const Model source({L"x", L"y"}, {3, -1}, {0.5, 2});
    const WString pmml = source.toPMML(), json = source.toJSON(), ladon = source.toLadon();
    struct Case {
        const wchar_t *what, *by;
    };
    Model model = awkwardModel();
    const Case pmmlCases[] = {
        {L"<PMML", L"<"},
        {L"algorithmName=\"Rescaling\"", L"algorithmName=\"TFIDF\""},
        {L"functionName=\"transformation\"", L"functionName=\"regression\""},
        {L"description=\"TransformationModel\"", L"description=\"TreeModel\""},
        {L"<NormContinuous field=\"y\"", L"<NormContinuous field=\"x\""},
        {L"<NormContinuous field=\"y\"", L"<NormContinuous field=\"z\""},
        {L"<NormContinuous field=\"y\"", L"<NormContinuous outliers=\"asExtremeValues\" field=\"y\""},
        {L"<NormContinuous field=\"y\"", L"<NormContinuous mapMissingTo=\"0\" field=\"y\""},
        {L"<NormContinuous field=\"y\"", L"<NormContinuous"},
        {L"<LinearNorm orig=\"-1\" norm=\"0\"/>", L""},
        {L"<MiningField name=\"y\"", L"<MiningField missingValueReplacement=\"0\" name=\"y\""},
        {L"orig=\"-1\"", L"orig=\"much\""},
        {L"orig=\"-1\"", L"orig=\"0\""},
        {L"orig=\"-1\"", L"orig=\"INF\""},
        {L"optype=\"continuous\" dataType=\"double\" name=\"y\"", L"optype=\"categorical\" name=\"y\""},
    };
    for (const Case& c : pmmlCases)
        EXPECT_THROW(model.fromPMMLString(replaced(pmml, c.what, c.by)), UnsupportedPMMLFormat)
            << Convert::toUtf8(c.by);
    const Case jsonCases[] = {
        {L"{", L""},
        {L"\"transformation\"", L"\"regression\""},
        {L"\"rescaling\"", L"\"tfIdf\""},
        {L"\"x\",\"y\"", L"\"x\",\"x\""},
        {L"\"x\",\"y\"", L"\"x\""},
        {L"\"x\",\"y\"", L"\"x\",\"\""},
        {L"\"x\",\"y\"", L"\"x\",1"},
        {L"[3,-1]", L"[3,null]"},
        {L"[3,-1]", L"[3]"},
        {L"[0.5,2]", L"[0.5,\"Infinity\"]"},
        {L"\"scales\"", L"\"factors\""},
    };
    for (const Case& c : jsonCases) {
        EXPECT_THROW(model.fromJSONString(replaced(json, c.what, c.by)), UnsupportedJSONModel)
            << Convert::toUtf8(c.by);
        EXPECT_THROW(model.fromLadonString(replaced(ladon, c.what, c.by)), UnsupportedJSONModel)
            << Convert::toUtf8(c.by);
    }
    EXPECT_THROW(model.fromLadonString(replaced(ladon, L"transformer", L"estimator")), UnsupportedJSONModel);
    expectSameModels(model, awkwardModel());
    // A copy shares what was fitted until one of the two reads a text.
    const Model copy = model;
    model.fromPMMLString(pmml);
    expectSameModels(copy, awkwardModel());
    expectSameModels(model, source);
}

// ---- models of scaled inputs

/// Numbers that tell the classes apart in part, and a text column.
struct Training {
    DataFrame features;
    DataFrameColumn target;
};
Training trainingSet() {
    Vector first, second;
    StringVector group, label;
    unsigned state = 99;
    const auto uniform = [&] {
        state = state * 1664525u + 1013904223u;
        return static_cast<double>(state >> 8) / 16777216.0;
    };
    for (int row = 0; row < 200; ++row) {
        const bool isYes = uniform() < 0.4;
        first.push_back(row % 17 == 3 ? kNaN : 1000.0 * uniform() + (isYes ? 700.0 : 0.0));
        second.push_back(0.01 * uniform() - (isYes ? 0.004 : 0.0));
        group.push_back(uniform() < 0.5 ? L"a" : L"b");
        label.push_back(isYes ? L"yes" : L"no");
    }
    Training training;
    training.features.append(DataFrameColumn(L"first", first));
    training.features.append(DataFrameColumn(L"group", group));
    training.features.append(DataFrameColumn(L"second", second));
    training.target = DataFrameColumn(L"label", label);
    return training;
}

template <class Estimator>
class ScaledInputs : public testing::Test {};
using Families =
    testing::Types<Classification::NaiveBayes::Estimator, Classification::DecisionTree::Estimator>;
TYPED_TEST_SUITE(ScaledInputs, Families);

TYPED_TEST(ScaledInputs, AreScaledByTheText) {
    const Training training = trainingSet();
    for (const auto type : {ScalingType::STANDARDIZATION, ScalingType::NORMALIZATION, ScalingType::SHIFT,
                            ScalingType::UNIT_NORM}) {
        const Model scaler = Estimator().setScalingType(type).fit(training.features);
        const DataFrame scaled = scaler.transform(training.features);
        const auto model = TypeParam().fit(scaled, training.target);
        const DataFrame classes = model.predict(scaled), posteriors = model.posteriorProbability(scaled);

        const WString text = model.toPMML(scaler);
        EXPECT_NE(text.find(L"name=\"first*\" displayName=\"first\""), WString::npos);
        auto copy = model;
        copy.fromPMMLString(text);
        EXPECT_EQ(copy.getColNames(), training.features.getColNames());
        EXPECT_TRUE(copy.getInputScaling().isScaled(L"first"));
        EXPECT_EQ(copy.getInputScaling().getShift(L"second"), scaler.getShift(L"second"));
        expectSameTables(copy.predict(training.features), classes);
        expectSameTables(copy.posteriorProbability(training.features), posteriors);
        EXPECT_THROW(copy.toPMML(scaler), ConstraintViolation);

        // What was read keeps its scaling in every other text.
        auto again = model;
        again.fromPMMLString(copy.toPMML());
        expectSameTables(again.posteriorProbability(training.features), posteriors);
        again = model;
        again.fromJSONString(copy.toJSON());
        expectSameTables(again.posteriorProbability(training.features), posteriors);
        again = model;
        again.fromLadonString(copy.toLadon());
        expectSameTables(again.posteriorProbability(training.features), posteriors);
        expectSameTables(again.predict(training.features), classes);
    }
}

TYPED_TEST(ScaledInputs, OnlyWhereTheScalerScalesThem) {
    const Training training = trainingSet();
    const auto model = TypeParam().fit(training.features, training.target);
    const WString plain = model.toPMML(Model({L"unknown"}, {1}, {2}));
    EXPECT_EQ(plain.find(L"DerivedField"), WString::npos);
    EXPECT_EQ(plain.find(L"LocalTransformations"), WString::npos);
    auto copy = model;
    copy.fromPMMLString(plain);
    EXPECT_FALSE(copy.getInputScaling().isScaled(L"first"));
    expectSameTables(copy.posteriorProbability(training.features),
                     model.posteriorProbability(training.features));

    const WString partly = model.toPMML(Model({L"second"}, {0}, {1}));
    EXPECT_NE(partly.find(L"\"second*\""), WString::npos);
    EXPECT_EQ(partly.find(L"\"first*\""), WString::npos);
    copy.fromPMMLString(partly);  // x -> (x - 0) * 1
    expectSameTables(copy.posteriorProbability(training.features),
                     model.posteriorProbability(training.features));
    EXPECT_THROW(model.toPMML(Model({L"group"}, {0}, {1})),
                 ConstraintViolation);  // its values are categories
}

}  // namespace
}  // namespace Tessel::Scaler
