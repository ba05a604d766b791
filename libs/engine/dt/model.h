#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <tessel/data/types.h>

#include "engine/dt/growth.h"
#include "engine/dt/pruning.h"
#include "engine/dt/scorer.h"
#include "engine/dt/training_data.h"
#include "engine/dt/tree.h"

// Decision trees: classification and regression by recursive binary splits.
//
// Splits. The best split of a node is the exact best one over all features and places: greatest decrease of
// Gini's index (records weighted, priors altered as below) or of the sum of squares.
// - A number is compared with the midpoint of neighbouring distinct values of the node; smaller ones go left.
// - Categories of a node go left by subset. Two classes and regression: the best subset, found among the
//   prefixes of the categories in the order of their mean response (Breiman, Friedman, Olshen & Stone,
//   Classification and Regression Trees, 1984, theorem 4.5); where a prefix leaves too few records in a leaf,
//   the best of the other prefixes. More classes: all subsets of up to
//   `kMaxCategoriesTriedExhaustively` categories present in the node; above that prefixes in the order of the
//   first principal component of the class proportions (Coppersmith, Hong & Hosking 1999), a good split but
//   not always the best. Without missing cells in the node, the sides are such that the left one is the
//   prefix of lower mean, or, where all subsets are tried, does not hold the category with the highest code.
// - A missing cell goes left, in the search as in scoring, so that a split is judged by what it will do. It
//   never makes a side of its own. Categories that are not of the left subset go right: those unseen in
//   training, and those that did not occur in the node.
// - Equal scores: the first feature; the lowest threshold; of subsets the one with fewest categories in the
//   order searched (prefixes before suffixes, which count only when cells are missing), or, where all subsets
//   are tried, the one with the smallest sum of 2^i over its categories, i counting those present by code.
//   Scores are compared as they are, without tolerance. They are exact for records of weight 1 and classes,
//   up to 2^26 records; else sums run in a fixed order and nearly equal scores may be told apart by rounding.
// - A node is not split when its records have one class or target, when no split decreases the impurity, or
//   when a limit says so.
// - Fewer selected features than there are: each node draws its own, by a generator seeded with
//   `featureSelectionSeed` and the way from the root, whatever the order of growth.
//
// Limits. Where nodes or splits are limited the tree grows best first, by the decrease of impurity (ties: the
// node made first); otherwise the order does not matter.
//
// Priors are those of CART: records of class j weigh prior(j) times total weight / weight of class j, so they
// change impurities, splits, labels and posteriors alike. Without priors classes count by their weights;
// priors that equal the shares of the classes up to rounding change nothing.
//
// Threads, platforms: the same tree, bit for bit.

namespace Tessel::Engine::DT {

/// Trees that `select` chooses between after a `prune`.
enum class TreeType {
    FULL_GROWN,   ///< as grown
    BEST_PRUNED,  ///< the smallest whose validation error is within one standard error of the minimum
    MIN_ERROR,    ///< the least validation error; ties: the smallest
    MANUAL        ///< the largest with no more decision nodes than asked for
};

/// Words for the text of a tree; what is missing is named by number.
struct Names {
    std::vector<WString> features;
    std::vector<std::vector<WString>> categories;  ///< by feature, by code
    std::vector<WString> classes;
};

/// Layout of the text of a tree.
struct TextLayout {
    int numDigits = 7;    ///< significant digits of numbers, 1 .. 17; more where the first decimal needs them
    int indentation = 2;  ///< spaces a level; from level 40 on no more are added
    int numShareDecimals = 3;  ///< decimals of the share of the class
    int firstNumber = 1;       ///< number of the root
};

/// What both kinds of trees do. Empty until fitted; a copy shares nothing.
class Model {
 public:
    Model() = default;
    Model(const Model&) = default;
    Model(Model&&) = default;
    Model& operator=(const Model&) = default;
    Model& operator=(Model&&) = default;
    virtual ~Model() = default;

    void setLimits(const Limits& limits) { limits_ = limits; }
    const Limits& limits() const { return limits_; }

    bool isFitted() const { return !tree_.nodes.empty(); }
    /// The tree as grown, whatever is selected.
    const Tree& tree() const { return tree_; }
    /// Takes a tree that was read from elsewhere. Parents are found from the children; nothing is known of
    /// the order of growth but the gains.
    /// @throws ConstraintViolation when the nodes are no tree with children behind their parents, or name
    ///         features, categories or sets that cannot be.
    void restore(Tree tree, int numFeatures);

    // All that selects, prunes or scores throws ConstraintViolation before a fit.

    /// Selects one of the pruned trees. FULL_GROWN needs no `prune`; MANUAL is what `selectManual` asked for,
    /// the whole tree before. May be repeated.
    /// @throws ConstraintViolation before `prune` for BEST_PRUNED and MIN_ERROR.
    void select(TreeType type);
    /// Selects the largest pruned tree with at most so many decision nodes.
    void select(int numDecisionNodes) { selectManual(numDecisionNodes); }
    void selectManual(int numDecisionNodes);

    /// A node that is a leaf in the selected tree.
    bool isLeaf(std::int32_t node) const;
    std::int32_t numDecisionNodes() const;
    /// The selected tree on its own, with its nodes level by level and their labels as `response`.
    Tree selectedTree() const;
    /// The leaf of the selected tree where each record ends: a position in `tree().nodes`.
    /// @throws NumColumnsMismatch, NumRowsMismatch when the cells are not those of the features.
    std::vector<std::int32_t> findNodes(std::span<const Cells> features, std::size_t numRecords) const;
    /// The same for one record.
    std::int32_t findNode(std::span<const Cells> features, std::size_t record) const;

