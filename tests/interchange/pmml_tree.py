"""TreeModel."""

from pmml_fields import PmmlError, attribute, child, choice, holds, number, number_attribute
from pmml_model import Result, is_classifier, most_probable


def score_tree(model, record, context):
    """From the root into the first child whose predicate is true, until there is none."""
    root = child(model, "Node")
    node = root if holds(root, record) else None
    while node is not None and node.find("Node") is not None:
        following = next_node(model, node, record)
        if following is node:
            break
        node = following
    return Result() if node is None else node_result(node, is_classifier(model), context.labels(model))


def next_node(model, node, record):
    """The child to enter, the node itself when it is the answer, None when there is no answer.

    An unknown predicate is an event for the strategy, except that `none` takes it for not true."""
    name = model.get("missingValueStrategy", "none")
    strategy = choice(UNKNOWN_STRATEGIES, name, "the missing value strategy")
    for candidate in node.findall("Node"):
        truth = holds(candidate, record)
        if truth:
            return candidate
        if truth is None and strategy is not None:
            return strategy(node)
    name = model.get("noTrueChildStrategy", "returnNullPrediction")
    answers = {"returnNullPrediction": None, "returnLastPrediction": node}
    return choice(answers, name, "the strategy without a true child")


def default_child(node):
    name = attribute(node, "defaultChild")
    for candidate in node.findall("Node"):
        if candidate.get("id") == name:
            return candidate
    raise PmmlError(f"the default child '{name}' of node '{node.get('id')}' is not among its children")


UNKNOWN_STRATEGIES = {
    "none": None,
    "defaultChild": default_child,
    "lastPrediction": lambda node: node,
    "nullPrediction": lambda node: None,
}


def node_result(node, classifies, labels):
    """What a node says: its score, and the shares of its class counts unless it states probabilities."""
    label = node.get("score")
    if not classifies:
        return Result(None if label is None else number(label))
    distributions = node.findall("ScoreDistribution")
    counts = {attribute(d, "value"): number_attribute(d, "recordCount") for d in distributions}
    stated = {attribute(d, "value"): d.get("probability") for d in distributions}
    if distributions and None not in stated.values():
        probabilities = {name: number(text) for name, text in stated.items()}
    else:
        total = sum(counts.values())
        probabilities = {name: count / total for name, count in counts.items()} if total > 0 else None
    majority = most_probable(counts if any(counts.values()) else {}, labels).prediction
    if label is not None and labels and label not in labels:
        raise PmmlError(f"the score '{label}' is no class")
    return Result(majority if label is None else label, probabilities)
