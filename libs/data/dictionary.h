#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <unordered_set>
#include <vector>

#include <tessel/data/types.h>

#include "data/lazy.h"

namespace Tessel {

/// The code of a missing text; other codes are positions in a dictionary.
inline constexpr std::int32_t kMissingCode = -1;

/// A hash index over texts that are stored elsewhere: it holds positions, not copies.
class TextIndex {
 public:
    explicit TextIndex(const std::vector<WString>& texts) : positions_(0, Hash{&texts}, Equal{&texts}) {}

    /// The position equal to `text`, or `kMissingCode`.
    std::int32_t find(WStringView text) const {
        const auto found = positions_.find(text);
        return found == positions_.end() ? kMissingCode : *found;
    }
    /// Adds a position of the indexed texts; false when an equal text is there already.
    bool insert(std::int32_t position) { return positions_.insert(position).second; }
    void reserve(std::size_t count) { positions_.reserve(count); }

 private:
    struct Hash {
        using is_transparent = void;
        const std::vector<WString>* texts;
        std::size_t operator()(WStringView text) const { return std::hash<WStringView>()(text); }
        std::size_t operator()(std::int32_t position) const {
            return (*this)(WStringView((*texts)[static_cast<std::size_t>(position)]));
        }
    };
    struct Equal {
        using is_transparent = void;
        const std::vector<WString>* texts;
        WStringView text(std::int32_t position) const { return (*texts)[static_cast<std::size_t>(position)]; }
        WStringView text(WStringView itself) const { return itself; }
        template <class A, class B>
        bool operator()(A a, B b) const {
            return text(a) == text(b);
        }
    };
    std::unordered_set<std::int32_t, Hash, Equal> positions_;
};

/// The distinct non-empty texts of a column, in order of first appearance. Immutable, shared by all
/// columns cut from one; so it may hold texts that a column of selected rows no longer has.
/// Only the column that made a dictionary for itself may add to it, while nobody else sees it.
class Dictionary {
 public:
    Dictionary() = default;
    /// @pre the levels are distinct and not empty.
    explicit Dictionary(std::vector<WString> levels) : levels_(std::move(levels)) {}
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    std::int32_t size() const { return static_cast<std::int32_t>(levels_.size()); }
    const WString& operator[](std::int32_t code) const { return levels_[static_cast<std::size_t>(code)]; }
    const std::vector<WString>& levels() const { return levels_; }
    /// The code of a text, `kMissingCode` when it is no level. The index is built at the first call.
    std::int32_t find(WStringView text) const;
    /// Adds a level and returns its code. @pre the text is not empty and no level; no other thread reads
    std::int32_t add(const WString& text);

 private:
    TextIndex& index() const;

    std::vector<WString> levels_;
    Lazy<std::shared_ptr<TextIndex>> index_;
};

/// Turns texts into codes, collecting the levels as they come.
class TextEncoder {
 public:
    TextEncoder() : index_(levels_) {}
    /// Starts from the levels of a dictionary, so that its codes stay valid.
    explicit TextEncoder(const Dictionary& dictionary);
    TextEncoder(const TextEncoder&) = delete;
    TextEncoder& operator=(const TextEncoder&) = delete;

    /// The code of `text`, a new one when it was not met before; `kMissingCode` for the empty text.
    std::int32_t encode(WStringView text);
    /// Ends the encoding and gives the levels away.
    std::shared_ptr<const Dictionary> finish() {
        return std::make_shared<const Dictionary>(std::move(levels_));
    }

 private:
    std::vector<WString> levels_;
    TextIndex index_;
};

}  // namespace Tessel
