#include "data/util/alias_table.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include <tessel/data/errors.h>

#include "data/util/interleaved_sum.h"

namespace Tessel::Util {

namespace {

double largestOf(std::span<const double> weights) {
    std::array<double, 8> largest{};  // several at once
    std::size_t i = 0;
    for (; i + largest.size() <= weights.size(); i += largest.size())
        for (std::size_t part = 0; part < largest.size(); ++part)
            largest[part] = weights[i + part] > largest[part] ? weights[i + part] : largest[part];
    for (; i < weights.size(); ++i) largest[0] = std::max(largest[0], weights[i]);
    return *std::max_element(largest.begin(), largest.end());
}

}  // namespace

void requireWeights(std::span<const double> weights, int needed) {
    std::int64_t numPositive = 0, numBad = 0;
    for (const double weight : weights) {
        numBad += weight >= 0.0 && weight <= std::numeric_limits<double>::max() ? 0 : 1;
        numPositive += weight > 0.0 ? 1 : 0;
    }
    if (numBad > 0) throw ConstraintViolation("Weights", "Each weight must be finite and not negative.");
    if (numPositive < needed)
        throw ConstraintViolation("Weights", "At least " + std::to_string(needed) + " must be positive.");
}

void AliasTable::assign(std::span<const double> weights) {
    const std::size_t size = weights.size();
    columns_.resize(size);
    order_.resize(size);
    // Scaling by the largest weight first keeps the sum finite.
    const double heaviest = largestOf(weights);
    const double sum = Numeric::interleavedSum<8>(
        size, [&](std::size_t i) { return columns_[i].probability = weights[i] / heaviest; });
    const double scale = static_cast<double>(size) / sum;
    // Light columns from the front, heavy ones from the back.
    std::size_t numLight = 0, firstHeavy = size;
    for (std::size_t i = 0; i < size; ++i) {
        columns_[i].probability *= scale;
        // Rounding may leave a column of almost 1 unpaired, which then keeps its rest; never one of 0, as the
        // unpaired columns sum up to their number but for rounding.
        columns_[i].alias = static_cast<int>(i);
        const bool isLight = columns_[i].probability < 1.0;
        order_[numLight] = order_[firstHeavy - 1] = static_cast<int>(i);
        numLight += isLight ? 1 : 0;
        firstHeavy -= isLight ? 0 : 1;
    }
    if (numLight > 0) pair(std::span(order_).first(numLight), std::span(order_).subspan(firstHeavy));
}

/// Fills the last of the light columns up from the first heavy one; what that keeps may be light, and is then
/// the next to be filled up.
void AliasTable::pair(std::span<const int> light, std::span<const int> heavy) {
    std::size_t numLight = light.size();
    const auto columnOf = [&](int i) { return &columns_[static_cast<std::size_t>(i)]; };
    Column* small = columnOf(light[--numLight]);
    for (const int next : heavy) {
        Column* const large = columnOf(next);
        for (;;) {
            small->alias = next;
            large->probability = (large->probability + small->probability) - 1.0;
            if (large->probability < 1.0) break;
            if (numLight == 0) return;
            small = columnOf(light[--numLight]);
        }
        small = large;
    }
}

}  // namespace Tessel::Util
