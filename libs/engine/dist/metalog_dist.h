#pragma once

#include <vector>

#include "engine/dist/dist.h"
#include "engine/dist/metalog.h"

namespace Tessel::Engine::Dist {

/// The metalog distribution with the order of terms of 2016, unbounded, bounded on one side or on both. Its
/// parameters are the coefficients; bounds are set beside them and are the support.
///
/// Quantiles are evaluated directly; probabilities and densities take the inverse of the quantile function,
/// to about 1e-14 relative in both tails where the quantile function itself is that well determined.
class CMetalogDist : public CDist {
 public:
    static constexpr std::int32_t kFamilyCode = 59;

    /// Unbounded and invalid: there are no coefficients yet.
    CMetalogDist() : CMetalogDist(MetalogOrder::KEELIN_2016, kFamilyCode) {}
    /// The metalog with known coefficients, see `setCoefficients`.
    CMetalogDist(double lower, double upper, int numTerms, const double* coefficients) : CMetalogDist() {
        setCoefficients(lower, upper, numTerms, coefficients);
    }

    /// Sets bounds (not finite: unbounded on that side) and coefficients. With a number of terms outside 2 to
    /// 16 or null, no coefficients are stored and the distribution is invalid; so it is, with the
    /// coefficients stored, when the density is not positive everywhere (`isFeasible`) or the bounds do not
    /// include anything.
    /// @return isValid()
    bool setCoefficients(double lower, double upper, int numTerms, const double* coefficients);
    /// Keeps the coefficients, which then belong to another scale.
    bool setBounds(double lower, double upper);

    int numTerms() const { return static_cast<int>(coefficients_.size()); }
    /// @param index  1 to numTerms(); 0 for others.
    double coefficient(int index) const;
    const MetalogBounds& bounds() const { return bounds_; }
    MetalogOrder order() const { return order_; }
    const MetalogCurve& curve() const { return curve_; }

    bool isValid() const override;
    double mean() const override;
    double variance() const override;
    double skewness() const override;
    double excessKurtosis() const override;
    double mode() const override;
    double pdf(double x) const override;
    double cdf(double x) const override;
    double inverseCdf(double p) const override;
    double complementaryCdf(double x) const override;
    double logPdf(double x) const override;

    /// Least squares with the present bounds and number of terms, 2 if there are none yet.
    bool fitData(std::size_t n, const double* values) override;
    using CDist::fitData;

    std::span<const double> parameters() const override { return coefficients_; }
    bool setParameters(std::span<const double> parameters) override;
    std::unique_ptr<CDist> clone() const override { return std::make_unique<CMetalogDist>(*this); }

    /// Everything about one value, in one evaluation; NaN when invalid.
    struct Evaluation {
        double cdf;
        double complementaryCdf;
        double logCdf;
        double logComplementaryCdf;
        double logDensity;
    };
    Evaluation at(double x) const;
    /// The same for many values, faster when they ascend.
    void at(std::span<const double> x, std::span<Evaluation> result) const;

 protected:
    CMetalogDist(MetalogOrder order, std::int32_t familyCode);
    std::wstring formulaStart() const override;

 private:
    MetalogMoments moments() const;
    Evaluation evaluation(double y, double onLine, const MetalogInverse::Solution& solution) const;
    double logDensityAt(double logit) const;

    MetalogOrder order_;
    std::vector<double> coefficients_;
    MetalogBounds bounds_;
    MetalogCurve curve_;
    MetalogInverse inverse_;
    bool isDistribution_ = false;  ///< What `isValid` asks of coefficients and bounds.
};

/// The metalog distribution with the order of terms of 2025: terms 7, 8, 11, 12, 15 and 16 differ.
class CMetalog2Dist : public CMetalogDist {
 public:
    static constexpr std::int32_t kFamilyCode = 76;

    CMetalog2Dist() : CMetalogDist(MetalogOrder::BAUCELLS_2025, kFamilyCode) {}
    CMetalog2Dist(double lower, double upper, int numTerms, const double* coefficients) : CMetalog2Dist() {
        setCoefficients(lower, upper, numTerms, coefficients);
    }
    std::unique_ptr<CDist> clone() const override { return std::make_unique<CMetalog2Dist>(*this); }

 protected:
    std::wstring formulaStart() const override;
};

}  // namespace Tessel::Engine::Dist
