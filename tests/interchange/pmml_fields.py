"""What all PMML 4.2 models share: documents, values of fields, derived fields and predicates.

Written from the published standard (Data Mining Group, PMML 4.2) and in no knowledge of the library's own
writers and readers, so that a mistake in those cannot be repeated here.

A value is a float (continuous fields), a text (categorical and ordinal fields) or None, which is missing.
Elements carry their local names: `read_document` takes the namespace off.
"""

import functools
import math
import re
import xml.etree.ElementTree as ElementTree

NAMESPACE = "http://www.dmg.org/PMML-4_2"


class PmmlError(Exception):
    """The document or the data cannot be scored as they stand."""


# ---------------------------------------------------------------------------------------------- documents


def read_document(path):
    """The root element of the PMML 4.2 file at `path`, all names without their namespace."""
    try:
        root = ElementTree.parse(path).getroot()
    except ElementTree.ParseError as error:
        raise PmmlError(f"{path}: {error}") from error
    if root.tag != f"{{{NAMESPACE}}}PMML" or root.get("version") != "4.2":
        raise PmmlError(f"{path}: not a PMML 4.2 document")
    for element in root.iter():
        element.tag = element.tag.removeprefix(f"{{{NAMESPACE}}}")
    return root


def attribute(element, name):
    """The text of an attribute that must be there."""
    text = element.get(name)
    if text is None:
        raise PmmlError(f"{element.tag} lacks the attribute {name}")
    return text


def child(element, tag):
    """The first child of that name, which must be there."""
    found = element.find(tag)
    if found is None:
        raise PmmlError(f"{element.tag} lacks a {tag}")
    return found


def child_among(element, table):
    """The first child that `table`, keyed by element names, knows."""
    for candidate in element:
        if candidate.tag in table:
            return candidate
    present = ", ".join(candidate.tag for candidate in element) or "nothing"
    raise PmmlError(f"{element.tag} holds {present}: none of it is known here")


def choice(table, key, what):
    """The entry of a table of functions, or the complaint that there is none."""
    if key not in table:
        raise PmmlError(f"{what} '{key}' is not supported")
    return table[key]


def number(text):
    """The value of an xs:double (exponents, INF, -INF, NaN); None for NaN, which means missing."""
    if not re.fullmatch(r"\s*([+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?|-?INF|NaN)\s*", text):
        raise PmmlError(f"'{text}' is not a number")
    value = float(text)
    return None if math.isnan(value) else value


def number_attribute(element, name, default=None):
    """A numeric attribute; one without a default must be there."""
    text = attribute(element, name) if default is None else element.get(name)
    return default if text is None else number(text)


def array_items(array):
    """The items of an `Array` as texts."""
    return _split_array(array.text or "", attribute(array, "type"), array.get("n"))


@functools.lru_cache(maxsize=None)
def _split_array(text, kind, count):
    """Items of type string come in two spellings, told apart by the number `n` of them: the library's own,
    each in quotes and one blank between, without escapes; and the standard's, where quotes may be left out
    and one inside is escaped."""
    text = text.strip()
    items = text.split()
    if kind == "string":
        if len(text) >= 2 and text[0] == text[-1] == '"':
            items = text[1:-1].split('" "')
        if len(items) != int(count or len(items)) or not text.startswith('"'):
            found = re.findall(r'"((?:[^"\\]|\\.)*)"|(\S+)', text)
            items = [re.sub(r"\\(.)", r"\1", quoted) or bare for quoted, bare in found]
    if count is not None and len(items) != int(count):
        raise PmmlError(f"an Array of {count} items holds {len(items)}: {text}")
    return tuple(items)


# ------------------------------------------------------------------------------------------------- fields


