#include <algorithm>
#include <cmath>

#include "engine/dt/feature_lists.h"
#include "engine/dt/training_data.h"

namespace Tessel::Engine::DT {

namespace {

void makeBins(SharedColumn& column) {
    std::size_t numValues = 0;
    for (const SortedRecord entry : column.rows) numValues += entry.startsValue();
    column.hasFewValues = numValues <= kMaxNumValuesInBins;
    // In each of b bins the absolute deviations of n records add up to n / b standard deviations or less,
    // while sums of random deviations come to n^(1/2): so many bins keep the bounds near what they bound.
    // Codes have 16 bits.
    const auto numRows = static_cast<double>(column.rows.size());
    const auto minSize =
        column.hasFewValues
            ? 1
            : static_cast<std::uint32_t>(std::max(0.5 * std::sqrt(numRows), numRows / 65000.0));
    column.bins.push_back({0, false});
    column.codes.resize(column.rows.size());
    const auto size = static_cast<std::uint32_t>(column.rows.size());
    for (std::uint32_t position = 0; position < size; ++position) {
        const SortedRecord entry = column.rows[position];
        if (entry.startsValue()) {
            SharedColumn::Bin& last = column.bins.back();
            if (column.bins.size() == 1 || position - last.begin >= minSize)
                column.bins.push_back({position, false});
            else
                last.hasManyValues = true;
        }
        column.codes[entry.record()] = static_cast<std::uint16_t>(column.bins.size() - 1);
    }
    column.bins.push_back({size, false});
}

}  // namespace

SharedColumn shareColumn(const TrainingFeature& feature, int numRows, bool withBins) {
    SharedColumn column;
    if (feature.isCategorical()) return column;
    column.rows = RecordSorter().sort(static_cast<std::uint32_t>(numRows), [&](std::uint32_t row) {
        return feature.numbers[feature.columnRow(row)];
    });
    if (withBins) makeBins(column);
    return column;
}

}  // namespace Tessel::Engine::DT
