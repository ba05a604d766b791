"""Scores the rows of a table with a PMML 4.2 document.

Usage: pmml_scorer.py MODEL.pmml DATA.csv

The data are comma-separated with a line of field names; an empty cell is missing. The output is
comma-separated too: a column `prediction` and, for classifiers, a column `P(class)` for each class in the
order of the data dictionary. Numbers have 17 significant digits; a result that the model does not give is
empty. A model element, expression or method that is not known here is an error, never passed over.

SCORERS lists the model elements: a new family is a file with a function, and a line there.
"""

import csv
import sys

from pmml_ensemble import score_ensemble
from pmml_fields import Field, PmmlError, Record, child, child_among, read_document
from pmml_model import Context, is_classifier
from pmml_naive_bayes import score_naive_bayes
from pmml_regression import score_regression
from pmml_tree import score_tree

SCORERS = {
    "TreeModel": score_tree,
    "NaiveBayesModel": score_naive_bayes,
    "RegressionModel": score_regression,
    "MiningModel": score_ensemble,
}


class Scorer:
    """A document, ready to score rows."""

    def __init__(self, root):
        fields = {f.name: f for f in map(Field, child(root, "DataDictionary").findall("DataField"))}
        self.root = root
        self.context = Context(fields, SCORERS)
        self.model = child_among(root, SCORERS)
        self.is_classifier = is_classifier(self.model)
        self.labels = self.context.labels(self.model)

    def score(self, cells):
        """The result for the texts of a row by the names of their columns; None and "" are missing.

        Fields that the model uses must be among them, others need not."""
        fields = {name: field for name, field in self.context.fields.items() if name in cells}
        values = {name: field.read(cells[name]) for name, field in fields.items()}
        derived = self.root.findall("TransformationDictionary/DerivedField")
        return self.context.score(self.model, Record(values, fields).derive(derived))


def cell(value):
    return "" if value is None else f"{value:.17g}" if isinstance(value, float) else value


def write_scores(scorer, rows, output):
    """One line per row; without declared classes the columns are those that some row has."""
    results = [scorer.score(row) for row in rows]
    labels = scorer.labels or sorted({c for r in results for c in r.probabilities or {}})
    labels = labels if scorer.is_classifier else []
    writer = csv.writer(output, lineterminator="\n")
    writer.writerow(["prediction"] + [f"P({label})" for label in labels])
    for result in results:
        probabilities = result.probabilities and dict.fromkeys(labels, 0.0) | result.probabilities
        writer.writerow([cell(result.prediction)] + [cell((probabilities or {}).get(c)) for c in labels])


def read_rows(table):
    """The rows of a comma-separated table, as texts by column names. Each row must have all the cells."""
    reader = csv.reader(table, strict=True)
    names = next(reader, [])
    if len(set(names)) != len(names):
        raise PmmlError("two columns of the data have the same name")
    for cells in reader:
        cells = cells or [""]  # an empty line: the one cell of a row is missing
        if len(cells) != len(names):
            raise PmmlError(f"line {reader.line_num} of the data has {len(cells)} cells, not {len(names)}")
        yield dict(zip(names, cells))


def main(arguments):
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        scorer = Scorer(read_document(arguments[0]))
        with open(arguments[1], encoding="utf-8-sig", newline="") as table:
            write_scores(scorer, read_rows(table), sys.stdout)
    except (PmmlError, OSError, csv.Error, ArithmeticError, ValueError) as error:
        print(f"pmml_scorer: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
