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

/// What rows count and weigh; one of both is empty for 1.
struct RowWeights {
    std::span<const std::int32_t> counts;
    std::span<const double> weights;

    /// Calls look(countOf, weightOf) with functions of a row, made for what there is.
    template <class Look>
    void visit(Look&& look) const {
        const auto countOf = [numbers = counts.data()](std::size_t row) { return numbers[row]; };
        const auto weightOf = [numbers = weights.data()](std::size_t row) { return numbers[row]; };
        if (weights.empty()) return look(countOf, [](std::size_t) { return 1.0; });
        if (counts.empty()) return look([](std::size_t) { return std::int32_t{1}; }, weightOf);
        look(countOf, weightOf);
    }
};

/// What a stretch of the rows has.
struct StretchOfRows {
    std::size_t numRecords = 0, firstRecord = 0;
    std::size_t numNegative = 0, numNoUnits = 0;
    double largestWeight = 0.0;

    StretchOfRows() = default;
    StretchOfRows(const RowWeights& rows, std::size_t begin, std::size_t end) {
        rows.visit([&](auto countOf, auto weightOf) {
            std::int32_t records = 0, negative = 0, noUnits = 0;
            for (std::size_t row = begin; row < end; ++row) {
                const std::int32_t count = countOf(row);
                const double weight = weightOf(row);
                const bool isRecord = count != 0 && weight != 0.0;
                records += isRecord ? 1 : 0;
                negative += count < 0 ? 1 : 0;
                noUnits += isRecord && (count != 1 || weight != 1.0) ? 1 : 0;
                largestWeight = isRecord && weight > largestWeight ? weight : largestWeight;
            }
            numRecords = static_cast<std::size_t>(records);
            numNegative = static_cast<std::size_t>(negative);
            numNoUnits = static_cast<std::size_t>(noUnits);
        });
    }
};

/// Writes the records of a stretch. Without a branch: which row is a record is no habit that a processor
/// could learn.
void writeRecords(const RowWeights& rows, std::size_t begin, const StretchOfRows& stretch,
                  PreparedRecords& prepared) {
    rows.visit([&](auto countOf, auto weightOf) {
        const std::size_t first = stretch.firstRecord, end = first + stretch.numRecords;
        if (!prepared.tableRows.empty()) {
            std::uint32_t* const tableRows = prepared.tableRows.data();
            std::size_t row = begin;
            for (std::size_t record = first; record < end; ++row) {
                tableRows[record] = static_cast<std::uint32_t>(row);
                record += countOf(row) != 0 && weightOf(row) != 0.0 ? 1u : 0u;
            }
        }
        if (prepared.records.isUnit()) return;
        std::uint32_t* const counts = prepared.records.counts.data();
        double* const weights = prepared.records.weights.data();
        for (std::size_t record = first; record < end; ++record) {
            const std::size_t row = prepared.rowOf(static_cast<std::uint32_t>(record));
            counts[record] = static_cast<std::uint32_t>(countOf(row));
            weights[record] = scaledWeight(weightOf(row), prepared.weightExponent) * countOf(row);
        }
    });
}

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
    StretchOfRows all;
    for (StretchOfRows& stretch : stretches) {
        stretch.firstRecord = all.numRecords;
        all.numRecords += stretch.numRecords;
        all.numNegative += stretch.numNegative;
        all.numNoUnits += stretch.numNoUnits;
        all.largestWeight = std::max(all.largestWeight, stretch.largestWeight);
    }
    if (all.numNegative > 0) throw ConstraintViolation("multiplicities", "must not be negative");
    if (all.numRecords == 0) throw TooFewNumRows(0);
    Records& records = prepared.records;
    records.size = all.numRecords;
    if (records.size < numRows) prepared.tableRows.resize(records.size);
    if (all.numNoUnits > 0) {
        prepared.weightExponent = scaleExponent(all.largestWeight);
        records.counts.resize(records.size);
        records.weights.resize(records.size);
    }
    forEachStretch(crew, numRows, [&](std::size_t begin, std::size_t /*end*/) {
        writeRecords(rows, begin, stretches[begin / kSizeOfStretches], prepared);
    });
    return prepared;
}

}  // namespace Tessel::Engine::DT
