"""The rules of PMML 4.2 for the elements that the library writes, without the schema file.

ELEMENTS is the grammar, PROSE_RULES holds what the standard says in words only. Written from the published
standard (Data Mining Group, PMML 4.2). An element or attribute that is not listed is a complaint: a new
family adds its lines here.
"""

import re
from itertools import dropwhile

from pmml_fields import EXPRESSIONS, PREDICATES, PmmlError, array_items

# The texts that attributes may hold. A decimal has no exponent: probabilities and percentages are decimals.
TYPES = {
    "string": r".*",
    "number": r"[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?|-?INF|NaN",
    "decimal": r"[+-]?(\d+\.?\d*|\.\d+)",
    "integer": r"[+-]?\d+",
    "count": r"\+?\d+",
    "boolean": r"true|false|1|0",
    "optype": "categorical|ordinal|continuous",
    "dataType": r"string|integer|float|double|boolean|date|time|dateTime|timeSeconds"
                r"|(dateDays|dateTimeSeconds)Since\[(0|1960|1970|1980)\]",
    "function": "associationRules|sequences|classification|regression|clustering|timeSeries|mixed",
    "outliers": "asIs|asMissingValues|asExtremeValues",
}

MODEL = "TreeModel|NaiveBayesModel|RegressionModel|MiningModel"
PREDICATE = "|".join(PREDICATES)
EXPRESSION = "|".join(EXPRESSIONS)
MODEL_HEAD = "MiningSchema Output? Targets? LocalTransformations?"
MODEL_ATTRIBUTES = "modelName functionName!=function algorithmName isScorable=boolean"

