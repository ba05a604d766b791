#include "engine/dt/splitter.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "data/random.h"

namespace Tessel::Engine::DT {

namespace {

std::uint64_t childPosition(std::uint64_t parent, bool isRight) {
    return Random(parent, isRight ? 2 : 1).nextUInt64();
}

}  // namespace

Splitter::Splitter(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits,
                   const Node& root, GrowthMemory& memory, Crew& crew)
    : data_(data),
      prepared_(prepared),
      records_(prepared.records),
      limits_(limits),
      numClasses_(static_cast<std::size_t>(prepared.records.numClasses)),
      search_(SplitSearch::make(records_, std::max(1, limits.minNumRecordsInLeaves))),
      features_(data.features.size()),
      memory_(memory),
      members_(memory.members),
      goesLeft_(memory.goesLeft),
      scratches_(memory.scratches),
      crew_(crew) {
    members_.reset(records_.size, crew);
    goesLeft_.resize(records_.size);
    scratches_.resize(static_cast<std::size_t>(crew.size()));
    bins_ = makeBinSearch(root);
    makeAllLists();
    histograms_ = std::make_unique<HistogramMaker>(records_, features_, bins_.get(), searchesAllFeatures(),
                                                   crewSize(), memory.histograms);
}

/// The lists are memory for those of the next tree.
Splitter::~Splitter() {
    for (std::size_t i = 0; i < features_.size(); ++i) memory_.lists[i] = std::move(features_[i].sorted);
}

bool Splitter::searchesAllFeatures() const {
    return static_cast<std::size_t>(std::max(1, limits_.numSelectedFeatures)) >= features_.size();
}

/// For regression on all rows, where nodes are split level by level.
std::unique_ptr<BinSearch> Splitter::makeBinSearch(const Node& root) const {
    const auto& columns = data_.sharedColumns;
    const bool haveBins = std::any_of(columns.begin(), columns.end(),
                                      [](const SharedColumn& column) { return column.numBins() > 0; });
    const bool haveAllBins = std::all_of(columns.begin(), columns.end(), [](const SharedColumn& column) {
        return column.rows.empty() || column.numBins() > 0;
    });
    if (!haveBins || !haveAllBins || numClasses_ > 0 || !records_.isUnit() || !prepared_.tableRows.empty() ||
        !searchesAllFeatures() || limits_.areBestFirst(records_.size))
        return nullptr;
    return std::make_unique<BinSearch>(data_.sharedColumns, records_.targets, root.response,
                                       std::max(1, limits_.minNumRecordsInLeaves), memory_.binnedRecords,
                                       crew_);
}

void Splitter::makeAllLists() {
    memory_.lists.resize(features_.size());
    std::vector<std::uint32_t>& recordOf = memory_.recordOf;
    if (data_.sharedColumns.empty() || prepared_.tableRows.empty()) {
        recordOf.clear();
    } else {
        recordOf.resize(static_cast<std::size_t>(data_.numRows));
        forEachStretch(crew_, recordOf.size(), [&](std::size_t begin, std::size_t end) {
            const std::vector<std::uint32_t>& rows = prepared_.tableRows;
            auto record = std::lower_bound(rows.begin(), rows.end(), begin);
            for (std::size_t row = begin; row < end; ++row)
                recordOf[row] = record != rows.end() && *record == row
                                    ? static_cast<std::uint32_t>(record++ - rows.begin())
                                    : kNoRecord;
        });
    }
    forEach(features_.size(), records_.size, nullptr, [&](std::size_t i, Scratch&) {
        if (bins_ && bins_->numBins(i) > 0)
            features_[i].form = FeatureLists::Form::SHARED;
        else if (data_.sharedColumns.empty())
            features_[i] = makeLists(data_.features[i], prepared_, data_.keepRanks);
        else
            features_[i] = takeLists(data_.features[i], prepared_, data_.sharedColumns[i], recordOf,
                                     std::move(memory_.lists[i]));
    });
}

void Splitter::leaveBins(std::span<OpenNode> nodes) {
    bins_->clearMarks();
    std::vector<std::uint32_t> begins(BinSearch::kNoMark + 1, kNoRecord);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].mark = static_cast<std::uint8_t>(i);
        mark(nodes[i].begin, nodes[i].end, nodes[i].mark);
        begins[nodes[i].mark] = nodes[i].begin;
    }
    forEach(nodes.empty() ? 0 : features_.size(), records_.size, nullptr, [&](std::size_t i, Scratch&) {
        if (features_[i].form == FeatureLists::Form::SHARED)
            features_[i] = takeLists(data_.features[i], prepared_, data_.sharedColumns[i], bins_->marks(),
                                     begins, std::move(memory_.lists[i]));
    });
    bins_.reset();
    histograms_ = std::make_unique<HistogramMaker>(records_, features_, nullptr, searchesAllFeatures(),
                                                   crewSize(), memory_.histograms);
}

