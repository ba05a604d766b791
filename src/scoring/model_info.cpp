#include "scoring/model_info.h"

#include <unordered_set>

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "serialization/json/read.h"
#include "serialization/pmml/read.h"

namespace Tessel::Scoring {

const WString kContinuous = L"continuous", kCategorical = L"categorical";

ModelInfo ModelInfo::ofPMML(const PMML::Document& document) {
    if (!document.getModelNode())
        throw UnsupportedPMMLFormat("There is no model element of the name that the header describes.");
    ModelInfo info;
    info.name = document.getPMMLModelName();
    info.format = L"PMML";
    info.kind = document.getFunctionName();
    info.algorithm = document.getAlgorithmName();
    if (document.isTransformer()) {
        info.variableNames = document.getUnsupervisedFeatureNames();
        info.variableTypes = document.getUnsupervisedFeatureOpTypes();
        return info;
    }
    info.targetName = document.getTargetColName();
    if (document.isForecaster()) {
        info.variableNames = StringVector{info.targetName};
        info.variableTypes = StringVector{kContinuous};
        return info;
    }
    info.variableNames = document.getFeatureNames();
    info.variableTypes = document.getFeatureOpTypes();
    PMML::Categories categories = document.getMetadata().categories;
    const auto target = categories.find(info.targetName);
    if (target != categories.end()) info.classes = std::move(target->second);
    return info;
}

ModelInfo ModelInfo::ofPMML(const WString& text) {
    return PMML::translatingErrors([&] {
        PMML::Document document;
        document.parse(text);
        return ofPMML(document);
    });
}

ModelInfo ModelInfo::ofJSON(const WString& text) {
    return JSONModel::translatingErrors([&] {
        const web::json::value value = JSON::parse(text);
        const JSON::Members model(value, "A model");
        const auto textOf = [&](const char* name) { return JSON::toText(model.at(name), name); };
        const auto textsIfAny = [&](const char* name) {
            const web::json::value* const texts = model.find(name);
            return texts ? JSON::toStringVector(*texts, name) : StringVector();
        };
        ModelInfo info;
        info.name = textOf("modelName");
        info.format = L"JSON";
        info.kind = textOf("type");
        info.algorithm = textOf("algorithm");
        // Models without a target, and without categorical variables, may leave these members out.
        if (model.find("targetColumn")) info.targetName = textOf("targetColumn");
        info.variableNames = JSON::toStringVector(model.at("variables"), "variables");
        info.classes = textsIfAny("classes");
        const StringVector categorical = textsIfAny("categoricalVariables");
        const std::unordered_set<WString> isCategorical(categorical.begin(), categorical.end());
        for (const WString& name : info.variableNames)
            info.variableTypes.push_back(isCategorical.contains(name) ? kCategorical : kContinuous);
        return info;
    });
}

}  // namespace Tessel::Scoring
