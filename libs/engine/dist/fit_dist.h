#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "engine/dist/goodness_of_fit.h"
#include "engine/dist/metalog_fit.h"
#include "engine/dist/sample_statistics.h"

namespace Tessel::Engine::Dist {

/// Fits distributions to one sample and ranks them.
///
/// Nothing throws on bad data: operations answer with false or null and leave the reason in `status`. An
/// object is used by one thread at a time; long samples are worked on by all threads, which changes no bit of
/// the results.
///
///     CFitDist engine;
///     if (engine.load(values.size(), values.data()) && engine.fitMetalogs(9, GoodnessOfFitType::BIC))
///         use(*engine.candidates().front().distribution);
class CFitDist {
 public:
    static constexpr std::size_t kMostCandidates = 23;
    /// How far a bound that a value lies on is moved away from the data.
    static constexpr double kBoundNudge = 1.4901161193848e-8;
    /// The confidence of the tests in automatic fits.
    static constexpr double kDefaultConfidence = 0.9;

    enum Status : int {
        NOTHING_DONE = 0,
        FITTED = 1,
        BAD_INPUT = 2,       ///< No data, a value that is not finite, a repeat count below 1, a bad argument.
        SORTING_FAILED = 3,  ///< More values than can be sorted, or no memory for it.
        FIT_NOT_POSSIBLE = 6,    ///< No distribution of this kind fits: see the operation.
        NO_GOODNESS_OF_FIT = 7,  ///< Neither a test nor the likelihood could be computed.
        FITTED_IN_DOUBT = 9      ///< Fitted, but the chosen measure rejects or could not be computed.
    };

    struct Candidate {
        std::unique_ptr<CDist> distribution;
        GoodnessOfFit goodnessOfFit;
        Status status = FITTED;  ///< FITTED or FITTED_IN_DOUBT.
    };

    CFitDist() = default;
    CFitDist(const CFitDist&) = delete;
    CFitDist& operator=(const CFitDist&) = delete;
    /// Clears the floating-point exception flags.
    ~CFitDist();

    /// Takes a sample and computes its statistics; forgets the one before, its candidates and bounds. When it
    /// fails there is no sample.
    /// @param n               at least 1.
    /// @param values          n finite values.
    /// @param repeatCounts    null, or how often each value counts, at least 1.
    /// @param roundToInteger  replaces each value by the nearest whole number, halves away from 0.
    bool load(std::size_t n, const double* values, const int* repeatCounts = nullptr,
              bool roundToInteger = false);

    /// The bounds of the metalogs to be fitted; not finite means none, as after `load`.
    void setBounds(double lower, double upper);

    /// Fits one metalog. A finite bound that a value lies on is first moved outwards by `kBoundNudge`, or to
    /// the next double where that is farther. FIT_NOT_POSSIBLE: a value lies outside the bounds, the terms
    /// depend on each other at this number of values, or the density of the result is not positive
    /// everywhere, as for a constant sample. BAD_INPUT: no data, the number of terms, or a lower bound not
    /// below the upper one.
    /// @param numTerms    2 to 16.
    /// @param confidence  of the tests, taken into [0.9, 0.99].
    /// @param type        what decides between FITTED and FITTED_IN_DOUBT.
    /// @param order       decides between `CMetalogDist` and `CMetalog2Dist`.
    /// @return the only candidate, or null.
    const Candidate* fitMetalog(int numTerms, double confidence, GoodnessOfFitType type,
                                MetalogOrder order = MetalogOrder::KEELIN_2016);

    /// Fits the metalogs of 2 to `maxTerms` terms, as `CMetalogDist` and, unless there is a bound or
    /// `firstFormOnly` is set, as `CMetalog2Dist` until the first of these that cannot be fitted; then ranks
    /// the candidates, of equal ones that fitted first. The status is that of the best, FIT_NOT_POSSIBLE or
    /// NO_GOODNESS_OF_FIT without candidates.
    /// @param maxTerms  2 to 16; others mean 16.
    /// @return whether there is a candidate.
    bool fitMetalogs(int maxTerms, GoodnessOfFitType type, bool firstFormOnly = false);

    /// Fits a distribution of any family, whose present parameters may guide its `fitData`.
    const Candidate* fit(const CDist& family, double confidence, GoodnessOfFitType type);

    Status status() const { return status_; }
    /// Best first.
    const std::vector<Candidate>& candidates() const { return candidates_; }

    /// The sample in its order, each value as often as it counts, rounded if so asked.
    std::span<const double> sample() const { return sample_; }
    std::span<const double> sortedSample() const { return sorted_; }
    /// The positions in the sample of the sorted values, equal values in the order of the sample.
    std::span<const int> order() const { return order_; }
    /// The mode is, without repeat counts, the value that occurs most often, of several the smallest; with
    /// counts, the value with the largest count, of several the first loaded.
    const SampleStatistics& statistics() const { return statistics_; }
    /// See `Dist::percentile`.
    double percentile(double p) const { return Dist::percentile(sorted_, p); }
    /// Set when no two values differ.
    bool areAllValuesEqual() const { return areAllValuesEqual_; }
    /// See `Dist::serialDependence`; of the sample in its order.
    double serialDependence() const;

 private:
    void clear();
    Status expand(std::size_t n, const double* values, const int* repeatCounts, bool roundToInteger);
    bool sort();
    bool prepareMetalogs();
    std::unique_ptr<CMetalogDist> metalogWith(MetalogOrder order, int numTerms) const;
    Status tryMetalog(MetalogOrder order, int numTerms, double confidence, GoodnessOfFitType type);
    Status judge(std::unique_ptr<CDist> distribution, int numParameters, double confidence,
                 GoodnessOfFitType type);
    const CriticalValues& criticalValues(double confidence);

    std::vector<double> sample_, sorted_;
    std::vector<int> order_;
    SampleStatistics statistics_;
    bool areAllValuesEqual_ = false;

    MetalogBounds bounds_;
    std::optional<MetalogLeastSquares> leastSquares_;  ///< For the bounds, once asked for.
    std::optional<CriticalValues> criticalValues_;     ///< Of the last confidence asked for.

    std::vector<Candidate> candidates_;
    Status status_ = NOTHING_DONE;
};

}  // namespace Tessel::Engine::Dist
