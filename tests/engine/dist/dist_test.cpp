#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/dist/catalogue.h"
#include "engine/dist/empirical_dist.h"
#include "engine/dist/families.h"
#include "engine/dist/metalog_dist.h"
#include "engine/dist/reference_tables.h"

using namespace Tessel::Engine::Dist;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string nameOf(std::wstring_view name) { return std::string(name.begin(), name.end()); }

void expectClose(double actual, double expected, double relative, const std::string& what) {
    if (std::isnan(expected) || std::isinf(expected))
        EXPECT_TRUE(std::isnan(actual) ? std::isnan(expected) : actual == expected) << what << ": " << actual;
    else
        EXPECT_NEAR(actual, expected, relative * std::abs(expected)) << what;
}

std::unique_ptr<CDist> distOf(const Reference::Case& c) {
    std::unique_ptr<CDist> dist = makeDist(c.functionName);
    EXPECT_TRUE(dist && dist->setParameters(c.parameters)) << nameOf(c.functionName);
    return dist;
}

/// Chances from one tail to the other.
const std::vector<double> kChances{1e-12, 1e-9, 1e-6, 1e-3,  0.01,       0.1,        0.3,        0.5,
                                   0.7,   0.9,  0.99, 0.999, 1.0 - 1e-6, 1.0 - 1e-9, 1.0 - 1e-12};

}  // namespace

TEST(Families, AgreeWithMpmath) {
    std::set<std::wstring> seen;
    for (const Reference::Case& c : Reference::kCases) {
        const auto dist = distOf(c);
        const std::string name = nameOf(c.functionName);
        for (const auto& point : c.points) {
            const std::string at = name + " at " + std::to_string(point.x);
            // In the tails x / scale is rounded, which the slope of the logarithm multiplies.
            expectClose(dist->pdf(point.x), point.pdf, 2e-11, at + ", pdf");
            expectClose(dist->cdf(point.x), point.cdf, 2e-11, at + ", cdf");
            if (!std::isnan(point.complementaryCdf))
                expectClose(dist->complementaryCdf(point.x), point.complementaryCdf, 2e-11,
                            at + ", upper tail");
        }
        const double moments[] = {dist->mean(), dist->variance(), dist->skewness(), dist->excessKurtosis()};
        for (int k = 0; k < 4; ++k) {
            if (std::isnan(c.moments[k]))
                EXPECT_FALSE(std::isfinite(moments[k])) << name << ", moment " << k + 1;
            else  // the moments of SciPy have up to 12 digits
                EXPECT_NEAR(moments[k], c.moments[k], 5e-12 * std::max(1.0, std::abs(c.moments[k])))
                    << name << ", moment " << k + 1;
        }
        seen.insert(c.functionName);
    }
    EXPECT_EQ(seen.size(), 29u);
}

// Closed forms and first terms of expansions, where other ways of computing have few digits or none.
TEST(Families, KeepDigitsInFarTails) {
    const double z = 30.0, mills = 1.0 / (z + 1.0 / (z + 2.0 / (z + 3.0 / (z + 4.0 / (z + 5.0 / z)))));
    EXPECT_NEAR(CNormalDist().complementaryCdf(z) / (CNormalDist().pdf(z) * mills), 1.0, 1e-13);
    EXPECT_DOUBLE_EQ(CExpoDist(1).complementaryCdf(700.0), std::exp(-700.0));
    EXPECT_NEAR(CExpoDist(1).cdf(1e-20), 1e-20, 1e-34);
    EXPECT_NEAR(CLogisticDist(0, 1).complementaryCdf(500.0) / std::exp(-500.0), 1.0, 1e-14);
    EXPECT_NEAR(CBetaDist(0.5, 0.5).complementaryCdf(1.0 - 0x1p-52) / (2.0 * 0x1p-26 / std::numbers::pi), 1.0,
                1e-15);
    EXPECT_NEAR(CStudentDist(1).complementaryCdf(1e150) * std::numbers::pi * 1e150, 1.0, 1e-14);
    EXPECT_NEAR(CPoissonDist(1e12).cdf(1e12), 0.5 + 2.0 / 3.0 / std::sqrt(2e12 * std::numbers::pi), 1e-15);
    EXPECT_NEAR(CNormalDist().logPdf(1e10), -5e19, 1e5);
}

