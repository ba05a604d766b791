#include "engine/copula/correlation_matrix.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <lapacke.h>

#include "data/io/parallel.h"
#include "data/util/interleaved_sum.h"

namespace Tessel::Engine::Copula {

namespace {

using Matrix = std::vector<double>;

double product(const double* x, const double* y, std::size_t size) {
    return Numeric::interleavedSum<4>(size, [&](std::size_t i) { return x[i] * y[i]; });
}

/// The eigenvalues of a symmetric matrix, ascending, and the eigenvectors of one sign: that of fewer of them.
struct Spectrum {
    std::vector<double> values;
    bool hasPositive = false;
    std::size_t first = 0, count = 0;  ///< Of the eigenvalues whose vectors there are.
    Matrix vectors;                    ///< A row each.
};

/// False when LAPACK does not find them.
bool decompose(Matrix matrix, std::size_t size, Spectrum& result) {
    const auto order = static_cast<lapack_int>(size);
    std::vector<double> diagonal(size), beside(size), scales(size);
    if (LAPACKE_dsytrd(LAPACK_COL_MAJOR, 'L', order, matrix.data(), order, diagonal.data(), beside.data(),
                       scales.data()) != 0)
        return false;
    result.values = diagonal;
    std::vector<double> besideCopy = beside;
    if (LAPACKE_dsterf(order, result.values.data(), besideCopy.data()) != 0) return false;
    const auto numNegative = static_cast<std::size_t>(
        std::upper_bound(result.values.begin(), result.values.end(), 0.0) - result.values.begin());
    result.hasPositive = size - numNegative <= numNegative;
    result.first = result.hasPositive ? numNegative : 0;
    result.count = result.hasPositive ? size - numNegative : numNegative;
    result.vectors.resize(result.count * size);
    if (result.count == 0) return true;

    const auto first = static_cast<lapack_int>(result.first) + 1,
               count = static_cast<lapack_int>(result.count);
    std::vector<double> values(size);
    std::vector<lapack_int> support(2 * result.count);
    lapack_int numFound = 0, tryAccuracy = 1;
    return LAPACKE_dstemr(LAPACK_COL_MAJOR, 'V', 'I', order, diagonal.data(), beside.data(), 0.0, 0.0, first,
                          first + count - 1, &numFound, values.data(), result.vectors.data(), order, count,
                          support.data(), &tryAccuracy) == 0 &&
           numFound == count &&
           LAPACKE_dormtr(LAPACK_COL_MAJOR, 'L', 'L', 'N', order, count, matrix.data(), order, scales.data(),
                          result.vectors.data(), order) == 0;
}

/// Adds the sum of weight(eigenvalue) vector vector' over the vectors there are to a symmetric matrix.
template <class Weight>
void addProducts(const Spectrum& spectrum, std::size_t size, Weight&& weight, Matrix& result) {
    constexpr std::size_t kSumsPerCell = 32;  // that cost as much as one of what `forEachIndex` counts
    IO::forEachIndex(size, size * size * spectrum.count / kSumsPerCell, [&](std::size_t index) {
        const std::size_t i = size - 1 - index;  // long rows first
        for (std::size_t k = 0; k < spectrum.count; ++k) {
            const double* const vector = spectrum.vectors.data() + k * size;
            const double scaled = weight(spectrum.values[spectrum.first + k]) * vector[i];
            for (std::size_t j = 0; j <= i; ++j) result[i * size + j] += scaled * vector[j];
        }
    });
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < i; ++j) result[j * size + i] = result[i * size + j];
}

/// The matrix without its negative eigenvalues.
Matrix positivePart(const Matrix& matrix, std::size_t size, const Spectrum& spectrum) {
    Matrix result = spectrum.hasPositive ? Matrix(matrix.size(), 0.0) : matrix;
    addProducts(
        spectrum, size, [](double value) { return std::abs(value); }, result);
    return result;
}

/// What a change of the diagonal makes of the diagonal of the positive part: Qi & Sun's derivative, with the
/// mean of the eigenvalues that have no vectors in the place of each, which leaves sums over those that have.
Matrix slopeOfDiagonal(std::size_t size, const Spectrum& spectrum) {
    double others = 0.0;
    for (std::size_t k = 0; k < size; ++k)
        if (k < spectrum.first || k >= spectrum.first + spectrum.count)
            others += std::abs(spectrum.values[k]);
    others /= static_cast<double>(size - spectrum.count);
    Matrix projector(size * size, 0.0), weighted(size * size, 0.0);
    addProducts(
        spectrum, size, [](double) { return 1.0; }, projector);
    addProducts(
        spectrum, size, [others](double value) { return std::abs(value) / (std::abs(value) + others); },
        weighted);
    const double sign = spectrum.hasPositive ? 1.0 : -1.0;
    for (std::size_t i = 0; i < projector.size(); ++i)
        projector[i] = sign * projector[i] * (projector[i] - 2.0 * weighted[i]);
    for (std::size_t i = 0; i < projector.size(); i += size + 1)
        projector[i] += (spectrum.hasPositive ? 0.0 : 1.0) + sign * 2.0 * weighted[i];
    return projector;
}

/// Nearly the x with matrix x = b, for a positive definite matrix: conjugate gradients, preconditioned by the
/// diagonal.
std::vector<double> solve(const Matrix& matrix, std::vector<double> b) {
    constexpr int kMaxSteps = 100;
    constexpr double kTolerance = 1e-3, kSmallestDiagonal = 1e-12;
    const std::size_t size = b.size();
    std::vector<double> x(size, 0.0), scaled(size), direction(size, 0.0), image(size);
    const double goal = kTolerance * kTolerance * product(b.data(), b.data(), size);
    double previous = 1.0;
    for (int count = 0; count < kMaxSteps && product(b.data(), b.data(), size) > goal; ++count) {
        for (std::size_t i = 0; i < size; ++i)
            scaled[i] = b[i] / std::max(matrix[i * (size + 1)], kSmallestDiagonal);
        const double current = product(b.data(), scaled.data(), size);
        for (std::size_t i = 0; i < size; ++i) direction[i] = scaled[i] + current / previous * direction[i];
        previous = current;
        for (std::size_t i = 0; i < size; ++i)
            image[i] = product(matrix.data() + i * size, direction.data(), size);
        const double curvature = product(direction.data(), image.data(), size);
        if (!(curvature > 0.0)) break;
        for (std::size_t i = 0; i < size; ++i) {
            x[i] += current / curvature * direction[i];
            b[i] -= current / curvature * image[i];
        }
    }
    return x;
}

/// Scales rows and columns so that the diagonal is 1.
void scaleToUnitDiagonal(Matrix& matrix, std::size_t size) {
    std::vector<double> scales(size);
    for (std::size_t i = 0; i < size; ++i) scales[i] = 1.0 / std::sqrt(matrix[i * size + i]);
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < size; ++j)
            matrix[i * size + j] =
                i == j ? 1.0 : std::clamp(matrix[i * size + j] * (scales[i] * scales[j]), -1.0, 1.0);
}

