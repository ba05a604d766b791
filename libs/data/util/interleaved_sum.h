#pragma once

#include <array>
#include <cstddef>

namespace Tessel::Numeric {

/// The plain sum of term(0) .. term(count - 1) in interleaved parts, a power of two of them: adding then does
/// not wait for the addition before it, and processors add several at once. The order of the additions is the
/// same on every machine.
template <std::size_t numParts, class Term>
double interleavedSum(std::size_t count, Term&& term) {
    static_assert(numParts > 0 && (numParts & (numParts - 1)) == 0);
    std::array<double, numParts> parts{};
    std::size_t i = 0;
    for (; i + numParts <= count; i += numParts)
        for (std::size_t part = 0; part < numParts; ++part) parts[part] += term(i + part);
    for (std::size_t part = 0; i < count; ++part, ++i) parts[part] += term(i);
    for (std::size_t step = 1; step < numParts; step *= 2)
        for (std::size_t part = 0; part < numParts; part += 2 * step) parts[part] += parts[part + step];
    return parts[0];
}

}  // namespace Tessel::Numeric
