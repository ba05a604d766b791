// Chances and quantiles of every family with its default parameters, in numbers per second, and the same by
// plain Boost.Math where it has the family (names that end in "/boost").
// benchmarks/distributions_vs_scipy.py times the same work in SciPy beside it.

#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/math/distributions.hpp>

#include "engine/dist/catalogue.h"
#include "engine/dist/families.h"

namespace {

namespace Dist = Tessel::Engine::Dist;

constexpr std::size_t kNumPoints = 4096;

std::vector<double> chances() {
    std::vector<double> p(kNumPoints);
    for (std::size_t i = 0; i < kNumPoints; ++i) p[i] = (static_cast<double>(i) + 0.5) / kNumPoints;
    return p;
}

/// The arguments of an operation: chances for quantiles, the quantiles of them for all others.
std::vector<double> argumentsOf(const Dist::CDist& dist, bool isQuantile) {
    std::vector<double> x = chances();
    if (!isQuantile) dist.inverseCdfs(x, x);
    return x;
}

using Operation = void (Dist::CDist::*)(std::span<const double>, std::span<double>) const;

void registerOurs(const Dist::CatalogueEntry& entry, const char* operationName, Operation operation) {
    const std::shared_ptr<Dist::CDist> dist = entry.make();
    if (!dist->isValid()) return;
    const std::wstring_view name = entry.family.functionName;
    benchmark::RegisterBenchmark(
        (std::string(operationName) + '/' + std::string(name.begin(), name.end())).c_str(),
        [dist, operation](benchmark::State& state) {
            const std::vector<double> x = argumentsOf(*dist, operation == &Dist::CDist::inverseCdfs);
            std::vector<double> result(x.size());
            for (auto _ : state) {
                (*dist.*operation)(x, result);
                benchmark::ClobberMemory();
            }
            state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(x.size()));
        });
}

template <class Function>
void registerFunction(const std::string& name, std::vector<double> x, Function function) {
    benchmark::RegisterBenchmark(name.c_str(), [x = std::move(x), function](benchmark::State& state) {
        std::vector<double> result(x.size());
        for (auto _ : state) {
            for (std::size_t i = 0; i < x.size(); ++i) result[i] = function(x[i]);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(x.size()));
    });
}

/// The same with a distribution of Boost.Math, at the same points.
template <class Distribution>
void registerBoost(const wchar_t* wideName, const Distribution& theirs) {
    const auto ours = Dist::makeDist(wideName);
    const std::wstring_view wide = wideName;
    const std::string name = '/' + std::string(wide.begin(), wide.end()) + "/boost";
    registerFunction("cdf" + name, argumentsOf(*ours, false),
                     [theirs](double x) { return boost::math::cdf(theirs, x); });
    registerFunction("inverseCdf" + name, argumentsOf(*ours, true),
                     [theirs](double p) { return boost::math::quantile(theirs, p); });
}

void registerAll() {
    for (const Dist::CatalogueEntry& entry : Dist::catalogue()) {
        if (entry.make == nullptr) continue;
        registerOurs(entry, "pdf", &Dist::CDist::pdfs);
        registerOurs(entry, "cdf", &Dist::CDist::cdfs);
        registerOurs(entry, "inverseCdf", &Dist::CDist::inverseCdfs);
    }
    using namespace boost::math;
    using Up = policies::policy<policies::discrete_quantile<policies::integer_round_up>>;
    registerBoost(L"LyrNormal", normal_distribution<>());
    registerBoost(L"LyrStudent", students_t_distribution<>(5));
    registerBoost(L"LyrCauchy", cauchy_distribution<>(0, 50));
    registerBoost(L"LyrLaplace", laplace_distribution<>());
    registerBoost(L"LyrLogistic", logistic_distribution<>());
    registerBoost(L"LyrMaxExtreme", extreme_value_distribution<>());
    registerBoost(L"LyrExponential", exponential_distribution<>());
    registerBoost(L"LyrGamma", gamma_distribution<>(4));
    registerBoost(L"LyrErlang", gamma_distribution<>(2));
    registerBoost(L"LyrChiSquare", chi_squared_distribution<>(5));
    registerBoost(L"LyrPearson5", inverse_gamma_distribution<>(10, 100));
    registerBoost(L"LyrInvNormal", inverse_gaussian_distribution<>(10, 40));
    registerBoost(L"LyrLogNormal", lognormal_distribution<>());
    registerBoost(L"LyrPareto", pareto_distribution<>(100, 20));
    registerBoost(L"LyrRayleigh", rayleigh_distribution<>());
    registerBoost(L"LyrWeibull", weibull_distribution<>(2));
    registerBoost(L"LyrBeta", beta_distribution<>(1.5, 3));
    registerBoost(L"LyrUniform", uniform_distribution<>());
    registerBoost(L"LyrBernoulli", bernoulli_distribution<>(0.5));
    registerBoost(L"LyrBinomial", binomial_distribution<double, Up>(10, 0.5));
    registerBoost(L"LyrGeometric", geometric_distribution<double, Up>(0.5));
    registerBoost(L"LyrNegBinomial", negative_binomial_distribution<double, Up>(5, 0.5));
    registerBoost(L"LyrPoisson", poisson_distribution<double, Up>(1));
}

const bool kIsRegistered = (registerAll(), true);

}  // namespace
