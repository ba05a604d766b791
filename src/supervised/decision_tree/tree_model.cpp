#include "supervised/decision_tree/tree_model.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>

#include "data/number_text.h"
#include "engine/crew.h"
#include "engine/dt/growth_memory.h"

namespace Tessel::DecisionTree {

using Engine::DT::Node;
using Engine::DT::Tree;

namespace {

const Node& nodeAt(const Tree& tree, std::int32_t position) {
    return tree.nodes[static_cast<std::size_t>(position)];
}

/// A threshold for people; midpoints can have many more digits than the numbers that they part. The first
/// decimal is always there, so that thresholds between neighbouring whole numbers stay apart.
WString readable(double threshold) {
    const double magnitude = std::abs(threshold);
    const int numWholeDigits = magnitude < 1.0 ? 1 : static_cast<int>(std::log10(magnitude)) + 1;
    const NumberText text(threshold, std::chars_format::general, std::clamp(numWholeDigits + 1, 7, 17));
    return WString(text.begin(), text.end());
}

/// The way from the root to a node by its conditions, gathered by feature and side: of several thresholds on
/// one side of a feature, and of several sets of categories, the last is the narrowest.
class Path {
 public:
    struct Conditions {
        std::vector<std::int32_t> splits;  ///< the decision nodes, from the root down
        bool isLeft = false;
    };

    explicit Path(std::size_t numFeatures) : conditions_(2 * numFeatures) {}

    void enter(std::int32_t split, std::int32_t feature, bool isLeft) {
        const std::size_t slot = 2 * static_cast<std::size_t>(feature) + (isLeft ? 0 : 1);
        Conditions& conditions = conditions_[slot];
        if (conditions.splits.empty()) slots_.push_back(slot);
        conditions.splits.push_back(split);
        conditions.isLeft = isLeft;
        way_.push_back(slot);
    }
    void leave() {
        std::vector<std::int32_t>& splits = conditions_[way_.back()].splits;
        way_.pop_back();
        splits.pop_back();
        if (splits.empty()) slots_.pop_back();
    }
    std::size_t size() const { return slots_.size(); }
    /// In the order in which the way met them.
    const Conditions& operator[](std::size_t i) const { return conditions_[slots_[i]]; }

