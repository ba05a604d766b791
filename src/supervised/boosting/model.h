#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::Boosting {

inline constexpr wchar_t kModelName[] = L"Boosting for Classification";

class IModel : public Ensemble::IClassifier {
 public:
    IModel() : IClassifier(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"weightedAverage"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }
};

}  // namespace Classification::Boosting

namespace Regression::Boosting {

inline constexpr wchar_t kModelName[] = L"Boosting for Regression";

class IModel : public Ensemble::IRegressor {
 public:
    IModel() : IRegressor(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"sum"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

    double meanResponse = 0.0;
    double stepSize = 0.0;

 protected:
    double predictionOf(double sum) const override { return sum * stepSize + meanResponse; }
    void describe(StringVector& labels, StringVector& values) const override;
    /// Step size and mean response as the rescaling of the target.
    using IRegressor::readTarget;
    using IRegressor::writeTarget;
    void writeTarget(PMML::ModelWriter& writer) const override;
    void readTarget(const PMML::ModelReader& reader) override;
    using IRegressor::readBody;
    using IRegressor::writeBody;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
};

}  // namespace Regression::Boosting
}  // namespace Tessel
