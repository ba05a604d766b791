#include "engine/dt/tree.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include <tessel/data/errors.h>

#include "engine/dt/records.h"

namespace Tessel::Engine::DT {

Tree inLevelOrder(const Tree& tree) {
    // The new order is the queue of a walk by levels; children join it as a pair.
    std::vector<std::int32_t> order{0};
    order.reserve(tree.nodes.size());
    Tree result;
    result.numClasses = tree.numClasses;
    result.weightExponent = tree.weightExponent;
    result.targetExponent = tree.targetExponent;
    result.nodes.reserve(tree.nodes.size());
    result.categorySets.reserve(tree.categorySets.size());
    result.classWeights.reserve(tree.classWeights.size());
    std::vector<std::int32_t> parents{-1};
    parents.reserve(tree.nodes.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        Node node = tree.nodes[static_cast<std::size_t>(order[i])];
        const double* classWeights = tree.classWeightsOf(order[i]);
        result.classWeights.insert(result.classWeights.end(), classWeights, classWeights + tree.numClasses);
        node.parent = parents[i];
        if (!node.isLeaf()) {
            order.push_back(node.left);
            order.push_back(node.right());
            node.left = static_cast<std::int32_t>(order.size() - 2);
            parents.insert(parents.end(), 2, static_cast<std::int32_t>(i));
            if (node.categorySet >= 0) {
                result.categorySets.push_back(tree.categorySets[static_cast<std::size_t>(node.categorySet)]);
                node.categorySet = static_cast<std::int32_t>(result.categorySets.size() - 1);
            }
        }
        result.nodes.push_back(node);
    }
    return result;
}

void graft(Tree& tree, std::int32_t leaf, Tree& subtree) {
    // Node i >= 1 of the subtree becomes node shift + i; its root takes the place of the leaf.
    const auto shift = static_cast<std::int32_t>(tree.nodes.size()) - 1;
    const auto setShift = static_cast<std::int32_t>(tree.categorySets.size());
    for (std::size_t i = 0; i < subtree.nodes.size(); ++i) {
        Node node = subtree.nodes[i];
        if (node.left >= 0) node.left += shift;
        if (node.categorySet >= 0) node.categorySet += setShift;
        if (i == 0) {
            node.parent = tree.nodes[static_cast<std::size_t>(leaf)].parent;
            tree.nodes[static_cast<std::size_t>(leaf)] = node;
        } else {
            node.parent = node.parent == 0 ? leaf : node.parent + shift;
            tree.nodes.push_back(node);
        }
    }
    for (std::vector<std::int32_t>& set : subtree.categorySets) tree.categorySets.push_back(std::move(set));
    tree.classWeights.insert(tree.classWeights.end(),
                             subtree.classWeights.begin() + static_cast<std::ptrdiff_t>(tree.numClasses),
                             subtree.classWeights.end());
}

void connect(Tree& tree, int numFeatures) {
    const auto require = [](bool holds, const char* rule) {
        if (!holds) throw ConstraintViolation("decision tree", rule);
    };
    const std::size_t numNodes = tree.nodes.size(), numClasses = static_cast<std::size_t>(tree.numClasses);
    require(numNodes > 0, "must have a root");
    require(tree.numClasses >= 0 && tree.classWeights.size() == numNodes * numClasses,
            "must have a weight for each class in each node");
    for (const std::vector<std::int32_t>& set : tree.categorySets)
        require(!set.empty() && set.front() >= 0 && std::is_sorted(set.begin(), set.end()),
                "must have categories in each set");
    std::vector<std::int32_t> parents(numNodes, -1);
    for (std::size_t i = 0; i < numNodes; ++i) {
        const Node& node = tree.nodes[i];
        require(i == 0 || parents[i] >= 0, "must reach each node from the root");
        require(node.weight > 0.0 && std::isfinite(node.weight), "must have weights above 0");
        require(numClasses == 0 || (node.response >= 0.0 && node.response < static_cast<double>(numClasses)),
                "must label nodes with its classes");
        if (node.isLeaf()) continue;
        const auto left = static_cast<std::size_t>(node.left);
        require(left > i && left + 1 < numNodes && parents[left] < 0 && parents[left + 1] < 0,
                "must have children behind their parents");
        require(node.feature >= 0 && node.feature < numFeatures, "must split by its features");
        require(node.categorySet < static_cast<std::int32_t>(tree.categorySets.size()), "must have its sets");
        require(!std::isnan(node.threshold), "must have thresholds that are numbers");
        parents[left] = parents[left + 1] = static_cast<std::int32_t>(i);
    }
    for (std::size_t i = 0; i < numNodes; ++i) tree.nodes[i].parent = parents[i];
}

void deriveStatistics(Tree& tree) {
    sumClassWeights(tree);
    double furthest = 0.0;
    if (tree.numClasses == 0)
        for (const Node& node : tree.nodes) furthest = std::max(furthest, std::abs(node.response));
    tree.targetExponent = scaleExponent(furthest);
    for (std::size_t i = tree.nodes.size(); i-- > 0;) {
        Node& node = tree.nodes[i];
        if (tree.numClasses > 0) {
            const double* const weights = tree.classWeightsOf(static_cast<std::int32_t>(i));
            const double* const largest = std::max_element(weights, weights + tree.numClasses);
            double squares = 0.0;
            for (int k = 0; k < tree.numClasses; ++k) squares += weights[k] * (weights[k] / node.weight);
            node.response = static_cast<double>(largest - weights);
            node.error = node.weight - *largest;
            node.impurity = std::max(0.0, node.weight - squares);
        } else {
            node.weight = std::max(1.0, static_cast<double>(node.numRecords));
            node.impurity = 0.0;
        }
        if (!node.isLeaf()) {
            const Node& left = tree.nodes[static_cast<std::size_t>(node.left)];
            const Node& right = tree.nodes[static_cast<std::size_t>(node.right())];
            const auto squaresBetween = [&](const Node& child) {
                const double distance = std::ldexp(child.response, -tree.targetExponent) -
                                        std::ldexp(node.response, -tree.targetExponent);
                return child.weight * distance * distance;
            };
            const double within = left.impurity + right.impurity;
            if (tree.numClasses == 0) node.impurity = within + squaresBetween(left) + squaresBetween(right);
            node.gain = std::max(0.0, node.impurity - within);
        }
        if (tree.numClasses == 0) node.error = node.impurity;
    }
}

void sumClassWeights(Tree& tree) {
    if (tree.numClasses == 0) return;
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const double* const weights = tree.classWeightsOf(static_cast<std::int32_t>(i));
        tree.nodes[i].weight = std::accumulate(weights, weights + tree.numClasses, 0.0);
    }
}

