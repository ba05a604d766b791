#include "data/json_text.h"

#include <cmath>

#include <tessel/data/convert.h>

#include "data/number_text.h"

namespace Tessel::JSON {
namespace {

/// Units that stand in a JSON string as they are and need no check: all but controls, quotes, surrogates
/// and what lies above them.
bool isPlain(char32_t unit) {
    return (unit >= 0x20 && unit < 0x7F && unit != U'"' && unit != U'\\') ||
           (unit > 0x7F && unit < 0xD800 && unit != 0x2028 && unit != 0x2029);
}

void appendEscape(WString& json, char32_t unit) {
    constexpr wchar_t kHexDigits[] = L"0123456789abcdef";
    json += L"\\u";
    for (int shift = 12; shift >= 0; shift -= 4) json += kHexDigits[(unit >> shift) & 0xF];
}

void appendUnit(WString& json, wchar_t unit) {
    switch (unit) {
        case L'"':
            json += L"\\\"";
            return;
        case L'\\':
            json += L"\\\\";
            return;
        case L'\n':
            json += L"\\n";
            return;
        case L'\r':
            json += L"\\r";
            return;
        case L'\t':
            json += L"\\t";
            return;
        default:
            break;
    }
    const auto value = static_cast<char32_t>(unit);
    if (value < 0x20 || value == 0x7F || value == 0x2028 || value == 0x2029)
        appendEscape(json, value);
    else
        json += unit;
}

}  // namespace

void appendString(WString& json, WStringView text) {
    json += L'"';
    bool isChecked = false;
    std::size_t plainStart = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto unit = static_cast<char32_t>(text[i]);
        if (isPlain(unit)) continue;
        if (unit >= 0xD800 && !isChecked) {
            Convert::toUtf8(text);  // throws for units that are no Unicode text
            isChecked = true;
        }
        json.append(text, plainStart, i - plainStart);
        appendUnit(json, text[i]);
        plainStart = i + 1;
    }
    json.append(text, plainStart);
    json += L'"';
}

void appendNumber(WString& json, double value) {
    if (std::isnan(value)) {
        json += L"null";
    } else if (std::isinf(value)) {
        json += value > 0 ? L"\"Infinity\"" : L"\"-Infinity\"";
    } else if (value == 0.0) {
        json += std::signbit(value) ? L"-0.0" : L"0";
    } else {
        const NumberText text(value);
        json.append(text.begin(), text.end());
    }
}

}  // namespace Tessel::JSON
