#!/usr/bin/env python3
"""Times our reader and writer of text files against R's data.table and pandas in one run.

    benchmarks/csv_vs_peers.py build/release/benchmarks/csv_benchmark

Makes a numeric file of a million rows and ten columns (about 95 MB) in a temporary folder, times each program
alternately at 1 and at 2 threads, and prints the best time of each and its ratio to ours (above 1: ours is
faster). Needs R with data.table, and Python with pandas.
"""
import json
import os
import subprocess
import sys
import tempfile

ROUNDS = 2
PANDAS = """
import pandas, sys, time
def best(action):
    times = []
    for _ in range(1):
        start = time.perf_counter(); result = action(); times.append(time.perf_counter() - start)
    return min(times), result
read, table = best(lambda: pandas.read_csv(sys.argv[1], engine='c'))
start = time.perf_counter(); table.head(100000).to_csv(sys.argv[1] + '.out', index=False)
print(read, 10 * (time.perf_counter() - start))
"""
DATA_TABLE = """
library(data.table); a <- commandArgs(TRUE); setDTthreads(as.integer(a[2]))
best <- function(f) min(replicate(4, system.time(f())[["elapsed"]]))
read <- best(function() fread(a[1], showProgress = FALSE)); d <- fread(a[1], showProgress = FALSE)
write <- best(function() fwrite(d, paste0(a[1], ".out"), showProgress = FALSE))
cat(read, write)
"""


def ours(program, threads, _):
    output = subprocess.run(
        [program, "--benchmark_filter=Numbers", "--benchmark_format=json", "--benchmark_min_time=1"],
        env=dict(os.environ, OMP_NUM_THREADS=str(threads)), check=True, capture_output=True).stdout
    runs = json.loads(output)["benchmarks"]
    return [next(r["real_time"] for r in runs if r["name"].startswith(name)) / 1000
            for name in ("readNumbers", "writeNumbers")]


def data_table(_, threads, path):
    return output_of(["Rscript", "-e", DATA_TABLE, path, str(threads)])


def pandas(_, threads, path):
    return output_of([sys.executable, "-c", PANDAS, path])


def output_of(command):
    return [float(x) for x in subprocess.run(command, check=True, capture_output=True).stdout.split()]


def make_file(path):
    import numpy
    values = numpy.random.default_rng(1).integers(-10**8, 10**8, size=(10**6, 10)) / 1e7
    import pandas as pd
    pd.DataFrame(values, columns=[f"Var{i + 1}" for i in range(10)]).to_csv(path, index=False)


def main():
    program = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "numbers.csv")
        make_file(path)
        print(f"file: {os.path.getsize(path) / 1e6:.0f} MB")
        for threads in (1, 2):
            best = {}
            for _ in range(ROUNDS):
                for peer in (ours, data_table, pandas):
                    times = peer(program, threads, path)
                    best[peer] = [min(pair) for pair in zip(times, best.get(peer, times))]
            for index, task in enumerate(("read", "write")):
                own = best[ours][index]
                shown = [f"{peer.__name__} {best[peer][index]:.3f} s ({best[peer][index] / own:.2f})"
                         for peer in (ours, data_table, pandas)]
                print(f"{task}, {threads} thread{'s' if threads > 1 else ''}: " + ", ".join(shown))


if __name__ == "__main__":
    main()
