#include "supervised/ensemble/member_texts.h"

#include <cmath>

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

void IClassifier::writeBody(web::json::value& model) const { writeMembers(*this, model); }
void IClassifier::readBody(const JSON::Members& model) { readMembers(*this, schema, model); }
void IRegressor::writeBody(web::json::value& model) const { writeMembers(*this, model); }
void IRegressor::readBody(const JSON::Members& model) { readMembers(*this, schema, model); }

void IOutOfBag::writeOutOfBag(web::json::value& model) const {
    if (outOfBagError.getNumCols() == 0) return;
    web::json::value columns = web::json::value::object(true);
    for (int i = 0; i < outOfBagError.getNumCols(); ++i)
        JSONModel::set(columns, outOfBagError.getColName(i),
                       JSONModel::fromNumbers(outOfBagError(Util::all, i).toDoubleVector()));
    JSONModel::set(model, L"outOfBagError", std::move(columns));
}

void IOutOfBag::readOutOfBag(const JSON::Members& model) {
    const web::json::value* const columns = model.find("outOfBagError");
    if (!columns) return;
    if (!columns->is_object()) throw MalformedJSON("outOfBagError must be an object.");
    DataFrame table(outOfBagError.getName());
    for (const auto& [name, numbers] : columns->as_object())
        table.append(DataFrameColumn(JSON::fromNative(name), JSON::toVector(numbers, "outOfBagError")));
    table.setRowNames(Util::generateNames(L"", 1, table.getNumRows()));
    outOfBagError = std::move(table);
}

}  // namespace Tessel::Ensemble
