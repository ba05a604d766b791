#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>
#include <omp.h>

#include <tessel/data/errors.h>

#include "data/random.h"
#include "engine/dt/split_search.h"
#include "engine/dt/tree_table.h"

namespace {

using namespace Tessel;
using namespace Tessel::Testing;
using DT::Limits;
using DT::Node;

/// A random problem of any kind the engine takes.
struct Problem {
    TreeTable table;
    std::size_t numClasses = 0;  // 0: regression
    std::vector<std::int32_t> classes;
    std::vector<double> targets, weights;

    DT::Tree grow(const Limits& limits) const {
        DT::TrainingData data = table.data();
        data.weights = weights;
        if (numClasses > 0) {
            DT::ClassificationModel model = classifier(numClasses, limits);
            model.fit(data, classes);
            return model.tree();
        }
        DT::RegressionModel model;
        model.setLimits(limits);
        model.fit(data, targets);
        return model.tree();
    }
    double weight(std::size_t row) const { return weights.empty() ? 1.0 : weights[row]; }

    /// Gini's index times weight, or the sum of squares, by definition.
    double impurity(const std::vector<std::size_t>& rows) const {
        double total = 0.0, mean = 0.0, impurity = 0.0;
        for (const std::size_t row : rows) total += weight(row);
        for (std::size_t k = 0; k < numClasses; ++k) {
            double share = 0.0;
            for (const std::size_t row : rows)
                if (classes[row] == static_cast<std::int32_t>(k)) share += weight(row) / total;
            impurity += total * share * (1.0 - share);
        }
        if (numClasses > 0) return impurity;
        for (const std::size_t row : rows) mean += weight(row) / total * targets[row];
        for (const std::size_t row : rows) impurity += weight(row) * std::pow(targets[row] - mean, 2.0);
        return impurity;
    }

    /// Decrease by the split that sends left what `goesLeft` says; -1 when a side is too small.
    template <class GoesLeft>
    double decrease(const std::vector<std::size_t>& rows, std::size_t minNumRecords,
                    GoesLeft&& goesLeft) const {
        std::vector<std::size_t> left, right;
        for (const std::size_t row : rows) (goesLeft(row) ? left : right).push_back(row);
        if (std::min(left.size(), right.size()) < std::max<std::size_t>(1, minNumRecords)) return -1.0;
        return impurity(rows) - impurity(left) - impurity(right);
    }

