#include "serialization/pmml/printer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

namespace Tessel::PMML {
namespace {

constexpr bool kWideIsUtf16 = sizeof(wchar_t) == 2;

[[noreturn]] void refuse(char32_t unit) {
    std::array<char, 8> digits;
    char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<std::uint32_t>(unit), 16).ptr;
    throw ConstraintViolation("PMML text",
                              "XML cannot carry the character 0x" + std::string(digits.data(), end));
}

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Passes the characters of the production Char of XML 1.0; `text` starts with the one to look at.
void checkCharacter(WStringView text, std::size_t position) {
    const auto unitAt = [&](std::size_t i) { return static_cast<char32_t>(text[i]); };
    const char32_t unit = unitAt(position);
    if (unit < 0x20) {
        if (unit != '\t' && unit != '\n' && unit != '\r') refuse(unit);
    } else if (unit >= 0xD800) {
        if (isHighSurrogate(unit)) {
            const bool isPair = position + 1 < text.size() && isLowSurrogate(unitAt(position + 1));
            if (!kWideIsUtf16 || !isPair) refuse(unit);
        } else if (isLowSurrogate(unit)) {
            if (!kWideIsUtf16 || position == 0 || !isHighSurrogate(unitAt(position - 1))) refuse(unit);
        } else if (unit == 0xFFFE || unit == 0xFFFF || unit > 0x10FFFF) {
            refuse(unit);
        }
    }
}

bool isAsciiLetter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }

/// Letters, digits and a few signs, not starting with a digit or sign; beyond ASCII everything is taken.
bool isXmlName(WStringView name) {
    const auto isStart = [](wchar_t c) { return isAsciiLetter(c) || c == L'_' || c == L':' || c > L'\x7F'; };
    return !name.empty() && isStart(name.front()) && std::all_of(name.begin(), name.end(), [&](wchar_t c) {
        return isStart(c) || (c >= L'0' && c <= L'9') || c == L'-' || c == L'.';
    });
}

template <class Base>
WStringView nameOf(const Base& base) {
    return WStringView(base.name(), base.name_size());
}

template <class Base>
WStringView valueOf(const Base& base) {
    return WStringView(base.value(), base.value_size());
}

const Node* soleChild(const Node& node) {
    const Node* const child = node.first_node();
    return child && !child->next_sibling() ? child : nullptr;
}

class Printer {
 public:
    explicit Printer(int maxIndentation) : maxIndentation_(maxIndentation) {}

    /// Walks the tree in document order; what stands open is the chain of ancestors of `node`.
    WString print(const Node& top) {
        const Node* node = &top;
        for (;;) {
            if (open(*node)) {
                node = node->first_node();
                continue;
            }
            for (;;) {
                text_ += L'\n';
                if (node == &top) return std::move(text_);
                if (const Node* const next = node->next_sibling()) {
                    node = next;
                    break;
                }
                node = node->parent();
                close(*node);
            }
        }
    }

 private:
    /// Writes a node as far as its children; true when these come next, on lines of their own.
    bool open(const Node& node) {
        if (node.type() == rapidxml::node_document) return node.first_node() != nullptr;
        indent();
        switch (node.type()) {
            case rapidxml::node_element:
                return openElement(node);
            case rapidxml::node_data:
                writeText(valueOf(node));
                break;
            case rapidxml::node_cdata:
                writeVerbatim(L"<![CDATA[", valueOf(node), L"]]>");
                break;
            case rapidxml::node_comment:
                writeVerbatim(L"<!--", valueOf(node), L"-->");
                break;
            case rapidxml::node_doctype:
                writeVerbatim(L"<!DOCTYPE ", valueOf(node), L">");
                break;
            case rapidxml::node_pi:
                text_ += L"<?";
                writeName(nameOf(node));
                writeVerbatim(L" ", valueOf(node), L"?>");
                break;
            default:  // the declaration
                text_ += L"<?xml";
                writeAttributes(node);
                text_ += L"?>";
        }
        return false;
    }

