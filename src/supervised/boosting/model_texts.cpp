#include <cmath>

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "serialization/json/read.h"
#include "serialization/pmml/model_element.h"
#include "supervised/boosting/model.h"

namespace Tessel {

const ModelType& Classification::Boosting::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::BOOSTING,
                                L"MiningModel", L"Boosting"};
    return type;
}

const ModelType& Regression::Boosting::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::BOOSTING, L"MiningModel",
                                L"Boosting"};
    return type;
}

void Regression::Boosting::IModel::writeTarget(PMML::ModelWriter& writer) const {
    IRegressor::writeTarget(writer);
    PMML::Document& document = writer.document;
    PMML::Node* const targets = writer.append(document.allocateNode(L"Targets"));
    PMML::Node* const target = document.allocateNode(L"Target");
    document.appendAttribute(target, L"field", schema.targetName);
    document.appendAttribute(target, L"optype", L"continuous");
    document.appendAttribute(target, L"rescaleFactor", stepSize);
    document.appendAttribute(target, L"rescaleConstant", meanResponse);
    targets->append_node(target);
}

void Regression::Boosting::IModel::readTarget(const PMML::ModelReader& reader) {
    using PMML::Document;
    const PMML::Node* const target = Document::getSubnode(reader.child(L"Targets"), L"Target");
    stepSize = 1.0;
    meanResponse = 0.0;
    if (!target) return;
    for (const wchar_t* name : {L"min", L"max", L"castInteger"})
        if (Document::optionalAttribute(target, name))
            throw UnsupportedPMMLFormat("The Target cuts or rounds predictions, which is not read.");
    if (Document::optionalAttribute(target, L"rescaleFactor"))
        stepSize = Document::requiredDouble(target, L"rescaleFactor");
    if (Document::optionalAttribute(target, L"rescaleConstant"))
        meanResponse = Document::requiredDouble(target, L"rescaleConstant");
    if (!std::isfinite(meanResponse) || !std::isfinite(stepSize))
        throw UnsupportedPMMLFormat("The rescaling of the target is not finite.");
}

void Regression::Boosting::IModel::writeBody(web::json::value& model) const {
    JSONModel::set(model, L"meanResponse", JSON::fromNumber(meanResponse));
    JSONModel::set(model, L"stepSize", JSON::fromNumber(stepSize));
    IRegressor::writeBody(model);
}

void Regression::Boosting::IModel::readBody(const JSON::Members& model) {
    meanResponse = JSON::toNumber(model.at("meanResponse"), "meanResponse");
    stepSize = JSON::toNumber(model.at("stepSize"), "stepSize");
    if (!std::isfinite(meanResponse) || !std::isfinite(stepSize))
        throw ConstraintViolation("stepSize", "Mean response and step size are finite.");
    IRegressor::readBody(model);
}

}  // namespace Tessel
