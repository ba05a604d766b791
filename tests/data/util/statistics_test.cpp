#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>
#include <tessel/data/util/statistics.h>

using namespace Tessel;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
// A few roundings of results that are sums, roots and quotients of about 30 numbers.
constexpr double kRelative = 4e-15;

void expectClose(double actual, double expected, const char* what, double relative = kRelative) {
    if (std::isnan(expected))
        EXPECT_TRUE(std::isnan(actual)) << what << " is " << actual;
    else
        EXPECT_NEAR(actual, expected, relative * std::abs(expected)) << what;
}

// Fuel consumption of 32 cars, column mpg of the R data set mtcars.
const Vector kCars{21.0, 21.0, 22.8, 21.4, 18.7, 18.1, 14.3, 24.4, 22.8, 19.2, 17.8,
                   16.4, 17.3, 15.2, 10.4, 10.4, 14.7, 32.4, 30.4, 33.9, 21.5, 15.5,
                   15.2, 13.3, 19.2, 27.3, 26.0, 30.4, 15.8, 19.7, 15.0, 21.4};

Vector shifted(const Vector& values, double shift) {
    Vector result = values;
    for (double& value : result) value += shift;
    return result;
}

}  // namespace

TEST(Statistics, MomentsAgreeWithR) {  // R 4.2.2: mean, var, sd, and G1, G2 from their formulas
    Vector values = kCars;
    values.push_back(kNaN);
    expectClose(Util::mean(values), 20.090624999999999, "mean");
    expectClose(Util::variance(values), 36.324102822580642, "variance");
    expectClose(Util::standardDeviation(values), 6.0269480520891037, "standard deviation");
    expectClose(Util::skewness(values), 0.67237713762908258, "skewness");
    expectClose(Util::excessKurtosis(values), -0.022006291424083932, "kurtosis", 1e-13);  // 3 - 3.02
    expectClose(Util::median(values), 19.2, "median");
    const DataFrameColumn column(L"mpg", values);
    EXPECT_EQ(Util::skewness(column), Util::skewness(values));
    EXPECT_THROW(Util::mean(DataFrameColumn(L"text", StringVector{L"a"})), NonNumericData);
}

TEST(Statistics, KeepDigitsOfIllConditionedValues) {
    // Whole numbers, so that shifting loses nothing and must change no central moment.
    const Vector whole{3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8};
    for (const double shift : {1e9, -1e12, 4e15}) {
        const Vector values = shifted(whole, shift);
        expectClose(Util::variance(values), Util::variance(whole), "variance");
        expectClose(Util::skewness(values), Util::skewness(whole), "skewness");
        expectClose(Util::excessKurtosis(values), Util::excessKurtosis(whole), "kurtosis", 1e-13);
    }
    EXPECT_EQ(Util::sum(Vector{1e16, 1.0, -1e16, 3.0, 2.5}), 6.5);
    EXPECT_EQ(Util::mean(Vector{1e16, 1.0, -1e16, 3.0, 2.5}), 1.3);
    EXPECT_EQ(Util::sum(Vector(1000000, 0.1)), 100000.0);
    EXPECT_EQ(Util::mean(Vector{1.5e308, 1.7e308}), 1.6e308);
    EXPECT_EQ(Util::variance(Vector(1000, 0.1)), 0.0);
    // The spread of tiny and huge values exists although their squares do not.
    expectClose(Util::standardDeviation(Vector{-1e-200, 1e-200}), std::sqrt(2.0) * 1e-200, "tiny");
    expectClose(Util::standardDeviation(Vector{-1e200, 1e200}), std::sqrt(2.0) * 1e200, "huge");
}

TEST(Statistics, NeedEnoughValues) {
    EXPECT_EQ(Util::sum(Vector{}), 0.0);
    for (const Vector& none : {Vector{}, Vector{kNaN, kNaN}}) {
        EXPECT_TRUE(std::isnan(Util::mean(none)) && std::isnan(Util::median(none)));
        EXPECT_TRUE(std::isnan(Util::minValue(none)) && std::isnan(Util::maxValue(none)));
        EXPECT_EQ(Util::minIndex(none), -1);
        EXPECT_EQ(Util::maxIndex(none), -1);
    }
    EXPECT_TRUE(std::isnan(Util::variance(Vector{1, kNaN})));
    EXPECT_TRUE(std::isnan(Util::skewness(Vector{1, 2})) && std::isnan(Util::skewness(Vector{2, 2, 2})));
    EXPECT_TRUE(std::isnan(Util::excessKurtosis(Vector{1, 2, 4})));
    EXPECT_EQ(Util::mean(Vector{1, kInfinity}), kInfinity);
    EXPECT_TRUE(std::isnan(Util::variance(Vector{1, kInfinity})));
}

