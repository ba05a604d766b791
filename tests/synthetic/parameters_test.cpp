#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/framework/errors.h>
#include <tessel/synthetic_data_generator.h>

#include "synthetic/tables.h"
#include "synthetic/vocabulary.h"

namespace Tessel {
namespace {

using namespace SyntheticDataGeneration;
using Testing::numericTable;

using Generator = SyntheticDataGenerator;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string messageOf(const std::function<void()>& violation) {
    try {
        violation();
    } catch (const ConstraintViolation& error) {
        return error.what();
    }
    return "no constraint was violated";
}

TEST(SyntheticDataGenerator, NamesTheValuesOfItsEnums) {
    struct Case {
        WString name, keyword;
        const wchar_t *expectedName, *expectedKeyword;
    };
    const auto of = [](auto value, const wchar_t* name, const wchar_t* keyword) {
        return Case{nameOf(value), keywordOf(value), name, keyword};
    };
    const Case cases[] = {
        of(CopulaType(0), L"None", L"NONE"),
        of(CopulaType(1), L"Clayton", L"CLAYTON"),
        of(CopulaType(2), L"Frank", L"FRANK"),
        of(CopulaType(3), L"Gumbel", L"GUMBEL"),
        of(CopulaType(4), L"Gauss", L"GAUSS"),
        of(CopulaType(5), L"Student", L"STUDENT"),
        of(CorrelationType(0), L"None", L"NONE"),
        of(CorrelationType(1), L"Rank", L"RANK"),
        of(CorrelationType(2), L"Copula", L"COPULA"),
        of(GoodnessOfFitType(0), L"Chi-Square", L"CHI_SQUARE"),
        of(GoodnessOfFitType(1), L"Kolmogorov-Smirnov", L"KOLMOGOROV_SMIRNOV"),
        of(GoodnessOfFitType(2), L"Anderson-Darling", L"ANDERSON_DARLING"),
        of(GoodnessOfFitType(3), L"AIC", L"AIC"),
        of(GoodnessOfFitType(4), L"BIC", L"BIC"),
        of(GoodnessOfFitType(5), L"AICc", L"AICC"),
        of(GoodnessOfFitType(6), L"BICc", L"BICC"),
        of(GoodnessOfFitType(7), L"ML", L"MAX_LIKELIHOOD"),
        of(GoodnessOfFitType(8), L"HQIC", L"HQIC"),
        of(RandomGeneratorType(0), L"Park-Miller", L"PARK_MILLER"),
        of(RandomGeneratorType(1), L"L'Ecuyer-CMRG", L"LECUYER_CMRG"),
        of(RandomGeneratorType(2), L"WELL", L"WELL"),
        of(RandomGeneratorType(3), L"Mersenne Twister", L"MERSENNE_TWISTER"),
        of(RandomGeneratorType(4), L"HDR", L"HDR"),
        of(SamplingMethodType(1), L"Monte Carlo", L"MONTE_CARLO"),
        of(SamplingMethodType(2), L"Latin Hypercube", L"LATIN_HYPERCUBE"),
        of(SamplingMethodType(3), L"Sobol RQMC", L"SOBOL_RQMC"),
        of(RandomStreamType(1), L"Single", L"SINGLE"),
        of(RandomStreamType(2), L"Independent", L"INDEPENDENT"),
        of(RandomStreamType(0), L"", L""),
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.name, c.expectedName);
        EXPECT_EQ(c.keyword, c.expectedKeyword);
    }
    EXPECT_EQ(Generator::getCopulaTypeName(CopulaType::STUDENT), L"Student");
    EXPECT_EQ(Generator::getCorrelationTypeName(CorrelationType::RANK), L"Rank");
    EXPECT_EQ(Generator::getGoodnessOfFitTypeName(GoodnessOfFitType::MAX_LIKELIHOOD), L"ML");
    EXPECT_EQ(Generator::getRandomGeneratorTypeName(RandomGeneratorType::LECUYER_CMRG), L"L'Ecuyer-CMRG");
    EXPECT_EQ(Generator::getSamplingMethodTypeName(SamplingMethodType::SOBOL_RQMC), L"Sobol RQMC");
    EXPECT_EQ(Generator::getRandomStreamTypeName(RandomStreamType::SINGLE), L"Single");
}

TEST(SyntheticDataGenerator, TellsItsParameters) {
    const DataFrame table = Generator().setMetalogLowerBound(L"a", -0.5).toDataFrame();
    EXPECT_EQ(table.getName(), L"Parameter Info");
    EXPECT_EQ(table.getColNames(), (StringVector{L"Type", L"Value", L"Default", L"Constraints"}));
    struct Case {
        const wchar_t *name, *type, *value, *constraints;
    };
    const Case cases[] = {
        {L"Metalog auto", L"bool", L"true", L""},
        {L"Max metalog terms", L"NumMetalogTerms", L"{}", L"[2, 16]"},
        {L"Metalog lower bound", L"Bound", L"{a: -0.5}", L"[-Infinity, Infinity]"},
        {L"Metalog upper bound", L"Bound", L"{}", L"[-Infinity, Infinity]"},
        {L"Use Min/Max as bounds", L"bool", L"false", L""},
        {L"Metalog goodness of fit type", L"GoodnessOfFit", L"{}",
         L"{Chi-Square, Kolmogorov-Smirnov, Anderson-Darling, AIC, BIC, AICc, BICc, ML, HQIC}"},
        {L"Compute Metalog curves", L"bool", L"true", L""},
        {L"Correlation type", L"enum", L"Rank", L"{None, Rank, Copula}"},
        {L"Copulas", L"Copulas", L"{}", L"{Clayton, Frank, Gumbel, Gauss, Student}"},
        {L"Generate Sample", L"bool", L"true", L""},
        {L"Random seed", L"int", L"0", L"[0, 2147483647]"},
        {L"Random Generator", L"enum", L"Mersenne Twister",
         L"{Park-Miller, L'Ecuyer-CMRG, WELL, Mersenne Twister, HDR}"},
        {L"Sampling Method", L"enum", L"Latin Hypercube", L"{Monte Carlo, Latin Hypercube, Sobol RQMC}"},
        {L"Random Stream", L"enum", L"Independent", L"{Single, Independent}"},
        {L"Sample Size", L"int", L"100", L"[1, 2147483647]"},
        {L"Expression", L"WString", L"", L""},
    };
    ASSERT_EQ(table.getNumRows(), static_cast<int>(std::size(cases)));
    for (int row = 0; row < table.getNumRows(); ++row) {
        const Case& c = cases[row];
        EXPECT_EQ(table.getRowName(row), c.name);
        EXPECT_EQ(table(row, L"Type").toString(), c.type);
        EXPECT_EQ(table(row, L"Value").toString(), c.value);
        EXPECT_EQ(table(row, L"Constraints").toString(), c.constraints);
    }
    EXPECT_EQ(table(2, L"Default").toString(), L"{}");
}

TEST(SyntheticDataGenerator, KeepsWhatSettersAreGiven) {
    Generator generator;
    EXPECT_EQ(generator.getNumMetalogTerms(L"a"), 5);
    EXPECT_EQ(generator.setMetalogAuto(false).getNumMetalogTerms(L"a"), 2);
    EXPECT_EQ(generator.getMetalogLowerBound(L"a"), -kInfinity);
    EXPECT_EQ(generator.getMetalogUpperBound(L"a"), kInfinity);
    EXPECT_EQ(generator.getMetalogGoodnessOfFitType(L"a"), GoodnessOfFitType::ANDERSON_DARLING);
    generator.setNumMetalogTerms(L"a", 7)
        .setMetalogLowerBound(L"a", 1.0)
        .setMetalogUpperBound(L"a", 2.0)
        .setMetalogGoodnessOfFitType(L"a", GoodnessOfFitType::HQIC)
        .setUseMinMaxAsBounds(true)
        .setComputeMetalogCurves(false)
        .setCorrelationType(CorrelationType::COPULA)
        .setCopula(CopulaType::GAUSS, true)
        .setCopula(CopulaType::FRANK, true)
        .setCopula(CopulaType::GAUSS, true)
        .setGenerateSample(false)
        .setRandomSeed(7)
        .setRandomGeneratorType(RandomGeneratorType::WELL)
        .setSamplingMethodType(SamplingMethodType::SOBOL_RQMC)
        .setRandomStreamType(RandomStreamType::SINGLE)
        .setSampleSize(64)
        .setExpression(L"a + 1");
    const Generator copy = generator;
    generator.setRandomSeed(8).setCopula(CopulaType::FRANK, false);
    EXPECT_EQ(copy.getNumMetalogTerms(L"a"), 7);
    EXPECT_EQ(copy.getNumMetalogTerms(L"b"), 2);
    EXPECT_EQ(copy.getMetalogLowerBound(L"a"), 1.0);
    EXPECT_EQ(copy.getMetalogUpperBound(L"a"), 2.0);
    EXPECT_EQ(copy.getMetalogGoodnessOfFitType(L"a"), GoodnessOfFitType::HQIC);
    EXPECT_TRUE(copy.getUseMinMaxAsBounds());
    EXPECT_FALSE(copy.getComputeMetalogCurves());
    EXPECT_EQ(copy.getCorrelationType(), CorrelationType::COPULA);
    EXPECT_TRUE(copy.getCopula(CopulaType::FRANK));
    EXPECT_FALSE(generator.getCopula(CopulaType::FRANK));
    EXPECT_TRUE(generator.getCopula(CopulaType::GAUSS));
    EXPECT_FALSE(copy.getGenerateSample());
    EXPECT_EQ(copy.getRandomSeed(), 7);
    EXPECT_EQ(copy.getRandomGeneratorType(), RandomGeneratorType::WELL);
    EXPECT_EQ(copy.getSamplingMethodType(), SamplingMethodType::SOBOL_RQMC);
    EXPECT_EQ(copy.getRandomStreamType(), RandomStreamType::SINGLE);
    EXPECT_EQ(copy.getSampleSize(), 64);
    EXPECT_EQ(copy.getExpression(), L"a + 1");

    // As text: the order of the copulas too.
    Generator read;
    read.setNumMetalogTerms(L"gone", 3).fromLadonString(copy.toLadon());
    EXPECT_EQ(read.toLadon(), copy.toLadon());
    EXPECT_EQ(read.toDataFrame()(8, L"Value").toString(), L"{Gauss, Frank}");
    EXPECT_EQ(read.getNumMetalogTerms(L"gone"), 2);
    generator.reset();
    EXPECT_EQ(generator.toLadon(), Generator().toLadon());
}

TEST(SyntheticDataGenerator, ReadsCopulasFromTheirFlagsAlone) {
    Generator generator;
    generator.fromLadonString(
        L"{\"objectType\":\"transformer\",\"type\":\"transformation\",\"algorithm\":"
        L"\"syntheticDataGenerator\","
        L"\"parameters\":{\"studentCopula\":true,\"frankCopula\":true,\"gaussCopula\":false}}");
    EXPECT_EQ(generator.toDataFrame()(8, L"Value").toString(), L"{Frank, Student}");
    EXPECT_NE(generator.toLadon().find(L"\"studentCopula\":true"), WString::npos);
    EXPECT_NE(generator.toLadon().find(L"\"claytonCopula\":false"), WString::npos);
}

TEST(SyntheticDataGenerator, RefusesBadParametersAndStaysAsItWas) {
    const auto rangeOf = [](const char* name, const char* range) {
        return std::string(name) + " violated a constraint: Acceptable range: " + range;
    };
    const std::string noMember = " violated a constraint: The value must be a pre-defined set member.";
    struct Case {
        std::function<void(Generator&)> spoil;
        std::string message;
    };
    const Case cases[] = {
        {[](Generator& g) { g.setNumMetalogTerms(L"a", 1); }, rangeOf("Max metalog terms", "[2,16]")},
        {[](Generator& g) { g.setNumMetalogTerms(L"a", 17); }, rangeOf("Max metalog terms", "[2,16]")},
        {[](Generator& g) { g.setMetalogGoodnessOfFitType(L"a", GoodnessOfFitType(9)); },
         "Metalog goodness of fit type" + noMember},
        {[](Generator& g) { g.setCorrelationType(CorrelationType(3)); }, "Correlation type" + noMember},
        {[](Generator& g) { g.setCopula(CopulaType(6), true); }, "Copulas" + noMember},
        {[](Generator& g) { g.setCopula(CopulaType::NONE, true); }, "Copulas" + noMember},
        {[](Generator& g) { g.setCorrelationType(CorrelationType::COPULA); },
         "Copulas violated a constraint: At least one copula must be selected."},
        {[](Generator& g) { g.setRandomSeed(-1); }, rangeOf("Random seed", "[0,2147483647]")},
        {[](Generator& g) { g.setRandomGeneratorType(RandomGeneratorType(5)); },
         "Random Generator" + noMember},
        {[](Generator& g) { g.setSamplingMethodType(SamplingMethodType(0)); }, "Sampling Method" + noMember},
        {[](Generator& g) { g.setRandomStreamType(RandomStreamType(3)); }, "Random Stream" + noMember},
        {[](Generator& g) { g.setSampleSize(0); }, rangeOf("Sample Size", "[1,2147483647]")},
        {[](Generator& g) { g.setMetalogUpperBound(L"z", 1.0); },
         "Metalog upper bound violated a constraint: z is not a column name."},
    };
    const DataFrame table = numericTable();
    for (const Case& c : cases) {
        Generator generator;
        generator.fit(table(Util::all, {L"a"}));
        c.spoil(generator);
        EXPECT_EQ(messageOf([&] { generator.fit(table); }), c.message);
        EXPECT_EQ(generator.getColNames(), StringVector{L"a"});
    }
    Generator generator;
    EXPECT_TRUE(generator.isValid());
    EXPECT_THROW(generator.setMetalogLowerBound(L"a", std::nan("")).validate(), ValueOutOfRange);
    EXPECT_FALSE(generator.isValid());
    EXPECT_THROW(Generator().fit(table).setSampleSize(-5).generate(), ValueOutOfRange);

    DataFrame twice = table;
    twice.append(table(Util::all, {L"b"}));
    EXPECT_THROW(Generator().fit(twice), DuplicateName);
}

}  // namespace
}  // namespace Tessel
