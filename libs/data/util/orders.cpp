#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include <tessel/data/util/sets.h>

#include "data/column_access.h"

namespace Tessel::Util {
namespace {

// ---- sorting

struct KeyedPosition {
    std::uint64_t key;
    int position;
};

/// Unsigned keys in the order of the numbers, with one key for 0 and -0, NaN behind all others.
std::uint64_t sortKey(double value, SortDirection direction) {
    if (std::isnan(value)) return std::numeric_limits<std::uint64_t>::max();
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);
    const std::uint64_t ascending = bits & kSign ? ~bits : bits | kSign;
    return direction == SortDirection::ASCENDING ? ascending : ~ascending;
}

/// Radix sort from the lowest digit, which is stable; digits that all keys share are skipped.
void radixSort(std::vector<KeyedPosition>& entries) {
    constexpr int kDigitBits = 11;
    constexpr int kNumDigits = (64 + kDigitBits - 1) / kDigitBits;
    constexpr std::size_t kNumValues = std::size_t{1} << kDigitBits;
    const auto digitOf = [](std::uint64_t key, int digit) {
        return static_cast<std::size_t>(key >> (digit * kDigitBits)) & (kNumValues - 1);
    };
    std::vector<std::array<std::size_t, kNumValues>> counts(kNumDigits);
    for (const KeyedPosition& entry : entries)
        for (int digit = 0; digit < kNumDigits; ++digit)
            ++counts[static_cast<std::size_t>(digit)][digitOf(entry.key, digit)];

    std::vector<KeyedPosition> sorted(entries.size());
    for (int digit = 0; digit < kNumDigits; ++digit) {
        auto& starts = counts[static_cast<std::size_t>(digit)];
        if (starts[digitOf(entries.front().key, digit)] == entries.size()) continue;
        std::size_t start = 0;
        for (std::size_t& count : starts) start += std::exchange(count, start);
        for (const KeyedPosition& entry : entries) sorted[starts[digitOf(entry.key, digit)]++] = entry;
        entries.swap(sorted);
    }
}

// ---- largest numbers of rows

/// Takes the cells of rows column by column in ascending order.
class RowMaxima {
 public:
    explicit RowMaxima(int numRows)
        : largest_(static_cast<std::size_t>(numRows)), columns_(static_cast<std::size_t>(numRows), -1) {}

    void see(std::size_t row, int column, double value) {
        if (std::isnan(value) || (columns_[row] >= 0 && value <= largest_[row])) return;
        largest_[row] = value;
        columns_[row] = column;
    }
    IntVector columns() && { return std::move(columns_); }

 private:
    std::vector<double> largest_;
    IntVector columns_;
};

}  // namespace

IntVector argSort(const Vector& values, SortDirection direction) {
    constexpr std::size_t kWorthCounting = 2000;  // below, setting up the counts costs more than comparing
    std::vector<KeyedPosition> entries(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        entries[i] = {sortKey(values[i], direction), static_cast<int>(i)};
    if (entries.size() >= kWorthCounting) {
        radixSort(entries);
    } else {
        std::sort(entries.begin(), entries.end(), [](const KeyedPosition& a, const KeyedPosition& b) {
            return a.key != b.key ? a.key < b.key : a.position < b.position;
        });
    }
    IntVector positions(values.size());
    for (std::size_t i = 0; i < entries.size(); ++i) positions[i] = entries[i].position;
    return positions;
}

IntVector indexesOfRowMax(const Matrix& matrix) {
    RowMaxima maxima(matrix.getNumRows());
    const auto numRows = static_cast<std::size_t>(matrix.getNumRows());
    const double* cell = matrix.data();  // in memory order, in which the columns of a row ascend either way
    if (matrix.getMatrixOrder() == MatrixOrderType::ROW_MAJOR) {
        for (std::size_t row = 0; row < numRows; ++row)
            for (int column = 0; column < matrix.getNumCols(); ++column) maxima.see(row, column, *cell++);
    } else {
        for (int column = 0; column < matrix.getNumCols(); ++column)
            for (std::size_t row = 0; row < numRows; ++row) maxima.see(row, column, *cell++);
    }
    return std::move(maxima).columns();
}

IntVector indexesOfRowMax(const DataFrame& table) {
    RowMaxima maxima(table.getNumRows());
    for (int column = 0; column < table.getNumCols(); ++column) {
        if (ColumnAccess::isIndex(table, column)) continue;
        const DataFrameColumn cells = table(all, column);
        const std::span<const double> values = cells.values();
        for (std::size_t row = 0; row < values.size(); ++row) maxima.see(row, column, values[row]);
    }
    return std::move(maxima).columns();
}

}  // namespace Tessel::Util
