#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>
#include <tessel/data/util/random.h>

#include "data/random.h"
#include "engine/ensemble/adaboost.h"
#include "engine/ensemble/out_of_bag.h"
#include "engine/ensemble/resample.h"
#include "engine/ensemble/resampler.h"
#include "engine/ensemble/votes.h"

namespace Tessel::Engine::Ensemble {
namespace {

using Codes = std::vector<std::int32_t>;

TEST(Resample, SeedsCountOnAndWrapAround) {
    EXPECT_EQ(learnerSeed(12345, 0), 12345);
    EXPECT_EQ(learnerSeed(12345, 7), 12352);
    EXPECT_EQ(learnerSeed(-3, 5), 2);
    EXPECT_EQ(learnerSeed(std::numeric_limits<int>::max(), 1), std::numeric_limits<int>::min());
}

TEST(Resample, KnowsWhetherEveryClassWasDrawn) {
    const Codes classes{0, 1, 2, 1, 0};
    EXPECT_TRUE(coversClasses(Codes{4, 3, 3, 2}, classes, 3));
    EXPECT_FALSE(coversClasses(Codes{4, 3, 3, 1, 0}, classes, 3));
    EXPECT_FALSE(coversClasses(Codes{}, classes, 1));
}

TEST(Votes, UnknownLabelsGoToDrawnClasses) {
    const auto voteFor = [](int learner, const Codes& codes) {
        std::vector<std::vector<double>> votes(3, std::vector<double>(codes.size(), 0.0));
        addVotes(learner, 0.25, codes, std::vector<std::span<double>>(votes.begin(), votes.end()));
        Codes chosen;
        for (std::size_t row = 0; row < codes.size(); ++row)
            for (std::int32_t k = 0; k < 3; ++k)
                if (votes[static_cast<std::size_t>(k)][row] == 0.25) chosen.push_back(k);
        return chosen;
    };
    EXPECT_EQ(voteFor(0, {2, 0, 1, 2}), (Codes{2, 0, 1, 2}));
    // Only unknown labels draw, so known ones between them change nothing.
    Codes mixed, expected;
    Random random(12345 + 4);
    for (int row = 0; row < 3000; ++row) {
        mixed.push_back(row % 3 == 0 ? 1 : row % 3 == 1 ? -1 : 3);
        expected.push_back(row % 3 == 0 ? 1 : static_cast<std::int32_t>(random.nextBelow(3)));
    }
    const Codes chosen = voteFor(4, mixed);
    EXPECT_EQ(chosen, expected);
    EXPECT_NE(voteFor(5, mixed), expected);
    for (const std::int32_t k : {0, 2})  // a third of 2000 draws, within five standard deviations
        EXPECT_NEAR(static_cast<double>(std::count(chosen.begin(), chosen.end(), k)), 2000.0 / 3, 105.0);
}

TEST(AdaBoost, WeightsOfLearnersFollowTheVariant) {
    struct Case {
        AdaBoostVariant variant;
        double error;
        int numClasses;
        double expected;
    };
    const double log3 = 1.0986122886681098, log2 = 0.6931471805599453;
    for (const Case& c :
         {Case{AdaBoostVariant::M1_FREUND, 0.25, 2, 0.5 * log3},
          Case{AdaBoostVariant::M1_BREIMAN, 0.25, 2, log3}, Case{AdaBoostVariant::M1_BREIMAN, 0.25, 3, log3},
          Case{AdaBoostVariant::SAMME, 0.25, 2, log3}, Case{AdaBoostVariant::SAMME, 0.25, 3, log3 + log2},
          Case{static_cast<AdaBoostVariant>(7), 0.25, 3, 0.0}})
        EXPECT_NEAR(learnerWeight(c.variant, c.error, c.numClasses), c.expected, 4e-16);
    EXPECT_EQ(learnerWeight(AdaBoostVariant::M1_FREUND, 0.0, 2), std::numeric_limits<double>::max());
}

TEST(Resampler, DrawsAsSamplesByWeightAndSeedDo) {
    constexpr std::size_t kNumRows = 5001;
    Random random(2);
    for (const int seed : {12345, -7}) {
        Resampler resampler(kNumRows, seed);
        for (const int size : {1, 3}) {  // of the crew; the weights are others each time
            Crew crew(size);
            Vector weights;
            for (std::size_t i = 0; i < kNumRows; ++i)
                weights.push_back(i % 5 == 0 ? 0.0 : std::pow(random.nextUniform(), 4));
            EXPECT_EQ(resampler.sample({weights.data(), weights.size()}, crew),
                      Util::sample(weights, seed).elements());
        }
        Crew crew(1);
        const double none[kNumRows] = {}, negative[kNumRows] = {1.0, -1.0};
        EXPECT_THROW(resampler.sample(none, crew), ConstraintViolation);
        EXPECT_THROW(resampler.sample(negative, crew), ConstraintViolation);
    }
}

TEST(AdaBoost, HalfOfTheRecordsErrByExactlyOneHalf) {
    Crew crew(2);
    for (const std::size_t half : {1u, 3u, 5u, 77u, 5000u, 123457u}) {
        const std::vector<double> weights(2 * half, 1.0 / static_cast<double>(2 * half));
        std::vector<int> isMissed(2 * half, 0);
        for (std::size_t i = 0; i < half; ++i) isMissed[2 * i] = 1;
        EXPECT_EQ(weightedError(weights, isMissed, crew), 0.5) << half;
        EXPECT_EQ(weightedError(weights, std::vector<int>(2 * half, 0), crew), 0.0);
    }
}

// Freund & Schapire: with alpha = ln(1 / error - 1) the next weights put one half on the missed records.
TEST(AdaBoost, ReweightingMakesTheLastLearnerAGuess) {
    Crew crew(1);
    std::vector<double> weights;
    std::vector<int> isMissed;
    for (int i = 1; i <= 40; ++i) {
        weights.push_back(i);
        isMissed.push_back(i % 7 == 0);
    }
    normalize(weights, crew);
    EXPECT_NEAR(std::accumulate(weights.begin(), weights.end(), 0.0), 1.0, 1e-15);
    const double ratio = weights[13] / weights[6], kept = weights[1] / weights[0];
    reweight(weights, isMissed,
             learnerWeight(AdaBoostVariant::M1_BREIMAN, weightedError(weights, isMissed, crew), 2), crew);
    EXPECT_NEAR(weightedError(weights, isMissed, crew), 0.5, 1e-15);
    EXPECT_NEAR(weights[13] / weights[6], ratio, 1e-15);
    EXPECT_NEAR(weights[1] / weights[0], kept, 1e-15);
    std::vector<double> none(3, 0.0);
    normalize(none, crew);
    EXPECT_EQ(none, std::vector<double>(3, 0.0));
}

// An error so small that its reciprocal overflows, and the factor too; still the missed record gets half of
// the weight. Numbers of this size have 40 bits.
TEST(AdaBoost, TheSmallestErrorsHaveFiniteWeights) {
    Crew crew(1);
    const double error = 0x1p-1034;
    const double alpha = learnerWeight(AdaBoostVariant::M1_BREIMAN, error, 2);
    EXPECT_NEAR(alpha, 1034.0 * 0.6931471805599453, 1e-12);
    std::vector<double> weights{1.0, error};
    reweight(weights, std::vector<int>{0, 1}, alpha, crew);
    EXPECT_NEAR(weights[0], 0.5, 0x1p-40);
    EXPECT_NEAR(weights[1], 0.5, 0x1p-40);
}

/// Samples that learners saw, as multiplicities by learner and row.
std::vector<Codes> bags(int numLearners, std::size_t numRows) {
    Random random(1);
    std::vector<Codes> drawn;
    for (int m = 0; m < numLearners; ++m) {
        drawn.emplace_back();
        for (std::size_t row = 0; row < numRows; ++row)
            drawn.back().push_back(static_cast<std::int32_t>(random.nextBelow(3)));
    }
    return drawn;
}

TEST(OutOfBag, CountsVotesOfLearnersThatDidNotSeeTheRecord) {
    const std::vector<Codes> seen = bags(6, 30);
    for (const std::size_t numClasses : {2u, 3u}) {
        Random random(numClasses);
        Codes classes(30);
        for (std::int32_t& code : classes) code = static_cast<std::int32_t>(random.nextBelow(numClasses));
        std::vector<Codes> predicted(6, classes);
        for (Codes& codes : predicted)
            for (std::int32_t& code : codes)
                if (random.nextBelow(2) == 0) code = static_cast<std::int32_t>(random.nextBelow(numClasses));
        OutOfBagVotes votes(classes, numClasses, 1, 0.4);
        for (std::size_t m = 0; m < seen.size(); ++m) {
            votes.add(seen[m], predicted[m]);
            int numJudged = 0, numWrong = 0;
            for (std::size_t row = 0; row < 30; ++row) {
                std::vector<double> shares(numClasses, 0.0);
                double count = 0.0;
                for (std::size_t l = 0; l <= m; ++l)
                    if (seen[l][row] == 0) {
                        ++shares[static_cast<std::size_t>(predicted[l][row])];
                        ++count;
                    }
                if (count == 0.0) continue;
                ++numJudged;
                const auto most = static_cast<std::int32_t>(std::max_element(shares.begin(), shares.end()) -
                                                            shares.begin());
                const std::int32_t choice = numClasses == 2 ? shares[1] / count >= 0.4 : most;
                numWrong += choice != classes[row];
            }
            EXPECT_DOUBLE_EQ(votes.log().errors.back(), double(numWrong) / numJudged);
            EXPECT_EQ(votes.log().numRecords.back(), numJudged);
        }
    }
    OutOfBagVotes none(Codes{0, 1}, 2, 1, 0.5);
    none.add(Codes{1, 2}, Codes{0, 0});
    EXPECT_TRUE(std::isnan(none.log().errors.front()));
}

TEST(OutOfBag, AveragesPredictionsOfLearnersThatDidNotSeeTheRecord) {
    const std::vector<double> targets{1.0, 2.0, 4.0};
    OutOfBagMeans means(targets);
    means.add(Codes{0, 1, 2}, std::vector<double>{3.0, 9.0, 9.0});
    means.add(Codes{0, 0, 1}, std::vector<double>{1.0, 5.0, 9.0});
    means.add(Codes{1, 1, 1}, std::vector<double>{9.0, 9.0, 9.0});
    EXPECT_EQ(means.log().errors, (std::vector<double>{4.0, (1.0 + 9.0) / 2.0, (1.0 + 9.0) / 2.0}));
    EXPECT_EQ(means.log().numRecords, (std::vector<std::int64_t>{1, 2, 2}));
}

}  // namespace
}  // namespace Tessel::Engine::Ensemble