    /// The greatest decrease of all splits there are.
    double bestDecrease(const std::vector<std::size_t>& rows, std::size_t minNumRecords) const {
        double best = -1.0;
        for (std::size_t feature = 0; feature < table.numFeatures(); ++feature) {
            std::vector<double> values;
            for (const std::size_t row : rows)
                if (!table.isMissing(feature, row))
                    values.push_back(table.isCategorical(feature) ? table.code(feature, row)
                                                                  : table.number(feature, row));
            std::sort(values.begin(), values.end());
            values.erase(std::unique(values.begin(), values.end()), values.end());
            if (!table.isCategorical(feature)) {
                for (std::size_t i = 0; i + 1 < values.size(); ++i)
                    best = std::max(best, decrease(rows, minNumRecords, [&](std::size_t row) {
                                        return !(table.number(feature, row) > values[i]);
                                    }));
                continue;
            }
            const std::uint32_t numSubsets = 1u << values.size();
            for (std::uint32_t subset = 1; subset + 1 < numSubsets; ++subset)
                best = std::max(best, decrease(rows, minNumRecords, [&](std::size_t row) {
                                    const auto at =
                                        std::find(values.begin(), values.end(), table.code(feature, row));
                                    return at == values.end() || (subset >> (at - values.begin()) & 1) != 0;
                                }));
        }
        return best;
    }
};

Problem randomProblem(std::uint64_t seed) {
    Random random(seed);
    Problem problem;
    const std::size_t numRows = 5 + random.nextBelow(36);
    problem.numClasses = random.nextBelow(2) == 0 ? 0 : 2 + random.nextBelow(3);
    const bool hasMissing = random.nextBelow(2) == 0;
    const std::size_t numFeatures = 1 + random.nextBelow(4);
    for (std::size_t feature = 0; feature < numFeatures; ++feature) {
        const std::uint64_t numValues = 2 + random.nextBelow(feature % 2 == 0 ? 30 : 6);
        std::vector<double> numbers;
        std::vector<std::int32_t> codes;
        for (std::size_t row = 0; row < numRows; ++row) {
            const bool isMissing = hasMissing && random.nextBelow(5) == 0;
            const auto value = static_cast<std::int32_t>(random.nextBelow(numValues));
            numbers.push_back(isMissing ? std::nan("") : 0.1 * value - 1.0);
            codes.push_back(isMissing ? -1 : value);
        }
        if (feature % 2 == 0)
            problem.table.addNumbers(numbers);
        else
            problem.table.addCategories(codes, static_cast<std::int32_t>(numValues));
    }
    const bool hasWeights = random.nextBelow(3) == 0;
    for (std::size_t row = 0; row < numRows; ++row) {
        if (problem.numClasses > 0)
            problem.classes.push_back(static_cast<std::int32_t>(random.nextBelow(problem.numClasses)));
        else
            problem.targets.push_back(100.0 + random.nextNormal());
        if (hasWeights) problem.weights.push_back(0.25 + random.nextUniform());
    }
    return problem;
}

/// Walks the tree with comparisons of its own and holds each node against the definition.
void expectBestSplits(const Problem& problem, const DT::Tree& tree, const Limits& limits) {
    const auto minNumRecords = static_cast<std::size_t>(limits.minNumRecordsInLeaves);
    std::vector<std::vector<std::size_t>> rows(tree.nodes.size());
    rows[0].resize(problem.table.numRows());
    std::iota(rows[0].begin(), rows[0].end(), 0);
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const Node& node = tree.nodes[i];
        ASSERT_EQ(node.numRecords, static_cast<std::int64_t>(rows[i].size()));
        const double scale = 1.0 + problem.impurity(rows[0]);
        ASSERT_NEAR(node.impurity, problem.impurity(rows[i]), 1e-12 * scale);
        const double best = problem.bestDecrease(rows[i], minNumRecords);
        if (node.isLeaf()) {
            ASSERT_LE(best, 1e-12 * scale) << "node " << i << " could be split";
            continue;
        }
        ASSERT_NEAR(node.gain, best, 1e-12 * scale) << "node " << i;
        const auto feature = static_cast<std::size_t>(node.feature);
        for (const std::size_t row : rows[i]) {
            bool isLeft = problem.table.isMissing(feature, row);
            if (!isLeft && node.categorySet < 0) isLeft = problem.table.number(feature, row) < node.threshold;
            if (!isLeft && node.categorySet >= 0) {
                const auto& set = tree.categorySets[static_cast<std::size_t>(node.categorySet)];
                isLeft = std::count(set.begin(), set.end(), problem.table.code(feature, row)) > 0;
            }
            rows[static_cast<std::size_t>(isLeft ? node.left : node.right())].push_back(row);
        }
    }
}

TEST(TreeGrowth, TakesTheBestOfAllSplits) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const Problem problem = randomProblem(seed);
        Limits limits;
        // Ordered categories give the best subset of all only where no side is too small for the limit.
        if (problem.numClasses > 2) limits.minNumRecordsInLeaves = 1 + static_cast<int>(seed % 4);
        expectBestSplits(problem, problem.grow(limits), limits);
    }
}

