"""The program as its users run it: real processes, in a folder that has nothing but data.

Usage: cli_test.py PROGRAM [unittest options]

Results are compared with what Python computes from the same files, and models with the scorer of PMML in
tests/interchange, which shares no code with the program.
"""

import csv
import io
import json
import math
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import unittest
from collections import Counter
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "interchange"))

from pmml_fields import read_document  # noqa: E402
from pmml_scorer import Scorer  # noqa: E402

PROGRAM = Path()
COMMANDS = ["fit", "score", "posteriors", "evaluate", "describe", "report", "convert"]
ALGORITHMS = {  # with options; an odd number of voters, since ties go by the cut-off, which PMML has not
    "decisionTree": ["--set", "maxNumLevels=4"],
    "naiveBayes": [],
    "bagging": ["--learner", "naiveBayes", "--set", "numWeakLearners=5"],
    "boosting": ["--set", "decisionTree.maxNumLevels=2"],
    "randomTrees": ["--set", "numWeakLearners=5", "--set", "numSelectedFeatures=2"],
}
TARGETS = {"iris.csv": "Species", "breast_cancer.csv": "diagnosis", "pima_tr2.csv": "type"}


def rows_of(text):
    return list(csv.DictReader(io.StringIO(text, newline="")))


def numbers(values):
    return [float(value) for value in values]


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in TARGETS:
            shutil.copy(ROOT / "examples" / "data" / name, self.folder)

    def process(self, *arguments, standard_input=None):
        return subprocess.run([str(PROGRAM), *map(str, arguments)], cwd=self.folder, input=standard_input,
                              capture_output=True, timeout=300)

    def run_well(self, *arguments, standard_input=None):
        """What a command that succeeds prints."""
        done = self.process(*arguments, standard_input=standard_input)
        self.assertEqual((done.returncode, done.stderr.decode()), (0, ""), arguments)
        return done.stdout.decode()

    def table(self, *arguments, name):
        """A report table as rows."""
        return rows_of(self.run_well(*arguments, "--table", name, "--format", "csv"))

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8", newline="")

    def read(self, name):
        return (self.folder / name).read_text(encoding="utf-8")

    def fit(self, algorithm, data, model, *options):
        self.run_well("fit", algorithm, data, "--target", TARGETS.get(data, "y"), "--model", model, *options)


class Models(Program):
    def test_are_scored_as_an_independent_program_scores_their_pmml(self):
        for data, target in TARGETS.items():
            for algorithm, options in ALGORITHMS.items():
                with self.subTest(data=data, algorithm=algorithm):
                    self.fit(algorithm, data, "model.pmml", *options)
                    scored = rows_of(self.run_well("posteriors", "model.pmml", data, "--with-prediction"))
                    scorer = Scorer(read_document(self.folder / "model.pmml"))
                    rows = rows_of(self.read(data))
                    self.assertEqual(len(scored), len(rows))
                    for row, got in zip(rows, scored):
                        expected = scorer.score({name: row[name] for name in row if name != target})
                        self.assertEqual(got["Predicted Class"], expected.prediction)
                        for label in {row[target] for row in rows}:
                            # Ensembles name the columns by the classes alone. Logarithms of 30 densities add
                            # up to hundreds: 1e-9 is 1e4 roundings of these.
                            probability = got.get("Posterior Probability: " + label) or got[label]
                            self.assertAlmostEqual(float(probability), expected.probabilities[label], delta=1e-9)

    def test_of_numbers_are_scored_so_too(self):
        self.run_well("fit", "decisionTree", "pima_tr2.csv", "--target", "glu", "--ignore", "type,ped", "--set",
                      "minNumRecordsInLeaves=20", "-m", "glu.xml")
        scored = rows_of(self.run_well("score", "glu.xml", "pima_tr2.csv"))
        scorer = Scorer(read_document(self.folder / "glu.xml"))
        self.assertNotIn("type", scorer.context.fields)
        for row, got in zip(rows_of(self.read("pima_tr2.csv")), scored):
            self.assertAlmostEqual(float(got["Prediction: glu"]), scorer.score(row).prediction, delta=1e-9)

    def test_keep_their_scores_through_all_formats(self):
        self.fit("decisionTree", "pima_tr2.csv", "a.pmml", "--success-class", "Yes", "--cutoff", "0.3")
        expected = self.run_well("score", "a.pmml", "pima_tr2.csv")
        for result, options in [("b.json", []), ("c.ladon", []), ("d", ["--as", "pmml"]), ("e.xml", [])]:
            source = {"b.json": "a.pmml", "c.ladon": "b.json", "d": "c.ladon", "e.xml": "d"}[result]
            self.run_well("convert", source, result, *options)
            self.assertEqual(self.run_well("score", result, "pima_tr2.csv"), expected, result)

    def test_and_data_come_through_standard_input(self):
        model = self.run_well("fit", "naiveBayes", "-", "--target", "Species",
                              standard_input=(self.folder / "iris.csv").read_bytes())
        self.write("iris.pmml", model)
        expected = self.run_well("score", "iris.pmml", "iris.csv")
        data = (self.folder / "iris.csv").read_bytes()
        self.assertEqual(self.run_well("score", "iris.pmml", "-", standard_input=data), expected)
        self.assertEqual(self.run_well("score", "-", "iris.csv", standard_input=model.encode()), expected)
        self.assertEqual(self.run_well("describe", "-", standard_input=data),
                         self.run_well("describe", "iris.csv"))
        self.assertEqual(self.run_well("describe", "-", standard_input=model.encode()),
                         self.run_well("describe", "iris.pmml"))


