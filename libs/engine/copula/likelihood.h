#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include <boost/math/tools/minima.hpp>

#include "data/io/parallel.h"
#include "engine/copula/correlation_matrix.h"
#include "engine/copula/ranks.h"

namespace Tessel::Engine::Copula {

/// The sum over all blocks of `kBlock` observations of term(first observation, how many), in a fixed order.
/// `work` is the number of operations, by which threads are worth it or not.
template <class Term>
double sumOverBlocks(std::size_t numRows, std::size_t work, const Term& term) {
    constexpr std::size_t kBlocksAtOnce = 8;
    constexpr std::size_t kRows = kBlock * kBlocksAtOnce;
    std::vector<double> sums((numRows + kRows - 1) / kRows, 0.0);
    IO::forEachIndex(sums.size(), work, [&](std::size_t i) {
        const std::size_t end = std::min(numRows, (i + 1) * kRows);
        for (std::size_t first = i * kRows; first < end; first += kBlock)
            sums[i] += term(first, std::min(kBlock, end - first));
    });
    double sum = 0.0;
    for (const double part : sums) sum += part;
    return sum;
}

/// function(pseudo-observation) of every code.
template <class Function>
void tabulate(const Ranks& ranks, const Function& function, std::vector<double>& table) {
    constexpr std::size_t kChunk = 1024;
    const std::size_t size = ranks.twiceRanks.size();
    table.resize(size);
    IO::forEachIndex((size + kChunk - 1) / kChunk, 8 * size, [&](std::size_t chunk) {
        for (std::size_t code = chunk * kChunk; code < std::min(size, (chunk + 1) * kChunk); ++code)
            table[code] = function(ranks.pseudoObservation(code));
    });
}

/// The argument in [exp(lower), exp(upper)] where a function of one maximum is largest, and its value there
/// (R. Brent, Algorithms for Minimization without Derivatives, Prentice-Hall 1973, on the logarithm).
struct Maximum {
    double argument;
    double value;
};
template <class Function>
Maximum maximise(const Function& function, double lower, double upper) {
    constexpr int kBits = 27;  // what a maximum in doubles can be told to
    const auto negative = [&](double logarithm) { return -function(std::exp(logarithm)); };
    const auto [place, value] =
        boost::math::tools::brent_find_minima(negative, std::log(lower), std::log(upper), kBits);
    return {std::exp(place), -value};
}

}  // namespace Tessel::Engine::Copula
