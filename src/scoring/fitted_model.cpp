#include <optional>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>
#include <tessel/scoring/facades.h>
#include <tessel/scoring/fitted_model.h>

#include "scoring/facades.h"
#include "scoring/model_info.h"
#include "scoring/text_data.h"
#include "serialization/json/read.h"
#include "serialization/pmml/read.h"

namespace Tessel::Scoring {
namespace {

using web::json::value;

/// The column of times that comes in front of a series.
const WString kTimeVariable = L"TimeVariable";

void adopt(FittedModel& model, ModelInfo info) {
    model.modelName = std::move(info.name);
    model.format = std::move(info.format);
    model.type = std::move(info.kind);
    model.algorithm = std::move(info.algorithm);
    model.variableNames = std::move(info.variableNames);
    model.variableTypes = std::move(info.variableTypes);
    model.targetName = std::move(info.targetName);
}

/// A model text, parsed once for what it tells and for the facade that scores with it.
struct ModelText {
    const WString& text;
    ModelInfo info = {};
    std::optional<PMML::Document> document = {};  ///< of PMML

    /// Tries PMML first and JSON second. @throws FailedToExtractFittedModelInfo
    void parse() {
        try {
            document = PMML::translatingErrors([&] { return PMML::parsed(text); });
            info = PMML::translatingErrors([&] { return ModelInfo::ofPMML(*document); });
            return;
        } catch (const std::exception&) {
            document.reset();
        }
        try {
            info = ModelInfo::ofJSON(text);
        } catch (const std::exception&) {
            throw FailedToExtractFittedModelInfo();
        }
    }

    template <class Facade>
    Facade load() const {
        if (document) return FromDocument<Facade>(*document);
        Facade facade;
        facade.fromJSONString(text);
        return facade;
    }
};

DataFrame predictions(const ModelText& model, const DataFrame& table, bool withPosteriors) {
    if (!withPosteriors || model.info.kind != Ladon::TaskKind::CLASSIFICATION)
        return model.load<Predictor>().predict(table);
    const auto classifier = model.load<Classifier>();
    DataFrame result = classifier.predict(table);
    result.append(classifier.posteriorProbability(table));
    return result;
}

DataFrame forecasts(const ModelText& model, DataFrame table, int horizon) {
    table.setIndexedColNames({kTimeVariable});
    const DataFrameColumn series = Convert::toTimeSeries(table);
    auto forecaster = model.load<Forecaster>();
    forecaster.setNumForecasts(horizon);
    const DataFrame result = forecaster.forecast(series);
    return result(Util::all, IntVector{0});  // limits of confidence stand behind it
}

/// What to do with a kind of model, and how its result is called.
std::pair<const wchar_t*, const wchar_t*> actionOf(const WString& kind) {
    if (kind == Ladon::TaskKind::CLASSIFICATION || kind == Ladon::TaskKind::REGRESSION)
        return {L"predict", L"prediction"};
    if (kind == Ladon::TaskKind::TIME_SERIES) return {L"forecast", L"forecast"};
    return {L"transform", L"transformation"};
}

/// An object whose members keep their order.
value object(std::initializer_list<std::pair<WStringView, value>> members) {
    value made = value::object(true);
    for (const auto& [name, member] : members) JSONModel::set(made, name, member);
    return made;
}

}  // namespace

FittedModel::FittedModel() = default;
FittedModel::FittedModel(const WString& modelText) { parse(modelText); }
FittedModel::FittedModel(const FittedModel&) = default;
FittedModel::FittedModel(FittedModel&&) noexcept = default;
FittedModel& FittedModel::operator=(const FittedModel&) = default;
FittedModel& FittedModel::operator=(FittedModel&&) noexcept = default;
FittedModel::~FittedModel() = default;

void FittedModel::parse(const WString& modelText) {
    ModelText model{modelText};
    model.parse();
    adopt(*this, std::move(model.info));
}

WString FittedModel::score(const WString& modelText, const WString& data, int horizon,
                           bool withPosteriors) const {
    ModelText model{modelText};
    model.parse();
    const WString& kind = model.info.kind;
    StringVector names = model.info.variableNames, types = model.info.variableTypes;
    const bool isSeries = kind == Ladon::TaskKind::TIME_SERIES;
    if (isSeries) {
        names.insert(0, kTimeVariable);
        types.insert(0, kCategorical);
    }
    const DataFrame table = readTextData(data, names, types);
    if (isSeries) return forecasts(model, table, horizon).toJson();
    if (kind == Ladon::TaskKind::CLASSIFICATION || kind == Ladon::TaskKind::REGRESSION)
        return predictions(model, table, withPosteriors).toJson();
    if (kind == Ladon::TaskKind::CLUSTERING) return model.load<Clusterizer>().predict(table).toJson();
    return model.load<Transformer>().transform(table).toJson();
}

WString FittedModel::toJSON() const {
    std::vector<value> features;
    for (std::size_t i = 0; i < variableNames.size(); ++i)
        features.push_back(object(
            {{L"name", JSON::fromText(variableNames[i])}, {L"type", JSON::fromText(variableTypes.at(i))}}));
    return JSON::serialize(object({{L"modelName", JSON::fromText(modelName)},
                                   {L"format", JSON::fromText(format)},
                                   {L"type", JSON::fromText(type)},
                                   {L"algorithm", JSON::fromText(algorithm)},
                                   {L"features", value::array(std::move(features))},
                                   {L"targetName", JSON::fromText(targetName)}}));
}

WString FittedModel::toString() const {
    return L"\tModel Name: " + modelName + L"\n\tFormat: " + format + L"\n\tType: " + type +
           L"\n\tAlgorithm: " + algorithm + L"\n\tVariableNames: " + variableNames.toString() +
           L"\n\tVariableTypes: " + variableTypes.toString() + L"\n\tTargetName: " + targetName + L"\n";
}

WString FittedModel::generateScoringModel(const WString& name, const WString& dataSourceType,
                                          const WString& connection, const WString& modelText) const {
    const FittedModel& model = modelText.empty() ? *this : FittedModel(modelText);
    if (model.format.empty()) throw FailedToExtractFittedModelInfo();
    const auto text = [](WStringView what) { return JSON::fromText(what); };
    const auto [action, evaluation] = actionOf(model.type);
    return JSON::serialize(object(
        {{L"comment", text(L"Auto-generated LADON Scoring model")},
         {L"modelName", text(name + L"Scoring")},
         {L"datasources", object({{L"myDataSource", object({{Ladon::Keyword::DATA_TYPE, text(dataSourceType)},
                                                            {L"connection", text(connection)}})}})},
         {L"datasets", object({{L"myDataset", object({{L"binding", text(L"myDataSource")}})}})},
         {Ladon::Keyword::MODEL,
          object({{L"myFittedModel", object({{L"modelName", text(model.modelName)}})}})},
         {L"actions", object({{L"myScore", object({{L"data", text(L"myDataset")},
                                                   {Ladon::Keyword::MODEL, text(L"myFittedModel")},
                                                   {L"action", text(action)},
                                                   {Ladon::Keyword::ACTION_EVALUATIONS,
                                                    value::array({text(evaluation)})}})}})}}));
}

}  // namespace Tessel::Scoring