TEST(Families, AnswersFitTogether) {
    for (const Reference::Case& c : Reference::kCases) {
        const auto dist = distOf(c);
        const std::string name = nameOf(c.functionName);
        double previous = -kInfinity;
        for (const double p : kChances) {
            const double x = dist->inverseCdf(p);
            const std::string at = name + " at p = " + std::to_string(p);
            EXPECT_GE(x, previous) << at;
            previous = x;
            const double cdf = dist->cdf(x), upper = dist->complementaryCdf(x);
            EXPECT_NEAR(cdf + upper, 1.0, 1e-15) << at;
            EXPECT_NEAR(std::exp(dist->logPdf(x)), dist->pdf(x), 1e-12 * dist->pdf(x)) << at;
            if (dist->isContinuous()) {
                // x is rounded: by half a unit of its last place, or of a bound that it is beside.
                const double slack = 1e-15 * (std::abs(x) + 1.0) * dist->pdf(x);
                EXPECT_NEAR(cdf, p, 1e-13 * p + slack) << at;
                EXPECT_NEAR(upper, 1.0 - p, 1e-13 * (1.0 - p) + slack) << at;
                // The density is the slope of the nearer tail: Richardson's extrapolation of differences.
                if (p < 1e-3 || p > 1.0 - 1e-3 || p == 0.5) continue;  // Laplace has a kink in the middle
                const double h = 1e-3 * (p < 0.5 ? cdf : upper) / dist->pdf(x);
                const auto slope = [&](double width) {
                    return p < 0.5 ? (dist->cdf(x + width) - dist->cdf(x - width)) / (2 * width)
                                   : (dist->complementaryCdf(x - width) - dist->complementaryCdf(x + width)) /
                                         (2 * width);
                };
                EXPECT_NEAR((4.0 * slope(h) - slope(2.0 * h)) / 3.0, dist->pdf(x), 1e-8 * dist->pdf(x)) << at;
            } else {
                EXPECT_GE(cdf, p) << at;
                EXPECT_LT(dist->cdf(x - 1.0), p) << at;
                EXPECT_EQ(dist->inverseCdf(cdf), x) << at;
                EXPECT_EQ(dist->cdf(x + 0.5), cdf) << at;
                EXPECT_EQ(dist->pdf(x + 0.5), 0.0) << at;
                EXPECT_EQ(dist->logPdf(x + 0.5), -kInfinity) << at;
                EXPECT_NEAR(cdf - dist->cdf(x - 1.0), dist->pdf(x), 1e-13 * cdf + 2e-16) << at;
            }
        }
        // No density is above that of the mode.
        for (const double p : kChances) {
            if (dist->isContinuous() && dist->mode() == dist->support().lower) break;  // may be infinite
            EXPECT_LE(dist->pdf(dist->inverseCdf(p)), dist->pdf(dist->mode()) * (1 + 1e-12)) << name;
        }
        EXPECT_EQ(dist->median(), dist->inverseCdf(0.5));
    }
    EXPECT_EQ(CLaplaceDist().kurtosis(), 6.0);
}

