#include "engine/dist/fit_dist.h"

#include <cfenv>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <omp.h>

#include "engine/dist/reference_samples.h"
#include "engine/dist/serial_dependence.h"

namespace Tessel::Engine::Dist {
namespace {

using Testing::kFaithfulWaiting;
using Testing::kLynx;
using Testing::kNileFlow;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr auto kBic = GoodnessOfFitType::BIC;

bool loadInto(CFitDist& engine, const std::vector<double>& values) {
    return engine.load(values.size(), values.data());
}

/// A sample of the logistic distribution, some draws of which look heavy in the tails.
std::vector<double> logisticSample(std::size_t n) {
    std::mt19937_64 generator(11);
    std::vector<double> sample(n);
    for (double& value : sample)
        value =
            10.0 +
            2.0 * MetalogProbability::of(std::ldexp(static_cast<double>(generator() >> 11) + 0.5, -53)).logit;
    return sample;
}

// ---- critical values

TEST(CriticalValues, AgreeWithPublishedTables) {
    struct Case {
        std::size_t n;
        double confidence, expected, tolerance;
    };
    // Exact: scipy.stats.kstwo.isf (SciPy 1.10.1); in the limit sqrt(n) D
    // has 1.2238479, 1.3580986, 1.6276236.
    const Case kolmogorovSmirnov[] = {
        {1, 0.9, 0.95, 1e-10},
        {5, 0.9, 0.5094493282201105, 1e-10},
        {10, 0.95, 0.40924608477750496, 1e-10},
        {100, 0.99, 0.16080868092855588, 1e-10},
        {114, 0.9, 0.11311685252045028, 1e-10},
        {140, 0.95, 0.11352006308692336, 1e-10},
        {141, 0.95, 0.11312164906753534, 2e-6},
        {1000, 0.9, 0.03853304260042531, 2e-8},
        {10000, 0.99, 0.016259280113043572, 1e-9},
        {1'000'000, 0.95, 1.3580986 / 1000.0 - 1.0 / 6e6, 1e-9},  // the first correction for n is -1/(6n)
    };
    for (const Case& c : kolmogorovSmirnov)
        EXPECT_NEAR(CriticalValues(c.n, c.confidence).kolmogorovSmirnov(), c.expected, c.tolerance) << c.n;
    // The limit: 1.933, 2.492 and 3.878 (T. Anderson & D. Darling, JASA 49 (1954), to the digits printed, the
    // last as recomputed by Marsaglia & Marsaglia). n = 5: 2,000,000 samples in NumPy 1.24.2. n = 1: closed
    // form.
    const Case andersonDarling[] = {{1'000'000, 0.9, 1.933, 5e-4},
                                    {1'000'000, 0.95, 2.492, 5e-4},
                                    {1'000'000, 0.99, 3.878, 5e-4},
                                    {5, 0.9, 1.9531, 0.006},
                                    {5, 0.95, 2.5345, 0.008},
                                    {5, 0.99, 3.958, 0.02},
                                    {1, 0.9, std::log(4.0 / (1.0 - 0.9 * 0.9)) - 1.0, 0.01}};
    for (const Case& c : andersonDarling)
        EXPECT_NEAR(CriticalValues(c.n, c.confidence).andersonDarling(), c.expected, c.tolerance) << c.n;
    // R 4.2.2: qchisq(c(0.90, 0.95, 0.99), 10).
    EXPECT_NEAR(CriticalValues(7, 0.90).chiSquare(10), 15.98717917, 1e-7);
    EXPECT_NEAR(CriticalValues(7, 0.95).chiSquare(10), 18.30703805, 1e-7);
    EXPECT_NEAR(CriticalValues(7, 0.99).chiSquare(10), 23.20925116, 1e-7);
    EXPECT_TRUE(std::isnan(CriticalValues(7, 0.9).chiSquare(0)));
    for (const auto& [asked, taken] : {std::pair{0.5, 0.9}, std::pair{0.999, 0.99}, std::pair{kNone, 0.9}})
        EXPECT_EQ(CriticalValues(7, asked).confidence(), taken);
}

TEST(GoodnessOfFit, AgreesWithTheDefinitions) {
    // The Nile against a logistic and a log-logistic distribution, the metalogs of two terms without and with
    // a lower bound: scipy.stats.logistic(900, 95) and fisk(9, scale=900), SciPy 1.10.1, 13 classes, k = 2.
    std::vector<double> sorted = kNileFlow;
    std::sort(sorted.begin(), sorted.end());
    const double logistic[] = {900.0, 95.0}, logLogistic[] = {std::log(900.0), 1.0 / 9.0};
    struct Case {
        CMetalogDist dist;
        double values[9];  // in the order of GoodnessOfFitType; BICc = n / (n - k - 1) of the penalty of BIC
    };
    const double l1 = -656.6080159218116, l2 = -655.0042127060447,
                 penalty = 2.0 * std::log(100.0) * 100.0 / 97.0;
    const Case cases[] = {
        {CMetalogDist(kNone, kNone, 2, logistic),
         {19.08, 0.10141367840953941, 1.3505372880733262, 1317.216031843623, 1322.4263722155993,
          1317.3397431838293, -2.0 * l1 + penalty, l1, 1319.3247503468547}},
        {CMetalogDist(0.0, kNone, 2, logLogistic),
         {14.92, 0.06888213762279427, 0.6157180917978735, 1314.0084254120893, 1319.2187657840655,
          1314.1321367522955, -2.0 * l2 + penalty, l2, 1316.1171439153209}}};
    const CriticalValues critical(sorted.size(), 0.9);
    for (const Case& c : cases) {
        const GoodnessOfFit fit = goodnessOfFit(c.dist, sorted, 2, critical);
        for (int type = 0; type < 9; ++type)
            EXPECT_NEAR(fit.value(static_cast<GoodnessOfFitType>(type)) / c.values[type], 1.0, 1e-12) << type;
        EXPECT_NEAR(fit.chiSquare.criticalValue, 15.98717917, 1e-7);
        EXPECT_NEAR(fit.kolmogorovSmirnov.criticalValue, 0.12066340877827493, 1e-10);
        EXPECT_EQ(fit.isDoubtedBy(GoodnessOfFitType::CHI_SQUARE), c.values[0] > 15.98717917);
        EXPECT_FALSE(fit.isDoubtedBy(GoodnessOfFitType::KOLMOGOROV_SMIRNOV));
    }
}

TEST(GoodnessOfFit, LeavesOutWhatCannotBeComputed) {
    const double uniform[] = {0.0, 1.0};
    const CMetalogDist dist(0.0, 1.0, 2, uniform);
    const std::vector<double> outside{-0.5, 0.25, 0.5};
    const CriticalValues critical(3, 0.9);
    const GoodnessOfFit fit = goodnessOfFit(dist, outside, 2, critical);
    EXPECT_FALSE(fit.andersonDarling.isComputed());
    EXPECT_FALSE(fit.chiSquare.isComputed());  // 3 classes
    EXPECT_FALSE(fit.hasLikelihood());
    EXPECT_NEAR(fit.kolmogorovSmirnov.statistic, 0.5, 1e-15);
    for (const auto type : {GoodnessOfFitType::ANDERSON_DARLING, kBic, GoodnessOfFitType::MAX_LIKELIHOOD}) {
        EXPECT_TRUE(std::isnan(fit.value(type)));
        EXPECT_TRUE(fit.isDoubtedBy(type));
    }
    EXPECT_FALSE(fit.isDoubtedBy(GoodnessOfFitType::HQIC));
    const GoodnessOfFit inside = goodnessOfFit(dist, std::vector<double>{0.1, 0.25, 0.5}, 2, critical);
    EXPECT_TRUE(inside.isBetterThan(fit, kBic));
    EXPECT_FALSE(fit.isBetterThan(inside, kBic));
    EXPECT_TRUE(std::isnan(inside.value(GoodnessOfFitType::AICC)));  // n = k + 1
    EXPECT_TRUE(std::isnan(inside.value(GoodnessOfFitType::BICC)));
    EXPECT_NEAR(inside.value(GoodnessOfFitType::MAX_LIKELIHOOD), 0.0, 1e-14);
}

// ---- loading

TEST(FitDist, TakesStatisticsOfTheSample) {
    CFitDist engine;
    ASSERT_TRUE(loadInto(engine, kNileFlow));
    // SciPy 1.10.1: skew and kurtosis with bias=False, quantile of NumPy 1.24.2, by default linear.
    const SampleStatistics& s = engine.statistics();
    EXPECT_EQ(s.count, 100u);
    EXPECT_NEAR(s.mean, 919.35, 1e-12);
    EXPECT_NEAR(s.variance, 28637.946969696968, 1e-9);
    EXPECT_NEAR(s.standardDeviation, 169.22750063065095, 1e-12);
    EXPECT_NEAR(s.skewness, 0.327299778999177, 1e-13);
    EXPECT_NEAR(s.excessKurtosis, -0.25823306788973, 1e-13);
    EXPECT_EQ(s.minimum, 456.0);
    EXPECT_EQ(s.maximum, 1370.0);
    EXPECT_EQ(s.lowerQuartile, 798.5);
    EXPECT_EQ(s.median, 893.5);
    EXPECT_EQ(s.upperQuartile, 1032.5);
    EXPECT_EQ(s.mode, 845.0);  // of 845, 1020, 1100 and 1160, three times each
    EXPECT_EQ(engine.percentile(1.0), 1370.0);
    EXPECT_NEAR(engine.serialDependence(), 1.4729417421100262, 1e-13);  // at lag 98
    EXPECT_EQ(engine.sample()[0], 1120.0);
    EXPECT_EQ(engine.order().front(), 42);  // 456 was 1913
    EXPECT_FALSE(engine.areAllValuesEqual());
}

TEST(FitDist, KeepsDigitsOfMomentsFarFromZero) {
    // -2, -1, 0, 1, 4 in turn: mean 0.4, sum of squares 21.2 in five, cubes 35.28 and fourths 162.176
    // likewise.
    std::vector<double> values;
    for (int i = 0; i < 2000; ++i)
        for (const double offset : {-2.0, -1.0, 0.0, 1.0, 4.0}) values.push_back(1e9 + offset);
    CFitDist engine;
    ASSERT_TRUE(loadInto(engine, values));
    const double n = 10'000.0, second = 21.2 / 5.0, third = 30.24 / 5.0, fourth = 205.136 / 5.0;
    EXPECT_NEAR(engine.statistics().variance, second * n / (n - 1.0), 1e-11);
    EXPECT_NEAR(engine.statistics().skewness,
                third / std::pow(second, 1.5) * std::sqrt(n * (n - 1.0)) / (n - 2.0), 1e-9);
    EXPECT_NEAR(engine.statistics().excessKurtosis,
                (n - 1.0) / ((n - 2.0) * (n - 3.0)) * ((n + 1.0) * (fourth / (second * second) - 3.0) + 6.0),
                1e-9);
}

TEST(FitDist, CountsRepeatsAndRounds) {
    const double values[] = {2.4, 7.0, 2.5, -1.5};
    const int counts[] = {1, 3, 2, 3};
    CFitDist engine;
    ASSERT_TRUE(engine.load(4, values, counts));
    EXPECT_EQ(engine.statistics().count, 9u);
    EXPECT_EQ(engine.statistics().mode, 7.0);  // the first of the two largest counts
    EXPECT_EQ(std::vector<double>(engine.sortedSample().begin(), engine.sortedSample().end()),
              (std::vector<double>{-1.5, -1.5, -1.5, 2.4, 2.5, 2.5, 7.0, 7.0, 7.0}));
    ASSERT_TRUE(engine.load(4, values, counts, /*roundToInteger=*/true));
    EXPECT_EQ(std::vector<double>(engine.sortedSample().begin(), engine.sortedSample().end()),
              (std::vector<double>{-2.0, -2.0, -2.0, 2.0, 3.0, 3.0, 7.0, 7.0, 7.0}));
    // Repeats and values written out give the same metalog.
    CFitDist expanded;
    const std::vector<int> repeats(kNileFlow.size(), 2);
    ASSERT_TRUE(engine.load(kNileFlow.size(), kNileFlow.data(), repeats.data()));
    std::vector<double> twice = kNileFlow;
    twice.insert(twice.end(), kNileFlow.begin(), kNileFlow.end());
    ASSERT_TRUE(loadInto(expanded, twice));
    const CFitDist::Candidate *one = engine.fitMetalog(5, 0.9, kBic),
                              *other = expanded.fitMetalog(5, 0.9, kBic);
    ASSERT_TRUE(one != nullptr && other != nullptr);
    EXPECT_EQ(one->distribution->formulaText(), other->distribution->formulaText());
    EXPECT_EQ(one->goodnessOfFit.logLikelihood, other->goodnessOfFit.logLikelihood);
}

TEST(FitDist, RefusesBadSamples) {
    const double values[] = {1.0, 2.0, 3.0}, withNaN[] = {1.0, kNone, 3.0},
                 infinite[] = {1.0, 2.0, -kInfinity};
    const int zero[] = {1, 0, 2}, negative[] = {1, 1, -5}, huge[] = {2'000'000'000, 2'000'000'000, 1};
    CFitDist engine;
    EXPECT_EQ(engine.fitMetalog(2, 0.9, kBic), nullptr);
    EXPECT_EQ(engine.status(), CFitDist::BAD_INPUT);
    EXPECT_FALSE(engine.fitMetalogs(5, kBic));
    EXPECT_EQ(engine.status(), CFitDist::BAD_INPUT);
    struct Case {
        std::size_t n;
        const double* values;
        const int* counts;
        CFitDist::Status status;
    };
    const Case cases[] = {
        {0, values, nullptr, CFitDist::BAD_INPUT},  {3, nullptr, nullptr, CFitDist::BAD_INPUT},
        {3, withNaN, nullptr, CFitDist::BAD_INPUT}, {3, infinite, nullptr, CFitDist::BAD_INPUT},
        {3, values, zero, CFitDist::BAD_INPUT},     {3, values, negative, CFitDist::BAD_INPUT},
        {3, values, huge, CFitDist::SORTING_FAILED}};
    for (const Case& c : cases) {
        ASSERT_TRUE(engine.load(3, values));
        EXPECT_FALSE(engine.load(c.n, c.values, c.counts));
        EXPECT_EQ(engine.status(), c.status) << &c - cases;
        EXPECT_TRUE(engine.sample().empty());
        EXPECT_FALSE(engine.fitMetalogs(5, kBic));
        EXPECT_EQ(engine.status(), CFitDist::BAD_INPUT);
    }
}

// ---- single fits

TEST(FitDist, TellsWhyAMetalogCannotBeFitted) {
    const std::vector<double> constant(50, 0.1), one{4.0}, two{1.0, 3.0},
        extreme{-1.7e308, 0.0, 1.7e308, 1.75e308};
    std::vector<double> twoValues(40, 5.0);
    std::fill(twoValues.begin(), twoValues.begin() + 15, 2.0);
    struct Case {
        const char* name;
        const std::vector<double>& sample;
        int numTerms;
        double lower, upper;
        CFitDist::Status status;
    };
    const Case cases[] = {
        {"fits", kNileFlow, 5, kNone, kNone, CFitDist::FITTED},
        {"fits with bounds", kNileFlow, 5, 0.0, 2000.0, CFitDist::FITTED},
        {"two values fit two terms", two, 2, kNone, kNone, CFitDist::FITTED},
        {"two distinct values", twoValues, 2, kNone, kNone, CFitDist::FITTED},
        {"one term", kNileFlow, 1, kNone, kNone, CFitDist::BAD_INPUT},
        {"17 terms", kNileFlow, 17, kNone, kNone, CFitDist::BAD_INPUT},
        {"bounds that exclude each other", kNileFlow, 3, 2000.0, 0.0, CFitDist::BAD_INPUT},
        {"lower bound inside the data", kNileFlow, 3, 500.0, kNone, CFitDist::FIT_NOT_POSSIBLE},
        {"upper bound inside the data", kNileFlow, 3, kNone, 1000.0, CFitDist::FIT_NOT_POSSIBLE},
        {"constant", constant, 2, kNone, kNone, CFitDist::FIT_NOT_POSSIBLE},
        {"constant on its bounds", constant, 2, 0.1, 0.1, CFitDist::FIT_NOT_POSSIBLE},
        {"constant between bounds", constant, 2, 0.0, 1.0, CFitDist::FIT_NOT_POSSIBLE},
        {"one value", one, 2, kNone, kNone, CFitDist::FIT_NOT_POSSIBLE},
        {"more terms than values", two, 3, kNone, kNone, CFitDist::FIT_NOT_POSSIBLE},
        {"negative density", kFaithfulWaiting, 4, kNone, kNone, CFitDist::FIT_NOT_POSSIBLE},
        {"differences overflow", extreme, 2, kNone, kNone, CFitDist::FIT_NOT_POSSIBLE},
    };
    for (const Case& c : cases) {
        CFitDist engine;
        ASSERT_TRUE(loadInto(engine, c.sample));
        engine.setBounds(c.lower, c.upper);
        const CFitDist::Candidate* candidate = engine.fitMetalog(c.numTerms, 0.9, kBic);
        EXPECT_EQ(engine.status(), c.status) << c.name;
        EXPECT_EQ(candidate != nullptr, c.status == CFitDist::FITTED) << c.name;
        EXPECT_EQ(engine.areAllValuesEqual(), c.sample.front() == c.sample.back() && &c.sample != &twoValues)
            << c.name;
    }
}

TEST(FitDist, MovesBoundsOffTheData) {
    CFitDist engine;
    std::vector<double> large = kLynx;
    for (double& value : large) value *= 1e10;
    for (const std::vector<double>* sample : {&kLynx, static_cast<const std::vector<double>*>(&large)}) {
        const double unit = sample->front() / kLynx.front();
        ASSERT_TRUE(loadInto(engine, *sample));
        engine.setBounds(39.0 * unit, 6991.0 * unit);
        const CFitDist::Candidate* candidate = engine.fitMetalog(3, 0.9, kBic);
        ASSERT_NE(candidate, nullptr);
        const Interval& support = candidate->distribution->support();
        if (unit == 1.0) {
            EXPECT_EQ(support.lower, 39.0 - 1.4901161193848e-8);
            EXPECT_EQ(support.upper, 6991.0 + 1.4901161193848e-8);
        } else {  // too small a move to be one: the next double
            EXPECT_EQ(support.lower, std::nextafter(39.0 * unit, 0.0));
            EXPECT_EQ(support.upper, std::nextafter(6991.0 * unit, kInfinity));
        }
        EXPECT_TRUE(candidate->goodnessOfFit.hasLikelihood());
    }
    ASSERT_TRUE(loadInto(engine, kLynx));
    engine.setBounds(38.0, kInfinity);
    ASSERT_NE(engine.fitMetalog(3, 0.9, kBic), nullptr);
    EXPECT_EQ(engine.candidates().front().distribution->support().lower, 38.0);
    EXPECT_EQ(engine.candidates().front().distribution->support().upper, kInfinity);
}

TEST(FitDist, DoubtsFitsThatTheChosenTestRejects) {
    CFitDist engine;
    ASSERT_TRUE(loadInto(engine, kFaithfulWaiting));  // two humps
    for (int type = 0; type < 9; ++type) {
        const CFitDist::Candidate* candidate =
            engine.fitMetalog(2, 0.9, static_cast<GoodnessOfFitType>(type));
        ASSERT_NE(candidate, nullptr);
        EXPECT_EQ(engine.status(), type < 3 ? CFitDist::FITTED_IN_DOUBT : CFitDist::FITTED) << type;
        EXPECT_EQ(candidate->status, engine.status());
    }
    // 13 classes leave no degree of freedom for 12 terms.
    const std::vector<double> sample = logisticSample(100);
    ASSERT_TRUE(loadInto(engine, sample));
    ASSERT_NE(engine.fitMetalog(2, 0.9, GoodnessOfFitType::CHI_SQUARE), nullptr);
    EXPECT_EQ(engine.status(), CFitDist::FITTED);
}

// ---- automatic fits

TEST(FitDist, RanksAllMetalogsByTheChosenMeasure) {
    const std::vector<double> sample = logisticSample(500);
    CFitDist engine;
    ASSERT_TRUE(loadInto(engine, sample));
    for (int value = 0; value < 9; ++value) {
        const auto type = static_cast<GoodnessOfFitType>(value);
        ASSERT_TRUE(engine.fitMetalogs(40, type));  // means 16
        const auto& candidates = engine.candidates();
        EXPECT_LE(candidates.size(), CFitDist::kMostCandidates);
        EXPECT_EQ(engine.status(), candidates.front().status);
        std::vector<int> seen(17);
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            const auto& metalog = dynamic_cast<const CMetalogDist&>(*candidates[i].distribution);
            ++seen[static_cast<std::size_t>(metalog.numTerms())];
            const auto& before = candidates[i == 0 ? 0 : i - 1].goodnessOfFit;
            EXPECT_FALSE(candidates[i].goodnessOfFit.isBetterThan(before, type));
            // Each candidate's measures are those of its own single fit.
            CFitDist single;
            ASSERT_TRUE(loadInto(single, sample));
            const auto* same = single.fitMetalog(metalog.numTerms(), 0.9, type, metalog.order());
            ASSERT_NE(same, nullptr);
            EXPECT_EQ(same->goodnessOfFit.logLikelihood, candidates[i].goodnessOfFit.logLikelihood);
            EXPECT_EQ(same->goodnessOfFit.numParameters, candidates[i].goodnessOfFit.numParameters);
            EXPECT_EQ(same->status, candidates[i].status);
        }
        EXPECT_EQ(seen[2], 2);  // in both orders
    }
    // Two terms made the sample: what counts parameters finds them.
    ASSERT_TRUE(engine.fitMetalogs(16, kBic));
    EXPECT_EQ(engine.candidates().front().goodnessOfFit.numParameters, 2);
    EXPECT_EQ(engine.candidates().front().distribution->familyCode(), 59);
}

TEST(FitDist, TriesTheLaterOrderWithoutBoundsOnly) {
    CFitDist engine;
    ASSERT_TRUE(loadInto(engine, kNileFlow));
    const auto numLater = [&] {
        int count = 0;
        for (const auto& candidate : engine.candidates())
            count += candidate.distribution->familyCode() == 76 ? 1 : 0;
        return count;
    };
    ASSERT_TRUE(engine.fitMetalogs(6, kBic));
    EXPECT_EQ(engine.candidates().size(), 10u);  // all of 2 to 6 terms are feasible, see the reference
    EXPECT_EQ(numLater(), 5);
    ASSERT_TRUE(engine.fitMetalogs(6, kBic, /*firstFormOnly=*/true));
    EXPECT_EQ(numLater(), 0);
    EXPECT_EQ(engine.candidates().size(), 5u);
    engine.setBounds(0.0, kInfinity);
    ASSERT_TRUE(engine.fitMetalogs(6, kBic));
    EXPECT_EQ(numLater(), 0);
    // The later order stops at its first failure: 4 terms are not feasible here, 3 are.
    ASSERT_TRUE(loadInto(engine, kFaithfulWaiting));
    ASSERT_TRUE(engine.fitMetalogs(16, kBic));
    EXPECT_EQ(numLater(), 2);
}

TEST(FitDist, HasNoCandidateForAConstant) {
    CFitDist engine;
    for (const std::vector<double>& sample : {std::vector<double>(30, 7.7), std::vector<double>{1.0}}) {
        ASSERT_TRUE(loadInto(engine, sample));
        EXPECT_TRUE(engine.areAllValuesEqual());
        EXPECT_FALSE(engine.fitMetalogs(16, kBic));
        EXPECT_EQ(engine.status(), CFitDist::FIT_NOT_POSSIBLE);
        EXPECT_TRUE(engine.candidates().empty());
        EXPECT_TRUE(std::isnan(engine.serialDependence()));
    }
    EXPECT_TRUE(std::isnan(engine.statistics().variance));
}

TEST(FitDist, SurvivesHostileSamples) {
    const double numbers[] = {0.0,         -0.0, 1.0,    5e-324, -1e-310, 1e-8,
                              1.0 + 1e-15, 1e15, -1e150, 1e200,  1.7e308};
    const double bounds[] = {kNone, -kInfinity, kInfinity, 0.0, 1.0, -1.7e308, 1e300, 1e-8};
    std::mt19937_64 generator(77);
    const auto pick = [&](std::span<const double> from) { return from[generator() % from.size()]; };
    int numFitted = 0;
    for (int i = 0; i < 600; ++i) {
        const std::size_t numKinds = 1 + generator() % std::size(numbers);
        std::vector<double> sample(1 + generator() % 40);
        for (double& value : sample) value = pick(std::span(numbers).first(numKinds));
        CFitDist engine;
        ASSERT_TRUE(loadInto(engine, sample));
        engine.setBounds(pick(bounds), pick(bounds));
        const bool isFitted = engine.fitMetalogs(16, static_cast<GoodnessOfFitType>(i % 9));
        EXPECT_EQ(isFitted,
                  engine.status() == CFitDist::FITTED || engine.status() == CFitDist::FITTED_IN_DOUBT);
        EXPECT_EQ(isFitted, !engine.candidates().empty());
        EXPECT_FALSE(isFitted && engine.areAllValuesEqual());
        for (const CFitDist::Candidate& candidate : engine.candidates()) {
            const CDist& dist = *candidate.distribution;
            EXPECT_TRUE(dist.isValid());
            EXPECT_LE(dist.inverseCdf(0.2), dist.inverseCdf(0.8));
            EXPECT_TRUE(dist.support().contains(dist.inverseCdf(0.5)));
            const double probability = dist.cdf(sample.front());
            EXPECT_TRUE(probability >= 0.0 && probability <= 1.0);
            static_cast<void>(dist.mean());
            static_cast<void>(dist.mode());
            ++numFitted;
        }
        static_cast<void>(engine.serialDependence());
    }
    EXPECT_GT(numFitted, 50);
}

TEST(FitDist, GivesTheSameWithAnyNumberOfThreads) {
    const std::vector<double> sample = logisticSample(40'000);
    const int threads = omp_get_max_threads();
    std::vector<std::vector<double>> results;
    for (const int count : {1, 3}) {
        omp_set_num_threads(count);
        CFitDist engine;
        ASSERT_TRUE(loadInto(engine, sample));
        engine.setBounds(-100.0, kInfinity);
        ASSERT_TRUE(engine.fitMetalogs(9, GoodnessOfFitType::ANDERSON_DARLING));
        std::vector<double>& result = results.emplace_back();
        for (const auto& candidate : engine.candidates()) {
            const auto parameters = candidate.distribution->parameters();
            result.insert(result.end(), parameters.begin(), parameters.end());
            for (int type = 0; type < 9; ++type)
                result.push_back(candidate.goodnessOfFit.value(static_cast<GoodnessOfFitType>(type)));
        }
    }
    omp_set_num_threads(threads);
    EXPECT_EQ(results.front(), results.back());
    EXPECT_GT(results.front().size(), 20u);
}

TEST(FitDist, ClearsFloatingPointFlags) {
    {
        CFitDist engine;
        std::feraiseexcept(FE_DIVBYZERO | FE_INVALID);
    }
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0);
}

// ---- serial dependence

TEST(SerialDependence, FollowsTheDefinitionAtAnyLength) {
    for (const std::size_t n : {2u, 3u, 511u, 512u, 1500u}) {
        std::vector<double> values = logisticSample(n);
        for (std::size_t i = 1; i < n; ++i) values[i] += 0.7 * values[i - 1];
        const double mean = std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(n);
        double squares = 0.0, expected = 0.0;
        for (const double value : values) squares += (value - mean) * (value - mean);
        for (std::size_t lag = 1; lag < n; ++lag) {
            double products = 0.0;
            for (std::size_t i = 0; i + lag < n; ++i)
                products += (values[i] - mean) * (values[i + lag] - mean);
            expected = std::max(expected, std::abs(products) / static_cast<double>(n - lag));
        }
        expected /= squares / static_cast<double>(n - 1);
        EXPECT_NEAR(serialDependence(values) / expected, 1.0, 1e-12) << n;
    }
}

TEST(SerialDependence, HandlesPeriodicSeriesOfAnyScale) {
    // 1, -1, 1, ...: every lag has |r| = (n - 1) / n.
    for (const double scale : {1e-200, 1.0, 1e200}) {
        std::vector<double> values(100'000);
        for (std::size_t i = 0; i < values.size(); ++i) values[i] = i % 2 == 0 ? scale : -scale;
        EXPECT_NEAR(serialDependence(values), 0.99999, 1e-9);
    }
    EXPECT_TRUE(std::isnan(serialDependence({})));
    EXPECT_TRUE(std::isnan(serialDependence(std::vector<double>{3.0})));
    EXPECT_TRUE(std::isnan(serialDependence(std::vector<double>(5000, 0.1))));
}

}  // namespace
}  // namespace Tessel::Engine::Dist
