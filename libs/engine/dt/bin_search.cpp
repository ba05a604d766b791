#include "engine/dt/bin_search.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>

namespace Tessel::Engine::DT {

/// The left side of a split: its records, and its sum of deviations from the mean of the whole table.
struct BinSearch::Rating {
    const double unit, mean, numRecords;  // of the node
    std::int64_t deviations = 0, count = 0;

    void add(std::int64_t sum, std::int64_t number) {
        deviations += sum;
        count += number;
    }
    /// Of the deviations from the mean of the node. Rounding is monotone here and below, so that a bound is
    /// one to the last bit.
    double sumOf(std::int64_t sum, double number) const {
        return static_cast<double>(sum) * unit - number * mean;
    }
    double product(double number) const { return number * (numRecords - number); }
    bool reaches(double score) const {
        const double sum = sumOf(deviations, static_cast<double>(count));
        return sum * sum >= score * product(static_cast<double>(count)) * kBelowOne;
    }
    /// As of MeanSide.
    double score() const {
        const double sum = sumOf(deviations, static_cast<double>(count));
        return sum * sum / product(static_cast<double>(count));
    }
    /// False only where no split with `rise` or less and `-fall` or more added to the deviations, and from
    /// `fewest` to `most` records, reaches a score.
    bool mayReach(double score, std::int64_t rise, std::int64_t fall, std::int64_t fewest,
                  std::int64_t most) const {
        const auto from = static_cast<double>(fewest), to = static_cast<double>(most);
        const double highest = std::max(sumOf(deviations + rise, from), sumOf(deviations + rise, to));
        const double lowest = std::min(sumOf(deviations - fall, from), sumOf(deviations - fall, to));
        return std::max(highest * highest, lowest * lowest) >=
               score * std::min(product(from), product(to)) * kBelowOne;
    }
};

BinSearch::BinSearch(std::span<const SharedColumn> columns, std::span<const double> targets, double mean,
                     std::int64_t minNumRecords, BinnedRecords& records, Crew& crew)
    : columns_(columns), minNumRecords_(minNumRecords), records_(records) {
    const std::size_t numRecords = targets.size();
    const double size =
        sumByStretches(crew, numRecords, [&](std::size_t i) { return std::abs(targets[i] - mean); });
    // All absolute deviations add up to 2^61 or less, and rounded up to where a count ends, to 2^63 or less.
    countMask_ = (std::int64_t{1} << std::bit_width(numRecords)) - 1;
    const int exponent = size > 0.0 ? 60 - std::ilogb(size) : 0;
    unit_ = std::ldexp(1.0, -exponent);
    const double scale = std::ldexp(1.0, exponent);
    records_.deviations.resize(numRecords);
    records_.marks.resize(numRecords);
    forEachStretch(crew, numRecords, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            records_.deviations[i] = std::llrint((targets[i] - mean) * scale);
        std::fill(records_.marks.data() + begin, records_.marks.data() + end, std::uint8_t{0});
    });
}

BinSearch::Rating BinSearch::begin(std::size_t feature, const BinnedNode& node) const {
    std::int64_t total = 0;
    for (std::size_t bin = 0; bin < columns_[feature].numBins(); ++bin) total += node.bins[bin].deviations;
    const auto numRecords = static_cast<double>(node.numRecords);
    return {unit_, static_cast<double>(total) * unit_ / numRecords, numRecords};
}

/// Several features at once, which share the reading of the members.
template <std::size_t N>
void BinSearch::addUp(const std::size_t* features, std::span<const std::uint32_t> members,
                      BinSum* const* bins) const {
    std::array<const std::uint16_t*, N> codes;
    std::array<BinSum*, N> sums;
    for (std::size_t i = 0; i < N; ++i) {
        codes[i] = columns_[features[i]].codes.data();
        sums[i] = bins[i];
    }
    for (const std::uint32_t member : members) {
        const BinSum record = binOf(member);
        for (std::size_t i = 0; i < N; ++i) sums[i][codes[i][member]] += record;
    }
}

void BinSearch::addUp(std::span<const std::size_t> features, std::span<const std::uint32_t> members,
                      std::span<BinSum* const> bins) const {
    constexpr std::size_t kAtOnce = 4;
    std::size_t i = 0;
    for (; i + kAtOnce <= features.size(); i += kAtOnce) addUp<kAtOnce>(&features[i], members, &bins[i]);
    for (; i + 2 <= features.size(); i += 2) addUp<2>(&features[i], members, &bins[i]);
    for (; i < features.size(); ++i) addUp<1>(&features[i], members, &bins[i]);
}

