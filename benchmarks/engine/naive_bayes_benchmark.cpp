// Naive Bayes on 1,000,000 rows of 20 numeric or categorical inputs, 2 and 5 classes.
// benchmarks/naive_bayes_vs_sklearn.py times the same work in scikit-learn beside it.

#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include <benchmark/benchmark.h>

#include "engine/nb/naive_bayes.h"

namespace {

namespace NB = Tessel::Engine::NB;

constexpr std::size_t kNumRows = 1'000'000, kNumInputs = 20;
constexpr std::int32_t kNumCategories = 8;

/// Random classes, inputs that depend on them, and the columns that receive posteriors.
struct Table {
    std::vector<std::int32_t> classes;
    std::vector<std::vector<double>> numbers;
    std::vector<std::vector<std::int32_t>> codes;
    std::vector<std::vector<double>> columns;
    std::vector<NB::Input> inputs;
    std::vector<std::span<double>> result;
    std::vector<double> logPriors;

    Table(std::int32_t numClasses, bool isCategorical)
        : classes(kNumRows),
          numbers(kNumInputs),
          codes(kNumInputs),
          columns(static_cast<std::size_t>(numClasses)) {
        std::mt19937_64 generator(12345);
        for (std::int32_t& code : classes)
            code = static_cast<std::int32_t>(generator() % static_cast<std::uint64_t>(numClasses));
        for (std::size_t i = 0; i < kNumInputs; ++i) {
            for (std::size_t row = 0; row < kNumRows; ++row) {
                const std::uint64_t bits = generator();
                if (isCategorical)
                    codes[i].push_back(static_cast<std::int32_t>(bits % kNumCategories));
                else
                    numbers[i].push_back(0.1 * classes[row] +
                                         3.0 * std::ldexp(static_cast<double>(bits >> 11), -53));
            }
            inputs.push_back({isCategorical, numbers[i], codes[i], kNumCategories});
        }
        for (std::vector<double>& column : columns)
            result.emplace_back(column = std::vector<double>(kNumRows));
        logPriors.assign(columns.size(), -std::log(numClasses));
    }
};

const Table& table(const benchmark::State& state) {
    static const Table tables[2][2] = {{Table(2, false), Table(5, false)}, {Table(2, true), Table(5, true)}};
    return tables[state.range(1)][state.range(0) == 2 ? 0 : 1];
}

void report(benchmark::State& state) {
    const std::size_t cellSize = state.range(1) == 0 ? sizeof(double) : sizeof(std::int32_t);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kNumRows * kNumInputs * cellSize));
}

void fit(benchmark::State& state) {
    const Table& data = table(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            NB::fit(data.inputs, data.classes, static_cast<std::int32_t>(state.range(0))));
    report(state);
}

void posteriorProbability(benchmark::State& state) {
    const Table& data = table(state);
    const NB::Fitted fitted = NB::fit(data.inputs, data.classes, static_cast<std::int32_t>(state.range(0)));
    for (auto _ : state) {
        NB::posteriorProbability(fitted, data.logPriors, data.inputs, data.result);
        benchmark::ClobberMemory();
    }
    report(state);
}

void arguments(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"classes", "categorical"})->ArgsProduct({{2, 5}, {0, 1}});
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(fit)->Apply(arguments);
BENCHMARK(posteriorProbability)->Apply(arguments);

}  // namespace
