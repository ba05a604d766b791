#include "engine/dt/bin_search.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include <gtest/gtest.h>
#include <omp.h>

#include "data/random.h"
#include "engine/dt/growth_memory.h"
#include "engine/dt/tree_table.h"

namespace {

using namespace Tessel;
using namespace Tessel::Testing;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

/// How the table of a case is made; numbers are uniform in [-1, 1) unless told otherwise.
struct Case {
    const char* name;
    std::size_t numRows;
    double roundedTo = 0.0;     // the numbers; 0: not rounded
    double shareMissing = 0.0;  // of the numbers
    double outlier = 0.0;       // added to the first target
    double signal = 1.0;        // that the targets have of the numbers
    int power = 1;              // of the noise of the targets: tails
    DT::Limits limits = {};
};

struct Problem {
    TreeTable table;
    std::vector<double> targets;

    Problem() = default;
    explicit Problem(const Case& how) : targets(how.numRows) {
        Random random(how.numRows + 7);
        const auto uniform = [&] { return 2.0 * random.nextUniform() - 1.0; };
        for (int feature = 0; feature < 4; ++feature) {
            std::vector<double> numbers(how.numRows);
            for (std::size_t row = 0; row < how.numRows; ++row) {
                double& number = numbers[row] = uniform();
                targets[row] += how.signal * (feature % 2 == 0 ? number : std::abs(number));
                if (how.roundedTo > 0.0) number = std::round(number / how.roundedTo) * how.roundedTo;
                if (feature == 3) number = std::round(10.0 * number);  // few values
                if (random.nextUniform() < how.shareMissing) number = kMissing;
            }
            table.addNumbers(std::move(numbers));
        }
        std::vector<std::int32_t> codes(how.numRows);
        for (std::size_t row = 0; row < how.numRows; ++row) {
            codes[row] = static_cast<std::int32_t>(random.nextBelow(7)) - 1;
            targets[row] += how.signal * (codes[row] % 3) + std::pow(3.0 * uniform(), how.power);
        }
        table.addCategories(std::move(codes), 6);
        targets[0] += how.outlier;
    }

    DT::Tree grow(const DT::Limits& limits, bool withBins) const {
        DT::TrainingData data = table.data();
        std::vector<DT::SharedColumn> columns;
        for (const DT::TrainingFeature& feature : data.features)
            columns.push_back(DT::shareColumn(feature, data.numRows, true));
        if (withBins) data.sharedColumns = columns;
        static DT::GrowthMemories memories;  // whatever trees left in it
        std::vector<double> fitted(targets.size());
        data.memories = &memories;
        data.fitted = fitted;
        DT::RegressionModel model;
        model.setLimits(limits);
        model.fit(data, targets);
        EXPECT_EQ(fitted, model.predict(table.cells(), fitted.size()));
        return model.tree();
    }
};

const Case kCases[] = {
    {.name = "few rows", .numRows = 30},
    {.name = "ties and missing", .numRows = 3000, .roundedTo = 0.002, .shareMissing = 0.1},
    {.name = "noise only", .numRows = 5000, .signal = 0.0, .limits = {.maxNumLevels = 4}},
    {.name = "tails", .numRows = 5000, .shareMissing = 0.02, .power = 9, .limits = {.maxNumLevels = 7}},
    // Beside it the other targets are no more than a few units of fixed point.
    {.name = "an outlier", .numRows = 4000, .outlier = 1e17, .limits = {.maxNumLevels = 6}},
    {.name = "large leaves", .numRows = 4000, .limits = {.minNumRecordsInLeaves = 300}},
    {.name = "best first", .numRows = 2000, .limits = {.maxNumSplits = 20}},
    {.name = "drawn features", .numRows = 2000, .limits = {.maxNumLevels = 5, .numSelectedFeatures = 2}},
    {.name = "mostly missing", .numRows = 2000, .shareMissing = 0.97},
    {.name = "many rows", .numRows = 30000, .shareMissing = 0.01, .limits = {.maxNumLevels = 6}},
};

// Lists of sorted values are another way to the same splits, which other tests compare with all splits there
// are.
TEST(BinSearch, TreesAreThoseOfSortedLists) {
    const int numThreads = omp_get_max_threads();
    for (const Case& how : kCases) {
        SCOPED_TRACE(how.name);
        const Problem problem(how);
        const DT::Tree expected = problem.grow(how.limits, false);
        EXPECT_GT(expected.nodes.size(), 5u);
        for (const int n : {1, 2}) {
            omp_set_num_threads(n);
            EXPECT_TRUE(areSame(problem.grow(how.limits, true), expected)) << n << " threads";
        }
        omp_set_num_threads(numThreads);
    }
}

// One half of the rows has no split, the other has splits below by a feature with values beside theirs.
TEST(BinSearch, RecordsOfNodesWithoutASplitAreNotTakenForThoseOfOthers) {
    Problem problem;
    Random random(5);
    std::vector<double> half, side, number;
    for (int row = 0; row < 20000; ++row) {
        half.push_back(row % 2);
        side.push_back(row % 2 == 0 ? 0.0 : 9.0 * static_cast<double>(random.nextBelow(2)));
        number.push_back(row % 2 == 0 ? 5.0 : 9.0 * static_cast<double>(random.nextBelow(2)));
        problem.targets.push_back(100.0 * half.back() + 3.0 * side.back() + number.back() +
                                  random.nextUniform());
    }
    problem.table.addNumbers(half);
    problem.table.addNumbers(side);
    problem.table.addNumbers(number);
    const DT::Tree expected = problem.grow({}, false);
    EXPECT_EQ(expected.nodes.size(), 9u);
    EXPECT_TRUE(areSame(problem.grow({}, true), expected));
    std::vector<double> thresholds;
    for (const DT::Node& node : expected.nodes)
        if (!node.isLeaf()) thresholds.push_back(node.threshold);
    EXPECT_EQ(thresholds, (std::vector<double>{0.5, 4.5, 4.5, 4.5}));
}

TEST(BinSearch, TargetsFarFromZeroAreSplitAsThoseNearIt) {
    Problem problem({.name = "", .numRows = 20000, .limits = {}});
    for (double& target : problem.targets) target = std::round(1000.0 * target);
    const DT::Limits limits{.maxNumLevels = 3};
    const DT::Tree near = problem.grow(limits, true);
    for (double& target : problem.targets) target += 0x1p52;
    const DT::Tree far = problem.grow(limits, true);
    ASSERT_EQ(far.nodes.size(), near.nodes.size());
    for (std::size_t i = 0; i < near.nodes.size(); ++i) {
        EXPECT_EQ(far.nodes[i].feature, near.nodes[i].feature) << i;
        EXPECT_EQ(far.nodes[i].threshold, near.nodes[i].threshold) << i;
    }
}

/// As the learners of an ensemble do: lists, members and scratch go from tree to tree.
TEST(TreeGrowth, TreesThatGrowSideBySideHandOnTheirMemory) {
    const Problem problem({.name = "resamples", .numRows = 900});
    DT::TrainingData data = problem.table.data();
    std::vector<DT::SharedColumn> columns;
    for (const DT::TrainingFeature& feature : data.features)
        columns.push_back(DT::shareColumn(feature, data.numRows, false));
    data.sharedColumns = columns;
    constexpr int kNumTrees = 60;
    const auto treeOf = [&](int seed, DT::GrowthMemories* memories) {
        Random random(static_cast<std::uint64_t>(seed));
        std::vector<std::int32_t> multiplicities(900);
        for (std::int32_t& count : multiplicities) count = static_cast<std::int32_t>(random.nextBelow(3));
        DT::TrainingData own = data;
        own.multiplicities = multiplicities;
        own.memories = memories;
        DT::RegressionModel model;
        model.fit(own, problem.targets);
        return model.tree();
    };
    DT::GrowthMemories memories;
    std::vector<DT::Tree> trees(kNumTrees);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = thread; i < kNumTrees; i += 3)
                trees[static_cast<std::size_t>(i)] = treeOf(i, &memories);
        });
    for (std::thread& thread : threads) thread.join();
    for (int i = 0; i < kNumTrees; ++i)
        EXPECT_TRUE(areSame(trees[static_cast<std::size_t>(i)], treeOf(i, nullptr))) << i;
}

