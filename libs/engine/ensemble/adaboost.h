#pragma once

#include <span>

#include "engine/crew.h"

// AdaBoost by resampling: records that were misclassified become likelier in the next resample.
// Sources: Y. Freund & R. Schapire, Experiments with a new boosting algorithm, ICML 1996 (M1);
// L. Breiman, Arcing classifiers, The Annals of Statistics 26, 1998; J. Zhu, H. Zou, S. Rosset & T. Hastie,
// Multi-class AdaBoost, Statistics and Its Interface 2, 2009 (SAMME).

namespace Tessel::Engine::Ensemble {

/// How the error of a learner becomes its weight: with a = ln(1 / error - 1) and K classes 0.5 a, a,
/// a + ln(K - 1).
enum class AdaBoostVariant : int { M1_FREUND = 1, M1_BREIMAN = 2, SAMME = 3 };

/// The share of the weights that misclassified records have (those of which `isMissed` is 1, else 0); exactly
/// 0 without such records, and exactly 0.5 when they are half of records of equal weight.
double weightedError(std::span<const double> weights, std::span<const int> isMissed, Crew& crew);

/// The weight of a learner; the largest finite double for the error 0, and 0 for no known variant.
double learnerWeight(AdaBoostVariant variant, double error, int numClasses);

/// Multiplies the weights of misclassified records by exp(alpha), then makes all of them sum to 1 unless they
/// are all 0.
void reweight(std::span<double> weights, std::span<const int> isMissed, double alpha, Crew& crew);

/// Divides the weights by their sum unless that is 0.
void normalize(std::span<double> weights, Crew& crew);

}  // namespace Tessel::Engine::Ensemble
