#!/usr/bin/env python3
"""Times copulas and uniform samples here and in NumPy, SciPy and Boost, in one run on one machine.

Usage: copula_vs_peers.py path/to/copula_benchmark

Gauss copula: learned from 100,000 x 10 numbers, sampled as often, with empirical margins. Uniform samples:
1,000,000 x 10. Each at 1 and 2 threads, the best of several runs; the peers have one thread.
"""

import json
import os
import subprocess
import sys
import time

import numpy
import scipy
from scipy import stats
from scipy.special import ndtr, ndtri
from scipy.stats import qmc

NUM_ROWS, NUM_VARS, SAMPLE_ROWS, NUM_RUNS = 100_000, 10, 1_000_000, 3
CASES = {
    "Gauss copula": "gaussWithEmpiricalMargins",
    "rank correlation": "rankCorrelation",
    "Latin hypercube": "uniformSample/method:2/generator:3",
    "Latin hypercube, WELL": "uniformSample/method:2/generator:2",
    "Sobol": "uniformSample/method:3/generator:3",
    "Sobol (Boost)": "uniformSample/method:3/generator:3",
}


def our_milliseconds(program, num_threads):
    command = [program, "--benchmark_format=json", "--benchmark_min_time=0.2", f"--benchmark_repetitions={NUM_RUNS}",
               "--benchmark_filter=gauss|rankC|uniformSample/method:[23]/generator:[23]|boost"]
    environment = {**os.environ, "OMP_NUM_THREADS": str(num_threads)}
    output = subprocess.run(command, env=environment, check=True, stdout=subprocess.PIPE).stdout
    best = {}
    for run in json.loads(output)["benchmarks"]:
        if run["run_type"] == "iteration":
            name = run["name"].removesuffix("/real_time")
            best[name] = min(best.get(name, float("inf")), run["real_time"])
    return best


def gauss_copula(table, generator):
    ranks = numpy.empty_like(table)
    for i, row in enumerate(table):
        ranks[i, numpy.argsort(row)] = numpy.arange(1, NUM_ROWS + 1)
    factor = numpy.linalg.cholesky(numpy.corrcoef(ndtri(ranks / (NUM_ROWS + 1))))
    uniform = ndtr(factor @ generator.standard_normal((NUM_VARS, NUM_ROWS)))
    places = numpy.arange(NUM_ROWS) / (NUM_ROWS - 1)
    return [numpy.interp(uniform[i], places, numpy.sort(table[i])) for i in range(NUM_VARS)]


def best_milliseconds(work):
    best = float("inf")
    for _ in range(NUM_RUNS):
        start = time.perf_counter()
        work()
        best = min(best, time.perf_counter() - start)
    return 1000 * best


def their_milliseconds():
    generator = numpy.random.default_rng(1)
    common = generator.standard_normal(NUM_ROWS)
    table = numpy.exp(generator.standard_normal((NUM_VARS, NUM_ROWS)) + common)
    hypercube = best_milliseconds(lambda: qmc.LatinHypercube(NUM_VARS, seed=1).random(SAMPLE_ROWS))
    return {
        "Gauss copula": best_milliseconds(lambda: gauss_copula(table, generator)),
        "rank correlation": best_milliseconds(lambda: stats.spearmanr(table, axis=1)),
        "Latin hypercube": hypercube,
        "Latin hypercube, WELL": hypercube,
        "Sobol": best_milliseconds(lambda: qmc.Sobol(NUM_VARS, seed=1).random(SAMPLE_ROWS)),
    }


def main():
    print(f"NumPy {numpy.__version__}, SciPy {scipy.__version__}, milliseconds")
    print(f"{'operation':<22} {'threads':>7} {'ours':>9} {'theirs':>9} {'ratio':>6}")
    theirs = their_milliseconds()
    for num_threads in 1, 2:
        ours = our_milliseconds(sys.argv[1], num_threads)
        theirs["Sobol (Boost)"] = ours["boostSobol"]
        for name, case in CASES.items():
            print(f"{name:<22} {num_threads:>7} {ours[case]:>9.1f} {theirs[name]:>9.1f} "
                  f"{theirs[name] / ours[case]:>6.1f}", flush=True)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
