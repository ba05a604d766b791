#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <omp.h>

#include "engine/dist/metalog_dist.h"
#include "engine/dist/metalog_fit.h"
#include "engine/dist/reference_samples.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr auto kKeelin = MetalogOrder::KEELIN_2016;
constexpr auto kLater = MetalogOrder::BAUCELLS_2025;

bool isFeasibleWith(std::vector<double> coefficients, MetalogOrder order = kKeelin) {
    return isFeasible(MetalogCurve(order, coefficients));
}

TEST(MetalogTerms, EnterInThePublishedOrders) {
    // Digits are powers of x, L marks a product with the logit: Keelin (2016), equation 6; the later order
    // swaps the pairs with odd powers beyond the fourth term.
    const std::pair<MetalogOrder, std::string> orders[] = {
        {kKeelin, "0 0L 1L 1 2 2L 3 3L 4 4L 5 5L 6 6L 7 7L "},
        {kLater, "0 0L 1L 1 2 2L 3L 3 4 4L 5L 5 6 6L 7L 7 "}};
    for (const auto& [order, expected] : orders) {
        std::string terms;
        for (int j = 1; j <= 16; ++j) {
            const MetalogTerm term = metalogTerm(order, j);
            terms += std::to_string(term.power) + (term.hasLogit ? "L " : " ");
        }
        EXPECT_EQ(terms, expected);
    }
}

struct Point {
    double p, x, pdf;
};

struct ReferenceFit {
    const char* name;
    const std::vector<double>& sample;
    MetalogOrder order;
    double lower, upper;
    std::vector<double> coefficients;
    bool isFeasible;
    std::vector<Point> points;
    double mean = kNone, variance = kNone, skewness = kNone, excessKurtosis = kNone;  ///< NaN: not given.
};

// Least squares in 60-digit arithmetic (mpmath 1.2.1) against (i - 1/2) / n; moments by quadrature.
const std::vector<ReferenceFit>& referenceFits() {
    using Testing::kFaithfulWaiting;
    using Testing::kLynx;
    using Testing::kNileFlow;
    static const std::vector<ReferenceFit> fits{
        {"unbounded, 10 terms",
         kNileFlow,
         kKeelin,
         kNone,
         kNone,
         {888.2044171485213, 3384.4739478598076, -1001.2431876381853, -13073.965633525377, 4664.98577354783,
          -15111.27033400364, 42474.64570543421, 3398.130295647468, -11249.42186545767, 10886.32367040621},
         true,
         {{1e-4, -771.801626408217, 2.8112909052875323e-07},
          {0.1, 719.3596844205788, 0.0019615322507965443},
          {0.5, 888.2044171485213, 0.0021554968629258417},
          {0.9999, 2074.5767339769554, 4.846598951524166e-07}},
         918.8913891108159,
         31029.813581579474,
         -0.05626857122209346,
         4.930610289056725},
        {"lower bound",
         kNileFlow,
         kKeelin,
         0.0,
         kNone,
         {6.789517351737492, 0.06667134285554559, -0.10865475943673684, 0.22571135082891672,
          0.8543064548592513},
         true,
         {{1e-4, 322.41779151601247, 2.5624899728885495e-06},
          {0.25, 799.0274873869298, 0.002991343167398778},
          {0.9999, 1379.715488095409, 5.862087988227369e-06}},
         919.1142896422235,
         28588.75302485112},
        {"upper bound",
         kNileFlow,
         kKeelin,
         kNone,
         2000.0,
         {-7.000006771808155, 0.05713677175472891, 0.05576361918148186, 0.20658862321421745},
         true,
         {{1e-4, 407.9512024790799, 2.1486899027057354e-06},
          {0.75, 1036.788699149129, 0.0016047954641169508},
          {0.9999, 1547.9725496522954, 2.599792418989534e-06}},
         919.5290156295438,
         28211.91787497545},
        {"both bounds",
         kNileFlow,
         kKeelin,
         400.0,
         1400.0,
         {-0.03784226129262445, 0.5076635605211707, -0.028654247679257807, -0.4037135797204562,
          1.8842246348989438},
         true,
         {{1e-4, 415.17534753957773, 1.282233225386161e-05},
          {0.5, 890.5405635049519, 0.002459482573769608},
          {0.9999, 1391.632377273917, 2.442030153536099e-05}},
         918.8055940587175,
         28869.859827603916,
         0.337267313652017,
         -0.14517321772459138},
        {"no variance",
         kLynx,
         kKeelin,
         0.0,
         kNone,
         {6.81203327683352, 0.6942641568950215, -0.2537650037768417},
         true,
         {{1e-4, 0.47204021137562036, 0.0002578972291935839},
          {0.9999, 169056.5279561172, 1.0428187258875072e-09}},
         1676.4434042728776,
         kInfinity},
        {"later order, 7 terms",
         kFaithfulWaiting,
         kLater,
         kNone,
         kNone,
         {74.99130647140542, 4.18898517856511, -30.03467440655052, 30.115669601216517, 28.36878282216953,
          -9.272934009305066, 102.64615347290864},
         false,
         {{0.01, 45.89313443527821, kNone},
          {0.5, 74.99130647140542, kNone},
          {0.9999, 94.19205628300301, kNone}}},
        {"16 terms",
         kFaithfulWaiting,
         kKeelin,
         kNone,
         kNone,
         {76.03001931302501, 19329.229150113853, -5339.686335621337, -77287.74445859215, 21151.150683642474,
          -181582.97391684732, 624238.4662842717, 42690.30215954974, -139803.09634382575, 545608.7252041093,
          -1477531.2096099565, -99546.21423975303, 223285.03023130083, -513297.32532938063, 858744.4467131948,
          56108.39670772968},
         false,
         {{0.01, 45.07287909767197, kNone},
          {0.25, 57.268881825381456, kNone},
          {0.9999, 109.6400116411966, kNone}}},
    };
    return fits;
}

