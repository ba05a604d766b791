#include "supervised/find_best_model/model.h"

#include <tessel/evaluator/evaluator.h>

namespace Tessel {
namespace {

void requireRows(const DataFrame& features, const DataFrameColumn& target) {
    if (features.getNumRows() != target.getNumRows()) throw IncompatibleNumRows();
    if (features.getNumRows() == 0) throw TooFewNumRows(0);
}

}  // namespace

namespace Classification::FindBestModel {

const std::map<ClassificationMetricType, WString>& metricNames() {
    static const std::map<ClassificationMetricType, WString> names{
        {ClassificationMetricType::ACCURACY, L"Accuracy"},
        {ClassificationMetricType::SPECIFICITY, L"Specificity"},
        {ClassificationMetricType::SENSITIVITY, L"Sensitivity"},
        {ClassificationMetricType::PRECISION, L"Precision"},
        {ClassificationMetricType::F1_SCORE, L"F1 score"},
        {ClassificationMetricType::PERCENT_CORRECT, L"Accuracy (%correct)"}};
    return names;
}

WString IModel::findBestLearner(const DataFrame& features, const DataFrameColumn& target,
                                bool useForScoring) {
    if (!models.empty()) requireRows(features, target);
    return chooseBest(metricNames().at(metric), true, useForScoring, [&](const IModelable& model) {
        return measure(target, model.predict(features)(Util::all, 0));
    });
}

DataFrame IModel::measure(const DataFrameColumn& actual, const DataFrameColumn& predicted) const {
    if (!classSchema.successClass.empty())
        return Evaluator::classificationMetrics(actual, predicted, classSchema.successClass);
    const DataFrame byClass = Evaluator::classificationSummary(actual, predicted);
    const double share = Metrics::accuracy(actual, predicted);
    DataFrame table(L"Metrics");
    const auto add = [&](const WString& name, double value) {
        table.append(DataFrameColumn(name, Vector{value}));
    };
    add(L"Accuracy (#correct)",
        byClass(L"Overall", L"# Cases").toDouble() - byClass(L"Overall", L"# Errors").toDouble());
    add(L"Accuracy (%correct)", 100.0 * share);
    add(L"Accuracy", share);
    for (const wchar_t* const mean : {L"Specificity", L"Sensitivity", L"Precision", L"F1 score"})
        add(mean, byClass(L"Overall", mean).toDouble());
    return table;
}

void IModel::setSuccessClass(const WString& label) {
    IModelable::setSuccessClass(label);
    for (const auto& [type, model] : models) model->setSuccessClass(label);
}

void IModel::setSuccessProbability(double cutOff) {
    IModelable::setSuccessProbability(cutOff);
    for (const auto& [type, model] : models) model->setSuccessProbability(cutOff);
}

void IModel::describe(StringVector& labels, StringVector& values) const {
    IModelable::describe(labels, values);
    describeSearch(metricNames().at(metric), labels, values);
}

void IModel::report(DataFrameVector& tables) const {
    IModelable::report(tables);
    reportSearch(tables);
}

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

const std::map<RegressionMetricType, WString>& metricNames() {
    static const std::map<RegressionMetricType, WString> names{{RegressionMetricType::SSE, L"SSE"},
                                                               {RegressionMetricType::MSE, L"MSE"},
                                                               {RegressionMetricType::RMSE, L"RMSE"},
                                                               {RegressionMetricType::MAD, L"MAD"},
                                                               {RegressionMetricType::R2, L"R2"}};
    return names;
}

WString IModel::findBestLearner(const DataFrame& features, const DataFrameColumn& target,
                                bool useForScoring) {
    if (!models.empty()) requireRows(features, target);
    return chooseBest(metricNames().at(metric), metric == RegressionMetricType::R2, useForScoring,
                      [&](const IModelable& model) {
                          return Evaluator::regressionMetrics(target, model.predict(features)(Util::all, 0));
                      });
}

void IModel::describe(StringVector& labels, StringVector& values) const {
    describeSearch(metricNames().at(metric), labels, values);
}

}  // namespace Regression::FindBestModel
}  // namespace Tessel
