#include "engine/copula/correlation_matrix.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <lapacke.h>

#include "data/io/parallel.h"

namespace Tessel::Engine::Copula {

namespace {

using Matrix = std::vector<double>;

/// The sum of products, in four interleaved sums.
double product(const double* x, const double* y, std::size_t size) {
    std::array<double, 4> lanes{};
    std::size_t i = 0;
    for (; i + 4 <= size; i += 4)
        for (std::size_t lane = 0; lane < 4; ++lane) lanes[lane] += x[i + lane] * y[i + lane];
    for (; i < size; ++i) lanes[0] += x[i] * y[i];
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
}

/// The matrix without its negative eigenvalues; false when they cannot be found.
bool projectOnPositive(const Matrix& matrix, std::size_t size, Matrix& result) {
    Matrix vectors = matrix;  // its rows become the eigenvectors, as LAPACK counts by columns
    std::vector<double> values(size);
    const auto order = static_cast<lapack_int>(size);
    if (LAPACKE_dsyevd(LAPACK_COL_MAJOR, 'V', 'L', order, vectors.data(), order, values.data()) != 0)
        return false;
    const auto firstPositive = static_cast<std::size_t>(
        std::find_if(values.begin(), values.end(), [](double value) { return value > 0.0; }) -
        values.begin());
    result = matrix;  // less the part of the negative eigenvalues, which are fewer as a rule
    for (std::size_t k = 0; k < firstPositive; ++k)
        for (std::size_t i = 0; i < size; ++i) {
            const double scaled = values[k] * vectors[k * size + i];
            for (std::size_t j = 0; j <= i; ++j) result[i * size + j] -= scaled * vectors[k * size + j];
        }
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < i; ++j) result[j * size + i] = result[i * size + j];
    return true;
}

double distance(const Matrix& a, const Matrix& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum);
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

void projectOnNearest(Matrix& matrix, std::size_t size) {
    const double cube = std::pow(static_cast<double>(size), 3);
    const int maxProjections = static_cast<int>(std::clamp(2e9 / cube, 10.0, 200.0));
    Matrix positive = matrix, correction(matrix.size(), 0.0);
    for (int count = 0; count < maxProjections; ++count) {
        for (std::size_t i = 0; i < matrix.size(); ++i) matrix[i] -= correction[i];
        if (!projectOnPositive(matrix, size, positive)) break;
        for (std::size_t i = 0; i < matrix.size(); ++i) correction[i] = positive[i] - matrix[i];
        matrix = positive;
        for (std::size_t i = 0; i < size; ++i) matrix[i * size + i] = 1.0;
        if (distance(matrix, positive) <= kSmallestEigenvalue) break;
    }
    matrix = positive;
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
