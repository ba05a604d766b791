#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "serialization/implied_memory.h"
#include "serialization/pmml/values.h"
#include "supervised/decision_tree/tree_texts.h"

namespace Tessel::DecisionTree {
namespace {

using PMML::Document;
using PMML::isSameName;
using PMML::ModelReader;
using PMML::ModelWriter;
using TreeNode = Engine::DT::Node;
using XmlNode = PMML::Node;
using Engine::DT::Tree;

std::size_t at(std::int32_t position) { return static_cast<std::size_t>(position); }

StringVector categoriesOf(const Tree& tree, const TreeNode& split, const FittedSchema& schema) {
    StringVector labels;
    for (const std::int32_t code : tree.categorySets[at(split.categorySet)])
        labels.push_back((*schema.features[at(split.feature)].categories)[code]);
    return labels;
}

/// What a record needs to get to a node.
XmlNode* predicateNode(const Tree& tree, std::int32_t position, const FittedSchema& schema,
                       const ModelWriter& writer) {
    Document& document = writer.document;
    const TreeNode& node = tree.nodes[at(position)];
    if (node.parent < 0) return document.allocateNode(L"True");
    const TreeNode& split = tree.nodes[at(node.parent)];
    const bool isLeft = split.left == position;
    const WString& field = writer.fields[at(split.feature)];
    if (split.categorySet < 0) {
        XmlNode* const predicate = document.allocateNode(L"SimplePredicate");
        document.appendAttribute(predicate, L"field", field);
        document.appendAttribute(predicate, L"operator", isLeft ? L"lessThan" : L"greaterOrEqual");
        document.appendAttribute(predicate, L"value", split.threshold);
        return predicate;
    }
    XmlNode* const predicate = document.allocateNode(L"SimpleSetPredicate");
    document.appendAttribute(predicate, L"field", field);
    document.appendAttribute(predicate, L"booleanOperator", isLeft ? L"isIn" : L"isNotIn");
    const StringVector categories = categoriesOf(tree, split, schema);
    Document::checkCategories(categories);
    predicate->append_node(document.allocateArray(categories));
    return predicate;
}

// ---- reading

/// One side of a split, as a predicate tells it.
struct Side {
    enum class Form { LESS, NOT_LESS, IN, NOT_IN, TRUE } form = Form::TRUE;
    std::int32_t feature = -1;
    double threshold = 0.0;
    std::vector<std::int32_t> codes;  ///< ascending

