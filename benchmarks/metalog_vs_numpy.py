#!/usr/bin/env python3
"""Times metalog fits of 2 to 16 terms here and by least squares in NumPy, in one run on one machine.

Usage: metalog_vs_numpy.py path/to/metalog_benchmark

NumPy makes the basis of 16 terms once and calls numpy.linalg.lstsq for each number of terms, and does no more.
Ours, "fit", also proves for each fit whether it is feasible; "all" starts from the unsorted sample, has the
second order of terms as well and all measures of goodness of fit. Rows: values in the sample; 1 thread.
"""

import json
import os
import subprocess
import sys
import time

for variable in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS"):
    os.environ[variable] = "1"
import numpy  # noqa: E402

NUM_RUNS = 5
SIZES = (1_000, 10_000, 1_000_000)


def our_milliseconds(program):
    command = [program, "--benchmark_filter=^fit", "--benchmark_format=json", "--benchmark_min_time=0.05",
               f"--benchmark_repetitions={NUM_RUNS}"]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout
    best = {}
    for run in json.loads(output)["benchmarks"]:
        if run["run_type"] == "iteration":
            key = run["name"].split("/")[0], int(run["name"].split("/")[1])
            best[key] = min(best.get(key, float("inf")), run["real_time"])
    return best


def basis(num_values):
    y = (numpy.arange(num_values) + 0.5) / num_values
    x, logit = y - 0.5, numpy.log(y / (1 - y))
    columns = [numpy.ones_like(y), logit, x * logit, x]
    for j in range(5, 17):
        columns.append(x ** ((j - 1) // 2) * (logit if j % 2 == 0 else 1))
    return numpy.stack(columns, axis=1)


def their_milliseconds(num_values):
    generator = numpy.random.default_rng(20)
    y = numpy.sort(generator.random(num_values))
    logit = numpy.log(y / (1 - y))
    values = 50 + 10 * logit + 6 * (y - 0.5) * logit + 8 * numpy.sin(4 * y)
    best = float("inf")
    for _ in range(NUM_RUNS if num_values < 1_000_000 else 1):
        start = time.perf_counter()
        columns = basis(num_values)
        for num_terms in range(2, 17):
            numpy.linalg.lstsq(columns[:, :num_terms], values, rcond=None)
        best = min(best, time.perf_counter() - start)
    return 1000 * best


def main():
    ours = our_milliseconds(sys.argv[1])
    print(f"{'values':>9} {'NumPy ms':>10} {'fit ms':>9} {'ratio':>7} {'all ms':>9} {'ratio':>7}")
    for size in SIZES:
        theirs, fit, everything = their_milliseconds(size), ours["fitAllTerms", size], ours["fitAutomatically", size]
        print(f"{size:9d} {theirs:10.2f} {fit:9.3f} {theirs / fit:7.1f} {everything:9.2f} {theirs / everything:7.1f}")


if __name__ == "__main__":
    main()
