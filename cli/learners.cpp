#include "learners.h"

#include <algorithm>

namespace Tessel::Cli {
namespace {

template <class Estimator>
class LearnerOf : public Learner {
 public:
    EstimatorHandle& estimator() override { return estimator_; }

    FitResult fit(const TrainingData& training, const TrainingData* validation) const override {
        using Model = decltype(estimator_.fit(training.features, training.target));
        const auto model = std::make_shared<Model>(fitted(training, validation));
        if constexpr (requires { model->getBestLearnerType(); }) {
            const TrainingData& judge = validation ? *validation : training;
            const WString best = model->findBestLearner(judge.features, judge.target);
            DataFrame comparison = model->getMetrics();
            comparison.setName(L"Learners");
            return {model, best, comparison, model->getFittingLog()};
        } else {
            return {model, {}, {}, {}};
        }
    }

 private:
    auto fitted(const TrainingData& training, const TrainingData* validation) const {
        if constexpr (requires {
                          estimator_.fit(training.features, training.features, training.target,
                                         training.target);
                      })
            if (validation)
                return estimator_.fit(training.features, validation->features, training.target,
                                      validation->target);
        return estimator_.fit(training.features, training.target);
    }

    Estimator estimator_;
};

template <class Estimator>
std::unique_ptr<Learner> make() {
    return std::make_unique<LearnerOf<Estimator>>();
}

}  // namespace

const std::vector<Algorithm>& algorithms() {
    using namespace Ladon::ModelAlgorithm;
    using Ladon::TaskKind::CLASSIFICATION, Ladon::TaskKind::REGRESSION;
    using enum Algorithm::Learners;
    namespace Classes = Classification;
    namespace Numbers = Regression;
    static const std::vector<Algorithm> all{
        {DECISION_TREE, CLASSIFICATION, NONE, make<Classes::DecisionTree::Estimator>},
        {DECISION_TREE, REGRESSION, NONE, make<Numbers::DecisionTree::Estimator>},
        {NAIVE_BAYES, CLASSIFICATION, NONE, make<Classes::NaiveBayes::Estimator>},
        {BAGGING, CLASSIFICATION, ONE, make<Classes::Bagging::Estimator>},
        {BAGGING, REGRESSION, ONE, make<Numbers::Bagging::Estimator>},
        {BOOSTING, CLASSIFICATION, ONE, make<Classes::Boosting::Estimator>},
        {BOOSTING, REGRESSION, ONE, make<Numbers::Boosting::Estimator>},
        {RANDOM_TREES, CLASSIFICATION, NONE, make<Classes::RandomTrees::Estimator>},
        {RANDOM_TREES, REGRESSION, NONE, make<Numbers::RandomTrees::Estimator>},
        {FIND_BEST_MODEL, CLASSIFICATION, SEVERAL, make<Classes::FindBestModel::Estimator>},
        {FIND_BEST_MODEL, REGRESSION, SEVERAL, make<Numbers::FindBestModel::Estimator>},
    };
    return all;
}

bool isAlgorithm(const std::string& name) {
    return std::any_of(algorithms().begin(), algorithms().end(),
                       [&](const Algorithm& algorithm) { return Convert::toUtf8(algorithm.name) == name; });
}

std::string algorithmNames() {
    StringVector names;
    for (const Algorithm& algorithm : algorithms())
        if (!names.exists(algorithm.name)) names.push_back(algorithm.name);
    return Convert::toUtf8(Util::join(names, L", "));
}

const Algorithm& algorithmOf(const std::string& name, const std::string& kind) {
    for (const Algorithm& algorithm : algorithms())
        if (Convert::toUtf8(algorithm.name) == name &&
            (kind.empty() || Convert::toUtf8(algorithm.kind) == kind))
            return algorithm;
    if (isAlgorithm(name)) throw Failure(name + " does no " + kind);
    throw Failure("there is no algorithm '" + name + "'; the algorithms are " + algorithmNames());
}

}  // namespace Tessel::Cli
