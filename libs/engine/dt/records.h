#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/crew.h"
#include "engine/dt/tree.h"

// The records of one fit and their response: what the split search adds up.

namespace Tessel::Engine::DT {

/// The records that a tree is grown on, renumbered 0 .. size - 1 in the order of the table; rows that are no
/// record are gone and a row that is a record several times is one entry with that count.
struct Records {
    std::size_t size = 0;
    int numClasses = 0;                  ///< 0: the response is a number
    std::vector<std::uint16_t> classes;  ///< classification
    std::span<const double> targets;     ///< regression
    // Both empty when every record counts once and weighs 1.
    std::vector<double> weights;        ///< weight of all repetitions together, altered by priors
    std::vector<std::uint32_t> counts;  ///< repetitions

    bool isUnit() const { return weights.empty(); }
    /// Numbers in a bin, see below.
    std::size_t numSums() const { return numClasses > 0 ? static_cast<std::size_t>(numClasses) + 1 : 3; }
    /// Whether the weights are whole numbers whose sums, and squares of sums, are exact in any order. Sums of
    /// a node may then be subtracted and moved along instead of added up afresh.
    bool areExact() const { return areExact_; }
    /// To be called when the weights are set.
    void checkExactness(Crew& crew);
    double weight(std::uint32_t record) const { return isUnit() ? 1.0 : weights[record]; }
    std::uint32_t count(std::uint32_t record) const { return isUnit() ? 1 : counts[record]; }

 private:
    bool areExact_ = true;
};

/// The exponent of the power of two to divide numbers by when products of some of them could leave the range
/// of double; 0 where they will not, which is nearly always. See Tree.
int scaleExponent(double largest);

/// Sums of the records of a node, as the search for its split needs them.
struct Totals {
    std::int64_t numRecords = 0;
    double weight = 0.0;
    double mean = 0.0;                     ///< regression
    const double* classWeights = nullptr;  ///< classification
};

/// Sums of the deviations of targets from some origin.
struct TargetSums {
    double sum = 0.0, squares = 0.0;

    void add(double deviation) {
        sum += deviation;
        squares += deviation * deviation;
    }
    TargetSums& operator+=(const TargetSums& other) {
        sum += other.sum;
        squares += other.squares;
        return *this;
    }
};

/// Fills what a node says about its records: counts, weights, response, impurity, error.
/// @param classWeights  receives the weight of each class; null in regression.
void summarize(const Records& records, std::span<const std::uint32_t> members, Node& node,
               double* classWeights);

/// The same for all records.
void summarizeAll(const Records& records, Crew& crew, Node& node, double* classWeights);

/// The same in regression for records of weight 1 whose deviations from `origin` have these sums; looks at
/// the records again only where the mean is so far from the origin that the sum of squares about it lost
/// digits.
void summarize(const Records& records, std::span<const std::uint32_t> members, const TargetSums& sums,
               double origin, Node& node);

/// The same for the children of a node. Exact sums of the larger child are what the smaller one leaves.
/// @param classWeights  receives those of the left child, then those of the right one.
void summarizeChildren(const Records& records, std::span<const std::uint32_t> leftMembers,
                       std::span<const std::uint32_t> rightMembers, const Totals& parent, Node& left,
                       Node& right, double* classWeights);

// The left side of a split under trial. Each takes records, or the sums of many records (a bin), from the
// right side to the left and rates the split; the best split of a node has the greatest score. Scores of one
// node compare exactly where sums are exact, above all for records of weight 1: a split and its mirror, or
// the same split by another feature, then have the same score to the last bit.
//
// A bin is numSums() numbers: the count of records, then the weights by class; in regression the
// count, the weight, and the weighted sum of deviations from the mean of the node.
//
// A score is below 0 where a side weighs nothing within rounding.

/// Less than 1 by more than the roundings of a score and of a comparison with it.
inline constexpr double kBelowOne = 1.0 - 0x1p-48;

/// Two classes. With d = W w1 - w W1 (W, W1: weight of the node and of its second class; w, w1: of the left
/// side) the decrease of Gini's index times W is 2 d^2 / (W w (W - w)).
template <bool Unit>
class TwoClassSide {
    using Sum = std::conditional_t<Unit, std::int64_t, double>;

