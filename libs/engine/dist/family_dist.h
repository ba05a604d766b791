#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "engine/dist/dist.h"

namespace Tessel::Engine::Dist {

/// The most parameters that a family has.
inline constexpr std::size_t kMaxParameters = 4;
/// The parameters of a family in the order of its formula text; what is in the places after them is ignored.
using Parameters = std::array<double, kMaxParameters>;

inline constexpr Parameters kNoParameters = [] {
    Parameters parameters;
    parameters.fill(std::numeric_limits<double>::quiet_NaN());
    return parameters;
}();

struct ParameterDescription {
    std::wstring_view name;
    double defaultValue = std::numeric_limits<double>::quiet_NaN();
};

/// The row of a family in the catalogue, and what holds for all distributions of the family.
struct FamilyDescription {
    std::int32_t code = CDist::kNoFamilyCode;
    std::wstring_view displayName;
    std::wstring_view functionName;  ///< As the formula text begins.
    std::wstring_view sentence;      ///< What the family is, in one sentence.
    bool isContinuous = true;
    bool isBoundedBelow = false;
    Interval dataDomain{};
    std::array<ParameterDescription, kMaxParameters> parameters{};  ///< Unused places have no name.
    std::size_t numParameters = 0;                                  ///< In the formula text.
    std::size_t numHidden = 0;  ///< Parameters after them that the formula text does not tell.
};

/// The distributions of one family. `Family` is a small type that states what is the family's own; this class
/// adds what all families do the same way. How a `Family` looks is told in family_frame.h; the families are
/// complete in their sources only.
template <class Family>
class FamilyDist final : public CDist {
 public:
    /// With the default parameters.
    FamilyDist();
    /// With the parameters in the order of the formula text; a wrong number of them is not valid.
    template <std::convertible_to<double>... Values>
    requires(sizeof...(Values) > 0) explicit FamilyDist(Values... values) : FamilyDist() {
        if (const double list[] = {static_cast<double>(values)...}; !accepts(sizeof...(Values)))
            assign(kNoParameters);
        else
            setParameters(list);
    }

    static const FamilyDescription& description();

    bool isValid() const override;
    using CDist::formulaText;
    double mean() const override;
    double variance() const override;
    double skewness() const override;
    double excessKurtosis() const override;
    double mode() const override;
    double pdf(double x) const override;
    double cdf(double x) const override;
    double inverseCdf(double p) const override;
    using CDist::fitData;
    bool fitData(std::size_t n, const double* values) override;
    double complementaryCdf(double x) const override;
    double logPdf(double x) const override;
    void pdfs(std::span<const double> x, std::span<double> result) const override;
    void logPdfs(std::span<const double> x, std::span<double> result) const override;
    void cdfs(std::span<const double> x, std::span<double> result) const override;
    void complementaryCdfs(std::span<const double> x, std::span<double> result) const override;
    void inverseCdfs(std::span<const double> p, std::span<double> result) const override;
    std::span<const double> parameters() const override;
    bool setParameters(std::span<const double> parameters) override;
    std::unique_ptr<CDist> clone() const override;

 protected:
    using CDist::formulaStart;
    std::wstring formulaStart() const override;

 private:
    static bool accepts(std::size_t numParameters);
    void assign(const Parameters& parameters);

    Parameters parameters_ = kNoParameters;
    /// What follows from the parameters; copies of the distribution share it.
    std::shared_ptr<const Family> family_;
    bool isAdmissible_ = false;
};

}  // namespace Tessel::Engine::Dist
