"""Models that the program fits, against the scorer of PMML in tests/interchange, which shares no code."""

import json
import os
import pty
import re
import signal
import subprocess
import sys

import harness
from harness import ROOT, TARGETS, Program, numbers, rows_of

sys.path.insert(0, str(ROOT / "tests" / "interchange"))

from pmml_fields import read_document  # noqa: E402
from pmml_scorer import Scorer  # noqa: E402

ALGORITHMS = {  # with options; an odd number of voters, since ties go by the cut-off, which PMML has not
    "decisionTree": ["--set", "maxNumLevels=4"],
    "naiveBayes": [],
    "bagging": ["--learner", "naiveBayes", "--set", "numWeakLearners=5"],
    "boosting": ["--set", "decisionTree.maxNumLevels=2"],
    "randomTrees": ["--set", "numWeakLearners=5", "--set", "numSelectedFeatures=2"],
}

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
                            told = got.get("Posterior Probability: " + label) or got[label]
                            self.assertAlmostEqual(float(told), expected.probabilities[label], delta=1e-9)

    def test_of_numbers_are_scored_so_too(self):
        self.run_well("fit", "decisionTree", "pima_tr2.csv", "--target", "glu", "--ignore", "type,ped",
                      "--set", "minNumRecordsInLeaves=20", "-m", "glu.xml")
        scored = rows_of(self.run_well("score", "glu.xml", "pima_tr2.csv"))
        scorer = Scorer(read_document(self.folder / "glu.xml"))
        self.assertNotIn("type", scorer.context.fields)
        for row, got in zip(rows_of(self.read("pima_tr2.csv")), scored):
            self.assertAlmostEqual(float(got["Prediction: glu"]), scorer.score(row).prediction, delta=1e-9)

    def test_are_not_made_when_the_user_interrupts(self):
        terminal, errors = pty.openpty()
        self.addCleanup(os.close, terminal)
        # Minutes of work, told of on the terminal.
        command = ["fit", "bagging", "iris.csv", "--target", "Species", "--set", "numWeakLearners=10000000"]
        with subprocess.Popen([harness.PROGRAM, *command, "--model", "never.json"], cwd=self.folder, stderr=errors,
                              stdout=subprocess.PIPE) as program:
            os.close(errors)
            told = b""
            while b"Weak Learner" not in told:
                told += os.read(terminal, 4096)
            program.send_signal(signal.SIGINT)
            self.assertEqual((program.stdout.read(), program.wait(60)), (b"", 130))
        self.assertIn("tessel: interrupted\r\n", os.read(terminal, 4096).decode())
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), sorted(TARGETS))

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
                common = ["pima_tr2.csv", "--target", "type", "--as", "json"]
                from_file = self.run_well("fit", "--estimator", "e.ladon", *common)
                options = [word for setting in settings for word in ("--set", setting)]
                from_settings = self.run_well("fit", "decisionTree", *common, *options)
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
            (["findBestModel", "--learner", "naiveBayes,bagging",
              "--set", "bagging.decisionTree.maxNumLevels=1"],
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

    def test_draw_by_the_seed(self):
        def forest(*options):
            return self.run_well("fit", "randomTrees", "iris.csv", "--target", "Species", "--as", "json",
                                 "--set", "numSelectedFeatures=2", *options)

        by_seed = forest("--seed", "9")
        self.assertEqual(by_seed, forest("--set", "bootstrapSeed=9", "--set", "featureSelectionSeed=9"))
        self.assertEqual(forest("--seed", "9", "--set", "bootstrapSeed=4"),
                         forest("--set", "bootstrapSeed=4", "--set", "featureSelectionSeed=9"))
        self.assertNotEqual(by_seed, forest())

    def test_of_searches_choose_what_is_best_alone(self):
        split = ["pima_tr2.csv", "--target", "type", "--validation", "0.4", "--seed", "3"]
        accuracies = {}
        for algorithm in ("decisionTree", "naiveBayes", "randomTrees"):
            metrics = self.table("evaluate", algorithm, *split, name="Metrics: Validation")
            accuracies[algorithm] = float(metrics[0]["Accuracy"])
        best = max(accuracies, key=accuracies.get)
        self.assertEqual(list(accuracies.values()).count(accuracies[best]), 1)
        told = self.run_well("fit", "findBestModel", *split, "--learner", ",".join(accuracies),
                             "-m", "best.pmml")
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
        for options in (["--index", "id"], []):  # the model knows its index columns
            scored = rows_of(self.run_well("score", "codes.json", "codes.csv", *options))
            self.assertEqual([r["Predicted Class"] for r in scored], [line.strip()[-1] for line in lines])
            self.assertEqual([r["id"] for r in scored], [line[:3] for line in lines])

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
        self.write("literal.csv", 'x,y\n"1",2\n')
        columns = self.table("describe", "literal.csv", "--literal-quotes", name="Columns")
        self.assertEqual([column["Type"] for column in columns], ["text", "numeric"])
        self.write("question.csv", text.replace("5.1,", "?,"))
        columns = self.table("describe", "question.csv", "--missing", "?", name="Columns")
        self.assertEqual(columns[0]["Type"], "numeric")


if __name__ == "__main__":
    harness.main()
