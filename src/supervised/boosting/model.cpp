#include "supervised/boosting/model.h"

#include <tessel/data/convert.h>

namespace Tessel::Regression::Boosting {

void IModel::describe(StringVector& labels, StringVector& values) const {
    labels.append(StringVector{L"Mean response", L"Step size"});
    values.append(StringVector{Convert::toString(meanResponse), Convert::toString(stepSize)});
}

}  // namespace Tessel::Regression::Boosting
