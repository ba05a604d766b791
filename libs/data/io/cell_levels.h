#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Tessel::IO {

/// A distinct text of a column, as UTF-8.
struct Level {
    std::string_view bytes;
    std::size_t hash;
};

/// Collects the distinct texts of cells in order of first appearance, stored elsewhere.
class CellLevels {
 public:
    CellLevels() : slots_(kFirstSlots, kFree) {}

    /// The code of a text that outlives this object.
    std::int32_t encode(std::string_view bytes) {
        return encode(Level{bytes, std::hash<std::string_view>()(bytes)});
    }
    std::int32_t encode(const Level& level) {
        std::size_t& slot = find(level);
        if (slot == kFree) {
            slot = levels_.size();
            levels_.push_back(level);
            if (2 * levels_.size() > slots_.size()) grow();
            return static_cast<std::int32_t>(levels_.size() - 1);
        }
        return static_cast<std::int32_t>(slot);
    }
    /// The code of a text that had to be rewritten; a copy is kept here when it is new.
    std::int32_t encodeCopy(std::string bytes) {
        const std::size_t known = levels_.size();
        rewritten_.push_back(std::move(bytes));
        const std::int32_t code = encode(std::string_view(rewritten_.back()));
        if (levels_.size() == known) rewritten_.pop_back();
        return code;
    }

    const std::vector<Level>& levels() const { return levels_; }

 private:
    static constexpr std::size_t kFirstSlots = 16, kFree = static_cast<std::size_t>(-1);

    /// The slot of a level, or the free one where it belongs: open addressing, never more than half full.
    std::size_t& find(const Level& level) {
        std::size_t i = level.hash & (slots_.size() - 1);
        while (slots_[i] != kFree) {
            const Level& other = levels_[slots_[i]];
            if (other.hash == level.hash && other.bytes == level.bytes) break;
            i = (i + 1) & (slots_.size() - 1);
        }
        return slots_[i];
    }

    void grow() {
        slots_.assign(2 * slots_.size(), kFree);
        for (std::size_t i = 0; i < levels_.size(); ++i) find(levels_[i]) = i;
    }

    std::vector<Level> levels_;
    std::vector<std::size_t> slots_;
    std::deque<std::string> rewritten_;
};

}  // namespace Tessel::IO
