#include "framework/admissible.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

namespace Tessel {

WString getPriorProbMethodTypeName(PriorProbMethodType method) {
    switch (method) {
        case PriorProbMethodType::EMPIRICAL:
            return L"Empirical";
        case PriorProbMethodType::UNIFORM:
            return L"Uniform";
        case PriorProbMethodType::EXPLICIT:
            return L"Explicit";
    }
    return {};
}

WString ParameterType<PriorProbs>::text(const PriorProbs& priors) {
    StringVector entries;
    for (const auto& [label, prior] : priors)
        entries.push_back(label + L": " + ParameterType<double>::text(prior));
    return entries.empty() ? WString() : entries.toString();
}

web::json::value ParameterType<PriorProbs>::toJSON(const PriorProbs& priors) {
    web::json::value object = web::json::value::object(true);
    for (const auto& [label, prior] : priors)
        object[JSON::toNative(label)] = ParameterType<double>::toJSON(prior);
    return object;
}

std::optional<PriorProbs> ParameterType<PriorProbs>::fromJSON(const web::json::value& json) {
    if (!json.is_object()) return std::nullopt;
    PriorProbs priors;
    for (const auto& [label, member] : json.as_object()) {
        const auto prior = ParameterType<double>::fromJSON(member);
        if (!prior) return std::nullopt;
        priors[JSON::fromNative(label)] = *prior;
    }
    return priors;
}

WString WeightsParameter::valueText(const Vector& weights) const {
    return weights.empty() ? WString() : Convert::toString(weights.size()) + L" weights";
}

void IWeightsAdmissible::validateWeights(int numRows) const {
    const Vector& values = weights.get();
    if (values.empty()) return;
    if (values.size() != static_cast<std::size_t>(numRows))
        throw IncompatibleSizes("There must be one observation weight per row: " + std::to_string(numRows) +
                                " rows, " + std::to_string(values.size()) + " weights.");
    const auto isPositive = [](double weight) { return weight > 0.0 && std::isfinite(weight); };
    if (!std::all_of(values.begin(), values.end(), isPositive)) throw NonPositiveWeights();
    if (!std::isfinite(std::accumulate(values.begin(), values.end(), 0.0)))
        throw ConstraintViolation(weights.getNarrowDescription(), "The sum of the weights must be finite.");
}

namespace CategoricalVariables {

IntVector IAdmissible::categoricalPositions(const DataFrame& features) const {
    IntVector positions;
    for (const WString& name : categoricalFeaturesNames.get()) {
        if (!features.isColumn(name))
            throw NotAValidColName(categoricalFeaturesNames.getNarrowDescription(), narrowText(name));
        positions.push_back(features.getColIndex(name));
    }
    for (const int offset : categoricalFeaturesOffsets.get()) {
        if (offset < 0 || offset >= features.getNumCols())
            throw ColumnIndexOutOfRange(offset, features.getNumCols());
        positions.push_back(offset);
    }
    std::sort(positions.begin(), positions.end());
    return IntVector(positions.begin(), std::unique(positions.begin(), positions.end()));
}

DataFrame IAdmissible::categoricalFeaturesInfo() const {
    const StringVector& given = categoricalFeaturesNames.get();
    StringVector names(given.begin(), given.end());
    Vector offsets(given.size(), std::numeric_limits<double>::quiet_NaN());
    names.setName(L"Name");
    offsets.setName(L"Offset");
    for (const int offset : categoricalFeaturesOffsets.get()) {
        names.push_back(L"");
        offsets.push_back(offset);
    }
    DataFrame table(L"Categorical Features");
    table.append(names);
    table.append(offsets);
    return table;
}

}  // namespace CategoricalVariables

namespace Classification::PriorProbability {

void IAdmissible::validatePriors() const {
    if (priorProbMethod.get() != PriorProbMethodType::EXPLICIT) return;
    double sum = 0.0;
    for (const auto& [label, prior] : priorProb.get()) {
        if (!(prior >= 0.0 && prior <= 1.0))
            throw ValueOutOfRange(priorProb.getNarrowDescription(), 0.0, 1.0);
        sum += prior;
    }
    constexpr double kTolerance = 1e-9;  // sums of decimal fractions such as 0.1 are not exact
    if (std::abs(sum - 1.0) > kTolerance) throw IncorrectTotalValue(priorProb.getNarrowDescription(), sum);
}

void IAdmissible::setPriorProb(const WString& classLabel, double probability) {
    PriorProbs priors = priorProb.get();
    priors[classLabel] = probability;
    priorProb.set(priors);
    priorProbMethod.set(PriorProbMethodType::EXPLICIT);
}

void IAdmissible::completePriors() {
    if (!priorProb.get().empty() && !priorProbMethod.isSet())
        priorProbMethod.set(PriorProbMethodType::EXPLICIT);
}

double IAdmissible::getPriorProb(const WString& classLabel) const {
    const auto found = priorProb.get().find(classLabel);
    if (found == priorProb.get().end())
        throw NotASetMember(priorProb.getNarrowDescription(), narrowText(classLabel));
    return found->second;
}

Vector IAdmissible::priors(const StringVector& classes, const std::vector<double>& counts) const {
    Vector priors(classes.size(), 1.0 / static_cast<double>(classes.size()));
    const double total = std::accumulate(counts.begin(), counts.end(), 0.0);
    switch (priorProbMethod.get()) {
        case PriorProbMethodType::UNIFORM:
            break;
        case PriorProbMethodType::EMPIRICAL:
            for (std::size_t k = 0; k < classes.size(); ++k) priors[k] = counts[k] / total;
            break;
        case PriorProbMethodType::EXPLICIT:
            for (const auto& [label, prior] : priorProb.get())
                if (!classes.exists(label))
                    throw NotASetMember(priorProb.getNarrowDescription(), narrowText(label));
            for (std::size_t k = 0; k < classes.size(); ++k) {
                const auto found = priorProb.get().find(classes[k]);
                if (found == priorProb.get().end())
                    throw ConstraintViolation(
                        priorProb.getNarrowDescription(),
                        "Class '" + narrowText(classes[k]) + "' has no prior probability.");
                priors[k] = found->second;
            }
            break;
    }
    return priors;
}

}  // namespace Classification::PriorProbability
}  // namespace Tessel
