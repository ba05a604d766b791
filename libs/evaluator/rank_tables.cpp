// Tables over rows ranked by score: ROC by threshold, gains and lift by decile.

#include <array>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/evaluator/evaluator.h>

#include "evaluator/label_pairs.h"
#include "evaluator/score_groups.h"
#include "evaluator/table_builder.h"

namespace Tessel::Evaluator {
namespace {

constexpr std::size_t kNumDeciles = 10;

void addThreshold(TableBuilder& table, double threshold, const BinaryCounts& counts) {
    table.addRow({threshold, counts.truePositives, counts.falsePositives, counts.falseNegatives,
                  counts.trueNegatives, counts.sensitivity(), counts.falsePositiveRate(), counts.precision(),
                  counts.F1(), counts.accuracy(), counts.predictedShare(), counts.lift()});
}

/// The response of each tenth of the total weight.
std::array<double, kNumDeciles> responseByDecile(const std::vector<ScoreGroup>& groups, double totalWeight) {
    const auto endOf = [&](std::size_t decile) {
        return totalWeight * static_cast<double>(decile + 1) / static_cast<double>(kNumDeciles);
    };
    std::array<CompensatedSum, kNumDeciles> sums;
    CompensatedSum weightSoFar;
    std::size_t decile = 0;
    for (const ScoreGroup& group : groups) {
        double start = weightSoFar.value();
        weightSoFar.add(group.weight);
        const double end = weightSoFar.value();
        double rest = group.response;
        // Deciles that end within the group take their share of it, the current one the rest.
        for (; decile + 1 < kNumDeciles && endOf(decile) < end; ++decile) {
            const double share = group.response * ((endOf(decile) - start) / group.weight);
            sums[decile].add(share);
            rest -= share;
            start = endOf(decile);
        }
        sums[decile].add(rest);
    }
    std::array<double, kNumDeciles> responses;
    for (std::size_t i = 0; i < kNumDeciles; ++i) responses[i] = sums[i].value();
    return responses;
}

DataFrame gainsOf(const std::vector<ScoreGroup>& groups) {
    CompensatedSum weightSum;
    for (const ScoreGroup& group : groups) weightSum.add(group.weight);
    const double totalWeight = weightSum.value();
    const auto responses = responseByDecile(groups, totalWeight);
    CompensatedSum responseSum;
    for (const double response : responses) responseSum.add(response);
    const double totalResponse = responseSum.value();
    const double overallMean = totalResponse / totalWeight;

    TableBuilder table(L"Gains", {L"# Cases", L"Response", L"Mean Response", L"Lift", L"Cumulative Cases",
                                  L"Cumulative Response", L"Cumulative Mean Response", L"Cumulative Lift",
                                  L"Cumulative Gain (%)"});
    StringVector rowNames;
    CompensatedSum cumulative;
    const double cases = totalWeight / static_cast<double>(kNumDeciles);
    for (std::size_t i = 0; i < kNumDeciles; ++i) {
        cumulative.add(responses[i]);
        const double mean = responses[i] / cases;
        const double cumulativeCases = totalWeight * static_cast<double>(i + 1) / kNumDeciles;
        const double cumulativeMean = cumulative.value() / cumulativeCases;
        table.addRow({cases, responses[i], mean, ratio(mean, overallMean), cumulativeCases,
                      cumulative.value(), cumulativeMean, ratio(cumulativeMean, overallMean),
                      100.0 * ratio(cumulative.value(), totalResponse)});
        rowNames.push_back(L"Decile " + Convert::toString(static_cast<int>(i) + 1));
    }
    return table.finish(rowNames);
}

}  // namespace

DataFrame rocCurve(const Labels& actual, const Numbers& scores, const WString& successClass,
                   const Vector& weights) {
    const std::vector<ScoreGroup> groups = groupByScore(actual, scores, successClass, weights);
    CompensatedSum positives;
    CompensatedSum negatives;
    for (const ScoreGroup& group : groups) {
        positives.add(group.response);
        negatives.add(group.weight - group.response);
    }

    TableBuilder table(L"ROC Curve",
                       {L"Threshold", L"True Positives", L"False Positives", L"False Negatives",
                        L"True Negatives", L"True Positive Rate", L"False Positive Rate", L"Precision",
                        L"F1 score", L"Accuracy", L"Predicted Positive Rate", L"Lift"});
    addThreshold(table, std::numeric_limits<double>::infinity(),
                 {.falseNegatives = positives.value(), .trueNegatives = negatives.value()});
    CompensatedSum foundPositives;
    CompensatedSum foundNegatives;
    for (const ScoreGroup& group : groups) {
        foundPositives.add(group.response);
        foundNegatives.add(group.weight - group.response);
        addThreshold(table, group.score,
                     {.truePositives = foundPositives.value(),
                      .falsePositives = foundNegatives.value(),
                      .falseNegatives = positives.value() - foundPositives.value(),
                      .trueNegatives = negatives.value() - foundNegatives.value()});
    }
    return table.finish();
}

DataFrame gains(const Labels& actual, const Numbers& scores, const WString& successClass,
                const Vector& weights) {
    return gainsOf(groupByScore(actual, scores, successClass, weights));
}

DataFrame gains(const Numbers& actual, const Numbers& predicted, const Vector& weights) {
    return gainsOf(groupByScore(predicted.values(), actual.values(), weights));
}

}  // namespace Tessel::Evaluator
