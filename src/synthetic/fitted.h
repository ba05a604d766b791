#pragma once

#include <limits>
#include <vector>

#include <tessel/data/data_frame.h>

#include "engine/copula/dependence.h"
#include "engine/dist/goodness_of_fit.h"
#include "synthetic/vocabulary.h"

// What the generator learns, and the two steps of learning it.

namespace Tessel::SyntheticDataGeneration {

inline constexpr int kDefaultNumTerms = 2;
inline constexpr int kDefaultMaxTerms = 5;
inline constexpr GoodnessOfFitType kDefaultGoodnessOfFit = GoodnessOfFitType::ANDERSON_DARLING;

/// Points of a quantile function for drawing; three vectors of one length.
struct MetalogPoints {
    std::vector<double> probabilities, quantiles, densities;
};

/// The distribution of a column, or that there is none.
struct FittedColumn {
    WString name;
    std::vector<double> coefficients;  ///< of a `CMetalogDist`; empty without distribution
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    GoodnessOfFitType type = kDefaultGoodnessOfFit;            ///< what ranked the candidates
    std::vector<Engine::Dist::GoodnessOfFit> candidates = {};  ///< best first
    MetalogPoints curve = {};

    bool isFitted() const { return !coefficients.empty(); }
    int numTerms() const { return static_cast<int>(coefficients.size()); }
    /// @pre isFitted()
    Engine::Dist::CMetalogDist distribution() const {
        return {lower, upper, numTerms(), coefficients.data()};
    }
};

/// How the distribution of a column is to be fitted.
struct ColumnTask {
    bool isAuto = true;
    int numTerms = 0;  ///< 0: not set
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();
    bool usesSmallest = false, usesLargest = false;  ///< as bounds, in place of `lower` and `upper`
    GoodnessOfFitType type = kDefaultGoodnessOfFit;
    bool computesCurve = true;
};

/// Fits one column; what cannot be done is a line of the log.
FittedColumn fitColumn(const DataFrameColumn& column, const ColumnTask& task, StringVector& log);

/// An attempt to learn the dependence.
struct DependenceFit {
    CorrelationType type = CorrelationType::NONE;
    CopulaType copula = CopulaType::NONE;
    bool isFitted = false;
    Engine::Copula::Dependence result = {};

    /// The display name, "Rank" or that of the copula.
    WString name() const { return type == CorrelationType::RANK ? nameOf(type) : nameOf(copula); }
};

/// Tries to learn the dependence, copulas in the given order until one can be fitted. Without type: no
/// attempt.
std::vector<DependenceFit> fitDependence(const std::vector<DataFrameColumn>& columns, CorrelationType type,
                                         const std::vector<CopulaType>& copulas, StringVector& log);

/// Everything that was learned from a table.
struct Fitted {
    std::vector<FittedColumn> columns;
    std::vector<DependenceFit> attempts;  ///< all failed, but perhaps the last

    bool areAllFitted() const;
    /// The names of the columns with a distribution: the rows and columns of correlation matrices.
    StringVector fittedNames() const;
    /// @throws NonExistingNamedIndex
    const FittedColumn& column(const WString& name) const;
    /// The attempt that succeeded, or null.
    const DependenceFit* dependence() const;
};

}  // namespace Tessel::SyntheticDataGeneration
