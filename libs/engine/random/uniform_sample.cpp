#include "engine/random/uniform_sample.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include <omp.h>

#include "engine/random/sobol.h"

namespace Tessel::Engine::Random {

namespace {

constexpr double kAboveZero = 0x1p-54, kBelowOne = 1.0 - 0x1p-53;
/// Numbers below which a loop stays serial.
constexpr std::size_t kParallelSize = 20000;

/// @param parts  room for as many numbers as `result` has.
void fillLatinHypercube(RandomStream& stream, std::span<double> result, std::span<std::uint32_t> parts) {
    // One draw gives a step of the shuffle of Fisher and Yates by its leading digits, and a place within the
    // part by those behind.
    constexpr std::size_t kDrawsAtOnce = 512;
    std::iota(parts.begin(), parts.end(), 0u);
    const double width = 1.0 / static_cast<double>(result.size());
    auto left = static_cast<std::int64_t>(result.size());
    std::uint32_t* first = parts.data();  // of those left
    for (std::size_t begin = 0; begin < result.size(); begin += kDrawsAtOnce) {
        const std::span<double> draws = result.subspan(begin, std::min(kDrawsAtOnce, result.size() - begin));
        stream.fill(draws);
        for (double& number : draws) {
            const double draw = number * static_cast<double>(left--);
            const auto chosen = static_cast<std::int64_t>(draw);  // below `left`: so is the product, rounded
            const std::uint32_t part = first[chosen];
            first[chosen] = *first;
            ++first;
            const double place = part + (draw - static_cast<double>(chosen));
            number = std::min(std::max(place * width, kAboveZero), kBelowOne);
        }
    }
}

/// The rows in parallel when each has a stream of its own.
template <class FillRow>
void fillRows(RandomGenerator& generator, std::span<const std::span<double>> result, int numThreads,
              FillRow&& fillRow) {
    const auto numVars = static_cast<std::ptrdiff_t>(result.size());
#pragma omp parallel for schedule(dynamic) num_threads(numThreads)
    for (std::ptrdiff_t variable = 0; variable < numVars; ++variable)
        fillRow(generator.stream(static_cast<std::size_t>(variable)),
                result[static_cast<std::size_t>(variable)]);
}

void fillSobol(RandomGenerator& generator, std::span<const std::span<double>> result) {
    std::vector<SobolDimension> dimensions = sobolDimensions(result.size());
    for (std::size_t variable = 0; variable < result.size(); ++variable)
        dimensions[variable].randomise(generator.stream(variable));
    constexpr std::size_t kBlock = 65536;
    const std::size_t size = result.front().size();
    const std::size_t blocksPerRow = (size + kBlock - 1) / kBlock;
    const auto numBlocks = static_cast<std::ptrdiff_t>(blocksPerRow * result.size());
#pragma omp parallel for schedule(static) if (size * result.size() >= kParallelSize)
    for (std::ptrdiff_t block = 0; block < numBlocks; ++block) {
        const std::size_t variable = static_cast<std::size_t>(block) / blocksPerRow;
        const std::size_t begin = static_cast<std::size_t>(block) % blocksPerRow * kBlock;
        dimensions[variable].fill(begin, result[variable].subspan(begin, std::min(kBlock, size - begin)));
    }
}

}  // namespace

bool uniformSample(RandomGenerator& generator, SamplingMethodType method,
                   std::span<const std::span<double>> result) {
    if (method < SamplingMethodType::MONTE_CARLO || method > SamplingMethodType::SOBOL_RQMC) return false;
    if (result.empty()) return true;
    const std::size_t size = result.front().size();
    for (const std::span<double> row : result)
        if (row.size() != size) return false;
    if (method == SamplingMethodType::SOBOL_RQMC && result.size() > kMaxSobolVariables) return false;
    if (size > std::numeric_limits<std::uint32_t>::max()) return false;

    generator.prepareStreams(result.size());
    const bool isParallel = !generator.hasSingleStream() && size * result.size() >= kParallelSize;
    const int numThreads = isParallel ? omp_get_max_threads() : 1;
    if (method == SamplingMethodType::SOBOL_RQMC) {
        fillSobol(generator, result);
    } else if (method == SamplingMethodType::LATIN_HYPERCUBE) {
        std::vector<std::vector<std::uint32_t>> parts(static_cast<std::size_t>(numThreads));
        for (std::vector<std::uint32_t>& room : parts) room.resize(size);
        fillRows(generator, result, numThreads, [&](RandomStream& stream, std::span<double> row) {
            fillLatinHypercube(stream, row, parts[static_cast<std::size_t>(omp_get_thread_num())]);
        });
    } else {
        fillRows(generator, result, numThreads,
                 [](RandomStream& stream, std::span<double> row) { stream.fill(row); });
    }
    return true;
}

}  // namespace Tessel::Engine::Random
