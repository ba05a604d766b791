#include <algorithm>
#include <cmath>

#include "data/io/parallel.h"
#include "engine/copula/ranks.h"

namespace Tessel::Engine::Copula {

namespace {

using Codes = std::vector<std::uint32_t>;

/// The observations in ascending order of a variable.
struct Order {
    Codes rows;
    std::vector<std::size_t> runs;  // where in `rows` each run of equal numbers begins; at last the end
};

Order orderOf(const Codes& codes, std::size_t numCodes) {
    std::vector<std::size_t> starts(numCodes + 1, 0);
    for (const std::uint32_t code : codes) ++starts[code + 1];
    for (std::size_t code = 0; code < numCodes; ++code) starts[code + 1] += starts[code];
    Order order{Codes(codes.size()), {}};
    order.runs = starts;
    order.runs.erase(std::unique(order.runs.begin(), order.runs.end()), order.runs.end());
    for (std::size_t row = 0; row < codes.size(); ++row)
        order.rows[starts[codes[row]]++] = static_cast<std::uint32_t>(row);
    return order;
}

double pairsAmong(std::size_t count) {
    return 0.5 * static_cast<double>(count) * (static_cast<double>(count) - 1.0);
}

double tiedPairs(const Order& order) {
    double tied = 0.0;
    for (std::size_t run = 0; run + 1 < order.runs.size(); ++run)
        tied += pairsAmong(order.runs[run + 1] - order.runs[run]);
    return tied;
}

/// Sorts the numbers, counting how many pairs stood in descending order.
std::uint64_t sortCountingInversions(Codes& numbers, Codes& merged) {
    constexpr std::size_t kInsertion = 16;
    std::uint64_t inversions = 0;
    for (std::size_t begin = 0; begin < numbers.size(); begin += kInsertion)
        for (std::size_t i = begin + 1; i < std::min(begin + kInsertion, numbers.size()); ++i) {
            const std::uint32_t number = numbers[i];
            std::size_t place = i;
            for (; place > begin && numbers[place - 1] > number; --place) numbers[place] = numbers[place - 1];
            numbers[place] = number;
            inversions += i - place;
        }
    for (std::size_t width = kInsertion; width < numbers.size(); width *= 2) {
        for (std::size_t begin = 0; begin < numbers.size(); begin += 2 * width) {
            const std::size_t middle = std::min(begin + width, numbers.size());
            const std::size_t end = std::min(begin + 2 * width, numbers.size());
            std::size_t left = begin, right = middle, out = begin;
            while (left < middle && right < end) {
                const std::uint32_t a = numbers[left], b = numbers[right];
                const bool takesRight = b < a;
                merged[out++] = takesRight ? b : a;
                inversions += takesRight ? middle - left : 0;
                left += !takesRight;
                right += takesRight;
            }
            std::copy(numbers.begin() + static_cast<std::ptrdiff_t>(left),
                      numbers.begin() + static_cast<std::ptrdiff_t>(middle),
                      merged.begin() + static_cast<std::ptrdiff_t>(out));
            std::copy(numbers.begin() + static_cast<std::ptrdiff_t>(right),
                      numbers.begin() + static_cast<std::ptrdiff_t>(end),
                      merged.begin() + static_cast<std::ptrdiff_t>(out + middle - left));
        }
        numbers.swap(merged);
    }
    return inversions;
}

/// @param numbers, merged  memory for as many codes as there are rows.
double kendall(const Order& x, const Order& y, const Codes& yCodes, Codes& numbers, Codes& merged) {
    const std::size_t size = yCodes.size();
    for (std::size_t i = 0; i < size; ++i) numbers[i] = yCodes[x.rows[i]];
    double tiedInBoth = 0.0;
    if (x.runs.size() <= size) {  // in runs of equal x by y, so that they have no inversions
        for (std::size_t run = 0; run + 1 < x.runs.size(); ++run) {
            const auto begin = numbers.begin() + static_cast<std::ptrdiff_t>(x.runs[run]);
            const auto end = numbers.begin() + static_cast<std::ptrdiff_t>(x.runs[run + 1]);
            std::sort(begin, end);
            for (auto first = begin, next = begin; first != end; first = next) {
                next = std::upper_bound(first, end, *first);
                tiedInBoth += pairsAmong(static_cast<std::size_t>(next - first));
            }
        }
    }
    const auto discordant = static_cast<double>(sortCountingInversions(numbers, merged));
    const double total = pairsAmong(size), tiedInX = tiedPairs(x), tiedInY = tiedPairs(y);
    const double concordant = total - tiedInX - tiedInY + tiedInBoth - discordant;
    return (concordant - discordant) / (std::sqrt(total - tiedInX) * std::sqrt(total - tiedInY));
}

}  // namespace

std::vector<double> kendallMatrix(const Ranks& ranks) {
    const std::size_t numVars = ranks.numVars(), numRows = ranks.numRows;
    std::vector<Order> orders(numVars);
    IO::forEachIndex(numVars, numVars * numRows, [&](std::size_t variable) {
        orders[variable] = orderOf(ranks.codes[variable], ranks.twiceRanks.size());
    });
    std::vector<double> matrix(numVars * numVars, 1.0);
    IO::forEachIndex(numVars, numVars * numVars * numRows, [&](std::size_t index) {
        const std::size_t i = numVars - 1 - index;  // long rows first
        Codes numbers(numRows), merged(numRows);
        for (std::size_t j = 0; j < i; ++j) {
            const double tau = kendall(orders[i], orders[j], ranks.codes[j], numbers, merged);
            matrix[i * numVars + j] = matrix[j * numVars + i] = std::clamp(tau, -1.0, 1.0);
        }
    });
    return matrix;
}

}  // namespace Tessel::Engine::Copula
