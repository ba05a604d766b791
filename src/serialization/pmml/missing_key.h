#pragma once

#include <stdexcept>

namespace Tessel::PMML {

/// How a document reports a required attribute or feature that is not there.
[[noreturn]] inline void throwMissingKey() { throw std::out_of_range("invalid unordered_map<K, T> key"); }

}  // namespace Tessel::PMML
