#include "data/case_folding.h"

#include <algorithm>
#include <cstdint>

// All letters handled here lie in the basic plane, so that units of UTF-16 and UTF-32 are treated alike.

namespace Tessel {
namespace {

/// Letters first, first + step, ..., last become lower case by adding `distance`.
struct FoldRange {
    std::uint32_t first;
    std::uint32_t last;
    std::uint32_t step;
    std::int32_t distance;
};

/// Unicode 15, CaseFolding.txt, classes C and S, ascending.
constexpr FoldRange kFoldRanges[] = {
    {0x0041, 0x005A, 1, 32},    {0x00B5, 0x00B5, 1, 775},  {0x00C0, 0x00D6, 1, 32},
    {0x00D8, 0x00DE, 1, 32},    {0x0100, 0x012E, 2, 1},    {0x0132, 0x0136, 2, 1},
    {0x0139, 0x0147, 2, 1},     {0x014A, 0x0176, 2, 1},    {0x0178, 0x0178, 1, -121},
    {0x0179, 0x017D, 2, 1},     {0x017F, 0x017F, 1, -268}, {0x01A0, 0x01A4, 2, 1},
    {0x01AF, 0x01AF, 1, 1},     {0x01CD, 0x01DB, 2, 1},    {0x01DE, 0x01EE, 2, 1},
    {0x01F8, 0x021E, 2, 1},     {0x0222, 0x0232, 2, 1},    {0x0386, 0x0386, 1, 38},
    {0x0388, 0x038A, 1, 37},    {0x038C, 0x038C, 1, 64},   {0x038E, 0x038F, 1, 63},
    {0x0391, 0x03A1, 1, 32},    {0x03A3, 0x03AB, 1, 32},   {0x03C2, 0x03C2, 1, 1},
    {0x03CF, 0x03CF, 1, 8},     {0x03D0, 0x03D0, 1, -30},  {0x03D1, 0x03D1, 1, -25},
    {0x03D5, 0x03D5, 1, -15},   {0x03D6, 0x03D6, 1, -22},  {0x03D8, 0x03EE, 2, 1},
    {0x03F0, 0x03F0, 1, -54},   {0x03F1, 0x03F1, 1, -48},  {0x03F4, 0x03F4, 1, -60},
    {0x03F5, 0x03F5, 1, -64},   {0x03F7, 0x03F7, 1, 1},    {0x03F9, 0x03F9, 1, -7},
    {0x03FA, 0x03FA, 1, 1},     {0x03FD, 0x03FF, 1, -130}, {0x0400, 0x040F, 1, 80},
    {0x0410, 0x042F, 1, 32},    {0x1E00, 0x1E94, 2, 1},    {0x1E9B, 0x1E9B, 1, -58},
    {0x1E9E, 0x1E9E, 1, -7615}, {0x1EA0, 0x1EFE, 2, 1},
};

wchar_t foldUnit(wchar_t unit) {
    const auto code = static_cast<std::uint32_t>(unit);
    const auto* range = std::lower_bound(std::begin(kFoldRanges), std::end(kFoldRanges), code,
                                         [](const FoldRange& r, std::uint32_t c) { return r.last < c; });
    const bool folds =
        range != std::end(kFoldRanges) && code >= range->first && (code - range->first) % range->step == 0;
    return folds ? static_cast<wchar_t>(static_cast<std::int32_t>(code) + range->distance) : unit;
}

}  // namespace

WString foldCase(WStringView text) {
    WString folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), foldUnit);
    return folded;
}

}  // namespace Tessel