 public:
    TwoClassSide(const Records& records, const Totals& totals, double* /*scratch*/)
        : records_(records),
          totalWeight_(static_cast<Sum>(totals.weight)),
          totalSecond_(static_cast<Sum>(totals.classWeights[1])) {}

    void add(std::uint32_t record) {
        const std::uint16_t isSecond = records_.classes[record];
        if constexpr (Unit) {
            ++weight_;
            second_ += isSecond;
        } else {
            numRecords_ += records_.counts[record];
            weight_ += records_.weights[record];
            second_ += isSecond ? records_.weights[record] : 0.0;
        }
    }
    void addBin(const double* bin, double sign = 1.0) {
        numRecords_ += static_cast<std::int64_t>(sign * bin[0]);
        weight_ += static_cast<Sum>(sign * (bin[1] + bin[2]));
        second_ += static_cast<Sum>(sign * bin[2]);
    }
    static void addTo(double* bin, const Records& records, const Totals&, std::uint32_t record) {
        bin[0] += records.count(record);
        bin[1 + records.classes[record]] += records.weight(record);
    }
    double score() const {
        const auto difference = static_cast<double>(totalWeight_ * second_ - weight_ * totalSecond_);
        const double product = static_cast<double>(weight_) * static_cast<double>(totalWeight_ - weight_);
        if (!Unit && !(product > 0.0)) return -1.0;
        return difference * difference / product;
    }
    /// False only where the score is not above `best`; spares most splits the division.
    bool mayExceed(double best) const {
        const auto difference = static_cast<double>(totalWeight_ * second_ - weight_ * totalSecond_);
        const double product = static_cast<double>(weight_) * static_cast<double>(totalWeight_ - weight_);
        return difference * difference >= best * product * kBelowOne;
    }
    /// Categories in this order make the best subset a prefix.
    static double order(const double* bin) { return bin[2] / (bin[1] + bin[2]); }
    std::int64_t numRecords() const { return Unit ? static_cast<std::int64_t>(weight_) : numRecords_; }

 private:
    const Records& records_;
    const Sum totalWeight_, totalSecond_;
    Sum weight_ = 0, second_ = 0;
    std::int64_t numRecords_ = 0;
};

/// Three classes and more. The score is the sum over both sides of (sum of squared class weights) / weight.
template <bool Unit>
class ManyClassSide {
    using Sum = std::conditional_t<Unit, std::int64_t, double>;

 public:
    /// @param scratch  room for a number per class
    ManyClassSide(const Records& records, const Totals& totals, double* scratch)
        : records_(records),
          areExact_(records.areExact()),
          numClasses_(static_cast<std::size_t>(records.numClasses)),
          totalWeight_(static_cast<Sum>(totals.weight)),
          total_(totals.classWeights),
          left_(scratch) {
        for (std::size_t k = 0; k < numClasses_; ++k) left_[k] = 0.0;
        if (Unit || areExact_)
            for (std::size_t k = 0; k < numClasses_; ++k)
                rightSquares_ += static_cast<Sum>(total_[k]) * static_cast<Sum>(total_[k]);
    }

