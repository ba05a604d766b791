#pragma once

#include <bitset>
#include <cstddef>

namespace Tessel::Engine::Random {

inline constexpr std::size_t kWellDegree = 1024;

/// A polynomial over the field of two elements, of a degree below that of WELL1024a's characteristic one.
using WellPolynomial = std::bitset<kWellDegree>;

/// x^(2^512) modulo the characteristic polynomial of WELL1024a, which the algorithm of Berlekamp and Massey
/// (J. Massey, IEEE Transactions on Information Theory 15 (1969) 122-127) finds from 2048 bits of output.
/// Computed at the first call, from whichever thread.
const WellPolynomial& wellStreamJump();

}  // namespace Tessel::Engine::Random