/// Minimises the convex function |positive part of matrix + Diag(shifts)|^2 / 2 - sum of shifts: its gradient
/// is the diagonal of the positive part less 1, and where that is 0 the positive part is the nearest matrix.
void projectOnNearest(Matrix& matrix, std::size_t size) {
    constexpr int kMaxDecompositions = 40;
    constexpr double kRounding = 1e-11;
    Matrix shifted = matrix, positive = matrix;
    std::vector<double> shifts(size, 0.0), step(size, 0.0), error(size, 0.0);
    double best = std::numeric_limits<double>::infinity();
    Spectrum spectrum;
    for (int count = 0; count < kMaxDecompositions; ++count) {
        for (std::size_t i = 0; i < size; ++i) shifted[i * (size + 1)] = 1.0 + shifts[i] + step[i];
        if (!decompose(shifted, size, spectrum)) break;
        double value = 0.0;
        for (const double eigenvalue : spectrum.values) value += 0.5 * std::pow(std::max(eigenvalue, 0.0), 2);
        for (std::size_t i = 0; i < size; ++i) value -= shifts[i] + step[i];
        if (value > best + kRounding * std::abs(best)) {
            for (double& change : step) change *= 0.5;
            continue;
        }
        best = value;
        for (std::size_t i = 0; i < size; ++i) shifts[i] += step[i];
        positive = positivePart(shifted, size, spectrum);
        for (std::size_t i = 0; i < size; ++i) error[i] = 1.0 - positive[i * (size + 1)];
        if (std::sqrt(product(error.data(), error.data(), size)) <= kSmallestEigenvalue) break;
        step = solve(slopeOfDiagonal(size, spectrum), error);
    }
    matrix = std::move(positive);
    scaleToUnitDiagonal(matrix, size);
}

}  // namespace

