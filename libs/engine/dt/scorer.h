#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/dt/training_data.h"
#include "engine/dt/tree.h"

namespace Tessel::Engine::DT {

/// Finds the leaves of records. A copy of what scoring reads of a tree, packed: 16 bytes a node, leaves that
/// lead to themselves, so that several records descend side by side without a branch.
///
/// A missing cell goes left. Of categories only those of the split's set go left: unseen ones go right, and
/// so do those that training met but not in the node that was split.
class Scorer {
 public:
    Scorer() = default;
    /// @param isCut  by node, whether the tree ends there; empty for the whole tree.
    Scorer(const Tree& tree, const std::vector<std::uint8_t>& isCut);

    /// Node of the tree where each record ends, into `leaves`. O(levels) a record, by all threads when there
    /// are many. @pre cells of each feature that the tree asks for, as many as `leaves`.
    void findLeaves(std::span<const Cells> features, std::span<std::int32_t> leaves) const;
    /// The same, but tells of each record `answerOf(node)`.
    /// @tparam Answer  std::int32_t or double
    template <class Answer, class AnswerOf>
    void findAnswers(std::span<const Cells> features, AnswerOf answerOf, std::span<Answer> answers) const {
        if (answers.size() < treeNodes_.size()) {
            std::vector<std::int32_t> leaves(answers.size());
            findLeaves(features, leaves);
            std::transform(leaves.begin(), leaves.end(), answers.begin(), answerOf);
            return;
        }
        std::vector<Answer> byNode;
        byNode.reserve(treeNodes_.size());
        for (const std::int32_t node : treeNodes_) byNode.push_back(answerOf(node));
        find(features, byNode.data(), answers);
    }
    std::int32_t findLeaf(std::span<const Cells> features, std::size_t record) const;

 private:
    struct PackedNode {
        double threshold;      // of a categorical split: nothing
        std::int32_t feature;  // a categorical split by set s of feature f: -1 - s, see sets_
        std::int32_t left;     // itself in a leaf
    };
    struct PackedSet {
        std::int32_t feature;
        std::int32_t numCodes;
        std::size_t firstWord;
    };

    template <bool HasSets, std::size_t Width, class Answer>
    void descend(std::span<const Cells> features, std::size_t first, const Answer* byNode,
                 Answer* answers) const;
    template <bool HasSets, class Answer>
    void findRange(std::span<const Cells> features, std::size_t first, const Answer* byNode,
                   std::span<Answer> answers) const;
    template <class Answer>
    void find(std::span<const Cells> features, const Answer* byNode, std::span<Answer> answers) const;
    bool goesRight(const PackedSet& set, std::int32_t code) const;

    std::vector<PackedNode> nodes_;
    std::vector<std::int32_t> treeNodes_;        // by packed node
    std::vector<std::int32_t> numericFeatures_;  // those that splits ask for
    std::vector<PackedSet> sets_;                // set 0 holds every code: leaves of trees without numbers
    std::vector<std::uint64_t> words_;
};

}  // namespace Tessel::Engine::DT
