#include "synthetic/vocabulary.h"

namespace Tessel::SyntheticDataGeneration {
namespace {

constexpr Term<CopulaType> kCopulas[] = {
    {CopulaType::NONE, L"None", L"NONE"},    {CopulaType::CLAYTON, L"Clayton", L"CLAYTON"},
    {CopulaType::FRANK, L"Frank", L"FRANK"}, {CopulaType::GUMBEL, L"Gumbel", L"GUMBEL"},
    {CopulaType::GAUSS, L"Gauss", L"GAUSS"}, {CopulaType::STUDENT, L"Student", L"STUDENT"},
};
constexpr Term<CorrelationType> kCorrelations[] = {
    {CorrelationType::NONE, L"None", L"NONE"},
    {CorrelationType::RANK, L"Rank", L"RANK"},
    {CorrelationType::COPULA, L"Copula", L"COPULA"},
};
constexpr Term<GoodnessOfFitType> kGoodnessOfFit[] = {
    {GoodnessOfFitType::CHI_SQUARE, L"Chi-Square", L"CHI_SQUARE"},
    {GoodnessOfFitType::KOLMOGOROV_SMIRNOV, L"Kolmogorov-Smirnov", L"KOLMOGOROV_SMIRNOV"},
    {GoodnessOfFitType::ANDERSON_DARLING, L"Anderson-Darling", L"ANDERSON_DARLING"},
    {GoodnessOfFitType::AIC, L"AIC", L"AIC"},
    {GoodnessOfFitType::BIC, L"BIC", L"BIC"},
    {GoodnessOfFitType::AICC, L"AICc", L"AICC"},
    {GoodnessOfFitType::BICC, L"BICc", L"BICC"},
    {GoodnessOfFitType::MAX_LIKELIHOOD, L"ML", L"MAX_LIKELIHOOD"},
    {GoodnessOfFitType::HQIC, L"HQIC", L"HQIC"},
};
constexpr Term<RandomGeneratorType> kGenerators[] = {
    {RandomGeneratorType::PARK_MILLER, L"Park-Miller", L"PARK_MILLER"},
    {RandomGeneratorType::LECUYER_CMRG, L"L'Ecuyer-CMRG", L"LECUYER_CMRG"},
    {RandomGeneratorType::WELL, L"WELL", L"WELL"},
    {RandomGeneratorType::MERSENNE_TWISTER, L"Mersenne Twister", L"MERSENNE_TWISTER"},
    {RandomGeneratorType::HDR, L"HDR", L"HDR"},
};
constexpr Term<SamplingMethodType> kSamplingMethods[] = {
    {SamplingMethodType::MONTE_CARLO, L"Monte Carlo", L"MONTE_CARLO"},
    {SamplingMethodType::LATIN_HYPERCUBE, L"Latin Hypercube", L"LATIN_HYPERCUBE"},
    {SamplingMethodType::SOBOL_RQMC, L"Sobol RQMC", L"SOBOL_RQMC"},
};
constexpr Term<RandomStreamType> kStreams[] = {
    {RandomStreamType::SINGLE, L"Single", L"SINGLE"},
    {RandomStreamType::INDEPENDENT, L"Independent", L"INDEPENDENT"},
};

}  // namespace

template <>
std::span<const Term<CopulaType>> vocabulary() {
    return kCopulas;
}
template <>
std::span<const Term<CorrelationType>> vocabulary() {
    return kCorrelations;
}
template <>
std::span<const Term<GoodnessOfFitType>> vocabulary() {
    return kGoodnessOfFit;
}
template <>
std::span<const Term<RandomGeneratorType>> vocabulary() {
    return kGenerators;
}
template <>
std::span<const Term<SamplingMethodType>> vocabulary() {
    return kSamplingMethods;
}
template <>
std::span<const Term<RandomStreamType>> vocabulary() {
    return kStreams;
}

}  // namespace Tessel::SyntheticDataGeneration