class Fits(Program):
    def test_take_parameters_from_settings_as_from_a_ladon_file(self):
        cases = {  # settings, and the parameters of the text
            ("maxNumLevels=2", "priorProbMethod=uniform"): {"maxNumLevels": 2, "priorProbMethod": "UNIFORM"},
            ("MAXNUMSPLITS=3",): {"maxNumSplits": 3},
            ("priorProb=No:0.25,Yes:0.75",): {"priorProb": {"No": 0.25, "Yes": 0.75},
                                              "priorProbMethod": "EXPLICIT"},
            ("categoricalFeaturesNames=npreg,age",): {"categoricalFeaturesNames": ["npreg", "age"]},
            ('categoricalFeaturesOffsets=[0, 6]',): {"categoricalFeaturesOffsets": [0, 6]},
        }
        plain = self.run_well("fit", "decisionTree", "pima_tr2.csv", "--target", "type", "--as", "json")
        for settings, parameters in cases.items():
            with self.subTest(settings=settings):
                self.write("e.ladon", json.dumps({"objectType": "estimator", "type": "classification",
                                                  "algorithm": "decisionTree", "parameters": parameters}))
                from_file = self.run_well("fit", "--estimator", "e.ladon", "pima_tr2.csv", "--target", "type",
                                          "--as", "json")
                options = [word for setting in settings for word in ("--set", setting)]
                from_settings = self.run_well("fit", "decisionTree", "pima_tr2.csv", "--target", "type", "--as",
                                              "json", *options)
                self.assertEqual(from_settings, from_file)
                self.assertNotEqual(from_settings, plain)

    def test_take_learners_from_settings_as_from_a_ladon_file(self):
        def described(algorithm, **members):
            return {"objectType": "estimator", "type": "classification", "algorithm": algorithm,
                    "parameters": {}} | members

        small, smooth = {"maxNumLevels": 1}, {"laplaceSmoothing": 2.5}
        cases = [
            (["bagging", "--set", "decisionTree.maxNumLevels=1"],
             described("bagging", weakLearner=described("decisionTree", parameters=small))),
            (["boosting", "--learner", "naiveBayes", "--set", "naiveBayes.laplaceSmoothing=2.5"],
             described("boosting", weakLearner=described("naiveBayes", parameters=smooth))),
            (["findBestModel", "--learner", "naiveBayes,bagging", "--set", "bagging.decisionTree.maxNumLevels=1"],
             described("findBestModel", learners=[
                 described("naiveBayes"),
                 described("bagging", weakLearner=described("decisionTree", parameters=small))])),
        ]
        for arguments, description in cases:
            with self.subTest(arguments=arguments):
                self.write("e.ladon", json.dumps(description))
                common = ["pima_tr2.csv", "--target", "type", "--as", "json"]
                from_settings = self.run_well("fit", arguments[0], *common, *arguments[1:])
                self.assertEqual(from_settings, self.run_well("fit", "--estimator", "e.ladon", *common))
                self.assertNotEqual(from_settings, self.run_well("fit", arguments[0], *common))

    def test_of_searches_choose_what_is_best_alone(self):
        split = ["pima_tr2.csv", "--target", "type", "--validation", "0.4", "--seed", "3"]
        accuracies = {}
        for algorithm in ("decisionTree", "naiveBayes", "randomTrees"):
            metrics = self.table("evaluate", algorithm, *split, name="Metrics: Validation")
            accuracies[algorithm] = float(metrics[0]["Accuracy"])
        best = max(accuracies, key=accuracies.get)
        self.assertEqual(list(accuracies.values()).count(accuracies[best]), 1)
        told = self.run_well("fit", "findBestModel", *split, "--learner", ",".join(accuracies), "-m", "best.pmml")
        self.assertIn(f"{accuracies[best]:.6g}", told)
        facts = {r["Name"]: r["Value"] for r in self.table("describe", "best.pmml", name="Model")}
        self.assertEqual(facts["Algorithm"], best)

    def test_weigh_a_row_as_often_as_it_stands_there(self):
        rows = [(x, (x * 7) % 5, x % 3 + 1) for x in range(40)]
        self.write("weighted.csv", "x,y,w\n" + "".join(f"{x},{y},{w}\n" for x, y, w in rows))
        self.write("repeated.csv", "x,y\n" + "".join(f"{x},{y}\n" * w for x, y, w in rows))
        self.fit("decisionTree", "weighted.csv", "weighted.json", "--weights", "w", "--set", "maxNumLevels=3")
        self.fit("decisionTree", "repeated.csv", "repeated.json", "--set", "maxNumLevels=3")
        scores = [numbers(r["Prediction: y"] for r in rows_of(self.run_well("score", model, "weighted.csv")))
                  for model in ("weighted.json", "repeated.json")]
        for weighted, repeated in zip(*scores):
            self.assertAlmostEqual(weighted, repeated, delta=1e-12)
        self.assertGreater(len(set(scores[0])), 4)
        metrics = [self.table("evaluate", "weighted.json", data, *options, name="Metrics")[0]
                   for data, options in [("weighted.csv", ["--weights", "w"]), ("repeated.csv", [])]]
        for name in ("SSE", "R2"):
            self.assertAlmostEqual(float(metrics[0][name]), float(metrics[1][name]), delta=1e-9)

    def test_treat_a_numeric_target_as_they_are_told(self):
        self.write("t.csv", "x,y\n" + "".join(f"{i},{i % 2}\n" for i in range(20)))
        columns = {"": "Prediction: y", "regression": "Prediction: y", "classification": "Predicted Class"}
        for kind, column in columns.items():
            self.fit("decisionTree", "t.csv", "t.json", *(["--kind", kind] if kind else []))
            self.assertEqual(list(rows_of(self.run_well("score", "t.json", "t.csv"))[0]), [column])
        self.fit("naiveBayes", "t.csv", "t.json")  # which only classifies
        predicted = [r["Predicted Class"] for r in rows_of(self.run_well("score", "t.json", "t.csv"))]
        self.assertEqual(set(predicted), {"0", "1"})

    def test_keep_categories_and_identifiers_letter_for_letter(self):
        lines = [f"{i:03},{'01' if i % 2 else '1'},{'a' if i % 2 else 'b'}\n" for i in range(20)]
        self.write("codes.csv", "id,code,y\n" + "".join(lines))
        self.fit("decisionTree", "codes.csv", "codes.json", "--categorical", "code", "--index", "id")
        inputs = self.table("describe", "codes.json", name="Inputs")
        self.assertEqual(inputs, [{"Name": "code", "Type": "categorical"}])
        scored = rows_of(self.run_well("score", "codes.json", "codes.csv", "--index", "id"))
        self.assertEqual([(r["id"], r["Predicted Class"]) for r in scored],
                         [(line.split(",")[0], line.strip().split(",")[2]) for line in lines])

    def test_prune_by_the_rows_that_are_held_out(self):
        def num_nodes(*options):
            self.fit("decisionTree", "breast_cancer.csv", "tree.json", "--validation", "0.4", *options)
            return len(self.table("report", "tree.json", name="All Nodes Info"))

        self.assertLess(num_nodes("--set", "prunedTreeType=BEST_PRUNED"), num_nodes())

    def test_read_other_dialects_of_text(self):
        text = self.read("iris.csv")
        cases = {
            "semicolons.csv": (text.replace(",", ";"), ["--delimiter", ";"]),
            "tabs.csv": (text.replace(",", "\t"), ["--delimiter", "tab"]),
            "quotes.csv": (re.sub(r"(\w+)(\r?\n)", r'"\1"\2', text), []),
            "bom.csv": ("\ufeff" + text, []),
        }
        expected = self.run_well("fit", "naiveBayes", "iris.csv", "--target", "Species", "--as", "json")
        for name, (variant, options) in cases.items():
            self.write(name, variant)
            got = self.run_well("fit", "naiveBayes", name, "--target", "Species", "--as", "json", *options)
            self.assertEqual(got, expected, name)
        self.write("headless.csv", text.split("\n", 1)[1])
        self.run_well("fit", "naiveBayes", "headless.csv", "--no-header", "--target", "Var5", "-m", "v.json")
        self.write("question.csv", text.replace("5.1,", "?,"))
        columns = self.table("describe", "question.csv", "--missing", "?", name="Columns")
        self.assertEqual(columns[0]["Type"], "numeric")


