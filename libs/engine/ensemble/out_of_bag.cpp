#include "engine/ensemble/out_of_bag.h"

#include <algorithm>
#include <limits>

#include "data/util/compensated_sum.h"

namespace Tessel::Engine::Ensemble {

OutOfBagVotes::OutOfBagVotes(std::span<const std::int32_t> classes, std::size_t numClasses,
                             std::size_t success, double cutOff)
    : classes_(classes),
      numClasses_(numClasses),
      success_(success),
      cutOff_(cutOff),
      votes_(classes.size() * numClasses, 0),
      states_(classes.size(), 0) {}

std::size_t OutOfBagVotes::chosen(std::span<const std::uint32_t> votes) const {
    if (numClasses_ == 2 && success_ < 2) {
        const double share = static_cast<double>(votes[success_]) / (double{0} + votes[0] + votes[1]);
        return share >= cutOff_ ? success_ : 1 - success_;
    }
    return static_cast<std::size_t>(std::max_element(votes.begin(), votes.end()) - votes.begin());
}

void OutOfBagVotes::add(std::span<const std::int32_t> multiplicities, std::span<const std::int32_t> codes) {
    for (std::size_t row = 0; row < codes.size(); ++row) {
        if (multiplicities[row] != 0) continue;
        const std::span<std::uint32_t> votes = std::span(votes_).subspan(row * numClasses_, numClasses_);
        const auto code = static_cast<std::size_t>(static_cast<std::uint32_t>(codes[row]));
        if (code < numClasses_) ++votes[code];
        if (code >= numClasses_ && states_[row] == 0) continue;  // a label of no class is no vote
        const bool isWrong = chosen(votes) != static_cast<std::size_t>(classes_[row]);
        numJudged_ += states_[row] == 0;
        numWrong_ += isWrong - (states_[row] == 2);
        states_[row] = isWrong ? 2 : 1;
    }
    log_.errors.push_back(numJudged_ > 0 ? static_cast<double>(numWrong_) / static_cast<double>(numJudged_)
                                         : std::numeric_limits<double>::quiet_NaN());
    log_.numRecords.push_back(numJudged_);
}

OutOfBagMeans::OutOfBagMeans(std::span<const double> targets)
    : targets_(targets), sums_(targets.size(), 0.0), counts_(targets.size(), 0) {}

void OutOfBagMeans::add(std::span<const std::int32_t> multiplicities, std::span<const double> predictions) {
    std::int64_t numJudged = 0;
    for (std::size_t row = 0; row < targets_.size(); ++row) {
        if (multiplicities[row] == 0) {
            sums_[row] += predictions[row];
            ++counts_[row];
        }
        numJudged += counts_[row] > 0;
    }
    const double squares = Numeric::sumOf(targets_.size(), [&](std::size_t row) {
        if (counts_[row] == 0) return 0.0;
        const double error = targets_[row] - sums_[row] / counts_[row];
        return error * error;
    });
    log_.errors.push_back(numJudged > 0 ? squares / static_cast<double>(numJudged)
                                        : std::numeric_limits<double>::quiet_NaN());
    log_.numRecords.push_back(numJudged);
}

}  // namespace Tessel::Engine::Ensemble
