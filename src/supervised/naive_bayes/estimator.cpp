#include "supervised/naive_bayes/estimator.h"

#include <tessel/framework/ladon.h>
#include <tessel/naive_bayes.h>

#include "supervised/naive_bayes/model.h"

namespace Tessel::Classification::NaiveBayes {

IEstimator::IEstimator() : Classification::IEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::NAIVE_BAYES};
}

ParameterList IEstimator::parameters() {
    ParameterList list{laplaceSmoothing};
    for (const ParameterRef& parameter : classificationParameters()) list.push_back(parameter);
    return list;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    const auto numClasses = static_cast<std::int32_t>(data.target.classes.size());
    return std::make_shared<IModel>(Engine::NB::fit(engineInputs(data.features.schema, data.features.columns),
                                                    data.target.codes, numClasses, laplaceSmoothing.get()));
}

// ---- the public handle

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}

Estimator& Estimator::setLaplaceSmoothing(double pseudoCount) {
    as<IEstimator>().laplaceSmoothing.set(pseudoCount);
    return *this;
}
double Estimator::getLaplaceSmoothing() const { return as<IEstimator>().laplaceSmoothing.get(); }

}  // namespace Tessel::Classification::NaiveBayes
