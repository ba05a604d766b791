#pragma once

#include <map>
#include <vector>

#include "framework/parameter.h"
#include "synthetic/vocabulary.h"

// The kinds of parameters that only the generator has.

namespace Tessel::SyntheticDataGeneration {

/// A member of an enum with keywords: they stand in texts, display names in tables.
template <class E>
class KeywordParameter : public EnumParameter<E> {
 public:
    KeywordParameter(WString name, WString description, E defaultValue)
        : EnumParameter<E>(std::move(name), std::move(description), defaultValue, names()) {}

 protected:
    web::json::value valueToJSON(const E& value) const override { return JSON::fromText(keywordOf(value)); }
    std::optional<E> valueFromJSON(const web::json::value& json) const override {
        const std::optional<WString> keyword = ParameterType<WString>::fromJSON(json);
        return keyword ? ofKeyword<E>(*keyword) : std::nullopt;
    }

 private:
    static typename EnumParameter<E>::ValueNames names() {
        typename EnumParameter<E>::ValueNames names;
        for (const Term<E>& term : vocabulary<E>()) names[term.value] = term.name;
        return names;
    }
};

/// What the values of single columns are; specialised for the three kinds that there are.
template <class T>
struct ColumnValue;

// word: the parameter's type in tables. text, toJSON, fromJSON, constraints: as those of parameters. require:
// throws for a value outside its range or set.
#define TESSEL_COLUMN_VALUE(T, WORD)                                    \
    template <>                                                         \
    struct ColumnValue<T> {                                             \
        static constexpr const wchar_t* word = WORD;                    \
        static WString text(T value);                                   \
        static WString constraints();                                   \
        static web::json::value toJSON(T value);                        \
        static std::optional<T> fromJSON(const web::json::value& json); \
        static void require(const std::string& parameter, T value);     \
    }
TESSEL_COLUMN_VALUE(int, L"NumMetalogTerms");
TESSEL_COLUMN_VALUE(double, L"Bound");
TESSEL_COLUMN_VALUE(GoodnessOfFitType, L"GoodnessOfFit");
#undef TESSEL_COLUMN_VALUE

template <class T>
using ByColumn = std::map<WString, T>;

/// Values of single columns by name, all of one kind.
template <class T>
class ColumnParameter : public BasicParameter<ByColumn<T>> {
 public:
    ColumnParameter(WString name, WString description)
        : BasicParameter<ByColumn<T>>(std::move(name), std::move(description), {}) {}

    void setFor(const WString& column, T value) {
        ByColumn<T> values = this->get();
        values[column] = value;
        this->set(values);
    }
    T getFor(const WString& column, T fallback) const {
        const auto found = this->get().find(column);
        return found != this->get().end() ? found->second : fallback;
    }
    bool isSetFor(const WString& column) const { return this->get().contains(column); }

    void validate() const override {
        for (const auto& [column, value] : this->get())
            ColumnValue<T>::require(this->getNarrowDescription(), value);
    }

 protected:
    WString typeWord() const override { return ColumnValue<T>::word; }
    WString admissibleValues() const override { return ColumnValue<T>::constraints(); }
    WString valueText(const ByColumn<T>& values) const override {
        StringVector entries;
        for (const auto& [column, value] : values)
            entries.push_back(column + L": " + ColumnValue<T>::text(value));
        return entries.toString();
    }
    web::json::value valueToJSON(const ByColumn<T>& values) const override {
        web::json::value object = web::json::value::object(true);
        for (const auto& [column, value] : values)
            object[JSON::toNative(column)] = ColumnValue<T>::toJSON(value);
        return object;
    }
    std::optional<ByColumn<T>> valueFromJSON(const web::json::value& json) const override {
        if (!json.is_object()) return std::nullopt;
        ByColumn<T> values;
        for (const auto& [column, member] : json.as_object()) {
            const std::optional<T> value = ColumnValue<T>::fromJSON(member);
            if (!value) return std::nullopt;
            values[JSON::fromNative(column)] = *value;
        }
        return values;
    }
};

using Copulas = std::vector<CopulaType>;

/// Copulas in the order in which they were selected, each once.
class CopulasParameter : public BasicParameter<Copulas> {
 public:
    CopulasParameter(WString name, WString description)
        : BasicParameter(std::move(name), std::move(description), {}) {}

    void select(CopulaType type, bool isSelected);
    bool isSelected(CopulaType type) const;

    /// @throws ConstraintViolation for what is no copula.
    void validate() const override;
    /// A member per copula, such as "claytonCopula", that tells whether it is selected.
    void writeFlags(web::json::value& parameters) const;
    /// Without a member of its name reads those, in the order of the enum.
    void fromJSON(const web::json::value& parameters) override;

 protected:
    WString typeWord() const override { return L"Copulas"; }
    WString valueText(const Copulas& copulas) const override;
    WString admissibleValues() const override;
    web::json::value valueToJSON(const Copulas& copulas) const override;
    std::optional<Copulas> valueFromJSON(const web::json::value& json) const override;
};

}  // namespace Tessel::SyntheticDataGeneration
