#include "scoring/facades.h"

#include <limits>
#include <utility>

#include <tessel/framework/errors.h>
#include <tessel/scaler.h>

#include "framework/supervised.h"

namespace Tessel::Scoring {

// ---- what all facades share

Facade::Facade(std::unique_ptr<IFacade> implementation) : implementation_(std::move(implementation)) {}
Facade::Facade(const Facade& other) : implementation_(other.implementation_->clone()) {}
Facade& Facade::operator=(const Facade& other) {
    implementation_ = other.implementation_->clone();
    return *this;
}
Facade::~Facade() = default;

void Facade::fromPMMLString(WString text) { implementation_->fromPMMLString(std::move(text)); }
void Facade::fromJSONString(const WString& text) { implementation_->fromJSONString(text); }
void Facade::fromLadonString(const WString& text) { implementation_->fromLadonString(text); }
void Facade::fromString(WString text) { implementation_->fromString(std::move(text)); }
bool Facade::isLoaded() const { return implementation_->isLoaded(); }

const WString& Facade::getName() const { return implementation_->getName(); }
const WString& Facade::getModelName() const { return implementation_->getModelName(); }
void Facade::assignName(const WString& name) { implementation_->setName(name); }
void Facade::assignModelName(const WString& modelName) { implementation_->setModelName(modelName); }

const WString& Facade::getKind() const { return implementation_->model().implementation->type().kind; }
const WString& Facade::getAlgorithm() const {
    return implementation_->model().implementation->type().algorithm;
}
StringVector Facade::getColNames() const {
    const Loaded& model = implementation_->model();
    if (model.learner) return model.learner->getColNames();
    return model.transformer ? model.transformer->getColNames() : StringVector();
}
StringVector Facade::getCategoricalColNames() const {
    StringVector names;
    const IPortableModel* const model = implementation_->model().implementation.get();
    if (const auto* const learner = dynamic_cast<const Supervised::IModelable*>(model))
        for (const FeatureSchema& feature : learner->schema.features)
            if (feature.isCategorical) names.push_back(feature.name);
    return names;
}
StringVector Facade::getIndexColNames() const {
    const Loaded& model = implementation_->model();
    if (model.learner) return model.learner->getIndexColNames();
    return model.transformer ? model.transformer->getIndexColNames() : StringVector();
}
DataFrameVector Facade::toDataFrameVector() const {
    return implementation_->model().reporter->toDataFrameVector();
}
WString Facade::toJSON() const { return implementation_->model().implementation->toJSON(getName()); }
WString Facade::toPMML() const { return implementation_->model().implementation->toPMML(nullptr, getName()); }
WString Facade::toLadon() const { return implementation_->model().implementation->toLadon(getName()); }

// ---- Predictor, Classifier

Predictor::Predictor() : Facade(std::make_unique<IPredictor>()) {}

DataFrame Predictor::predict(const DataFrame& features) const {
    const Loaded& model = as<IFacade>().model();
    if (!model.scorer) throw NotAPredictor();
    return model.scorer->predict(features);
}

const WString& Predictor::getTargetColName() const {
    static const WString none;
    const Loaded& model = as<IFacade>().model();
    return model.learner ? model.learner->getTargetColName() : none;
}

std::shared_ptr<Scaler::Model> Predictor::getScaler() const {
    const Loaded& model = as<IFacade>().model();
    if (!model.learner) return nullptr;
    const PMML::ColumnScaling& scaling = model.learner->getInputScaling();
    StringVector columns;
    Vector shifts, scales;
    for (const WString& column : model.learner->getColNames()) {
        if (!scaling.isScaled(column)) continue;
        columns.push_back(column);
        shifts.push_back(scaling.getShift(column));
        scales.push_back(scaling.getScale(column));
    }
    return columns.empty() ? nullptr : std::make_shared<Scaler::Model>(columns, shifts, scales);
}

namespace {

Supervised::Classification::Modelable& classifierOf(const IFacade& facade) {
    const Loaded& model = facade.model();
    if (!model.classifier) throw NotAClassifier();
    return *model.classifier;
}

}  // namespace

Classifier::Classifier() = default;

DataFrame Classifier::posteriorProbability(const DataFrame& features) const {
    return classifierOf(as<IFacade>()).posteriorProbability(features);
}
const StringVector& Classifier::getClasses() const { return classifierOf(as<IFacade>()).getClasses(); }
Classifier& Classifier::setSuccessClass(const WString& label) {
    classifierOf(as<IFacade>()).setSuccessClass(label);
    return *this;
}
const WString& Classifier::getSuccessClass() const { return classifierOf(as<IFacade>()).getSuccessClass(); }
Classifier& Classifier::setSuccessProbability(double cutOff) {
    classifierOf(as<IFacade>()).setSuccessProbability(cutOff);
    return *this;
}
double Classifier::getSuccessProbability() const {
    return classifierOf(as<IFacade>()).getSuccessProbability();
}

// ---- Forecaster

Forecaster::Forecaster() : Facade(std::make_unique<IForecaster>()) {}

namespace {

const Forecastable& forecasterOf(const IFacade& facade) {
    const Loaded& model = facade.model();
    if (!model.forecaster) throw NotAForecaster();
    return *model.forecaster;
}

}  // namespace

DataFrame Forecaster::forecast(const DataFrameColumn& series) const {
    DataFrame table;
    table.append(series);
    return forecasterOf(as<IFacade>()).forecast(table);
}
DataFrame Forecaster::transform(const DataFrameColumn& series) const {
    forecasterOf(as<IFacade>());
    const Loaded& model = as<IFacade>().model();
    if (!model.transformer) throw NotATransformer();
    DataFrame table;
    table.append(series);
    return model.transformer->transform(table);
}
Forecaster& Forecaster::setNumForecasts(int count) {
    if (count < 1) throw ValueOutOfRange("#Forecasts", 1, std::numeric_limits<int>::max());
    as<IForecaster>().numForecasts = count;
    return *this;
}
int Forecaster::getNumForecasts() const { return as<IForecaster>().numForecasts; }
Forecaster& Forecaster::setConfidenceLevel(double level) {
    if (!(level > 0.0 && level < 1.0)) throw ValueOutOfRange("Confidence level", 0.0, 1.0);
    as<IForecaster>().confidenceLevel = level;
    return *this;
}
double Forecaster::getConfidenceLevel() const { return as<IForecaster>().confidenceLevel; }

// ---- Transformer

Transformer::Transformer() : Facade(std::make_unique<ITransformer>()) {}

DataFrame Transformer::transform(const DataFrame& table) const {
    const Loaded& model = as<IFacade>().model();
    if (!model.transformer) throw NotATransformer();
    return model.transformer->transform(table);
}

// ---- Clusterizer

Clusterizer::Clusterizer() : Facade(std::make_unique<IClusterizer>()) {}

DataFrame Clusterizer::predict(const DataFrame& table) const {
    const Loaded& model = as<IFacade>().model();
    if (!model.scorer || model.learner) throw NotAPredictor();
    return model.scorer->predict(table);
}
DataFrame Clusterizer::predict() const {
    as<IFacade>().model();
    throw NotAPredictor();  // no family remembers its training rows
}
Clusterizer& Clusterizer::setNumClusters(int count) {
    if (count < 1) throw ValueOutOfRange("#Clusters", 1, std::numeric_limits<int>::max());
    as<IClusterizer>().numClusters = count;
    return *this;
}
int Clusterizer::getNumClusters() const { return as<IClusterizer>().numClusters; }

}  // namespace Tessel::Scoring
