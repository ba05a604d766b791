#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include <tessel/framework/pmml.h>

#include "data/dictionary.h"
#include "data/scaler.h"
#include "serialization/pmml/document.h"

// The border between fitted models and PMML elements: what a model is given to write its element with, and
// what it is given to read it from.

namespace Tessel {

class IPortableModel;
struct FittedSchema;

namespace PMML {

/// Writes one model element.
struct ModelWriter {
    Document& document;
    Node* element;                           ///< the model element
    const ColumnScaling* scaling = nullptr;  ///< of the inputs; null for none
    StringVector fields = {};  ///< names by which the body refers to the features, in their order
    /// Whether the element is a member of an ensemble, which tells neither output nor scaling of its own;
    /// `fields` are then given.
    bool isSegment = false;
    /// Whether a member's probabilities are to be those of its vote, 1 for the class it chooses.
    bool areProbabilitiesVotes = false;

    /// The child that the writer appends to the model element.
    Node* append(Node* child) const {
        element->append_node(child);
        return child;
    }

    /// Fills the model element with its common attributes and its content.
    void write(const IPortableModel& model, const WString& name);
};

/// A field of a data dictionary.
struct Field {
    bool isCategorical = false;
    /// What a categorical field may hold; empty when the text does not tell.
    StringVector categories;
    /// Whether some of its values stand for missing ones.
    bool hasMissingValues = false;
};
using FieldTable = std::unordered_map<WString, Field>;

/// The fields of a data dictionary. @throws UnsupportedPMMLFormat
FieldTable readDataDictionary(const Node* dataDictionary);

/// Passes when an input reaches a model as it stands in the table, so that nothing of the mining field needs
/// to be done before scoring. Fields that are derived are not in `fields`. @throws UnsupportedPMMLFormat
void requirePlainInput(const Node* miningField, const FieldTable& fields);

/// Feature positions by the names of fields, looked up without a copy of the name.
struct FieldHash {
    using is_transparent = void;
    std::size_t operator()(WStringView name) const { return std::hash<WStringView>()(name); }
};
using FeatureOfField = std::unordered_map<WString, std::int32_t, FieldHash, std::equal_to<>>;

/// Reads one model element.
struct ModelReader {
    const FieldTable& fields;
    const Node* element;
    /// The feature that a field of the body stands for, by the field's name.
    FeatureOfField featureOfField = {};
    /// The features of the ensemble around a segment, with their fields in `featureOfField`; null for a model
    /// of its own.
    const FittedSchema* ensemble = nullptr;
    /// Whether a member's probabilities are only those of its vote.
    bool areProbabilitiesVotes = false;

    /// @throws UnsupportedPMMLFormat
    std::int32_t featureOf(WStringView field) const;
    /// Null when absent.
    const Node* child(WStringView name) const { return Document::getSubnode(element, name); }
    /// @throws UnsupportedPMMLFormat
    const Node* requiredChild(WStringView name) const { return Document::getRequiredSubnode(element, name); }
    /// @throws UnsupportedPMMLFormat
    const Field& field(WStringView name) const;

    /// Reads a segment's model. @throws UnsupportedPMMLFormat and what checks of its parts throw.
    void readInto(IPortableModel& model);
};

inline WStringView nameOf(const Node* node) { return WStringView(node->name(), node->name_size()); }

/// All children that are elements, one after the other.
template <class Visit>
void forEachChild(const Node* node, Visit visit) {
    for (const Node* child = node->first_node(); child; child = child->next_sibling())
        if (child->type() == rapidxml::node_element) visit(child);
}
/// Those of a name.
template <class Visit>
void forEachChild(const Node* node, WStringView name, Visit visit) {
    forEachChild(node, [&](const Node* child) {
        if (isSameName(nameOf(child), name)) visit(child);
    });
}
/// All attributes by name and value.
template <class Visit>
void forEachAttribute(const Node* node, Visit visit) {
    for (const Attribute* attribute = node->first_attribute(); attribute;
         attribute = attribute->next_attribute())
        visit(WStringView(attribute->name(), attribute->name_size()),
              WStringView(attribute->value(), attribute->value_size()));
}

/// An `Extension` that tells what the standard has no place for.
Node* allocateExtension(Document& document, WStringView name, WStringView value);
/// The value of such an extension below `node`, if it is there.
std::optional<WStringView> findExtension(const Node* node, WStringView name);

/// The straight line through the two points of a `NormContinuous`; of those that this library writes, the
/// shift and scale themselves. @throws UnsupportedPMMLFormat for a map of another kind
Engine::Scaler::Rescaling readNormContinuous(const Node* norm);

}  // namespace PMML
}  // namespace Tessel