TEST(TreeGrowth, SameSplitBySortedListsAndBySums) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        Random random(seed);
        DT::PreparedRecords prepared;
        DT::Records& records = prepared.records;
        records.size = 100;
        records.numClasses = static_cast<int>(seed % 4 == 1 ? 0 : seed % 4);
        std::vector<double> numbers, targets;
        std::vector<std::uint32_t> members;
        for (std::uint32_t record = 0; record < records.size; ++record) {
            members.push_back(record);
            const auto value = static_cast<double>(random.nextBelow(60));
            numbers.push_back(value < 4.0 ? std::nan("") : value);
            records.classes.push_back(static_cast<std::uint16_t>(random.nextBelow(2 + seed % 2)));
            targets.push_back(random.nextNormal());
        }
        records.targets = targets;
        std::vector<double> classWeights(3);
        Node node;
        summarize(records, members, node, classWeights.data());
        const DT::Totals totals{node.numRecords, node.weight, node.response, classWeights.data()};
        const auto cells = ColumnCells::ofNumbers(numbers);
        const RankCodes& ranks = cells->rankCodes();
        const std::vector<SortedRecord> list = RecordSorter().sort(
            static_cast<std::uint32_t>(records.size), [&](std::uint32_t record) { return numbers[record]; });
        DT::Scratch scratch;
        const auto search = DT::SplitSearch::make(records, 1 + static_cast<std::int64_t>(seed % 7));
        const DT::Candidate sorted = search->searchSorted(list, totals, scratch);
        const DT::Candidate summed =
            search->searchNumbers(members, {ranks.codes, ranks.numDistinct}, totals, scratch);
        ASSERT_TRUE(sorted.exists()) << "seed " << seed;
        EXPECT_EQ(ranks.codes[list[sorted.lower].record()], summed.lower) << "seed " << seed;
        EXPECT_EQ(ranks.codes[list[sorted.upper].record()], summed.upper) << "seed " << seed;
        // Sums of doubles run in another order.
        EXPECT_NEAR(sorted.score, summed.score, records.numClasses > 0 ? 0.0 : 1e-12 * sorted.score);
    }
}

TEST(TreeGrowth, SameTreeWithAndWithoutRanks) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        Random random(seed);
        const std::size_t numRows = seed % 2 == 0 ? 150 : 400;  // as sums and as lists
        std::vector<std::shared_ptr<ColumnCells>> roots;
        RowIndexes rows;
        for (std::size_t row = 0; row < numRows; ++row)
            rows.push_back(static_cast<std::int32_t>(random.nextBelow(2000)));
        TreeTable table;
        DT::TrainingData data;
        data.numRows = static_cast<int>(numRows);
        data.keepRanks = false;
        for (int feature = 0; feature < 4; ++feature) {
            std::vector<double> numbers, selected;
            for (int row = 0; row < 2000; ++row)
                numbers.push_back(random.nextBelow(10) == 0 ? std::nan("") : random.nextUniform());
            for (const std::int32_t row : rows) selected.push_back(numbers[static_cast<std::size_t>(row)]);
            roots.push_back(ColumnCells::ofNumbers(std::move(numbers)));
            data.features.push_back(DT::TrainingFeature::numeric(*roots.back(), &rows));
            table.addNumbers(std::move(selected));
        }
        std::vector<double> targets;
        for (std::size_t row = 0; row < numRows; ++row) targets.push_back(random.nextNormal());
        DT::RegressionModel sorted, ranked, written;
        sorted.fit(data, targets);
        EXPECT_FALSE(roots[0]->hasRankCodes());
        data.keepRanks = true;
        ranked.fit(data, targets);
        EXPECT_TRUE(roots[0]->hasRankCodes());
        written.fit(table.data(), targets);
        EXPECT_TRUE(areSame(sorted.tree(), ranked.tree())) << "seed " << seed;
        EXPECT_TRUE(areSame(sorted.tree(), written.tree())) << "seed " << seed;
    }
}

/// Targets that depend on the features, for trees of some size.
Problem largeProblem(std::size_t numRows, std::size_t numClasses) {
    Random random(7);
    Problem problem;
    problem.numClasses = numClasses;
    std::vector<double> signal(numRows, 0.0);
    for (int feature = 0; feature < 6; ++feature) {
        std::vector<double> numbers;
        for (std::size_t row = 0; row < numRows; ++row) {
            const double number = random.nextUniform();
            signal[row] += (feature + 1) * std::sin(5.0 * number);
            numbers.push_back(feature == 5 ? std::floor(20 * number) : number);
        }
        problem.table.addNumbers(std::move(numbers));
    }
    std::vector<std::int32_t> codes;
    for (std::size_t row = 0; row < numRows; ++row) {
        codes.push_back(static_cast<std::int32_t>(random.nextBelow(12)));
        signal[row] += codes.back() % 5 + random.nextNormal();
        problem.targets.push_back(signal[row]);
        problem.classes.push_back(
            std::clamp(static_cast<std::int32_t>(signal[row] / 4.0), 0,
                       static_cast<std::int32_t>(std::max<std::size_t>(1, numClasses)) - 1));
    }
    problem.table.addCategories(std::move(codes), 12);
    return problem;
}

