#include "engine/dt/split_search.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace Tessel::Engine::DT {

namespace {

/// The histogram of the members of a node over the codes of a feature: one that is known, or made in the
/// memory of a thread, which is given back all zero.
template <class Side>
class Histogram {
 public:
    Histogram(const Records& records, std::span<const std::uint32_t> members, const BinnedFeature& feature,
              const Totals& totals, Scratch& scratch)
        : numSums_(records.numSums()), numCodes_(feature.numCodes), scratch_(scratch), bins_(feature.bins) {
        const std::size_t numBins = std::size_t{numCodes_} + 1;
        if (scratch.present.size() < numBins / 64 + 1) scratch.present.resize(numBins / 64 + 1, 0);
        std::uint64_t* present = scratch.present.data();
        if (bins_) {
            for (std::size_t code = 0; code < numBins; ++code)
                present[code / 64] |= std::uint64_t{bin(code)[0] > 0.0} << (code % 64);
            return;
        }
        if (scratch.bins.size() < numBins * numSums_) scratch.bins.resize(numBins * numSums_, 0.0);
        double* const bins = scratch.bins.data();
        bins_ = bins;
        for (const std::uint32_t member : members) {
            const std::uint32_t code = feature.codes[member];
            Side::addTo(bins + code * numSums_, records, totals, member);
            present[code / 64] |= std::uint64_t{1} << (code % 64);
        }
    }
    ~Histogram() {
        if (bins_ == scratch_.bins.data()) {
            forEachCode([&](std::uint32_t code) { clear(code); });
            if (hasMissing()) clear(numCodes_);
        }
        std::fill_n(scratch_.present.begin(), numCodes_ / 64 + 1, 0);
    }
    Histogram(const Histogram&) = delete;
    Histogram& operator=(const Histogram&) = delete;

    const double* bin(std::size_t code) const { return bins_ + code * numSums_; }
    bool hasMissing() const { return (scratch_.present[numCodes_ / 64] >> (numCodes_ % 64) & 1) != 0; }
    const double* missing() const { return bin(numCodes_); }

    /// The codes that occur, ascending, without the one of missing cells.
    template <class Visit>
    void forEachCode(Visit&& visit) const {
        for (std::uint32_t word = 0; word <= numCodes_ / 64; ++word)
            for (std::uint64_t bits = scratch_.present[word]; bits != 0; bits &= bits - 1) {
                const std::uint32_t code = word * 64 + static_cast<std::uint32_t>(std::countr_zero(bits));
                if (code < numCodes_) visit(code);
            }
    }

 private:
    void clear(std::size_t code) { std::fill_n(scratch_.bins.data() + code * numSums_, numSums_, 0.0); }

    const std::size_t numSums_;
    const std::uint32_t numCodes_;
    Scratch& scratch_;
    const double* bins_;
};

template <class Side, bool Unit>
class SplitSearchOf final : public SplitSearch {
 public:
    SplitSearchOf(const Records& records, std::int64_t minNumRecords)
        : records_(records), minNumRecords_(minNumRecords) {}

    Candidate searchSorted(std::span<const SortedRecord> list, const Totals& totals,
                           Scratch& scratch) const override {
        Side left = side(totals, scratch);
        const SortedRecord* const entries = list.data();
        const std::size_t size = list.size();
        std::size_t i = 0;  // entries on the left side
        while (i < size && !entries[i].startsValue()) left.add(entries[i++].record());
        std::size_t last = size;
        if constexpr (Unit) {  // records and entries are the same: no count to look at below
            const auto fewest = static_cast<std::size_t>(minNumRecords_);
            while (i + 1 < fewest && i < size) left.add(entries[i++].record());
            last = size >= fewest ? size - fewest + 1 : 0;
        }
        double best = -1.0;
        std::size_t bestAt = 0;
        while (i + 1 < size && i < last) {
            left.add(entries[i++].record());
            if (!entries[i].startsValue() || i >= last || !isLargeEnough(left, totals)) continue;
            if constexpr (requires { left.mayExceed(best); })
                if (!left.mayExceed(best)) continue;
            const double score = left.score();
            if (score > best) {
                best = score;
                bestAt = i;
            }
        }
        if (best < 0.0) return {};
        Candidate candidate;
        candidate.score = best;
        candidate.lower = static_cast<std::uint32_t>(bestAt - 1);
        candidate.upper = static_cast<std::uint32_t>(bestAt);
        return candidate;
    }

    Candidate searchNumbers(std::span<const std::uint32_t> members, const BinnedFeature& feature,
                            const Totals& totals, Scratch& scratch) const override {
        const Histogram<Side> histogram(records_, members, feature, totals, scratch);
        Side left = side(totals, scratch);
        if (histogram.hasMissing()) left.addBin(histogram.missing());
        Candidate best;
        bool isFirst = true;
        std::uint32_t previous = 0;
        histogram.forEachCode([&](std::uint32_t code) {
            if (!isFirst && isLargeEnough(left, totals)) {
                const double score = left.score();
                if (score > best.score) {
                    best.score = score;
                    best.lower = previous;
                    best.upper = code;
                }
            }
            isFirst = false;
            previous = code;
            left.addBin(histogram.bin(code));
        });
        return best;
    }

