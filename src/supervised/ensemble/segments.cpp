#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "serialization/implied_memory.h"
#include "serialization/pmml/model_element.h"
#include "serialization/pmml/values.h"
#include "supervised/ensemble/fit_learners.h"
#include "supervised/ensemble/member_texts.h"
#include "supervised/ensemble/model.h"
#include "supervised/learner_catalog.h"

// `MiningModel`: a segment a member, each with a whole model element. Boosted classifiers vote with weights,
// which the standard's "weightedAverage" does for members whose probabilities are 0 and 1; so that is what
// their trees say beside their counts. The probabilities of other members cannot be told otherwise, so each
// stands in a `MiningModel` of its own, whose "majorityVote" of one member makes them 0 and 1. Texts of
// others may say "weightedMajorityVote".

namespace Tessel::Ensemble {
namespace {

using PMML::Document;
using PMML::ModelReader;
using PMML::ModelWriter;
using PMML::Node;

constexpr WStringView kWeightedAverage = L"weightedAverage";
constexpr WStringView kWeightedVote = L"weightedMajorityVote";
constexpr WStringView kMajorityVote = L"majorityVote";
constexpr WStringView kEnsemble = L"MiningModel", kTree = L"TreeModel";

/// A segment that always takes part.
Node* appendSegment(Document& document, Node* segmentation, std::size_t id) {
    Node* const segment = document.allocateNode(L"Segment");
    document.appendAttribute(segment, L"id", id);
    segment->append_node(document.allocateNode(L"True"));
    segmentation->append_node(segment);
    return segment;
}

/// The segment of an ensemble of one that stands in `segment`.
Node* appendVoteOfOne(const ModelWriter& writer, Node* segment, const Supervised::IModelable& member) {
    Document& document = writer.document;
    Node* const vote = document.allocateNode(kEnsemble);
    document.appendAttribute(vote, L"functionName", member.type().kind);
    vote->append_node(document.allocateMiningSchemaNode(member.schema.targetName, writer.fields));
    Node* const segmentation = document.allocateNode(L"Segmentation");
    document.appendAttribute(segmentation, L"multipleModelMethod", kMajorityVote);
    vote->append_node(segmentation);
    segment->append_node(vote);
    return appendSegment(document, segmentation, 1);
}

template <class Members>
void writeSegments(const Members& members, WStringView method, const ModelWriter& writer) {
    Document& document = writer.document;
    const bool isWeighted = method == kWeightedAverage;
    Node* const segmentation = writer.append(document.allocateNode(L"Segmentation"));
    document.appendAttribute(segmentation, L"multipleModelMethod", method);
    for (std::size_t m = 0; m < members.weakModels.size(); ++m) {
        Node* segment = appendSegment(document, segmentation, m + 1);
        if (isWeighted) document.appendAttribute(segment, L"weight", members.weights[m]);
        const auto& member = *members.weakModels[m];
        if (isWeighted && member.type().pmmlElement != kTree)
            segment = appendVoteOfOne(writer, segment, member);
        Node* const element = document.allocateNode(member.type().pmmlElement);
        segment->append_node(element);
        ModelWriter memberWriter{document, element};
        memberWriter.fields = writer.fields;
        memberWriter.isSegment = true;
        memberWriter.areProbabilitiesVotes = isWeighted;
        memberWriter.write(member, member.getName());
    }
}

std::shared_ptr<Classification::IModelable> blankOf(const IClassifierMembers&, WStringView element,
                                                    WString& algorithm) {
    const auto* const family = LearnerCatalog::findWeakClassifierOfPMML(element);
    if (!family) return nullptr;
    algorithm = family->algorithm;
    return family->makeBlank();
}
std::shared_ptr<Regression::IModelable> blankOf(const IRegressorMembers&, WStringView element,
                                                WString& algorithm) {
    const auto* const family = LearnerCatalog::findWeakRegressorOfPMML(element);
    if (!family) return nullptr;
    algorithm = family->algorithm;
    return family->makeBlank();
}

/// The model element of a segment, behind its predicate.
const Node* modelOf(const Node* segment) {
    const Node* model = nullptr;
    bool isAlways = false;
    for (const Node* child = segment->first_node(); child; child = child->next_sibling()) {
        const WStringView name(child->name(), child->name_size());
        if (name == L"True")
            isAlways = true;
        else if (name != L"Extension")
            model = child;
    }
    if (!isAlways || !model) throw UnsupportedPMMLFormat("A segment is not a model that always takes part.");
    return model;
}

/// The member whose vote a model that is averaged with others stands for: the model itself when it is a
/// tree, which checks its probabilities as it is read, or the only member of an ensemble that votes.
const Node* voterOf(const Node* model) {
    const WStringView name(model->name(), model->name_size());
    if (name == kTree) return model;
    const Node* const segmentation = Document::getSubnode(model, L"Segmentation");
    const Node* const segment = Document::getSubnode(segmentation, L"Segment");
    if (name != kEnsemble || !segment || segment->next_sibling(L"Segment") ||
        Document::requiredAttribute(segmentation, L"multipleModelMethod") != kMajorityVote ||
        Document::requiredAttribute(model, L"functionName") != Ladon::TaskKind::CLASSIFICATION)
        throw UnsupportedPMMLFormat("Members whose probabilities are averaged are trees or votes of one.");
    for (const wchar_t* changed : {L"LocalTransformations", L"Targets"})
        if (Document::getSubnode(model, changed))
            throw UnsupportedPMMLFormat("A vote of one changes its inputs or its result.");
    return modelOf(segment);
}

std::size_t numChildren(const Node* parent, WStringView name) {
    std::size_t count = 0;
    if (parent) PMML::forEachChild(parent, name, [&](const Node*) { ++count; });
    return count;
}

template <class Members>
void readSegments(Members& members, const FittedSchema& schema, WStringView method,
                  const ModelReader& reader) {
    const Node* const segmentation = reader.requiredChild(L"Segmentation");
    const WStringView found = Document::requiredAttribute(segmentation, L"multipleModelMethod");
    const bool isWeighted = method == kWeightedAverage;
    if (found != method && !(isWeighted && found == kWeightedVote))
        throw UnsupportedPMMLFormat("The segments are combined by " + Convert::toUtf8Lossy(found) +
                                    ", not by " + Convert::toUtf8Lossy(method) + ".");
    const bool isAveraged = found == kWeightedAverage;
    std::vector<const Node*> elements;
    // Each member has the features and classes of the ensemble for its own.
    const auto target = reader.fields.find(schema.targetName);
    const std::size_t numClasses = target == reader.fields.end() ? 0 : target->second.categories.size();
    ImpliedMemory implied;
    PMML::forEachChild(segmentation, L"Segment", [&](const Node* segment) {
        elements.push_back(isAveraged ? voterOf(modelOf(segment)) : modelOf(segment));
        const WStringView name = PMML::nameOf(elements.back());
        WString algorithm;
        const auto member = blankOf(members, name, algorithm);
        if (!member || (!members.algorithm.empty() && algorithm != members.algorithm))
            throw UnsupportedPMMLFormat("A segment's " + Convert::toUtf8Lossy(WString(name)) +
                                        " cannot be read here.");
        members.algorithm = algorithm;
        const Node* const element = elements.back();
        const Node* const targets = Document::getSubnode(element, L"Targets");
        implied.add(schema.features.size(),
                    numChildren(Document::getSubnode(element, L"MiningSchema"), L"MiningField"),
                    sizeof(FeatureSchema));
        implied.add(numClasses, numChildren(Document::getSubnode(targets, L"Target"), L"TargetValue"),
                    sizeof(WString) + 2 * sizeof(double));
        // The other methods know no weights.
        const auto weight = isWeighted ? Document::optionalAttribute(segment, L"weight") : std::nullopt;
        members.add(member, weight ? PMML::toDouble(*weight) : 1.0);
        if (!(members.weights.back() >= 0.0) || std::isinf(members.weights.back()))
            throw UnsupportedPMMLFormat("The weight of a segment is negative or not finite.");
    });
    if (elements.empty()) throw UnsupportedPMMLFormat("There are no segments.");
    requireFiniteSum(members.weights);
    fitLearners(static_cast<int>(elements.size()), {}, {}, [&](int m, const Progress&) {  // by all threads
        const auto position = static_cast<std::size_t>(m);
        ModelReader memberReader{reader.fields, elements[position], reader.featureOfField, &schema,
                                 isAveraged};
        memberReader.readInto(*members.weakModels[position]);
    });
}

}  // namespace

void IClassifier::writeBody(ModelWriter& writer) const {
    writeSegments(*this, multipleModelMethod(), writer);
}
void IClassifier::readBody(const ModelReader& reader) {
    readSegments(*this, schema, multipleModelMethod(), reader);
    // Members may know fewer classes, none that the ensemble does not.
    for (const auto& member : weakModels)
        for (const WString& label : member->classSchema.classes)
            if (!classSchema.classes.exists(label))
                throw UnsupportedPMMLFormat(Convert::toUtf8Lossy(label) + " is no class of the ensemble.");
}
void IRegressor::writeBody(ModelWriter& writer) const { writeSegments(*this, multipleModelMethod(), writer); }
void IRegressor::readBody(const ModelReader& reader) {
    readSegments(*this, schema, multipleModelMethod(), reader);
}

}  // namespace Tessel::Ensemble
