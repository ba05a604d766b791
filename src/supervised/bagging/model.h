#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::Bagging {

inline constexpr wchar_t kModelName[] = L"Bagging for Classification";

class IModel : public Ensemble::IBootstrapped<Ensemble::IClassifier> {
 public:
    IModel() : IBootstrapped(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"majorityVote"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }
};

}  // namespace Classification::Bagging

namespace Regression::Bagging {

inline constexpr wchar_t kModelName[] = L"Bagging for Regression";

class IModel : public Ensemble::IBootstrapped<Ensemble::IRegressor> {
 public:
    IModel() : IBootstrapped(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"average"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }
};

}  // namespace Regression::Bagging
}  // namespace Tessel
