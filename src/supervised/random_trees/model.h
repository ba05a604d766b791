#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::RandomTrees {

inline constexpr wchar_t kModelName[] = L"Random Trees for Classification";

class IModel : public Ensemble::IClassifier, public Ensemble::IOutOfBag {
 public:
    IModel() : IClassifier(kModelName) {}
    DataFrame featuresImportance() const;

 protected:
    void reportFamily(DataFrameVector& tables) const override;
};

}  // namespace Classification::RandomTrees

namespace Regression::RandomTrees {

inline constexpr wchar_t kModelName[] = L"Random Trees for Regression";

class IModel : public Ensemble::IRegressor, public Ensemble::IOutOfBag {
 public:
    IModel() : IRegressor(kModelName) {}
    DataFrame featuresImportance() const;

 protected:
    void reportFamily(DataFrameVector& tables) const override;
};

}  // namespace Regression::RandomTrees
}  // namespace Tessel
