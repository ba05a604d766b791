#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "engine/dist/dist.h"

namespace Tessel::Engine::Dist {

/// The distribution of a sample itself: every observation has probability 1 / n. It is discrete; its moments
/// have divisor n, its quantiles are observations. It has no parameters, and no family code; it is invalid
/// until it has a sample.
///
/// Setting the sample costs O(n log n) time and one copy, asking O(log n).
class CEmpiricalDist final : public CDist {
 public:
    CEmpiricalDist();
    explicit CEmpiricalDist(std::span<const double> sample);

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
    std::span<const double> parameters() const override { return {}; }
    bool setParameters(std::span<const double> parameters) override;
    std::unique_ptr<CDist> clone() const override;

    /// The observations less the shift, ascending.
    std::span<const double> sample() const;

 protected:
    using CDist::formulaStart;
    std::wstring formulaStart() const override;

 private:
    struct State;
    /// Copies of the distribution share it.
    std::shared_ptr<const State> state_;
};

}  // namespace Tessel::Engine::Dist
