#pragma once

#include <tessel/framework/json_model.h>
#include <tessel/framework/pmml.h>

#include "framework/identifiable.h"

// Fitted models as texts. What is declared here is defined in src/serialization, which knows the formats; a
// model only says what stands in its own part of a text.

namespace web::json {
class value;
}

namespace Tessel {

namespace JSON {
class Members;
}

namespace PMML {

class Document;
struct ModelWriter;
struct ModelReader;

}  // namespace PMML

/// How the texts call a kind of model.
struct ModelType {
    WString kind;           ///< of `Ladon::TaskKind`; PMML's `functionName`
    WString algorithm;      ///< of `Ladon::ModelAlgorithm`
    WString pmmlElement;    ///< such as "TreeModel"
    WString pmmlAlgorithm;  ///< PMML's `algorithmName`
};

namespace JSONModel {

/// A fitted model that is written to JSON and read from it.
class IPortable {
 public:
    virtual ~IPortable() = default;
    /// Loads what a text describes. @throws UnsupportedJSONModel; the object is then of no use.
    virtual void fromJSONString(const WString& text);
    virtual WString toJSON() const;

    virtual web::json::value toJSONValue() const = 0;
    /// @throws UnsupportedJSONModel, MalformedJSON, and what checks of its parts throw.
    virtual void readJSONValue(const web::json::value& value) = 0;
};

}  // namespace JSONModel

/// The implementation of any fitted model that has texts. Reading is for new, empty objects: what owns them
/// drops them when reading fails.
class IPortableModel : public IIdentifiable, public JSONModel::IPortable {
 public:
    using IIdentifiable::IIdentifiable;

    virtual const ModelType& type() const = 0;

    WString toPMML(const PMML::ColumnScaling* scaling) const { return toPMML(scaling, getName()); }
    /// Under another name than the model's own, here and below.
    virtual WString toPMML(const PMML::ColumnScaling* scaling, const WString& name) const;
    void fromPMMLString(WString text);
    /// Reads the model element of a parsed text. @throws UnsupportedPMMLFormat, also in place of whatever the
    /// checks of its parts throw.
    void fromPMML(const PMML::Document& document);

    WString toJSON() const override { return toJSON(getName()); }
    WString toJSON(const WString& name) const;
    /// The JSON value as the fitted model of a `Ladon` object.
    WString toLadon() const { return toLadon(getName()); }
    WString toLadon(const WString& name) const;
    void fromLadonString(const WString& text);

    void fromJSONString(const WString& text) override;
    /// The same for a value; other errors become UnsupportedJSONModel.
    void fromJSONValue(const web::json::value& value);
    /// The same for the parsed text of a `Ladon` object.
    void fromLadonValue(const web::json::value& value);

 protected:
    virtual void writeDataDictionary(PMML::ModelWriter& writer) const = 0;
    /// Fills the model element behind its common attributes.
    virtual void writeElement(PMML::ModelWriter& writer) const = 0;
    virtual void readElement(PMML::ModelReader& reader) = 0;

 private:
    web::json::value valueNamed(const WString& name) const;

    friend struct PMML::ModelWriter;
    friend struct PMML::ModelReader;
};

}  // namespace Tessel
