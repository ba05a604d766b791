"""The scorer gives the answers that the rules of PMML 4.2 give by hand, and refuses what it does not know."""

import io
import math
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from pmml_fields import Field, PmmlError, Record, array_items, decide, evaluate, read_document
from pmml_scorer import Scorer, read_rows, write_scores

DICTIONARY = """
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="k" optype="continuous" dataType="double">
<Interval closure="closedOpen" leftMargin="0"/></DataField>
<DataField name="city" optype="categorical" dataType="string"><Value value="01"/><Value value="c d"/>
  <Value value="?" property="missing"/></DataField>
<DataField name="size" optype="ordinal" dataType="string"><Value value="S"/><Value value="M"/>
<Value value="L"/></DataField>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="buy" optype="categorical" dataType="string"><Value value="yes"/><Value value="no"/>
</DataField>"""

SCHEMA = """<MiningSchema><MiningField name="{target}" usageType="{usage}"/>
<MiningField name="x"/><MiningField name="k"/><MiningField name="city"/></MiningSchema>"""
REGRESSION = SCHEMA.format(target="y", usage="predicted")
CLASSES = SCHEMA.format(target="buy", usage="target")


def document(model):
    return f"""<?xml version="1.0" encoding="utf-8"?>
<PMML version="4.2" xmlns="http://www.dmg.org/PMML-4_2"><Header description="any text"/>
<DataDictionary>{DICTIONARY}</DataDictionary>{model}</PMML>"""


def scorer(model):
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "model.pmml"
        path.write_text(document(model), encoding="utf-8")
        return Scorer(read_document(path))


def scored(model, **cells):
    """Prediction and P(yes) of a row; fields that are not named are missing."""
    result = scorer(model).score({"x": "", "k": "", "city": ""} | cells)
    return result.prediction, (result.probabilities or {}).get("yes")


def record(**cells):
    fields = {f.name: f for f in map(Field, ElementTree.fromstring(f"<D>{DICTIONARY}</D>"))}
    return Record({name: field.read(cells.get(name)) for name, field in fields.items()}, fields)


def simple(field, operator, value=None):
    literal = "" if value is None else f' value="{value}"'
    return f'<SimplePredicate field="{field}" operator="{operator}"{literal}/>'


def compound(operator, *operands):
    return f'<CompoundPredicate booleanOperator="{operator}">{"".join(operands)}</CompoundPredicate>'


T, F, U = "<True/>", "<False/>", simple("k", "equal", 1)  # k is missing in the row of Predicates


class Predicates(unittest.TestCase):
    # predicate, its value for x = 2, city = "01", size = M and k missing
    CASES = [
        (T, True), (F, False), (U, None),
        (simple("x", "equal", "2.0"), True), (simple("x", "notEqual", "2e0"), False),
        (simple("x", "lessThan", 2), False), (simple("x", "lessOrEqual", 2), True),
        (simple("x", "greaterThan", 2), False), (simple("x", "greaterOrEqual", 2), True),
        (simple("x", "lessThan", 10), True),  # as numbers: as texts it would be false
        (simple("city", "equal", "01"), True), (simple("city", "equal", "1"), False),  # as texts
        (simple("size", "lessThan", "L"), True), (simple("size", "lessOrEqual", "S"), False),
        (simple("k", "isMissing"), True), (simple("k", "isNotMissing"), False),
        (simple("x", "isMissing"), False), (simple("x", "isNotMissing"), True),
        (compound("and", T, T), True), (compound("and", T, U), None), (compound("and", U, F), False),
        (compound("or", F, F), False), (compound("or", U, T), True), (compound("or", U, F), None),
        (compound("xor", T, F, F), True), (compound("xor", T, T), False), (compound("xor", T, U), None),
        (compound("surrogate", U, F, T), False), (compound("surrogate", U, U), None),
    ]

    def test_have_three_values(self):
        for text, expected in self.CASES:
            with self.subTest(text):
                row = record(x="2", city="01", size="M")
                self.assertIs(decide(ElementTree.fromstring(text), row), expected)

    def test_on_sets(self):
        # field, operator, type and items of the array, value for x = 2 and city "01"
        for field, operator, kind, items, expected in [
            ("city", "isIn", "string", '"01" "c d"', True),
            ("city", "isNotIn", "string", '"01" "c d"', False),
            ("city", "isIn", "string", '"1" "c d"', False), ("city", "isNotIn", "string", '"1" "2"', True),
            ("x", "isIn", "real", "1 2.0", True), ("x", "isIn", "int", "1 3", False),
            ("k", "isIn", "int", "1 2", None), ("k", "isNotIn", "int", "1 2", None),
        ]:
            text = (f'<SimpleSetPredicate field="{field}" booleanOperator="{operator}">'
                    f'<Array n="2" type="{kind}">{items}</Array></SimpleSetPredicate>')
            with self.subTest(text):
                self.assertIs(decide(ElementTree.fromstring(text), record(x="2", city="01")), expected)

    def test_arrays_of_texts_in_both_spellings(self):
        for text, expected in [
            ('"a" "b c"', ("a", "b c")), ('"say "so"" "\\"', ('say "so"', "\\")), ('a "b c"', ("a", "b c")),
            ('" a " ""', (" a ", "")), ('a b', ("a", "b")), ('"a \\"b\\""  c', ('a "b"', "c")),
        ]:
            with self.subTest(text):
                array = ElementTree.fromstring('<Array n="2" type="string"/>')
                array.text = text
                self.assertEqual(array_items(array), expected)


