#include <utility>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "scoring/facades.h"
#include "serialization/json/read.h"
#include "serialization/pmml/read.h"

// From a text to the model that it holds.

namespace Tessel::Scoring {
namespace {

WString memberText(const JSON::Members& object, const char* name) {
    return JSON::toText(object.at(name), name);
}

bool startsAsXml(const WString& text) {
    const std::size_t first = text.find_first_not_of(L" \t\r\n");
    // A byte-order mark may also have been widened byte by byte.
    return first != WString::npos && (text[first] == L'<' || text[first] == L'\u00EF');
}

}  // namespace

const Loaded& IFacade::model() const {
    if (!model_) throw NoModels();
    return *model_;
}

void IFacade::adopt(const CatalogRow& row, std::shared_ptr<IPortableModel> implementation) {
    const WString name = implementation->getName(), modelName = implementation->getModelName();
    model_ = std::make_shared<const Loaded>(row.wrap(std::move(implementation)));
    setName(name);
    setModelName(modelName);
}

void IFacade::fromPMMLString(WString text) {
    PMML::translatingErrors([&] { fromPMML(PMML::parsed(std::move(text))); });
}

void IFacade::fromPMML(const PMML::Document& document) {
    PMML::translatingErrors([&] {
        const PMML::Node* const element = document.getModelNode();
        if (!element)
            throw UnsupportedPMMLFormat(
                "Unable to parse PMML model. There is no model element of the name that the header "
                "describes.");
        const CatalogRow& row = rowOfPMML(audience_, WStringView(element->name(), element->name_size()),
                                          document.getAlgorithmName(), document.getFunctionName());
        const auto implementation = row.makeBlank();
        implementation->fromPMML(document);
        adopt(row, implementation);
    });
}

void IFacade::load(const web::json::value& value, ReadValue read) {
    const JSON::Members object(value, "A model");
    const CatalogRow& row = rowOfJSON(audience_, memberText(object, "type"), memberText(object, "algorithm"));
    const auto implementation = row.makeBlank();
    (*implementation.*read)(value);
    adopt(row, implementation);
}

void IFacade::fromJSONString(const WString& text) {
    JSONModel::translatingErrors([&] { load(JSON::parse(text), &IPortableModel::fromJSONValue); });
}

void IFacade::fromLadonString(const WString& text) {
    JSONModel::translatingErrors([&] { load(JSON::parse(text), &IPortableModel::fromLadonValue); });
}

void IFacade::fromString(WString text) {
    if (text.starts_with(L'\uFEFF')) text.erase(0, 1);  // a byte-order mark
    if (startsAsXml(text)) return fromPMMLString(std::move(text));
    JSONModel::translatingErrors([&] {
        const web::json::value value = JSON::parse(text);
        const bool isLadon = JSON::Members(value, "A model").find("fittedModel") != nullptr;
        load(value, isLadon ? &IPortableModel::fromLadonValue : &IPortableModel::fromJSONValue);
    });
}

}  // namespace Tessel::Scoring
