"""MiningModel: segments, each with a predicate and a model of its own."""

import math
import statistics
from collections import defaultdict

from pmml_fields import PmmlError, attribute, child, child_among, choice, holds, number_attribute
from pmml_model import Result, is_classifier, most_probable


def score_ensemble(model, record, context):
    """The members whose predicate is true, combined; members without a result do not take part."""
    segmentation = child(model, "Segmentation")
    method = attribute(segmentation, "multipleModelMethod")
    combine = choice(COMBINATIONS, method, "the multiple model method")
    members = []
    for segment in segmentation.findall("Segment"):
        if not holds(segment, record):
            continue
        result = context.score(child_among(segment, context.scorers), record)
        if method == "selectFirst":
            return result
        if result.prediction is not None:
            members.append((result, number_attribute(segment, "weight", 1.0)))
    return combine(members, is_classifier(model), context.labels(model)) if members else Result()


def vote(weigh):
    """Each member votes for its class; the probabilities are the shares of the votes."""

    def combine(members, classifies, labels):
        if not classifies:
            raise PmmlError("votes are for classifiers")
        votes = defaultdict(list)
        for result, weight in members:
            votes[result.prediction].append(weigh(weight))
        sums = {label: math.fsum(weights) for label, weights in votes.items()}
        total = math.fsum(sums.values())
        absent = {label: 0.0 for label in labels if label not in sums}
        return most_probable({label: value / total for label, value in sums.items()} | absent, labels)

    return combine


def merge(function):
    """`function` of values and weights: on the numbers, or for classifiers on each class's probabilities."""

    def combine(members, classifies, labels):
        weights = [weight for _, weight in members]
        if not classifies:
            return Result(function([result.prediction for result, _ in members], weights))
        if any(result.probabilities is None for result, _ in members):
            raise PmmlError("a member gives no probabilities that could be combined")
        classes = labels or sorted({label for result, _ in members for label in result.probabilities})
        columns = {c: [result.probabilities.get(c, 0.0) for result, _ in members] for c in classes}
        return most_probable({c: function(column, weights) for c, column in columns.items()}, labels)

    return combine


def only_for_numbers(combine):
    def checked(members, classifies, labels):
        if classifies:
            raise PmmlError("sums are for regression")
        return combine(members, classifies, labels)

    return checked


def weighted_average(values, weights):
    return math.fsum(v * w for v, w in zip(values, weights)) / math.fsum(weights)


COMBINATIONS = {
    "majorityVote": vote(lambda weight: 1.0),
    "weightedMajorityVote": vote(lambda weight: weight),
    "average": merge(lambda values, weights: math.fsum(values) / len(values)),
    "weightedAverage": merge(weighted_average),
    "median": merge(lambda values, weights: statistics.median(values)),
    "max": merge(lambda values, weights: max(values)),
    "sum": only_for_numbers(merge(lambda values, weights: math.fsum(values))),
    "selectFirst": None,  # answered as soon as its segment is met
}
