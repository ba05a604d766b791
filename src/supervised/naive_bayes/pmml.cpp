#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "serialization/implied_memory.h"
#include "serialization/pmml/model_element.h"
#include "serialization/pmml/values.h"
#include "supervised/naive_bayes/model.h"

// `NaiveBayesModel`. Frequencies are written as the counts that give every scorer our probabilities:
// Laplace's pseudo-count is added to each, and a category never seen with a class has the count of the
// probability that stands for 0. The extension "pseudoCount" tells that they were added, so that reading
// takes them off again: counts are whole numbers, so nothing is lost by rounding.

namespace Tessel::Classification::NaiveBayes {
namespace {

using Engine::NB::CategoricalInput;
using Engine::NB::Fitted;
using Engine::NB::FittedInput;
using Engine::NB::GaussianInput;
using PMML::Document;
using PMML::ModelReader;
using PMML::ModelWriter;
using PMML::Node;

constexpr wchar_t kPseudoCount[] = L"pseudoCount";
constexpr wchar_t kZeroProbability[] = L"zeroProbability";
constexpr wchar_t kRecordCounts[] = L"recordCounts";
/// Densities below the threshold are raised to it by other scorers, so it is one that none falls below.
constexpr double kThreshold = 1e-300;

void appendCount(Document& document, Node* counts, const WString& label, double count) {
    Node* const node = document.allocateNode(L"TargetValueCount");
    document.appendAttribute(node, L"value", label);
    document.appendAttribute(node, L"count", count);
    counts->append_node(node);
}

void appendGaussian(const ModelWriter& writer, Node* bayesInput, const StringVector& classes,
                    const GaussianInput& input) {
    Document& document = writer.document;
    Node* const stats = document.allocateNode(L"TargetValueStats");
    for (std::size_t k = 0; k < classes.size(); ++k) {
        Node* const stat = document.allocateNode(L"TargetValueStat");
        document.appendAttribute(stat, L"value", classes[k]);
        Node* const density = document.allocateNode(L"GaussianDistribution");
        document.appendAttribute(density, L"mean", input.mean[k]);
        document.appendAttribute(density, L"variance", input.variance[k]);
        stat->append_node(density);
        stats->append_node(stat);
    }
    bayesInput->append_node(stats);
}

/// The counts that give the probabilities of `categoryProbabilities` when divided by their sum.
std::vector<double> countsToWrite(const Fitted& fitted, const CategoricalInput& input) {
    const std::size_t numClasses = fitted.classCounts.size();
    std::vector<double> totals(numClasses, 0.0);
    for (std::size_t cell = 0; cell < input.counts.size(); ++cell)
        totals[cell % numClasses] += input.counts[cell];
    const std::vector<double> probabilities = Engine::NB::categoryProbabilities(fitted, input);
    std::vector<double> counts = input.counts;
    for (std::size_t cell = 0; cell < counts.size(); ++cell) {
        counts[cell] += fitted.laplace;
        const double total = totals[cell % numClasses];
        if (counts[cell] > 0.0) continue;
        // Below half a record, so that reading takes it for none.
        counts[cell] = total > 0.0 ? std::min(total * fitted.zeroProbability, 0.25)
                                   : 0.25 * probabilities[cell];  // a class without values
    }
    return counts;
}

void appendFrequencies(const ModelWriter& writer, Node* bayesInput, const StringVector& classes,
                       const FeatureSchema& feature, const std::vector<double>& counts) {
    Document& document = writer.document;
    for (std::int32_t category = 0; category < feature.numCategories(); ++category) {
        Node* const pair = document.allocateNode(L"PairCounts");
        document.appendAttribute(pair, L"value", (*feature.categories)[category]);
        Node* const list = document.allocateNode(L"TargetValueCounts");
        for (std::size_t k = 0; k < classes.size(); ++k)
            appendCount(document, list, classes[k],
                        counts[static_cast<std::size_t>(category) * classes.size() + k]);
        pair->append_node(list);
        bayesInput->append_node(pair);
    }
}

double countAttribute(const Node* node) {
    const double count = Document::requiredDouble(node, L"count");
    if (!(count >= 0.0) || std::isinf(count))
        throw UnsupportedPMMLFormat("A count is negative or not finite.");
    return count;
}

/// The position of a class. @throws UnsupportedPMMLFormat
std::size_t classOf(const StringVector& classes, const Node* node) {
    const WString label(Document::requiredAttribute(node, L"value"));
    const std::size_t k = classes.find(label);
    if (k == classes.size())
        throw UnsupportedPMMLFormat(Convert::toUtf8Lossy(label) + " is no class of the target.");
    return k;
}

GaussianInput readGaussian(const Node* stats, const StringVector& classes) {
    GaussianInput input;
    const double missing = std::numeric_limits<double>::quiet_NaN();
    input.mean.assign(classes.size(), missing);
    input.variance.assign(classes.size(), missing);
    input.count.assign(classes.size(), missing);
    PMML::forEachChild(stats, L"TargetValueStat", [&](const Node* stat) {
        const Node* const density = Document::getSubnode(stat, L"GaussianDistribution");
        if (!density)
            throw UnsupportedPMMLFormat(
                "Of the distributions of numeric inputs only GaussianDistribution is read.");
        const std::size_t k = classOf(classes, stat);
        input.mean[k] = Document::requiredDouble(density, L"mean");
        input.variance[k] = Document::requiredDouble(density, L"variance");
    });
    for (std::size_t k = 0; k < classes.size(); ++k)
        if (!std::isfinite(input.mean[k]) || !(input.variance[k] >= 0.0) || std::isinf(input.variance[k]))
            throw UnsupportedPMMLFormat("A class lacks a mean and a variance of a numeric input.");
    return input;
}

CategoricalInput readFrequencies(const Node* bayesInput, const StringVector& classes,
                                 const Dictionary& categories, ImpliedMemory& implied) {
    std::size_t numTold = 0;
    PMML::forEachChild(bayesInput, L"PairCounts", [&](const Node* pair) {
        PMML::forEachChild(Document::getRequiredSubnode(pair, L"TargetValueCounts"), L"TargetValueCount",
                           [&](const Node*) { ++numTold; });
    });
    implied.add(static_cast<std::size_t>(categories.size()) * classes.size(), numTold, sizeof(double));
    CategoricalInput input;
    input.numCategories = categories.size();
    input.counts.assign(static_cast<std::size_t>(categories.size()) * classes.size(), 0.0);
    PMML::forEachChild(bayesInput, L"PairCounts", [&](const Node* pair) {
        const WStringView label = Document::requiredAttribute(pair, L"value");
        const std::int32_t category = categories.find(label);
        if (category < 0)
            throw UnsupportedPMMLFormat(Convert::toUtf8Lossy(label) + " is not declared as a category.");
        PMML::forEachChild(
            Document::getRequiredSubnode(pair, L"TargetValueCounts"), L"TargetValueCount",
            [&](const Node* count) {
                input.counts[static_cast<std::size_t>(category) * classes.size() + classOf(classes, count)] =
                    countAttribute(count);
            });
    });
    return input;
}

StringVector wordsOf(WStringView text) {
    StringVector words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(L' '), text.size());
        if (end > 0) words.push_back(WString(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

/// The number of records: what is left of a whole number when the pseudo-count is taken off.
double withoutPseudoCount(double count, double pseudoCount) {
    return std::max(0.0, std::round(count - pseudoCount));
}

bool isInformative(const GaussianInput& input) {
    return std::all_of(input.variance.begin(), input.variance.end(),
                       [](double variance) { return variance > 0.0; });
}

}  // namespace

void IModel::writeAttributes(ModelWriter& writer) const {
    writer.document.appendAttribute(writer.element, L"threshold", std::max(kThreshold, fitted_.densityFloor));
    writer.append(PMML::allocateExtension(writer.document, kPseudoCount, PMML::numberText(fitted_.laplace)));
    writer.append(PMML::allocateExtension(writer.document, kZeroProbability,
                                          PMML::numberText(fitted_.zeroProbability)));
    WString counts;
    for (const double count : fitted_.classCounts)
        counts += (counts.empty() ? L"" : L" ") + PMML::shortNumberText(count);
    writer.append(PMML::allocateExtension(writer.document, kRecordCounts, counts));
}

// Of two classes, p > c is p (1 - c) > (1 - p) c. A member of an ensemble matters by its choice alone.
std::vector<double> IModel::voteFactors() const {
    std::vector<double> factors(classSchema.classes.size(), 1.0);
    const std::size_t success = classSchema.classes.find(classSchema.successClass);
    if (factors.size() != 2 || success >= 2 || classSchema.successProbability == 0.5) return factors;
    factors[success] = 1.0 - classSchema.successProbability;
    factors[1 - success] = classSchema.successProbability;
    return factors;
}

void IModel::writeBody(ModelWriter& writer) const {
    Document& document = writer.document;
    const StringVector& classes = classSchema.classes;
    Node* const inputs = writer.append(document.allocateNode(L"BayesInputs"));
    for (std::size_t i = 0; i < schema.features.size(); ++i) {
        const auto* const gaussian = std::get_if<GaussianInput>(&fitted_.inputs[i]);
        if (gaussian && !isInformative(*gaussian)) continue;  // scoring ignores it
        Node* const input = document.allocateNode(L"BayesInput");
        document.appendAttribute(input, L"fieldName", writer.fields[i]);
        if (gaussian)
            appendGaussian(writer, input, classes, *gaussian);
        else
            appendFrequencies(writer, input, classes, schema.features[i],
                              countsToWrite(fitted_, std::get<CategoricalInput>(fitted_.inputs[i])));
        inputs->append_node(input);
    }
    Node* const output = writer.append(document.allocateNode(L"BayesOutput"));
    document.appendAttribute(output, L"fieldName", schema.targetName);
    Node* const counts = document.allocateNode(L"TargetValueCounts");
    const double numRecords = std::accumulate(fitted_.classCounts.begin(), fitted_.classCounts.end(), 0.0);
    const std::vector<double> factors = writer.isSegment ? voteFactors() : std::vector(classes.size(), 1.0);
    for (std::size_t k = 0; k < classes.size(); ++k)
        appendCount(document, counts, classes[k], classSchema.priors[k] * numRecords * factors[k]);
    output->append_node(counts);
}

void IModel::readBody(const ModelReader& reader) {
    const StringVector& classes = classSchema.classes;
    // Other makers' texts mean the threshold for densities too.
    fitted_.zeroProbability = fitted_.densityFloor = Document::requiredDouble(reader.element, L"threshold");
    const auto pseudoCount = PMML::findExtension(reader.element, kPseudoCount);
    if (pseudoCount) {
        fitted_.laplace = PMML::toDouble(*pseudoCount);
        if (fitted_.densityFloor <= kThreshold) fitted_.densityFloor = 0.0;
    }
    if (const auto zero = PMML::findExtension(reader.element, kZeroProbability))
        fitted_.zeroProbability = PMML::toDouble(*zero);

    fitted_.inputs.resize(schema.features.size());
    std::vector<bool> isRead(schema.features.size(), false);
    ImpliedMemory implied;
    PMML::forEachChild(reader.requiredChild(L"BayesInputs"), L"BayesInput", [&](const Node* node) {
        const auto i =
            static_cast<std::size_t>(reader.featureOf(Document::requiredAttribute(node, L"fieldName")));
        const FeatureSchema& feature = schema.features[i];
        const Node* const stats = Document::getSubnode(node, L"TargetValueStats");
        if (Document::getSubnode(node, L"DerivedField"))
            throw UnsupportedPMMLFormat("A BayesInput derives its categories, which is not read.");
        if (isRead[i] || (stats != nullptr) == feature.isCategorical)
            throw UnsupportedPMMLFormat("A BayesInput does not fit its field.");
        isRead[i] = true;
        if (stats) {
            fitted_.inputs[i] = readGaussian(stats, classes);
            return;
        }
        CategoricalInput input = readFrequencies(node, classes, *feature.categories, implied);
        if (pseudoCount)
            for (double& count : input.counts) count = withoutPseudoCount(count, fitted_.laplace);
        fitted_.inputs[i] = std::move(input);
    });
    for (std::size_t i = 0; i < isRead.size(); ++i) {
        if (isRead[i]) continue;
        implied.add(3 * classes.size(), 0, sizeof(double));
        if (schema.features[i].isCategorical)
            throw UnsupportedPMMLFormat("There is no BayesInput of " +
                                        Convert::toUtf8Lossy(schema.features[i].name) + ".");
        const std::vector<double> none(classes.size(), 0.0);
        fitted_.inputs[i] = GaussianInput{none, none, none};
    }

    Vector sizes(classes.size(), 0.0);
    PMML::forEachChild(
        Document::getRequiredSubnode(reader.requiredChild(L"BayesOutput"), L"TargetValueCounts"),
        L"TargetValueCount",
        [&](const Node* count) { sizes[classOf(classes, count)] = countAttribute(count); });
    const double numRecords = std::accumulate(sizes.begin(), sizes.end(), 0.0);
    if (!(numRecords > 0.0)) throw UnsupportedPMMLFormat("The BayesOutput counts no records.");
    // The counts are what scorers take. Our own texts have the same priors to the last bit in `Targets`,
    // where those of other makers tell of something else.
    if (!pseudoCount)
        for (std::size_t k = 0; k < classes.size(); ++k) classSchema.priors[k] = sizes[k] / numRecords;
    fitted_.classCounts.assign(sizes.begin(), sizes.end());
    if (const auto counts = PMML::findExtension(reader.element, kRecordCounts)) {
        const StringVector texts = wordsOf(*counts);
        if (texts.size() != classes.size())
            throw UnsupportedPMMLFormat("There is not one record count a class.");
        for (std::size_t k = 0; k < classes.size(); ++k) fitted_.classCounts[k] = PMML::toDouble(texts[k]);
    }
    classSchema.counts = fitted_.classCounts;
    checkFitted();
}

}  // namespace Tessel::Classification::NaiveBayes
