#include <algorithm>
#include <cmath>

#include <tessel/data/convert.h>

#include "framework/parameter.h"

namespace Tessel {
namespace {

using web::json::value;

/// Capital and small ASCII letters are one; parameter keys have no others.
bool sameIgnoringCase(const WString& a, const WString& b) {
    const auto lower = [](wchar_t c) {
        return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](wchar_t x, wchar_t y) { return lower(x) == lower(y); });
}

template <class T, class Sequence>
value arrayOf(const Sequence& elements) {
    std::vector<value> array;
    array.reserve(elements.size());
    for (const auto& element : elements) array.push_back(ParameterType<T>::toJSON(element));
    return value::array(std::move(array));
}

template <class T, class Sequence>
std::optional<Sequence> sequenceOf(const value& json) {
    if (!json.is_array()) return std::nullopt;
    Sequence elements;
    for (const value& element : json.as_array()) {
        std::optional<T> read = ParameterType<T>::fromJSON(element);
        if (!read) return std::nullopt;
        elements.push_back(std::move(*read));
    }
    return elements;
}

}  // namespace

const value* findMember(const value& object, const WString& name) {
    if (!object.is_object()) return nullptr;
    for (const auto& [key, member] : object.as_object())
        if (sameIgnoringCase(JSON::fromNative(key), name)) return &member;
    return nullptr;
}

std::string narrowText(const WString& text) { return Convert::toUtf8Lossy(text); }

WString ParameterType<bool>::text(const bool& flag) { return flag ? L"true" : L"false"; }
value ParameterType<bool>::toJSON(const bool& flag) { return value::boolean(flag); }
std::optional<bool> ParameterType<bool>::fromJSON(const value& json) {
    if (!json.is_boolean()) return std::nullopt;
    return json.as_bool();
}

WString ParameterType<int>::text(const int& number) { return Convert::toString(number); }
value ParameterType<int>::toJSON(const int& number) { return value::number(number); }
std::optional<int> ParameterType<int>::fromJSON(const value& json) {
    if (!json.is_integer() || !json.as_number().is_int32()) return std::nullopt;
    return json.as_integer();
}

// JSON has no numbers for NaN and the infinities; they are written as texts.
WString ParameterType<double>::text(const double& number) { return Convert::toString(number); }
value ParameterType<double>::toJSON(const double& number) {
    return std::isfinite(number) ? value::number(number) : ParameterType<WString>::toJSON(text(number));
}
std::optional<double> ParameterType<double>::fromJSON(const value& json) {
    if (json.is_number()) return json.as_double();
    if (const auto written = ParameterType<WString>::fromJSON(json)) {
        double number = 0.0;
        if (Convert::tryToDouble(narrowText(*written), number) && !std::isfinite(number)) return number;
    }
    return std::nullopt;
}

WString ParameterType<WString>::text(const WString& text) { return text; }
value ParameterType<WString>::toJSON(const WString& text) { return value::string(JSON::toNative(text)); }
std::optional<WString> ParameterType<WString>::fromJSON(const value& json) {
    if (!json.is_string()) return std::nullopt;
    return JSON::fromNative(json.as_string());
}

WString ParameterType<StringVector>::text(const StringVector& texts) { return texts.toString(); }
value ParameterType<StringVector>::toJSON(const StringVector& texts) { return arrayOf<WString>(texts); }
std::optional<StringVector> ParameterType<StringVector>::fromJSON(const value& json) {
    return sequenceOf<WString, StringVector>(json);
}

WString ParameterType<IntVector>::text(const IntVector& numbers) { return numbers.toString(); }
value ParameterType<IntVector>::toJSON(const IntVector& numbers) { return arrayOf<int>(numbers); }
std::optional<IntVector> ParameterType<IntVector>::fromJSON(const value& json) {
    return sequenceOf<int, IntVector>(json);
}

WString ParameterType<Vector>::text(const Vector& numbers) { return numbers.toString(); }
value ParameterType<Vector>::toJSON(const Vector& numbers) { return arrayOf<double>(numbers); }
std::optional<Vector> ParameterType<Vector>::fromJSON(const value& json) {
    return sequenceOf<double, Vector>(json);
}

WString ParameterType<VariantValue>::text(const VariantValue& variant) {
    struct Text : boost::static_visitor<WString> {
        WString operator()(boost::blank) const { return {}; }
        WString operator()(int number) const { return ParameterType<int>::text(number); }
        WString operator()(double number) const { return ParameterType<double>::text(number); }
        WString operator()(const WString& text) const { return text; }
    };
    return boost::apply_visitor(Text(), variant);
}
value ParameterType<VariantValue>::toJSON(const VariantValue& variant) {
    struct JSON : boost::static_visitor<value> {
        value operator()(boost::blank) const { return value::null(); }
        value operator()(int number) const { return ParameterType<int>::toJSON(number); }
        value operator()(double number) const { return ParameterType<double>::toJSON(number); }
        value operator()(const WString& text) const { return ParameterType<WString>::toJSON(text); }
    };
    return boost::apply_visitor(JSON(), variant);
}
std::optional<VariantValue> ParameterType<VariantValue>::fromJSON(const value& json) {
    if (json.is_null()) return VariantValue(boost::blank());
    if (const auto integer = ParameterType<int>::fromJSON(json)) return VariantValue(*integer);
    if (json.is_number()) return VariantValue(json.as_double());
    if (const auto text = ParameterType<WString>::fromJSON(json)) return VariantValue(*text);
    return std::nullopt;
}

WString ParameterType<VariantMap>::text(const VariantMap& map) {
    StringVector entries;
    for (const auto& [key, variant] : map)
        entries.push_back(key + L": " + ParameterType<VariantValue>::text(variant));
    return entries.toString();
}
value ParameterType<VariantMap>::toJSON(const VariantMap& map) {
    value object = value::object(true);
    for (const auto& [key, variant] : map)
        object[JSON::toNative(key)] = ParameterType<VariantValue>::toJSON(variant);
    return object;
}
std::optional<VariantMap> ParameterType<VariantMap>::fromJSON(const value& json) {
    if (!json.is_object()) return std::nullopt;
    VariantMap map;
    for (const auto& [key, member] : json.as_object()) {
        const auto variant = ParameterType<VariantValue>::fromJSON(member);
        if (!variant) return std::nullopt;
        map[JSON::fromNative(key)] = *variant;
    }
    return map;
}

}  // namespace Tessel
