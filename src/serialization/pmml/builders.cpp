#include <algorithm>
#include <unordered_set>
#include <utility>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "data/util/column_names.h"
#include "serialization/pmml/document.h"
#include "serialization/pmml/missing_key.h"
#include "serialization/pmml/timestamp.h"
#include "serialization/pmml/values.h"

// The builders of `Document`.

namespace Tessel::PMML {
namespace {

constexpr const wchar_t* kNamespace = L"http://www.dmg.org/PMML-4_2";
constexpr const wchar_t* kSchemaFile = L"http://www.dmg.org/v4-2/pmml-4-2.xsd";
constexpr const wchar_t* kSchemaInstance = L"http://www.w3.org/2001/XMLSchema-instance";

const StringVector& categoriesOf(const Categories& categories, const WString& feature) {
    const auto found = categories.find(feature);
    if (found == categories.end()) throwMissingKey();
    return found->second;
}

bool isCategorical(const Categories* categories, const WString& feature) {
    return categories && !categoriesOf(*categories, feature).empty();
}

template <class Sequence, class ToText>
WString joined(const Sequence& values, ToText toText) {
    WString text;
    for (const auto& value : values) {
        if (!text.empty()) text += L' ';
        text += toText(value);
    }
    return text;
}

}  // namespace

Node* Document::allocateCount(WStringView name, std::int32_t count) {
    return allocateNode(name, Convert::toString(static_cast<int>(count)));
}

void Document::appendCount(Node* node, WStringView name, std::int32_t count) {
    appendAttribute(node, name, Convert::toString(static_cast<int>(count)));
}

void Document::appendAttribute(Node* node, WStringView name, double value) {
    appendAttribute(node, name, numberText(value));
}

void Document::appendDecimalAttribute(Node* node, WStringView name, double value) {
    appendAttribute(node, name, decimalText(value));
}

Node* Document::allocatePMMLNode(WStringView description, WStringView modelName) {
    Node* const root = allocateNode(L"PMML");
    appendAttribute(root, L"version", L"4.2");
    appendAttribute(root, L"xsi:schemaLocation", WString(kNamespace) + L' ' + kSchemaFile);
    appendAttribute(root, L"xmlns:xsi", kSchemaInstance);
    appendAttribute(root, L"xmlns", kNamespace);

    Node* const header = allocateNode(L"Header");
    appendAttribute(header, L"copyright", L"Copyright (c) TesselSDK");
    appendAttribute(header, L"description", description);
    root->append_node(header);

    Node* const application = allocateNode(L"Application");
    appendAttribute(application, L"name", L"TesselSDK");
    appendAttribute(application, L"version", L"25.2.2.0");
    header->append_node(application);
    header->append_node(allocateNode(L"Timestamp", localTimestamp()));
    header->append_node(allocateNode(L"ModelName", modelName));
    return root;
}

Node* Document::allocateDataDictionaryNode(std::size_t numFields) {
    Node* const dictionary = allocateNode(L"DataDictionary");
    appendAttribute(dictionary, L"numberOfFields", numFields);
    return dictionary;
}

Node* Document::allocateDataDictionaryNode(const StringVector& featureNames, const Categories* categories) {
    if (categories && categories->size() != featureNames.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(featureNames.size()),
                                  static_cast<std::int64_t>(categories->size()));
    Node* const dictionary = allocateDataDictionaryNode(featureNames.size());
    for (const WString& name : featureNames)
        dictionary->append_node(isCategorical(categories, name)
                                    ? allocateDataFieldNode(name, categoriesOf(*categories, name))
                                    : allocateDataFieldNode(name));
    return dictionary;
}

Node* Document::allocateDataDictionaryNode(const WString& targetName, const StringVector& featureNames,
                                           const Categories* categories) {
    StringVector names = featureNames;
    names.push_back(targetName);
    return allocateDataDictionaryNode(names, categories);
}

Node* Document::allocateDataFieldNode(WStringView name, WStringView optype, WStringView dataType) {
    Node* const field = allocateNode(L"DataField");
    appendAttribute(field, L"optype", optype);
    appendAttribute(field, L"dataType", dataType);
    appendAttribute(field, L"name", name);
    return field;
}

Node* Document::allocateDataFieldNode(WStringView name) {
    return allocateDataFieldNode(name, L"continuous", L"double");
}

Node* Document::allocateDataFieldNode(WStringView name, const StringVector& values) {
    Node* const field = allocateDataFieldNode(name, L"categorical", L"string");
    for (const WString& label : values) {
        Node* const value = allocateNode(L"Value");
        appendAttribute(value, L"value", label);
        field->append_node(value);
    }
    return field;
}

Node* Document::allocateMiningSchemaNode(WStringView targetName, const StringVector& featureNames) {
    Node* const schema = allocateNode(L"MiningSchema");
    schema->append_node(allocateMiningFieldNode(targetName, L"predicted"));
    for (const WString& name : featureNames) schema->append_node(allocateMiningFieldNode(name, L"active"));
    return schema;
}

Node* Document::allocateMiningFieldNode(WStringView name) {
    Node* const field = allocateNode(L"MiningField");
    appendAttribute(field, L"name", name);
    return field;
}

Node* Document::allocateMiningFieldNode(WStringView name, WStringView usageType) {
    Node* const field = allocateMiningFieldNode(name);
    appendAttribute(field, L"usageType", usageType);
    return field;
}

Node* Document::allocateFieldRefNode(WStringView name) {
    Node* const reference = allocateNode(L"FieldRef");
    appendAttribute(reference, L"field", name);
    return reference;
}

Node* Document::allocateTargetsNode(WStringView targetName, const Priors& priors,
                                    const std::optional<WString>& successClass) {
    Node* const target = allocateNode(L"Target");
    appendAttribute(target, L"field", targetName);
    appendAttribute(target, L"optype", L"categorical");
    if (successClass) appendAttribute(target, L"successClass", *successClass);
    for (const auto& [label, probability] : priors) {
        Node* const value = allocateNode(L"TargetValue");
        appendAttribute(value, L"value", label);
        appendDecimalAttribute(value, L"priorProbability", probability);
        target->append_node(value);
    }
    Node* const targets = allocateNode(L"Targets");
    targets->append_node(target);
    return targets;
}

Node* Document::allocateArray(WStringView text, std::size_t size, WStringView type) {
    Node* const array = allocateNode(L"Array", text);
    appendAttribute(array, L"n", size);
    appendAttribute(array, L"type", type);
    return array;
}

Node* Document::allocateArray(const IntVector& values) {
    return allocateArray(joined(values, [](int value) { return Convert::toString(value); }), values.size(),
                         L"int");
}

Node* Document::allocateArray(const Vector& values) {
    return allocateArray(joined(values, numberText), values.size(), L"real");
}

Node* Document::allocateArray(const StringVector& values) {
    return allocateArray(joined(values, [](const WString& text) { return L'"' + text + L'"'; }),
                         values.size(), L"string");
}

void Document::checkCategories(const StringVector& texts) {
    for (const WString& text : texts) {
        if (text.find(L'"') != WString::npos)
            throw ConstraintViolation("Category", "PMML cannot list a text that holds a double quote: " +
                                                      Convert::toUtf8Lossy(text));
        if (std::all_of(text.begin(), text.end(), isXmlBlank))
            throw ConstraintViolation("Category", "PMML cannot list a text that is blank");
    }
}

void Document::appendMatrixAttributes(Node* node, const Matrix& matrix) {
    const bool isByRow = matrix.getMatrixOrder() == MatrixOrderType::ROW_MAJOR;
    appendAttribute(node, L"order", isByRow ? L"row" : L"col");
    appendAttribute(node, L"numRows", matrix.getNumRows());
    appendAttribute(node, L"numCols", matrix.getNumCols());
}

Node* Document::allocateLinearNorm(double orig, double norm) {
    Node* const point = allocateNode(L"LinearNorm");
    appendAttribute(point, L"orig", shortNumberText(orig));
    appendAttribute(point, L"norm", shortNumberText(norm));
    return point;
}

Node* Document::allocateNormContinuous(WStringView field, double shift, double scale) {
    // The points of a map must differ.
    if (!(shift + 1.0 > shift)) throw ConstraintViolation("Shift", "it does not change when 1 is added");
    Node* const norm = allocateNode(L"NormContinuous");
    appendAttribute(norm, L"field", field);
    norm->append_node(allocateLinearNorm(shift, 0.0));
    norm->append_node(allocateLinearNorm(shift + 1.0, scale));
    return norm;
}

Node* Document::allocateDerivedFieldNode(WStringView name) {
    Node* const field = allocateNode(L"DerivedField");
    appendAttribute(field, L"optype", L"continuous");
    appendAttribute(field, L"dataType", L"double");
    appendAttribute(field, L"name", name);
    return field;
}

Node* Document::allocateTransformationNode(const StringVector& featureNames, const Categories* categories,
                                           const ColumnScaling* scaling, StringVector& outputNames) {
    Node* const transformations = allocateNode(L"LocalTransformations");
    StringVector names;
    std::unordered_set<WString> used(featureNames.begin(), featureNames.end());
    const auto addDerivedField = [&](const WString& name) {
        if (!used.insert(name).second) throw DuplicateName(Convert::toUtf8Lossy(name));
        names.push_back(name);
        Node* const field = allocateDerivedFieldNode(name);
        transformations->append_node(field);
        return field;
    };
    for (const WString& feature : featureNames) {
        if (isCategorical(categories, feature)) {
            for (const WString& category : categoriesOf(*categories, feature)) {
                Node* const indicator = allocateNode(L"NormDiscrete");
                appendAttribute(indicator, L"field", feature);
                appendAttribute(indicator, L"value", category);
                addDerivedField(Engine::Util::generateColName(feature, category))->append_node(indicator);
            }
        } else if (scaling && scaling->isScaled(feature)) {
            Node* const field = addDerivedField(feature + L'*');
            appendAttribute(field, L"displayName", feature);
            field->append_node(
                allocateNormContinuous(feature, scaling->getShift(feature), scaling->getScale(feature)));
        } else {
            names.push_back(feature);
        }
    }
    outputNames = std::move(names);
    return transformations;
}

}  // namespace Tessel::PMML
