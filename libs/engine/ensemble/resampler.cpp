#include "engine/ensemble/resampler.h"

#include "data/random.h"

namespace Tessel::Engine::Ensemble {

Resampler::Resampler(std::size_t numRows, int seed) {
    Random random(static_cast<std::uint32_t>(seed));
    lots_.reserve(numRows);
    for (std::size_t i = 0; i < numRows; ++i) lots_.push_back(Util::AliasTable::drawLot(random, numRows));
}

std::vector<std::int32_t> Resampler::sample(std::span<const double> weights, Crew& crew) {
    Util::requireWeights(weights, 1);
    table_.assign(weights);
    std::vector<std::int32_t> rows(lots_.size());
    forEachStretch(crew, rows.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) rows[i] = table_.positionOf(lots_[i]);
    });
    return rows;
}

}  // namespace Tessel::Engine::Ensemble
