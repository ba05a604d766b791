#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>
#include <tessel/data/util/association.h>

using namespace Tessel;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kRelative = 1e-14;  // about 30 roundings
// Small p-values lose as many digits as their logarithm has before the point.
constexpr double kTailRelative = 1e-13;

void expectClose(double actual, double expected, const char* what, double relative = kRelative) {
    EXPECT_NEAR(actual, expected, relative * std::abs(expected)) << what;
}

// Columns mpg and wt of the R data set mtcars.
const Vector kConsumption{21.0, 21.0, 22.8, 21.4, 18.7, 18.1, 14.3, 24.4, 22.8, 19.2, 17.8,
                          16.4, 17.3, 15.2, 10.4, 10.4, 14.7, 32.4, 30.4, 33.9, 21.5, 15.5,
                          15.2, 13.3, 19.2, 27.3, 26.0, 30.4, 15.8, 19.7, 15.0, 21.4};
const Vector kWeight{2.62,  2.875, 2.32,  3.215, 3.44,  3.46,  3.57, 3.19,  3.15,  3.44,  3.44,
                     4.07,  3.73,  3.78,  5.25,  5.424, 5.345, 2.2,  1.615, 1.835, 2.465, 3.52,
                     3.435, 3.84,  3.845, 1.935, 2.14,  1.513, 3.17, 2.77,  3.57,  2.78};
// Consumption by gear box: automatic, manual.
const Vector kAutomatic{21.4, 18.7, 18.1, 14.3, 24.4, 22.8, 19.2, 17.8, 16.4, 17.3,
                        15.2, 10.4, 10.4, 14.7, 21.5, 15.5, 15.2, 13.3, 19.2};
const Vector kManual{21.0, 21.0, 22.8, 32.4, 30.4, 33.9, 27.3, 26.0, 30.4, 15.8, 19.7, 15.0, 21.4};

DataFrameColumn texts(const StringVector& cells) { return DataFrameColumn(L"text", cells); }

// Tau-b by looking at every pair, which shares nothing with counting inversions.
double tauOfAllPairs(const Vector& x, const Vector& y) {
    double score = 0, comparableX = 0, comparableY = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const double signX = (x[i] > x[j]) - (x[i] < x[j]), signY = (y[i] > y[j]) - (y[i] < y[j]);
            score += signX * signY;
            comparableX += signX * signX;
            comparableY += signY * signY;
        }
    }
    return score / std::sqrt(comparableX * comparableY);
}

}  // namespace

TEST(Correlation, AgreesWithR) {  // R 4.2.2: cor(mpg, wt, method = ...)
    Vector x = kConsumption, y = kWeight;
    for (const double missing : {1.0, kNaN}) {  // pairs with a missing member do not count
        x.push_back(missing);
        y.push_back(kNaN);
    }
    expectClose(Util::pearsonCorrelation(x, y), -0.8676593765172278, "Pearson");
    expectClose(Util::spearmanCorrelation(x, y), -0.88642203327029789, "Spearman");
    expectClose(Util::kendallCorrelation(x, y), -0.727832149528431, "Kendall");
    EXPECT_THROW(Util::pearsonCorrelation(x, kWeight), NumElementsMismatch);

    for (const auto correlation :
         {static_cast<double (*)(const Vector&, const Vector&)>(Util::pearsonCorrelation),
          static_cast<double (*)(const Vector&, const Vector&)>(Util::spearmanCorrelation),
          static_cast<double (*)(const Vector&, const Vector&)>(Util::kendallCorrelation)}) {
        EXPECT_TRUE(std::isnan(correlation({}, {})) && std::isnan(correlation({1}, {2})));
        EXPECT_TRUE(std::isnan(correlation({0.1, 0.1, 0.1}, {1, 2, 3})));
        EXPECT_EQ(correlation({1, 2, 3, 4}, {8, 6, 4, 2}), -1.0);
        // Whole numbers far from 0 correlate as they do near it.
        EXPECT_EQ(correlation({1e9 + 1, 1e9 + 5, 1e9 + 2}, {3, 4, 5}), correlation({1, 5, 2}, {3, 4, 5}));
    }
}

