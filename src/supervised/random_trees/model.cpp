#include "supervised/random_trees/model.h"

#include "supervised/decision_tree/tree_model.h"

namespace Tessel {

namespace RandomTrees {

/// "Features Importance": the mean of the importances by the trees.
template <class Members>
static DataFrame featuresImportance(const Members& members, const FittedSchema& schema) {
    Vector mean(schema.features.size(), 0.0);
    for (const auto& model : members.weakModels) {
        const auto& tree = dynamic_cast<const DecisionTree::ITreeModel&>(*model);
        const Vector importance = tree.featureImportance()(Util::all, 0).toDoubleVector();
        for (std::size_t i = 0; i < mean.size(); ++i) mean[i] += importance[i];
    }
    for (double& value : mean) value /= static_cast<double>(members.weakModels.size());
    DataFrame table(L"Features Importance");
    table.append(DataFrameColumn(L"Importance", std::move(mean)));
    table.setRowNames(schema.featureNames());
    return table;
}

}  // namespace RandomTrees

DataFrame Classification::RandomTrees::IModel::featuresImportance() const {
    return Tessel::RandomTrees::featuresImportance(*this, schema);
}

void Classification::RandomTrees::IModel::reportFamily(DataFrameVector& tables) const {
    tables.push_back(featuresImportance());
    reportOutOfBag(tables);
}

DataFrame Regression::RandomTrees::IModel::featuresImportance() const {
    return Tessel::RandomTrees::featuresImportance(*this, schema);
}

void Regression::RandomTrees::IModel::reportFamily(DataFrameVector& tables) const {
    tables.push_back(featuresImportance());
    reportOutOfBag(tables);
}

}  // namespace Tessel
