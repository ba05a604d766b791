#include <algorithm>
#include <unordered_map>

#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>
#include <tessel/framework/errors.h>

#include "framework/supervised.h"
#include "serialization/json/read.h"
#include "serialization/pmml/model_element.h"

// What the texts of all supervised models say: names, columns and their categories, the scaling of inputs.

namespace Tessel::Supervised {
namespace {

using PMML::Document;
using PMML::Node;

/// The name of the extension that tells an index column, of which the standard knows nothing.
constexpr WStringView kIndexColumn = L"indexColumn";

/// @throws UnsupportedPMMLFormat and the like, by the caller's translation.
void requireDistinct(const StringVector& texts, const WString& what) {
    std::vector<WString> sorted(texts.begin(), texts.end());
    std::sort(sorted.begin(), sorted.end());
    const bool isOdd = std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end() ||
                       (!sorted.empty() && sorted.front().empty());
    if (isOdd) throw ConstraintViolation(Convert::toUtf8Lossy(what), "Names must be distinct and not empty.");
}

FeatureSchema featureOf(const WString& name, bool isCategorical, const StringVector& categories) {
    FeatureSchema feature{name, isCategorical, nullptr};
    if (!isCategorical) return feature;
    requireDistinct(categories, L"The categories of " + name);
    feature.categories =
        std::make_shared<const Dictionary>(std::vector<WString>(categories.begin(), categories.end()));
    return feature;
}

}  // namespace

// ---- PMML

void IModelable::writeDataDictionary(PMML::ModelWriter& writer) const {
    if (schema.featureNames().exists(schema.targetName))
        throw DuplicateName(Convert::toUtf8Lossy(schema.targetName));
    PMML::Categories categories;
    for (const FeatureSchema& feature : schema.features)
        categories[feature.name] =
            feature.isCategorical ? StringVector(feature.categories->levels()) : StringVector();
    categories[schema.targetName] = targetCategories();
    writer.append(
        writer.document.allocateDataDictionaryNode(schema.targetName, schema.featureNames(), &categories));
}

void IModelable::writeElement(PMML::ModelWriter& writer) const {
    writeAttributes(writer);
    if (!writer.isSegment)
        for (const WString& column : schema.indexColNames)
            writer.append(PMML::allocateExtension(writer.document, kIndexColumn, column));
    if (writer.scaling && !schema.scaling.isEmpty())
        throw ConstraintViolation("Scaler", "The model scales its inputs already.");
    const PMML::ColumnScaling& scaling = writer.scaling ? *writer.scaling : schema.scaling;
    bool isScaled = false;
    for (const FeatureSchema& feature : schema.features) {
        if (!scaling.isScaled(feature.name)) continue;
        if (feature.isCategorical)
            throw ConstraintViolation("Scaler",
                                      Convert::toUtf8Lossy(feature.name) +
                                          " is scaled, but the model takes its values as categories.");
        isScaled = true;
    }
    Node* transformations = nullptr;
    if (!writer.isSegment && isScaled) {
        transformations = writer.document.allocateTransformationNode(schema.featureNames(), nullptr, &scaling,
                                                                     writer.fields);
    } else if (!writer.isSegment) {
        writer.fields = schema.featureNames();
    }
    if (transformations && writesTransformationsFirst()) writer.append(transformations);
    writer.append(writer.document.allocateMiningSchemaNode(
        schema.targetName, writer.isSegment ? writer.fields : schema.featureNames()));
    if (transformations && !writesTransformationsFirst()) writer.append(transformations);
    writeTarget(writer);
    writeBody(writer);
}

void IModelable::readElement(PMML::ModelReader& reader) {
    if (reader.ensemble)
        schema.features = reader.ensemble->features;
    else
        readIndexColumns(reader);
    readMiningSchema(reader);
    if (!reader.ensemble)
        readTransformations(reader);
    else if (reader.child(L"LocalTransformations"))
        throw UnsupportedPMMLFormat("A segment transforms its inputs.");
    readTarget(reader);
    readBody(reader);
}

void IModelable::readIndexColumns(const PMML::ModelReader& reader) {
    PMML::forEachChild(reader.element, L"Extension", [&](const Node* extension) {
        const auto value = Document::optionalAttribute(extension, L"value");
        if (value && Document::optionalAttribute(extension, L"name") == kIndexColumn)
            schema.indexColNames.push_back(WString(*value));
    });
}

/// Fills features and target; of a segment, whose features are there, only the target.
void IModelable::readMiningSchema(PMML::ModelReader& reader) {
    StringVector names;
    bool hasTarget = false;
    PMML::forEachChild(reader.requiredChild(L"MiningSchema"), L"MiningField", [&](const Node* field) {
        const WString name(Document::requiredAttribute(field, L"name"));
        const WStringView usage = Document::optionalAttribute(field, L"usageType").value_or(L"active");
        if (usage == L"predicted" || usage == L"target") {
            if (hasTarget) throw UnsupportedPMMLFormat("There are several targets.");
            hasTarget = true;
            schema.targetName = name;
        } else if (usage == L"active") {
            PMML::requirePlainInput(field, reader.fields);
            names.push_back(name);
        }
    });
    if (reader.ensemble) {
        if (!hasTarget) schema.targetName = reader.ensemble->targetName;
        for (const WString& name : names) reader.featureOf(name);
        return;
    }
    if (!hasTarget) throw UnsupportedPMMLFormat("The MiningSchema has no target.");
    requireDistinct(names, L"MiningSchema");
    for (const WString& name : names) {
        const PMML::Field& declared = reader.field(name);
        reader.featureOfField[name] = static_cast<std::int32_t>(schema.features.size());
        schema.features.push_back(featureOf(name, declared.isCategorical, declared.categories));
    }
}

void IModelable::readTransformations(PMML::ModelReader& reader) {
    const Node* const transformations = reader.child(L"LocalTransformations");
    if (!transformations) return;
    PMML::forEachChild(transformations, L"DerivedField", [&](const Node* derived) {
        const Node* const norm = Document::getSubnode(derived, L"NormContinuous");
        if (!norm)
            throw UnsupportedPMMLFormat("A DerivedField is not a NormContinuous, the only kind read here.");
        const WString raw(Document::requiredAttribute(norm, L"field"));
        const auto found = reader.featureOfField.find(raw);
        if (found == reader.featureOfField.end() ||
            schema.features[static_cast<std::size_t>(found->second)].isCategorical)
            throw UnsupportedPMMLFormat("A NormContinuous refers to " + Convert::toUtf8Lossy(raw) +
                                        ", which is not a numeric input, or scaled twice.");
        const std::int32_t feature = found->second;
        schema.scaling.add(raw, PMML::readNormContinuous(norm));
        // A body that uses the unscaled input as well is refused when it asks for it.
        reader.featureOfField.erase(found);
        reader.featureOfField[WString(Document::requiredAttribute(derived, L"name"))] = feature;
    });
}

void IModelable::writeTarget(PMML::ModelWriter& writer) const {
    if (writer.isSegment) return;
    Document& document = writer.document;
    Node* const output = document.allocateNode(L"Output");
    Node* const field = document.allocateNode(L"OutputField");
    document.appendAttribute(field, L"name", L"Predicted_" + schema.targetName);
    document.appendAttribute(field, L"optype", L"continuous");
    document.appendAttribute(field, L"dataType", L"double");
    document.appendAttribute(field, L"feature", L"predictedValue");
    output->append_node(field);
    writer.append(output);
}

void IModelable::readTarget(const PMML::ModelReader& reader) {
    const Node* const targets = reader.child(L"Targets");
    const Node* const target = Document::getSubnode(targets, L"Target");
    for (const wchar_t* name : {L"min", L"max", L"rescaleFactor", L"rescaleConstant", L"castInteger"})
        if (target && Document::optionalAttribute(target, name))
            throw UnsupportedPMMLFormat("The Target changes predictions, which this model cannot do.");
}

// ---- JSON

web::json::value IModelable::toJSONValue() const {
    using JSONModel::fromStrings;
    using JSONModel::set;
    StringVector categorical;
    std::vector<web::json::value> categories, scaled;
    for (const FeatureSchema& feature : schema.features) {
        if (feature.isCategorical) {
            categorical.push_back(feature.name);
            categories.push_back(fromStrings(StringVector(feature.categories->levels())));
        } else if (const Rescaling* const rescaling = schema.scaling.find(feature.name)) {
            web::json::value column = web::json::value::object(true);
            set(column, L"name", JSON::fromText(feature.name));
            set(column, L"shift", JSON::fromNumber(rescaling->shift));
            set(column, L"scale", JSON::fromNumber(rescaling->scale));
            scaled.push_back(std::move(column));
        }
    }
    web::json::value model = web::json::value::object(true);
    set(model, L"type", JSON::fromText(type().kind));
    set(model, L"algorithm", JSON::fromText(type().algorithm));
    set(model, L"modelName", JSON::fromText(getName()));
    set(model, L"targetColumn", JSON::fromText(schema.targetName));
    set(model, L"variables", fromStrings(schema.featureNames()));
    set(model, L"categoricalVariables", fromStrings(categorical));
    set(model, L"categories", web::json::value::array(std::move(categories)));
    if (!scaled.empty()) set(model, L"scaledVariables", web::json::value::array(std::move(scaled)));
    set(model, L"indexColumns", fromStrings(schema.indexColNames));
    set(model, L"numRecords", web::json::value::number(schema.numRows));
    if (schema.rowNames) set(model, L"recordNames", fromStrings(schema.trainingRowNames()));
    writeTarget(model);
    writeBody(model);
    return model;
}

void IModelable::readJSONValue(const web::json::value& value) {
    const JSON::Members model(value, "A model");
    setName(JSON::toText(model.at("modelName"), "modelName"));
    schema.targetName = JSON::toText(model.at("targetColumn"), "targetColumn");
    const StringVector names = JSON::toStringVector(model.at("variables"), "variables");
    const StringVector categorical =
        JSON::toStringVector(model.at("categoricalVariables"), "categoricalVariables");
    const web::json::array& categories = JSON::toArray(model.at("categories"), "categories");
    requireDistinct(names, L"variables");
    requireDistinct(categorical, L"categoricalVariables");
    if (categories.size() != categorical.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(categorical.size()),
                                  static_cast<std::int64_t>(categories.size()));
    std::unordered_map<WString, std::size_t> positions;  // by name, of the variables
    for (const WString& name : names) {
        positions.emplace(name, schema.features.size());
        schema.features.push_back(featureOf(name, false, {}));
    }
    for (std::size_t i = 0; i < categorical.size(); ++i) {
        const auto position = positions.find(categorical[i]);
        if (position == positions.end())
            throw NotAValidColName("categoricalVariables", Convert::toUtf8Lossy(categorical[i]));
        schema.features[position->second] =
            featureOf(categorical[i], true, JSON::toStringVector(categories.at(i), "categories"));
    }
    if (const web::json::value* const scaled = model.find("scaledVariables"))
        for (const web::json::value& element : JSON::toArray(*scaled, "scaledVariables")) {
            const JSON::Members column(element, "A scaled variable");
            const WString name = JSON::toText(column.at("name"), "name");
            const auto position = positions.find(name);
            if (position == positions.end() || schema.features[position->second].isCategorical)
                throw NotAValidColName("scaledVariables", Convert::toUtf8Lossy(name));
            schema.scaling.add(name, {JSON::toNumber(column.at("shift"), "shift"),
                                      JSON::toNumber(column.at("scale"), "scale")});
        }
    schema.indexColNames = JSON::toStringVector(model.at("indexColumns"), "indexColumns");
    schema.numRows = JSON::toInteger(model.at("numRecords"), "numRecords");
    if (schema.numRows < 0) throw ValueOutOfRange("numRecords", 0, std::numeric_limits<int>::max());
    if (const web::json::value* const recordNames = model.find("recordNames")) {
        const StringVector texts = JSON::toStringVector(*recordNames, "recordNames");
        if (texts.size() != static_cast<std::size_t>(schema.numRows))
            throw NumElementsMismatch(schema.numRows, static_cast<std::int64_t>(texts.size()));
        schema.rowNames = RowNames::of(std::vector<WString>(texts.begin(), texts.end()));
    }
    readTarget(model);
    readBody(model);
}

void IModelable::writeTarget(web::json::value&) const {}
void IModelable::readTarget(const JSON::Members&) {}

}  // namespace Tessel::Supervised
