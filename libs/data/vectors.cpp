#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/data/vectors.h>

#include "data/json_text.h"
#include "data/json_value.h"

namespace Tessel {
namespace {

template <class Elements>
WString braced(const Elements& elements) {
    WString text = L"{";
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (i > 0) text += L", ";
        text += Convert::toString(elements[i]);
    }
    return text + L'}';
}

}  // namespace

void StringVector::insert(std::size_t position, WString text) {
    if (position > size())
        throw IndexOutOfRange(static_cast<std::int64_t>(position), static_cast<std::int64_t>(size()));
    elements_.insert(elements_.begin() + static_cast<std::ptrdiff_t>(position), std::move(text));
}

std::size_t StringVector::find(const WString& text) const {
    return static_cast<std::size_t>(std::find(begin(), end(), text) - begin());
}

WString StringVector::toString() const { return braced(*this); }

WString StringVector::toJson() const {
    WString json;
    JSON::appendArray(json, elements_, JSON::appendString);
    return json;
}

void StringVector::fromJsonString(const WString& json) {
    elements_ = JSON::toStringVector(JSON::parse(json), "the vector").elements();
}

WString IntVector::toString() const { return braced(*this); }

WString Vector::toString() const { return braced(*this); }

WString Vector::toJson() const {
    WString json;
    JSON::appendArray(json, elements_, JSON::appendNumber);
    return json;
}

void Vector::fromJsonString(const WString& json) {
    elements_ = JSON::toVector(JSON::parse(json), "the vector").elements();
}

}  // namespace Tessel
