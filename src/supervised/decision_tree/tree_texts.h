#pragma once

#include "data/json_value.h"
#include "engine/dt/tree.h"
#include "framework/schema.h"
#include "serialization/pmml/model_element.h"

// One tree as PMML nodes and as JSON. Texts hold the selected tree; node i of its level order has the id
// i + 1. What a reader returns has the nodes in level order again, with the statistics that the text tells or
// implies.

namespace Tessel::DecisionTree {

/// Appends the root `Node` to the model element.
/// @param classes  none in regression
/// @throws ConstraintViolation for a category that a string array cannot hold.
void writeNodes(const Engine::DT::Tree& tree, const FittedSchema& schema, const StringVector& classes,
                const PMML::ModelWriter& writer);

/// A tree that was read, and the labels of its nodes as the text tells them; none in regression.
struct ReadTree {
    Engine::DT::Tree tree;
    std::vector<std::int32_t> labels;  ///< -1 for a node without
};
/// Reads trees that send missing cells and numbers below a threshold, or categories of a set, to one child
/// and the rest to the other.
/// @throws UnsupportedPMMLFormat for others, with the reason.
ReadTree readNodes(const FittedSchema& schema, const StringVector& classes, const PMML::ModelReader& reader);

/// Sets the members "tree", and "subtrees" and "nodeStatistics" where they are needed.
///
/// A node is an object of "id", "score", "recordCount", "predicate", "scoreDistribution", "leftChild" and
/// "rightChild". A decision node's predicate tells what goes left: "type" ("continuous" or "categorical"),
/// "field", "operator" ("lessThan" or "isIn") and "splitValue" or "splitSet"; missing cells go left too. JSON
/// readers limit the nesting, so below every `kMaxNestedNodes` levels a child is an object of its "id" alone,
/// and stands as a whole in the array "subtrees".
void writeTree(const Engine::DT::Tree& tree, const FittedSchema& schema, const StringVector& classes,
               web::json::value& model);
inline constexpr int kMaxNestedNodes = 32;
Engine::DT::Tree readTree(const FittedSchema& schema, const StringVector& classes,
                          const JSON::Members& model);

}  // namespace Tessel::DecisionTree
