#pragma once

#include <vector>

#include <tessel/decision_tree.h>

#include "engine/dt/model.h"
#include "framework/portable.h"
#include "framework/supervised.h"
#include "supervised/decision_tree/parameters.h"

namespace Tessel::DecisionTree {

/// The columns of a table as the engine takes them, to grow on or to score.
/// @param preparation  what `SortedTable` holds for many trees of one table, or null.
/// @throws ConstraintViolation for infinite numbers to grow on.
Engine::DT::TrainingData trainingData(const TrainingFeatures& features, const Vector& weights,
                                      std::span<const std::int32_t> multiplicities,
                                      const Supervised::Preparation* preparation);
std::vector<Engine::DT::Cells> cellsOf(const std::vector<FeatureColumn>& columns);

/// Resamples of longer tables are sorted anew for each tree.
inline constexpr int kMaxNumRowsOfResamples = 1 << 18;

/// The sorted rows of each feature, which the fits of many trees take their lists from; not for resamples of
/// long tables, which trees sort in about the same time and less memory: null there, unless there is a crew.
/// @param crew  for the trees, which must not outlive it; or null.
std::unique_ptr<Supervised::Preparation> sortTable(const TrainingFeatures& features, bool useAllRows,
                                                   Engine::Crew* crew);

/// What the fitted trees of both kinds share: choosing the tree that counts, and telling of it.
class ITreeModel {
 public:
    virtual ~ITreeModel() = default;

    virtual void prune(const DataFrame& features, const DataFrameColumn& target) = 0;
    void select(TreeType type);
    void select(int numDecisionNodes);

    StringVector treeRules(int numLevels) const;
    WString treeToString(int numLevels) const;
    WString treeToString() const { return treeToString(maxNumLevelsTreeDiagram_); }

    DataFrame featureImportance() const;
    DataFrame trainingLog() const;
    virtual DataFrame pruningLog() const = 0;
    DataFrame allNodesInfo() const;

    const StringVector& categoricalFeaturesNames() const { return categoricalFeaturesNames_; }
    const IntVector& categoricalFeaturesOffsets() const { return categoricalFeaturesOffsets_; }
    DataFrame categoricalFeaturesInfo() const;

 protected:
    /// To be read from a text, which tells nothing of the estimator.
    ITreeModel() = default;
    explicit ITreeModel(const IParameters& parameters);

    static void writeTreeAttributes(PMML::ModelWriter& writer);
    /// Takes a tree that was read, with the categorical features of its schema.
    void restoreTree(Engine::DT::Tree tree);

    virtual Engine::DT::Model& engine() = 0;
    virtual const Engine::DT::Model& engine() const = 0;
    virtual const FittedSchema& fittedSchema() const = 0;
    /// The labels of the classes; none in regression.
    virtual const StringVector& classLabels() const {
        static const StringVector none;
        return none;
    }
    /// What a record that ends in this node is predicted to be.
    virtual WString responseText(std::int32_t node) const = 0;

    /// Whether validation data have judged the pruned trees.
    bool isPruned() const { return !engine().numValidationRecords().empty(); }
    /// Rows of the model summary.
    void describeTree(StringVector& labels, StringVector& values) const;
    /// The tables that both kinds have, in their order.
    void reportTree(DataFrameVector& tables) const;

 private:
    /// The threshold, or the categories that go left.
    WString splitText(const Engine::DT::Node& split) const;
    WString categoriesText(std::int32_t feature, const std::vector<std::int32_t>& codes) const;
    /// What one side of several splits by one feature, the last below the others, says of a record.
    WString conditionText(const std::vector<std::int32_t>& splits, bool isLeft) const;

    StringVector categoricalFeaturesNames_;
    IntVector categoricalFeaturesOffsets_;
    int prunedTreeNumDecisionNodes_ = kNoLimit;
    int maxNumLevelsTreeDiagram_ = 2;
};

}  // namespace Tessel::DecisionTree
