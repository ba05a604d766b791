#include "engine/random/well_jump.h"

#include "engine/random/generators.h"

namespace Tessel::Engine::Random {

namespace {

using Wide = std::bitset<2 * kWellDegree>;

/// The recurrence sum(c[i] s[n - i], i = 0 .. degree) = 0 that the lowest bits of the generator follow, as
/// the polynomial sum(c[i] x^(degree - i)).
Wide characteristicPolynomial() {
    Well1024a generator(1);
    Wide connection(1), previous(1), latest;  // bit i of `latest` is s[n - i]
    std::size_t length = 0, sinceChange = 1;
    for (std::size_t n = 0; n < 2 * kWellDegree; ++n) {
        latest <<= 1;
        latest[0] = generator.nextWord() % 2 != 0;
        if ((connection & latest).count() % 2 == 0) {
            ++sinceChange;
            continue;
        }
        const Wide before = connection;
        connection ^= previous << sinceChange;
        if (2 * length <= n) {
            length = n + 1 - length;
            previous = before;
            sinceChange = 1;
        } else {
            ++sinceChange;
        }
    }
    Wide characteristic;
    for (std::size_t i = 0; i <= length; ++i) characteristic[length - i] = connection[i];
    return characteristic;
}

WellPolynomial streamJump() {
    const Wide characteristic = characteristicPolynomial();
    Wide power(2);  // x
    for (int squaring = 0; squaring < 512; ++squaring) {
        Wide square;
        for (std::size_t i = 0; i < kWellDegree; ++i) square[2 * i] = power[i];
        Wide shifted = characteristic << (kWellDegree - 1);
        for (std::size_t top = 2 * kWellDegree - 1; top >= kWellDegree; --top, shifted >>= 1)
            if (square[top]) square ^= shifted;
        power = square;
    }
    WellPolynomial jump;
    for (std::size_t i = 0; i < kWellDegree; ++i) jump[i] = power[i];
    return jump;
}

}  // namespace

const WellPolynomial& wellStreamJump() {
    static const WellPolynomial jump = streamJump();
    return jump;
}

}  // namespace Tessel::Engine::Random
