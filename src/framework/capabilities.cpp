#include <tessel/framework/capabilities.h>
#include <tessel/framework/supervised.h>

// The destructors stand here so that the interfaces' type information has one home.

namespace Tessel {

ModelNameIdentifiable::~ModelNameIdentifiable() = default;
Validatable::~Validatable() = default;
Transformable::~Transformable() = default;
Forecastable::~Forecastable() = default;
WeightsAdmissible::~WeightsAdmissible() = default;
CategoricalVariables::Retrievable::~Retrievable() = default;

bool Validatable::isValid() const noexcept {
    try {
        validate();
        return true;
    } catch (...) {
        return false;
    }
}

namespace Supervised {

Scorable::~Scorable() = default;
Classification::Classifiable::~Classifiable() = default;
Classification::PriorProbsAdmissible::~PriorProbsAdmissible() = default;

bool Validatable::isValid(const DataFrame& features, const DataFrameColumn& target) const noexcept {
    try {
        validate(features, target);
        return true;
    } catch (...) {
        return false;
    }
}

DataFrameColumn targetColumn(const DataFrame& target) {
    if (target.getNumCols() != 1) throw NumColumnsMismatch(1, target.getNumCols());
    return target(Util::all, 0);
}

}  // namespace Supervised
}  // namespace Tessel
