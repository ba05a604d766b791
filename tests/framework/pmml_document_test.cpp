#include <cmath>
#include <ctime>
#include <iterator>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_print.hpp>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/framework/errors.h>

#include "serialization/pmml/document.h"
#include "serialization/pmml/values.h"

using namespace Tessel;
using PMML::Document;
using PMML::Node;

namespace {

const double kInfinity = std::numeric_limits<double>::infinity();

/// The text of one element alone.
std::string textOf(Document& document, Node* node) {
    document.appendNode(node);
    return Convert::toUtf8(document.toString());
}

/// The text of a header, a data dictionary and a tree, as far as the readers look at it.
WString modelText() {
    return L"<?xml version=\"1.0\"?>\n<PMML version=\"4.2\">\n"
           L"<Header description=\"TreeModel\"><Timestamp>now</Timestamp><ModelName>my "
           L"tree</ModelName></Header>"
           L"<DataDictionary numberOfFields=\"4\">"
           L"<DataField name=\"colour\" optype=\"categorical\" dataType=\"string\">"
           L"<Value value=\"red\"/><Value value=\"blue\"/></DataField>"
           L"<DataField name=\"kind\" optype=\"categorical\" dataType=\"string\"><Value "
           L"value=\"a\"/></DataField>"
           L"<DataField name=\"size\" optype=\"continuous\" dataType=\"double\"/>"
           L"<DataField name=\"unused\" optype=\"continuous\" dataType=\"integer\"/>"
           L"</DataDictionary>"
           L"<TreeModel functionName=\"classification\" algorithmName=\"CART\"><MiningSchema>"
           L"<MiningField name=\"size\" usageType=\"active\"/><MiningField name=\"kind\" "
           L"usageType=\"predicted\"/>"
           L"<MiningField name=\"colour\" usageType=\"active\"/></MiningSchema></TreeModel></PMML>";
}

Document parsed(const WString& text) {
    Document document;
    document.parse(text);
    return document;
}

/// The only element of a text.
struct Element {
    explicit Element(const WString& text) : document(parsed(L"<PMML>" + text + L"</PMML>")) {
        node = document.getRoot()->first_node();
    }
    Document document;
    Node* node;
};

template <class Operation>
void expectMissingKey(Operation operation, const char* what) {
    try {
        operation();
        ADD_FAILURE() << what;
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "invalid unordered_map<K, T> key") << what;
    }
}

class Scaling : public PMML::ColumnScaling {
 public:
    bool isScaled(const WString& name) const override { return name == L"size"; }
    double getShift(const WString&) const override { return 2.5; }
    double getScale(const WString&) const override { return 0.25; }
};

/// A chain of nodes as a tree of one split per level makes it.
WString chainText(int numLevels) {
    WString text = L"<PMML>";
    for (int i = 0; i < numLevels; ++i)
        text += L"<Node id=\"1\"><SimplePredicate field=\"x\" value=\"1\"/><ScoreDistribution value=\"a\"/>";
    for (int i = 0; i < numLevels; ++i) text += L"</Node>";
    return text + L"</PMML>";
}

}  // namespace

