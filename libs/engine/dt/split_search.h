#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "data/sorted_records.h"
#include "engine/dt/members.h"
#include "engine/dt/records.h"

// The search for the best split of a node by one feature.

namespace Tessel::Engine::DT {

/// Above this number of categories present in a node the subsets of three and more classes are not all tried.
inline constexpr std::size_t kMaxCategoriesTriedExhaustively = 10;

/// A split found for one feature. Missing records are on the left side.
struct Candidate {
    double score = -1.0;  ///< -1: there is no split
    std::int32_t feature = -1;
    // Numbers: the greatest value on the left side and the least on the right one, as codes or, of a sorted
    // list, as positions of records in the node.
    std::uint32_t lower = 0, upper = 0;
    std::vector<std::int32_t> leftCategories;

    bool exists() const { return score >= 0.0; }
};

/// Working memory of one thread; `bins` and `present` are all zero between uses.
struct Scratch {
    std::vector<SortedRecord> moved;
    std::vector<double> bins;
    std::vector<std::uint64_t> present;  // a bit per code met
    std::vector<double> classSums;
    std::vector<std::int32_t> categories;
    std::vector<double> order;
    std::vector<Stretch> stretches;
};

/// A feature whose records are found by their code rather than by a sorted list.
struct BinnedFeature {
    std::span<const std::uint32_t> codes;  ///< by record; `numCodes` when missing
    std::uint32_t numCodes = 0;
    /// The histogram of the node where it is known: by code a bin of `Records::numSums()` numbers, the last
    /// for missing cells. Null: it is made from the members of the node.
    const double* bins = nullptr;
};

/// Adds the members of a node to the bins of a feature. Classification only: bins of other kinds depend on
/// the mean of the node.
void addToBins(const Records& records, std::span<const std::uint32_t> members, const BinnedFeature& feature,
               double* bins);

class SplitSearch {
 public:
    static std::unique_ptr<SplitSearch> make(const Records& records, std::int64_t minNumRecordsInLeaves);
    virtual ~SplitSearch() = default;

    virtual Candidate searchSorted(std::span<const SortedRecord> list, const Totals& totals,
                                   Scratch& scratch) const = 0;
    virtual Candidate searchNumbers(std::span<const std::uint32_t> members, const BinnedFeature& feature,
                                    const Totals& totals, Scratch& scratch) const = 0;
    virtual Candidate searchCategories(std::span<const std::uint32_t> members, const BinnedFeature& feature,
                                       const Totals& totals, Scratch& scratch) const = 0;
};

/// The first principal component of the class proportions of categories, as an order of the categories
/// (Coppersmith, Hong & Hosking, Partitioning nominal attributes in decision trees, Data Mining and Knowledge
/// Discovery 3, 1999).
/// @param bins    by category: count of records, then the weights of the classes.
/// @param scores  receives the coordinate of each listed category on the component.
void principalOrder(const double* bins, std::size_t numClasses, std::span<const std::int32_t> categories,
                    std::vector<double>& scores);

}  // namespace Tessel::Engine::DT
