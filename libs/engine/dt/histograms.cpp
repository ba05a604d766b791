#include "engine/dt/histograms.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace Tessel::Engine::DT {

HistogramMaker::HistogramMaker(const Records& records, std::span<const FeatureLists> features,
                               const BinSearch* bins, bool areAllSearched, std::size_t numThreads,
                               std::vector<std::shared_ptr<Histograms>>& kept)
    : records_(records),
      features_(features),
      bins_(bins),
      kept_(kept),
      minNumRecords_(std::numeric_limits<std::size_t>::max()),
      numLevels_(std::numeric_limits<int>::max()) {
    std::size_t size = 0;
    for (std::size_t feature = 0; feature < features.size(); ++feature) {
        begins_.push_back(size);
        const std::size_t added =
            bins ? bins->numBins(feature) : features[feature].numBins() * records.numSums();
        size += added;
        if (added > 0) binned_.push_back(feature);
    }
    begins_.push_back(size);
    makeParts(numThreads);
    if (bins) {
        // Levels down to where nodes have on average so many records a bin: below, the few of a node in a bin
        // are looked for among too many others. And the nodes of a level have marks of a byte. The records of
        // a node with so many bins to each are sorted sooner than its bins are searched.
        constexpr std::size_t kMinRecordsPerBin = 4;
        constexpr int kMaxNumLevels = 7;
        constexpr std::size_t kMaxBinsPerRecord = 64;
        const std::size_t numBins = size / binned_.size();
        numLevels_ = std::clamp(
            static_cast<int>(std::bit_width(records.size / (kMinRecordsPerBin * numBins))), 1, kMaxNumLevels);
        minNumRecords_ = std::min(records.size, numBins / kMaxBinsPerRecord);
    } else if (!binned_.empty() && areAllSearched && records.numClasses > 0 && records.areExact()) {
        // So many records a bin that subtracting takes a small part of the time of adding up, and all
        // histograms that are kept at once take less memory than the codes of the features.
        constexpr std::size_t kMinRecordsPerBin = 16;
        minNumRecords_ = kMinRecordsPerBin * (size / binned_.size() + records.numSums()) / 3;
    }
}

/// For each thread of an equal share of the features: of as many of them as are fast at once.
void HistogramMaker::makeParts(std::size_t numThreads) {
    for (std::size_t thread = 0; thread < numThreads; ++thread) {
        const std::size_t end = (thread + 1) * binned_.size() / numThreads;
        for (std::size_t begin = thread * binned_.size() / numThreads; begin < end;
             begin += kNumFeaturesInPart)
            parts_.push_back({begin, std::min(kNumFeaturesInPart, end - begin)});
    }
}

std::shared_ptr<Histograms> HistogramMaker::make() {
    if (!bins_) {
        auto histograms = std::make_shared<Histograms>();
        histograms->classes.resize(begins_.back());
        return histograms;
    }
    auto idle = std::find_if(kept_.begin(), kept_.end(),
                             [](const auto& histograms) { return histograms.use_count() == 1; });
    if (idle == kept_.end()) idle = kept_.insert(idle, std::make_shared<Histograms>());
    (*idle)->deviations.resize(begins_.back());
    return *idle;
}

void HistogramMaker::addUp(std::size_t part, std::span<const std::uint32_t> members,
                           Histograms& histograms) const {
    if (bins_) {
        std::array<BinSum*, kNumFeaturesInPart> sums{};
        const std::span<const std::size_t> features = featuresOf(part);
        for (std::size_t i = 0; i < features.size(); ++i) {
            sums[i] = histograms.deviations.data() + begins_[features[i]];
            std::fill_n(sums[i], begins_[features[i] + 1] - begins_[features[i]], BinSum{});
        }
        return bins_->addUp(features, members, sums);
    }
    for (const std::size_t feature : featuresOf(part))
        addToBins(records_, members, features_[feature].binned(),
                  histograms.classes.data() + begins_[feature]);
}

void HistogramMaker::subtract(std::size_t part, const Histograms& smaller, Histograms& larger) const {
    for (const std::size_t feature : featuresOf(part))
        for (std::size_t i = begins_[feature]; i < begins_[feature + 1]; ++i)
            if (bins_)
                larger.deviations[i] -= smaller.deviations[i];
            else
                larger.classes[i] -= smaller.classes[i];
}

}  // namespace Tessel::Engine::DT
