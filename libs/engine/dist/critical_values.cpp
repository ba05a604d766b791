#include "engine/dist/critical_values.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <vector>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/tools/toms748_solve.hpp>

namespace Tessel::Engine::Dist {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kMostExact = 140;

/// The x at which an increasing function has the value, which it passes between low and high.
template <class Function>
double inverse(Function&& function, double value, double low, double high) {
    constexpr int kBits = 44;
    std::uintmax_t numEvaluations = 100;
    const auto [below, above] =
        boost::math::tools::toms748_solve([&](double x) { return function(x) - value; }, low, high,
                                          boost::math::tools::eps_tolerance<double>(kBits), numEvaluations);
    return 0.5 * (below + above);
}

/// A square matrix times 10^exponent.
struct Scaled {
    std::vector<double> cells;
    int exponent = 0;
};

Scaled product(const Scaled& a, const Scaled& b, std::size_t size) {
    Scaled c{std::vector<double>(size * size), a.exponent + b.exponent};
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t k = 0; k < size; ++k) {
            const double factor = a.cells[i * size + k];
            for (std::size_t j = 0; j < size; ++j) c.cells[i * size + j] += factor * b.cells[k * size + j];
        }
    if (c.cells[(size / 2) * size + size / 2] > 1e140) {
        for (double& cell : c.cells) cell *= 1e-140;
        c.exponent += 140;
    }
    return c;
}

double exactKolmogorovSmirnov(std::size_t n, double d) {
    const double numValues = static_cast<double>(n);
    const auto k = static_cast<std::size_t>(numValues * d) + 1;
    const std::size_t size = 2 * k - 1;
    const double h = static_cast<double>(k) - numValues * d;

    Scaled matrix{std::vector<double>(size * size)};
    auto& cells = matrix.cells;
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < std::min(i + 2, size); ++j) cells[i * size + j] = 1.0;
    for (std::size_t i = 0; i < size; ++i) {
        cells[i * size] -= std::pow(h, static_cast<double>(i + 1));
        cells[(size - 1) * size + i] -= std::pow(h, static_cast<double>(size - i));
    }
    if (2.0 * h > 1.0) cells[(size - 1) * size] += std::pow(2.0 * h - 1.0, static_cast<double>(size));
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j <= std::min(i, size - 1); ++j)
            for (std::size_t g = 1; g <= i - j + 1; ++g) cells[i * size + j] /= static_cast<double>(g);

    Scaled power{std::vector<double>(size * size)};
    for (std::size_t i = 0; i < size; ++i) power.cells[i * size + i] = 1.0;
    for (std::size_t rest = n; rest > 0; rest /= 2) {
        if (rest % 2 == 1) power = product(power, matrix, size);
        if (rest > 1) matrix = product(matrix, matrix, size);
    }

    double probability = power.cells[(k - 1) * size + k - 1];
    int exponent = power.exponent;
    for (std::size_t i = 1; i <= n; ++i) {  // times n! / n^n
        probability *= static_cast<double>(i) / numValues;
        if (probability < 1e-140) {
            probability *= 1e140;
            exponent -= 140;
        }
    }
    return probability * std::pow(10.0, exponent);
}

