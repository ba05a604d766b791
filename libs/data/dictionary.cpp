#include "data/dictionary.h"

namespace Tessel {

TextIndex& Dictionary::index() const {
    return *index_.get([this] {
        auto made = std::make_shared<TextIndex>(levels_);
        made->reserve(levels_.size());
        for (std::int32_t code = 0; code < size(); ++code) made->insert(code);
        return made;
    });
}

std::int32_t Dictionary::find(WStringView text) const { return index().find(text); }

std::int32_t Dictionary::add(const WString& text) {
    TextIndex& known = index();
    const std::int32_t code = size();
    levels_.push_back(text);
    known.insert(code);
    return code;
}

TextEncoder::TextEncoder(const Dictionary& dictionary) : levels_(dictionary.levels()), index_(levels_) {
    index_.reserve(levels_.size());
    for (std::int32_t code = 0; code < dictionary.size(); ++code) index_.insert(code);
}

std::int32_t TextEncoder::encode(WStringView text) {
    if (text.empty()) return kMissingCode;
    const std::int32_t known = index_.find(text);
    if (known != kMissingCode) return known;
    const auto code = static_cast<std::int32_t>(levels_.size());
    levels_.emplace_back(text);
    index_.insert(code);
    return code;
}

}  // namespace Tessel
