"""RegressionModel."""

import math
import statistics

from pmml_fields import attribute, choice, number_attribute
from pmml_model import Result, is_classifier, most_probable, softmax


def score_regression(model, record, context):
    """Sums of terms through the link; a class each for classifiers."""
    tables = model.findall("RegressionTable")
    sums = [table_sum(table, record) for table in tables]
    if not sums or None in sums:
        return Result()
    method = model.get("normalizationMethod", "none")
    if not is_classifier(model):
        link = choice(LINKS, "logit" if method == "softmax" else method, "the normalization method")
        return Result(link(sums[0]))
    by_label = dict(zip((attribute(table, "targetCategory") for table in tables), sums))
    return most_probable(class_probabilities(method, by_label), context.labels(model))


def table_sum(table, record):
    """Intercept and terms; None with a missing number. A missing category counts as another one: 0."""
    terms = [number_attribute(table, "intercept")]
    for predictor in table.findall("NumericPredictor"):
        value, exponent = record.number(attribute(predictor, "name")), int(predictor.get("exponent", "1"))
        terms.append(None if value is None else number_attribute(predictor, "coefficient") * value**exponent)
    for predictor in table.findall("CategoricalPredictor"):
        name = attribute(predictor, "name")
        if record.value(name) is not None and record.equals(name, attribute(predictor, "value")):
            terms.append(number_attribute(predictor, "coefficient"))
    for predictor in table.findall("PredictorTerm"):
        factors = [number_attribute(predictor, "coefficient")]
        factors += [record.number(attribute(field, "field")) for field in predictor.findall("FieldRef")]
        terms.append(None if None in factors else math.prod(factors))
    return None if None in terms else math.fsum(terms)


def logistic(y):
    return 1.0 / (1.0 + math.exp(-y)) if y >= 0 else math.exp(y) / (1.0 + math.exp(y))


LINKS = {
    "none": lambda y: y,
    "logit": logistic,
    "exp": math.exp,
    "probit": statistics.NormalDist().cdf,
    "cloglog": lambda y: -math.expm1(-math.exp(y)),
    "loglog": lambda y: math.exp(-math.exp(-y)),
    "cauchit": lambda y: 0.5 + math.atan(y) / math.pi,
}


def class_probabilities(method, sums):
    """The probabilities of the classes from the sums of their tables."""
    if method == "softmax":
        return softmax(sums)
    if method == "simplemax":
        total = math.fsum(sums.values())
        return {label: value / total for label, value in sums.items()} if total != 0 else None
    link = choice(LINKS, method, "the normalization method")
    probabilities = {label: link(value) for label, value in sums.items()}
    if len(sums) == 2 and method != "none":  # the second class has what the first one leaves
        first, second = probabilities
        probabilities[second] = 1.0 - probabilities[first]
    return probabilities