class Evaluations(Program):
    def test_of_classes_are_what_the_scores_tell(self):
        for data, target in TARGETS.items():
            with self.subTest(data=data):
                self.fit("naiveBayes", data, "m.json")
                scored = rows_of(self.run_well("posteriors", "m.json", data, "--with-prediction",
                                               "--with-input"))
                pairs = Counter((r[target], r["Predicted Class"]) for r in scored)
                confusion = self.table("evaluate", "m.json", data, name="Confusion Matrix")
                classes = sorted({r[target] for r in scored})
                self.assertEqual([[r["Name"]] + [int(r[c]) for c in classes] for r in confusion],
                                 [[actual] + [pairs[actual, c] for c in classes] for actual in classes])
                metrics = self.table("evaluate", "m.json", data, name="Metrics")[0]
                share = sum(n for (a, p), n in pairs.items() if a == p) / len(scored)
                self.assertAlmostEqual(float(metrics["Accuracy"]), share, delta=1e-14)
                epsilon = 2.0 ** -52
                loss = 0.0
                for row in scored:
                    clipped = {c: min(max(float(row["Posterior Probability: " + c]), epsilon), 1 - epsilon)
                               for c in classes}
                    loss -= math.log(clipped[row[target]] / sum(clipped.values())) / len(scored)
                self.assertAlmostEqual(float(metrics["Log loss"]), loss, delta=1e-12)

    def test_of_two_classes_rank_by_the_success_class(self):
        self.fit("naiveBayes", "pima_tr2.csv", "m.json")
        scored = rows_of(self.run_well("posteriors", "m.json", "pima_tr2.csv", "--with-input"))
        for success in ("Yes", "No"):
            score = {True: [], False: []}
            for row in scored:
                score[row["type"] == success].append(float(row["Posterior Probability: " + success]))
            above = sum((a > b) + (a == b) / 2 for a in score[True] for b in score[False])
            metrics = self.table("evaluate", "m.json", "pima_tr2.csv", "--success-class", success,
                                 name="Metrics")[0]
            auc = above / len(score[True]) / len(score[False])
            self.assertAlmostEqual(float(metrics["AUC"]), auc, delta=1e-12)
            for cutoff in (0.1, 0.9):
                predicted = Counter(r["Predicted Class"] for r in rows_of(self.run_well(
                    "score", "m.json", "pima_tr2.csv", "--success-class", success, "--cutoff", cutoff)))
                self.assertEqual(predicted[success], sum(p >= cutoff for p in score[True] + score[False]))

    def test_of_numbers_are_what_the_scores_tell(self):
        self.run_well("fit", "decisionTree", "iris.csv", "--target", "PetalWidth", "-m", "w.json", "--set",
                      "maxNumLevels=3")
        scored = rows_of(self.run_well("score", "w.json", "iris.csv", "--with-input"))
        actual, predicted = (numbers(r[c] for r in scored) for c in ("PetalWidth", "Prediction: PetalWidth"))
        sse = sum((a - p) ** 2 for a, p in zip(actual, predicted))
        metrics = self.table("evaluate", "w.json", "iris.csv", name="Metrics")[0]
        self.assertAlmostEqual(float(metrics["RMSE"]), math.sqrt(sse / len(actual)), delta=1e-12)
        r2 = 1 - sse / (statistics.pvariance(actual) * len(actual))
        self.assertAlmostEqual(float(metrics["R2"]), r2, delta=1e-12)

    def test_hold_out_random_rows_by_a_seed(self):
        def confusion(seed, part):
            rows = self.table("evaluate", "decisionTree", "iris.csv", "--target", "Species", "--validation",
                              "0.3", *(["--seed", seed] if seed else []), name="Confusion Matrix: " + part)
            return [[int(r[c]) for c in r if c != "Name"] for r in rows]

        for part, size in {"Training": 105, "Validation": 45}.items():
            self.assertEqual(sum(map(sum, confusion(7, part))), size)
        training = confusion(7, "Training")
        self.assertEqual(sum(training[i][i] for i in range(3)), 105)  # a full-grown tree knows its rows
        validations = [confusion(seed, "Validation") for seed in range(1, 6)]
        self.assertGreater(len({str(v) for v in validations}), 1)
        self.assertEqual(confusion(3, "Validation"), validations[2])
        self.assertEqual(confusion("", "Validation"), confusion(12345, "Validation"))


