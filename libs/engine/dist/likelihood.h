#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "data/util/compensated_sum.h"

// What the fits by maximum likelihood have in common.

namespace Tessel::Engine::Dist {

/// A function's value and slope.
struct ValueAndSlope {
    double value = 0.0;
    double slope = 0.0;
};

/// The positive root of a function that is positive below it and negative above it, by Newton's method on
/// log x; where a step would leave what is known to enclose the root, half the enclosure or a step of a
/// factor e^2 is taken. NaN when there is no root between 1e-300 and `largest`, or none was found in 400
/// steps.
/// @param function  x -> ValueAndSlope
template <class Function>
double positiveRoot(Function&& function, double start, double largest = 1e300) {
    constexpr double kLongestStep = 2.0, kLastStep = 1e-10, kSmallest = 1e-300;
    double low = std::log(kSmallest), high = std::log(largest);
    const double bottom = low, top = high;
    double t = std::log(start);
    if (!(t > low && t < high)) t = 0.0;
    for (int iteration = 0; iteration < 400; ++iteration) {
        const double x = std::exp(t);
        const auto [value, slope] = function(x);
        if (value == 0.0) return x;
        if (std::isnan(value)) break;
        (value > 0.0 ? low : high) = t;
        double step = -value / (slope * x);
        // Newton's method squares the error, so that a short step is the last. x takes it, not log x.
        if (std::abs(step) < kLastStep) return x * (1.0 + step);
        if (!(std::abs(step) <= kLongestStep)) step = std::copysign(kLongestStep, value);
        if (t + step <= low || t + step >= high) step = 0.5 * (low + high) - t;
        if (high - low < kLastStep * std::max(1.0, std::abs(t)) * 1e-5)
            return low > bottom && high < top ? x : std::numeric_limits<double>::quiet_NaN();
        t += step;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

struct LocationScale {
    double location = std::numeric_limits<double>::quiet_NaN();
    double scale = std::numeric_limits<double>::quiet_NaN();
};

/// A standardised log-density without its constant, with its first two derivatives.
struct LogDensity {
    double value;
    double first;
    double second;
};

/// Maximum likelihood of location and scale by Newton's method on (location / scale, log scale); steps that
/// do not raise the likelihood are halved. NaN when there is no maximum with a positive scale.
/// @param density  z -> LogDensity
template <class Density>
LocationScale fitLocationScale(std::span<const double> x, LocationScale start, Density&& density) {
    struct State {
        double value, gradient[2], hessian[3];  // per observation
    };
    const double n = static_cast<double>(x.size());
    const auto evaluate = [&](const LocationScale& at) {
        Numeric::CompensatedSum sums[6];
        for (const double value : x) {
            const double z = (value - at.location) / at.scale;
            const LogDensity d = density(z);
            sums[0].add(d.value);
            sums[1].add(-d.first);
            sums[2].add(-(d.first * z + 1.0));
            sums[3].add(d.second);
            sums[4].add(d.second * z + d.first);
            sums[5].add((d.second * z + d.first) * z);
        }
        const auto mean = [&](int i) { return sums[i].value() / n; };
        return State{mean(0) - std::log(at.scale), {mean(1), mean(2)}, {mean(3), mean(4), mean(5)}};
    };

    constexpr int kMaxSteps = 200;
    constexpr double kSure = 1e-5, kTolerance = 1e-9;
    LocationScale best = start;
    State state = evaluate(best);
    for (int count = 0; count < kMaxSteps; ++count) {
        const auto& [value, g, h] = state;
        if (!std::isfinite(value)) break;
        const double determinant = h[0] * h[2] - h[1] * h[1];
        double step[2] = {g[0], g[1]};
        if (h[0] < 0.0 && determinant > 0.0) {
            step[0] = -(h[2] * g[0] - h[1] * g[1]) / determinant;
            step[1] = -(h[0] * g[1] - h[1] * g[0]) / determinant;
        }
        const double length = std::max(std::abs(step[0]), std::abs(step[1]));
        double factor = length > 1.0 ? 1.0 / length : 1.0;
        for (;; factor *= 0.5) {
            const LocationScale next{best.location + factor * step[0] * best.scale,
                                     best.scale * std::exp(factor * step[1])};
            // A step of the tolerance is the last: Newton's method squares the error.
            if (length < kTolerance) return next;
            const State nextState = evaluate(next);
            if (nextState.value > value || length * factor < kSure) {
                best = next;
                state = nextState;
                break;
            }
        }
    }
    return {};
}

/// The middle value, or the mean of the two middle ones. Reorders x. @pre !x.empty()
inline double medianOf(std::span<double> x) {
    const auto middle = x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2);
    std::nth_element(x.begin(), middle, x.end());
    if (x.size() % 2 == 1) return *middle;
    return 0.5 * *middle + 0.5 * *std::max_element(x.begin(), middle);
}

}  // namespace Tessel::Engine::Dist
