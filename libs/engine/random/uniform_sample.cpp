#include "engine/random/uniform_sample.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include <omp.h>

#include "engine/random/sobol.h"

namespace Tessel::Engine::Random {

namespace {

constexpr double kAboveZero = 0x1p-54, kBelowOne = 1.0 - 0x1p-53;
/// Numbers below which a loop stays serial.
constexpr std::size_t kParallelSize = 20000;

/// Sizes of a Latin hypercube with short draws. Smaller samples are fast anyway, and in larger ones a part
/// would have less than 1000 places.
constexpr std::size_t kShortDrawsFrom = std::size_t{1} << 16, kShortDrawsTo = std::size_t{1} << 22;

/// @param parts  room for as many numbers as `result` has.
void fillLatinHypercube(RandomStream& stream, std::span<double> result, std::span<std::int32_t> parts) {
    // One draw gives a step of the shuffle by its leading digits, and a place within the part by those
    // behind. Steps are taken a few at a time, and so is the arithmetic before and behind them: processors do
    // it for several numbers at once, and while the steps of its neighbours wait for memory. Draws are made
    // more at a time, or else they would be read before they have left the processor's store buffers.
    constexpr std::size_t kDraws = 512, kSteps = 64;
    std::array<double, kDraws> draws;
    std::array<std::int32_t, kSteps> steps;
    const std::size_t size = result.size();
    const bool isShort = size >= kShortDrawsFrom && size <= kShortDrawsTo;
    std::iota(parts.begin(), parts.end(), 0);
    const double width = 1.0 / static_cast<double>(size);
    const auto last = static_cast<std::int32_t>(size) - 1;
    for (std::size_t begin = 0; begin < size; begin += kSteps) {
        const std::size_t count = std::min(kSteps, size - begin);
        double* const numbers = result.data() + begin;
        for (std::size_t i = 0; i < count; i += 8) __builtin_prefetch(numbers + i, 1);
        if (begin % kDraws == 0) {
            const std::span<double> next = std::span(draws).first(std::min(kDraws, size - begin));
            if (isShort)
                stream.fillShort(next);
            else
                stream.fill(next);
        }
        double* const places = draws.data() + begin % kDraws;
        const auto numLeft = static_cast<std::int32_t>(size - begin);
        std::int32_t* const to = steps.data();
        for (std::int32_t i = 0; i < static_cast<std::int32_t>(count); ++i) {
            const double draw = places[i] * (numLeft - i);
            to[i] = static_cast<std::int32_t>(draw);  // less than are left: so is the product, rounded
            places[i] = draw - to[i];
        }
        std::int32_t* const left = parts.data() + begin;
        for (std::size_t i = 0; i < count; ++i)
            steps[i] = std::exchange(left[i + static_cast<std::size_t>(steps[i])], left[i]);
        std::int32_t signs = 0;  // negative when the first or the last part is among them
        for (std::size_t i = 0; i < count; ++i) {
            numbers[i] = (steps[i] + places[i]) * width;
            signs |= (steps[i] - 1) | (last - 1 - steps[i]);
        }
        if (signs < 0)
            for (std::size_t i = 0; i < count; ++i)
                numbers[i] = std::clamp(numbers[i], kAboveZero, kBelowOne);
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
    if (size > std::numeric_limits<std::int32_t>::max()) return false;

    generator.prepareStreams(result.size());
    const bool isParallel = !generator.hasSingleStream() && size * result.size() >= kParallelSize;
    const int numThreads = isParallel ? omp_get_max_threads() : 1;
    if (method == SamplingMethodType::SOBOL_RQMC) {
        fillSobol(generator, result);
    } else if (method == SamplingMethodType::LATIN_HYPERCUBE) {
        // Room for each thread, which touches it first.
        std::vector<std::unique_ptr<std::int32_t[]>> rooms(static_cast<std::size_t>(numThreads));
        for (auto& room : rooms) room = std::make_unique_for_overwrite<std::int32_t[]>(size);
        fillRows(generator, result, numThreads, [&](RandomStream& stream, std::span<double> row) {
            fillLatinHypercube(stream, row,
                               {rooms[static_cast<std::size_t>(omp_get_thread_num())].get(), size});
        });
    } else {
        fillRows(generator, result, numThreads,
                 [](RandomStream& stream, std::span<double> row) { stream.fill(row); });
    }
    return true;
}

}  // namespace Tessel::Engine::Random
