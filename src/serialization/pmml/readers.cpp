#include <algorithm>
#include <utility>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/framework/errors.h>

#include "serialization/pmml/document.h"
#include "serialization/pmml/missing_key.h"
#include "serialization/pmml/values.h"

// The readers of `Document`.

namespace Tessel::PMML {
namespace {

const Node& required(const Node* node) {
    if (!node) throw UnsupportedPMMLFormat();
    return *node;
}

WString requiredText(const Node* node, WStringView name) {
    return WString(Document::requiredAttribute(node, name));
}

template <class Base>
bool isNamed(const Base* base, WStringView name) {
    return isSameName(WStringView(base->name(), base->name_size()), name);
}

/// The first element of that name among a node and its next siblings, or null.
Node* findElement(Node* node, WStringView name) {
    while (node && !(node->type() == rapidxml::node_element && isNamed(node, name)))
        node = node->next_sibling();
    return node;
}

/// Calls `use` with each child element of that name.
template <class Use>
void forEachChild(const Node* node, WStringView name, Use use) {
    for (Node* child = findElement(required(node).first_node(), name); child;
         child = findElement(child->next_sibling(), name))
        use(child);
}

void requireCount(const Node* array, std::size_t count) {
    if (!Document::optionalAttribute(array, L"n")) return;
    const int expected = Document::requiredInt(array, L"n");
    if (expected < 0 || static_cast<std::size_t>(expected) != count)
        throw NumElementsMismatch(expected, static_cast<std::int64_t>(count));
}

/// The pieces between white space.
template <class Use>
void forEachWord(WStringView text, Use use) {
    for (std::size_t position = 0; position < text.size();) {
        const auto rest = text.substr(position);
        const auto end = std::find_if(rest.begin(), rest.end(), isXmlBlank);
        const auto length = static_cast<std::size_t>(end - rest.begin());
        if (length > 0) use(rest.substr(0, length));
        position += length + 1;
    }
}

}  // namespace

Node* Document::getSubnode(const Node* node, WStringView name) {
    return node ? findElement(node->first_node(), name) : nullptr;
}

Node* Document::getRequiredSubnode(const Node* node, WStringView name) {
    Node* const child = getSubnode(node, name);
    required(child);
    return child;
}

Node* Document::getSubnode(WStringView name) const { return getSubnode(getRoot(), name); }

Node* Document::getModelNode() const { return getSubnode(getModelName()); }
Node* Document::getDataDictionaryNode() const { return getSubnode(L"DataDictionary"); }
Node* Document::getMiningSchemaNode() const { return getSubnode(getModelNode(), L"MiningSchema"); }

WString Document::getModelName() const {
    return requiredText(getRequiredSubnode(getRoot(), L"Header"), L"description");
}

WString Document::getPMMLModelName() const {
    const Node* const name = getSubnode(getSubnode(L"Header"), L"ModelName");
    return name ? getText(name) : WString();
}

WString Document::getModelAttribute(WStringView name) const {
    return WString(optionalAttribute(&required(getModelNode()), name).value_or(WStringView()));
}

WString Document::getFunctionName() const { return getModelAttribute(L"functionName"); }
WString Document::getAlgorithmName() const { return getModelAttribute(L"algorithmName"); }

bool Document::isClassifier() const { return getFunctionName() == L"classification"; }
bool Document::isRegressor() const { return getFunctionName() == L"regression"; }
bool Document::isClusterizer() const { return getFunctionName() == L"clustering"; }
bool Document::isForecaster() const { return getFunctionName() == L"timeSeries"; }
bool Document::isTransformer() const { return getFunctionName() == L"transformation"; }
bool Document::isPredictor() const {
    const WString function = getFunctionName();
    return function == L"classification" || function == L"regression";
}

bool Document::isNumericalField(WStringView dataType) {
    return dataType == L"integer" || dataType == L"double";
}

void Document::getMinigFields(const Node* miningSchema, StringVector* names, WString* target) {
    if (!names && !target) return;
    if (names) names->clear();
    forEachChild(miningSchema, L"MiningField", [&](const Node* field) {
        const bool isTarget = requiredAttribute(field, L"usageType") == L"predicted";
        if (isTarget && target) *target = requiredText(field, L"name");
        if (!isTarget && names) names->push_back(requiredText(field, L"name"));
    });
}

WString Document::getTargetColName() const {
    WString target;
    getMinigFields(getMiningSchemaNode(), nullptr, &target);
    return target;
}

WString Document::getTargetColType() const {
    const WString target = getTargetColName();
    WString type;
    forEachChild(getDataDictionaryNode(), L"DataField", [&](const Node* field) {
        if (type.empty() && requiredAttribute(field, L"name") == target)
            type = requiredText(field, L"dataType");
    });
    return type;
}

StringVector Document::getFieldAttributes(WStringView attribute, const WString* except) const {
    StringVector values;
    forEachChild(getDataDictionaryNode(), L"DataField", [&](const Node* field) {
        const WStringView name = requiredAttribute(field, L"name");
        if (!except || name != *except) values.push_back(requiredText(field, attribute));
    });
    return values;
}

StringVector Document::getFeatureNames() const {
    const WString target = getTargetColName();
    return getFieldAttributes(L"name", &target);
}

StringVector Document::getFeatureTypes() const {
    const WString target = getTargetColName();
    return getFieldAttributes(L"dataType", &target);
}

StringVector Document::getFeatureOpTypes() const {
    const WString target = getTargetColName();
    return getFieldAttributes(L"optype", &target);
}

StringVector Document::getUnsupervisedFeatureNames() const { return getFieldAttributes(L"name", nullptr); }
StringVector Document::getUnsupervisedFeatureTypes() const {
    return getFieldAttributes(L"dataType", nullptr);
}
StringVector Document::getUnsupervisedFeatureOpTypes() const {
    return getFieldAttributes(L"optype", nullptr);
}

StringVector Document::getActiveFeatureNames() const {
    StringVector names;
    getMinigFields(getMiningSchemaNode(), &names, nullptr);
    return names;
}

StringVector Document::getActiveFeatureTypes() const {
    std::unordered_map<WString, WString> typeOf;
    forEachChild(getDataDictionaryNode(), L"DataField", [&](const Node* field) {
        typeOf.emplace(requiredAttribute(field, L"name"), requiredAttribute(field, L"dataType"));
    });
    StringVector types = getActiveFeatureNames();
    for (WString& text : types) {
        const auto found = typeOf.find(text);
        if (found == typeOf.end()) throwMissingKey();
        text = found->second;
    }
    return types;
}

Document::Metadata Document::getMetadata() const {
    return getMetadata(getDataDictionaryNode(), getMiningSchemaNode());
}

Document::Metadata Document::getMetadata(const Node* dataDictionary, const Node* miningSchema) {
    Metadata metadata;
    getMinigFields(miningSchema, &metadata.activeFieldNames, &metadata.targetColName);
    forEachChild(dataDictionary, L"DataField", [&](const Node* field) {
        WString name = requiredText(field, L"name");
        StringVector values;
        if (requiredAttribute(field, L"optype") != L"continuous")
            forEachChild(field, L"Value",
                         [&](const Node* value) { values.push_back(requiredText(value, L"value")); });
        if (name != metadata.targetColName) metadata.featureNames.push_back(name);
        metadata.categories.emplace(std::move(name), std::move(values));
    });
    return metadata;
}

std::unordered_map<WString, WString> Document::getAllAttributes(const Node* node) {
    std::unordered_map<WString, WString> attributes;
    for (const Attribute* attribute = required(node).first_attribute(); attribute;
         attribute = attribute->next_attribute())
        attributes.emplace(WStringView(attribute->name(), attribute->name_size()),
                           WStringView(attribute->value(), attribute->value_size()));
    return attributes;
}

std::optional<WStringView> Document::optionalAttribute(const Node* node, WStringView name) {
    for (const Attribute* attribute = required(node).first_attribute(); attribute;
         attribute = attribute->next_attribute())
        if (isNamed(attribute, name)) return WStringView(attribute->value(), attribute->value_size());
    return std::nullopt;
}

WStringView Document::requiredAttribute(const Node* node, WStringView name) {
    const auto value = optionalAttribute(node, name);
    if (!value) throwMissingKey();
    return *value;
}

double Document::requiredDouble(const Node* node, WStringView name) {
    return toDouble(requiredAttribute(node, name));
}

int Document::requiredInt(const Node* node, WStringView name) { return toInt(requiredAttribute(node, name)); }

WString Document::getText(const Node* node) {
    // Elements made by a builder hold their text themselves, parsed ones in children too.
    if (!required(node).first_node()) return WString(node->value(), node->value_size());
    WString text;
    for (const Node* child = node->first_node(); child; child = child->next_sibling())
        if (child->type() == rapidxml::node_data || child->type() == rapidxml::node_cdata)
            text.append(child->value(), child->value_size());
    return text;
}

Vector Document::getDoubleArray(const Node* node) {
    Vector values;
    forEachWord(getText(node), [&](WStringView word) { values.push_back(toDouble(word)); });
    requireCount(node, values.size());
    return values;
}

IntVector Document::getIntArray(const Node* node) {
    IntVector values;
    forEachWord(getText(node), [&](WStringView word) { values.push_back(toInt(word)); });
    requireCount(node, values.size());
    return values;
}

StringVector Document::getStringArray(const Node* node) {
    const WString text = getText(node);
    StringVector values;
    std::size_t numQuotes = 0;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t found = text.find(L'"', start);
        if (found != WString::npos) ++numQuotes;
        const std::size_t end = std::min(found, text.size());
        const auto first = text.begin() + static_cast<std::ptrdiff_t>(start);
        const auto last = text.begin() + static_cast<std::ptrdiff_t>(end);
        if (!std::all_of(first, last, isXmlBlank)) values.push_back(WString(first, last));
        start = end + 1;
    }
    // Blank texts are counted by their quotes, because they are not read.
    requireCount(node, numQuotes % 2 == 0 && numQuotes > 0 ? numQuotes / 2 : values.size());
    return values;
}

Matrix Document::getMatrix(const Node* node, const Vector& values) {
    const bool isByRow = requiredAttribute(node, L"order") == L"row";
    return Matrix(requiredInt(node, L"numRows"), requiredInt(node, L"numCols"), values,
                  isByRow ? MatrixOrderType::ROW_MAJOR : MatrixOrderType::COLUMN_MAJOR);
}

Document::Point Document::getLinearNormPoint(const Node* node) {
    return {requiredDouble(node, L"orig"), requiredDouble(node, L"norm")};
}

Priors Document::getPriorProbs(const Node* target) {
    Priors priors;
    forEachChild(target, L"TargetValue", [&](const Node* value) {
        priors.emplace(requiredAttribute(value, L"value"), requiredDouble(value, L"priorProbability"));
    });
    return priors;
}

}  // namespace Tessel::PMML
