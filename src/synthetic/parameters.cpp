#include "synthetic/parameters.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/dist/metalog.h"

namespace Tessel::SyntheticDataGeneration {
namespace {

using Engine::Dist::kMaxMetalogTerms;
using Engine::Dist::kMinMetalogTerms;
using web::json::value;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class E>
WString joinedNames(std::span<const Term<E>> terms) {
    WString names;
    for (const Term<E>& term : terms) names += (names.empty() ? L"" : L", ") + WString(term.name);
    return L"{" + names + L"}";
}

[[noreturn]] void throwNoSetMember(const std::string& parameter) {
    throw ConstraintViolation(parameter, "The value must be a pre-defined set member.");
}

/// The vocabulary without NONE.
std::span<const Term<CopulaType>> selectableCopulas() { return vocabulary<CopulaType>().subspan(1); }

/// "claytonCopula" of "CLAYTON".
WString flagOf(const Term<CopulaType>& term) {
    WString key = term.keyword;
    for (wchar_t& letter : key) letter = static_cast<wchar_t>(letter - L'A' + L'a');
    return key + L"Copula";
}

}  // namespace

// ---- values of single columns

WString ColumnValue<int>::text(int number) { return ParameterType<int>::text(number); }
WString ColumnValue<int>::constraints() {
    return L"[" + text(kMinMetalogTerms) + L", " + text(kMaxMetalogTerms) + L"]";
}
value ColumnValue<int>::toJSON(int number) { return ParameterType<int>::toJSON(number); }
std::optional<int> ColumnValue<int>::fromJSON(const value& json) {
    return ParameterType<int>::fromJSON(json);
}
void ColumnValue<int>::require(const std::string& parameter, int number) {
    if (number < kMinMetalogTerms || number > kMaxMetalogTerms)
        throw ValueOutOfRange(parameter, kMinMetalogTerms, kMaxMetalogTerms);
}

WString ColumnValue<double>::text(double number) { return ParameterType<double>::text(number); }
WString ColumnValue<double>::constraints() {
    return L"[" + text(-kInfinity) + L", " + text(kInfinity) + L"]";
}
value ColumnValue<double>::toJSON(double number) { return ParameterType<double>::toJSON(number); }
std::optional<double> ColumnValue<double>::fromJSON(const value& json) {
    return ParameterType<double>::fromJSON(json);
}
void ColumnValue<double>::require(const std::string& parameter, double number) {
    if (std::isnan(number)) throw ValueOutOfRange(parameter, -kInfinity, kInfinity);
}

WString ColumnValue<GoodnessOfFitType>::text(GoodnessOfFitType type) { return nameOf(type); }
WString ColumnValue<GoodnessOfFitType>::constraints() { return joinedNames(vocabulary<GoodnessOfFitType>()); }
value ColumnValue<GoodnessOfFitType>::toJSON(GoodnessOfFitType type) {
    return JSON::fromText(keywordOf(type));
}
std::optional<GoodnessOfFitType> ColumnValue<GoodnessOfFitType>::fromJSON(const value& json) {
    const std::optional<WString> keyword = ParameterType<WString>::fromJSON(json);
    return keyword ? ofKeyword<GoodnessOfFitType>(*keyword) : std::nullopt;
}
void ColumnValue<GoodnessOfFitType>::require(const std::string& parameter, GoodnessOfFitType type) {
    if (!termOf(type)) throwNoSetMember(parameter);
}

// ---- selected copulas

void CopulasParameter::select(CopulaType type, bool isToBeSelected) {
    if (isToBeSelected == isSelected(type)) return;
    Copulas copulas = get();
    if (isToBeSelected)
        copulas.push_back(type);
    else
        copulas.erase(std::find(copulas.begin(), copulas.end(), type));
    set(copulas);
}

bool CopulasParameter::isSelected(CopulaType type) const {
    return std::find(get().begin(), get().end(), type) != get().end();
}

void CopulasParameter::validate() const {
    for (const CopulaType type : get())
        if (type == CopulaType::NONE || !termOf(type)) throwNoSetMember(getNarrowDescription());
}

void CopulasParameter::writeFlags(value& parameters) const {
    if (!isSet()) return;
    for (const Term<CopulaType>& term : selectableCopulas())
        parameters[JSON::toNative(flagOf(term))] = value::boolean(isSelected(term.value));
}

void CopulasParameter::fromJSON(const value& parameters) {
    if (findMember(parameters, getName())) return BasicParameter::fromJSON(parameters);
    Copulas copulas;
    bool isAnyGiven = false;
    for (const Term<CopulaType>& term : selectableCopulas()) {
        const value* const flag = findMember(parameters, flagOf(term));
        if (!flag || !flag->is_boolean()) continue;
        isAnyGiven = true;
        if (flag->as_bool()) copulas.push_back(term.value);
    }
    if (isAnyGiven) set(copulas);
}

WString CopulasParameter::valueText(const Copulas& copulas) const {
    StringVector names;
    for (const CopulaType type : copulas) names.push_back(nameOf(type));
    return names.toString();
}

WString CopulasParameter::admissibleValues() const { return joinedNames(selectableCopulas()); }

value CopulasParameter::valueToJSON(const Copulas& copulas) const {
    std::vector<value> keywords;
    for (const CopulaType type : copulas) keywords.push_back(JSON::fromText(keywordOf(type)));
    return value::array(std::move(keywords));
}

std::optional<Copulas> CopulasParameter::valueFromJSON(const value& json) const {
    if (!json.is_array()) return std::nullopt;
    Copulas copulas;
    for (const value& element : json.as_array()) {
        const std::optional<WString> keyword = ParameterType<WString>::fromJSON(element);
        const auto type = keyword ? ofKeyword<CopulaType>(*keyword) : std::nullopt;
        if (!type) return std::nullopt;
        if (std::find(copulas.begin(), copulas.end(), *type) == copulas.end()) copulas.push_back(*type);
    }
    return copulas;
}

}  // namespace Tessel::SyntheticDataGeneration
