#pragma once

#include <cstdint>
#include <vector>

#include "engine/dt/tree.h"

// Weakest-link pruning (Breiman, Friedman, Olshen & Stone, Classification and Regression Trees, 1984, chapter
// 3): the nested sequence of the subtrees that minimise error + complexity * leaves for some complexity.

namespace Tessel::Engine::DT {

/// One tree of the sequence.
struct PruningStep {
    double complexity = 0.0;  ///< smallest cost of a leaf for which this is the best tree
    std::int32_t numDecisionNodes = 0;
    double trainingError = 0.0;
    double validationError = 0.0;
};

/// The sequence for a tree. Step 0 is the tree as grown; each further step cuts at all nodes whose link is
/// weakest, the first where the error does not grow at all if there are such; the last is the root alone.
///
/// Errors and complexities are per unit of weight of the root: error rates, mean squared errors, the latter
/// in units of 4^targetExponent of the tree.
struct PruningSequence {
    std::vector<PruningStep> steps;
    /// By node, from which step on the tree ends there, if it does not end above: 0 in the leaves of the
    /// tree, `steps.size()` where it never does.
    std::vector<std::int32_t> endsFrom;

    std::vector<std::uint8_t> cutsOf(std::int32_t step) const;
};

/// O(nodes log^2 nodes), without recursion. Validation errors are left 0.
PruningSequence pruningSequence(const Tree& tree);

/// The sum over the leaves of each step's tree of a number given for each node.
std::vector<double> sumOverLeaves(const Tree& tree, const PruningSequence& sequence,
                                  const std::vector<double>& values);

}  // namespace Tessel::Engine::DT
