#pragma once

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <boost/variant.hpp>

#include <tessel/data/data_frame.h>
#include <tessel/data/errors.h>

#include "data/json_value.h"

// Parameters: a value with a key, a display name and a default, that knows how to describe, check, write and
// read itself. An estimator declares each parameter once, as a member, and lists its members once; resetting,
// checking, tables and `Ladon` text are loops over that list.

namespace Tessel {

/// A value that may be absent or of one of three types: what placeholders of tasks hold.
using VariantValue = boost::variant<boost::blank, int, double, WString>;
using VariantMap = std::map<WString, VariantValue>;

/// How values of a type look in parameter tables and JSON. Specialised for every type that parameters have.
template <class T>
struct ParameterType;

// word: the type's name in parameter tables. text: a value as shown there. toJSON, fromJSON: a value in
// `Ladon` text; fromJSON answers nothing when the JSON value is of another kind.
#define TESSEL_PARAMETER_TYPE(T, WORD)                                  \
    template <>                                                         \
    struct ParameterType<T> {                                           \
        static constexpr const wchar_t* word = WORD;                    \
        static WString text(const T& value);                            \
        static web::json::value toJSON(const T& value);                 \
        static std::optional<T> fromJSON(const web::json::value& json); \
    }
TESSEL_PARAMETER_TYPE(bool, L"bool");
TESSEL_PARAMETER_TYPE(int, L"int");
TESSEL_PARAMETER_TYPE(double, L"double");
TESSEL_PARAMETER_TYPE(WString, L"WString");
TESSEL_PARAMETER_TYPE(StringVector, L"StringVector");
TESSEL_PARAMETER_TYPE(IntVector, L"IntVector");
TESSEL_PARAMETER_TYPE(Vector, L"Vector");
TESSEL_PARAMETER_TYPE(VariantValue, L"variant");
TESSEL_PARAMETER_TYPE(VariantMap, L"map");
#undef TESSEL_PARAMETER_TYPE

/// A key with its JSON value.
using NamedJSON = std::pair<WString, web::json::value>;

/// The value of `name` among the members of a JSON object, whatever the case of either; null when absent.
const web::json::value* findMember(const web::json::value& object, const WString& name);

/// A parameter's name and description as narrow texts for messages.
std::string narrowText(const WString& text);

/// The operations of a parameter of type T, in one order for all types.
template <class T>
class IParameterizable {
 public:
    virtual ~IParameterizable() = default;
    /// Throws when the current value is outside the range or set of the parameter.
    virtual void validate() const = 0;
    /// The row of a parameter table: the name; the texts of value, default, type and admissible values.
    virtual std::pair<WString, StringVector> describe() const = 0;
    virtual void reset() = 0;
    virtual bool isSet() const = 0;
    virtual const WString& getName() const = 0;
    virtual std::string getNarrowName() const = 0;
    virtual const WString& getDescription() const = 0;
    virtual std::string getNarrowDescription() const = 0;
    /// The current value.
    virtual const T& get() const = 0;
    virtual const T& getDefault() const = 0;
    virtual void setName(const WString& name) = 0;
    virtual void setDescription(const WString& description) = 0;
    virtual void set(const T& value) = 0;
    virtual void setDefault(const T& value) = 0;
    /// The value when it was set, JSON null otherwise.
    virtual web::json::value toJSON() const = 0;
    /// Sets the value from the member of that name, in any case; does nothing when there is none of a fitting
    /// kind.
    virtual void fromJSON(const web::json::value& object) = 0;
    virtual NamedJSON toNamedJSON() const = 0;
    /// Nothing when the parameter was not set.
    virtual std::optional<NamedJSON> toNamedJSONIfSet() const = 0;
};

/// The state of a parameter, and its operations but for the checks and the forms of its values.
template <class T>
class BasicParameter : public IParameterizable<T> {
 public:
    /// @param name  the key in texts. @param description  the name that people see, in tables and messages.
    BasicParameter(WString name, WString description, T defaultValue)
        : value_(defaultValue),
          name_(std::move(name)),
          description_(std::move(description)),
          defaultValue_(std::move(defaultValue)) {}

    std::pair<WString, StringVector> describe() const override {
        return {name_, {valueText(value_), valueText(defaultValue_), typeWord(), admissibleValues()}};
    }
    void reset() override {
        value_ = defaultValue_;
        isSet_ = false;
    }
    bool isSet() const override { return isSet_; }
    const WString& getName() const override { return name_; }
    std::string getNarrowName() const override { return narrowText(name_); }
    const WString& getDescription() const override { return description_; }
    std::string getNarrowDescription() const override { return narrowText(description_); }
    const T& get() const override { return value_; }
    const T& getDefault() const override { return defaultValue_; }
    void setName(const WString& name) override { name_ = name; }
    void setDescription(const WString& description) override { description_ = description; }
    void set(const T& value) override {
        value_ = value;
        isSet_ = true;
    }
    void setDefault(const T& value) override { defaultValue_ = value; }
    web::json::value toJSON() const override {
        return isSet_ ? valueToJSON(value_) : web::json::value::null();
    }
    void fromJSON(const web::json::value& object) override {
        const web::json::value* member = findMember(object, name_);
        if (member == nullptr) return;
        if (const std::optional<T> value = valueFromJSON(*member)) set(*value);
    }
    NamedJSON toNamedJSON() const override { return {name_, toJSON()}; }
    std::optional<NamedJSON> toNamedJSONIfSet() const override {
        return isSet_ ? std::optional<NamedJSON>(toNamedJSON()) : std::nullopt;
    }