// Shapes for which other approximations start the search of a quantile, or none does.
TEST(Families, QuantilesOfUnusualShapes) {
    const struct {
        const wchar_t* name;
        std::vector<std::vector<double>> parameters;
    } cases[] = {
        {L"LyrGamma",
         {{1e-8, 1},
          {0.001, 1},
          {0.00267, 1},
          {0.01, 1},
          {0.3, 2},
          {1, 1},
          {37.5, 1},
          {1e3, 1e-3},
          {2e5, 1},
          {5e7, 1}}},
        {L"LyrPearson5", {{0.5, 1}, {300, 2}}},
        {L"LyrInvNormal",
         {{1000, 1}, {1, 0.01}, {1, 0.3}, {1, 0.7}, {2, 40}, {1, 1e3}, {5, 1e6}, {1e-3, 1e3}}},
        {L"LyrWeibull", {{0.05, 1e3}, {25, 3}}},
        {L"LyrLogLogistic", {{-1, 3, 0.05}, {0, 2, 40}}},
        {L"LyrBeta",
         {{1, 1},
          {0.5, 0.5},
          {0.11, 0.11},
          {1, 5},
          {0.2, 7},
          {7, 0.2},
          {1.01, 0.5},
          {2, 300},
          {300, 2},
          {400, 500},
          {30, 40},
          {0.05, 3},
          {700, 5000}}},
        {L"LyrBinomial",
         {{1, 0.3}, {10, 1e-9}, {10, 1 - 1e-9}, {1000, 0.3}, {300, 0.999}, {1e9, 0.5}, {5, 0}, {5, 1}}},
        {L"LyrGeometric", {{1e-6}, {0.1}, {0.5}, {0.999}, {1}}},
    };
    for (const auto& [name, all] : cases)
        for (const std::vector<double>& parameters : all) {
            const auto dist = makeDist(name);
            ASSERT_TRUE(dist->setParameters(parameters));
            for (const double p : kChances) {
                const double x = dist->inverseCdf(p), cdf = dist->cdf(x);
                const std::string at =
                    nameOf(name) + ' ' + std::to_string(parameters[0]) + ", p " + std::to_string(p);
                ASSERT_FALSE(std::isnan(x)) << at;
                if (!dist->isContinuous()) {
                    EXPECT_TRUE(cdf >= p && dist->cdf(x - 1.0) < p) << at;
                    EXPECT_TRUE(cdf == 1.0 || dist->inverseCdf(cdf) == x) << at;
                } else if (x > 0.0) {  // else below the smallest number
                    const double rounding = 2e-16 * std::abs(x) * dist->pdf(x);
                    EXPECT_NEAR(cdf, p, 2e-13 * p + rounding) << at;
                    EXPECT_NEAR(dist->complementaryCdf(x), 1.0 - p, 2e-13 * (1.0 - p) + rounding) << at;
                }
            }
        }
}

TEST(Families, GeometricQuantileIsExactAtSteps) {
    // The smallest whole number whose chance is reached, for chances at a step, beside one, and far from any.
    for (const double parameter : {1e-310, 1e-9, 1e-6, 0.003, 0.1, 0.25, 0.5, 0.75, 0.999}) {
        const CGeomDist dist(parameter);
        std::vector<double> chances;
        for (double x = 0.0; x < 3e9; x += 1.0 + std::floor(0.01 * x)) {
            const double step = dist.cdf(x), half = 0.5 * (step + dist.cdf(x + 1.0));
            for (const double p : {std::nextafter(step, 0.0), step, std::nextafter(step, 1.0), half})
                if (p < 1.0) chances.push_back(p);
        }
        std::vector<double> quantiles(chances);
        dist.inverseCdfs(quantiles, quantiles);
        for (std::size_t i = 0; i < chances.size(); ++i) {
            const double p = chances[i], x = quantiles[i];
            EXPECT_TRUE(dist.cdf(x) >= p && dist.cdf(x - 1.0) < p) << parameter << ' ' << p;
            EXPECT_EQ(dist.inverseCdf(p), x) << parameter << ' ' << p;
        }
    }
}

TEST(Families, ShiftMovesEverything) {
    for (const Reference::Case& c : Reference::kCases) {
        const auto dist = distOf(c);
        const auto moved = dist->clone();
        moved->setShift(16.0);
        const std::string name = nameOf(c.functionName);
        for (const double p : {0.01, 0.5, 0.99}) {
            const double x =
                std::ldexp(std::round(std::ldexp(dist->inverseCdf(p), 20)), -20);  // x + 16 is exact
            EXPECT_EQ(moved->pdf(x + 16.0), dist->pdf(x)) << name;
            EXPECT_EQ(moved->logPdf(x + 16.0), dist->logPdf(x)) << name;
            EXPECT_EQ(moved->cdf(x + 16.0), dist->cdf(x)) << name;
            EXPECT_EQ(moved->complementaryCdf(x + 16.0), dist->complementaryCdf(x)) << name;
            EXPECT_EQ(moved->inverseCdf(p), dist->inverseCdf(p) + 16.0) << name;
        }
        expectClose(moved->mean(), dist->mean() + 16.0, 0.0, name);
        EXPECT_EQ(moved->mode(), dist->mode() + 16.0) << name;
        EXPECT_EQ(dist->shift(), 0.0) << name << ": a clone is a copy";
        expectClose(moved->variance(), dist->variance(), 0.0, name);
    }
}

