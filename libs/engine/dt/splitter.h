#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/dt/bin_search.h"
#include "engine/dt/feature_lists.h"
#include "engine/dt/growth.h"
#include "engine/dt/growth_memory.h"
#include "engine/dt/histograms.h"
#include "engine/dt/members.h"
#include "engine/dt/split_search.h"

// The records of a growing tree: their order by node and by value, and the splits of nodes.

namespace Tessel::Engine::DT {

// Loops over fewer cells are not worth sharing.
inline constexpr std::size_t kMinCellsInParallel = 2000;

/// A node that may still be split. Its records are the range [begin, end) of every list.
struct OpenNode {
    std::int32_t node = 0;
    std::uint32_t begin = 0, end = 0;
    int level = 0;
    std::uint64_t position = 0;  ///< names the way from the root; seeds the draw of features
    std::shared_ptr<Histograms> histograms = nullptr;
    std::uint8_t mark = 0;  ///< of its records, while nodes are searched by bins
    bool isLeaf = false;    ///< for good

    std::uint32_t size() const { return end - begin; }
};

/// The best split of a node, with its children measured and the node's records parted.
struct Split {
    Candidate candidate;
    double threshold = 0.0;  ///< of numbers
    std::uint32_t middle = 0;
    double gain = 0.0;
    Node left, right;
    std::vector<double> classWeights;                ///< of the left child, then of the right one
    std::vector<std::uint8_t> codeGoesLeft;          ///< where the feature has codes
    std::size_t firstStretch = 0, numStretches = 0;  ///< of those that are parted at once

    bool exists() const { return gain > 0.0; }
};

/// What is looked at to split a node: each drawn feature has its candidate.
struct Search {
    Totals totals;
    std::vector<std::int32_t> features;
    std::vector<Candidate> candidates;

    double bestScore() const;
};

/// Finds the splits of nodes and parts the records by them.
class Splitter {
 public:
    Splitter(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits,
             const Node& root, GrowthMemory& memory, Crew& crew);
    Splitter(const Splitter&) = delete;
    Splitter& operator=(const Splitter&) = delete;
    ~Splitter();

    std::span<const std::uint32_t> members(std::uint32_t begin, std::uint32_t end) const {
        return members_.range(begin, end);
    }
    std::span<const std::uint32_t> membersOf(const OpenNode& open) const {
        return members_.range(open.begin, open.end);
    }
    std::size_t numFeatures() const { return features_.size(); }
    std::size_t crewSize() const { return scratches_.size(); }

    bool isSplittable(const Tree& tree, const OpenNode& open) const;

    /// Whether a node is large enough for histograms, and by bins spread enough.
    bool isForHistograms(const Tree& tree, const OpenNode& open) const;
    /// Whether nodes are searched by the bins of shared columns, which is for nodes with histograms only.
    bool usesBins() const { return bins_ != nullptr; }
    /// Gives members of a node its mark, by which the search by bins knows them.
    void mark(std::uint32_t begin, std::uint32_t end, std::uint8_t mark) {
        bins_->setMark(members_.range(begin, end), mark);
    }
    /// Makes the lists of these nodes; from here on there are no bins.
    void leaveBins(std::span<OpenNode> nodes);

    /// @param own  the memory of the one thread that does it; null for all threads.
    Split findSplit(const Tree& tree, OpenNode& open, Scratch* own);
    void applySplit(Tree& tree, const OpenNode& open, Split& split, Scratch* own, OpenNode children[2]);