bool Splitter::isForHistograms(const Tree& tree, const OpenNode& open) const {
    if (!histograms_->isFor(open.size(), open.level)) return false;
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    return !bins_ || bins_->isFineFor(node.impurity / node.weight);
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
    Search search = beginSearch(tree, open, own);
    forEach(search.features.size(), open.size(), own,
            [&](std::size_t i, Scratch& scratch) { searchCandidate(search, i, open, scratch); });
    Split split;
    chooseSplits(tree, std::span(&open, 1), std::span(&search, 1), std::span(&split, 1), own);
    return split;
}

Search Splitter::beginSearch(const Tree& tree, OpenNode& open, Scratch* own) {
    if (!open.histograms && isForHistograms(tree, open)) {
        open.histograms = histograms_->make();
        forEach(histograms_->numParts(), open.size(), own, [&](std::size_t part, Scratch&) {
            histograms_->addUp(part, membersOf(open), *open.histograms);
        });
    }
    const Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
    Search search{.totals = {.numRecords = node.numRecords,
                             .weight = node.weight,
                             .mean = node.response,
                             .classWeights = tree.classWeightsOf(open.node)},
                  .features = drawFeatures(open.position),
                  .candidates = {}};
    search.candidates.resize(search.features.size());
    return search;
}

void Splitter::searchCandidate(Search& search, std::size_t i, const OpenNode& open, Scratch& scratch) const {
    search.candidates[i] =
        searchFeature(static_cast<std::size_t>(search.features[i]), open, search.totals, scratch);
    search.candidates[i].feature = search.features[i];
}

double Search::bestScore() const {
    double best = -1.0;
    for (const Candidate& candidate : candidates) best = std::max(best, candidate.score);
    return best;
}

void Splitter::searchInsideBins(Search& search, std::size_t i, const OpenNode& open,
                                std::atomic<double>& bestScore, Scratch& scratch) const {
    const auto feature = static_cast<std::size_t>(search.features[i]);
    if (features_[feature].form != FeatureLists::Form::SHARED) return;
    Candidate& candidate = search.candidates[i];
    double best = bestScore;
    bins_->searchInside(feature, binned(feature, open), best, scratch, candidate);
    while (candidate.score > best && !bestScore.compare_exchange_weak(best, candidate.score)) {
    }
}

void Splitter::chooseSplits(const Tree& tree, std::span<const OpenNode> nodes, std::span<Search> searches,
                            std::span<Split> splits, Scratch* own) {
    std::vector<Stretch>& stretches = own ? own->stretches : memory_.stretches;
    stretches.clear();
    bool haveLists = false;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        chooseCandidate(nodes[i], searches[i], splits[i]);
        splits[i].firstStretch = stretches.size();
        if (!splits[i].candidate.exists()) continue;
        Members::appendStretches(i, nodes[i].begin, nodes[i].end, stretches);
        splits[i].numStretches = stretches.size() - splits[i].firstStretch;
        haveLists = haveLists || listsOf(splits[i]).form == FeatureLists::Form::SORTED;
    }
    const std::span<Stretch> all(stretches);
    forEach(haveLists ? all : std::span<Stretch>(), own, [&](const Stretch& stretch) {
        if (listsOf(splits[stretch.node]).form == FeatureLists::Form::SORTED)
            markSides(nodes[stretch.node], splits[stretch.node].candidate, stretch);
    });
    forEach(all, own,
            [&](Stretch& stretch) { partStretch(searches[stretch.node], splits[stretch.node], stretch); });
    std::size_t numParted = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!splits[i].candidate.exists()) continue;
        splits[i].middle = Members::join(all.subspan(splits[i].firstStretch, splits[i].numStretches));
        numParted += nodes[i].size();
    }
    forEach(all, own, [&](const Stretch& stretch) { members_.place(stretch); });
    forEach(nodes.size(), numParted / nodes.size(), own, [&](std::size_t i, Scratch&) {
        Split& split = splits[i];
        if (split.candidate.exists())
            measureChildren(tree.nodes[static_cast<std::size_t>(nodes[i].node)], nodes[i], searches[i].totals,
                            all.subspan(split.firstStretch, split.numStretches), split);
    });
}

