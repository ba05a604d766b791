#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Out-of-bag error: each record is predicted by the learners whose bootstrap sample missed it, which is as
// honest as a test set of the size of the training set. Source: L. Breiman, Out-of-bag estimation (technical
// report, University of California at Berkeley, 1996).

namespace Tessel::Engine::Ensemble {

/// The error after each learner, over the records that some learner up to it had not seen.
struct OutOfBagLog {
    std::vector<double> errors;            ///< NaN while there is no such record
    std::vector<std::int64_t> numRecords;  ///< how many records were judged
};

/// Misclassification rate of the vote. O(records) a learner; memory of a number per record and class.
class OutOfBagVotes {
 public:
    /// @param success  with two classes the one that is predicted from the share `cutOff` of the votes on;
    ///                 else the class of most votes is predicted, of equals the first.
    OutOfBagVotes(std::span<const std::int32_t> classes, std::size_t numClasses, std::size_t success,
                  double cutOff);
    /// The next learner. @param multiplicities  by record, 0 when the learner did not see it
    /// @param codes  its predictions of the records, looked at where it did not
    void add(std::span<const std::int32_t> multiplicities, std::span<const std::int32_t> codes);
    const OutOfBagLog& log() const { return log_; }

 private:
    std::size_t chosen(std::span<const std::uint32_t> votes) const;

    std::span<const std::int32_t> classes_;
    std::size_t numClasses_, success_;
    double cutOff_;
    std::vector<std::uint32_t> votes_;  // record by record
    std::vector<std::uint8_t> states_;  // 0: not judged yet, 1: right, 2: wrong
    std::int64_t numJudged_ = 0, numWrong_ = 0;
    OutOfBagLog log_;
};

/// Mean squared error of the mean prediction. O(records) a learner, 12 bytes a record.
class OutOfBagMeans {
 public:
    explicit OutOfBagMeans(std::span<const double> targets);
    void add(std::span<const std::int32_t> multiplicities, std::span<const double> predictions);
    const OutOfBagLog& log() const { return log_; }

 private:
    std::span<const double> targets_;
    std::vector<double> sums_;
    std::vector<std::uint32_t> counts_;
    OutOfBagLog log_;
};

}  // namespace Tessel::Engine::Ensemble
