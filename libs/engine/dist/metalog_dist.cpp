#include "engine/dist/metalog_dist.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "engine/dist/metalog_fit.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// ln(y (1 - y)).
double logProduct(double logit) {
    const double size = std::abs(logit);
    return -size - 2.0 * std::log1p(std::exp(-size));
}

}  // namespace

CMetalogDist::CMetalogDist(MetalogOrder order, std::int32_t familyCode) : order_(order) {
    setFamily(familyCode, /*isContinuous=*/true, /*isBoundedBelow=*/false);
}

bool CMetalogDist::setCoefficients(double lower, double upper, int numTerms, const double* coefficients) {
    coefficients_.clear();
    if (numTerms >= kMinMetalogTerms && numTerms <= kMaxMetalogTerms && coefficients != nullptr)
        coefficients_.assign(coefficients, coefficients + numTerms);
    curve_ = MetalogCurve(order_, coefficients_);
    return setBounds(lower, upper);
}

bool CMetalogDist::setBounds(double lower, double upper) {
    bounds_ = {std::isfinite(lower) ? lower : -kInfinity, std::isfinite(upper) ? upper : kInfinity};
    setFamily(familyCode(), /*isContinuous=*/true, bounds_.hasLower());
    setSupport({bounds_.lower, bounds_.upper});
    setDataDomain({bounds_.lower, bounds_.upper});
    isDistribution_ = bounds_.areAdmissible() && isFeasible(curve_);
    inverse_ = isDistribution_ ? MetalogInverse(curve_) : MetalogInverse();
    return isValid();
}

bool CMetalogDist::isValid() const {
    return isDistribution_ && std::isfinite(shift()) && support().lower <= support().upper;
}

bool CMetalogDist::setParameters(std::span<const double> parameters) {
    if (parameters.size() < kMinMetalogTerms || parameters.size() > kMaxMetalogTerms) return false;
    return setCoefficients(bounds_.lower, bounds_.upper, static_cast<int>(parameters.size()),
                           parameters.data());
}

double CMetalogDist::coefficient(int index) const {
    return index >= 1 && index <= numTerms() ? coefficients_[static_cast<std::size_t>(index - 1)] : 0.0;
}

std::wstring CMetalogDist::formulaStart() const { return CDist::formulaStart(L"LyrMetalog", coefficients_); }
std::wstring CMetalog2Dist::formulaStart() const { return CDist::formulaStart(L"LyrMetalog2", parameters()); }

// ---- moments

MetalogMoments CMetalogDist::moments() const {
    return isValid() ? momentsOf(curve_, bounds_) : MetalogMoments{kNaN, kNaN, kNaN, kNaN};
}

double CMetalogDist::mean() const { return moments().mean + shift(); }
double CMetalogDist::variance() const { return moments().variance; }
double CMetalogDist::skewness() const { return moments().skewness; }
double CMetalogDist::excessKurtosis() const { return moments().excessKurtosis; }

double CMetalogDist::logDensityAt(double logit) const {
    const MetalogCurve::Point point = curve_.point(MetalogProbability::ofLogit(logit));
    return logProduct(logit) - std::log(point.slope) + bounds_.logDerivative(point.value);
}

double CMetalogDist::mode() const {
    if (!isValid()) return kNaN;
    constexpr double kEnd = 36.0, kStep = 1.0 / 16.0;  // 1 - y is 1 in double precision from 36.7 on
    double best = -kEnd, highest = logDensityAt(best);
    for (double logit = -kEnd + kStep; logit <= kEnd; logit += kStep) {
        const double density = logDensityAt(logit);
        if (density > highest) {
            highest = density;
            best = logit;
        }
    }
    if (best == -kEnd) return inverseCdf(0.0);  // the density rises towards the bound
    if (best == kEnd) return inverseCdf(1.0);
    // Golden section; the density is flat to rounding within the square root of epsilon of the top.
    const double golden = 0.5 * (std::sqrt(5.0) - 1.0);
    double low = best - kStep, high = best + kStep;
    while (high - low > 1e-9) {
        const double left = high - golden * (high - low), right = low + golden * (high - low);
        if (logDensityAt(left) >= logDensityAt(right))
            high = right;
        else
            low = left;
    }
    return shift() + bounds_.fromLine(curve_.value(MetalogProbability::ofLogit(0.5 * (low + high))));
}

