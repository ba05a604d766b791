#include "supervised/ensemble/member_texts.h"

#include <cmath>

#include <tessel/data/convert.h>

namespace Tessel::Ensemble {

void requireSameFeatures(const FittedSchema& ensemble, const FittedSchema& member) {
    const auto isSame = [](const FeatureSchema& a, const FeatureSchema& b) {
        return a.name == b.name && a.isCategorical == b.isCategorical &&
               (!a.isCategorical || a.categories->levels() == b.categories->levels());
    };
    if (!std::equal(ensemble.features.begin(), ensemble.features.end(), member.features.begin(),
                    member.features.end(), isSame))
        throw ConstraintViolation("weakLearners", "Members have the variables of the ensemble.");
}

void IClassifier::writeBody(web::json::value& model) const { writeMembers(*this, model); }
void IClassifier::readBody(const JSON::Members& model) { readMembers(*this, schema, model); }
void IRegressor::writeBody(web::json::value& model) const { writeMembers(*this, model); }
void IRegressor::readBody(const JSON::Members& model) { readMembers(*this, schema, model); }

}  // namespace Tessel::Ensemble
