#include "serialization/pmml/wide_xml.h"

namespace rapidxml {

using Tessel::PMML::kMaxDepth;

template <>
template <>
void xml_document<wchar_t>::parse_bom<0>(wchar_t*& text) {
    if (text[0] == 0xEF && text[1] == 0xBB && text[2] == 0xBF) text += 3;
}

/// The character that a reference means, in one unit, or two where wide characters are UTF-16. A reference is
/// longer than that, so that the text never grows.
template <>
template <>
void xml_document<wchar_t>::insert_coded_character<0>(wchar_t*& text, unsigned long code) {
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code == 0 || isSurrogate || code > 0x10FFFF)
        throw parse_error("invalid numeric character entity", text);
    if (sizeof(wchar_t) == 2 && code >= 0x10000) {
        *text++ = static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10));
        code = 0xDC00 + ((code - 0x10000) & 0x3FF);
    }
    *text++ = static_cast<wchar_t>(code);
}

/// Parses all below an element and its closing tag. The open elements are the ancestors of `parent` up to
/// `element`: each is attached when it opens, so that the tree itself serves as the stack.
template <>
template <>
void xml_document<wchar_t>::parse_node_contents<0>(wchar_t*& text, xml_node<wchar_t>* element) {
    const auto endName = [](xml_node<wchar_t>* node) { node->name()[node->name_size()] = L'\0'; };
    xml_node<wchar_t>* parent = element;
    for (int depth = 1;;) {
        wchar_t* const start = text;
        // Half of a text may be indentation.
        if (*text == L'\n') ++text;
        while (text[0] == L'\t' && text[1] == L'\t' && text[2] == L'\t' && text[3] == L'\t') text += 4;
        skip<whitespace_pred, 0>(text);
        // The terminator behind a text may overwrite the character that ends it.
        wchar_t next = *text;
        if (next != L'<' && next != L'\0') next = parse_and_append_data<0>(parent, text, start);
        if (next == L'\0') throw parse_error("unexpected end of data", text);
        ++text;  // '<'

        if (*text == L'/') {
            ++text;
            skip<node_name_pred, 0>(text);
            skip<whitespace_pred, 0>(text);
            if (*text != L'>') throw parse_error("expected >", text);
            ++text;
            if (parent == element) return;  // its name is ended by the caller
            endName(parent);
            parent = parent->parent();
            --depth;
        } else if (*text == L'?' || *text == L'!') {
            if (xml_node<wchar_t>* const child = parse_node<0>(text)) parent->append_node(child);
        } else {
            xml_node<wchar_t>* const child = this->allocate_node(node_element);
            wchar_t* const name = text;
            skip<node_name_pred, 0>(text);
            if (text == name) throw parse_error("expected element name", text);
            child->name(name, static_cast<std::size_t>(text - name));
            skip<whitespace_pred, 0>(text);
            parse_node_attributes<0>(text, child);
            parent->append_node(child);
            if (*text == L'/') {
                ++text;
                if (*text != L'>') throw parse_error("expected >", text);
                ++text;
                endName(child);
            } else {
                if (*text != L'>') throw parse_error("expected >", text);
                ++text;
                if (++depth > kMaxDepth) throw parse_error("elements are nested too deeply", text);
                parent = child;
            }
        }
    }
}

}  // namespace rapidxml
