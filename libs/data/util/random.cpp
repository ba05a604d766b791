#include "data/random.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include <tessel/data/util/random.h>
#include <tessel/data/util/sets.h>

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
    std::int64_t numPositive = 0;
    for (const double weight : weights) {
        if (!std::isfinite(weight) || weight < 0.0)
            throw ConstraintViolation("Weights", "Each weight must be finite and not negative.");
        numPositive += weight > 0.0 ? 1 : 0;
    }
    const int least = populationSize > 0 ? 1 : 0;
    const int needed = replacement == ReplaceType::WITHOUT_REPLACEMENT ? std::max(least, sampleSize) : least;
    if (numPositive < needed)
        throw ConstraintViolation("Weights", "At least " + std::to_string(needed) + " must be positive.");
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

/// Draws positions in proportion to weights in constant time, by the alias method (Walker 1977) with the
/// construction of Vose, A linear algorithm for generating random numbers with a given distribution, IEEE
/// Transactions on Software Engineering 17, 1991.
class AliasTable {
 public:
    /// @pre weights finite, >= 0, not all 0
    explicit AliasTable(const Vector& weights) : columns_(weights.size()) {
        const std::size_t size = weights.size();
        const double heaviest = *std::max_element(weights.begin(), weights.end());
        // Scaling by the largest weight first keeps the sum finite.
        double sum = 0.0;
        for (std::size_t i = 0; i < size; ++i) sum += columns_[i].probability = weights[i] / heaviest;
        const double scale = static_cast<double>(size) / sum;
        // Light columns from the front, heavy ones from the back: without a branch, as nobody can tell which
        // is next.
        std::vector<int> order(size);
        std::size_t numLight = 0, firstHeavy = size;
        for (std::size_t i = 0; i < size; ++i) {
            columns_[i].probability *= scale;
            // Rounding may leave a column of almost 1 unpaired, which then keeps its rest; never one of 0,
            // as the unpaired columns sum up to their number but for rounding.
            columns_[i].alias = static_cast<int>(i);
            const bool isLight = columns_[i].probability < 1.0;
            order[numLight] = order[firstHeavy - 1] = static_cast<int>(i);
            numLight += isLight ? 1 : 0;
            firstHeavy -= isLight ? 0 : 1;
        }
        if (numLight > 0) pair({order.data(), numLight}, {order.data() + firstHeavy, size - firstHeavy});
    }

    int draw(Random& random) const {
        const int position = positionBelow(random, static_cast<int>(columns_.size()));
        const Column& column = columns_[static_cast<std::size_t>(position)];
        // Without a branch, too.
        const int isAlias = random.nextUniform() < column.probability ? 0 : 1;
        return position + isAlias * (column.alias - position);
    }

 private:
    struct Column {
        double probability;  // of the column's own position; its alias has the rest
        int alias;
    };

    /// Fills the last of the light columns up from the first heavy one; what that keeps may be light, and is
    /// then the next to be filled up.
    void pair(std::span<const int> light, std::span<const int> heavy) {
        std::size_t numLight = light.size();
        const auto columnOf = [&](int i) { return &columns_[static_cast<std::size_t>(i)]; };
        Column* small = columnOf(light[--numLight]);
        for (const int next : heavy) {
            Column* const large = columnOf(next);
            for (;;) {
                small->alias = next;
                large->probability = (large->probability + small->probability) - 1.0;
                if (large->probability < 1.0) break;
                if (numLight == 0) return;
                small = columnOf(light[--numLight]);
            }
            small = large;
        }
    }

    std::vector<Column> columns_;
};

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
    const AliasTable table(weights);
    for (int& position : drawn) position = table.draw(random);
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
