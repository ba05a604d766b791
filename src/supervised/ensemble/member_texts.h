#pragma once

#include <algorithm>
#include <cmath>

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "serialization/json/read.h"
#include "supervised/ensemble/model.h"
#include "supervised/learner_catalog.h"

// The JSON members of ensembles: "wlAlgorithm", "numWeakLearners", "weights" and "weakLearners", the models
// of the members as texts of their own.

namespace Tessel::Ensemble {

/// A model to read a member from. @throws UnableToCreateWeakLearner
inline std::shared_ptr<Classification::IModelable> blankMember(const IClassifierMembers&,
                                                               const WString& algorithm) {
    const auto* const family = LearnerCatalog::findClassifier(algorithm);
    if (family == nullptr || !family->canBeWeak) throw UnableToCreateWeakLearner();
    return family->makeBlank();
}
inline std::shared_ptr<Regression::IModelable> blankMember(const IRegressorMembers&,
                                                           const WString& algorithm) {
    const auto* const family = LearnerCatalog::findRegressor(algorithm);
    if (family == nullptr || !family->canBeWeak) throw UnableToCreateWeakLearner();
    return family->makeBlank();
}

/// Members read the columns as the ensemble does. @throws ConstraintViolation where they would not.
void requireSameFeatures(const FittedSchema& ensemble, const FittedSchema& member);

/// Weights are divided by their sum. @throws ConstraintViolation
void requireFiniteSum(const Vector& weights);

template <class Members>
void writeMembers(const Members& members, web::json::value& model) {
    std::vector<web::json::value> values;
    for (const auto& member : members.weakModels) values.push_back(member->toJSONValue());
    JSONModel::set(model, L"wlAlgorithm", JSON::fromText(members.algorithm));
    JSONModel::set(model, L"numWeakLearners", web::json::value::number(static_cast<int>(values.size())));
    JSONModel::set(model, L"weights", JSONModel::fromNumbers(members.weights));
    JSONModel::set(model, L"weakLearners", web::json::value::array(std::move(values)));
}

template <class Members>
void readMembers(Members& members, const FittedSchema& schema, const JSON::Members& model) {
    members.algorithm = JSON::toText(model.at("wlAlgorithm"), "wlAlgorithm");
    const web::json::array& values = JSON::toArray(model.at("weakLearners"), "weakLearners");
    const Vector weights = JSON::toVector(model.at("weights"), "weights");
    if (values.size() == 0) throw ConstraintViolation("weakLearners", "There must be one at least.");
    if (weights.size() != values.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(values.size()),
                                  static_cast<std::int64_t>(weights.size()));
    for (std::size_t m = 0; m < weights.size(); ++m) {
        if (!(weights[m] >= 0.0) || std::isinf(weights[m]))
            throw ConstraintViolation("weights", "Weights are finite and not negative.");
        const auto member = blankMember(members, members.algorithm);
        member->fromJSONValue(values.at(m));
        requireSameFeatures(schema, member->schema);
        members.add(member, weights[m]);
    }
    requireFiniteSum(weights);
}

}  // namespace Tessel::Ensemble
