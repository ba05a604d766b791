#include "serialization/pmml/document.h"

#include <algorithm>
#include <utility>

#include "serialization/pmml/printer.h"

namespace Tessel::PMML {
namespace {

/// A text that was split into pieces carries this marker in front of each further piece.
constexpr WStringView kMarker = L"\n<!--Continued-->";

/// Looks for the exclamation mark, which is rarer than what is around it.
std::size_t findMarker(const WString& text, std::size_t begin) {
    constexpr std::size_t kMark = kMarker.find(L'!');
    for (std::size_t at = text.find(L'!', begin + kMark); at != WString::npos; at = text.find(L'!', at + 1))
        if (text.compare(at - kMark, kMarker.size(), kMarker) == 0) return at - kMark;
    return WString::npos;
}

void removeContinuations(WString& text) {
    std::size_t found = findMarker(text, 0);
    if (found == WString::npos) return;
    auto end = text.begin() + static_cast<std::ptrdiff_t>(found);
    while (found != WString::npos) {
        const std::size_t start = found + kMarker.size();
        found = findMarker(text, start);
        const std::size_t stop = std::min(found, text.size());
        end = std::copy(text.begin() + static_cast<std::ptrdiff_t>(start),
                        text.begin() + static_cast<std::ptrdiff_t>(stop), end);
    }
    text.erase(end, text.end());
}

}  // namespace

/// The parsed nodes point into the text they were parsed from; neither may move.
struct Document::Content {
    WString source;
    rapidxml::xml_document<wchar_t> tree;
};

Document::Document() : content_(std::make_unique<Content>()) {}
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

void Document::parse(WString text) {
    auto parsed = std::make_unique<Content>();
    parsed->source = std::move(text);
    removeContinuations(parsed->source);
    try {
        parsed->tree.parse<0>(parsed->source.data());
    } catch (const rapidxml::parse_error& error) {
        // The position would point into the text that is freed here.
        throw rapidxml::parse_error(error.what(), nullptr);
    }
    content_ = std::move(parsed);
}

WString Document::toString() const { return print(content_->tree, kMaxIndentation); }

Node* Document::getRoot() const { return getSubnode(&content_->tree, L"PMML"); }

void Document::appendNode(Node* node) { content_->tree.append_node(node); }

void Document::appendDeclaration() {
    Node* const declaration = content_->tree.allocate_node(rapidxml::node_declaration);
    appendAttribute(declaration, L"version", L"1.0");
    appendAttribute(declaration, L"encoding", L"utf-8");
    content_->tree.append_node(declaration);
}

const wchar_t* Document::copied(WStringView text) {
    wchar_t* const copy = content_->tree.allocate_string(nullptr, text.size() + 1);
    *std::copy(text.begin(), text.end(), copy) = L'\0';
    return copy;
}

Node* Document::allocateNode(WStringView name) {
    return content_->tree.allocate_node(rapidxml::node_element, copied(name), nullptr, name.size());
}

Node* Document::allocateNode(WStringView name, WStringView value) {
    Node* const node = allocateNode(name);
    node->value(copied(value), value.size());
    return node;
}

void Document::appendAttribute(Node* node, WStringView name, WStringView value) {
    node->append_attribute(
        content_->tree.allocate_attribute(copied(name), copied(value), name.size(), value.size()));
}

void Document::copyNode(const Node& from, Node& to) {
    const auto text = [&](const wchar_t* start, std::size_t size) {
        return copied(WStringView(start, size));
    };
    to.remove_all_nodes();
    to.remove_all_attributes();
    to.type(from.type());
    to.name(text(from.name(), from.name_size()), from.name_size());
    to.value(text(from.value(), from.value_size()), from.value_size());
    for (const Attribute* attribute = from.first_attribute(); attribute;
         attribute = attribute->next_attribute())
        appendAttribute(&to, WStringView(attribute->name(), attribute->name_size()),
                        WStringView(attribute->value(), attribute->value_size()));
}

Node* Document::clone(const Node* node) {
    return clone(node, content_->tree.allocate_node(rapidxml::node_element));
}

Node* Document::clone(const Node* node, Node* into) {
    copyNode(*node, *into);
    const Node* from = node;
    Node* parent = into;  // where the copy of the next node goes
    for (;;) {
        if (from->first_node()) {
            from = from->first_node();
        } else {
            // A node without children has no further use as a parent.
            while (from != node && !from->next_sibling()) {
                from = from->parent();
                parent = parent->parent();
            }
            if (from == node) return into;
            from = from->next_sibling();
            parent = parent->parent();
        }
        Node* const copy = content_->tree.allocate_node(rapidxml::node_element);
        copyNode(*from, *copy);
        parent->append_node(copy);
        parent = copy;
    }
}

}  // namespace Tessel::PMML
