#pragma once

#include <cstddef>
#include <cstdint>

#include <rapidxml/rapidxml.hpp>

#include <tessel/data/types.h>

// RapidXml for wide texts. Its character classes look at the low byte only and its parser recurses once per
// nesting level; the members replaced here classify whole characters, write character references as wide
// characters and parse nested elements in a loop. Include this header, never <rapidxml/...>, so that every
// source sees the same members.

namespace Tessel::PMML {

using Node = rapidxml::xml_node<wchar_t>;
using Attribute = rapidxml::xml_attribute<wchar_t>;

/// Elements nested deeper than this are refused by the parser. Trees of models stay far below; what walks a
/// parsed tree may rely on the limit.
constexpr int kMaxDepth = 50'000;

/// Whether a character is one of some below code 64, as all are that XML is split at: a bit of a word tells.
template <char... kCharacters>
constexpr bool isOneOf(wchar_t c) {
    static_assert(((kCharacters >= 0 && kCharacters < 64) && ...));
    constexpr std::uint64_t kBits = ((std::uint64_t{1} << kCharacters) | ...);
    const auto code = static_cast<std::uint32_t>(c);
    return code < 64 && (kBits >> code & 1) != 0;
}

/// Equality of short texts, faster than by the library's call.
constexpr bool isSameName(WStringView a, WStringView b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return false;
    return true;
}

/// The same with a literal, whose length is known: compilers do not measure wide ones beforehand.
template <std::size_t kSize>
constexpr bool isSameName(WStringView a, const wchar_t (&literal)[kSize]) {
    return isSameName(a, WStringView(literal, kSize - 1));
}

constexpr bool isXmlBlank(wchar_t c) { return isOneOf<' ', '\t', '\n', '\r'>(c); }

}  // namespace Tessel::PMML

namespace rapidxml {

// The predicates are true for characters that the parser may skip; all of them stop at the terminating zero.

template <>
struct xml_document<wchar_t>::whitespace_pred {
    static bool test(wchar_t c) { return Tessel::PMML::isXmlBlank(c); }
};

template <>
struct xml_document<wchar_t>::node_name_pred {
    static bool test(wchar_t c) {
        return !Tessel::PMML::isOneOf<' ', '\t', '\n', '\r', '\0', '/', '>', '?'>(c);
    }
};

template <>
struct xml_document<wchar_t>::attribute_name_pred {
    static bool test(wchar_t c) {
        return !Tessel::PMML::isOneOf<' ', '\t', '\n', '\r', '\0', '/', '>', '?', '<', '=', '!'>(c);
    }
};

template <>
struct xml_document<wchar_t>::text_pred {
    static bool test(wchar_t c) { return !Tessel::PMML::isOneOf<'\0', '<'>(c); }
};

template <>
struct xml_document<wchar_t>::text_pure_no_ws_pred {
    static bool test(wchar_t c) { return !Tessel::PMML::isOneOf<'\0', '<', '&'>(c); }
};

template <>
template <wchar_t kQuote>
struct xml_document<wchar_t>::attribute_value_pred {
    static bool test(wchar_t c) { return !Tessel::PMML::isOneOf<'\0', static_cast<char>(kQuote)>(c); }
};

template <>
template <wchar_t kQuote>
struct xml_document<wchar_t>::attribute_value_pure_pred {
    static bool test(wchar_t c) { return !Tessel::PMML::isOneOf<'\0', static_cast<char>(kQuote), '&'>(c); }
};

template <>
template <>
void xml_document<wchar_t>::parse_bom<0>(wchar_t*& text);

template <>
template <>
void xml_document<wchar_t>::insert_coded_character<0>(wchar_t*& text, unsigned long code);

template <>
template <>
void xml_document<wchar_t>::parse_node_contents<0>(wchar_t*& text, xml_node<wchar_t>* element);

}  // namespace rapidxml