TEST(Correlation, KendallAgreesWithLookingAtAllPairs) {
    std::uint32_t state = 12345;
    for (const std::size_t size : {2u, 3u, 10u, 100u, 257u}) {
        Vector x, y;
        for (std::size_t i = 0; i < size; ++i) {
            state = state * 1664525u + 1013904223u;
            x.push_back(i == 0 ? -1 : static_cast<double>((state >> 20) % 7));
            y.push_back(i == 0 ? -1 : static_cast<double>((state >> 26) % 5) + (i % 2 == 0 ? x.back() : 0));
        }
        expectClose(Util::kendallCorrelation(x, y), tauOfAllPairs(x, y), "tau-b");
    }
}

TEST(Correlation, MatrixUsesThePairsPresent) {
    DataFrame table;
    table.append(DataFrameColumn(L"a", Vector{1, 2, 3, 4, 6}));
    table.append(DataFrameColumn(L"b", Vector{2, 1, kNaN, 9, 3}));
    table.append(DataFrameColumn(L"text", StringVector{L"x", L"y", L"x", L"y", L"x"}));
    table.append(DataFrameColumn(L"c", Vector{5, 3, 3, 2, 8}));
    table.append(DataFrameColumn(L"constant", Vector(5, 0.1)));
    const std::pair<Util::CorrelationType, double (*)(const DataFrameColumn&, const DataFrameColumn&)>
        types[] = {{Util::CorrelationType::PEARSON, Util::pearsonCorrelation},
                   {Util::CorrelationType::SPEARMAN, Util::spearmanCorrelation},
                   {Util::CorrelationType::KENDALL, Util::kendallCorrelation}};
    for (const auto& [type, correlation] : types) {
        const DataFrame matrix = Util::correlationMatrix(table, type);
        const StringVector names{L"a", L"b", L"c", L"constant"};
        EXPECT_EQ(matrix.getColNames(), names);
        EXPECT_EQ(matrix.getRowNames(), names);
        for (const WString& row : names) {
            for (const WString& column : names) {
                const double cell = matrix(row, column).toDouble();
                if (row == L"constant" || column == L"constant")
                    EXPECT_TRUE(std::isnan(cell));
                else
                    expectClose(cell, correlation(table(Util::all, row), table(Util::all, column)), "cell");
            }
        }
    }
    EXPECT_EQ(Util::correlationMatrix(DataFrame()).getNumCols(), 0);
    EXPECT_THROW(Util::correlationMatrix(table, static_cast<Util::CorrelationType>(3)), ConstraintViolation);
}

TEST(ChiSquaredTest, AgreesWithRAndClosedForms) {
    // R 4.2.2: chisq.test(c(16, 18, 16, 14, 12, 12))
    const Util::ChiSquaredTestResult fit =
        Util::chiSquaredTest(Vector{16, 18, 16, 14, 12, 12}, Vector(6, 88.0 / 6));
    expectClose(fit.statistic, 2.0, "statistic");
    EXPECT_EQ(fit.degreesOfFreedom, 5);
    expectClose(fit.pValue, 0.84914503608460967, "p-value");
    // Two degrees of freedom have the closed form exp(-x / 2), far out in the tail as well.
    const Util::ChiSquaredTestResult far = Util::chiSquaredTest({500, 10, 10, 0}, {130, 130, 130, 130}, 1);
    expectClose(far.pValue, std::exp(-far.statistic / 2), "far tail", kTailRelative);
    EXPECT_LT(far.pValue, 1e-200);
    // R 4.2.2: chisq.test(matrix); an empty row and column change nothing.
    const Util::ChiSquaredTestResult party =
        Util::chiSquaredTest(Matrix(3, 4, {762, 327, 0, 468, 0, 0, 0, 0, 484, 239, 0, 477}));
    expectClose(party.statistic, 30.070149095754672, "statistic");
    EXPECT_EQ(party.degreesOfFreedom, 2);
    expectClose(party.pValue, 2.9535891832117569e-07, "p-value");

    EXPECT_TRUE(std::isnan(Util::chiSquaredTest(Matrix(1, 2, 5.0)).pValue));
    EXPECT_TRUE(std::isnan(Util::chiSquaredTest(Matrix()).statistic));
    EXPECT_TRUE(std::isnan(Util::chiSquaredTest({3}, {3}).pValue));
    EXPECT_THROW(Util::chiSquaredTest({1, 2}, {3}), NumElementsMismatch);
    EXPECT_THROW(Util::chiSquaredTest({1, 2}, {1, 3}), IncorrectTotalValue);
    EXPECT_THROW(Util::chiSquaredTest({3, 0}, {3, 0}), ConstraintViolation);
    EXPECT_THROW(Util::chiSquaredTest({-1, 4}, {1, 2}), ConstraintViolation);
    EXPECT_THROW(Util::chiSquaredTest(Matrix(2, 2, -1.0)), ConstraintViolation);
}

