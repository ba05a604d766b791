#include <algorithm>
#include <cmath>
#include <unordered_map>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "serialization/implied_memory.h"
#include "serialization/json/read.h"
#include "supervised/decision_tree/tree_texts.h"

namespace Tessel::DecisionTree {
namespace {

using Engine::DT::Tree;
using JSONModel::set;
using TreeNode = Engine::DT::Node;
using web::json::value;

std::size_t at(std::int32_t position) { return static_cast<std::size_t>(position); }

value predicateOf(const Tree& tree, const TreeNode& node, const FittedSchema& schema) {
    const FeatureSchema& feature = schema.features[at(node.feature)];
    const bool isCategorical = node.categorySet >= 0;
    value predicate = value::object(true);
    set(predicate, L"type", JSON::fromText(isCategorical ? L"categorical" : L"continuous"));
    set(predicate, L"field", JSON::fromText(feature.name));
    set(predicate, L"operator", JSON::fromText(isCategorical ? L"isIn" : L"lessThan"));
    if (!isCategorical) {
        set(predicate, L"splitValue", JSON::fromNumber(node.threshold));
        return predicate;
    }
    StringVector labels;
    for (const std::int32_t code : tree.categorySets[at(node.categorySet)])
        labels.push_back((*feature.categories)[code]);
    set(predicate, L"splitSet", JSONModel::fromStrings(labels));
    return predicate;
}

/// A node without its children.
value objectOf(const Tree& tree, std::int32_t position, const FittedSchema& schema,
               const StringVector& classes) {
    const TreeNode& node = tree.nodes[at(position)];
    value object = value::object(true);
    set(object, L"id", value::number(position + 1));
    set(object, L"score",
        classes.empty() ? JSON::fromNumber(node.response)
                        : JSON::fromText(classes[static_cast<std::size_t>(node.response)]));
    set(object, L"recordCount", value::number(static_cast<std::int64_t>(node.numRecords)));
    if (!node.isLeaf()) set(object, L"predicate", predicateOf(tree, node, schema));
    if (classes.empty()) return object;
    std::vector<value> distribution;
    for (std::size_t k = 0; k < classes.size(); ++k) {
        value share = value::object(true);
        set(share, L"category", JSON::fromText(classes[k]));
        set(share, L"recordCount", JSON::fromNumber(tree.classWeightsOf(position)[k]));
        distribution.push_back(std::move(share));
    }
    set(object, L"scoreDistribution", value::array(std::move(distribution)));
    return object;
}

/// One number of each node, in the order of their ids.
value column(const Tree& tree, double TreeNode::*member) {
    std::vector<double> numbers;
    for (const TreeNode& node : tree.nodes) numbers.push_back(node.*member);
    return JSONModel::fromNumbers(numbers);
}

/// Reads a tree level by level: `pending` are the objects of the nodes in their order.
class TreeReader {
 public:
    TreeReader(const FittedSchema& schema, const StringVector& classes, const JSON::Members& model)
        : schema_(schema), classes_(classes), model_(model) {
        tree_.numClasses = static_cast<int>(classes.size());
    }

    Tree read() {
        if (const value* const subtrees = model_.find("subtrees"))
            for (const value& subtree : JSON::toArray(*subtrees, "subtrees")) {
                const int id = JSON::toInteger(JSON::Members(subtree, "A node").at("id"), "id");
                if (!subtrees_.emplace(id, &subtree).second)
                    throw UnsupportedJSONModel("Two subtrees have one id.");
            }
        pending_.push_back(&model_.at("tree"));
        for (std::size_t i = 0; i < pending_.size(); ++i) readNode(JSON::Members(*pending_[i], "A node"));
        Engine::DT::deriveStatistics(tree_);
        if (const value* const statistics = model_.find("nodeStatistics")) {
            const JSON::Members columns(*statistics, "nodeStatistics");
            readColumn(columns, "impurity", &TreeNode::impurity);
            readColumn(columns, "error", &TreeNode::error);
            readColumn(columns, "gain", &TreeNode::gain);
            if (classes_.empty()) readColumn(columns, "weight", &TreeNode::weight);
            tree_.weightExponent = exponentOf(columns, "weightExponent");
            tree_.targetExponent = exponentOf(columns, "targetExponent");
        }
        return std::move(tree_);
    }