/// The best of all features, and how it tells the sides of records.
void Splitter::chooseCandidate(const OpenNode& open, Search& search, Split& split) const {
    for (Candidate& candidate : search.candidates)
        if (candidate.score > split.candidate.score) split.candidate = std::move(candidate);
    const Candidate& best = split.candidate;
    if (!best.exists()) return;
    if (best.leftCategories.empty()) split.threshold = thresholdOf(best, open);
    const FeatureLists& lists = listsOf(split);
    if (lists.codes.empty()) return;
    split.codeGoesLeft.assign(std::size_t{lists.numCodes} + 1, 0);
    split.codeGoesLeft[lists.numCodes] = 1;
    if (lists.form == FeatureLists::Form::NUMBERS)
        std::fill_n(split.codeGoesLeft.begin(), best.lower + 1, std::uint8_t{1});
    for (const std::int32_t category : best.leftCategories)
        split.codeGoesLeft[static_cast<std::size_t>(category)] = 1;
}

/// Looks at both sides of a node that was parted.
void Splitter::measureChildren(const Node& node, const OpenNode& open, const Totals& totals,
                               std::span<const Stretch> stretches, Split& split) {
    split.classWeights.resize(2 * numClasses_);
    const auto left = members_.range(open.begin, split.middle);
    const auto right = members_.range(split.middle, open.end);
    if (areTargetsSummed()) {
        std::array<TargetSums, 2> sums;
        for (const Stretch& stretch : stretches)
            for (std::size_t side = 0; side < 2; ++side) sums[side] += stretch.sums[side];
        summarize(records_, left, sums[0], totals.mean, split.left);
        summarize(records_, right, sums[1], totals.mean, split.right);
    } else {
        summarizeChildren(records_, left, right, totals, split.left, split.right, split.classWeights.data());
    }
    split.gain = gainOf(node, totals.classWeights, split);
}

Candidate Splitter::searchFeature(std::size_t feature, const OpenNode& open, const Totals& totals,
                                  Scratch& scratch) const {
    const FeatureLists& lists = features_[feature];
    if (lists.form == FeatureLists::Form::SHARED) return bins_->searchEnds(feature, binned(feature, open));
    if (lists.form == FeatureLists::Form::SORTED)
        return search_->searchSorted(std::span(lists.sorted).subspan(open.begin, open.size()), totals,
                                     scratch);
    const double* bins = open.histograms ? histograms_->classes(feature, *open.histograms) : nullptr;
    return lists.form == FeatureLists::Form::NUMBERS
               ? search_->searchNumbers(membersOf(open), lists.binned(bins), totals, scratch)
               : search_->searchCategories(membersOf(open), lists.binned(bins), totals, scratch);
}

/// Between the two values that a candidate parts; of 0 rather than -0.
double Splitter::thresholdOf(const Candidate& candidate, const OpenNode& open) const {
    const auto feature = static_cast<std::size_t>(candidate.feature);
    const FeatureLists& lists = features_[feature];
    if (lists.form == FeatureLists::Form::NUMBERS)
        return thresholdBetween(lists.values[candidate.lower] + 0.0, lists.values[candidate.upper] + 0.0);
    const TrainingFeature& cells = data_.features[feature];
    const auto numberOf = [&](std::uint32_t record) {
        return cells.numbers[cells.columnRow(prepared_.rowOf(record))] + 0.0;
    };
    if (lists.form == FeatureLists::Form::SHARED)
        return thresholdBetween(numberOf(bins_->recordBefore(feature, candidate.lower, open.mark)),
                                numberOf(bins_->recordAfter(feature, candidate.upper, open.mark)));
    return thresholdBetween(numberOf(lists.sorted[open.begin + candidate.lower].record()),
                            numberOf(lists.sorted[open.begin + candidate.upper].record()));
}

/// Marks the sides of records in a stretch of the sorted list.
void Splitter::markSides(const OpenNode& open, const Candidate& candidate, const Stretch& stretch) {
    const FeatureLists& lists = features_[static_cast<std::size_t>(candidate.feature)];
    const std::uint32_t middle = open.begin + candidate.lower + 1;
    for (std::uint32_t i = stretch.begin; i < stretch.end; ++i)
        goesLeft_[lists.sorted[i].record()] = i < middle;
}

