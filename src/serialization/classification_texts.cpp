#include <algorithm>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "framework/classification.h"
#include "serialization/json/read.h"
#include "serialization/pmml/model_element.h"
#include "serialization/pmml/values.h"

// What the texts of classifiers say of their classes and of the rule that chooses between two of them.

namespace Tessel::Classification {
namespace {

using PMML::Document;
using PMML::Node;

constexpr wchar_t kCutOff[] = L"successProbability";
constexpr double kDefaultCutOff = 0.5;

void appendOutputField(Document& document, Node* output, const WString& name, bool isCategorical,
                       const wchar_t* feature) {
    Node* const field = document.allocateNode(L"OutputField");
    document.appendAttribute(field, L"name", name);
    document.appendAttribute(field, L"optype", isCategorical ? L"categorical" : L"continuous");
    document.appendAttribute(field, L"dataType", isCategorical ? L"string" : L"double");
    document.appendAttribute(field, L"feature", feature);
    output->append_node(field);
}

}  // namespace

void IModelable::requireClasses() const {
    const StringVector& classes = classSchema.classes;
    if (classes.empty() && mayLackClasses()) return;
    if (classes.empty()) throw TooFewClassLabels();
    std::vector<WString> sorted(classes.begin(), classes.end());
    std::sort(sorted.begin(), sorted.end());
    const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
    if (twice != sorted.end()) throw DuplicateName(Convert::toUtf8Lossy(*twice));
    if (sorted.front().empty()) throw ConstraintViolation("Classes", "A class needs a label.");
    validate();
}

// ---- PMML

void IModelable::writeOutput(PMML::ModelWriter& writer) const {
    Document& document = writer.document;
    Node* const output = writer.append(document.allocateNode(L"Output"));
    appendOutputField(document, output, L"Predicted_" + schema.targetName, true, L"predictedValue");
    for (const WString& label : classSchema.classes) {
        appendOutputField(document, output, L"Probability_" + label, false, L"probability");
        document.appendAttribute(output->last_node(), L"value", label);
    }
}

void IModelable::writeTarget(PMML::ModelWriter& writer) const {
    Document& document = writer.document;
    if (!writer.isSegment) writeOutput(writer);
    PMML::Priors priors;
    for (std::size_t k = 0; k < classSchema.classes.size(); ++k)
        priors[classSchema.classes[k]] = classSchema.priors[k];
    const bool hasSuccess = !classSchema.successClass.empty();
    Node* const targets = writer.append(document.allocateTargetsNode(
        schema.targetName, priors,
        hasSuccess ? std::optional<WString>(classSchema.successClass) : std::nullopt));
    if (classSchema.successProbability != kDefaultCutOff)
        targets->first_node()->prepend_node(
            PMML::allocateExtension(document, kCutOff, PMML::decimalText(classSchema.successProbability)));
}

void IModelable::readTarget(const PMML::ModelReader& reader) {
    Supervised::IModelable::readTarget(reader);
    const Node* const target = Document::getSubnode(reader.child(L"Targets"), L"Target");
    classSchema.classes = reader.field(schema.targetName).categories;
    PMML::Priors priors;
    if (target) priors = Document::getPriorProbs(target);
    if (classSchema.classes.empty())
        for (const auto& [label, prior] : priors) classSchema.classes.push_back(label);
    const std::size_t numClasses = classSchema.classes.size();
    classSchema.counts.assign(numClasses, 0.0);
    // Without priors in the text all classes are alike; a family that knows better says so.
    classSchema.priors = Vector(std::vector<double>(numClasses, 1.0 / static_cast<double>(numClasses)));
    for (std::size_t k = 0; k < numClasses && !priors.empty(); ++k) {
        const auto prior = priors.find(classSchema.classes[k]);
        classSchema.priors[k] = prior == priors.end() ? 0.0 : prior->second;
        if (!(classSchema.priors[k] >= 0.0 && classSchema.priors[k] <= 1.0))
            throw ValueOutOfRange("priorProbability", 0.0, 1.0);
    }
    if (target) {
        classSchema.successClass = Document::optionalAttribute(target, L"successClass").value_or(L"");
        if (const auto cutOff = PMML::findExtension(target, kCutOff))
            classSchema.successProbability = PMML::toDouble(*cutOff);
    }
    requireClasses();
}

// ---- JSON

void IModelable::writeTarget(web::json::value& model) const {
    using JSONModel::set;
    set(model, L"classes", JSONModel::fromStrings(classSchema.classes));
    set(model, L"priorProbabilities", JSONModel::fromNumbers(classSchema.priors));
    set(model, L"classCounts", JSONModel::fromNumbers(classSchema.counts));
    set(model, L"successClass", JSON::fromText(classSchema.successClass));
    set(model, kCutOff, JSON::fromNumber(classSchema.successProbability));
}

void IModelable::readTarget(const JSON::Members& model) {
    classSchema.classes = JSON::toStringVector(model.at("classes"), "classes");
    classSchema.priors = JSON::toVector(model.at("priorProbabilities"), "priorProbabilities");
    const Vector counts = JSON::toVector(model.at("classCounts"), "classCounts");
    classSchema.counts.assign(counts.begin(), counts.end());
    const std::size_t numClasses = classSchema.classes.size();
    for (const std::size_t size : {classSchema.priors.size(), classSchema.counts.size()})
        if (size != numClasses)
            throw NumElementsMismatch(static_cast<std::int64_t>(numClasses), static_cast<std::int64_t>(size));
    for (const double prior : classSchema.priors)
        if (!(prior >= 0.0 && prior <= 1.0)) throw ValueOutOfRange("priorProbabilities", 0.0, 1.0);
    for (const double count : classSchema.counts)
        if (!(count >= 0.0) || std::isinf(count))
            throw ConstraintViolation("classCounts", "Counts are finite and not negative.");
    classSchema.successClass = JSON::toText(model.at("successClass"), "successClass");
    classSchema.successProbability = JSON::toNumber(model.at("successProbability"), "successProbability");
    requireClasses();
}

}  // namespace Tessel::Classification
