#pragma once

#include <tessel/data/data_frame.h>
#include <tessel/data/vectors.h>

namespace Tessel {

namespace Sampling {

/// Whether an element can be drawn more than once.
enum class ReplaceType : int { WITHOUT_REPLACEMENT = 0, WITH_REPLACEMENT = 1 };

}  // namespace Sampling

/// Random samples. The same arguments give the same sample on every platform; any seed will do. The order
/// of a sample is random, too: sort the positions where the order of the population must stay. A full
/// sample without replacement is a random permutation.
///
/// Weighted forms take one weight per element, finite and >= 0, not all 0; only their proportions matter.
/// An element of weight 0 is never drawn. Without replacement the elements are drawn one after the other,
/// each with a probability in proportion to its weight among those that are left, and come in the order
/// of these draws.
///
/// All forms throw
/// - TooLargeSampleSize, with the population's size, when the sample is larger than the population and
///   drawn without replacement, or not empty while the population is;
/// - ValueOutOfRange when a size is negative, ConstraintViolation when `replacement` is no member of its set;
/// - NumElementsMismatch when there are not as many weights as elements;
/// - ConstraintViolation when a weight is negative, NaN or infinite, when all are 0, or when, without
///   replacement, fewer weights than the sample's size are positive.
namespace Util {

/// Positions in 0 .. populationSize - 1. Without replacement, the memory needed beyond the sample is in
/// the order of the smaller of sample and population.
TESSEL_API IntVector sample(int populationSize, int sampleSize, int seed, Sampling::ReplaceType replacement);
/// Weighted; time and memory in the order of population plus sample.
TESSEL_API IntVector sample(int populationSize, int sampleSize, const Vector& weights, int seed,
                            Sampling::ReplaceType replacement);

/// As many positions as there are weights, drawn with replacement: a weighted resample of a whole table.
inline IntVector sample(const Vector& weights, int seed) {
    const int size = static_cast<int>(weights.size());
    return sample(size, size, weights, seed, Sampling::ReplaceType::WITH_REPLACEMENT);
}

/// Elements of a vector; the sample has the vector's name.
TESSEL_API IntVector sample(const IntVector& population, int sampleSize, int seed,
                            Sampling::ReplaceType replacement);
TESSEL_API Vector sample(const Vector& population, int sampleSize, int seed,
                         Sampling::ReplaceType replacement);
TESSEL_API StringVector sample(const StringVector& population, int sampleSize, int seed,
                               Sampling::ReplaceType replacement);
TESSEL_API IntVector sample(const IntVector& population, int sampleSize, const Vector& weights, int seed,
                            Sampling::ReplaceType replacement);
TESSEL_API Vector sample(const Vector& population, int sampleSize, const Vector& weights, int seed,
                         Sampling::ReplaceType replacement);
TESSEL_API StringVector sample(const StringVector& population, int sampleSize, const Vector& weights,
                               int seed, Sampling::ReplaceType replacement);

/// Rows of a table, with their names and sharing its cells.
TESSEL_API DataFrame sample(const DataFrame& table, int sampleSize, int seed,
                            Sampling::ReplaceType replacement);
TESSEL_API DataFrame sample(const DataFrame& table, int sampleSize, const Vector& weights, int seed,
                            Sampling::ReplaceType replacement);

}  // namespace Util
}  // namespace Tessel
