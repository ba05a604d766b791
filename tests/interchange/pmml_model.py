"""What scoring a model gives, and what all model elements need to score: see `Context`."""

import math

from pmml_fields import (InvalidValue, PmmlError, attribute, child, choice, model_record, number,
                         number_attribute)


class Result:
    """A prediction (label or number) and, for classifiers, the probability of each class by its label.

    Either is None where the model gives none."""

    def __init__(self, prediction=None, probabilities=None):
        self.prediction = prediction
        self.probabilities = probabilities


def most_probable(probabilities, labels):
    """The classification by the largest of the numbers; of equal ones, by the class declared first."""
    if not probabilities:
        return Result()
    order = {label: rank for rank, label in enumerate(labels)}
    undeclared = set(probabilities) - set(order)
    if labels and undeclared:
        raise PmmlError(f"classes that the data dictionary does not declare: {sorted(undeclared)}")
    return Result(min(probabilities, key=lambda c: (-probabilities[c], order.get(c, 0))), probabilities)


def is_classifier(model):
    return attribute(model, "functionName") == "classification"


def softmax(logs):
    """Exponentials as shares of their sum; None when all of them are zero."""
    largest = max(logs.values())
    if largest == -math.inf:
        return None
    weights = {label: math.exp(value - largest) for label, value in logs.items()}
    total = math.fsum(weights.values())
    return {label: weight / total for label, weight in weights.items()}


class Context:
    """What a model element needs beside the record: the data dictionary, and the table of all scorers.

    A scorer is a function (model, record, context) -> Result for one model element."""

    def __init__(self, fields, scorers):
        self.fields = fields
        self.scorers = scorers

    def target(self, model):
        """The name of the predicted field, or None for models without one."""
        for mining_field in child(model, "MiningSchema").findall("MiningField"):
            if mining_field.get("usageType") in ("predicted", "target"):
                return attribute(mining_field, "name")
        return None

    def labels(self, model):
        """The classes of a model's target in the order of the data dictionary."""
        name = self.target(model)
        if name is not None and name not in self.fields:
            raise PmmlError(f"the target {name} is not in the data dictionary")
        return self.fields[name].labels if name else []

    def score(self, model, outer):
        """The result of any model element for the record around it: mining schema, model, targets."""
        scorer = choice(self.scorers, model.tag, "the model element")
        try:
            record = model_record(model, outer)
        except InvalidValue:
            return Result()
        return apply_targets(model, scorer(model, record, self), record, self)


# ------------------------------------------------------------------------------------------------ targets


def apply_targets(model, result, record, context):
    """Rescales a number as the `Target` says; answers with its default where missing inputs left none."""
    name = context.target(model)
    target = next((t for t in model.findall("Targets/Target") if attribute(t, "field") == name), None)
    if target is None:
        return result
    if result.prediction is None:
        return default_result(target, context.labels(model)) if has_missing_input(model, record) else result
    return result if is_classifier(model) else Result(rescale(target, result.prediction))


def has_missing_input(model, record):
    fields = model.findall("MiningSchema/MiningField")
    active = [f.get("name") for f in fields if f.get("usageType", "active") == "active"]
    return any(record.value(name) is None for name in active)


def default_result(target, labels):
    values = target.findall("TargetValue")
    priors = {v.get("value"): number(v.get("priorProbability")) for v in values if v.get("priorProbability")}
    defaults = [number(v.get("defaultValue")) for v in values if v.get("defaultValue")]
    return most_probable(priors, labels) if priors else Result(defaults[0] if defaults else None)


CASTS = {"round": lambda x: math.floor(x + 0.5), "ceiling": math.ceil, "floor": math.floor}


def rescale(target, value):
    """Clamp, times, plus, cast: in this order."""
    value = max(value, number_attribute(target, "min", -math.inf))
    value = min(value, number_attribute(target, "max", math.inf))
    value *= number_attribute(target, "rescaleFactor", 1.0)
    value += number_attribute(target, "rescaleConstant", 0.0)
    cast = target.get("castInteger")
    return value if cast is None else float(choice(CASTS, cast, "the cast")(value))
