#pragma once

#include <memory>

#include <tessel/scoring/facades.h>

#include "framework/identifiable.h"
#include "scoring/catalog.h"
#include "serialization/pmml/document.h"

namespace Tessel::Scoring {

/// The implementation of every facade: what was loaded, for whom.
class IFacade : public IIdentifiable {
 public:
    explicit IFacade(Audience audience) : IIdentifiable(L""), audience_(audience) {}
    virtual std::unique_ptr<IFacade> clone() const = 0;

    void fromPMMLString(WString text);
    /// The same for a text that is parsed already.
    void fromPMML(const PMML::Document& document);
    void fromJSONString(const WString& text);
    void fromLadonString(const WString& text);
    void fromString(WString text);

    bool isLoaded() const { return model_ != nullptr; }
    /// @throws NoModels before anything was loaded.
    const Loaded& model() const;

 private:
    using ReadValue = void (IPortableModel::*)(const web::json::value&);
    void load(const web::json::value& value, ReadValue read);
    void adopt(const CatalogRow& row, std::shared_ptr<IPortableModel> implementation);

    Audience audience_;
    std::shared_ptr<const Loaded> model_;
};

/// A facade from a document, which hosts cannot give it.
template <class Facade>
struct FromDocument : Facade {
    explicit FromDocument(const PMML::Document& document) { this->template as<IFacade>().fromPMML(document); }
};

class IPredictor : public IFacade {
 public:
    IPredictor() : IFacade(Audience::PREDICTOR) {}
    std::unique_ptr<IFacade> clone() const override { return std::make_unique<IPredictor>(*this); }
};

class IForecaster : public IFacade {
 public:
    IForecaster() : IFacade(Audience::FORECASTER) {}
    std::unique_ptr<IFacade> clone() const override { return std::make_unique<IForecaster>(*this); }

    int numForecasts = 1;
    double confidenceLevel = 0.95;
};

class ITransformer : public IFacade {
 public:
    ITransformer() : IFacade(Audience::TRANSFORMER) {}
    std::unique_ptr<IFacade> clone() const override { return std::make_unique<ITransformer>(*this); }
};

class IClusterizer : public IFacade {
 public:
    IClusterizer() : IFacade(Audience::PREDICTOR) {}
    std::unique_ptr<IFacade> clone() const override { return std::make_unique<IClusterizer>(*this); }

    int numClusters = 0;
};

}  // namespace Tessel::Scoring
