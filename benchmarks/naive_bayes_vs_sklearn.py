#!/usr/bin/env python3
"""Times naive Bayes here and in scikit-learn's GaussianNB, in one run on one machine.

Usage: naive_bayes_vs_sklearn.py path/to/naive_bayes_benchmark

1,000,000 rows of 20 numeric inputs, 2 and 5 classes, 1 and 2 threads; the best of several runs each.
scikit-learn gets its table in the order of memory that suits each operation better (rows or columns together).
"""

import json
import os
import subprocess
import sys
import time

import numpy
import sklearn
from sklearn.naive_bayes import GaussianNB
from threadpoolctl import threadpool_limits

NUM_ROWS, NUM_INPUTS, NUM_RUNS = 1_000_000, 20, 3
OPERATIONS = {"fit": "fit", "posteriorProbability": "predict_proba"}


def our_seconds(program, num_threads):
    """Best time of each (operation, number of classes)."""
    command = [program, "--benchmark_filter=categorical:0", "--benchmark_format=json", "--benchmark_min_time=0.1",
               f"--benchmark_repetitions={NUM_RUNS}"]
    environment = {**os.environ, "OMP_NUM_THREADS": str(num_threads)}
    output = subprocess.run(command, env=environment, check=True, stdout=subprocess.PIPE).stdout
    best = {}
    for run in json.loads(output)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        operation, classes = run["name"].split("/")[:2]
        key = operation, int(classes.split(":")[1])
        best[key] = min(best.get(key, float("inf")), run["real_time"] / 1000)  # milliseconds
    return best


def their_seconds(num_classes, num_threads):
    generator = numpy.random.default_rng(12345)
    classes = generator.integers(0, num_classes, NUM_ROWS)
    inputs = 3 * generator.random((NUM_ROWS, NUM_INPUTS)) + 0.1 * classes[:, None]
    best = {}
    for order in "CF":
        table = numpy.asarray(inputs, order=order)
        with threadpool_limits(num_threads):
            for _ in range(NUM_RUNS):
                start = time.perf_counter()
                model = GaussianNB().fit(table, classes)
                middle = time.perf_counter()
                model.predict_proba(table)
                end = time.perf_counter()
                for operation, seconds in ("fit", middle - start), ("posteriorProbability", end - middle):
                    best[operation] = min(best.get(operation, seconds), seconds)
    return best


def main():
    print(f"scikit-learn {sklearn.__version__}, {NUM_ROWS} x {NUM_INPUTS}, milliseconds")
    print(f"{'operation':<14} {'classes':>7} {'threads':>7} {'ours':>9} {'theirs':>9} {'ratio':>6}")
    for num_threads in 1, 2:
        ours = our_seconds(sys.argv[1], num_threads)
        for num_classes in 2, 5:
            theirs = their_seconds(num_classes, num_threads)
            for operation, their_name in OPERATIONS.items():
                our_time, their_time = ours[operation, num_classes], theirs[operation]
                print(f"{their_name:<14} {num_classes:>7} {num_threads:>7} {1000 * our_time:>9.1f} "
                      f"{1000 * their_time:>9.1f} {their_time / our_time:>6.1f}", flush=True)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
