#pragma once

#include <string_view>

#include <tessel/data/errors.h>

namespace Tessel::IO {

/// The byte that delimits cells. @throws ConstraintViolation
inline char checkedDelimiter(wchar_t delimiter) {
    if (delimiter <= 0 || delimiter > 127 || delimiter == L'"' || delimiter == L'\n' || delimiter == L'\r')
        throw ConstraintViolation("Delimiter",
                                  "must be an ASCII character that is no quote and no line end.");
    return static_cast<char>(delimiter);
}

/// Whether the delimiter may stand inside a number of decimal form.
inline bool mayStandInNumber(char delimiter) {
    return std::string_view("+-.eE0123456789").find(delimiter) != std::string_view::npos;
}

}  // namespace Tessel::IO
