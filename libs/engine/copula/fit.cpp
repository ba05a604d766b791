#include "engine/copula/archimedean.h"
#include "engine/copula/elliptical.h"

namespace Tessel::Engine::Copula {

int fitCopula(CopulaType type, DataMatrix data, Dependence& result) {
    if (type < CopulaType::CLAYTON || type > CopulaType::STUDENT) return 0;
    std::optional<Ranks> ranks = rankRows(data);
    if (!ranks) return 0;
    if (type == CopulaType::GAUSS) return fitGauss(*ranks, result);
    if (type == CopulaType::STUDENT) return fitStudent(*ranks, result);
    return fitArchimedean(type, std::move(*ranks), result);
}

}  // namespace Tessel::Engine::Copula
