"""What the program says when it cannot do what it is asked for."""

import json
import os
import subprocess
import unittest

import harness
from harness import Program, rows_of


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
        self.write("nested.ladon", json.dumps(tree | {"algorithm": "bagging", "parameters": {},
                                                      "weakLearner": tree}))

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
        ("fit bagging iris.csv --target Species --learner randomTrees", 1, r"bagging cannot take this"),
        ("fit bagging iris.csv --target Species --learner bagging,boosting", 1, r"takes one --learner"),
        ("fit naiveBayes iris.csv --target Species --learner decisionTree", 1, r"takes no --learner"),
        ("fit bagging iris.csv --target Species --set naiveBayes.a=1", 1, r"no learner 'naiveBayes'"),
        ("fit bagging iris.csv --target Species --set decisionTree.a=1", 1, r"Tree has no parameter 'a'"),
        ("fit bagging iris.csv --target PetalWidth --learner naiveBayes", 1, r"does no regression"),
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
            done = subprocess.run([harness.PROGRAM, "score", "iris.pmml", "iris.csv"], cwd=self.folder,
                                  stdout=full, stderr=subprocess.PIPE, timeout=300)
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


if __name__ == "__main__":
    harness.main()