 protected:
    // What kinds of parameters differ in.
    virtual WString typeWord() const = 0;
    virtual WString valueText(const T& value) const = 0;
    virtual WString admissibleValues() const = 0;
    virtual web::json::value valueToJSON(const T& value) const = 0;
    virtual std::optional<T> valueFromJSON(const web::json::value& json) const = 0;

 private:
    T value_;
    bool isSet_ = false;
    WString name_;
    WString description_;
    T defaultValue_;
};

/// A parameter whose values are all admissible.
template <class T>
class Parameter : public BasicParameter<T> {
 public:
    Parameter(WString name, WString description, T defaultValue = T())
        : BasicParameter<T>(std::move(name), std::move(description), std::move(defaultValue)) {}

    void validate() const override {}

 protected:
    WString typeWord() const override { return ParameterType<T>::word; }
    WString valueText(const T& value) const override { return ParameterType<T>::text(value); }
    WString admissibleValues() const override { return {}; }
    web::json::value valueToJSON(const T& value) const override { return ParameterType<T>::toJSON(value); }
    std::optional<T> valueFromJSON(const web::json::value& json) const override {
        return ParameterType<T>::fromJSON(json);
    }
};

/// An int or double within a closed range.
template <class T>
class BoundedParameter : public Parameter<T> {
 public:
    BoundedParameter(WString name, WString description, T defaultValue, T lower, T upper)
        : Parameter<T>(std::move(name), std::move(description), defaultValue), lower_(lower), upper_(upper) {}

    /// @throws ValueOutOfRange with the description; NaN is in no range.
    void validate() const override { requireWithin(lower_, upper_); }
    /// The same for a narrower range that the data impose.
    void requireWithin(T lower, T upper) const {
        const T value = this->get();
        if (!(value >= lower && value <= upper))
            throw ValueOutOfRange(this->getNarrowDescription(), lower, upper);
    }

 protected:
    WString admissibleValues() const override {
        return L"[" + ParameterType<T>::text(lower_) + L", " + ParameterType<T>::text(upper_) + L"]";
    }

 private:
    T lower_;
    T upper_;
};

/// The largest value of integer parameters without another upper bound.
inline constexpr int kNoLimit = std::numeric_limits<int>::max();

/// One of the members of an enumeration, written by its name.
template <class E>
class EnumParameter : public BasicParameter<E> {
 public:
    using ValueNames = std::map<E, WString>;

    EnumParameter(WString name, WString description, E defaultValue, ValueNames valueNames)
        : BasicParameter<E>(std::move(name), std::move(description), defaultValue),
          valueNames_(std::move(valueNames)) {}

    const ValueNames& getValueNames() const { return valueNames_; }
    /// @throws ConstraintViolation
    void validate() const override {
        if (!valueNames_.contains(this->get()))
            throw ConstraintViolation(this->getNarrowDescription(),
                                      "The value must be a pre-defined set member.");
    }

 protected:
    WString typeWord() const override { return L"enum"; }
    WString valueText(const E& value) const override {
        const auto found = valueNames_.find(value);
        return found != valueNames_.end() ? found->second : ParameterType<int>::text(static_cast<int>(value));
    }
    WString admissibleValues() const override {
        WString names;
        for (const auto& [value, name] : valueNames_) names += (names.empty() ? L"" : L", ") + name;
        return L"{" + names + L"}";
    }
    web::json::value valueToJSON(const E& value) const override {
        return ParameterType<WString>::toJSON(valueText(value));
    }
    std::optional<E> valueFromJSON(const web::json::value& json) const override {
        const std::optional<WString> text = ParameterType<WString>::fromJSON(json);
        for (const auto& [value, name] : valueNames_)
            if (text == name) return value;
        return std::nullopt;
    }

 private:
    ValueNames valueNames_;
};

/// One parameter of any type, as the loops over an estimator's list see it. Points to the estimator's member.
class ParameterRef {
 public:
    template <class T>
    ParameterRef(IParameterizable<T>& parameter) : parameter_(&parameter), operations_(&kOperations<T>) {}

    void validate() const { operations_->validate(parameter_); }
    void reset() const { operations_->reset(parameter_); }
    std::pair<WString, StringVector> describe() const { return operations_->describe(parameter_); }
    const WString& description() const { return operations_->description(parameter_); }
    void fromJSON(const web::json::value& object) const { operations_->fromJSON(parameter_, object); }
    std::optional<NamedJSON> toNamedJSONIfSet() const { return operations_->toNamedJSONIfSet(parameter_); }

 private:
    struct Operations {
        void (*validate)(const void*);
        void (*reset)(void*);
        std::pair<WString, StringVector> (*describe)(const void*);
        const WString& (*description)(const void*);
        void (*fromJSON)(void*, const web::json::value&);
        std::optional<NamedJSON> (*toNamedJSONIfSet)(const void*);
    };
    template <class T>
    static const IParameterizable<T>& of(const void* parameter) {
        return *static_cast<const IParameterizable<T>*>(parameter);
    }
    template <class T>
    static constexpr Operations kOperations = {
        [](const void* parameter) { of<T>(parameter).validate(); },
        [](void* parameter) { static_cast<IParameterizable<T>*>(parameter)->reset(); },
        [](const void* parameter) { return of<T>(parameter).describe(); },
        [](const void* parameter) -> const WString& { return of<T>(parameter).getDescription(); },
        [](void* parameter, const web::json::value& object) {
            static_cast<IParameterizable<T>*>(parameter)->fromJSON(object);
        },
        [](const void* parameter) { return of<T>(parameter).toNamedJSONIfSet(); },
    };

    void* parameter_;
    const Operations* operations_;
};

/// The parameters of an estimator in the order of its tables, checks and texts.
using ParameterList = std::vector<ParameterRef>;

}  // namespace Tessel
