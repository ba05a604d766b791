#include <cmath>

#include <tessel/framework/ladon.h>

#include "serialization/json/read.h"
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
