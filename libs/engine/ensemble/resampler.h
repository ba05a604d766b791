#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "data/util/alias_table.h"
#include "engine/crew.h"

namespace Tessel::Engine::Ensemble {

/// Resamples of one table by weights that change, all by the same random numbers: those by which
/// `Util::sample(weights, seed)` gives the same rows. (By inversion, resamples of the same numbers would hold
/// nearly the same rows each time; the aliases change with the weights.) Takes 36 bytes a row.
class Resampler {
 public:
    Resampler(std::size_t numRows, int seed);

    /// As many rows as the table has, in proportion to their weights.
    /// @throws ConstraintViolation for weights that are negative, not finite, or all 0.
    std::vector<std::int32_t> sample(std::span<const double> weights, Crew& crew);

 private:
    std::vector<Util::AliasTable::Lot> lots_;
    Util::AliasTable table_;
};

}  // namespace Tessel::Engine::Ensemble
