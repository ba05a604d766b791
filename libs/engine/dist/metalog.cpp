#include "engine/dist/metalog.h"

#include <algorithm>
#include <cmath>

namespace Tessel::Engine::Dist {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Beyond this logit a probability underflows to 0.
constexpr double kLargestLogit = 800.0;

constexpr double kTableEnd = 20.0;
constexpr int kKnotsPerLogit = 2;

double horner(const MetalogPolynomial& p, double x) {
    double value = p.back();
    for (std::size_t k = p.size() - 1; k-- > 0;) value = value * x + p[k];
    return value;
}

/// A polynomial with its first two derivatives.
struct Taylor {
    double value, first, second;

    Taylor(const MetalogPolynomial& p, double x) : value(p.back()), first(0.0), second(0.0) {
        for (std::size_t k = p.size() - 1; k-- > 0;) {
            second = second * x + first;
            first = first * x + value;
            value = value * x + p[k];
        }
        second *= 2.0;
    }
};

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
    return {logit, std::copysign(0.5 * (1.0 - odds) * inverse, logit), odds * inverse * inverse};
}

MetalogProbability MetalogProbability::of(double y) { return {Dist::logit(y), y - 0.5, y * (1.0 - y)}; }

MetalogCurve::MetalogCurve(MetalogOrder order, std::span<const double> coefficients) {
    if (coefficients.size() < kMinMetalogTerms || coefficients.size() > kMaxMetalogTerms) return;
    for (std::size_t j = 0; j < coefficients.size(); ++j) {
        const MetalogTerm term = metalogTerm(order, static_cast<int>(j) + 1);
        (term.hasLogit ? logits_ : plain_)[static_cast<std::size_t>(term.power)] = coefficients[j];
    }
}

bool MetalogCurve::isPolynomial() const {
    return std::all_of(logits_.begin(), logits_.end(), [](double b) { return b == 0.0; });
}

double MetalogCurve::value(const MetalogProbability& y) const {
    return horner(plain_, y.x) + y.logit * horner(logits_, y.x);
}

double MetalogCurve::slope(const MetalogProbability& y) const { return point(y).slope; }

MetalogCurve::Point MetalogCurve::point(const MetalogProbability& y) const {
    const Taylor a(plain_, y.x), b(logits_, y.x);
    const double first = a.first + y.logit * b.first;
    const double second = a.second + y.logit * b.second;
    return {a.value + y.logit * b.value, b.value + y.product * first,
            y.product * (2.0 * (b.first - y.x * first) + y.product * second)};
}

double MetalogCurve::limitAtZero() const { return isPolynomial() ? horner(plain_, -0.5) : -kInfinity; }
double MetalogCurve::limitAtOne() const { return isPolynomial() ? horner(plain_, 0.5) : kInfinity; }

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
        const MetalogCurve::Point point = curve.point(MetalogProbability::ofLogit(logit));
        knots_.push_back({logit, point.value, point.slope});
    }
}

MetalogInverse::Solution MetalogInverse::operator()(double value) const {
    if (std::isnan(value) || knots_.empty()) {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan};
    }
    const auto next = std::partition_point(knots_.begin(), knots_.end(),
                                           [value](const Knot& knot) { return knot.value < value; });
    if (next == knots_.begin()) {
        const double guess = next->logit + (value - next->value) / next->slope;
        return solve(value, std::max(guess, -kLargestLogit), -kInfinity, next->logit);
    }
    const Knot& low = *(next - 1);
    if (next == knots_.end()) {
        const double guess = low.logit + (value - low.value) / low.slope;
        return solve(value, std::min(guess, kLargestLogit), low.logit, kInfinity);
    }
    // The cubic through both knots with the slopes of the inverse there (Hermite).
    const Knot& high = *next;
    const double width = high.value - low.value, u = (value - low.value) / width, v = 1.0 - u;
    const double guess = low.logit * (v * v * (1.0 + 2.0 * u)) + high.logit * (u * u * (1.0 + 2.0 * v)) +
                         width * u * v * (v / low.slope - u / high.slope);
    return solve(value, guess, low.logit, high.logit);
}

MetalogInverse::Solution MetalogInverse::solve(double value, double guess, double low, double high) const {
    constexpr int kMostSteps = 200;  // bisection alone needs about 70 from the widest bracket
    constexpr double kPrecision = std::numeric_limits<double>::epsilon() / 2.0;
    double logit = guess >= low && guess <= high ? guess : std::clamp(0.5 * (low + high), low, high);
    MetalogCurve::Point point{};
    for (int step = 0; step < kMostSteps; ++step) {
        point = curve_.point(MetalogProbability::ofLogit(logit));
        const double excess = point.value - value;
        (excess > 0.0 ? high : low) = logit;
        if (low >= kLargestLogit) return {kInfinity, point.slope};
        if (high <= -kLargestLogit) return {-kInfinity, point.slope};

        const double move = -excess / point.slope;
        const double next = logit + move;
        if (!(next >= low && next <= high)) {  // also for NaN
            const double middle = std::isinf(low)    ? std::max(2.0 * high, -kLargestLogit)
                                  : std::isinf(high) ? std::min(2.0 * low, kLargestLogit)
                                                     : 0.5 * (low + high);
            if (middle == low || middle == high) break;
            logit = middle;
            continue;
        }
        // What Newton's step leaves is half the curvature over the slope times its square, and where that
        // happens to vanish, of the order of its cube.
        const double left = 0.5 * point.curvature / point.slope * move * move;
        const double tolerance = kPrecision * (1.0 + std::abs(next));
        if (std::abs(left) <= tolerance && std::abs(move * move * move) <= tolerance)
            return {next, point.slope + point.curvature * move};
        logit = next;
    }
    return {logit, point.slope};
}

}  // namespace Tessel::Engine::Dist