TEST(BinSearch, FindsTheBestOfAllSplitsOfANode) {
    for (const Case& how : kCases) {
        if (how.outlier != 0.0) continue;  // its nodes are not searched by bins
        SCOPED_TRACE(how.name);
        const Problem problem(how);
        const DT::TrainingData data = problem.table.data();
        const auto fewest = static_cast<std::size_t>(how.limits.minNumRecordsInLeaves);
        for (const std::size_t feature : {0u, 3u}) {
            const DT::SharedColumn column = DT::shareColumn(data.features[feature], data.numRows, true);
            DT::BinnedRecords records;
            Engine::Crew crew(1);
            const double origin = problem.targets[7];  // no more than near the mean
            DT::BinSearch search({&column, 1}, problem.targets, origin, static_cast<std::int64_t>(fewest),
                                 records, crew);
            std::vector<std::uint32_t> members;
            double mean = 0.0;
            for (std::uint32_t row = 0; row < how.numRows; row += 1 + row % 3) {
                members.push_back(row);
                mean += problem.targets[row];
            }
            mean /= static_cast<double>(members.size());
            search.clearMarks();
            search.setMark(members, 3);
            std::vector<DT::BinSum> bins(column.numBins());
            const std::size_t features[] = {0};
            DT::BinSum* const first[] = {bins.data()};
            search.addUp(features, members, first);

            // The score by definition of each split between neighbouring values of the node.
            std::vector<std::uint32_t> byValue;
            for (const SortedRecord entry : column.rows)
                if (search.marks()[entry.record()] == 3) byValue.push_back(entry.record());
            const auto numberOf = [&](std::uint32_t row) { return problem.table.number(feature, row); };
            double sum = 0.0, bestScore = -1.0;
            std::pair<std::uint32_t, std::uint32_t> best;
            for (std::size_t i = 0; i + 1 < byValue.size(); ++i) {
                sum += problem.targets[byValue[i]] - mean;
                const auto left = static_cast<double>(i + 1), all = static_cast<double>(members.size());
                const double score = sum * sum / (left * (all - left));
                if (!(numberOf(byValue[i]) < numberOf(byValue[i + 1])) || i + 1 < fewest ||
                    byValue.size() - i - 1 < fewest || score <= bestScore)
                    continue;
                bestScore = score;
                best = {byValue[i], byValue[i + 1]};
            }

            DT::Scratch scratch;
            const DT::BinnedNode node{bins.data(), std::ssize(members), 3};
            DT::Candidate found = search.searchEnds(0, node);
            search.searchInside(0, node, found.score, scratch, found);
            ASSERT_EQ(found.exists(), bestScore >= 0.0);
            if (!found.exists()) continue;
            // Some thousand sums, each rounded; the mean is the greatest part of the difference.
            EXPECT_NEAR(found.score, bestScore, 1e-9 * bestScore);
            EXPECT_EQ(search.recordBefore(0, found.lower, 3), best.first);
            EXPECT_EQ(search.recordAfter(0, found.upper, 3), best.second);
        }
    }
}

}  // namespace