std::vector<double> choleskyFactor(std::span<const double> matrix, std::size_t size, double ridge) {
    Matrix factor(size * size, 0.0);
    for (std::size_t i = 0; i < size; ++i) {
        double* const row = factor.data() + i * size;
        for (std::size_t j = 0; j < i; ++j) {
            const double* const other = factor.data() + j * size;
            row[j] = (matrix[i * size + j] - product(row, other, j)) / other[j];
        }
        const double pivot = matrix[i * size + i] + ridge - product(row, row, i);
        if (!(pivot > 0.0)) return {};
        row[i] = std::sqrt(pivot);
    }
    return factor;
}

bool isCorrelationMatrix(std::span<const double> matrix, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        if (matrix[i * size + i] != 1.0) return false;
        for (std::size_t j = 0; j < i; ++j) {
            const double correlation = matrix[i * size + j];
            if (!(std::abs(correlation) <= 1.0) || matrix[j * size + i] != correlation) return false;
        }
    }
    return true;
}

bool repairCorrelation(std::vector<double>& matrix, std::size_t size) {
    if (!choleskyFactor(matrix, size, -kSmallestEigenvalue).empty()) return false;
    if (choleskyFactor(matrix, size, kSmallestEigenvalue).empty()) projectOnNearest(matrix, size);
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < size; ++j)
            if (i != j) matrix[i * size + j] /= 1.0 + 3.0 * kSmallestEigenvalue;
    return true;
}

std::vector<double> meanProducts(const std::vector<std::vector<double>>& rows) {
    constexpr std::size_t kChunk = 2048;  // two rows of it stay in the nearest cache
    const std::size_t size = rows.size(), length = rows.front().size();
    Matrix sums(size * size, 0.0);
    IO::forEachIndex(size, size * size * length, [&](std::size_t index) {
        const std::size_t i = size - 1 - index;  // long rows first
        for (std::size_t begin = 0; begin < length; begin += kChunk)
            for (std::size_t j = 0; j <= i; ++j)
                sums[i * size + j] +=
                    product(rows[i].data() + begin, rows[j].data() + begin, std::min(kChunk, length - begin));
    });
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j <= i; ++j)
            sums[i * size + j] = sums[j * size + i] = sums[i * size + j] / static_cast<double>(length);
    return sums;
}

std::vector<double> correlationOfCentred(const std::vector<std::vector<double>>& rows) {
    Matrix matrix = meanProducts(rows);
    scaleToUnitDiagonal(matrix, rows.size());
    return matrix;
}

void multiplyLower(std::span<const double> factor, std::size_t size, std::span<double> numbers) {
    for (std::size_t i = size; i-- > 0;) {
        double* const result = numbers.data() + i * kBlock;
        const double* const row = factor.data() + i * size;
        for (std::size_t k = 0; k < kBlock; ++k) result[k] *= row[i];
        for (std::size_t j = 0; j < i; ++j) {
            const double* const other = numbers.data() + j * kBlock;
            for (std::size_t k = 0; k < kBlock; ++k) result[k] += row[j] * other[k];
        }
    }
}

void solveLower(std::span<const double> factor, std::size_t size, std::span<double> numbers) {
    for (std::size_t i = 0; i < size; ++i) {
        double* const result = numbers.data() + i * kBlock;
        const double* const row = factor.data() + i * size;
        for (std::size_t j = 0; j < i; ++j) {
            const double* const other = numbers.data() + j * kBlock;
            for (std::size_t k = 0; k < kBlock; ++k) result[k] -= row[j] * other[k];
        }
        for (std::size_t k = 0; k < kBlock; ++k) result[k] /= row[i];
    }
}

}  // namespace Tessel::Engine::Copula
