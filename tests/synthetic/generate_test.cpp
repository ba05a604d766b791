#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include <gtest/gtest.h>
#include <omp.h>

#include <tessel/data/convert.h>
#include <tessel/data/util/association.h>
#include <tessel/data/util/statistics.h>
#include <tessel/framework/errors.h>
#include <tessel/synthetic_data_generator.h>

#include "engine/dist/metalog_dist.h"
#include "engine/random/uniform_sample.h"
#include "synthetic/quality.h"
#include "synthetic/tables.h"

namespace Tessel {
namespace {

using namespace SyntheticDataGeneration;
using Engine::Dist::CMetalogDist;
using Testing::areIdentical;
using Testing::logisticSample;
using Testing::numericTable;

using Generator = SyntheticDataGenerator;

constexpr const wchar_t* kIndependent =
    L"Failed to correlate the variables: no correlation was fitted. Will attempt independent sample "
    L"generation";

/// The distribution that the generator reports for a column.
CMetalogDist distributionOf(const Generator& generator, const WString& column) {
    const Vector coefficients = generator.getMetalogCoefficients(column)(Util::all, 0).toDoubleVector();
    const DataFrame bounds = generator.getBounds();
    return {bounds(column, L"Lower").toDouble(), bounds(column, L"Upper").toDouble(),
            static_cast<int>(coefficients.size()), coefficients.data()};
}

double spearman(const DataFrame& table, const WString& first, const WString& second) {
    return Util::spearmanCorrelation(table(Util::all, first), table(Util::all, second));
}

/// A text with the value of a member replaced by another one.
WString withMember(WString text, const WString& name, const WString& value) {
    const std::size_t begin = text.find(L'"' + name + L"\":") + name.size() + 3;
    const std::size_t end = text.find_first_of(L",}", begin);
    return text.replace(begin, end - begin, value);
}

TEST(SyntheticDataGenerate, MarginsAreThoseOfTheTable) {
    const DataFrame table = numericTable();
    for (const SamplingMethodType method :
         {SamplingMethodType::MONTE_CARLO, SamplingMethodType::LATIN_HYPERCUBE,
          SamplingMethodType::SOBOL_RQMC}) {
        Generator generator;
        generator.setSampleSize(5000).setSamplingMethodType(method).setMetalogLowerBound(L"c", 0.0);
        const DataFrame sample = generator.fitTransform(table);
        EXPECT_EQ(sample.getName(), L"machines: Synthetic Sample");
        EXPECT_EQ(sample.getColNames(), table.getColNames());
        ASSERT_EQ(sample.getNumRows(), 5000);
        for (const WString& name : table.getColNames()) {
            Vector original = table(Util::all, name).toDoubleVector();
            Vector generated = sample(Util::all, name).toDoubleVector();
            std::sort(original.begin(), original.end());
            std::sort(generated.begin(), generated.end());
            // 1.36 / sqrt(5000) = 0.02 of sampling and as much for metalogs of at most 5 terms.
            EXPECT_LT(kolmogorovSmirnovDistance(original.elements(), generated.elements()), 0.04);
        }
    }
}

TEST(SyntheticDataGenerate, DependenceIsThatOfTheTable) {
    const DataFrame table = numericTable();
    const auto sampleWith = [&](CorrelationType type, CopulaType copula = CopulaType::GAUSS) {
        Generator generator;
        generator.setSampleSize(4000).setCorrelationType(type).setCopula(copula, true);
        return generator.fitTransform(table);
    };
    const DataFrame rank = sampleWith(CorrelationType::RANK);
    for (const wchar_t* const other : {L"a", L"c"})
        EXPECT_NEAR(spearman(rank, L"b", other), spearman(table, L"b", other), 0.02);
    EXPECT_NEAR(spearman(sampleWith(CorrelationType::NONE), L"a", L"b"), 0.0, 0.05);
    // One parameter for all pairs, the others a matrix. 4 / sqrt(4000) is about 0.06.
    for (const CopulaType copula : {CopulaType::GAUSS, CopulaType::STUDENT})
        EXPECT_NEAR(spearman(sampleWith(CorrelationType::COPULA, copula), L"a", L"b"),
                    spearman(table, L"a", L"b"), 0.06);
    for (const CopulaType copula : {CopulaType::CLAYTON, CopulaType::FRANK, CopulaType::GUMBEL}) {
        Generator generator;
        generator.setSampleSize(4000).setCorrelationType(CorrelationType::COPULA).setCopula(copula, true);
        const DataFrame pair = generator.fitTransform(table(Util::all, {L"a", L"b"}));
        EXPECT_EQ(generator.getSelectedCopula(), copula);
        EXPECT_NEAR(spearman(pair, L"a", L"b"), spearman(table, L"a", L"b"), 0.1);
    }
}

TEST(SyntheticDataGenerate, ALatinHypercubeHasOneValueInEachPartOfItsDistribution) {
    constexpr int kNumRows = 500;
    for (const CopulaType copula : {CopulaType::NONE, CopulaType::CLAYTON, CopulaType::STUDENT}) {
        Generator generator;
        generator.setSampleSize(kNumRows);
        if (copula != CopulaType::NONE)
            generator.setCorrelationType(CorrelationType::COPULA).setCopula(copula, true);
        const DataFrame sample = generator.fitTransform(numericTable());
        ASSERT_TRUE(generator.isCorrelationFitted());
        for (const wchar_t* const name : {L"a", L"b", L"c"}) {
            const CMetalogDist distribution = distributionOf(generator, name);
            std::set<int> parts;
            for (const double value : sample(Util::all, name).values())
                parts.insert(static_cast<int>(distribution.cdf(value) * kNumRows));
            EXPECT_EQ(parts.size(), static_cast<std::size_t>(kNumRows));
        }
    }
}

TEST(SyntheticDataGenerate, StreamsAreOneForAllOrOneForEach) {
    // Uncorrelated, so the sample is the quantiles of the uniform numbers.
    for (const RandomStreamType stream : {RandomStreamType::SINGLE, RandomStreamType::INDEPENDENT}) {
        Generator generator;
        generator.setCorrelationType(CorrelationType::NONE)
            .setRandomStreamType(stream)
            .setRandomSeed(42)
            .setRandomGeneratorType(RandomGeneratorType::LECUYER_CMRG)
            .setSamplingMethodType(SamplingMethodType::MONTE_CARLO);
        const DataFrame sample = generator.fitTransform(numericTable());
        auto random =
            Engine::Random::RandomGenerator::create(Engine::Random::RandomGeneratorType::LECUYER_CMRG, 42,
                                                    stream == RandomStreamType::SINGLE ? 0 : 3, 100);
        std::vector<std::vector<double>> uniforms(3, std::vector<double>(100));
        const std::vector<std::span<double>> rows(uniforms.begin(), uniforms.end());
        ASSERT_TRUE(uniformSample(*random, Engine::Random::SamplingMethodType::MONTE_CARLO, rows));
        for (int column = 0; column < 3; ++column) {
            const CMetalogDist distribution = distributionOf(generator, sample.getColName(column));
            for (int row = 0; row < 100; ++row)
                EXPECT_EQ(sample(row, column).toDouble(),
                          distribution.inverseCdf(
                              rows[static_cast<std::size_t>(column)][static_cast<std::size_t>(row)]));
        }
    }
}

TEST(SyntheticDataGenerate, TheSeedDecides) {
    Generator generator;
    const DataFrame table = numericTable(), first = generator.fitTransform(table);
    EXPECT_TRUE(areIdentical(generator.generate(), first));
    EXPECT_TRUE(areIdentical(generator.transform(table), first));
    EXPECT_TRUE(areIdentical(Generator(generator).generate(), first));
    for (const RandomGeneratorType type :
         {RandomGeneratorType::PARK_MILLER, RandomGeneratorType::LECUYER_CMRG, RandomGeneratorType::WELL,
          RandomGeneratorType::HDR})
        EXPECT_FALSE(areIdentical(Generator(generator).setRandomGeneratorType(type).generate(), first));
    EXPECT_FALSE(areIdentical(generator.setRandomSeed(1).generate(), first));

    EXPECT_TRUE(generator.setGenerateSample(false).fitTransform(table).empty());
    EXPECT_TRUE(generator.isMetalogFitted());
    EXPECT_EQ(generator.generate().getNumRows(), 100);
}

TEST(SyntheticDataGenerate, ThreadsChangeNothing) {
    const int before = omp_get_max_threads();
    WString texts[2];
    DataFrame samples[2];
    for (const int numThreads : {1, 4}) {
        omp_set_num_threads(numThreads);
        Generator generator;
        const auto i = static_cast<std::size_t>(numThreads > 1);
        samples[i] = generator.setSampleSize(40000).fitTransform(numericTable(20011));
        texts[i] = generator.toLadon();
    }
    omp_set_num_threads(before);
    EXPECT_EQ(texts[0], texts[1]);
    EXPECT_TRUE(areIdentical(samples[0], samples[1]));
}

TEST(SyntheticDataGenerate, TextsGenerateTheSameBits) {
    DataFrame table = numericTable();
    Vector turned = table(Util::all, L"a").toDoubleVector();
    for (double& value : turned) value = -value;
    table.append(DataFrameColumn(L"-a", turned));
    DataFrame few = table;  // four values of "c": tests and criteria that need more are NaN
    for (int row = 4; row < few.getNumRows(); ++row) few(row, L"c") = std::nan("");
    struct Case {
        DataFrame table;
        CorrelationType type;
        CopulaType copula;
    };
    const Case cases[] = {
        {table, CorrelationType::RANK, CopulaType::NONE},
        {few, CorrelationType::NONE, CopulaType::NONE},
        {table, CorrelationType::COPULA, CopulaType::STUDENT},
        {table(Util::all, {L"a", L"b", L"c"}), CorrelationType::COPULA, CopulaType::FRANK},
        {table(Util::all, {L"a", L"-a", L"c"}), CorrelationType::COPULA, CopulaType::CLAYTON},  // not fitted
    };
    for (const Case& c : cases) {
        Generator generator;
        generator.setMetalogLowerBound(L"c", 0.0)
            .setMetalogUpperBound(L"c", std::numeric_limits<double>::infinity())
            .setRandomSeed(5)
            .setSampleSize(333)
            .setCorrelationType(c.type);
        if (c.copula != CopulaType::NONE) generator.setCopula(c.copula, true);
        const DataFrame sample = generator.fitTransform(c.table);
        ASSERT_EQ(sample.getNumRows(), 333);
        Generator read;
        read.fromLadonString(generator.toLadon());
        EXPECT_EQ(read.toLadon(), generator.toLadon());
        EXPECT_TRUE(areIdentical(read.generate(), sample));
        const DataFrameVector reports = generator.toDataFrameVector();
        read.fromLadonString(generator.toLadon());
        const DataFrameVector reread = read.toDataFrameVector();
        ASSERT_EQ(reread.size(), reports.size());
        for (std::size_t i = 0; i < reports.size(); ++i) EXPECT_EQ(reread[i].toJson(), reports[i].toJson());
    }
}

TEST(SyntheticDataGenerate, BadTextsLeaveItAsItWas) {
    Generator generator;
    generator.fit(numericTable());
    const WString text = generator.toLadon();
    const WString bad[] = {
        L"",
        L"[]",
        withMember(text, L"algorithm", L"\"binning\""),
        withMember(text, L"correlationFitted", L"7"),
        withMember(text, L"selectedCopula", L"\"CLAY\""),
        withMember(text, L"copulaTheta", L"{}"),
        withMember(text, L"metalogFitted", L"[false"),
        withMember(text, L"bestMetalog", L"[99"),
        withMember(text, L"metalogCoefficients", L"[[1,-1]"),
        withMember(text, L"colNames", L"[\"b\""),
        withMember(text, L"bounds", L"[[]"),
        withMember(text, L"correlationSigma", L"[[1],[1"),
        withMember(text, L"fittedModel", L"{\"x\":0"),
    };
    for (const WString& description : bad) {
        EXPECT_THROW(generator.fromLadonString(description), UnsupportedJSONModel)
            << Convert::toUtf8Lossy(description).substr(0, 300);
        EXPECT_EQ(generator.toLadon(), text);
    }
}

TEST(SyntheticDataGenerate, TellsWhyThereIsNoSampleOrNoDependence) {
    Generator generator;
    EXPECT_TRUE(generator.generate().empty());
    EXPECT_EQ(
        generator.getLog(),
        StringVector{L"Failed to generate the sample: distribution wasn't fitted for one or more variables"});

    // No row is complete.
    DataFrame apart(L"apart");
    for (int column = 0; column < 2; ++column) {
        Vector values = logisticSample(40, 0.0, 1.0, 7);
        for (std::size_t i = 0; i < 20; ++i) values[static_cast<std::size_t>(column) * 20 + i] = std::nan("");
        apart.append(DataFrameColumn(L"x" + std::to_wstring(column), values));
        generator.setNumMetalogTerms(L"x" + std::to_wstring(column), 2);
    }
    EXPECT_EQ(generator.fitTransform(apart).getNumRows(), 100);
    EXPECT_EQ(generator.getLog(), (StringVector{L"Failed to fit Rank Correlation", kIndependent}));
    EXPECT_FALSE(generator.isCorrelationFitted());

    // The kind of dependence was changed after the fit.
    generator = Generator();
    generator.fit(numericTable()).setCopula(CopulaType::CLAYTON, true);
    EXPECT_FALSE(generator.setCorrelationType(CorrelationType::COPULA).generate().empty());
    EXPECT_EQ(generator.getLog().back(), kIndependent);

    // A copula that cannot be sampled, as a text may hold it.
    generator.fit(numericTable());
    ASSERT_EQ(generator.getSelectedCopula(), CopulaType::CLAYTON);
    generator.fromLadonString(withMember(generator.toLadon(), L"copulaTheta", L"-7"));
    EXPECT_FALSE(generator.generate().empty());
    EXPECT_EQ(generator.getLog().back(),
              L"Failed to correlate the variables during sample generation. Will attempt independent sample "
              L"generation");

    // Quantiles beyond the largest number.
    Vector heavy;
    for (const double value : logisticSample(11, 0.0, 200.0, 3)) heavy.push_back(std::exp(value));
    DataFrame table;
    table.append(DataFrameColumn(L"x", heavy));
    generator = Generator();
    generator.setMetalogAuto(false).setMetalogLowerBound(L"x", 0.0);
    EXPECT_TRUE(generator.fitTransform(table).empty());
    EXPECT_EQ(generator.getLog().back(), L"Failed to generate the sample");
}

TEST(SyntheticDataGenerate, ManyColumns) {
    DataFrame table;
    for (int i = 0; i < 1000; ++i)
        table.append(DataFrameColumn(L"v" + std::to_wstring(i), logisticSample(31, i, 1.0, 1 + i % 29)));
    Generator generator;
    generator.setComputeMetalogCurves(false)
        .setCorrelationType(CorrelationType::COPULA)
        .setCopula(CopulaType::GAUSS, true);
    const DataFrame sample = generator.fitTransform(table);
    EXPECT_EQ(sample.getNumCols(), 1000);
    EXPECT_EQ(sample.getNumRows(), 100);
    EXPECT_TRUE(generator.isCorrelationFitted());

#if !defined(__SANITIZE_ADDRESS__)  // which ends the program at such a request
    EXPECT_THROW(generator.setSampleSize(2147483647).generate(), BadAllocation);
#endif
}

TEST(SyntheticDataGenerate, SobolPointsAreOfLimitedDimension) {
    DataFrame table;
    for (int i = 0; i < 3668; ++i)
        table.append(DataFrameColumn(L"v" + std::to_wstring(i), Vector{1.0, 2.0, 3.0, 5.0}));
    Generator generator;
    generator.setComputeMetalogCurves(false)
        .setCorrelationType(CorrelationType::NONE)
        .setSamplingMethodType(SamplingMethodType::SOBOL_RQMC);
    EXPECT_TRUE(generator.fitTransform(table).empty());
    EXPECT_EQ(generator.getLog().back(), L"Failed to create a uniform sample");
}

TEST(SyntheticDataGenerate, CalculatesExpressions) {
    DataFrame table;
    table.append(DataFrameColumn(L"a", Vector{1.0, 2.0}));
    table.append(DataFrameColumn(L"b", Vector{10.0, 20.0}));
    const DataFrame result = Generator::calculateExpression(table, L"a + 2 * b");
    EXPECT_EQ(result.getName(), L"Expression");
    EXPECT_EQ(result.getColNames(), StringVector{L"a + 2 * b"});
    EXPECT_EQ(result(Util::all, 0).toDoubleVector(), (Vector{21.0, 42.0}));
    EXPECT_THROW(Generator::calculateExpression(table, L"a +"), Exception);
}

TEST(SyntheticDataQuality, TellsHowMuchAlikeTwoTablesAre) {
    DataFrame original(L"original"), generated(L"generated");
    original.append(DataFrameColumn(L"x", Vector{1.0, 2.0, 2.0, 4.0, std::nan("")}));
    original.append(DataFrameColumn(L"y", Vector{1.0, 2.0, 3.0, 4.0, 5.0}));
    original.append(DataFrameColumn(L"text", StringVector{L"a", L"b", L"c", L"d", L"e"}));
    original.append(DataFrameColumn(L"id", Vector{1, 2, 3, 4, 5}));
    original.setIndexedColNames({L"id"});
    generated.append(DataFrameColumn(L"y", Vector{5.0, 4.0, 3.0}));
    generated.append(DataFrameColumn(L"x", Vector{2.0, 3.0, 5.0}));
    generated.append(DataFrameColumn(L"text", Vector{2.0, 3.0, 5.0}));
    const DataFrameVector report = Generator::qualityReport(original, generated);

    // x: the empirical functions are 1/4, 3/4, 3/4, 1, 1 and 0, 1/3, 2/3, 2/3, 1 at 1, 2, 3, 4, 5.
    // y: 1/5, 2/5, 3/5, 4/5, 1 and 0, 0, 1/3, 2/3, 1.
    const DataFrame& distances = report[L"Quality: Distances"];
    EXPECT_EQ(distances.getRowNames(), (StringVector{L"x", L"y"}));
    EXPECT_NEAR(distances(L"x", L"Kolmogorov-Smirnov").toDouble(), 3.0 / 4 - 1.0 / 3, 1e-15);
    EXPECT_NEAR(distances(L"y", L"Kolmogorov-Smirnov").toDouble(), 2.0 / 5, 1e-15);
    EXPECT_EQ(distances(L"x", L"Original Count").toInt(), 4);
    EXPECT_EQ(report[L"Quality: Moments"](L"x", L"Original Mean").toDouble(), 2.25);
    EXPECT_EQ(report[L"Quality: Moments"](L"y", L"Generated Std. dev.").toDouble(), 1.0);
    EXPECT_EQ(report[L"Quality: Quantiles"](L"y", L"Original 50%").toDouble(), 3.0);
    EXPECT_EQ(report[L"Quality: Quantiles"](L"x", L"Generated Max").toDouble(), 5.0);
    // Ranks of x 1, 2.5, 2.5, 4 against 1 .. 4 have the correlation 4.5 / sqrt(4.5 * 5) = sqrt(0.9).
    EXPECT_NEAR(report[L"Rank Correlation: Original"](L"x", L"y").toDouble(), std::sqrt(0.9), 1e-14);
    EXPECT_NEAR(report[L"Rank Correlation: Generated"](L"y", L"x").toDouble(), -1.0, 1e-14);
    EXPECT_NEAR(report[L"Rank Correlation: Difference"](L"x", L"y").toDouble(), -1.0 - std::sqrt(0.9), 1e-14);
    const DataFrame& summary = report[L"Quality: Summary"];
    EXPECT_NEAR(summary(0, L"Largest Kolmogorov-Smirnov Distance").toDouble(), 5.0 / 12, 1e-15);
    EXPECT_EQ(summary(0, L"Column").toString(), L"x");
    EXPECT_NEAR(summary(0, L"Largest Rank Correlation Difference").toDouble(), 1.0 + std::sqrt(0.9), 1e-14);
    EXPECT_EQ(summary(0, L"Second Column").toString(), L"y");

    const DataFrameVector same = Generator::qualityReport(original, original);
    EXPECT_EQ(same[L"Quality: Summary"](0, 0).toDouble(), 0.0);
    EXPECT_EQ(same[L"Quality: Summary"](0, 2).toDouble(), 0.0);
    EXPECT_THROW(Generator::qualityReport(original, DataFrame()), TooFewNumColumns);
}

}  // namespace
}  // namespace Tessel
