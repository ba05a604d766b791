#include "supervised/decision_tree/model.h"

#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>
#include <tessel/framework/errors.h>

namespace Tessel {

using DecisionTree::cellsOf;

namespace Classification::DecisionTree {

void IModel::prune(const DataFrame& features, const DataFrameColumn& target) {
    if (features.getNumRows() != target.getNumRows()) throw IncompatibleNumRows();
    if (features.getNumRows() == 0) throw TooFewNumRows(0);
    const ClassTarget read = readClassTarget(target);
    std::vector<std::int32_t> codeOf;  // the code in training of each class of the validation part
    for (const WString& label : read.classes) {
        const std::size_t code = classSchema.classes.find(label);
        if (code == classSchema.classes.size()) throw LabelUnseenInTraining();
        codeOf.push_back(static_cast<std::int32_t>(code));
    }
    std::vector<std::int32_t> codes(read.codes.size());
    std::transform(read.codes.begin(), read.codes.end(), codes.begin(),
                   [&](std::int32_t code) { return codeOf[static_cast<std::size_t>(code)]; });
    const std::vector<FeatureColumn> columns = readFeatures(schema, features);
    tree_.prune(cellsOf(columns), codes);
}

DataFrame IModel::pruningLog() const {
    DataFrame table(L"Pruning Log");
    Vector errors;  // trees selected by size alone were judged by nothing
    if (isPruned()) errors = Vector(tree_.pruningLog());
    table.append(DataFrameColumn(L"Error Rate", std::move(errors)));
    table.setRowNames(Util::generateNames(L"", 0, table.getNumRows()));
    return table;
}

void IModel::score(const std::vector<FeatureColumn>& columns, Posteriors& posteriors) const {
    const std::vector<std::int32_t> leaves = tree_.findNodes(cellsOf(columns), posteriors.front().size());
    const Engine::DT::Tree& grown = tree_.tree();
    for (std::size_t row = 0; row < leaves.size(); ++row) {
        const double* classWeights = grown.classWeightsOf(leaves[row]);
        const double weight = grown.nodes[static_cast<std::size_t>(leaves[row])].weight;
        for (std::size_t k = 0; k < posteriors.size(); ++k) posteriors[k][row] = classWeights[k] / weight;
    }
}

void IModel::adoptClassRule() {
    const StringVector& classes = classSchema.classes;
    const std::size_t success = classes.find(classSchema.successClass);
    tree_.setSuccessClass(success < classes.size() ? static_cast<std::int32_t>(success) : -1);
    tree_.setSuccessProbabilityCutoff(classSchema.successProbability);
}

void IModel::describe(StringVector& labels, StringVector& values) const {
    IModelable::describe(labels, values);
    describeTree(labels, values);
}

void IModel::report(DataFrameVector& tables) const {
    IModelable::report(tables);
    reportTree(tables);
}

}  // namespace Classification::DecisionTree

namespace Regression::DecisionTree {

void IModel::prune(const DataFrame& features, const DataFrameColumn& target) {
    if (features.getNumRows() != target.getNumRows()) throw IncompatibleNumRows();
    if (features.getNumRows() == 0) throw TooFewNumRows(0);
    const std::vector<FeatureColumn> columns = readFeatures(schema, features);
    tree_.prune(cellsOf(columns), readNumericTarget(target));
}

DataFrame IModel::pruningLog() const {
    Vector complexities, errors;
    if (isPruned())
        for (const auto& [complexity, validationError] : tree_.complexityLog()) {
            complexities.push_back(complexity);
            errors.push_back(validationError);
        }
    DataFrame table(L"Pruning Log");
    table.append(DataFrameColumn(L"Cost Complexity", std::move(complexities)));
    table.append(DataFrameColumn(L"Validation MSE", std::move(errors)));
    table.setRowNames(Util::generateNames(L"", 0, table.getNumRows()));
    return table;
}

WString IModel::responseText(std::int32_t node) const {
    return Convert::toString(tree_.tree().nodes[static_cast<std::size_t>(node)].response);
}

void IModel::score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const {
    tree_.predict(cellsOf(columns), predictions);
}

}  // namespace Regression::DecisionTree
}  // namespace Tessel
