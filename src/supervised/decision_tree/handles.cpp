#include <tessel/decision_tree.h>

#include "supervised/decision_tree/estimator.h"
#include "supervised/decision_tree/model.h"

namespace Tessel {
namespace DecisionTree {

void TreeHandle::prune(const DataFrame& features, const DataFrameColumn& target) {
    treeModel().prune(features, target);
}
void TreeHandle::prune(const DataFrame& features, const DataFrame& target) {
    prune(features, Supervised::targetColumn(target));
}
void TreeHandle::select(TreeType type) { treeModel().select(type); }
void TreeHandle::select(int numDecisionNodes) { treeModel().select(numDecisionNodes); }
StringVector TreeHandle::treeRules(int numLevels) const { return treeModel().treeRules(numLevels); }
WString TreeHandle::treeToString(int numLevels) const { return treeModel().treeToString(numLevels); }
WString TreeHandle::treeToString() const { return treeModel().treeToString(); }
DataFrame TreeHandle::getFeaturesImportance() const { return treeModel().featureImportance(); }
DataFrame TreeHandle::getTrainingLog() const { return treeModel().trainingLog(); }
DataFrame TreeHandle::getPruningLog() const { return treeModel().pruningLog(); }
const StringVector& TreeHandle::getCategoricalFeaturesNames() const {
    return treeModel().categoricalFeaturesNames();
}
const IntVector& TreeHandle::getCategoricalFeaturesOffsets() const {
    return treeModel().categoricalFeaturesOffsets();
}
DataFrame TreeHandle::getCategoricalFeaturesInfo() const { return treeModel().categoricalFeaturesInfo(); }

}  // namespace DecisionTree

namespace Classification::DecisionTree {

Tessel::DecisionTree::ITreeModel& Model::treeModel() const { return as<IModel>(); }

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}
Tessel::DecisionTree::IParameters& Estimator::treeParameters() const { return as<IEstimator>(); }

}  // namespace Classification::DecisionTree

namespace Regression::DecisionTree {

Tessel::DecisionTree::ITreeModel& Model::treeModel() const { return as<IModel>(); }

Estimator::Estimator() : RegressorEstimatorOf(std::make_unique<IEstimator>()) {}
Tessel::DecisionTree::IParameters& Estimator::treeParameters() const { return as<IEstimator>(); }

}  // namespace Regression::DecisionTree
}  // namespace Tessel