    Candidate searchCategories(std::span<const std::uint32_t> members, const BinnedFeature& feature,
                               const Totals& totals, Scratch& scratch) const override {
        const Histogram<Side> histogram(records_, members, feature, totals, scratch);
        scratch.categories.clear();
        histogram.forEachCode(
            [&](std::uint32_t code) { scratch.categories.push_back(static_cast<std::int32_t>(code)); });
        if (scratch.categories.size() < 2) return {};
        if constexpr (requires { Side::order(nullptr); }) {
            scratch.order.clear();
            for (const std::int32_t category : scratch.categories)
                scratch.order.push_back(Side::order(histogram.bin(static_cast<std::size_t>(category))));
        } else {
            if (scratch.categories.size() <= kMaxCategoriesTriedExhaustively)
                return searchSubsets(histogram, totals, scratch);
            principalOrder(histogram.bin(0), static_cast<std::size_t>(records_.numClasses),
                           scratch.categories, scratch.order);
        }
        return searchOrdered(histogram, totals, scratch);
    }

 private:
    Side side(const Totals& totals, Scratch& scratch) const {
        scratch.classSums.resize(static_cast<std::size_t>(records_.numClasses));
        return Side(records_, totals, scratch.classSums.data());
    }

    bool isLargeEnough(const Side& left, const Totals& totals) const {
        if constexpr (Unit) {
            const std::int64_t numLeft = left.numRecords();
            return numLeft >= minNumRecords_ && totals.numRecords - numLeft >= minNumRecords_;
        } else {
            return left.numRecords() >= minNumRecords_ &&
                   totals.numRecords - left.numRecords() >= minNumRecords_;
        }
    }

    /// Prefixes of the categories in the order of `scratch.order`; suffixes too when missing records are on
    /// the left side, as the two are mirrors of each other only without them.
    Candidate searchOrdered(const Histogram<Side>& histogram, const Totals& totals, Scratch& scratch) const {
        const std::vector<std::int32_t>& categories = scratch.categories;
        std::vector<std::size_t> positions(categories.size());
        for (std::size_t i = 0; i < positions.size(); ++i) positions[i] = i;
        std::sort(positions.begin(), positions.end(), [&](std::size_t a, std::size_t b) {
            return scratch.order[a] != scratch.order[b] ? scratch.order[a] < scratch.order[b] : a < b;
        });
        double best = -1.0;
        std::size_t bestCount = 0;
        bool isBestReversed = false;
        for (const bool isReversed : {false, true}) {
            if (isReversed && !histogram.hasMissing()) break;
            if (isReversed) std::reverse(positions.begin(), positions.end());
            Side left = side(totals, scratch);
            if (histogram.hasMissing()) left.addBin(histogram.missing());
            for (std::size_t i = 0; i + 1 < positions.size(); ++i) {
                left.addBin(histogram.bin(static_cast<std::size_t>(categories[positions[i]])));
                if (!isLargeEnough(left, totals)) continue;
                const double score = left.score();
                if (score > best) {
                    best = score;
                    bestCount = i + 1;
                    isBestReversed = isReversed;
                }
            }
        }
        Candidate candidate;
        if (best < 0.0) return candidate;
        candidate.score = best;
        if (histogram.hasMissing() && !isBestReversed) std::reverse(positions.begin(), positions.end());
        for (std::size_t i = 0; i < bestCount; ++i)
            candidate.leftCategories.push_back(categories[positions[i]]);
        std::sort(candidate.leftCategories.begin(), candidate.leftCategories.end());
        return candidate;
    }

    /// All subsets, each one category away from the one before (Gray code). Without missing records a subset
    /// and its complement are the same split: the last category stays on the right. Of equal scores the
    /// subset counts whose mask, read as a binary number, is the smallest.
    Candidate searchSubsets(const Histogram<Side>& histogram, const Totals& totals, Scratch& scratch) const {
        const std::vector<std::int32_t>& categories = scratch.categories;
        const std::size_t numFree = categories.size() - (histogram.hasMissing() ? 0 : 1);
        const std::uint32_t all = (1u << categories.size()) - 1;
        Side left = side(totals, scratch);
        if (histogram.hasMissing()) left.addBin(histogram.missing());
        double best = -1.0;
        std::uint32_t bestMask = 0, mask = 0;
        for (std::uint32_t step = 1; step < 1u << numFree; ++step) {
            const auto turned = static_cast<std::size_t>(std::countr_zero(step));
            mask ^= 1u << turned;
            const bool isJoining = (mask >> turned & 1) != 0;
            left.addBin(histogram.bin(static_cast<std::size_t>(categories[turned])), isJoining ? 1.0 : -1.0);
            if (mask == all || mask == 0 || !isLargeEnough(left, totals)) continue;
            const double score = left.score();
            if (score > best || (score == best && mask < bestMask)) {
                best = score;
                bestMask = mask;
            }
        }
        Candidate candidate;
        candidate.score = best;
        for (std::size_t i = 0; i < categories.size(); ++i)
            if ((bestMask >> i & 1) != 0) candidate.leftCategories.push_back(categories[i]);
        return candidate;
    }

