#include "framework/regression.h"

#include <algorithm>
#include <cmath>

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

TrainingSet IEstimator::checkedData(const DataFrame& features, const DataFrameColumn& target) const {
    return {checkedFeatures(features, target), readNumericTarget(target)};
}

void IEstimator::validate(const DataFrame& features, const DataFrameColumn& target) const {
    requireFinite(checkedData(features, target).features);
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrameColumn& target) const {
    TrainingSet data = checkedData(features, target);
    std::shared_ptr<IModelable> model = fitEngine(data);
    model->setName(getName());
    model->schema = std::move(data.features.schema);
    model->schema.targetName = target.getColName();
    return model;
}

}  // namespace Tessel::Regression
