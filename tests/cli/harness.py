"""Runs the program as its users do: real processes, in a folder that has nothing but data.

Each test file beside this one is run with the path of the program as its first argument.
"""

import csv
import io
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PROGRAM = ""  # set by main
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
        return subprocess.run([PROGRAM, *map(str, arguments)], cwd=self.folder, input=standard_input,
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


def main():
    global PROGRAM
    PROGRAM = str(Path(sys.argv.pop(1)).resolve())
    unittest.main(module="__main__")
