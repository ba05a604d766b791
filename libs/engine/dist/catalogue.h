#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "engine/dist/family_dist.h"

// The one table of all families, for callers who have the code or the name of one.

namespace Tessel::Engine::Dist {

struct CatalogueEntry {
    FamilyDescription family;
    /// A distribution with the default parameters. The metalogs and the empirical distribution have none:
    /// they are not valid until they get coefficients or a sample.
    std::unique_ptr<CDist> (*make)();
};

/// The families in the order of their codes, then those without a code.
std::span<const CatalogueEntry> catalogue();

/// The entry of a family, null when there is none.
const CatalogueEntry* findFamily(std::int32_t code);
/// By function name, for example "LyrNormal".
const CatalogueEntry* findFamily(std::wstring_view functionName);

/// What the entry of the family makes; null when there is no such family.
std::unique_ptr<CDist> makeDist(std::int32_t code);
std::unique_ptr<CDist> makeDist(std::wstring_view functionName);

}  // namespace Tessel::Engine::Dist
