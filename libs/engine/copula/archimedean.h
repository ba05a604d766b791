#pragma once

#include "engine/copula/ranks.h"

namespace Tessel::Engine::Copula {

/// The range of theta, for any number of variables, in which a copula has positive dependence.
struct ThetaRange {
    double independence;  ///< theta of independence, not below it
    double upper;         ///< theta of a tau of 0.99
};
ThetaRange thetaRange(CopulaType type);

/// The logarithm of the pseudo-likelihood of Clayton's, Frank's or Gumbel's copula with a theta of its range.
/// O(n p).
double archimedeanLogLikelihood(CopulaType type, double theta, const Ranks& ranks);

/// `fitCopula` for Clayton, Frank and Gumbel.
int fitArchimedean(CopulaType type, Ranks ranks, Dependence& result);

}  // namespace Tessel::Engine::Copula