/// Whether a split that parts some neighbouring bins may reach a score.
/// @param numInside  the least number of their records on either side: 0 for splits in front of and behind
///                   them too.
bool BinSearch::mayReach(const Rating& atBegin, const BinnedNode& node, const BinSum& sum, double score,
                         std::int64_t numInside) const {
    const std::int64_t fewest = std::max(atBegin.count + numInside, minNumRecords_);
    const std::int64_t most =
        std::min(atBegin.count + count(sum) - numInside, node.numRecords - minNumRecords_);
    return fewest <= most && atBegin.mayReach(score, (sizes(sum) + sum.deviations) / 2,
                                              (sizes(sum) - sum.deviations) / 2, fewest, most);
}

/// Calls look(bin, left) for the bins with records near which a split may reach score(). Several bins that
/// cannot are left out at once.
template <class Score, class Look>
void BinSearch::forEachBin(std::size_t feature, const BinnedNode& node, Score&& score, Look&& look) const {
    constexpr std::size_t kBinsAtOnce = 16;
    const std::size_t numBins = columns_[feature].numBins();
    Rating left = begin(feature, node);
    for (std::size_t first = 0; first < numBins; first += kBinsAtOnce) {
        const std::size_t end = std::min(first + kBinsAtOnce, numBins);
        BinSum sum;
        for (std::size_t bin = first; bin < end; ++bin) sum += node.bins[bin];
        if (!mayReach(left, node, sum, score(), 0)) {
            left.add(sum.deviations, count(sum));
            continue;
        }
        for (std::size_t bin = first; bin < end; ++bin) {
            if (count(node.bins[bin]) > 0) look(bin, left);
            left.add(node.bins[bin].deviations, count(node.bins[bin]));
        }
    }
}

Candidate BinSearch::searchEnds(std::size_t feature, const BinnedNode& node) const {
    const std::vector<SharedColumn::Bin>& bins = columns_[feature].bins;
    const std::int64_t numMissing = count(node.bins[0]);
    Candidate best;
    forEachBin(
        feature, node, [&] { return best.score; },
        [&](std::size_t bin, const Rating& left) {
            const bool isSplit = left.count > numMissing && left.count >= minNumRecords_ &&
                                 node.numRecords - left.count >= minNumRecords_;
            if (!isSplit || !left.reaches(best.score) || !(left.score() > best.score)) return;
            best.score = left.score();
            best.lower = best.upper = bins[bin].begin;
        });
    return best;
}

void BinSearch::searchInside(std::size_t feature, const BinnedNode& node, double least, Scratch& scratch,
                             Candidate& best) const {
    const std::vector<SharedColumn::Bin>& bins = columns_[feature].bins;
    const auto score = [&] { return std::max(least, best.score); };
    forEachBin(feature, node, score, [&](std::size_t bin, const Rating& left) {
        if (bins[bin].hasManyValues && mayReach(left, node, node.bins[bin], score(), 1))
            walk(feature, bin, left, node, least, scratch, best);
    });
}

void BinSearch::walk(std::size_t feature, std::size_t bin, const Rating& atBegin, const BinnedNode& node,
                     double least, Scratch& scratch, Candidate& best) const {
    const SharedColumn& column = columns_[feature];
    const std::uint32_t begin = column.bins[bin].begin, end = column.bins[bin + 1].begin;
    if (scratch.moved.size() <= end - begin) scratch.moved.resize(end - begin + 1);
    // Positions of the node's records; a value starts with the next of them.
    SortedRecord* member = scratch.moved.data();
    std::uint32_t startsValue = 0;
    for (std::uint32_t position = begin; position < end; ++position) {
        const SortedRecord entry = column.rows[position];
        const std::uint32_t isMember = records_.marks[entry.record()] == node.mark;
        startsValue |= entry.startsValue();
        *member = {position, startsValue};
        member += isMember;
        startsValue &= 1 - isMember;
    }
    Rating left = atBegin;
    const std::span<const SortedRecord> members(scratch.moved.data(), member);
    for (const SortedRecord& entry : members) {
        const std::uint32_t position = entry.record();
        if (entry.startsValue() && &entry != members.data() && left.reaches(std::max(least, best.score)) &&
            left.count >= minNumRecords_ && node.numRecords - left.count >= minNumRecords_) {
            const double score = left.score();
            if (score >= least && (score > best.score || (score == best.score && position < best.lower))) {
                best.score = score;
                best.lower = best.upper = position;
            }
        }
        left.add(records_.deviations[column.rows[position].record()], 1);
    }
}

std::uint32_t BinSearch::recordBefore(std::size_t feature, std::uint32_t position, std::uint8_t mark) const {
    const std::vector<SortedRecord>& rows = columns_[feature].rows;
    while (records_.marks[rows[--position].record()] != mark) {
    }
    return rows[position].record();
}

std::uint32_t BinSearch::recordAfter(std::size_t feature, std::uint32_t position, std::uint8_t mark) const {
    const std::vector<SortedRecord>& rows = columns_[feature].rows;
    while (records_.marks[rows[position].record()] != mark) ++position;
    return rows[position].record();
}

}  // namespace Tessel::Engine::DT
