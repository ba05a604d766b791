#pragma once

#include <array>
#include <charconv>
#include <cstddef>

namespace Tessel {

/// The digits of a finite number, without any allocation: by default in shortest round-trip form, else in
/// the form that the arguments of `std::to_chars` ask for.
class NumberText {
 public:
    template <class... Format>
    explicit NumberText(double value, Format... format) {
        end_ = std::to_chars(digits_.data(), digits_.data() + digits_.size(), value, format...).ptr;
    }
    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;

    const char* begin() const { return digits_.data(); }
    const char* end() const { return end_; }

 private:
    /// Sign, 309 digits before the point, the point and up to 17 decimals.
    std::array<char, 344> digits_;
    char* end_;
};

}  // namespace Tessel
