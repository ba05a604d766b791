"""The built-in rules accept a document in order, deviations included, and name each fault planted in it."""

import contextlib
import io
import os
import tempfile
import unittest
import unittest.mock
from pathlib import Path

import schema_check

FRAME = """<?xml version="1.0" encoding="utf-8"?>
<PMML version="4.2" xmlns="http://www.dmg.org/PMML-4_2" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<Header copyright="c" description="d"><Application name="a" version="1"/>
<Timestamp>now</Timestamp>{name}</Header>
<DataDictionary numberOfFields="3"><DataField name="x" optype="continuous" dataType="double"/>
<DataField name="city" optype="categorical" dataType="string"/>
<DataField name="buy" optype="categorical" dataType="string"><Value value="no"/><Value value="yes"/>
</DataField>
</DataDictionary>{model}</PMML>"""

SCHEMA = """<MiningSchema><MiningField name="buy" usageType="predicted"/><MiningField name="x"/>
<MiningField name="city"/></MiningSchema>"""
TARGETS = """<Targets><Target field="buy"{success}><TargetValue value="no" priorProbability="0.25"/></Target>
</Targets>"""
SCALED = """<LocalTransformations><DerivedField name="x*" optype="continuous" dataType="double">
<NormContinuous field="x"><LinearNorm orig="0" norm="1e-3"/><LinearNorm orig="2" norm="1"/></NormContinuous>
</DerivedField></LocalTransformations>"""

TREE = """<TreeModel functionName="classification" missingValueStrategy="defaultChild">{head}
<Node id="1" score="no" defaultChild="3"><True/>
<ScoreDistribution value="no" recordCount="2" probability="0.5"/>
<ScoreDistribution value="yes" recordCount="2e0"/>
<Node id="2" score="no"><SimplePredicate field="x*" operator="lessThan" value="1e-9"/></Node>
<Node id="3" score="yes"><SimpleSetPredicate field="city" booleanOperator="isIn">
<Array n="2" type="string">"a" "b c"</Array>
</SimpleSetPredicate></Node></Node></TreeModel>"""
ENSEMBLE = f"""<MiningModel functionName="classification">{SCHEMA}
<Segmentation multipleModelMethod="majorityVote">
<Segment id="1" weight="1e-3"><True/>{TREE.format(head=SCHEMA + SCALED)}</Segment></Segmentation>
</MiningModel>"""
BAYES = f"""<NaiveBayesModel functionName="classification" threshold="1e-9">
<Extension name="a" value="1"/><Extension name="b" value="2"/>{SCHEMA}<BayesInputs>
<BayesInput fieldName="city"><PairCounts value="a"><TargetValueCounts>
<TargetValueCount value="no" count="0.5"/>
</TargetValueCounts></PairCounts></BayesInput></BayesInputs><BayesOutput fieldName="buy"><TargetValueCounts>
<TargetValueCount value="no" count="3"/></TargetValueCounts></BayesOutput></NaiveBayesModel>"""
LOGISTIC = f"""<RegressionModel functionName="classification" normalizationMethod="softmax">{SCHEMA}
<Output><OutputField name="P" feature="probability" value="yes"/></Output>
<RegressionTable intercept="1e-5" targetCategory="yes"><NumericPredictor name="x" coefficient="-INF"/>
</RegressionTable>
<RegressionTable intercept="0" targetCategory="no"/></RegressionModel>"""
MODELS = [TREE.format(head=SCHEMA + TARGETS.format(success="") + SCALED), ENSEMBLE, BAYES, LOGISTIC]

