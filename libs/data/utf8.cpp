#include <tessel/data/convert.h>

// UTF-8 by the table of well-formed byte sequences in the Unicode standard (table 3-7): no overlong forms,
// no surrogates, nothing beyond U+10FFFF.

namespace Tessel::Convert {
namespace {

constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;
constexpr char32_t kReplacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Reads the code point at `position` and moves behind it; false for units that are no Unicode text.
bool nextCodePoint(WStringView text, std::size_t& position, char32_t& codePoint) {
    codePoint = static_cast<char32_t>(text[position++]);
    if constexpr (kWideIsUtf16) {
        codePoint &= 0xFFFF;
        if (isHighSurrogate(codePoint) && position < text.size()) {
            const char32_t low = static_cast<char32_t>(text[position]) & 0xFFFF;
            if (isLowSurrogate(low)) {
                ++position;
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
                return true;
            }
        }
    }
    return codePoint <= 0x10FFFF && !isHighSurrogate(codePoint) && !isLowSurrogate(codePoint);
}

void appendUtf8(std::string& bytes, char32_t codePoint) {
    const auto tail = [&](int shift) { bytes += static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        bytes += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        bytes += static_cast<char>(0xC0 | (codePoint >> 6));
        tail(0);
    } else if (codePoint < 0x10000) {
        bytes += static_cast<char>(0xE0 | (codePoint >> 12));
        tail(6);
        tail(0);
    } else {
        bytes += static_cast<char>(0xF0 | (codePoint >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

void appendWide(WString& text, char32_t codePoint) {
    if (kWideIsUtf16 && codePoint >= 0x10000) {
        text += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        text += static_cast<wchar_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
    } else {
        text += static_cast<wchar_t>(codePoint);
    }
}

/// The number of bytes of the well-formed sequence at the start of `bytes`, its value in `codePoint`; 0 when
/// there is none.
std::size_t decode(std::string_view bytes, char32_t& codePoint) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                               : (lead & 0xF0) == 0xE0        ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || bytes.size() < length) return 0;
    codePoint = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
        codePoint = (codePoint << 6) | (byte(i) & 0x3Fu);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isWellFormed = codePoint >= kSmallest[length] && codePoint <= 0x10FFFF &&
                              !isHighSurrogate(codePoint) && !isLowSurrogate(codePoint);
    return isWellFormed ? length : 0;
}

}  // namespace

std::string toUtf8(WStringView text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        char32_t codePoint = 0;
        if (!nextCodePoint(text, position, codePoint)) throw InvalidEncoding("Unicode", start);
        appendUtf8(bytes, codePoint);
    }
    return bytes;
}

std::string toUtf8Lossy(WStringView text) {
    std::string bytes;
    for (std::size_t position = 0; position < text.size();) {
        char32_t codePoint = 0;
        appendUtf8(bytes, nextCodePoint(text, position, codePoint) ? codePoint : kReplacement);
    }
    return bytes;
}

WString fromUtf8(std::string_view bytes) {
    WString text;
    text.reserve(bytes.size());
    for (std::size_t position = 0; position < bytes.size();) {
        char32_t codePoint = 0;
        const std::size_t length = decode(bytes.substr(position), codePoint);
        if (length == 0) throw InvalidEncoding("UTF-8", position);
        appendWide(text, codePoint);
        position += length;
    }
    return text;
}

}  // namespace Tessel::Convert
