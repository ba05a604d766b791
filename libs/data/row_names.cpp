#include "data/row_names.h"

#include <atomic>

#include <tessel/data/convert.h>

namespace Tessel {
namespace {

constexpr wchar_t kDefaultPrefix[] = L"Record ";
constexpr int kAmbiguous = -2;

WString defaultName(int row) { return kDefaultPrefix + std::to_wstring(static_cast<long long>(row) + 1); }

}  // namespace

RowNames::Pointer RowNames::of(std::vector<WString> names) {
    auto made = std::make_shared<RowNames>();
    made->texts_ = std::make_shared<std::vector<WString>>(std::move(names));
    return made;
}

RowNames::Pointer RowNames::select(const Pointer& names, const std::shared_ptr<const RowIndexes>& rows) {
    auto made = std::make_shared<RowNames>();
    if (names) made->texts_ = names->texts_;
    if (names && names->rows_) {
        RowIndexes composed(rows->size());
        for (std::size_t i = 0; i < composed.size(); ++i)
            composed[i] = (*names->rows_)[static_cast<std::size_t>((*rows)[i])];
        made->rows_ = std::make_shared<const RowIndexes>(std::move(composed));
    } else {
        made->rows_ = rows;
    }
    return made;
}

RowNames::Pointer RowNames::concatenate(const Pointer& first, int numFirst, const Pointer& second,
                                        int numSecond) {
    if (!first && !second) return nullptr;
    const bool hasTexts = (first && first->texts_) || (second && second->texts_);
    if (hasTexts) {
        StringVector texts = all(first, numFirst);
        texts.append(all(second, numSecond));
        return of(std::move(texts).elements());
    }
    RowIndexes rows;
    rows.reserve(static_cast<std::size_t>(numFirst) + static_cast<std::size_t>(numSecond));
    const auto add = [&](const Pointer& names, int numRows) {
        for (int row = 0; row < numRows; ++row)
            rows.push_back(names ? (*names->rows_)[static_cast<std::size_t>(row)] : row);
    };
    add(first, numFirst);
    add(second, numSecond);
    return select(nullptr, std::make_shared<const RowIndexes>(std::move(rows)));
}

void RowNames::assign(Pointer& names, int numRows, int row, const WString& name) {
    const bool isUnshared =
        names && names.use_count() == 1 && !names->rows_ && names->texts_.use_count() == 1;
    if (!isUnshared) names = of(all(names, numRows).elements());
    // Pairs with the release of the last other owner, so that its reads are over.
    std::atomic_thread_fence(std::memory_order_acquire);
    const auto own = std::const_pointer_cast<RowNames>(names);
    (*own->texts_)[static_cast<std::size_t>(row)] = name;
    own->index_.reset();
}

WString RowNames::at(const Pointer& names, int row) {
    if (!names) return defaultName(row);
    const int source = names->rows_ ? (*names->rows_)[static_cast<std::size_t>(row)] : row;
    return names->texts_ ? (*names->texts_)[static_cast<std::size_t>(source)] : defaultName(source);
}

StringVector RowNames::all(const Pointer& names, int numRows) {
    StringVector texts;
    texts.reserve(static_cast<std::size_t>(numRows));
    for (int row = 0; row < numRows; ++row) texts.push_back(at(names, row));
    return texts;
}

int RowNames::find(const Pointer& names, int numRows, const WString& name) {
    if (!names) {
        const std::size_t prefix = std::char_traits<wchar_t>::length(kDefaultPrefix);
        if (name.compare(0, prefix, kDefaultPrefix) != 0) return -1;
        try {
            const int number = Convert::toInt(name.substr(prefix));
            const int row = number > 0 ? number - 1 : -1;
            return row >= 0 && row < numRows && defaultName(row) == name ? row : -1;
        } catch (const ConversionFailure&) {
            return -1;
        }
    }
    const RowOfName& index = names->index_.get([&] {
        RowOfName made;
        made.reserve(static_cast<std::size_t>(numRows));
        for (int row = 0; row < numRows; ++row) {
            const auto [entry, isNew] = made.emplace(at(names, row), row);
            if (!isNew) entry->second = kAmbiguous;
        }
        return made;
    });
    const auto found = index.find(name);
    if (found == index.end()) return -1;
    if (found->second == kAmbiguous) throw DuplicateName(Convert::toUtf8Lossy(name));
    return found->second;
}

}  // namespace Tessel