class Results(Program):
    def test_of_all_formats_are_the_same(self):
        self.fit("naiveBayes", "pima_tr2.csv", "m.json")
        text = self.run_well("posteriors", "m.json", "pima_tr2.csv", "--with-input")
        self.assertNotIn("\r", text)
        for name in ("out.csv", "out.json", "out.txt"):
            self.run_well("posteriors", "m.json", "pima_tr2.csv", "--with-input", "--output", name)
        self.assertEqual(self.read("out.csv"), text)
        rows = rows_of(text)
        columns = json.loads(self.read("out.json"))["columns"]
        self.assertEqual([c["name"] for c in columns], list(rows[0]))
        for column in columns:
            values = [row[column["name"]] for row in rows]
            if column["type"] == "numeric":
                self.assertEqual(column["values"], [float(v) if v else None for v in values])
            else:
                self.assertEqual(column["values"], values)
        self.assertIn("... 240 more rows\n", self.read("out.txt"))
        tables = json.loads(self.run_well("report", "m.json", "--format", "json"))
        self.assertIn("Prior Probabilities", [table["name"] for table in tables])

    def test_of_describe_are_those_of_the_columns(self):
        rows = rows_of(self.read("pima_tr2.csv"))
        for told in self.table("describe", "pima_tr2.csv", name="Columns"):
            texts = [row[told["Name"]] for row in rows if row[told["Name"]]]
            self.assertEqual([int(told[c]) for c in ("Count", "Missing", "Distinct")],
                             [len(texts), len(rows) - len(texts), len(set(texts))], told["Name"])
            if told["Type"] == "text":
                mode, count = Counter(texts).most_common(1)[0]
                self.assertEqual((told["Most frequent"], told["Frequency"], told["Mean"]),
                                 (mode, str(count), ""))
                continue
            values = numbers(texts)
            quartiles = statistics.quantiles(values, method="inclusive")
            expected = [statistics.mean(values), statistics.stdev(values), min(values), *quartiles, max(values)]
            for name, value in zip(("Mean", "Std. dev.", "Min", "Q1", "Median", "Q3", "Max"), expected):
                self.assertAlmostEqual(float(told[name]), value, delta=1e-12 * abs(value),
                                       msg=(told["Name"], name))

    def test_of_describe_tell_models_and_parameters(self):
        self.fit("decisionTree", "breast_cancer.csv", "m.pmml", "--name", "Tumours")
        facts = {r["Name"]: r["Value"] for r in self.table("describe", "m.pmml", name="Model")}
        self.assertEqual(facts, {"Name": "Tumours", "Kind": "classification", "Algorithm": "decisionTree",
                                 "Target": "diagnosis", "Classes": "malignant, benign",
                                 "Success class": "malignant", "Success probability": "0.5"})
        header = self.read("breast_cancer.csv").split("\n")[0].strip().split(",")
        inputs = self.table("describe", "m.pmml", name="Inputs")
        self.assertEqual([(r["Name"], r["Type"]) for r in inputs], [(c, "continuous") for c in header[:-1]])
        parameters = rows_of(self.run_well("describe", "decisionTree", "--kind", "regression", "--format", "csv"))
        self.assertIn("maxNumLevels", {r["Name"] for r in parameters})
        self.assertNotIn("successClass", {r["Name"] for r in parameters})


