#include <utility>

#include <tessel/framework/supervised_model.h>

#include "framework/supervised.h"

namespace Tessel {

template <class Interface>
SupervisedModel<Interface>::SupervisedModel(std::shared_ptr<Supervised::IModelable> implementation)
    : implementation_(std::move(implementation)) {
    if (!implementation_) throw Exception("A model comes from a fit or from a model text.", 252);
}
template <class Interface>
SupervisedModel<Interface>::SupervisedModel(const SupervisedModel&) = default;
template <class Interface>
SupervisedModel<Interface>& SupervisedModel<Interface>::operator=(const SupervisedModel&) = default;
template <class Interface>
SupervisedModel<Interface>::~SupervisedModel() = default;

template <class Interface>
const WString& SupervisedModel<Interface>::getName() const {
    return implementation_->getName();
}
template <class Interface>
void SupervisedModel<Interface>::assignName(const WString& name) {
    implementation_->setName(name);
}
template <class Interface>
const WString& SupervisedModel<Interface>::getModelName() const {
    return implementation_->getModelName();
}
template <class Interface>
void SupervisedModel<Interface>::assignModelName(const WString& modelName) {
    implementation_->setModelName(modelName);
}

template <class Interface>
StringVector SupervisedModel<Interface>::getColNames() const {
    return implementation_->schema.featureNames();
}
template <class Interface>
StringVector SupervisedModel<Interface>::getIndexColNames() const {
    return implementation_->schema.indexColNames;
}
template <class Interface>
const WString& SupervisedModel<Interface>::getTargetColName() const {
    return implementation_->schema.targetName;
}
template <class Interface>
StringVector SupervisedModel<Interface>::getRowNames() const {
    return implementation_->schema.trainingRowNames();
}

template <class Interface>
const PMML::ColumnScaling& SupervisedModel<Interface>::getInputScaling() const {
    return implementation_->schema.scaling;
}

template <class Interface>
DataFrameVector SupervisedModel<Interface>::toDataFrameVector() const {
    return implementation_->toDataFrameVector();
}
template <class Interface>
WString SupervisedModel<Interface>::toString() const {
    return toDataFrameVector().toString();
}

template <class Interface>
WString SupervisedModel<Interface>::toJSON() const {
    return implementation_->toJSON();
}
template <class Interface>
WString SupervisedModel<Interface>::toPMML() const {
    return implementation_->toPMML(nullptr);
}
template <class Interface>
WString SupervisedModel<Interface>::toPMML(const PMML::ColumnScaling& scaler) const {
    return implementation_->toPMML(&scaler);
}
template <class Interface>
WString SupervisedModel<Interface>::toLadon() const {
    return implementation_->toLadon();
}
template <class Interface>
void SupervisedModel<Interface>::fromJSONString(const WString& text) {
    const auto read = implementation_->blank();
    read->fromJSONString(text);
    implementation_ = read;
}
template <class Interface>
void SupervisedModel<Interface>::fromPMMLString(WString text) {
    const auto read = implementation_->blank();
    read->fromPMMLString(std::move(text));
    implementation_ = read;
}
template <class Interface>
void SupervisedModel<Interface>::fromLadonString(const WString& text) {
    const auto read = implementation_->blank();
    read->fromLadonString(text);
    implementation_ = read;
}

template class SupervisedModel<Supervised::Classification::Modelable>;
template class SupervisedModel<Supervised::Regression::Modelable>;

}  // namespace Tessel