TEST(TreeGrowth, DoesNotDependOnThreads) {
    const int before = omp_get_max_threads();
    for (const std::size_t numClasses : std::vector<std::size_t>{0, 2, 3}) {
        const Problem problem = largeProblem(6000, numClasses);
        for (const int numSelected : {2, Limits::kNone})
            for (const int maxNumSplits : {100, Limits::kNone}) {
                Limits limits;
                limits.numSelectedFeatures = numSelected;
                limits.maxNumSplits = maxNumSplits;
                omp_set_num_threads(1);
                const DT::Tree one = problem.grow(limits);
                omp_set_num_threads(3);
                EXPECT_TRUE(areSame(one, problem.grow(limits))) << numClasses << ' ' << numSelected;
                EXPECT_GT(one.nodes.size(), 200u);
                limits.featureSelectionSeed = 54321;
                EXPECT_EQ(areSame(one, problem.grow(limits)), numSelected == Limits::kNone);
            }
    }
    omp_set_num_threads(before);
}

TEST(TreeGrowth, SameTreeWithAndWithoutSubtractedHistograms) {
    for (const std::size_t numClasses : {2u, 3u}) {
        Random random(numClasses);
        TreeTable table;
        std::vector<std::int32_t> codes, classes;
        std::vector<double> numbers, signal(5000);
        for (double& value : signal) {
            numbers.push_back(random.nextBelow(15) == 0 ? std::nan("")
                                                        : std::floor(40.0 * random.nextUniform()));
            codes.push_back(static_cast<std::int32_t>(random.nextBelow(13)) - 1);
            value = std::isnan(numbers.back()) ? 11.0 : numbers.back() + 9 * (codes.back() % 4);
            const double noise = 20.0 * random.nextNormal();
            classes.push_back(static_cast<std::int32_t>(value + noise > 25.0) +
                              static_cast<std::int32_t>(numClasses > 2 && value + noise > 45.0));
        }
        table.addNumbers(numbers);
        table.addCategories(codes, 12);
        table.addNumbers(std::move(signal));
        for (const int maxNumSplits : {60, Limits::kNone}) {
            Limits limits;
            limits.maxNumSplits = maxNumSplits;
            DT::ClassificationModel subtracted = classifier(numClasses, limits), added = subtracted;
            DT::TrainingData data = table.data();
            subtracted.fit(data, classes);
            const std::vector<double> halves(5000, 0.5);  // no whole numbers: each node is added up
            data.weights = halves;
            added.fit(data, classes);
            ASSERT_EQ(subtracted.tree().nodes.size(), added.tree().nodes.size());
            EXPECT_GT(added.tree().nodes.size(), 100u);
            EXPECT_EQ(subtracted.tree().categorySets, added.tree().categorySets);
            for (std::size_t i = 0; i < added.tree().nodes.size(); ++i) {
                const Node &a = subtracted.tree().nodes[i], &b = added.tree().nodes[i];
                EXPECT_EQ(a.feature, b.feature);
                EXPECT_EQ(a.threshold, b.threshold);
                EXPECT_EQ(a.gain, 2.0 * b.gain);
            }
        }
    }
}