TEST(Statistics, ExtremesTakeTheFirstAndSkipMissing) {
    const Vector values{kNaN, 2, -1, 7, -1, 7};
    EXPECT_EQ(Util::minValue(values), -1);
    EXPECT_EQ(Util::maxValue(values), 7);
    EXPECT_EQ(Util::minIndex(values), 2);
    EXPECT_EQ(Util::maxIndex(values), 3);
    EXPECT_EQ(Util::maxIndex(Vector{-kInfinity}), 0);
    EXPECT_EQ(Util::absolute(Vector{-2, 3}), (Vector{2, 3}));
    EXPECT_EQ(Util::sqr(Vector{-2, 3}), (Vector{4, 9}));
    EXPECT_TRUE(Util::isZero(-1e-17) && !Util::isZero(1e-15) && Util::isZero(0.5, 0.5) &&
                !Util::isZero(kNaN));
    EXPECT_THROW(Util::isZero(0, -1), ConstraintViolation);
}

TEST(Statistics, PercentilesFollowTheNineDefinitions) {
    // R 4.2.2: quantile(c(2.5,-1,4,4,10,7.25,3), c(0,.1,.25,.5,.6,.9,1), type = 1..9)
    const Vector values{2.5, -1, 4, kNaN, 4, 10, 7.25, 3};
    const Vector probabilities{0, 0.1, 0.25, 0.5, 0.6, 0.9, 1};
    const double expected[9][7] = {
        {-1, -1, 2.5, 4, 4, 10, 10},
        {-1, -1, 2.5, 4, 4, 10, 10},
        {-1, -1, 2.5, 4, 4, 7.25, 10},
        {-1, -1, 1.625, 3.5, 4, 8.075, 10},
        {-1, -0.3, 2.625, 4, 4, 9.45, 10},
        {-1, -1, 2.5, 4, 4, 10, 10},
        {-1, 1.1, 2.75, 4, 4, 8.35, 10},
        {-1, -0.76666666666666672, 2.58333333333333348, 4, 4, 9.81666666666666643, 10},
        {-1, -0.65, 2.59375, 4, 4, 9.725, 10}};
    for (int type = 1; type <= 9; ++type) {
        const Vector actual =
            Util::percentiles(values, probabilities, static_cast<Util::PercentileDefinition>(type));
        for (std::size_t i = 0; i < actual.size(); ++i)
            EXPECT_NEAR(actual[i], expected[type - 1][i], 1e-14) << "type " << type << ", number " << i;
    }
    // 100 * 0.07 is a little more than 7 in double; the definition says the seventh value.
    Vector hundred;
    for (int i = 100; i >= 1; --i) hundred.push_back(i);
    using enum Util::PercentileDefinition;
    EXPECT_EQ(Util::percentiles(hundred, {0.07}, INVERSE_CDF).front(), 7);
    EXPECT_EQ(Util::percentiles(hundred, {0.07}, AVERAGED_INVERSE_CDF).front(), 7.5);
    EXPECT_EQ(Util::percentiles(hundred, {0.065, 0.075}, NEAREST_EVEN), (Vector{6, 8}));
    EXPECT_EQ(Util::percentiles({-kInfinity, 1, kInfinity}, {0, 0.25, 1}),
              (Vector{-kInfinity, -kInfinity, kInfinity}));
    EXPECT_TRUE(std::isnan(Util::percentiles(Vector{}, {0.5}).front()));
    EXPECT_THROW(Util::percentiles(values, {1.01}), ValueOutOfRange);
    EXPECT_THROW(Util::percentiles(values, {kNaN}), ValueOutOfRange);
    EXPECT_THROW(Util::percentiles(values, {0.5}, static_cast<Util::PercentileDefinition>(10)),
                 ConstraintViolation);
}

TEST(Statistics, SummariesDescribeNumericFeatures) {
    DataFrame table;
    table.append(DataFrameColumn(L"id", Vector{1, 2, 3, 4, 5}));
    table.append(DataFrameColumn(L"x", Vector{2, kNaN, 4, 4, 6}));
    table.append(DataFrameColumn(L"text", StringVector{L"a", L"b", L"c", L"d", L"e"}));
    table.append(DataFrameColumn(L"none", Vector(5, kNaN)));
    table.setIndexedColNames({L"id"});

    const DataFrame summary = Util::advancedSummary(table);
    EXPECT_EQ(summary.getRowNames(), (StringVector{L"x", L"none"}));
    // By hand: deviations -2, 0, 0, 2.
    const std::pair<const wchar_t*, double> expected[] = {{L"Count", 4},
                                                          {L"Missing", 1},
                                                          {L"Mean", 4},
                                                          {L"Std. dev.", std::sqrt(8.0 / 3)},
                                                          {L"Min", 2},
                                                          {L"Q1", 3.5},
                                                          {L"Median", 4},
                                                          {L"Q3", 4.5},
                                                          {L"Max", 6},
                                                          {L"Variance", 8.0 / 3},
                                                          {L"Std. error", std::sqrt(2.0 / 3)},
                                                          {L"Skewness", 0},
                                                          {L"Excess kurtosis", 1.5},
                                                          {L"Sum", 16},
                                                          {L"Range", 4},
                                                          {L"Interquartile range", 1},
                                                          {L"Coef. of variation", std::sqrt(8.0 / 3) / 4},
                                                          {L"1%", 2.06},
                                                          {L"5%", 2.3},
                                                          {L"10%", 2.6},
                                                          {L"90%", 5.4},
                                                          {L"95%", 5.7},
                                                          {L"99%", 5.94},
                                                          {L"Mode", 4},
                                                          {L"Mode count", 2}};
    ASSERT_EQ(summary.getNumCols(), static_cast<int>(std::size(expected)));
    for (const auto& [name, value] : expected)
        EXPECT_NEAR(summary(0, WString(name)).toDouble(), value, 2e-15 * std::max(1.0, value)) << name;
    EXPECT_EQ(summary(1, L"Count").toDouble(), 0);
    EXPECT_EQ(summary(1, L"Missing").toDouble(), 5);
    EXPECT_TRUE(summary(1, L"Mean").isMissing() && summary(1, L"Mode").isMissing());

    EXPECT_EQ(Util::summary(table).getNumCols(), 9);
    EXPECT_EQ(Util::summary(DataFrame()).getNumRows(), 0);
    EXPECT_EQ(Util::percentiles(table, {0.025, 0.07}).getColNames(), (StringVector{L"2.5%", L"7%"}));
}

