#!/usr/bin/env python3
"""Times decision trees here, in scikit-learn, rpart and XGBoost (exact), in one run on one machine.

Usage: trees_vs_peers.py path/to/tree_benchmark [threads]

All grow by exact splits on the same tables of normal inputs; rpart without surrogates, competitors and cross
validation, XGBoost one tree. Ours includes the sorting of the columns. Peers that are not installed are left out.
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

import numpy

try:
    import sklearn.tree
except ImportError:
    sklearn = None
try:
    import xgboost
except ImportError:
    xgboost = None

# name, rows, numeric inputs, categorical inputs, classes (0: regression), levels (0: no limit)
CASES = [
    ("three classes, depth 10", 80_000, 24, 0, 3, 10),
    ("three classes, full-grown", 80_000, 24, 0, 3, 0),
    ("with 4 categorical, depth 10", 80_000, 20, 4, 3, 10),
    ("with 4 categorical, full-grown", 80_000, 20, 4, 3, 0),
    ("regression, depth 10", 160_000, 20, 0, 0, 10),
    ("two classes, depth 10", 800_000, 10, 0, 2, 10),
    ("two classes, full-grown", 400_000, 10, 0, 2, 0),
]

RPART = """
args <- commandArgs(TRUE); n <- as.integer(args[2]); p <- as.integer(args[3])
data <- matrix(readBin(args[1], "double", n * (p + 1)), n)
frame <- as.data.frame(data[, 1:p]); y <- data[, p + 1]; classes <- as.integer(args[4])
frame$y <- if (classes > 0) factor(y) else y
levels <- as.integer(args[5])
control <- rpart::rpart.control(minsplit = 2, minbucket = 1, cp = -1, maxcompete = 0, maxsurrogate = 0, xval = 0,
                                maxdepth = if (levels > 0) levels else 30)
cat(system.time(rpart::rpart(y ~ ., frame, method = if (classes > 0) "class" else "anova",
                             control = control))["elapsed"])
"""


def make_table(rows, numeric, categorical, classes):
    random = numpy.random.default_rng(12345)
    x = random.standard_normal((rows, numeric))
    levels = [5, 10, 20, 30][:categorical]
    codes = [random.integers(0, k, rows) for k in levels]
    signal = x[:, 0] + x[:, 1] * x[:, 2] + numpy.sin(3 * x[:, 3]) + numpy.where(x[:, 4] > 0.3, x[:, 5], -x[:, 6])
    for code in codes:
        signal += 0.5 * (code % 3)
    y = signal + random.standard_normal(rows)
    if classes > 0:
        bounds = numpy.quantile(y, numpy.arange(1, classes) / classes)
        y = numpy.searchsorted(bounds, y).astype(float)
    return numpy.column_stack([x] + [code.astype(float) for code in codes]), y


def timed(work):
    start = time.perf_counter()
    result = work()
    return time.perf_counter() - start, result


def peers(path, x, y, case, threads):
    _, rows, numeric, categorical, classes, levels = case
    seconds = {}
    if categorical:
        return seconds  # none of them splits three classes by subsets of many categories
    if sklearn:
        kind = sklearn.tree.DecisionTreeClassifier if classes else sklearn.tree.DecisionTreeRegressor
        tree = kind(max_depth=levels or None, random_state=1)
        single = numpy.ascontiguousarray(x, dtype=numpy.float32)
        seconds["scikit-learn"], _ = timed(lambda: tree.fit(single, y))
        score, _ = timed(lambda: tree.predict(single))
        seconds["scikit-learn rows/s"] = rows / score
    if xgboost and levels:
        matrix = xgboost.DMatrix(x, y, nthread=threads)
        objective = {0: "reg:squarederror", 2: "binary:logistic"}.get(classes)
        if objective:
            parameters = {"tree_method": "exact", "max_depth": levels, "objective": objective, "nthread": threads,
                          "lambda": 0, "min_child_weight": 0, "verbosity": 0}
            seconds["XGBoost exact"], _ = timed(lambda: xgboost.train(parameters, matrix, 1))
    if shutil.which("Rscript"):
        command = ["Rscript", "-e", RPART, path, str(rows), str(numeric), str(classes), str(levels)]
        run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
        if run.returncode == 0:
            seconds["rpart"] = float(run.stdout)
    return seconds


def main():
    program = sys.argv[1]
    threads = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    for case in CASES:
        name, rows, numeric, categorical, classes, levels = case
        x, y = make_table(rows, numeric, categorical, classes)
        with tempfile.NamedTemporaryFile() as file:
            numpy.asfortranarray(numpy.column_stack([x, y])).T.tofile(file.name)
            command = [program, file.name, rows, numeric + categorical, categorical, classes, levels, 3]
            environment = {**os.environ, "OMP_NUM_THREADS": str(threads)}
            output = subprocess.run([str(word) for word in command], env=environment, check=True,
                                    stdout=subprocess.PIPE).stdout
            ours = json.loads(output)
            total = ours["grow"]
            print(f"{name}: {rows} x {numeric + categorical}, {ours['nodes']} nodes\n"
                  f"  here           {total:8.3f} s, {rows / ours['score']:.3g} rows/s")
            for peer, value in peers(file.name, x, y, case, threads).items():
                if peer.endswith("rows/s"):
                    print(f"  {peer:14} {value:8.3g}    ratio {rows / ours['score'] / value:.1f}")
                else:
                    print(f"  {peer:14} {value:8.3f} s  ratio {value / total:.1f}")
            sys.stdout.flush()


if __name__ == "__main__":
    main()
