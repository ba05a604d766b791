"""NaiveBayesModel."""

import math

from pmml_fields import PmmlError, attribute, child, child_among, evaluate, number_attribute
from pmml_model import most_probable, softmax


def score_naive_bayes(model, record, context):
    """Class counts times the probabilities of the inputs that are there, in logarithms."""
    threshold = log(number_attribute(model, "threshold"))
    counts = class_counts(child(model, "BayesOutput"))
    logs = {label: log(count) for label, count in counts.items()}
    for bayes_input in child(model, "BayesInputs").findall("BayesInput"):
        is_density = bayes_input.find("TargetValueStats") is not None
        factors = density_factors if is_density else share_factors
        for label, factor in factors(bayes_input, record, list(counts), threshold).items():
            logs[label] += factor
    return most_probable(softmax(logs), context.labels(model))


def log(value):
    return math.log(value) if value > 0 else -math.inf


def class_counts(parent):
    """The `TargetValueCounts` in an element: count by class."""
    entries = child(parent, "TargetValueCounts").findall("TargetValueCount")
    return {attribute(e, "value"): number_attribute(e, "count") for e in entries}


def share_factors(bayes_input, record, labels, threshold):
    """By class, the log share of the category among the counts of this input; the threshold if it has none.

    A category without counts is taken for missing, which has no factors."""
    name = attribute(bayes_input, "fieldName")
    derived = bayes_input.find("DerivedField")
    value = record.value(name) if derived is None else evaluate(derived, record)
    read = record.field(name).read if derived is None else str
    pairs = bayes_input.findall("PairCounts")
    tables = {read(attribute(pair, "value")): class_counts(pair) for pair in pairs}
    if value is None or value not in tables:
        return {}
    totals = {label: math.fsum(table.get(label, 0.0) for table in tables.values()) for label in labels}
    counts = {label: tables[value].get(label, 0.0) for label in labels}
    return {c: log(counts[c] / totals[c]) if counts[c] > 0 else threshold for c in labels}


def density_factors(bayes_input, record, labels, threshold):
    """By class, the log density of the value, or the threshold where it is less."""
    value = record.number(attribute(bayes_input, "fieldName"))
    if value is None:
        return {}
    factors = dict.fromkeys(labels, threshold)
    for stat in bayes_input.findall("TargetValueStats/TargetValueStat"):
        distribution = child_among(stat, LOG_DENSITIES)
        density = LOG_DENSITIES[distribution.tag](distribution, value)
        factors[attribute(stat, "value")] = max(density, threshold)
    return factors


def gaussian(distribution, x):
    mean, variance = number_attribute(distribution, "mean"), number_attribute(distribution, "variance")
    if variance <= 0:
        raise PmmlError(f"a Gaussian distribution of variance {variance}")
    return -0.5 * (math.log(2.0 * math.pi * variance) + (x - mean) ** 2 / variance)


def poisson(distribution, x):
    mean = number_attribute(distribution, "mean")
    if x < 0 or x != math.floor(x) or mean < 0:
        return -math.inf
    if mean == 0:
        return 0.0 if x == 0 else -math.inf
    return x * math.log(mean) - mean - math.lgamma(x + 1.0)


def uniform(distribution, x):
    lower, upper = number_attribute(distribution, "lower"), number_attribute(distribution, "upper")
    return -math.log(upper - lower) if lower <= x <= upper and lower < upper else -math.inf


LOG_DENSITIES = {
    "GaussianDistribution": gaussian,
    "PoissonDistribution": poisson,
    "UniformDistribution": uniform,
}
