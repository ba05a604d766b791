#pragma once

#include <optional>
#include <span>

#include <tessel/synthetic_data_generator.h>

// The enums of the generator in their three vocabularies: values, display names and the keywords of texts.

namespace Tessel::SyntheticDataGeneration {

template <class E>
struct Term {
    E value;
    const wchar_t* name;
    const wchar_t* keyword;
};

/// All values of an enum, in their order.
template <class E>
std::span<const Term<E>> vocabulary();
template <>
std::span<const Term<CopulaType>> vocabulary();
template <>
std::span<const Term<CorrelationType>> vocabulary();
template <>
std::span<const Term<GoodnessOfFitType>> vocabulary();
template <>
std::span<const Term<RandomGeneratorType>> vocabulary();
template <>
std::span<const Term<SamplingMethodType>> vocabulary();
template <>
std::span<const Term<RandomStreamType>> vocabulary();

template <class E>
const Term<E>* termOf(E value) {
    for (const Term<E>& term : vocabulary<E>())
        if (term.value == value) return &term;
    return nullptr;
}

/// Empty for a value outside the enum.
template <class E>
WString nameOf(E value) {
    const Term<E>* term = termOf(value);
    return term ? term->name : L"";
}
template <class E>
WString keywordOf(E value) {
    const Term<E>* term = termOf(value);
    return term ? term->keyword : L"";
}
template <class E>
std::optional<E> ofKeyword(WStringView keyword) {
    for (const Term<E>& term : vocabulary<E>())
        if (term.keyword == keyword) return term.value;
    return std::nullopt;
}

}  // namespace Tessel::SyntheticDataGeneration
