#include "data/random.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <unordered_map>
#include <vector>

#include <tessel/data/util/random.h>
#include <tessel/data/util/sets.h>

#include "data/util/alias_table.h"

namespace Tessel::Util {
namespace {

using Sampling::ReplaceType;

/// Seeds are taken by their bits, so that negative ones are seeds, too.
Random generatorOf(int seed) { return Random(static_cast<std::uint32_t>(seed)); }

int positionBelow(Random& random, int bound) {
    return static_cast<int>(random.nextBelow(static_cast<std::uint64_t>(bound)));
}

void requireSizes(int populationSize, int sampleSize, ReplaceType replacement) {
    constexpr int kLargest = std::numeric_limits<int>::max();
    if (replacement != ReplaceType::WITHOUT_REPLACEMENT && replacement != ReplaceType::WITH_REPLACEMENT)
        throw ConstraintViolation("Replacement", "The value must be a pre-defined set member.");
    if (populationSize < 0) throw ValueOutOfRange("Population size", 0, kLargest);
    if (sampleSize < 0) throw ValueOutOfRange("Sample size", 0, kLargest);
    const bool isTooLarge = replacement == ReplaceType::WITHOUT_REPLACEMENT
                                ? sampleSize > populationSize
                                : sampleSize > 0 && populationSize == 0;
    if (isTooLarge) throw TooLargeSampleSize(populationSize);
}

void requireWeights(const Vector& weights, int populationSize, int sampleSize, ReplaceType replacement) {
    if (weights.size() != static_cast<std::size_t>(populationSize))
        throw NumElementsMismatch(populationSize, static_cast<std::int64_t>(weights.size()));
    const int least = populationSize > 0 ? 1 : 0;
    Util::requireWeights({weights.data(), weights.size()}, replacement == ReplaceType::WITHOUT_REPLACEMENT
                                                               ? std::max(least, sampleSize)
                                                               : least);
}

// ---- equal probabilities

/// The first `sampleSize` steps of Fisher & Yates' shuffle of 0 .. populationSize - 1.
/// @param shuffled  called with a position, gives a reference to the number that stands there.
template <class Shuffled>
IntVector partialShuffle(int populationSize, int sampleSize, Random& random, Shuffled&& shuffled) {
    IntVector drawn;
    drawn.reserve(static_cast<std::size_t>(sampleSize));
    for (int step = 0; step < sampleSize; ++step) {
        const int position = step + positionBelow(random, populationSize - step);
        const int displaced = shuffled(step);
        drawn.push_back(std::exchange(shuffled(position), displaced));
    }
    return drawn;
}

/// A sample much smaller than its population keeps only the moved numbers; the sample is the same.
IntVector distinctPositions(int populationSize, int sampleSize, Random& random) {
    constexpr int kSparseRatio = 64;
    if (sampleSize >= populationSize / kSparseRatio) {
        std::vector<int> numbers(static_cast<std::size_t>(populationSize));
        std::iota(numbers.begin(), numbers.end(), 0);
        return partialShuffle(populationSize, sampleSize, random,
                              [&](int i) -> int& { return numbers[static_cast<std::size_t>(i)]; });
    }
    std::unordered_map<int, int> moved;
    moved.reserve(2 * static_cast<std::size_t>(sampleSize));
    return partialShuffle(populationSize, sampleSize, random,
                          [&](int i) -> int& { return moved.try_emplace(i, i).first->second; });
}

// ---- weights

/// Exponential waiting times with the weights as rates: their order is that of successive draws without
/// replacement (Efraimidis & Spirakis, Weighted random sampling with a reservoir, Information Processing
/// Letters 97, 2006). @pre at least sampleSize weights are positive
IntVector distinctWeightedPositions(const Vector& weights, int sampleSize, Random& random) {
    struct Arrival {
        double time;
        int position;
        bool operator<(const Arrival& other) const {
            return time != other.time ? time < other.time : position < other.position;
        }
    };
    std::vector<Arrival> arrivals;
    arrivals.reserve(weights.size());
    for (std::size_t i = 0; i < weights.size(); ++i)
        if (weights[i] > 0.0)
            arrivals.push_back({random.nextExponential() / weights[i], static_cast<int>(i)});
    const auto end = arrivals.begin() + sampleSize;
    if (end != arrivals.end()) std::nth_element(arrivals.begin(), end, arrivals.end());
    std::sort(arrivals.begin(), end);
    IntVector drawn;
    drawn.reserve(static_cast<std::size_t>(sampleSize));
    for (auto arrival = arrivals.begin(); arrival != end; ++arrival) drawn.push_back(arrival->position);
    return drawn;
}

template <class Sequence>
int sizeOf(const Sequence& sequence) {
    return static_cast<int>(sequence.size());
}

}  // namespace

IntVector sample(int populationSize, int sampleSize, int seed, ReplaceType replacement) {
    requireSizes(populationSize, sampleSize, replacement);
    Random random = generatorOf(seed);
    if (replacement == ReplaceType::WITHOUT_REPLACEMENT)
        return distinctPositions(populationSize, sampleSize, random);
    IntVector drawn(static_cast<std::size_t>(sampleSize));
    for (int& position : drawn) position = positionBelow(random, populationSize);
    return drawn;
}

IntVector sample(int populationSize, int sampleSize, const Vector& weights, int seed,
                 ReplaceType replacement) {
    requireSizes(populationSize, sampleSize, replacement);
    requireWeights(weights, populationSize, sampleSize, replacement);
    Random random = generatorOf(seed);
    if (replacement == ReplaceType::WITHOUT_REPLACEMENT)
        return distinctWeightedPositions(weights, sampleSize, random);
    IntVector drawn(static_cast<std::size_t>(sampleSize));
    if (drawn.empty()) return drawn;
    AliasTable table;
    table.assign({weights.data(), weights.size()});
    for (int& position : drawn) position = table.positionOf(AliasTable::drawLot(random, weights.size()));
    return drawn;
}

IntVector sample(const IntVector& population, int sampleSize, int seed, ReplaceType replacement) {
    return bind(population, sample(sizeOf(population), sampleSize, seed, replacement));
}
Vector sample(const Vector& population, int sampleSize, int seed, ReplaceType replacement) {
    return bind(population, sample(sizeOf(population), sampleSize, seed, replacement));
}
StringVector sample(const StringVector& population, int sampleSize, int seed, ReplaceType replacement) {
    return bind(population, sample(sizeOf(population), sampleSize, seed, replacement));
}
IntVector sample(const IntVector& population, int sampleSize, const Vector& weights, int seed,
                 ReplaceType replacement) {
    return bind(population, sample(sizeOf(population), sampleSize, weights, seed, replacement));
}
Vector sample(const Vector& population, int sampleSize, const Vector& weights, int seed,
              ReplaceType replacement) {
    return bind(population, sample(sizeOf(population), sampleSize, weights, seed, replacement));
}
StringVector sample(const StringVector& population, int sampleSize, const Vector& weights, int seed,
                    ReplaceType replacement) {
    return bind(population, sample(sizeOf(population), sampleSize, weights, seed, replacement));
}

DataFrame sample(const DataFrame& table, int sampleSize, int seed, ReplaceType replacement) {
    return table(sample(table.getNumRows(), sampleSize, seed, replacement), all);
}
DataFrame sample(const DataFrame& table, int sampleSize, const Vector& weights, int seed,
                 ReplaceType replacement) {
    return table(sample(table.getNumRows(), sampleSize, weights, seed, replacement), all);
}

}  // namespace Tessel::Util
