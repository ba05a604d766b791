#include "engine/dt/growth.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <queue>

#include <omp.h>

#include <tessel/data/errors.h>

#include "data/random.h"
#include "engine/dt/feature_lists.h"
#include "engine/dt/split_search.h"
#include "engine/parallel.h"

namespace Tessel::Engine::DT {

namespace {

// Below this many cells a loop over features is not worth waking the threads.
constexpr std::size_t kMinCellsInParallel = 20000;

/// A node that may still be split. Its records are the range [begin, end) of every list.
struct OpenNode {
    std::int32_t node = 0;
    std::uint32_t begin = 0, end = 0;
    int level = 0;
    std::uint64_t position = 0;  // names the way from the root; seeds the draw of features
    std::shared_ptr<std::vector<double>> histograms = nullptr;  // of all features, see histogramBegins_
};

/// The best split of a node, with its children measured and the node's records parted.
struct Split {
    Candidate candidate;
    std::uint32_t middle = 0;
    double gain = 0.0;
    Node left, right;
    std::vector<double> classWeights;  // of the left child, then of the right one

    bool exists() const { return gain > 0.0; }
};

/// What is looked at to split a node: each drawn feature has its candidate.
struct Search {
    Totals totals;
    std::vector<std::int32_t> features;
    std::vector<Candidate> candidates;
    bool makesHistograms = false;
};

struct PendingSplit {
    OpenNode open;
    Split split;
};

/// The first among equals is the node made first.
struct LesserGain {
    bool operator()(const PendingSplit& a, const PendingSplit& b) const {
        return a.split.gain != b.split.gain ? a.split.gain < b.split.gain : a.open.node > b.open.node;
    }
};

std::uint64_t childPosition(std::uint64_t parent, bool isRight) {
    return Random(parent, isRight ? 2 : 1).nextUInt64();
}

class Grower {
 public:
    Grower(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits);
    Tree grow();

 private:
    void growBestFirst(Tree& tree, const OpenNode& root, std::int64_t maxNumSplits);
    void growWhole(Tree& tree, const OpenNode& root);
    std::vector<OpenNode> growLargeNodes(Tree& tree, const OpenNode& root, std::size_t minNumRecords);
    void growDepthFirst(Tree& tree, const OpenNode& root, Scratch& scratch);

    void makeAllLists();
    void tell(std::size_t numRecords, bool isSettled);
    void planHistograms();
    bool wantsHistograms(std::size_t numRecords) const { return numRecords >= minNumRecordsOfHistograms_; }
    void addToHistogram(std::size_t feature, const OpenNode& open, std::vector<double>& histograms) const;
    void makeHistograms(const OpenNode& parent, OpenNode& smaller, OpenNode& larger, Scratch* own);
    bool isSplittable(const Node& node, int level) const;
    std::vector<std::int32_t> drawFeatures(std::uint64_t position) const;
    Split findSplit(const Tree& tree, OpenNode& open, Scratch* own);
    Search beginSearch(const Tree& tree, OpenNode& open) const;
    void searchCandidate(Search& search, std::size_t i, const OpenNode& open, Scratch& scratch) const;
    Split chooseSplit(const Tree& tree, const OpenNode& open, Search& search, Scratch& scratch);
    Candidate searchFeature(std::size_t feature, const OpenNode& open, const Totals& totals,
                            Scratch& scratch) const;
    double valueOf(std::uint32_t codeOrPosition, std::int32_t feature, const OpenNode& open) const;
    std::uint32_t partRecords(const OpenNode& open, const Candidate& candidate, Scratch& scratch);
    void partMembers(const OpenNode& open, std::uint32_t numLeft, std::vector<SortedRecord>& scratch);
    double gainOf(const Node& node, const double* classWeights, const Split& split) const;
    void applySplit(Tree& tree, const OpenNode& open, Split& split, Scratch* own, OpenNode children[2]);
    void addChildren(Tree& tree, const OpenNode& open, Split& split, OpenNode children[2]) const;
    bool isSplittable(const Tree& tree, const OpenNode& open) const {
        return isSplittable(tree.nodes[static_cast<std::size_t>(open.node)], open.level);
    }
    void makeChildHistograms(const Tree& tree, const OpenNode& open, OpenNode children[2], Scratch* own);
    void partList(const Tree& tree, std::size_t feature, const OpenNode& open, const OpenNode children[2],
                  Scratch& scratch);

