#pragma once

#include <tessel/scaler.h>

#include "framework/estimatable.h"

namespace Tessel::Scaler {

class IEstimator : public IEstimatable {
 public:
    IEstimator();

    EnumParameter<ScalingType> scalingType{L"scalingType",
                                           L"Scaling type",
                                           ScalingType::STANDARDIZATION,
                                           {{ScalingType::STANDARDIZATION, L"STANDARDIZATION"},
                                            {ScalingType::NORMALIZATION, L"NORMALIZATION"},
                                            {ScalingType::SHIFT, L"SHIFT"},
                                            {ScalingType::UNIT_NORM, L"UNIT_NORM"}}};
    Parameter<StringVector> columns{L"columns", L"Columns"};

    std::unique_ptr<IEstimatable> clone() const override { return std::make_unique<IEstimator>(*this); }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override { return {scalingType, columns}; }

    std::shared_ptr<IModel> fit(const DataFrame& table) const;

 private:
    /// The columns that the user lists, or all that can be scaled.
    StringVector columnsOf(const DataFrame& table) const;
};

}  // namespace Tessel::Scaler
