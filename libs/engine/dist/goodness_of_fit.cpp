#include "engine/dist/goodness_of_fit.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <vector>

#include "data/util/compensated_sum.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Values are taken in blocks of this size, whose sums are then added in order.
constexpr std::size_t kBlock = 4096;
/// Evaluated at a time, to stay in the first-level cache.
constexpr std::size_t kChunk = 256;
constexpr std::size_t kParallelBlocks = 8;

using Evaluation = CMetalogDist::Evaluation;

/// The sums over some of the values.
class Sums {
 public:
    explicit Sums(std::size_t numClasses) : classCounts_(numClasses) {}

    /// @param i  the position of the value in the sorted sample of n, from 0.
    void add(const Evaluation& y, std::size_t i, double n) {
        const double before = static_cast<double>(i) / n, after = static_cast<double>(i + 1) / n;
        const double distance = std::max(after - y.cdf, y.cdf - before);
        see(distance);
        // 0 times infinity does not occur: both weights are positive.
        const double rank = static_cast<double>(i);
        andersonDarling_.add((2.0 * rank + 1.0) * y.logCdf);
        andersonDarling_.add((2.0 * (n - rank) - 1.0) * y.logComplementaryCdf);
        logLikelihood_.add(y.logDensity);
        if (y.cdf >= 0.0) {
            const double position = y.cdf * static_cast<double>(classCounts_.size());
            ++classCounts_[std::min(static_cast<std::size_t>(position), classCounts_.size() - 1)];
        }
    }

    void add(const Sums& other) {
        see(other.distance_);
        andersonDarling_.add(other.andersonDarling_);
        logLikelihood_.add(other.logLikelihood_);
        for (std::size_t j = 0; j < classCounts_.size(); ++j) classCounts_[j] += other.classCounts_[j];
    }

    GoodnessOfFit result(std::size_t n, int numParameters, const CriticalValues& critical) const {
        GoodnessOfFit fit;
        fit.numParameters = numParameters;
        fit.numValues = n;
        fit.logLikelihood = logLikelihood_.value();
        fit.kolmogorovSmirnov = {distance_, critical.kolmogorovSmirnov()};
        const double numValues = static_cast<double>(n);
        const double statistic = -numValues - andersonDarling_.value() / numValues;
        if (std::isfinite(statistic)) fit.andersonDarling = {statistic, critical.andersonDarling()};

        const double expected = numValues / static_cast<double>(classCounts_.size());
        double squares = 0.0;
        for (const std::size_t count : classCounts_) {
            const double excess = static_cast<double>(count) - expected;
            squares += excess * excess;
        }
        const double freedom = static_cast<double>(classCounts_.size()) - 1.0 - numParameters;
        if (freedom > 0.0 && !std::isnan(distance_))
            fit.chiSquare = {squares / expected, critical.chiSquare(freedom)};
        return fit;
    }

 private:
    void see(double distance) {
        if (distance > distance_ || std::isnan(distance)) distance_ = distance;  // a NaN stays
    }

    double distance_ = -kInfinity;
    Numeric::CompensatedSum andersonDarling_, logLikelihood_;
    std::vector<std::size_t> classCounts_;
};

/// @param evaluate  fills the evaluations of some values; called from several threads.
template <class Evaluate>
GoodnessOfFit measure(std::span<const double> sorted, int numParameters, const CriticalValues& critical,
                      Evaluate&& evaluate) {
    assert(!sorted.empty() && critical.numValues() == sorted.size());
    const std::size_t n = sorted.size(), numBlocks = (n + kBlock - 1) / kBlock;
    std::vector<Sums> sums(numBlocks, Sums(numChiSquareClasses(n)));
#pragma omp parallel for schedule(static) if (numBlocks >= kParallelBlocks)
    for (std::size_t block = 0; block < numBlocks; ++block) {
        std::array<Evaluation, kChunk> evaluations;
        const std::size_t end = std::min((block + 1) * kBlock, n);
        for (std::size_t begin = block * kBlock; begin < end; begin += kChunk) {
            const std::size_t count = std::min(kChunk, end - begin);
            evaluate(sorted.subspan(begin, count), std::span(evaluations).first(count));
            for (std::size_t i = 0; i < count; ++i)
                sums[block].add(evaluations[i], begin + i, static_cast<double>(n));
        }
    }
    for (std::size_t block = 1; block < numBlocks; ++block) sums.front().add(sums[block]);
    return sums.front().result(n, numParameters, critical);
}

}  // namespace

