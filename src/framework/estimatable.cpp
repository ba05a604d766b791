#include "framework/estimatable.h"

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

namespace Tessel {
namespace {

web::json::value jsonText(WStringView text) { return ParameterType<WString>::toJSON(WString(text)); }

/// The member of an object whose key is exactly this one. @throws UnsupportedJSONModel when there is none.
const web::json::value& requireMember(const web::json::value& object, WStringView key) {
    const utility::string_t narrow = JSON::toNative(key);
    if (!object.is_object() || !object.has_field(narrow)) throw UnsupportedJSONModel();
    return object.at(narrow);
}

void requireText(const web::json::value& object, WStringView key, WStringView text) {
    const std::optional<WString> found = ParameterType<WString>::fromJSON(requireMember(object, key));
    if (found != WString(text)) throw UnsupportedJSONModel();
}

}  // namespace

WString algorithmOf(const web::json::value& description) {
    const auto name =
        ParameterType<WString>::fromJSON(requireMember(description, Ladon::Keyword::MODEL_ALGORITHM));
    if (!name) throw UnsupportedJSONModel();
    return *name;
}

void IEstimatable::validate() const {
    for (const ParameterRef& parameter : constParameters()) parameter.validate();
}

void IEstimatable::reset() {
    for (const ParameterRef& parameter : parameters()) parameter.reset();
}

DataFrame IEstimatable::toDataFrame() const {
    StringVector names, values;
    values.setName(L"Value");
    for (const ParameterRef& parameter : constParameters()) {
        names.push_back(parameter.description());
        values.push_back(parameter.describe().second[0]);
    }
    describeLearners(names, values);
    DataFrame table(L"Estimator: " + getModelName());
    table.append(values);
    table.setRowNames(names);
    return table;
}

DataFrameVector IEstimatable::toDataFrameVector() const {
    const char* const titles[] = {"Value", "Default", "Type", "Admissible Values"};
    StringVector names, keys;
    StringVector texts[std::size(titles)];
    keys.setName(L"Name");
    for (const ParameterRef& parameter : constParameters()) {
        const auto [key, description] = parameter.describe();
        names.push_back(parameter.description());
        keys.push_back(key);
        for (std::size_t i = 0; i < std::size(titles); ++i) texts[i].push_back(description[i]);
    }
    DataFrame descriptions(L"Parameters: " + getModelName());
    descriptions.append(keys);
    for (std::size_t i = 0; i < std::size(titles); ++i) {
        const std::string_view title = titles[i];
        texts[i].setName(WString(title.begin(), title.end()));
        descriptions.append(texts[i]);
    }
    descriptions.setRowNames(names);
    return DataFrameVector(toDataFrame(), descriptions);
}

web::json::value IEstimatable::toLadonValue() const {
    web::json::value parameters = web::json::value::object(true);
    for (const ParameterRef& parameter : constParameters())
        if (const auto named = parameter.toNamedJSONIfSet())
            parameters[JSON::toNative(named->first)] = named->second;

    const LadonIdentity identity = ladonIdentity();
    web::json::value description = web::json::value::object(true);
    description[JSON::toNative(Ladon::Keyword::OBJECT_TYPE)] = jsonText(identity.objectType);
    description[JSON::toNative(Ladon::Keyword::MODEL_TYPE)] = jsonText(identity.taskKind);
    description[JSON::toNative(Ladon::Keyword::MODEL_ALGORITHM)] = jsonText(identity.algorithm);
    description[JSON::toNative(Ladon::Keyword::PARAMETERS)] = parameters;
    writeLearners(description);
    return description;
}

WString IEstimatable::toLadon() const { return JSON::serialize(toLadonValue()); }

void IEstimatable::fromLadonString(const WString& text) {
    web::json::value description;
    try {
        description = JSON::parse(text);
    } catch (const MalformedJSON&) {
        throw UnsupportedJSONModel();
    }
    fromLadonValue(description);
}

void IEstimatable::fromLadonValue(const web::json::value& description) {
    const LadonIdentity identity = ladonIdentity();
    requireText(description, Ladon::Keyword::OBJECT_TYPE, identity.objectType);
    requireText(description, Ladon::Keyword::MODEL_TYPE, identity.taskKind);
    requireText(description, Ladon::Keyword::MODEL_ALGORITHM, identity.algorithm);
    const web::json::value& values = requireMember(description, Ladon::Keyword::PARAMETERS);
    if (!values.is_object()) throw UnsupportedJSONModel();

    readLearners(description);
    // From here on nothing fails.
    for (const ParameterRef& parameter : parameters()) {
        parameter.reset();
        parameter.fromJSON(values);
    }
    completeParameters();
}

}  // namespace Tessel