void Splitter::partStretch(const Search& search, const Split& split, Stretch& stretch) {
    const auto feature = static_cast<std::size_t>(split.candidate.feature);
    const FeatureLists& lists = listsOf(split);
    if (lists.form == FeatureLists::Form::SHARED) {
        // The bin tells, but for records of the one where the right side begins.
        const SharedColumn& column = data_.sharedColumns[feature];
        const std::uint16_t* const codes = column.codes.data();
        const std::uint16_t bin = codes[column.rows[split.candidate.upper].record()];
        members_.part(stretch, [&, codes, bin](std::uint32_t member) {
            if (codes[member] == bin) [[unlikely]] {
                const TrainingFeature& cells = data_.features[feature];
                return !(cells.numbers[cells.columnRow(member)] >= split.threshold);
            }
            return codes[member] < bin;
        });
    } else if (lists.form == FeatureLists::Form::SORTED) {
        members_.part(stretch, [&](std::uint32_t member) { return goesLeft_[member]; });
    } else {
        members_.part(stretch, [&](std::uint32_t member) {
            return goesLeft_[member] = split.codeGoesLeft[lists.codes[member]];
        });
    }
    if (areTargetsSummed()) members_.addUp(stretch, records_.targets, search.totals.mean);
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
    makeChildHistograms(tree, std::span(&open, 1), std::span(children, 2), own);
    forEach(features_.size(), open.size(), own,
            [&](std::size_t feature, Scratch& scratch) { partList(tree, feature, open, children, scratch); });
}

void Splitter::addChildren(Tree& tree, const OpenNode& open, Split& split, OpenNode children[2]) const {
    const auto left = static_cast<std::int32_t>(tree.nodes.size());
    const FeatureLists& splitLists = listsOf(split);
    {
        Node& node = tree.nodes[static_cast<std::size_t>(open.node)];
        node.left = left;
        node.feature = split.candidate.feature;
        node.gain = split.gain;
        if (splitLists.form == FeatureLists::Form::CATEGORIES) {
            node.categorySet = static_cast<std::int32_t>(tree.categorySets.size());
            tree.categorySets.push_back(std::move(split.candidate.leftCategories));
        } else {
            node.threshold = split.threshold;
        }
    }
    split.left.parent = split.right.parent = open.node;
    tree.nodes.push_back(split.left);
    tree.nodes.push_back(split.right);
    tree.classWeights.insert(tree.classWeights.end(), split.classWeights.begin(), split.classWeights.end());

    children[0] = {.node = left,
                   .begin = open.begin,
                   .end = split.middle,
                   .level = open.level + 1,
                   .position = childPosition(open.position, false)};
    children[1] = {.node = left + 1,
                   .begin = split.middle,
                   .end = open.end,
                   .level = open.level + 1,
                   .position = childPosition(open.position, true)};
}

/// The histograms of a node become those of its larger child.
void Splitter::makeChildHistograms(const Tree& tree, std::span<const OpenNode> parents,
                                   std::span<OpenNode> children, Scratch* own) {
    struct Task {
        const OpenNode& smaller;
        std::shared_ptr<Histograms> ofSmaller, ofLarger;
    };
    std::vector<Task> tasks;
    std::size_t numRecords = 0;
    for (std::size_t i = 0; i < parents.size(); ++i) {
        const bool isLeftSmaller = children[2 * i].size() < children[2 * i + 1].size();
        OpenNode& smaller = children[2 * i + (isLeftSmaller ? 0 : 1)];
        OpenNode& larger = children[2 * i + (isLeftSmaller ? 1 : 0)];
        if (!parents[i].histograms || !isSplittable(tree, larger) || !isForHistograms(tree, larger)) continue;
        tasks.push_back({smaller, histograms_->make(), parents[i].histograms});
        larger.histograms = tasks.back().ofLarger;
        if (isForHistograms(tree, smaller)) smaller.histograms = tasks.back().ofSmaller;
        numRecords += smaller.size();
    }
    if (tasks.empty()) return;
    const std::size_t numParts = histograms_->numParts();
    forEach(tasks.size() * numParts, numRecords / tasks.size(), own, [&](std::size_t i, Scratch&) {
        const Task& task = tasks[i % tasks.size()];
        const std::size_t part = i / tasks.size();
        histograms_->addUp(part, membersOf(task.smaller), *task.ofSmaller);
        histograms_->subtract(part, *task.ofSmaller, *task.ofLarger);
    });
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