TEST(Families, SpansAnswerAsSingleNumbers) {
    for (const Reference::Case& c : Reference::kCases) {
        const auto dist = distOf(c);
        std::vector<double> x, result(kChances.size() + 3);
        for (const double p : kChances) x.push_back(dist->inverseCdf(p));
        x.insert(x.end(), {kNaN, kInfinity, -kInfinity});
        const auto expectSame = [&](void (CDist::*many)(std::span<const double>, std::span<double>) const,
                                    double (CDist::*one)(double) const) {
            (*dist.*many)(x, result);
            for (std::size_t i = 0; i < x.size(); ++i)
                expectClose(result[i], (*dist.*one)(x[i]), 0.0, nameOf(c.functionName));
        };
        expectSame(&CDist::pdfs, &CDist::pdf);
        expectSame(&CDist::logPdfs, &CDist::logPdf);
        expectSame(&CDist::cdfs, &CDist::cdf);
        expectSame(&CDist::complementaryCdfs, &CDist::complementaryCdf);
        x = kChances;
        x.insert(x.end(), {kNaN, -0.1, 1.1});
        expectSame(&CDist::inverseCdfs, &CDist::inverseCdf);
        EXPECT_TRUE(std::all_of(result.end() - 3, result.end(), [](double q) { return std::isnan(q); }));
    }
}

TEST(Families, EndsAndBadArguments) {
    for (const Reference::Case& c : Reference::kCases) {
        const auto dist = distOf(c);
        const std::string name = nameOf(c.functionName);
        const Interval support = dist->support();
        EXPECT_EQ(dist->inverseCdf(0.0), support.lower) << name;
        EXPECT_EQ(dist->inverseCdf(1.0), support.upper) << name;
        for (const double x : {kInfinity, -kInfinity, support.lower - 1.0, support.upper + 1.0}) {
            const double cdf = x > support.lower ? 1.0 : 0.0;
            EXPECT_EQ(dist->pdf(x), 0.0) << name << x;
            EXPECT_EQ(dist->logPdf(x), -kInfinity) << name << x;
            EXPECT_EQ(dist->cdf(x), cdf) << name << x;
            EXPECT_EQ(dist->complementaryCdf(x), 1.0 - cdf) << name << x;
        }
        for (const double x : {1e308, -1e308, 1e-308, 0.0, support.lower, support.upper}) {
            EXPECT_TRUE(dist->pdf(x) >= 0.0) << name << x;
            EXPECT_TRUE(dist->cdf(x) >= 0.0 && dist->cdf(x) <= 1.0) << name << x;
            EXPECT_TRUE(dist->complementaryCdf(x) >= 0.0 && dist->complementaryCdf(x) <= 1.0) << name << x;
            EXPECT_FALSE(std::isnan(dist->logPdf(x))) << name << x;
        }
        EXPECT_TRUE(std::isnan(dist->pdf(kNaN)) && std::isnan(dist->cdf(kNaN))) << name;

        // Every parameter made NaN or infinite, and wrong numbers of parameters.
        const std::wstring before = dist->formulaText();
        std::vector<double> parameters = c.parameters;
        parameters.insert(parameters.end(), 4, 1.0);
        EXPECT_FALSE(dist->setParameters({})) << name;
        EXPECT_FALSE(dist->setParameters(parameters)) << name;
        EXPECT_EQ(dist->formulaText(), before) << name;
        for (std::size_t i = 0; i < c.parameters.size(); ++i)
            for (const double bad : {kNaN, kInfinity, -kInfinity}) {
                parameters = c.parameters;
                parameters[i] = bad;
                EXPECT_FALSE(dist->setParameters(parameters)) << name;
                EXPECT_FALSE(dist->isValid()) << name;
                EXPECT_TRUE(dist->formulaText().empty()) << name;
                EXPECT_TRUE(std::isnan(dist->pdf(0.5)) && std::isnan(dist->inverseCdf(0.5)) &&
                            std::isnan(dist->mean()) && std::isnan(dist->mode()))
                    << name;
                double result = 0.0;
                dist->cdfs(std::vector{0.5}, {&result, 1});
                EXPECT_TRUE(std::isnan(result)) << name;
            }
    }
}

