#include "engine/dt/growth.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "engine/dt/splitter.h"

namespace Tessel::Engine::DT {

namespace {

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

/// In turns, so that each thread of a crew begins with its share of the first ones.
std::vector<OpenNode> dealt(const std::vector<OpenNode>& nodes, std::size_t numShares) {
    std::vector<OpenNode> shares;
    for (std::size_t share = 0; share < numShares; ++share)
        for (std::size_t i = share; i < nodes.size(); i += numShares) shares.push_back(nodes[i]);
    return shares;
}

/// The order in which nodes are split.
class Grower {
 public:
    Grower(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits, const Node& root,
           GrowthMemory& memory, Crew& crew)
        : data_(data),
          prepared_(prepared),
          records_(prepared.records),
          limits_(limits),
          memory_(memory),
          numClasses_(static_cast<std::size_t>(prepared.records.numClasses)),
          splitter_(data, prepared, limits, root, memory, crew) {}
    Tree grow(const Node& root, std::vector<double> classWeights);

 private:
    void growBestFirst(Tree& tree, const OpenNode& root, std::int64_t maxNumSplits);
    void growWhole(Tree& tree, OpenNode root);
    std::vector<OpenNode> growLargeNodes(Tree& tree, const OpenNode& root, std::size_t minNumRecords);
    std::vector<Search> searchLevel(const Tree& tree, std::vector<OpenNode>& level,
                                    std::size_t minNumRecords);
    std::vector<OpenNode> splitLevel(Tree& tree, std::vector<OpenNode> level, std::vector<Search>& searches,
                                     std::size_t minNumRecords);
    Tree growBelow(const Tree& tree, OpenNode open, Scratch& scratch);
    Tree growAlone(const Tree& tree, const OpenNode& open);
    void growDepthFirst(Tree& tree, const OpenNode& root, Scratch& scratch);
    void answer(const Tree& tree, const OpenNode& leaf, std::uint32_t begin, std::uint32_t end);
    void settle(const Tree& tree, const OpenNode& leaf);
    void settleAndMark(const Tree& tree, std::span<const OpenNode> nodes, bool areMarked);
    void tell(std::size_t numRecords, bool isSettled);

