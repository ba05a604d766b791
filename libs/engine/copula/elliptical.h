#pragma once

#include "engine/copula/student_scores.h"

namespace Tessel::Engine::Copula {

/// `fitCopula` for Gauss.
int fitGauss(const Ranks& ranks, Dependence& result);

/// `fitCopula` for Student.
int fitStudent(const Ranks& ranks, Dependence& result);

/// The logarithm of the pseudo-likelihood of Student's copula. O(n p^2).
/// @param factor  of the correlation matrix, from `choleskyFactor`.
double studentLogLikelihood(std::span<const double> factor, double degreesOfFreedom, const Ranks& ranks,
                            const StudentScores& scores);

}  // namespace Tessel::Engine::Copula
