#include <cmath>
#include <limits>
#include <numbers>

#include <boost/math/distributions/students_t.hpp>
#include <gtest/gtest.h>
#include <omp.h>

#include "engine/copula/archimedean.h"
#include "engine/copula/correlation_matrix.h"
#include "engine/copula/elliptical.h"
#include "engine/copula/tables.h"

namespace Tessel::Engine::Copula {
namespace {

using enum CopulaType;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Dependence fitted(CopulaType type, const Rows& data) {
    Dependence result;
    EXPECT_EQ(fitCopula(type, constSpans(data), result), 1) << static_cast<int>(type);
    return result;
}

void expectMatrix(const std::vector<double>& matrix, const std::vector<double>& upper, double tolerance) {
    const auto size = static_cast<std::size_t>(std::sqrt(matrix.size()));
    std::size_t k = 0;
    for (std::size_t i = 0; i < size; ++i) {
        EXPECT_EQ(matrix[i * size + i], 1.0);
        for (std::size_t j = i + 1; j < size; ++j, ++k) {
            EXPECT_NEAR(matrix[i * size + j], upper[k], tolerance) << i << ' ' << j;
            EXPECT_EQ(matrix[i * size + j], matrix[j * size + i]);
        }
    }
}

/// Kendall's tau-b by its definition, over all pairs.
double kendallByDefinition(const std::vector<double>& x, const std::vector<double>& y) {
    const auto sign = [](double difference) { return (difference > 0.0) - (difference < 0.0); };
    double difference = 0.0, untiedX = 0.0, untiedY = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) {
            const int a = sign(x[i] - x[j]), b = sign(y[i] - y[j]);
            difference += a * b;
            untiedX += a * a;
            untiedY += b * b;
        }
    return difference / std::sqrt(untiedX * untiedY);
}

TEST(RankCorrelation, SpearmanOfTiedDataAgreesWithReference) {
    Dependence result;
    ASSERT_EQ(fitRankCorrelation(constSpans(swiss()), result), 1);
    expectMatrix(result.sigma,  // SciPy 1.10.1, spearmanr
                 {0.24266427693641762, 0.6609029963523542, 0.44325769036098817, 0.5988599387489628,
                  0.6504638141458159, 0.6746038314061471},
                 1e-14);
    EXPECT_FALSE(result.isRepaired);
    EXPECT_TRUE(std::isnan(result.theta) && std::isnan(result.statistic));
}

TEST(RankCorrelation, KendallAgreesWithItsDefinition) {
    for (const std::size_t numRows : {2u, 3u, 15u, 16u, 17u, 33u, 250u})
        for (const double numValues : {3.0, 20.0, 1e9}) {
            Rows data = uniforms(4, numRows);
            for (std::vector<double>& row : data) {
                for (double& x : row) x = std::floor(numValues * x);
                row.front() = -1.0;  // not constant
            }
            data[3] = data[0];
            const std::vector<double> tau = kendallMatrix(*rankRows(constSpans(data)));
            for (std::size_t i = 0; i < 4; ++i)
                for (std::size_t j = 0; j < i; ++j)
                    EXPECT_NEAR(tau[4 * i + j], kendallByDefinition(data[i], data[j]), 1e-14);
        }
}

TEST(FitCopula, MaximumPseudoLikelihoodAgreesWithReference) {
    // Densities by differentiating the generators in mpmath 1.2.1 at 40 digits, maximised by SciPy 1.10.1.
    const struct {
        CopulaType type;
        std::size_t numVars;
        double theta, logLikelihood, logLikelihoodAt3;
    } cases[] = {
        {CLAYTON, 2, 1.4255488035253912, 11.595247953597058, 3.9149449149849658},
        {CLAYTON, 4, 0.8689498643792692, 26.771072343531802, -59.3470897927449},
        {FRANK, 2, 5.934494699421704, 14.509034754112765, 11.083782217343241},
        {FRANK, 4, 3.844558474930747, 33.036986796755954, 31.77074999269358},
        {GUMBEL, 2, 2.1280046716222274, 17.283855176519264, 13.006614081659055},
        {GUMBEL, 4, 1.6787056446682669, 40.552025430595, -6.376584183990336},
    };
    for (const auto& [type, numVars, theta, logLikelihood, logLikelihoodAt3] : cases) {
        const Rows all = swiss();
        const Rows data(all.end() - static_cast<std::ptrdiff_t>(numVars), all.end());
        const Dependence result = fitted(type, data);
        EXPECT_NEAR(result.theta, theta, 2e-6 * theta);  // where the likelihood is flat to its last digits
        EXPECT_NEAR(result.statistic, logLikelihood, 1e-10);
        EXPECT_NEAR(archimedeanLogLikelihood(type, 3.0, *rankRows(constSpans(data))), logLikelihoodAt3,
                    1e-10);
        EXPECT_FALSE(result.isAtLimit);
        EXPECT_TRUE(result.sigma.empty() && std::isnan(result.degreesOfFreedom));
    }
}

TEST(FitCopula, NegativeDependenceIsForFrankOfTwoVariablesOnly) {
    Rows data = swiss();
    data = {data[1], data[2]};
    for (double& x : data[0]) x = -x;  // Agriculture, Examination
    const Dependence frank = fitted(FRANK, data);
    EXPECT_NEAR(frank.theta, -4.968659144185651, 1e-5);  // the density of Frank, maximised in SciPy 1.10.1
    EXPECT_NEAR(frank.statistic, 11.223880251342763, 1e-10);
    Dependence untouched;
    untouched.theta = 77.0;
    EXPECT_EQ(fitCopula(CLAYTON, constSpans(data), untouched), 0);
    EXPECT_EQ(fitCopula(GUMBEL, constSpans(data), untouched), 0);
    data.push_back(data[0]);
    for (std::size_t i = 0; i < data[0].size(); ++i)
        data[2][i] = std::fmod(31.0 * static_cast<double>(i), 47.0);
    EXPECT_EQ(fitCopula(FRANK, constSpans(data), untouched), 0);
    EXPECT_EQ(untouched.theta, 77.0);
}

TEST(FitCopula, GaussAndStudentAgreeWithReference) {
    const Rows data = swiss();
    const Dependence gauss = fitted(GAUSS, data);
    expectMatrix(gauss.sigma,  // numpy.corrcoef of scipy.stats.norm.ppf(ranks / 48)
                 {0.29972886369245, 0.6595917621036964, 0.4845857412138831, 0.6731015761088168,
                  0.6819327993116365, 0.6977727809466924},
                 1e-13);
    EXPECT_NEAR(gauss.statistic, 49.706798376009075, 1e-10);

    const Dependence student = fitted(STUDENT, data);
    expectMatrix(student.sigma,  // sin(pi / 2 scipy.stats.kendalltau)
                 {0.27830700264106617, 0.6802340678289334, 0.4962923349465673, 0.6500715154351192,
                  0.6801428990163888, 0.7385133763395114},
                 1e-13);
    EXPECT_TRUE(student.isAtLimit);  // normal scores fit better than any Student's
    EXPECT_NEAR(student.degreesOfFreedom, 1000.0, 0.1);
    const Ranks allRanks = *rankRows(constSpans(data));
    EXPECT_NEAR(studentLogLikelihood(choleskyFactor(student.sigma, 4), 992.2745542655003, allRanks,
                                     StudentScores(allRanks)),
                49.64362392984119, 1e-9);  // SciPy 1.10.1, whose quantiles have ten digits

    const Dependence pair = fitted(STUDENT, {data[1], data[2]});
    EXPECT_NEAR(pair.degreesOfFreedom, 1.8197972651670022, 1e-5);
    EXPECT_NEAR(pair.statistic, 15.932706078304243, 1e-9);
    const Ranks ranks = *rankRows(constSpans({data[1], data[2]}));
    const std::vector<double> factor = choleskyFactor(pair.sigma, 2);
    // mpmath 1.2.1 at 40 digits
    for (const auto& [nu, expected] :
         {std::pair{1.0, 14.694495823690231}, {4.0, 15.290258529575928}, {100.0, 14.013292866321143}})
        EXPECT_NEAR(studentLogLikelihood(factor, nu, ranks, StudentScores(ranks)), expected, 1e-11);
}

TEST(FitCopula, DensitiesOfManyVariablesAgreeWithReference) {
    // Ten equal variables of ranks 1 to 47; mpmath 1.2.1 at 120 digits, as above.
    std::vector<double> ascending;
    for (int i = 0; i < 47; ++i) ascending.push_back(i);
    const Ranks ranks = *rankRows(constSpans(Rows(10, ascending)));
    const struct {
        CopulaType type;
        double theta, expected;
    } cases[] = {{CLAYTON, 3.0, 554.314228462344},
                 {FRANK, 3.0, 277.8395226442006},
                 {FRANK, 50.0, 1183.1526399177042},
                 {GUMBEL, 1.0001, 39.131528119513405},
                 {GUMBEL, 1.01, 85.812120898832}};
    for (const auto& [type, theta, expected] : cases)
        EXPECT_NEAR(archimedeanLogLikelihood(type, theta, ranks), expected, 1e-11 * expected + 1e-10);
}

TEST(StudentScores, ManyAreInterpolatedClosely) {
    const Ranks ranks = *rankRows(constSpans(uniforms(1, 100001)));
    const StudentScores scores(ranks);
    for (const double nu : {0.5, 1.0, 2.5, 7.0, 60.0, 1000.0}) {
        const boost::math::students_t exact(nu);
        const std::vector<double> found = scores.at(nu);
        for (std::size_t code = 0; code < found.size(); code += 101) {
            const double expected = boost::math::quantile(exact, ranks.pseudoObservation(code));
            EXPECT_NEAR(found[code], expected, 1e-10 * std::abs(expected)) << nu << ' ' << code;
        }
    }
}

TEST(RepairCorrelation, FindsTheNearestMatrix) {
    // Higham 2002, section 4, with the answer in four digits.
    std::vector<double> matrix{1, 1, 0, 1, 1, 1, 0, 1, 1};
    EXPECT_TRUE(repairCorrelation(matrix, 3));
    expectMatrix(matrix, {0.7607, 0.1573, 0.7607}, 5e-5);
    EXPECT_FALSE(choleskyFactor(matrix, 3).empty());

    std::vector<double> sound{1, 0.5, 0.5, 1}, singular{1, 1, 1, 1};
    EXPECT_FALSE(repairCorrelation(sound, 2));
    EXPECT_EQ(sound, (std::vector<double>{1, 0.5, 0.5, 1}));
    EXPECT_TRUE(repairCorrelation(singular, 2));
    EXPECT_NEAR(singular[1], 1.0, 1e-7);
    EXPECT_FALSE(choleskyFactor(singular, 2).empty());
}

TEST(RepairCorrelation, LeavesNoNearerMatrix) {
    // X is the nearest point of a convex set to A when (A - X) . Y <= (A - X) . X for all Y in the set. The
    // hardest Y are near s s' with signs s, each of which agrees with what the others ask for.
    for (const std::size_t size : {10u, 40u, 150u})
        for (const bool hasFactor : {false, true}) {
            const std::vector<double> numbers = uniforms(1, size * size)[0];
            std::vector<double> given(size * size, 1.0);
            for (std::size_t i = 0; i < size; ++i)
                for (std::size_t j = 0; j < i; ++j)
                    given[i * size + j] = given[j * size + i] =
                        hasFactor ? 0.8 + 0.2 * numbers[i * size + j] : 2.0 * numbers[i * size + j] - 1.0;
            std::vector<double> nearest = given;
            ASSERT_TRUE(repairCorrelation(nearest, size));
            EXPECT_TRUE(isCorrelationMatrix(nearest, size) && !choleskyFactor(nearest, size).empty());
            double bound = 0.0;
            for (std::size_t k = 0; k < given.size(); ++k) bound += (given[k] - nearest[k]) * nearest[k];
            for (std::size_t start = 0; start < 20; ++start) {
                std::vector<double> signs(size);
                for (std::size_t i = 0; i < size; ++i)
                    signs[i] = numbers[start * size / 8 + i] < 0.5 ? -1.0 : 1.0;
                double sum = 0.0;
                for (int sweep = 0; sweep < 20; ++sweep) {
                    sum = 0.0;
                    for (std::size_t i = 0; i < size; ++i) {
                        double asked = 0.0;
                        for (std::size_t j = 0; j < size; ++j)
                            asked += (given[i * size + j] - nearest[i * size + j]) * signs[j];
                        if (asked != 0.0) signs[i] = std::copysign(1.0, asked);
                        sum += asked * signs[i];
                    }
                }
                EXPECT_LE(sum, bound + 1e-7 * static_cast<double>(size * size))
                    << size;  // what is lifted, 3e-8
            }
        }
}

TEST(FitCopula, BadDataFailsAndUnusualDataDoesNot) {
    const std::vector<double> x{1, 2, 3, 4, 5, 6, 7, 8}, y{2, 1, 4, 3, 6, 5, 7, 9}, constant(8, 3.0);
    std::vector<double> holes = y, infinite = y, two = x;
    holes[2] = holes[7] = kNaN;
    infinite[0] = -kInfinity;
    infinite[7] = kInfinity;
    for (double& value : two) value = value > 4.5 ? 2.0 : 1.0;
    std::vector<double> fewHoles(8, kNaN);
    fewHoles[0] = 1.0;
    const struct {
        const char* name;
        Rows data;
        bool hasRanks, hasCopulas;
    } cases[] = {{"no variable", {}, false, false},
                 {"no row", {{}, {}}, false, false},
                 {"one row", {{1}, {2}}, false, false},
                 {"rows of different lengths", {x, {1, 2}}, false, false},
                 {"constant", {x, constant}, false, false},
                 {"one complete row", {x, fewHoles}, false, false},
                 {"missing only", {x, std::vector<double>(8, kNaN)}, false, false},
                 {"one variable", {x}, true, false},
                 {"missing cells", {x, holes}, true, true},
                 {"infinities", {x, infinite}, true, true},
                 {"two distinct values", {x, two}, true, true},
                 {"two distinct values each", {two, two, y}, true, true},
                 {"two rows", {{1, 2}, {3, 4}}, true, true}};
    for (const auto& [name, data, hasRanks, hasCopulas] : cases) {
        Dependence result;
        EXPECT_EQ(fitRankCorrelation(constSpans(data), result), hasRanks) << name;
        for (int type = 0; type <= 6; ++type) {
            Dependence copula;
            const bool fits = type >= 1 && type <= 5 && (hasCopulas || (hasRanks && type == 4));
            ASSERT_EQ(fitCopula(CopulaType{type}, constSpans(data), copula), fits) << name << ' ' << type;
            EXPECT_EQ(std::isfinite(copula.statistic), fits) << name << ' ' << type;
        }
    }
    Dependence withHoles, without;
    fitRankCorrelation(constSpans({x, holes}), withHoles);
    fitRankCorrelation(constSpans({{1, 2, 4, 5, 6, 7}, {2, 1, 3, 6, 5, 7}}), without);
    EXPECT_EQ(withHoles.sigma, without.sigma);
}

TEST(FitCopula, EqualVariablesGetTheStrongestDependence) {
    const Rows data(3, uniforms(1, 40)[0]);
    for (const auto& [type, limit] : {std::pair{CLAYTON, 198.0}, {FRANK, 395.0}, {GUMBEL, 100.0}}) {
        const Dependence result = fitted(type, data);
        EXPECT_TRUE(result.isAtLimit);
        EXPECT_EQ(result.theta, limit);
    }
    for (const CopulaType type : {GAUSS, STUDENT}) {
        const Dependence result = fitted(type, data);
        EXPECT_TRUE(result.isRepaired);
        EXPECT_NEAR(result.sigma[1], 1.0, 1e-7);
    }
    Dependence ranks;
    EXPECT_EQ(fitRankCorrelation(constSpans(data), ranks), 1);
    EXPECT_TRUE(ranks.isRepaired);
}

TEST(FitCopula, TakesAThousandVariables) {
    // One common factor, fewer rows than variables.
    const std::size_t numVars = 1000, numRows = 60;
    Rows data = uniforms(numVars + 1, numRows);
    for (std::size_t i = 0; i < numVars; ++i)
        for (std::size_t row = 0; row < numRows; ++row) data[i][row] += data[numVars][row];
    data.pop_back();
    for (const CopulaType type : {CLAYTON, FRANK, GUMBEL, GAUSS}) {
        const Dependence result = fitted(type, data);
        EXPECT_TRUE(std::isfinite(result.statistic) && result.statistic > 0.0) << static_cast<int>(type);
        EXPECT_EQ(result.isRepaired, type == GAUSS);
    }
    Dependence ranks;
    EXPECT_EQ(fitRankCorrelation(constSpans(data), ranks), 1);
    EXPECT_TRUE(ranks.isRepaired);
    EXPECT_NEAR(ranks.sigma[1], 0.48, 0.4);
}

TEST(FitCopula, DoesNotDependOnThreads) {
    Rows data = uniforms(5, 20000);
    for (std::size_t i = 1; i < 5; ++i)
        for (std::size_t row = 0; row < data[i].size(); ++row) data[i][row] += data[0][row];
    const int numThreads = omp_get_max_threads();
    for (const CopulaType type : {CLAYTON, FRANK, GUMBEL, GAUSS, STUDENT}) {
        omp_set_num_threads(1);
        const Dependence serial = fitted(type, data);
        omp_set_num_threads(3);
        const Dependence parallel = fitted(type, data);
        omp_set_num_threads(numThreads);
        EXPECT_EQ(serial.sigma, parallel.sigma);
        EXPECT_EQ(serial.statistic, parallel.statistic);
        EXPECT_TRUE(type >= GAUSS || serial.theta == parallel.theta);
        EXPECT_TRUE(type != STUDENT || serial.degreesOfFreedom == parallel.degreesOfFreedom);
    }
}

}  // namespace
}  // namespace Tessel::Engine::Copula
