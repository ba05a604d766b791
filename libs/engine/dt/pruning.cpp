#include "engine/dt/pruning.h"

#include <algorithm>
#include <limits>

namespace Tessel::Engine::DT {

namespace {

/// A cut that happens at some complexity: what it adds to the error and takes from the leaves.
struct Cut {
    double complexity;
    double addedError;
    std::int64_t removedLeaves;

    bool operator<(const Cut& other) const { return complexity < other.complexity; }
};

using Cuts = std::vector<Cut>;  // a heap, the last cut to happen on top

/// Joins two heaps; each cut moves into a heap at least twice as large, so O(log) times in all.
Cuts join(Cuts a, Cuts b) {
    if (a.size() < b.size()) a.swap(b);
    for (const Cut& cut : b) {
        a.push_back(cut);
        std::push_heap(a.begin(), a.end());
    }
    return a;
}

/// By node the complexity from which on it pays to end the tree there, whatever happens above.
///
/// Below a node the best cost as a function of the complexity is concave and made of lines; its breakpoints
/// are the cuts of the subtrees. The node ends where its own line, error + complexity, gets below. From the
/// last cut backwards: while the lines meet before a cut happens, that cut never does.
std::vector<double> endingComplexities(const Tree& tree) {
    const std::size_t numNodes = tree.nodes.size();
    std::vector<double> ends(numNodes, 0.0);
    std::vector<Cuts> cuts(numNodes);
    for (std::size_t i = numNodes; i-- > 0;) {  // children come before their parents
        const Node& node = tree.nodes[i];
        if (node.isLeaf()) continue;
        const auto left = static_cast<std::size_t>(node.left);
        cuts[i] = join(std::move(cuts[left]), std::move(cuts[left + 1]));
        double error = tree.nodes[left].error + tree.nodes[left + 1].error;
        std::int64_t numLeaves = 2;
        const auto meeting = [&] { return (node.error - error) / static_cast<double>(numLeaves - 1); };
        while (!cuts[i].empty() && meeting() <= cuts[i].front().complexity) {
            error -= cuts[i].front().addedError;
            numLeaves += cuts[i].front().removedLeaves;
            std::pop_heap(cuts[i].begin(), cuts[i].end());
            cuts[i].pop_back();
        }
        ends[i] = std::max(0.0, meeting());
        cuts[i].push_back({ends[i], node.error - error, numLeaves - 1});
        std::push_heap(cuts[i].begin(), cuts[i].end());
    }
    return ends;
}

}  // namespace

std::vector<std::uint8_t> PruningSequence::cutsOf(std::int32_t step) const {
    std::vector<std::uint8_t> cuts(endsFrom.size());
    std::transform(endsFrom.begin(), endsFrom.end(), cuts.begin(),
                   [step](std::int32_t from) { return static_cast<std::uint8_t>(from <= step); });
    return cuts;
}

PruningSequence pruningSequence(const Tree& tree) {
    const std::vector<double> ends = endingComplexities(tree);
    // Nodes that end before all nodes above them.
    std::vector<double> endAbove(tree.nodes.size(), std::numeric_limits<double>::infinity());
    std::vector<double> complexities;
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const Node& node = tree.nodes[i];
        if (node.isLeaf()) continue;
        if (ends[i] < endAbove[i]) complexities.push_back(ends[i]);
        const auto left = static_cast<std::size_t>(node.left);
        endAbove[left] = endAbove[left + 1] = std::min(ends[i], endAbove[i]);
    }
    std::sort(complexities.begin(), complexities.end());
    complexities.erase(std::unique(complexities.begin(), complexities.end()), complexities.end());

    PruningSequence sequence;
    sequence.steps.resize(complexities.size() + 1);
    for (std::size_t step = 0; step < complexities.size(); ++step)
        sequence.steps[step + 1].complexity = complexities[step] / tree.nodes[0].weight;
    sequence.endsFrom.assign(tree.nodes.size(), 0);
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        if (tree.nodes[i].isLeaf()) continue;
        const auto found = std::lower_bound(complexities.begin(), complexities.end(), ends[i]);
        sequence.endsFrom[i] = static_cast<std::int32_t>(
            ends[i] < endAbove[i] ? found - complexities.begin() + 1
                                  : static_cast<std::ptrdiff_t>(sequence.steps.size()));
    }

    std::vector<double> errors(tree.nodes.size()), ones(tree.nodes.size(), 1.0);
    for (std::size_t i = 0; i < errors.size(); ++i) errors[i] = tree.nodes[i].error;
    const std::vector<double> trainingErrors = sumOverLeaves(tree, sequence, errors);
    const std::vector<double> numLeaves = sumOverLeaves(tree, sequence, ones);
    for (std::size_t step = 0; step < sequence.steps.size(); ++step) {
        sequence.steps[step].trainingError = trainingErrors[step] / tree.nodes[0].weight;
        sequence.steps[step].numDecisionNodes = static_cast<std::int32_t>(numLeaves[step]) - 1;
    }
    return sequence;
}

std::vector<double> sumOverLeaves(const Tree& tree, const PruningSequence& sequence,
                                  const std::vector<double>& values) {
    // A node is a leaf from its own step until the tree ends above it.
    const auto numSteps = static_cast<std::int32_t>(sequence.steps.size());
    std::vector<std::int32_t> endAbove(tree.nodes.size(), numSteps);
    std::vector<double> joining(sequence.steps.size() + 1, 0.0), leaving(sequence.steps.size() + 1, 0.0);
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const std::int32_t from = sequence.endsFrom[i], until = endAbove[i];
        if (from < until) {
            joining[static_cast<std::size_t>(from)] += values[i];
            leaving[static_cast<std::size_t>(until)] += values[i];
        }
        if (tree.nodes[i].isLeaf()) continue;
        const auto left = static_cast<std::size_t>(tree.nodes[i].left);
        endAbove[left] = endAbove[left + 1] = std::min(from, until);
    }
    std::vector<double> sums(sequence.steps.size(), 0.0);
    double sum = 0.0;
    for (std::size_t step = 0; step < sums.size(); ++step) sums[step] = sum += joining[step] - leaving[step];
    return sums;
}

}  // namespace Tessel::Engine::DT
