#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Tessel::Engine::Ensemble {

/// Adds the votes of one learner of an ensemble.
///
/// A label that is no class of the ensemble counts for a class drawn with equal probabilities. The draws are
/// those of a generator seeded with 12345 + the learner's index, one for each such row, in the order of the
/// rows. The generator is the library's own: the draws of `rand` differ from one C library to the next.
///
/// @param learner  the position of the learner in the ensemble
/// @param codes    the predicted class of each row; a code that is none of the classes is unknown
/// @param votes    by class, a number per row
void addVotes(int learner, double weight, std::span<const std::int32_t> codes,
              std::span<const std::span<double>> votes);

}  // namespace Tessel::Engine::Ensemble