    /// Whether missing cells, numbers below a threshold and categories of a set belong on the left.
    bool isLeft() const { return form == Form::LESS || form == Form::IN; }
    bool isComplementOf(const Side& left) const {
        if (form == Form::TRUE) return true;
        return form == (left.form == Form::LESS ? Form::NOT_LESS : Form::NOT_IN) && feature == left.feature &&
               threshold == left.threshold && codes == left.codes;
    }
};

std::vector<std::int32_t> codesOf(const StringVector& labels, const FeatureSchema& feature) {
    std::vector<std::int32_t> codes;
    for (const WString& label : labels) {
        codes.push_back(feature.categories->find(label));
        if (codes.back() < 0)
            throw UnsupportedPMMLFormat("'" + Convert::toUtf8Lossy(label) +
                                        "' is not declared as a category of " +
                                        Convert::toUtf8Lossy(feature.name) + ".");
    }
    std::sort(codes.begin(), codes.end());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
    return codes;
}

Side readSimplePredicate(const XmlNode* predicate, const FittedSchema& schema, const ModelReader& reader) {
    WStringView field, comparison, value;
    PMML::forEachAttribute(predicate, [&](WStringView name, WStringView text) {
        if (isSameName(name, L"field")) field = text;
        if (isSameName(name, L"operator")) comparison = text;
        if (isSameName(name, L"value")) value = text;
    });
    Side side;
    side.feature = reader.featureOf(field);
    const FeatureSchema& feature = schema.features[at(side.feature)];
    if (feature.isCategorical && (isSameName(comparison, L"equal") || isSameName(comparison, L"notEqual"))) {
        side.form = isSameName(comparison, L"equal") ? Side::Form::IN : Side::Form::NOT_IN;
        side.codes = codesOf(StringVector{WString(value)}, feature);
        return side;
    }
    const bool isLess = isSameName(comparison, L"lessThan") || isSameName(comparison, L"lessOrEqual");
    const bool isGreater =
        isSameName(comparison, L"greaterOrEqual") || isSameName(comparison, L"greaterThan");
    if (feature.isCategorical || !(isLess || isGreater))
        throw UnsupportedPMMLFormat("The operator " + Convert::toUtf8Lossy(comparison) +
                                    " cannot be read for " + Convert::toUtf8Lossy(feature.name) + ".");
    side.form = isLess ? Side::Form::LESS : Side::Form::NOT_LESS;
    side.threshold = PMML::toDouble(value);
    if (std::isnan(side.threshold)) throw UnsupportedPMMLFormat("A threshold is no number.");
    if (isSameName(comparison, L"lessOrEqual") ||
        isSameName(comparison, L"greaterThan"))  // up to x is below the next number
        side.threshold = std::nextafter(side.threshold, std::numeric_limits<double>::infinity());
    return side;
}

Side readSetPredicate(const XmlNode* predicate, const FittedSchema& schema, const ModelReader& reader) {
    Side side;
    side.feature = reader.featureOf(Document::requiredAttribute(predicate, L"field"));
    const FeatureSchema& feature = schema.features[at(side.feature)];
    const WStringView comparison = Document::requiredAttribute(predicate, L"booleanOperator");
    if (!feature.isCategorical || (!isSameName(comparison, L"isIn") && !isSameName(comparison, L"isNotIn")))
        throw UnsupportedPMMLFormat("A SimpleSetPredicate does not fit its field " +
                                    Convert::toUtf8Lossy(feature.name) + ".");
    side.form = isSameName(comparison, L"isIn") ? Side::Form::IN : Side::Form::NOT_IN;
    side.codes =
        codesOf(Document::getStringArray(Document::getRequiredSubnode(predicate, L"Array")), feature);
    if (side.codes.empty()) throw UnsupportedPMMLFormat("A SimpleSetPredicate has no categories.");
    return side;
}

Side readSide(const XmlNode* node, const FittedSchema& schema, const ModelReader& reader) {
    for (const XmlNode* child = node->first_node(); child; child = child->next_sibling()) {
        const WStringView name = PMML::nameOf(child);
        if (isSameName(name, L"SimplePredicate")) return readSimplePredicate(child, schema, reader);
        if (isSameName(name, L"SimpleSetPredicate")) return readSetPredicate(child, schema, reader);
        if (isSameName(name, L"True")) return {};
        if (isSameName(name, L"CompoundPredicate") || isSameName(name, L"False"))
            throw UnsupportedPMMLFormat("A node's predicate is a " + Convert::toUtf8Lossy(name) +
                                        ", which cannot be read.");
    }
    throw UnsupportedPMMLFormat("A node has no predicate.");
}

/// Reads a tree in the order of the document, which is that of its memory: each element is looked at once,
/// and what is behind its subtree not before. Then orders the nodes by level.
class NodesReader {
 public:
    NodesReader(const FittedSchema& schema, const StringVector& classes, const ModelReader& reader)
        : schema_(schema), classes_(classes), reader_(reader) {
        tree_.numClasses = static_cast<int>(classes.size());
    }

    ReadTree read() {
        const XmlNode* const root = reader_.requiredChild(L"Node");
        if (readSide(root, schema_, reader_).form != Side::Form::TRUE)
            throw UnsupportedPMMLFormat("The root has a condition.");
        addNodes(1);
        readNode(root, attributesOf(root), 0);
        while (!parents_.empty()) {
            if (const XmlNode* const child = takeChild(parents_.back()))
                readChild(child);
            else
                parents_.pop_back();
        }
        ReadTree read{Engine::DT::inLevelOrder(tree_), {}};
        if (!classes_.empty())
            for (const TreeNode& node : read.tree.nodes)
                read.labels.push_back(static_cast<std::int32_t>(node.response));
        Engine::DT::deriveStatistics(read.tree);
        return read;
    }

 private:
    /// The attributes of a `Node`, looked through once.
    struct Attributes {
        std::optional<WStringView> id, score, recordCount, defaultChild;
    };
    /// A node whose children are being read.
    struct Parent {
        const XmlNode* next;  ///< of its child elements
        std::int32_t position;
        std::optional<WStringView> defaultChild;
        int numChildren = 0;
        Side first = {};
    };

    static Attributes attributesOf(const XmlNode* element) {
        Attributes found;
        PMML::forEachAttribute(element, [&](WStringView name, WStringView value) {
            if (isSameName(name, L"id")) found.id = value;
            if (isSameName(name, L"score")) found.score = value;
            if (isSameName(name, L"recordCount")) found.recordCount = value;
            if (isSameName(name, L"defaultChild")) found.defaultChild = value;
        });
        return found;
    }

    void addNodes(std::size_t count) {
        tree_.nodes.resize(tree_.nodes.size() + count);
        tree_.classWeights.resize(tree_.nodes.size() * classes_.size(), 0.0);
    }

