#include "engine/dist/catalogue.h"

#include <algorithm>
#include <array>

#include "engine/dist/empirical_dist.h"
#include "engine/dist/families.h"
#include "engine/dist/metalog_dist.h"

namespace Tessel::Engine::Dist {
namespace {

template <class Dist>
CatalogueEntry entryOf(const FamilyDescription& family = Dist::description()) {
    return {family, []() -> std::unique_ptr<CDist> { return std::make_unique<Dist>(); }};
}

constexpr FamilyDescription kMetalog{
    .code = CMetalogDist::kFamilyCode,
    .displayName = L"Metalog",
    .functionName = L"LyrMetalog",
    .sentence =
        L"LyrMetalog is a continuous custom distribution obtained by fitting historical cdf pairs into "
        L"a meta-logistic structure defined by 2 to 16 coeficients and optional bounds."};

constexpr FamilyDescription kMetalog2{
    .code = CMetalog2Dist::kFamilyCode,
    .displayName = L"Metalog 2",
    .functionName = L"LyrMetalog2",
    .sentence =
        L"LyrMetalog2 is a continuous custom distribution like LyrMetalog with another order of terms, "
        L"which symmetric cdf pairs determine for any number of terms."};

constexpr FamilyDescription kEmpirical{
    .displayName = L"Empirical",
    .functionName = L"LyrEmpirical",
    .sentence =
        L"LyrEmpirical is a discrete distribution that gives every value of a sample the same "
        L"probability.",
    .isContinuous = false,
    .isBoundedBelow = true};

const CatalogueEntry* findEntry(auto&& isWanted) {
    const auto entries = catalogue();
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const CatalogueEntry& entry) { return isWanted(entry.family); });
    return found == entries.end() ? nullptr : &*found;
}

std::unique_ptr<CDist> makeFrom(const CatalogueEntry* entry) {
    return entry == nullptr ? nullptr : entry->make();
}

}  // namespace

std::span<const CatalogueEntry> catalogue() {
    static const std::array kEntries{
        entryOf<CBernoulliDist>(),
        entryOf<CBetaDist>(),
        entryOf<CBetaGeneralDist>(),
        entryOf<CBinomialDist>(),
        entryOf<CCauchyDist>(),
        entryOf<CChiSqDist>(),
        entryOf<CErfDist>(),
        entryOf<CErlangDist>(),
        entryOf<CExpoDist>(),
        entryOf<CGammaDist>(),
        entryOf<CGeomDist>(),
        entryOf<CIntUniformDist>(),
        entryOf<CInvGaussDist>(),
        entryOf<CLaplaceDist>(),
        entryOf<CLogarithmicDist>(),
        entryOf<CLogisticDist>(),
        entryOf<CLogLogisticDist>(),
        entryOf<CMaxExtremeDist>(),
        entryOf<CMinExtremeDist>(),
        entryOf<CNegBinomialDist>(),
        entryOf<CNormalDist>(),
        entryOf<CParetoDist>(),
        entryOf<CPearson5Dist>(),
        entryOf<CPoissonDist>(),
        entryOf<CRayleighDist>(),
        entryOf<CStudentDist>(),
        entryOf<CUniformDist>(),
        entryOf<CWeibullDist>(),
        entryOf<CMetalogDist>(kMetalog),
        entryOf<CMetalog2Dist>(kMetalog2),
        entryOf<CLogNormalDist>(),
        entryOf<CEmpiricalDist>(kEmpirical),
    };
    return kEntries;
}

const CatalogueEntry* findFamily(std::int32_t code) {
    return findEntry([code](const FamilyDescription& family) {
        return family.code == code && code != CDist::kNoFamilyCode;
    });
}
const CatalogueEntry* findFamily(std::wstring_view functionName) {
    return findEntry([&](const FamilyDescription& family) { return family.functionName == functionName; });
}

std::unique_ptr<CDist> makeDist(std::int32_t code) { return makeFrom(findFamily(code)); }
std::unique_ptr<CDist> makeDist(std::wstring_view functionName) { return makeFrom(findFamily(functionName)); }

}  // namespace Tessel::Engine::Dist
