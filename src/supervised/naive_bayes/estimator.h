#pragma once

#include "framework/classification.h"

namespace Tessel::Classification::NaiveBayes {

class IEstimator : public Classification::IEstimator {
 public:
    IEstimator();

    BoundedParameter<double> laplaceSmoothing{L"laplaceSmoothing", L"Laplace smoothing", 0.0, 0.0, 1e9};

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;

 protected:
    std::shared_ptr<IModelable> fitEngine(const TrainingSet& data) const override;
};

}  // namespace Tessel::Classification::NaiveBayes
