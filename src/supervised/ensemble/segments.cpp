#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "serialization/pmml/model_element.h"
#include "serialization/pmml/values.h"
#include "supervised/ensemble/model.h"
#include "supervised/learner_catalog.h"

// `MiningModel`: a segment a member, each with a whole model element. Boosted classifiers vote with weights,
// which the standard's "weightedAverage" does for members whose probabilities are 0 and 1; so that is what
// their trees say beside their counts.

namespace Tessel::Ensemble {
namespace {

using PMML::Document;
using PMML::ModelReader;
using PMML::ModelWriter;
using PMML::Node;

constexpr WStringView kWeightedAverage = L"weightedAverage";

template <class Members>
void writeSegments(const Members& members, WStringView method, const ModelWriter& writer) {
    Document& document = writer.document;
    const bool isWeighted = method == kWeightedAverage;
    Node* const segmentation = writer.append(document.allocateNode(L"Segmentation"));
    document.appendAttribute(segmentation, L"multipleModelMethod", method);
    for (std::size_t m = 0; m < members.weakModels.size(); ++m) {
        Node* const segment = document.allocateNode(L"Segment");
        document.appendAttribute(segment, L"id", m + 1);
        if (isWeighted) document.appendAttribute(segment, L"weight", members.weights[m]);
        segment->append_node(document.allocateNode(L"True"));
        const auto& member = *members.weakModels[m];
        Node* const element = document.allocateNode(member.type().pmmlElement);
        segment->append_node(element);
        ModelWriter memberWriter{document, element};
        memberWriter.fields = writer.fields;
        memberWriter.isSegment = true;
        memberWriter.areProbabilitiesVotes = isWeighted;
        memberWriter.write(member);
        segmentation->append_node(segment);
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

template <class Members>
void readSegments(Members& members, const FittedSchema& schema, WStringView method,
                  const ModelReader& reader) {
    const Node* const segmentation = reader.requiredChild(L"Segmentation");
    const WStringView found = Document::requiredAttribute(segmentation, L"multipleModelMethod");
    if (found != method)
        throw UnsupportedPMMLFormat("The segments are combined by " + Convert::toUtf8Lossy(found) +
                                    ", not by " + Convert::toUtf8Lossy(method) + ".");
    PMML::forEachChild(segmentation, L"Segment", [&](const Node* segment) {
        const Node* const element = modelOf(segment);
        const WStringView name(element->name(), element->name_size());
        WString algorithm;
        const auto member = blankOf(members, name, algorithm);
        if (!member || (!members.algorithm.empty() && algorithm != members.algorithm))
            throw UnsupportedPMMLFormat("A segment's " + Convert::toUtf8Lossy(name) +
                                        " cannot be read here.");
        members.algorithm = algorithm;
        ModelReader memberReader{reader.fields, element, reader.featureOfField, &schema,
                                 method == kWeightedAverage};
        memberReader.readInto(*member);
        const auto weight = Document::optionalAttribute(segment, L"weight");
        members.add(member, weight ? PMML::toDouble(*weight) : 1.0);
        if (!(members.weights.back() >= 0.0) || std::isinf(members.weights.back()))
            throw UnsupportedPMMLFormat("The weight of a segment is negative or not finite.");
    });
    if (members.weakModels.empty()) throw UnsupportedPMMLFormat("There are no segments.");
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
