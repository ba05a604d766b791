#include "supervised/ensemble/fit_learners.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <omp.h>

#include <tessel/framework/errors.h>

namespace Tessel::Ensemble {
namespace {

TEST(FitLearners, FitsEachOnceWhateverTheNumberOfThreads) {
    const int before = omp_get_max_threads();
    for (const int numThreads : {1, 2, 7}) {
        omp_set_num_threads(numThreads);
        for (const int count : {1, 2, 100}) {
            std::vector<std::atomic<int>> numFits(static_cast<std::size_t>(count));
            fitLearners(count, {}, L"Test",
                        [&](int m, const Progress&) { ++numFits[static_cast<std::size_t>(m)]; });
            for (const std::atomic<int>& number : numFits) EXPECT_EQ(number, 1);
        }
    }
    omp_set_num_threads(before);
}

TEST(FitLearners, TheErrorIsThatOfTheFirstLearnerThatFails) {
    const int before = omp_get_max_threads();
    for (const int numThreads : {1, 2, 7}) {
        omp_set_num_threads(numThreads);
        for (int run = 0; run < 200; ++run) {
            const int first = run % 20;
            try {
                fitLearners(1000000000, {}, L"Test", [&](int m, const Progress&) {
                    if (m == first || m % 7 == 6) throw std::runtime_error(std::to_string(m));
                });
                FAIL();
            } catch (const std::runtime_error& error) {
                EXPECT_EQ(error.what(), std::to_string(std::min(first, 6)));
            }
        }
    }
    omp_set_num_threads(before);
}

}  // namespace
}  // namespace Tessel::Ensemble
