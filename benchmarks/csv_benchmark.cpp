// Reading and writing of text files: a numeric table of a million rows, about 95 MB, and a mixed one.

#include <cstdint>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

#include <tessel/data/reader.h>
#include <tessel/data/writer.h>

namespace {

using namespace Tessel;

constexpr int kNumRows = 1000000;

/// A plain generator (Vigna's SplitMix64), so that every run writes the same files.
std::uint64_t draw(std::uint64_t& state) {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

/// Numbers of seven decimals between -10 and 10.
DataFrame numericTable() {
    DataFrame table;
    std::uint64_t state = 1;
    for (int column = 0; column < 10; ++column) {
        Vector values(kNumRows);
        for (double& value : values) value = (static_cast<double>(draw(state) % 200000000) - 1e8) / 1e7;
        table.append(values);
    }
    return table;
}

DataFrame mixedTable() {
    DataFrame table = numericTable()(Util::all, IntVector{0, 1, 2});
    std::uint64_t state = 2;
    StringVector few, many;
    for (int row = 0; row < kNumRows; ++row) {
        few.push_back(L"level " + std::to_wstring(draw(state) % 20));
        many.push_back(L"key, " + std::to_wstring(draw(state) % 500000));  // needs quotes
    }
    table.append(few);
    table.append(many);
    return table;
}

std::filesystem::path pathOf(const char* name) { return std::filesystem::temp_directory_path() / name; }

void read(benchmark::State& state, const DataFrame& table, const char* name) {
    const std::filesystem::path path = pathOf(name);
    Writer::writeText(table, path.wstring());
    for (auto _ : state) benchmark::DoNotOptimize(Reader::readText(path.wstring()));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(path)));
    std::filesystem::remove(path);
}

void write(benchmark::State& state, const DataFrame& table, const char* name) {
    const std::filesystem::path path = pathOf(name);
    for (auto _ : state) Writer::writeText(table, path.wstring());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(path)));
    std::filesystem::remove(path);
}

void readNumbers(benchmark::State& state) { read(state, numericTable(), "tessel_numbers.csv"); }
void readMixed(benchmark::State& state) { read(state, mixedTable(), "tessel_mixed.csv"); }
void writeNumbers(benchmark::State& state) { write(state, numericTable(), "tessel_numbers_out.csv"); }
void writeMixed(benchmark::State& state) { write(state, mixedTable(), "tessel_mixed_out.csv"); }

BENCHMARK(readNumbers)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readMixed)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(writeNumbers)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(writeMixed)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
