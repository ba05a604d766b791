#!/usr/bin/env python3
"""Times ensembles of trees here, in scikit-learn, ranger and XGBoost (exact and histograms), in one run.

Usage: ensembles_vs_peers.py path/to/ensemble_benchmark [threads] [words of the cases to run]

All see the same tables of normal inputs. Ours includes the ranking of the columns, the out-of-bag errors and
copies nothing; AdaBoost resamples here and weighs rows there. Peers that are not installed are left out.
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile

from trees_vs_peers import make_table, sklearn, timed, xgboost

if sklearn:
    import numpy
    import sklearn.ensemble

# name, rows, inputs, classes (0: regression), method, learners, levels (0: no limit), selected inputs (0: all)
CASES = [
    ("random trees", 40_000, 24, 3, "randomTrees", 100, 0, 5),
    ("bagged full-grown trees", 40_000, 24, 3, "bagging", 50, 0, 0),
    ("AdaBoost, stumps", 40_000, 24, 2, "boosting", 50, 1, 0),
    ("AdaBoost, depth 3", 40_000, 24, 2, "boosting", 50, 3, 0),
    ("least-squares boosting, 20,000", 20_000, 20, 0, "boosting", 100, 4, 0),
    ("least-squares boosting, 160,000", 160_000, 20, 0, "boosting", 100, 4, 0),
    ("random trees of 20,000, scored", 20_000, 20, 2, "randomTrees", 100, 0, 4),
]

RANGER = """
suppressMessages(library(ranger))
args <- commandArgs(TRUE); n <- as.integer(args[2]); p <- as.integer(args[3])
data <- matrix(readBin(args[1], "double", n * (p + 1)), n)
frame <- as.data.frame(data[, 1:p]); frame$y <- factor(data[, p + 1])
selected <- as.integer(args[4]); if (selected == 0) selected <- p
fit <- system.time(model <- ranger(y ~ ., frame, num.trees = as.integer(args[5]), mtry = selected,
                                   min.node.size = 1, num.threads = as.integer(args[6]),
                                   verbose = FALSE))["elapsed"]
score <- system.time(predict(model, frame, num.threads = as.integer(args[6]), verbose = FALSE))["elapsed"]
cat(fit, score)
"""


def sklearn_estimator(case, threads):
    _, _, _, classes, method, learners, levels, selected = case
    selected = selected or None
    if method == "randomTrees":
        return sklearn.ensemble.RandomForestClassifier(learners, max_features=selected, n_jobs=threads)
    if method == "bagging":
        return sklearn.ensemble.BaggingClassifier(sklearn.tree.DecisionTreeClassifier(), learners, n_jobs=threads)
    if classes:
        tree = sklearn.tree.DecisionTreeClassifier(max_depth=levels)
        return sklearn.ensemble.AdaBoostClassifier(tree, n_estimators=learners, algorithm="SAMME")
    return sklearn.ensemble.HistGradientBoostingRegressor(max_iter=learners, max_depth=levels, learning_rate=0.1,
                                                          early_stopping=False, min_samples_leaf=1, max_leaf_nodes=None)


def peers(path, x, y, case, threads):
    _, rows, inputs, classes, method, learners, levels, selected = case
    if sklearn:
        estimator = sklearn_estimator(case, threads)
        single = numpy.ascontiguousarray(x, dtype=numpy.float32)
        fit, _ = timed(lambda: estimator.fit(single, y))
        score, _ = timed(lambda: estimator.predict(single))
        yield type(estimator).__name__, fit, score, estimator.score(single, y)
    if xgboost and not classes:
        for how in ("exact", "hist"):
            matrix = xgboost.DMatrix(x, y, nthread=threads)
            parameters = {"tree_method": how, "max_depth": levels, "eta": 0.1, "nthread": threads, "lambda": 0,
                          "min_child_weight": 0, "verbosity": 0}
            fit, model = timed(lambda: xgboost.train(parameters, matrix, learners))
            score, predicted = timed(lambda: model.predict(matrix))
            yield f"XGBoost {how}", fit, score, 1 - ((y - predicted) ** 2).sum() / ((y - y.mean()) ** 2).sum()
    if shutil.which("Rscript") and method != "boosting":
        command = ["Rscript", "-e", RANGER, path, rows, inputs, selected, learners, threads]
        run = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                             text=True, check=False)
        if run.returncode == 0:
            yield ("ranger", *map(float, run.stdout.split()[-2:]), float("nan"))


def main():
    program = sys.argv[1]
    threads = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    words = sys.argv[3:]
    for case in CASES:
        name, rows, inputs, classes, method, learners, levels, selected = case
        if words and not any(word in name for word in words):
            continue
        x, y = make_table(rows, inputs, 0, classes)
        with tempfile.NamedTemporaryFile() as file:
            numpy.asfortranarray(numpy.column_stack([x, y])).T.tofile(file.name)
            command = [program, file.name, rows, inputs, classes, method, learners, levels, selected, 2]
            output = subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE,
                                    env={**os.environ, "OMP_NUM_THREADS": str(threads)}).stdout
            ours = json.loads(output)
            print(f"{name}: {rows} x {inputs}, {learners} learners, {threads} threads\n"
                  f"  {'here':28} fit {ours['fit']:8.3f} s              score {ours['score']:7.3f} s            "
                  f"quality {ours['quality']:.4f}  memory {ours['before']:.0f} -> {ours['peak']:.0f} MB")
            for peer, fit, score, quality in peers(file.name, x, y, case, threads):
                print(f"  {peer:28} fit {fit:8.3f} s ratio {fit / ours['fit']:5.1f}  score {score:7.3f} s "
                      f"ratio {score / ours['score']:4.1f} quality {quality:.4f}")
            sys.stdout.flush()


if __name__ == "__main__":
    main()
