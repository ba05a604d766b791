#include "learners.h"

#include <algorithm>

#include "terminal.h"

namespace Tessel::Cli {
namespace {

template <class Estimator>
class LearnerOf : public Learner {
 public:
    EstimatorHandle& estimator() override { return estimator_; }

    std::unique_ptr<Supervised::Modelable> fit(const TrainingData& training,
                                               const TrainingData* validation) const override {
        using Model = decltype(estimator_.fit(training.features, training.target));
        if constexpr (requires {
                          estimator_.fit(training.features, training.features, training.target,
                                         training.target);
                      })
            if (validation)
                return std::make_unique<Model>(estimator_.fit(training.features, validation->features,
                                                              training.target, validation->target));
        return std::make_unique<Model>(estimator_.fit(training.features, training.target));
    }

 private:
    Estimator estimator_;
};

template <class Estimator>
Algorithm classifier(const WString& name) {
    return {name, Ladon::TaskKind::CLASSIFICATION,
            []() -> std::unique_ptr<Learner> { return std::make_unique<LearnerOf<Estimator>>(); }};
}
template <class Estimator>
Algorithm regressor(const WString& name) {
    return {name, Ladon::TaskKind::REGRESSION,
            []() -> std::unique_ptr<Learner> { return std::make_unique<LearnerOf<Estimator>>(); }};
}

}  // namespace

const std::vector<Algorithm>& algorithms() {
    using namespace Ladon::ModelAlgorithm;
    static const std::vector<Algorithm> all{
        classifier<Classification::DecisionTree::Estimator>(DECISION_TREE),
        classifier<Classification::NaiveBayes::Estimator>(NAIVE_BAYES),
        regressor<Regression::DecisionTree::Estimator>(DECISION_TREE),
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

std::pair<const Algorithm*, std::unique_ptr<Learner>> learnerOf(const WString& ladon,
                                                                const std::string& source) {
    for (const Algorithm& algorithm : algorithms()) {
        std::unique_ptr<Learner> learner = algorithm.makeLearner();
        try {
            learner->estimator().fromLadonString(ladon);
        } catch (const UnsupportedJSONModel&) {  // of another algorithm, or of none
            continue;
        }
        requireAllTaken(algorithm, learner->estimator(), ladon);
        return {&algorithm, std::move(learner)};
    }
    throw Failure(source + ": is no Ladon text of an estimator; the algorithms are " + algorithmNames());
}

}  // namespace Tessel::Cli
