#include <algorithm>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>

#include "data/random.h"
#include "engine/dt/tree_table.h"

namespace {

using namespace Tessel;
using namespace Tessel::Testing;
using DT::TreeType;

struct Sample {
    TreeTable table;
    std::vector<std::int32_t> classes;
    std::vector<double> targets;

    Sample(std::size_t numRows, std::uint64_t seed) {
        Random random(seed);
        std::vector<double> x, y;
        for (std::size_t row = 0; row < numRows; ++row) {
            x.push_back(random.nextUniform());
            y.push_back(random.nextUniform());
            const double signal = std::floor(3.0 * x.back()) + (y.back() > 0.6 ? 1.0 : 0.0);
            targets.push_back(signal + 0.7 * random.nextNormal());
            const bool isNoise = random.nextBelow(4) == 0;
            classes.push_back(isNoise ? static_cast<std::int32_t>(random.nextBelow(3))
                                      : static_cast<std::int32_t>(signal) % 3);
        }
        table.addNumbers(std::move(x));
        table.addNumbers(std::move(y));
    }
};

/// Error plus complexity times leaves of the subtree that costs least, by dynamic programming over the tree.
double leastCost(const DT::Tree& tree, double complexity) {
    std::vector<double> cost(tree.nodes.size());
    for (std::size_t i = cost.size(); i-- > 0;) {
        const DT::Node& node = tree.nodes[i];
        cost[i] = node.error / tree.nodes[0].weight + complexity;
        if (!node.isLeaf()) {
            const auto left = static_cast<std::size_t>(node.left);
            cost[i] = std::min(cost[i], cost[left] + cost[left + 1]);
        }
    }
    return cost[0];
}

template <class Model>
void expectOptimalSequence(Model& model) {
    const auto& steps = model.pruningSteps();
    ASSERT_GT(steps.size(), 5u);
    EXPECT_EQ(steps.front().numDecisionNodes, static_cast<int>(model.tree().numDecisionNodes()));
    EXPECT_EQ(steps.back().numDecisionNodes, 0);
    std::vector<std::uint8_t> wasLeaf(model.tree().nodes.size(), 0);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (i > 0) {
            EXPECT_LT(steps[i].numDecisionNodes, steps[i - 1].numDecisionNodes);
            EXPECT_TRUE(i == 1 || steps[i].complexity > steps[i - 1].complexity);
        }
        // Each tree is best from its own complexity up to that of the next.
        const double next = i + 1 < steps.size() ? steps[i + 1].complexity : 2.0 * steps[i].complexity;
        for (const double complexity : {steps[i].complexity, 0.5 * (steps[i].complexity + next), next})
            EXPECT_NEAR(steps[i].trainingError + complexity * (steps[i].numDecisionNodes + 1),
                        leastCost(model.tree(), complexity), 1e-12);
        model.select(steps[i].numDecisionNodes);
        EXPECT_EQ(model.numDecisionNodes(), steps[i].numDecisionNodes);
        for (std::size_t node = 0; node < wasLeaf.size(); ++node) {  // nested: what was cut stays cut
            EXPECT_LE(wasLeaf[node], model.isLeaf(static_cast<std::int32_t>(node)));
            wasLeaf[node] = model.isLeaf(static_cast<std::int32_t>(node));
        }
    }
}

/// Positions of the least validation error (ties: the smallest tree) and of the smallest tree within `error`.
std::pair<std::size_t, std::size_t> chosenSteps(const std::vector<DT::PruningStep>& steps,
                                                double standardError) {
    std::size_t least = 0, within = 0;
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (steps[i].validationError <= steps[least].validationError) least = i;
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (steps[i].validationError <= steps[least].validationError + standardError) within = i;
    return {least, within};
}

