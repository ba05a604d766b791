#include <algorithm>
#include <cmath>
#include <limits>

#include <tessel/data/errors.h>

#include "engine/dt/growth.h"

namespace Tessel::Engine::DT {

namespace {

void requireLength(std::size_t expected, std::size_t actual) {
    if (expected != actual)
        throw NumElementsMismatch(static_cast<std::int64_t>(expected), static_cast<std::int64_t>(actual));
}

/// How often each row of the table is a record.
std::vector<std::uint32_t> countRecords(const TrainingData& data) {
    const auto numRows = static_cast<std::size_t>(data.numRows);
    if (!data.rows.empty()) {
        std::vector<std::uint32_t> counts(numRows, 0);
        for (const std::int32_t row : data.rows) {
            if (row < 0 || row >= data.numRows) throw IndexOutOfRange(row, data.numRows);
            ++counts[static_cast<std::size_t>(row)];
        }
        return counts;
    }
    if (data.multiplicities.empty()) return std::vector<std::uint32_t>(numRows, 1);
    requireLength(numRows, data.multiplicities.size());
    std::vector<std::uint32_t> counts;
    counts.reserve(numRows);
    for (const std::int32_t count : data.multiplicities) {
        if (count < 0) throw ConstraintViolation("multiplicities", "must not be negative");
        counts.push_back(static_cast<std::uint32_t>(count));
    }
    return counts;
}

void checkFeatures(const TrainingData& data) {
    const auto numRows = static_cast<std::size_t>(data.numRows);
    for (const TrainingFeature& feature : data.features) {
        if (!feature.isCategorical()) {
            requireLength(numRows, feature.selection ? feature.selection->size() : feature.numbers.size());
            continue;
        }
        requireLength(numRows, feature.codes.size());
        for (const std::int32_t code : feature.codes)
            if (code < -1 || code >= feature.numCategories)
                throw IndexOutOfRange(code, feature.numCategories);
    }
}

}  // namespace

PreparedRecords prepareRecords(const TrainingData& data, std::size_t numTargets) {
    if (data.features.empty()) throw TooFewNumColumns(0);
    if (data.numRows <= 0) throw TooFewNumRows(0);
    const auto numRows = static_cast<std::size_t>(data.numRows);
    requireLength(numRows, numTargets);
    checkFeatures(data);
    if (!data.weights.empty()) requireLength(numRows, data.weights.size());
    for (const double weight : data.weights)
        if (!(weight >= 0.0) || std::isinf(weight))
            throw ConstraintViolation("weights", "must be finite and not negative");

    PreparedRecords prepared;
    if (data.rows.empty() && data.multiplicities.empty() && data.weights.empty()) {
        prepared.records.size = numRows;
        return prepared;
    }
    const std::vector<std::uint32_t> counts = countRecords(data);
    bool isUnit = true;
    std::size_t numRecords = 0;
    double largestWeight = 0.0;
    const auto weightOf = [&](std::uint32_t row) { return data.weights.empty() ? 1.0 : data.weights[row]; };
    for (std::uint32_t row = 0; row < counts.size(); ++row) {
        if (counts[row] == 0 || weightOf(row) == 0.0) continue;
        ++numRecords;
        largestWeight = std::max(largestWeight, weightOf(row));
        isUnit = isUnit && counts[row] == 1 && weightOf(row) == 1.0;
    }
    if (numRecords == 0) throw TooFewNumRows(0);
    if (numRecords < numRows) {
        prepared.tableRows.reserve(numRecords);
        for (std::uint32_t row = 0; row < counts.size(); ++row)
            if (counts[row] != 0 && weightOf(row) != 0.0) prepared.tableRows.push_back(row);
    }
    Records& records = prepared.records;
    records.size = numRecords;
    if (isUnit) return prepared;
    prepared.weightExponent = scaleExponent(largestWeight);
    records.counts.reserve(records.size);
    records.weights.reserve(records.size);
    for (std::uint32_t record = 0; record < records.size; ++record) {
        const std::uint32_t row = prepared.rowOf(record);
        records.counts.push_back(counts[row]);
        // What is so much less than the largest weight that it would vanish stays above 0.
        const double weight = std::ldexp(weightOf(row), -prepared.weightExponent);
        records.weights.push_back(std::max(weight, std::numeric_limits<double>::min()) * counts[row]);
    }
    return prepared;
}

}  // namespace Tessel::Engine::DT