 private:
    void readNode(const JSON::Members& object) {
        TreeNode node;
        const double numRecords = JSON::toNumber(object.at("recordCount"), "recordCount");
        constexpr double kMaxCount = 9007199254740992.0;  // 2^53
        if (!(numRecords >= 0.0 && numRecords <= kMaxCount && numRecords == std::trunc(numRecords)))
            throw UnsupportedJSONModel("A recordCount is no count.");
        node.numRecords = static_cast<std::int64_t>(numRecords);
        if (classes_.empty()) {
            node.response = JSON::toNumber(object.at("score"), "score");
            if (!std::isfinite(node.response)) throw UnsupportedJSONModel("A score is not finite.");
        } else {
            readClasses(object);
        }
        const value* const left = object.find("leftChild");
        const value* const right = object.find("rightChild");
        if (!left != !right) throw UnsupportedJSONModel("A node has one child.");
        if (left) {
            readPredicate(JSON::Members(object.at("predicate"), "predicate"), node);
            node.left = static_cast<std::int32_t>(pending_.size());
            pending_.push_back(resolved(left));
            pending_.push_back(resolved(right));
        }
        tree_.nodes.push_back(node);
    }

    void readClasses(const JSON::Members& object) {
        const web::json::array& shares = JSON::toArray(object.at("scoreDistribution"), "scoreDistribution");
        implied_.add(classes_.size(), shares.size(), sizeof(double));
        const std::size_t first = tree_.classWeights.size();
        tree_.classWeights.resize(first + classes_.size(), 0.0);
        for (const value& element : shares) {
            const JSON::Members share(element, "A share");
            const WString label = JSON::toText(share.at("category"), "category");
            const std::size_t k = classes_.find(label);
            if (k == classes_.size())
                throw UnsupportedJSONModel(Convert::toUtf8Lossy(label) + " is no class of the target.");
            double& weight = tree_.classWeights[first + k];
            weight = JSON::toNumber(share.at("recordCount"), "recordCount");
            if (!(weight >= 0.0) || std::isinf(weight))
                throw UnsupportedJSONModel("A scoreDistribution is negative or not finite.");
        }
    }

    void readPredicate(const JSON::Members& predicate, TreeNode& node) {
        const WString field = JSON::toText(predicate.at("field"), "field");
        const auto feature =
            std::find_if(schema_.features.begin(), schema_.features.end(),
                         [&](const FeatureSchema& candidate) { return candidate.name == field; });
        const WString type = JSON::toText(predicate.at("type"), "type");
        const WString comparison = JSON::toText(predicate.at("operator"), "operator");
        const bool isCategorical = type == L"categorical";
        if (feature == schema_.features.end() || feature->isCategorical != isCategorical ||
            (!isCategorical && type != L"continuous") ||
            comparison != (isCategorical ? L"isIn" : L"lessThan"))
            throw UnsupportedJSONModel("A predicate of " + Convert::toUtf8Lossy(field) +
                                       " does not fit the model.");
        node.feature = static_cast<std::int32_t>(feature - schema_.features.begin());
        if (!isCategorical) {
            node.threshold = JSON::toNumber(predicate.at("splitValue"), "splitValue");
            return;
        }
        std::vector<std::int32_t> codes;
        for (const WString& label : JSON::toStringVector(predicate.at("splitSet"), "splitSet")) {
            codes.push_back(feature->categories->find(label));
            if (codes.back() < 0)
                throw UnsupportedJSONModel(Convert::toUtf8Lossy(label) + " is no category of " +
                                           Convert::toUtf8Lossy(field) + ".");
        }
        std::sort(codes.begin(), codes.end());
        node.categorySet = static_cast<std::int32_t>(tree_.categorySets.size());
        tree_.categorySets.push_back(std::move(codes));
    }