class DerivedFields(unittest.TestCase):
    POINTS = '<LinearNorm orig="1" norm="0"/><LinearNorm orig="3" norm="1"/><LinearNorm orig="4" norm="5"/>'
    BINS = ('<DiscretizeBin binValue="low"><Interval closure="openOpen" rightMargin="0"/></DiscretizeBin>'
            '<DiscretizeBin binValue="mid">'
            '<Interval closure="closedClosed" leftMargin="0" rightMargin="1"/></DiscretizeBin>'
            '<DiscretizeBin binValue="low">'
            '<Interval closure="openClosed" leftMargin="1" rightMargin="2"/></DiscretizeBin>')

    def test_follow_their_expression(self):
        norm, bins = "<NormContinuous field='x' {}>" + self.POINTS + "</NormContinuous>", self.BINS
        for expression, x, expected in [
            (norm, "2", 0.5), (norm, "3.5", 3.0), (norm, "0", -0.5), (norm, "5", 9.0), (norm, "", None),
            (norm.format("outliers='asExtremeValues'"), "9", 5.0),
            (norm.format("outliers='asMissingValues'"), "9", None),
            (norm.format("mapMissingTo='7'"), "", 7.0),
            ("<NormDiscrete field='x' value='2'/>", "2.0", 1.0),
            ("<NormDiscrete field='x' value='2'/>", "3", 0.0),
            ("<NormDiscrete field='x' value='2'/>", "", None), ("<FieldRef field='x'/>", "2", 2.0),
            ("<FieldRef field='x' mapMissingTo='3'/>", "", "3"),
            (f"<Discretize field='x' defaultValue='d' mapMissingTo='m'>{bins}</Discretize>", "-1", "low"),
            (f"<Discretize field='x' defaultValue='d' mapMissingTo='m'>{bins}</Discretize>", "0", "mid"),
            (f"<Discretize field='x' defaultValue='d' mapMissingTo='m'>{bins}</Discretize>", "1", "mid"),
            (f"<Discretize field='x' defaultValue='d' mapMissingTo='m'>{bins}</Discretize>", "2", "low"),
            (f"<Discretize field='x' defaultValue='d' mapMissingTo='m'>{bins}</Discretize>", "2.1", "d"),
            (f"<Discretize field='x' defaultValue='d' mapMissingTo='m'>{bins}</Discretize>", "", "m"),
            (f"<Discretize field='x'>{bins}</Discretize>", "2.1", None),
        ]:
            with self.subTest(expression=expression, x=x):
                parent = ElementTree.fromstring(f"<DerivedField>{expression.format('')}</DerivedField>")
                self.assertEqual(evaluate(parent, record(x=x)), expected)

    def test_stand_anywhere_in_the_model_and_build_on_each_other(self):
        scaled = ('<LocalTransformations><DerivedField name="b" optype="continuous" dataType="double">'
                  '<NormContinuous field="a"><LinearNorm orig="0" norm="1"/>'
                  '<LinearNorm orig="1" norm="3"/></NormContinuous>'
                  '</DerivedField><DerivedField name="a" optype="continuous" dataType="double">'
                  '<FieldRef field="x"/>'
                  '</DerivedField></LocalTransformations>')
        body = Refusals.TABLE.format("b", "10")
        for parts in (scaled + REGRESSION + body, REGRESSION + body + scaled):
            model = f'<RegressionModel functionName="regression">{parts}</RegressionModel>'
            self.assertEqual(scored(model, x="2"), (50.0, None))  # 10 (1 + 2 * 2)