TEST(PmmlDocument, WritesTheSkeleton) {
    Document document;
    document.appendDeclaration();
    document.appendNode(document.allocatePMMLNode(L"TreeModel", L"A & B"));
    Node* const header = document.getSubnode(L"Header");
    const std::string copyright = Convert::toUtf8(Document::requiredAttribute(header, L"copyright"));
    const std::string time = Convert::toUtf8(Document::getText(Document::getSubnode(header, L"Timestamp")));
    EXPECT_EQ(
        Convert::toUtf8(document.toString()),
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<PMML version=\"4.2\" xsi:schemaLocation=\"http://www.dmg.org/PMML-4_2 "
        "http://www.dmg.org/v4-2/pmml-4-2.xsd\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xmlns=\"http://www.dmg.org/PMML-4_2\">\n"
        "\t<Header copyright=\"" +
            copyright +
            "\" description=\"TreeModel\">\n"
            "\t\t<Application name=\"TesselSDK\" version=\"25.2.2.0\"/>\n"
            "\t\t<Timestamp>" +
            time +
            "</Timestamp>\n"
            "\t\t<ModelName>A &amp; B</ModelName>\n"
            "\t</Header>\n"
            "</PMML>\n\n");
    EXPECT_FALSE(copyright.empty());

    // The local time of now, without zero padding.
    std::tm local = {};
    char separators[5] = {};
    std::istringstream(time) >> local.tm_year >> separators[0] >> local.tm_mon >> separators[1] >>
        local.tm_mday >> local.tm_hour >> separators[2] >> local.tm_min >> separators[3] >> local.tm_sec;
    std::ostringstream unpadded;
    unpadded << local.tm_year << '-' << local.tm_mon << '-' << local.tm_mday << ' ' << local.tm_hour << ':'
             << local.tm_min << ':' << local.tm_sec;
    EXPECT_EQ(time, unpadded.str());
    local.tm_year -= 1900;
    local.tm_mon -= 1;
    local.tm_isdst = -1;
    EXPECT_LT(std::abs(std::difftime(std::time(nullptr), std::mktime(&local))), 60);
}

