#include "engine/dist/fit_dist.h"

#include <algorithm>
#include <cassert>
#include <cfenv>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include <tessel/data/util/sets.h>

#include "engine/dist/serial_dependence.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Whether both orders have the same first terms, as functions: all numbers of terms but those that cut one
/// of the swapped pairs, (7, 8), (11, 12) or (15, 16).
bool areSameFunctions(int numTerms) { return numTerms < 7 || numTerms % 4 != 3; }

}  // namespace

CFitDist::~CFitDist() { std::feclearexcept(FE_ALL_EXCEPT); }

// ---- loading

void CFitDist::clear() {
    sample_.clear();
    sorted_.clear();
    order_.clear();
    statistics_ = {};
    areAllValuesEqual_ = false;
    bounds_ = {};
    leastSquares_.reset();
    criticalValues_.reset();
    candidates_.clear();
}

bool CFitDist::load(std::size_t n, const double* values, const int* repeatCounts, bool roundToInteger) {
    clear();
    status_ = expand(n, values, repeatCounts, roundToInteger);
    if (status_ == NOTHING_DONE && !sort()) status_ = SORTING_FAILED;
    if (status_ != NOTHING_DONE) {
        clear();
        return false;
    }
    areAllValuesEqual_ = sorted_.front() == sorted_.back();
    statistics_ = statisticsOf(sorted_);
    if (repeatCounts == nullptr) {
        statistics_.mode = mostFrequent(sorted_);
    } else {
        const double mode = values[std::max_element(repeatCounts, repeatCounts + n) - repeatCounts];
        statistics_.mode = roundToInteger ? std::round(mode) : mode;
    }
    return true;
}

CFitDist::Status CFitDist::expand(std::size_t n, const double* values, const int* repeatCounts,
                                  bool roundToInteger) {
    if (n == 0 || values == nullptr) return BAD_INPUT;
    if (!std::all_of(values, values + n, [](double value) { return std::isfinite(value); })) return BAD_INPUT;
    constexpr std::size_t kMostValues = std::numeric_limits<int>::max();
    std::size_t total = n;
    if (repeatCounts != nullptr) {
        total = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (repeatCounts[i] < 1) return BAD_INPUT;
            total = std::min(total + static_cast<std::size_t>(repeatCounts[i]), kMostValues + 1);
        }
    }
    if (total > kMostValues) return SORTING_FAILED;
    try {
        sample_.reserve(total);
    } catch (const std::bad_alloc&) {
        return SORTING_FAILED;
    }
    for (std::size_t i = 0; i < n; ++i)
        sample_.insert(sample_.end(),
                       repeatCounts == nullptr ? 1U : static_cast<std::size_t>(repeatCounts[i]),
                       roundToInteger ? std::round(values[i]) : values[i]);
    return NOTHING_DONE;
}

bool CFitDist::sort() {
    try {
        order_ = Util::argSort(Vector(sample_)).elements();
        sorted_.resize(sample_.size());
    } catch (const std::bad_alloc&) {
        return false;
    }
    for (std::size_t i = 0; i < sorted_.size(); ++i)
        sorted_[i] = sample_[static_cast<std::size_t>(order_[i])];
    return true;
}

double CFitDist::serialDependence() const { return Dist::serialDependence(sample_); }

// ---- metalogs

void CFitDist::setBounds(double lower, double upper) {
    bounds_ = {std::isfinite(lower) ? lower : -kInfinity, std::isfinite(upper) ? upper : kInfinity};
    leastSquares_.reset();
    if (sorted_.empty()) return;
    if (bounds_.lower == sorted_.front())
        bounds_.lower = std::min(bounds_.lower - kBoundNudge, std::nextafter(bounds_.lower, -kInfinity));
    if (bounds_.upper == sorted_.back())
        bounds_.upper = std::max(bounds_.upper + kBoundNudge, std::nextafter(bounds_.upper, kInfinity));
}

/// Factors the least-squares problem of the sample under the bounds.
bool CFitDist::prepareMetalogs() {
    if (leastSquares_) return true;
    if (!bounds_.hasLower() && !bounds_.hasUpper()) {
        leastSquares_.emplace(sorted_);
        return true;
    }
    if (!(sorted_.front() > bounds_.lower && sorted_.back() < bounds_.upper)) return false;
    constexpr std::ptrdiff_t kWorthThreads = 20'000;
    std::vector<double> onLine(sorted_.size());
    const auto n = static_cast<std::ptrdiff_t>(sorted_.size());
#pragma omp parallel for schedule(static) if (n >= kWorthThreads)
    for (std::ptrdiff_t i = 0; i < n; ++i)
        onLine[static_cast<std::size_t>(i)] = bounds_.toLine(sorted_[static_cast<std::size_t>(i)]);
    if (!std::isfinite(onLine.front()) || !std::isfinite(onLine.back())) return false;
    leastSquares_.emplace(onLine);
    return true;
}

