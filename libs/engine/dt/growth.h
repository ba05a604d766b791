#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/dt/records.h"
#include "engine/dt/training_data.h"
#include "engine/dt/tree.h"

// Growing a tree by exact best binary splits (Breiman, Friedman, Olshen & Stone, Classification and
// Regression Trees, 1984): decrease of Gini's index, or of the sum of squares.
//
// Every feature of many values keeps its records in a list sorted by value, made once; a split parts each
// list in place and in order, so that searching a node visits each of its values once. Features of few values
// and categories add up their codes instead; classes of whole weights only those of the smaller child of a
// split, and the larger has what they leave of its parent's sums, to the last bit. (Targets count by their
// deviations from the mean of the node, and fractions are no exact sums: neither can be subtracted.)
//
// Where many regression trees share the columns of one table, their large nodes, which are those of the first
// levels, are searched by bins of the columns (see BinSearch), and lists are taken of what is left below.
//
// O(n p) a level of the tree, and 4 bytes a cell for the lists or the codes: a fit of numbers needs half as
// much memory as the table, and 15 bytes a record besides its response and up to 4 by each thread. Where
// columns keep their ranks for more trees, that is 4 bytes a cell more.
//
// The tree does not depend on the number of threads: the split of a node depends on its records alone, and
// sums run in the order of the records or of their values, or are exact.

namespace Tessel::Engine::DT {

/// The records of a fit and the row of the table that each came from.
struct PreparedRecords {
    PreparedRecords() = default;
    PreparedRecords(PreparedRecords&&) = default;  // no copies: the records may show `targets`
    PreparedRecords& operator=(PreparedRecords&&) = default;

    Records records;
    std::vector<double> targets;           ///< of the records, where they are not those that were given
    int weightExponent = 0;                ///< of the power of two that weights were divided by
    std::vector<std::uint32_t> tableRows;  ///< by record, ascending; empty when each row is one record

    std::uint32_t rowOf(std::uint32_t record) const { return tableRows.empty() ? record : tableRows[record]; }
};

/// Drops what is no record, folds repetitions and weights and scales the weights where need be. The response
/// is still to be filled.
/// @throws NumElementsMismatch, ConstraintViolation for bad weights or rows; TooFewNumRows without records.
PreparedRecords prepareRecords(const TrainingData& data, std::size_t numTargets, Crew& crew);

/// @pre the response of `prepared` is filled, codes of the features are in range.
Tree grow(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits, Crew& crew);

}  // namespace Tessel::Engine::DT
