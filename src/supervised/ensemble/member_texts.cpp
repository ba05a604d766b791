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
    std::vector<web::json::value> columns;
    for (int i = 0; i < outOfBagError.getNumCols(); ++i) {
        web::json::value column = web::json::value::object(true);
        JSONModel::set(column, L"name", JSON::fromText(outOfBagError.getColName(i)));
        JSONModel::set(column, L"values",
                       JSONModel::fromNumbers(outOfBagError(Util::all, i).toDoubleVector()));
        columns.push_back(std::move(column));
    }
    JSONModel::set(model, L"outOfBagError", web::json::value::array(std::move(columns)));
}

void IOutOfBag::readOutOfBag(const JSON::Members& model) {
    const web::json::value* const columns = model.find("outOfBagError");
    if (!columns) return;
    DataFrame table(outOfBagError.getName());
    for (const web::json::value& element : JSON::toArray(*columns, "outOfBagError")) {
        const JSON::Members column(element, "A column");
        table.append(DataFrameColumn(JSON::toText(column.at("name"), "name"),
                                     JSON::toVector(column.at("values"), "values")));
    }
    table.setRowNames(Util::generateNames(L"", 1, table.getNumRows()));
    outOfBagError = std::move(table);
}

}  // namespace Tessel::Ensemble
