#include <algorithm>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <omp.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/decision_tree.h>
#include <tessel/find_best_model.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "supervised/tables.h"

// Fits that are watched and stopped.

namespace Tessel {
namespace {

using Testing::LabelledTable;
using Testing::labelledTable;
using Testing::numericTable;

/// What a callback was told.
struct Watched {
    std::vector<double> shares;
    std::vector<WString> activities;
    bool isFromCaller = true;
};

template <class Estimator>
Watched watch(Estimator estimator, const LabelledTable& data) {
    Watched watched;
    const std::thread::id caller = std::this_thread::get_id();
    estimator.setProgressCallback([&](double share, const WString& activity) {
        watched.shares.push_back(share);
        watched.activities.push_back(activity);
        watched.isFromCaller = watched.isFromCaller && std::this_thread::get_id() == caller;
        return true;
    });
    estimator.fit(data.features, data.target);
    return watched;
}

/// Each fit tells shares from 0 to 1 in order, and can be stopped at each of them.
template <class Estimator>
void expectWatchable(Estimator estimator, const LabelledTable& data, std::size_t leastCalls,
                     const WString& lastActivity) {
    const Watched watched = watch(estimator, data);
    EXPECT_GE(watched.shares.size(), leastCalls);
    EXPECT_TRUE(watched.isFromCaller);
    EXPECT_EQ(watched.shares.front(), 0.0);
    EXPECT_EQ(watched.shares.back(), 1.0);
    EXPECT_TRUE(std::is_sorted(watched.shares.begin(), watched.shares.end()));
    EXPECT_EQ(watched.activities.back(), lastActivity);

    const WString expected = estimator.fit(data.features, data.target).toString();
    for (std::size_t stop = 0; stop < leastCalls; ++stop) {
        std::size_t numCalls = 0;
        estimator.setProgressCallback([&](double, const WString&) { return numCalls++ < stop; });
        EXPECT_THROW(estimator.fit(data.features, data.target), FitCancelled) << stop;
        EXPECT_EQ(numCalls, stop + 1);  // nobody is asked again
    }
    estimator.setProgressCallback([](double, const WString&) -> bool { throw std::runtime_error("own"); });
    EXPECT_THROW(estimator.fit(data.features, data.target), std::runtime_error);
    estimator.setProgressCallback({});
    EXPECT_EQ(estimator.fit(data.features, data.target).toString(), expected);
}

TEST(Progress, EveryFitCanBeWatchedAndStopped) {
    const LabelledTable data = labelledTable(400, 3), two = labelledTable(200, 2),
                        numbers = numericTable(400);
    const int before = omp_get_max_threads();
    for (const int numThreads : {1, 3}) {
        omp_set_num_threads(numThreads);
        expectWatchable(Classification::NaiveBayes::Estimator(), data, 5, L"Naive Bayes");
        expectWatchable(Classification::DecisionTree::Estimator(), data, 5, L"Classification Tree");
        expectWatchable(Regression::DecisionTree::Estimator(), numbers, 20, L"Regression Tree");
        expectWatchable(Regression::DecisionTree::Estimator().setMaxNumSplits(10), numbers, 5,
                        L"Regression Tree");
        const std::size_t least = numThreads == 1 ? 12 : 2;  // else the other threads may fit all ten
        expectWatchable(Classification::Bagging::Estimator(), two, least, L"Bagging for Classification");
        expectWatchable(Regression::RandomTrees::Estimator(), numbers, least, L"Random Trees for Regression");
        expectWatchable(Regression::Boosting::Estimator(), numbers, 12, L"Boosting for Regression");
    }
    omp_set_num_threads(before);
    const Watched watched = watch(Classification::RandomTrees::Estimator().setNumWeakLearners(1), two);
    EXPECT_EQ(watched.activities[1], L"Random Trees for Classification: Weak Learner 1");
}

TEST(Progress, OneLongLearnerOfAnEnsembleIsWatchedAndStopped) {
    const LabelledTable data = labelledTable(400, 3), numbers = numericTable(400);
    const auto expect = [](auto estimator, const LabelledTable& table, const WString& learner) {
        estimator.setNumWeakLearners(2);
        const Watched watched = watch(estimator, table);
        const auto numOfSecond = std::count(watched.activities.begin(), watched.activities.end(), learner);
        EXPECT_GE(numOfSecond, 4) << std::string(learner.begin(), learner.end());
        EXPECT_TRUE(std::is_sorted(watched.shares.begin(), watched.shares.end()));
        estimator.setProgressCallback([](double share, const WString&) { return share <= 0.5; });
        EXPECT_THROW(estimator.fit(table.features, table.target), FitCancelled);
    };
    const int before = omp_get_max_threads();
    omp_set_num_threads(1);
    expect(Classification::Bagging::Estimator(), data, L"Bagging for Classification: Weak Learner 2");
    expect(Classification::Bagging::Estimator().setBaseEstimator(Classification::NaiveBayes::Estimator()),
           data, L"Bagging for Classification: Weak Learner 2");
    expect(Regression::RandomTrees::Estimator(), numbers, L"Random Trees for Regression: Weak Learner 2");
    expect(Regression::Boosting::Estimator(), numbers, L"Boosting for Regression: Weak Learner 2");
    omp_set_num_threads(before);
}

TEST(Progress, SearchesTellOfTheirLearnersAndStopWithThem) {
    const LabelledTable data = labelledTable(100, 2);
    auto search = Classification::FindBestModel::Estimator()
                      .addLearner(Classification::Boosting::Estimator())
                      .addLearner(Classification::NaiveBayes::Estimator());
    const Watched watched = watch(search, data);
    EXPECT_TRUE(std::is_sorted(watched.shares.begin(), watched.shares.end()));
    EXPECT_EQ(watched.activities.front(), L"Naive Bayes");
    EXPECT_EQ(watched.activities.back(), L"Boosting for Classification");
    EXPECT_EQ(watched.shares.back(), 1.0);
    search.setProgressCallback([](double share, const WString&) { return share < 0.5; });
    EXPECT_THROW(search.fit(data.features, data.target), FitCancelled);  // no failure of a learner
}

}  // namespace
}  // namespace Tessel
