#include "engine/dt/splitter.h"

#include <algorithm>
#include <cmath>

#include "data/random.h"

namespace Tessel::Engine::DT {

namespace {

std::uint64_t childPosition(std::uint64_t parent, bool isRight) {
    return Random(parent, isRight ? 2 : 1).nextUInt64();
}

}  // namespace

Splitter::Splitter(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits)
    : data_(data),
      prepared_(prepared),
      records_(prepared.records),
      limits_(limits),
      numClasses_(static_cast<std::size_t>(prepared.records.numClasses)),
      search_(SplitSearch::make(records_, std::max(1, limits.minNumRecordsInLeaves))),
      features_(data.features.size()),
      members_(records_.size),
      goesLeft_(records_.size),
      scratches_(static_cast<std::size_t>(omp_in_parallel() ? 1 : omp_get_max_threads())) {
    for (std::uint32_t record = 0; record < members_.size(); ++record) members_[record] = record;
    makeAllLists();
    planHistograms();
}

void Splitter::makeAllLists() {
    std::vector<std::uint32_t> recordOf;
    if (!data_.sortedRows.empty() && !prepared_.tableRows.empty()) {
        recordOf.assign(static_cast<std::size_t>(data_.numRows), kNoRecord);
        for (std::uint32_t record = 0; record < records_.size; ++record)
            recordOf[prepared_.tableRows[record]] = record;
    }
    forEachFeature(features_.size(), records_.size, nullptr, [&](std::size_t i, Scratch&) {
        features_[i] = data_.sortedRows.empty()
                           ? makeLists(data_.features[i], prepared_, data_.keepRanks)
                           : takeLists(data_.features[i], prepared_, data_.sortedRows[i], recordOf);
    });
}

void Splitter::planHistograms() {
    // So many records a bin that subtracting takes a small part of the time of adding up, and all histograms
    // that are kept at once take less memory than the codes of the features.
    constexpr std::size_t kMinRecordsPerBin = 16;
    std::size_t numBinned = 0, numBins = 0;
    for (const FeatureLists& lists : features_) {
        histogramBegins_.push_back(numBins * records_.numSums());
        if (lists.numBins() > 0) ++numBinned;
        numBins += lists.numBins();
    }
    histogramBegins_.push_back(numBins * records_.numSums());
    const bool areAllSearched =
        static_cast<std::size_t>(std::max(1, limits_.numSelectedFeatures)) >= features_.size();
    if (numBinned > 0 && areAllSearched && numClasses_ > 0 && records_.areExact())
        minNumRecordsOfHistograms_ = kMinRecordsPerBin * (numBins / numBinned + 1) * records_.numSums() / 3;
}

void Splitter::addToHistogram(std::size_t feature, const OpenNode& open,
                              std::vector<double>& histograms) const {
    if (features_[feature].numBins() == 0) return;
    addToBins(records_, std::span(members_).subspan(open.begin, open.size()), features_[feature].binned(),
              histograms.data() + histogramBegins_[feature]);
}

/// From the histograms of a node, which become those of its larger child.
void Splitter::makeHistograms(const OpenNode& parent, OpenNode& smaller, OpenNode& larger, Scratch* own) {
    if (!parent.histograms || !wantsHistograms(larger.size())) return;
    auto ofSmaller = std::make_shared<std::vector<double>>(parent.histograms->size(), 0.0);
    larger.histograms = parent.histograms;
    std::vector<double>& ofLarger = *larger.histograms;
    forEachFeature(features_.size(), smaller.size(), own, [&](std::size_t feature, Scratch&) {
        addToHistogram(feature, smaller, *ofSmaller);
        for (std::size_t i = histogramBegins_[feature]; i < histogramBegins_[feature + 1]; ++i)
            ofLarger[i] -= (*ofSmaller)[i];
    });
    if (wantsHistograms(smaller.size())) smaller.histograms = std::move(ofSmaller);
}

bool Splitter::isSplittable(const Tree& tree, const OpenNode& open) const {
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    return node.impurity > 0.0 && open.level < limits_.maxNumLevels &&
           node.numRecords >= 2 * std::int64_t{std::max(1, limits_.minNumRecordsInLeaves)};
}

/// A fresh draw of features without repetition, ascending.
std::vector<std::int32_t> Splitter::drawFeatures(std::uint64_t position) const {
    std::vector<std::int32_t> features(features_.size());
    for (std::size_t i = 0; i < features.size(); ++i) features[i] = static_cast<std::int32_t>(i);
    const auto numDrawn = static_cast<std::size_t>(std::max(1, limits_.numSelectedFeatures));
    if (numDrawn >= features.size()) return features;
    Random random(position);
    for (std::size_t i = 0; i < numDrawn; ++i)
        std::swap(features[i], features[i + random.nextBelow(features.size() - i)]);
    features.resize(numDrawn);
    std::sort(features.begin(), features.end());
    return features;
}

Split Splitter::findSplit(const Tree& tree, OpenNode& open, Scratch* own) {
    Search search = beginSearch(tree, open);
    forEachFeature(search.features.size(), open.size(), own,
                   [&](std::size_t i, Scratch& scratch) { searchCandidate(search, i, open, scratch); });
    return chooseSplit(tree, open, search, own ? *own : scratches_[0]);
}

Search Splitter::beginSearch(const Tree& tree, OpenNode& open) const {
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    Search search{.totals = {.numRecords = node.numRecords,
                             .weight = node.weight,
                             .mean = node.response,
                             .classWeights = tree.classWeightsOf(open.node)},
                  .features = drawFeatures(open.position),
                  .candidates = {},
                  .makesHistograms = !open.histograms && wantsHistograms(open.size())};
    search.candidates.resize(search.features.size());
    if (search.makesHistograms)
        open.histograms = std::make_shared<std::vector<double>>(histogramBegins_.back(), 0.0);
    return search;
}

void Splitter::searchCandidate(Search& search, std::size_t i, const OpenNode& open, Scratch& scratch) const {
    if (search.makesHistograms) addToHistogram(i, open, *open.histograms);
    search.candidates[i] =
        searchFeature(static_cast<std::size_t>(search.features[i]), open, search.totals, scratch);
    search.candidates[i].feature = search.features[i];
}

Split Splitter::chooseSplit(const Tree& tree, const OpenNode& open, Search& search, Scratch& scratch) {
    Split split;
    for (Candidate& candidate : search.candidates)
        if (candidate.score > split.candidate.score) split.candidate = std::move(candidate);
    if (!split.candidate.exists()) return split;

    split.middle = partRecords(open, split.candidate, scratch);
    split.classWeights.resize(2 * numClasses_);
    const auto members = std::span<const std::uint32_t>(members_);
    summarizeChildren(records_, members.subspan(open.begin, split.middle - open.begin),
                      members.subspan(split.middle, open.end - split.middle), search.totals, split.left,
                      split.right, split.classWeights.data());
    split.gain = gainOf(tree.nodes[static_cast<std::size_t>(open.node)], search.totals.classWeights, split);
    return split;
}

Candidate Splitter::searchFeature(std::size_t feature, const OpenNode& open, const Totals& totals,
                                  Scratch& scratch) const {
    const FeatureLists& lists = features_[feature];
    const std::size_t numRecords = open.size();
    if (lists.form == FeatureLists::Form::SORTED)
        return search_->searchSorted(std::span(lists.sorted).subspan(open.begin, numRecords), totals,
                                     scratch);
    const auto members = std::span(members_).subspan(open.begin, numRecords);
    const double* bins = open.histograms ? open.histograms->data() + histogramBegins_[feature] : nullptr;
    return lists.form == FeatureLists::Form::NUMBERS
               ? search_->searchNumbers(members, lists.binned(bins), totals, scratch)
               : search_->searchCategories(members, lists.binned(bins), totals, scratch);
}

/// One of the two values between which a candidate splits; 0 rather than -0.
double Splitter::valueOf(std::uint32_t codeOrPosition, std::int32_t feature, const OpenNode& open) const {
    const FeatureLists& lists = features_[static_cast<std::size_t>(feature)];
    if (lists.form == FeatureLists::Form::NUMBERS) return lists.values[codeOrPosition] + 0.0;
    const TrainingFeature& cells = data_.features[static_cast<std::size_t>(feature)];
    const std::uint32_t record = lists.sorted[open.begin + codeOrPosition].record();
    return cells.numbers[cells.columnRow(prepared_.rowOf(record))] + 0.0;
}

/// Marks the side of each record of the node and parts its range of members; returns where the right begins.
std::uint32_t Splitter::partRecords(const OpenNode& open, const Candidate& candidate, Scratch& scratch) {
    const FeatureLists& lists = features_[static_cast<std::size_t>(candidate.feature)];
    std::uint32_t numLeft = candidate.lower + 1;  // of a sorted list
    if (lists.form == FeatureLists::Form::SORTED) {
        for (std::uint32_t i = open.begin; i < open.end; ++i)
            goesLeft_[lists.sorted[i].record()] = i < open.begin + numLeft;
    } else {
        std::vector<std::uint8_t> codeGoesLeft(std::size_t{lists.numCodes} + 1, 0);
        codeGoesLeft[lists.numCodes] = 1;
        if (lists.form == FeatureLists::Form::NUMBERS)
            std::fill_n(codeGoesLeft.begin(), candidate.lower + 1, std::uint8_t{1});
        for (const std::int32_t category : candidate.leftCategories)
            codeGoesLeft[static_cast<std::size_t>(category)] = 1;
        numLeft = 0;
        for (std::uint32_t i = open.begin; i < open.end; ++i) {
            const std::uint8_t isLeft = codeGoesLeft[lists.codes[members_[i]]];
            goesLeft_[members_[i]] = isLeft;
            numLeft += isLeft;
        }
    }
    partMembers(open, numLeft, scratch.moved);
    return open.begin + numLeft;
}

/// Both sides keep their order.
void Splitter::partMembers(const OpenNode& open, std::uint32_t numLeft, std::vector<SortedRecord>& scratch) {
    const std::uint32_t numRight = open.size() - numLeft;
    if (scratch.size() < numRight + 1) scratch.resize(numRight + 1);
    std::uint32_t* left = members_.data() + open.begin;
    SortedRecord* right = scratch.data();
    for (std::uint32_t i = open.begin; i < open.end; ++i) {
        const std::uint32_t member = members_[i], isLeft = goesLeft_[member];
        *left = member;
        *right = {member, 0};
        left += isLeft;
        right += 1 - isLeft;
    }
    for (std::uint32_t i = 0; i < numRight; ++i) left[i] = scratch[i].record();
}

/// Of classes by the differences of their shares, which are exact zeros where the sides are alike.
double Splitter::gainOf(const Node& node, const double* classWeights, const Split& split) const {
    const double product = split.left.weight * split.right.weight;
    if (numClasses_ == 0) {
        const double difference = split.left.response - split.right.response;
        return difference * difference * (product / node.weight);
    }
    double squares = 0.0;
    for (std::size_t k = 0; k < numClasses_; ++k) {
        const double difference = node.weight * split.classWeights[k] - split.left.weight * classWeights[k];
        squares += difference * difference;
    }
    return squares / (product * node.weight);
}

void Splitter::applySplit(Tree& tree, const OpenNode& open, Split& split, Scratch* own,
                          OpenNode children[2]) {
    addChildren(tree, open, split, children);
    if (!isSplittable(tree, children[0]) && !isSplittable(tree, children[1])) return;
    makeChildHistograms(tree, open, children, own);
    forEachFeature(features_.size(), open.size(), own, [&](std::size_t feature, Scratch& scratch) {
        partList(tree, feature, open, children, scratch);
    });
}

void Splitter::addChildren(Tree& tree, const OpenNode& open, Split& split, OpenNode children[2]) const {
    const auto left = static_cast<std::int32_t>(tree.nodes.size());
    const FeatureLists& splitLists = features_[static_cast<std::size_t>(split.candidate.feature)];
    {
        Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
        node.left = left;
        node.feature = split.candidate.feature;
        node.gain = split.gain;
        if (splitLists.form == FeatureLists::Form::CATEGORIES) {
            node.categorySet = static_cast<std::int32_t>(tree.categorySets.size());
            tree.categorySets.push_back(std::move(split.candidate.leftCategories));
        } else {
            node.threshold = thresholdBetween(valueOf(split.candidate.lower, node.feature, open),
                                              valueOf(split.candidate.upper, node.feature, open));
        }
    }
    split.left.parent = split.right.parent = open.node;
    tree.nodes.push_back(split.left);
    tree.nodes.push_back(split.right);
    tree.classWeights.insert(tree.classWeights.end(), split.classWeights.begin(), split.classWeights.end());

    children[0] = {left, open.begin, split.middle, open.level + 1, childPosition(open.position, false)};
    children[1] = {left + 1, split.middle, open.end, open.level + 1, childPosition(open.position, true)};
}

void Splitter::makeChildHistograms(const Tree& tree, const OpenNode& open, OpenNode children[2],
                                   Scratch* own) {
    const std::size_t larger = children[0].size() < children[1].size() ? 1 : 0;
    if (isSplittable(tree, children[larger]))
        makeHistograms(open, children[1 - larger], children[larger], own);
}

void Splitter::partList(const Tree& tree, std::size_t feature, const OpenNode& open,
                        const OpenNode children[2], Scratch& scratch) {
    FeatureLists& lists = features_[feature];
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    if (lists.form != FeatureLists::Form::SORTED || feature == static_cast<std::size_t>(node.feature)) return;
    part(std::span(lists.sorted).subspan(open.begin, open.size()), children[0].end - open.begin, goesLeft_,
         isSplittable(tree, children[0]), isSplittable(tree, children[1]), scratch.moved);
}

}  // namespace Tessel::Engine::DT