    /// Runs work(i, scratch) for i below n: by all threads when there is much to do and nobody gave memory of
    /// their own (a thread that grows a subtree does so).
    template <class Work>
    void forEachFeature(std::size_t n, std::size_t numRecords, Scratch* own, Work&& work);

    const TrainingData& data_;
    const PreparedRecords& prepared_;
    const Records& records_;
    const Limits limits_;
    const std::size_t numClasses_;
    std::unique_ptr<SplitSearch> search_;
    std::vector<FeatureLists> features_;
    // Histograms of a node are kept where subtracting them makes those of a child: where sums are exact. By
    // feature where its bins begin; the last is the size of them all.
    std::vector<std::size_t> histogramBegins_;
    std::size_t minNumRecordsOfHistograms_ = std::numeric_limits<std::size_t>::max();
    std::vector<std::uint32_t> members_;      // the records of each node are a range, ascending
    std::vector<std::uint8_t> goesLeft_;      // by record, in the split found last for its node
    std::vector<Scratch> scratches_;          // by thread
    std::atomic<std::size_t> numSettled_{0};  // records in nodes that stay leaves
    std::size_t numTold_ = 0;                 // of these when the watch was told last
};

Grower::Grower(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits)
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

void Grower::makeAllLists() {
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

void Grower::planHistograms() {
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

void Grower::addToHistogram(std::size_t feature, const OpenNode& open,
                            std::vector<double>& histograms) const {
    if (features_[feature].numBins() == 0) return;
    addToBins(records_, std::span(members_).subspan(open.begin, open.end - open.begin),
              features_[feature].binned(), histograms.data() + histogramBegins_[feature]);
}

/// From the histograms of a node, which become those of its larger child.
void Grower::makeHistograms(const OpenNode& parent, OpenNode& smaller, OpenNode& larger, Scratch* own) {
    if (!parent.histograms || !wantsHistograms(larger.end - larger.begin)) return;
    auto ofSmaller = std::make_shared<std::vector<double>>(parent.histograms->size(), 0.0);
    larger.histograms = parent.histograms;
    std::vector<double>& ofLarger = *larger.histograms;
    forEachFeature(features_.size(), smaller.end - smaller.begin, own, [&](std::size_t feature, Scratch&) {
        addToHistogram(feature, smaller, *ofSmaller);
        for (std::size_t i = histogramBegins_[feature]; i < histogramBegins_[feature + 1]; ++i)
            ofLarger[i] -= (*ofSmaller)[i];
    });
    if (wantsHistograms(smaller.end - smaller.begin)) smaller.histograms = std::move(ofSmaller);
}

/// Tells the watch of a node that is looked at or that stays a leaf: of large ones, and each time that
/// another hundredth of the records is settled.
void Grower::tell(std::size_t numRecords, bool isSettled) {
    if (!data_.watch) return;
    const std::size_t numSettled = isSettled ? numSettled_ += numRecords : numSettled_.load();
    if (omp_get_thread_num() != 0) return;
    const std::size_t hundredth = records_.size / 100;
    if (numRecords < hundredth && numSettled < numTold_ + hundredth) return;
    numTold_ = std::max(numTold_, numSettled);
    data_.watch(static_cast<double>(numTold_) / static_cast<double>(records_.size));
}

template <class Work>
void Grower::forEachFeature(std::size_t n, std::size_t numRecords, Scratch* own, Work&& work) {
    if (own || n < 2 || scratches_.size() == 1 || n * numRecords < kMinCellsInParallel) {
        for (std::size_t i = 0; i < n; ++i) work(i, own ? *own : scratches_[0]);
        return;
    }
    ExceptionCarrier carrier;
#pragma omp parallel for schedule(dynamic) num_threads(static_cast <int>(scratches_.size()))
    for (std::size_t i = 0; i < n; ++i)
        carrier.run([&] { work(i, scratches_[static_cast<std::size_t>(omp_get_thread_num())]); });
    carrier.rethrow();
}

Tree Grower::grow() {
    Tree tree;
    tree.numClasses = records_.numClasses;
    tree.nodes.emplace_back();
    tree.classWeights.resize(numClasses_);
    summarize(records_, members_, tree.nodes[0], tree.classWeights.data());
    const OpenNode root{.end = static_cast<std::uint32_t>(records_.size),
                        .position = static_cast<std::uint64_t>(limits_.featureSelectionSeed)};
    if (!isSplittable(tree.nodes[0], 0)) return tree;
    const auto maxNumSplits = std::min<std::int64_t>(limits_.maxNumSplits, (limits_.maxNumNodes - 1) / 2);
    if (maxNumSplits < static_cast<std::int64_t>(records_.size) - 1)
        growBestFirst(tree, root, maxNumSplits);
    else
        growWhole(tree, root);
    return tree;
}

void Grower::growBestFirst(Tree& tree, const OpenNode& root, std::int64_t maxNumSplits) {
    std::vector<PendingSplit> pending;
    const auto consider = [&](OpenNode open) {
        tell(open.end - open.begin, false);
        Split split = findSplit(tree, open, nullptr);
        if (!split.exists()) return;
        pending.push_back({std::move(open), std::move(split)});
        std::push_heap(pending.begin(), pending.end(), LesserGain());
    };
    if (maxNumSplits > 0) consider(root);
    for (std::int64_t numSplits = 0; numSplits < maxNumSplits && !pending.empty();) {
        std::pop_heap(pending.begin(), pending.end(), LesserGain());
        PendingSplit next = std::move(pending.back());
        pending.pop_back();
        OpenNode children[2];
        applySplit(tree, next.open, next.split, nullptr, children);
        if (++numSplits == maxNumSplits) break;
        for (const OpenNode& child : children)
            if (isSplittable(tree.nodes[static_cast<std::size_t>(child.node)], child.level)) consider(child);
    }
}

/// Large nodes first, level by level, each level by all threads; then the subtrees below, each by one.
void Grower::growWhole(Tree& tree, const OpenNode& root) {
    if (scratches_.size() == 1 || records_.size * features_.size() < kMinCellsInParallel) {
        growDepthFirst(tree, root, scratches_[0]);
        return;
    }
    std::vector<OpenNode> deferred =
        growLargeNodes(tree, root, std::max<std::size_t>(64, records_.size / (4 * scratches_.size())));
    std::stable_sort(deferred.begin(), deferred.end(),
                     [](const OpenNode& a, const OpenNode& b) { return a.end - a.begin > b.end - b.begin; });
    std::vector<Tree> subtrees(deferred.size());
    ExceptionCarrier carrier;
#pragma omp parallel for schedule(dynamic) num_threads(static_cast <int>(scratches_.size()))
    for (std::size_t i = 0; i < deferred.size(); ++i)
        carrier.run([&] {
            OpenNode open = deferred[i];
            subtrees[i].numClasses = tree.numClasses;
            subtrees[i].nodes.push_back(tree.nodes[static_cast<std::size_t>(open.node)]);
            const double* classWeights = tree.classWeightsOf(open.node);
            subtrees[i].classWeights.assign(classWeights, classWeights + numClasses_);
            open.node = 0;
            growDepthFirst(subtrees[i], open, scratches_[static_cast<std::size_t>(omp_get_thread_num())]);
        });
    carrier.rethrow();
    for (std::size_t i = 0; i < deferred.size(); ++i) graft(tree, deferred[i].node, subtrees[i]);
}

/// Returns the nodes that are left. The threads wait for each other twice a level rather than twice a node:
/// where others use the machine too, waiting is what takes the time.
std::vector<OpenNode> Grower::growLargeNodes(Tree& tree, const OpenNode& root, std::size_t minNumRecords) {
    const std::size_t numFeatures = features_.size();
    std::vector<OpenNode> left, level{root};
    while (!level.empty()) {
        std::vector<Search> searches;
        for (OpenNode& open : level) {
            tell(open.end - open.begin, false);
            searches.push_back(beginSearch(tree, open));
        }
        const std::size_t numDrawn = searches[0].features.size();
        forEachFeature(level.size() * numDrawn, minNumRecords, nullptr, [&](std::size_t i, Scratch& scratch) {
            searchCandidate(searches[i / numDrawn], i % numDrawn, level[i / numDrawn], scratch);
        });
        std::vector<OpenNode> parents, children;  // two children a parent
        std::vector<Split> splits;
        for (std::size_t i = 0; i < level.size(); ++i) {
            Split split = chooseSplit(tree, level[i], searches[i], scratches_[0]);
            if (split.exists()) {
                parents.push_back(std::move(level[i]));
                splits.push_back(std::move(split));
            } else {
                tell(level[i].end - level[i].begin, true);
            }
        }
        children.resize(2 * parents.size());
        for (std::size_t i = 0; i < parents.size(); ++i) {
            addChildren(tree, parents[i], splits[i], &children[2 * i]);
            makeChildHistograms(tree, parents[i], &children[2 * i], nullptr);
        }
        forEachFeature(parents.size() * numFeatures, minNumRecords, nullptr,
                       [&](std::size_t i, Scratch& scratch) {
                           partList(tree, i % numFeatures, parents[i / numFeatures],
                                    &children[2 * (i / numFeatures)], scratch);
                       });
        level.clear();
        for (OpenNode& child : children) {
            const std::size_t numRecords = child.end - child.begin;
            if (!isSplittable(tree, child))
                tell(numRecords, true);
            else
                (numRecords < minNumRecords ? left : level).push_back(std::move(child));
        }
    }
    return left;
}

void Grower::growDepthFirst(Tree& tree, const OpenNode& root, Scratch& scratch) {
    std::vector<OpenNode> stack{root};
    while (!stack.empty()) {
        OpenNode open = std::move(stack.back());
        stack.pop_back();
        tell(open.end - open.begin, false);
        Split split = findSplit(tree, open, &scratch);
        if (!split.exists()) {
            tell(open.end - open.begin, true);
            continue;
        }
        OpenNode children[2];
        applySplit(tree, open, split, &scratch, children);
        for (const bool isLeft : {false, true}) {
            const OpenNode& child = children[isLeft ? 0 : 1];
            if (isSplittable(tree, child))
                stack.push_back(child);
            else
                tell(child.end - child.begin, true);
        }
    }
}

bool Grower::isSplittable(const Node& node, int level) const {
    return node.impurity > 0.0 && level < limits_.maxNumLevels &&
           node.numRecords >= 2 * std::int64_t{std::max(1, limits_.minNumRecordsInLeaves)};
}

/// A fresh draw of features without repetition, ascending.
std::vector<std::int32_t> Grower::drawFeatures(std::uint64_t position) const {
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

Split Grower::findSplit(const Tree& tree, OpenNode& open, Scratch* own) {
    Search search = beginSearch(tree, open);
    forEachFeature(search.features.size(), open.end - open.begin, own,
                   [&](std::size_t i, Scratch& scratch) { searchCandidate(search, i, open, scratch); });
    return chooseSplit(tree, open, search, own ? *own : scratches_[0]);
}

/// Refers to the tree, which must not grow before the split is chosen.
Search Grower::beginSearch(const Tree& tree, OpenNode& open) const {
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    Search search{.totals = {.numRecords = node.numRecords,
                             .weight = node.weight,
                             .mean = node.response,
                             .classWeights = tree.classWeightsOf(open.node)},
                  .features = drawFeatures(open.position),
                  .candidates = {},
                  .makesHistograms = !open.histograms && wantsHistograms(open.end - open.begin)};
    search.candidates.resize(search.features.size());
    if (search.makesHistograms)
        open.histograms = std::make_shared<std::vector<double>>(histogramBegins_.back(), 0.0);
    return search;
}

void Grower::searchCandidate(Search& search, std::size_t i, const OpenNode& open, Scratch& scratch) const {
    if (search.makesHistograms) addToHistogram(i, open, *open.histograms);
    search.candidates[i] =
        searchFeature(static_cast<std::size_t>(search.features[i]), open, search.totals, scratch);
    search.candidates[i].feature = search.features[i];
}

Split Grower::chooseSplit(const Tree& tree, const OpenNode& open, Search& search, Scratch& scratch) {
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

Candidate Grower::searchFeature(std::size_t feature, const OpenNode& open, const Totals& totals,
                                Scratch& scratch) const {
    const FeatureLists& lists = features_[feature];
    const std::size_t numRecords = open.end - open.begin;
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
double Grower::valueOf(std::uint32_t codeOrPosition, std::int32_t feature, const OpenNode& open) const {
    const FeatureLists& lists = features_[static_cast<std::size_t>(feature)];
    if (lists.form == FeatureLists::Form::NUMBERS) return lists.values[codeOrPosition] + 0.0;
    const TrainingFeature& cells = data_.features[static_cast<std::size_t>(feature)];
    const std::uint32_t record = lists.sorted[open.begin + codeOrPosition].record();
    return cells.numbers[cells.columnRow(prepared_.rowOf(record))] + 0.0;
}

/// Marks the side of each record of the node and parts its range of members; returns where the right begins.
std::uint32_t Grower::partRecords(const OpenNode& open, const Candidate& candidate, Scratch& scratch) {
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
void Grower::partMembers(const OpenNode& open, std::uint32_t numLeft, std::vector<SortedRecord>& scratch) {
    const std::uint32_t numRight = open.end - open.begin - numLeft;
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
double Grower::gainOf(const Node& node, const double* classWeights, const Split& split) const {
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

void Grower::applySplit(Tree& tree, const OpenNode& open, Split& split, Scratch* own, OpenNode children[2]) {
    addChildren(tree, open, split, children);
    if (!isSplittable(tree, children[0]) && !isSplittable(tree, children[1])) return;
    makeChildHistograms(tree, open, children, own);
    forEachFeature(features_.size(), open.end - open.begin, own, [&](std::size_t feature, Scratch& scratch) {
        partList(tree, feature, open, children, scratch);
    });
}

void Grower::addChildren(Tree& tree, const OpenNode& open, Split& split, OpenNode children[2]) const {
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

void Grower::makeChildHistograms(const Tree& tree, const OpenNode& open, OpenNode children[2], Scratch* own) {
    const std::size_t larger =
        children[0].end - children[0].begin < children[1].end - children[1].begin ? 1 : 0;
    if (isSplittable(tree, children[larger]))
        makeHistograms(open, children[1 - larger], children[larger], own);
}

/// Parts the sorted list of a feature as the records of a split node were.
void Grower::partList(const Tree& tree, std::size_t feature, const OpenNode& open, const OpenNode children[2],
                      Scratch& scratch) {
    FeatureLists& lists = features_[feature];
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    if (lists.form != FeatureLists::Form::SORTED || feature == static_cast<std::size_t>(node.feature)) return;
    part(std::span(lists.sorted).subspan(open.begin, open.end - open.begin), children[0].end - open.begin,
         goesLeft_, isSplittable(tree, children[0]), isSplittable(tree, children[1]), scratch.moved);
}

}  // namespace

Tree grow(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits) {
    return inLevelOrder(Grower(data, prepared, limits).grow());
}

}  // namespace Tessel::Engine::DT
