#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "engine/dt/model.h"

namespace Tessel::Engine::DT {

namespace {

constexpr int kMaxIndentedLevels = 40;

WString widen(const char* first, const char* last) { return WString(first, last); }

WString numberText(double number, std::chars_format format, int precision) {
    std::array<char, 512> buffer{};  // a double has at most 309 digits before the point
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, format,
                                   std::clamp(precision, 0, 17));
    return widen(buffer.data(), end.ptr);
}

/// So many significant digits, but always the first decimal: days such as 20230115.5 are told apart.
WString numberText(double number, const TextLayout& layout) {
    const double magnitude = std::abs(number);
    const int numWholeDigits = magnitude < 1.0 ? 1 : static_cast<int>(std::log10(magnitude)) + 1;
    const int numDigits = std::clamp(numWholeDigits + 1, std::clamp(layout.numDigits, 1, 17), 17);
    return numberText(number, std::chars_format::general, numDigits);
}

WString integerText(std::int64_t number) {
    std::array<char, 24> buffer{};
    return widen(buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr);
}

WString nameOr(const std::vector<WString>& names, std::int32_t position, const wchar_t* prefix) {
    const auto index = static_cast<std::size_t>(position);
    return index < names.size() ? names[index] : prefix + integerText(position);
}

/// How a record gets from a decision node to one of its children.
WString conditionText(const Tree& tree, const Node& parent, bool isLeft, const TextLayout& layout,
                      const Names& names) {
    const WString feature = nameOr(names.features, parent.feature, L"Feature ");
    if (parent.categorySet < 0)
        return feature + (isLeft ? L" < " : L" >= ") + numberText(parent.threshold, layout);
    static const std::vector<WString> kNoNames;
    const auto index = static_cast<std::size_t>(parent.feature);
    const std::vector<WString>& categories =
        index < names.categories.size() ? names.categories[index] : kNoNames;
    WString text = feature + (isLeft ? L" in {" : L" not in {");
    const char* separator = "";
    for (const std::int32_t code : tree.categorySets[static_cast<std::size_t>(parent.categorySet)]) {
        text += WString(separator, separator + std::char_traits<char>::length(separator));
        text += nameOr(categories, code, L"Category ");
        separator = ", ";
    }
    return text + L"}";
}

/// @param code  the class that the node answers with
WString classText(const Tree& tree, std::int32_t position, std::int32_t code, const TextLayout& layout,
                  const Names& names) {
    const Node& node = tree.nodes[static_cast<std::size_t>(position)];
    return nameOr(names.classes, code, L"Class ") + L" (" +
           numberText(tree.classWeightsOf(position)[code] / node.weight, std::chars_format::fixed,
                      layout.numShareDecimals) +
           L")";
}

}  // namespace

std::int32_t Model::labelOf(std::int32_t node) const {
    return static_cast<std::int32_t>(tree_.nodes[static_cast<std::size_t>(node)].response);
}

WString Model::toString(int numLevels, const TextLayout& layout, const Names& names) const {
    if (!isFitted()) return {};
    struct Line {
        std::int32_t node;
        int level;
    };
    WString text;
    std::vector<Line> stack{{0, 0}};
    while (!stack.empty()) {
        const auto [position, level] = stack.back();
        stack.pop_back();
        const Node& node = tree_.nodes[static_cast<std::size_t>(position)];
        const int indentation = std::max(0, layout.indentation) * std::min(level, kMaxIndentedLevels);
        text.append(static_cast<std::size_t>(indentation), L' ');
        text += integerText(std::int64_t{position} + layout.firstNumber) + L") ";
        if (position == 0) {
            text += L"root";
        } else {
            const Node& parent = tree_.nodes[static_cast<std::size_t>(node.parent)];
            text += conditionText(tree_, parent, parent.left == position, layout, names);
        }
        text += L"  n = " + integerText(node.numRecords) + L"  ";
        text += tree_.numClasses == 0 ? numberText(node.response, layout)
                                      : classText(tree_, position, labelOf(position), layout, names);
        text += isLeaf(position) ? L" *\n" : L"\n";
        if (isLeaf(position) || level >= numLevels) continue;
        stack.push_back({node.right(), level + 1});
        stack.push_back({node.left, level + 1});
    }
    return text;
}

}  // namespace Tessel::Engine::DT
