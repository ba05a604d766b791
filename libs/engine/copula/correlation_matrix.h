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
/// replaced by the nearest correlation matrix, by alternating projections with Dykstra's correction (N.
/// Higham, IMA Journal of Numerical Analysis 22 (2002) 329-343), whose eigenvalues are then lifted by
/// dividing what is off the diagonal by 1 + 3e-8. Projections end when they move the matrix by less than
/// 1e-8, or after 10 to 200 of them, fewer for large matrices.
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