TEST(Statistics, SixSigmaStatesCapability) {
    // Mean 5, standard deviation sqrt(2/3); tails and level by R 4.2.2: pnorm(3.5, 5, s),
    // pnorm(7, 5, s, lower = FALSE), qnorm(of their sum, lower = FALSE).
    const double s = std::sqrt(2.0 / 3.0), lowerTail = 0.033096289861096716, upperTail = 0.007152939217714825;
    Vector values{4, 5, kNaN, 6, 5};
    values.setName(L"width");
    const DataFrame both = Util::sixSigmaSummary(values, {3.5, 7, 5.5});
    EXPECT_EQ(both.getRowName(0), L"width");
    const auto value = [](const DataFrame& table, const wchar_t* name) {
        return table(0, WString(name)).toDouble();
    };
    expectClose(value(both, L"Cp"), 3.5 / (6 * s), "Cp");
    expectClose(value(both, L"Cpl"), 1.5 / (3 * s), "Cpl");
    expectClose(value(both, L"Cpu"), 2 / (3 * s), "Cpu");
    expectClose(value(both, L"Cpk"), 1.5 / (3 * s), "Cpk");
    expectClose(value(both, L"Cpm"), 3.5 / (6 * std::sqrt(2.0 / 3.0 + 0.25)), "Cpm");
    expectClose(value(both, L"DPM"), 1e6 * (lowerTail + upperTail), "DPM", 1e-14);
    expectClose(value(both, L"Yield"), 100 * (1 - lowerTail - upperTail), "Yield");
    expectClose(value(both, L"Sigma level"), 1.747801196015263736, "Sigma level", 1e-14);
    EXPECT_EQ(value(both, L"Observed DPM"), 0);

    const DataFrame upper = Util::sixSigmaSummary(DataFrameColumn(L"width", values), {kNaN, 5.5, kNaN});
    EXPECT_TRUE(std::isnan(value(upper, L"Cp")) && std::isnan(value(upper, L"Cpm")) &&
                std::isnan(value(upper, L"Cpl")));
    expectClose(value(upper, L"Cpk"), 0.5 / (3 * s), "one-sided Cpk");
    EXPECT_EQ(value(upper, L"Observed DPM"), 250000);
    EXPECT_TRUE(std::isnan(value(Util::sixSigmaSummary(Vector{1, 1}, {0, 2}), L"Cpk")));
    EXPECT_EQ(value(Util::sixSigmaSummary(Vector{1, 2}, {-1e9, 1e9}), L"Sigma level"), kInfinity);

    for (const Util::ToleranceLimits& bad :
         {Util::ToleranceLimits{}, {2, 1}, {1, 1}, {-kInfinity, 1}, {0, 1, kInfinity}})
        EXPECT_THROW(Util::sixSigmaSummary(values, bad), ConstraintViolation);
}

TEST(Statistics, DeviateFactorInvertsTheNormalDistribution) {
    // R 4.2.2: qnorm(0.5 + level / 2); a tiny level by P(|Z| <= z) = z sqrt(2 / pi).
    const std::pair<double, double> cases[] = {{0.95, 1.95996398454005361},
                                               {0.99, 2.57582930354889994},
                                               {0.5, 0.67448975019608171},
                                               {0.9, 1.64485362695147153},
                                               {1e-12, 1e-12 * std::sqrt(std::acos(-1.0) / 2)}};
    for (const auto& [level, deviate] : cases) expectClose(Util::deviateFactor(level), deviate, "deviate");
    for (const double bad : {0.0, 1.0, -0.5, kNaN}) EXPECT_THROW(Util::deviateFactor(bad), ValueOutOfRange);
}