# Element: its children in their order, and its attributes: `name`, with `!` when required, with `=` and one
# of TYPES or the allowed words. Children are written as in a regular expression; `#text` stands for text.
ELEMENTS = {
    "Extension": ("", "extender name value"),
    "PMML": (f"Header DataDictionary TransformationDictionary? ({MODEL})*", "version!=4[.]2"),
    "Header": ("Application? Annotation* Timestamp?", "copyright description"),
    "Application": ("", "name! version"),
    "Annotation": ("#text", ""),
    "Timestamp": ("#text", ""),
    "DataDictionary": ("DataField+", "numberOfFields=count"),
    "DataField": ("Interval* Value*", "name! displayName optype!=optype dataType!=dataType isCyclic=0|1"),
    "Value": ("", "value! displayValue property=valid|invalid|missing"),
    "Interval": ("", "closure!=openClosed|openOpen|closedOpen|closedClosed leftMargin=number"
                     " rightMargin=number"),
    "MiningSchema": ("MiningField+", ""),
    "MiningField": ("", "name! usageType=active|predicted|target|supplementary|group|order|frequencyWeight"
                        "|analysisWeight optype=optype importance=decimal outliers=outliers lowValue=number"
                        " highValue=number missingValueReplacement"
                        " missingValueTreatment=asIs|asMean|asMode|asMedian|asValue"
                        " invalidValueTreatment=returnInvalid|asIs|asMissing"),
    "Output": ("OutputField+", ""),
    "OutputField": (f"({EXPRESSION})?", "name! displayName optype=optype dataType=dataType targetField value"
                    " rank=integer segmentId feature=predictedValue|predictedDisplayValue|transformedValue"
                    "|decision|probability|affinity|residual|standardError|clusterId|clusterAffinity|entityId"
                    "|entityAffinity|warning|reasonCode|ruleValue|antecedent|consequent|rule|ruleId"
                    "|confidence|support|lift|leverage"),
    "Targets": ("Target+", ""),
    "Target": ("TargetValue*", "field! optype=optype castInteger=round|ceiling|floor min=number max=number"
               " rescaleConstant=number rescaleFactor=number"),
    "TargetValue": ("", "value displayValue priorProbability=decimal defaultValue=number"),

    "TransformationDictionary": ("DerivedField*", ""),
    "LocalTransformations": ("DerivedField*", ""),
    "DerivedField": (f"({EXPRESSION}) Value*", "name displayName optype!=optype dataType!=dataType"),
    "FieldRef": ("", "field! mapMissingTo"),
    "Constant": ("#text", "dataType=dataType"),
    "NormContinuous": ("LinearNorm{2,}", "field! mapMissingTo=number outliers=outliers"),
    "LinearNorm": ("", "orig!=number norm!=number"),
    "NormDiscrete": ("", "field! value! method=indicator mapMissingTo=number"),
    "Discretize": ("DiscretizeBin*", "field! mapMissingTo defaultValue dataType=dataType"),
    "DiscretizeBin": ("Interval", "binValue!"),

    "True": ("", ""),
    "False": ("", ""),
    "SimplePredicate": ("", "field! value operator!=equal|notEqual|lessThan|lessOrEqual|greaterThan"
                            "|greaterOrEqual|isMissing|isNotMissing"),
    "SimpleSetPredicate": ("Array", "field! booleanOperator!=isIn|isNotIn"),
    "CompoundPredicate": (f"({PREDICATE}){{2,}}", "booleanOperator!=or|and|xor|surrogate"),
    "Array": ("#text", "n=integer type!=int|real|string"),

    "TreeModel": (f"{MODEL_HEAD} Node", f"{MODEL_ATTRIBUTES} splitCharacteristic=binarySplit|multiSplit"
                  " missingValueStrategy=lastPrediction|nullPrediction|defaultChild|weightedConfidence"
                  "|aggregateNodes|none missingValuePenalty=decimal"
                  " noTrueChildStrategy=returnNullPrediction|returnLastPrediction"),
    "Node": (f"({PREDICATE}) ScoreDistribution* Node*", "id score recordCount=number defaultChild"),
    "ScoreDistribution": ("", "value! recordCount!=number confidence=decimal probability=decimal"),

    "NaiveBayesModel": (f"{MODEL_HEAD} BayesInputs BayesOutput", f"{MODEL_ATTRIBUTES} threshold!=number"),
    "BayesInputs": ("BayesInput+", ""),
    "BayesInput": ("TargetValueStats|(DerivedField? PairCounts+)", "fieldName!"),
    "BayesOutput": ("TargetValueCounts", "fieldName!"),
    "PairCounts": ("TargetValueCounts", "value!"),
    "TargetValueCounts": ("TargetValueCount+", ""),
    "TargetValueCount": ("", "value! count!=number"),
    "TargetValueStats": ("TargetValueStat+", ""),
    "TargetValueStat": ("AnyDistribution|GaussianDistribution|PoissonDistribution|UniformDistribution",
                        "value!"),
    "AnyDistribution": ("", "mean!=number variance!=number"),
    "GaussianDistribution": ("", "mean!=number variance!=number"),
    "PoissonDistribution": ("", "mean!=number"),
    "UniformDistribution": ("", "lower!=number upper!=number"),

    "RegressionModel": (f"{MODEL_HEAD} RegressionTable+", f"{MODEL_ATTRIBUTES} targetFieldName"
                        " modelType=linearRegression|stepwisePolynomialRegression|logisticRegression"
                        " normalizationMethod=none|simplemax|softmax|logit|probit|cloglog|exp|loglog"
                        "|cauchit"),
    "RegressionTable": ("NumericPredictor* CategoricalPredictor* PredictorTerm*",
                        "intercept!=number targetCategory"),
    "NumericPredictor": ("", "name! exponent=integer coefficient!=number"),
    "CategoricalPredictor": ("", "name! value! coefficient!=number"),
    "PredictorTerm": ("FieldRef+", "name coefficient!=number"),

    "MiningModel": (f"{MODEL_HEAD} Segmentation?", MODEL_ATTRIBUTES),
    "Segmentation": ("Segment+", "multipleModelMethod!=majorityVote|weightedMajorityVote|average"
                                 "|weightedAverage|median|max|sum|selectFirst|selectAll|modelChain"),
    "Segment": (f"({PREDICATE}) ({MODEL})", "id weight=number"),
}


