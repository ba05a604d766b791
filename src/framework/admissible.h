#pragma once

#include <map>

#include <tessel/framework/errors.h>
#include <tessel/framework/supervised.h>

#include "framework/parameter.h"

// The implementations behind the capability interfaces of estimators: the parameters and their checks.

namespace Tessel {

/// Prior probabilities by class label.
using PriorProbs = std::map<WString, double>;
template <>
struct ParameterType<PriorProbs> {
    static constexpr const wchar_t* word = L"PriorProbs";
    static WString text(const PriorProbs& priors);
    static web::json::value toJSON(const PriorProbs& priors);
    static std::optional<PriorProbs> fromJSON(const web::json::value& json);
};

/// Observation weights. Tables tell how many there are, `Ladon` text holds all of them.
class WeightsParameter : public Parameter<Vector> {
 public:
    using Parameter::Parameter;

 protected:
    WString typeWord() const override { return L"Weights"; }
    WString valueText(const Vector& weights) const override;
};

/// Holds observation weights.
class IWeightsAdmissible {
 public:
    WeightsParameter weights{L"weights", L"Observation weights"};

    /// @throws IncompatibleSizes unless there are none or one per row, NonPositiveWeights,
    /// ConstraintViolation when their sum overflows
    void validateWeights(int numRows) const;
};

namespace CategoricalVariables {

/// Holds the names and positions of features to be treated as categorical.
class IAdmissible {
 public:
    Parameter<StringVector> categoricalFeaturesNames{L"categoricalFeaturesNames", L"Categorical features"};
    Parameter<IntVector> categoricalFeaturesOffsets{L"categoricalFeaturesOffsets",
                                                    L"Categorical feature offsets"};

    /// The positions in `features` of what was named or listed, ascending, each once.
    /// @throws NotAValidColName, ColumnIndexOutOfRange
    IntVector categoricalPositions(const DataFrame& features) const;
    /// A row per name or offset given: columns "Name" and "Offset", one of them empty.
    DataFrame categoricalFeaturesInfo() const;
};

}  // namespace CategoricalVariables

namespace Classification::PriorProbability {

/// Explicit priors.
class PriorProbsParameter : public Parameter<PriorProbs> {
 public:
    using Parameter::Parameter;

 protected:
    WString admissibleValues() const override { return L"[0,1] and sum=1"; }
};

/// Holds the prior-probability method and explicit priors.
class IAdmissible {
 public:
    EnumParameter<PriorProbMethodType> priorProbMethod{L"priorProbMethod",
                                                       L"Prior probability method",
                                                       PriorProbMethodType::EMPIRICAL,
                                                       {{PriorProbMethodType::EMPIRICAL, L"EMPIRICAL"},
                                                        {PriorProbMethodType::UNIFORM, L"UNIFORM"},
                                                        {PriorProbMethodType::EXPLICIT, L"EXPLICIT"}}};
    PriorProbsParameter priorProb{L"priorProb", L"Prior probabilities"};

    void setPriorProb(const WString& classLabel, double probability);
    /// Priors without a method are EXPLICIT, as `setPriorProb` makes them.
    void completePriors();
    double getPriorProb(const WString& classLabel) const;
    /// Explicit priors, while they are the chosen method, must be in [0, 1] and sum to 1.
    /// @throws ValueOutOfRange, IncorrectTotalValue
    void validatePriors() const;
    /// The priors of the classes by the chosen method, in their order.
    /// @throws NotASetMember for a prior of an unknown class, ConstraintViolation for a class without prior.
    Vector priors(const StringVector& classes, const std::vector<double>& counts) const;
};

}  // namespace Classification::PriorProbability
}  // namespace Tessel
