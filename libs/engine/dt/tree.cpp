#include "engine/dt/tree.h"

#include <utility>

namespace Tessel::Engine::DT {

Tree inLevelOrder(const Tree& tree) {
    // The new order is the queue of a walk by levels; children join it as a pair.
    std::vector<std::int32_t> order{0};
    order.reserve(tree.nodes.size());
    Tree result;
    result.numClasses = tree.numClasses;
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

double thresholdBetween(double lower, double upper) {
    const double middle = lower / 2.0 + upper / 2.0;
    return lower <= middle && middle < upper ? middle : lower;
}

}  // namespace Tessel::Engine::DT