bool FitTest::isComputed() const { return !std::isnan(statistic) && !std::isnan(criticalValue); }

bool GoodnessOfFit::hasLikelihood() const { return std::isfinite(logLikelihood); }

bool GoodnessOfFit::isAnyComputed() const {
    return chiSquare.isComputed() || kolmogorovSmirnov.isComputed() || andersonDarling.isComputed() ||
           hasLikelihood();
}

double GoodnessOfFit::value(GoodnessOfFitType type) const {
    const auto statisticOf = [](const FitTest& test) { return test.isComputed() ? test.statistic : kNaN; };
    switch (type) {
        case GoodnessOfFitType::CHI_SQUARE:
            return statisticOf(chiSquare);
        case GoodnessOfFitType::KOLMOGOROV_SMIRNOV:
            return statisticOf(kolmogorovSmirnov);
        case GoodnessOfFitType::ANDERSON_DARLING:
            return statisticOf(andersonDarling);
        default:
            break;
    }
    if (!hasLikelihood()) return kNaN;
    const double n = static_cast<double>(numValues), k = numParameters, rest = n - k - 1.0;
    const double deviance = -2.0 * logLikelihood;
    switch (type) {
        case GoodnessOfFitType::MAX_LIKELIHOOD:
            return logLikelihood;
        case GoodnessOfFitType::AIC:
            return deviance + 2.0 * k;
        case GoodnessOfFitType::AICC:
            return rest > 0.0 ? deviance + 2.0 * k + 2.0 * k * (k + 1.0) / rest : kNaN;
        case GoodnessOfFitType::BIC:
            return deviance + k * std::log(n);
        case GoodnessOfFitType::BICC:
            return rest > 0.0 ? deviance + k * std::log(n) * n / rest : kNaN;
        case GoodnessOfFitType::HQIC:
            return n >= 3.0 ? deviance + 2.0 * k * std::log(std::log(n)) : kNaN;
        default:
            return kNaN;
    }
}

bool GoodnessOfFit::isBetterThan(const GoodnessOfFit& other, GoodnessOfFitType type) const {
    const double mine = value(type), its = other.value(type);
    if (std::isnan(mine) || std::isnan(its)) return !std::isnan(mine);
    return type == GoodnessOfFitType::MAX_LIKELIHOOD ? mine > its : mine < its;
}

bool GoodnessOfFit::isDoubtedBy(GoodnessOfFitType type) const {
    const auto doubts = [](const FitTest& test) { return !test.isComputed() || test.rejects(); };
    switch (type) {
        case GoodnessOfFitType::CHI_SQUARE:
            return doubts(chiSquare);
        case GoodnessOfFitType::KOLMOGOROV_SMIRNOV:
            return doubts(kolmogorovSmirnov);
        case GoodnessOfFitType::ANDERSON_DARLING:
            return doubts(andersonDarling);
        case GoodnessOfFitType::HQIC:
            return false;
        default:
            return !hasLikelihood();
    }
}

GoodnessOfFit goodnessOfFit(const CDist& dist, std::span<const double> sorted, int numParameters,
                            const CriticalValues& critical) {
    if (const auto* metalog = dynamic_cast<const CMetalogDist*>(&dist))
        return goodnessOfFit(*metalog, sorted, numParameters, critical);
    if (!dist.isContinuous()) {
        GoodnessOfFit fit;
        fit.numParameters = numParameters;
        fit.numValues = sorted.size();
        fit.logLikelihood = dist.logLikelihood(sorted);
        return fit;
    }
    return measure(
        sorted, numParameters, critical, [&dist](std::span<const double> x, std::span<Evaluation> result) {
            std::transform(x.begin(), x.end(), result.begin(), [&dist](double value) {
                const double cdf = dist.cdf(value), complement = dist.complementaryCdf(value);
                return Evaluation{cdf, complement, std::log(cdf), std::log(complement), dist.logPdf(value)};
            });
        });
}

GoodnessOfFit goodnessOfFit(const CMetalogDist& dist, std::span<const double> sorted, int numParameters,
                            const CriticalValues& critical) {
    return measure(sorted, numParameters, critical,
                   [&dist](std::span<const double> x, std::span<Evaluation> result) { dist.at(x, result); });
}

}  // namespace Tessel::Engine::Dist
