#include "engine/dist/metalog_fit.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include <lapacke.h>

namespace Tessel::Engine::Dist {
namespace {

/// Of the folded problem; times 9 columns below the sizes from which threaded BLAS libraries split an
/// operation.
constexpr std::size_t kBlockRows = 512;
/// Triangles of 9 rows merged at a time, likewise.
constexpr std::size_t kGroup = 50;
constexpr std::size_t kParallelBlocks = 16;

/// A column whose part independent of the earlier ones is smaller than this share of it counts as dependent.
constexpr double kIndependent = 64.0 * std::numeric_limits<double>::epsilon();

/// Leaves R in the upper triangle of the column-major matrix. False when LAPACK refuses.
bool factorInPlace(std::span<double> cells, std::size_t numRows, std::size_t numColumns) {
    constexpr std::size_t kMostColumns = 16;
    assert(numColumns <= kMostColumns);
    std::array<double, kMostColumns> tau;
    std::array<double, 64 * kMostColumns> work;
    return LAPACKE_dgeqrf_work(LAPACK_COL_MAJOR, static_cast<lapack_int>(numRows),
                               static_cast<lapack_int>(numColumns), cells.data(),
                               static_cast<lapack_int>(numRows), tau.data(), work.data(),
                               static_cast<lapack_int>(work.size())) == 0;
}

}  // namespace

MetalogLeastSquares::Triangle MetalogLeastSquares::factor(std::span<const double> sorted, bool even,
                                                          std::size_t begin, std::size_t end) const {
    const std::size_t n = sorted.size(), numRows = end - begin;
    std::array<double, kBlockRows * kColumns> cells;
    for (std::size_t row = 0; row < numRows; ++row) {
        const std::size_t low = begin + row, high = n - 1 - low;
        const auto y = MetalogProbability::of((static_cast<double>(low) + 0.5) / static_cast<double>(n));
        const double x = -y.x, logitOfX = -y.logit;  // of the upper value
        // The middle value of an odd number stands for itself only, in a fold that counts all others twice.
        const double weight = low == high ? std::sqrt(0.5) : 1.0;
        double power = weight;
        for (std::size_t k = 0; k < kFunctions; ++k) {
            const bool hasLogit = (k % 2 == 1) == even;
            cells[k * numRows + row] = hasLogit ? power * logitOfX : power;
            power *= x;
        }
        const double below = sorted[low] - center_, above = sorted[high] - center_;
        cells[kFunctions * numRows + row] = weight * (even ? 0.5 * (above + below) : 0.5 * (above - below));
    }

    Triangle triangle;
    if (!factorInPlace(std::span(cells).first(numRows * kColumns), numRows, kColumns)) return triangle;
    triangle.numRows = std::min(numRows, kColumns);
    for (std::size_t column = 0; column < kColumns; ++column)
        for (std::size_t row = 0; row < std::min(column + 1, triangle.numRows); ++row)
            triangle.cells[column * kColumns + row] = cells[column * numRows + row];
    return triangle;
}

MetalogLeastSquares::Triangle MetalogLeastSquares::merge(std::span<const Triangle> triangles) {
    std::size_t numRows = 0;
    for (const Triangle& triangle : triangles) numRows += triangle.numRows;
    std::vector<double> cells(numRows * kColumns);
    for (std::size_t column = 0; column < kColumns; ++column) {
        double* cell = cells.data() + column * numRows;
        for (const Triangle& triangle : triangles)
            cell = std::copy_n(triangle.cells.begin() + static_cast<std::ptrdiff_t>(column * kColumns),
                               triangle.numRows, cell);
    }
    Triangle merged;
    if (numRows == 0 || !factorInPlace(cells, numRows, kColumns)) return merged;
    merged.numRows = std::min(numRows, kColumns);
    for (std::size_t column = 0; column < kColumns; ++column)
        for (std::size_t row = 0; row < std::min(column + 1, merged.numRows); ++row)
            merged.cells[column * kColumns + row] = cells[column * numRows + row];
    return merged;
}

MetalogLeastSquares::MetalogLeastSquares(std::span<const double> sorted) {
    assert(!sorted.empty());
    center_ = sorted[sorted.size() / 2];
    for (const bool even : {true, false}) {
        const std::size_t numRows = (sorted.size() + (even ? 1 : 0)) / 2;
        const std::size_t numBlocks = (numRows + kBlockRows - 1) / kBlockRows;
        Triangles triangles(numBlocks);
#pragma omp parallel for schedule(static) if (numBlocks >= kParallelBlocks)
        for (std::size_t block = 0; block < numBlocks; ++block) {
            const std::size_t begin = block * kBlockRows;
            triangles[block] = factor(sorted, even, begin, std::min(begin + kBlockRows, numRows));
        }
        while (triangles.size() > 1) {
            Triangles merged;
            for (std::size_t begin = 0; begin < triangles.size(); begin += kGroup)
                merged.push_back(
                    merge(std::span(triangles).subspan(begin, std::min(kGroup, triangles.size() - begin))));
            triangles.swap(merged);
        }
        if (!triangles.empty()) (even ? even_ : odd_) = triangles.front();
    }
}

bool MetalogLeastSquares::Triangle::solve(std::size_t numFunctions, std::span<double> result) const {
    if (numFunctions > numRows) return false;
    const auto at = [this](std::size_t row, std::size_t column) { return cells[column * kColumns + row]; };
    for (std::size_t column = 0; column < numFunctions; ++column) {
        double squares = 0.0;
        for (std::size_t row = 0; row <= column; ++row) squares += at(row, column) * at(row, column);
        if (!(std::abs(at(column, column)) > kIndependent * std::sqrt(squares))) return false;
    }
    for (std::size_t row = numFunctions; row-- > 0;) {
        double value = at(row, kFunctions);
        for (std::size_t column = row + 1; column < numFunctions; ++column)
            value -= at(row, column) * result[column];
        result[row] = value / at(row, row);
        if (!std::isfinite(result[row])) return false;
    }
    return true;
}

std::optional<std::vector<double>> MetalogLeastSquares::solve(MetalogOrder order, int numTerms) const {
    assert(numTerms >= kMinMetalogTerms && numTerms <= kMaxMetalogTerms);
    std::size_t numEven = 0;
    for (int j = 1; j <= numTerms; ++j) numEven += metalogTerm(order, j).isEven() ? 1U : 0U;
    std::array<double, kFunctions> even, odd;
    if (!even_.solve(numEven, even) || !odd_.solve(static_cast<std::size_t>(numTerms) - numEven, odd))
        return std::nullopt;

    std::vector<double> coefficients;
    for (int j = 1; j <= numTerms; ++j) {
        const MetalogTerm term = metalogTerm(order, j);
        coefficients.push_back((term.isEven() ? even : odd)[static_cast<std::size_t>(term.power)]);
    }
    coefficients.front() += center_;
    return coefficients;
}

}  // namespace Tessel::Engine::Dist
