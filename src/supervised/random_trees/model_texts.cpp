#include <tessel/framework/ladon.h>

#include "supervised/random_trees/model.h"

namespace Tessel {

const ModelType& Classification::RandomTrees::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::RANDOM_TREES,
                                L"MiningModel", L"RandomTrees"};
    return type;
}

const ModelType& Regression::RandomTrees::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::RANDOM_TREES,
                                L"MiningModel", L"RandomTrees"};
    return type;
}

}  // namespace Tessel
