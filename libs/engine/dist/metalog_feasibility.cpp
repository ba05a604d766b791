#include <algorithm>
#include <cmath>

#include "engine/dist/metalog.h"

namespace Tessel::Engine::Dist {
namespace {

// The proof for y >= 1/2; the other half is the same for the mirrored curve. Words used: t = 1 - y, so that
// x = 1/2 - t; "slope polynomial" is B + y (1 - y) G with G = A' + L B'.

constexpr double kRounding = 64.0 * std::numeric_limits<double>::epsilon();
/// 1 - y is then e^-64: whatever is not proved here is lost in rounding.
constexpr double kLastLogit = 64.0;
constexpr int kMostHalvings = 48;

double complementOf(double logit) { return 1.0 / (1.0 + std::exp(logit)); }

/// Sum of |p[k]| radius^k.
double absoluteSum(const MetalogPolynomial& p, double radius) {
    double sum = 0.0;
    for (std::size_t k = p.size(); k-- > 0;) sum = sum * radius + std::abs(p[k]);
    return sum;
}

MetalogPolynomial derivative(const MetalogPolynomial& p) {
    MetalogPolynomial result{};
    for (std::size_t k = 1; k < p.size(); ++k) result[k - 1] = static_cast<double>(k) * p[k];
    return result;
}

MetalogPolynomial mirrored(MetalogPolynomial p) {
    for (std::size_t k = 1; k < p.size(); k += 2) p[k] = -p[k];
    return p;
}

/// The coefficients of p(center + u) in powers of u (Horner's scheme, repeated).
MetalogPolynomial shifted(MetalogPolynomial p, double center) {
    for (std::size_t i = 0; i + 1 < p.size(); ++i)
        for (std::size_t j = p.size() - 1; j-- > i;) p[j] += center * p[j + 1];
    return p;
}

/// A lower bound of p[0] + p[1] u + ... for |u| <= radius.
template <std::size_t Size>
double lowerBound(const std::array<double, Size>& p, double radius) {
    double rest = 0.0;
    for (std::size_t k = Size; k-- > 3;) rest = (rest + std::abs(p[k])) * radius;
    return p[0] - (std::abs(p[1]) + (std::max(-p[2], 0.0) + rest) * radius) * radius;
}

class HalfProof {
 public:
    HalfProof(const MetalogPolynomial& plainDerivative, const MetalogPolynomial& logits)
        : plainDerivative_(plainDerivative), logits_(logits), logitsDerivative_(derivative(logits)) {
        sumOfLogits_ = absoluteSum(logits_, 0.5);
        sumOfPlainDerivative_ = absoluteSum(plainDerivative_, 0.5);
        sumOfLogitsDerivative_ = absoluteSum(logitsDerivative_, 0.5);
        for (std::size_t k = logits_.size(); k-- > 0;) limit_ = limit_ * 0.5 + logits_[k];
    }

    bool succeeds() const {
        for (double logit = 0.0; !isTailPositive(logit); logit += 1.0) {
            if (logit >= kLastLogit) return false;
            if (!isPositive(logit, logit + 1.0, kMostHalvings)) return false;
        }
        return true;
    }

 private:
    /// For all logits from here on: t L decreases beyond 1.28, t itself everywhere.
    bool isTailPositive(double logit) const {
        if (logit < 2.0) return false;
        const double t = complementOf(logit);
        return limit_ - t * ((1.0 + logit) * sumOfLogitsDerivative_ + sumOfPlainDerivative_) >
               kRounding * sumOfLogits_;
    }

    double rounding(double product, double logit) const {
        return kRounding *
               (sumOfLogits_ + product * (sumOfPlainDerivative_ + (1.0 + logit) * sumOfLogitsDerivative_));
    }

    bool isPositive(double low, double high, int halvings) const {
        if (lowerBoundBetween(low, high) > 0.0) return true;
        const double middle = 0.5 * (low + high);
        if (halvings == 0 || slopeAt(middle) <= 0.0) return false;
        return isPositive(low, middle, halvings - 1) && isPositive(middle, high, halvings - 1);
    }

