#include <algorithm>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/evaluator/metrics.h>

#include "data/column_access.h"
#include "evaluator/label_pairs.h"
#include "evaluator/score_groups.h"

namespace Tessel::Metrics {
namespace {

constexpr WStringView kPosteriorPrefix = L"Posterior Probability: ";

/// @throws ValueOutOfRange
double clipped(double probability) {
    constexpr double kTolerance = 1e-9;  // more than sums of rounded posteriors are off
    if (probability < -kTolerance || probability > 1.0 + kTolerance)
        throw ValueOutOfRange("Posterior Probability", 0.0, 1.0);
    return std::clamp(probability, kLogLossEpsilon, 1.0 - kLogLossEpsilon);
}

/// The weighted mean of -ln(probabilityOf(row)); a NaN leaves its row out.
template <class ProbabilityOf>
double meanLoss(std::size_t numRows, const Vector& weights, const ProbabilityOf& probabilityOf) {
    const RowWeights rowWeights(weights, numRows);
    CompensatedSum loss;
    CompensatedSum total;
    for (std::size_t row = 0; row < numRows; ++row) {
        if (rowWeights[row] == 0.0) continue;
        const double probability = probabilityOf(row);
        if (std::isnan(probability)) continue;
        loss.add(-rowWeights[row] * std::log(probability));
        total.add(rowWeights[row]);
    }
    if (total.value() == 0.0) throw TooFewNumRows();
    return loss.value() / total.value();
}

/// The columns of a table of posteriors and their classes.
class Posteriors {
 public:
    explicit Posteriors(const DataFrame& table) {
        for (int column = 0; column < table.getNumCols(); ++column) {
            if (ColumnAccess::isIndex(table, column)) continue;
            if (!table.isNumeric(column))
                throw NonNumericData(Convert::toUtf8Lossy(table.getColName(column)));
            const WString& name = table.getColName(column);
            const bool hasPrefix = WStringView(name).substr(0, kPosteriorPrefix.size()) == kPosteriorPrefix;
            add(hasPrefix ? name.substr(kPosteriorPrefix.size()) : name,
                ColumnAccess::cells(table, column)->numbers());
        }
        if (columns_.empty()) throw TooFewNumColumns();
    }

    /// Per level of `cells` the position of its column. @throws NotAValidColName
    std::vector<std::size_t> columnOfCode(const ColumnCells& cells) const {
        std::vector<std::size_t> positions(static_cast<std::size_t>(cells.dictionary().size()));
        for (const std::int32_t code : cells.presentCodes()) {
            const WString& label = cells.dictionary()[code];
            const auto found = std::find(classes_.begin(), classes_.end(), label);
            if (found == classes_.end())
                throw NotAValidColName("Posterior Probabilities", Convert::toUtf8Lossy(label));
            positions[static_cast<std::size_t>(code)] = static_cast<std::size_t>(found - classes_.begin());
        }
        return positions;
    }

    /// The row's probability in one column after clipping, as a share of the row's sum; NaN when a cell is
    /// missing.
    double share(std::size_t row, std::size_t column) const {
        double sum = 0.0;
        for (const auto& probabilities : columns_) {
            if (std::isnan(probabilities[row])) return probabilities[row];
            sum += clipped(probabilities[row]);
        }
        return clipped(columns_[column][row]) / sum;
    }

 private:
    void add(const WString& label, std::span<const double> probabilities) {
        if (std::find(classes_.begin(), classes_.end(), label) != classes_.end())
            throw DuplicateName(Convert::toUtf8Lossy(label));
        classes_.push_back(label);
        columns_.push_back(probabilities);
    }

    std::vector<WString> classes_;
    std::vector<std::span<const double>> columns_;
};

}  // namespace

double accuracy(const Labels& actual, const Labels& predicted, const Vector& weights) {
    return countHits(actual, predicted, weights).accuracy();
}

double error(const Labels& actual, const Labels& predicted, const Vector& weights) {
    return countHits(actual, predicted, weights).error();
}

double specificity(const Labels& actual, const Labels& predicted, const WString& successClass,
                   const Vector& weights) {
    return countBinary(actual, predicted, successClass, weights).specificity();
}

double sensitivity(const Labels& actual, const Labels& predicted, const WString& successClass,
                   const Vector& weights) {
    return countBinary(actual, predicted, successClass, weights).sensitivity();
}

double precision(const Labels& actual, const Labels& predicted, const WString& successClass,
                 const Vector& weights) {
    return countBinary(actual, predicted, successClass, weights).precision();
}

double F1(const Labels& actual, const Labels& predicted, const WString& successClass, const Vector& weights) {
    return countBinary(actual, predicted, successClass, weights).F1();
}

double AUC(const Labels& actual, const Numbers& scores, const WString& successClass, const Vector& weights) {
    CompensatedSum positives;
    CompensatedSum negatives;
    CompensatedSum ordered;  // weight of the pairs whose positive row has the higher score
    for (const ScoreGroup& group : groupByScore(actual, scores, successClass, weights)) {
        const double groupNegatives = group.weight - group.response;
        ordered.add(groupNegatives * (positives.value() + 0.5 * group.response));
        positives.add(group.response);
        negatives.add(groupNegatives);
    }
    return ratio(ordered.value(), positives.value() * negatives.value());
}

double logLoss(const Labels& actual, const DataFrame& posteriors, const Vector& weights) {
    const auto cells = labelCells(actual);
    const auto codes = cells->codes();
    const Posteriors probabilities(posteriors);
    requireSameNumRows(codes.size(), static_cast<std::size_t>(posteriors.getNumRows()));
    const auto columnOfCode = probabilities.columnOfCode(*cells);
    return meanLoss(codes.size(), weights, [&](std::size_t row) {
        if (codes[row] == kMissingCode) return std::numeric_limits<double>::quiet_NaN();
        return probabilities.share(row, columnOfCode[static_cast<std::size_t>(codes[row])]);
    });
}

double logLoss(const Labels& actual, const Numbers& successProbabilities, const WString& successClass,
               const Vector& weights) {
    const auto cells = labelCells(actual);
    const auto codes = cells->codes();
    const auto probabilities = successProbabilities.values();
    requireSameNumRows(codes.size(), probabilities.size());
    const std::int32_t success = successCode(*cells, successClass);
    return meanLoss(codes.size(), weights, [&](std::size_t row) {
        if (codes[row] == kMissingCode || std::isnan(probabilities[row]))
            return std::numeric_limits<double>::quiet_NaN();
        const double probability = clipped(probabilities[row]);
        return codes[row] == success ? probability : 1.0 - probability;
    });
}

}  // namespace Tessel::Metrics