TEST(MetalogLeastSquares, AgreesWithHighPrecision) {
    for (const ReferenceFit& fit : referenceFits()) {
        SCOPED_TRACE(fit.name);
        const MetalogBounds bounds{fit.lower, fit.upper};
        std::vector<double> sorted = fit.sample;
        std::sort(sorted.begin(), sorted.end());
        for (double& value : sorted) value = bounds.toLine(value);
        const auto numTerms = static_cast<int>(fit.coefficients.size());
        const auto coefficients = MetalogLeastSquares(sorted).solve(fit.order, numTerms);
        ASSERT_TRUE(coefficients.has_value());
        // The condition of the triangles: about 10 at 2 terms, a million at 16.
        const double tolerance = numTerms < 12 ? 1e-12 : 1e-9;
        for (std::size_t j = 0; j < fit.coefficients.size(); ++j)
            EXPECT_NEAR((*coefficients)[j] / fit.coefficients[j], 1.0, tolerance) << "term " << j + 1;
        const MetalogCurve curve(fit.order, *coefficients);
        EXPECT_EQ(isFeasible(curve), fit.isFeasible);
        for (const Point& point : fit.points)
            EXPECT_NEAR(bounds.fromLine(curve.value(MetalogProbability::of(point.p))) / point.x, 1.0,
                        numTerms < 12 ? 1e-12 : 1e-8);
    }
}

TEST(MetalogDist, AgreesWithHighPrecision) {
    for (const ReferenceFit& fit : referenceFits()) {
        if (!fit.isFeasible) continue;
        SCOPED_TRACE(fit.name);
        const CMetalogDist dist(fit.lower, fit.upper, static_cast<int>(fit.coefficients.size()),
                                fit.coefficients.data());
        ASSERT_TRUE(dist.isValid());
        for (const Point& point : fit.points) {
            EXPECT_NEAR(dist.inverseCdf(point.p) / point.x, 1.0, 2e-13);
            EXPECT_NEAR(dist.cdf(point.x) / point.p, 1.0, 2e-13);
            EXPECT_NEAR(dist.complementaryCdf(point.x) / (1.0 - point.p), 1.0, 1e-12);
            EXPECT_NEAR(dist.pdf(point.x) / point.pdf, 1.0, 2e-13);
            EXPECT_NEAR(dist.logPdf(point.x), std::log(point.pdf), 2e-13);
        }
        const std::pair<double, double> moments[] = {{dist.mean(), fit.mean},
                                                     {dist.variance(), fit.variance},
                                                     {dist.skewness(), fit.skewness},
                                                     {dist.excessKurtosis(), fit.excessKurtosis}};
        for (const auto& [actual, expected] : moments) {
            if (std::isnan(expected)) continue;
            const double ratio = std::isinf(expected) && actual == expected ? 1.0 : actual / expected;
            EXPECT_NEAR(ratio, 1.0, 1e-12);
        }
    }
}

