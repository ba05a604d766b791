#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::Boosting {

inline constexpr wchar_t kModelName[] = L"Boosting for Classification";

class IModel : public Ensemble::IClassifier {
 public:
    IModel() : IClassifier(kModelName) {}

    const ModelType& type() const override;
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }
};

}  // namespace Classification::Boosting

namespace Regression::Boosting {

inline constexpr wchar_t kModelName[] = L"Boosting for Regression";

class IModel : public Ensemble::IRegressor {
 public:
    IModel() : IRegressor(kModelName) {}

    const ModelType& type() const override;
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

    double meanResponse = 0.0;
    double stepSize = 0.0;

 protected:
    double predictionOf(double sum) const override { return sum * stepSize + meanResponse; }
    void describe(StringVector& labels, StringVector& values) const override;
    using IRegressor::readBody;
    using IRegressor::writeBody;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
};

}  // namespace Regression::Boosting
}  // namespace Tessel
