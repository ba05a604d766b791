#include "engine/ensemble/resample.h"

namespace Tessel::Engine::Ensemble {

bool coversClasses(std::span<const std::int32_t> rows, std::span<const std::int32_t> classes,
                   std::size_t numClasses) {
    std::vector<std::uint8_t> isMet(numClasses, 0);
    std::size_t numMet = 0;
    for (const std::int32_t row : rows) {
        std::uint8_t& isClassMet = isMet[static_cast<std::size_t>(classes[static_cast<std::size_t>(row)])];
        numMet += 1u - isClassMet;
        isClassMet = 1;
        if (numMet == numClasses) return true;
    }
    return false;
}

}  // namespace Tessel::Engine::Ensemble
