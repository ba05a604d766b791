#include "engine/dt/model.h"

#include <algorithm>
#include <cmath>

#include <tessel/data/errors.h>

namespace Tessel::Engine::DT {

void Model::adopt(Tree tree, std::size_t numFeatures) {
    Scorer scorer(tree, {});
    std::vector<std::int32_t> numericFeatures, categoricalFeatures;
    std::vector<std::uint8_t> isKnown(numFeatures, 0);
    for (const Node& node : tree.nodes) {
        if (node.isLeaf() || isKnown[static_cast<std::size_t>(node.feature)] != 0) continue;
        isKnown[static_cast<std::size_t>(node.feature)] = 1;
        (node.categorySet >= 0 ? categoricalFeatures : numericFeatures).push_back(node.feature);
    }
    tree_ = std::move(tree);
    numFeatures_ = numFeatures;
    numericFeatures_ = std::move(numericFeatures);
    categoricalFeatures_ = std::move(categoricalFeatures);
    pruning_ = {};
    standardError_ = 0.0;
    numValidationRecords_.clear();
    manualNumDecisionNodes_ = Limits::kNone;
    isCut_.clear();
    scorer_ = std::move(scorer);
}

void Model::restore(Tree tree, int numFeatures) {
    connect(tree, numFeatures);
    adopt(std::move(tree), static_cast<std::size_t>(numFeatures));
}

void Model::requireFitted() const {
    if (!isFitted()) throw ConstraintViolation("decision tree", "has not been fitted");
}

void Model::select(TreeType type) {
    requireFitted();
    if (type == TreeType::MANUAL) return selectManual(manualNumDecisionNodes_);
    if (type == TreeType::FULL_GROWN) {
        isCut_.clear();
        scorer_ = Scorer(tree_, isCut_);
        return;
    }
    if (numValidationRecords_.empty())
        throw ConstraintViolation("Selected pruned tree type", "needs a tree pruned with validation data");
    std::size_t step = bestStep(pruning_);
    if (type == TreeType::BEST_PRUNED) {
        const double limit = pruning_.steps[step].validationError + standardError_;
        for (std::size_t i = step; i < pruning_.steps.size(); ++i)
            if (pruning_.steps[i].validationError <= limit) step = i;
    }
    selectStep(step);
}

void Model::selectManual(int numDecisionNodes) {
    requireFitted();
    if (pruning_.steps.empty()) pruning_ = pruningSequence(tree_);
    manualNumDecisionNodes_ = numDecisionNodes;
    std::size_t step = 0;
    while (step + 1 < pruning_.steps.size() && pruning_.steps[step].numDecisionNodes > numDecisionNodes)
        ++step;
    selectStep(step);
}

void Model::selectStep(std::size_t step) {
    isCut_ = pruning_.cutsOf(static_cast<std::int32_t>(step));
    scorer_ = Scorer(tree_, isCut_);
}

bool Model::isLeaf(std::int32_t node) const {
    const auto position = static_cast<std::size_t>(node);
    return tree_.nodes[position].isLeaf() || (!isCut_.empty() && isCut_[position] != 0);
}

std::int32_t Model::numDecisionNodes() const {
    std::int32_t count = 0;
    std::vector<std::uint8_t> isThere(tree_.nodes.size(), 0);
    for (std::size_t i = 0; i < tree_.nodes.size(); ++i) {
        const auto node = static_cast<std::int32_t>(i);
        isThere[i] = i == 0 || isThere[i] != 0;
        if (isThere[i] == 0 || isLeaf(node)) continue;
        ++count;
        const auto left = static_cast<std::size_t>(tree_.nodes[i].left);
        isThere[left] = isThere[left + 1] = 1;
    }
    return count;
}

Tree Model::selectedTree() const {
    requireFitted();
    Tree selected = tree_;
    for (std::size_t i = 0; i < selected.nodes.size(); ++i) {
        const auto position = static_cast<std::int32_t>(i);
        if (isLeaf(position)) makeLeaf(selected.nodes[i]);
        if (selected.numClasses > 0) selected.nodes[i].response = labelOf(position);
    }
    return inLevelOrder(selected);
}

void Model::checkCells(std::span<const Cells> features, std::size_t numRecords) const {
    requireFitted();
    if (features.size() != numFeatures_)
        throw NumColumnsMismatch(static_cast<std::int32_t>(numFeatures_),
                                 static_cast<std::int32_t>(features.size()));
    const auto require = [numRecords](std::size_t numCells) {
        if (numCells < numRecords)
            throw NumElementsMismatch(static_cast<std::int64_t>(numRecords),
                                      static_cast<std::int64_t>(numCells));
    };
    for (const std::int32_t feature : numericFeatures_)
        require(features[static_cast<std::size_t>(feature)].numbers.size());
    for (const std::int32_t feature : categoricalFeatures_)
        require(features[static_cast<std::size_t>(feature)].codes.size());
}

std::vector<std::int32_t> Model::findNodes(std::span<const Cells> features, std::size_t numRecords) const {
    checkCells(features, numRecords);
    std::vector<std::int32_t> leaves(numRecords);
    scorer_.findLeaves(features, leaves);
    return leaves;
}

std::int32_t Model::findNode(std::span<const Cells> features, std::size_t record) const {
    return scorer_.findLeaf(features, record);
}

std::vector<double> Model::featureImportance() const {
    std::vector<double> importance(numFeatures_, 0.0);
    std::vector<std::uint8_t> isThere(tree_.nodes.size(), 0);
    for (std::size_t i = 0; i < tree_.nodes.size(); ++i) {
        if ((i > 0 && isThere[i] == 0) || isLeaf(static_cast<std::int32_t>(i))) continue;
        importance[static_cast<std::size_t>(tree_.nodes[i].feature)] += tree_.nodes[i].gain;
        const auto left = static_cast<std::size_t>(tree_.nodes[i].left);
        isThere[left] = isThere[left + 1] = 1;
    }
    const int exponent = tree_.weightExponent + 2 * tree_.targetExponent;
    if (exponent != 0)
        for (double& gain : importance) gain = std::ldexp(gain, exponent);
    return importance;
}

PruningSequence Model::judge(const std::vector<double>& leafErrors, double total) const {
    PruningSequence sequence = pruningSequence(tree_);
    const std::vector<double> errors = sumOverLeaves(tree_, sequence, leafErrors);
    for (std::size_t step = 0; step < errors.size(); ++step)
        sequence.steps[step].validationError = errors[step] / total;
    return sequence;
}

std::size_t Model::bestStep(const PruningSequence& sequence) const {
    std::size_t best = 0;
    for (std::size_t step = 1; step < sequence.steps.size(); ++step)
        if (sequence.steps[step].validationError <= sequence.steps[best].validationError) best = step;
    return best;
}

void Model::adoptPruning(PruningSequence sequence, double standardError,
                         std::vector<std::int64_t> numRecords) {
    pruning_ = std::move(sequence);
    standardError_ = standardError;
    numValidationRecords_ = std::move(numRecords);
}

}  // namespace Tessel::Engine::DT
