#pragma once

#include <tessel/boosting.h>

#include "supervised/ensemble/estimator.h"

namespace Tessel {

namespace Classification::Boosting {

class IEstimator : public Ensemble::IWithBaseEstimator<Ensemble::IClassifierEnsemble> {
 public:
    IEstimator();

    EnumParameter<MethodType> method{L"method",
                                     L"AdaBoost Variant",
                                     MethodType::M1_BREIMAN,
                                     {{MethodType::M1_BREIMAN, L"M1_BREIMAN"},
                                      {MethodType::M1_FREUND, L"M1_FREUND"},
                                      {MethodType::SAMME, L"SAMME"}}};
    BoundedParameter<int> resamplingSeed{L"resamplingSeed", L"Resampling Seed", 12345,
                                         std::numeric_limits<int>::min(), kNoLimit};

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Classification::Boosting

namespace Regression::Boosting {

class IEstimator : public Ensemble::IWithBaseEstimator<Ensemble::IRegressorEnsemble> {
 public:
    IEstimator();

    BoundedParameter<double> stepSize{L"stepSize", L"Step Size", 0.3, 0.0, 1e9};

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return {numWeakLearners, stepSize}; }

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Regression::Boosting
}  // namespace Tessel