    const TrainingData& data_;
    const PreparedRecords& prepared_;
    const Records& records_;
    const Limits limits_;
    GrowthMemory& memory_;
    const std::size_t numClasses_;
    Splitter splitter_;
    std::atomic<std::size_t> numSettled_{0};  // records in nodes that stay leaves
    const std::thread::id caller_ = std::this_thread::get_id();
    std::size_t numTold_ = 0;  // of these when the watch was told last
};

/// Writes what a leaf answers for some of its members.
void Grower::answer(const Tree& tree, const OpenNode& leaf, std::uint32_t begin, std::uint32_t end) {
    if (data_.fitted.empty()) return;
    const double response = tree.nodes[static_cast<std::size_t>(leaf.node)].response;
    for (const std::uint32_t member : splitter_.members(begin, end))
        data_.fitted[prepared_.rowOf(member)] = response;
}

/// A node stays a leaf.
void Grower::settle(const Tree& tree, const OpenNode& leaf) {
    answer(tree, leaf, leaf.begin, leaf.end);
    tell(leaf.size(), true);
}

/// Tells the watch of a node that is looked at or that stays a leaf: of large ones, and each time that
/// another hundredth of the records is settled.
void Grower::tell(std::size_t numRecords, bool isSettled) {
    if (!data_.watch) return;
    const std::size_t numSettled = isSettled ? numSettled_ += numRecords : numSettled_.load();
    if (std::this_thread::get_id() != caller_) return;
    const std::size_t hundredth = records_.size / 100;
    if (numRecords < hundredth && numSettled < numTold_ + hundredth) return;
    numTold_ = std::max(numTold_, numSettled);
    data_.watch(static_cast<double>(numTold_) / static_cast<double>(records_.size));
}

Tree Grower::grow(const Node& rootNode, std::vector<double> classWeights) {
    Tree tree;
    tree.numClasses = records_.numClasses;
    tree.nodes.push_back(rootNode);
    tree.classWeights = std::move(classWeights);
    const OpenNode root{.end = static_cast<std::uint32_t>(records_.size),
                        .position = static_cast<std::uint64_t>(limits_.featureSelectionSeed)};
    if (!splitter_.isSplittable(tree, root))
        settle(tree, root);
    else if (limits_.areBestFirst(records_.size))
        growBestFirst(tree, root, limits_.numSplits());
    else
        growWhole(tree, root);
    return tree;
}

void Grower::growBestFirst(Tree& tree, const OpenNode& root, std::int64_t maxNumSplits) {
    std::vector<PendingSplit> pending;
    const auto consider = [&](OpenNode open) {
        if (!splitter_.isSplittable(tree, open)) return settle(tree, open);
        tell(open.size(), false);
        Split split = splitter_.findSplit(tree, open, nullptr);
        if (!split.exists()) return settle(tree, open);
        pending.push_back({std::move(open), std::move(split)});
        std::push_heap(pending.begin(), pending.end(), LesserGain());
    };
    if (maxNumSplits > 0)
        consider(root);
    else
        settle(tree, root);
    for (std::int64_t numSplits = 0; numSplits < maxNumSplits && !pending.empty();) {
        std::pop_heap(pending.begin(), pending.end(), LesserGain());
        PendingSplit next = std::move(pending.back());
        pending.pop_back();
        OpenNode children[2];
        splitter_.applySplit(tree, next.open, next.split, nullptr, children);
        ++numSplits;
        for (const OpenNode& child : children) {
            if (numSplits < maxNumSplits)
                consider(child);
            else
                settle(tree, child);
        }
    }
    for (const PendingSplit& left : pending) settle(tree, left.open);
}

/// Large nodes first, level by level, each level by all threads; then the subtrees below, each by one.
void Grower::growWhole(Tree& tree, OpenNode root) {
    if (splitter_.usesBins() && !splitter_.isForHistograms(tree, root))
        splitter_.leaveBins(std::span(&root, 1));
    const bool isByOneThread =
        splitter_.crewSize() == 1 || records_.size * splitter_.numFeatures() < kMinCellsOfThreads;
    if (isByOneThread && !splitter_.usesBins()) {
        growDepthFirst(tree, root, memory_.scratches[0]);
        return;
    }
    std::vector<OpenNode> deferred =
        growLargeNodes(tree, root, std::max<std::size_t>(64, records_.size / (4 * splitter_.crewSize())));
    std::stable_sort(deferred.begin(), deferred.end(),
                     [](const OpenNode& a, const OpenNode& b) { return a.size() > b.size(); });
    if (deferred.empty()) return;
    deferred = dealt(deferred, splitter_.crewSize());
    // Few records are sorted sooner than found among all.
    constexpr std::size_t kMinShareToTake = 8;
    std::size_t numDeferred = 0;
    for (const OpenNode& open : deferred) numDeferred += open.size();
    const bool areSorted = splitter_.usesBins() && numDeferred < records_.size / kMinShareToTake;
    if (splitter_.usesBins() && !areSorted) splitter_.leaveBins(deferred);
    std::vector<Tree> subtrees(deferred.size());
    const std::size_t numCells = numDeferred * splitter_.numFeatures();
    splitter_.forEach(
        deferred.size(), numCells / deferred.size(), nullptr, [&](std::size_t i, Scratch& scratch) {
            subtrees[i] = areSorted ? growAlone(tree, deferred[i]) : growBelow(tree, deferred[i], scratch);
        });
    for (std::size_t i = 0; i < deferred.size(); ++i) graft(tree, deferred[i].node, subtrees[i]);
}

/// The tree below a node by the lists that are there.
Tree Grower::growBelow(const Tree& tree, OpenNode open, Scratch& scratch) {
    Tree subtree;
    subtree.numClasses = tree.numClasses;
    subtree.nodes.push_back(tree.nodes[static_cast<std::size_t>(open.node)]);
    const double* classWeights = tree.classWeightsOf(open.node);
    subtree.classWeights.assign(classWeights, classWeights + numClasses_);
    open.node = 0;
    growDepthFirst(subtree, open, scratch);
    return subtree;
}

/// The tree below a node of records that are sorted for it. Each row is one record.
Tree Grower::growAlone(const Tree& tree, const OpenNode& open) {
    const std::span<const std::uint32_t> members = splitter_.membersOf(open);
    PreparedRecords own;
    own.tableRows.assign(members.begin(), members.end());
    own.records.size = members.size();
    own.targets.reserve(members.size());
    for (const std::uint32_t member : members) own.targets.push_back(records_.targets[member]);
    own.records.targets = own.targets;
    TrainingData data = data_;
    data.sharedColumns = {};
    data.watch = {};
    Limits limits = limits_;
    if (limits.maxNumLevels != Limits::kNone) limits.maxNumLevels -= open.level;
    GrowthMemory memory;
    Crew alone(1);
    const Node& root = tree.nodes[static_cast<std::size_t>(open.node)];
    Tree subtree = Grower(data, own, limits, root, memory, alone).grow(root, {});
    tell(open.size(), true);
    return subtree;
}

/// Returns the nodes that are left. All nodes of a level are done in the same few loops, in which threads
/// find more to share than in those of one node.
std::vector<OpenNode> Grower::growLargeNodes(Tree& tree, const OpenNode& root, std::size_t minNumRecords) {
    std::vector<OpenNode> left, level{root};
    while (!level.empty()) {
        std::vector<Search> searches = searchLevel(tree, level, minNumRecords);
        std::vector<OpenNode> children = splitLevel(tree, std::move(level), searches, minNumRecords);
        level.clear();
        for (OpenNode& child : children) {
            const bool isLarge =
                splitter_.usesBins() ? child.histograms != nullptr : child.size() >= minNumRecords;
            child.mark = BinSearch::kNoMark;
            child.isLeaf = child.isLeaf || !splitter_.isSplittable(tree, child);
            if (child.isLeaf) continue;
            if (isLarge) child.mark = static_cast<std::uint8_t>(level.size());
            (isLarge ? level : left).push_back(child);
        }
        settleAndMark(tree, children, splitter_.usesBins() && !level.empty());
    }
    return left;
}

/// What the records learn of the nodes that they came to.
void Grower::settleAndMark(const Tree& tree, std::span<const OpenNode> nodes, bool areMarked) {
    std::vector<Stretch> stretches;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (areMarked || nodes[i].isLeaf)
            Members::appendStretches(i, nodes[i].begin, nodes[i].end, stretches);
    splitter_.forEach(stretches, nullptr, [&](const Stretch& stretch) {
        const OpenNode& node = nodes[stretch.node];
        if (node.isLeaf) answer(tree, node, stretch.begin, stretch.end);
        if (areMarked) splitter_.mark(stretch.begin, stretch.end, node.mark);
    });
    for (const OpenNode& node : nodes)
        if (node.isLeaf) tell(node.size(), true);
}

std::vector<Search> Grower::searchLevel(const Tree& tree, std::vector<OpenNode>& level,
                                        std::size_t minNumRecords) {
    std::vector<Search> searches;
    for (OpenNode& open : level) {
        tell(open.size(), false);
        searches.push_back(splitter_.beginSearch(tree, open, nullptr));
    }
    // Of one feature all nodes, as a thread that has read a column finds it near; small nodes several at
    // once.
    constexpr std::size_t kMaxNumGroups = 4;
    const std::size_t numNodes = level.size(), numGroups = std::min(numNodes, kMaxNumGroups);
    const auto forEachSearch = [&](auto&& work) {
        splitter_.forEach(searches[0].features.size() * numGroups, minNumRecords, nullptr,
                          [&](std::size_t i, Scratch& scratch) {
                              for (std::size_t node = i % numGroups; node < numNodes; node += numGroups)
                                  work(node, i / numGroups, scratch);
                          });
    };
    forEachSearch([&](std::size_t node, std::size_t feature, Scratch& scratch) {
        splitter_.searchCandidate(searches[node], feature, level[node], scratch);
    });
    if (!splitter_.usesBins()) return searches;
    std::vector<std::atomic<double>> bestScores(level.size());
    for (std::size_t i = 0; i < level.size(); ++i) bestScores[i] = searches[i].bestScore();
    forEachSearch([&](std::size_t node, std::size_t feature, Scratch& scratch) {
        splitter_.searchInsideBins(searches[node], feature, level[node], bestScores[node], scratch);
    });
    return searches;
}

/// Returns the children, two neighbours by each node that is split, and behind them the nodes that are not.
std::vector<OpenNode> Grower::splitLevel(Tree& tree, std::vector<OpenNode> level,
                                         std::vector<Search>& searches, std::size_t minNumRecords) {
    std::vector<Split> found(level.size());
    splitter_.chooseSplits(tree, level, searches, found, nullptr);
    std::vector<OpenNode> parents, leaves;
    std::vector<Split> splits;
    for (std::size_t i = 0; i < level.size(); ++i) {
        if (found[i].exists()) {
            parents.push_back(std::move(level[i]));
            splits.push_back(std::move(found[i]));
        } else {
            leaves.push_back(std::move(level[i]));
            leaves.back().isLeaf = true;
        }
    }
    std::vector<OpenNode> children(2 * parents.size());
    for (std::size_t i = 0; i < parents.size(); ++i)
        splitter_.addChildren(tree, parents[i], splits[i], &children[2 * i]);
    splitter_.makeChildHistograms(tree, parents, children, nullptr);
    const std::size_t numParents = parents.size();
    splitter_.forEach(splitter_.usesBins() ? 0 : numParents * splitter_.numFeatures(), minNumRecords, nullptr,
                      [&](std::size_t i, Scratch& scratch) {
                          splitter_.partList(tree, i / numParents, parents[i % numParents],
                                             &children[2 * (i % numParents)], scratch);
                      });
    children.insert(children.end(), leaves.begin(), leaves.end());
    return children;
}

void Grower::growDepthFirst(Tree& tree, const OpenNode& root, Scratch& scratch) {
    std::vector<OpenNode> stack{root};
    while (!stack.empty()) {
        OpenNode open = std::move(stack.back());
        stack.pop_back();
        tell(open.size(), false);
        Split split = splitter_.findSplit(tree, open, &scratch);
        if (!split.exists()) {
            settle(tree, open);
            continue;
        }
        OpenNode children[2];
        splitter_.applySplit(tree, open, split, &scratch, children);
        for (const bool isLeft : {false, true}) {
            const OpenNode& child = children[isLeft ? 0 : 1];
            if (splitter_.isSplittable(tree, child))
                stack.push_back(child);
            else
                settle(tree, child);
        }
    }
}

}  // namespace

Tree grow(const TrainingData& data, const PreparedRecords& prepared, const Limits& limits, Crew& crew) {
    auto memory = data.memories ? data.memories->take() : std::make_unique<GrowthMemory>();
    Node root;
    std::vector<double> classWeights(static_cast<std::size_t>(prepared.records.numClasses));
    summarizeAll(prepared.records, crew, root, classWeights.data());
    // The grower is gone before another one may take its memory.
    Tree tree =
        inLevelOrder(Grower(data, prepared, limits, root, *memory, crew).grow(root, std::move(classWeights)));
    if (data.memories) data.memories->giveBack(std::move(memory));
    return tree;
}

}  // namespace Tessel::Engine::DT
