#include "framework/regression.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <tessel/data/convert.h>

#include "data/column_access.h"

namespace Tessel::Regression {

DataFrame IModelable::predict(const DataFrame& features) const {
    const std::vector<FeatureColumn> columns = readFeatures(schema, features);
    std::vector<double> predictions(static_cast<std::size_t>(features.getNumRows()));
    if (!predictions.empty()) score(columns, predictions);
    DataFrame table(L"Scores");
    table.append(ColumnAccess::makeColumn(L"Prediction: " + schema.targetName,
                                          ColumnCells::ofNumbers(std::move(predictions)),
                                          ColumnAccess::rowNames(features)));
    return table;
}

std::span<const double> readNumericTarget(const DataFrameColumn& target) {
    const auto values = target.values();
    if (!std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); }))
        throw ConstraintViolation(
            Convert::toUtf8Lossy(target.getColName()),
            "The target has missing or infinite cells; remove these rows or fill the cells.");
    return values;
}

TrainingFeatures IEstimator::checkedData(const DataFrame& features, const DataFrameColumn& target) const {
    TrainingFeatures read = checkedFeatures(features, target);
    readNumericTarget(target);
    read.schema.targetName = target.getColName();
    return read;
}

void IEstimator::validate(const DataFrame& features, const DataFrameColumn& target) const {
    requireFinite(checkedData(features, target));
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrameColumn& target) const {
    TrainingFeatures read = checkedData(features, target);
    const TrainingSet all{
        .features = read, .target = target.values(), .progress = Progress(progressCallback)};
    all.progress.report(0.0, getModelName());
    std::shared_ptr<IModelable> model = fitEngine(all);
    all.progress.report(1.0, getModelName());
    model->setName(getName());
    model->schema = std::move(read.schema);
    return model;
}

std::shared_ptr<IModelable> IEstimator::fitResample(
    const TrainingFeatures& features, std::span<const double> target, Supervised::Resample& resample,
    const Supervised::Preparation* preparation, const Progress& progress, std::span<double> fitted) const {
    std::shared_ptr<IModelable> model;
    if (resample.rows.empty() || takesMultiplicities()) {
        resample.rows = std::vector<std::int32_t>();
        TrainingSet data{features, target, resample.multiplicities, preparation, progress};
        if (!fitted.empty() && fillsFitted(data)) data.fitted = std::exchange(fitted, {});
        model = fitEngine(data);
    } else {
        std::vector<double> drawn;
        drawn.reserve(resample.rows.size());
        for (const std::int32_t row : resample.rows) drawn.push_back(target[static_cast<std::size_t>(row)]);
        model = fitEngine({selectRows(features, resample.rows), drawn, {}, nullptr, progress});
    }
    if (!fitted.empty()) model->score(features.columns, fitted);
    model->setName(getName());
    model->schema = features.schema;
    model->schema.rowNames = nullptr;  // the records are no rows of the table
    return model;
}

}  // namespace Tessel::Regression
