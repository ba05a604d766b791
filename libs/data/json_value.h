#pragma once

#include <tessel/data/types.h>
#include <tessel/data/vectors.h>

// Else cpprestsdk defines a macro U, which breaks the templates of others.
#ifndef _TURN_OFF_PLATFORM_STRING
#define _TURN_OFF_PLATFORM_STRING
#endif
#include <cpprest/json.h>

// Trees of JSON values by cpprestsdk, whose heavy header this is the only one to include: for reading texts
// and for objects that are not mostly long arrays ("data/json_text.h" writes those).
//
// cpprestsdk forgets the order of an object's members unless the object is made by
// `web::json::value::object(true)`. Its switch `keep_object_element_order` belongs to the whole process and
// is left to the host. Beyond the standard it reads comments and leading zeros; values may be nested at most
// 128 deep.

namespace Tessel::JSON {

/// The texts of cpprestsdk are UTF-8, on Windows wide. @throws InvalidEncoding
utility::string_t toNative(WStringView text);
WString fromNative(const utility::string_t& text);

/// @throws MalformedJSON with the place of the fault, also for texts that are no Unicode.
web::json::value parse(WStringView text);
/// The text of a tree, without blanks; numbers and strings as in "data/json_text.h".
WString serialize(const web::json::value& value);

/// A number as `appendNumber` writes it: NaN as null, infinities as strings.
web::json::value fromNumber(double value);
web::json::value fromText(WStringView text);

// Reading a value of a certain kind. `what` names it in the message. @throws MalformedJSON for other kinds.

/// A finite number, null (NaN) or one of the strings "NaN", "Infinity", "-Infinity".
double toNumber(const web::json::value& value, const char* what);
/// A number without fraction that is an `int`.
int toInteger(const web::json::value& value, const char* what);
WString toText(const web::json::value& value, const char* what);
const web::json::array& toArray(const web::json::value& value, const char* what);
Vector toVector(const web::json::value& value, const char* what);
StringVector toStringVector(const web::json::value& value, const char* what);

/// The members of an object, each by its ASCII name. Other members than those asked for are ignored.
class Members {
 public:
    /// @throws MalformedJSON for other values and when two members have one name.
    Members(const web::json::value& value, const char* what);
    /// The member of that name, null when there is none.
    const web::json::value* find(const char* name) const;
    /// @throws MalformedJSON when there is none.
    const web::json::value& at(const char* name) const;

 private:
    const web::json::object* object_;
};

}  // namespace Tessel::JSON
