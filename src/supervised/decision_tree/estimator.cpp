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

std::vector<double> IEstimator::classSizes(const ClassTarget& target) const {
    if (weights.get().empty()) return target.counts;
    std::vector<double> sizes(target.classes.size(), 0.0);
    for (std::size_t row = 0; row < target.codes.size(); ++row)
        sizes[static_cast<std::size_t>(target.codes[row])] += weights.get()[row];
    return sizes;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    Engine::DT::ClassificationModel tree;
    tree.setLimits(limits());
    tree.setClasses(data.target.classes.elements());
    // Empirical priors are the weights of the classes, which the engine takes by itself; given to it they
    // would also weigh validation errors by the shares of the training part.
    if (priorProbMethod.get() != PriorProbMethodType::EMPIRICAL) tree.setPrior(data.priors.elements());
    tree.fit(trainingData(data.features, weights.get(), /*keepRanks=*/false), data.target.codes);
    return std::make_shared<IModel>(*this, std::move(tree));
}

}  // namespace Classification::DecisionTree

namespace Regression::DecisionTree {

IEstimator::IEstimator() : Regression::IEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::DECISION_TREE};
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    Engine::DT::RegressionModel tree;
    tree.setLimits(limits());
    tree.fit(trainingData(data.features, weights.get(), /*keepRanks=*/false), data.target);
    return std::make_shared<IModel>(*this, std::move(tree));
}

}  // namespace Regression::DecisionTree
}  // namespace Tessel
