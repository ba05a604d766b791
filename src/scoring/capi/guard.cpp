#include "scoring/capi/guard.h"

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/scoring/capi/tessel_c.h>

namespace Tessel::Plain {
namespace {

template <class Error>
bool is(const std::exception& error) noexcept {
    return dynamic_cast<const Error*>(&error) != nullptr;
}

}  // namespace

WString& lastErrorText() noexcept {
    thread_local WString text;
    return text;
}

std::int32_t statusOf(const std::exception& error) noexcept {
    try {
        lastErrorText() = Convert::fromUtf8(error.what());
    } catch (const std::exception&) {  // no memory for the text, or a foreign one that is no UTF-8
        lastErrorText().clear();
    }
    if (is<MalformedPMML>(error) || is<FileNotFound>(error)) return TESSEL_UNREADABLE;
    if (is<IncompatibleSizes>(error)) return TESSEL_SIZE_MISMATCH;
    return is<Exception>(error) ? TESSEL_REFUSED : TESSEL_FAILED;
}

}  // namespace Tessel::Plain
