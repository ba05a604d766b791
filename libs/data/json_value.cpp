#include "data/json_value.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "data/json_text.h"

namespace Tessel::JSON {
namespace {

constexpr bool kNativeIsWide = std::is_same_v<utility::string_t, WString>;
constexpr char kElement[] = "an array element";
constexpr double kInfinity = std::numeric_limits<double>::infinity();

[[noreturn]] void throwKind(const char* what, const char* kind) {
    throw MalformedJSON(std::string(what) + " must be " + kind + ".");
}

utility::string_t nativeName(const char* asciiName) {
    const std::string_view name = asciiName;
    return utility::string_t(name.begin(), name.end());
}

/// The parser's message without the mark that it puts before the line number.
std::string reasonOf(const std::exception& error) {
    std::string_view reason = error.what();
    if (reason.starts_with("* ")) reason.remove_prefix(2);
    return std::string(reason);
}

void appendValue(WString& json, const web::json::value& value) {
    switch (value.type()) {
        case web::json::value::Null:
            json += L"null";
            break;
        case web::json::value::Boolean:
            json += value.as_bool() ? L"true" : L"false";
            break;
        case web::json::value::String:
            appendString(json, fromNative(value.as_string()));
            break;
        case web::json::value::Array:
            appendArray(json, value.as_array(), appendValue);
            break;
        case web::json::value::Number: {
            const web::json::number& number = value.as_number();
            if (number.is_int64())
                json += std::to_wstring(static_cast<long long>(number.to_int64()));
            else if (number.is_integral())
                json += std::to_wstring(static_cast<unsigned long long>(number.to_uint64()));
            else
                appendNumber(json, number.to_double());
            break;
        }
        case web::json::value::Object: {
            json += L'{';
            bool isFirst = true;
            for (const auto& [name, member] : value.as_object()) {
                if (!isFirst) json += L',';
                isFirst = false;
                appendString(json, fromNative(name));
                json += L':';
                appendValue(json, member);
            }
            json += L'}';
            break;
        }
    }
}

}  // namespace

utility::string_t toNative(WStringView text) {
    if constexpr (kNativeIsWide)
        return utility::string_t(text.begin(), text.end());
    else
        return Convert::toUtf8(text);
}

WString fromNative(const utility::string_t& text) {
    if constexpr (kNativeIsWide)
        return WString(text.begin(), text.end());
    else
        return Convert::fromUtf8(text);
}

web::json::value parse(WStringView text) {
    try {
        return web::json::value::parse(toNative(text));
    } catch (const web::json::json_exception& error) {
        throw MalformedJSON(reasonOf(error));
    } catch (const std::range_error& error) {  // of cpprestsdk's own conversions
        throw MalformedJSON(reasonOf(error));
    } catch (const InvalidEncoding& error) {
        throw MalformedJSON(reasonOf(error));
    }
}

WString serialize(const web::json::value& value) {
    WString json;
    appendValue(json, value);
    return json;
}

web::json::value fromNumber(double value) {
    if (std::isnan(value)) return web::json::value::null();
    if (std::isinf(value)) return web::json::value::string(nativeName(value > 0 ? "Infinity" : "-Infinity"));
    return web::json::value::number(value);
}

web::json::value fromText(WStringView text) { return web::json::value::string(toNative(text)); }

double toNumber(const web::json::value& value, const char* what) {
    if (value.is_number()) {
        const double number = value.as_double();
        if (!std::isfinite(number)) throw MalformedJSON(std::string(what) + " is too large for a number.");
        return number;
    }
    if (value.is_null()) return std::numeric_limits<double>::quiet_NaN();
    if (value.is_string()) {
        if (value.as_string() == nativeName("NaN")) return std::numeric_limits<double>::quiet_NaN();
        if (value.as_string() == nativeName("Infinity")) return kInfinity;
        if (value.as_string() == nativeName("-Infinity")) return -kInfinity;
    }
    throwKind(what, "a number, null, \"Infinity\" or \"-Infinity\"");
}

int toInteger(const web::json::value& value, const char* what) {
    const double number = value.is_number() ? value.as_double() : std::numeric_limits<double>::quiet_NaN();
    const bool isInteger = number >= std::numeric_limits<int>::min() &&
                           number <= std::numeric_limits<int>::max() && number == std::trunc(number);
    if (!isInteger) throwKind(what, "an integer");
    return static_cast<int>(number);
}

WString toText(const web::json::value& value, const char* what) {
    if (!value.is_string()) throwKind(what, "a string");
    return fromNative(value.as_string());
}

const web::json::array& toArray(const web::json::value& value, const char* what) {
    if (!value.is_array()) throwKind(what, "an array");
    return value.as_array();
}

Vector toVector(const web::json::value& value, const char* what) {
    Vector numbers;
    numbers.reserve(toArray(value, what).size());
    for (const web::json::value& element : value.as_array()) numbers.push_back(toNumber(element, kElement));
    return numbers;
}

StringVector toStringVector(const web::json::value& value, const char* what) {
    StringVector texts;
    texts.reserve(toArray(value, what).size());
    for (const web::json::value& element : value.as_array()) texts.push_back(toText(element, kElement));
    return texts;
}

Members::Members(const web::json::value& value, const char* what) {
    if (!value.is_object()) throwKind(what, "an object");
    object_ = &value.as_object();
    std::vector<std::basic_string_view<utility::char_t>> names;
    names.reserve(object_->size());
    for (const auto& member : *object_) names.emplace_back(member.first);
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    if (twice == names.end()) return;
    const utility::string_t name(*twice);
    throw MalformedJSON(std::string(what) + " has two members '" + Convert::toUtf8Lossy(fromNative(name)) +
                        "'.");
}

const web::json::value* Members::find(const char* name) const {
    const auto found = object_->find(nativeName(name));
    return found == object_->end() ? nullptr : &found->second;
}

const web::json::value& Members::at(const char* name) const {
    const web::json::value* member = find(name);
    if (!member) throw MalformedJSON(std::string("the member '") + name + "' is missing.");
    return *member;
}

}  // namespace Tessel::JSON