    double slopeAt(double logit) const {
        const double t = complementOf(logit), product = t * (1.0 - t);
        const auto at = [x = 0.5 - t](const MetalogPolynomial& p) {
            double value = 0.0;
            for (std::size_t k = p.size(); k-- > 0;) value = value * x + p[k];
            return value;
        };
        const double slope = at(logits_) + product * (at(plainDerivative_) + logit * at(logitsDerivative_));
        return slope - rounding(product, logit);
    }

    double lowerBoundBetween(double low, double high) const {
        const double tOfLow = complementOf(low), tOfHigh = complementOf(high);
        const double t = 0.5 * (tOfLow + tOfHigh), radius = 0.5 * (tOfLow - tOfHigh);
        const double center = 0.5 - t, product = t * (1.0 - t);
        const double logit = std::log1p(-t) - std::log(t);

        const MetalogPolynomial b = shifted(logits_, center);
        const MetalogPolynomial derivativeOfA = shifted(plainDerivative_, center);
        MetalogPolynomial derivativeOfB = derivative(b);

        // G with the tangent of the logit, whose derivative is 1 / (y (1 - y)).
        MetalogPolynomial g = derivativeOfA;
        for (std::size_t k = 0; k < g.size(); ++k) g[k] += logit * derivativeOfB[k];
        for (std::size_t k = 1; k < g.size(); ++k) g[k] += derivativeOfB[k - 1] / product;

        // Times y (1 - y) = product - 2 center u - u^2, plus B.
        std::array<double, 10> p{};
        for (std::size_t k = 0; k < g.size(); ++k) {
            p[k] += b[k] + product * g[k];
            p[k + 1] -= 2.0 * center * g[k];
            p[k + 2] -= g[k];
        }

        // The second derivative of the logit, 2 x / (y (1 - y))^2, is largest at the outer end.
        const double outerProduct = tOfHigh * (1.0 - tOfHigh), innerProduct = tOfLow * (1.0 - tOfLow);
        const double missed = radius * radius * (0.5 - tOfHigh) / (outerProduct * outerProduct);
        return lowerBound(p, radius) - innerProduct * missed * absoluteSum(derivativeOfB, radius) -
               rounding(innerProduct, high);
    }

    MetalogPolynomial plainDerivative_, logits_, logitsDerivative_;
    double sumOfLogits_, sumOfPlainDerivative_, sumOfLogitsDerivative_;
    double limit_ = 0.0;  ///< B(1/2)
};

/// p > 0 for |x - center| <= radius.
bool isPositive(const MetalogPolynomial& p, double center, double radius, int halvings) {
    const MetalogPolynomial local = shifted(p, center);
    const double rounding = kRounding * absoluteSum(p, 0.5);
    if (lowerBound(local, radius) > rounding) return true;
    if (halvings == 0 || local[0] <= rounding) return false;
    return isPositive(p, center - 0.5 * radius, 0.5 * radius, halvings - 1) &&
           isPositive(p, center + 0.5 * radius, 0.5 * radius, halvings - 1);
}

}  // namespace

bool isFeasible(const MetalogCurve& curve) {
    MetalogPolynomial slopeOfPlain = derivative(curve.plain()), logits = curve.logits();
    double largest = 0.0;
    for (const MetalogPolynomial* p : {&slopeOfPlain, &logits})
        for (const double c : *p) {
            if (!std::isfinite(c)) return false;
            largest = std::max(largest, std::abs(c));
        }
    if (!std::isfinite(curve.plain()[0]) || largest == 0.0) return false;
    // By a power of 2, which rounds nothing: bounds do not overflow.
    const int exponent = std::ilogb(largest);
    for (MetalogPolynomial* p : {&slopeOfPlain, &logits})
        for (double& c : *p) c = std::scalbn(c, -exponent);

    if (curve.isPolynomial()) return isPositive(slopeOfPlain, 0.0, 0.5, kMostHalvings);
    return HalfProof(slopeOfPlain, logits).succeeds() &&
           HalfProof(mirrored(slopeOfPlain), mirrored(logits)).succeeds();
}

}  // namespace Tessel::Engine::Dist
