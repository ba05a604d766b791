#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "data/column_cells.h"
#include "data/sorted_records.h"
#include "engine/crew.h"
#include "engine/parallel.h"

namespace Tessel::Engine::DT {

class GrowthMemories;

/// Trees of fewer cells are not worth starting threads.
inline constexpr std::size_t kMinCellsOfThreads = 20000;

/// A feature to train on: numbers with their ranks, or categories by their codes.
struct TrainingFeature {
    /// A numeric feature; `selection` lists the rows of the column that make the table, null for all.
    static TrainingFeature numeric(const ColumnCells& column, const RowIndexes* selection = nullptr) {
        return {.column = &column, .numbers = column.numbers(), .selection = selection};
    }
    /// A categorical feature: codes 0 .. numCategories - 1, or -1 when missing.
    static TrainingFeature categorical(std::span<const std::int32_t> codes, std::int32_t numCategories) {
        return {.codes = codes, .numCategories = numCategories};
    }

    bool isCategorical() const { return column == nullptr; }
    /// Where the column has a row of the table.
    std::size_t columnRow(std::uint32_t row) const {
        return selection ? static_cast<std::size_t>((*selection)[row]) : row;
    }

    const ColumnCells* column = nullptr;
    std::span<const double> numbers = {};
    const RowIndexes* selection = nullptr;
    std::span<const std::int32_t> codes = {};
    std::int32_t numCategories = 0;
};

/// What the fits of many trees share of a numeric feature; all empty for categories.
struct SharedColumn {
    struct Bin {
        std::uint32_t begin = 0;     ///< in `rows`
        bool hasManyValues = false;  ///< more than one
    };

    std::vector<SortedRecord> rows;  ///< of the table, by number
    // Bins of neighbouring values, the first for missing cells, and the end of the last. Empty unless they
    // were asked for.
    std::vector<Bin> bins;
    std::vector<std::uint16_t> codes;  ///< the bin of each row
    bool hasFewValues = false;         ///< each has a bin of its own

    std::size_t numBins() const { return bins.empty() ? 0 : bins.size() - 1; }
};

/// Takes 4 bytes a row, with bins 6.
SharedColumn shareColumn(const TrainingFeature& feature, int numRows, bool withBins);

/// What a tree is grown on. Everything is borrowed, nothing is copied, so that many trees share one table.
struct TrainingData {
    std::vector<TrainingFeature> features;
    int numRows = 0;  ///< rows of the table

    /// The records: rows of the table, in any order and as often as wanted; empty for each row once.
    std::span<const std::int32_t> rows = {};
    /// How often each row of the table is a record; empty for once. Not together with `rows`.
    std::span<const std::int32_t> multiplicities = {};
    /// One weight >= 0 a row of the table, empty for 1. A row of weight 0 is no record.
    std::span<const double> weights = {};

    /// Per feature the rows of the whole table as `shareColumn` gives them; the lists of the records are then
    /// taken out of these. Empty: each fit makes its own lists.
    std::span<const SharedColumn> sharedColumns = {};

    /// Whether columns that have no ranks yet are ranked and keep them, 4 bytes a cell, for the trees to
    /// come. Else each fit sorts such columns for itself.
    bool keepRanks = true;

    /// Receives, by row, what the tree answers in regression: known of the records without scoring them.
    /// Empty, or as long as the table and each row a record.
    std::span<double> fitted = {};

    /// Memory of the trees before this one, or null.
    GrowthMemories* memories = nullptr;
    /// Threads that fits share which follow one another; null: the fit starts its own.
    Crew* crew = nullptr;

    /// Told what share of the records have found their leaf.
    Watch watch = {};
};

/// The threads of a fit: those that it was given, or its own where there are cells enough to start them.
struct FitCrew {
    explicit FitCrew(const TrainingData& data)
        : own(data.crew || data.features.size() * static_cast<std::size_t>(std::max(0, data.numRows)) <
                               kMinCellsOfThreads
                  ? 1
                  : numThreads()),
          crew(data.crew ? *data.crew : own) {}

    Crew own;
    Crew& crew;
};

/// The cells of a feature of records to score: numbers (NaN = missing), or codes (-1 = missing; any other
/// code that training did not have is an unseen category).
struct Cells {
    std::span<const double> numbers = {};
    std::span<const std::int32_t> codes = {};
};

}  // namespace Tessel::Engine::DT
