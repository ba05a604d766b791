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

/// How often each row of the table is one of `rows`.
std::vector<std::int32_t> countRows(std::span<const std::int32_t> rows, std::int32_t numRows) {
    std::vector<std::int32_t> counts(static_cast<std::size_t>(numRows), 0);
    for (const std::int32_t row : rows) {
        if (row < 0 || row >= numRows) throw IndexOutOfRange(row, numRows);
        ++counts[static_cast<std::size_t>(row)];
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

/// What is so much less than the largest weight that it would vanish stays above 0.
double scaledWeight(double weight, int exponent) {
    if (exponent != 0) weight = std::ldexp(weight, -exponent);
    return std::max(weight, std::numeric_limits<double>::min());
}

/// What rows count and weigh, both empty for 1.
struct RowWeights {
    std::span<const std::int32_t> counts;
    std::span<const double> weights;

    std::int32_t count(std::size_t row) const { return counts.empty() ? 1 : counts[row]; }
    double weight(std::size_t row) const { return weights.empty() ? 1.0 : weights[row]; }
    bool isRecord(std::size_t row) const { return count(row) != 0 && weight(row) != 0.0; }
};

/// What a stretch of the rows has.
struct StretchOfRows {
    std::size_t numRecords = 0;
    std::size_t firstRecord = 0;
    double largestWeight = 0.0;
    bool isUnit = true;

    StretchOfRows() = default;
    StretchOfRows(const RowWeights& rows, std::size_t begin, std::size_t end) {
        for (std::size_t row = begin; row < end; ++row) {
            if (rows.count(row) < 0) throw ConstraintViolation("multiplicities", "must not be negative");
            const bool isRecord = rows.isRecord(row);
            numRecords += isRecord;
            largestWeight = std::max(largestWeight, isRecord ? rows.weight(row) : 0.0);
            isUnit = isUnit && (!isRecord || (rows.count(row) == 1 && rows.weight(row) == 1.0));
        }
    }
};

}  // namespace

PreparedRecords prepareRecords(const TrainingData& data, std::size_t numTargets, Crew& crew) {
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
    const std::vector<std::int32_t> counted =
        data.rows.empty() ? std::vector<std::int32_t>() : countRows(data.rows, data.numRows);
    const RowWeights rows{data.rows.empty() ? data.multiplicities : counted, data.weights};
    if (!rows.counts.empty()) requireLength(numRows, rows.counts.size());
    std::vector<StretchOfRows> stretches(numStretchesOf(numRows));
    forEachStretch(crew, numRows, [&](std::size_t begin, std::size_t end) {
        stretches[begin / kSizeOfStretches] = StretchOfRows(rows, begin, end);
    });
    std::size_t numRecords = 0;
    double largestWeight = 0.0;
    bool isUnit = true;
    for (StretchOfRows& stretch : stretches) {
        stretch.firstRecord = numRecords;
        numRecords += stretch.numRecords;
        largestWeight = std::max(largestWeight, stretch.largestWeight);
        isUnit = isUnit && stretch.isUnit;
    }
    if (numRecords == 0) throw TooFewNumRows(0);
    Records& records = prepared.records;
    records.size = numRecords;
    prepared.weightExponent = isUnit ? 0 : scaleExponent(largestWeight);
    if (numRecords < numRows) prepared.tableRows.resize(numRecords);
    if (!isUnit) {
        records.counts.resize(numRecords);
        records.weights.resize(numRecords);
    }
    forEachStretch(crew, numRows, [&](std::size_t begin, std::size_t end) {
        std::size_t record = stretches[begin / kSizeOfStretches].firstRecord;
        for (std::size_t row = begin; row < end; ++row) {
            if (!rows.isRecord(row)) continue;
            if (!prepared.tableRows.empty()) prepared.tableRows[record] = static_cast<std::uint32_t>(row);
            if (!isUnit) {
                records.counts[record] = static_cast<std::uint32_t>(rows.count(row));
                records.weights[record] =
                    scaledWeight(rows.weight(row), prepared.weightExponent) * rows.count(row);
            }
            ++record;
        }
    });
    return prepared;
}

}  // namespace Tessel::Engine::DT