def complaints(root):
    """What is wrong with a document, one line each; `root` is a PMML element without namespaces."""
    if root.tag != "PMML":
        return [f"the root is {root.tag}, not PMML"]
    found = [line for element in root.iter() for line in grammar_complaints(element)]
    # The prose speaks of documents that hold what they must.
    return found or [line for rule in PROSE_RULES for line in rule(root)]


# ------------------------------------------------------------------------------------------------ grammar


def grammar_complaints(element):
    """What ELEMENTS has against an element itself, its children left aside."""
    if element.tag not in ELEMENTS:
        yield f"{element.tag}: no rules for this element"
        return
    content, attributes = ELEMENTS[element.tag]
    yield from attribute_complaints(element, attributes)
    nested = [child.tag for child in element]
    if content != "#text":  # extensions may come first everywhere
        nested = list(dropwhile(lambda tag: tag == "Extension", nested))
    children = "".join(f"{tag}," for tag in nested)
    if not re.fullmatch(content_pattern(content), children):
        yield f"{element.tag}: holds [{children.rstrip(',')}], not [{content}]"
    texts = [element.text, *(nested.tail for nested in element)]
    if content != "#text" and any(text and text.strip() for text in texts):
        yield f"{element.tag}: holds text"


def content_pattern(content):
    """The regular expression for the names of the children, each followed by a comma."""
    return "" if content == "#text" else re.sub(r"[A-Z]\w*", r"(?:\g<0>,)", content).replace(" ", "")


def attribute_complaints(element, declared):
    known = {}
    for declaration in declared.split():
        name, _, kind = declaration.partition("=")
        known[name.rstrip("!")] = kind or "string"
        if name.endswith("!") and name.rstrip("!") not in element.attrib:
            yield f"{element.tag}: lacks the attribute {name.rstrip('!')}"
    for name, text in element.attrib.items():
        if name.startswith("{http://www.w3.org/2001/XMLSchema-instance}"):
            continue
        if name not in known:
            yield f"{element.tag}: has an attribute {name}"
        elif not is_of_type(known[name], text):
            yield f"{element.tag}: {name}=\"{text}\" is no {known[name]}"


def is_of_type(kind, text):
    """Whether a text is of one of TYPES, or one of the words of an enumeration."""
    return re.fullmatch(TYPES.get(kind, kind), text.strip() if kind in TYPES else text, re.DOTALL | re.ASCII)


# -------------------------------------------------------------------------------------------------- prose


def numbers_of_items(root):
    """`numberOfFields` and the `n` of arrays are what they count; arrays of numbers hold numbers."""
    dictionary = root.find("DataDictionary")
    declared, present = dictionary.get("numberOfFields"), len(dictionary.findall("DataField"))
    if declared is not None and int(declared) != present:
        yield f"DataDictionary: numberOfFields is {declared}, there are {present}"
    for array in root.iter("Array"):
        try:
            items = array_items(array)
        except PmmlError as error:
            yield f"Array: {error}"
            continue
        kind = {"int": "integer", "real": "number", "string": "string"}[array.get("type")]
        yield from (f"Array: {item} is no {kind}" for item in items if not is_of_type(kind, item))


def comparisons(root):
    """A comparison has a value and a test for missing has none; an interval has a margin."""
    for predicate in root.iter("SimplePredicate"):
        operator, has_value = predicate.get("operator"), "value" in predicate.attrib
        if has_value == (operator in ("isMissing", "isNotMissing")):
            yield f"SimplePredicate: {operator} {'with' if has_value else 'without'} a value"
    for interval in root.iter("Interval"):
        if "leftMargin" not in interval.attrib and "rightMargin" not in interval.attrib:
            yield "Interval: has no margin"


