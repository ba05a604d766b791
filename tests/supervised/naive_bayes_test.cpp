#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include <tessel/data/data_frame.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>

namespace Tessel {
namespace {

using Classification::NaiveBayes::Estimator;

/// Six days by hand. In class no: outlook sunny 2 of 2, temperature 28 and 30. In class yes: sunny 1, rainy 3
/// of 4, temperature 20, 22, 24 and one missing.
struct Weather {
    DataFrame features;
    DataFrameColumn played{L"played", StringVector{L"no", L"yes", L"no", L"yes", L"yes", L"yes"}};
    Weather() {
        features.append(DataFrameColumn(
            L"outlook", StringVector{L"sunny", L"sunny", L"sunny", L"rainy", L"rainy", L"rainy"}));
        features.append(DataFrameColumn(L"temperature", Vector{28, 20, 30, 22, 24, std::nan("")}));
    }
};

DataFrame day(const WString& outlook, double temperature) {
    DataFrame table;
    table.append(DataFrameColumn(L"outlook", StringVector{outlook}));
    table.append(DataFrameColumn(L"temperature", Vector{temperature}));
    return table;
}

double density(double x, double mean, double variance) {
    return std::exp(-(x - mean) * (x - mean) / (2.0 * variance)) / std::sqrt(variance);
}

TEST(NaiveBayes, MultipliesFrequenciesAndDensities) {
    const Weather weather;
    const double missing = std::nan("");
    struct Case {
        const wchar_t* outlook;
        double temperature;
        double no, yes;  // prior times likelihood, up to a common factor
    };
    for (const double laplace : {0.0, 1.0}) {
        const auto model = Estimator().setLaplaceSmoothing(laplace).fit(weather.features, weather.played);
        const double sunnyNo = (2 + laplace) / (2 + 2 * laplace),
                     sunnyYes = (1 + laplace) / (4 + 2 * laplace);
        const double rainyNo = laplace == 0.0 ? 1e-10 : laplace / (2 + 2 * laplace);
        const double rainyYes = (3 + laplace) / (4 + 2 * laplace);
        const Case cases[] = {
            {L"sunny", missing, 2 * sunnyNo, 4 * sunnyYes},
            {L"rainy", missing, 2 * rainyNo, 4 * rainyYes},
            {L"", 26.0, 2 * density(26, 29, 2), 4 * density(26, 22, 4)},
            {L"sunny", 26.0, 2 * sunnyNo * density(26, 29, 2), 4 * sunnyYes * density(26, 22, 4)},
            {L"foggy", 26.0, 2 * density(26, 29, 2), 4 * density(26, 22, 4)},
            {L"", missing, 2, 4},
        };
        for (const Case& c : cases) {
            const DataFrame posterior = model.posteriorProbability(day(c.outlook, c.temperature));
            EXPECT_NEAR(posterior(0, L"Posterior Probability: no").toDouble(), c.no / (c.no + c.yes), 1e-14)
                << laplace << ' ' << c.temperature;
        }
    }
}

TEST(NaiveBayes, ReportsDensitiesAndFrequencies) {
    const Weather weather;
    const auto model = Estimator().setLaplaceSmoothing(1.0).fit(weather.features, weather.played);
    const DataFrameVector report = model.toDataFrameVector();
    StringVector titles;
    for (const DataFrame& table : report) titles.push_back(table.getName());
    EXPECT_EQ(titles, (StringVector{L"Model: Naive Bayes", L"Prior Probabilities", L"Frequencies: outlook",
                                    L"Normal Density: temperature", L"Training Summary"}));
    const DataFrame& outlook = report.at(L"Frequencies: outlook");
    EXPECT_EQ(outlook(L"rainy", L"#Records: yes").toDouble(), 3.0);
    EXPECT_DOUBLE_EQ(outlook(L"rainy", L"Probability: yes").toDouble(), 4.0 / 6.0);
    const DataFrame& temperature = report.at(L"Normal Density: temperature");
    EXPECT_EQ(temperature(L"yes", L"Mean").toDouble(), 22.0);
    EXPECT_DOUBLE_EQ(temperature(L"no", L"Std. dev.").toDouble(), std::sqrt(2.0));
    EXPECT_EQ(temperature(L"yes", L"#Records").toDouble(), 3.0);
    EXPECT_EQ(report[0](L"Laplace smoothing", L"Value").toString(), L"1");
}

TEST(NaiveBayes, ChecksTheLaplaceSmoothing) {
    for (const double bad : {-1.0, 1e10, std::nan("")})
        EXPECT_THROW(Estimator().setLaplaceSmoothing(bad).validate(), ValueOutOfRange) << bad;
    EXPECT_EQ(Estimator().getLaplaceSmoothing(), 0.0);
    EXPECT_EQ(Estimator().toLadon(),
              L"{\"objectType\":\"estimator\",\"type\":\"classification\",\"algorithm\":\"naiveBayes\","
              L"\"parameters\":{}}");
    EXPECT_NE(Estimator().setLaplaceSmoothing(0.1).toLadon().find(L"{\"laplaceSmoothing\":0.1}"),
              WString::npos);
}

TEST(NaiveBayes, OtherMakersTextsScoreAsTheySayOrAreRefused) {
    // Of 10 records 8 are a. Seen with a: u 6, v 2; with b: u 1, v 1. The prior probabilities of the target
    // are for records without any input.
    const WString text =
        L"<PMML version=\"4.2\"><Header description=\"NaiveBayesModel\"/><DataDictionary>"
        L"<DataField name=\"x\" optype=\"categorical\" dataType=\"string\"><Value value=\"u\"/>"
        L"<Value value=\"v\"/></DataField>"
        L"<DataField name=\"y\" optype=\"categorical\" dataType=\"string\"><Value value=\"a\"/>"
        L"<Value value=\"b\"/></DataField></DataDictionary>"
        L"<NaiveBayesModel functionName=\"classification\" threshold=\"0.001\"><MiningSchema>"
        L"<MiningField name=\"x\"/><MiningField name=\"y\" usageType=\"target\"/></MiningSchema>"
        L"<Targets><Target field=\"y\"><TargetValue value=\"a\" priorProbability=\"0.5\"/>"
        L"<TargetValue value=\"b\" priorProbability=\"0.5\"/></Target></Targets>"
        L"<BayesInputs><BayesInput fieldName=\"x\">"
        L"<PairCounts value=\"u\"><TargetValueCounts><TargetValueCount value=\"a\" count=\"6\"/>"
        L"<TargetValueCount value=\"b\" count=\"1\"/></TargetValueCounts></PairCounts>"
        L"<PairCounts value=\"v\"><TargetValueCounts><TargetValueCount value=\"a\" count=\"2\"/>"
        L"<TargetValueCount value=\"b\" count=\"1\"/></TargetValueCounts></PairCounts>"
        L"</BayesInput></BayesInputs><BayesOutput fieldName=\"y\"><TargetValueCounts>"
        L"<TargetValueCount value=\"a\" count=\"8\"/><TargetValueCount value=\"b\" count=\"2\"/>"
        L"</TargetValueCounts></BayesOutput></NaiveBayesModel></PMML>";
    const auto replaced = [&](const WString& from, const WString& to) {
        WString changed = text;
        return changed.replace(changed.find(from), from.size(), to);
    };
    const Weather weather;
    auto model = Estimator().fit(weather.features, weather.played);
    DataFrame table;
    table.append(DataFrameColumn(L"x", StringVector{L"u", L"v", L""}));
    const WString targets =
        text.substr(text.find(L"<Target "), text.find(L"</Targets>") - text.find(L"<Target "));
    for (const WString& told : {text, replaced(targets, L"<Target field=\"y\"/>")}) {
        model.fromPMMLString(told);
        const Vector ofA = model.posteriorProbability(table)(Util::all, 0).toDoubleVector();
        const double expected[] = {6.0 / 7.0, 2.0 / 3.0, 0.8};  // 8/10 * 6/8 against 2/10 * 1/2, and so on
        for (std::size_t row = 0; row < 3; ++row) EXPECT_NEAR(ofA[row], expected[row], 1e-15) << row;
    }
    for (const auto& [from, to] :
         {std::pair(L"<PairCounts", L"<DerivedField name=\"x'\"/><PairCounts"),
          std::pair(L"<MiningField name=\"x\"",
                    L"<MiningField name=\"x\" invalidValueTreatment=\"asMissing\""),
          std::pair(L"<Value value=\"u\"/>",
                    L"<Value value=\"u\"/><Value value=\"?\" property=\"missing\"/>")})
        EXPECT_THROW(model.fromPMMLString(replaced(from, to)), UnsupportedPMMLFormat) << from;
}

TEST(NaiveBayes, ManyInputsDoNotUnderflow) {
    // Each of 1,000 inputs has density below 1e-8 in the wrong class: the product is far below any double.
    DataFrame features;
    for (int i = 0; i < 1000; ++i)
        features.append(DataFrameColumn(L"x" + std::to_wstring(i), Vector{-3.1, -2.9, 2.9, 3.1}));
    const DataFrameColumn label(L"y", StringVector{L"a", L"a", L"b", L"b"});
    const DataFrame posterior = Estimator().fit(features, label).posteriorProbability(features);
    EXPECT_EQ(posterior(Util::all, 0).toDoubleVector(), (Vector{1, 1, 0, 0}));
}

}  // namespace
}  // namespace Tessel
