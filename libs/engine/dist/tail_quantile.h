#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

// Quantiles of positive distributions whose chances have no inverse in closed form.

namespace Tessel::Engine::Dist {

/// A distribution at x.
struct TailPoint {
    double tail;  ///< P(X <= x), or P(X > x).
    double density;
    double slope, second, third;  ///< Derivatives of log density.
};

/// The x between `low` >= 0 and `high` where the tail is `target`. Near it, by the Taylor series of x as a
/// function of the chance, whose coefficients up to the fourth follow from the derivatives of log density, as
/// in A. Gil, J. Segura & N. Temme, SIAM Journal on Scientific Computing 34 (2012) A2965-A2981; far from it,
/// by Newton's method on log tail as a function of log x; where that leaves what encloses x, by halving or
/// doubling. NaN when this has no end.
/// @param tailAt  x -> TailPoint
/// @param isLower  whether the tail is that below x.
template <class Function>
double tailQuantile(Function&& tailAt, bool isLower, double target, double start, double low, double high) {
    constexpr int kMaxSteps = 200;
    constexpr double kNear = 0.25, kLast = 5e-4;  // the first term left out has the fifth power
    constexpr double kLongest = 3.0;
    double x = start > low && start < high ? start : std::min(low + 1.0, 0.5 * (low + high));
    for (int count = 0; count < kMaxSteps; ++count) {
        const TailPoint at = tailAt(x);
        if (at.tail == target) return x;
        ((at.tail < target) == isLower ? low : high) = x;
        const double step = (isLower ? target - at.tail : at.tail - target) / at.density;
        const double a = step * at.slope, b = step * step * at.second, c = step * step * step * at.third;
        const double size = std::max({std::abs(step) / x, std::abs(a), std::sqrt(std::abs(b))});
        double next;
        if (size < kNear) {
            next = x + step * (1.0 - a / 2.0 + (2.0 * a * a - b) / 6.0 +
                               (a * (7.0 * b - 6.0 * a * a) - c) / 24.0);
            if (size < kLast || next == x) return next;
        } else {
            const double newton = std::log(target / at.tail) * at.tail / (x * at.density);
            const double rise = std::isfinite(newton) ? std::clamp(newton, -kLongest, kLongest)
                                                      : std::copysign(kLongest, target - at.tail);
            next = x * std::exp(isLower ? rise : -rise);
        }
        if (!(next > low && next < high))
            next = high < std::numeric_limits<double>::infinity() ? low + 0.5 * (high - low) : 2.0 * x;
        if (!(next > low && next < high)) return x;  // neighbouring doubles
        x = next;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace Tessel::Engine::Dist
