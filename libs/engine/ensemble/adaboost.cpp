#include "engine/ensemble/adaboost.h"

#include <cmath>
#include <limits>

namespace Tessel::Engine::Ensemble {

double weightedError(std::span<const double> weights, std::span<const int> isMissed, Crew& crew) {
    const double missed = compensatedSumByStretches(crew, weights.size(),
                                                    [&](std::size_t i) { return weights[i] * isMissed[i]; });
    const double total =
        compensatedSumByStretches(crew, weights.size(), [&](std::size_t i) { return weights[i]; });
    return missed == 0.0 ? 0.0 : missed / total;
}

double learnerWeight(AdaBoostVariant variant, double error, int numClasses) {
    if (error == 0.0) return std::numeric_limits<double>::max();
    // Below the smallest normal number the reciprocal overflows.
    const double logOdds =
        error < std::numeric_limits<double>::min() ? -std::log(error) : std::log(1.0 / error - 1.0);
    switch (variant) {
        case AdaBoostVariant::M1_FREUND:
            return 0.5 * logOdds;
        case AdaBoostVariant::M1_BREIMAN:
            return logOdds;
        case AdaBoostVariant::SAMME:
            return logOdds + std::log(static_cast<double>(numClasses - 1));
    }
    return 0.0;
}

void reweight(std::span<double> weights, std::span<const int> isMissed, double alpha, Crew& crew) {
    // Where that factor would overflow, the other weights are divided by it.
    constexpr double kLargestAlpha = 700.0;
    const bool growsMissed = alpha <= kLargestAlpha;
    const double factors[] = {growsMissed ? 1.0 : std::exp(-alpha), growsMissed ? std::exp(alpha) : 1.0};
    forEachStretch(crew, weights.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) weights[i] *= factors[isMissed[i] != 0 ? 1 : 0];
    });
    normalize(weights, crew);
}

void normalize(std::span<double> weights, Crew& crew) {
    const double sum =
        compensatedSumByStretches(crew, weights.size(), [&](std::size_t i) { return weights[i]; });
    if (sum == 0.0) return;
    forEachStretch(crew, weights.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) weights[i] /= sum;
    });
}

}  // namespace Tessel::Engine::Ensemble