class MiningFields(unittest.TestCase):
    def test_treat_outliers_invalid_and_missing_values(self):
        for attributes, k, expected in [
            ("", "-1", -1.0), ("", "", None), ('invalidValueTreatment="asIs"', "-1", -1.0),
            ('invalidValueTreatment="asMissing"', "-1", None),
            ('invalidValueTreatment="returnInvalid"', "-1", None),
            ('invalidValueTreatment="returnInvalid"', "0", 0.0), ('missingValueReplacement="4"', "", 4.0),
            ('invalidValueTreatment="asMissing" missingValueReplacement="4"', "-1", 4.0),
            ('outliers="asExtremeValues" highValue="2"', "3", 2.0),
            ('outliers="asExtremeValues" lowValue="2"', "1", 2.0),
            ('outliers="asMissingValues" lowValue="0" highValue="2"', "3", None),
        ]:
            with self.subTest(attributes, k=k):
                model = ('<RegressionModel functionName="regression"><MiningSchema>'
                         f'<MiningField name="k" {attributes}/>'
                         '<MiningField name="y" usageType="target"/></MiningSchema>'
                         '<RegressionTable intercept="0">'
                         '<NumericPredictor name="k" coefficient="1"/></RegressionTable></RegressionModel>')
                self.assertEqual(scored(model, k=k)[0], expected)


def leaf(name, predicate, score, yes, no):
    return (f'<Node id="{name}" score="{score}">{predicate}'
            f'<ScoreDistribution value="yes" recordCount="{yes}"/>'
            f'<ScoreDistribution value="no" recordCount="{no}"/>')


TREE = (f'<TreeModel functionName="classification" {{}}>{CLASSES}'
        + leaf("1", T, "no", 4, 6).replace(">", ' defaultChild="3">', 1)
        + leaf("2", simple("x", "lessThan", 1), "yes", 3, 1) + "</Node>"
        + leaf("3", simple("k", "greaterThan", 0), "no", 1, 5).replace(">", ' defaultChild="5">', 1)
        + leaf("4", simple("city", "equal", "01"), "yes", 1, 0) + "</Node>"
        + leaf("5", simple("city", "equal", "c d"), "no", 0, 5) + "</Node></Node></Node></TreeModel>")
DEFAULT, NONE, LAST, NULL = (f'missingValueStrategy="{s}"' for s in
                             ("defaultChild", "none", "lastPrediction", "nullPrediction"))
RETURN_LAST = ' noTrueChildStrategy="returnLastPrediction"'


