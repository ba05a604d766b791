#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>

#include <tessel/framework/errors.h>

#include "data/io/parallel.h"
#include "engine/random/uniform_sample.h"
#include "synthetic/synthetic_data_generator.h"

namespace Tessel {

using namespace SyntheticDataGeneration;

namespace {

/// Numbers that each stream draws and forgets before the first.
constexpr int kNumDiscarded = 100;
/// Numbers that are mapped by one call in one thread.
constexpr std::size_t kBlockSize = 16384;

std::vector<std::span<double>> spansOf(std::vector<Vector>& rows, std::size_t begin, std::size_t end) {
    std::vector<std::span<double>> spans;
    for (std::size_t i = begin; i < end; ++i) spans.emplace_back(rows[i].data(), rows[i].size());
    return spans;
}

std::vector<std::span<const double>> constSpansOf(const std::vector<Vector>& rows, std::size_t begin,
                                                  std::size_t end) {
    std::vector<std::span<const double>> spans;
    for (std::size_t i = begin; i < end; ++i) spans.emplace_back(rows[i].data(), rows[i].size());
    return spans;
}

/// Asks for all memory that making a sample takes without using it: systems that give more than they have
/// refuse such a request only as one. @throws std::bad_alloc
/// @param numCopies  as many times the sample
void requireMemory(std::size_t numVars, std::size_t numRows, std::size_t numCopies) {
    const std::size_t rowSize = numRows * numCopies * sizeof(double);
    if (numVars > std::numeric_limits<std::size_t>::max() / 2 / rowSize) throw std::bad_alloc();
    void* const volatile memory = ::operator new(numVars* rowSize);  // volatile: not left out
    ::operator delete(memory);
}

}  // namespace

DataFrame ISyntheticDataGenerator::generate() {
    IEstimatable::validate();
    DataFrame sample(getModelName() + L": Synthetic Sample");
    if (!fitted_.areAllFitted()) {
        log_.push_back(
            L"Failed to generate the sample: distribution wasn't fitted for one or more variables");
        return sample;
    }
    const DependenceFit* const dependence = dependenceToInduce();
    const bool isCopula = dependence && dependence->type == CorrelationType::COPULA;
    const auto copula = static_cast<Engine::Copula::CopulaType>(isCopula ? dependence->copula : CopulaType());
    try {
        Rows rows = drawUniforms(isCopula ? numMixingRows(copula, dependence->result) : 0);
        if (rows.empty()) return sample;
        if (dependence) {
            if (!induce(rows, *dependence))
                log_.push_back(
                    L"Failed to correlate the variables during sample generation. Will attempt "
                    L"independent sample generation");
        } else if (correlationType.get() != CorrelationType::NONE) {
            log_.push_back(
                L"Failed to correlate the variables: no correlation was fitted. Will attempt "
                L"independent sample generation");
        }
        rows.resize(fitted_.columns.size());
        if (!mapToMargins(rows)) {
            log_.push_back(L"Failed to generate the sample");
            return sample;
        }
        for (std::size_t i = 0; i < rows.size(); ++i)
            sample.append(DataFrameColumn(fitted_.columns[i].name, std::move(rows[i])));
    } catch (const std::bad_alloc&) {
        throw BadAllocation("Sample");
    } catch (const std::length_error&) {  // a vector longer than any address
        throw BadAllocation("Sample");
    }
    return sample;
}

const DependenceFit* ISyntheticDataGenerator::dependenceToInduce() const {
    const DependenceFit* const learned = fitted_.dependence();
    return learned && learned->type == correlationType.get() ? learned : nullptr;
}

ISyntheticDataGenerator::Rows ISyntheticDataGenerator::drawUniforms(std::size_t numMixing) {
    const std::size_t numVars = fitted_.columns.size();
    const bool hasStreams = randomStream.get() == RandomStreamType::INDEPENDENT;
    auto generator = Engine::Random::RandomGenerator::create(
        static_cast<Engine::Random::RandomGeneratorType>(randomGenerator.get()), randomSeed.get(),
        hasStreams ? static_cast<std::int64_t>(numVars) : 0, kNumDiscarded);
    if (!generator) {
        log_.push_back(L"Failed to instantiate random generator");
        return {};
    }
    Rows rows(numVars + numMixing);
    // Ranks, scores and sorted values beside the sample, where variables are made dependent.
    constexpr std::size_t kCopies = 2, kCopiesOfDependent = 7;
    requireMemory(rows.size(), static_cast<std::size_t>(sampleSize.get()),
                  dependenceToInduce() ? kCopiesOfDependent : kCopies);
    for (Vector& row : rows) row.resize(static_cast<std::size_t>(sampleSize.get()));
    const auto method = static_cast<Engine::Random::SamplingMethodType>(samplingMethod.get());
    if (!uniformSample(*generator, method, spansOf(rows, 0, rows.size()))) {
        log_.push_back(L"Failed to create a uniform sample");
        return {};
    }
    return rows;
}

bool ISyntheticDataGenerator::induce(Rows& rows, const DependenceFit& dependence) const {
    const std::size_t numVars = fitted_.columns.size();
    const std::vector<std::span<double>> sample = spansOf(rows, 0, numVars);
    if (dependence.type == CorrelationType::RANK)
        return Engine::Copula::induceRankCorrelation(dependence.result.sigma, sample) == 1;

    // A copula makes new numbers, which are no Latin hypercube any more: its ranks, the old numbers.
    Rows hypercube;
    if (samplingMethod.get() == SamplingMethodType::LATIN_HYPERCUBE)
        hypercube.assign(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(numVars));
    const auto copula = static_cast<Engine::Copula::CopulaType>(dependence.copula);
    if (sampleCopula(copula, dependence.result, constSpansOf(rows, numVars, rows.size()), sample) != 1)
        return false;
    if (hypercube.empty()) return true;
    if (Engine::Copula::keepMargins(constSpansOf(hypercube, 0, numVars), sample) == 1) return true;
    std::move(hypercube.begin(), hypercube.end(), rows.begin());
    return false;
}

bool ISyntheticDataGenerator::mapToMargins(Rows& rows) const {
    std::vector<Engine::Dist::CMetalogDist> distributions;
    for (const FittedColumn& column : fitted_.columns) distributions.push_back(column.distribution());
    const std::size_t numRows = rows.front().size();
    const std::size_t numBlocks = (numRows + kBlockSize - 1) / kBlockSize;
    std::atomic<bool> areFinite = true;
    IO::forEachIndex(rows.size() * numBlocks, rows.size() * numRows, [&](std::size_t i) {
        const Engine::Dist::CMetalogDist& distribution = distributions[i / numBlocks];
        const std::size_t begin = i % numBlocks * kBlockSize;
        Vector& row = rows[i / numBlocks];
        for (std::size_t k = begin; k < std::min(begin + kBlockSize, numRows); ++k) {
            row[k] = distribution.inverseCdf(row[k]);
            if (!std::isfinite(row[k])) areFinite = false;
        }
    });
    return areFinite;
}

}  // namespace Tessel
