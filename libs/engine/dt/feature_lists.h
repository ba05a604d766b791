#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/dt/growth.h"
#include "engine/dt/split_search.h"
#include "engine/dt/training_data.h"

namespace Tessel::Engine::DT {

/// Up to this many values a histogram is cheaper than a sorted list, whatever the size of the node.
inline constexpr std::size_t kMaxNumValuesInBins = 256;

/// The cells of a feature by record, in the form that growth reads.
struct FeatureLists {
    enum class Form { SORTED, NUMBERS, CATEGORIES, SHARED };

    Form form = Form::SORTED;          ///< SHARED: there are no lists, see BinSearch
    std::vector<SortedRecord> sorted;  ///< SORTED: the records of each node are a range, sorted by value
    std::vector<std::uint32_t> codes;  ///< else by record, `numCodes` when missing
    std::uint32_t numCodes = 0;
    std::vector<double> values;  ///< NUMBERS: by code, of those that a record has

    std::size_t numBins() const { return codes.empty() ? 0 : std::size_t{numCodes} + 1; }
    BinnedFeature binned(const double* bins = nullptr) const { return {codes, numCodes, bins}; }
};

/// Lists by sorting the records. @param keepRanks  whether a numeric column is to keep the ranks made of it.
FeatureLists makeLists(const TrainingFeature& feature, const PreparedRecords& prepared, bool keepRanks);

/// The same lists out of the sorted rows of the whole table.
/// @param recordOf  by row its record, `kNoRecord` for none; empty when each row is one record.
/// @param memory    for the sorted list; what stands in it means nothing.
FeatureLists takeLists(const TrainingFeature& feature, const PreparedRecords& prepared,
                       const SharedColumn& column, const std::vector<std::uint32_t>& recordOf,
                       std::vector<SortedRecord> memory);
inline constexpr std::uint32_t kNoRecord = ~std::uint32_t{0};

/// The lists of some nodes, where each row is one record. Entries of other records mean nothing.
/// @param markOf  by record the mark of its node.
/// @param begins  by mark where the node begins in the list; `kNoRecord` for a node without a list.
/// @param memory  as above.
FeatureLists takeLists(const TrainingFeature& feature, const PreparedRecords& prepared,
                       const SharedColumn& column, const std::vector<std::uint8_t>& markOf,
                       const std::vector<std::uint32_t>& begins, std::vector<SortedRecord> memory);

/// Moves the entries of a range that go left before the others; both keep their order, and the marks of their
/// values are set anew.
/// @param numLeft             how many go left
/// @param keepLeft,keepRight  whether the entries of that side will be read again.
void part(std::span<SortedRecord> range, std::size_t numLeft, const std::vector<std::uint8_t>& goesLeft,
          bool keepLeft, bool keepRight, std::vector<SortedRecord>& scratch);

}  // namespace Tessel::Engine::DT
