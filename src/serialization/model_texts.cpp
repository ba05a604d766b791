#include <utility>

#include <tessel/data/convert.h>
#include <tessel/framework/ladon.h>

#include "framework/portable.h"
#include "serialization/json/read.h"
#include "serialization/pmml/model_element.h"
#include "serialization/pmml/read.h"

// Whole texts of fitted models.

namespace Tessel {
namespace {

/// @throws UnsupportedJSONModel
void requireText(const JSON::Members& object, const char* name, const WString& expected) {
    const WString found = JSON::toText(object.at(name), name);
    if (found != expected)
        throw UnsupportedJSONModel(std::string("The member '") + name + "' is '" +
                                   Convert::toUtf8Lossy(found) + "' where '" +
                                   Convert::toUtf8Lossy(expected) + "' is expected.");
}

/// What kind of object a `Ladon` text says that it is: transformers have their own word.
const WString& objectTypeOf(const ModelType& type) {
    const bool isTransformer =
        type.kind == Ladon::TaskKind::TRANSFORMATION || type.kind == Ladon::TaskKind::TEXT_MINING;
    return isTransformer ? Ladon::Keyword::TRANSFORMER : Ladon::Keyword::ESTIMATOR;
}

}  // namespace

// ---- PMML

WString IPortableModel::toPMML(const PMML::ColumnScaling* scaling, const WString& name) const {
    PMML::Document document;
    document.appendDeclaration();
    PMML::Node* const root = document.allocatePMMLNode(type().pmmlElement, name);
    document.appendNode(root);
    PMML::ModelWriter writer{document, root};
    writeDataDictionary(writer);
    PMML::Node* const element = writer.append(document.allocateNode(type().pmmlElement));
    PMML::ModelWriter{document, element, scaling}.write(*this, name);
    return document.toString();
}

void IPortableModel::fromPMMLString(WString text) {
    PMML::translatingErrors([&] { fromPMML(PMML::parsed(std::move(text))); });
}

void IPortableModel::fromPMML(const PMML::Document& document) {
    PMML::translatingErrors([&] {
        const PMML::Node* const element = document.getModelNode();
        if (!element)
            throw UnsupportedPMMLFormat("There is no model element of the name that the header describes.");
        const PMML::FieldTable fields = PMML::readDataDictionary(document.getDataDictionaryNode());
        PMML::ModelReader{fields, element}.readInto(*this);
    });
}

// ---- JSON and Ladon

namespace JSONModel {

void IPortable::fromJSONString(const WString& text) {
    translatingErrors([&] { readJSONValue(JSON::parse(text)); });
}
WString IPortable::toJSON() const { return JSON::serialize(toJSONValue()); }

}  // namespace JSONModel

void IPortableModel::fromJSONString(const WString& text) {
    JSONModel::translatingErrors([&] { fromJSONValue(JSON::parse(text)); });
}

void IPortableModel::fromJSONValue(const web::json::value& value) {
    JSONModel::translatingErrors([&] {
        const JSON::Members model(value, "A model");
        requireText(model, "type", type().kind);
        requireText(model, "algorithm", type().algorithm);
        readJSONValue(value);
    });
}

web::json::value IPortableModel::valueNamed(const WString& name) const {
    web::json::value value = toJSONValue();
    if (name != getName()) JSONModel::set(value, L"modelName", JSON::fromText(name));
    return value;
}

WString IPortableModel::toJSON(const WString& name) const { return JSON::serialize(valueNamed(name)); }

WString IPortableModel::toLadon(const WString& name) const {
    web::json::value description = web::json::value::object(true);
    JSONModel::set(description, Ladon::Keyword::OBJECT_TYPE, JSON::fromText(objectTypeOf(type())));
    JSONModel::set(description, Ladon::Keyword::MODEL_TYPE, JSON::fromText(type().kind));
    JSONModel::set(description, Ladon::Keyword::MODEL_ALGORITHM, JSON::fromText(type().algorithm));
    JSONModel::set(description, Ladon::Keyword::PARAMETERS, web::json::value::object());
    JSONModel::set(description, Ladon::Keyword::MODEL, valueNamed(name));
    return JSON::serialize(description);
}

void IPortableModel::fromLadonString(const WString& text) {
    JSONModel::translatingErrors([&] { fromLadonValue(JSON::parse(text)); });
}

void IPortableModel::fromLadonValue(const web::json::value& value) {
    JSONModel::translatingErrors([&] {
        const JSON::Members description(value, "A Ladon description");
        requireText(description, "objectType", objectTypeOf(type()));
        requireText(description, "type", type().kind);
        requireText(description, "algorithm", type().algorithm);
        fromJSONValue(description.at("fittedModel"));
    });
}

}  // namespace Tessel
