#pragma once

#include <tessel/data/types.h>

// Writing JSON straight into a text: for long arrays, where a tree of values would cost more than its text.
// Reading and trees of values are in "data/json_value.h".

namespace Tessel::JSON {

/// Appends a string with its quotes. Besides what JSON demands (quotes, backslash, control characters) the
/// line separators U+2028 and U+2029 and U+007F are escaped, so that the text is also valid JavaScript.
/// @throws InvalidEncoding for lone surrogates and values beyond Unicode.
void appendString(WString& json, WStringView text);

/// Appends a number in shortest round-trip form; NaN as null, infinities as the strings "Infinity" and
/// "-Infinity". A negative zero is written as -0.0, since readers take -0 for an integer and lose its sign.
void appendNumber(WString& json, double value);

/// Appends an array. @param appendElement  appends one element to `json`.
template <class Elements, class AppendElement>
void appendArray(WString& json, const Elements& elements, AppendElement appendElement) {
    json += L'[';
    bool isFirst = true;
    for (const auto& element : elements) {
        if (!isFirst) json += L',';
        isFirst = false;
        appendElement(json, element);
    }
    json += L']';
}

}  // namespace Tessel::JSON
