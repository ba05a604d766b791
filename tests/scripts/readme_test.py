"""The program that the README shows is the one that is built and run."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Readme(unittest.TestCase):
    def test_shows_the_example_as_it_is(self):
        shown = re.findall(r"```cpp\n(.*?)```", (ROOT / "README.md").read_text(encoding="utf-8"), re.DOTALL)
        self.assertEqual(len(shown), 1)
        example = (ROOT / "examples" / "naive_bayes.cpp").read_text(encoding="utf-8")
        self.assertIn(shown[0], example)


if __name__ == "__main__":
    unittest.main()
