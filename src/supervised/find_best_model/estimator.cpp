#include "supervised/find_best_model/estimator.h"

#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/framework/ladon.h>

#include "data/column_access.h"
#include "framework/learner_access.h"
#include "supervised/learner_catalog.h"

namespace Tessel {

namespace FindBestModel {
namespace {

Kind kindOf(const Classification::IEstimator*) { return Kind::CLASSIFICATION; }
Kind kindOf(const Regression::IEstimator*) { return Kind::REGRESSION; }

const LearnerCatalog::ClassifierFamily* find(const Classification::IEstimator*, const WString& algorithm) {
    return LearnerCatalog::findClassifier(algorithm);
}
const LearnerCatalog::RegressorFamily* find(const Regression::IEstimator*, const WString& algorithm) {
    return LearnerCatalog::findRegressor(algorithm);
}

template <class Base>
std::shared_ptr<Base> copyOf(const Base& estimator) {
    return std::shared_ptr<Base>(static_cast<Base*>(estimator.clone().release()));
}

/// What is known of the data when no model could be fitted on them.
FittedSchema schemaOf(const DataFrame& features, const DataFrameColumn& target) {
    FittedSchema schema;
    for (int i = 0; i < features.getNumCols(); ++i)
        if (!ColumnAccess::isIndex(features, i))
            schema.features.push_back({features.getColName(i), false, {}});
    schema.indexColNames = features.getIndexedColNames();
    schema.rowNames = ColumnAccess::rowNames(features);
    schema.numRows = features.getNumRows();
    schema.targetName = target.getColName();
    return schema;
}

}  // namespace

template <class Base, class Modelable, class Searched>
void ISearch<Base, Modelable, Searched>::addLearner(const Base& learner) {
    const Base* const ofKind = nullptr;
    const LearnerType type = typeOfAlgorithm(kindOf(ofKind), learner.ladonIdentity().algorithm);
    if (type == LearnerType::UNKNOWN)
        throw ConstraintViolation("Learners", "The value must be a pre-defined set member.");
    candidates[type] = copyOf(learner);
}

template <class Base, class Modelable, class Searched>
void ISearch<Base, Modelable, Searched>::reset() {
    Base::reset();
    candidates.clear();
}

template <class Base, class Modelable, class Searched>
void ISearch<Base, Modelable, Searched>::writeLearners(web::json::value& description) const {
    web::json::value learners = web::json::value::array(candidates.size());
    std::size_t position = 0;
    for (const auto& [type, candidate] : candidates) learners[position++] = candidate->toLadonValue();
    description[JSON::toNative(Ladon::Keyword::LEARNERS)] = learners;
}

template <class Base, class Modelable, class Searched>
void ISearch<Base, Modelable, Searched>::readLearners(const web::json::value& description) {
    const Base* const ofKind = nullptr;
    const utility::string_t key = JSON::toNative(Ladon::Keyword::LEARNERS);
    candidates.clear();
    if (!description.has_field(key)) return;
    if (!description.at(key).is_array()) throw UnsupportedJSONModel();
    for (const web::json::value& learner : description.at(key).as_array()) {
        const WString algorithm = algorithmOf(learner);
        const auto* const family = find(ofKind, algorithm);
        const LearnerType type = typeOfAlgorithm(kindOf(ofKind), algorithm);
        if (family == nullptr || type == LearnerType::UNKNOWN) throw UnsupportedJSONModel();
        const std::shared_ptr<Base> candidate =
            copyOf(LearnerAccess::implementation(*family->makeEstimator()));
        candidate->fromLadonValue(learner);
        candidates[type] = candidate;
    }
}

template <class Base, class Modelable, class Searched>
void ISearch<Base, Modelable, Searched>::describeLearners(StringVector& names, StringVector& values) const {
    const Base* const ofKind = nullptr;
    StringVector learners;
    for (const auto& [type, candidate] : candidates) learners.push_back(learnerName(kindOf(ofKind), type));
    names.push_back(L"Learners");
    values.push_back(Util::join(learners, L", "));
}

template <class Base, class Modelable, class Searched>
void ISearch<Base, Modelable, Searched>::fitCandidates(Searched& model, const Fit& fit) const {
    const Base* const ofKind = nullptr;
    const Progress progress(this->progressCallback);
    const auto count = static_cast<double>(candidates.size());
    double numDone = 0.0;
    for (const auto& [type, candidate] : candidates) {
        const std::shared_ptr<Base> own = copyOf(*candidate);
        instruct(*own);
        own->progressCallback = progress.part(numDone / count, (numDone + 1.0) / count).callback();
        ++numDone;
        try {
            model.models[type] = fit(*own);
        } catch (const FitCancelled&) {
            throw;
        } catch (const Exception& failure) {
            model.log.push_back(learnerName(kindOf(ofKind), type) + L" Fitting: " +
                                Convert::fromUtf8(failure.what()));
        }
    }
    if (model.models.empty()) model.log.push_back(L"No models were fit.");
}

template <class Base, class Modelable, class Searched>
std::shared_ptr<Modelable> ISearch<Base, Modelable, Searched>::searchWith(const DataFrame& features,
                                                                          const DataFrameColumn& target,
                                                                          const Fit& fit) const {
    this->validate();
    auto model = std::make_shared<Searched>();
    fitCandidates(*model, fit);
    model->setName(this->getName());
    if (model->models.empty())
        model->schema = schemaOf(features, target);
    else
        adopt(*model, *model->models.begin()->second);
    return model;
}

template <class Base, class Modelable, class Searched>
std::shared_ptr<Modelable> ISearch<Base, Modelable, Searched>::fit(const DataFrame& features,
                                                                   const DataFrameColumn& target) const {
    return searchWith(features, target,
                      [&](const Base& candidate) { return candidate.fit(features, target); });
}

template <class Base, class Modelable, class Searched>
std::shared_ptr<Modelable> ISearch<Base, Modelable, Searched>::fit(const DataFrame& features,
                                                                   const DataFrame& validFeatures,
                                                                   const DataFrameColumn& target,
                                                                   const DataFrameColumn& validTarget) const {
    return searchWith(features, target, [&](const Base& candidate) {
        return candidate.fit(features, validFeatures, target, validTarget);
    });
}

template class ISearch<Classification::IEstimator, Classification::IModelable,
                       Classification::FindBestModel::IModel>;
template class ISearch<Regression::IEstimator, Regression::IModelable, Regression::FindBestModel::IModel>;

}  // namespace FindBestModel

namespace Classification::FindBestModel {

IEstimator::IEstimator() : ISearch(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::CLASSIFICATION,
            Ladon::ModelAlgorithm::FIND_BEST_MODEL};
}

void IEstimator::instruct(Classification::IEstimator& candidate) const {
    if (successClass.isSet()) candidate.successClass = successClass;
    if (successProbability.isSet()) candidate.successProbability = successProbability;
    if (priorProbMethod.isSet()) {
        candidate.priorProbMethod = priorProbMethod;
        candidate.priorProb = priorProb;
    }
}

void IEstimator::adopt(IModel& model, const IModelable& first) const {
    ISearch::adopt(model, first);
    // Set as it is, so that each model keeps the success class that it has by default. Where these differ,
    // the search compares by the first of two classes.
    model.classSchema = first.classSchema;
    const WString& ofFirst = first.classSchema.successClass;
    const bool areAlike = std::all_of(model.models.begin(), model.models.end(), [&](const auto& candidate) {
        return candidate.second->classSchema.successClass == ofFirst;
    });
    const StringVector& classes = first.classSchema.classes;
    if (!areAlike) model.classSchema.successClass = classes.size() == 2 ? classes.front() : WString();
    model.classSchema.successProbability = successProbability.get();
}

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

IEstimator::IEstimator() : ISearch(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::FIND_BEST_MODEL};
}

}  // namespace Regression::FindBestModel
}  // namespace Tessel
