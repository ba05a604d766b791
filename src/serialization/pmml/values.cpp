#include "serialization/pmml/values.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include <tessel/data/convert.h>

#include "data/number_text.h"

namespace Tessel::PMML {
namespace {

WString nonFinite(double value) { return std::isnan(value) ? L"NaN" : value > 0 ? L"INF" : L"-INF"; }

/// What an ordinary text of a number holds; longer and wider texts are left to `Convert`.
class NarrowText {
 public:
    explicit NarrowText(WStringView text) {
        if (text.size() > characters_.size()) return;
        for (const wchar_t c : text) {
            if (c < L' ' || c > L'~') return;
            characters_[size_++] = static_cast<char>(c);
        }
        isOrdinary_ = true;
    }
    std::optional<std::string_view> get() const {
        if (!isOrdinary_) return std::nullopt;
        return std::string_view(characters_.data(), size_);
    }

 private:
    std::array<char, 40> characters_;
    std::size_t size_ = 0;
    bool isOrdinary_ = false;
};

/// What texts are made of mostly: digits alone, so few that a double holds them; -1 for other texts.
std::int64_t countOf(WStringView text) {
    constexpr std::size_t kMaxDigits = 15;
    if (text.empty() || text.size() > kMaxDigits) return -1;
    std::int64_t count = 0;
    for (const wchar_t c : text) {
        if (c < L'0' || c > L'9') return -1;
        count = 10 * count + (c - L'0');
    }
    return count;
}

}  // namespace

WString numberText(double value) {
    return std::isfinite(value) ? Convert::toDigits(value) : nonFinite(value);
}

WString shortNumberText(double value) {
    return std::isfinite(value) ? Convert::toString(value) : nonFinite(value);
}

WString decimalText(double value) {
    WString digits = numberText(value);
    if (!std::isfinite(value) || digits.find(L'e') == WString::npos) return digits;
    const NumberText fixed(value, std::chars_format::fixed);
    return WString(fixed.begin(), fixed.end());
}

double toDouble(WStringView text) {
    if (const std::int64_t count = countOf(text); count >= 0) return static_cast<double>(count);
    const NarrowText narrow(text);
    double value = 0.0;
    if (narrow.get() && Convert::tryToDouble(*narrow.get(), value)) return value;
    return Convert::toDouble(WString(text));
}

int toInt(WStringView text) {
    const NarrowText narrow(text);
    if (const auto digits = narrow.get()) {
        int value = 0;
        const char* const last = digits->data() + digits->size();
        const auto [end, error] = std::from_chars(digits->data(), last, value);
        if (error == std::errc() && end == last) return value;
    }
    return Convert::toInt(WString(text));
}

}  // namespace Tessel::PMML