    void add(std::uint32_t record) {
        const std::uint16_t k = records_.classes[record];
        if constexpr (Unit) {
            ++weight_;
            move(k, 1);
        } else {
            numRecords_ += records_.counts[record];
            weight_ += records_.weights[record];
            moveOrAdd(k, records_.weights[record]);
        }
    }
    void addBin(const double* bin, double sign = 1.0) {
        numRecords_ += static_cast<std::int64_t>(sign * bin[0]);
        for (std::size_t k = 0; k < numClasses_; ++k) {
            const Sum weight = static_cast<Sum>(sign * bin[1 + k]);
            weight_ += weight;
            moveOrAdd(k, weight);
        }
    }
    static void addTo(double* bin, const Records& records, const Totals&, std::uint32_t record) {
        bin[0] += records.count(record);
        bin[1 + records.classes[record]] += records.weight(record);
    }
    double score() const {
        const auto left = static_cast<double>(weight_), right = static_cast<double>(totalWeight_ - weight_);
        if (!Unit && !(left * right > 0.0)) return -1.0;
        double leftSquares = 0.0, rightSquares = 0.0;
        if (Unit || areExact_) {
            leftSquares = static_cast<double>(leftSquares_);
            rightSquares = static_cast<double>(rightSquares_);
        } else {  // afresh each time: running sums of squares would lose the digits that decide ties
            for (std::size_t k = 0; k < numClasses_; ++k) {
                leftSquares += left_[k] * left_[k];
                rightSquares += (total_[k] - left_[k]) * (total_[k] - left_[k]);
            }
        }
        return (leftSquares * right + rightSquares * left) / (left * right);
    }
    std::int64_t numRecords() const { return Unit ? static_cast<std::int64_t>(weight_) : numRecords_; }

 private:
    void moveOrAdd(std::size_t k, Sum weight) {
        if (Unit || areExact_)
            move(k, weight);
        else
            left_[k] += static_cast<double>(weight);
    }
    /// Sums of squares when `weight` of class k goes to the left: (l + w)^2 = l^2 + w (2 l + w).
    void move(std::size_t k, Sum weight) {
        const auto left = static_cast<Sum>(left_[k]), right = static_cast<Sum>(total_[k]) - left;
        leftSquares_ += weight * (2 * left + weight);
        rightSquares_ -= weight * (2 * right - weight);
        left_[k] = static_cast<double>(left + weight);
    }

    const Records& records_;
    const bool areExact_;
    const std::size_t numClasses_;
    const Sum totalWeight_;
    const double* total_;
    double* left_;
    Sum weight_ = 0, leftSquares_ = 0, rightSquares_ = 0;
    std::int64_t numRecords_ = 0;
};

/// Numbers. With the deviations from the mean of the node summing to s on the left side, the decrease of the
/// sum of squares is s^2 W / (w (W - w)); the score leaves out the factor W.
template <bool Unit>
class MeanSide {
 public:
    MeanSide(const Records& records, const Totals& totals, double* /*scratch*/)
        : records_(records), totalWeight_(totals.weight), mean_(totals.mean) {}

    void add(std::uint32_t record) {
        const double deviation = records_.targets[record] - mean_;
        if constexpr (Unit) {
            weight_ += 1.0;
            sum_ += deviation;
        } else {
            numRecords_ += records_.counts[record];
            weight_ += records_.weights[record];
            sum_ += records_.weights[record] * deviation;
        }
    }
    void addBin(const double* bin, double sign = 1.0) {
        numRecords_ += static_cast<std::int64_t>(sign * bin[0]);
        weight_ += sign * bin[1];
        sum_ += sign * bin[2];
    }
    static void addTo(double* bin, const Records& records, const Totals& totals, std::uint32_t record) {
        const double weight = records.weight(record);
        bin[0] += records.count(record);
        bin[1] += weight;
        bin[2] += weight * (records.targets[record] - totals.mean);
    }
    double score() const {
        const double product = weight_ * (totalWeight_ - weight_);
        if (!Unit && !(product > 0.0)) return -1.0;
        return sum_ * sum_ / product;
    }
    bool mayExceed(double best) const {
        return sum_ * sum_ >= best * (weight_ * (totalWeight_ - weight_)) * kBelowOne;
    }
    static double order(const double* bin) { return bin[2] / bin[1]; }
    std::int64_t numRecords() const { return Unit ? static_cast<std::int64_t>(weight_) : numRecords_; }

 private:
    const Records& records_;
    const double totalWeight_, mean_;
    double weight_ = 0.0, sum_ = 0.0;
    std::int64_t numRecords_ = 0;
};

}  // namespace Tessel::Engine::DT
