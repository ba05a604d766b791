#include "scoring/catalog.h"

#include <algorithm>
#include <vector>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>
#include <tessel/scaler.h>

#include "supervised/learner_catalog.h"
#include "transformation/scaler/model.h"

namespace Tessel::Scoring {
namespace {

using Ladon::TaskKind::CLASSIFICATION;
using Ladon::TaskKind::CLUSTERING;
using Ladon::TaskKind::REGRESSION;
using Ladon::TaskKind::TEXT_MINING;
using Ladon::TaskKind::TIME_SERIES;
using Ladon::TaskKind::TRANSFORMATION;
namespace Algorithm = Ladon::ModelAlgorithm;

constexpr bool kAnyAlgorithm = false, kOwnAlgorithm = true, kAnyFunction = false, kOwnFunction = true;

/// What a learner can do, of either kind.
Loaded loadedLearner(std::shared_ptr<IPortableModel> implementation,
                     const std::shared_ptr<Supervised::Modelable>& handle) {
    Loaded loaded;
    loaded.implementation = std::move(implementation);
    loaded.reporter = handle;
    loaded.scorer = handle;
    loaded.learner = handle;
    loaded.classifier = std::dynamic_pointer_cast<Supervised::Classification::Modelable>(handle);
    return loaded;
}

/// The row of a family of learners. Elements of several families are told apart by the algorithm.
template <class Implementation, class Family>
CatalogRow learner(const Family& family) {
    const ModelType& type = family.makeBlank()->type();
    const bool isShared = type.pmmlElement == L"MiningModel" || type.pmmlElement == L"RegressionModel";
    return {Audience::PREDICTOR,
            type,
            isShared,
            kOwnFunction,
            [&family] { return family.makeBlank(); },
            [&family](const std::shared_ptr<IPortableModel>& model) {
                return loadedLearner(model,
                                     family.makeModel(std::static_pointer_cast<Implementation>(model)));
            }};
}

/// The row of a family of transformers.
template <class Implementation, class Handle>
CatalogRow transformer() {
    return {Audience::TRANSFORMER,
            Implementation().type(),
            kOwnAlgorithm,
            kAnyFunction,
            [] { return std::make_shared<Implementation>(); },
            [](const std::shared_ptr<IPortableModel>& model) {
                const auto handle = std::make_shared<Handle>(std::static_pointer_cast<Implementation>(model));
                Loaded loaded;
                loaded.implementation = model;
                loaded.reporter = handle;
                loaded.transformer = handle;
                return loaded;
            }};
}

/// A family that has its place, for texts of other makers and of later versions.
CatalogRow planned(Audience audience, const WString& kind, const WString& algorithm, const WString& element,
                   const WString& pmmlAlgorithm, bool isAlgorithmNeeded = kOwnAlgorithm,
                   bool isFunctionNeeded = kOwnFunction) {
    return {audience, {kind, algorithm, element, pmmlAlgorithm}, isAlgorithmNeeded, isFunctionNeeded, nullptr,
            nullptr};
}

void addPredictors(std::vector<CatalogRow>& rows) {
    constexpr Audience kPredictor = Audience::PREDICTOR;
    for (const LearnerCatalog::ClassifierFamily& family : LearnerCatalog::classifiers())
        rows.push_back(learner<Classification::IModelable>(family));
    for (const LearnerCatalog::RegressorFamily& family : LearnerCatalog::regressors())
        rows.push_back(learner<Regression::IModelable>(family));
    for (const WString& kind : {CLASSIFICATION, REGRESSION}) {
        rows.push_back(planned(kPredictor, kind, Algorithm::NEURAL_NETWORK, L"NeuralNetwork",
                               L"NeuralNetwork", kAnyAlgorithm));
        rows.push_back(planned(kPredictor, kind, Algorithm::NEAREST_NEIGHBORS, L"NearestNeighborModel",
                               L"NearestNeighbor", kAnyAlgorithm));
    }
    rows.push_back(planned(kPredictor, REGRESSION, Algorithm::LINEAR_REGRESSION, L"RegressionModel",
                           L"LinearRegression", kOwnAlgorithm, kAnyFunction));
    rows.push_back(planned(kPredictor, CLASSIFICATION, Algorithm::LOGISTIC_REGRESSION, L"RegressionModel",
                           L"LogisticRegression", kOwnAlgorithm, kAnyFunction));
    for (const wchar_t* discriminant : {L"LinearDiscriminant", L"QuadraticDiscriminant"})
        rows.push_back(planned(kPredictor, CLASSIFICATION, Algorithm::DISCRIMINANT_ANALYSIS,
                               L"RegressionModel", discriminant, kOwnAlgorithm, kAnyFunction));
    rows.push_back(planned(kPredictor, CLUSTERING, Algorithm::KMEANS, L"ClusteringModel", L"KMeans",
                           kOwnAlgorithm, kAnyFunction));
}

void addOthers(std::vector<CatalogRow>& rows) {
    const std::pair<WString, const wchar_t*> series[] = {
        {Algorithm::ARIMA, L"ARIMA"},
        {Algorithm::EXPONENTIAL, L"Exponential"},
        {Algorithm::DOUBLE_EXPONENTIAL, L"DoubleExponential"},
        {Algorithm::MOVING_AVERAGE, L"MovingAverage"},
        {Algorithm::ADD_HOLT_WINTERS, L"AddHoltWinters"},
        {Algorithm::MUL_HOLT_WINTERS, L"MulHoltWinters"},
        {Algorithm::NO_TREND_HOLT_WINTERS, L"NoTrendHoltWinters"}};
    for (const auto& [algorithm, name] : series)
        rows.push_back(planned(Audience::FORECASTER, TIME_SERIES, algorithm, L"TimeSeriesModel", name,
                               kOwnAlgorithm, kAnyFunction));
    rows.push_back(transformer<Scaler::IModel, Scaler::Model>());
    rows.push_back(planned(Audience::TRANSFORMER, TEXT_MINING, Algorithm::TF_IDF, L"TransformationModel",
                           L"TFIDF", kOwnAlgorithm, kAnyFunction));
    rows.push_back(planned(Audience::NOBODY, TEXT_MINING, Algorithm::LSA, L"TextModel", L""));
    rows.push_back(planned(Audience::NOBODY, L"associationRules", Algorithm::ASSOCIATION_RULES,
                           L"AssociationModel", L"Apriori"));
}

std::string quoted(WStringView text) { return "'" + Convert::toUtf8Lossy(WString(text)) + "'"; }

}  // namespace

std::span<const CatalogRow> catalog() {
    static const std::vector<CatalogRow> rows = [] {
        std::vector<CatalogRow> all;
        addPredictors(all);
        addOthers(all);
        return all;
    }();
    return rows;
}

bool isModelElement(WStringView element) {
    return std::any_of(catalog().begin(), catalog().end(), [&](const CatalogRow& row) {
        return row.type.pmmlElement == element && !element.empty();
    });
}

const CatalogRow& rowOfPMML(Audience audience, WStringView element, WStringView algorithm,
                            WStringView function) {
    const auto found = std::find_if(catalog().begin(), catalog().end(), [&](const CatalogRow& row) {
        return row.audience == audience && row.type.pmmlElement == element && !element.empty() &&
               (!row.isAlgorithmNeeded || row.type.pmmlAlgorithm == algorithm) &&
               (!row.isFunctionNeeded || row.type.kind == function);
    });
    if (found != catalog().end() && found->makeBlank) return *found;
    if (!isModelElement(element)) throw UnsupportedPMMLFormat(quoted(element) + " is no model element.");
    throw UnsupportedPMMLFormat("Models of the element " + quoted(element) + ", algorithm " +
                                quoted(algorithm) + " and function " + quoted(function) +
                                " cannot be loaded here.");
}

const CatalogRow& rowOfJSON(Audience audience, WStringView kind, WStringView algorithm) {
    const auto found = std::find_if(catalog().begin(), catalog().end(), [&](const CatalogRow& row) {
        return row.audience == audience && row.type.kind == kind && row.type.algorithm == algorithm;
    });
    if (found != catalog().end() && found->makeBlank) return *found;
    throw UnsupportedJSONModel("Models of the type " + quoted(kind) + " and algorithm " + quoted(algorithm) +
                               " cannot be loaded here.");
}

}  // namespace Tessel::Scoring