    // The steps of these, for nodes that are split side by side. Until a split is chosen, its search refers
    // to the tree, which must not grow.
    Search beginSearch(const Tree& tree, OpenNode& open, Scratch* own);
    void searchCandidate(Search& search, std::size_t i, const OpenNode& open, Scratch& scratch) const;
    /// What is left to search by bins when all candidates are searched.
    /// @param bestScore  of the node, which is raised. Who raises it first makes no difference: only what is
    ///                   worse is left out.
    void searchInsideBins(Search& search, std::size_t i, const OpenNode& open, std::atomic<double>& bestScore,
                          Scratch& scratch) const;
    /// Chooses the splits of nodes that were searched, parts their records and measures the children.
    void chooseSplits(const Tree& tree, std::span<const OpenNode> nodes, std::span<Search> searches,
                      std::span<Split> splits, Scratch* own);
    void addChildren(Tree& tree, const OpenNode& open, Split& split, OpenNode children[2]) const;
    /// @param children  two neighbours by each of the parents, whose histograms they may take.
    void makeChildHistograms(const Tree& tree, std::span<const OpenNode> parents,
                             std::span<OpenNode> children, Scratch* own);
    /// Parts the sorted list of a feature as the records of a split node were.
    void partList(const Tree& tree, std::size_t feature, const OpenNode& open, const OpenNode children[2],
                  Scratch& scratch);

    /// Runs work(i, scratch) for i below n: by all threads when there is much to do and nobody gave memory of
    /// their own (a thread that grows a subtree does so).
    /// @param numCells  that one call looks at
    template <class Work>
    void forEach(std::size_t n, std::size_t numCells, Scratch* own, Work&& work);
    /// Runs work(stretch) in the same way.
    template <class Work>
    void forEach(std::span<Stretch> stretches, Scratch* own, Work&& work);

 private:
    bool searchesAllFeatures() const;
    std::unique_ptr<BinSearch> makeBinSearch(const Node& root) const;
    void makeAllLists();
    BinnedNode binned(std::size_t feature, const OpenNode& open) const {
        return {histograms_->deviations(feature, *open.histograms), open.size(), open.mark};
    }
    std::vector<std::int32_t> drawFeatures(std::uint64_t position) const;
    Candidate searchFeature(std::size_t feature, const OpenNode& open, const Totals& totals,
                            Scratch& scratch) const;
    double thresholdOf(const Candidate& candidate, const OpenNode& open) const;
    const FeatureLists& listsOf(const Split& split) const {
        return features_[static_cast<std::size_t>(split.candidate.feature)];
    }
    void chooseCandidate(const OpenNode& open, Search& search, Split& split) const;
    void markSides(const OpenNode& open, const Candidate& candidate, const Stretch& stretch);
    void partStretch(const Search& search, const Split& split, Stretch& stretch);
    bool areTargetsSummed() const { return numClasses_ == 0 && records_.isUnit(); }
    void measureChildren(const Node& node, const OpenNode& open, const Totals& totals,
                         std::span<const Stretch> stretches, Split& split);
    double gainOf(const Node& node, const double* classWeights, const Split& split) const;

    const TrainingData& data_;
    const PreparedRecords& prepared_;
    const Records& records_;
    const Limits limits_;
    const std::size_t numClasses_;
    std::unique_ptr<SplitSearch> search_;
    std::vector<FeatureLists> features_;
    std::unique_ptr<BinSearch> bins_;
    std::unique_ptr<HistogramMaker> histograms_;
    GrowthMemory& memory_;
    Members& members_;
    std::vector<std::uint8_t>& goesLeft_;  // by record, in the split found last for its node
    std::vector<Scratch>& scratches_;      // by thread
    Crew& crew_;
};

template <class Work>
void Splitter::forEach(std::size_t n, std::size_t numCells, Scratch* own, Work&& work) {
    if (own || n < 2 || crew_.isOneThread() || n * numCells < kMinCellsInParallel) {
        for (std::size_t i = 0; i < n; ++i) work(i, own ? *own : scratches_[0]);
        return;
    }
    crew_.forEach(n,
                  [&](std::size_t i, int thread) { work(i, scratches_[static_cast<std::size_t>(thread)]); });
}

template <class Work>
void Splitter::forEach(std::span<Stretch> stretches, Scratch* own, Work&& work) {
    std::size_t numRecords = 0;
    for (const Stretch& stretch : stretches) numRecords += stretch.end - stretch.begin;
    forEach(stretches.size(), stretches.empty() ? 0 : numRecords / stretches.size(), own,
            [&](std::size_t i, Scratch&) { work(stretches[i]); });
}

}  // namespace Tessel::Engine::DT
