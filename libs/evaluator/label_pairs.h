#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <tessel/evaluator/metrics.h>

#include "data/column_access.h"
#include "evaluator/row_weights.h"

namespace Tessel {

/// The labels as dictionary-encoded cells: the column's own when it is a text column, else its numbers'
/// shortest texts, encoded.
std::shared_ptr<ColumnCells> labelCells(const Metrics::Labels& labels);

/// The code of `label` in such cells, which occurs in no row when the label does not.
/// @throws UnspecifiedStringParameter for an empty label.
std::int32_t successCode(const ColumnCells& cells, const WString& successClass);

/// Actual and predicted labels, row by row, as positions in one common list of classes.
class LabelPairs {
 public:
    /// The classes are all that occur, in no particular order.
    /// @throws NumRowsMismatch
    LabelPairs(const Metrics::Labels& actual, const Metrics::Labels& predicted);

    std::size_t numRows() const { return actual_.codes.size(); }
    const std::vector<WString>& classes() const { return classes_; }
    /// Position in `classes()`, or `kMissingCode`.
    std::int32_t actual(std::size_t row) const { return actual_[row]; }
    std::int32_t predicted(std::size_t row) const { return predicted_[row]; }

    /// Puts the classes into the ascending order that `Evaluator::confusion` documents.
    void sortClasses();
    /// Replaces the list of classes. @throws NotASetMember, DuplicateName, ConstraintViolation
    void setClasses(const StringVector& classes);

 private:
    struct Side {
        std::shared_ptr<ColumnCells> cells;
        std::span<const std::int32_t> codes;
        std::vector<std::int32_t> classOfCode;  // shifted by one, for kMissingCode

        explicit Side(const Metrics::Labels& labels);
        std::int32_t operator[](std::size_t row) const {
            return classOfCode[static_cast<std::size_t>(codes[row] + 1)];
        }
    };

    Side actual_;
    Side predicted_;
    std::vector<WString> classes_;
};

/// The weights of rows that are truly or falsely predicted to be positive or negative.
struct BinaryCounts {
    double truePositives = 0.0;
    double falsePositives = 0.0;
    double falseNegatives = 0.0;
    double trueNegatives = 0.0;

    double sensitivity() const { return ratio(truePositives, truePositives + falseNegatives); }
    double specificity() const { return ratio(trueNegatives, trueNegatives + falsePositives); }
    double falsePositiveRate() const { return ratio(falsePositives, trueNegatives + falsePositives); }
    double precision() const { return ratio(truePositives, truePositives + falsePositives); }
    double F1() const {
        return ratio(2.0 * truePositives, 2.0 * truePositives + falsePositives + falseNegatives);
    }
    /// Share of all rows that are predicted positive.
    double predictedShare() const {
        return ratio(truePositives + falsePositives,
                     truePositives + falsePositives + falseNegatives + trueNegatives);
    }
    /// How many times more positives there are among those predicted than among all rows.
    double lift() const { return ratio(sensitivity(), predictedShare()); }
    double accuracy() const {
        const double right = truePositives + trueNegatives;
        return ratio(right, right + falsePositives + falseNegatives);
    }
};

/// @throws UnspecifiedStringParameter, TooFewNumRows
BinaryCounts countBinary(const Metrics::Labels& actual, const Metrics::Labels& predicted,
                         const WString& successClass, const Vector& weights);

/// The weights of the rows predicted rightly and wrongly.
struct HitCounts {
    double right = 0.0;
    double wrong = 0.0;

    double accuracy() const { return ratio(right, right + wrong); }
    double error() const { return ratio(wrong, right + wrong); }
};

/// @throws TooFewNumRows
HitCounts countHits(const Metrics::Labels& actual, const Metrics::Labels& predicted, const Vector& weights);

}  // namespace Tessel
