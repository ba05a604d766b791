#include "supervised/decision_tree/parameters.h"

namespace Tessel::DecisionTree {

WString getTreeTypeName(TreeType type) {
    switch (type) {
        case TreeType::FULL_GROWN:
            return L"Full Grown";
        case TreeType::BEST_PRUNED:
            return L"Best Pruned";
        case TreeType::MIN_ERROR:
            return L"Minimum Error";
        case TreeType::MANUAL:
            return L"Manual";
    }
    return {};
}

ParameterList IParameters::treeParameters() {
    return {minNumRecordsInLeaves,
            maxNumNodes,
            maxNumLevels,
            maxNumSplits,
            featureSelectionSeed,
            numSelectedFeatures,
            prunedTreeType,
            prunedTreeNumDecisionNodes,
            maxNumLevelsTreeDiagram,
            categoricalFeaturesNames,
            categoricalFeaturesOffsets,
            weights};
}

void IParameters::validateTreeAgainst(const DataFrame& features) const {
    if (features.getNumRows() == 0) return;  // an error of the data, not of a parameter
    minNumRecordsInLeaves.requireWithin(1, features.getNumRows());
    const int numFeatures = features.getNumCols() - static_cast<int>(features.getIndexedColIndices().size());
    if (numSelectedFeatures.isSet()) numSelectedFeatures.requireWithin(1, numFeatures);
    categoricalPositions(features);
    validateWeights(features.getNumRows());
}

Engine::DT::Limits IParameters::limits() const {
    return {.minNumRecordsInLeaves = minNumRecordsInLeaves.get(),
            .maxNumNodes = maxNumNodes.get(),
            .maxNumLevels = maxNumLevels.get(),
            .maxNumSplits = maxNumSplits.get(),
            .numSelectedFeatures = numSelectedFeatures.get(),
            .featureSelectionSeed = featureSelectionSeed.get()};
}

// ---- the public handle

ParametersHandle& ParametersHandle::setMinNumRecordsInLeaves(int value) {
    treeParameters().minNumRecordsInLeaves.set(value);
    return *this;
}
int ParametersHandle::getMinNumRecordsInLeaves() const {
    return treeParameters().minNumRecordsInLeaves.get();
}
ParametersHandle& ParametersHandle::setMaxNumNodes(int value) {
    treeParameters().maxNumNodes.set(value);
    return *this;
}
int ParametersHandle::getMaxNumNodes() const { return treeParameters().maxNumNodes.get(); }
ParametersHandle& ParametersHandle::setMaxNumLevels(int value) {
    treeParameters().maxNumLevels.set(value);
    return *this;
}
int ParametersHandle::getMaxNumLevels() const { return treeParameters().maxNumLevels.get(); }
ParametersHandle& ParametersHandle::setMaxNumSplits(int value) {
    treeParameters().maxNumSplits.set(value);
    return *this;
}
int ParametersHandle::getMaxNumSplits() const { return treeParameters().maxNumSplits.get(); }
ParametersHandle& ParametersHandle::setNumSelectedFeatures(int value) {
    treeParameters().numSelectedFeatures.set(value);
    return *this;
}
int ParametersHandle::getNumSelectedFeatures() const { return treeParameters().numSelectedFeatures.get(); }
ParametersHandle& ParametersHandle::setFeatureSelectionSeed(int value) {
    treeParameters().featureSelectionSeed.set(value);
    return *this;
}
int ParametersHandle::getFeatureSelectionSeed() const { return treeParameters().featureSelectionSeed.get(); }
ParametersHandle& ParametersHandle::setPrunedTreeType(TreeType value) {
    treeParameters().prunedTreeType.set(value);
    return *this;
}
TreeType ParametersHandle::getPrunedTreeType() const { return treeParameters().prunedTreeType.get(); }
bool ParametersHandle::isPrunedTreeTypeSet() const { return treeParameters().prunedTreeType.isSet(); }
ParametersHandle& ParametersHandle::setPrunedTreeNumDecisionNodes(int value) {
    treeParameters().prunedTreeNumDecisionNodes.set(value);
    return *this;
}
int ParametersHandle::getPrunedTreeNumDecisionNodes() const {
    return treeParameters().prunedTreeNumDecisionNodes.get();
}
ParametersHandle& ParametersHandle::setMaxNumLevelsTreeDiagram(int value) {
    treeParameters().maxNumLevelsTreeDiagram.set(value);
    return *this;
}
int ParametersHandle::getMaxNumLevelsTreeDiagram() const {
    return treeParameters().maxNumLevelsTreeDiagram.get();
}

const Vector& ParametersHandle::getWeights() const { return treeParameters().weights.get(); }
void ParametersHandle::assignWeights(const Vector& weights) { treeParameters().weights.set(weights); }
const StringVector& ParametersHandle::getCategoricalFeaturesNames() const {
    return treeParameters().categoricalFeaturesNames.get();
}
void ParametersHandle::assignCategoricalFeaturesNames(const StringVector& names) {
    treeParameters().categoricalFeaturesNames.set(names);
}
const IntVector& ParametersHandle::getCategoricalFeaturesOffsets() const {
    return treeParameters().categoricalFeaturesOffsets.get();
}
void ParametersHandle::assignCategoricalFeaturesOffsets(const IntVector& offsets) {
    treeParameters().categoricalFeaturesOffsets.set(offsets);
}
DataFrame ParametersHandle::getCategoricalFeaturesInfo() const {
    return treeParameters().categoricalFeaturesInfo();
}

}  // namespace Tessel::DecisionTree
