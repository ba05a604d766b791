#pragma once

#include <tessel/framework/classifier.h>
#include <tessel/framework/regressor.h>

#include "framework/classification.h"
#include "framework/regression.h"

namespace Tessel {

/// What ensembles and model search need of an estimator of whatever family they were given.
class LearnerAccess {
 public:
    static const Classification::IEstimator& implementation(const ClassifierEstimator& estimator) {
        return estimator.as<Classification::IEstimator>();
    }
    static const Regression::IEstimator& implementation(const RegressorEstimator& estimator) {
        return estimator.as<Regression::IEstimator>();
    }
};

}  // namespace Tessel
