#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace Tessel::Engine::DT {

/// Limits of growth. None is the default of each.
struct Limits {
    static constexpr int kNone = std::numeric_limits<int>::max();

    int minNumRecordsInLeaves = 1;    ///< training records of a leaf at least; record weights do not count
    int maxNumNodes = kNone;          ///< nodes of the tree, decision nodes and leaves; the root counts
    int maxNumLevels = kNone;         ///< splits on the way from the root to a leaf; the root counts not
    int maxNumSplits = kNone;         ///< decision nodes of the tree
    int numSelectedFeatures = kNone;  ///< features drawn afresh for the split of each node
    int featureSelectionSeed = 12345;

    /// Whether they may stop the growth of a tree before all its nodes are split.
    bool areBestFirst(std::size_t numRecords) const {
        return numSplits() < static_cast<std::int64_t>(numRecords) - 1;
    }
    std::int64_t numSplits() const { return std::min(maxNumSplits, (maxNumNodes - 1) / 2); }
};

/// One node. The children of a node are neighbours: the right child is `left + 1`.
struct Node {
    std::int32_t parent = -1;
    std::int32_t left = -1;         ///< -1 in a leaf
    std::int32_t feature = -1;      ///< the feature of the split; -1 in a leaf
    std::int32_t categorySet = -1;  ///< split by categories: position in `Tree::categorySets`, else -1
    double threshold = 0.0;         ///< split by a number: smaller values go left
    double gain = 0.0;              ///< decrease of impurity by the split
    double weight = 0.0;            ///< sum of the weights of the training records, altered by priors
    double impurity = 0.0;          ///< `weight` times Gini's index; sum of squares about the mean
    double error = 0.0;             ///< as a leaf: weight of misclassified records; sum of squares
    double response = 0.0;          ///< code of the class of greatest weight (ties: the lowest); mean
    std::int64_t numRecords = 0;    ///< training records

    bool isLeaf() const { return left < 0; }
    std::int32_t right() const { return left + 1; }
};

/// A grown tree as plain vectors. Nodes stand level by level, the root first, so that children follow their
/// parents; nothing points, so that a tree of any depth is copied and destroyed like any vector.
struct Tree {
    std::vector<Node> nodes;
    std::vector<std::vector<std::int32_t>> categorySets;  ///< codes that go left, ascending
    int numClasses = 0;                                   ///< 0 in a regression tree
    std::vector<double> classWeights;                     ///< node by node, the weight of each class

    // Weights so large or small, or such targets, that their products would leave the range of double are
    // divided by a power of two, which changes no digit: weights are in units of 2^weightExponent, errors,
    // impurities and gains in units of 2^(weightExponent + 2 targetExponent). Responses and thresholds are
    // as they are. Both are 0 wherever the greatest weight and target lie in 2^-100 .. 2^100.
    int weightExponent = 0, targetExponent = 0;

    const double* classWeightsOf(std::int32_t node) const {
        return classWeights.data() + static_cast<std::size_t>(node) * static_cast<std::size_t>(numClasses);
    }
    std::size_t numDecisionNodes() const { return nodes.size() / 2; }
};

/// Forgets the split of a node.
inline void makeLeaf(Node& node) {
    node.left = node.feature = node.categorySet = -1;
    node.threshold = node.gain = 0.0;
}

/// The same tree with its nodes level by level.
Tree inLevelOrder(const Tree& tree);

/// Replaces a leaf of `tree` by the tree that was grown from it.
void graft(Tree& tree, std::int32_t leaf, Tree& subtree);

/// Fills in the parents of a tree made by hand or read from a text.
/// @throws ConstraintViolation when it is none: children behind their parents and each with one parent,
///         features below `numFeatures`, sets of ascending codes >= 0, weights above 0, a weight per class.
void connect(Tree& tree, int numFeatures);

/// Fills in what a text of a tree need not tell: from the class weights, in regression from the responses and
/// the numbers of records, come weights, labels, errors, impurities and gains. In regression the squares
/// within the leaves are unknown and taken as 0.
void deriveStatistics(Tree& tree);

/// Makes the weight of each node the sum of its class weights in the order of the classes: a text that stores
/// only these restores posteriors bit for bit. Nothing in regression trees.
void sumClassWeights(Tree& tree);

/// Error of the growing tree per unit of weight: of the root alone, then after each split in the order of
/// greatest gain first among the nodes that are open (ties: the node made first).
std::vector<double> errorBySplit(const Tree& tree);

/// The midpoint of two neighbouring values, or the upper one where no double lies between them, so that
/// lower < threshold <= upper always holds.
double thresholdBetween(double lower, double upper);

}  // namespace Tessel::Engine::DT
