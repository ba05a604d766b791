#include <cmath>

#include <gtest/gtest.h>

#include "data/random.h"
#include "engine/dt/tree_table.h"

// Weights and targets near the ends of the range of double, whose products leave it.

namespace {

using namespace Tessel;
using namespace Tessel::Testing;

constexpr std::size_t kNumRows = 400;

struct Sample {
    explicit Sample(std::uint64_t seed) {
        Random random(seed);
        std::vector<double> first, second;
        std::vector<std::int32_t> codes;
        for (std::size_t row = 0; row < kNumRows; ++row) {
            first.push_back(random.nextNormal());
            second.push_back(std::floor(10.0 * random.nextUniform()));
            codes.push_back(static_cast<std::int32_t>(random.nextBelow(6)));
            const double signal =
                first.back() + 0.3 * second.back() + codes.back() % 3 + 0.5 * random.nextNormal();
            targets.push_back(signal);
            classes.push_back(static_cast<std::int32_t>(signal > 2.0) +
                              static_cast<std::int32_t>(signal > 3.5));
            wholeWeights.push_back(static_cast<double>(1 + random.nextBelow(5)));
            weights.push_back(1.0 + random.nextUniform());
        }
        table.addNumbers(std::move(first));
        table.addNumbers(std::move(second));
        table.addCategories(std::move(codes), 6);
    }

