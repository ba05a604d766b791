"""The helps of the program and what the README shows of it."""

import json
import os
import re
import shutil
import subprocess
from pathlib import Path

import harness
from harness import ROOT, Program

COMMANDS = ["fit", "score", "posteriors", "evaluate", "describe", "report", "convert", "synthesize"]


class Documentation(Program):
    def shell(self, command):
        environment = dict(os.environ, PATH=f"{Path(harness.PROGRAM).parent}{os.pathsep}{os.environ['PATH']}")
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
    harness.main()
