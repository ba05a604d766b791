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

/// Whether an ASCII character stands in `kCharacters`; no other character does.
template <char... kCharacters>
constexpr bool isOneOf(wchar_t c) {
    return ((c == static_cast<wchar_t>(kCharacters)) || ...);
}

/// Equality of short texts, faster than by the library's call.
constexpr bool isSameName(WStringView a, WStringView b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return false;
    return true;
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
        return !Tessel::PMML::isXmlBlank(c) && !Tessel::PMML::isOneOf<'\0', '/', '>', '?'>(c);
    }
};

template <>
struct xml_document<wchar_t>::attribute_name_pred {
    static bool test(wchar_t c) {
        return !Tessel::PMML::isXmlBlank(c) && !Tessel::PMML::isOneOf<'\0', '/', '>', '?', '<', '=', '!'>(c);
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
    static bool test(wchar_t c) { return c != L'\0' && c != kQuote; }
};

template <>
template <wchar_t kQuote>
struct xml_document<wchar_t>::attribute_value_pure_pred {
    static bool test(wchar_t c) { return c != L'\0' && c != kQuote && c != L'&'; }
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
