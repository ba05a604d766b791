#pragma once

#include <boost/math/policies/policy.hpp>

// What the densities and probabilities of several families are made of. Nothing here throws.

namespace Tessel::Engine::Dist {

/// Boost.Math answers bad arguments with NaN, overflow with infinity, and an iteration that does not end with
/// its last value. Computing in double is accurate enough and twice as fast.
namespace Policies = boost::math::policies;
using Quiet = Policies::policy<
    Policies::domain_error<Policies::ignore_error>, Policies::pole_error<Policies::ignore_error>,
    Policies::overflow_error<Policies::ignore_error>, Policies::underflow_error<Policies::ignore_error>,
    Policies::denorm_error<Policies::ignore_error>, Policies::evaluation_error<Policies::ignore_error>,
    Policies::rounding_error<Policies::ignore_error>,
    Policies::indeterminate_result_error<Policies::ignore_error>, Policies::promote_double<false>,
    Policies::promote_float<false>, Policies::max_series_iterations<10000000>>;

// The densities of the gamma, beta and their discrete kin by saddle-point expansion, which keeps all digits
// where the direct formula subtracts logarithms of huge factorials: C. Loader, Fast and Accurate Computation
// of Binomial Probabilities (2000).

/// log Gamma(x + 1) less Stirling's formula, (x + 1/2) log x - x + log(2 pi) / 2. @pre x > 0
double stirlingError(double x);
/// x log(x / mean) + mean - x, to full relative precision also where x is near mean. @pre x >= 0, mean > 0
double poissonDeviance(double x, double mean);

/// The chances of the gamma distribution of scale 1 (regularised incomplete gamma functions). @pre shape > 0
double gammaLowerTail(double shape, double x);
double gammaUpperTail(double shape, double x);
/// The x whose lower or upper tail is `target`. @pre 0 < target < 1
/// @param logFactor  log(x density(x)) + poissonDeviance(shape, x), which is the same for all x.
double gammaTailQuantile(double shape, double logFactor, bool isLower, double target);

/// The chances of the beta distribution (regularised incomplete beta functions). The work grows with the root
/// of the larger shape. @pre 0 < a <= kLargestShape, b > 0, 0 <= x <= 1
inline constexpr double kLargestShape = 1e12;
double betaLowerTail(double a, double b, double x);
double betaUpperTail(double a, double b, double x);

/// I_x(a, b) B(a, b) / (x^a y^b) with y = 1 - x, by the continued fraction of A. DiDonato & A. Morris,
/// Algorithm 708, ACM Transactions on Mathematical Software 18 (1992), eq. 9, which has no differences of
/// nearly equal terms. For callers who have the power at hand. @pre a > 0, b >= 0, x <= (a + 1) / (a + b +
/// 2), shapes not large
double betaFraction(double a, double b, double x, double y);

/// P(Z <= z) of the standard normal distribution, and its inverse.
double normalCdf(double z);
double normalQuantile(double p);

double digamma(double x);
double trigamma(double x);
double logGamma(double x);
/// log x - digamma(x), to full relative precision also for large x. @pre x > 0
double logLessDigamma(double x);

}  // namespace Tessel::Engine::Dist
