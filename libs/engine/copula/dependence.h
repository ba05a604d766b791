#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

// How variables depend on each other: rank correlations and copulas learned from data, and samples that have
// them. A data matrix is one row of equally many numbers per variable.
//
// Learning uses the ranks of each variable only (average ranks for equal values), so the margins do not
// matter and infinities are values as good as others. Observations with a NaN are left out.
// Pseudo-observations are u = rank / (n + 1).
//
// - Rank correlation: Spearman's.
// - Clayton, Frank, Gumbel: theta by maximum pseudo-likelihood (C. Genest, K. Ghoudi & L.-P. Rivest,
//   Biometrika 82 (1995) 543-552) with the densities of M. Hofert, M. Maechler & A. McNeil, Journal of
//   Multivariate Analysis 110 (2012) 133-150, for any number of variables.
// - Gauss: the correlation of the normal scores, which is semiparametrically efficient (C. Klaassen & J.
//   Wellner, Bernoulli 3 (1997) 55-77).
// - Student: sin(pi / 2 tau) of Kendall's tau-b, then the degrees of freedom by maximum pseudo-likelihood (S.
//   Demarta & A. McNeil, International Statistical Review 73 (2005) 111-129).
//
// Nothing here throws on bad data: functions return 1 on success and 0 on failure, and leave their result as
// it was when they fail, as they do for rows of 2^31 numbers or more. Numbers do not depend on the number of
// threads.

namespace Tessel::Engine::Copula {

enum class CopulaType { NONE = 0, CLAYTON = 1, FRANK = 2, GUMBEL = 3, GAUSS = 4, STUDENT = 5 };

using DataMatrix = std::span<const std::span<const double>>;
using MutableMatrix = std::span<const std::span<double>>;

/// What was learned. Members that a model does not have are empty or NaN.
struct Dependence {
    /// Rank, Gauss and Student: the correlation matrix, row-major, one row and column per variable.
    std::vector<double> sigma;
    double theta = std::numeric_limits<double>::quiet_NaN();
    double degreesOfFreedom = std::numeric_limits<double>::quiet_NaN();
    /// Copulas: the logarithm of the pseudo-likelihood, by which copulas of the same data compare.
    double statistic = std::numeric_limits<double>::quiet_NaN();
    /// Whether `sigma` had an eigenvalue below 1e-8 and was replaced, see `repairCorrelation`.
    bool isRepaired = false;
    /// Whether theta or the degrees of freedom are a bound of their range: see `fitCopula`.
    bool isAtLimit = false;
};

/// Spearman's rank correlations. O(p n log n + p^2 n).
/// @returns 0 for no variable, rows of different lengths, fewer than two complete observations, or a variable
///          that is constant in them.
int fitRankCorrelation(DataMatrix data, Dependence& result);

/// Learns a copula. Archimedean ones: O(p n log n + p n) with some 30 evaluations of the likelihood; Student
/// takes O(p^2 n log n).
///
/// Ranges: Clayton 0 < theta <= 198, Gumbel 1 <= theta <= 100, Frank 0 < theta <= 395, for two variables also
/// -395 <= theta < 0; the bounds stand for a tau of 0.99, and are what (nearly) comonotone data get. Degrees
/// of freedom: 0.5 to 1000.
/// @returns 0 where `fitRankCorrelation` does, for an unknown type, for a single variable with any copula but
///          Gauss, and for Clayton, Frank and Gumbel when no theta is likelier than independence: these
///          copulas have no negative dependence (but Frank's of two variables).
int fitCopula(CopulaType type, DataMatrix data, Dependence& result);

/// Arranges the numbers of each row so that the rows have the given rank correlations, without changing which
/// numbers a row has: a Latin hypercube remains one.
///
/// R. Iman & W. Conover, Communications in Statistics: Simulation and Computation 11 (1982) 311-334, with van
/// der Waerden scores in the order of the given rows and their correction for the correlation of the scores,
/// which is left out when that is singular, as for not more rows than variables. The matrix is taken to that
/// of the scores by 2 sin(pi / 6 rho), repaired if need be, so that Spearman's correlation meets the target.
/// O(p n log n + p^2 n).
/// @param sigma  row-major, symmetric with a diagonal of ones.
/// @returns 0, with the sample unchanged, for what is no symmetric matrix of this size with ones in its
/// diagonal
///          and numbers in [-1, 1], for rows of different lengths, and for NaN in a row.
int induceRankCorrelation(std::span<const double> sigma, MutableMatrix sample);

/// How many rows of uniform numbers `sampleCopula` wants beside those of the variables, for what all
/// variables of an observation have in common. 0: Gauss, Clayton of two variables with theta < 0; 1: Clayton,
/// Student; 2: Frank, Gumbel.
std::size_t numMixingRows(CopulaType type, const Dependence& copula);

/// Makes a sample of a copula of independent uniform numbers, which it replaces.
///
/// - Clayton, Frank, Gumbel: A. Marshall & I. Olkin, Journal of the American Statistical Association 83
///   (1988) 834-841. The frailty is made from the mixing rows: gamma by inversion; logarithmic series by A.
///   Kemp, Applied Statistics 30 (1981) 249-253; positive stable by M. Kanter, Annals of Probability 3 (1975)
///   697-707.
/// - Negative theta, for two variables: Clayton from -1 by its conditional distribution; Frank is Frank's of
///   -theta with the second variable turned around.
/// - Gauss and Student: normal quantiles, the Cholesky factor, and for Student a chi-square by inversion.
///
/// All numbers of an observation are continuous functions of its uniform numbers (but Frank's frailty), so
/// that Sobol points give a low-discrepancy sample. The parts of a Latin hypercube get lost in all variables
/// but the first of Gauss; `keepMargins` brings them back. O(p n), Gauss and Student O(p^2 n).
/// @param copula   theta; or sigma, and degrees of freedom in (0, 1e10]. A near-singular sigma is repaired.
/// @param mixing   `numMixingRows` rows as long as those of the sample.
/// @param sample   numbers strictly within (0, 1), and so is the result.
/// @returns 0, with the sample unchanged, when a parameter is outside the range of the copula, sigma no
///          correlation matrix of this size, the rows are too few or of different lengths, or a number of
///          theirs is not within (0, 1).
int sampleCopula(CopulaType type, const Dependence& copula, DataMatrix mixing, MutableMatrix sample);

/// Gives each row the numbers of the same row of `margins`, in the order in which its own stand: the
/// dependence of the one, the margins of the other. With a Latin hypercube as margins: N. Packham & W.
/// Schmidt, Journal of Computational Finance 13(3) (2010) 81-111. O(p n log n).
/// @returns 0, with the sample unchanged, when the sizes differ or a number is NaN.
int keepMargins(DataMatrix margins, MutableMatrix sample);

}  // namespace Tessel::Engine::Copula
