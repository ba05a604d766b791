#include <algorithm>
#include <cmath>

#include <tessel/data/errors.h>
#include <tessel/data/util/association.h>
#include <tessel/data/util/statistics.h>

#include "data/util/compensated_sum.h"
#include "data/util/contingency.h"
#include "data/util/sample.h"
#include "data/util/tail_probabilities.h"

namespace Tessel::Util {
namespace {

using Numeric::kNaN;

ChiSquaredTestResult chiSquaredResult(double statistic, double degreesOfFreedom) {
    const bool exists = degreesOfFreedom > 0.0 && !std::isnan(statistic);
    return {statistic, degreesOfFreedom,
            exists ? Numeric::chiSquaredUpperTail(statistic, degreesOfFreedom) : kNaN};
}

ChiSquaredTestResult independence(const Numeric::ContingencyTable& table) {
    const double statistic = table.divergence([](double excess) { return excess * excess; });
    return chiSquaredResult(statistic, table.degreesOfFreedom());
}

FTestResult compareVariances(std::span<const double> x, std::span<const double> y) {
    const Numeric::Deviations first = Numeric::deviationsOf(Numeric::presentValues(x));
    const Numeric::Deviations second = Numeric::deviationsOf(Numeric::presentValues(y));
    const auto degrees = [](const Numeric::Deviations& sample) {
        return static_cast<double>(sample.count()) - 1.0;
    };
    FTestResult result{kNaN, degrees(first), degrees(second), kNaN};
    // The ratio of the deviations squared: the variances themselves may overflow.
    const double ratio = first.standardDeviation() / second.standardDeviation();
    result.statistic = ratio * ratio;
    if (!std::isnan(result.statistic))
        result.pValue = Numeric::fTwoSided(result.statistic, result.numeratorDegreesOfFreedom,
                                           result.denominatorDegreesOfFreedom);
    return result;
}

WelchTestResult compareMeans(std::span<const double> x, std::span<const double> y, double confidenceLevel) {
    if (!(confidenceLevel > 0.0 && confidenceLevel < 1.0))
        throw ValueOutOfRange("Confidence level", 0.0, 1.0);
    const Numeric::Deviations first = Numeric::deviationsOf(Numeric::presentValues(x));
    const Numeric::Deviations second = Numeric::deviationsOf(Numeric::presentValues(y));
    const auto firstCount = static_cast<double>(first.count());
    const auto secondCount = static_cast<double>(second.count());
    const double firstError = first.standardDeviation() / std::sqrt(firstCount);
    const double secondError = second.standardDeviation() / std::sqrt(secondCount);

    WelchTestResult result{kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    result.difference = (first.centre.high - second.centre.high) + (first.centre.low - second.centre.low);
    result.standardError = std::hypot(firstError, secondError);
    if (!(result.standardError > 0.0)) return result;

    const double share = Util::sqr(firstError / result.standardError);
    const double otherShare = Util::sqr(secondError / result.standardError);
    result.degreesOfFreedom =
        1.0 / (share * share / (firstCount - 1.0) + otherShare * otherShare / (secondCount - 1.0));
    result.statistic = result.difference / result.standardError;
    result.pValue = Numeric::studentTwoSided(result.statistic, result.degreesOfFreedom);
    const double reach =
        Numeric::studentTwoSidedQuantile(confidenceLevel, result.degreesOfFreedom) * result.standardError;
    result.lower = result.difference - reach;
    result.upper = result.difference + reach;
    return result;
}

}  // namespace

ChiSquaredTestResult chiSquaredTest(const Vector& observed, const Vector& expected, int numEstimated) {
    if (numEstimated < 0)
        throw ConstraintViolation("Number of estimated parameters", "The value must not be negative.");
    const Numeric::Pairs cells = Numeric::completePairs(observed, expected);
    const std::size_t count = cells.x.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (!(cells.x[i] >= 0.0) || std::isinf(cells.x[i]))
            throw ConstraintViolation("Observed counts", "The values must be finite and not negative.");
        if (!(cells.y[i] > 0.0) || std::isinf(cells.y[i]))
            throw ConstraintViolation("Expected counts", "The values must be finite and greater than 0.");
    }
    if (count == 0) return chiSquaredResult(kNaN, 0.0);
    constexpr double tolerance = 1e-8;
    const double total = Numeric::sumOf(count, [&](std::size_t i) { return cells.x[i]; });
    const double expectedTotal = Numeric::sumOf(count, [&](std::size_t i) { return cells.y[i]; });
    if (std::abs(total - expectedTotal) > tolerance * std::max(total, expectedTotal))
        throw IncorrectTotalValue("Expected counts", expectedTotal);

    const double statistic = Numeric::sumOf(count, [&](std::size_t i) {
        const double difference = cells.x[i] - cells.y[i];
        return difference * (difference / cells.y[i]);
    });
    return chiSquaredResult(statistic, std::max(0.0, static_cast<double>(count) - 1.0 - numEstimated));
}

ChiSquaredTestResult chiSquaredTest(const Matrix& counts) {
    return independence(Numeric::ContingencyTable(counts));
}

ChiSquaredTestResult chiSquaredTest(const DataFrameColumn& x, const DataFrameColumn& y) {
    return independence(Numeric::ContingencyTable(x, y));
}

FTestResult fTest(const Vector& x, const Vector& y) { return compareVariances(x, y); }
FTestResult fTest(const DataFrameColumn& x, const DataFrameColumn& y) {
    return compareVariances(x.values(), y.values());
}

WelchTestResult welchTest(const Vector& x, const Vector& y, double confidenceLevel) {
    return compareMeans(x, y, confidenceLevel);
}
WelchTestResult welchTest(const DataFrameColumn& x, const DataFrameColumn& y, double confidenceLevel) {
    return compareMeans(x.values(), y.values(), confidenceLevel);
}

}  // namespace Tessel::Util
