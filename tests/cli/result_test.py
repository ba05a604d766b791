"""Evaluations and tables, against what Python computes from the same files."""

import json
import math
import statistics
from collections import Counter

import harness
from harness import TARGETS, Program, numbers, rows_of


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
            moments = [statistics.mean(values), statistics.stdev(values)]
            expected = [*moments, min(values), *quartiles, max(values)]
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
        told = self.run_well("describe", "decisionTree", "--kind", "regression", "--format", "csv")
        parameters = rows_of(told)
        self.assertIn("maxNumLevels", {r["Name"] for r in parameters})
        self.assertNotIn("successClass", {r["Name"] for r in parameters})


if __name__ == "__main__":
    harness.main()
