#include <algorithm>
#include <cmath>

#include <tessel/data/convert.h>

#include "engine/dist/fit_dist.h"
#include "synthetic/fitted.h"

namespace Tessel::SyntheticDataGeneration {
namespace {

using Engine::Dist::CFitDist;
using Engine::Dist::CMetalogDist;

constexpr double kConfidence = 0.9;
constexpr int kNumCurvePoints = 101;
/// ln(0.9999 / 0.0001)
constexpr double kLastCurveLogit = 9.2102403669758495;

/// The number of terms that is to be fitted or at most tried; what is assumed goes to the log.
int numTermsFor(const WString& name, const ColumnTask& task, StringVector& log) {
    if (task.numTerms != 0) return task.numTerms;
    const int assumed = task.isAuto ? kDefaultMaxTerms : kDefaultNumTerms;
    log.push_back((task.isAuto ? L"Maximum number of Metalog terms is not set for "
                               : L"Number of Metalog terms is not set for ") +
                  name + L", using default value " + Convert::toString(assumed));
    return assumed;
}

std::vector<double> presentValues(const DataFrameColumn& column) {
    std::vector<double> present;
    const std::span<const double> cells = column.values();
    present.reserve(cells.size());
    std::copy_if(cells.begin(), cells.end(), std::back_inserter(present),
                 [](double value) { return !std::isnan(value); });
    return present;
}

/// Leaves the candidates in the engine, best first. @returns whether there is one
bool fitMetalogs(CFitDist& engine, const std::vector<double>& values, int numTerms, const ColumnTask& task) {
    if (!engine.load(values.size(), values.data())) return false;
    engine.setBounds(task.usesSmallest ? engine.sortedSample().front() : task.lower,
                     task.usesLargest ? engine.sortedSample().back() : task.upper);
    const auto type = static_cast<Engine::Dist::GoodnessOfFitType>(task.type);
    // Generating makes the distribution of its coefficients, so all candidates have their first form.
    if (task.isAuto) return engine.fitMetalogs(numTerms, type, /*firstFormOnly=*/true);
    return engine.fitMetalog(numTerms, kConfidence, type) != nullptr;
}

/// Points at equal distances on the logit scale, so that the tails are as smooth as the middle; none when a
/// number is not finite.
MetalogPoints pointsOf(const CMetalogDist& distribution) {
    MetalogPoints points;
    for (int i = 0; i < kNumCurvePoints; ++i) {
        const double logit = kLastCurveLogit * (2.0 * i / (kNumCurvePoints - 1) - 1.0);
        const double probability = 1.0 / (1.0 + std::exp(-logit));
        const double quantile = distribution.inverseCdf(probability);
        const double density = distribution.pdf(quantile);
        if (!std::isfinite(quantile) || !std::isfinite(density)) return {};
        points.probabilities.push_back(probability);
        points.quantiles.push_back(quantile);
        points.densities.push_back(density);
    }
    return points;
}

}  // namespace

FittedColumn fitColumn(const DataFrameColumn& column, const ColumnTask& task, StringVector& log) {
    FittedColumn fitted;
    fitted.name = column.getColName();
    fitted.type = task.type;
    if (!column.isNumeric()) {
        log.push_back(L"Metalog cannot be fitted to categorical column " + fitted.name);
        return fitted;
    }
    const int numTerms = numTermsFor(fitted.name, task, log);
    CFitDist engine;
    if (!fitMetalogs(engine, presentValues(column), numTerms, task)) {
        log.push_back(L"Failed to fit Metalog to column " + fitted.name);
        return fitted;
    }
    for (const CFitDist::Candidate& candidate : engine.candidates())
        fitted.candidates.push_back(candidate.goodnessOfFit);
    const auto& best = static_cast<const CMetalogDist&>(*engine.candidates().front().distribution);
    fitted.coefficients.assign(best.parameters().begin(), best.parameters().end());
    fitted.lower = best.bounds().lower;
    fitted.upper = best.bounds().upper;
    if (task.computesCurve) {
        fitted.curve = pointsOf(best);
        if (fitted.curve.probabilities.empty())
            log.push_back(L"Failed to compute data required for drawing the Metalog curve for variable " +
                          fitted.name);
    }
    return fitted;
}

// ---- dependence

namespace {

DependenceFit attempt(CorrelationType type, CopulaType copula, Engine::Copula::DataMatrix data,
                      StringVector& log) {
    DependenceFit fit{type, copula};
    const bool isRank = type == CorrelationType::RANK;
    const int status = isRank ? fitRankCorrelation(data, fit.result)
                              : fitCopula(static_cast<Engine::Copula::CopulaType>(copula), data, fit.result);
    fit.isFitted = status == 1;
    const WString what = fit.name() + (isRank ? L" Correlation" : L" Copula");
    if (!fit.isFitted) log.push_back(L"Failed to fit " + what);
    if (fit.result.isRepaired) log.push_back(L"Near-singular correlation matrix was repaired: " + what);
    return fit;
}

}  // namespace

std::vector<DependenceFit> fitDependence(const std::vector<DataFrameColumn>& columns, CorrelationType type,
                                         const std::vector<CopulaType>& copulas, StringVector& log) {
    std::vector<std::span<const double>> data;
    for (const DataFrameColumn& column : columns) data.push_back(column.values());
    std::vector<DependenceFit> attempts;
    if (type == CorrelationType::RANK) attempts.push_back(attempt(type, CopulaType::NONE, data, log));
    if (type == CorrelationType::COPULA)
        for (const CopulaType copula : copulas) {
            attempts.push_back(attempt(type, copula, data, log));
            if (attempts.back().isFitted) break;
        }
    return attempts;
}

// ---- what was learned

bool Fitted::areAllFitted() const {
    return !columns.empty() && std::all_of(columns.begin(), columns.end(),
                                           [](const FittedColumn& column) { return column.isFitted(); });
}

StringVector Fitted::fittedNames() const {
    StringVector names;
    for (const FittedColumn& column : columns)
        if (column.isFitted()) names.push_back(column.name);
    return names;
}

const FittedColumn& Fitted::column(const WString& name) const {
    for (const FittedColumn& column : columns)
        if (column.name == name) return column;
    throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
}

const DependenceFit* Fitted::dependence() const {
    return !attempts.empty() && attempts.back().isFitted ? &attempts.back() : nullptr;
}

}  // namespace Tessel::SyntheticDataGeneration
