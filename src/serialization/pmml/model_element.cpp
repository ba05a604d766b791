#include "serialization/pmml/model_element.h"

#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "framework/portable.h"

namespace Tessel::PMML {

void ModelWriter::write(const IPortableModel& model, const WString& name) {
    const ModelType& type = model.type();
    document.appendAttribute(element, L"modelName", name);
    document.appendAttribute(element, L"functionName", type.kind);
    document.appendAttribute(element, L"algorithmName", type.pmmlAlgorithm);
    model.writeElement(*this);
}

FieldTable readDataDictionary(const Node* dataDictionary) {
    if (!dataDictionary) throw UnsupportedPMMLFormat("There is no DataDictionary.");
    FieldTable fields;
    forEachChild(dataDictionary, L"DataField", [&](const Node* node) {
        const WString name(Document::requiredAttribute(node, L"name"));
        Field field;
        field.isCategorical = Document::requiredAttribute(node, L"optype") != L"continuous";
        forEachChild(node, L"Value", [&](const Node* value) {
            const auto property = Document::optionalAttribute(value, L"property");
            if (property && *property == L"missing") field.hasMissingValues = true;
            if (field.isCategorical && (!property || *property == L"valid"))
                field.categories.push_back(WString(Document::requiredAttribute(value, L"value")));
        });
        if (!fields.emplace(name, std::move(field)).second)
            throw UnsupportedPMMLFormat("Two fields are called " + Convert::toUtf8Lossy(name) + ".");
    });
    return fields;
}

void requirePlainInput(const Node* miningField, const FieldTable& fields) {
    const WString name(Document::requiredAttribute(miningField, L"name"));
    const auto refuse = [&](const char* what) {
        throw UnsupportedPMMLFormat("The mining field " + Convert::toUtf8Lossy(name) + " " + what + ".");
    };
    const auto is = [&](WStringView attribute, WStringView value) {
        return Document::optionalAttribute(miningField, attribute).value_or(L"") == value;
    };
    if (Document::optionalAttribute(miningField, L"missingValueReplacement") ||
        (Document::optionalAttribute(miningField, L"outliers") && !is(L"outliers", L"asIs")))
        refuse("replaces missing values or outliers");
    const auto declared = fields.find(name);
    if (declared == fields.end()) return;
    const Field& field = declared->second;
    if (field.hasMissingValues) refuse("has values that stand for missing ones");
    if (const auto optype = Document::optionalAttribute(miningField, L"optype"))
        if ((*optype != L"continuous") != field.isCategorical) refuse("changes the type of its field");
    // Models tell categories that they do not know apart from missing cells.
    if (field.isCategorical && is(L"invalidValueTreatment", L"asMissing"))
        refuse("takes unknown categories for missing");
}

const Field& ModelReader::field(WStringView name) const {
    const auto found = fields.find(WString(name));
    if (found == fields.end())
        throw UnsupportedPMMLFormat("The DataDictionary has no field " + Convert::toUtf8Lossy(name) + ".");
    return found->second;
}

std::int32_t ModelReader::featureOf(WStringView field) const {
    const auto found = featureOfField.find(field);
    if (found == featureOfField.end())
        throw UnsupportedPMMLFormat("The model refers to " + Convert::toUtf8Lossy(field) +
                                    ", which is none of its inputs.");
    return found->second;
}

void ModelReader::readInto(IPortableModel& model) {
    const ModelType& type = model.type();
    const auto name = Document::optionalAttribute(element, L"modelName");
    const WStringView elementName(element->name(), element->name_size());
    if (type.pmmlElement.empty())
        throw UnsupportedPMMLFormat("PMML has no element for models of algorithm " +
                                    Convert::toUtf8Lossy(type.algorithm) +
                                    ". Load the text by the family of its model or by a facade.");
    if (elementName != type.pmmlElement)
        throw UnsupportedPMMLFormat("The model is a " + Convert::toUtf8Lossy(elementName) + ", not a " +
                                    Convert::toUtf8Lossy(type.pmmlElement) + ".");
    if (Document::requiredAttribute(element, L"functionName") != type.kind)
        throw UnsupportedPMMLFormat("The model's function is not " + Convert::toUtf8Lossy(type.kind) + ".");
    if (name && !name->empty()) model.setName(WString(*name));
    model.readElement(*this);
}

Node* allocateExtension(Document& document, WStringView name, WStringView value) {
    Node* const extension = document.allocateNode(L"Extension");
    document.appendAttribute(extension, L"name", name);
    document.appendAttribute(extension, L"value", value);
    return extension;
}

std::optional<WStringView> findExtension(const Node* node, WStringView name) {
    std::optional<WStringView> found;
    if (node)
        forEachChild(node, L"Extension", [&](const Node* extension) {
            const auto itsName = Document::optionalAttribute(extension, L"name");
            if (!found && itsName && *itsName == name)
                found = Document::optionalAttribute(extension, L"value");
        });
    return found;
}

Engine::Scaler::Rescaling readNormContinuous(const Node* norm) {
    // More points or a rule for missing values would make it another map.
    std::vector<Document::Point> points;
    forEachChild(norm, L"LinearNorm",
                 [&](const Node* point) { points.push_back(Document::getLinearNormPoint(point)); });
    const auto outliers = Document::optionalAttribute(norm, L"outliers");
    if (points.size() != 2 || Document::optionalAttribute(norm, L"mapMissingTo") ||
        (outliers && *outliers != L"asIs"))
        throw UnsupportedPMMLFormat("A NormContinuous is not one straight line.");
    const auto [first, second] = std::pair(points[0], points[1]);
    // The points as this library writes them hold shift and scale themselves.
    const bool isOwn = first.norm == 0.0 && second.orig == first.orig + 1.0;
    const double slope = isOwn ? second.norm : (second.norm - first.norm) / (second.orig - first.orig);
    const Engine::Scaler::Rescaling rescaling{
        isOwn || first.norm == 0.0 ? first.orig : first.orig - first.norm / slope, slope};
    if (!std::isfinite(rescaling.shift) || !std::isfinite(rescaling.scale))
        throw UnsupportedPMMLFormat("A NormContinuous has no finite shift and scale.");
    return rescaling;
}

}  // namespace Tessel::PMML