def interpolation_points(root):
    for norm in root.iter("NormContinuous"):
        points = [float(point.get("orig")) for point in norm.findall("LinearNorm")]
        if any(left >= right for left, right in zip(points, points[1:])):
            yield f"NormContinuous: the points {points} do not increase"


def default_children(root):
    """With the strategy defaultChild every inner node names one of its children; ids are unique in a tree."""
    for tree in root.iter("TreeModel"):
        ids = [node.get("id") for node in tree.iter("Node") if "id" in node.attrib]
        yield from (f"Node: the id {name} appears more than once" for name in sorted(set(ids))
                    if ids.count(name) > 1)
        for node in tree.iter("Node"):
            children = [nested.get("id") for nested in node.findall("Node")]
            if tree.get("missingValueStrategy") == "defaultChild" and children:
                if node.get("defaultChild") is None or node.get("defaultChild") not in children:
                    yield f"Node: the default child {node.get('defaultChild')} is none of {children}"


def used_fields(root):
    """Names of fields are unique, mining fields are known outside the model, used fields inside it."""
    outside = []
    for field in root.findall("DataDictionary/*") + root.findall("TransformationDictionary/*"):
        if field.get("name") in outside:
            yield f"{field.tag}: {field.get('name')} is declared more than once"
        outside.append(field.get("name"))
    for model in root:
        if model.find("MiningSchema") is not None:
            yield from model_fields(model, set(outside))


# Elements that use a field, and the attribute that names it.
USERS = {
    "FieldRef": "field", "NormContinuous": "field", "NormDiscrete": "field", "Discretize": "field",
    "SimplePredicate": "field", "SimpleSetPredicate": "field", "Target": "field", "BayesInput": "fieldName",
    "BayesOutput": "fieldName", "NumericPredictor": "name", "CategoricalPredictor": "name",
}


def model_fields(model, outside):
    names = [field.get("name") for field in model.findall("MiningSchema/MiningField")]
    yield from (f"{model.tag}: the mining field {name} is not known outside" for name in names
                if name not in outside)
    names += [field.get("name") for field in model.findall("LocalTransformations/DerivedField")]
    repeated = sorted({str(name) for name in names if names.count(name) > 1})
    yield from (f"{model.tag}: the field {name} is declared more than once" for name in repeated)
    # What lies in a model of a segment is that model's affair.
    inner = model.findall("Segmentation/Segment/*[MiningSchema]")
    theirs = {nested for member in inner for nested in member.iter()}
    for element in model.iter():
        name = element.get(USERS.get(element.tag, ""))
        if element not in theirs and name is not None and name not in names:
            yield f"{element.tag}: the field {name} is not in the mining schema of its {model.tag}"
    for member in inner:
        yield from model_fields(member, set(names))


def class_labels(root):
    """A classifier speaks of the classes that the data dictionary declares and of no others."""
    dictionary = {field.get("name"): {value.get("value") for value in field.findall("Value")}
                  for field in root.findall("DataDictionary/DataField")}
    for model in root.iter():
        target = next((field.get("name") for field in model.findall("MiningSchema/MiningField")
                       if field.get("usageType") in ("predicted", "target")), None)
        labels = dictionary.get(target)
        if labels and model.get("functionName") == "classification":
            yield from (f"{model.tag}: speaks of the class {label}, which {target} does not declare"
                        for label in sorted(spoken_labels(model) - labels))


def spoken_labels(model):
    places = {
        "Targets/Target/TargetValue": "value", "Output/OutputField[@feature='probability']": "value",
        ".//Node": "score", ".//ScoreDistribution": "value", "RegressionTable": "targetCategory",
        ".//TargetValueCount": "value", ".//TargetValueStat": "value",
    }
    return {element.get(name) for path, name in places.items() if model.tag != "MiningModel" or path[0] != "."
            for element in model.findall(path)} - {None}


PROSE_RULES = [
    numbers_of_items,
    comparisons,
    interpolation_points,
    default_children,
    used_fields,
    class_labels,
]