    TreeTable table;
    std::vector<double> targets, weights, wholeWeights;
    std::vector<std::int32_t> classes;
};

std::vector<double> times(std::vector<double> values, double factor) {
    for (double& value : values) value *= factor;
    return values;
}

void expectSameSplits(const DT::Model& expected, const DT::Model& actual) {
    const DT::Tree &a = expected.tree(), &b = actual.tree();
    EXPECT_GT(a.nodes.size(), 20u);
    ASSERT_EQ(a.nodes.size(), b.nodes.size());
    EXPECT_EQ(a.categorySets, b.categorySets);
    for (std::size_t i = 0; i < a.nodes.size(); ++i) {
        EXPECT_EQ(a.nodes[i].left, b.nodes[i].left);
        EXPECT_EQ(a.nodes[i].feature, b.nodes[i].feature);
        EXPECT_EQ(a.nodes[i].threshold, b.nodes[i].threshold);
        EXPECT_EQ(a.nodes[i].numRecords, b.nodes[i].numRecords);
    }
    EXPECT_EQ(expected.numDecisionNodes(), actual.numDecisionNodes());  // of the selected tree
}

/// Powers of two change no digit; other factors round off some of the last ones in 400 records.
double toleranceOf(double factor) { return std::exp2(std::round(std::log2(factor))) == factor ? 0.0 : 1e-12; }

void expectTimes(const std::vector<double>& expected, double factor, const std::vector<double>& actual,
                 double tolerance) {
    ASSERT_EQ(expected.size(), actual.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(actual[i], expected[i] * factor, tolerance * expected[0] * factor) << "at " << i;
}

DT::Limits limits() {
    DT::Limits limits;
    limits.minNumRecordsInLeaves = 10;  // in small nodes features tie
    return limits;
}

// The least is a subnormal unit, of which the weights are whole multiples.
const double kFactors[] = {1e300, 1e-300, std::ldexp(1.0, 1000), std::ldexp(1.0, -1000),
                           std::ldexp(1.0, -1074)};

TEST(TreeScale, WeightsOfAnySize) {
    const Sample training(1), validation(2);
    for (const std::size_t numClasses : {2u, 3u})
        for (const bool hasPriors : {false, true}) {
            std::vector<std::int32_t> classes = training.classes, validationClasses = validation.classes;
            if (numClasses == 2)
                for (auto* codes : {&classes, &validationClasses})
                    for (std::int32_t& code : *codes) code = std::min(code, 1);
            const auto fit = [&](double factor, bool haveWholeWeights) {
                DT::ClassificationModel model = classifier(numClasses, limits());
                if (hasPriors)
                    model.setPrior(numClasses == 2 ? std::vector{0.7, 0.3} : std::vector{0.5, 0.2, 0.3});
                DT::TrainingData data = training.table.data();
                const std::vector<double> weights =
                    times(haveWholeWeights ? training.wholeWeights : training.weights, factor);
                data.weights = weights;
                model.fit(data, classes);
                model.prune(validation.table.cells(), validationClasses);
                model.select(DT::TreeType::MIN_ERROR);
                return model;
            };
            for (const double factor : kFactors) {
                SCOPED_TRACE(factor);
                const bool haveWholeWeights =
                    toleranceOf(factor) == 0.0;  // multiples of the least number too
                const DT::ClassificationModel expected = fit(1.0, haveWholeWeights);
                const DT::ClassificationModel actual = fit(factor, haveWholeWeights);
                expectSameSplits(expected, actual);
                const double tolerance = toleranceOf(factor);
                expectTimes(expected.trainingLog(), 1.0, actual.trainingLog(), tolerance);
                if (factor > 1e-305)
                    expectTimes(expected.featureImportance(), factor, actual.featureImportance(), tolerance);
                // Rounding may part complexities that are equal.
                if (tolerance == 0.0) expectTimes(expected.pruningLog(), 1.0, actual.pruningLog(), 0.0);
                EXPECT_EQ(expected.predict(validation.table.cells(), kNumRows),
                          actual.predict(validation.table.cells(), kNumRows));
                const auto posteriors = expected.posteriorProbability(validation.table.cells(), kNumRows);
                const auto others = actual.posteriorProbability(validation.table.cells(), kNumRows);
                for (std::size_t i = 0; i < posteriors.size(); ++i)
                    EXPECT_NEAR(posteriors[i], others[i], 1e-13);
            }
        }
}

TEST(TreeScale, TargetsAndWeightsOfAnySize) {
    const Sample training(3), validation(4);
    const auto fit = [&](double weightFactor, double targetFactor) {
        DT::RegressionModel model;
        model.setLimits(limits());
        DT::TrainingData data = training.table.data();
        const std::vector<double> weights = times(training.weights, weightFactor);
        data.weights = weights;
        model.fit(data, times(training.targets, targetFactor));
        model.prune(validation.table.cells(), times(validation.targets, targetFactor));
        model.select(DT::TreeType::BEST_PRUNED);
        return model;
    };
    const DT::RegressionModel expected = fit(1.0, 1.0);
    for (const double weightFactor : {1.0, 1e300, 1e-300})
        for (const double targetFactor : {1.0, 1e300, 1e-300, std::ldexp(1.0, 1000), std::ldexp(1.0, -900)}) {
            SCOPED_TRACE(testing::Message() << weightFactor << ", " << targetFactor);
            const DT::RegressionModel actual = fit(weightFactor, targetFactor);
            expectSameSplits(expected, actual);
            if (weightFactor != 1.0 && targetFactor != 1.0) continue;
            const auto predicted = expected.predict(validation.table.cells(), kNumRows);
            const auto others = actual.predict(validation.table.cells(), kNumRows);
            for (std::size_t i = 0; i < predicted.size(); ++i)
                EXPECT_NEAR(others[i] / targetFactor, predicted[i], 1e-13);
            if (targetFactor == 1.0) {
                expectTimes(expected.trainingLog(), 1.0, actual.trainingLog(), 1e-12);
                expectTimes(expected.featureImportance(), weightFactor, actual.featureImportance(), 1e-12);
            } else {  // squares leave the range: no number can tell them
                EXPECT_EQ(actual.trainingLog()[0], targetFactor > 1.0 ? HUGE_VAL : 0.0);
                EXPECT_EQ(actual.complexityLog().back().validationError, targetFactor > 1.0 ? HUGE_VAL : 0.0);
            }
        }
}

}  // namespace
