#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>
#include <omp.h>

#include "engine/copula/ranks.h"
#include "engine/copula/tables.h"

namespace Tessel::Engine::Copula {
namespace {

using enum CopulaType;
using enum Random::SamplingMethodType;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Dependence withTheta(double theta) {
    Dependence copula;
    copula.theta = theta;
    return copula;
}

/// The same correlation of all pairs.
Dependence withCorrelation(std::size_t numVars, double correlation, double degreesOfFreedom = kNaN) {
    Dependence copula;
    copula.sigma.assign(numVars * numVars, correlation);
    for (std::size_t i = 0; i < numVars; ++i) copula.sigma[i * (numVars + 1)] = 1.0;
    copula.degreesOfFreedom = degreesOfFreedom;
    return copula;
}

Rows sampled(CopulaType type, const Dependence& copula, std::size_t numVars, std::size_t numRows,
             Random::SamplingMethodType method = MONTE_CARLO) {
    Rows sample = uniforms(numVars + numMixingRows(type, copula), numRows, method);
    const Rows mixing(sample.begin() + static_cast<std::ptrdiff_t>(numVars), sample.end());
    sample.resize(numVars);
    EXPECT_EQ(sampleCopula(type, copula, constSpans(mixing), spans(sample)), 1) << static_cast<int>(type);
    return sample;
}

/// The share of observations with all numbers of the first two variables at most u and v.
double share(const Rows& sample, double u, double v) {
    double count = 0.0;
    for (std::size_t row = 0; row < sample[0].size(); ++row)
        count += sample[0][row] <= u && sample[1][row] <= v;
    return count / static_cast<double>(sample[0].size());
}

double mean(const std::vector<double>& row) {
    double sum = 0.0;
    for (const double number : row) sum += number;
    return sum / static_cast<double>(row.size());
}

TEST(SampleCopula, FollowsTheDistributionFunction) {
    // C(0.1, 0.2), C(0.5, 0.5), C(0.9, 0.3), C(0.01, 0.02) by the closed forms (Nelsen, An Introduction to
    // Copulas, 2nd ed., table 4.1), Kendall's tau by section 5.1. Negative Clayton: max(u^-t + v^-t - 1,
    // 0)^(-1/t).
    const struct {
        CopulaType type;
        double theta, expected[4], tau;
    } cases[] = {
        {CLAYTON, 0.5, {0.05169175657, 0.29911947448, 0.28298330155, 0.00387177876}, 0.2},
        {CLAYTON, 2, {0.08980265101, 0.37796447301, 0.29688260614, 0.00894462970}, 0.5},
        {CLAYTON, 8, {0.09995127899, 0.45861408372, 0.29999674494, 0.00999512789}, 0.8},
        {CLAYTON, -0.5, {0.0, 0.17157287525, 0.24641877343, 0.0}, -1.0 / 3.0},
        {CLAYTON, -1.0, {0.0, 0.0, 0.2, 0.0}, -1.0},
        {FRANK, -5, {0.00150663981, 0.12285148925, 0.22643893900, 7.31567e-06}, -0.4567009},
        {FRANK, 1, {0.02766844201, 0.28092980362, 0.27881223772, 0.00031173991}, 0.1100185},
        {FRANK, 20, {0.09446679525, 0.46534491092, 0.29999973502, 0.00308105037}, 0.8164493},
        {GUMBEL, 1.2, {0.03031247194, 0.29082084065, 0.28431406168, 0.00050397409}, 1.0 / 6.0},
        {GUMBEL, 5, {0.09303782716, 0.45103198307, 0.29999962926, 0.00704671923}, 0.8},
        {GUMBEL, 1, {0.02, 0.25, 0.27, 0.0002}, 0.0},
    };
    constexpr double kPlaces[][2] = {{0.1, 0.2}, {0.5, 0.5}, {0.9, 0.3}, {0.01, 0.02}};
    constexpr std::size_t kNumRows = 40000;
    for (const auto& [type, theta, expected, tau] : cases)
        for (const Random::SamplingMethodType method : {MONTE_CARLO, LATIN_HYPERCUBE, SOBOL_RQMC}) {
            const Rows sample = sampled(type, withTheta(theta), 2, kNumRows, method);
            for (std::size_t i = 0; i < 4; ++i) {  // five deviations of a share, and half a part
                const double deviation = std::sqrt(expected[i] * (1.0 - expected[i]) / kNumRows);
                EXPECT_NEAR(share(sample, kPlaces[i][0], kPlaces[i][1]), expected[i], 5.0 * deviation + 2e-5)
                    << static_cast<int>(type) << ' ' << theta << ' ' << i;
            }
            for (const std::vector<double>& row : sample) {
                EXPECT_NEAR(mean(row), 0.5, 5.0 / std::sqrt(12.0 * kNumRows));
                EXPECT_NEAR(static_cast<double>(
                                std::count_if(row.begin(), row.end(), [](double u) { return u < 0.01; })),
                            0.01 * kNumRows, 5.0 * std::sqrt(0.01 * kNumRows));
            }
            EXPECT_NEAR(kendallMatrix(*rankRows(constSpans(sample)))[1], tau, 0.017);  // 5 * 2 / 3 / sqrt(n)
        }
}

TEST(SampleCopula, GivesAllPairsTheirTau) {
    const double angle = std::numbers::pi / 2.0;
    const struct {
        CopulaType type;
        Dependence copula;
        double tau;
    } cases[] = {{CLAYTON, withTheta(2), 0.5},
                 {FRANK, withTheta(5.736282707019971), 0.5},
                 {GUMBEL, withTheta(2), 0.5},
                 {GAUSS, withCorrelation(4, std::sin(angle * 0.5)), 0.5},
                 {GAUSS, withCorrelation(4, std::sin(angle * -0.15)), -0.15},
                 {STUDENT, withCorrelation(4, std::sin(angle * 0.5), 1.5), 0.5},
                 {STUDENT, withCorrelation(4, std::sin(angle * -0.15), 30.0), -0.15}};
    for (const auto& [type, copula, tau] : cases) {
        const Rows sample = sampled(type, copula, 4, 20000);
        const std::vector<double> matrix = kendallMatrix(*rankRows(constSpans(sample)));
        for (std::size_t i = 0; i < 16; ++i) {
            EXPECT_NEAR(matrix[i], i % 5 == 0 ? 1.0 : tau, 0.03) << static_cast<int>(type);
        }
        Dependence fitted;  // the parameters come back
        ASSERT_EQ(fitCopula(type, constSpans(sample), fitted), 1);
        if (type < GAUSS) {
            EXPECT_NEAR(fitted.theta, copula.theta, 0.03 * copula.theta);
        } else {
            for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(fitted.sigma[i], copula.sigma[i], 0.03);
        }
        if (type == STUDENT) {
            EXPECT_NEAR(1.0 / fitted.degreesOfFreedom, 1.0 / copula.degreesOfFreedom, 0.02);
        }
    }
}

TEST(SampleCopula, StaysInsideForExtremeNumbersAndParameters) {
    const double extremes[] = {0x1p-1000, 0x1p-54, 0x1p-32, 0.01, 0.5, 0.99, 1.0 - 0x1p-32, 1.0 - 0x1p-53};
    Rows all(4);
    for (const double a : extremes)
        for (const double b : extremes)
            for (const double c : extremes)
                for (const double d : extremes) {
                    const double numbers[] = {a, b, c, d};
                    for (std::size_t i = 0; i < 4; ++i) all[i].push_back(numbers[i]);
                }
    const Rows mixing{all[2], all[3]};
    const std::pair<CopulaType, Dependence> cases[] = {{CLAYTON, withTheta(1e-9)},
                                                       {CLAYTON, withTheta(198)},
                                                       {CLAYTON, withTheta(-1)},
                                                       {CLAYTON, withTheta(-1e-9)},
                                                       {CLAYTON, withTheta(0)},
                                                       {CLAYTON, withTheta(-0.9999)},
                                                       {FRANK, withTheta(1e-9)},
                                                       {FRANK, withTheta(395)},
                                                       {FRANK, withTheta(-395)},
                                                       {FRANK, withTheta(0)},
                                                       {FRANK, withTheta(-1e-9)},
                                                       {GUMBEL, withTheta(1)},
                                                       {GUMBEL, withTheta(100)},
                                                       {GUMBEL, withTheta(1.0001)},
                                                       {GAUSS, withCorrelation(2, 1.0)},
                                                       {GAUSS, withCorrelation(2, -1.0)},
                                                       {STUDENT, withCorrelation(2, 0.9, 0.01)},
                                                       {STUDENT, withCorrelation(2, -1.0, 3.0)},
                                                       {STUDENT, withCorrelation(2, 0.5, 1e10)}};
    for (const auto& [type, copula] : cases) {
        Rows sample{all[0], all[1]};
        ASSERT_EQ(sampleCopula(type, copula, constSpans(mixing), spans(sample)), 1);
        for (const std::vector<double>& row : sample)
            EXPECT_TRUE(std::all_of(row.begin(), row.end(), [](double u) { return u > 0.0 && u < 1.0; }))
                << static_cast<int>(type) << ' ' << copula.theta;
    }
}

TEST(SampleCopula, RefusesWhatIsNoCopula) {
    const Rows uniform = uniforms(3, 10), mixing = uniforms(2, 10);
    const std::pair<CopulaType, Dependence> cases[] = {
        {NONE, withTheta(2)},
        {CopulaType{6}, withTheta(2)},
        {CLAYTON, withTheta(-0.1)},  // of three variables
        {CLAYTON, withTheta(199)},
        {CLAYTON, withTheta(kNaN)},
        {FRANK, withTheta(-1)},
        {FRANK, withTheta(396)},
        {GUMBEL, withTheta(0.99)},
        {GUMBEL, withTheta(kNaN)},
        {GAUSS, withCorrelation(2, 0.5)},
        {GAUSS, withCorrelation(3, 1.5)},
        {GAUSS, withCorrelation(3, kNaN)},
        {STUDENT, withCorrelation(3, 0.5, 0.0)},
        {STUDENT, withCorrelation(3, 0.5)},
    };
    for (const auto& [type, copula] : cases) {
        Rows sample = uniform;
        EXPECT_EQ(sampleCopula(type, copula, constSpans(mixing), spans(sample)), 0) << static_cast<int>(type);
        EXPECT_EQ(sample, uniform);
    }
    Rows sample = uniform;
    EXPECT_EQ(sampleCopula(CLAYTON, withTheta(2), {}, spans(sample)), 0);
    EXPECT_EQ(sampleCopula(CLAYTON, withTheta(2), constSpans(uniforms(1, 9)), spans(sample)), 0);
    sample[1][3] = 1.0;
    EXPECT_EQ(sampleCopula(GAUSS, withCorrelation(3, 0.5), {}, spans(sample)), 0);
    EXPECT_EQ(keepMargins(constSpans(uniforms(2, 10)), spans(sample)), 0);
    EXPECT_EQ(keepMargins(constSpans(uniforms(3, 9)), spans(sample)), 0);
    Rows margins = uniform;
    margins[2][2] = kNaN;
    EXPECT_EQ(keepMargins(constSpans(margins), spans(sample)), 0);
    sample[1][3] = kNaN;
    EXPECT_EQ(keepMargins(constSpans(uniform), spans(sample)), 0);
    EXPECT_EQ(induceRankCorrelation(withCorrelation(3, 0.5).sigma, spans(sample)), 0);
    sample[1][3] = 0.5;
    EXPECT_EQ(induceRankCorrelation(withCorrelation(2, 0.5).sigma, spans(sample)), 0);
    EXPECT_EQ(induceRankCorrelation(withCorrelation(3, kNaN).sigma, spans(sample)), 0);
}

TEST(SampleCopula, KeptMarginsMakeALatinHypercubeOfIt) {
    const Rows hypercube = uniforms(3, 2000, LATIN_HYPERCUBE);
    Rows sample = sampled(GUMBEL, withTheta(3), 3, 2000);
    const std::vector<double> tau = kendallMatrix(*rankRows(constSpans(sample)));
    ASSERT_EQ(keepMargins(constSpans(hypercube), spans(sample)), 1);
    EXPECT_EQ(kendallMatrix(*rankRows(constSpans(sample))), tau);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_TRUE(std::is_permutation(sample[i].begin(), sample[i].end(), hypercube[i].begin()));
}

TEST(InduceRankCorrelation, MeetsTheTargetAndKeepsTheNumbers) {
    std::vector<double> target{1, 0.9, -0.3, 0.9, 1, 0, -0.3, 0, 1};
    for (const Random::SamplingMethodType method : {MONTE_CARLO, LATIN_HYPERCUBE, SOBOL_RQMC}) {
        const Rows before = uniforms(3, 4000, method);
        Rows after = before;
        ASSERT_EQ(induceRankCorrelation(target, spans(after)), 1);
        Dependence found;
        ASSERT_EQ(fitRankCorrelation(constSpans(after), found), 1);
        // The correlation of the scores is met exactly. Where that of the ranks is not, it is by less than
        // the deviation of independent samples, 1 / sqrt(n).
        for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(found.sigma[i], target[i], 0.0158);
        for (std::size_t i = 0; i < 3; ++i) {
            std::vector<double> a = before[i], b = after[i];
            std::sort(a.begin(), a.end());
            std::sort(b.begin(), b.end());
            EXPECT_EQ(a, b);
        }
        EXPECT_EQ(before[0], after[0]);
    }
}

TEST(InduceRankCorrelation, WorksAtTheEdges) {
    const Rows one = uniforms(3, 1);
    Rows sample = one;
    EXPECT_EQ(induceRankCorrelation(withCorrelation(3, 0.5).sigma, spans(sample)), 1);
    EXPECT_EQ(sample, one);
    sample = uniforms(20, 10);  // no correction possible: in expectation only
    EXPECT_EQ(induceRankCorrelation(withCorrelation(20, 0.99).sigma, spans(sample)), 1);
    sample = uniforms(3, 500);
    EXPECT_EQ(induceRankCorrelation(withCorrelation(3, 1.0).sigma, spans(sample)), 1);
    EXPECT_GT(kendallMatrix(*rankRows(constSpans(sample)))[1], 0.99);
    sample = uniforms(3, 500);  // no such correlations: the nearest
    EXPECT_EQ(induceRankCorrelation(withCorrelation(3, -0.9).sigma, spans(sample)), 1);
    Dependence found;
    fitRankCorrelation(constSpans(sample), found);
    EXPECT_NEAR(found.sigma[1], -0.5, 0.03);
}

TEST(SampleCopula, DoesNotDependOnThreads) {
    const int numThreads = omp_get_max_threads();
    for (const CopulaType type : {CLAYTON, FRANK, GUMBEL, GAUSS, STUDENT}) {
        Dependence copula = withCorrelation(3, 0.5, 4.0);
        copula.theta = 2.0;
        Rows samples[2];
        for (const int threads : {1, 3}) {
            omp_set_num_threads(threads);
            Rows sample = sampled(type, copula, 3, 5000);
            EXPECT_EQ(induceRankCorrelation(copula.sigma, spans(sample)), 1);
            samples[threads / 3] = sample;
        }
        omp_set_num_threads(numThreads);
        EXPECT_EQ(samples[0], samples[1]);
    }
}

}  // namespace
}  // namespace Tessel::Engine::Copula