/// Null when the coefficients do not exist or give no distribution on the sample.
std::unique_ptr<CMetalogDist> CFitDist::metalogWith(MetalogOrder order, int numTerms) const {
    const auto coefficients = leastSquares_->solve(order, numTerms);
    if (!coefficients) return nullptr;
    std::unique_ptr<CMetalogDist> metalog;
    if (order == MetalogOrder::KEELIN_2016)
        metalog = std::make_unique<CMetalogDist>();
    else
        metalog = std::make_unique<CMetalog2Dist>();
    const Interval& domain = metalog->dataDomain();
    const bool isUsable =
        metalog->setCoefficients(bounds_.lower, bounds_.upper, numTerms, coefficients->data()) &&
        domain.contains(sorted_.front()) && domain.contains(sorted_.back());
    return isUsable ? std::move(metalog) : nullptr;
}

CFitDist::Status CFitDist::tryMetalog(MetalogOrder order, int numTerms, double confidence,
                                      GoodnessOfFitType type) {
    if (areAllValuesEqual_ || !prepareMetalogs()) return FIT_NOT_POSSIBLE;
    auto metalog = metalogWith(order, numTerms);
    if (!metalog) return FIT_NOT_POSSIBLE;
    return judge(std::move(metalog), numTerms, confidence, type);
}

const CFitDist::Candidate* CFitDist::fitMetalog(int numTerms, double confidence, GoodnessOfFitType type,
                                                MetalogOrder order) {
    candidates_.clear();
    const bool isSensible = !sorted_.empty() && numTerms >= kMinMetalogTerms &&
                            numTerms <= kMaxMetalogTerms && bounds_.areAdmissible();
    status_ = isSensible ? tryMetalog(order, numTerms, confidence, type) : BAD_INPUT;
    return candidates_.empty() ? nullptr : &candidates_.front();
}

bool CFitDist::fitMetalogs(int maxTerms, GoodnessOfFitType type, bool firstFormOnly) {
    candidates_.clear();
    status_ = BAD_INPUT;
    if (sorted_.empty() || !bounds_.areAdmissible()) return false;
    if (maxTerms < kMinMetalogTerms || maxTerms > kMaxMetalogTerms) maxTerms = kMaxMetalogTerms;

    Status failure = FIT_NOT_POSSIBLE;
    for (int numTerms = kMinMetalogTerms; numTerms <= maxTerms; ++numTerms) {
        const Status status = tryMetalog(MetalogOrder::KEELIN_2016, numTerms, kDefaultConfidence, type);
        if (status == NO_GOODNESS_OF_FIT) failure = status;
    }
    if (!firstFormOnly && !bounds_.hasLower() && !bounds_.hasUpper()) {
        for (int numTerms = kMinMetalogTerms; numTerms <= maxTerms && candidates_.size() < kMostCandidates;
             ++numTerms) {
            const Status status = tryMetalog(MetalogOrder::BAUCELLS_2025, numTerms, kDefaultConfidence, type);
            if (status != FITTED && status != FITTED_IN_DOUBT) break;
        }
    }
    status_ = failure;
    if (candidates_.empty()) return false;
    std::stable_sort(candidates_.begin(), candidates_.end(), [type](const Candidate& a, const Candidate& b) {
        return a.goodnessOfFit.isBetterThan(b.goodnessOfFit, type);
    });
    status_ = candidates_.front().status;
    return true;
}

// ---- judging

const CFitDist::Candidate* CFitDist::fit(const CDist& family, double confidence, GoodnessOfFitType type) {
    candidates_.clear();
    status_ = BAD_INPUT;
    if (sorted_.empty()) return nullptr;
    auto distribution = family.clone();
    status_ = FIT_NOT_POSSIBLE;
    if (!distribution->fitData(sample_)) return nullptr;
    const auto numParameters = static_cast<int>(distribution->parameters().size());
    status_ = judge(std::move(distribution), numParameters, confidence, type);
    return candidates_.empty() ? nullptr : &candidates_.front();
}

const CriticalValues& CFitDist::criticalValues(double confidence) {
    if (!criticalValues_ || criticalValues_->confidence() != confidence)
        criticalValues_.emplace(sorted_.size(), confidence);
    return *criticalValues_;
}

/// Measures a fitted distribution and, unless nothing can be computed, adds it to the candidates.
CFitDist::Status CFitDist::judge(std::unique_ptr<CDist> distribution, int numParameters, double confidence,
                                 GoodnessOfFitType type) {
    Candidate candidate{std::move(distribution), {}, FITTED};
    const auto twin = std::find_if(candidates_.begin(), candidates_.end(), [&](const Candidate& other) {
        return other.goodnessOfFit.numParameters == numParameters && areSameFunctions(numParameters);
    });
    candidate.goodnessOfFit =
        twin != candidates_.end()
            ? twin->goodnessOfFit
            : goodnessOfFit(*candidate.distribution, sorted_, numParameters, criticalValues(confidence));
    if (!candidate.goodnessOfFit.isAnyComputed()) return NO_GOODNESS_OF_FIT;
    if (candidate.goodnessOfFit.isDoubtedBy(type)) candidate.status = FITTED_IN_DOUBT;
    candidates_.push_back(std::move(candidate));
    return candidates_.back().status;
}

}  // namespace Tessel::Engine::Dist
