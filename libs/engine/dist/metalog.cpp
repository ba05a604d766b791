#include "engine/dist/metalog.h"

#include <algorithm>
#include <cmath>

#include "engine/dist/elementary.h"

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Beyond this logit a probability underflows to 0.
constexpr double kLargestLogit = 800.0;

constexpr double kTableEnd = 14.0;
constexpr int kKnotsPerLogit = 8;

}  // namespace

MetalogTerm metalogTerm(MetalogOrder order, int index) {
    constexpr std::array<MetalogTerm, 4> kFirst{{{0, false}, {0, true}, {1, true}, {1, false}}};
    if (index <= 4) return kFirst[static_cast<std::size_t>(index - 1)];
    const int power = (index - 1) / 2;
    const bool logitFirst = order == MetalogOrder::BAUCELLS_2025 && power % 2 == 1;
    return {power, (index % 2 == 0) != logitFirst};
}

MetalogProbability MetalogProbability::ofLogit(double logit) {
    const double odds = std::exp(-std::abs(logit));
    const double inverse = 1.0 / (1.0 + odds);
    return {logit, odds, std::copysign(0.5 * (1.0 - odds) * inverse, logit), odds * inverse * inverse};
}

MetalogProbability MetalogProbability::of(double y) {
    const double x = y - 0.5;
    const double smaller = std::min(y, 1.0 - y);
    return {Dist::logit(y), smaller / (1.0 - smaller), x, y * (1.0 - y)};
}

MetalogCurve::MetalogCurve(MetalogOrder order, std::span<const double> coefficients) {
    if (coefficients.size() < kMinMetalogTerms || coefficients.size() > kMaxMetalogTerms) return;
    for (std::size_t j = 0; j < coefficients.size(); ++j) {
        const MetalogTerm term = metalogTerm(order, static_cast<int>(j) + 1);
        const auto power = static_cast<std::size_t>(term.power);
        (term.hasLogit ? logits_ : plain_)[power] = coefficients[j];
        degree_ = std::max(degree_, power);
    }
}

bool MetalogCurve::isPolynomial() const {
    return std::all_of(logits_.begin(), logits_.end(), [](double b) { return b == 0.0; });
}

double MetalogCurve::value(const MetalogProbability& y) const {
    double a = plain_[degree_], b = logits_[degree_];
    for (std::size_t k = degree_; k-- > 0;) {
        a = a * y.x + plain_[k];
        b = b * y.x + logits_[k];
    }
    return a + y.logit * b;
}

double MetalogCurve::slope(const MetalogProbability& y) const { return point(y).slope; }

template <std::size_t Size>
std::array<MetalogCurve::Point, Size> MetalogCurve::points(
    const std::array<MetalogProbability, Size>& y) const {
    // Horner's scheme with the first derivatives and halves of the second ones.
    std::array<double, Size> x, a, b, aFirst{}, bFirst{}, aSecond{}, bSecond{};
    for (std::size_t i = 0; i < Size; ++i) x[i] = y[i].x;
    a.fill(plain_[degree_]);
    b.fill(logits_[degree_]);
    for (std::size_t k = degree_; k-- > 0;)
        for (std::size_t i = 0; i < Size; ++i) {
            aSecond[i] = aSecond[i] * x[i] + aFirst[i];
            bSecond[i] = bSecond[i] * x[i] + bFirst[i];
            aFirst[i] = aFirst[i] * x[i] + a[i];
            bFirst[i] = bFirst[i] * x[i] + b[i];
            a[i] = a[i] * x[i] + plain_[k];
            b[i] = b[i] * x[i] + logits_[k];
        }
    std::array<Point, Size> result;
    for (std::size_t i = 0; i < Size; ++i) {
        const double first = aFirst[i] + y[i].logit * bFirst[i];
        const double second = 2.0 * (aSecond[i] + y[i].logit * bSecond[i]);
        result[i] = {a[i] + y[i].logit * b[i], b[i] + y[i].product * first,
                     y[i].product * (2.0 * (bFirst[i] - x[i] * first) + y[i].product * second)};
    }
    return result;
}

