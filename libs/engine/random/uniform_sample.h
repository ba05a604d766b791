#pragma once

#include <span>

#include "engine/random/generators.h"

// Uniform numbers for all variables of a simulation.
//
// - Monte Carlo: the numbers of the generator.
// - Latin hypercube: M. McKay, R. Beckman & W. Conover, Technometrics 21 (1979) 239-245. Of n numbers of a
//   variable one falls into each n-th part of (0, 1), anywhere in it, and the parts come in random order, by
//   the shuffle of R. Durstenfeld, Communications of the ACM 7 (1964) 420. A number takes one draw, of
//   the Mersenne Twister in samples of 2^16 to 2^22 numbers of a variable a short one: it then is one of some
//   2^32 / n places of its part.
// - Sobol RQMC: I. Sobol's sequence with the direction numbers of S. Joe & F. Kuo, SIAM Journal on Scientific
//   Computing 30 (2008) 2635-2654, in Gray-code order from the origin on, randomised by a random linear
//   scramble and a digital shift (J. Matousek, Journal of Complexity 14 (1998) 527-556): each point is
//   uniform, the set stays a digital net, so that a mean has the rate of error of Owen's scrambling. A sample
//   size that is a power of two makes the most of it.

namespace Tessel::Engine::Random {

enum class SamplingMethodType { MONTE_CARLO = 1, LATIN_HYPERCUBE = 2, SOBOL_RQMC = 3 };

/// The most variables of a Sobol sample.
inline constexpr std::size_t kMaxSobolVariables = 3667;

/// Draws numbers strictly within (0, 1) into `result`, one row of equal length per variable.
///
/// The draws of a variable come from its stream of `generator`; from a single stream the variables draw one
/// after the other. The numbers of a variable with a stream of its own do not depend on how many variables
/// there are. O(rows * variables); variables in parallel with streams of their own, Sobol points always.
/// @returns false, without drawing, for an unknown method, rows of different lengths or of 2^31 numbers, or
///          more variables than `kMaxSobolVariables` with Sobol.
bool uniformSample(RandomGenerator& generator, SamplingMethodType method,
                   std::span<const std::span<double>> result);

}  // namespace Tessel::Engine::Random
