#pragma once

#include <cstdint>
#include <exception>

#include <tessel/data/types.h>

namespace Tessel::Plain {

/// The status that stands for an error; its text becomes the calling thread's last error.
std::int32_t statusOf(const std::exception& error) noexcept;

/// The calling thread's last error; empty when its last guarded operation succeeded.
WString& lastErrorText() noexcept;

/// Runs an operation of the plain interface and says by a status how it ended. What is no std::exception
/// passes through.
template <class Operation>
std::int32_t guarded(Operation operation) {
    lastErrorText().clear();
    try {
        operation();
        return 0;
    } catch (const std::exception& error) {
        return statusOf(error);
    }
}

}  // namespace Tessel::Plain
