#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>

#include <tessel/data/matrix.h>
#include <tessel/data/types.h>
#include <tessel/data/vectors.h>
#include <tessel/framework/pmml.h>

#include "serialization/pmml/wide_xml.h"

namespace Tessel::PMML {

/// The categories of each feature by its name; an empty list for a continuous feature.
using Categories = std::unordered_map<WString, StringVector>;

/// Prior probabilities by class label, in the order of the labels.
using Priors = std::map<WString, double>;

/// A PMML 4.2 text as a tree of XML elements: builders make elements in the document's memory, readers find
/// the parts of a parsed text that all models share.
///
/// Elements, names and values live until the document is destroyed or parses another text; they are never
/// freed one by one. What a reader or builder hands out is a plain RapidXml node: walk it with `first_node`
/// and `next_sibling`, attach it with `append_node`. Builders copy the texts that they get.
///
/// Neither parsing nor copying nor printing needs stack in proportion to the nesting.
///
/// A required attribute that is missing, and a feature that the map of categories lacks, is the standard
/// library's std::out_of_range "invalid unordered_map<K, T> key". A missing element that a reader needs is
/// UnsupportedPMMLFormat.
///
/// One thread at a time uses a document; documents share nothing.
class Document {
 public:
    /// One point of a `NormContinuous`.
    struct Point {
        double orig = 0.0;
        double norm = 0.0;
    };

    /// The columns of a parsed model.
    struct Metadata {
        WString targetColName;          ///< empty when no field is predicted
        StringVector featureNames;      ///< fields of the data dictionary other than the target, in its order
        Categories categories;          ///< of every field of the data dictionary, the target included
        StringVector activeFieldNames;  ///< mining fields that are not predicted, in their order
    };

    Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    Document(Document&&) noexcept;
    Document& operator=(Document&&) noexcept;
    ~Document();

    // --- Building ------------------------------------------------------------------------------------------
    // Unless told otherwise the new element is not attached yet.

    /// Adds the XML declaration to the document.
    void appendDeclaration();
    /// `PMML` with its namespaces and the complete `Header`.
    /// @param description  element name of the model, by which readers find it
    Node* allocatePMMLNode(WStringView description, WStringView modelName);
    /// Attaches a node to the document itself: the root.
    void appendNode(Node* node);

    Node* allocateNode(WStringView name);
    Node* allocateNode(WStringView name, WStringView value);
    /// The text is the count in decimal; only its low 32 bits are taken, as a signed number.
    template <std::integral Count>
    Node* allocateNode(WStringView name, Count count) {
        return allocateCount(name, lowBits(count));
    }

    void appendAttribute(Node* node, WStringView name, WStringView value);
    /// The value in decimal; only its low 32 bits are taken, as a signed number.
    template <std::integral Count>
    void appendAttribute(Node* node, WStringView name, Count count) {
        appendCount(node, name, lowBits(count));
    }
    /// 17 significant digits, with an exponent where it is shorter: see `numberText`.
    void appendAttribute(Node* node, WStringView name, double value);
    /// For attributes that the schema types as decimal, such as probabilities, supports and confidences:
    /// never an exponent, however long the text becomes. See `decimalText`.
    void appendDecimalAttribute(Node* node, WStringView name, double value);

    /// `DataDictionary` without fields.
    Node* allocateDataDictionaryNode(std::size_t numFields);
    /// `DataDictionary` of the features; without categories all fields are continuous.
    /// @throws NumElementsMismatch when there are not as many lists of categories as names.
    Node* allocateDataDictionaryNode(const StringVector& featureNames,
                                     const Categories* categories = nullptr);
    /// The same with the target as last field; the categories then include the target's.
    Node* allocateDataDictionaryNode(const WString& targetName, const StringVector& featureNames,
                                     const Categories* categories = nullptr);
    /// A categorical `DataField` with its `Value`s.
    Node* allocateDataFieldNode(WStringView name, const StringVector& values);
    /// A continuous `DataField`.
    Node* allocateDataFieldNode(WStringView name);

