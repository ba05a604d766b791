#include <cmath>

#include <tessel/data/errors.h>
#include <tessel/data/util/association.h>

#include "data/util/compensated_sum.h"
#include "data/util/contingency.h"
#include "data/util/sample.h"
#include "data/util/tail_probabilities.h"

namespace Tessel::Util {
namespace {

double giniOf(std::span<const double> counts) {
    const std::size_t numClasses = counts.size();
    const Numeric::CompensatedSum sum =
        Numeric::compensatedSumOf(numClasses, [&](std::size_t i) { return counts[i]; });
    const double total = sum.value();
    if (total == 0.0) return Numeric::kNaN;
    // 1 - sum(p^2) as the sum of p (1 - p), which keeps its digits when one class has nearly all.
    return Numeric::sumOf(numClasses, [&](std::size_t i) {
        const double others = (total - counts[i]) + sum.remainder();
        return counts[i] / total * (others / total);
    });
}

}  // namespace

double giniIndex(const Vector& classCounts) {
    const std::vector<double> counts = Numeric::presentValues(classCounts);
    for (const double count : counts)
        if (count < 0.0 || std::isinf(count))
            throw ConstraintViolation("Class counts", "The values must be finite and not negative.");
    return giniOf(counts);
}

double giniIndex(const DataFrameColumn& column) {
    return giniOf(Numeric::countsOf(Numeric::categoriesOf(column)));
}

double mutualInformation(const DataFrameColumn& x, const DataFrameColumn& y, double base) {
    if (!(base > 1.0)) throw ConstraintViolation("Base", "The value must be greater than 1.");
    const Numeric::ContingencyTable table(x, y);
    return table.divergence(Numeric::entropyExcess) / table.total() / std::log(base);
}

}  // namespace Tessel::Util
