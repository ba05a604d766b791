#pragma once

#include "engine/dist/family_dist.h"

// The families of univariate distributions, except the metalogs and the empirical distribution. Sources:
// N. Johnson, S. Kotz & N. Balakrishnan, Continuous Univariate Distributions (2nd ed., Wiley 1994/1995);
// N. Johnson, A. Kemp & S. Kotz, Univariate Discrete Distributions (3rd ed., Wiley 2005).
//
// Parameters in the order of the formula text, their defaults in brackets:

namespace Tessel::Engine::Dist {

// Continuous on the whole line; `scale` and `stdev` > 0.
using CNormalDist = FamilyDist<struct Normal>;          ///< mean [0], stdev [1]
using CErfDist = FamilyDist<struct Erf>;                ///< h [1]: normal, mean 0, stdev 1 / (h sqrt(2))
using CStudentDist = FamilyDist<struct Student>;        ///< degrees of freedom [5]; hidden: location, scale
using CCauchyDist = FamilyDist<struct Cauchy>;          ///< location [0], scale [50]
using CLaplaceDist = FamilyDist<struct Laplace>;        ///< location [0], scale [1]; stdev = scale sqrt(2)
using CLogisticDist = FamilyDist<struct Logistic>;      ///< location [0], scale [1]
using CMaxExtremeDist = FamilyDist<struct MaxExtreme>;  ///< location [0] = mode, scale [1]: Gumbel, maxima
using CMinExtremeDist = FamilyDist<struct MinExtreme>;  ///< location [0] = mode, scale [1]: Gumbel, minima

// Continuous on the positive numbers; all parameters > 0 except the location of `CLogLogisticDist`, above
// which it lies, and the mean of `CLogNormalDist`.
using CExpoDist = FamilyDist<struct Expo>;                ///< mean [1]
using CGammaDist = FamilyDist<struct Gamma>;              ///< shape [4], scale [1]
using CErlangDist = FamilyDist<struct Erlang>;            ///< whole shape [2], scale [1]
using CChiSqDist = FamilyDist<struct ChiSq>;              ///< degrees of freedom [5]
using CPearson5Dist = FamilyDist<struct Pearson5>;        ///< shape [10], scale [100]: inverse gamma
using CInvGaussDist = FamilyDist<struct InvGauss>;        ///< mean [10], shape [40]
using CLogNormalDist = FamilyDist<struct LogNormal>;      ///< mean [0] and stdev [1] of the logarithm
using CLogLogisticDist = FamilyDist<struct LogLogistic>;  ///< location [0], scale [1], shape [5]
using CParetoDist = FamilyDist<struct Pareto>;            ///< shape [20], smallest value [100]
using CRayleighDist = FamilyDist<struct Rayleigh>;        ///< scale [1] = mode
using CWeibullDist = FamilyDist<struct Weibull>;          ///< shape [2], scale [1]

// Continuous between two bounds; shapes > 0, together at most 1e12, lower bound < upper bound. The density of
// `CUniformDist` is 0 at its bounds, so that a fitted one has no finite likelihood of its own sample.
using CBetaDist = FamilyDist<struct Beta>;                ///< shapes [1.5], [3], between 0 and 1
using CBetaGeneralDist = FamilyDist<struct BetaGeneral>;  ///< shapes [1.5], [3], lower [0], upper [10]
using CUniformDist = FamilyDist<struct Uniform>;          ///< lower [0], upper [1]

// Discrete; probabilities in [0, 1], for `CGeomDist` and `CNegBinomialDist` not 0; trials, successes <= 1e12.
using CBernoulliDist = FamilyDist<struct Bernoulli>;      ///< probability [0.5] of 1
using CBinomialDist = FamilyDist<struct Binomial>;        ///< trials [10], probability [0.5]
using CGeomDist = FamilyDist<struct Geom>;                ///< probability [0.5]; failures before a success
using CNegBinomialDist = FamilyDist<struct NegBinomial>;  ///< successes [5] > 0, probability [0.5]; failures
using CPoissonDist = FamilyDist<struct Poisson>;          ///< mean [1] > 0
using CLogarithmicDist = FamilyDist<struct Logarithmic>;  ///< theta [0.5] in (0, 1); from 1 on
using CIntUniformDist = FamilyDist<struct IntUniform>;    ///< lowest [0], highest [10], whole

}  // namespace Tessel::Engine::Dist
