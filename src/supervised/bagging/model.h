#pragma once

#include "supervised/ensemble/model.h"

namespace Tessel {

namespace Classification::Bagging {

inline constexpr wchar_t kModelName[] = L"Bagging for Classification";

class IModel : public Ensemble::IClassifier, public Ensemble::IOutOfBag {
 public:
    IModel() : IClassifier(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"majorityVote"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

 protected:
    using IClassifier::readBody;
    using IClassifier::writeBody;
    void writeBody(web::json::value& model) const override {
        IClassifier::writeBody(model);
        writeOutOfBag(model);
    }
    void readBody(const JSON::Members& model) override {
        IClassifier::readBody(model);
        readOutOfBag(model);
    }
    void reportFamily(DataFrameVector& tables) const override { reportOutOfBag(tables); }
};

}  // namespace Classification::Bagging

namespace Regression::Bagging {

inline constexpr wchar_t kModelName[] = L"Bagging for Regression";

class IModel : public Ensemble::IRegressor, public Ensemble::IOutOfBag {
 public:
    IModel() : IRegressor(kModelName) {}

    const ModelType& type() const override;
    const wchar_t* multipleModelMethod() const override { return L"average"; }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

 protected:
    using IRegressor::readBody;
    using IRegressor::writeBody;
    void writeBody(web::json::value& model) const override {
        IRegressor::writeBody(model);
        writeOutOfBag(model);
    }
    void readBody(const JSON::Members& model) override {
        IRegressor::readBody(model);
        readOutOfBag(model);
    }
    void reportFamily(DataFrameVector& tables) const override { reportOutOfBag(tables); }
};

}  // namespace Regression::Bagging
}  // namespace Tessel
