#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "engine/dt/histograms.h"
#include "engine/dt/members.h"
#include "engine/dt/split_search.h"

// Memory that trees which grow one after another hand on: to ask the system for it anew, and to let it go,
// took a tenth of the time of a tree.

namespace Tessel::Engine::DT {

/// Of one growing tree. What stands in it means nothing to the next.
struct GrowthMemory {
    BinnedRecords binnedRecords;
    std::vector<std::shared_ptr<Histograms>> histograms;
    std::vector<std::vector<SortedRecord>> lists;  ///< by feature
    std::vector<std::uint32_t> recordOf;           ///< by row
    Members members;
    std::vector<std::uint8_t> goesLeft;
    std::vector<Stretch> stretches;
    std::vector<Scratch> scratches;  ///< by thread
};

/// The memory of as many trees as grew at the same time.
class GrowthMemories {
 public:
    std::unique_ptr<GrowthMemory> take() {
        const std::lock_guard lock(mutex_);
        if (idle_.empty()) return std::make_unique<GrowthMemory>();
        std::unique_ptr<GrowthMemory> memory = std::move(idle_.back());
        idle_.pop_back();
        return memory;
    }
    void giveBack(std::unique_ptr<GrowthMemory> memory) {
        const std::lock_guard lock(mutex_);
        idle_.push_back(std::move(memory));
    }

 private:
    std::mutex mutex_;
    std::vector<std::unique_ptr<GrowthMemory>> idle_;
};

}  // namespace Tessel::Engine::DT