TEST(TreeGrowth, NodesDrawFeaturesOfTheirOwn) {
    // Four copies of a column: the feature of a split is the one that the node drew.
    Random random(9);
    std::vector<double> numbers, targets;
    for (int row = 0; row < 60; ++row) {
        numbers.push_back(row);
        targets.push_back(random.nextNormal());
    }
    TreeTable table;
    for (int copy = 0; copy < 4; ++copy) table.addNumbers(numbers);
    int numAlike = 0;
    std::vector<int> timesDrawn(4, 0);
    for (int seed = 1; seed <= 400; ++seed) {
        DT::RegressionModel model;
        model.setLimits({.minNumRecordsInLeaves = 10,
                         .maxNumLevels = 2,
                         .numSelectedFeatures = 1,
                         .featureSelectionSeed = seed});
        model.fit(table.data(), targets);
        const std::vector<Node>& nodes = model.tree().nodes;
        ++timesDrawn[static_cast<std::size_t>(nodes[0].feature)];
        numAlike += nodes[1].feature == nodes[2].feature;
    }
    // Binomial with 400 trials of 1/4: mean 100, standard deviation 8.7; five of them.
    EXPECT_NEAR(numAlike, 100, 44);
    for (const int times : timesDrawn) EXPECT_NEAR(times, 100, 44);
}

TEST(TreeGrowth, LimitsMeanWhatTheySay) {
    const Problem problem = largeProblem(2000, 3);
    const DT::Tree whole = problem.grow({});
    for (const int limit : {0, 1, 2, 3, 4, 9, 40}) {
        Limits limits;
        limits.maxNumSplits = limit;
        const DT::Tree tree = problem.grow(limits);
        EXPECT_EQ(tree.numDecisionNodes(), static_cast<std::size_t>(limit));
        // Best first: what was split gained at least as much as what could have been.
        std::vector<double> log = DT::errorBySplit(whole);
        log.resize(static_cast<std::size_t>(limit) + 1);
        const std::vector<double> limited = DT::errorBySplit(tree);
        ASSERT_EQ(limited.size(), log.size());
        for (std::size_t i = 0; i < log.size(); ++i) EXPECT_NEAR(limited[i], log[i], 1e-13);

        limits = {};
        limits.maxNumNodes = limit + 1;  // an even number of nodes cannot be: one less
        EXPECT_EQ(problem.grow(limits).nodes.size(), static_cast<std::size_t>(limit / 2 * 2 + 1));

        limits = {};
        limits.maxNumLevels = limit;
        const DT::Tree levels = problem.grow(limits);
        std::vector<int> depth(levels.nodes.size(), 0);
        for (std::size_t i = 1; i < depth.size(); ++i)
            depth[i] = depth[static_cast<std::size_t>(levels.nodes[i].parent)] + 1;
        const int deepest = *std::max_element(depth.begin(), depth.end());
        EXPECT_TRUE(deepest == limit || (limit == 40 && deepest < 40));

        limits = {};
        limits.minNumRecordsInLeaves = limit + 1;
        for (const Node& node : problem.grow(limits).nodes) EXPECT_GT(node.numRecords, limit);
    }
}