template <class Model>
void expectSelections(Model& model) {
    const auto [least, within] = chosenSteps(model.pruningSteps(), model.standardError());
    EXPECT_LT(least, within);  // else the case tells little
    for (int repetition = 0; repetition < 2; ++repetition) {
        model.select(TreeType::MIN_ERROR);
        EXPECT_EQ(model.numDecisionNodes(), model.pruningSteps()[least].numDecisionNodes);
        model.select(TreeType::BEST_PRUNED);
        EXPECT_EQ(model.numDecisionNodes(), model.pruningSteps()[within].numDecisionNodes);
        model.select(TreeType::FULL_GROWN);
        EXPECT_EQ(model.numDecisionNodes(), static_cast<int>(model.tree().numDecisionNodes()));
        model.selectManual(model.pruningSteps()[2].numDecisionNodes);
        EXPECT_EQ(model.numDecisionNodes(), model.pruningSteps()[2].numDecisionNodes);
        model.select(TreeType::MIN_ERROR);
        model.select(TreeType::MANUAL);
        EXPECT_EQ(model.numDecisionNodes(), model.pruningSteps()[2].numDecisionNodes);
    }
}

TEST(TreePruning, ClassificationErrorsAndSelections) {
    const Sample training(500, 1), validation(300, 2);
    for (const bool hasPriors : {false, true}) {
        DT::ClassificationModel model = classifier(3);
        const std::vector<double> priors{0.2, 0.5, 0.3};
        if (hasPriors) model.setPrior(priors);
        model.fit(training.table.data(), training.classes);
        EXPECT_THROW(model.select(TreeType::BEST_PRUNED), ConstraintViolation);
        model.prune(validation.table.cells(), validation.classes);
        expectOptimalSequence(model);
        std::vector<double> numRecords(3, 0.0);
        for (const std::int32_t k : validation.classes) ++numRecords[static_cast<std::size_t>(k)];
        const auto& steps = model.pruningSteps();
        const std::size_t least = chosenSteps(steps, 0.0).first;
        for (std::size_t i = 0; i < steps.size(); ++i) {  // errors by scoring the selected tree
            model.select(steps[i].numDecisionNodes);
            const auto predicted = model.predict(validation.table.cells(), 300);
            std::vector<double> numWrong(3, 0.0);
            for (std::size_t row = 0; row < 300; ++row)
                numWrong[static_cast<std::size_t>(validation.classes[row])] +=
                    predicted[row] != validation.classes[row];
            double rate = 0.0, variance = 0.0;
            for (std::size_t k = 0; k < 3; ++k) {
                const double share = numWrong[k] / numRecords[k];
                rate += (hasPriors ? priors[k] : numRecords[k] / 300.0) * share;
                variance += priors[k] * priors[k] * share * (1.0 - share) / numRecords[k];
            }
            EXPECT_NEAR(steps[i].validationError, rate, 1e-12);
            EXPECT_NEAR(model.pruningLog()[i], rate, 1e-12);
            if (!hasPriors) variance = rate * (1.0 - rate) / 300.0;
            if (i == least) {
                EXPECT_NEAR(model.standardError(), std::sqrt(variance), 1e-12);
            }
        }
        expectSelections(model);
        EXPECT_EQ(model.numValidationRecords()[0], 300);
    }
}

TEST(TreePruning, RegressionErrorsAndSelections) {
    const Sample training(500, 3), validation(90, 5);
    DT::RegressionModel model;
    model.fit(training.table.data(), training.targets);
    model.prune(validation.table.cells(), validation.targets);
    expectOptimalSequence(model);
    const auto& steps = model.pruningSteps();
    const std::size_t least = chosenSteps(steps, 0.0).first;
    for (std::size_t i = 0; i < steps.size(); i += 7) {
        const std::size_t step = i / 7 % 2 == 0 ? i : least;
        model.select(steps[step].numDecisionNodes);
        const auto predicted = model.predict(validation.table.cells(), 90);
        double sum = 0.0, squares = 0.0;
        for (std::size_t row = 0; row < 90; ++row) {
            const double error = std::pow(predicted[row] - validation.targets[row], 2.0);
            sum += error / 90.0;
            squares += error * error / 90.0;
        }
        EXPECT_NEAR(steps[step].validationError, sum, 1e-11);
        EXPECT_EQ(model.complexityLog()[step].validationError, steps[step].validationError);
        EXPECT_EQ(model.complexityLog()[step].complexity, steps[step].complexity);
        if (step == least) {
            EXPECT_NEAR(model.standardError(), std::sqrt((squares - sum * sum) / 90.0), 1e-11);
        }
    }
    expectSelections(model);
    EXPECT_THROW(model.prune(validation.table.cells(), {}), TooFewNumRows);
}

}  // namespace
