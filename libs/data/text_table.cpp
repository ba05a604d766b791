#include "data/text_table.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <tessel/data/convert.h>

#include "data/number_text.h"

namespace Tessel {
namespace {

/// The number of code points; on platforms with 16-bit units the second unit of a pair does not count.
std::size_t numCodePoints(WStringView text) {
    if constexpr (sizeof(wchar_t) > 2) return text.size();
    const auto isSecondUnit = [](wchar_t unit) { return (static_cast<char32_t>(unit) & 0xFC00) == 0xDC00; };
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isSecondUnit));
}

bool isControl(wchar_t unit) {
    const auto value = static_cast<char32_t>(unit);
    return value < 0x20 || (value >= 0x7F && value < 0xA0) || value == 0x2028 || value == 0x2029;
}

}  // namespace

void TextTable::addColumn(std::vector<WString> texts, Align align) {
    std::size_t width = 0;
    for (WString& text : texts) {
        std::replace_if(text.begin(), text.end(), isControl, L' ');
        width = std::max(width, numCodePoints(text));
    }
    columns_.push_back({std::move(texts), width, align});
}

WString TextTable::toString() const {
    WString lines;
    const std::size_t numLines = columns_.empty() ? 0 : columns_.front().texts.size();
    for (std::size_t line = 0; line < numLines; ++line) {
        const std::size_t lineStart = lines.size();
        for (const Column& column : columns_) {
            const WString& text = column.texts[line];
            const std::size_t padding = column.width - numCodePoints(text);
            if (&column != &columns_.front()) lines += L"  ";
            if (column.align == Align::RIGHT) lines.append(padding, L' ');
            lines += text;
            if (column.align == Align::LEFT) lines.append(padding, L' ');
        }
        while (lines.size() > lineStart && lines.back() == L' ') lines.pop_back();
        lines += L'\n';
    }
    return lines;
}

WString TextTable::numberText(double value) {
    if (std::isnan(value)) return {};
    if (std::isinf(value)) return Convert::toString(value);
    // Whole numbers up to here are exact and have no digits that mean nothing.
    const bool isWhole = value == std::trunc(value) && std::abs(value) <= NumberText::kLargestPlain;
    const NumberText text = isWhole ? NumberText(value + 0.0, std::chars_format::fixed, 0)
                                    : NumberText(value, std::chars_format::general, 6);
    return WString(text.begin(), text.end());
}

}  // namespace Tessel