    const Records& records_;
    const std::int64_t minNumRecords_;
};

template <bool Unit>
std::unique_ptr<SplitSearch> makeOf(const Records& records, std::int64_t minNumRecords) {
    if (records.numClasses == 0)
        return std::make_unique<SplitSearchOf<MeanSide<Unit>, Unit>>(records, minNumRecords);
    if (records.numClasses == 2)
        return std::make_unique<SplitSearchOf<TwoClassSide<Unit>, Unit>>(records, minNumRecords);
    return std::make_unique<SplitSearchOf<ManyClassSide<Unit>, Unit>>(records, minNumRecords);
}

}  // namespace

std::unique_ptr<SplitSearch> SplitSearch::make(const Records& records, std::int64_t minNumRecordsInLeaves) {
    return records.isUnit() ? makeOf<true>(records, minNumRecordsInLeaves)
                            : makeOf<false>(records, minNumRecordsInLeaves);
}

void addToBins(const Records& records, std::span<const std::uint32_t> members, const BinnedFeature& feature,
               double* bins) {
    const std::size_t numSums = records.numSums();
    for (const std::uint32_t member : members) {
        double* const bin = bins + feature.codes[member] * numSums;
        bin[0] += records.count(member);
        bin[1 + records.classes[member]] += records.weight(member);
    }
}

void principalOrder(const double* bins, std::size_t numClasses, std::span<const std::int32_t> categories,
                    std::vector<double>& scores) {
    const auto classWeights = [&](std::int32_t category) {
        return bins + static_cast<std::size_t>(category) * (numClasses + 1) + 1;
    };
    // Deviations of the class proportions from those of the node, one row a category.
    std::vector<double> weights, deviations, mean(numClasses, 0.0);
    double total = 0.0;
    for (const std::int32_t category : categories) {
        double weight = 0.0;
        for (std::size_t k = 0; k < numClasses; ++k) {
            weight += classWeights(category)[k];
            mean[k] += classWeights(category)[k];
        }
        weights.push_back(weight);
        total += weight;
    }
    for (double& share : mean) share /= total;
    for (std::size_t i = 0; i < categories.size(); ++i)
        for (std::size_t k = 0; k < numClasses; ++k)
            deviations.push_back(classWeights(categories[i])[k] / weights[i] - mean[k]);
    const auto project = [&](const std::vector<double>& direction) {
        scores.assign(categories.size(), 0.0);
        for (std::size_t i = 0; i < scores.size(); ++i)
            for (std::size_t k = 0; k < numClasses; ++k)
                scores[i] += deviations[i * numClasses + k] * direction[k];
    };

    // Power iteration from the category that deviates most. The order needs no more digits than this: nearly
    // equal eigenvalues mean nearly equal merits of the orders.
    std::size_t farthest = 0;
    double farthestNorm = -1.0;
    for (std::size_t i = 0; i < categories.size(); ++i) {
        double norm = 0.0;
        for (std::size_t k = 0; k < numClasses; ++k)
            norm += deviations[i * numClasses + k] * deviations[i * numClasses + k];
        if (norm * weights[i] > farthestNorm) {
            farthestNorm = norm * weights[i];
            farthest = i;
        }
    }
    const double* start = deviations.data() + farthest * numClasses;
    std::vector<double> direction(start, start + numClasses), next(numClasses);
    for (int iteration = 0; iteration < 50; ++iteration) {
        project(direction);
        std::fill(next.begin(), next.end(), 0.0);
        for (std::size_t i = 0; i < scores.size(); ++i)
            for (std::size_t k = 0; k < numClasses; ++k)
                next[k] += weights[i] * scores[i] * deviations[i * numClasses + k];
        double norm = 0.0;
        for (const double value : next) norm += value * value;
        if (!(norm > 0.0)) break;  // all categories are alike
        norm = std::sqrt(norm);
        double change = 0.0;
        for (std::size_t k = 0; k < numClasses; ++k) {
            next[k] /= norm;
            change = std::max(change, std::abs(next[k] - direction[k]));
        }
        direction.swap(next);
        if (change < 1e-9) break;
    }
    project(direction);
}

}  // namespace Tessel::Engine::DT
