#pragma once

#include <limits>
#include <span>

#include "engine/dist/critical_values.h"
#include "engine/dist/metalog_dist.h"

namespace Tessel::Engine::Dist {

enum class GoodnessOfFitType : int {
    CHI_SQUARE = 0,
    KOLMOGOROV_SMIRNOV = 1,
    ANDERSON_DARLING = 2,
    AIC = 3,
    BIC = 4,
    AICC = 5,
    BICC = 6,
    MAX_LIKELIHOOD = 7,
    HQIC = 8
};

/// A test statistic with what it must not exceed; NaN where it cannot be computed.
struct FitTest {
    double statistic = std::numeric_limits<double>::quiet_NaN();
    double criticalValue = std::numeric_limits<double>::quiet_NaN();

    bool isComputed() const;
    /// @pre isComputed()
    bool rejects() const { return statistic > criticalValue; }
};

/// How well a continuous distribution with k parameters fits n values x[1] <= ... <= x[n], with F its cdf and
/// L the logarithm of the likelihood, the sum of ln f(x[i]).
struct GoodnessOfFit {
    /// Over m = `numChiSquareClasses(n)` classes of probability 1/m: sum of (count - n/m)^2 / (n/m), with
    /// m - 1 - k degrees of freedom; not computed without any.
    FitTest chiSquare;
    /// D = max over i of max(i/n - F(x[i]), F(x[i]) - (i - 1)/n).
    FitTest kolmogorovSmirnov;
    /// A^2 = -n - 1/n sum of (2i - 1) (ln F(x[i]) + ln(1 - F(x[n + 1 - i]))). Not computed when a value lies
    /// where F is 0 or 1.
    FitTest andersonDarling;
    /// L; not finite when a value lies where the density is 0 or infinite, and so are the criteria then.
    double logLikelihood = std::numeric_limits<double>::quiet_NaN();
    int numParameters = 0;      ///< k
    std::size_t numValues = 0;  ///< n

    bool hasLikelihood() const;
    bool isAnyComputed() const;

    /// The statistic of a test, L for MAX_LIKELIHOOD, or a criterion; NaN when it cannot be computed.
    ///
    /// - AIC = 2k - 2L: H. Akaike (1974).
    /// - AICc = AIC + 2k(k + 1) / (n - k - 1), NaN for n <= k + 1: C. Hurvich & C. Tsai (1989).
    /// - BIC = k ln n - 2L: G. Schwarz (1978).
    /// - BICc = n k ln n / (n - k - 1) - 2L, NaN for n <= k + 1: A. McQuarrie, A Small-sample Correction for
    ///   the Schwarz SIC Model Selection Criterion, Statistics & Probability Letters 44 (1999) 79-86.
    /// - HQIC = 2k ln ln n - 2L, NaN for n < 3: E. Hannan & B. Quinn (1979).
    double value(GoodnessOfFitType type) const;

    /// Whether this fit is better by the given measure: a larger likelihood, a smaller value of all others,
    /// and any value rather than none.
    bool isBetterThan(const GoodnessOfFit& other, GoodnessOfFitType type) const;
    /// Whether the measure tells something against the fit: a test that rejects or cannot be computed, or no
    /// likelihood. HQIC never does.
    bool isDoubtedBy(GoodnessOfFitType type) const;
};

/// Measures a distribution on a sample; O(n), in parallel for long samples with the same result. For discrete
/// distributions only the likelihood is computed.
/// @param sorted         n >= 1 values in ascending order.
/// @param numParameters  k, those that were fitted.
/// @param critical       for n values.
GoodnessOfFit goodnessOfFit(const CDist& dist, std::span<const double> sorted, int numParameters,
                            const CriticalValues& critical);
/// The same, several times as fast.
GoodnessOfFit goodnessOfFit(const CMetalogDist& dist, std::span<const double> sorted, int numParameters,
                            const CriticalValues& critical);

}  // namespace Tessel::Engine::Dist
