#include "supervised/random_trees/estimator.h"

#include <tessel/framework/ladon.h>
#include <tessel/random_trees.h>

#include "supervised/decision_tree/estimator.h"
#include "supervised/random_trees/model.h"

namespace Tessel {

namespace RandomTrees {

/// The seed of a tree's draws of features: seed + position, from the largest int on from 1.
static int featureSeed(int seed, int position) {
    const std::int64_t sum = std::int64_t{seed} + position;
    return static_cast<int>(sum <= kNoLimit ? sum : sum - kNoLimit);
}

/// The tree at a position of the forest.
template <class TreeEstimator>
static std::shared_ptr<TreeEstimator> treeAt(const Tessel::DecisionTree::IParameters& parameters,
                                             int position) {
    auto tree = std::make_shared<TreeEstimator>();
    static_cast<Tessel::DecisionTree::IParameters&>(*tree) = parameters;
    tree->featureSelectionSeed.set(featureSeed(parameters.featureSelectionSeed.get(), position));
    return tree;
}

}  // namespace RandomTrees

namespace Classification::RandomTrees {

IEstimator::IEstimator() : IClassifierEnsemble(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::RANDOM_TREES};
}

ParameterList IEstimator::parameters() {
    ParameterList list{numWeakLearners, bootstrapSeed};
    for (const ParameterRef& parameter : treeParameters()) list.push_back(parameter);
    for (const ParameterRef& parameter : classificationParameters()) list.push_back(parameter);
    return list;
}

IEstimator::Learner IEstimator::learner(int position) const {
    const auto tree = Tessel::RandomTrees::treeAt<DecisionTree::IEstimator>(*this, position);
    tree->priorProbMethod = priorProbMethod;
    tree->priorProb = priorProb;
    return tree;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    auto model = std::make_shared<IModel>();
    Ensemble::fitBootstrapped(*this, data, bootstrapSeed.get(), *model, *model);
    return model;
}

// ---- the public handles

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}
Ensemble::IParameters& Estimator::ensembleParameters() const { return as<IEstimator>(); }
Ensemble::IBootstrap& Estimator::bootstrap() const { return as<IEstimator>(); }
Tessel::DecisionTree::IParameters& Estimator::treeParameters() const { return as<IEstimator>(); }

DataFrame Model::getFeaturesImportance() const { return as<IModel>().featuresImportance(); }
DataFrame Model::getOutOfBagError() const { return as<IModel>().outOfBagError; }
const Ensemble::IClassifierMembers& Model::members() const { return as<IModel>(); }

}  // namespace Classification::RandomTrees

namespace Regression::RandomTrees {

IEstimator::IEstimator() : IEnsembleOf(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::RANDOM_TREES};
}

ParameterList IEstimator::parameters() {
    ParameterList list{numWeakLearners, bootstrapSeed};
    for (const ParameterRef& parameter : treeParameters()) list.push_back(parameter);
    return list;
}

IEstimator::Learner IEstimator::learner(int position) const {
    return Tessel::RandomTrees::treeAt<DecisionTree::IEstimator>(*this, position);
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    auto model = std::make_shared<IModel>();
    Ensemble::fitBootstrapped(*this, data, bootstrapSeed.get(), *model, *model);
    return model;
}

// ---- the public handles

Estimator::Estimator() : RegressorEstimatorOf(std::make_unique<IEstimator>()) {}
Ensemble::IParameters& Estimator::ensembleParameters() const { return as<IEstimator>(); }
Ensemble::IBootstrap& Estimator::bootstrap() const { return as<IEstimator>(); }
Tessel::DecisionTree::IParameters& Estimator::treeParameters() const { return as<IEstimator>(); }

DataFrame Model::getFeaturesImportance() const { return as<IModel>().featuresImportance(); }
DataFrame Model::getOutOfBagError() const { return as<IModel>().outOfBagError; }
const Ensemble::IRegressorMembers& Model::members() const { return as<IModel>(); }

}  // namespace Regression::RandomTrees
}  // namespace Tessel
