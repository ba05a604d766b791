#include "framework/parameter.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "data/json_value.h"
#include "framework/admissible.h"

namespace Tessel {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

enum class Colour { RED = 2, BLUE = 1 };

EnumParameter<Colour> colour() {
    return {L"colour", L"Colour of the line", Colour::RED, {{Colour::RED, L"RED"}, {Colour::BLUE, L"BLUE"}}};
}

web::json::value json(const WString& text) { return JSON::parse(text); }

template <class Violation>
std::string messageOf(Violation&& violation) {
    try {
        violation();
    } catch (const Exception& error) {
        return error.what();
    }
    return "nothing was thrown";
}

TEST(Parameter, SetsResetsAndDescribesItself) {
    BoundedParameter<int> rows(L"minRows", L"Min #rows", 2, 1, 100);
    EXPECT_FALSE(rows.isSet());
    EXPECT_TRUE(rows.toJSON().is_null());
    rows.set(2);  // the default, but set all the same
    EXPECT_TRUE(rows.isSet());
    EXPECT_EQ(rows.toNamedJSONIfSet()->first, L"minRows");
    rows.setDefault(7);
    EXPECT_EQ(rows.get(), 2);
    EXPECT_EQ(rows.describe(),
              (std::pair<WString, StringVector>(L"minRows", {L"2", L"7", L"int", L"[1, 100]"})));
    rows.reset();
    EXPECT_EQ(rows.get(), 7);
    EXPECT_FALSE(rows.isSet());
    EXPECT_FALSE(rows.toNamedJSONIfSet().has_value());

    EXPECT_EQ(colour().describe().second, (StringVector{L"RED", L"RED", L"enum", L"{BLUE, RED}"}));
    EXPECT_EQ(BoundedParameter<double>(L"a", L"A", 0.5, 0.0, 1.0).describe().second,
              (StringVector{L"0.5", L"0.5", L"double", L"[0, 1]"}));
    EXPECT_EQ(Parameter<WString>(L"a", L"A").describe().second, (StringVector{L"", L"", L"WString", L""}));
}

TEST(Parameter, RejectsValuesOutsideRangeOrSetWhenValidated) {
    BoundedParameter<int> rows(L"minRows", L"Min #rows", 2, 1, 100);
    for (const int good : {1, 100}) {
        rows.set(good);
        EXPECT_NO_THROW(rows.validate());
    }
    for (const int bad : {0, 101, -1}) {
        rows.set(bad);
        EXPECT_THROW(rows.validate(), ValueOutOfRange) << bad;
    }
    EXPECT_EQ(messageOf([&] { rows.validate(); }),
              "Min #rows violated a constraint: Acceptable range: [1,100]");
    rows.set(50);
    EXPECT_EQ(messageOf([&] { rows.requireWithin(1, 49); }),
              "Min #rows violated a constraint: Acceptable range: [1,49]");

    BoundedParameter<double> share(L"share", L"Share", 0.5, 0.0, 1.0);
    for (const double bad : {-0.1, 1.1, std::nan(""), kInfinity}) {
        share.set(bad);
        EXPECT_THROW(share.validate(), ValueOutOfRange) << bad;
    }

    auto line = colour();
    line.set(static_cast<Colour>(9));
    EXPECT_EQ(messageOf([&] { line.validate(); }),
              "Colour of the line violated a constraint: The value must be a pre-defined set member.");
}

TEST(Parameter, ReadsItsMemberWhateverTheCaseAndIgnoresOtherKinds) {
    BoundedParameter<int> rows(L"minRows", L"Min #rows", 2, 1, 100);
    struct Case {
        const wchar_t* text;
        int value;
        bool isSet;
    };
    for (const Case& c :
         {Case{L"{\"minRows\": 5}", 5, true}, Case{L"{\"MINROWS\": 5}", 5, true},
          Case{L"{\"minrows\": 6}", 6, true}, Case{L"{\"minRows\": 5.5}", 2, false},
          Case{L"{\"minRows\": \"5\"}", 2, false}, Case{L"{\"minRows\": 3000000000}", 2, false},
          Case{L"{\"other\": 5}", 2, false}, Case{L"[5]", 2, false}, Case{L"null", 2, false}}) {
        rows.reset();
        rows.fromJSON(json(c.text));
        EXPECT_EQ(rows.get(), c.value) << narrowText(c.text);
        EXPECT_EQ(rows.isSet(), c.isSet) << narrowText(c.text);
    }
    auto line = colour();
    line.fromJSON(json(L"{\"colour\": \"GREEN\"}"));
    EXPECT_FALSE(line.isSet());
    line.fromJSON(json(L"{\"colour\": \"BLUE\"}"));
    EXPECT_EQ(line.get(), Colour::BLUE);
}

/// Writes a value and reads it into a fresh parameter.
template <class T>
T throughJSON(const T& value) {
    Parameter<T> written(L"p", L"P"), read(L"p", L"P");
    written.set(value);
    web::json::value object = web::json::value::object();
    object[JSON::toNative(L"p")] = json(JSON::serialize(written.toJSON()));
    read.fromJSON(object);
    EXPECT_TRUE(read.isSet());
    return read.get();
}

TEST(Parameter, ValuesOfEveryTypeSurviveJSON) {
    EXPECT_EQ(throughJSON(-2147483647 - 1), -2147483647 - 1);
    for (const double value : {0.1, -0.0, 1e-320, 1.7976931348623157e308, 1.0 / 3.0, kInfinity, -kInfinity})
        EXPECT_EQ(throughJSON(value), value);
    EXPECT_TRUE(std::isnan(throughJSON(std::nan(""))));
    EXPECT_EQ(throughJSON(WString(L"größer \"als\"\n1")), L"größer \"als\"\n1");
    EXPECT_EQ(throughJSON(StringVector{L"a", L"", L"ß"}), (StringVector{L"a", L"", L"ß"}));
    EXPECT_EQ(throughJSON(IntVector{3, -1}), (IntVector{3, -1}));
    EXPECT_EQ(throughJSON(Vector{0.5, kInfinity}), (Vector{0.5, kInfinity}));
    const VariantMap map{{L"none", boost::blank()}, {L"int", 3}, {L"double", 0.25}, {L"text", WString(L"x")}};
    EXPECT_TRUE(throughJSON(map) == map);
    const PriorProbs priors{{L"no", 0.75}, {L"yes", 0.25}};
    EXPECT_EQ(throughJSON(priors), priors);
}

TEST(PriorProbability, ChecksAndComputesPriorsByEveryMethod) {
    Classification::PriorProbability::IAdmissible admissible;
    const StringVector classes{L"no", L"yes"};
    const std::vector<double> counts{3.0, 1.0};
    EXPECT_EQ(admissible.priors(classes, counts), (Vector{0.75, 0.25}));
    admissible.priorProbMethod.set(PriorProbMethodType::UNIFORM);
    EXPECT_EQ(admissible.priors(classes, counts), (Vector{0.5, 0.5}));

    admissible.setPriorProb(L"no", 0.9);
    EXPECT_EQ(admissible.priorProbMethod.get(), PriorProbMethodType::EXPLICIT);
    EXPECT_EQ(messageOf([&] { admissible.validatePriors(); }),
              "Prior probabilities violated a constraint: sum = 0.900000.");
    EXPECT_THROW(admissible.getPriorProb(L"yes"), NotASetMember);
    admissible.setPriorProb(L"yes", 1.5);
    EXPECT_THROW(admissible.validatePriors(), ValueOutOfRange);
    admissible.setPriorProb(L"yes", 0.1);
    EXPECT_NO_THROW(admissible.validatePriors());
    EXPECT_EQ(admissible.priors(classes, counts), (Vector{0.9, 0.1}));
    EXPECT_THROW(admissible.priors({L"no", L"maybe"}, counts), NotASetMember);
    EXPECT_THROW(admissible.priors({L"no", L"yes", L"maybe"}, {1, 1, 1}), ConstraintViolation);
    EXPECT_EQ(admissible.priorProb.describe().second[3], L"[0,1] and sum=1");
}

TEST(Admissible, ChecksWeightsAndCategoricalFeatures) {
    IWeightsAdmissible weighted;
    EXPECT_NO_THROW(weighted.validateWeights(3));
    weighted.weights.set({1.0, 2.0});
    EXPECT_EQ(weighted.weights.describe().second, (StringVector{L"2 weights", L"", L"Weights", L""}));
    EXPECT_NO_THROW(weighted.validateWeights(2));
    EXPECT_THROW(weighted.validateWeights(3), IncompatibleSizes);
    for (const double bad : {0.0, -1.0, std::nan(""), kInfinity}) {
        weighted.weights.set({1.0, bad});
        EXPECT_THROW(weighted.validateWeights(2), NonPositiveWeights) << bad;
    }

    DataFrame features;
    for (const wchar_t* name : {L"a", L"b", L"c"}) features.append(DataFrameColumn(name, Vector{1.0}));
    CategoricalVariables::IAdmissible categorical;
    categorical.categoricalFeaturesNames.set({L"c", L"a"});
    categorical.categoricalFeaturesOffsets.set({2, 1});
    EXPECT_EQ(categorical.categoricalPositions(features), (IntVector{0, 1, 2}));
    EXPECT_EQ(categorical.categoricalFeaturesInfo().getNumRows(), 4);
    categorical.categoricalFeaturesOffsets.set({3});
    EXPECT_THROW(categorical.categoricalPositions(features), ColumnIndexOutOfRange);
    categorical.categoricalFeaturesNames.set({L"x"});
    EXPECT_THROW(categorical.categoricalPositions(features), NotAValidColName);
}

}  // namespace
}  // namespace Tessel
