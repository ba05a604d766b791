#include "engine/dist/sample_statistics.h"

#include <algorithm>
#include <cmath>

namespace Tessel::Engine::Dist {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The values of a block stay in the first-level cache between the passes over it.
constexpr std::size_t kBlock = 1024;

/// Count, mean and the sums of the powers of the deviations from it, of values less a shift, which is one of
/// them: far from zero the differences have digits that a mean has not.
struct PowerSums {
    double count = 0.0, mean = 0.0, squares = 0.0, cubes = 0.0, fourths = 0.0;

    PowerSums(std::span<const double> block, double shift) : count(static_cast<double>(block.size())) {
        double sum = 0.0;
        for (const double x : block) sum += x - shift;
        mean = sum / count;
        double rest = 0.0;
        for (const double x : block) {
            const double d = (x - shift) - mean, square = d * d;
            rest += d;
            squares += square;
            cubes += square * d;
            fourths += square * square;
        }
        // The mean is rounded: the sums are about a place that is off by this much.
        const double off = rest / count;
        fourths -= off * (4.0 * cubes - off * 6.0 * squares);
        cubes -= 3.0 * off * squares;
        squares -= off * rest;
        mean += off;
    }

    void merge(const PowerSums& other) {
        const double total = count + other.count, d = other.mean - mean;
        const double share = count / total, otherShare = other.count / total, product = count * otherShare;
        const double step = d * d;
        fourths += other.fourths +
                   step * step * product * (share * share - share * otherShare + otherShare * otherShare) +
                   6.0 * step * (share * share * other.squares + otherShare * otherShare * squares) +
                   4.0 * d * (share * other.cubes - otherShare * cubes);
        cubes += other.cubes + step * d * product * (share - otherShare) +
                 3.0 * d * (share * other.squares - otherShare * squares);
        squares += other.squares + step * product;
        mean += d * otherShare;
        count = total;
    }
};

}  // namespace

SampleStatistics statisticsOf(std::span<const double> sorted) {
    SampleStatistics result;
    result.count = sorted.size();
    if (sorted.empty()) return result;
    const double shift = sorted[sorted.size() / 2];
    PowerSums sums(sorted.first(std::min(kBlock, sorted.size())), shift);
    for (std::size_t begin = kBlock; begin < sorted.size(); begin += kBlock)
        sums.merge(PowerSums(sorted.subspan(begin, std::min(kBlock, sorted.size() - begin)), shift));

    const double n = sums.count, second = sums.squares / n;
    result.mean = std::clamp(shift + sums.mean, sorted.front(), sorted.back());
    if (n > 1.0) {
        result.variance = sums.squares / (n - 1.0);
        result.standardDeviation = std::sqrt(result.variance);
    }
    if (second > 0.0 && n > 2.0)
        result.skewness =
            std::sqrt(n * (n - 1.0)) / (n - 2.0) * (sums.cubes / n) / (second * std::sqrt(second));
    if (second > 0.0 && n > 3.0)
        result.excessKurtosis = (n - 1.0) / ((n - 2.0) * (n - 3.0)) *
                                ((n + 1.0) * (sums.fourths / n / (second * second) - 3.0) + 6.0);
    result.minimum = sorted.front();
    result.maximum = sorted.back();
    result.median = percentile(sorted, 0.5);
    result.lowerQuartile = percentile(sorted, 0.25);
    result.upperQuartile = percentile(sorted, 0.75);
    return result;
}

double percentile(std::span<const double> sorted, double p) {
    if (sorted.empty() || !(p >= 0.0 && p <= 1.0)) return kNaN;
    const double position = static_cast<double>(sorted.size() - 1) * p;
    const auto below = static_cast<std::size_t>(position);
    if (below + 1 >= sorted.size()) return sorted.back();
    return std::lerp(sorted[below], sorted[below + 1], position - static_cast<double>(below));
}

double mostFrequent(std::span<const double> sorted) {
    double mode = kNaN;
    std::size_t longest = 0;
    for (std::size_t begin = 0; begin < sorted.size();) {
        std::size_t end = begin + 1;
        while (end < sorted.size() && sorted[end] == sorted[begin]) ++end;
        if (end - begin > longest) {
            longest = end - begin;
            mode = sorted[begin];
        }
        begin = end;
    }
    return mode;
}

}  // namespace Tessel::Engine::Dist
