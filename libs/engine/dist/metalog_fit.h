#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "engine/dist/metalog.h"

// Metalogs fitted to a sorted sample by least squares: the i-th of n values is taken as the quantile of
// (i - 1/2) / n (Hazen's plotting position).
//
// These probabilities lie symmetrically, and each basis function is even or odd in x. The values at i and
// n + 1 - i therefore count by half their sum for the even functions and by half their difference for the odd
// ones, and the problem falls into two, each of half the rows and at most 8 columns, and both far better
// conditioned than the whole. In either order of terms the even functions enter in the order 1, x L, x^2,
// x^3 L, ..., the odd ones as L, x, x^2 L, x^3, ...: one factorisation serves all numbers of terms in both.
//
// The factorisations are Householder QR (LAPACK) by blocks of rows whose triangles are merged by groups in an
// order of their own: J. Demmel, L. Grigori, M. Hoemmen & J. Langou, Communication-optimal Parallel and
// Sequential QR and LU Factorizations, SIAM J. Sci. Comput. 34 (2012) A206-A239. Threads do not change a bit
// of the result, and blocks are small enough for every BLAS to stay in one thread.

namespace Tessel::Engine::Dist {

class MetalogLeastSquares {
 public:
    /// O(n) time; 1,000,000 values take about 20 ms in one thread.
    /// @param sorted  n >= 1 finite values in ascending order, on the line of real numbers if there are
    /// bounds.
    explicit MetalogLeastSquares(std::span<const double> sorted);

    /// The coefficients of the metalog with this many terms. None when the terms depend on each other at
    /// these points (more terms than values, or more even or odd functions than there are pairs), or
    /// overflow.
    /// @param numTerms  2 to 16.
    std::optional<std::vector<double>> solve(MetalogOrder order, int numTerms) const;

 private:
    static constexpr std::size_t kFunctions = kMaxMetalogTerms / 2;
    static constexpr std::size_t kColumns = kFunctions + 1;

    /// The triangle R of the functions of one parity and, as last column, Q'z; column-major.
    struct Triangle {
        std::array<double, kColumns * kColumns> cells{};
        std::size_t numRows = 0;

        /// Coefficients of the first functions; nothing when they depend on each other.
        bool solve(std::size_t numFunctions, std::span<double> result) const;
    };
    using Triangles = std::vector<Triangle>;

    /// Rows [begin, end) of the folded problem.
    Triangle factor(std::span<const double> sorted, bool even, std::size_t begin, std::size_t end) const;
    static Triangle merge(std::span<const Triangle> triangles);

    double center_ = 0.0;  ///< Taken from the values before, given back to the first coefficient.
    Triangle even_, odd_;
};

}  // namespace Tessel::Engine::Dist
