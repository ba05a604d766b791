#pragma once

#include <cstddef>
#include <span>
#include <vector>

// Correlation matrices, row-major, of `size` rows and columns.

namespace Tessel::Engine::Copula {

/// What counts as singular: an eigenvalue below it.
inline constexpr double kSmallestEigenvalue = 1e-8;

/// The lower triangular factor L of matrix + ridge * I = L L', zeros above the diagonal. Written here rather
/// than called, so that its last digits do not depend on the library that is installed and its threads.
/// O(size^3).
/// @returns an empty matrix when a pivot is not positive.
std::vector<double> choleskyFactor(std::span<const double> matrix, std::size_t size, double ridge = 0.0);

/// Whether it is symmetric with a diagonal of ones and nothing outside [-1, 1]. @pre size^2 numbers
bool isCorrelationMatrix(std::span<const double> matrix, std::size_t size);

/// Makes sure that no eigenvalue is below `kSmallestEigenvalue`, up to rounding. A matrix that has one is
/// replaced by the nearest correlation matrix, whose eigenvalues are then lifted by dividing what is off the
/// diagonal by 1 + 3e-8. The nearest matrix comes from Newton's method on its dual (H. Qi & D. Sun, SIAM
/// Journal on Matrix Analysis and Applications 28 (2006) 360-385; R. Borsdorf & N. Higham, IMA Journal of
/// Numerical Analysis 30 (2010) 94-107), which ends when the diagonal is 1 but for 1e-8, or after 40
/// decompositions.
/// @returns whether the matrix was replaced.
bool repairCorrelation(std::vector<double>& matrix, std::size_t size);

/// The correlations of rows whose mean is 0; 1 on the diagonal.
std::vector<double> correlationOfCentred(const std::vector<std::vector<double>>& rows);

/// The sums of products of all pairs of rows, divided by their length. O(rows^2 * length).
std::vector<double> meanProducts(const std::vector<std::vector<double>>& rows);

// Rows of a block of observations: numbers[variable * kBlock + observation].
inline constexpr std::size_t kBlock = 256;

/// Replaces the numbers of each observation by L times them.
void multiplyLower(std::span<const double> factor, std::size_t size, std::span<double> numbers);
/// Replaces the numbers of each observation by the solution of L y = numbers.
void solveLower(std::span<const double> factor, std::size_t size, std::span<double> numbers);

}  // namespace Tessel::Engine::Copula