TEST(MetalogLeastSquares, TakesAsManyTermsAsThereAreValues) {
    // On symmetric probabilities the even and the odd functions need a pair of values each; the order of 2016
    // has 4 odd functions among its first 7.
    const std::vector<double> values{1.0, 2.0, 4.0, 5.0, 7.5, 8.0, 11.0};
    const MetalogLeastSquares leastSquares(values);
    EXPECT_FALSE(leastSquares.solve(kKeelin, 7).has_value());
    EXPECT_FALSE(leastSquares.solve(kLater, 8).has_value());
    const auto coefficients = leastSquares.solve(kLater, 7);
    ASSERT_TRUE(coefficients.has_value());
    const MetalogCurve curve(kLater, *coefficients);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(curve.value(MetalogProbability::of((static_cast<double>(i) + 0.5) / 7.0)), values[i],
                    1e-11);
    EXPECT_FALSE(MetalogLeastSquares(std::vector<double>{3.0}).solve(kKeelin, 2).has_value());
    EXPECT_TRUE(MetalogLeastSquares(std::vector<double>{3.0, 4.0}).solve(kKeelin, 2).has_value());
}

TEST(MetalogLeastSquares, CountsTheMiddleValueOnce) {
    // Even and odd functions are orthogonal: the first coefficient of two is the mean, the second the slope
    // on the logits, ln 9 = -L(0.1) and ln(7 / 3) = -L(0.3) here.
    const std::vector<double> values{1.0, 2.0, 7.0, 8.0, 10.0};
    const auto coefficients = MetalogLeastSquares(values).solve(kKeelin, 2);
    ASSERT_TRUE(coefficients.has_value());
    const double outer = std::log(9.0), inner = std::log(7.0 / 3.0);
    EXPECT_NEAR((*coefficients)[0], 28.0 / 5.0, 1e-14);
    EXPECT_NEAR((*coefficients)[1], (9.0 * outer + 6.0 * inner) / (2.0 * (outer * outer + inner * inner)),
                1e-14);
}

