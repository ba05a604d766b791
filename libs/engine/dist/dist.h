#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>

// The base of all univariate probability distributions.
//
// Nothing here throws on bad numbers. A distribution whose parameters are not admissible answers `isValid`
// with false, NaN to every question about probabilities and moments, and an empty formula text.

namespace Tessel::Engine::Dist {

/// The range from `lower` to `upper`, both included; infinite means unbounded on that side.
struct Interval {
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();

    bool contains(double x) const { return lower <= x && x <= upper; }  ///< False for NaN.
};

/// A distribution of X = shift + Y, where Y follows a family. The shift moves everything that is asked of the
/// distribution: densities, probabilities, quantiles, mean, median, mode, and the sample of a fit. Data
/// domain and support are stated for Y.
///
/// For discrete families "density" means the probability of a value.
///
/// Objects have no shared state; reading one from several threads is safe.
class CDist {
 public:
    /// Room for the longest formula text and the terminating zero, in wide characters.
    static constexpr std::size_t kFormulaSize = 256;
    /// The family code of a distribution that has none.
    static constexpr std::int32_t kNoFamilyCode = 0;

    virtual ~CDist() = default;

    /// Whether the parameters are admissible.
    virtual bool isValid() const = 0;

    /// Writes the formula text, for example "LyrNormal(0, 1, LyrShift(2))", and a terminating zero. Numbers
    /// have six significant digits as those of "%g". The text is cut off at 255 characters; it is empty when
    /// `isValid` is false. Null is ignored.
    /// @param buffer  room for `kFormulaSize` characters.
    virtual void formulaText(wchar_t* buffer) const;

    // Moments; NaN where they do not exist, infinite where they diverge.
    virtual double mean() const = 0;
    virtual double variance() const = 0;
    virtual double skewness() const = 0;
    /// The fourth standardised moment less 3: 0 for the normal distribution.
    virtual double excessKurtosis() const = 0;
    /// Where the density is largest; of several such places the lowest.
    virtual double mode() const = 0;

    /// The density at x; 0 outside the support.
    virtual double pdf(double x) const = 0;
    /// P(X <= x).
    virtual double cdf(double x) const = 0;
    /// The x with cdf(x) = p; for discrete families the smallest x with cdf(x) >= p. The ends of the support
    /// for 0 and 1; NaN for p outside [0, 1].
    virtual double inverseCdf(double p) const = 0;

    /// Sets the parameters from a sample, by maximum likelihood unless the family says otherwise, and the
    /// family's default support. Nothing changes when n is 0, `values` is null, or a value is not finite or
    /// lies outside the data domain. A sample without an estimate (one without spread, for most families)
    /// leaves an invalid distribution.
    /// @return whether the distribution was fitted and is valid.
    virtual bool fitData(std::size_t n, const double* values) = 0;

    /// P(X > x), to full relative precision where cdf(x) is close to 1.
    virtual double complementaryCdf(double x) const = 0;
    /// The natural logarithm of the density; minus infinity outside the support.
    virtual double logPdf(double x) const = 0;

    // The same for many numbers at once; `result` has the size of the first argument and may be it.
    virtual void pdfs(std::span<const double> x, std::span<double> result) const;
    virtual void logPdfs(std::span<const double> x, std::span<double> result) const;
    virtual void cdfs(std::span<const double> x, std::span<double> result) const;
    virtual void complementaryCdfs(std::span<const double> x, std::span<double> result) const;
    virtual void inverseCdfs(std::span<const double> p, std::span<double> result) const;

    /// The parameters in the order of the formula text.
    virtual std::span<const double> parameters() const = 0;
    /// Sets the parameters in the order of the formula text, the family's flags and its default support. They
    /// need not be admissible, see `isValid`.
    /// @return false, with nothing changed, when the number of parameters is not that of the family; else
    ///         whether they are admissible.
    virtual bool setParameters(std::span<const double> parameters) = 0;
    virtual std::unique_ptr<CDist> clone() const = 0;

    std::wstring formulaText() const;
    double standardDeviation() const;
    /// The fourth standardised moment: 3 for the normal distribution.
    double kurtosis() const;
    double median() const;
    /// The sum of `logPdf` over a sample; minus infinity when a value lies outside the support.
    double logLikelihood(std::span<const double> x) const;
    bool fitData(std::span<const double> values) { return fitData(values.size(), values.data()); }

    /// The position in the catalogue of families; `kNoFamilyCode` for families without one.
    std::int32_t familyCode() const { return familyCode_; }
    bool isContinuous() const { return isContinuous_; }
    bool isBoundedBelow() const { return isBoundedBelow_; }

    /// Where observations may lie for `fitData`.
    const Interval& dataDomain() const { return dataDomain_; }
    void setDataDomain(const Interval& domain) { dataDomain_ = domain; }

    /// Outside the support the density is 0 and the cdf 0 or 1; quantiles do not leave it. Bounds narrower
    /// than the family's cut the distribution off without scaling it.
    const Interval& support() const { return support_; }
    void setSupport(const Interval& support) { support_ = support; }

    double shift() const { return shift_; }
    void setShift(double shift) { shift_ = shift; }

 protected:
    CDist() = default;
    CDist(const CDist&) = default;
    CDist& operator=(const CDist&) = default;

    /// The formula text up to the shift: name, opening parenthesis, parameters. @pre isValid()
    virtual std::wstring formulaStart() const = 0;
    /// "name(first, second".
    static std::wstring formulaStart(std::wstring_view name, std::span<const double> parameters);

    /// The check that every `fitData` starts with: there are values, all are finite and, less the shift, in
    /// the data domain.
    bool isSampleAdmissible(std::size_t n, const double* values) const;

    void setFamily(std::int32_t code, bool isContinuous, bool isBoundedBelow) {
        familyCode_ = code;
        isContinuous_ = isContinuous;
        isBoundedBelow_ = isBoundedBelow;
    }

 private:
    std::int32_t familyCode_ = kNoFamilyCode;
    bool isContinuous_ = true;
    bool isBoundedBelow_ = false;
    Interval dataDomain_;
    Interval support_;
    double shift_ = 0.0;
};

}  // namespace Tessel::Engine::Dist