    Node* allocateMiningSchemaNode(WStringView targetName, const StringVector& featureNames);
    Node* allocateMiningFieldNode(WStringView name);
    Node* allocateMiningFieldNode(WStringView name, WStringView usageType);
    Node* allocateFieldRefNode(WStringView name);
    Node* allocateTargetsNode(WStringView targetName, const Priors& priors,
                              const std::optional<WString>& successClass = std::nullopt);

    /// `Array` of type "int", "real" or "string".
    Node* allocateArray(const IntVector& values);
    Node* allocateArray(const Vector& values);
    /// Each text in double quotes, without any escape: `checkCategories` tells beforehand what would not be
    /// read back, and whoever writes categories of a model calls it.
    Node* allocateArray(const StringVector& values);
    /// Passes when every text survives a string array. @throws ConstraintViolation for a text that holds a
    /// double quote or nothing but white space.
    static void checkCategories(const StringVector& texts);

    /// `order`, `numRows` and `numCols` of a matrix; its values go into an array in the matrix's own order.
    void appendMatrixAttributes(Node* node, const Matrix& matrix);

    /// Numbers in the shortest form that reads back to the same bits.
    Node* allocateLinearNorm(double orig, double norm);
    /// The map x -> (x - shift) * scale as the points (shift, 0) and (shift + 1, scale).
    /// @throws ConstraintViolation when `shift` is not finite or so large that adding 1 does not change it.
    Node* allocateNormContinuous(WStringView field, double shift, double scale);
    /// `LocalTransformations`: an indicator field per category of a categorical feature, a scaled field per
    /// continuous feature that is scaled; other features stay as they are.
    /// @param categories   null when all features are continuous
    /// @param scaling      null when no feature is scaled
    /// @param outputNames  becomes the names that the model's own references use, in the order of the
    /// features
    /// @throws DuplicateName when two of these names are the same.
    Node* allocateTransformationNode(const StringVector& featureNames, const Categories* categories,
                                     const ColumnScaling* scaling, StringVector& outputNames);

    /// A deep copy of a node of any document, of its attributes and of all below, in this document's memory.
    Node* clone(const Node* node);
    /// The same into an existing node of this document, whose name, value, attributes and children are
    /// replaced and which keeps its place. @pre `into` does not stand below `node`, nor `node` below `into`.
    Node* clone(const Node* node, Node* into);

    /// The whole document as text, one element a line, indented by a tab per level up to
    /// `kMaxIndentation` levels. Characters that would not survive other XML readers are written as
    /// character references.
    /// @throws ConstraintViolation for characters that XML cannot carry, and for names that are no XML names.
    WString toString() const;
    static constexpr int kMaxIndentation = 100;

    // --- Reading -------------------------------------------------------------------------------------------

    /// Replaces the content by the parsed text, which is taken over without a copy when it is moved in.
    /// Every newline + "<!--Continued-->" is removed first; the characters U+00EF U+00BB U+00BF at the start
    /// are skipped.
    /// @throws rapidxml::parse_error for malformed XML and for elements nested deeper than `kMaxDepth`; the
    /// document then stays as it was, and the position in the error is null.
    void parse(WString text);

    /// The element `PMML`, or null.
    Node* getRoot() const;
    /// The first child element of `PMML` of this name, or null.
    Node* getSubnode(WStringView name) const;
    /// The first child of `node` of this name, or null; also for a null node.
    static Node* getSubnode(const Node* node, WStringView name);
    /// The same, never null. @throws UnsupportedPMMLFormat
    static Node* getRequiredSubnode(const Node* node, WStringView name);
    /// The child of `PMML` that the header's `description` names, or null.
    /// @throws UnsupportedPMMLFormat without header.
    Node* getModelNode() const;
    /// Null if absent.
    Node* getDataDictionaryNode() const;
    Node* getMiningSchemaNode() const;

