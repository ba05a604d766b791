#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::RandomTrees {

inline constexpr wchar_t kModelName[] = L"Random Trees for Classification";

class IModel : public Ensemble::IBootstrapped<Ensemble::IClassifier> {
 public:
    IModel() : IBootstrapped(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"majorityVote"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }
    DataFrame featuresImportance() const;

 protected:
    void reportFamily(DataFrameVector& tables) const override;
};

}  // namespace Classification::RandomTrees

namespace Regression::RandomTrees {

inline constexpr wchar_t kModelName[] = L"Random Trees for Regression";

class IModel : public Ensemble::IBootstrapped<Ensemble::IRegressor> {
 public:
    IModel() : IBootstrapped(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"average"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }
    DataFrame featuresImportance() const;

 protected:
    void reportFamily(DataFrameVector& tables) const override;
};

}  // namespace Regression::RandomTrees
}  // namespace Tessel
