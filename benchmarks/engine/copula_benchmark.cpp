// Uniform samples of 1,000,000 x 10 with Boost's Sobol beside them, and copulas of 100,000 x 10.
// benchmarks/copula_vs_peers.py times the same work in NumPy and SciPy beside it.

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/random/sobol.hpp>

#include "engine/copula/dependence.h"
#include "engine/random/uniform_sample.h"

namespace {

namespace Copula = Tessel::Engine::Copula;
namespace Random = Tessel::Engine::Random;
using Rows = std::vector<std::vector<double>>;

constexpr std::size_t kNumVars = 10, kSampleRows = 1'000'000, kDataRows = 100'000;

std::vector<std::span<double>> spans(Rows& rows) { return {rows.begin(), rows.end()}; }
std::vector<std::span<const double>> constSpans(const Rows& rows) { return {rows.begin(), rows.end()}; }

void draw(Rows& rows, Random::RandomGeneratorType type, Random::SamplingMethodType method) {
    auto generator = Random::RandomGenerator::create(type, 1, kNumVars, 100);
    Random::uniformSample(*generator, method, spans(rows));
}

/// 100,000 x 10 exponential margins of a copula with theta 2 or correlations 1/2 and 4 degrees of freedom.
Rows data(Copula::CopulaType type, Copula::Dependence& copula) {
    copula.theta = 2.0;
    copula.degreesOfFreedom = 4.0;
    copula.sigma.assign(kNumVars * kNumVars, 0.5);
    for (std::size_t i = 0; i < kNumVars; ++i) copula.sigma[i * (kNumVars + 1)] = 1.0;
    Rows rows(kNumVars, std::vector<double>(kDataRows)), mixing(2, std::vector<double>(kDataRows));
    Rows all(kNumVars + 2, std::vector<double>(kDataRows));
    draw(all, Random::RandomGeneratorType::WELL, Random::SamplingMethodType::MONTE_CARLO);
    std::copy(all.begin(), all.begin() + kNumVars, rows.begin());
    std::copy(all.begin() + kNumVars, all.end(), mixing.begin());
    Copula::sampleCopula(type, copula, constSpans(mixing), spans(rows));
    for (std::vector<double>& row : rows)
        for (double& number : row) number = -std::log1p(-number);
    return rows;
}

void uniformSample(benchmark::State& state) {
    Rows rows(kNumVars, std::vector<double>(kSampleRows));
    for (auto _ : state)
        draw(rows, Random::RandomGeneratorType{static_cast<int>(state.range(1))},
             Random::SamplingMethodType{static_cast<int>(state.range(0))});
}
BENCHMARK(uniformSample)
    ->ArgNames({"method", "generator"})
    ->ArgsProduct({{1, 2, 3}, {0, 1, 2, 3, 4}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

/// Boost's sequence, one point after the other, as doubles.
void boostSobol(benchmark::State& state) {
    std::vector<double> points(kNumVars * kSampleRows);
    for (auto _ : state) {
        boost::random::sobol sequence(kNumVars);
        for (double& number : points) number = static_cast<double>(sequence()) * 0x1p-64;
        benchmark::ClobberMemory();
    }
}
BENCHMARK(boostSobol)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Learns a Gauss copula, samples as many rows from it and gives them the empirical margins.
void gaussWithEmpiricalMargins(benchmark::State& state) {
    Copula::Dependence copula;
    const Rows table = data(Copula::CopulaType::GAUSS, copula);
    Rows sample(kNumVars, std::vector<double>(kDataRows));
    for (auto _ : state) {
        Copula::fitCopula(Copula::CopulaType::GAUSS, constSpans(table), copula);
        draw(sample, Random::RandomGeneratorType::MERSENNE_TWISTER, Random::SamplingMethodType::MONTE_CARLO);
        Copula::sampleCopula(Copula::CopulaType::GAUSS, copula, {}, spans(sample));
#pragma omp parallel for schedule(dynamic)
        for (std::size_t i = 0; i < kNumVars; ++i) {
            std::vector<double> sorted = table[i];
            std::sort(sorted.begin(), sorted.end());
            for (double& number : sample[i]) {
                const double place = number * static_cast<double>(kDataRows - 1);
                const auto below = static_cast<std::size_t>(place);
                const double above = sorted[std::min(below + 1, kDataRows - 1)];
                number = sorted[below] + (place - static_cast<double>(below)) * (above - sorted[below]);
            }
        }
    }
}
BENCHMARK(gaussWithEmpiricalMargins)->UseRealTime()->Unit(benchmark::kMillisecond);

void fit(benchmark::State& state) {
    const Copula::CopulaType type{static_cast<int>(state.range(0))};
    Copula::Dependence copula;
    const Rows table = data(type, copula);
    for (auto _ : state) Copula::fitCopula(type, constSpans(table), copula);
}
BENCHMARK(fit)->ArgName("copula")->DenseRange(1, 5)->UseRealTime()->Unit(benchmark::kMillisecond);

void sample(benchmark::State& state) {
    const Copula::CopulaType type{static_cast<int>(state.range(0))};
    Copula::Dependence copula;
    data(type, copula);
    Rows uniform(kNumVars + 2, std::vector<double>(kDataRows));
    draw(uniform, Random::RandomGeneratorType::WELL, Random::SamplingMethodType::MONTE_CARLO);
    const Rows mixing(uniform.begin() + kNumVars, uniform.end());
    uniform.resize(kNumVars);
    for (auto _ : state) {
        Rows rows = uniform;
        Copula::sampleCopula(type, copula, constSpans(mixing), spans(rows));
    }
}
BENCHMARK(sample)->ArgName("copula")->DenseRange(1, 5)->UseRealTime()->Unit(benchmark::kMillisecond);

void rankCorrelation(benchmark::State& state) {
    Copula::Dependence copula;
    const Rows table = data(Copula::CopulaType::GAUSS, copula);
    for (auto _ : state) Copula::fitRankCorrelation(constSpans(table), copula);
}
BENCHMARK(rankCorrelation)->UseRealTime()->Unit(benchmark::kMillisecond);

void induceRankCorrelation(benchmark::State& state) {
    Copula::Dependence copula;
    data(Copula::CopulaType::GAUSS, copula);
    Rows uniform(kNumVars, std::vector<double>(kDataRows));
    draw(uniform, Random::RandomGeneratorType::WELL, Random::SamplingMethodType::LATIN_HYPERCUBE);
    for (auto _ : state) {
        Rows rows = uniform;
        Copula::induceRankCorrelation(copula.sigma, spans(rows));
    }
}
BENCHMARK(induceRankCorrelation)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