// Of long tables threads look at stretches; here the first and the last have no record.
TEST(TreeGrowth, RepeatedRecordsAreRecords) {
    for (const std::size_t numRows : {400u, 7000u}) {
        const std::size_t margin = numRows > 400 ? Engine::kSizeOfStretches + 1 : 0;
        const Problem problem = largeProblem(numRows, 3);
        Random random(3);
        std::vector<std::int32_t> sample, multiplicities(numRows, 0);
        std::vector<double> weights(numRows, 0.0);
        for (std::size_t i = 0; i < numRows; ++i) {
            sample.push_back(static_cast<std::int32_t>(margin + random.nextBelow(numRows - 2 * margin)));
            ++multiplicities[static_cast<std::size_t>(sample.back())];
            weights[static_cast<std::size_t>(sample.back())] += 1.0;
        }
        TreeTable repeated;  // the sample written out, in the order of the rows
        std::vector<std::int32_t> sorted = sample;
        std::sort(sorted.begin(), sorted.end());
        std::vector<std::int32_t> codes, classes;
        for (std::size_t feature = 0; feature < 6; ++feature) {
            std::vector<double> numbers;
            for (const std::int32_t row : sorted)
                numbers.push_back(problem.table.number(feature, static_cast<std::size_t>(row)));
            repeated.addNumbers(std::move(numbers));
        }
        for (const std::int32_t row : sorted) {
            codes.push_back(problem.table.code(6, static_cast<std::size_t>(row)));
            classes.push_back(problem.classes[static_cast<std::size_t>(row)]);
        }
        repeated.addCategories(std::move(codes), 12);
        for (const int minNumRecords : {1, 7}) {
            Limits limits;
            limits.minNumRecordsInLeaves = minNumRecords;
            DT::ClassificationModel expected = classifier(3, limits), model = classifier(3, limits);
            expected.fit(repeated.data(), classes);
            DT::TrainingData data = problem.table.data();
            data.rows = sample;
            model.fit(data, problem.classes);
            EXPECT_TRUE(areSame(model.tree(), expected.tree()));
            data.rows = {};
            data.multiplicities = multiplicities;
            model.fit(data, problem.classes);
            EXPECT_TRUE(areSame(model.tree(), expected.tree()));
            data.multiplicities = {};
            data.weights = weights;  // the same but for the counts
            model.fit(data, problem.classes);
            if (minNumRecords == 1) {
                EXPECT_EQ(model.tree().classWeights, expected.tree().classWeights);
            }
        }
    }
}

TEST(TreeGrowth, PermutedColumnsGiveTheSameTree) {
    const Problem problem = largeProblem(1500, 0);
    TreeTable reversed;
    reversed.addCategories({problem.table.cells()[6].codes.begin(), problem.table.cells()[6].codes.end()},
                           12);
    for (std::size_t i = 6; i-- > 0;) {
        const auto numbers = problem.table.cells()[i].numbers;
        reversed.addNumbers({numbers.begin(), numbers.end()});
    }
    Limits limits;
    limits.minNumRecordsInLeaves = 20;  // small nodes have equally good splits
    DT::RegressionModel model;
    model.setLimits(limits);
    model.fit(reversed.data(), problem.targets);
    DT::Tree tree = model.tree();
    for (Node& node : tree.nodes)
        if (!node.isLeaf()) node.feature = 6 - node.feature;
    EXPECT_TRUE(areSame(tree, problem.grow(limits)));
}

TEST(TreeGrowth, RefusesBadInputAndKeepsTheModel) {
    const Problem problem = largeProblem(30, 2);
    DT::ClassificationModel model = classifier(2);
    model.fit(problem.table.data(), problem.classes);
    const DT::Tree before = model.tree();
    const auto failing = [&](auto&& spoil) {
        DT::TrainingData data = problem.table.data();
        std::vector<std::int32_t> classes = problem.classes;
        spoil(data, classes);
        model.fit(data, classes);
    };
    const std::vector<double> negative(30, -1.0), none(30, 0.0), few(29, 1.0);
    const std::vector<std::int32_t> outside{0, 30};
    EXPECT_THROW(failing([](auto&, auto& classes) { classes[3] = 2; }), IndexOutOfRange);
    EXPECT_THROW(failing([](auto&, auto& classes) { classes.pop_back(); }), NumElementsMismatch);
    EXPECT_THROW(failing([](auto& data, auto&) { data.features.clear(); }), TooFewNumColumns);
    EXPECT_THROW(failing([](auto& data, auto&) { data.numRows = 0; }), TooFewNumRows);
    EXPECT_THROW(failing([](auto& data, auto&) { data.features[6].numCategories = 3; }), IndexOutOfRange);
    EXPECT_THROW(failing([&](auto& data, auto&) { data.weights = negative; }), ConstraintViolation);
    EXPECT_THROW(failing([&](auto& data, auto&) { data.weights = none; }), TooFewNumRows);
    EXPECT_THROW(failing([&](auto& data, auto&) { data.weights = few; }), NumElementsMismatch);
    EXPECT_THROW(failing([&](auto& data, auto&) { data.rows = outside; }), IndexOutOfRange);
    EXPECT_TRUE(areSame(model.tree(), before));
}

}  // namespace
