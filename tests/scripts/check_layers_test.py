"""The layer check accepts what the floors allow and names each kind of include that they forbid."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).resolve().parents[2] / "scripts" / "check-layers"

# A tree with a file in every room; each one is free to include those of the floors below.
HOUSE = {
    "include/tessel/api.h": "",
    "include/tessel/tessel.h": "#include <tessel/naive_bayes.h>\n#include <tessel/scoring/capi.h>\n",
    "include/tessel/data/table.h": "#include <tessel/api.h>\n#include <vector>\n",
    "include/tessel/evaluator/metrics.h": "#include <tessel/data/table.h>\n",
    "include/tessel/framework/handle.h": "#include <tessel/data/table.h>\n",
    "include/tessel/naive_bayes.h": "#include <tessel/framework/handle.h>\n",
    "include/tessel/time_series.h": "#include <cstdint>\n",
    "include/tessel/arima.h": "#include <tessel/time_series.h>\n",
    "include/tessel/scoring/capi.h": "#include <stddef.h>\n",
    "libs/data/cells.h": "#include <boost/version.hpp>\n",
    "libs/engine/solve.h": '#include "data/cells.h"\n',
    "libs/engine/nb/counts.h": '#include "engine/solve.h"\n',
    "libs/engine/dt/tree.h": '#include "data/cells.h"\n',
    "libs/evaluator/tables.h": '#include "data/cells.h"\n',
    "src/framework/parameter.h": "#include <tessel/framework/handle.h>\n",
    "src/serialization/names.h": '#include "framework/parameter.h"\n',
    "src/serialization/pmml/document.h": '#include "serialization/names.h"\n',
    "src/serialization/json/body.h": "",
    "src/supervised/shared.h": '#include "engine/nb/counts.h"\n',
    "src/supervised/naive_bayes/model.h": '#include "supervised/shared.h"\n#include <tessel/naive_bayes.h>\n',
    "src/supervised/decision_tree/model.h": '#include "evaluator/tables.h"\n',
    "src/supervised/bagging/model.h": '#include "supervised/decision_tree/model.h"\n',
    "src/supervised/learner_catalog.h": '#include "supervised/bagging/model.h"\n',
    "src/supervised/find_best_model/model.h": '#include "supervised/learner_catalog.h"\n',
    "src/sampling/binning/model.h": '#include "serialization/pmml/document.h"\n',
    "src/timeseries/arima.h": "#include <tessel/arima.h>\n",
    "src/scoring/catalog.h": '#include "supervised/naive_bayes/model.h"\n',
    "src/scoring/capi/guard.h": '#include "scoring/catalog.h"\n',
    "benchmarks/engine/tree.cpp": '#include "engine/dt/tree.h"\n',
    "cli/options.h": "",
    "cli/main.cpp": '#include "options.h"\n#include <tessel/tessel.h>\n#include <iostream>\n',
}

# file, the include it must not have, what the check says
VIOLATIONS = [
    ("libs/data/cells.h", '"engine/solve.h"', "floor 1"),
    ("libs/data/cells.h", '"framework/parameter.h"', "floor 2"),
    ("libs/data/cells.h", "<engine/solve.h>", "floor 1"),
    ("libs/engine/dt/tree.h", '"engine/nb/counts.h"', "engine/nb"),
    ("libs/engine/solve.h", '"engine/nb/counts.h"', "engine/nb"),
    ("libs/engine/dt/tree.h", '"evaluator/tables.h"', "evaluator"),
    ("libs/evaluator/tables.h", "<tessel/naive_bayes.h>", "floor 3"),
    ("src/framework/parameter.h", '"engine/solve.h"', "floor 1"),
    ("src/framework/parameter.h", '"serialization/names.h"', "serialization"),
    ("src/serialization/pmml/document.h", '"serialization/json/body.h"', "serialization/json"),
    ("src/serialization/pmml/document.h", '"evaluator/tables.h"', "floor 1"),
    ("src/supervised/naive_bayes/model.h", '"supervised/decision_tree/model.h"', "supervised/decision_tree"),
    ("src/supervised/naive_bayes/model.h", '"supervised/learner_catalog.h"', "learner_catalog"),
    ("src/supervised/decision_tree/model.h", '"supervised/bagging/model.h"', "supervised/bagging"),
    ("src/supervised/bagging/model.h", '"supervised/naive_bayes/model.h"', "supervised/naive_bayes"),
    ("src/supervised/shared.h", '"supervised/naive_bayes/model.h"', "supervised/naive_bayes"),
    ("src/sampling/binning/model.h", '"supervised/shared.h"', "supervised"),
    ("src/timeseries/arima.h", "<tessel/naive_bayes.h>", "supervised/naive_bayes"),
    ("src/timeseries/arima.h", '"scoring/catalog.h"', "floor 4"),
    ("src/scoring/catalog.h", '"scoring/capi/guard.h"', "floor 5"),
    ("src/scoring/catalog.h", "<tessel/tessel.h>", "umbrella"),
    ("cli/main.cpp", '"data/cells.h"', "floor 0"),
    ("benchmarks/engine/tree.cpp", '"framework/parameter.h"', "floor 2"),
    ("include/tessel/data/table.h", "<tessel/framework/handle.h>", "floor 2"),
    ("include/tessel/data/table.h", "<boost/version.hpp>", "third-party"),
    ("include/tessel/data/table.h", "<zlib.h>", "third-party"),
    ("include/tessel/data/table.h", '"data/cells.h"', "public header"),
    ("include/tessel/data/table.h", "<data/cells.h>", "private"),
    ("libs/data/cells.h", '"data/absent.h"', "no such file"),
    ("libs/data/cells.h", "<tessel/absent.h>", "no such file"),
    ("libs/data/cells.h", '"../engine/solve.h"', "without .."),
    ("libs/data/cells.h", '"tessel/data/table.h"', "<tessel/...>"),
    ("libs/data/cells.h", "HEADER_NAME", "computed"),
]


class CheckLayers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for name, text in HOUSE.items():
            self.write(name, text)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def check(self):
        run = subprocess.run([sys.executable, CHECK, self.root], capture_output=True, text=True)
        self.assertEqual(run.stderr, "")
        return run.returncode, run.stdout

    def test_accepts_a_tree_in_order(self):
        self.assertEqual(self.check(), (0, ""))

    def test_names_each_forbidden_include(self):
        for name, included, reason in VIOLATIONS:
            with self.subTest(file=name, include=included):
                self.write(name, HOUSE[name] + f"\n#  include {included}\n")
                line = HOUSE[name].count("\n") + 2
                status, output = self.check()
                self.assertEqual(status, 1)
                self.assertTrue(output.startswith(f"{name}:{line}: "), output)
                self.assertIn(reason, output.splitlines()[0])
                self.assertEqual(len(output.splitlines()), 2, output)
                self.write(name, HOUSE[name])

    def test_names_files_without_a_place(self):
        for name in ("src/misc/helper.h", "include/tessel/orphan.h", "libs/other/code.cpp"):
            with self.subTest(file=name):
                self.write(name, "")
                status, output = self.check()
                self.assertEqual(status, 1)
                self.assertTrue(output.startswith(f"{name}:1: has no place"), output)
                (self.root / name).unlink()


if __name__ == "__main__":
    unittest.main()
