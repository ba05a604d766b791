#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/data/util/association.h>
#include <tessel/framework/errors.h>
#include <tessel/synthetic_data_generator.h>

#include "synthetic/tables.h"

namespace Tessel {
namespace {

using namespace SyntheticDataGeneration;
using Testing::logisticSample;
using Testing::numericTable;

using Generator = SyntheticDataGenerator;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

DataFrame tableOf(const WString& name, const Vector& values) {
    DataFrame table(L"one");
    table.append(DataFrameColumn(name, values));
    return table;
}

StringVector logOf(
    const Vector& values, const std::function<void(Generator&)>& prepare = [](Generator&) {}) {
    Generator generator;
    generator.setNumMetalogTerms(L"x", 3).setCorrelationType(CorrelationType::NONE);
    prepare(generator);
    return generator.fit(tableOf(L"x", values)).getLog();
}

TEST(SyntheticDataFit, FindsTheLogisticDistribution) {
    Generator generator;
    generator.setMetalogAuto(false).fit(tableOf(L"x", logisticSample(200, 10.0, 2.0, 17)));
    const DataFrame coefficients = generator.getMetalogCoefficients(L"x");
    EXPECT_EQ(coefficients.getName(), L"Metalog Coefficients: x");
    EXPECT_EQ(coefficients.getRowNames(), (StringVector{L"a1", L"a2"}));
    EXPECT_NEAR(coefficients(0, 0).toDouble(), 10.0, 1e-12);
    EXPECT_NEAR(coefficients(1, 0).toDouble(), 2.0, 1e-12);

    // F(x) = 1 / (1 + exp(-(x - 10) / 2)) has the density F (1 - F) / 2.
    const DataFrame curve = generator.getMetalogCurve(L"x");
    EXPECT_EQ(curve.getName(), L"Inverse CDF: x");
    ASSERT_EQ(curve.getColNames(), (StringVector{L"Probability", L"Inverse CDF", L"Density"}));
    ASSERT_GT(curve.getNumRows(), 50);
    EXPECT_NEAR(curve(0, 0).toDouble(), 0.0001, 1e-15);
    EXPECT_NEAR(curve(curve.getNumRows() - 1, 0).toDouble(), 0.9999, 1e-15);
    for (int row = 0; row < curve.getNumRows(); ++row) {
        const double p = curve(row, 0).toDouble();
        EXPECT_NEAR(curve(row, 1).toDouble(), 10.0 + 2.0 * std::log(p / (1.0 - p)), 1e-10);
        EXPECT_NEAR(curve(row, 2).toDouble(), p * (1.0 - p) / 2.0, 1e-12);
    }
}

TEST(SyntheticDataFit, ReportsWhatItFitted) {
    const DataFrame table = numericTable();
    Generator generator;
    generator.setNumMetalogTerms(L"a", 4)
        .setMetalogGoodnessOfFitType(L"a", GoodnessOfFitType::BIC)
        .fit(table);
    EXPECT_EQ(generator.getModelName(), L"machines");
    EXPECT_TRUE(generator.isMetalogFitted() && generator.isMetalogFitted(L"b"));
    EXPECT_TRUE(generator.isCorrelationFitted());
    EXPECT_EQ(generator.getLog(),
              (StringVector{L"Maximum number of Metalog terms is not set for b, using default value 5",
                            L"Maximum number of Metalog terms is not set for c, using default value 5"}));
    EXPECT_EQ(generator.getLogDF()(Util::all, L"Message").toStringVector(), generator.getLog());
    EXPECT_EQ(Generator().setMetalogAuto(false).fit(table).getLog()[0],
              L"Number of Metalog terms is not set for a, using default value 2");

    const DataFrame best = generator.getBestMetalog();
    EXPECT_EQ(best.getName(), L"Best Metalog Fit");
    EXPECT_EQ(best.getRowNames(), table.getColNames());
    EXPECT_EQ(best(L"a", L"Number of Terms").toInt(), generator.getBestMetalog(L"a"));
    EXPECT_EQ(best(L"a", L"Goodness of Fit Type").toString(), L"BIC");

    const DataFrame fits = generator.getMetalogGoodnessOfFit(L"a");
    EXPECT_EQ(fits.getName(), L"Metalog Goodness of Fit: a");
    ASSERT_EQ(fits.getNumRows(), 3);  // 2, 3 and 4 terms
    EXPECT_EQ(fits(0, L"Number of Terms").toInt(), generator.getBestMetalog(L"a"));
    for (int row = 0; row < 3; ++row) {
        const double k = fits(row, L"Number of Terms").toDouble(),
                     logLikelihood = fits(row, L"ML").toDouble();
        EXPECT_NEAR(fits(row, L"BIC").toDouble(), k * std::log(211.0) - 2.0 * logLikelihood, 1e-9);
        EXPECT_LE(fits(0, L"BIC").toDouble(), fits(row, L"BIC").toDouble());
        EXPECT_GT(fits(row, L"Critical Value: Chi-Square").toDouble(), 0.0);
    }

    StringVector titles;
    for (const DataFrame& report : generator.toDataFrameVector()) titles.push_back(report.getName());
    for (const wchar_t* const title :
         {L"Parameter Info", L"Best Metalog Fit", L"Metalog Bounds", L"Metalog Coefficients: c",
          L"Metalog Goodness of Fit: b", L"Inverse CDF: a", L"Correlation Sigma", L"Simulation Log"})
        EXPECT_TRUE(titles.exists(title)) << Convert::toUtf8(title);
    EXPECT_THROW(generator.getBestMetalog(L"z"), NonExistingNamedIndex);
    EXPECT_EQ(generator.getMetalogCurve().size(), 3u);
    EXPECT_EQ(generator.setComputeMetalogCurves(false).fit(table).getMetalogCurve(L"a").getNumRows(), 0);
}

TEST(SyntheticDataFit, BoundsAreGivenOrTheExtremesOfTheData) {
    const DataFrame table = numericTable();
    const double smallest = -kInfinity;
    EXPECT_EQ(Generator().fit(table).getBounds()(L"c", L"Lower").toDouble(), smallest);
    Generator generator;
    generator.setMetalogLowerBound(L"c", 0.0)
        .setMetalogUpperBound(L"b", kInfinity)
        .setUseMinMaxAsBounds(true)
        .fit(table);
    const DataFrame bounds = generator.getBounds();
    EXPECT_EQ(bounds.getName(), L"Metalog Bounds");
    EXPECT_EQ(bounds.getColNames(), (StringVector{L"Lower", L"Upper"}));
    // No value may lie on a bound: those that do are moved out by 2^-26.
    const auto cells = table(Util::all, L"c").toDoubleVector();
    const double largest = *std::max_element(cells.begin(), cells.end());
    EXPECT_EQ(bounds(L"c", L"Lower").toDouble(), 0.0);
    EXPECT_NEAR(bounds(L"c", L"Upper").toDouble(), largest + 1.4901161193848e-8, 1e-14);
    EXPECT_EQ(bounds(L"b", L"Upper").toDouble(), kInfinity);
    EXPECT_TRUE(std::isfinite(bounds(L"b", L"Lower").toDouble()));
    const DataFrame sample = generator.setSampleSize(1000).generate();
    for (const double value : sample(Util::all, L"c").values())
        EXPECT_TRUE(value > 0.0 && value < largest + 1e-7);
}

TEST(SyntheticDataFit, DataWithoutDistributionAreALineOfTheLog) {
    const Vector good = logisticSample(20, 0.0, 1.0, 7);
    const auto with = [&](double value) {
        Vector values = good;
        values.push_back(value);
        return values;
    };
    const auto bounds = [](double lower, double upper) {
        return [=](Generator& g) { g.setMetalogLowerBound(L"x", lower).setMetalogUpperBound(L"x", upper); };
    };
    const StringVector failed{L"Failed to fit Metalog to column x"}, none;
    EXPECT_EQ(logOf(good), none);
    EXPECT_EQ(logOf(with(kMissing)), none);
    EXPECT_EQ(logOf(Vector{3.0, 4.0}), none);  // two values are a metalog of two terms
    EXPECT_EQ(logOf(with(kInfinity)), failed);
    EXPECT_EQ(logOf(with(-kInfinity)), failed);
    EXPECT_EQ(logOf(Vector{3.0, 3.0, 3.0}), failed);
    EXPECT_EQ(logOf(Vector{3.0}), failed);
    EXPECT_EQ(logOf(Vector{kMissing, kMissing}), failed);
    EXPECT_EQ(logOf(Vector()), failed);
    EXPECT_EQ(logOf(good, bounds(0.0, kInfinity)), failed);  // inside the data
    EXPECT_EQ(logOf(good, bounds(-kInfinity, 0.0)), failed);
    EXPECT_EQ(logOf(good, bounds(10.0, -10.0)), failed);
    EXPECT_EQ(logOf(good, bounds(10.0, 10.0)), failed);
    EXPECT_EQ(logOf(Vector{1.0, 2.0, 3.0},
                    [](Generator& g) { g.setMetalogAuto(false).setNumMetalogTerms(L"x", 9); }),
              failed);  // more terms than values

    // Quantiles of 1e307 and more do not exist, so neither does the curve.
    Vector heavy;
    for (const double value : logisticSample(11, 0.0, 200.0, 3)) heavy.push_back(std::exp(value));
    EXPECT_EQ(logOf(heavy,
                    [](Generator& g) {
                        g.setMetalogAuto(false).setNumMetalogTerms(L"x", 2).setMetalogLowerBound(L"x", 0.0);
                    }),
              StringVector{L"Failed to compute data required for drawing the Metalog curve for variable x"});
}

TEST(SyntheticDataFit, AHopelessColumnHarmsNoOther) {
    DataFrame table = numericTable();
    const Generator alone = Generator().fit(table);
    table.insert(1, tableOf(L"constant", Vector(211, 4.0)));
    table.append(DataFrameColumn(L"kind", StringVector(211, L"new")));
    table.append(DataFrameColumn(L"missing", Vector(211, kMissing)));
    Vector endless = table(Util::all, L"a").toDoubleVector();
    endless[7] = kInfinity;
    table.append(DataFrameColumn(L"endless", endless));
    table.append(DataFrameColumn(L"id", Vector(211, 1.0)));
    table.setIndexedColNames({L"id"});
    Generator generator;
    generator.fit(table);
    EXPECT_EQ(generator.getColNames(),
              (StringVector{L"a", L"constant", L"b", L"c", L"kind", L"missing", L"endless"}));
    for (const wchar_t* const name : {L"constant", L"missing", L"endless"})
        EXPECT_TRUE(generator.getLog().exists(L"Failed to fit Metalog to column " + WString(name)));
    EXPECT_TRUE(generator.getLog().exists(L"Metalog cannot be fitted to categorical column kind"));
    EXPECT_FALSE(generator.isMetalogFitted() || generator.isMetalogFitted(L"kind"));
    EXPECT_EQ(generator.getBestMetalog(L"constant"), 0);
    EXPECT_TRUE(generator.getBestMetalog()(L"kind", 0).isMissing());
    EXPECT_TRUE(generator.getBounds()(L"kind", 0).isMissing());
    EXPECT_EQ(generator.getMetalogCoefficients(L"kind").getNumRows(), 0);
    EXPECT_EQ(generator.getMetalogCoefficients().size(), 3u);
    EXPECT_EQ(generator.getMetalogCoefficients(L"b").toJson(), alone.getMetalogCoefficients(L"b").toJson());
    EXPECT_EQ(generator.getCorrelationSigma().toJson(), alone.getCorrelationSigma().toJson());

    EXPECT_TRUE(generator.generate().empty());
    EXPECT_EQ(generator.getLog().back(),
              L"Failed to generate the sample: distribution wasn't fitted for one or more variables");
}

TEST(SyntheticDataFit, LearnsSpearmansCorrelationsOfCompleteRows) {
    DataFrame table = numericTable(41);
    table(3, L"a") = kMissing;
    table(8, L"c") = kMissing;
    const Generator generator = Generator().fit(table);
    const DataFrame sigma = generator.getCorrelationSigma();
    const DataFrame complete = table(Util::except(IntVector{3, 8}), Util::all);
    const DataFrame expected = Util::correlationMatrix(complete, Util::CorrelationType::SPEARMAN);
    EXPECT_EQ(sigma.getName(), L"Correlation Sigma");
    EXPECT_EQ(generator.getRankCorrelationSigma().getName(), L"Sigma: Rank");
    EXPECT_EQ(sigma.getColNames(), table.getColNames());
    EXPECT_EQ(sigma.getRowNames(), table.getColNames());
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_NEAR(sigma(i, j).toDouble(), expected(i, j).toDouble(), 1e-14);
    EXPECT_TRUE(std::isnan(generator.getCopulaTheta()));
    EXPECT_THROW(generator.getCopulaSigma(CopulaType::GAUSS), SDGNoCorrelationSigma);
}

TEST(SyntheticDataFit, TellsOfRepairedMatrices) {
    DataFrame table = numericTable();
    const auto with = [&](CorrelationType type, CopulaType copula) {
        Generator generator;
        for (const WString& name : table.getColNames()) generator.setNumMetalogTerms(name, 2);
        if (copula != CopulaType::NONE) generator.setCopula(copula, true);
        generator.setCorrelationType(type).fit(table);
        return generator;
    };
    const auto flag = [](const Generator& generator, const wchar_t* name) {
        return generator.getCorrelationFits()(0, name).toInt();
    };
    EXPECT_EQ(flag(with(CorrelationType::RANK, CopulaType::NONE), L"Repaired"), 0);
    EXPECT_EQ(flag(with(CorrelationType::COPULA, CopulaType::CLAYTON), L"At Limit"), 0);

    table = table(Util::all, {L"a"});
    Vector shifted = table(Util::all, L"a").toDoubleVector();
    for (double& value : shifted) value += 1.0;
    table.append(DataFrameColumn(L"a + 1", shifted));
    const WString sentence = L"Near-singular correlation matrix was repaired: ";
    for (const auto& [copula, what] : {std::pair{CopulaType::NONE, L"Rank Correlation"},
                                       {CopulaType::GAUSS, L"Gauss Copula"},
                                       {CopulaType::STUDENT, L"Student Copula"}}) {
        const bool isRank = copula == CopulaType::NONE;
        Generator generator = with(isRank ? CorrelationType::RANK : CorrelationType::COPULA, copula);
        EXPECT_EQ(generator.getLog(), StringVector{sentence + what});
        EXPECT_EQ(flag(generator, L"Repaired"), 1);
        EXPECT_NEAR(generator.getCorrelationSigma()(0, 1).toDouble(), 1.0, 1e-7);
        Generator read;
        read.fromLadonString(generator.toLadon());
        EXPECT_EQ(flag(read, L"Repaired"), 1);
        const DataFrame sample = generator.generate();
        EXPECT_GT(Util::spearmanCorrelation(sample(Util::all, 0), sample(Util::all, 1)), 0.999);
    }
    const Generator clayton = with(CorrelationType::COPULA, CopulaType::CLAYTON);
    EXPECT_EQ(flag(clayton, L"At Limit"), 1);
    EXPECT_EQ(clayton.getCopulaTheta(), 198.0);
    EXPECT_EQ(clayton.getLog(), StringVector());
}

TEST(SyntheticDataFit, TheFirstCopulaThatFitsIsSelected) {
    const DataFrame table = numericTable();
    DataFrame opposed(L"opposed");
    opposed.append(table(Util::all, {L"a", L"c"}));
    Vector turned = table(Util::all, L"b").toDoubleVector();
    for (double& value : turned) value = -value;
    opposed.append(DataFrameColumn(L"-b", turned));
    using Selection = std::vector<CopulaType>;
    struct Case {
        DataFrame table;
        Selection selection;
        CopulaType selected;
        StringVector failures;
    };
    const Case cases[] = {
        {table, {CopulaType::CLAYTON, CopulaType::GAUSS}, CopulaType::CLAYTON, {}},
        {table, {CopulaType::GAUSS, CopulaType::CLAYTON}, CopulaType::GAUSS, {}},
        {table, {CopulaType::STUDENT}, CopulaType::STUDENT, {}},
        {opposed(Util::all, {L"a", L"-b"}),
         {CopulaType::GUMBEL, CopulaType::STUDENT},
         CopulaType::STUDENT,
         {L"Failed to fit Gumbel Copula"}},
        {table(Util::all, {L"a"}), {CopulaType::FRANK}, CopulaType::NONE, {L"Failed to fit Frank Copula"}},
    };
    for (const Case& c : cases) {
        Generator generator;
        generator.setCorrelationType(CorrelationType::COPULA);
        for (const WString& name : c.table.getColNames()) generator.setNumMetalogTerms(name, 3);
        for (const CopulaType type : c.selection) generator.setCopula(type, true);
        generator.fit(c.table);
        EXPECT_EQ(generator.getSelectedCopula(), c.selected);
        EXPECT_EQ(generator.getLog(), c.failures);
        EXPECT_EQ(generator.isCorrelationFitted(), c.selected != CopulaType::NONE);
        EXPECT_EQ(generator.getCorrelationFits().getNumRows(),
                  static_cast<int>(c.failures.size()) + (c.selected != CopulaType::NONE ? 1 : 0));
        const bool hasSigma = c.selected == CopulaType::GAUSS || c.selected == CopulaType::STUDENT;
        if (hasSigma) {
            EXPECT_EQ(generator.getCopulaSigma(c.selected).getName(),
                      L"Sigma: " + Generator::getCopulaTypeName(c.selected));
            EXPECT_EQ(generator.getCorrelationSigma()(0, 0).toDouble(), 1.0);
        } else {
            EXPECT_THROW(generator.getCorrelationSigma(), SDGNoCorrelationSigma);
        }
        EXPECT_EQ(std::isnan(generator.getCopulaTheta()), c.selected != CopulaType::CLAYTON);
        EXPECT_EQ(std::isnan(generator.getCopulaDegreesOfFreedom()), c.selected != CopulaType::STUDENT);
        EXPECT_THROW(generator.getRankCorrelationSigma(), SDGNoCorrelationSigma);
    }
    try {
        Generator().fit(table).getCopulaSigma(CopulaType::STUDENT);
        FAIL() << "there is no matrix of a Student copula";
    } catch (const SDGNoCorrelationSigma& error) {
        EXPECT_STREQ(error.what(), "Correlation matrix for Student is not available");
    }
}

}  // namespace
}  // namespace Tessel
