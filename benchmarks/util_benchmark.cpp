#include <benchmark/benchmark.h>

#include <tessel/data/util.h>

// Tables and samples at the size of a large project: a million rows, fifty columns.

namespace Tessel {
namespace {

constexpr int kNumRows = 1'000'000;
constexpr int kNumCols = 50;
constexpr int kSampleSize = 100'000;

/// Numbers without order, many of them distinct.
Vector numbers(int column) {
    Vector values(kNumRows);
    for (int row = 0; row < kNumRows; ++row)
        values[static_cast<std::size_t>(row)] =
            static_cast<double>((row * 7919LL + column * 104729LL) % 999983);
    return values;
}

const DataFrame& largeTable() {
    static const DataFrame table = [] {
        DataFrame made;
        for (int column = 0; column < kNumCols; ++column) made.append(numbers(column));
        return made;
    }();
    return table;
}

void samplePositions(benchmark::State& state, bool isWeighted, Sampling::ReplaceType replacement) {
    const Vector weights = numbers(1);
    int seed = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(isWeighted
                                     ? Util::sample(kNumRows, kSampleSize, weights, ++seed, replacement)
                                     : Util::sample(kNumRows, kSampleSize, ++seed, replacement));
}
constexpr auto kWith = Sampling::ReplaceType::WITH_REPLACEMENT;
constexpr auto kWithout = Sampling::ReplaceType::WITHOUT_REPLACEMENT;
BENCHMARK_CAPTURE(samplePositions, with, false, kWith)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(samplePositions, without, false, kWithout)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(samplePositions, weightedWith, true, kWith)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(samplePositions, weightedWithout, true, kWithout)->Unit(benchmark::kMillisecond);

void copyTable(benchmark::State& state) {
    const DataFrame& table = largeTable();
    for (auto _ : state) {
        DataFrame copy = table;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(copyTable)->Unit(benchmark::kMicrosecond);

void selectColumns(benchmark::State& state) {
    const DataFrame& table = largeTable();
    const StringVector names = table.getColNames(Util::range(10, 29));
    for (auto _ : state) benchmark::DoNotOptimize(table(Util::all, names));
}
BENCHMARK(selectColumns)->Unit(benchmark::kMicrosecond);

void selectRows(benchmark::State& state) {
    const DataFrame& table = largeTable();
    const IntVector rows = Util::sample(kNumRows, kSampleSize, 1, kWithout);
    for (auto _ : state) benchmark::DoNotOptimize(table(rows, Util::all));
}
BENCHMARK(selectRows)->Unit(benchmark::kMicrosecond);

/// The cells of the selected rows in contiguous memory, which the selection itself leaves for later.
void selectAndReadRows(benchmark::State& state) {
    const DataFrame& table = largeTable();
    const IntVector rows = Util::sample(kNumRows, kSampleSize, 1, kWithout);
    for (auto _ : state) {
        const DataFrame selected = table(rows, Util::all);
        for (int column = 0; column < kNumCols; ++column)
            benchmark::DoNotOptimize(selected(Util::all, column).values().data());
    }
}
BENCHMARK(selectAndReadRows)->Unit(benchmark::kMillisecond);

void argSort(benchmark::State& state) {
    const Vector values = numbers(1);
    for (auto _ : state) benchmark::DoNotOptimize(Util::argSort(values));
}
BENCHMARK(argSort)->Unit(benchmark::kMillisecond);

void uniqueElements(benchmark::State& state) {
    const Vector values = numbers(1);
    for (auto _ : state) benchmark::DoNotOptimize(Util::uniqueElements(values));
}
BENCHMARK(uniqueElements)->Unit(benchmark::kMillisecond);

void calculateExpression(benchmark::State& state) {
    const DataFrame& table = largeTable();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            Util::calculateExpression(table, L"(Var1 - Var2) / (1 + Var3) > 2 ? Var4 : 0"));
}
BENCHMARK(calculateExpression)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Tessel
