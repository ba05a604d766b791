#include "supervised/ensemble/member_texts.h"

#include <cmath>
#include <numeric>

#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>

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

void requireFiniteSum(const Vector& weights) {
    if (!std::isfinite(std::accumulate(weights.begin(), weights.end(), 0.0)))
        throw ConstraintViolation("weights", "The sum of the weights is finite.");
}

void IClassifier::writeBody(web::json::value& model) const { writeMembers(*this, model); }
void IClassifier::readBody(const JSON::Members& model) { readMembers(*this, schema, model); }
void IRegressor::writeBody(web::json::value& model) const { writeMembers(*this, model); }
void IRegressor::readBody(const JSON::Members& model) { readMembers(*this, schema, model); }

void IOutOfBag::writeOutOfBag(web::json::value& model) const {
    if (outOfBagError.getNumCols() > 0)
        JSONModel::set(model, L"outOfBagError", JSONModel::fromNumericTable(outOfBagError));
}

void IOutOfBag::readOutOfBag(const JSON::Members& model) {
    const web::json::value* const columns = model.find("outOfBagError");
    if (!columns) return;
    DataFrame table = JSONModel::toNumericTable(*columns, "outOfBagError", outOfBagError.getName());
    table.setRowNames(Util::generateNames(L"", 1, table.getNumRows()));
    outOfBagError = std::move(table);
}

}  // namespace Tessel::Ensemble