TEST(ChiSquaredTest, CountsTheCategoriesOfColumns) {
    // The counts 2, 1, 3 and 1, 0, 1. R 4.2.2: sum((t - E)^2 / E), pchisq(..., 2, lower = FALSE), and
    // sum(P * log(t / E)) over the cells above 0.
    const DataFrameColumn x = texts({L"u", L"u", L"", L"u", L"u", L"u", L"v", L"v", L"u"});
    const DataFrameColumn y(L"number", Vector{1, 1, 2, 2, 3, 3, 1, 3, 3});
    const Util::ChiSquaredTestResult result = Util::chiSquaredTest(x, y);
    expectClose(result.statistic, 0.44444444444444442, "statistic");
    EXPECT_EQ(result.degreesOfFreedom, 2);
    expectClose(result.pValue, 0.80073740291680806, "p-value");
    expectClose(Util::mutualInformation(x, y), 0.042474759198849334, "information");
    expectClose(Util::mutualInformation(y, x, 2), 0.042474759198849334 / std::log(2.0), "bits");
    EXPECT_THROW(Util::chiSquaredTest(x, texts({L"a"})), NumElementsMismatch);
}

TEST(FTest, AgreesWithR) {  // R 4.2.2: var.test(automatic, manual); 2 * pf(F, 9, 9, lower = FALSE)
    const Util::FTestResult result = Util::fTest(kAutomatic, kManual);
    expectClose(result.statistic, 0.386561496137199423, "F");
    EXPECT_EQ(result.numeratorDegreesOfFreedom, 18);
    EXPECT_EQ(result.denominatorDegreesOfFreedom, 12);
    expectClose(result.pValue, 0.066905924215873727, "p-value");
    expectClose(Util::fTest(kManual, kAutomatic).pValue, result.pValue, "exchanged");
    Vector narrow{3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
    for (double& value : narrow) value *= 1e-3;
    const Util::FTestResult tiny = Util::fTest({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, narrow);
    expectClose(tiny.statistic, 1502732.2404371582, "large F");
    expectClose(tiny.pValue, 2.1187521353338698e-26, "tiny p-value", kTailRelative);
    EXPECT_EQ(Util::fTest({1, 2}, {1, 1}).pValue, 0);
    EXPECT_EQ(Util::fTest({1, 1}, {1, 2}).pValue, 0);
    EXPECT_TRUE(std::isnan(Util::fTest({1, 1}, {2, 2}).pValue) &&
                std::isnan(Util::fTest({1}, {2, 3}).statistic));
}

TEST(WelchTest, AgreesWithR) {  // R 4.2.2: t.test(automatic, manual, conf.level = 0.9)
    const Util::WelchTestResult result = Util::welchTest(kAutomatic, kManual, 0.9);
    expectClose(result.statistic, -3.7671231451449251892, "t");
    expectClose(result.degreesOfFreedom, 18.3322516384004607914, "degrees of freedom");
    expectClose(result.pValue, 0.0013736383330710284, "p-value");
    expectClose(result.standardError, 1.9232021338597200533, "standard error");
    expectClose(result.lower, -10.5766227255620623993, "lower");
    expectClose(result.upper, -3.9132558169480571308, "upper");

    // R 4.2.2: t.test(1e3 * (1:40) + c(1, -1), -1e6 + (1:30)^2)
    Vector x, y;
    for (int i = 1; i <= 40; ++i) x.push_back(1e3 * i + (i % 2 == 1 ? 1 : -1));
    for (int i = 1; i <= 30; ++i) y.push_back(-1e6 + i * i);
    const Util::WelchTestResult far = Util::welchTest(x, y);
    expectClose(far.statistic, 551.71102188006819, "far t");
    expectClose(far.pValue, 1.2507631864208599e-77, "tiny p-value", kTailRelative);

    const Util::WelchTestResult constant = Util::welchTest({1, 1}, {3, 3});
    EXPECT_EQ(constant.difference, -2);
    EXPECT_TRUE(std::isnan(constant.statistic) && std::isnan(constant.pValue) && std::isnan(constant.upper));
    EXPECT_EQ(Util::welchTest({1}, {3, 4}).difference, -2.5);
    EXPECT_THROW(Util::welchTest(x, y, 1.0), ValueOutOfRange);
}

TEST(Information, MeasuresImpurityAndDependence) {
    EXPECT_EQ(Util::giniIndex(Vector{7, 0, kNaN}), 0.0);
    expectClose(Util::giniIndex(Vector{5, 5, 5, 5}), 0.75, "four equal classes");
    expectClose(Util::giniIndex(Vector{1e16, 1}), 2e-16, "almost pure");
    expectClose(Util::giniIndex(texts({L"a", L"b", L"", L"a", L"a"})), 0.375, "texts");
    expectClose(Util::giniIndex(DataFrameColumn(L"x", Vector{2, 2, kNaN, 3, 3})), 0.5, "numbers");
    EXPECT_TRUE(std::isnan(Util::giniIndex(Vector{})) && std::isnan(Util::giniIndex(texts({L"", L""}))));
    EXPECT_THROW(Util::giniIndex(Vector{-1, 2}), ConstraintViolation);

    // A column tells its own entropy; independent columns tell exactly nothing of each other.
    const DataFrameColumn x = texts({L"a", L"a", L"b", L"b"}), y = texts({L"u", L"v", L"u", L"v"});
    expectClose(Util::mutualInformation(x, x, 2), 1.0, "entropy in bits");
    EXPECT_EQ(Util::mutualInformation(x, y), 0.0);
    EXPECT_TRUE(std::isnan(Util::mutualInformation(x, texts({L"", L"", L"", L""}))));
    EXPECT_THROW(Util::mutualInformation(x, y, 1.0), ConstraintViolation);

    // Every row a category of its own: the entropy is log(n), and only n cells are stored.
    Vector distinct(200000);
    for (std::size_t i = 0; i < distinct.size(); ++i) distinct[i] = static_cast<double>(i);
    const DataFrameColumn many(L"x", distinct);
    expectClose(Util::mutualInformation(many, many), std::log(200000.0), "entropy");
    const Util::ChiSquaredTestResult manyCells = Util::chiSquaredTest(many, many);
    expectClose(manyCells.statistic, 200000.0 * 199999.0, "statistic");
    // R 4.2.2: pchisq(200000 * 199999, 199999^2, lower = FALSE)
    expectClose(manyCells.pValue, 0.2397496949316277, "p-value of many degrees of freedom", kTailRelative);

    // Near independence information is chi-squared / (2 n), up to the third power of the deviations.
    DataFrameColumn first(L"x", Vector(100000)), second(L"y", Vector(100000));
    for (int i = 0; i < 100000; ++i) {
        first(i) = i % 2;
        second(i) = i < 10 ? 0 : (i / 2) % 2;
    }
    const double near = Util::mutualInformation(first, second);
    expectClose(near, Util::chiSquaredTest(first, second).statistic / 200000, "near independence", 1e-3);
}
