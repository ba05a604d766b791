// Metalogs: fits, proofs of feasibility, measures of goodness of fit, quantiles and probabilities.
// benchmarks/metalog_vs_numpy.py times least squares in NumPy beside it.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "engine/dist/fit_dist.h"

namespace {

using namespace Tessel::Engine::Dist;

/// A skew sample with two humps, of which metalogs of many terms are feasible.
std::vector<double> sampleOf(std::size_t n) {
    std::mt19937_64 generator(20);
    std::vector<double> sample(n);
    for (double& value : sample) {
        const double y = (static_cast<double>(generator() >> 11) + 0.5) * 0x1p-53;
        const double logit = MetalogProbability::of(y).logit;
        value = 50.0 + 10.0 * logit + 6.0 * (y - 0.5) * logit + 8.0 * std::sin(4.0 * y);
    }
    return sample;
}

std::vector<double> sortedSampleOf(std::size_t n) {
    std::vector<double> sample = sampleOf(n);
    std::sort(sample.begin(), sample.end());
    return sample;
}

/// Least squares for 2 to 16 terms and the proof of feasibility of each, as the comparison with NumPy does.
void fitAllTerms(benchmark::State& state) {
    const std::vector<double> sorted = sortedSampleOf(static_cast<std::size_t>(state.range(0)));
    int numFeasible = 0;
    for (auto _ : state) {
        const MetalogLeastSquares leastSquares(sorted);
        numFeasible = 0;
        for (int numTerms = 2; numTerms <= 16; ++numTerms) {
            const auto coefficients = leastSquares.solve(MetalogOrder::KEELIN_2016, numTerms);
            if (coefficients && isFeasible(MetalogCurve(MetalogOrder::KEELIN_2016, *coefficients)))
                ++numFeasible;
        }
    }
    state.counters["feasible"] = numFeasible;
}
BENCHMARK(fitAllTerms)->Arg(1'000)->Arg(10'000)->Arg(1'000'000)->UseRealTime()->Unit(benchmark::kMillisecond);

void load(benchmark::State& state) {
    const std::vector<double> sample = sampleOf(static_cast<std::size_t>(state.range(0)));
    CFitDist engine;
    for (auto _ : state) engine.load(sample.size(), sample.data());
}
BENCHMARK(load)->Arg(10'000)->Arg(1'000'000)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Sorting, fitting and proving, and all nine measures of all candidates.
void fitAutomatically(benchmark::State& state) {
    const std::vector<double> sample = sampleOf(static_cast<std::size_t>(state.range(0)));
    CFitDist engine;
    for (auto _ : state) {
        engine.load(sample.size(), sample.data());
        engine.fitMetalogs(16, GoodnessOfFitType::BIC);
    }
    state.counters["candidates"] = static_cast<double>(engine.candidates().size());
}
BENCHMARK(fitAutomatically)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void serialDependenceOfSample(benchmark::State& state) {
    const std::vector<double> sample = sampleOf(static_cast<std::size_t>(state.range(0)));
    CFitDist engine;
    engine.load(sample.size(), sample.data());
    for (auto _ : state) benchmark::DoNotOptimize(engine.serialDependence());
}
BENCHMARK(serialDependenceOfSample)
    ->Arg(10'000)
    ->Arg(1'000'000)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

/// Argument: number of terms.
void cdfOfOne(benchmark::State& state) {
    const std::vector<double> sorted = sortedSampleOf(10'000);
    const auto coefficients =
        MetalogLeastSquares(sorted).solve(MetalogOrder::KEELIN_2016, static_cast<int>(state.range(0)));
    const double none = std::numeric_limits<double>::quiet_NaN();
    const CMetalogDist metalog(none, none, static_cast<int>(state.range(0)), coefficients->data());
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(metalog.cdf(sorted[i]));
        i = (i + 7919) % sorted.size();
    }
}
BENCHMARK(cdfOfOne)->Arg(3)->Arg(6);

/// As the generation of samples does, through the interface of all distributions.
void millionQuantiles(benchmark::State& state) {
    std::vector<double> probabilities(1'000'000), quantiles(probabilities.size());
    std::mt19937_64 generator(3);
    for (double& p : probabilities) p = (static_cast<double>(generator() >> 11) + 0.5) * 0x1p-53;
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double terms[] = {10.0, 2.0, 0.5, 1.0, 0.3};
    const std::unique_ptr<CDist> metalog = std::make_unique<CMetalogDist>(none, none, 5, terms);
    for (auto _ : state) metalog->inverseCdfs(probabilities, quantiles);
}
BENCHMARK(millionQuantiles)->UseRealTime()->Unit(benchmark::kMillisecond);

void proveFeasible(benchmark::State& state) {
    const std::vector<double> sorted = sortedSampleOf(10'000);
    const MetalogCurve curve(
        MetalogOrder::KEELIN_2016,
        *MetalogLeastSquares(sorted).solve(MetalogOrder::KEELIN_2016, static_cast<int>(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(isFeasible(curve));
    state.counters["feasible"] = isFeasible(curve) ? 1.0 : 0.0;
}
BENCHMARK(proveFeasible)->Arg(3)->Arg(9)->Arg(16)->Unit(benchmark::kMicrosecond);

}  // namespace