# A fault that the schema finds: the model, the text that is replaced and by what, a part of the complaint.
SCHEMA_FAULTS = [
    (0, ' version="4.2"', "", "lacks the attribute version"),
    (0, "<DataField ", '<DataField units="m" ', "has an attribute units"),
    (0, ' optype="categorical"', "", "lacks the attribute optype"),
    (0, 'dataType="double"', 'dataType="real"', 'dataType="real"'),
    (0, 'numberOfFields="3"', 'numberOfFields="3.0"', "numberOfFields"),
    (0, 'priorProbability="0.25"', 'priorProbability="2.5e-1"', "is no decimal"),
    (0, 'probability="0.5"', 'probability="5e-01"', "is no decimal"),
    (0, 'recordCount="2"', 'recordCount="inf"', "is no number"),
    (0, '<LinearNorm orig="0" norm="1e-3"/>', "", "NormContinuous: holds"),
    (0, "<True/>", "", "Node: holds"),
    (0, "<True/>\n", "<ScoreDistribution value='no' recordCount='1'/><True/>", "Node: holds"),
    (0, "<True/>", "text <True/>", "Node: holds text"),
    (0, 'operator="lessThan"', 'operator="less"', "operator"),
    (0, "<MiningField name=\"city\"/>", "<MiningFeld name='city'/>", "no rules"),
    (0, 'defaultChild"', 'default"', "missingValueStrategy"),
    (1, 'functionName="classification"', 'functionName="transformation"', "functionName"),
    (1, "<Segment id", "<Segment weigth='1' id", "weigth"),
    (1, "<True/>", "", "Segment: holds"),
    (2, ' threshold="1e-9"', "", "lacks the attribute threshold"),
    (2, ' count="3"', "", "lacks the attribute count"),
    (2, SCHEMA, "", "NaiveBayesModel: holds"),
    (2, SCHEMA, SCHEMA + '<Extension name="c" value="3"/>', "NaiveBayesModel: holds"),
    (2, '<Extension name="b"', '<Extension nam="b"', "has an attribute nam"),
    (3, ' intercept="0"', "", "lacks the attribute intercept"),
    (3, "<NumericPredictor ", '<NumericPredictor exponent="1.0" ', "exponent"),
    (3, 'coefficient="-INF"', 'coefficient="-inf"', "coefficient"),
    (3, "softmax", "sigmoid", "normalizationMethod"),
    (3, 'feature="probability"', 'feature="probabilities"', "feature"),
]
# Faults that only the prose of the standard forbids.
PROSE_FAULTS = [
    (0, 'numberOfFields="3"', 'numberOfFields="4"', "there are 3"),
    (0, 'n="2"', 'n="3"', "Array of 3 items holds 2"),
    (0, ' value="1e-9"', "", "lessThan without a value"),
    (0, 'orig="0"', 'orig="2"', "do not increase"),
    (0, 'defaultChild="3"', 'defaultChild="4"', "the default child 4"),
    (0, ' defaultChild="3"', "", "the default child None"),
    (0, 'Node id="3"', 'Node id="2"', "more than once"),
    (0, '"x*" operator', '"x" operator', None),
    (0, '"x*" operator', '"z" operator', "z is not in the mining schema"),
    (0, '<MiningField name="city"/>', "", "city is not in the mining schema"),
    (0, 'name="city"/>', 'name="town"/>', "town is not known outside"),
    (0, 'DerivedField name="x*"', 'DerivedField name="x"', "declared more than once"),
    (0, 'score="yes"', 'score="1"', "the class 1"),
    (1, '<MiningField name="city"/>', "", "city is not known outside"),
    (2, '"no" count="3"', '"No" count="3"', "the class No"),
    (3, 'targetCategory="no"', 'targetCategory="none"', "the class none"),
]


class SchemaCheck(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name) / "model.pmml"

    def check(self, text, *options, **environment):
        self.path.write_text(text, encoding="utf-8")
        output = io.StringIO()
        with contextlib.redirect_stdout(output), unittest.mock.patch.dict(os.environ, environment):
            status = schema_check.main([*options, str(self.path)])
        return status, output.getvalue()

    def faulty(self, model, old, new):
        text = FRAME.format(name="", model=MODELS[model])
        self.assertIn(old, text)
        # Not the version of the XML declaration.
        start = text.index("<PMML")
        return text[:start] + text[start:].replace(old, new, 1)

    def test_accepts_documents_in_order(self):
        for model in MODELS:
            self.assertEqual(self.check(FRAME.format(name="", model=model), "--builtin"), (0, ""))

    def test_takes_out_what_deviates_on_purpose(self):
        name, targets = "<ModelName>n</ModelName>", TARGETS.format(success=' successClass="yes"')
        for head in (SCALED + SCHEMA + targets, SCHEMA + SCALED + targets):
            text = FRAME.format(name=name, model=TREE.format(head=head))
            self.assertEqual(self.check(text, "--builtin"), (0, ""))
        misplaced = FRAME.format(name="", model=name + MODELS[0])
        self.assertEqual(self.check(misplaced, "--builtin")[0], 1)

    def test_names_each_fault(self):
        for model, old, new, complaint in SCHEMA_FAULTS + PROSE_FAULTS:
            with self.subTest(old=old, new=new):
                status, output = self.check(self.faulty(model, old, new), "--builtin")
                self.assertEqual(status, 0 if complaint is None else 1, output)
                self.assertIn(complaint or "", output)

    def test_refuses_what_is_no_pmml(self):
        for text in ("", "<PMML", "<PMML version='4.2'/>", "<a xmlns='http://www.dmg.org/PMML-4_2'/>"):
            with self.subTest(text):
                self.assertEqual(self.check(text, "--builtin")[0], 1)

    def test_is_skipped_without_a_schema(self):
        text = FRAME.format(name="", model=BAYES)
        for options, path in [((), ""), ((), "absent.xsd"), (("--schema", "absent.xsd"), "")]:
            status, output = self.check(text, *options, PMML_SCHEMA=path)
            self.assertEqual(status, 77)
            self.assertTrue(output.startswith("schema_check: skipped, no schema"), output)

    @unittest.skipUnless(os.environ.get("PMML_SCHEMA"), "PMML_SCHEMA does not name the schema")
    def test_schema_agrees_with_the_built_in_rules(self):
        for model in MODELS:
            self.assertEqual(self.check(FRAME.format(name="", model=model)), (0, ""))
        for model, old, new, _ in SCHEMA_FAULTS:
            with self.subTest(old=old, new=new):
                self.assertEqual(self.check(self.faulty(model, old, new))[0], 1)
        for model, old, new, _ in PROSE_FAULTS:
            with self.subTest(old=old, new=new):
                self.assertEqual(self.check(self.faulty(model, old, new)), (0, ""))


if __name__ == "__main__":
    unittest.main()