    /// A child, or the subtree that it stands for; each subtree serves once, so there is no endless tree.
    const value* resolved(const value* child) {
        const JSON::Members object(*child, "A node");
        if (object.find("recordCount")) return child;
        const auto found = subtrees_.find(JSON::toInteger(object.at("id"), "id"));
        if (found == subtrees_.end()) throw UnsupportedJSONModel("A node has neither content nor a subtree.");
        const value* const subtree = found->second;
        subtrees_.erase(found);
        return subtree;
    }

    /// Numbers may be told in units of a power of two.
    static int exponentOf(const JSON::Members& columns, const char* name) {
        constexpr int kMaxExponent = 1100;
        const value* const member = columns.find(name);
        const int exponent = member ? JSON::toInteger(*member, name) : 0;
        if (std::abs(exponent) > kMaxExponent) throw ValueOutOfRange(name, -kMaxExponent, kMaxExponent);
        return exponent;
    }

    void readColumn(const JSON::Members& columns, const char* name, double TreeNode::*member) {
        const Vector numbers = JSON::toVector(columns.at(name), name);
        if (numbers.size() != tree_.nodes.size())
            throw NumElementsMismatch(static_cast<std::int64_t>(tree_.nodes.size()),
                                      static_cast<std::int64_t>(numbers.size()));
        for (std::size_t i = 0; i < numbers.size(); ++i) tree_.nodes[i].*member = numbers[i];
    }

    const FittedSchema& schema_;
    const StringVector& classes_;
    const JSON::Members& model_;
    std::unordered_map<int, const value*> subtrees_;
    std::vector<const value*> pending_;
    ImpliedMemory implied_;
    Tree tree_;
};

}  // namespace

void writeTree(const Tree& tree, const FittedSchema& schema, const StringVector& classes, value& model) {
    std::vector<int> level(tree.nodes.size(), 0);
    for (std::size_t i = 1; i < tree.nodes.size(); ++i) level[i] = level[at(tree.nodes[i].parent)] + 1;
    // Children are complete before they move into their parents.
    std::vector<value> objects(tree.nodes.size()), subtrees;
    for (std::size_t i = tree.nodes.size(); i-- > 0;) {
        const TreeNode& node = tree.nodes[i];
        value object = objectOf(tree, static_cast<std::int32_t>(i), schema, classes);
        if (!node.isLeaf()) {
            set(object, L"leftChild", std::move(objects[at(node.left)]));
            set(object, L"rightChild", std::move(objects[at(node.right())]));
        }
        if (i > 0 && level[i] % kMaxNestedNodes == 0 && !node.isLeaf()) {
            subtrees.push_back(std::move(object));
            object = value::object(true);
            set(object, L"id", value::number(static_cast<int>(i) + 1));
        }
        objects[i] = std::move(object);
    }
    set(model, L"tree", std::move(objects.front()));
    if (!subtrees.empty()) set(model, L"subtrees", value::array(std::move(subtrees)));
    value statistics = value::object(true);
    set(statistics, L"weight", column(tree, &TreeNode::weight));
    set(statistics, L"impurity", column(tree, &TreeNode::impurity));
    set(statistics, L"error", column(tree, &TreeNode::error));
    set(statistics, L"gain", column(tree, &TreeNode::gain));
    if (tree.weightExponent != 0) set(statistics, L"weightExponent", value::number(tree.weightExponent));
    if (tree.targetExponent != 0) set(statistics, L"targetExponent", value::number(tree.targetExponent));
    set(model, L"nodeStatistics", std::move(statistics));
}

Tree readTree(const FittedSchema& schema, const StringVector& classes, const JSON::Members& model) {
    return TreeReader(schema, classes, model).read();
}

}  // namespace Tessel::DecisionTree
