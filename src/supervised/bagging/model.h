#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::Bagging {

inline constexpr wchar_t kModelName[] = L"Bagging for Classification";

class IModel : public Ensemble::IClassifier, public Ensemble::IOutOfBag {
 public:
    IModel() : IClassifier(kModelName) {}

 protected:
    void reportFamily(DataFrameVector& tables) const override { tables.push_back(outOfBagError); }
};

}  // namespace Classification::Bagging

namespace Regression::Bagging {

inline constexpr wchar_t kModelName[] = L"Bagging for Regression";

class IModel : public Ensemble::IRegressor, public Ensemble::IOutOfBag {
 public:
    IModel() : IRegressor(kModelName) {}

 protected:
    void reportFamily(DataFrameVector& tables) const override { tables.push_back(outOfBagError); }
};

}  // namespace Regression::Bagging
}  // namespace Tessel
