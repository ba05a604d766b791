#include "engine/crew.h"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace Tessel {
namespace {

using Engine::Crew;

TEST(Crew, EachItemOfManyLoopsIsDoneOnceByAThreadOfTheCrew) {
    for (const int size : {1, 2, 5}) {
        Crew crew(size);
        for (std::size_t n = 0; n < 3000; ++n) {
            std::vector<int> timesDone(n % 40);
            std::vector<std::size_t> numByThread(static_cast<std::size_t>(size));
            crew.forEach(timesDone.size(), [&](std::size_t i, int thread) {
                ++timesDone[i];
                ++numByThread.at(static_cast<std::size_t>(thread));
            });
            ASSERT_EQ(timesDone, std::vector<int>(n % 40, 1)) << n;
            std::size_t sum = 0;
            for (const std::size_t number : numByThread) sum += number;
            ASSERT_EQ(sum, timesDone.size());
        }
    }
}

TEST(Crew, WakesAndEndsWhetherItsThreadsSleepOrNot) {
    for (int pause = 0; pause < 300; ++pause) {
        Crew unused(3);
        Crew crew(3);
        for (int loop = 0; loop < 3; ++loop) {
            std::vector<int> numThreads(4);
            crew.forEach(numThreads.size(),
                         [&](std::size_t i, int) { numThreads[i] = Engine::numThreads(); });
            EXPECT_EQ(numThreads, std::vector<int>(4, 1));  // the work is beside others
            std::this_thread::sleep_for(std::chrono::microseconds(3 * pause));
        }
    }
}

TEST(Crew, AnExceptionOfAnyThreadReachesTheCallerAndTheNextLoopRuns) {
    Crew crew(3);
    for (std::size_t failing = 0; failing < 50; ++failing) {
        EXPECT_THROW(crew.forEach(50,
                                  [&](std::size_t i, int) {
                                      if (i == failing) throw std::runtime_error("failed");
                                  }),
                     std::runtime_error);
        std::vector<int> done(20);
        crew.forEach(done.size(), [&](std::size_t i, int) { done[i] = 1; });
        EXPECT_EQ(done, std::vector<int>(20, 1));
    }
}

TEST(Crew, SumsByStretchesDoNotDependOnItsSize) {
    const auto term = [](std::size_t i) { return 1.0 / static_cast<double>(i + 1); };
    for (const std::size_t n : {0u, 1u, Engine::kSizeOfStretches, Engine::kSizeOfStretches + 1, 100001u}) {
        Crew alone(1);
        const double expected = Engine::sumByStretches(alone, n, term);
        double plain = 0.0;
        for (std::size_t i = 0; i < n; ++i) plain += term(i);
        EXPECT_NEAR(expected, plain, 1e-12 * plain);
        for (const int size : {2, 4}) {
            Crew crew(size);
            EXPECT_EQ(Engine::sumByStretches(crew, n, term), expected) << n << ' ' << size;
            EXPECT_EQ(Engine::compensatedSumByStretches(crew, n, term),
                      Engine::compensatedSumByStretches(alone, n, term));
        }
    }
}

}  // namespace
}  // namespace Tessel