class Field:
    """A `DataField` or `DerivedField`: how its values compare and which of them are valid."""

    def __init__(self, element):
        self.name = attribute(element, "name")
        self.is_number = attribute(element, "optype") == "continuous"
        self.is_ordered = attribute(element, "optype") == "ordinal"
        values = element.findall("Value")
        self.missing_marks = {v.get("value") for v in values if v.get("property") == "missing"}
        self.invalid_marks = {v.get("value") for v in values if v.get("property") == "invalid"}
        self.labels = [attribute(v, "value") for v in values if v.get("property", "valid") == "valid"]
        self.intervals = element.findall("Interval")

    def read(self, text):
        """The value that a text (a cell, an attribute) stands for in this field; the empty one is missing."""
        if text is None or text == "" or text in self.missing_marks:
            return None
        return number(text) if self.is_number else text

    def convert(self, value):
        """A value that an expression gave, as a value of this field."""
        if value is None or isinstance(value, float) == self.is_number:
            return value
        return number(value) if self.is_number else f"{value:.17g}"

    def is_valid(self, value):
        """Whether the declared intervals and values, if there are any, admit a value that is not missing."""
        if self.is_number:
            return not self.intervals or any(interval_holds(i, value) for i in self.intervals)
        return value not in self.invalid_marks and (not self.labels or value in self.labels)

    def compare(self, value, literal):
        """-1, 0 or 1 for the order of two values; texts have an order in ordinal fields only."""
        if value == literal:
            return 0
        if self.is_number:
            return -1 if value < literal else 1
        if not self.is_ordered or not {value, literal} <= set(self.labels):
            raise PmmlError(f"'{value}' and '{literal}' have no order in the field {self.name}")
        return -1 if self.labels.index(value) < self.labels.index(literal) else 1


class Record:
    """One row as a model sees it: the fields of its mining schema and the fields derived from them.

    Derived values are worked out when they are asked for. Asking for a field that the mining schema does not
    list is a mistake of the document."""

    def __init__(self, values, fields):
        self._values = values
        self._fields = fields
        self._derived = {}

    def derive(self, elements):
        """Adds the `DerivedField`s."""
        for element in elements:
            field = Field(element)
            if field.name in self._fields:
                raise PmmlError(f"the derived field {field.name} is there already")
            self._fields[field.name] = field
            self._derived[field.name] = element
        return self

    def field(self, name):
        if name not in self._fields:
            raise PmmlError(f"the field {name} is used but not in the mining schema")
        return self._fields[name]

    def value(self, name):
        field = self.field(name)
        if name not in self._values:
            self._values[name] = None  # a field derived from itself is missing
            self._values[name] = field.convert(evaluate(self._derived[name], self))
        return self._values[name]

    def number(self, name):
        """The value of a field that must be continuous."""
        if not self.field(name).is_number:
            raise PmmlError(f"the field {name} is no number")
        return self.value(name)

    def equals(self, name, text):
        """Whether a field that is not missing has the value that the text stands for."""
        return self.value(name) == self.field(name).read(text)


class InvalidValue(Exception):
    """A value that its mining field says must stop the scoring of the row."""


def model_record(model, outer):
    """The record that the mining schema of `model` makes of the record around it."""
    values, fields = {}, {}
    for mining_field in child(model, "MiningSchema").findall("MiningField"):
        if mining_field.get("usageType", "active") == "active":
            name = attribute(mining_field, "name")
            fields[name] = outer.field(name)
            values[name] = treat(mining_field, fields[name], outer.value(name))
    return Record(values, fields).derive(model.findall("LocalTransformations/DerivedField"))


def treat(mining_field, field, value):
    """Outlier, invalid and missing values as the mining field says.

    Invalid values go on as they are when nothing is said, as the library documents for its own scorer; the
    standard's default is returnInvalid."""
    outliers = mining_field.get("outliers", "asIs")
    if value is not None and field.is_number and outliers != "asIs":
        low, high = (number_attribute(mining_field, key, bound) for key, bound in
                     (("lowValue", -math.inf), ("highValue", math.inf)))
        if outliers == "asExtremeValues":
            value = min(max(value, low), high)
        elif not low <= value <= high:
            value = None
    treatment = mining_field.get("invalidValueTreatment", "asIs")
    if value is not None and treatment != "asIs" and not field.is_valid(value):
        if treatment == "returnInvalid":
            raise InvalidValue
        value = None
    return field.read(mining_field.get("missingValueReplacement")) if value is None else value


# ---------------------------------------------------------------------------------------- transformations


def evaluate(parent, record):
    """The value of the expression in a `DerivedField`."""
    expression = child_among(parent, EXPRESSIONS)
    return EXPRESSIONS[expression.tag](expression, record)


def field_reference(expression, record):
    value = record.value(attribute(expression, "field"))
    return expression.get("mapMissingTo") if value is None else value


def norm_continuous(expression, record):
    """Linear interpolation between the two points around the value, or the two at the end it lies beyond."""
    value = record.number(attribute(expression, "field"))
    if value is None:
        mapped = expression.get("mapMissingTo")
        return None if mapped is None else number(mapped)
    points = [(number_attribute(point, "orig"), number_attribute(point, "norm"))
              for point in expression.findall("LinearNorm")]
    if len(points) < 2 or any(a[0] >= b[0] for a, b in zip(points, points[1:])):
        raise PmmlError("NormContinuous needs two or more points in increasing order")
    outliers = expression.get("outliers", "asIs")
    if outliers == "asExtremeValues":
        value = min(max(value, points[0][0]), points[-1][0])
    elif outliers == "asMissingValues" and not points[0][0] <= value <= points[-1][0]:
        return None
    right = next((i for i in range(1, len(points) - 1) if value <= points[i][0]), len(points) - 1)
    (x0, y0), (x1, y1) = points[right - 1], points[right]
    return y0 + (value - x0) / (x1 - x0) * (y1 - y0)


