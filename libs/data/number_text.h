#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Tessel {

/// The digits of a finite number, without any allocation: by default in shortest round-trip form, else in
/// the form that the arguments of `std::to_chars` ask for. In the shortest form whole numbers up to
/// `kLargestPlain` have no exponent: 100000 is the label, the key and the count that people look for, and not
/// 1e+05.
class NumberText {
 public:
    static constexpr double kLargestPlain = 1e15;

    explicit NumberText(double value) {
        const bool isPlain = std::abs(value) <= kLargestPlain && value == std::trunc(value);
        const bool isNegativeZero = value == 0.0 && std::signbit(value);
        end_ = isPlain && !isNegativeZero ? std::to_chars(digits_.data(), digits_.data() + digits_.size(),
                                                          static_cast<std::int64_t>(value))
                                                .ptr
                                          : write(value);
    }
    template <class... Format>
    NumberText(double value, std::chars_format form, Format... precision) {
        end_ = write(value, form, precision...);
    }
    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;

    const char* begin() const { return digits_.data(); }
    const char* end() const { return end_; }

 private:
    template <class... Format>
    char* write(double value, Format... format) {
        return std::to_chars(digits_.data(), digits_.data() + digits_.size(), value, format...).ptr;
    }

    /// Sign, 309 digits before the point, the point and up to 17 decimals.
    std::array<char, 344> digits_;
    char* end_;
};

}  // namespace Tessel
