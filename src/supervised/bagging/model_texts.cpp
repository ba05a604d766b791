#include <tessel/framework/ladon.h>

#include "supervised/bagging/model.h"

namespace Tessel {

const ModelType& Classification::Bagging::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::BAGGING,
                                L"MiningModel", L"Bagging"};
    return type;
}

const ModelType& Regression::Bagging::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::BAGGING, L"MiningModel",
                                L"Bagging"};
    return type;
}

}  // namespace Tessel
