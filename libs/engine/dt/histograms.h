#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/dt/bin_search.h"
#include "engine/dt/feature_lists.h"

// Histograms that nodes keep because subtracting them makes those of a child: where sums are exact.

namespace Tessel::Engine::DT {

/// Sums of the records of a node by the bins of all features, of one kind.
struct Histograms {
    std::vector<double> classes;     ///< classification: as of Records
    std::vector<BinSum> deviations;  ///< of shared columns
};

class HistogramMaker {
 public:
    /// Of no node, if not all features are searched.
    /// @param bins  null: there are no shared columns.
    /// @param numThreads  which share the work on a node.
    /// @param kept        histograms by bins of shared columns, which are used again when nobody holds them.
    HistogramMaker(const Records& records, std::span<const FeatureLists> features, const BinSearch* bins,
                   bool areAllSearched, std::size_t numThreads,
                   std::vector<std::shared_ptr<Histograms>>& kept);

    /// Whether a node is to have histograms.
    bool isFor(std::size_t numRecords, int level) const {
        return numRecords >= minNumRecords_ && level < numLevels_;
    }
    /// Of a node, to be added up. By bins of shared columns it is called by one thread.
    std::shared_ptr<Histograms> make();
    /// Histograms are made in so many parts, each of some features.
    std::size_t numParts() const { return parts_.size(); }
    void addUp(std::size_t part, std::span<const std::uint32_t> members, Histograms& histograms) const;
    /// What the smaller child leaves of the sums of its parent.
    void subtract(std::size_t part, const Histograms& smaller, Histograms& larger) const;

    /// Of a feature; null where there are none.
    const double* classes(std::size_t feature, const Histograms& histograms) const {
        return bins_ ? nullptr : histograms.classes.data() + begins_[feature];
    }
    const BinSum* deviations(std::size_t feature, const Histograms& histograms) const {
        return histograms.deviations.data() + begins_[feature];
    }

 private:
    static constexpr std::size_t kNumFeaturesInPart = 4;
    void makeParts(std::size_t numThreads);
    std::span<const std::size_t> featuresOf(std::size_t part) const {
        return std::span(binned_).subspan(parts_[part].begin, parts_[part].size);
    }

    const Records& records_;
    const std::span<const FeatureLists> features_;
    const BinSearch* const bins_;
    std::vector<std::shared_ptr<Histograms>>& kept_;
    std::vector<std::size_t> binned_;  // features with bins
    struct Part {
        std::size_t begin, size;  // in `binned_`
    };
    std::vector<Part> parts_;
    std::vector<std::size_t> begins_;  // by feature; the last is the size of them all
    std::size_t minNumRecords_;
    int numLevels_;
};

}  // namespace Tessel::Engine::DT
