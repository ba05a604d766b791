#include "supervised/naive_bayes/estimator.h"

#include <cmath>

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>
#include <tessel/naive_bayes.h>

#include "supervised/naive_bayes/model.h"

namespace Tessel::Classification::NaiveBayes {
namespace {

/// Counts are kept for each category with each class. More than so many (1 GB) come from a column of
/// identifiers that was taken for a feature or for the target.
constexpr std::int64_t kMaxNumCounts = std::int64_t{1} << 27;

/// False when an input has an infinite value, or values whose sum overflows.
bool hasFiniteMeans(const Engine::NB::Fitted& fitted) {
    for (const Engine::NB::FittedInput& input : fitted.inputs)
        if (const auto* gaussian = std::get_if<Engine::NB::GaussianInput>(&input))
            for (const double mean : gaussian->mean)
                if (!std::isfinite(mean)) return false;
    return true;
}

}  // namespace

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
    for (const FeatureSchema& feature : data.features.schema.features)
        if (std::int64_t{feature.numCategories()} * numClasses > kMaxNumCounts)
            throw BadAllocation(narrowText(L"The table of categories by classes of " + feature.name));
    Engine::NB::Fitted fitted =
        Engine::NB::fit(engineInputs(data.features.schema, data.features.columns), data.target.codes,
                        numClasses, laplaceSmoothing.get(), data.progress.watch(getModelName()));
    if (!hasFiniteMeans(fitted)) requireFinite(data.features);
    return std::make_shared<IModel>(std::move(fitted));
}

// ---- the public handle

Estimator::Estimator() : ClassifierEstimatorOf(std::make_unique<IEstimator>()) {}

Estimator& Estimator::setLaplaceSmoothing(double pseudoCount) {
    as<IEstimator>().laplaceSmoothing.set(pseudoCount);
    return *this;
}
double Estimator::getLaplaceSmoothing() const { return as<IEstimator>().laplaceSmoothing.get(); }

}  // namespace Tessel::Classification::NaiveBayes
