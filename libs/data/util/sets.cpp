#include <cmath>
#include <limits>
#include <numeric>

#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>

#include "data/case_folding.h"
#include "data/column_access.h"
#include "data/util/distinct_numbers.h"

namespace Tessel::Util {
namespace {

bool isMissing(double value) { return std::isnan(value); }
bool isMissing(int) { return false; }

template <class Number>
std::vector<Number> distinctNumbers(std::span<const Number> values) {
    DistinctNumbers<Number> distinct;
    for (const Number value : values)
        if (!isMissing(value)) distinct.encode(value);
    return std::move(distinct).distinct();
}

std::vector<WString> distinctTexts(const StringVector& texts) {
    TextEncoder encoder;
    for (const WString& text : texts) encoder.encode(text);
    return encoder.finish()->levels();
}

template <class Sequence, class T>
Sequence named(std::vector<T> elements, const WString& name) {
    Sequence sequence(std::move(elements));
    sequence.setName(name);
    return sequence;
}

template <class Sequence>
bool allIn(const Sequence& x, const Sequence& y) {
    // What x adds to the distinct elements of y is what y lacks.
    Sequence both = uniqueElements(y);
    const std::size_t numKnown = both.size();
    both.append(x);
    return uniqueElements(both).size() == numKnown;
}

template <class Sequence>
Sequence elementsAt(const Sequence& elements, const IntVector& positions) {
    Sequence bound;
    bound.reserve(positions.size());
    for (const int position : positions) {
        if (position < 0) throw IndexOutOfRange(position, static_cast<std::int64_t>(elements.size()));
        bound.push_back(elements.at(static_cast<std::size_t>(position)));
    }
    bound.setName(elements.getName());
    return bound;
}

template <class Sequence>
WString joined(const Sequence& elements, const WString& separator, const WString& opening,
               const WString& closing) {
    WString text = opening;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (i > 0) text += separator;
        text += Convert::toString(elements[i]);
    }
    return text + closing;
}

}  // namespace

// ---- sets

Vector uniqueElements(const Vector& values) {
    return named<Vector>(distinctNumbers<double>(values.elements()), values.getName());
}

IntVector uniqueElements(const IntVector& values) {
    return named<IntVector>(distinctNumbers<int>(values.elements()), values.getName());
}

StringVector uniqueElements(const StringVector& texts) {
    return named<StringVector>(distinctTexts(texts), texts.getName());
}

StringVector uniqueElements(const DataFrameColumn& column) {
    const ColumnCells& cells = *ColumnAccess::cells(column);
    StringVector distinct;
    distinct.setName(column.getName());
    if (cells.isNumeric()) {
        for (const double number : distinctNumbers(cells.numbers()))
            distinct.push_back(Convert::toString(number));
    } else {
        for (const std::int32_t code : cells.presentCodes()) distinct.push_back(cells.dictionary()[code]);
    }
    return distinct;
}

int numUniqueElements(const Vector& values) {
    return static_cast<int>(distinctNumbers<double>(values.elements()).size());
}
int numUniqueElements(const IntVector& values) {
    return static_cast<int>(distinctNumbers<int>(values.elements()).size());
}
int numUniqueElements(const StringVector& texts) { return static_cast<int>(distinctTexts(texts).size()); }
int numUniqueElements(const DataFrameColumn& column) {
    const ColumnCells& cells = *ColumnAccess::cells(column);
    return static_cast<int>(cells.isNumeric() ? distinctNumbers(cells.numbers()).size()
                                              : cells.presentCodes().size());
}

StringVector intersection(const StringVector& a, const StringVector& b, bool caseSensitive) {
    const auto key = [&](const WString& text) { return caseSensitive ? text : foldCase(text); };
    TextEncoder encoder;
    std::vector<bool> isWanted;  // per code: a text of b that was not taken yet
    for (const WString& text : b)
        if (encoder.encode(key(text)) == static_cast<std::int32_t>(isWanted.size())) isWanted.push_back(true);
    StringVector common;
    for (const WString& text : a) {
        const std::int32_t code = encoder.encode(key(text));
        if (code == kMissingCode || static_cast<std::size_t>(code) >= isWanted.size()) continue;
        if (isWanted[static_cast<std::size_t>(code)]) common.push_back(text);
        isWanted[static_cast<std::size_t>(code)] = false;
    }
    return common;
}

bool uniqueElementsOfXexistInY(const Vector& x, const Vector& y) { return allIn(x, y); }
bool uniqueElementsOfXexistInY(const IntVector& x, const IntVector& y) { return allIn(x, y); }
bool uniqueElementsOfXexistInY(const StringVector& x, const StringVector& y) { return allIn(x, y); }

// ---- elements and texts

Vector bind(const Vector& values, const IntVector& positions) { return elementsAt(values, positions); }
IntVector bind(const IntVector& values, const IntVector& positions) { return elementsAt(values, positions); }
StringVector bind(const StringVector& texts, const IntVector& positions) {
    return elementsAt(texts, positions);
}

IntVector range(int from, int to) {
    if (to < from) return {};
    IntVector numbers(static_cast<std::size_t>(static_cast<std::int64_t>(to) - from + 1));
    // Counting in steps rather than with iota, which would step beyond the largest int.
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = static_cast<int>(from + static_cast<std::int64_t>(i));
    return numbers;
}

StringVector generateNames(const WString& prefix, int from, int count) {
    if (count < 0) throw ValueOutOfRange("Count", 0, std::numeric_limits<int>::max());
    StringVector names;
    names.reserve(static_cast<std::size_t>(count));
    for (long long number = from; number < static_cast<long long>(from) + count; ++number)
        names.push_back(prefix + std::to_wstring(number));
    return names;
}

WString join(const StringVector& texts, const WString& separator, const WString& opening,
             const WString& closing) {
    return joined(texts, separator, opening, closing);
}
WString join(const IntVector& values, const WString& separator, const WString& opening,
             const WString& closing) {
    return joined(values, separator, opening, closing);
}
WString join(const Vector& values, const WString& separator, const WString& opening, const WString& closing) {
    return joined(values, separator, opening, closing);
}

}  // namespace Tessel::Util