class Errors(Program):
    """A command that fails says why in one line, prints nothing else and leaves no file."""

    def setUp(self):
        super().setUp()
        self.fit("decisionTree", "iris.csv", "iris.pmml", "--set", "maxNumLevels=2")
        self.fit("naiveBayes", "pima_tr2.csv", "pima.json")
        self.run_well("fit", "decisionTree", "pima_tr2.csv", "--target", "glu", "--model", "glu.json")
        self.write("empty.csv", "")
        self.write("header.csv", "SepalLength,SepalWidth,PetalLength,PetalWidth,Species\n")
        self.write("ragged.csv", "a,b\n1,2\n3\n")
        self.write("quote.csv", 'a,b\n1,"2\n')
        self.write("word.csv", self.read("iris.csv").replace("4.9,3,", "4.9,three,", 1))
        self.write("hole.csv", "x,y\n1,a\n2,\n3,b\n")
        self.write("one.csv", "x,y\n1,a\n2,a\n")
        self.write("twice.csv", "SepalLength,SepalLength,Species\n1,2,a\n3,4,b\n")
        (self.folder / "latin.csv").write_bytes(b"x,y\n\xe9,1\n")
        self.write("broken.pmml", self.read("iris.pmml")[:600])
        self.write("broken.json", self.read("pima.json")[:100])
        self.write("other.json", '{"type": "classification", "algorithm": "astrology"}')
        for name, parameters in {"unknown": {"maxLevels": 3}, "mistyped": {"maxNumLevels": "3"}}.items():
            self.write(name + ".ladon", json.dumps({"objectType": "estimator", "type": "classification",
                                                    "algorithm": "decisionTree", "parameters": parameters}))
        tree = json.loads(self.read("unknown.ladon"))
        self.write("nested.ladon", json.dumps({"objectType": "estimator", "type": "classification", "parameters": {},
                                               "algorithm": "bagging", "weakLearner": tree}))

    CASES = [  # command line, exit status, what the message tells
        ("fit decisionTree nosuch.csv --target y", 1, r"nosuch\.csv: cannot be read"),
        ("fit decisionTree empty.csv --target y", 1, r"empty\.csv: the file is empty"),
        ("fit decisionTree header.csv --target Species", 1, r"too few rows"),
        ("fit decisionTree ragged.csv --target b", 1, r"ragged\.csv: Row 3, .*too few cells"),
        ("fit decisionTree quote.csv --target b", 1, r"quote\.csv: Row 2"),
        ("fit decisionTree latin.csv --target y", 1, r"latin\.csv: .*UTF-8 at offset 4"),
        ("fit decisionTree hole.csv --target y", 1, r"missing cells"),
        ("fit decisionTree one.csv --target y", 1, r"[Cc]lass"),
        ("fit decisionTree twice.csv --target Species", 1, r"SepalLength"),
        ("fit decisionTree iris.csv --target species", 1,
         r"no column 'species'; the columns are SepalLength, "),
        ("fit decisionTree iris.csv", 1, r"--target is needed"),
        ("fit decisionTree iris.csv --target Species --ignore Colour", 1, r"no column 'Colour'"),
        ("fit decisionTree iris.csv --target Species --features Colour", 1, r"no column 'Colour'"),
        ("fit decisionTree iris.csv --target Species --index Colour", 1, r"'Colour'"),
        ("fit decisionTree iris.csv --target Species --categorical Colour", 1, r"'Colour'"),
        ("fit decisionTree iris.csv --target PetalWidth --weights Species", 1,
         r"weights .*'Species' are no numbers"),
        ("fit decisionTree iris.csv --target Species --features Species", 1, r"target is among"),
        ("fit decisionTree iris.csv --target Species --validation 0.001", 1, r"empty"),
        ("fit decisionTree iris.csv --target Species --delimiter ab", 1, r"delimiter"),
        ("fit oracle iris.csv --target Species", 1,
         r"no algorithm 'oracle'; the algorithms are .*naiveBayes"),
        ("fit naiveBayes iris.csv --target Species --kind regression", 1, r"naiveBayes does no regression"),
        ("fit naiveBayes iris.csv --target Species --weights PetalWidth", 1,
         r"naiveBayes takes no .*weights"),
        ("fit decisionTree iris.csv --target PetalWidth --cutoff 0.5", 1, r"no classifier"),
        ("fit decisionTree iris.csv --target Species --success-class blue", 1, r"[Ss]uccess class"),
        ("fit decisionTree iris.csv --target Species --set maxLevels=3", 1,
         r"no parameter 'maxLevels'.* maxNumLevels,"),
        ("fit decisionTree iris.csv --target Species --set maxNumLevels", 1, r"parameter=value"),
        ("fit decisionTree iris.csv --target Species --set maxNumLevels=2.5", 1, r"'2\.5' .*of type int"),
        ("fit decisionTree iris.csv --target Species --set maxNumLevels=-1", 1,
         r"Max #levels .*\[0,2147483647\]"),
        ("fit decisionTree iris.csv --target Species --set priorProbMethod=fair", 1,
         r"\{EMPIRICAL, UNIFORM, EXPLICIT\}"),
        ("fit decisionTree iris.csv --target Species --set categoricalFeaturesOffsets=a", 1,
         r"'a' .*IntVector"),
        ("fit decisionTree iris.csv --target Species --set categoricalFeaturesNames=[", 1, r"StringVector"),
        ("fit decisionTree iris.csv --target Species --set maxNumLevels=1 --set maxnumlevels=2", 1,
         r"set twice"),
        ("fit bagging iris.csv --target Species --learner randomTrees", 1, r"bagging cannot take this --learner"),
        ("fit bagging iris.csv --target Species --learner decisionTree,naiveBayes", 1, r"takes one --learner"),
        ("fit naiveBayes iris.csv --target Species --learner decisionTree", 1, r"takes no --learner"),
        ("fit bagging iris.csv --target Species --set naiveBayes.a=1", 1, r"no learner 'naiveBayes'"),
        ("fit bagging iris.csv --target Species --set decisionTree.a=1", 1, r"decisionTree has no parameter 'a'"),
        ("fit bagging iris.csv --target PetalWidth --learner naiveBayes", 1, r"naiveBayes does no regression"),
        ("fit --estimator nested.ladon iris.csv --target Species", 1, r"no parameter 'maxLevels'"),
        ("fit --estimator unknown.ladon iris.csv --target Species", 1, r"no parameter 'maxLevels'"),
        ("fit --estimator mistyped.ladon iris.csv --target Species", 1,
         r"maxNumLevels, which is of type int"),
        ("fit --estimator broken.json iris.csv --target Species", 1, r"broken\.json: is no Ladon"),
        ("fit --estimator unknown.ladon decisionTree iris.csv --target Species", 1, r"--estimator names"),
        ("fit decisionTree iris.csv --target Species --model new.bin", 1, r"new\.bin: the ending"),
        ("fit decisionTree iris.csv --target Species --model no/new.json", 1,
         r"no/new\.json: cannot be written"),
        ("score nosuch.pmml iris.csv", 1, r"nosuch\.pmml: cannot be read"),
        ("score broken.pmml iris.csv", 1, r"broken\.pmml: .*PMML"),
        ("score broken.json iris.csv", 1, r"broken\.json: .*JSON"),
        ("score other.json iris.csv", 1, r"other\.json: .*astrology"),
        ("score iris.csv iris.csv", 1, r"iris\.csv: is no model"),
        ("score iris.pmml nosuch.csv", 1, r"nosuch\.csv: cannot be read"),
        ("score iris.pmml pima_tr2.csv", 1, r"no column 'SepalLength', which the model needs"),
        ("score iris.pmml word.csv", 1, r"word\.csv: Row 3, column 2: .*no number"),
        ("score iris.pmml iris.csv --success-class blue", 1, r"[Ss]uccess class"),
        ("score pima.json pima_tr2.csv --cutoff 2", 1, r"\[0.*1"),
        ("score glu.json pima_tr2.csv --cutoff 0.5", 1, r"glu\.json: is no classifier"),
        ("posteriors glu.json pima_tr2.csv", 1, r"glu\.json: is no classifier"),
        ("score iris.pmml iris.csv --output no/new.csv", 1, r"no/new\.csv: cannot be written"),
        ("score - -", 1, r"both come from standard input"),
        ("evaluate iris.pmml iris.csv --format csv", 1, r"choose it with --table: Confusion Matrix, "),
        ("evaluate iris.pmml iris.csv --table Confusion", 1,
         r"no table 'Confusion'; the tables are Confusion Matrix"),
        ("evaluate iris.pmml iris.csv --roc", 1, r"--success-class"),
        ("evaluate iris.pmml iris.csv --validation 0.5", 1, r"--validation"),
        ("evaluate iris.pmml header.csv", 1, r"too few rows"),
        ("describe empty.csv", 1, r"empty\.csv: the file is empty"),
        ("describe iris.csv --kind regression", 1, r"--kind"),
        ("report broken.pmml", 1, r"broken\.pmml"),
        ("convert iris.pmml", 1, r"the new format is needed"),
        ("", 2, r"tessel --help"),
        ("fly", 2, r"no command 'fly'"),
        ("score iris.pmml", 2, r"DATA is required .*tessel score --help"),
        ("score iris.pmml iris.csv --colour", 2, r"--colour"),
        ("score iris.pmml iris.csv --format xml", 2, r"xml"),
        ("score iris.pmml iris.csv --cutoff high", 2, r"high"),
        ("fit decisionTree iris.csv --target Species --estimator unknown.ladon --set a=1", 2, r"--set"),
    ]

    def test_are_told_in_one_line(self):
        before = {path: path.read_bytes() for path in self.folder.iterdir()}
        for arguments, status, message in self.CASES:
            with self.subTest(command=arguments):
                done = self.process(*arguments.split())
                error = done.stderr.decode()
                self.assertEqual((done.returncode, done.stdout), (status, b""), error)
                self.assertRegex(error, r"\Atessel: [^\n]+\n\Z")
                self.assertRegex(error, message)
                self.assertEqual({path: path.read_bytes() for path in self.folder.iterdir()}, before)

    @unittest.skipUnless(os.path.exists("/dev/full"), "there is no full device")
    def test_of_a_full_device_are_told(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([str(PROGRAM), "score", "iris.pmml", "iris.csv"], cwd=self.folder, stdout=full,
                                  stderr=subprocess.PIPE, timeout=300)
        self.assertEqual((done.returncode, done.stderr), (1, b"tessel: standard output cannot be written\n"))

    def test_are_none_for_a_category_that_training_did_not_show(self):
        self.write("train.csv", "colour,y\n" + "red,a\nblue,b\n" * 5)
        self.fit("naiveBayes", "train.csv", "m.json")
        self.write("new.csv", "colour\nred\ngreen\n\n")
        scored = rows_of(self.run_well("posteriors", "m.json", "new.csv"))
        self.assertEqual(float(scored[1]["Posterior Probability: a"]), 0.5)  # the prior: it tells nothing
        self.write("new.csv", "colour,y\nred,c\nblue,b\n")
        confusion = self.table("evaluate", "m.json", "new.csv", name="Confusion Matrix")
        self.assertEqual([list(r.values()) for r in confusion],
                         [["a", "0", "0", "0"], ["b", "0", "1", "0"], ["c", "1", "0", "0"]])


class Documentation(Program):
    def shell(self, command):
        environment = dict(os.environ, PATH=f"{PROGRAM.parent}{os.pathsep}{os.environ['PATH']}")
        return subprocess.run(["sh", "-c", command], cwd=self.folder, env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=300)

    def test_of_every_command_is_there(self):
        self.assertRegex(self.run_well("--version"), r"^tessel \d+\.\d+\.\d+\n$")
        for command in COMMANDS:
            self.assertIn("\n  " + command, self.run_well("--help"))
            self.assertIn("Usage: tessel " + command, self.run_well(command, "--help"))

    def test_shows_examples_that_work(self):
        for name in ("new.csv", "held_out.csv"):
            shutil.copy(self.folder / "iris.csv", self.folder / name)
        sales = (f"{i},n{i},{i * i % 17},{i % 3 + 1},{i}\n" for i in range(30))
        self.write("sales.csv", "id,comment,price,count,revenue\n" + "".join(sales))
        self.write("tree.ladon", json.dumps({"objectType": "estimator", "type": "classification",
                                             "algorithm": "decisionTree", "parameters": {"maxNumLevels": 3}}))
        num_examples = 0
        for command in ["", *COMMANDS]:
            for name in ("iris.pmml", "iris.json", "iris.ladon"):
                self.fit("decisionTree", "iris.csv", name)
            text = self.run_well(*command.split(), "--help").split("\nExamples:\n")[1]
            for example in re.findall(r"^ +((?:cat \S+ \| )?tessel .*)$", text, re.MULTILINE):
                with self.subTest(example=example):
                    if "tumours.pmml" in example:
                        self.fit("naiveBayes", "breast_cancer.csv", "tumours.pmml")
                        example = example.replace("new.csv", "breast_cancer.csv")
                    done = self.shell(example)
                    self.assertEqual(done.returncode, 0, done.stdout.decode())
                    num_examples += 1
        self.assertGreater(num_examples, 20)

    def test_in_the_readme_is_true(self):
        text = (ROOT / "README.md").read_text(encoding="utf-8")
        session = "".join(re.findall(r"```console\n(.*?)```", text, re.DOTALL))
        steps = re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", session, re.MULTILINE)
        self.assertGreater(len(steps), 4)
        for command, output in steps:
            self.assertEqual(self.shell(command).stdout.decode(), output, command)


if __name__ == "__main__":
    PROGRAM = Path(sys.argv.pop(1)).resolve()
    unittest.main()