    /// The next child that is a `Node`; null behind the last.
    static const XmlNode* takeChild(Parent& parent) {
        while (const XmlNode* const child = parent.next) {
            parent.next = child->next_sibling();
            const WStringView name = PMML::nameOf(child);
            if (isSameName(name, L"Node")) return child;
            if (isSameName(name, L"ScoreDistribution"))
                throw UnsupportedPMMLFormat("A ScoreDistribution stands behind the children of its node.");
        }
        if (parent.numChildren != 2) throw UnsupportedPMMLFormat("A node has not two children.");
        return nullptr;
    }

    /// A child of the last of the parents.
    void readChild(const XmlNode* element) {
        const Attributes attributes = attributesOf(element);
        Side side = readSide(element, schema_, reader_);
        Parent& parent = parents_.back();
        TreeNode& split = tree_.nodes[at(parent.position)];
        const bool isFirst = ++parent.numChildren == 1;
        const bool isLeft = isFirst ? side.isLeft() : !parent.first.isLeft();
        if (!isFirst) requireSplit(parent, side);
        if (isLeft) {
            if (!attributes.id || attributes.id != parent.defaultChild)
                throw UnsupportedPMMLFormat(
                    "A node sends missing values to the side of large numbers or unlisted categories, or "
                    "does not tell where.");
            split.feature = side.feature;
            split.threshold = side.threshold;
            if (side.form == Side::Form::IN) {
                split.categorySet = static_cast<std::int32_t>(tree_.categorySets.size());
                tree_.categorySets.push_back(side.codes);
            }
        }
        const std::int32_t position = isLeft ? split.left : split.right();
        if (isFirst) parent.first = std::move(side);
        readNode(element, attributes, position);
    }

    /// Passes when the second child of a parent is the other side of the first.
    static void requireSplit(const Parent& parent, const Side& second) {
        if (parent.numChildren > 2) throw UnsupportedPMMLFormat("A node has not two children.");
        const bool isSplit = parent.first.isLeft()
                                 ? second.isComplementOf(parent.first)
                                 : second.isLeft() && parent.first.form != Side::Form::TRUE &&
                                       parent.first.isComplementOf(second);
        if (!isSplit)
            throw UnsupportedPMMLFormat("The children of a node are not the two sides of one comparison.");
    }

    /// What an element says of its node; its children are left to be read.
    void readNode(const XmlNode* element, const Attributes& attributes, std::int32_t position) {
        const double numRecords = attributes.recordCount ? PMML::toDouble(*attributes.recordCount) : 0.0;
        constexpr double kMaxCount = 9007199254740992.0;  // 2^53
        if (!(numRecords >= 0.0 && numRecords <= kMaxCount))
            throw UnsupportedPMMLFormat("A recordCount is no count.");
        TreeNode& node = tree_.nodes[at(position)];
        node.numRecords = static_cast<std::int64_t>(numRecords);
        if (classes_.empty()) {
            if (!attributes.score) throw UnsupportedPMMLFormat("A Node has no score.");
            node.response = PMML::toDouble(*attributes.score);
            if (!std::isfinite(node.response)) throw UnsupportedPMMLFormat("A score is not finite.");
        }
        const XmlNode* child = element->first_node();
        for (distributions_.clear(); child; child = child->next_sibling()) {
            const WStringView name = PMML::nameOf(child);
            if (isSameName(name, L"Node")) break;
            if (isSameName(name, L"ScoreDistribution")) distributions_.push_back(child);
        }
        if (!classes_.empty()) {
            // The label stays here until the nodes are in their order.
            node.response = attributes.score ? classOf(*attributes.score) : -1;
            readClasses(node.response, numRecords, !child,
                        tree_.classWeights.data() + at(position) * classes_.size());
        }
        if (!child) return;
        node.left = static_cast<std::int32_t>(tree_.nodes.size());
        addNodes(2);
        parents_.push_back({child, position, attributes.defaultChild});
    }

    std::int32_t classOf(WStringView label) const {
        for (std::size_t k = 0; k < classes_.size(); ++k)
            if (isSameName(classes_[k], label)) return static_cast<std::int32_t>(k);
        throw UnsupportedPMMLFormat(Convert::toUtf8Lossy(WString(label)) + " is no class of the target.");
    }

