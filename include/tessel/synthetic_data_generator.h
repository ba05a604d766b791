#pragma once

#include <tessel/framework/capabilities.h>
#include <tessel/framework/estimator.h>

// Tables that look like a given one without repeating its rows.

namespace Tessel {

namespace SyntheticDataGeneration {

/// Models of the dependence between columns. The first three have one parameter, theta, for all pairs.
enum class CopulaType : int { NONE = 0, CLAYTON = 1, FRANK = 2, GUMBEL = 3, GAUSS = 4, STUDENT = 5 };

/// How the dependence between columns is learned and reproduced.
enum class CorrelationType : int {
    NONE = 0,   ///< The generated columns are independent.
    RANK = 1,   ///< Spearman's rank correlations, met by reordering.
    COPULA = 2  ///< The first of the selected copulas that can be fitted.
};

/// What ranks the metalogs of different numbers of terms. Smaller is better, but for the likelihood.
enum class GoodnessOfFitType : int {
    CHI_SQUARE = 0,
    KOLMOGOROV_SMIRNOV = 1,
    ANDERSON_DARLING = 2,
    AIC = 3,
    BIC = 4,
    AICC = 5,
    BICC = 6,
    MAX_LIKELIHOOD = 7,
    HQIC = 8
};

enum class RandomGeneratorType : int {
    PARK_MILLER = 0,
    LECUYER_CMRG = 1,
    WELL = 2,
    MERSENNE_TWISTER = 3,
    HDR = 4
};

enum class SamplingMethodType : int {
    MONTE_CARLO = 1,
    LATIN_HYPERCUBE = 2,  ///< Each column has exactly one value in each n-th part of its distribution.
    SOBOL_RQMC = 3        ///< Scrambled Sobol points; at most 3665 columns.
};

enum class RandomStreamType : int {
    SINGLE = 1,      ///< All columns draw from one sequence, one after the other.
    INDEPENDENT = 2  ///< Each column has a sequence of its own.
};

}  // namespace SyntheticDataGeneration

class ISyntheticDataGenerator;  // private

/// Learns the distribution of every column of a table and the dependence between the columns, and generates
/// tables of any number of rows that have both.
///
///     SyntheticDataGenerator generator;
///     const DataFrame sample = generator.setSampleSize(10000).fitTransform(table);
///
/// - Margins: a metalog per numeric column (T. Keelin, The Metalog Distributions, Decision Analysis 13(4)
///   (2016) 243-277), whose number of terms is given or chosen by goodness of fit.
/// - Dependence: rank correlations (R. Iman & W. Conover, Communications in Statistics 11 (1982) 311-334), or
///   a Clayton, Frank, Gumbel, Gauss or Student copula.
///
/// Columns: index columns are left out. Text columns are categorical and get no distribution, and a generator
/// with a column without distribution generates nothing: take the numeric columns first. Missing cells are
/// left out, for margins per column, for the dependence the whole row. Infinite cells and constant columns
/// cannot be fitted. The dependence is learned from the columns that have a distribution.
///
/// Bad parameters throw. What cannot be fitted or generated does not: it is a line of the log (`getLog`), and
/// the column or step concerned is skipped or the table generated is empty. Each fit begins a new log.
///
/// Columns are fitted in parallel; the number of threads does not change a bit of the results, and platforms
/// agree but for the last digits of their mathematical functions. The same seed gives the same table, also
/// after `toLadon` and `fromLadonString`.
///
/// A copy has parameters and fitted state of its own. One object is used by one thread at a time.
class TESSEL_API SyntheticDataGenerator : public EstimatorHandle,
                                          public ModelNameIdentifiable,
                                          public Validatable {
 public:
    using CopulaType = SyntheticDataGeneration::CopulaType;
    using CorrelationType = SyntheticDataGeneration::CorrelationType;
    using GoodnessOfFitType = SyntheticDataGeneration::GoodnessOfFitType;
    using RandomGeneratorType = SyntheticDataGeneration::RandomGeneratorType;
    using SamplingMethodType = SyntheticDataGeneration::SamplingMethodType;
    using RandomStreamType = SyntheticDataGeneration::RandomStreamType;

    SyntheticDataGenerator();

    SyntheticDataGenerator& setName(const WString& name);
    /// The name of the table it was fitted to.
    const WString& getModelName() const override;
    SyntheticDataGenerator& setModelName(const WString& modelName);

    // ---- fitting and generating

    /// Learns from a table; what was learned before is forgotten. When it throws, nothing has changed.
    /// @throws ValueOutOfRange, ConstraintViolation for parameters, see `validate`; NotAValidColName for a
    ///         parameter of a column that the table lacks; DuplicateName when two columns have one name.
    SyntheticDataGenerator& fit(const DataFrame& table);
    /// Generates the rows that the parameters ask for, named after the model name: "<model name>: Synthetic
    /// Sample", with the columns of the fit. Empty when that is not possible; the log tells why.
    /// @throws ValueOutOfRange, ConstraintViolation for parameters; BadAllocation
    DataFrame generate();
    /// `generate`, or without any row when `setGenerateSample(false)`. The table is not read.
    DataFrame transform(const DataFrame& table);
    /// `fit` and `transform`.
    DataFrame fitTransform(const DataFrame& table);
    /// Checks the parameters. @throws ValueOutOfRange for a number outside its range; ConstraintViolation for
    /// a value outside its enum, and for correlations by copula without a selected copula.
    void validate() const override;

    // ---- parameters of single columns, by name

    /// The number of terms of the column's metalog; with "Metalog auto" the largest number that is tried.
    /// 2 to 16; default 5 with "Metalog auto", else 2.
    SyntheticDataGenerator& setNumMetalogTerms(const WString& column, int numTerms);
    int getNumMetalogTerms(const WString& column) const;
    /// Below it there are no values; it must not be above the smallest cell. Infinite: no bound, as by
    /// default. One that a cell lies on is moved out by 1.5e-8 or to the next double.
    SyntheticDataGenerator& setMetalogLowerBound(const WString& column, double bound);
    double getMetalogLowerBound(const WString& column) const;
    /// The same for the other side.
    SyntheticDataGenerator& setMetalogUpperBound(const WString& column, double bound);
    double getMetalogUpperBound(const WString& column) const;
    /// What ranks the metalogs of the column. Default Anderson-Darling, which weighs both tails.
    SyntheticDataGenerator& setMetalogGoodnessOfFitType(const WString& column, GoodnessOfFitType type);
    GoodnessOfFitType getMetalogGoodnessOfFitType(const WString& column) const;

    // ---- parameters

    /// Whether the number of terms is chosen by goodness of fit. Default true.
    SyntheticDataGenerator& setMetalogAuto(bool isAuto);
    bool getMetalogAuto() const;
    /// Whether the smallest and the largest cell are the bounds, where none is set for the column. Default
    /// false. The two cells then lie within 1.5e-8 of a bound, where a metalog hardly follows: a bound known
    /// to be beyond the data, such as 0 for lengths, gives a better fit.
    SyntheticDataGenerator& setUseMinMaxAsBounds(bool useMinMax);
    bool getUseMinMaxAsBounds() const;
    /// Whether `fit` computes the curves for drawing. Default true.
    SyntheticDataGenerator& setComputeMetalogCurves(bool compute);
    bool getComputeMetalogCurves() const;
    /// Default rank.
    SyntheticDataGenerator& setCorrelationType(CorrelationType type);
    CorrelationType getCorrelationType() const;
    /// Adds a copula behind those selected, where it is not yet among them, or removes it. Default none.
    SyntheticDataGenerator& setCopula(CopulaType type, bool isSelected);
    /// Whether it is selected.
    bool getCopula(CopulaType type) const;
    /// Whether `transform` and `fitTransform` generate rows. Default true.
    SyntheticDataGenerator& setGenerateSample(bool generate);
    bool getGenerateSample() const;
    /// 0 to 2147483647; default 0.
    SyntheticDataGenerator& setRandomSeed(int seed);
    int getRandomSeed() const;
    /// Default Mersenne Twister.
    SyntheticDataGenerator& setRandomGeneratorType(RandomGeneratorType type);
    RandomGeneratorType getRandomGeneratorType() const;
    /// Default Latin hypercube.
    SyntheticDataGenerator& setSamplingMethodType(SamplingMethodType type);
    SamplingMethodType getSamplingMethodType() const;
    /// Default independent.
    SyntheticDataGenerator& setRandomStreamType(RandomStreamType type);
    RandomStreamType getRandomStreamType() const;
    /// The number of rows to generate, 1 to 2147483647; default 100.
    SyntheticDataGenerator& setSampleSize(int numRows);
    int getSampleSize() const;
    /// An expression kept beside the parameters for `calculateExpression`; the generated table has only the
    /// columns of the fit. Default empty.
    SyntheticDataGenerator& setExpression(const WString& expression);
    const WString& getExpression() const;

    // ---- what was learned. @throws NonExistingNamedIndex for a column that was not in the fit.

    /// The columns of the fit, text columns included.
    StringVector getColNames() const;
    /// Whether all columns have a distribution; false before a fit.
    bool isMetalogFitted() const;
    bool isMetalogFitted(const WString& column) const;
    /// "Best Metalog Fit": a row per column with "Number of Terms", "Goodness of Fit Type" and "Goodness of
    /// Fit"; missing cells where there is no distribution.
    DataFrame getBestMetalog() const;
    /// The number of terms, 0 without distribution.
    int getBestMetalog(const WString& column) const;
    /// "Metalog Coefficients: <column>" with the column "Coefficient" and the rows "a1", "a2", ...
    DataFrame getMetalogCoefficients(const WString& column) const;
    DataFrameVector getMetalogCoefficients() const;
    /// "Metalog Goodness of Fit: <column>": a row per number of terms that could be fitted, best first. The
    /// columns are "Number of Terms"; per test its statistic, named like the test, and "Critical Value:
    /// <test>" at the confidence 0.9; the criteria and "ML", the logarithm of the likelihood.
    DataFrame getMetalogGoodnessOfFit(const WString& column) const;
    DataFrameVector getMetalogGoodnessOfFit() const;
    /// "Inverse CDF: <column>" with the columns "Probability", "Inverse CDF" and "Density", at probabilities
    /// of equal distance on the logit scale from 0.0001 to 0.9999. Without rows where there is no curve.
    DataFrame getMetalogCurve(const WString& column) const;
    DataFrameVector getMetalogCurve() const;
    /// "Metalog Bounds" with the columns "Lower" and "Upper", a row per column: the bounds of the
    /// distributions, infinite where there is none and missing without distribution.
    DataFrame getBounds() const;

    /// Whether the dependence that the fit was asked for could be learned.
    bool isCorrelationFitted() const;
    /// The copula that is used; none without.
    CopulaType getSelectedCopula() const;
    /// NaN where the selected copula has none.
    double getCopulaTheta() const;
    double getCopulaDegreesOfFreedom() const;
    /// The correlation matrix in use, named "Correlation Sigma". @throws SDGNoCorrelationSigma without one
    DataFrame getCorrelationSigma() const;
    /// The rank correlations, named "Sigma: Rank". @throws SDGNoCorrelationSigma when they were not learned.
    DataFrame getRankCorrelationSigma() const;
    /// The matrix of the Gauss or the Student copula, named "Sigma: <copula>". @throws SDGNoCorrelationSigma
    DataFrame getCopulaSigma(CopulaType type) const;
    /// "Correlation Fits": a row per attempt to learn the dependence, in their order, with "Type", "Copula",
    /// "Status" (1 fitted, 0 failed), "Theta", "Degrees of Freedom" and "Statistic", the logarithm of the
    /// pseudo-likelihood, by which copulas of the same data compare; "Repaired", 1 for a correlation matrix
    /// with an eigenvalue below 1e-8, as of columns that determine each other, in whose place stands the
    /// nearest one without, which the log tells too; and "At Limit", 1 where theta or the degrees of freedom
    /// are a bound of what is searched.
    DataFrame getCorrelationFits() const;

    /// What could not be done since the last fit began, and what was assumed.
    StringVector getLog() const;
    /// The same as the column "Message" of a table "Simulation Log".
    DataFrame getLogDF() const;

    /// "Parameter Info": a row per parameter with "Type", "Value", "Default" and "Constraints".
    DataFrame toDataFrame() const override;
    /// "Parameter Info" and, after a fit, all tables above that there are.
    DataFrameVector toDataFrameVector() const override;

    // ---- tools

    /// Computes an expression over the columns of a table, in the language of `Util::calculateExpression`: a
    /// table "Expression" with one column, named like the expression.
    /// @throws what `Util::calculateExpression` throws.
    static DataFrame calculateExpression(const DataFrame& table, const WString& expression);

    /// How much alike two tables are, in their common numeric columns that are no index columns:
    /// - "Quality: Summary" with one row: "Largest Kolmogorov-Smirnov Distance" and its "Column", "Largest
    ///   Rank Correlation Difference" and its "First Column" and "Second Column".
    /// - "Quality: Distances", a row per column: "Kolmogorov-Smirnov", the largest difference of the
    /// empirical
    ///   distribution functions, and the number of values, "Original Count" and "Generated Count".
    /// - "Quality: Moments", a row per column: "Original ..." and "Generated ..." "Mean", "Std. dev.",
    ///   "Skewness" and "Excess kurtosis", by the functions of `Util`.
    /// - "Quality: Quantiles", a row per column: "Original ..." and "Generated ..." "Min", "1%", "5%", "25%",
    ///   "50%", "75%", "95%", "99%" and "Max".
    /// - "Rank Correlation: Original", "Rank Correlation: Generated" and "Rank Correlation: Difference".
    ///
    /// Missing cells are left out. What does not exist, as the correlation of a constant column, is NaN.
    /// @throws TooFewNumColumns without a common column; DuplicateName for a name of several columns.
    static DataFrameVector qualityReport(const DataFrame& original, const DataFrame& generated);

    /// Display names; empty for a value outside the enum.
    static WString getCopulaTypeName(CopulaType type);
    static WString getCorrelationTypeName(CorrelationType type);
    static WString getGoodnessOfFitTypeName(GoodnessOfFitType type);
    static WString getRandomGeneratorTypeName(RandomGeneratorType type);
    static WString getSamplingMethodTypeName(SamplingMethodType type);
    static WString getRandomStreamTypeName(RandomStreamType type);

 private:
    void assignModelName(const WString& modelName) override;
};

}  // namespace Tessel