class Trees(unittest.TestCase):
    def test_answer_with_the_first_true_child(self):
        for attributes, cells, expected in [
            (DEFAULT, {"x": "0"}, ("yes", 0.75)), (DEFAULT, {"x": "1", "k": "1", "city": "01"}, ("yes", 1.0)),
            (DEFAULT, {"x": "0", "k": "1"}, ("yes", 0.75)),  # both children are true
            (DEFAULT, {"x": "1", "k": "0"}, (None, None)),
            (DEFAULT + RETURN_LAST, {"x": "1", "k": "0"}, ("no", 0.4)),
            (DEFAULT, {"x": "1", "k": "1", "city": "e"}, (None, None)),
            (DEFAULT + RETURN_LAST, {"x": "1", "k": "1", "city": "e"}, ("no", 1 / 6)),
            # x unknown: the default child, though its predicate is false or unknown as well
            (DEFAULT, {"k": "0", "city": "01"}, ("yes", 1.0)), (DEFAULT, {}, ("no", 0.0)),
            (DEFAULT, {"x": "1", "k": "1", "city": "?"}, ("no", 0.0)),
            (NONE, {"k": "1", "city": "01"}, ("yes", 1.0)), (NONE, {}, (None, None)), ("", {}, (None, None)),
            (NONE + RETURN_LAST, {"k": "1"}, ("no", 1 / 6)),
            (LAST, {"k": "1"}, ("no", 0.4)), (LAST, {"x": "1", "k": "1"}, ("no", 1 / 6)),
            (NULL, {"k": "1", "city": "01"}, (None, None)), (NULL, {"x": "0"}, ("yes", 0.75)),
        ]:
            with self.subTest(attributes, **cells):
                self.assertEqual(scored(TREE.format(attributes), **cells), expected)

    def test_probabilities_and_labels_of_a_node(self):
        for score, distributions, expected in [
            ("", 'yes" recordCount="1, no" recordCount="3', ("no", 0.25)),
            ("", 'no" recordCount="2, yes" recordCount="2', ("yes", 0.5)),  # the class declared first
            ("", 'yes" recordCount="1" probability="0.4, no" recordCount="3" probability="0.6', ("no", 0.4)),
            ("", 'yes" recordCount="1" probability="0.4, no" recordCount="3', ("no", 0.25)),
            ('score="yes"', 'yes" recordCount="1, no" recordCount="3', ("yes", 0.25)),
        ]:
            inner = "".join(f'<ScoreDistribution value="{d}"/>' for d in distributions.split(", "))
            with self.subTest(distributions):
                self.assertEqual(scored(f'<TreeModel functionName="classification">{CLASSES}'
                                        f"<Node {score}><True/>{inner}</Node></TreeModel>"), expected)


def counts(yes, no):
    return (f'<TargetValueCounts><TargetValueCount value="yes" count="{yes}"/>'
            f'<TargetValueCount value="no" count="{no}"/></TargetValueCounts>')


def densities(field, yes, no):
    return (f'<BayesInput fieldName="{field}"><TargetValueStats>'
            f'<TargetValueStat value="yes"><{yes}/></TargetValueStat>'
            f'<TargetValueStat value="no"><{no}/></TargetValueStat></TargetValueStats></BayesInput>')


class NaiveBayes(unittest.TestCase):
    # The Gaussian of variance 1 / (2 pi) has density 1 at its mean.
    UNIT = f'GaussianDistribution mean="3" variance="{1 / (2 * math.pi)!r}"'
    MODEL = (f'<NaiveBayesModel functionName="classification" threshold="0.125">{CLASSES}<BayesInputs>'
             + densities("x", UNIT, 'UniformDistribution lower="1" upper="5"')
             + densities("k", 'PoissonDistribution mean="2"', 'PoissonDistribution mean="1"')
             + f'<BayesInput fieldName="city"><PairCounts value="01">{counts(3, 0)}</PairCounts>'
             f'<PairCounts value="c d">{counts(0.25, 2.5)}</PairCounts></BayesInput></BayesInputs>'
             f'<BayesOutput fieldName="buy">{counts(5, 15)}</BayesOutput></NaiveBayesModel>')

    def test_posteriors(self):
        e = math.exp
        for cells, yes, no in [
            ({}, 5, 15),
            ({"x": "3"}, 5 * 1, 15 * 0.25),
            ({"x": "1"}, 5 * 0.125, 15 * 0.25), ({"x": "5"}, 5 * 0.125, 15 * 0.25),
            ({"x": "100"}, 5 * 0.125, 15 * 0.125),  # no density: the threshold
            ({"k": "1"}, 5 * 2 * e(-2), 15 * e(-1)), ({"k": "0"}, 5 * e(-2), 15 * e(-1)),
            ({"k": "4"}, 5 * 0.125, 15 * 0.125),  # 2/3 e^-2 and 1/24 e^-1 lie under the threshold
            ({"k": "0.5"}, 5 * 0.125, 15 * 0.125),
            ({"city": "01"}, 5 * 12 / 13, 15 * 0.125),
            ({"city": "c d"}, 5 / 13, 15),  # a small share is none the less a share
            ({"city": "elsewhere"}, 5, 15), ({"x": "3", "city": "01"}, 5 * 12 / 13, 15 * 0.25 * 0.125),
        ]:
            with self.subTest(**cells):
                prediction, probability = scored(self.MODEL, **cells)
                self.assertAlmostEqual(probability, yes / (yes + no), delta=1e-15)
                self.assertEqual(prediction, "yes" if yes > no else "no")

    def test_discretized_input(self):
        derived = ('<DerivedField optype="categorical" dataType="string"><Discretize field="x">'
                   '<DiscretizeBin binValue="1">'
                   '<Interval closure="openOpen" rightMargin="0"/></DiscretizeBin></Discretize>'
                   '</DerivedField>')
        model = (f'<NaiveBayesModel functionName="classification" threshold="0">{CLASSES}<BayesInputs>'
                 f'<BayesInput fieldName="x">{derived}<PairCounts value="1">{counts(1, 1)}</PairCounts>'
                 f'<PairCounts value="2">{counts(3, 0)}</PairCounts></BayesInput></BayesInputs>'
                 f'<BayesOutput fieldName="buy">{counts(1, 1)}</BayesOutput></NaiveBayesModel>')
        self.assertEqual(scored(model, x="-1"), ("no", 0.2))  # 1/4 against 1
        self.assertEqual(scored(model, x="1"), ("yes", 0.5))  # in no bin: missing


