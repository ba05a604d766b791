#include "transformation/scaler/estimator.h"

#include <algorithm>
#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "data/util/sample.h"
#include "transformation/scaler/model.h"

namespace Tessel::Scaler {
namespace {

using Method = Engine::Scaler::Rescaling (*)(std::span<const double>);

Method methodOf(ScalingType type) {
    switch (type) {
        case ScalingType::STANDARDIZATION:
            break;
        case ScalingType::NORMALIZATION:
            return &Engine::Scaler::normalization;
        case ScalingType::SHIFT:
            return &Engine::Scaler::meanShift;
        case ScalingType::UNIT_NORM:
            return &Engine::Scaler::unitNorm;
    }
    return &Engine::Scaler::standardization;
}

}  // namespace

IEstimator::IEstimator() : IEstimatable(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::TRANSFORMER, Ladon::TaskKind::TRANSFORMATION, Ladon::ModelAlgorithm::RESCALING};
}

StringVector IEstimator::columnsOf(const DataFrame& table) const {
    for (const WString& name : columns.get())
        if (!table.isColumn(name))
            throw NotAValidColName(columns.getNarrowDescription(), Convert::toUtf8Lossy(name));
    if (!columns.get().empty()) return columns.get();
    const IntVector positions = Numeric::numericFeatures(table);
    if (positions.empty()) throw TooFewNumColumns(0);
    return table.getColNames(positions);
}

std::shared_ptr<IModel> IEstimator::fit(const DataFrame& table) const {
    validate();
    if (table.getNumRows() == 0) throw TooFewNumRows(0);
    auto model = std::make_shared<IModel>(columnsOf(table));
    model->setName(getName());
    model->schema.indexColNames = table.getIndexedColNames();
    const TrainingFeatures features{model->schema, readFeatures(model->schema, table)};
    std::vector<Rescaling> rescalings =
        Engine::Scaler::fit(engineColumns(features.columns), methodOf(scalingType.get()));
    const bool isFinite = std::all_of(rescalings.begin(), rescalings.end(), [](const Rescaling& rescaling) {
        return std::isfinite(rescaling.scale);
    });
    if (!isFinite) requireFinite(features);
    model->setRescalings(std::move(rescalings));
    return model;
}

}  // namespace Tessel::Scaler
