#include <tessel/framework/regressor.h>

#include "framework/regression.h"

namespace Tessel {

using Regression::IEstimator;
using Regression::IModelable;

RegressorEstimator::~RegressorEstimator() = default;

void RegressorEstimator::validate() const { as<IEstimator>().validate(); }
void RegressorEstimator::validate(const DataFrame& features, const DataFrameColumn& target) const {
    as<IEstimator>().validate(features, target);
}
std::shared_ptr<IModelable> RegressorEstimator::fitImplementation(const DataFrame& features,
                                                                  const DataFrameColumn& target) const {
    return as<IEstimator>().fit(features, target);
}

RegressorModel::RegressorModel(std::shared_ptr<IModelable> implementation)
    : SupervisedModel(std::move(implementation)) {}
RegressorModel::~RegressorModel() = default;

DataFrame RegressorModel::predict(const DataFrame& features) const {
    return as<IModelable>().predict(features);
}

}  // namespace Tessel
