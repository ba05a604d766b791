#pragma once

#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include "engine/parallel.h"

// Naive Bayes classification: the inputs are taken as independent within a class, so that
//
//   log P(class | row) = log P(class) + sum over the inputs of log P(cell | class) - log P(row).
//
// A numeric input has a normal density in each class, a categorical input a table of frequencies.
// Sources: T. Mitchell, Machine Learning (McGraw-Hill 1997), ch. 6; T. Hastie, R. Tibshirani & J. Friedman,
// The Elements of Statistical Learning (2nd ed., Springer 2009), section 6.6.3. Moments are taken by blocks
// of rows in two passes over the cached block and merged pairwise as in T. Chan, G. Golub & R. LeVeque,
// Algorithms for Computing the Sample Variance, The American Statistician 37 (1983) 242-247.
//
// Missing cells (NaN, code -1) and categories outside the table add nothing, in training and in scoring: the
// input is left out of the product for that row.
//
// Fitting reads the table once: O(n p) time, 2 bytes a row of scratch memory. Scoring is O(n p k). Both use
// all threads on large tables, and the number of threads does not change a bit of the result.

namespace Tessel::Engine::NB {

/// One input of a training or scoring table; its cells are in one of the two spans.
struct Input {
    bool isCategorical = false;
    std::span<const double> numbers;  ///< Numeric input: one cell per row, NaN = missing.
    std::span<const std::int32_t>
        codes;                       ///< Categorical input: 0 .. numCategories - 1 per row, -1 = missing.
    std::int32_t numCategories = 0;  ///< Read by `fit` only; at scoring other codes are unseen categories.
};

/// The normal densities of a numeric input, one entry per class. These are the values that scoring uses:
///
/// - A class with two or more values has their mean and their variance with divisor count - 1.
/// - A class with one value has no variance of its own: it takes the pooled variance within the classes.
/// - A class without values takes mean and variance of the whole column, which favours nobody.
/// - No variance is below 1e-9 of the largest variance of a class, nor below 1e-24 of that of the whole
/// column:
///   a class in which the input is constant gets a narrow density instead of an infinite one. The floor goes
///   with the unit of the input and leaves alone every deviation above 1/30000 of the widest class's.
/// - An input that is constant in the whole column, or has no value at all, tells nothing: all its variances
///   are 0 and scoring ignores it. So it is when a variance overflows (values beyond 1e150 or so).
struct GaussianInput {
    std::vector<double> mean;
    std::vector<double> variance;
    std::vector<double> count;  ///< Values seen, missing ones left out.
};

/// How often each category of a categorical input was seen with each class.
struct CategoricalInput {
    std::int32_t numCategories = 0;
    std::vector<double> counts;  ///< Categories by classes, row-major: counts[category * numClasses + class].
};

using FittedInput = std::variant<GaussianInput, CategoricalInput>;

/// What was learned. Plain data: storing and restoring these members restores the scores bit for bit.
struct Fitted {
    std::vector<double> classCounts;  ///< Rows of each class; its size is the number of classes.
    std::vector<FittedInput> inputs;  ///< In the order of the training table.
    double laplace = 0.0;             ///< Pseudo-count of every category, >= 0.
    /// Stands for a probability of 0 (a category never seen with a class, no Laplace correction), so that one
    /// such cell weighs heavily but cannot leave a row without any possible class.
    double zeroProbability = 1e-10;
    /// Densities of numeric inputs below this are raised to it; 0 after every fit. Models of other makers may
    /// want it.
    double densityFloor = 0.0;
};

/// Learns the densities and frequencies of every input in every class.
/// @param inputs      p inputs of n cells each, without infinities.
/// @param classes     n class codes in 0 .. numClasses - 1.
/// @param numClasses  k >= 1; classes may be without rows.
/// @param laplace     pseudo-count >= 0 added to each category in each class.
/// @param watch       told the share of the inputs that are learned.
Fitted fit(std::span<const Input> inputs, std::span<const std::int32_t> classes, std::int32_t numClasses,
           double laplace = 0.0, const Watch& watch = {});

/// The probabilities P(category | class) of an input of `fitted`, categories by classes, row-major:
/// (count + laplace) / (sum of the class's counts + laplace * numCategories), and `zeroProbability` in the
/// place of 0. A class without values, when laplace is 0, has the frequencies of the whole column.
std::vector<double> categoryProbabilities(const Fitted& fitted, const CategoricalInput& input);

// Scoring. `inputs` are those of the fit in the same order, n cells each; `logPriors` has one entry per
// class, minus infinity for a prior of 0, at least one of them finite. Log-likelihoods are summed, so any
// number of inputs scores without underflow. A number farther than 1e7 deviations of the widest class from
// all class means, infinities included, counts as lying at that distance; the class that wins there is the
// same and all scores stay finite.

/// log P(class | row) into `result`, one span of n numbers per class.
void logPosterior(const Fitted& fitted, std::span<const double> logPriors, std::span<const Input> inputs,
                  std::span<const std::span<double>> result);

/// P(class | row) into `result`, one span of n numbers per class; the classes of a row sum to 1.
/// Probabilities below the smallest normal number, 2e-308, are 0.
void posteriorProbability(const Fitted& fitted, std::span<const double> logPriors,
                          std::span<const Input> inputs, std::span<const std::span<double>> result);

/// The class with the largest posterior of each of n rows; of equal ones the first.
void predict(const Fitted& fitted, std::span<const double> logPriors, std::span<const Input> inputs,
             std::span<std::int32_t> result);

}  // namespace Tessel::Engine::NB
