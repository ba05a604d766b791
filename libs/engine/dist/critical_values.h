#pragma once

#include <cstddef>

// The distributions of the statistics of goodness-of-fit tests when the tested distribution is known, and
// their critical values. Fitting parameters to the same sample makes the statistics of Kolmogorov-Smirnov and
// of Anderson-Darling smaller, so that these values are then conservative; values for estimated parameters
// differ from family to family and are not known for metalogs.

namespace Tessel::Engine::Dist {

/// P(D <= d) of the two-sided statistic of Kolmogorov and Smirnov for n values. To 140 values exact, by the
/// matrix power of G. Marsaglia, W. Tsang & J. Wang, Evaluating Kolmogorov's Distribution, J. Stat. Software
/// 8(18) (2003); beyond by the expansion of W. Pelz & I. Good, Approximating the Lower Tail-areas of the
/// Kolmogorov-Smirnov One-sample Statistic, J. R. Stat. Soc. B 38 (1976) 152-156, in the form of R. Simard &
/// P. L'Ecuyer, Computing the Two-Sided Kolmogorov-Smirnov Distribution, J. Stat. Software 39(11) (2011), to
/// 1e-5.
/// @param d  0 <= d <= 1. @pre n >= 1
double kolmogorovSmirnovCdf(std::size_t n, double d);

/// P(A^2 <= z) of the statistic of Anderson and Darling for n values: the limit by the series of T. Anderson
/// & D. Darling, Asymptotic Theory of Certain "Goodness of Fit" Criteria, Ann. Math. Stat. 23 (1952) 193-212,
/// and the correction for n of G. Marsaglia & J. Marsaglia, Evaluating the Anderson-Darling Distribution, J.
/// Stat. Software 9(2) (2004), here for the upper tail from 0.8, to about 1e-5.
/// @param z  z > 1.5. @pre n >= 1
double andersonDarlingCdf(std::size_t n, double z);

/// The number of equally probable classes of the chi-square test: 2 n^(2/5), rounded (D. Moore in R.
/// D'Agostino & M. Stephens, Goodness-of-Fit Techniques (1986), ch. 3).
std::size_t numChiSquareClasses(std::size_t n);

/// What a statistic of n values exceeds with probability 1 - confidence.
class CriticalValues {
 public:
    static constexpr double kLowestConfidence = 0.90;
    static constexpr double kHighestConfidence = 0.99;

    /// @param confidence  taken into [0.9, 0.99]; NaN counts as 0.9. @pre n >= 1
    CriticalValues(std::size_t n, double confidence);

    std::size_t numValues() const { return numValues_; }
    double confidence() const { return confidence_; }
    double kolmogorovSmirnov() const { return kolmogorovSmirnov_; }
    double andersonDarling() const { return andersonDarling_; }
    /// NaN without degrees of freedom.
    double chiSquare(double degreesOfFreedom) const;

 private:
    std::size_t numValues_;
    double confidence_, kolmogorovSmirnov_, andersonDarling_;
};

}  // namespace Tessel::Engine::Dist
