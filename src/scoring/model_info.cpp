#include "scoring/model_info.h"

#include <optional>
#include <unordered_set>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "serialization/json/read.h"
#include "serialization/pmml/model_element.h"
#include "serialization/pmml/read.h"

namespace Tessel::Scoring {

const WString kContinuous = L"continuous", kCategorical = L"categorical";

namespace {

/// The mining field that is predicted, if there is one. As for those who load the model, "target" is the
/// same as "predicted" and a field without usage is an input.
std::optional<WString> targetOf(const PMML::Document& document) {
    std::optional<WString> target;
    const PMML::Node* const schema = document.getMiningSchemaNode();
    if (!schema) return target;
    PMML::forEachChild(schema, L"MiningField", [&](const PMML::Node* field) {
        const auto usage = PMML::Document::optionalAttribute(field, L"usageType");
        if (usage && (*usage == L"predicted" || *usage == L"target"))
            target = PMML::Document::requiredAttribute(field, L"name");
    });
    return target;
}

}  // namespace

ModelInfo ModelInfo::ofPMML(const PMML::Document& document) {
    if (!document.getModelNode())
        throw UnsupportedPMMLFormat("There is no model element of the name that the header describes.");
    ModelInfo info;
    info.name = document.getPMMLModelName();
    info.format = L"PMML";
    info.kind = document.getFunctionName();
    info.algorithm = document.getAlgorithmName();
    const std::optional<WString> target = document.isTransformer() ? std::nullopt : targetOf(document);
    info.targetName = target.value_or(WString());
    if (document.isForecaster()) {
        info.variableNames = StringVector{info.targetName};
        info.variableTypes = StringVector{kContinuous};
        return info;
    }
    const PMML::Node* const dictionary =
        PMML::Document::getRequiredSubnode(document.getRoot(), L"DataDictionary");
    std::unordered_set<WString> names;
    PMML::forEachChild(dictionary, L"DataField", [&](const PMML::Node* field) {
        const WString name(PMML::Document::requiredAttribute(field, L"name"));
        if (!names.insert(name).second)
            throw UnsupportedPMMLFormat("Two fields are called " + Convert::toUtf8Lossy(name) + ".");
        if (name == target) return;
        info.variableNames.push_back(name);
        const bool isContinuous = PMML::Document::requiredAttribute(field, L"optype") == kContinuous;
        info.variableTypes.push_back(isContinuous ? kContinuous : kCategorical);
    });
    return info;
}

ModelInfo ModelInfo::ofJSON(const WString& text) {
    return JSONModel::translatingErrors([&] {
        const web::json::value value = JSON::parse(text);
        const JSON::Members model(value, "A model");
        const auto textOf = [&](const char* name) { return JSON::toText(model.at(name), name); };
        ModelInfo info;
        info.name = textOf("modelName");
        info.format = L"JSON";
        info.kind = textOf("type");
        info.algorithm = textOf("algorithm");
        // Models without a target, and without categorical variables, may leave these members out.
        if (model.find("targetColumn")) info.targetName = textOf("targetColumn");
        info.variableNames = JSON::toStringVector(model.at("variables"), "variables");
        std::unordered_set<WString> isCategorical;
        if (const web::json::value* const names = model.find("categoricalVariables"))
            for (const WString& name : JSON::toStringVector(*names, "categoricalVariables"))
                isCategorical.insert(name);
        for (const WString& name : info.variableNames)
            info.variableTypes.push_back(isCategorical.contains(name) ? kCategorical : kContinuous);
        return info;
    });
}

}  // namespace Tessel::Scoring
