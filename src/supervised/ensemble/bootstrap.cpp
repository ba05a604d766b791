#include <map>
#include <mutex>

#include <tessel/data/convert.h>
#include <tessel/data/util/random.h>
#include <tessel/data/util/sets.h>
#include <tessel/framework/errors.h>

#include "engine/ensemble/out_of_bag.h"
#include "engine/ensemble/resample.h"
#include "supervised/ensemble/estimator.h"
#include "supervised/ensemble/fit_learners.h"

namespace Tessel::Ensemble {
namespace {

using Engine::Ensemble::OutOfBagLog;
using Supervised::Resample;

Resample bootstrap(int numRows, int seed) {
    IntVector rows = Util::sample(numRows, numRows, seed, Sampling::ReplaceType::WITH_REPLACEMENT);
    return Resample::of(std::move(rows).elements(), numRows);
}

DataFrame errorTable(const OutOfBagLog& log, const WString& column) {
    DataFrame table(L"Out-of-bag Error");
    table.append(DataFrameColumn(column, Vector(log.errors)));
    table.append(DataFrameColumn(L"#Records", Vector(log.numRecords.begin(), log.numRecords.end())));
    table.setRowNames(Util::generateNames(L"", 1, table.getNumRows()));
    return table;
}

/// Takes learners as they come, from any thread, and passes them on in the order of their positions.
template <class Item>
class Sequencer {
 public:
    template <class Consume>
    void put(int position, Item item, Consume&& consume) {
        const std::lock_guard lock(mutex_);
        waiting_.emplace(position, std::move(item));
        for (auto first = waiting_.begin(); first != waiting_.end() && first->first == next_;
             first = waiting_.erase(first), ++next_)
            consume(first->second);
    }

 private:
    std::mutex mutex_;
    std::map<int, Item> waiting_;
    int next_ = 0;
};

/// One learner's model, the rows that it saw, and what it predicts of all rows.
template <class Model, class Prediction>
struct Fitted {
    std::shared_ptr<Model> model;
    std::vector<std::int32_t> multiplicities;
    std::vector<Prediction> predictions;
};

}  // namespace

void fitBootstrapped(const IClassifierEnsemble& estimator, const Classification::TrainingSet& data, int seed,
                     IClassifierMembers& members, IOutOfBag& outOfBag) {
    const int numRows = data.features.schema.numRows, numLearners = estimator.numWeakLearners.get();
    const StringVector& classes = data.target.classes;
    members.algorithm = estimator.learner(0)->ladonIdentity().algorithm;
    const auto preparation = estimator.prepareLearners(data.features, false);

    constexpr std::size_t kMaxNumVotes = std::size_t{1} << 27;
    const bool isJudged = data.target.codes.size() <= kMaxNumVotes / classes.size();
    const std::size_t success =
        estimator.successClass.get().empty() ? 1 : classes.find(estimator.successClass.get());
    Engine::Ensemble::OutOfBagVotes votes(
        isJudged ? std::span<const std::int32_t>(data.target.codes) : std::span<const std::int32_t>(),
        classes.size(), success, estimator.successProbability.get());
    using Member = Fitted<Classification::IModelable, std::int32_t>;
    Sequencer<Member> sequencer;
    const auto fit = [&](int position, const Progress& progress) {
        Resample resample = bootstrap(numRows, Engine::Ensemble::learnerSeed(seed, position));
        if (!Engine::Ensemble::coversClasses(resample.rows, data.target.codes, classes.size()))
            throw EnsembleSamplingMissedClass();
        Member member;
        member.model = estimator.learner(position)->fitResample(data.features, data.target, resample,
                                                                preparation.get(), progress);
        if (isJudged) {
            member.predictions.resize(data.target.codes.size());
            member.model->classify(data.features.columns, member.predictions);
            member.multiplicities = std::move(resample.multiplicities);
        }
        sequencer.put(position, std::move(member), [&](Member& next) {
            if (isJudged) votes.add(next.multiplicities, next.predictions);
            members.add(std::move(next.model), 1.0);
        });
    };
    fitLearners(numLearners, data.progress, estimator.getModelName(), fit,
                !estimator.learner(0)->isFittedAlone(numRows));
    if (isJudged) outOfBag.outOfBagError = errorTable(votes.log(), L"Error Rate");
}

void fitBootstrapped(const IRegressorEnsemble& estimator, const Regression::TrainingSet& data, int seed,
                     IRegressorMembers& members, IOutOfBag& outOfBag) {
    const int numRows = data.features.schema.numRows, numLearners = estimator.numWeakLearners.get();
    members.algorithm = estimator.learner(0)->ladonIdentity().algorithm;
    const auto preparation = estimator.prepareLearners(data.features, false);

    Engine::Ensemble::OutOfBagMeans means(data.target);
    using Member = Fitted<Regression::IModelable, double>;
    Sequencer<Member> sequencer;
    const auto fit = [&](int position, const Progress& progress) {
        Resample resample = bootstrap(numRows, Engine::Ensemble::learnerSeed(seed, position));
        Member member;
        member.model = estimator.learner(position)->fitResample(data.features, data.target, resample,
                                                                preparation.get(), progress);
        member.predictions.resize(data.target.size());
        member.model->score(data.features.columns, member.predictions);
        member.multiplicities = std::move(resample.multiplicities);
        sequencer.put(position, std::move(member), [&](Member& next) {
            means.add(next.multiplicities, next.predictions);
            members.add(std::move(next.model), 1.0);
        });
    };
    fitLearners(numLearners, data.progress, estimator.getModelName(), fit,
                !estimator.learner(0)->isFittedAlone(numRows));
    outOfBag.outOfBagError = errorTable(means.log(), L"MSE");
}

}  // namespace Tessel::Ensemble
