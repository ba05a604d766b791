#include "engine/ensemble/votes.h"

#include "data/random.h"

namespace Tessel::Engine::Ensemble {

void addVotes(int learner, double weight, std::span<const std::int32_t> codes,
              std::span<const std::span<double>> votes) {
    constexpr std::uint64_t kFirstSeed = 12345;
    Random random(kFirstSeed + static_cast<std::uint64_t>(learner));
    for (std::size_t row = 0; row < codes.size(); ++row) {
        std::size_t code = static_cast<std::uint32_t>(codes[row]);
        if (code >= votes.size()) code = random.nextBelow(votes.size());
        votes[code][row] += weight;
    }
}

}  // namespace Tessel::Engine::Ensemble
