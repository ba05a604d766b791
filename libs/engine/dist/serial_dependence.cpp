#include "engine/dist/serial_dependence.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

#include "data/util/compensated_sum.h"

namespace Tessel::Engine::Dist {
namespace {

using Complex = std::complex<double>;

/// Below, the sums as defined take less time than a transform.
constexpr std::size_t kLongSeries = 512;
/// Products summed as defined after a transform, as a multiple of the length.
constexpr std::size_t kMostExactPasses = 16;

/// Multiplies without the checks for infinities that the operator makes.
Complex times(Complex a, Complex b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

/// The discrete Fourier transform in place, sum over j of x[j] exp(-2 pi i j k / n), by radix 2 (J. Cooley &
/// J. Tukey, Math. Comput. 19 (1965) 297-301). @pre the size is a power of 2
void transform(std::vector<Complex>& x) {
    const std::size_t n = x.size();
    for (std::size_t i = 1, reversed = 0; i < n; ++i) {
        std::size_t bit = n / 2;
        for (; (reversed & bit) != 0; bit /= 2) reversed ^= bit;
        reversed |= bit;
        if (i < reversed) std::swap(x[i], x[reversed]);
    }
    std::vector<Complex> roots(n / 2);
    for (std::size_t k = 0; k < roots.size(); ++k) {
        const double angle = -2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
        roots[k] = {std::cos(angle), std::sin(angle)};
    }
    for (std::size_t half = 1; half < n; half *= 2)
        for (std::size_t begin = 0; begin < n; begin += 2 * half)
            for (std::size_t k = 0; k < half; ++k) {
                const Complex odd = times(x[begin + half + k], roots[k * (n / (2 * half))]);
                const Complex even = x[begin + k];
                x[begin + k] = even + odd;
                x[begin + half + k] = even - odd;
            }
}

double sumOfProducts(std::span<const double> deviations, std::size_t lag) {
    return Numeric::sumOf(deviations.size() - lag,
                          [&](std::size_t i) { return deviations[i] * deviations[i + lag]; });
}

/// All sums of products, lag by lag, as the inverse transform of the squared absolute transform.
std::vector<double> allSumsOfProducts(std::span<const double> deviations) {
    std::vector<Complex> x(std::bit_ceil(2 * deviations.size()));
    std::copy(deviations.begin(), deviations.end(), x.begin());
    transform(x);
    for (Complex& value : x) value = std::norm(value);
    transform(x);  // real and even: the inverse is the transform itself over the size
    std::vector<double> sums(deviations.size());
    for (std::size_t lag = 0; lag < sums.size(); ++lag)
        sums[lag] = x[lag].real() / static_cast<double>(x.size());
    return sums;
}

}  // namespace

double serialDependence(std::span<const double> values) {
    const std::size_t n = values.size();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    if (n < 2) return kNaN;
    const double shift = values.front();
    const double mean =
        shift + Numeric::sumOf(n, [&](std::size_t i) { return values[i] - shift; }) / static_cast<double>(n);
    std::vector<double> deviations(n);
    double scale = 0.0;
    for (std::size_t i = 0; i < n; ++i) scale = std::max(scale, std::abs(values[i] - mean));
    if (!(scale > 0.0) || !std::isfinite(scale)) return kNaN;
    for (std::size_t i = 0; i < n; ++i) deviations[i] = (values[i] - mean) / scale;

    const double squares = sumOfProducts(deviations, 0);
    const double variance = squares / static_cast<double>(n - 1);
    const auto correlation = [&](std::size_t lag) {
        return std::abs(sumOfProducts(deviations, lag)) / static_cast<double>(n - lag) / variance;
    };
    double largest = 0.0;
    if (n < kLongSeries) {
        for (std::size_t lag = 1; lag < n; ++lag) largest = std::max(largest, correlation(lag));
        return largest;
    }

    // The rounding of the transform is a small multiple of epsilon times the sum of squares at every lag.
    // What may be the largest is computed as defined, from the long lags, which are cheap, to the short ones,
    // where the transform is accurate: a periodic series has as many largest correlations as lags.
    const std::vector<double> sums = allSumsOfProducts(deviations);
    const double rounding = 64.0 * std::numeric_limits<double>::epsilon() * squares;
    const auto transformed = [&](std::size_t lag, double margin) {
        return (std::abs(sums[lag]) + margin) / static_cast<double>(n - lag) / variance;
    };
    double bound = 0.0;
    for (std::size_t lag = 1; lag < n; ++lag) bound = std::max(bound, transformed(lag, -rounding));
    std::size_t numProducts = 0;
    for (std::size_t lag = n - 1; lag > 0; --lag) {
        if (transformed(lag, rounding) < bound) continue;
        const bool isAffordable = (numProducts += n - lag) <= kMostExactPasses * n;
        largest = std::max(largest, isAffordable ? correlation(lag) : transformed(lag, 0.0));
    }
    return largest;
}

}  // namespace Tessel::Engine::Dist
