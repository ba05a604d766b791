#include "supervised/find_best_model/estimator.h"

#include <tessel/data/convert.h>
#include <tessel/framework/ladon.h>

#include "data/column_access.h"
#include "framework/learner_access.h"
#include "supervised/find_best_model/model.h"
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

template <class Base>
void ISearch<Base>::addLearner(const Base& learner) {
    const Base* const ofKind = nullptr;
    const LearnerType type = typeOfAlgorithm(kindOf(ofKind), learner.ladonIdentity().algorithm);
    if (type == LearnerType::UNKNOWN)
        throw ConstraintViolation("Learners", "The value must be a pre-defined set member.");
    candidates[type] = copyOf(learner);
}

template <class Base>
void ISearch<Base>::reset() {
    Base::reset();
    candidates.clear();
}

template <class Base>
void ISearch<Base>::writeLearners(web::json::value& description) const {
    web::json::value learners = web::json::value::array(candidates.size());
    std::size_t position = 0;
    for (const auto& [type, candidate] : candidates) learners[position++] = candidate->toLadonValue();
    description[JSON::toNative(Ladon::Keyword::LEARNERS)] = learners;
}

template <class Base>
void ISearch<Base>::readLearners(const web::json::value& description) {
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

template <class Base>
void ISearch<Base>::describeLearners(StringVector& names, StringVector& values) const {
    const Base* const ofKind = nullptr;
    StringVector learners;
    for (const auto& [type, candidate] : candidates) learners.push_back(learnerName(kindOf(ofKind), type));
    names.push_back(L"Learners");
    values.push_back(Util::join(learners, L", "));
}

template <class Base>
template <class Searched, class Fit>
void ISearch<Base>::search(Searched& searched, const Fit& fit) const {
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
            searched.models[type] = fit(*own);
        } catch (const FitCancelled&) {
            throw;
        } catch (const Exception& failure) {
            searched.log.push_back(learnerName(kindOf(ofKind), type) + L" Fitting: " +
                                   Convert::fromUtf8(failure.what()));
        }
    }
    if (searched.models.empty()) searched.log.push_back(L"No models were fit.");
}

template class ISearch<Classification::IEstimator>;
template class ISearch<Regression::IEstimator>;

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

std::shared_ptr<IModelable> IEstimator::searchWith(const DataFrame& features, const DataFrameColumn& target,
                                                   const Fit& fit) const {
    validate();
    auto model = std::make_shared<IModel>();
    search(*model, fit);
    model->setName(getName());
    if (model->models.empty()) {
        model->schema = Tessel::FindBestModel::schemaOf(features, target);
        return model;
    }
    const IModelable& first = *model->models.begin()->second;
    model->schema = first.schema;
    // Set as it is, so that each model keeps the success class that it has by default.
    model->classSchema = first.classSchema;
    model->classSchema.successClass = successClass.get();
    if (successClass.get().empty() && first.classSchema.classes.size() == 2)
        model->classSchema.successClass = first.classSchema.classes.front();
    model->classSchema.successProbability = successProbability.get();
    return model;
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrameColumn& target) const {
    return searchWith(features, target, [&](const Classification::IEstimator& candidate) {
        return candidate.fit(features, target);
    });
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrame& validFeatures,
                                            const DataFrameColumn& target,
                                            const DataFrameColumn& validTarget) const {
    return searchWith(features, target, [&](const Classification::IEstimator& candidate) {
        return candidate.fit(features, validFeatures, target, validTarget);
    });
}

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

IEstimator::IEstimator() : ISearch(kModelName) {}

IEstimatable::LadonIdentity IEstimator::ladonIdentity() const {
    return {Ladon::Keyword::ESTIMATOR, Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::FIND_BEST_MODEL};
}

std::shared_ptr<IModelable> IEstimator::searchWith(const DataFrame& features, const DataFrameColumn& target,
                                                   const Fit& fit) const {
    validate();
    auto model = std::make_shared<IModel>();
    search(*model, fit);
    model->setName(getName());
    model->schema = model->models.empty() ? Tessel::FindBestModel::schemaOf(features, target)
                                          : model->models.begin()->second->schema;
    return model;
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrameColumn& target) const {
    return searchWith(features, target, [&](const Regression::IEstimator& candidate) {
        return candidate.fit(features, target);
    });
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrame& validFeatures,
                                            const DataFrameColumn& target,
                                            const DataFrameColumn& validTarget) const {
    return searchWith(features, target, [&](const Regression::IEstimator& candidate) {
        return candidate.fit(features, validFeatures, target, validTarget);
    });
}

}  // namespace Regression::FindBestModel
}  // namespace Tessel
