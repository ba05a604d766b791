#pragma once

#include <optional>

#include "framework/estimatable.h"
#include "synthetic/fitted.h"
#include "synthetic/parameters.h"

namespace Tessel {

/// Parameters, what was learned, and the log of the generator.
class ISyntheticDataGenerator : public IEstimatable {
 public:
    template <class E>
    using KeywordParameter = SyntheticDataGeneration::KeywordParameter<E>;
    template <class T>
    using ColumnParameter = SyntheticDataGeneration::ColumnParameter<T>;

    ISyntheticDataGenerator();

    Parameter<bool> metalogAuto{L"metalogAuto", L"Metalog auto", true};
    ColumnParameter<int> numMetalogTerms{L"numMetalogTerms", L"Max metalog terms"};
    ColumnParameter<double> metalogLowerBound{L"metalogLowerBound", L"Metalog lower bound"};
    ColumnParameter<double> metalogUpperBound{L"metalogUpperBound", L"Metalog upper bound"};
    Parameter<bool> useMinMaxAsBounds{L"useMinMaxAsBounds", L"Use Min/Max as bounds", false};
    ColumnParameter<SyntheticDataGeneration::GoodnessOfFitType> metalogGoodnessOfFitType{
        L"metalogGoodnessOfFitType", L"Metalog goodness of fit type"};
    Parameter<bool> computeMetalogCurves{L"computeMetalogCurves", L"Compute Metalog curves", true};
    KeywordParameter<SyntheticDataGeneration::CorrelationType> correlationType{
        L"correlationType", L"Correlation type", SyntheticDataGeneration::CorrelationType::RANK};
    SyntheticDataGeneration::CopulasParameter copulas{L"copulas", L"Copulas"};
    Parameter<bool> generateSample{L"generateSample", L"Generate Sample", true};
    BoundedParameter<int> randomSeed{L"randomSeed", L"Random seed", 0, 0, kNoLimit};
    KeywordParameter<SyntheticDataGeneration::RandomGeneratorType> randomGenerator{
        L"randomGenerator", L"Random Generator",
        SyntheticDataGeneration::RandomGeneratorType::MERSENNE_TWISTER};
    KeywordParameter<SyntheticDataGeneration::SamplingMethodType> samplingMethod{
        L"samplingMethod", L"Sampling Method", SyntheticDataGeneration::SamplingMethodType::LATIN_HYPERCUBE};
    KeywordParameter<SyntheticDataGeneration::RandomStreamType> randomStream{
        L"randomStream", L"Random Stream", SyntheticDataGeneration::RandomStreamType::INDEPENDENT};
    BoundedParameter<int> sampleSize{L"sampleSize", L"Sample Size", 100, 1, kNoLimit};
    Parameter<WString> expression{L"expression", L"Expression"};

    std::unique_ptr<IEstimatable> clone() const override {
        return std::make_unique<ISyntheticDataGenerator>(*this);
    }
    LadonIdentity ladonIdentity() const override;
    ParameterList parameters() override;
    void validate() const override;

    void fit(const DataFrame& table);
    DataFrame generate();

    const SyntheticDataGeneration::Fitted& fitted() const { return fitted_; }
    const StringVector& log() const { return log_; }

 protected:
    void writeLearners(web::json::value& description) const override;
    void readLearners(const web::json::value& description) override;

 private:
    using Rows = std::vector<Vector>;

    SyntheticDataGeneration::ColumnTask taskOf(const WString& column) const;
    /// What was learned of the kind of dependence that is asked for, or null.
    const SyntheticDataGeneration::DependenceFit* dependenceToInduce() const;
    /// Uniform numbers, a row per column of the fit and behind them the mixing rows; none after a failure.
    Rows drawUniforms(std::size_t numMixing);
    bool induce(Rows& rows, const SyntheticDataGeneration::DependenceFit& dependence) const;
    /// Uniform numbers to those of the distributions. @returns whether all are finite
    bool mapToMargins(Rows& rows) const;

    SyntheticDataGeneration::Fitted fitted_;
    StringVector log_;
};

}  // namespace Tessel
