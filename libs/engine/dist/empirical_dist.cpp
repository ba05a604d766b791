#include "engine/dist/empirical_dist.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "engine/dist/sample.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

struct CEmpiricalDist::State {
    std::vector<double> values;  ///< Ascending, not empty.
    double mean = 0.0, variance = 0.0, skewness = kNaN, excessKurtosis = kNaN, mode = 0.0;

    explicit State(std::vector<double> unsorted) : values(std::move(unsorted)) {
        std::sort(values.begin(), values.end());
        const Sample sample(values, 0.0);
        mean = sample.mean();
        const auto central = [&](int k) {
            return sample.meanOf([&](double x) { return std::pow(x - mean, k); });
        };
        variance = central(2);
        if (values.front() < values.back()) {
            skewness = central(3) / std::pow(variance, 1.5);
            excessKurtosis = central(4) / (variance * variance) - 3.0;
        }
        mode = longestRun();
    }

    double size() const { return static_cast<double>(values.size()); }
    double numUpTo(double x) const {
        return static_cast<double>(std::upper_bound(values.begin(), values.end(), x) - values.begin());
    }
    double numBelow(double x) const {
        return static_cast<double>(std::lower_bound(values.begin(), values.end(), x) - values.begin());
    }

 private:
    double longestRun() const {
        double best = values.front();
        std::ptrdiff_t longest = 0;
        for (auto begin = values.begin(); begin != values.end();) {
            const auto end = std::upper_bound(begin, values.end(), *begin);
            if (end - begin > longest) {
                longest = end - begin;
                best = *begin;
            }
            begin = end;
        }
        return best;
    }
};

CEmpiricalDist::CEmpiricalDist() { setFamily(kNoFamilyCode, false, true); }
CEmpiricalDist::CEmpiricalDist(std::span<const double> sample) : CEmpiricalDist() { CDist::fitData(sample); }

bool CEmpiricalDist::isValid() const {
    return state_ != nullptr && std::isfinite(shift()) && support().lower <= support().upper;
}

bool CEmpiricalDist::fitData(std::size_t n, const double* values) {
    if (!isSampleAdmissible(n, values)) return false;
    state_ =
        std::make_shared<const State>(Sample({values, n}, shift()).transformed([](double x) { return x; }));
    setSupport({state_->values.front(), state_->values.back()});
    return isValid();
}

double CEmpiricalDist::mean() const { return isValid() ? shift() + state_->mean : kNaN; }
double CEmpiricalDist::variance() const { return isValid() ? state_->variance : kNaN; }
double CEmpiricalDist::skewness() const { return isValid() ? state_->skewness : kNaN; }
double CEmpiricalDist::excessKurtosis() const { return isValid() ? state_->excessKurtosis : kNaN; }
double CEmpiricalDist::mode() const { return isValid() ? shift() + state_->mode : kNaN; }

double CEmpiricalDist::pdf(double x) const {
    const double y = x - shift();
    if (!isValid() || std::isnan(y)) return kNaN;
    return support().contains(y) ? (state_->numUpTo(y) - state_->numBelow(y)) / state_->size() : 0.0;
}
double CEmpiricalDist::logPdf(double x) const { return std::log(pdf(x)); }

double CEmpiricalDist::cdf(double x) const {
    const double y = x - shift();
    if (!isValid() || std::isnan(y)) return kNaN;
    if (y < support().lower) return 0.0;
    return y > support().upper ? 1.0 : state_->numUpTo(y) / state_->size();
}
double CEmpiricalDist::complementaryCdf(double x) const {
    const double y = x - shift();
    if (!isValid() || std::isnan(y)) return kNaN;
    if (y < support().lower) return 1.0;
    return y > support().upper ? 0.0 : (state_->size() - state_->numUpTo(y)) / state_->size();
}

double CEmpiricalDist::inverseCdf(double p) const {
    if (!isValid() || !(p >= 0.0 && p <= 1.0)) return kNaN;
    const double n = state_->size();
    // The smallest rank with rank / n >= p; the product may be rounded to either side of a whole number.
    double rank = std::min(std::max(std::ceil(p * n), 1.0), n);
    if (rank > 1.0 && (rank - 1.0) / n >= p) rank -= 1.0;
    if (rank < n && rank / n < p) rank += 1.0;
    const double y = state_->values[static_cast<std::size_t>(rank) - 1];
    return shift() + std::min(std::max(y, support().lower), support().upper);
}

bool CEmpiricalDist::setParameters(std::span<const double> parameters) {
    return parameters.empty() && isValid();
}

std::unique_ptr<CDist> CEmpiricalDist::clone() const { return std::make_unique<CEmpiricalDist>(*this); }

std::wstring CEmpiricalDist::formulaStart() const { return L"LyrEmpirical"; }

std::span<const double> CEmpiricalDist::sample() const {
    return state_ == nullptr ? std::span<const double>() : std::span<const double>(state_->values);
}

}  // namespace Tessel::Engine::Dist
