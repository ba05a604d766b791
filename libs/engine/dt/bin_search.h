#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "engine/crew.h"
#include "engine/dt/split_search.h"
#include "engine/dt/training_data.h"

// The best split of a large node by sums over bins, where many regression trees share one table: the best of
// all splits, of targets that are rounded to 2^-29 of their deviation.
//
// The rows stand in bins of neighbouring values. The sums of a node by bin rate its splits between bins, and
// bound those inside a bin: on the way through it the sum of the deviations rises by no more than the
// positive ones and falls by no more than the negative ones. Only the few bins whose bound reaches the best
// split that is known are walked through value by value (after Alsabti, Ranka & Singh, CLOUDS: a decision
// tree classifier for large datasets, KDD 1998, who estimate such bounds of Gini's index).
//
// Targets are deviations from their mean in fixed point, so that sums are exact in any order and those of a
// child come from its parent and its sibling. Of n records with a mean absolute deviation d the unit is
// d n / 2^60 or less, and a node is searched so where its standard deviation is 2^28 units and more. Splits
// by features that order the records alike have the same score, and the first feature counts.
//
// Takes 9 bytes a record, and 16 a bin of each feature for every node that is open.

namespace Tessel::Engine::DT {

/// Of the records in a bin.
struct BinSum {
    std::int64_t deviations = 0;
    /// Of each the absolute deviation, rounded up so that the last bits are free, and there 1.
    std::int64_t sizesAndCount = 0;

    BinSum& operator+=(const BinSum& other) {
        deviations += other.deviations;
        sizesAndCount += other.sizesAndCount;
        return *this;
    }
    BinSum& operator-=(const BinSum& other) {
        deviations -= other.deviations;
        sizesAndCount -= other.sizesAndCount;
        return *this;
    }
};

/// A node as the search by bins sees it. Its records are marked with `mark`, see `setMark`.
struct BinnedNode {
    const BinSum* bins = nullptr;  ///< of one feature
    std::int64_t numRecords = 0;
    std::uint8_t mark = 0;
};

/// What the search knows of each record.
struct BinnedRecords {
    std::vector<std::int64_t> deviations;
    std::vector<std::uint8_t> marks;  ///< of its node
};

/// Each row of the table is one record of weight 1.
class BinSearch {
 public:
    /// @param mean     of the targets.
    /// @param records  filled by the search, all with mark 0.
    BinSearch(std::span<const SharedColumn> columns, std::span<const double> targets, double mean,
              std::int64_t minNumRecords, BinnedRecords& records, Crew& crew);

    /// Whether the unit is small enough for a node of this variance.
    bool isFineFor(double variance) const {
        constexpr double kMinDeviationInUnits = 0x1p28;
        return variance >= kMinDeviationInUnits * unit_ * (kMinDeviationInUnits * unit_);
    }
    std::size_t numBins(std::size_t feature) const { return columns_[feature].numBins(); }

    /// Adds the members of a node to its bins of some features.
    /// @param bins  by feature.
    void addUp(std::span<const std::size_t> features, std::span<const std::uint32_t> members,
               std::span<BinSum* const> bins) const;

    /// The best split between bins. `lower` and `upper` are the same number: how many of the sorted rows come
    /// before the split.
    Candidate searchEnds(std::size_t feature, const BinnedNode& node) const;

    /// Takes a split inside a bin if it is better, and not worse than `least`.
    void searchInside(std::size_t feature, const BinnedNode& node, double least, Scratch& scratch,
                      Candidate& best) const;

    /// The records of a node before and after a split.
    std::uint32_t recordBefore(std::size_t feature, std::uint32_t position, std::uint8_t mark) const;
    std::uint32_t recordAfter(std::size_t feature, std::uint32_t position, std::uint8_t mark) const;

    static constexpr std::uint8_t kNoMark = 255;
    const std::vector<std::uint8_t>& marks() const { return records_.marks; }
    void clearMarks() { std::fill(records_.marks.begin(), records_.marks.end(), kNoMark); }
    void setMark(std::span<const std::uint32_t> members, std::uint8_t mark) {
        std::uint8_t* const marks = records_.marks.data();
        for (const std::uint32_t member : members) marks[member] = mark;
    }

 private:
    struct Rating;
    template <std::size_t N>
    void addUp(const std::size_t* features, std::span<const std::uint32_t> members,
               BinSum* const* bins) const;
    void walk(std::size_t feature, std::size_t bin, const Rating& atBegin, const BinnedNode& node,
              double least, Scratch& scratch, Candidate& best) const;
    Rating begin(std::size_t feature, const BinnedNode& node) const;
    bool mayReach(const Rating& atBegin, const BinnedNode& node, const BinSum& sum, double score,
                  std::int64_t numInside) const;
    template <class Score, class Look>
    void forEachBin(std::size_t feature, const BinnedNode& node, Score&& score, Look&& look) const;
    /// A record as if it were a bin.
    BinSum binOf(std::uint32_t record) const {
        const std::int64_t deviation = records_.deviations[record];
        return {deviation, (std::abs(deviation) | countMask_) + 1 + 1};
    }
    std::int64_t count(const BinSum& bin) const { return bin.sizesAndCount & countMask_; }
    std::int64_t sizes(const BinSum& bin) const { return bin.sizesAndCount & ~countMask_; }

    std::span<const SharedColumn> columns_;
    const std::int64_t minNumRecords_;
    std::int64_t countMask_ = 0;
    double unit_ = 1.0;  // of the deviations
    BinnedRecords& records_;
};

}  // namespace Tessel::Engine::DT
