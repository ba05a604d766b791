#include "supervised/decision_tree/estimator.h"

#include <tessel/framework/ladon.h>

#include "supervised/decision_tree/model.h"

namespace Tessel {

using DecisionTree::trainingData;

namespace Classification::DecisionTree {

IEstimator::IEstimator() : Classification::IEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::DECISION_TREE};
}

ParameterList IEstimator::parameters() {
    ParameterList list = treeParameters();
    for (const ParameterRef& parameter : classificationParameters()) list.push_back(parameter);
    return list;
}

std::vector<double> IEstimator::classSizes(const ClassTarget& target, const std::vector<double>& counts,
                                           std::span<const std::int32_t> multiplicities) const {
    if (weights.get().empty()) return counts;
    std::vector<double> sizes(target.classes.size(), 0.0);
    for (std::size_t row = 0; row < target.codes.size(); ++row)
        sizes[static_cast<std::size_t>(target.codes[row])] +=
            weights.get()[row] * (multiplicities.empty() ? 1 : multiplicities[row]);
    return sizes;
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrame& validFeatures,
                                            const DataFrameColumn& target,
                                            const DataFrameColumn& validTarget) const {
    std::shared_ptr<IModelable> model = fit(features, target);
    if (prunedTreeType.isSet()) pruneAndSelect(static_cast<IModel&>(*model), validFeatures, validTarget);
    return model;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    Engine::DT::ClassificationModel tree;
    tree.setLimits(limits());
    tree.setClasses(data.target.classes.elements());
    // Empirical priors are the weights of the classes, which the engine takes by itself; given to it they
    // would also weigh validation errors by the shares of the training part.
    if (priorProbMethod.get() != PriorProbMethodType::EMPIRICAL) tree.setPrior(data.priors.elements());
    Engine::DT::TrainingData training =
        trainingData(data.features, weights.get(), data.multiplicities, data.preparation);
    training.watch = data.progress.watch(getModelName());
    tree.fit(training, data.target.codes);
    return std::make_shared<IModel>(*this, std::move(tree));
}

}  // namespace Classification::DecisionTree

namespace Regression::DecisionTree {

IEstimator::IEstimator() : Regression::IEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::DECISION_TREE};
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrame& validFeatures,
                                            const DataFrameColumn& target,
                                            const DataFrameColumn& validTarget) const {
    std::shared_ptr<IModelable> model = fit(features, target);
    if (prunedTreeType.isSet()) pruneAndSelect(static_cast<IModel&>(*model), validFeatures, validTarget);
    return model;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    Engine::DT::RegressionModel tree;
    tree.setLimits(limits());
    Engine::DT::TrainingData training =
        trainingData(data.features, weights.get(), data.multiplicities, data.preparation);
    training.watch = data.progress.watch(getModelName());
    training.fitted = data.fitted;
    tree.fit(training, data.target);
    return std::make_shared<IModel>(*this, std::move(tree));
}

}  // namespace Regression::DecisionTree
}  // namespace Tessel
