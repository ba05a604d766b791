#!/usr/bin/env python3
"""Times chances and quantiles of distributions here, in plain Boost.Math and in SciPy, in one run on one machine.

Usage: distributions_vs_scipy.py path/to/dist_benchmark

4096 points of every family with its default parameters; nanoseconds a number, the best of several runs.
"""

import json
import subprocess
import sys
import time

import numpy
import scipy
from scipy import stats

NUM_POINTS, NUM_RUNS = 4096, 5
PEERS = {
    "Bernoulli": stats.bernoulli(0.5), "Beta": stats.beta(1.5, 3), "BetaGen": stats.beta(1.5, 3, 0, 10),
    "Binomial": stats.binom(10, 0.5), "Cauchy": stats.cauchy(0, 50), "ChiSquare": stats.chi2(5),
    "Erf": stats.norm(0, 0.5 ** 0.5), "Erlang": stats.gamma(2), "Exponential": stats.expon(), "Gamma": stats.gamma(4),
    "Geometric": stats.geom(0.5, -1), "IntUniform": stats.randint(0, 11), "InvNormal": stats.invgauss(0.25, scale=40),
    "Laplace": stats.laplace(), "Logarithmic": stats.logser(0.5), "Logistic": stats.logistic(),
    "LogLogistic": stats.fisk(5), "LogNormal": stats.lognorm(1), "MaxExtreme": stats.gumbel_r(),
    "MinExtreme": stats.gumbel_l(), "NegBinomial": stats.nbinom(5, 0.5), "Normal": stats.norm(),
    "Pareto": stats.pareto(20, scale=100), "Pearson5": stats.invgamma(10, scale=100), "Poisson": stats.poisson(1),
    "Rayleigh": stats.rayleigh(), "Student": stats.t(5), "Uniform": stats.uniform(), "Weibull": stats.weibull_min(2),
}


def our_nanoseconds(program):
    """Best time of each benchmark."""
    command = [program, "--benchmark_format=json", "--benchmark_min_time=0.02", f"--benchmark_repetitions={NUM_RUNS}"]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout
    best = {}
    for run in json.loads(output)["benchmarks"]:
        if run["run_type"] == "iteration":
            best[run["name"]] = min(best.get(run["name"], float("inf")), 1e9 / run["items_per_second"])
    return best


def their_nanoseconds(function, argument):
    best = float("inf")
    for _ in range(NUM_RUNS):
        start = time.perf_counter()
        function(argument)
        best = min(best, time.perf_counter() - start)
    return 1e9 * best / NUM_POINTS


def main():
    ours = our_nanoseconds(sys.argv[1])
    chances = (numpy.arange(NUM_POINTS) + 0.5) / NUM_POINTS
    print(f"SciPy {scipy.__version__}, nanoseconds a number")
    print(f"{'operation':<10} {'family':<12} {'ours':>7} {'Boost':>7} {'SciPy':>8} {'Boost/ours':>10} {'SciPy/ours':>10}")
    for operation in "cdf", "inverseCdf":
        for family, peer in PEERS.items():
            our_time = ours[f"{operation}/Lyr{family}"]
            boost_time = ours.get(f"{operation}/Lyr{family}/boost", float("nan"))
            their_time = their_nanoseconds(peer.cdf, peer.ppf(chances)) if operation == "cdf" else (
                their_nanoseconds(peer.ppf, chances))
            print(f"{operation:<10} {family:<12} {our_time:>7.1f} {boost_time:>7.1f} {their_time:>8.1f} "
                  f"{boost_time / our_time:>10.1f} {their_time / our_time:>10.1f}", flush=True)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
