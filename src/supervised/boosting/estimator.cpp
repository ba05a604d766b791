#include "supervised/boosting/estimator.h"

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "data/util/compensated_sum.h"
#include "engine/crew.h"
#include "engine/ensemble/adaboost.h"
#include "engine/ensemble/resample.h"
#include "engine/ensemble/resampler.h"
#include "supervised/boosting/model.h"
#include "supervised/ensemble/fit_learners.h"
#include "supervised/ensemble/row_blocks.h"

namespace Tessel {

namespace Classification::Boosting {

using Engine::Ensemble::AdaBoostVariant;

IEstimator::IEstimator() : IWithBaseEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::BOOSTING};
}

ParameterList IEstimator::parameters() {
    ParameterList list{numWeakLearners, method, resamplingSeed};
    for (const ParameterRef& parameter : classificationParameters()) list.push_back(parameter);
    return list;
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    const std::vector<std::int32_t>& classes = data.target.codes;
    const std::size_t numRows = classes.size(), numClasses = data.target.classes.size();
    const Learner weak = learner(0);
    Engine::Crew crew(Engine::numThreads());
    const auto preparation = prepareLearners(data.features, false, &crew);
    auto model = std::make_shared<IModel>();
    model->algorithm = weak->ladonIdentity().algorithm;

    std::vector<double> weights(numRows, 1.0 / static_cast<double>(numRows));
    Engine::Ensemble::Resampler resampler(numRows, resamplingSeed.get());
    std::vector<int> isMissed(numRows);
    for (int m = 0; m < numWeakLearners.get(); ++m) {
        const Progress progress = data.progress.part(static_cast<double>(m) / numWeakLearners.get(),
                                                     (m + 1.0) / numWeakLearners.get(),
                                                     getModelName() + L": " + Ensemble::learnerTitle(m));
        progress.report(0.0, {});
        auto resample =
            Supervised::Resample::of(resampler.sample(weights, crew), data.features.schema.numRows);
        if (!Engine::Ensemble::coversClasses(resample.rows, classes, numClasses))
            throw EnsembleSamplingMissedClass();
        std::shared_ptr<IModelable> weakModel =
            weak->fitResample(data.features, data.target, resample, preparation.get(), progress);
        Ensemble::forEachRowBlock(
            crew, data.features.columns, numRows,
            [&](const std::vector<FeatureColumn>& columns, std::size_t begin, std::size_t end) {
                std::vector<std::int32_t> predicted(end - begin);
                weakModel->classify(columns, predicted);
                for (std::size_t row = begin; row < end; ++row)
                    isMissed[row] = predicted[row - begin] != classes[row];
            });

        const double error = Engine::Ensemble::weightedError(weights, isMissed, crew);
        if (error >= 0.5) throw WorseThanRandomGuess();
        const double alpha = Engine::Ensemble::learnerWeight(static_cast<AdaBoostVariant>(method.get()),
                                                             error, static_cast<int>(numClasses));
        model->add(std::move(weakModel), alpha);
        if (error == 0.0) break;
        Engine::Ensemble::reweight(weights, isMissed, alpha, crew);
    }
    Engine::Ensemble::normalize({model->weights.data(), model->weights.size()}, crew);
    return model;
}

}  // namespace Classification::Boosting

namespace Regression::Boosting {

IEstimator::IEstimator() : IWithBaseEstimator(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::BOOSTING};
}

/// Subtracts what was predicted. @throws ConstraintViolation where that leaves the range of double
template <class Predicted>
static void subtract(std::vector<double>& residuals, Predicted&& predicted, Engine::Crew& crew) {
    // x - x is 0 for finite numbers only.
    const auto difference = [&](std::size_t row) {
        const double residual = residuals[row] -= predicted(row);
        return residual - residual;
    };
    if (Engine::sumByStretches(crew, residuals.size(), difference) != 0.0)
        throw ConstraintViolation("target",
                                  "The residuals leave the range of double; divide the target by a large "
                                  "number, or take a smaller step size.");
}

std::shared_ptr<IModelable> IEstimator::fitEngine(const TrainingSet& data) const {
    const std::size_t numRows = data.target.size();
    const Learner weak = learner(0);
    Engine::Crew crew(Engine::numThreads());
    const auto preparation = prepareLearners(data.features, true, &crew);
    auto model = std::make_shared<IModel>();
    model->algorithm = weak->ladonIdentity().algorithm;
    model->stepSize = stepSize.get();
    model->meanResponse = Numeric::sumOf(numRows, [&](std::size_t row) { return data.target[row]; }) /
                          static_cast<double>(numRows);

    Supervised::Resample allRows;
    std::vector<double> residuals(data.target.begin(), data.target.end()), predicted(numRows);
    subtract(
        residuals, [mean = model->meanResponse](std::size_t) { return mean; }, crew);
    for (int m = 0; m < numWeakLearners.get(); ++m) {
        const Progress progress = data.progress.part(static_cast<double>(m) / numWeakLearners.get(),
                                                     (m + 1.0) / numWeakLearners.get(),
                                                     getModelName() + L": " + Ensemble::learnerTitle(m));
        progress.report(0.0, {});
        std::shared_ptr<IModelable> weakModel =
            weak->fitResample(data.features, residuals, allRows, preparation.get(), progress, predicted);
        subtract(
            residuals, [&, step = model->stepSize](std::size_t row) { return step * predicted[row]; }, crew);
        model->add(std::move(weakModel), 1.0);
    }
    return model;
}

}  // namespace Regression::Boosting
}  // namespace Tessel