TEST(Families, RefuseInadmissibleParameters) {
    const struct {
        const wchar_t* name;
        std::vector<double> parameters;
    } cases[] = {
        {L"LyrNormal", {0, 0}},
        {L"LyrNormal", {0, -1}},
        {L"LyrNormal", {1e300, 1e299}},
        {L"LyrNormal", {0, 1e300}},
        {L"LyrErf", {0}},
        {L"LyrStudent", {0}},
        {L"LyrCauchy", {0, 0}},
        {L"LyrLaplace", {0, -1}},
        {L"LyrLogistic", {-9e299, 1e299}},
        {L"LyrExponential", {0}},
        {L"LyrGamma", {-1, 1}},
        {L"LyrErlang", {2.5, 1}},
        {L"LyrErlang", {0, 1}},
        {L"LyrChiSquare", {0}},
        {L"LyrPearson5", {1, 0}},
        {L"LyrInvNormal", {0, 1}},
        {L"LyrLogNormal", {0, 0}},
        {L"LyrLogLogistic", {0, 1, 0}},
        {L"LyrPareto", {1, 0}},
        {L"LyrRayleigh", {-1}},
        {L"LyrWeibull", {0, 1}},
        {L"LyrBeta", {0, 1}},
        {L"LyrBetaGen", {1, 1, 2, 2}},
        {L"LyrUniform", {1, 1}},
        {L"LyrUniform", {2, 1}},
        {L"LyrBernoulli", {1.5}},
        {L"LyrBinomial", {2.5, 0.5}},
        {L"LyrBinomial", {10, -0.1}},
        {L"LyrGeometric", {0}},
        {L"LyrNegBinomial", {0, 0.5}},
        {L"LyrNegBinomial", {5, 0}},
        {L"LyrPoisson", {0}},
        {L"LyrLogarithmic", {1}},
        {L"LyrLogarithmic", {0}},
        {L"LyrIntUniform", {0, 2.5}},
        {L"LyrIntUniform", {3, 2}},
    };
    for (const auto& [name, parameters] : cases)
        EXPECT_FALSE(makeDist(name)->setParameters(parameters)) << nameOf(name) << ' ' << parameters[0];
    EXPECT_TRUE(CNormalDist(9e299, 1e298).isValid());
    EXPECT_FALSE(CNormalDist(1.0).isValid()) << "one parameter of two";
    EXPECT_TRUE(CBernoulliDist(0).isValid() && CBinomialDist(3, 1).isValid());
    EXPECT_EQ(CBinomialDist(3, 1).pdf(3), 1.0);
    EXPECT_EQ(CGeomDist(1).cdf(0), 1.0);
}