    bool openElement(const Node& node) {
        text_ += L'<';
        writeName(nameOf(node));
        writeAttributes(node);
        const Node* const sole = soleChild(node);
        if (!node.first_node() && node.value_size() == 0) {
            text_ += L"/>";
        } else if (!node.first_node() || (sole && sole->type() == rapidxml::node_data)) {
            text_ += L'>';
            writeText(valueOf(sole ? *sole : node));
            endTag(node);
        } else {
            text_ += L">\n";
            ++depth_;
            return true;
        }
        return false;
    }

    void close(const Node& node) {
        if (node.type() == rapidxml::node_document) return;
        --depth_;
        indent();
        endTag(node);
    }

    void endTag(const Node& node) {
        text_ += L"</";
        text_ += nameOf(node);
        text_ += L'>';
    }

    void indent() { text_.append(static_cast<std::size_t>(std::min(depth_, maxIndentation_)), L'\t'); }

    void writeName(WStringView name) {
        if (!isXmlName(name))
            throw ConstraintViolation("PMML text", '"' + Convert::toUtf8Lossy(name) + "\" is no XML name");
        text_ += name;
    }

    void writeAttributes(const Node& node) {
        for (const Attribute* attribute = node.first_attribute(); attribute;
             attribute = attribute->next_attribute()) {
            const WStringView value = valueOf(*attribute);
            const bool hasQuote = value.find(L'"') != WStringView::npos;
            const wchar_t quote = hasQuote ? L'\'' : L'"';
            text_ += L' ';
            writeName(nameOf(*attribute));
            text_ += L'=';
            text_ += quote;
            // The other kind of quote needs no escape.
            writeEscaped(value, hasQuote ? L'"' : L'\'', L"\t\n\r");
            text_ += quote;
        }
    }

    void writeText(WStringView text) {
        const bool isBlank = std::all_of(text.begin(), text.end(), isXmlBlank);
        if (isBlank && !text.empty()) {
            writeReference(text.front());
            text.remove_prefix(1);
        }
        writeEscaped(text, L'\0', L"\r");
    }

    /// @param plain       a character that needs no escape here
    /// @param references  further characters that are written as references
    void writeEscaped(WStringView text, wchar_t plain, WStringView references) {
        std::size_t start = 0;  // of the run of characters that are written as they are
        for (std::size_t i = 0; i < text.size(); ++i) {
            const wchar_t c = text[i];
            if (c > L'>' && c < 0xD800) continue;  // most characters are beyond all that need a look
            checkCharacter(text, i);
            const WStringView entity = c == plain ? WStringView() : entityOf(c);
            const bool isReference = c < L' ' && references.find(c) != WStringView::npos;
            if (entity.empty() && !isReference) continue;
            text_ += text.substr(start, i - start);
            start = i + 1;
            if (isReference)
                writeReference(c);
            else
                text_ += entity;
        }
        text_ += text.substr(start);
    }

    static WStringView entityOf(wchar_t c) {
        switch (c) {
            case L'<':
                return L"&lt;";
            case L'>':
                return L"&gt;";
            case L'&':
                return L"&amp;";
            case L'"':
                return L"&quot;";
            case L'\'':
                return L"&apos;";
            default:
                return {};
        }
    }

    void writeReference(wchar_t c) {
        text_ += L"&#";
        text_ += Convert::toString(static_cast<int>(c));
        text_ += L';';
    }

    void writeVerbatim(WStringView before, WStringView text, WStringView after) {
        for (std::size_t i = 0; i < text.size(); ++i) checkCharacter(text, i);
        text_ += before;
        text_ += text;
        text_ += after;
    }

    int maxIndentation_;
    int depth_ = 0;
    WString text_;
};

}  // namespace

WString print(const Node& node, int maxIndentation) { return Printer(maxIndentation).print(node); }

}  // namespace Tessel::PMML
