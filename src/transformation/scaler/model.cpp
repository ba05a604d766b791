#include "transformation/scaler/model.h"

#include <cmath>
#include <unordered_set>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "data/column_access.h"
#include "serialization/json/read.h"
#include "serialization/pmml/model_element.h"

namespace Tessel::Scaler {

std::vector<std::span<const double>> engineColumns(const std::vector<FeatureColumn>& columns) {
    std::vector<std::span<const double>> cells;
    cells.reserve(columns.size());
    for (const FeatureColumn& column : columns) cells.push_back(column.numbers());
    return cells;
}

void IModel::setColumns(const StringVector& columns) {
    std::unordered_set<WString> names;
    for (const WString& name : columns) {
        if (name.empty()) throw ConstraintViolation("Columns", "A column needs a name.");
        if (!names.insert(name).second) throw DuplicateName(Convert::toUtf8Lossy(name));
        schema.features.push_back({name, false, nullptr});
    }
}

void IModel::setRescalings(std::vector<Rescaling> rescalings) {
    for (const Rescaling& rescaling : rescalings)
        if (!std::isfinite(rescaling.shift) || !std::isfinite(rescaling.scale))
            throw ConstraintViolation("Scaling", "Shifts and scales must be finite.");
    for (std::size_t i = 0; i < rescalings.size(); ++i) scaling.add(schema.features[i].name, rescalings[i]);
    rescalings_ = std::move(rescalings);
}

void IModel::setRescalings(const Vector& shifts, const Vector& scales) {
    for (const std::size_t size : {shifts.size(), scales.size()})
        if (size != schema.features.size())
            throw NumElementsMismatch(static_cast<std::int64_t>(schema.features.size()),
                                      static_cast<std::int64_t>(size));
    std::vector<Rescaling> rescalings;
    for (std::size_t i = 0; i < shifts.size(); ++i) rescalings.push_back({shifts[i], scales[i]});
    setRescalings(std::move(rescalings));
}

DataFrame IModel::mapped(const DataFrame& table, Map map) const {
    const std::vector<FeatureColumn> columns = readFeatures(schema, table);
    std::vector<std::vector<double>> results = map(engineColumns(columns), rescalings_);
    const IntVector positions = table.getColIndexes(schema.featureNames());
    DataFrame result = table;
    for (std::size_t i = 0; i < results.size(); ++i)
        ColumnAccess::setCells(result, positions[i], ColumnCells::ofNumbers(std::move(results[i])));
    return result;
}

DataFrame IModel::transform(const DataFrame& table) const {
    return mapped(table, &Engine::Scaler::transform);
}
DataFrame IModel::inverseTransform(const DataFrame& table) const {
    return mapped(table, &Engine::Scaler::inverseTransform);
}

DataFrameVector IModel::toDataFrameVector() const {
    DataFrame summary(L"Model: " + getModelName());
    summary.append(DataFrameColumn(L"Value", StringVector{Convert::toString(rescalings_.size())}));
    summary.setRowNames({L"#Columns"});
    Vector shifts, scales;
    for (const Rescaling& rescaling : rescalings_) {
        shifts.push_back(rescaling.shift);
        scales.push_back(rescaling.scale);
    }
    DataFrame table(L"Scaling");
    table.append(DataFrameColumn(L"Shift", std::move(shifts)));
    table.append(DataFrameColumn(L"Scale", std::move(scales)));
    table.setRowNames(schema.featureNames());
    DataFrameVector tables(summary, table);
    tables.setName(getModelName());
    return tables;
}

// ---- texts

const ModelType& IModel::type() const {
    static const ModelType type{Ladon::TaskKind::TRANSFORMATION, Ladon::ModelAlgorithm::RESCALING,
                                L"TransformationModel", L"Rescaling"};
    return type;
}

// The JSON members behind the names: "shifts" and "scales", in the order of the variables.

web::json::value IModel::toJSONValue() const {
    using JSONModel::set;
    Vector shifts, scales;
    for (const Rescaling& rescaling : rescalings_) {
        shifts.push_back(rescaling.shift);
        scales.push_back(rescaling.scale);
    }
    web::json::value model = web::json::value::object(true);
    set(model, L"type", JSON::fromText(type().kind));
    set(model, L"algorithm", JSON::fromText(type().algorithm));
    set(model, L"modelName", JSON::fromText(getName()));
    set(model, L"targetColumn", JSON::fromText(L""));
    set(model, L"variables", JSONModel::fromStrings(schema.featureNames()));
    set(model, L"categoricalVariables", JSONModel::fromStrings({}));
    set(model, L"indexColumns", JSONModel::fromStrings(schema.indexColNames));
    set(model, L"shifts", JSONModel::fromNumbers(shifts));
    set(model, L"scales", JSONModel::fromNumbers(scales));
    return model;
}

void IModel::readJSONValue(const web::json::value& value) {
    const JSON::Members model(value, "A model");
    setName(JSON::toText(model.at("modelName"), "modelName"));
    setColumns(JSON::toStringVector(model.at("variables"), "variables"));
    schema.indexColNames = JSON::toStringVector(model.at("indexColumns"), "indexColumns");
    setRescalings(JSON::toVector(model.at("shifts"), "shifts"), JSON::toVector(model.at("scales"), "scales"));
}

// PMML has no element of its own for transformations; `TransformationModel` carries them as other model
// elements do, in `LocalTransformations`.

void IModel::writeDataDictionary(PMML::ModelWriter& writer) const {
    writer.append(writer.document.allocateDataDictionaryNode(schema.featureNames()));
}

void IModel::writeElement(PMML::ModelWriter& writer) const {
    if (writer.scaling) throw ConstraintViolation("Scaler", "A scaling takes no other one in front of it.");
    PMML::Document& document = writer.document;
    PMML::Node* const miningSchema = writer.append(document.allocateNode(L"MiningSchema"));
    for (const FeatureSchema& feature : schema.features)
        miningSchema->append_node(document.allocateMiningFieldNode(feature.name, L"active"));
    writer.append(
        document.allocateTransformationNode(schema.featureNames(), nullptr, &scaling, writer.fields));
}

void IModel::readElement(PMML::ModelReader& reader) {
    using PMML::Document;
    if (Document::optionalAttribute(reader.element, L"algorithmName") != type().pmmlAlgorithm)
        throw UnsupportedPMMLFormat("The model's algorithm is not Rescaling.");
    if (const PMML::Node* const miningSchema = reader.child(L"MiningSchema"))
        PMML::forEachChild(miningSchema, L"MiningField",
                           [&](const PMML::Node* field) { PMML::requirePlainInput(field, reader.fields); });
    StringVector columns;
    std::vector<Rescaling> rescalings;
    PMML::forEachChild(
        reader.requiredChild(L"LocalTransformations"), L"DerivedField", [&](const PMML::Node* derived) {
            const PMML::Node* const norm = Document::getSubnode(derived, L"NormContinuous");
            if (!norm)
                throw UnsupportedPMMLFormat(
                    "A DerivedField is not a NormContinuous, the only kind read here.");
            const WString column(Document::requiredAttribute(norm, L"field"));
            if (reader.field(column).isCategorical)
                throw UnsupportedPMMLFormat("A NormContinuous refers to " + Convert::toUtf8Lossy(column) +
                                            ", which is not numeric.");
            columns.push_back(column);
            rescalings.push_back(PMML::readNormContinuous(norm));
        });
    setColumns(columns);
    setRescalings(std::move(rescalings));
}

}  // namespace Tessel::Scaler
