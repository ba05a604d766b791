#pragma once

#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>

// Decimal numbers out of text at the speed of memory, correctly rounded.
//
// W. D. Clinger, How to Read Floating Point Numbers Accurately (PLDI 1990): when the digits as an integer and
// the power of ten are both exact doubles, one multiplication or division rounds once and so correctly.
// Digits are taken eight at a time out of one 64-bit word.

namespace Tessel::IO {

/// `readNumber` may look at this many bytes.
inline constexpr std::ptrdiff_t kNumberRoom = 64;

/// Eight characters, the first one lowest, whatever the byte order of the machine.
inline std::uint64_t loadEight(const char* text) {
    const auto byte = [text](int i) {
        return static_cast<std::uint64_t>(static_cast<unsigned char>(text[i])) << (8 * i);
    };
    return byte(0) | byte(1) | byte(2) | byte(3) | byte(4) | byte(5) | byte(6) | byte(7);
}

/// How many of eight characters, from the first on, are digits.
inline int countDigits(std::uint64_t characters) {
    constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0, kZeros = 0x3030303030303030;
    // '0'..'9' are the bytes whose high half is 3, also after adding 6. What a byte beyond 0xF9 carries
    // reaches only the bytes behind it, and itself is no digit.
    const std::uint64_t others =
        ((characters & kHigh) ^ kZeros) | (((characters + 0x0606060606060606) & kHigh) ^ kZeros);
    return std::countr_zero(others) / 8;
}

/// The value of the first `count` of eight characters. @pre they are digits
inline std::uint64_t digitsValue(std::uint64_t characters, int count) {
    if (count == 0) return 0;
    // Zeros move in front, then neighbours are joined: eight digits, four pairs, two fours, one number.
    std::uint64_t value = (characters - 0x3030303030303030) << (64 - 8 * count);
    value = ((value * (1 + (10 << 8))) >> 8) & 0x00FF00FF00FF00FF;
    value = ((value * (1 + (100 << 16))) >> 16) & 0x0000FFFF0000FFFF;
    return (value * (1 + (std::uint64_t{10000} << 32))) >> 32;
}

/// Reads digits; `digits` and `count` grow by them. Gives up beyond 19 digits, which may overflow.
inline bool readDigits(const char*& text, std::uint64_t& digits, int& count) {
    constexpr std::uint64_t kPowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    for (int taken = 8; taken == 8;) {
        const std::uint64_t characters = loadEight(text);
        taken = countDigits(characters);
        count += taken;
        if (count > 19) return false;
        digits = digits * kPowers[taken] + digitsValue(characters, taken);
        text += taken;
    }
    return true;
}

/// Reads the number that begins at `text`: [-] digits [. digits] [e [+-] digits]. Gives its end and the same
/// bits as `std::from_chars`, or null for anything unusual (no number, other forms, very many digits,
/// overflow), which the caller settles in its own way.
/// @pre `kNumberRoom` bytes are readable
inline const char* readNumber(const char* text, double& value) {
    constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const char* const start = text;
    const bool isNegative = *text == '-';
    text += isNegative;
    std::uint64_t digits = 0;
    int count = 0;
    if (!readDigits(text, digits, count)) return nullptr;
    int exponent = 0;
    if (*text == '.') {
        const int before = count;
        if (!readDigits(++text, digits, count)) return nullptr;
        exponent = before - count;
    }
    if (count == 0) return nullptr;
    if (*text == 'e' || *text == 'E') {
        ++text;
        const bool isDown = *text == '-';
        text += isDown || *text == '+';
        const std::uint64_t characters = loadEight(text);
        const int length = countDigits(characters);
        if (length == 0 || length > 4) return nullptr;
        const int power = static_cast<int>(digitsValue(characters, length));
        exponent += isDown ? -power : power;
        text += length;
    }
    constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
    if (digits <= kExactIntegers && exponent >= -22 && exponent <= 22) {
        const double integer = static_cast<double>(static_cast<std::int64_t>(digits));
        const double magnitude = exponent < 0 ? integer / kPowers[-exponent] : integer * kPowers[exponent];
        value = isNegative ? -magnitude : magnitude;
        return text;
    }
    return std::from_chars(start, text, value).ec == std::errc() ? text : nullptr;
}

}  // namespace Tessel::IO