// ---- probabilities

CMetalogDist::Evaluation CMetalogDist::at(double x) const {
    const double onLine = bounds_.toLine(x - shift());
    return evaluation(x - shift(), onLine, inverse_(onLine));
}

void CMetalogDist::at(std::span<const double> x, std::span<Evaluation> result) const {
    constexpr std::size_t kBlock = 128;
    std::array<double, kBlock> onLine;
    std::array<MetalogInverse::Solution, kBlock> solutions;
    for (std::size_t begin = 0; begin < x.size(); begin += kBlock) {
        const std::size_t count = std::min(kBlock, x.size() - begin);
        for (std::size_t i = 0; i < count; ++i) onLine[i] = bounds_.toLine(x[begin + i] - shift());
        inverse_(std::span(onLine).first(count), solutions);
        for (std::size_t i = 0; i < count; ++i)
            result[begin + i] = evaluation(x[begin + i] - shift(), onLine[i], solutions[i]);
    }
}

/// @param onLine, solution  for y, of no meaning when y is outside the bounds.
CMetalogDist::Evaluation CMetalogDist::evaluation(double y, double onLine,
                                                  const MetalogInverse::Solution& solution) const {
    constexpr Evaluation kBelow{0.0, 1.0, -kInfinity, 0.0, -kInfinity};
    constexpr Evaluation kAbove{1.0, 0.0, 0.0, -kInfinity, -kInfinity};
    if (!isValid() || std::isnan(y)) return {kNaN, kNaN, kNaN, kNaN, kNaN};
    if (y < support().lower || y <= bounds_.lower) return kBelow;
    if (y > support().upper || y >= bounds_.upper) return kAbove;
    if (std::isinf(solution.logit)) return solution.logit < 0.0 ? kBelow : kAbove;

    const double larger = 1.0 / (1.0 + solution.odds), smaller = solution.odds * larger;
    const double logOfLarger = -std::log(1.0 + solution.odds);
    const double logOfSmaller = logOfLarger - std::abs(solution.logit);
    const double logDensity =
        logOfLarger + logOfSmaller - std::log(solution.slope) + bounds_.logDerivative(onLine);
    return solution.logit < 0.0 ? Evaluation{smaller, larger, logOfSmaller, logOfLarger, logDensity}
                                : Evaluation{larger, smaller, logOfLarger, logOfSmaller, logDensity};
}

double CMetalogDist::cdf(double x) const { return at(x).cdf; }
double CMetalogDist::complementaryCdf(double x) const { return at(x).complementaryCdf; }
double CMetalogDist::logPdf(double x) const { return at(x).logDensity; }
double CMetalogDist::pdf(double x) const { return std::exp(at(x).logDensity); }

double CMetalogDist::inverseCdf(double p) const {
    if (!isValid() || !(p >= 0.0 && p <= 1.0)) return kNaN;
    const double z = p == 0.0   ? curve_.limitAtZero()
                     : p == 1.0 ? curve_.limitAtOne()
                                : curve_.value(MetalogProbability::of(p));
    return shift() + std::min(std::max(bounds_.fromLine(z), support().lower), support().upper);
}

bool CMetalogDist::fitData(std::size_t n, const double* values) {
    if (!isSampleAdmissible(n, values)) return false;
    std::vector<double> sample(values, values + n);
    std::sort(sample.begin(), sample.end());
    for (double& value : sample) value = bounds_.toLine(value - shift());
    const int numTermsWanted = coefficients_.empty() ? kMinMetalogTerms : numTerms();
    std::optional<std::vector<double>> fitted;
    if (std::isfinite(sample.front()) && std::isfinite(sample.back()))
        fitted = MetalogLeastSquares(sample).solve(order_, numTermsWanted);
    return setCoefficients(bounds_.lower, bounds_.upper, fitted ? numTermsWanted : 0,
                           fitted ? fitted->data() : nullptr);
}

}  // namespace Tessel::Engine::Dist
