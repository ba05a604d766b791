#include <cmath>

#include <tessel/data/util/error_measures.h>

#include "data/util/compensated_sum.h"
#include "data/util/sample.h"

namespace Tessel::Util {
namespace {

double squared(double error) { return error * error; }
double magnitude(double error) { return std::abs(error); }
double itself(double error) { return error; }

/// What the measures are made of: the errors of the complete pairs.
class Errors {
 public:
    Errors(const Vector& actual, const Vector& predicted)
        : pairs_(Numeric::completePairs(actual, predicted)) {}

    template <class Term>
    double sum(Term term) const {
        return Numeric::sumOf(pairs_.x.size(),
                              [&](std::size_t i) { return term(pairs_.x[i] - pairs_.y[i]); });
    }
    template <class Term>
    double mean(Term term) const {
        return pairs_.x.empty() ? Numeric::kNaN : sum(term) / static_cast<double>(pairs_.x.size());
    }

 private:
    Numeric::Pairs pairs_;
};

}  // namespace

double sumOfSquaredErrors(const Vector& actual, const Vector& predicted) {
    return Errors(actual, predicted).sum(squared);
}

double meanSquaredError(const Vector& actual, const Vector& predicted) {
    return Errors(actual, predicted).mean(squared);
}

double meanAbsoluteDeviation(const Vector& actual, const Vector& predicted) {
    return Errors(actual, predicted).mean(magnitude);
}

double meanAbsolutePercentageError(const Vector& actual, const Vector& predicted) {
    const Numeric::Pairs pairs = Numeric::completePairs(actual, predicted);
    std::vector<double> shares;
    for (std::size_t i = 0; i < pairs.x.size(); ++i)
        if (pairs.x[i] != 0.0) shares.push_back(std::abs((pairs.x[i] - pairs.y[i]) / pairs.x[i]));
    return 100.0 * Numeric::centreOf(shares).value();
}

double meanForecastError(const Vector& actual, const Vector& predicted) {
    return Errors(actual, predicted).mean(itself);
}

double cumulativeForecastError(const Vector& actual, const Vector& predicted) {
    return Errors(actual, predicted).sum(itself);
}

double trackingSignalError(const Vector& actual, const Vector& predicted) {
    const Errors errors(actual, predicted);
    return errors.sum(itself) / errors.mean(magnitude);
}

}  // namespace Tessel::Util
