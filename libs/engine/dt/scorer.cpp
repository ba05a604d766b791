#include "engine/dt/scorer.h"

#include <algorithm>
#include <limits>

#include "engine/parallel.h"

namespace Tessel::Engine::DT {

Scorer::Scorer(const Tree& tree, const std::vector<std::uint8_t>& isCut) {
    const auto isEnd = [&](std::int32_t node) {
        const auto position = static_cast<std::size_t>(node);
        return tree.nodes[position].isLeaf() || (!isCut.empty() && isCut[position] != 0);
    };
    treeNodes_.push_back(0);
    std::int32_t numericFeature = -1;
    for (std::size_t i = 0; i < treeNodes_.size(); ++i) {
        if (isEnd(treeNodes_[i])) continue;
        const Node& node = tree.nodes[static_cast<std::size_t>(treeNodes_[i])];
        treeNodes_.push_back(node.left);
        treeNodes_.push_back(node.right());
        if (node.categorySet < 0) {
            numericFeature = node.feature;
            numericFeatures_.push_back(node.feature);
        } else if (sets_.empty())
            sets_.push_back({node.feature, -1, 0});
    }
    std::sort(numericFeatures_.begin(), numericFeatures_.end());
    numericFeatures_.erase(std::unique(numericFeatures_.begin(), numericFeatures_.end()),
                           numericFeatures_.end());
    nodes_.reserve(treeNodes_.size());
    std::int32_t nextChild = 1;
    for (std::size_t i = 0; i < treeNodes_.size(); ++i) {
        if (isEnd(treeNodes_[i])) {
            nodes_.push_back(
                {std::numeric_limits<double>::quiet_NaN(), numericFeature, static_cast<std::int32_t>(i)});
            continue;
        }
        const Node& node = tree.nodes[static_cast<std::size_t>(treeNodes_[i])];
        PackedNode packed{node.threshold, node.feature, nextChild};
        if (node.categorySet >= 0) {
            const std::vector<std::int32_t>& codes =
                tree.categorySets[static_cast<std::size_t>(node.categorySet)];
            packed.feature = -1 - static_cast<std::int32_t>(sets_.size());
            sets_.push_back({node.feature, codes.back() + 1, words_.size()});
            words_.resize(words_.size() + static_cast<std::size_t>(codes.back()) / 64 + 1, 0);
            for (const std::int32_t code : codes)
                words_[sets_.back().firstWord + static_cast<std::size_t>(code) / 64] |= std::uint64_t{1}
                                                                                        << (code % 64);
        }
        nodes_.push_back(packed);
        nextChild += 2;
    }
}

bool Scorer::goesRight(const PackedSet& set, std::int32_t code) const {
    if (code == -1 || set.numCodes < 0) return false;
    if (code < 0 || code >= set.numCodes) return true;
    return (words_[set.firstWord + static_cast<std::size_t>(code) / 64] >> (code % 64) & 1) == 0;
}

/// Takes `Width` neighbouring records down to their leaves, a level at a time, and tells what stands there.
template <bool HasSets, std::size_t Width, class Answer>
void Scorer::descend(std::span<const Cells> features, std::size_t first, const Answer* byNode,
                     Answer* answers) const {
    const PackedNode* const nodes = nodes_.data();
    std::int32_t at[Width] = {};
    for (bool isMoving = true; isMoving;) {
        std::int32_t moves = 0;
        for (std::size_t i = 0; i < Width; ++i) {
            const PackedNode& node = nodes[at[i]];
            bool isRight = false;
            if (HasSets && node.feature < 0) {
                const PackedSet& set = sets_[static_cast<std::size_t>(-1 - node.feature)];
                isRight = goesRight(set, features[static_cast<std::size_t>(set.feature)].codes[first + i]);
            } else {
                // A comparison with NaN is false: missing cells go left, and nothing leaves an end.
                isRight =
                    features[static_cast<std::size_t>(node.feature)].numbers[first + i] >= node.threshold;
            }
            const std::int32_t next = node.left + isRight;
            moves |= next ^ at[i];
            at[i] = next;
        }
        isMoving = moves != 0;
    }
    for (std::size_t i = 0; i < Width; ++i) answers[i] = byNode[at[i]];
}

template <bool HasSets, class Answer>
void Scorer::findRange(std::span<const Cells> features, std::size_t first, const Answer* byNode,
                       std::span<Answer> answers) const {
    constexpr std::size_t kWidth = 16, kAhead = 64;
    std::size_t i = 0;
    for (; i + kWidth <= answers.size(); i += kWidth) {
        // More columns than the processor follows by itself.
        if (i + kAhead + kWidth <= answers.size())
            for (const std::int32_t feature : numericFeatures_) {
                const double* const ahead =
                    features[static_cast<std::size_t>(feature)].numbers.data() + first + i + kAhead;
                __builtin_prefetch(ahead);
                __builtin_prefetch(ahead + kWidth / 2);
            }
        descend<HasSets, kWidth>(features, first + i, byNode, answers.data() + i);
    }
    for (; i < answers.size(); ++i) descend<HasSets, 1>(features, first + i, byNode, answers.data() + i);
}

void Scorer::findLeaves(std::span<const Cells> features, std::span<std::int32_t> leaves) const {
    find(features, treeNodes_.data(), leaves);
}

template <class Answer>
void Scorer::find(std::span<const Cells> features, const Answer* byNode, std::span<Answer> answers) const {
    if (nodes_.size() == 1) {
        std::fill(answers.begin(), answers.end(), byNode[0]);
        return;
    }
    constexpr std::size_t kChunk = 4096;
    const std::size_t numChunks = (answers.size() + kChunk - 1) / kChunk;
    const int numTeam = numChunks > 4 ? numThreads() : 1;
#pragma omp parallel for schedule(dynamic) num_threads(numTeam)
    for (std::size_t chunk = 0; chunk < numChunks; ++chunk) {
        const std::size_t first = chunk * kChunk;
        const auto range = answers.subspan(first, std::min(kChunk, answers.size() - first));
        if (sets_.empty())
            findRange<false>(features, first, byNode, range);
        else
            findRange<true>(features, first, byNode, range);
    }
}

template void Scorer::find(std::span<const Cells>, const std::int32_t*, std::span<std::int32_t>) const;
template void Scorer::find(std::span<const Cells>, const double*, std::span<double>) const;

std::int32_t Scorer::findLeaf(std::span<const Cells> features, std::size_t record) const {
    if (nodes_.size() == 1) return treeNodes_.front();
    std::int32_t leaf = 0;
    descend<true, 1>(features, record, treeNodes_.data(), &leaf);
    return leaf;
}

}  // namespace Tessel::Engine::DT