TEST(PmmlDocument, WritesTheSharedElements) {
    const PMML::Categories categories = {{L"size", {}}, {L"kind", {L"a", L"b"}}};
    const StringVector features{L"size"};
    using Build = Node* (*)(Document&);
    const struct {
        const char* name;
        Build build;
        const char* expected;
    } cases[] = {
        {"text", [](Document& d) { return d.allocateNode(L"A", L"x<y>\"'&z"); },
         "<A>x&lt;y&gt;&quot;&apos;&amp;z</A>\n\n"},
        {"count", [](Document& d) { return d.allocateNode(L"A", std::size_t{12}); }, "<A>12</A>\n\n"},
        {"attributes",
         [](Document& d) {
             Node* const node = d.allocateNode(L"A");
             d.appendAttribute(node, L"text", L"say \"it's\"");
             d.appendAttribute(node, L"apostrophe", L"it's");
             d.appendAttribute(node, L"count", std::uint64_t{3'000'000'000});
             d.appendAttribute(node, L"int", -5);
             d.appendAttribute(node, L"double", 0.1);
             d.appendAttribute(node, L"infinite", -kInfinity);
             return node;
         },
         "<A text='say \"it&apos;s\"' apostrophe=\"it's\" count=\"-1294967296\" int=\"-5\" "
         "double=\"0.10000000000000001\" infinite=\"-INF\"/>\n\n"},
        {"empty dictionary", [](Document& d) { return d.allocateDataDictionaryNode(7); },
         "<DataDictionary numberOfFields=\"7\"/>\n\n"},
        {"mining schema",
         [](Document& d) {
             return d.allocateMiningSchemaNode(L"y", StringVector{L"a", L"b"});
         },
         "<MiningSchema>\n\t<MiningField name=\"y\" usageType=\"predicted\"/>\n"
         "\t<MiningField name=\"a\" usageType=\"active\"/>\n"
         "\t<MiningField name=\"b\" usageType=\"active\"/>\n</MiningSchema>\n\n"},
        {"mining field", [](Document& d) { return d.allocateMiningFieldNode(L"a"); },
         "<MiningField name=\"a\"/>\n\n"},
        {"reference", [](Document& d) { return d.allocateFieldRefNode(L"a"); },
         "<FieldRef field=\"a\"/>\n\n"},
        {"targets",
         [](Document& d) {
             return d.allocateTargetsNode(L"y", {{L"yes", 0.25}, {L"no", 1e-7}}, WString(L"yes"));
         },
         "<Targets>\n\t<Target field=\"y\" optype=\"categorical\" successClass=\"yes\">\n"
         "\t\t<TargetValue value=\"no\" priorProbability=\"0.0000001\"/>\n"
         "\t\t<TargetValue value=\"yes\" priorProbability=\"0.25\"/>\n\t</Target>\n</Targets>\n\n"},
        {"ints",
         [](Document& d) {
             return d.allocateArray(IntVector{3, -4});
         },
         "<Array n=\"2\" type=\"int\">3 -4</Array>\n\n"},
        {"reals",
         [](Document& d) {
             return d.allocateArray(Vector{0.5, 1e300});
         },
         "<Array n=\"2\" type=\"real\">0.5 1.0000000000000001e+300</Array>\n\n"},
        {"no reals", [](Document& d) { return d.allocateArray(Vector{}); },
         "<Array n=\"0\" type=\"real\"/>\n\n"},
        {"strings",
         [](Document& d) {
             return d.allocateArray(StringVector{L"a b", L"c"});
         },
         "<Array n=\"2\" type=\"string\">&quot;a b&quot; &quot;c&quot;</Array>\n\n"},
        {"norm", [](Document& d) { return d.allocateNormContinuous(L"x", 0.1, 2); },
         "<NormContinuous field=\"x\">\n\t<LinearNorm orig=\"0.1\" norm=\"0\"/>\n"
         "\t<LinearNorm orig=\"1.1\" norm=\"2\"/>\n</NormContinuous>\n\n"},
    };
    for (const auto& c : cases) {
        Document document;
        EXPECT_EQ(textOf(document, c.build(document)), c.expected) << c.name;
    }

    Document document;
    EXPECT_EQ(textOf(document, document.allocateDataDictionaryNode(L"kind", features, &categories)),
              "<DataDictionary numberOfFields=\"2\">\n"
              "\t<DataField optype=\"continuous\" dataType=\"double\" name=\"size\"/>\n"
              "\t<DataField optype=\"categorical\" dataType=\"string\" name=\"kind\">\n"
              "\t\t<Value value=\"a\"/>\n\t\t<Value value=\"b\"/>\n\t</DataField>\n</DataDictionary>\n\n");
    EXPECT_THROW(document.allocateDataDictionaryNode(features, &categories), NumElementsMismatch);
    expectMissingKey(
        [&] {
            document.allocateDataDictionaryNode(StringVector{L"size", L"other"}, &categories);
        },
        "feature without categories");
    for (const double shift : {std::nan(""), kInfinity, -kInfinity, 1e16})
        EXPECT_THROW(document.allocateNormContinuous(L"x", shift, 1), ConstraintViolation) << shift;
}

TEST(PmmlDocument, WritesTransformations) {
    const StringVector features{L"colour", L"size", L"plain"};
    const PMML::Categories categories = {{L"colour", {L"red", L"blue"}}, {L"size", {}}, {L"plain", {}}};
    Document document;
    StringVector names{L"before"};
    Node* const node = document.allocateTransformationNode(features, &categories, nullptr, names);
    EXPECT_EQ(names, (StringVector{L"colour=red", L"colour=blue", L"size", L"plain"}));
    EXPECT_EQ(textOf(document, node),
              "<LocalTransformations>\n"
              "\t<DerivedField optype=\"continuous\" dataType=\"double\" name=\"colour=red\">\n"
              "\t\t<NormDiscrete field=\"colour\" value=\"red\"/>\n\t</DerivedField>\n"
              "\t<DerivedField optype=\"continuous\" dataType=\"double\" name=\"colour=blue\">\n"
              "\t\t<NormDiscrete field=\"colour\" value=\"blue\"/>\n\t</DerivedField>\n"
              "</LocalTransformations>\n\n");
    Document scaled;
    const Scaling scaling;
    Node* const scaledNode =
        scaled.allocateTransformationNode(StringVector{L"size", L"plain"}, nullptr, &scaling, names);
    EXPECT_EQ(names, (StringVector{L"size*", L"plain"}));
    EXPECT_EQ(
        textOf(scaled, scaledNode),
        "<LocalTransformations>\n"
        "\t<DerivedField optype=\"continuous\" dataType=\"double\" name=\"size*\" displayName=\"size\">\n"
        "\t\t<NormContinuous field=\"size\">\n\t\t\t<LinearNorm orig=\"2.5\" norm=\"0\"/>\n"
        "\t\t\t<LinearNorm orig=\"3.5\" norm=\"0.25\"/>\n\t\t</NormContinuous>\n"
        "\t</DerivedField>\n</LocalTransformations>\n\n");
    // A derived column must not take the name of another.
    EXPECT_THROW(
        document.allocateTransformationNode(StringVector{L"size", L"size*"}, nullptr, &scaling, names),
        DuplicateName);
    EXPECT_EQ(names.size(), 2u);
    expectMissingKey(
        [&] { document.allocateTransformationNode(StringVector{L"other"}, &categories, nullptr, names); },
        "feature without categories");
}

TEST(PmmlDocument, ReadsTheColumnsOfAModel) {
    const Document document = parsed(modelText());
    EXPECT_EQ(document.getModelName(), L"TreeModel");
    EXPECT_EQ(document.getPMMLModelName(), L"my tree");
    EXPECT_EQ(document.getFunctionName(), L"classification");
    EXPECT_EQ(document.getAlgorithmName(), L"CART");
    EXPECT_TRUE(document.isClassifier() && document.isPredictor());
    EXPECT_FALSE(document.isRegressor() || document.isClusterizer() || document.isForecaster() ||
                 document.isTransformer());
    EXPECT_EQ(document.getTargetColName(), L"kind");
    EXPECT_EQ(document.getTargetColType(), L"string");
    EXPECT_EQ(document.getFeatureNames(), (StringVector{L"colour", L"size", L"unused"}));
    EXPECT_EQ(document.getFeatureTypes(), (StringVector{L"string", L"double", L"integer"}));
    EXPECT_EQ(document.getFeatureOpTypes(), (StringVector{L"categorical", L"continuous", L"continuous"}));
    EXPECT_EQ(document.getUnsupervisedFeatureNames(), (StringVector{L"colour", L"kind", L"size", L"unused"}));
    EXPECT_EQ(document.getUnsupervisedFeatureTypes(),
              (StringVector{L"string", L"string", L"double", L"integer"}));
    EXPECT_EQ(document.getUnsupervisedFeatureOpTypes(),
              (StringVector{L"categorical", L"categorical", L"continuous", L"continuous"}));
    EXPECT_EQ(document.getActiveFeatureNames(), (StringVector{L"size", L"colour"}));
    EXPECT_EQ(document.getActiveFeatureTypes(), (StringVector{L"double", L"string"}));
    const Document::Metadata metadata = document.getMetadata();
    EXPECT_EQ(metadata.targetColName, L"kind");
    EXPECT_EQ(metadata.featureNames, document.getFeatureNames());
    EXPECT_EQ(metadata.activeFieldNames, document.getActiveFeatureNames());
    EXPECT_EQ(metadata.categories,
              (PMML::Categories{
                  {L"colour", {L"red", L"blue"}}, {L"kind", {L"a"}}, {L"size", {}}, {L"unused", {}}}));
    EXPECT_EQ(document.getSubnode(L"TreeModel"), document.getModelNode());
    EXPECT_EQ(document.getSubnode(L"Tree"), nullptr);
    EXPECT_EQ(Document::getSubnode(nullptr, L"Tree"), nullptr);
    EXPECT_TRUE(Document::isNumericalField(L"integer") && Document::isNumericalField(L"double"));
    EXPECT_FALSE(Document::isNumericalField(L"float") || Document::isNumericalField(L"string"));
}

TEST(PmmlDocument, ReportsWhatIsMissing) {
    const auto without = [](WString text, const WString& part) {
        return text.erase(text.find(part), part.size());
    };
    EXPECT_EQ(parsed(without(modelText(), L"<ModelName>my tree</ModelName>")).getPMMLModelName(), L"");
    EXPECT_EQ(parsed(without(modelText(), L"algorithmName=\"CART\"")).getAlgorithmName(), L"");
    const Document nameless = parsed(without(modelText(), L"description=\"TreeModel\""));
    expectMissingKey([&] { nameless.getModelName(); }, "description");
    expectMissingKey([&] { nameless.getFeatureNames(); }, "description");
    expectMissingKey([&] { parsed(without(modelText(), L" usageType=\"predicted\"")).getTargetColName(); },
                     "usageType");
    expectMissingKey([&] { parsed(without(modelText(), L" name=\"unused\"")).getFeatureNames(); }, "name");
    expectMissingKey([&] { parsed(without(modelText(), L" value=\"red\"")).getMetadata(); }, "value");

    for (const WString text : {L"", L"<x/>", L"<PMML/>"}) {
        const Document document = parsed(text);
        EXPECT_EQ(document.getDataDictionaryNode(), nullptr);
        EXPECT_EQ(document.getPMMLModelName(), L"");
        EXPECT_THROW(document.getModelName(), UnsupportedPMMLFormat);
        EXPECT_THROW(document.getFeatureNames(), UnsupportedPMMLFormat);
        EXPECT_THROW(document.getUnsupervisedFeatureNames(), UnsupportedPMMLFormat);
    }
    // The description names no element.
    for (const WString name : {L"", L"Tree"}) {
        const Document document = parsed(L"<PMML><Header description=\"" + name + L"\"/>text</PMML>");
        EXPECT_EQ(document.getModelNode(), nullptr);
        EXPECT_EQ(document.getMiningSchemaNode(), nullptr);
        EXPECT_THROW(document.isClassifier(), UnsupportedPMMLFormat);
        EXPECT_THROW(document.getMetadata(), UnsupportedPMMLFormat);
    }
}

TEST(PmmlDocument, ReadsArrays) {
    const auto doubles = [](const WString& text) { return Document::getDoubleArray(Element(text).node); };
    const auto ints = [](const WString& text) { return Document::getIntArray(Element(text).node); };
    const auto strings = [](const WString& text) { return Document::getStringArray(Element(text).node); };
    EXPECT_EQ(doubles(L"<Array n=\"3\" type=\"real\">  1.5 -2e-3\n 7</Array>"), (Vector{1.5, -0.002, 7}));
    EXPECT_EQ(doubles(L"<Array>1 2 <!-- half -->3<![CDATA[ 4]]></Array>"), (Vector{1, 2, 3, 4}));
    EXPECT_EQ(doubles(L"<Array n=\"0\"/>"), Vector{});
    EXPECT_EQ(ints(L"<Array n=\"2\">10 -20</Array>"), (IntVector{10, -20}));
    EXPECT_EQ(strings(L"<Array n=\"2\">\"x\"     \"y\"</Array>"), (StringVector{L"x", L"y"}));
    EXPECT_EQ(strings(L"<Array n=\"3\">\"a b\" \"  \" \"c\"</Array>"), (StringVector{L"a b", L"c"}));
    EXPECT_EQ(strings(L"<Array n=\"1\">bare</Array>"), (StringVector{L"bare"}));
    EXPECT_EQ(strings(L"<Array n=\"0\"/>"), StringVector{});
    EXPECT_THROW(doubles(L"<Array>1 x</Array>"), ConversionFailure);
    EXPECT_THROW(ints(L"<Array>1.5</Array>"), ConversionFailure);
    EXPECT_THROW(ints(L"<Array>99999999999</Array>"), ConversionFailure);
    for (const WString n : {L"3", L"1", L"-1", L"2000000000"}) {
        EXPECT_THROW(doubles(L"<Array n=\"" + n + L"\">1 2</Array>"), NumElementsMismatch);
        EXPECT_THROW(strings(L"<Array n=\"" + n + L"\">\"a\" \"b\"</Array>"), NumElementsMismatch);
    }
    // Items without quotes would come back as one.
    EXPECT_THROW(strings(L"<Array n=\"2\">bare words</Array>"), NumElementsMismatch);
}

TEST(PmmlDocument, ReadsMatricesNormsAndPriors) {
    const auto matrix = [](const WString& attributes, const Vector& values) {
        return Document::getMatrix(Element(L"<M " + attributes + L"/>").node, values);
    };
    const Vector values{1, 2, 3, 4, 5, 6};
    const Matrix byRow = matrix(L"order=\"row\" numRows=\"2\" numCols=\"3\"", values);
    const Matrix byColumn = matrix(L"order=\"col\" numRows=\"2\" numCols=\"3\"", values);
    EXPECT_EQ(byRow(0, 1), 2);
    EXPECT_EQ(byColumn(0, 1), 3);
    for (const Matrix& original : {byRow, byColumn}) {
        Document document;
        Node* const node = document.allocateNode(L"M");
        document.appendMatrixAttributes(node, original);
        const Matrix copy = Document::getMatrix(node, values);
        EXPECT_EQ(copy, original);
        EXPECT_EQ(copy.getMatrixOrder(), original.getMatrixOrder());
    }
    for (const WString missing : {L"order", L"numRows", L"numCols"}) {
        WString attributes = L"order=\"row\" numRows=\"2\" numCols=\"3\"";
        attributes.replace(attributes.find(missing), missing.size(), L"other");
        expectMissingKey([&] { matrix(attributes, values); }, "matrix");
    }
    EXPECT_THROW(matrix(L"order=\"row\" numRows=\"2\" numCols=\"2\"", values), NumElementsMismatch);
    EXPECT_THROW(matrix(L"order=\"row\" numRows=\"2000000000\" numCols=\"2000000000\"", values),
                 NumElementsMismatch);
    EXPECT_THROW(matrix(L"order=\"row\" numRows=\"-2\" numCols=\"-3\"", values), ValueOutOfRange);
    EXPECT_THROW(matrix(L"order=\"row\" numRows=\"two\" numCols=\"3\"", values), ConversionFailure);

    const Document::Point point =
        Document::getLinearNormPoint(Element(L"<LinearNorm orig=\"0.1\" norm=\"-3\"/>").node);
    EXPECT_EQ(point.orig, 0.1);
    EXPECT_EQ(point.norm, -3);
    expectMissingKey([&] { Document::getLinearNormPoint(Element(L"<LinearNorm orig=\"0\"/>").node); },
                     "norm");

    const PMML::Priors priors = {{L"a", 1e-300}, {L"b", 1.0 / 3}, {L"c", 4.9e-324}, {L"d", 0}};
    Document document;
    Node* const targets = document.allocateTargetsNode(L"y", priors);
    EXPECT_EQ(Document::getPriorProbs(targets->first_node()), priors);
    EXPECT_EQ(textOf(document, targets).find("e-"), std::string::npos);
    expectMissingKey(
        [&] { Document::getPriorProbs(Element(L"<Target><TargetValue value=\"a\"/></Target>").node); },
        "priorProbability");
}

TEST(PmmlDocument, NumbersReadBackToTheSameBits) {
    for (const double value : {0.1, 1.0 / 3, 1e-300, 1e300, 5e-324, 123456789.125, -0.0, 1e15, 1e17, 3e-5}) {
        for (const WString& text :
             {PMML::numberText(value), PMML::shortNumberText(value), PMML::decimalText(value)}) {
            EXPECT_EQ(PMML::toDouble(text), value);
            EXPECT_EQ(std::signbit(PMML::toDouble(text)), std::signbit(value));
        }
        EXPECT_EQ(PMML::decimalText(value).find(L'e'), WString::npos);
    }
    EXPECT_EQ(PMML::decimalText(0.1), L"0.10000000000000001");
    EXPECT_EQ(PMML::decimalText(1e-5), L"0.00001");
    EXPECT_EQ(PMML::toDouble(PMML::numberText(-kInfinity)), -kInfinity);
    EXPECT_TRUE(std::isnan(PMML::toDouble(PMML::numberText(std::nan("")))));
    EXPECT_EQ(PMML::toDouble(WString(60, L'0') + L"7"), 7);
    EXPECT_EQ(PMML::toInt(L" +7 "), 7);
    EXPECT_THROW(PMML::toDouble(L"1\x0131"), ConversionFailure);
    EXPECT_THROW(PMML::toInt(L""), ConversionFailure);
}

TEST(PmmlDocument, RefusesWhatItCannotWrite) {
    EXPECT_NO_THROW(Document::checkCategories(StringVector{L"a b", L" c ", L"<&'>"}));
    for (const WString text : {L"", L"  ", L"\t\n", L"say \"it\"", L"\""})
        EXPECT_THROW(Document::checkCategories(StringVector{L"a", text}), ConstraintViolation);

    const WString bad[] = {L"\x01",
                           L"\x1F",
                           WString(1, L'\0'),
                           L"a\xFFFE",
                           WString(1, wchar_t(0xD800)),
                           WString(1, wchar_t(0xDC00)),
                           WString(1, wchar_t(0xDC00)) + wchar_t(0xD800)};
    for (const WString& text : bad) {
        Document asText;
        asText.appendNode(asText.allocateNode(L"A", text));
        EXPECT_THROW(asText.toString(), ConstraintViolation);
        Document asAttribute;
        Node* const node = asAttribute.allocateNode(L"A");
        asAttribute.appendAttribute(node, L"a", text);
        asAttribute.appendNode(node);
        EXPECT_THROW(asAttribute.toString(), ConstraintViolation);
    }
    for (const WString name : {L"", L"a b", L"2nd", L"a>b", L"-a", L"a\"b", L"a=b"}) {
        Document document;
        document.appendNode(document.allocateNode(name));
        EXPECT_THROW(document.toString(), ConstraintViolation) << Convert::toUtf8(name);
    }
}

TEST(PmmlDocument, EveryTextSurvives) {
    // Low bytes of these characters are those of quotes, brackets, blanks, the ampersand and zero.
    const WString wide = L"\x0122\x013C\x013E\x4E20\x4E26\x4E00\x0127\x012F\x013D\x013F";
    const WString texts[] = {wide,
                             L"\xEF\xBB\xBF",
                             L"\xFEFF",
                             WString(L"\xFFFD\x7F\x85"),
                             Convert::fromUtf8("\xF0\x9F\x98\x80"),
                             L" leading and trailing ",
                             L"tab\tline\nreturn\r",
                             L"  ",
                             L"\n",
                             L"&amp; &#65; <![CDATA[x]]> ]]> '\"",
                             L""};
    for (const WString& text : texts) {
        Document written;
        Node* const root = written.allocateNode(L"PMML");
        written.appendAttribute(root, L"a", text);
        root->append_node(written.allocateNode(wide, text));
        written.appendNode(root);
        const Document read = parsed(written.toString());
        EXPECT_EQ(Document::requiredAttribute(read.getRoot(), L"a"), text);
        EXPECT_EQ(Document::getText(Document::getSubnode(read.getRoot(), wide)), text);
    }
    // What other readers normalise is written as references.
    Document document;
    Node* const node = document.allocateNode(L"A", L"\t\n\r");
    document.appendAttribute(node, L"a", L"\t\n\r");
    EXPECT_EQ(textOf(document, node), "<A a=\"&#9;&#10;&#13;\">&#9;\n&#13;</A>\n\n");
    // References to characters beyond ASCII are one character each.
    const Element element(L"<A a='&#x41;&#322;&#x1F600;'/>");
    EXPECT_EQ(Document::requiredAttribute(element.node, L"a"),
              L"A\x0142" + Convert::fromUtf8("\xF0\x9F\x98\x80"));
    for (const WString reference : {L"&#0;", L"&#xD800;", L"&#x110000;", L"&#65", L"&#;"})
        EXPECT_THROW(parsed(L"<A a='" + reference + L"'/>"), rapidxml::parse_error);
}

TEST(PmmlDocument, ParsesLikeTheLibraryAndPrintsLikeIt) {
    // RapidXml's own parser and printer, which these members replace for wide characters only.
    const auto viaLibrary = [](std::string text) {
        rapidxml::xml_document<char> document;
        document.parse<0>(text.data());
        std::string printed;
        rapidxml::print(std::back_inserter(printed), document, 0);
        return printed;
    };
    const std::string texts[] = {
        Convert::toUtf8(modelText()),
        Convert::toUtf8(chainText(20)),
        "",
        "<a/>",
        "<a></a>",
        "<a> </a>",
        "<a>text</a>",
        "<a  b = 'x\"y'\tc=\"it's\" >1 &lt; 2<b/> and <c>3</c> </a >",
        "<a><![CDATA[<x>&]]></a>",
        "<a>x<![CDATA[y]]>z</a>",
        "<!DOCTYPE a [<!ELEMENT a (b)>]><!-- c --><a><!-- </a> --><?pi </a> ?><b/></a>",
        "<a><b><c/></b><b></b></d></a>",
        "<a/><b/>",
        "<a><!x></a>",
        // malformed
        "x",
        "<",
        "<a",
        "<a>",
        "<a><b></a>",
        "<a></a",
        "<a b></a>",
        "<a b='></a>",
        "<a/",
        "<a><b/x></a>",
        "<a><></a>",
        "<a><!-- </a>",
        "<a>&#65</a>",
        "<a>text",
        "<a><b c=1/></a>",
        "<a><b c='1'",
    };
    for (const std::string& text : texts) {
        std::string expected, actual;
        try {
            expected = viaLibrary(text);
        } catch (const rapidxml::parse_error& error) {
            expected = error.what();
        }
        try {
            actual = Convert::toUtf8(parsed(Convert::fromUtf8(text)).toString());
        } catch (const rapidxml::parse_error& error) {
            actual = error.what();
        }
        EXPECT_EQ(actual, expected) << text;
    }
}

TEST(PmmlDocument, ParseSkipsMarksAndReplacesTheContent) {
    Document document = parsed(L"\xEF\xBB\xBF<PMML><A/></PMML>");
    EXPECT_NE(document.getSubnode(L"A"), nullptr);
    const WString marker = L"\n<!--Continued-->";
    document.parse(marker + L"<PMML" + marker + L"><B a=\"1" + marker + marker + L"2\"/>" + marker +
                   L"</PMML>" + marker);
    EXPECT_EQ(document.getSubnode(L"A"), nullptr);
    EXPECT_EQ(Document::requiredInt(document.getSubnode(L"B"), L"a"), 12);
    // A failure leaves the document as it was.
    for (const WString text : {L"\xFEFF<PMML/>", L"no element", L"<PMML>"}) {
        EXPECT_THROW(document.parse(text), rapidxml::parse_error);
        EXPECT_NE(document.getSubnode(L"B"), nullptr);
    }
    try {
        document.parse(L"no element");
    } catch (const rapidxml::parse_error& error) {
        EXPECT_STREQ(error.what(), "expected <");
    }
    Document moved = std::move(document);
    EXPECT_EQ(Document::requiredInt(moved.getSubnode(L"B"), L"a"), 12);
}

TEST(PmmlDocument, ClonesAreIndependent) {
    Document target;
    Node* into = target.allocateNode(L"Old", L"text");
    target.appendAttribute(into, L"old", 1);
    target.appendNode(into);
    WString expected;
    {
        Document source = parsed(modelText());
        expected = source.toString();
        EXPECT_EQ(target.clone(source.getRoot(), into), into);
        Node* const branch = target.clone(source.getModelNode());
        EXPECT_EQ(Document::requiredAttribute(branch, L"algorithmName"), L"CART");
        EXPECT_EQ(branch->parent(), nullptr);
    }
    EXPECT_EQ(target.toString(), expected);
    EXPECT_EQ(target.getFeatureNames(), (StringVector{L"colour", L"size", L"unused"}));
}

TEST(PmmlDocument, DeepTreesNeedNoStackAndTooDeepOnesAreRefused) {
    // RapidXml itself would need some hundred bytes of stack for each level.
    const Document read = parsed(chainText(PMML::kMaxDepth - 1));
    Document copy;
    copy.appendNode(copy.clone(read.getRoot()));
    const WString text = copy.toString();
    EXPECT_EQ(text, read.toString());
    EXPECT_EQ(parsed(text).toString(), text);
    // Indentation is limited, or the text would have 5 * 50,000^2 / 2 tabs.
    EXPECT_LT(text.size(), 50'000u * 700);

    EXPECT_THROW(parsed(chainText(PMML::kMaxDepth)), rapidxml::parse_error);
    WString unclosed;
    for (int i = 0; i < 300'000; ++i) unclosed += L"<a>";
    EXPECT_THROW(parsed(unclosed), rapidxml::parse_error);
    // Siblings, and what looks like elements but is none, do not count.
    WString wide = L"<PMML>";
    for (int i = 0; i < PMML::kMaxDepth; ++i)
        wide += L"<a b='<c>'/><d><!-- <e> --><![CDATA[<f>]]></d><?g <h>?>";
    EXPECT_NO_THROW(parsed(wide + L"</PMML>"));
}