def norm_discrete(expression, record):
    name = attribute(expression, "field")
    if record.value(name) is None:
        mapped = expression.get("mapMissingTo")
        return None if mapped is None else number(mapped)
    return 1.0 if record.equals(name, attribute(expression, "value")) else 0.0


def discretize(expression, record):
    value = record.number(attribute(expression, "field"))
    if value is None:
        return expression.get("mapMissingTo")
    for discretize_bin in expression.findall("DiscretizeBin"):
        if interval_holds(child(discretize_bin, "Interval"), value):
            return attribute(discretize_bin, "binValue")
    return expression.get("defaultValue")


def interval_holds(interval, value):
    """Whether a number lies in an `Interval`; a margin left out is no bound."""
    closure = attribute(interval, "closure")
    if closure not in ("openClosed", "openOpen", "closedOpen", "closedClosed"):
        raise PmmlError(f"an Interval cannot be '{closure}'")
    left = number_attribute(interval, "leftMargin", -math.inf)
    right = number_attribute(interval, "rightMargin", math.inf)
    above = value >= left if closure.startswith("closed") else value > left
    below = value <= right if closure.endswith("Closed") else value < right
    return above and below


def constant(expression, _record):
    return expression.text or ""


EXPRESSIONS = {
    "FieldRef": field_reference,
    "NormContinuous": norm_continuous,
    "NormDiscrete": norm_discrete,
    "Discretize": discretize,
    "Constant": constant,
}


# --------------------------------------------------------------------------------------------- predicates


def holds(parent, record):
    """The predicate in a `Node` or `Segment`: True, False or None, which is unknown."""
    return decide(child_among(parent, PREDICATES), record)


def decide(predicate, record):
    return choice(PREDICATES, predicate.tag, "the predicate")(predicate, record)


COMPARISONS = {
    "equal": lambda order: order == 0,
    "notEqual": lambda order: order != 0,
    "lessThan": lambda order: order < 0,
    "lessOrEqual": lambda order: order <= 0,
    "greaterThan": lambda order: order > 0,
    "greaterOrEqual": lambda order: order >= 0,
}


def simple_predicate(predicate, record):
    name, operator = attribute(predicate, "field"), attribute(predicate, "operator")
    value = record.value(name)
    if operator in ("isMissing", "isNotMissing"):
        return (value is None) == (operator == "isMissing")
    comparison = choice(COMPARISONS, operator, "the operator")
    field = record.field(name)
    literal = field.read(attribute(predicate, "value"))
    if value is None or literal is None:
        return None
    if operator in ("equal", "notEqual"):
        return comparison(0 if value == literal else 1)
    return comparison(field.compare(value, literal))


def simple_set_predicate(predicate, record):
    name, operator = attribute(predicate, "field"), attribute(predicate, "booleanOperator")
    if operator not in ("isIn", "isNotIn"):
        raise PmmlError(f"the set operator '{operator}' is not supported")
    value = record.value(name)
    if value is None:
        return None
    field = record.field(name)
    found = any(value == field.read(item) for item in array_items(child(predicate, "Array")))
    return found == (operator == "isIn")


def conjunction(values):
    return False if False in values else None if None in values else True


def disjunction(values):
    return True if True in values else None if None in values else False


def exclusive_disjunction(values):
    return None if None in values else values.count(True) % 2 == 1


def first_known(values):
    return next((value for value in values if value is not None), None)


CONNECTIVES = {
    "and": conjunction,
    "or": disjunction,
    "xor": exclusive_disjunction,
    "surrogate": first_known,
}


def compound_predicate(predicate, record):
    """Kleene's three-valued logic; `surrogate` is its first operand that is known."""
    connective = choice(CONNECTIVES, attribute(predicate, "booleanOperator"), "the connective")
    return connective([decide(operand, record) for operand in predicate])


PREDICATES = {
    "True": lambda predicate, record: True,
    "False": lambda predicate, record: False,
    "SimplePredicate": simple_predicate,
    "SimpleSetPredicate": simple_set_predicate,
    "CompoundPredicate": compound_predicate,
}