TEST(Families, FormulaTexts) {
    const struct {
        std::int32_t code;
        const wchar_t* text;
    } defaults[] = {
        {1, L"LyrBernoulli(0.5)"},
        {2, L"LyrBeta(1.5, 3)"},
        {4, L"LyrBetaGen(1.5, 3, 0, 10)"},
        {6, L"LyrBinomial(10, 0.5)"},
        {7, L"LyrCauchy(0, 50)"},
        {8, L"LyrChiSquare(5)"},
        {15, L"LyrErf(1)"},
        {16, L"LyrErlang(2, 1)"},
        {17, L"LyrExponential(1)"},
        {18, L"LyrGamma(4, 1)"},
        {20, L"LyrGeometric(0.5)"},
        {24, L"LyrIntUniform(0, 10)"},
        {25, L"LyrInvNormal(10, 40)"},
        {26, L"LyrLaplace(0, 1)"},
        {27, L"LyrLogarithmic(0.5)"},
        {28, L"LyrLogistic(0, 1)"},
        {29, L"LyrLogLogistic(0, 1, 5)"},
        {32, L"LyrMaxExtreme(0, 1)"},
        {33, L"LyrMinExtreme(0, 1)"},
        {35, L"LyrNegBinomial(5, 0.5)"},
        {36, L"LyrNormal(0, 1)"},
        {37, L"LyrPareto(20, 100)"},
        {39, L"LyrPearson5(10, 100)"},
        {42, L"LyrPoisson(1)"},
        {43, L"LyrRayleigh(1)"},
        {47, L"LyrStudent(5)"},
        {50, L"LyrUniform(0, 1)"},
        {52, L"LyrWeibull(2, 1)"},
    };
    for (const auto& [code, text] : defaults) {
        const auto dist = makeDist(code);
        ASSERT_TRUE(dist) << code;
        EXPECT_EQ(dist->formulaText(), text);
        EXPECT_EQ(dist->familyCode(), code);
    }
    wchar_t buffer[CDist::kFormulaSize];
    CNormalDist normal(-1234567.0, 1e-7);
    normal.formulaText(buffer);
    EXPECT_EQ(std::wstring(buffer), L"LyrNormal(-1.23457e+06, 1e-07)");
    normal.setShift(2.5);
    EXPECT_EQ(normal.formulaText(), L"LyrNormal(-1.23457e+06, 1e-07, LyrShift(2.5))");
    CNormalDist(0, 0).formulaText(buffer);
    EXPECT_EQ(std::wstring(buffer), L"");
    normal.formulaText(static_cast<wchar_t*>(nullptr));
    normal.setShift(kNaN);
    EXPECT_FALSE(normal.isValid());
}

TEST(Families, UniformAndSupportRules) {
    const CUniformDist uniform(2, 6);
    const double expected[][3] = {
        {1, 0, 0}, {2, 0, 0}, {3, 0.25, 0.25}, {6, 0, 1}, {7, 0, 1}};  // x, pdf, cdf
    for (const auto& [x, pdf, cdf] : expected) {
        EXPECT_EQ(uniform.pdf(x), pdf) << x;
        EXPECT_EQ(uniform.cdf(x), cdf) << x;
    }
    EXPECT_EQ(uniform.inverseCdf(0.0), 2.0);
    EXPECT_EQ(uniform.inverseCdf(0.25), 3.0);
    EXPECT_EQ(uniform.inverseCdf(1.0), 6.0);

    CNormalDist normal;
    normal.setSupport({-1.0, kInfinity});
    EXPECT_EQ(normal.pdf(-1.5), 0.0);
    EXPECT_EQ(normal.cdf(-1.5), 0.0);
    EXPECT_EQ(normal.complementaryCdf(-1.5), 1.0);
    EXPECT_EQ(normal.cdf(0.0), 0.5);
    EXPECT_EQ(normal.inverseCdf(0.01), -1.0);
    normal.setSupport({1.0, -1.0});
    EXPECT_FALSE(normal.isValid());
    normal.setParameters(std::vector{0.0, 1.0});
    EXPECT_EQ(normal.support().lower, -kInfinity) << "parameters bring the default support";
}

TEST(Families, StudentHasHiddenLocationAndScale) {
    CStudentDist dist(5, 10, 2);
    EXPECT_EQ(dist.formulaText(), L"LyrStudent(5)");
    EXPECT_EQ(dist.mean(), 10.0);
    EXPECT_DOUBLE_EQ(dist.cdf(12.0), CStudentDist(5).cdf(1.0));
    EXPECT_DOUBLE_EQ(dist.pdf(12.0), CStudentDist(5).pdf(1.0) / 2.0);
    EXPECT_FALSE(CStudentDist(5, 10, 0).isValid());
    EXPECT_FALSE(CStudentDist(5, 10).isValid());
}