std::vector<double> errorBySplit(const Tree& tree) {
    // Nodes by number would not do for ties: they are numbered by level, while here they are made in pairs.
    struct Open {
        double gain;
        std::size_t made;
        std::size_t node;
        bool operator<(const Open& other) const {
            return gain != other.gain ? gain < other.gain : made > other.made;
        }
    };
    std::vector<Open> open;
    std::size_t numMade = 0;
    const auto make = [&](std::size_t node) {
        const std::size_t made = numMade++;
        if (tree.nodes[node].isLeaf()) return;
        open.push_back({tree.nodes[node].gain, made, node});
        std::push_heap(open.begin(), open.end());
    };
    const auto perWeight = [&](double error) {
        return std::ldexp(error / tree.nodes[0].weight, 2 * tree.targetExponent);
    };
    std::vector<double> log{perWeight(tree.nodes[0].error)};
    double error = tree.nodes[0].error;
    make(0);
    while (!open.empty()) {
        std::pop_heap(open.begin(), open.end());
        const Node& node = tree.nodes[open.back().node];
        open.pop_back();
        const auto left = static_cast<std::size_t>(node.left);
        error += tree.nodes[left].error + tree.nodes[left + 1].error - node.error;
        log.push_back(std::max(0.0, perWeight(error)));
        make(left);
        make(left + 1);
    }
    return log;
}

double thresholdBetween(double lower, double upper) {
    const double middle = lower / 2.0 + upper / 2.0;
    return lower < middle && middle <= upper ? middle : upper;
}

}  // namespace Tessel::Engine::DT
