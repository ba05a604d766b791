#include "engine/dist/metalog_fit.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace Tessel::Engine::Dist {
namespace {

/// Of the folded problem; 9 columns of them stay in the nearest caches.
constexpr std::size_t kBlockRows = 512;
/// Triangles merged at a time, likewise.
constexpr std::size_t kGroup = 50;
constexpr std::size_t kParallelBlocks = 16;

/// A column whose part independent of the earlier ones is smaller than this share of it counts as dependent.
constexpr double kIndependent = 64.0 * std::numeric_limits<double>::epsilon();

/// The sum of products, in eight interleaved sums, which processors add side by side.
double product(const double* x, const double* y, std::size_t size) {
    std::array<double, 8> lanes{};
    std::size_t i = 0;
    for (; i + lanes.size() <= size; i += lanes.size())
        for (std::size_t lane = 0; lane < lanes.size(); ++lane) lanes[lane] += x[i + lane] * y[i + lane];
    for (; i < size; ++i) lanes[0] += x[i] * y[i];
    return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) + ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7]));
}

/// Leaves R of the first columns in the upper triangle of the column-major matrix, and Q'z in its last
/// column.
/// @pre the squares of the first columns neither overflow nor vanish: they are functions of probabilities
void factorInPlace(std::span<double> cells, std::size_t numRows, std::size_t numColumns) {
    for (std::size_t k = 0; k < std::min(numRows, numColumns - 1); ++k) {
        double* const pivot = cells.data() + k * numRows + k;
        const std::size_t size = numRows - k;
        const double norm = std::sqrt(product(pivot, pivot, size));
        if (norm == 0.0) continue;
        // The reflection that takes the column to (diagonal, 0, ..., 0), of the sign without cancellation.
        const double diagonal = pivot[0] > 0.0 ? -norm : norm;
        const double scale = 1.0 / (norm * (norm + std::abs(pivot[0])));
        pivot[0] -= diagonal;
        for (std::size_t j = k + 1; j < numColumns; ++j) {
            double* const other = cells.data() + j * numRows + k;
            const double share = scale * product(pivot, other, size);
            for (std::size_t i = 0; i < size; ++i) other[i] -= share * pivot[i];
        }
        pivot[0] = diagonal;
    }
}

}  // namespace

MetalogLeastSquares::Triangle MetalogLeastSquares::triangleOf(std::span<double> cells, std::size_t numRows) {
    factorInPlace(cells, numRows, kColumns);
    Triangle triangle;
    triangle.numRows = std::min(numRows, kFunctions);
    for (std::size_t column = 0; column < kColumns; ++column)
        for (std::size_t row = 0; row < std::min(column + 1, triangle.numRows); ++row)
            triangle.cells[column * kColumns + row] = cells[column * numRows + row];
    return triangle;
}

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

    return triangleOf(std::span(cells).first(numRows * kColumns), numRows);
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
    return triangleOf(cells, numRows);
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