TEST(EmpiricalDist, IsItsSample) {
    CEmpiricalDist dist;
    EXPECT_FALSE(dist.isValid());
    EXPECT_EQ(dist.formulaText(), L"");
    EXPECT_TRUE(std::isnan(dist.cdf(1.0)) && std::isnan(dist.mean()));
    ASSERT_TRUE(dist.fitData(std::vector{4.0, 1.0, 7.0, 4.0}));
    EXPECT_EQ(dist.formulaText(), L"LyrEmpirical");
    EXPECT_FALSE(dist.isContinuous());
    EXPECT_EQ(dist.mean(), 4.0);
    EXPECT_EQ(dist.variance(), 4.5);
    EXPECT_EQ(dist.skewness(), 0.0);
    EXPECT_EQ(dist.excessKurtosis(), -1.0);  // 81 * 2 / 4 / 4.5^2 - 3
    EXPECT_EQ(dist.mode(), 4.0);
    EXPECT_EQ(dist.pdf(4.0), 0.5);
    EXPECT_EQ(dist.pdf(4.5), 0.0);
    const double cdf[][2] = {{0, 0}, {1, 0.25}, {3.9, 0.25}, {4, 0.75}, {7, 1}, {8, 1}};
    for (const auto& [x, p] : cdf) {
        EXPECT_EQ(dist.cdf(x), p) << x;
        EXPECT_EQ(dist.complementaryCdf(x), 1.0 - p) << x;
    }
    const double quantiles[][2] = {{0, 1}, {0.25, 1}, {0.26, 4}, {0.75, 4}, {0.76, 7}, {1, 7}};
    for (const auto& [p, x] : quantiles) EXPECT_EQ(dist.inverseCdf(p), x) << p;
    EXPECT_FALSE(dist.fitData(std::vector{1.0, kNaN}));
    EXPECT_EQ(dist.sample().size(), 4u) << "a bad sample changes nothing";
    dist.setShift(10.0);
    EXPECT_EQ(dist.inverseCdf(0.5), 14.0);
    EXPECT_EQ(dist.clone()->mean(), 14.0);
}

TEST(Catalogue, HasEveryFamilyOnce) {
    std::set<std::int32_t> codes;
    std::set<std::wstring_view> names, sentences;
    std::int32_t previous = 0;
    for (const CatalogueEntry& entry : catalogue()) {
        const FamilyDescription& family = entry.family;
        names.insert(family.functionName);
        sentences.insert(family.sentence);
        EXPECT_TRUE(family.sentence.starts_with(family.functionName)) << nameOf(family.functionName);
        if (family.code != CDist::kNoFamilyCode) {
            EXPECT_GT(family.code, previous) << nameOf(family.functionName);
            previous = family.code;
            codes.insert(family.code);
            EXPECT_EQ(findFamily(family.code), &entry);
        }
        EXPECT_EQ(findFamily(family.functionName), &entry);
        for (std::size_t i = 0; i < family.numParameters; ++i)
            EXPECT_FALSE(family.parameters[i].name.empty());
    }
    EXPECT_EQ(codes.size(), 30u);
    EXPECT_EQ(names.size(), 32u);
    EXPECT_EQ(sentences.size(), 32u);
    EXPECT_EQ(
        findFamily(CMetalogDist::kFamilyCode)->family.sentence,
        L"LyrMetalog is a continuous custom distribution obtained by fitting historical cdf pairs into a "
        L"meta-logistic structure defined by 2 to 16 coeficients and optional bounds.");
    EXPECT_EQ(findFamily(3), nullptr);
    EXPECT_EQ(findFamily(0), nullptr);
    for (const CatalogueEntry& entry : catalogue()) {
        const auto dist = entry.make();
        EXPECT_EQ(dist->familyCode(), entry.family.code) << nameOf(entry.family.functionName);
        EXPECT_TRUE(!dist->isValid() || dist->formulaText().starts_with(entry.family.functionName));
    }
    for (const std::int32_t code : {59, 76}) {
        const auto metalog = makeDist(code);
        EXPECT_FALSE(metalog->isValid());
        EXPECT_EQ(metalog->formulaText(), L"");
        EXPECT_TRUE(std::isnan(metalog->cdf(0.0)) && std::isnan(metalog->mean()));
        EXPECT_TRUE(metalog->setParameters(std::vector{1.0, 2.0}));  // logistic
        EXPECT_EQ(metalog->median(), 1.0);
        EXPECT_EQ(metalog->formulaText(), code == 59 ? L"LyrMetalog(1, 2)" : L"LyrMetalog2(1, 2)");
    }
    EXPECT_EQ(makeDist(3), nullptr);
    EXPECT_EQ(makeDist(L"LyrUnknown"), nullptr);
    EXPECT_TRUE(makeDist(L"LyrLogNormal")->isValid());
}
