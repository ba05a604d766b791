#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "engine/dist/family_dist.h"

// The one table of all families, for callers who have the code or the name of one.

namespace Tessel::Engine::Dist {

/// The code of the metalog with 2016 order of terms.
inline constexpr std::int32_t kMetalogCode = 59;
/// The code of the metalog with the second order of terms.
inline constexpr std::int32_t kMetalog2Code = 76;

struct CatalogueEntry {
    FamilyDescription family;
    /// A distribution with the default parameters; null for the metalogs, which are made from coefficients.
    std::unique_ptr<CDist> (*make)() = nullptr;
};

/// The families in the order of their codes, then those without a code.
std::span<const CatalogueEntry> catalogue();

/// The entry of a family, null when there is none.
const CatalogueEntry* findFamily(std::int32_t code);
/// By function name, for example "LyrNormal".
const CatalogueEntry* findFamily(std::wstring_view functionName);

/// A distribution of the family with its default parameters; null when there is no such family, or it has no
/// defaults.
std::unique_ptr<CDist> makeDist(std::int32_t code);
std::unique_ptr<CDist> makeDist(std::wstring_view functionName);

}  // namespace Tessel::Engine::Dist