double expandedKolmogorovSmirnov(std::size_t n, double d) {
    const double root = std::sqrt(static_cast<double>(n)), z = root * d;
    if (z < 0.2) return 0.0;  // below 1e-11
    const double z2 = z * z, z4 = z2 * z2, z6 = z4 * z2, pi2 = kPi * kPi, pi4 = pi2 * pi2;
    double k0 = 0.0, k1 = 0.0, k2 = 0.0, k3 = 0.0;
    for (int i = 40; i >= 0; --i) {  // over i + 1/2 of both signs
        const double h2 = (i + 0.5) * (i + 0.5), h4 = h2 * h2;
        const double weight = 2.0 * std::exp(-0.5 * pi2 * h2 / z2);
        k0 += weight;
        k1 += weight * (pi2 * h2 - z2);
        k2 +=
            weight * ((6.0 * z6 + 2.0 * z4) + pi2 * (2.0 * z4 - 5.0 * z2) * h2 + pi4 * (1.0 - 2.0 * z2) * h4);
        k3 += weight * (pi4 * pi2 * h4 * h2 * (5.0 - 30.0 * z2) + pi4 * h4 * (-60.0 * z2 + 212.0 * z4) +
                        pi2 * h2 * (135.0 * z4 - 96.0 * z6) - (30.0 * z6 + 90.0 * z4 * z4));
    }
    double k2b = 0.0, k3b = 0.0;
    for (int i = 40; i >= 1; --i) {
        const double i2 = static_cast<double>(i) * i, weight = 2.0 * std::exp(-0.5 * pi2 * i2 / z2);
        k2b += weight * pi2 * i2;
        k3b += weight * (3.0 * pi2 * i2 * z2 - pi4 * i2 * i2);
    }
    const double scale = std::sqrt(0.5 * kPi);
    return scale *
           (k0 / z + k1 / (6.0 * z4 * root) + (k2 / (72.0 * z6 * z) - k2b / (36.0 * z2 * z)) / (root * root) +
            (k3 / (6480.0 * z6 * z4) + k3b / (108.0 * z6)) / (root * root * root));
}

/// The integral of exp(z / (8 (w^2 + 1)) - c w^2) over w > 0, by the trapezoidal rule, which converges
/// geometrically for a function that is analytic near the line and decays like a normal density.
double andersonDarlingIntegral(double z, double c) {
    const double step = std::min(0.02, 0.05 / std::sqrt(c));
    double sum = 0.5 * std::exp(z / 8.0);
    for (double w = step;; w += step) {
        const double term = std::exp(z / (8.0 * (w * w + 1.0)) - c * w * w);
        sum += term;
        if (term < 1e-18) return sum * step;
    }
}

double limitOfAndersonDarling(double z) {
    double sum = 0.0, binomial = 1.0;  // (-1/2 over j)
    for (int j = 0; j < 20; ++j) {
        const double order = 4.0 * j + 1.0, c = order * order * kPi * kPi / (8.0 * z);
        const double term = binomial * order * std::exp(-c) * andersonDarlingIntegral(z, c);
        sum += term;
        if (std::abs(term) < 1e-16) break;
        binomial *= -(0.5 + j) / (j + 1.0);
    }
    return sum * std::sqrt(2.0 * kPi) / z;
}

}  // namespace

double kolmogorovSmirnovCdf(std::size_t n, double d) {
    assert(n >= 1);
    if (!(d > 0.0)) return 0.0;
    if (d >= 1.0) return 1.0;
    return std::clamp(n <= kMostExact ? exactKolmogorovSmirnov(n, d) : expandedKolmogorovSmirnov(n, d), 0.0,
                      1.0);
}

double andersonDarlingCdf(std::size_t n, double z) {
    const double x = limitOfAndersonDarling(z);
    const double correction =
        -130.2137 + x * (745.2337 + x * (-1705.091 + x * (1950.646 + x * (-1116.360 + x * 255.7844))));
    return x + correction / static_cast<double>(n);
}

std::size_t numChiSquareClasses(std::size_t n) {
    return static_cast<std::size_t>(std::llround(2.0 * std::pow(static_cast<double>(n), 0.4)));
}

CriticalValues::CriticalValues(std::size_t n, double confidence)
    : numValues_(n),
      confidence_(std::isnan(confidence) ? kLowestConfidence
                                         : std::clamp(confidence, kLowestConfidence, kHighestConfidence)) {
    kolmogorovSmirnov_ = inverse([n](double d) { return kolmogorovSmirnovCdf(n, d); }, confidence_, 0.0,
                                 std::min(1.0, 2.0 / std::sqrt(static_cast<double>(n))));
    andersonDarling_ = inverse([n](double z) { return andersonDarlingCdf(n, z); }, confidence_, 1.5, 6.0);
}

double CriticalValues::chiSquare(double degreesOfFreedom) const {
    if (!(degreesOfFreedom > 0.0)) return std::numeric_limits<double>::quiet_NaN();
    return boost::math::quantile(boost::math::complement(
        boost::math::chi_squared_distribution<double>(degreesOfFreedom), 1.0 - confidence_));
}

}  // namespace Tessel::Engine::Dist