    /// Error as the tree grew: of the root alone, then after each split in the order of greatest gain first.
    /// Rate of misclassified weight, or mean squared error, of the training records.
    /// Empty before a fit.
    std::vector<double> trainingLog() const {
        return isFitted() ? errorBySplit(tree_) : std::vector<double>();
    }
    /// The pruned trees, the tree as grown first; empty before `prune`. Errors of theirs and the standard
    /// error are in units of 4^targetExponent of the tree.
    const std::vector<PruningStep>& pruningSteps() const { return pruning_.steps; }
    /// Standard error of the least validation error; 0 before `prune`.
    double standardError() const { return standardError_; }
    /// Validation records by node; empty before `prune`.
    const std::vector<std::int64_t>& numValidationRecords() const { return numValidationRecords_; }
    /// By feature the sum of the gains of its splits in the selected tree.
    std::vector<double> featureImportance() const;
    /// One line a node of the selected tree, parents before children, down to `numLevels` levels of splits;
    /// leaves are marked with a star. Cost grows with the text only.
    WString toString(int numLevels, const TextLayout& layout = {}, const Names& names = {}) const;

 protected:
    /// The code of the class that a node answers with; classification only.
    virtual std::int32_t labelOf(std::int32_t node) const;

    void adopt(Tree tree, std::size_t numFeatures);
    const Scorer& scorer() const { return scorer_; }
    void checkCells(std::span<const Cells> features, std::size_t numRecords) const;
    /// The sequence of pruned trees judged by the validation error that each node would have as a leaf.
    PruningSequence judge(const std::vector<double>& leafErrors, double total) const;
    std::size_t bestStep(const PruningSequence& sequence) const;
    void adoptPruning(PruningSequence sequence, double standardError, std::vector<std::int64_t> numRecords);

    Limits limits_;

 private:
    void requireFitted() const;
    void selectStep(std::size_t step);

    Tree tree_;
    std::size_t numFeatures_ = 0;
    std::vector<std::int32_t> numericFeatures_, categoricalFeatures_;  // those that the tree asks for
    PruningSequence pruning_;
    double standardError_ = 0.0;
    std::vector<std::int64_t> numValidationRecords_;
    int manualNumDecisionNodes_ = Limits::kNone;
    std::vector<std::uint8_t> isCut_;  // empty: the tree as grown
    Scorer scorer_;
};

class ClassificationModel : public Model {
 public:
    /// The classes in the order of their codes.
    void setClasses(std::vector<WString> classes) { classes_ = std::move(classes); }
    const std::vector<WString>& classes() const { return classes_; }
    /// One prior >= 0 a class, not all 0, taken relative to their sum; empty for the weights of the classes.
    void setPrior(std::vector<double> prior) { prior_ = std::move(prior); }
    const std::vector<double>& prior() const { return prior_; }
    /// Of two classes the one whose posterior is compared with the cut-off; -1 for none.
    void setSuccessClass(std::int32_t code) { successClass_ = code; }
    void setSuccessProbabilityCutoff(double cutoff) { cutoff_ = cutoff; }

    /// Grows a tree and selects it. A failure leaves the model as it was.
    /// @param classes  a code of `classes()` for each row of the table
    /// @throws ConstraintViolation, NumElementsMismatch, IndexOutOfRange, TooFewNumRows, TooFewNumColumns
    void fit(const TrainingData& data, std::span<const std::int32_t> classes);
    /// Makes the sequence of pruned trees with the error rates of validation records; selects nothing. With
    /// priors that rate is the sum over the classes of prior times rate in the class.
    /// @param classes  codes; another than those of `classes()` is never predicted
    void prune(std::span<const Cells> features, std::span<const std::int32_t> classes);

    /// Success class when its posterior reaches the cut-off, else the other one; without success class or
    /// with more classes than two, the class of greatest posterior (ties: the first).
    std::int32_t classOf(std::int32_t node) const;
    std::vector<std::int32_t> predict(std::span<const Cells> features, std::size_t numRecords) const;
    /// Probability of each class in each record: numRecords x classes, row by row.
    std::vector<double> posteriorProbability(std::span<const Cells> features, std::size_t numRecords) const;
    /// Validation error rate of each pruned tree.
    std::vector<double> pruningLog() const;

 protected:
    std::int32_t labelOf(std::int32_t node) const override { return classOf(node); }

 private:
    void alterWeights(Records& records) const;

    std::vector<WString> classes_;
    std::vector<double> prior_;
    std::int32_t successClass_ = -1;
    double cutoff_ = 0.5;
};

class RegressionModel : public Model {
 public:
    /// Grows a tree and selects it. A failure leaves the model as it was.
    /// @param targets  a finite number for each row of the table
    void fit(const TrainingData& data, std::span<const double> targets);
    void prune(std::span<const Cells> features, std::span<const double> targets);

    void predict(std::span<const Cells> features, std::span<double> predictions) const;
    std::vector<double> predict(std::span<const Cells> features, std::size_t numRecords) const;
    /// Complexity and validation mean squared error of each pruned tree.
    struct Cost {
        double complexity;
        double validationError;
    };
    std::vector<Cost> complexityLog() const;
};

}  // namespace Tessel::Engine::DT