def regression(tables, attributes='functionName="regression"', schema=REGRESSION, targets=""):
    return f"<RegressionModel {attributes}>{schema}{targets}{tables}</RegressionModel>"


class Regression(unittest.TestCase):
    def test_sums_terms_and_knows_missing(self):
        table = ('<RegressionTable intercept="1"><NumericPredictor name="x" coefficient="2"/>'
                 '<NumericPredictor name="x" exponent="2" coefficient="10"/>'
                 '<CategoricalPredictor name="city" value="01" coefficient="100"/>'
                 '<PredictorTerm coefficient="1000"><FieldRef field="x"/><FieldRef field="k"/>'
                 '</PredictorTerm>'
                 '</RegressionTable>')
        for x, k, city, expected in [("3", "2", "01", 6197.0), ("3", "2", "c d", 6097.0),
                                     ("3", "2", "", 6097.0), ("", "2", "01", None), ("3", "", "01", None)]:
            with self.subTest(x=x, k=k, city=city):
                self.assertEqual(scored(regression(table), x=x, k=k, city=city)[0], expected)

    def test_links(self):
        for method, intercept, expected in [
            ("none", 2, 2), ("logit", math.log(3), 0.75), ("softmax", -math.log(3), 0.25), ("exp", 0, 1),
            ("probit", 0, 0.5), ("cloglog", math.log(math.log(2)), 0.5),
            ("loglog", -math.log(math.log(2)), 0.5),
            ("cauchit", 1, 0.75),
        ]:
            with self.subTest(method):
                model = regression(f'<RegressionTable intercept="{intercept!r}"/>',
                                   f'functionName="regression" normalizationMethod="{method}"')
                self.assertAlmostEqual(scored(model)[0], expected, delta=1e-15)

    def test_classes(self):
        # method, sums of yes and no, P(yes)
        for method, yes, no, expected in [
            ("softmax", math.log(3), 0, 0.75), ("softmax", 1000, 1000, 0.5), ("simplemax", 1, 3, 0.25),
            ("logit", math.log(3), 0, 0.75), ("none", 0.25, 0.75, 0.25),
        ]:
            with self.subTest(method, yes=yes, no=no):
                model = regression(f'<RegressionTable intercept="{yes!r}" targetCategory="yes"/>'
                                   f'<RegressionTable intercept="{no!r}" targetCategory="no"/>',
                                   f'functionName="classification" normalizationMethod="{method}"', CLASSES)
                result = scorer(model).score({"x": "", "k": "", "city": ""})
                self.assertAlmostEqual(result.probabilities["yes"], expected, delta=1e-15)
                self.assertAlmostEqual(result.probabilities["no"], 1.0 - expected, delta=1e-15)
                self.assertEqual(result.prediction, "no" if expected < 0.5 else "yes")

    def test_targets_clamp_scale_and_cast(self):
        table = Refusals.TABLE.format("x", "1")
        for attributes, x, expected in [
            ('rescaleFactor="2" rescaleConstant="1"', "3", 7.0),
            ('min="0" max="5" rescaleFactor="2"', "9", 10.0),
            ('min="0" rescaleConstant="1"', "-9", 1.0), ('castInteger="round"', "2.5", 3.0),
            ('castInteger="floor" rescaleFactor="0.5"', "3", 1.0), ('castInteger="ceiling"', "2.1", 3.0),
            ('successClass="a"', "", 8.0),
        ]:
            with self.subTest(attributes, x=x):
                targets = (f'<Targets><Target field="y" {attributes}><TargetValue defaultValue="8"/></Target>'
                           '</Targets>')
                self.assertEqual(scored(regression(table, targets=targets), x=x)[0], expected)

    def test_priors_answer_where_inputs_are_missing(self):
        targets = ('<Targets><Target field="buy"><TargetValue value="no" priorProbability="0.25"/>'
                   '<TargetValue value="yes" priorProbability="0.75"/></Target></Targets>')
        model = TREE.format(NULL).replace("</MiningSchema>", "</MiningSchema>" + targets)
        self.assertEqual(scored(model, k="1", city="01"), ("yes", 0.75))
        self.assertEqual(scored(model, x="1", k="0", city="01"), (None, None))