    /// The header's `description`: the element name of the model.
    WString getModelName() const;
    /// The model's name as its maker gave it, or an empty text.
    WString getPMMLModelName() const;
    /// Attributes of the model element; an empty text if absent.
    WString getFunctionName() const;
    WString getAlgorithmName() const;
    bool isClassifier() const;
    bool isRegressor() const;
    bool isClusterizer() const;
    bool isForecaster() const;
    bool isTransformer() const;
    bool isPredictor() const;
    static bool isNumericalField(WStringView dataType);

    /// The predicted mining field, or an empty text; its data type.
    WString getTargetColName() const;
    WString getTargetColType() const;
    /// The fields of the data dictionary other than the target, in document order.
    StringVector getFeatureNames() const;
    StringVector getFeatureTypes() const;
    StringVector getFeatureOpTypes() const;
    /// All fields of the data dictionary.
    StringVector getUnsupervisedFeatureNames() const;
    StringVector getUnsupervisedFeatureTypes() const;
    StringVector getUnsupervisedFeatureOpTypes() const;
    /// The mining fields that are not predicted, in the order of the mining schema.
    StringVector getActiveFeatureNames() const;
    StringVector getActiveFeatureTypes() const;
    Metadata getMetadata() const;
    static Metadata getMetadata(const Node* dataDictionary, const Node* miningSchema);

    /// All attributes of a node. Costs a map: for one or two attributes ask for them by name.
    static std::unordered_map<WString, WString> getAllAttributes(const Node* node);
    /// The value of an attribute, which lives as long as the document. @throws std::out_of_range
    static WStringView requiredAttribute(const Node* node, WStringView name);
    /// The same as a number. @throws std::out_of_range, ConversionFailure
    static double requiredDouble(const Node* node, WStringView name);
    static int requiredInt(const Node* node, WStringView name);
    /// Nothing when the node has no such attribute.
    static std::optional<WStringView> optionalAttribute(const Node* node, WStringView name);
    /// The character data directly below an element, its CDATA sections included.
    static WString getText(const Node* node);

    /// The contents of an `Array`. @throws ConversionFailure for what is no number, NumElementsMismatch when
    /// the array has an attribute `n` that is not the number of items.
    static Vector getDoubleArray(const Node* node);
    static IntVector getIntArray(const Node* node);
    /// The texts between double quotes; those that are blank are dropped.
    static StringVector getStringArray(const Node* node);
    /// A matrix of the shape that the node's attributes tell.
    /// @throws std::out_of_range, ConversionFailure, ValueOutOfRange; NumElementsMismatch when there are not
    /// numRows * numCols values.
    static Matrix getMatrix(const Node* node, const Vector& values);
    static Point getLinearNormPoint(const Node* node);
    static Priors getPriorProbs(const Node* target);

 private:
    struct Content;

    template <std::integral Count>
    static std::int32_t lowBits(Count count) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(count));
    }
    Node* allocateCount(WStringView name, std::int32_t count);
    void appendCount(Node* node, WStringView name, std::int32_t count);
    /// The text in the document's memory, ended by a zero.
    const wchar_t* copied(WStringView text);
    void copyNode(const Node& from, Node& to);
    Node* allocateDataFieldNode(WStringView name, WStringView optype, WStringView dataType);
    Node* allocateDerivedFieldNode(WStringView name);
    Node* allocateArray(WStringView text, std::size_t size, WStringView type);
    WString getModelAttribute(WStringView name) const;
    /// An attribute of each field of the data dictionary but the one named `except`.
    StringVector getFieldAttributes(WStringView attribute, const WString* except) const;
    static void getMinigFields(const Node* miningSchema, StringVector* names, WString* target);

    std::unique_ptr<Content> content_;
};

}  // namespace Tessel::PMML