TEST(MetalogLeastSquares, FindsTheCurveOfALongSampleWithAnyNumberOfThreads) {
    const std::vector<double> expected{5.0, 2.0, 0.5, -1.0, 3.0, 0.25, -2.0, 0.125};
    const MetalogCurve curve(kKeelin, expected);
    std::vector<double> values(100'001);  // several levels of merged blocks and a value in the middle
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = curve.value(MetalogProbability::of((static_cast<double>(i) + 0.5) / 100'001.0));
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const auto one = MetalogLeastSquares(values).solve(kKeelin, 8);
    omp_set_num_threads(3);
    const auto three = MetalogLeastSquares(values).solve(kKeelin, 8);
    omp_set_num_threads(threads);
    ASSERT_TRUE(one.has_value());
    EXPECT_EQ(one, three);
    for (std::size_t j = 0; j < expected.size(); ++j) EXPECT_NEAR((*one)[j], expected[j], 1e-10);
}

// ---- feasibility

TEST(MetalogFeasibility, FollowsTheClosedConditions) {
    // Three terms: a2 > 0 and |a3| <= t a2 with t ln((2 + t) / (2 - t)) = 4.
    double low = 1.0, high = 1.9;
    while (high - low > 1e-15) {
        const double t = 0.5 * (low + high);
        (t * std::log((2.0 + t) / (2.0 - t)) < 4.0 ? low : high) = t;
    }
    for (const double sign : {-1.0, 1.0}) {
        EXPECT_TRUE(isFeasibleWith({3.0, 1.0, sign * low * (1.0 - 1e-12)}));
        EXPECT_FALSE(isFeasibleWith({3.0, 1.0, sign * low * (1.0 + 1e-12)}));
    }
    // Four terms: also |a3| < 2 a2 and a4 >= a3 ln((2 a2 + a3) / (2 a2 - a3)) - 4 a2.
    // Close to |a3| = 2 a2 the slope touches 0 far in a tail, where a4 enters with a weight of 1e-6.
    for (const double a3 : {-1.999999, -1.9, -1.0, -0.1, 0.0, 0.3, 1.7, 1.99}) {
        const double limit = a3 * std::log((2.0 + a3) / (2.0 - a3)) - 4.0;
        const double margin = std::abs(a3) > 1.9 ? 1e-6 : 1e-11;
        EXPECT_TRUE(isFeasibleWith({0.0, 1.0, a3, limit + margin})) << a3;
        EXPECT_FALSE(isFeasibleWith({0.0, 1.0, a3, limit - margin})) << a3;
    }
    for (const double a3 : {-2.0, 2.0, 2.5}) EXPECT_FALSE(isFeasibleWith({0.0, 1.0, a3, 100.0})) << a3;
}

TEST(MetalogFeasibility, DoesNotDependOnTheUnit) {
    for (const double unit : {1e-300, 1e-9, 1.0, 1e9, 1e300}) {
        EXPECT_TRUE(isFeasibleWith({-unit, unit, 1.6 * unit}));
        EXPECT_FALSE(isFeasibleWith({-unit, unit, 1.7 * unit}));
    }
    const std::vector<double> hopeless[] = {
        {1.0, 0.0}, {1.0, -1.0}, {kNone, 1.0}, {1.0, kInfinity}, {1.0, 1.0, -kInfinity, 1.0}, {1.0}, {}};
    for (const std::vector<double>& coefficients : hopeless) EXPECT_FALSE(isFeasibleWith(coefficients));
    // Without logits the curve is a polynomial in the probability; 1 - 3 x^2 decreases beyond x = 0.577.
    EXPECT_TRUE(isFeasibleWith({1.0, 0.0, 0.0, 2.0}));
    EXPECT_TRUE(isFeasibleWith({0.0, 0.0, 0.0, 1.0, 0.0, 0.0, -1.0}));
    EXPECT_FALSE(isFeasibleWith({0.0, 0.0, 0.0, 1.0, 0.0, 0.0, -2.0}));
}

/// Random coefficients; many of the curves are feasible and many are not.
std::vector<double> randomCoefficients(std::mt19937_64& generator, int numTerms) {
    const auto uniform = [&] { return std::ldexp(static_cast<double>(generator() >> 11), -52) - 1.0; };
    std::vector<double> coefficients;
    for (int j = 1; j <= numTerms; ++j)
        coefficients.push_back(j == 2 ? 1.0 : uniform() * (j < 5 ? 1.5 : 12.0));
    return coefficients;
}

TEST(MetalogFeasibility, AgreesWithTheSignOfTheSlopeOnAFineGrid) {
    std::mt19937_64 generator(8);
    int numFeasible = 0;
    for (int i = 0; i < 400; ++i) {
        const MetalogOrder order = i % 2 == 0 ? kKeelin : kLater;
        const std::vector<double> coefficients = randomCoefficients(generator, 2 + i % 15);
        // The definition, by differences of the curve itself; those of 1e-6 are good to 1e-9.
        const MetalogCurve curve(order, coefficients);
        double smallest = kInfinity;
        for (double logit = -36.0; logit <= 36.0; logit += 0.004)
            smallest = std::min(smallest, (curve.value(MetalogProbability::ofLogit(logit + 1e-6)) -
                                           curve.value(MetalogProbability::ofLogit(logit - 1e-6))) /
                                              2e-6);
        if (std::abs(smallest) < 1e-4) continue;  // between the points of the grid it may be otherwise
        EXPECT_EQ(isFeasible(curve), smallest > 0.0) << "case " << i << ", slope " << smallest;
        numFeasible += smallest > 0.0 ? 1 : 0;
    }
    EXPECT_GT(numFeasible, 100);
    EXPECT_LT(numFeasible, 300);
}

// ---- distributions

TEST(MetalogDist, InvertsItsQuantilesInBothTails) {
    std::mt19937_64 generator(5);
    const std::pair<double, double> bounds[] = {{kNone, kNone}, {-3.0, kNone}, {kNone, 7.0}, {-3.0, 7.0}};
    int numChecked = 0;
    for (int i = 0; i < 200; ++i) {
        const auto [lower, upper] = bounds[i % 4];
        const std::vector<double> coefficients = randomCoefficients(generator, 2 + i % 9);
        const CMetalogDist dist(lower, upper, static_cast<int>(coefficients.size()), coefficients.data());
        if (!dist.isValid()) continue;
        double before = -kInfinity;
        for (const double p : {1e-12, 1e-6, 1e-3, 0.02, 0.1, 0.3, 0.5, 0.7, 0.9, 0.98, 0.999, 1.0 - 1e-6}) {
            const double x = dist.inverseCdf(p), density = dist.pdf(x);
            EXPECT_GE(x, before);
            before = x;
            // So close to a bound x has too few digits of its distance to it.
            if (x - dist.support().lower < 1e-6 || dist.support().upper - x < 1e-6) continue;
            // The rounding of x itself, and of its distance to a bound, moves the probability by density
            // times it.
            const double rounding = 8e-16 * (std::abs(x) + 10.0) * density;
            EXPECT_NEAR(dist.cdf(x), p, 1e-13 * p + rounding);
            EXPECT_NEAR(dist.complementaryCdf(x), 1.0 - p, 1e-13 * (1.0 - p) + rounding);
            // Differences over a thousandth of the scale are good to about 1e-6, unless x has few digits
            // left.
            if (p > 0.01 && p < 0.99) {
                const double step = 1e-3 * std::min(p, 1.0 - p) / density;
                const double slope = (dist.cdf(x + step) - dist.cdf(x - step)) / (2.0 * step);
                EXPECT_NEAR(slope / density, 1.0, 1e-3) << "case " << i << ", p = " << p;
            }
            ++numChecked;
        }
    }
    EXPECT_GT(numChecked, 500);
}

TEST(MetalogDist, HasKnownSpecialCases) {
    // Two terms: the logistic distribution; between bounds with a = (0, 1) the uniform one; above a bound the
    // log-logistic one, with E[X^k] = e^(k a1) pi k a2 / sin(pi k a2). A polynomial x: uniform again.
    constexpr double kPi = std::numbers::pi;
    const double logisticTerms[] = {3.0, 2.0}, uniformTerms[] = {0.0, 1.0}, linear[] = {4.0, 0.0, 0.0, 2.0};
    const CMetalogDist logistic(kNone, kNone, 2, logisticTerms);
    EXPECT_NEAR(logistic.mean(), 3.0, 1e-14);
    EXPECT_NEAR(logistic.variance(), kPi * kPi * 4.0 / 3.0, 1e-12);
    EXPECT_NEAR(logistic.skewness(), 0.0, 1e-13);
    EXPECT_NEAR(logistic.excessKurtosis(), 1.2, 1e-12);
    EXPECT_NEAR(logistic.mode(), 3.0, 1e-6);
    EXPECT_NEAR(logistic.median(), 3.0, 1e-15);
    EXPECT_NEAR(logistic.cdf(-997.0) / std::exp(-500.0), 1.0, 1e-12);
    EXPECT_NEAR(logistic.complementaryCdf(1003.0) / std::exp(-500.0), 1.0, 1e-12);
    EXPECT_EQ(logistic.cdf(-1e300), 0.0);
    EXPECT_EQ(logistic.complementaryCdf(kInfinity), 0.0);

    const CMetalogDist uniform(-1.0, 3.0, 2, uniformTerms), polynomial(kNone, kNone, 4, linear);
    for (const double p : {0.0, 1e-9, 0.2, 0.5, 0.8, 1.0}) {
        EXPECT_NEAR(uniform.inverseCdf(p), -1.0 + 4.0 * p, 1e-15);
        EXPECT_NEAR(uniform.cdf(-1.0 + 4.0 * p), p, 1e-15);
        EXPECT_NEAR(polynomial.inverseCdf(p), 3.0 + 2.0 * p, 1e-15);
        EXPECT_NEAR(polynomial.cdf(3.0 + 2.0 * p), p, 1e-15);
    }
    for (const CMetalogDist* dist : {&uniform, &polynomial}) {
        EXPECT_NEAR(dist->variance(), dist == &uniform ? 16.0 / 12.0 : 4.0 / 12.0, 1e-13);
        EXPECT_NEAR(dist->excessKurtosis(), -1.2, 1e-12);
    }
    EXPECT_EQ(uniform.pdf(-1.0), 0.0);
    EXPECT_EQ(uniform.pdf(4.0), 0.0);
    EXPECT_NEAR(uniform.pdf(1.0), 0.25, 1e-15);
    EXPECT_EQ(uniform.cdf(5.0), 1.0);

    for (const double weight : {0.1, 0.24, 0.3, 0.35, 0.45, 0.7, 0.9999, 1.0, 1.5}) {
        const double terms[] = {1.0, weight}, mirrored[] = {-1.0, weight};
        const CMetalogDist above(2.0, kNone, 2, terms), below(kNone, -2.0, 2, mirrored);
        const auto raw = [&](double k) {
            return std::exp(k) * kPi * k * weight / std::sin(kPi * k * weight);
        };
        const double mean = weight < 1.0 ? 2.0 + raw(1.0) : kInfinity;
        const double variance = weight < 0.5   ? raw(2.0) - raw(1.0) * raw(1.0)
                                : weight < 1.0 ? kInfinity
                                               : kNone;
        const double third = raw(3.0) - 3.0 * raw(2.0) * raw(1.0) + 2.0 * std::pow(raw(1.0), 3.0);
        const double skewness = weight < 1.0 / 3.0 ? third / std::pow(variance, 1.5)
                                : weight < 0.5     ? kInfinity
                                                   : kNone;
        for (const double sign : {1.0, -1.0}) {
            const CMetalogDist& dist = sign > 0.0 ? above : below;
            const auto expectSame = [&](double actual, double expected) {
                const bool isSame = actual == expected || (std::isnan(actual) && std::isnan(expected));
                EXPECT_NEAR(isSame ? 1.0 : actual / expected, 1.0, 1e-10) << "weight " << weight;
            };
            expectSame(dist.mean(), sign * mean);
            expectSame(dist.variance(), variance);
            expectSame(dist.skewness(), sign * skewness);
        }
    }
}

TEST(MetalogDist, RefusesBadCoefficientsAndBounds) {
    const std::vector<double> coefficients(17, 1.0);
    for (const int numTerms : {-1, 0, 1, 17}) {
        const CMetalogDist dist(kNone, kNone, numTerms, coefficients.data());
        EXPECT_EQ(dist.numTerms(), 0) << numTerms;
        EXPECT_FALSE(dist.isValid());
        EXPECT_EQ(dist.formulaText(), L"");
        for (const double value : {dist.mean(), dist.variance(), dist.mode(), dist.pdf(0.0), dist.cdf(0.0),
                                   dist.complementaryCdf(0.0), dist.logPdf(0.0), dist.inverseCdf(0.5)})
            EXPECT_TRUE(std::isnan(value));
    }
    EXPECT_FALSE(CMetalogDist(kNone, kNone, 3, nullptr).isValid());
    const double terms[] = {1.0, 2.0};
    for (const auto& [lower, upper] : {std::pair{2.0, 1.0}, std::pair{1.0, 1.0}, std::pair{-1e301, 0.0}}) {
        const CMetalogDist dist(lower, upper, 2, terms);
        EXPECT_FALSE(dist.isValid());
        EXPECT_EQ(dist.numTerms(), 2);
    }
    const CMetalogDist dist(-kInfinity, kInfinity, 2, terms);
    for (const double p : {-0.1, 1.1, kNone}) EXPECT_TRUE(std::isnan(dist.inverseCdf(p)));
    EXPECT_TRUE(std::isnan(dist.cdf(kNone)));
    EXPECT_EQ(dist.inverseCdf(0.0), -kInfinity);
    EXPECT_EQ(dist.inverseCdf(1.0), kInfinity);
}

TEST(MetalogDist, TellsFormulaFamilyAndShift) {
    const double terms[] = {1.0, 2.5, -0.5};
    CMetalog2Dist dist(0.0, kNone, 3, terms);
    EXPECT_EQ(dist.familyCode(), 76);
    EXPECT_EQ(CMetalogDist().familyCode(), 59);
    EXPECT_TRUE(dist.isBoundedBelow());
    EXPECT_EQ(dist.support().lower, 0.0);
    EXPECT_EQ(dist.coefficient(1), 1.0);
    EXPECT_EQ(dist.coefficient(4), 0.0);
    EXPECT_EQ(dist.formulaText(), L"LyrMetalog2(1, 2.5, -0.5)");
    EXPECT_EQ(CMetalogDist(kNone, kNone, 2, terms).formulaText(), L"LyrMetalog(1, 2.5)");
    const double x = dist.inverseCdf(0.3), density = dist.pdf(x);
    dist.setShift(10.0);
    EXPECT_EQ(dist.formulaText(), L"LyrMetalog2(1, 2.5, -0.5, LyrShift(10))");
    EXPECT_NEAR(dist.inverseCdf(0.3), 10.0 + x, 1e-14);
    EXPECT_NEAR(dist.clone()->cdf(10.0 + x), 0.3, 1e-14);
    EXPECT_NEAR(dist.pdf(10.0 + x), density, 1e-13);
    dist.setSupport({0.5, 2.0});  // cuts off without scaling
    EXPECT_EQ(dist.cdf(10.4), 0.0);
    EXPECT_EQ(dist.pdf(12.1), 0.0);
    EXPECT_EQ(dist.inverseCdf(1.0), 12.0);
    dist.setSupport({2.0, 0.5});
    EXPECT_FALSE(dist.isValid());
    EXPECT_TRUE(std::isnan(dist.inverseCdf(0.3)));
}

TEST(MetalogDist, HasItsModeWhereTheDensityIsLargest) {
    // Log-logistic with shape c = 1 / a2 > 1: scale ((c - 1) / (c + 1))^(1/c) above the bound; c < 1: the
    // bound.
    for (const double bound : {0.0, 1e6}) {
        const double narrow[] = {1.0, 0.25}, wide[] = {1.0, 1.25};
        const double mode = std::exp(1.0) * std::pow(3.0 / 5.0, 0.25);
        EXPECT_NEAR(CMetalogDist(bound, kNone, 2, narrow).mode() - bound, mode, 1e-7);
        EXPECT_EQ(CMetalogDist(bound, kNone, 2, wide).mode(), bound);
        const double mirrored[] = {-1.0, 0.25};
        EXPECT_NEAR(CMetalogDist(kNone, bound, 2, mirrored).mode() - bound, -mode, 1e-7);
    }
    // Between bounds 0 and 1 with a = (0, 1/2) the quantile is 1 / (1 + sqrt((1 - y) / y)), the density
    // 2 x (1 - x) / (x^2 + (1 - x)^2)^2 with its top of 2 in the middle; with a2 = 2 it has two poles.
    const double hump[] = {0.0, 0.5}, poles[] = {0.0, 2.0};
    EXPECT_NEAR(CMetalogDist(0.0, 1.0, 2, hump).mode(), 0.5, 1e-7);
    EXPECT_NEAR(CMetalogDist(0.0, 1.0, 2, hump).pdf(0.3), 2.0 * 0.3 * 0.7 / std::pow(0.09 + 0.49, 2.0),
                1e-14);
    EXPECT_EQ(CMetalogDist(0.0, 1.0, 2, poles).mode(), 0.0);
}

TEST(MetalogDist, FitsUnsortedSamples) {
    const ReferenceFit& fit = referenceFits()[1];
    CMetalogDist dist;
    dist.setParameters(std::vector<double>(5, 1.0));
    dist.setBounds(fit.lower, fit.upper);
    ASSERT_TRUE(dist.fitData(fit.sample));
    for (int j = 1; j <= 5; ++j)
        EXPECT_NEAR(dist.coefficient(j) / fit.coefficients[static_cast<std::size_t>(j - 1)], 1.0, 1e-12);
    // Nothing changes when the sample is not admissible.
    EXPECT_FALSE(dist.fitData(std::vector<double>{1.0, -1.0}));
    EXPECT_FALSE(dist.fitData(std::vector<double>{1.0, kNone}));
    EXPECT_FALSE(dist.fitData(0, nullptr));
    EXPECT_EQ(dist.numTerms(), 5);
    EXPECT_TRUE(dist.isValid());
    // A bound that a value lies on, and a sample without spread, leave nothing to fit.
    EXPECT_FALSE(dist.fitData(std::vector<double>{0.0, 1.0, 2.0, 3.0, 4.0, 5.0}));
    EXPECT_FALSE(dist.isValid());
    EXPECT_FALSE(dist.fitData(std::vector<double>(20, 3.3)));
}

}  // namespace
}  // namespace Tessel::Engine::Dist