def ensemble(method, members, schema, attributes):
    segments = "".join(f'<Segment id="{i}" weight="{weight}">{predicate}{model}</Segment>'
                       for i, (weight, predicate, model) in enumerate(members))
    return (f'<MiningModel {attributes}>{schema}<Segmentation multipleModelMethod="{method}">{segments}'
            "</Segmentation></MiningModel>")


def numbers(method):
    """Members 1, 5, 3 of weights 1, 2, 1; the last one where x > 0 only, and one that gives no result."""
    members = [(w, p, regression(f'<RegressionTable intercept="{v}"/>')) for w, p, v in
               ((1, T, 1), (2, T, 5), (1, simple("x", "greaterThan", 0), 3))]
    silent = regression('<RegressionTable intercept="9"><NumericPredictor name="k" coefficient="1"/>'
                        '</RegressionTable>')
    members = [(7, F, members[0][2]), *members, (50, T, silent)]
    return ensemble(method, members, REGRESSION, 'functionName="regression"')


def voters(method):
    """P(yes) 0.75, 0.4 and, with the label no, 0.5; weights 1, 1, 4."""
    trees = [f'<TreeModel functionName="classification">{CLASSES}{leaf("1", T, *l)}</Node></TreeModel>'
             for l in (("yes", 3, 1), ("no", 2, 3), ("no", 1, 1))]
    return ensemble(method, [(w, T, tree) for w, tree in zip((1, 1, 4), trees)], CLASSES,
                    'functionName="classification"')


class Ensembles(unittest.TestCase):
    def test_of_numbers(self):
        for method, with_third, without in [("average", 3, 3), ("weightedAverage", 3.5, 11 / 3),
                                            ("sum", 9, 6),
                                            ("median", 3, 3), ("max", 5, 5), ("selectFirst", 1, 1)]:
            with self.subTest(method):
                self.assertEqual(scored(numbers(method), x="1")[0], with_third)
                self.assertEqual(scored(numbers(method), x="0")[0], without)

    def test_of_classes(self):
        for method, expected, yes in [
            ("majorityVote", "no", 1 / 3), ("weightedMajorityVote", "no", 1 / 6),
            ("average", "yes", 1.65 / 3),
            ("weightedAverage", "yes", 3.15 / 6), ("median", "yes", 0.5), ("max", "yes", 0.75),
            ("selectFirst", "yes", 0.75),
        ]:
            with self.subTest(method):
                prediction, probability = scored(voters(method))
                self.assertEqual(prediction, expected)
                self.assertAlmostEqual(probability, yes, delta=1e-15)

    def test_boosted_sum(self):
        model = numbers("sum").replace("<Segmentation", '<Targets><Target field="y" rescaleFactor="0.5" '
                                                        'rescaleConstant="100"/></Targets><Segmentation', 1)
        self.assertEqual(scored(model, x="1")[0], 104.5)


