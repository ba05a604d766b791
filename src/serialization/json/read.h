#pragma once

#include <tessel/data/data_frame.h>
#include <tessel/framework/errors.h>

#include "data/json_value.h"

namespace Tessel::JSONModel {

/// Runs a reader of foreign text. What it throws becomes UnsupportedJSONModel with the reason.
template <class Read>
auto translatingErrors(Read read) {
    try {
        return read();
    } catch (const UnsupportedJSONModel&) {
        throw;
    } catch (const UnableToCreateWeakLearner&) {
        throw;
    } catch (const Exception& error) {
        throw UnsupportedJSONModel(error.what());
    }
}

/// Sets a member of an object; members keep the order in which they were set.
inline void set(web::json::value& object, WStringView name, web::json::value value) {
    object[JSON::toNative(name)] = std::move(value);
}
inline web::json::value fromStrings(const StringVector& texts) {
    std::vector<web::json::value> elements;
    elements.reserve(texts.size());
    for (const WString& text : texts) elements.push_back(JSON::fromText(text));
    return web::json::value::array(std::move(elements));
}
/// Any range of numbers.
template <class Numbers>
web::json::value fromNumbers(const Numbers& numbers) {
    std::vector<web::json::value> elements;
    elements.reserve(numbers.size());
    for (const auto number : numbers) elements.push_back(JSON::fromNumber(static_cast<double>(number)));
    return web::json::value::array(std::move(elements));
}
/// A table of numbers: an array of its columns, each with "name" and "values"; no row names.
web::json::value fromNumericTable(const DataFrame& table);
DataFrame toNumericTable(const web::json::value& json, const char* memberName, const WString& tableName);

}  // namespace Tessel::JSONModel