 private:
    std::vector<Conditions> conditions_;
    std::vector<std::size_t> slots_;  ///< of the conditions that are there
    std::vector<std::size_t> way_;    ///< the slot of each step
};

const std::vector<std::int32_t>& categorySetOf(const Tree& tree, const Node& split) {
    return tree.categorySets[static_cast<std::size_t>(split.categorySet)];
}

/// Without the ranks of the column, which not every fit makes.
bool hasInfinite(const ColumnCells& cells) {
    if (cells.hasRankCodes())
        return !std::isfinite(cells.rankCodes().smallest) || !std::isfinite(cells.rankCodes().largest);
    std::size_t numInfinite = 0;  // counted without a branch, several cells at once
    for (const double number : cells.numbers())
        numInfinite += std::abs(number) == std::numeric_limits<double>::infinity();
    return numInfinite > 0;
}

/// Of features without infinite cells.
struct SortedTable : Supervised::Preparation {
    std::vector<Engine::DT::SharedColumn> columns;  ///< by feature; none where each tree sorts its own
    mutable Engine::DT::GrowthMemories memories;
    Engine::Crew* crew = nullptr;  ///< of the ensemble
};

Vector vectorOf(const std::vector<double>& numbers) { return Vector(numbers.begin(), numbers.end()); }

}  // namespace

Engine::DT::TrainingData trainingData(const TrainingFeatures& features, const Vector& weights,
                                      std::span<const std::int32_t> multiplicities,
                                      const Supervised::Preparation* preparation) {
    Engine::DT::TrainingData data;
    data.multiplicities = multiplicities;
    data.numRows = features.schema.numRows;
    data.keepRanks = false;
    if (preparation) {
        const auto& table = static_cast<const SortedTable&>(*preparation);
        data.sharedColumns = table.columns;
        data.memories = &table.memories;
        data.crew = table.crew;
    }
    data.weights = {weights.data(), weights.size()};
    for (std::size_t i = 0; i < features.columns.size(); ++i) {
        const FeatureColumn& column = features.columns[i];
        if (column.isCategorical()) {
            data.features.push_back(Engine::DT::TrainingFeature::categorical(
                column.codes(), features.schema.features[i].numCategories()));
        } else {
            // Lists and ranks are made from the whole column, so that all resamples of a table share them.
            const ColumnCells& cells = column.cells();
            if (!preparation && hasInfinite(cells.root())) requireFinite(features);  // else looked at there
            data.features.push_back(
                Engine::DT::TrainingFeature::numeric(cells.root(), cells.selection().get()));
        }
    }
    return data;
}

std::unique_ptr<Supervised::Preparation> sortTable(const TrainingFeatures& features, bool useAllRows,
                                                   Engine::Crew* crew) {
    constexpr int kMinNumRowsOfBins = 1 << 12;
    const int numRows = features.schema.numRows;
    const bool isSorted = numRows <= kMaxNumRowsOfResamples || useAllRows;
    if (!isSorted && !crew) return nullptr;
    const std::vector<Engine::DT::TrainingFeature> columns = trainingData(features, {}, {}, nullptr).features;
    auto table = std::make_unique<SortedTable>();
    table->crew = crew;
    if (!isSorted) return table;
    table->columns.resize(columns.size());
    Engine::Crew own(crew ? 1 : Engine::numThreads());
    (crew ? *crew : own).forEach(columns.size(), [&](std::size_t i, int) {
        table->columns[i] =
            Engine::DT::shareColumn(columns[i], numRows, useAllRows && numRows >= kMinNumRowsOfBins);
    });
    return table;
}

std::vector<Engine::DT::Cells> cellsOf(const std::vector<FeatureColumn>& columns) {
    std::vector<Engine::DT::Cells> cells;
    for (const FeatureColumn& column : columns)
        cells.push_back(column.isCategorical() ? Engine::DT::Cells{.codes = column.codes()}
                                               : Engine::DT::Cells{.numbers = column.numbers()});
    return cells;
}

ITreeModel::ITreeModel(const IParameters& parameters)
    : categoricalFeaturesNames_(parameters.categoricalFeaturesNames.get()),
      categoricalFeaturesOffsets_(parameters.categoricalFeaturesOffsets.get()),
      prunedTreeNumDecisionNodes_(parameters.prunedTreeNumDecisionNodes.get()),
      maxNumLevelsTreeDiagram_(parameters.maxNumLevelsTreeDiagram.get()) {}

void ITreeModel::select(TreeType type) {
    switch (type) {
        case TreeType::FULL_GROWN:
            return engine().select(Engine::DT::TreeType::FULL_GROWN);
        case TreeType::BEST_PRUNED:
            return engine().select(Engine::DT::TreeType::BEST_PRUNED);
        case TreeType::MIN_ERROR:
            return engine().select(Engine::DT::TreeType::MIN_ERROR);
        case TreeType::MANUAL:
            return engine().selectManual(prunedTreeNumDecisionNodes_);
    }
    throw ConstraintViolation("Selected pruned tree type", "The value must be a pre-defined set member.");
}

void ITreeModel::select(int numDecisionNodes) {
    if (numDecisionNodes < 0) throw ValueOutOfRange("#Decision Nodes in pruned tree", 0, kNoLimit);
    engine().select(numDecisionNodes);
}

// ---- texts

WString ITreeModel::splitText(const Engine::DT::Node& split) const {
    if (split.categorySet < 0) return Convert::toString(split.threshold);
    return categoriesText(split.feature, categorySetOf(engine().tree(), split));
}

WString ITreeModel::categoriesText(std::int32_t feature, const std::vector<std::int32_t>& codes) const {
    const Dictionary& categories = *fittedSchema().features[static_cast<std::size_t>(feature)].categories;
    StringVector texts;
    for (const std::int32_t code : codes) texts.push_back(categories[code]);
    return Util::join(texts, L", ", L"{", L"}");
}

WString ITreeModel::conditionText(const std::vector<std::int32_t>& splits, bool isLeft) const {
    const Tree& tree = engine().tree();
    const Node& last = nodeAt(tree, splits.back());
    const WString& feature = fittedSchema().features[static_cast<std::size_t>(last.feature)].name;
    if (last.categorySet < 0) return feature + (isLeft ? L" < " : L" >= ") + readable(last.threshold);
    if (isLeft) return feature + L" IN " + categoriesText(last.feature, categorySetOf(tree, last));
    std::vector<std::int32_t> excluded;
    for (const std::int32_t split : splits) {
        const std::vector<std::int32_t>& codes = categorySetOf(tree, nodeAt(tree, split));
        excluded.insert(excluded.end(), codes.begin(), codes.end());
    }
    std::sort(excluded.begin(), excluded.end());
    return feature + L" NOT IN " + categoriesText(last.feature, excluded);
}

StringVector ITreeModel::treeRules(int numLevels) const {
    if (numLevels < 0) throw ValueOutOfRange("Number of levels", 0, kNoLimit);
    struct Step {
        std::int32_t node;
        int level;
        bool isReturn;
    };
    const Tree& tree = engine().tree();
    Path path(fittedSchema().features.size());
    StringVector rules;
    std::vector<Step> pending{{0, 0, false}};
    while (!pending.empty()) {
        const auto [position, level, isReturn] = pending.back();
        pending.pop_back();
        if (isReturn) {
            path.leave();
            continue;
        }
        const Node& node = nodeAt(tree, position);
        if (node.parent >= 0) {
            const Node& parent = nodeAt(tree, node.parent);
            path.enter(node.parent, parent.feature, parent.left == position);
            pending.push_back({position, level, true});
        }
        if (!engine().isLeaf(position) && level < numLevels) {
            pending.push_back({node.right(), level + 1, false});
            pending.push_back({node.left, level + 1, false});
            continue;
        }
        WString rule;
        for (std::size_t i = 0; i < path.size(); ++i)
            rule += (i == 0 ? L"IF " : L" AND ") + conditionText(path[i].splits, path[i].isLeft);
        if (!rule.empty()) rule += L" THEN ";
        rules.push_back(rule + responseText(position) + L" (" + Convert::toString(node.numRecords) +
                        L" records)");
    }
    return rules;
}

WString ITreeModel::treeToString(int numLevels) const {
    Engine::DT::Names names;
    for (const FeatureSchema& feature : fittedSchema().features) {
        names.features.push_back(feature.name);
        names.categories.push_back(feature.categories ? feature.categories->levels()
                                                      : std::vector<WString>());
    }
    names.classes = classLabels().elements();
    return engine().toString(numLevels, {7, 2, 3, 1}, names);
}

// ---- tables

DataFrame ITreeModel::featureImportance() const {
    DataFrame table(L"Feature Importance");
    table.append(DataFrameColumn(L"Importance", vectorOf(engine().featureImportance())));
    table.setRowNames(fittedSchema().featureNames());
    return table;
}

DataFrame ITreeModel::trainingLog() const {
    DataFrame table(L"Training Log");
    table.append(DataFrameColumn(L"Error Rate", vectorOf(engine().trainingLog())));
    table.setRowNames(Util::generateNames(L"", 0, table.getNumRows()));
    return table;
}

DataFrame ITreeModel::allNodesInfo() const {
    const Tree& tree = engine().tree();
    const std::vector<std::int64_t>& validation = engine().numValidationRecords();
    const double missing = std::numeric_limits<double>::quiet_NaN();
    // Numbers of nodes count from 1 in the order of the whole tree; below a pruned node there is nothing to
    // tell.
    StringVector ids, features, splits, responses, types;
    Vector parents, lefts, rights, trainingCases, validationCases;
    std::vector<bool> isShown(tree.nodes.size(), false);
    isShown[0] = true;
    for (std::int32_t position = 0; position < std::ssize(tree.nodes); ++position) {
        if (!isShown[static_cast<std::size_t>(position)]) continue;
        const Node& node = nodeAt(tree, position);
        const bool isLeaf = engine().isLeaf(position);
        if (!isLeaf) {
            isShown[static_cast<std::size_t>(node.left)] = true;
            isShown[static_cast<std::size_t>(node.right())] = true;
        }
        ids.push_back(Convert::toString(position + 1));
        parents.push_back(node.parent < 0 ? missing : node.parent + 1);
        lefts.push_back(isLeaf ? missing : node.left + 1);
        rights.push_back(isLeaf ? missing : node.right() + 1);
        features.push_back(isLeaf ? L""
                                  : fittedSchema().features[static_cast<std::size_t>(node.feature)].name);
        splits.push_back(isLeaf ? WString() : splitText(node));
        trainingCases.push_back(static_cast<double>(node.numRecords));
        validationCases.push_back(validation.empty()
                                      ? missing
                                      : static_cast<double>(validation[static_cast<std::size_t>(position)]));
        responses.push_back(responseText(position));
        types.push_back(isLeaf ? L"Terminal" : L"Decision");
    }
    DataFrame table(L"All Nodes Info");
    table.append(DataFrameColumn(L"Parent ID", std::move(parents)));
    table.append(DataFrameColumn(L"Left Child ID", std::move(lefts)));
    table.append(DataFrameColumn(L"Right Child ID", std::move(rights)));
    table.append(DataFrameColumn(L"Split Var", features));
    table.append(DataFrameColumn(L"Split Value/Set", splits));
    table.append(DataFrameColumn(L"Training Cases", std::move(trainingCases)));
    table.append(DataFrameColumn(L"Validation Cases", std::move(validationCases)));
    table.append(DataFrameColumn(L"Response", responses));
    table.append(DataFrameColumn(L"Node Type", types));
    table.setRowNames(ids);
    return table;
}

DataFrame ITreeModel::categoricalFeaturesInfo() const {
    StringVector names, categories;
    for (const FeatureSchema& feature : fittedSchema().features) {
        if (!feature.isCategorical) continue;
        names.push_back(feature.name);
        categories.push_back(Util::join(StringVector(feature.categories->levels()), L", "));
    }
    DataFrame table(L"Categorical Features");
    table.append(DataFrameColumn(L"Categories", categories));
    table.setRowNames(names);
    return table;
}

void ITreeModel::describeTree(StringVector& labels, StringVector& values) const {
    const std::int32_t numDecisionNodes = engine().numDecisionNodes();
    labels.append(StringVector{L"#Decision nodes", L"#Terminal nodes"});
    values.append(StringVector{Convert::toString(numDecisionNodes), Convert::toString(numDecisionNodes + 1)});
}

void ITreeModel::reportTree(DataFrameVector& tables) const {
    for (DataFrame table : {pruningLog(), featureImportance(), allNodesInfo(), trainingLog()})
        tables.push_back(std::move(table));
}

}  // namespace Tessel::DecisionTree
