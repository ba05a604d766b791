#include "engine/dist/metalog.h"

#include <algorithm>
#include <cmath>

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Beyond this logit a probability underflows to 0.
constexpr double kLargestLogit = 800.0;

constexpr double kTableEnd = 20.0;
constexpr int kKnotsPerLogit = 4;

}  // namespace

MetalogTerm metalogTerm(MetalogOrder order, int index) {
    constexpr std::array<MetalogTerm, 4> kFirst{{{0, false}, {0, true}, {1, true}, {1, false}}};
    if (index <= 4) return kFirst[static_cast<std::size_t>(index - 1)];
    const int power = (index - 1) / 2;
    const bool logitFirst = order == MetalogOrder::BAUCELLS_2025 && power % 2 == 1;
    return {power, (index % 2 == 0) != logitFirst};
}

double logit(double y) {
    const double x = y - 0.5;
    return std::abs(x) < 0.25 ? 2.0 * std::atanh(2.0 * x) : std::log(y) - std::log1p(-y);
}

MetalogProbability MetalogProbability::ofLogit(double logit) {
    const double odds = std::exp(-std::abs(logit));
    const double inverse = 1.0 / (1.0 + odds);
    return {logit, odds, std::copysign(0.5 * (1.0 - odds) * inverse, logit), odds * inverse * inverse};
}

MetalogProbability MetalogProbability::of(double y) {
    const double smaller = std::min(y, 1.0 - y);
    return {Dist::logit(y), smaller / (1.0 - smaller), y - 0.5, y * (1.0 - y)};
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

MetalogCurve::Point MetalogCurve::point(const MetalogProbability& y) const {
    // Horner's scheme with the first derivatives and halves of the second ones.
    double a = plain_[degree_], aFirst = 0.0, aSecond = 0.0;
    double b = logits_[degree_], bFirst = 0.0, bSecond = 0.0;
    for (std::size_t k = degree_; k-- > 0;) {
        aSecond = aSecond * y.x + aFirst;
        bSecond = bSecond * y.x + bFirst;
        aFirst = aFirst * y.x + a;
        bFirst = bFirst * y.x + b;
        a = a * y.x + plain_[k];
        b = b * y.x + logits_[k];
    }
    const double first = aFirst + y.logit * bFirst;
    const double second = 2.0 * (aSecond + y.logit * bSecond);
    return {a + y.logit * b, b + y.product * first,
            y.product * (2.0 * (bFirst - y.x * first) + y.product * second)};
}

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

double MetalogBounds::logDerivative(double x) const {
    if (hasLower() && hasUpper()) return std::log(upper - lower) - std::log(x - lower) - std::log(upper - x);
    if (hasLower()) return -std::log(x - lower);
    if (hasUpper()) return -std::log(upper - x);
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

MetalogInverse::Solution MetalogInverse::operator()(double value) const {
    if (std::isnan(value) || knots_.empty()) {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan, nan};
    }
    const auto next = std::partition_point(knots_.begin(), knots_.end(),
                                           [value](const Knot& knot) { return knot.value < value; });
    if (next == knots_.begin()) {
        const double guess = next->logit + (value - next->value) * next->first;
        return solve(value, std::max(guess, -kLargestLogit), -kInfinity, next->logit);
    }
    const Knot& low = *(next - 1);
    if (next == knots_.end()) {
        const double guess = low.logit + (value - low.value) * low.first;
        return solve(value, std::min(guess, kLargestLogit), low.logit, kInfinity);
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
    return solve(value, guess, low.logit, high.logit);
}

MetalogInverse::Solution MetalogInverse::solve(double value, double guess, double low, double high) const {
    constexpr int kMostSteps = 200;  // bisection alone needs about 70 from the widest bracket
    /// A step this small leaves, by its third power, nothing; and the slope, followed to first order, 1e-14.
    constexpr double kSmallStep = 1e-7;
    double logit = guess >= low && guess <= high ? guess : std::clamp(0.5 * (low + high), low, high);
    MetalogCurve::Point point{};
    for (int step = 0; step < kMostSteps; ++step) {
        const MetalogProbability y = MetalogProbability::ofLogit(logit);
        point = curve_.point(y);
        const double excess = point.value - value;
        (excess > 0.0 ? high : low) = logit;
        if (low >= kLargestLogit) return {kInfinity, 0.0, point.slope};
        if (high <= -kLargestLogit) return {-kInfinity, 0.0, point.slope};

        const double newton = -excess / point.slope;
        const double halley = newton / (1.0 + 0.5 * newton * point.curvature / point.slope);
        const double move = std::abs(halley - newton) <= 0.5 * std::abs(newton) ? halley : newton;
        const double next = logit + move;
        if (std::abs(move) <= kSmallStep) {
            const double towardsZero = logit < 0.0 ? move : -move;
            return {next, y.odds * (1.0 + towardsZero + 0.5 * towardsZero * towardsZero),
                    point.slope + point.curvature * move};
        }
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
