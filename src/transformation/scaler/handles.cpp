#include <tessel/data/errors.h>
#include <tessel/scaler.h>

#include "transformation/scaler/estimator.h"
#include "transformation/scaler/model.h"

namespace Tessel::Scaler {

WString getScalingTypeName(ScalingType type) {
    switch (type) {
        case ScalingType::STANDARDIZATION:
            return L"Standardization";
        case ScalingType::NORMALIZATION:
            return L"Normalization";
        case ScalingType::SHIFT:
            return L"Shift";
        case ScalingType::UNIT_NORM:
            return L"Unit Norm";
    }
    return {};
}

Model::Model() : implementation_(std::make_shared<IModel>()) {}
Model::Model(const StringVector& columns, const Vector& shifts, const Vector& scales)
    : implementation_(std::make_shared<IModel>(columns)) {
    implementation_->setRescalings(shifts, scales);
}
Model::Model(std::shared_ptr<IModel> implementation) : implementation_(std::move(implementation)) {
    if (!implementation_) throw Exception("A model comes from a fit or from a model text.", 252);
}
Model::Model(const Model&) = default;
Model& Model::operator=(const Model&) = default;
Model::~Model() = default;

const WString& Model::getName() const { return implementation_->getName(); }
void Model::assignName(const WString& name) { implementation_->setName(name); }
Model& Model::setName(const WString& name) {
    assignName(name);
    return *this;
}
const WString& Model::getModelName() const { return implementation_->getModelName(); }
void Model::assignModelName(const WString& modelName) { implementation_->setModelName(modelName); }
Model& Model::setModelName(const WString& modelName) {
    assignModelName(modelName);
    return *this;
}

StringVector Model::getColNames() const { return implementation_->schema.featureNames(); }
StringVector Model::getIndexColNames() const { return implementation_->schema.indexColNames; }
bool Model::isScaled(const WString& column) const { return implementation_->scaling.isScaled(column); }
double Model::getShift(const WString& column) const { return implementation_->scaling.getShift(column); }
double Model::getScale(const WString& column) const { return implementation_->scaling.getScale(column); }

DataFrame Model::transform(const DataFrame& table) const { return implementation_->transform(table); }
DataFrame Model::inverseTransform(const DataFrame& table) const {
    return implementation_->inverseTransform(table);
}

DataFrameVector Model::toDataFrameVector() const { return implementation_->toDataFrameVector(); }
WString Model::toString() const { return toDataFrameVector().toString(); }

WString Model::toJSON() const { return implementation_->toJSON(); }
WString Model::toPMML() const { return implementation_->toPMML(nullptr); }
WString Model::toPMML(const PMML::ColumnScaling& scaler) const { return implementation_->toPMML(&scaler); }
WString Model::toLadon() const { return implementation_->toLadon(); }
void Model::fromJSONString(const WString& text) {
    const auto read = std::make_shared<IModel>();
    read->fromJSONString(text);
    implementation_ = read;
}
void Model::fromPMMLString(const WString& text) {
    const auto read = std::make_shared<IModel>();
    read->fromPMMLString(text);
    implementation_ = read;
}
void Model::fromLadonString(const WString& text) {
    const auto read = std::make_shared<IModel>();
    read->fromLadonString(text);
    implementation_ = read;
}

Estimator::Estimator() : EstimatorHandle(std::make_unique<IEstimator>()) {}

Estimator& Estimator::setScalingType(ScalingType type) {
    as<IEstimator>().scalingType.set(type);
    return *this;
}
ScalingType Estimator::getScalingType() const { return as<IEstimator>().scalingType.get(); }
Estimator& Estimator::setColumns(const StringVector& names) {
    as<IEstimator>().columns.set(names);
    return *this;
}
const StringVector& Estimator::getColumns() const { return as<IEstimator>().columns.get(); }

Model Estimator::fit(const DataFrame& table) const { return Model(as<IEstimator>().fit(table)); }
DataFrame Estimator::fitTransform(const DataFrame& table) const { return fit(table).transform(table); }
DataFrame Estimator::fitTransform(const DataFrameColumn& column) const {
    DataFrame table;
    table.append(column);
    return fitTransform(table);
}

}  // namespace Tessel::Scaler