MetalogCurve::Point MetalogCurve::point(const MetalogProbability& y) const { return points<1>({y}).front(); }

double MetalogCurve::limitAtZero() const {
    return isPolynomial() ? value({0.0, 1.0, -0.5, 0.0}) : -kInfinity;
}
double MetalogCurve::limitAtOne() const { return isPolynomial() ? value({0.0, 1.0, 0.5, 0.0}) : kInfinity; }

// ---- bounds

bool MetalogBounds::hasLower() const { return std::isfinite(lower); }
bool MetalogBounds::hasUpper() const { return std::isfinite(upper); }

bool MetalogBounds::areAdmissible() const {
    constexpr double kLargest = 1e300;  // their difference and the values between them stay finite
    if (hasLower() && std::abs(lower) > kLargest) return false;
    if (hasUpper() && std::abs(upper) > kLargest) return false;
    return !hasLower() || !hasUpper() || lower < upper;
}

double MetalogBounds::toLine(double x) const {
    if (hasLower() && hasUpper()) return std::log((x - lower) / (upper - x));
    if (hasLower()) return std::log(x - lower);
    if (hasUpper()) return -std::log(upper - x);
    return x;
}

double MetalogBounds::fromLine(double z) const {
    if (hasLower() && hasUpper()) {
        // From the nearer bound, so that the distance to it keeps its digits.
        const double odds = std::exp(-std::abs(z));
        const double distance = (upper - lower) * (odds / (1.0 + odds));
        return z < 0.0 ? lower + distance : upper - distance;
    }
    if (hasLower()) return lower + std::exp(z);
    if (hasUpper()) return upper - std::exp(-z);
    return z;
}

double MetalogBounds::logDerivative(double z) const {
    if (hasLower() && hasUpper())
        return std::abs(z) + 2.0 * std::log1p(std::exp(-std::abs(z))) - std::log(upper - lower);
    if (hasLower()) return -z;
    if (hasUpper()) return z;
    return 0.0;
}

// ---- inverse

MetalogInverse::MetalogInverse(const MetalogCurve& curve) : curve_(curve) {
    constexpr int kNumKnots = 2 * static_cast<int>(kTableEnd) * kKnotsPerLogit + 1;
    knots_.reserve(kNumKnots);
    for (int i = 0; i < kNumKnots; ++i) {
        const double logit = -kTableEnd + static_cast<double>(i) / kKnotsPerLogit;
        const auto [value, slope, curvature] = curve.point(MetalogProbability::ofLogit(logit));
        knots_.push_back({value, logit, 1.0 / slope, -curvature / (slope * slope * slope)});
    }
}

MetalogInverse::Search MetalogInverse::searchFor(double value) const {
    const auto next = std::partition_point(knots_.begin(), knots_.end(),
                                           [value](const Knot& knot) { return knot.value < value; });
    if (next == knots_.begin()) {
        const double guess = next->logit + (value - next->value) * next->first;
        return {std::max(guess, -kLargestLogit), -kInfinity, next->logit};
    }
    const Knot& low = *(next - 1);
    if (next == knots_.end()) {
        const double guess = low.logit + (value - low.value) * low.first;
        return {std::min(guess, kLargestLogit), low.logit, kInfinity};
    }
    // The polynomial of degree 5 that agrees with the inverse at both knots to the second derivative
    // (Hermite), as what it adds to the Taylor polynomial of degree 2 at the lower one.
    const Knot& high = *next;
    const double width = high.value - low.value, u = (value - low.value) / width;
    const double first = low.first * width, second = 0.5 * low.second * width * width;
    const double lackOfValue = high.logit - low.logit - first - second;
    const double lackOfFirst = high.first * width - first - 2.0 * second;
    const double lackOfSecond = 0.5 * high.second * width * width - second;
    const double third = 10.0 * lackOfValue - 4.0 * lackOfFirst + lackOfSecond;
    const double fourth = -15.0 * lackOfValue + 7.0 * lackOfFirst - 2.0 * lackOfSecond;
    const double fifth = 6.0 * lackOfValue - 3.0 * lackOfFirst + lackOfSecond;
    const double guess = low.logit + u * (first + u * (second + u * (third + u * (fourth + u * fifth))));
    if (guess >= low.logit && guess <= high.logit) return {guess, low.logit, high.logit};
    return {0.5 * (low.logit + high.logit), low.logit, high.logit};
}

