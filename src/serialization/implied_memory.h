#pragma once

#include <algorithm>
#include <cstddef>

#include <tessel/framework/errors.h>

namespace Tessel {

/// Keeps what a text takes in memory in proportion to its length. Texts may leave out what is 0 or declared
/// elsewhere, such as the counts of classes in a node, so that a short one could stand for a table of any
/// size. What is told is not limited.
class ImpliedMemory {
 public:
    /// Counts `numNeeded` cells of which the text tells `numTold`; to be called before they are made.
    /// @throws BadAllocation beyond `kMaxBytes`.
    void add(std::size_t numNeeded, std::size_t numTold, std::size_t bytesOfCell) {
        const std::size_t numImplied = numNeeded - std::min(numNeeded, numTold);
        if (numImplied > (kMaxBytes - numBytes_) / bytesOfCell) throw BadAllocation("Model text");
        numBytes_ += numImplied * bytesOfCell;
    }

    static constexpr std::size_t kMaxBytes = std::size_t{256} << 20;

 private:
    std::size_t numBytes_ = 0;
};

}  // namespace Tessel