    void readClasses(double ownLabel, double numRecords, bool isLeaf, double* weights) {
        implied_.add(classes_.size(), distributions_.size(), sizeof(double));
        std::size_t expected = 0, numProbabilities = 0;
        for (const XmlNode* distribution : distributions_) {
            std::optional<WStringView> label, count, probability;
            PMML::forEachAttribute(distribution, [&](WStringView name, WStringView value) {
                if (isSameName(name, L"value")) label = value;
                if (isSameName(name, L"recordCount")) count = value;
                if (isSameName(name, L"probability") && !reader_.areProbabilitiesVotes) probability = value;
            });
            if (!label || !(count || probability))
                throw UnsupportedPMMLFormat("A ScoreDistribution lacks its value or its recordCount.");
            // Classes mostly come in their order.
            const bool isNext = expected < classes_.size() && isSameName(classes_[expected], *label);
            const std::size_t k = isNext ? expected : at(classOf(*label));
            expected = k + 1;
            numProbabilities += probability.has_value();
            weights[k] = PMML::toDouble(probability ? *probability : *count);
            if (!(weights[k] >= 0.0) || std::isinf(weights[k]))
                throw UnsupportedPMMLFormat("A ScoreDistribution is negative or not finite.");
        }
        if (numProbabilities != 0 && numProbabilities != classes_.size())
            throw UnsupportedPMMLFormat("Some classes of a node have a probability and some have none.");
        if (numProbabilities != 0)
            for (std::size_t k = 0; k < classes_.size(); ++k) weights[k] *= std::max(1.0, numRecords);
        if (distributions_.empty() && ownLabel >= 0.0)
            weights[static_cast<std::size_t>(ownLabel)] = std::max(1.0, numRecords);
        if (reader_.areProbabilitiesVotes && isLeaf) requireVote(ownLabel, weights);
    }

    /// Passes when the probabilities of the leaf at hand are 1 for its class and 0 for the others, whether it
    /// tells them or they are the shares of the counts.
    void requireVote(double ownLabel, const double* weights) const {
        const std::size_t choice =
            ownLabel >= 0.0
                ? static_cast<std::size_t>(ownLabel)
                : static_cast<std::size_t>(std::max_element(weights, weights + classes_.size()) - weights);
        for (const XmlNode* distribution : distributions_) {
            const std::size_t k = at(classOf(Document::requiredAttribute(distribution, L"value")));
            const auto probability = Document::optionalAttribute(distribution, L"probability");
            const bool isVote = probability ? PMML::toDouble(*probability) == (k == choice ? 1.0 : 0.0)
                                            : (k == choice || weights[k] == 0.0);
            if (!isVote)
                throw UnsupportedPMMLFormat(
                    "The probabilities of a member are averaged, but are not 0 and 1.");
        }
    }

    const FittedSchema& schema_;
    const StringVector& classes_;
    const ModelReader& reader_;
    std::vector<Parent> parents_;                // of the node at hand, the root first
    std::vector<const XmlNode*> distributions_;  // of the node at hand
    ImpliedMemory implied_;
    Tree tree_;
};

}  // namespace

void writeNodes(const Tree& tree, const FittedSchema& schema, const StringVector& classes,
                const ModelWriter& writer) {
    Document& document = writer.document;
    std::vector<XmlNode*> elements;
    elements.reserve(tree.nodes.size());
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        const TreeNode& node = tree.nodes[i];
        XmlNode* const element = document.allocateNode(L"Node");
        document.appendAttribute(element, L"id", i + 1);
        if (classes.empty())
            document.appendAttribute(element, L"score", node.response);
        else
            document.appendAttribute(element, L"score", classes[static_cast<std::size_t>(node.response)]);
        document.appendAttribute(element, L"recordCount", Convert::toString(node.numRecords));
        if (!node.isLeaf()) document.appendAttribute(element, L"defaultChild", node.left + 1);
        element->append_node(predicateNode(tree, static_cast<std::int32_t>(i), schema, writer));
        for (std::size_t k = 0; k < classes.size(); ++k) {
            XmlNode* const distribution = document.allocateNode(L"ScoreDistribution");
            document.appendAttribute(distribution, L"value", classes[k]);
            document.appendAttribute(distribution, L"recordCount",
                                     tree.classWeightsOf(static_cast<std::int32_t>(i))[k]);
            if (writer.areProbabilitiesVotes)
                document.appendAttribute(distribution, L"probability",
                                         static_cast<double>(k) == node.response ? 1.0 : 0.0);
            element->append_node(distribution);
        }
        (node.parent < 0 ? writer.element : elements[at(node.parent)])->append_node(element);
        elements.push_back(element);
    }
}

ReadTree readNodes(const FittedSchema& schema, const StringVector& classes, const ModelReader& reader) {
    const auto strategy = Document::optionalAttribute(reader.element, L"missingValueStrategy");
    const bool isSplit = reader.requiredChild(L"Node")->first_node(L"Node") != nullptr;
    if (isSplit && (!strategy || *strategy != L"defaultChild"))
        throw UnsupportedPMMLFormat("Of the strategies for missing values only defaultChild is read.");
    const auto penalty = Document::optionalAttribute(reader.element, L"missingValuePenalty");
    if (penalty && PMML::toDouble(*penalty) != 1.0)
        throw UnsupportedPMMLFormat("A penalty for missing values is not read.");
    return NodesReader(schema, classes, reader).read();
}

}  // namespace Tessel::DecisionTree
