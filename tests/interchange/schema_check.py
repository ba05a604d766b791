"""Checks PMML documents of the library against the rules of PMML 4.2.

Usage: schema_check.py [--schema XSD | --builtin] FILE.pmml...

The format has deviations from the standard that are meant (DEVIATIONS below). They are taken out first, and
what is left must be valid: with --builtin by the rules of pmml_rules.py, which needs no other file; otherwise
by the published schema with xmllint. The schema's path is given by --schema or the environment variable
PMML_SCHEMA.

Exit status: 0 all valid, 1 complaints, 2 wrong use, 77 (skipped) when the schema or xmllint is not there.
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from pmml_fields import NAMESPACE
from pmml_rules import complaints

SKIPPED = 77


def without_element(parent, tag):
    """Takes the elements of that name out of a parent ("*" for any)."""

    def strip(root):
        for element in list(root.iter(parent if parent != "*" else None)):
            for nested in element.findall(tag):
                element.remove(nested)

    return strip


def without_attributes(tag, *names):
    def strip(root):
        for element in root.iter(tag):
            for name in names:
                element.attrib.pop(name, None)

    return strip


def transformations_behind_targets(root):
    """Puts the `LocalTransformations` of each model where the schema wants them."""
    before = ("MiningSchema", "Output", "ModelStats", "ModelExplanation", "Targets")
    for model in list(root.iter()):
        for moved in model.findall("LocalTransformations"):
            model.remove(moved)
            places = [position for position, nested in enumerate(model) if nested.tag in before]
            model.insert(max(places, default=-1) + 1, moved)


# What the format has and the schema has not, and why.
DEVIATIONS = [
    # The name that a host gives to a model has no place in the standard's header.
    without_element("Header", "ModelName"),
    # The class that counts as success; other consumers need none.
    without_attributes("Target", "successClass"),
    # Derived fields come before all that may use them.
    transformations_behind_targets,
    # Discriminant analysis: its kind and the matrices of its quadratic forms.
    without_attributes("RegressionModel", "discriminantType"),
    without_element("*", "QuadraticCoefficients"),
    without_attributes("Matrix", "order", "numRows", "numCols"),
    # The time axis of the training series is told at the model as well.
    without_attributes("TimeSeriesModel", "startTime", "endTime", "interval", "numForecasts"),
    # Transformations that stand alone, and text schemes: the standard has neither.
    without_element("PMML", "TransformationModel"),
    without_element("*", "TDMScheme"),
    without_element("*", "Vocabulary"),
    without_element("*", "Preprocessing"),
]


def read_standard_part(path):
    """The document without its deviations, elements by their local names."""
    root = ElementTree.parse(path).getroot()
    for element in root.iter():
        if not element.tag.startswith(f"{{{NAMESPACE}}}"):
            raise ValueError(f"{element.tag} is not in the namespace of PMML 4.2")
        element.tag = element.tag.removeprefix(f"{{{NAMESPACE}}}")
    for strip in DEVIATIONS:
        strip(root)
    return root


def schema_complaints(root, schema):
    """What xmllint says about the document."""
    root.set("xmlns", NAMESPACE)
    with tempfile.TemporaryDirectory() as folder:
        part = Path(folder) / "document.pmml"
        part.write_bytes(ElementTree.tostring(root, encoding="utf-8", xml_declaration=True))
        command = ["xmllint", "--nonet", "--huge", "--noout", "--schema", schema, str(part)]
        run = subprocess.run(command, capture_output=True, text=True, encoding="utf-8")
    if run.returncode == 0:
        return []
    lines = run.stderr.splitlines()
    return [line.removeprefix(f"{part}:") for line in lines if "fails to validate" not in line]


def what_is_absent(schema):
    """The reason why the check by the schema cannot be made, or None."""
    if not schema:
        return "no schema: give --schema or PMML_SCHEMA"
    if not Path(schema).is_file():
        return f"no schema: {schema} is not there"
    return None if shutil.which("xmllint") else "xmllint is not installed"


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("files", nargs="+", metavar="FILE.pmml")
    parser.add_argument("--schema", default=os.environ.get("PMML_SCHEMA"), help="the published pmml-4-2.xsd")
    parser.add_argument("--builtin", action="store_true", help="use the rules of pmml_rules.py")
    options = parser.parse_args(arguments)
    absent = None if options.builtin else what_is_absent(options.schema)
    if absent:
        print(f"schema_check: skipped, {absent}")
        return SKIPPED

    status = 0
    for path in options.files:
        try:
            root = read_standard_part(path)
            found = complaints(root) if options.builtin else schema_complaints(root, options.schema)
        except (OSError, ValueError, ElementTree.ParseError) as error:
            found = [str(error)]
        for line in dict.fromkeys(found):
            print(f"{path}: {line}")
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