namespace {

/// Halley's step towards the value, Newton's where the curvature misleads.
double stepTowards(double value, const MetalogCurve::Point& point) {
    const double newton = (value - point.value) / point.slope;
    const double halley = newton / (1.0 + 0.5 * newton * point.curvature / point.slope);
    return std::abs(halley - newton) <= 0.5 * std::abs(newton) ? halley : newton;
}

/// A step this small leaves, by its third power, nothing; and the slope, followed to first order, 1e-14.
constexpr double kSmallStep = 1e-7;

MetalogInverse::Solution lastStep(const MetalogProbability& y, const MetalogCurve::Point& point,
                                  double step) {
    const double towardsZero = y.logit < 0.0 ? step : -step;
    return {y.logit + step, y.odds * (1.0 + towardsZero + 0.5 * towardsZero * towardsZero),
            point.slope + point.curvature * step};
}

constexpr MetalogInverse::Solution kNoSolution{std::numeric_limits<double>::quiet_NaN(),
                                               std::numeric_limits<double>::quiet_NaN(),
                                               std::numeric_limits<double>::quiet_NaN()};

}  // namespace

MetalogInverse::Solution MetalogInverse::operator()(double value) const {
    if (std::isnan(value) || knots_.empty()) return kNoSolution;
    return solve(value, searchFor(value));
}

void MetalogInverse::operator()(std::span<const double> values, std::span<Solution> result) const {
    // Most guesses are one step away: that step for four values at a time, the others one by one.
    constexpr std::size_t kSize = 4;
    std::size_t begin = 0;
    for (; begin + kSize <= values.size() && !knots_.empty(); begin += kSize) {
        std::array<MetalogProbability, kSize> y;
        for (std::size_t i = 0; i < kSize; ++i)
            y[i] = MetalogProbability::ofLogit(searchFor(values[begin + i]).guess);
        const auto points = curve_.points(y);
        for (std::size_t i = 0; i < kSize; ++i) {
            const double value = values[begin + i], step = stepTowards(value, points[i]);
            result[begin + i] =
                std::abs(step) <= kSmallStep ? lastStep(y[i], points[i], step) : (*this)(value);
        }
    }
    for (; begin < values.size(); ++begin) result[begin] = (*this)(values[begin]);
}

MetalogInverse::Solution MetalogInverse::solve(double value, Search search) const {
    constexpr int kMostSteps = 200;  // bisection alone needs about 70 from the widest bracket
    auto [logit, low, high] = search;
    MetalogCurve::Point point{};
    for (int i = 0; i < kMostSteps; ++i) {
        const MetalogProbability y = MetalogProbability::ofLogit(logit);
        point = curve_.point(y);
        const double step = stepTowards(value, point);
        if (std::abs(step) <= kSmallStep) return lastStep(y, point, step);

        (point.value > value ? high : low) = logit;
        if (low >= kLargestLogit) return {kInfinity, 0.0, point.slope};
        if (high <= -kLargestLogit) return {-kInfinity, 0.0, point.slope};
        const double next = logit + step;
        if (next >= low && next <= high) {
            logit = next;
            continue;
        }
        const double middle = std::isinf(low)    ? std::max(2.0 * high, -kLargestLogit)
                              : std::isinf(high) ? std::min(2.0 * low, kLargestLogit)
                                                 : 0.5 * (low + high);
        if (middle == low || middle == high) break;
        logit = middle;
    }
    return {logit, std::exp(-std::abs(logit)), point.slope};
}

}  // namespace Tessel::Engine::Dist
