// Confusion, summaries and residuals; the tables that rank rows by score are in rank_tables.cpp.

#include <cmath>

#include <tessel/evaluator/evaluator.h>

#include "evaluator/label_pairs.h"
#include "evaluator/table_builder.h"

namespace Tessel::Evaluator {
namespace {

/// Per class the weights of its cases, of its predictions and of both at once.
struct ClassCounts {
    std::vector<double> cases;
    std::vector<double> predictions;
    std::vector<double> hits;
};

ClassCounts countByClass(const LabelPairs& pairs, const RowWeights& weights) {
    const std::size_t numClasses = pairs.classes().size();
    const auto count = [&](auto classOf) {
        // One more cell, so that a tally without hits is no empty one.
        auto counts = tally(numClasses + 1, pairs.numRows(), weights, [&](std::size_t row) -> std::int64_t {
            if (pairs.actual(row) == kMissingCode || pairs.predicted(row) == kMissingCode) return -1;
            return classOf(row);
        });
        counts.pop_back();
        return counts;
    };
    const auto miss = static_cast<std::int64_t>(numClasses);
    return {.cases = count([&](std::size_t row) { return pairs.actual(row); }),
            .predictions = count([&](std::size_t row) { return pairs.predicted(row); }),
            .hits = count([&](std::size_t row) -> std::int64_t {
                return pairs.actual(row) == pairs.predicted(row) ? pairs.actual(row) : miss;
            })};
}

double sumOf(const std::vector<double>& values) {
    return pairwiseSum(0, values.size(), [&](std::size_t i) { return values[i]; });
}

}  // namespace

DataFrame confusion(const Labels& actual, const Labels& predicted, const StringVector& classes,
                    const Vector& weights) {
    LabelPairs pairs(actual, predicted);
    if (classes.empty())
        pairs.sortClasses();
    else
        pairs.setClasses(classes);

    const std::size_t numClasses = pairs.classes().size();
    const RowWeights rowWeights(weights, pairs.numRows());
    // Column after column, as the table stores them.
    const auto counts =
        tally(numClasses * numClasses, pairs.numRows(), rowWeights, [&](std::size_t row) -> std::int64_t {
            const std::int64_t actualClass = pairs.actual(row);
            const std::int64_t predictedClass = pairs.predicted(row);
            if (actualClass == kMissingCode || predictedClass == kMissingCode) return -1;
            return predictedClass * static_cast<std::int64_t>(numClasses) + actualClass;
        });

    DataFrame table(L"Confusion Matrix");
    for (std::size_t column = 0; column < numClasses; ++column) {
        const auto first = counts.begin() + static_cast<std::ptrdiff_t>(column * numClasses);
        table.append(DataFrameColumn(pairs.classes()[column],
                                     Vector(first, first + static_cast<std::ptrdiff_t>(numClasses))));
    }
    table.setRowNames(StringVector(pairs.classes()));
    return table;
}

IntVector misclassifications(const Labels& actual, const Labels& predicted) {
    const LabelPairs pairs(actual, predicted);
    IntVector misses(pairs.numRows());
    for (std::size_t row = 0; row < misses.size(); ++row)
        misses[row] = pairs.actual(row) != kMissingCode && pairs.actual(row) != pairs.predicted(row);
    return misses;
}

DataFrame classificationSummary(const Labels& actual, const Labels& predicted, const Vector& weights) {
    LabelPairs pairs(actual, predicted);
    pairs.sortClasses();
    const ClassCounts counts = countByClass(pairs, RowWeights(weights, pairs.numRows()));
    const double total = sumOf(counts.cases);

    TableBuilder table(L"Classification Summary",
                       {L"# Cases", L"# Predicted", L"# Errors", L"% Error", L"Precision", L"Sensitivity",
                        L"Specificity", L"F1 score"});
    CompensatedSum errors;
    double means[4] = {0.0, 0.0, 0.0, 0.0};
    const std::size_t numClasses = pairs.classes().size();
    for (std::size_t i = 0; i < numClasses; ++i) {
        const double missed = counts.cases[i] - counts.hits[i];
        const double falseAlarms = counts.predictions[i] - counts.hits[i];
        const BinaryCounts binary{.truePositives = counts.hits[i],
                                  .falsePositives = falseAlarms,
                                  .falseNegatives = missed,
                                  .trueNegatives = total - counts.cases[i] - falseAlarms};
        const double ratios[4] = {binary.precision(), binary.sensitivity(), binary.specificity(),
                                  binary.F1()};
        table.addRow({counts.cases[i], counts.predictions[i], missed, 100.0 * ratio(missed, counts.cases[i]),
                      ratios[0], ratios[1], ratios[2], ratios[3]});
        errors.add(missed);
        for (std::size_t k = 0; k < 4; ++k) means[k] += ratios[k] / static_cast<double>(numClasses);
    }
    table.addRow({total, total, errors.value(), 100.0 * ratio(errors.value(), total), means[0], means[1],
                  means[2], means[3]});
    StringVector rowNames(pairs.classes());
    rowNames.push_back(L"Overall");
    return table.finish(rowNames);
}

DataFrame classificationMetrics(const Labels& actual, const Labels& predicted, const WString& successClass,
                                const Vector& weights) {
    const HitCounts hits = countHits(actual, predicted, weights);
    const BinaryCounts binary = countBinary(actual, predicted, successClass, weights);
    TableBuilder table(L"Metrics", {L"Accuracy (#correct)", L"Accuracy (%correct)", L"Accuracy",
                                    L"Specificity", L"Sensitivity", L"Precision", L"F1 score"});
    table.addRow({hits.right, 100.0 * hits.accuracy(), hits.accuracy(), binary.specificity(),
                  binary.sensitivity(), binary.precision(), binary.F1()});
    return table.finish({L"Value"});
}

DataFrame regressionMetrics(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    TableBuilder table(L"Metrics", {L"SSE", L"MSE", L"RMSE", L"MAD", L"R2", L"MAPE"});
    table.addRow({Metrics::SSE(actual, predicted, weights), Metrics::MSE(actual, predicted, weights),
                  Metrics::RMSE(actual, predicted, weights), Metrics::MAD(actual, predicted, weights),
                  Metrics::R2(actual, predicted, weights), Metrics::MAPE(actual, predicted, weights)});
    return table.finish({L"Value"});
}

DataFrame regressionResiduals(const DataFrameColumn& actual, const DataFrameColumn& predicted,
                              bool standardized) {
    const auto a = actual.values();
    const auto p = predicted.values();
    requireSameNumRows(a.size(), p.size());
    Vector residuals(a.size());
    for (std::size_t row = 0; row < a.size(); ++row) residuals[row] = a[row] - p[row];

    DataFrame table(L"Residuals");
    DataFrameColumn first = actual;  // brings the row names along
    first.setColName(L"Actual");
    table.append(first);
    DataFrameColumn second = predicted;
    second.setColName(L"Predicted");
    table.append(second);
    table.append(DataFrameColumn(L"Residual", residuals));
    if (standardized) {
        CompensatedSum squares;
        double count = 0.0;
        for (const double residual : residuals) {
            if (std::isnan(residual)) continue;
            squares.add(residual * residual);
            ++count;
        }
        const double scale = std::sqrt(ratio(squares.value(), count));
        for (double& residual : residuals) residual = ratio(residual, scale);
        table.append(DataFrameColumn(L"Standardized Residual", std::move(residuals)));
    }
    return table;
}

}  // namespace Tessel::Evaluator