class Refusals(unittest.TestCase):
    TABLE = '<RegressionTable intercept="0"><NumericPredictor name="{}" coefficient="{}"/></RegressionTable>'

    def test_name_what_is_wrong(self):
        for model, cells, message in [
            ("<ClusteringModel/>", {}, "ClusteringModel"),
            (TREE.format('missingValueStrategy="aggregateNodes"'), {"x": "0"}, "aggregateNodes"),
            (TREE.format(DEFAULT).replace('defaultChild="3"', 'defaultChild="4"'), {}, "default child '4'"),
            (TREE.format("").replace('score="yes"', 'score="1"'), {"x": "0"}, "'1' is no class"),
            (TREE.format("").replace('operator="lessThan"', 'operator="less"'), {"x": "0"}, "less"),
            (TREE.format("").replace('"x" operator', '"size" operator'), {}, "size is used"),
            (regression(self.TABLE.format("size", "1")), {}, "size is used"),
            (regression(self.TABLE.format("city", "1")), {"city": "01"}, "city is no number"),
            (regression(self.TABLE.format("x", "1,5")), {"x": "1"}, "'1,5' is not a number"),
            (regression(self.TABLE.format("x", "1")), {"x": "1_0"}, "'1_0' is not a number"),
            (regression('<LocalTransformations><DerivedField name="x" optype="continuous" dataType="double">'
                        '<FieldRef field="k"/></DerivedField>'
                        '</LocalTransformations>' + self.TABLE.format("x", "1")), {},
             "x is there already"),
            (numbers("modelChain"), {}, "modelChain"), (voters("sum"), {}, "regression"),
            (numbers("majorityVote"), {}, "classifiers"),
            (voters("average").replace('recordCount="1"', 'recordCount="0"'), {}, "no probabilities"),
        ]:
            with self.subTest(message), self.assertRaisesRegex(PmmlError, message):
                scored(model, **cells)


    def test_of_other_documents(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "model.pmml"
            newer = document("").replace("4.2", "4.4"), document("").replace("PMML-4_2", "PMML-4_4")
            for text in ("", "<PMML/>", *newer):
                path.write_text(text, encoding="utf-8")
                with self.subTest(text), self.assertRaises(PmmlError):
                    read_document(path)


class Program(unittest.TestCase):
    def test_writes_a_table(self):
        output = io.StringIO()
        rows = read_rows(io.StringIO('k,x,"city"\n,0,c d\n1,1,"01"\n0,1,\n'))
        write_scores(scorer(TREE.format(DEFAULT)), rows, output)
        self.assertEqual(output.getvalue(), "prediction,P(yes),P(no)\nyes,0.75,0.25\nyes,1,0\n,,\n")

    def test_refuses_tables_out_of_shape(self):
        for text in ("x,k\n1\n", "x,k\n1,2,3\n", "x,k\n\n", "x,x\n1,2\n"):
            with self.subTest(text), self.assertRaises(PmmlError):
                list(read_rows(io.StringIO(text)))

    def test_keeps_rows_of_one_empty_cell(self):
        self.assertEqual(list(read_rows(io.StringIO("x\n1\n\n2\n"))), [{"x": "1"}, {"x": ""}, {"x": "2"}])

    def test_numbers_have_17_digits_and_failures_a_status(self):
        program = Path(__file__).with_name("pmml_scorer.py")
        with tempfile.TemporaryDirectory() as folder:
            model, data = Path(folder) / "m.pmml", Path(folder) / "d.csv"
            model.write_text(document(regression(Refusals.TABLE.format("x", "0.1"))), encoding="utf-8")
            for text, status, printed in [("x,k,city\n1,,\n", 0, "prediction\n0.10000000000000001\n"),
                                          ("x,k,city\n1\n", 1, ""), ("x,x,k,city\n1,1,,\n", 1, ""),
                                          ("x\n1\n", 1, "")]:
                data.write_text(text, encoding="utf-8")
                run = subprocess.run([sys.executable, program, model, data], capture_output=True, text=True)
                with self.subTest(text):
                    self.assertEqual((run.returncode, run.stdout), (status, printed), run.stderr)
                    self.assertEqual(run.stderr.startswith("pmml_scorer: "), status == 1)


if __name__ == "__main__":
    unittest.main()
