#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "supervised/decision_tree/model.h"
#include "supervised/decision_tree/tree_texts.h"

namespace Tessel {
namespace DecisionTree {

void ITreeModel::writeTreeAttributes(PMML::ModelWriter& writer) {
    writer.document.appendAttribute(writer.element, L"splitCharacteristic", L"binarySplit");
    writer.document.appendAttribute(writer.element, L"missingValueStrategy", L"defaultChild");
    writer.document.appendAttribute(writer.element, L"noTrueChildStrategy", L"returnLastPrediction");
}

void ITreeModel::restoreTree(Engine::DT::Tree tree) {
    const FittedSchema& schema = fittedSchema();
    engine().restore(std::move(tree), static_cast<int>(schema.features.size()));
    categoricalFeaturesNames_.clear();
    for (const FeatureSchema& feature : schema.features)
        if (feature.isCategorical) categoricalFeaturesNames_.push_back(feature.name);
}

}  // namespace DecisionTree

namespace Classification::DecisionTree {

const ModelType& IModel::type() const {
    static const ModelType type{Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::DECISION_TREE,
                                L"TreeModel", L"DecisionTree"};
    return type;
}

void IModel::restore(Engine::DT::Tree tree) {
    tree_.setClasses(classSchema.classes.elements());
    restoreTree(std::move(tree));
    adoptClassRule();
}

void IModel::writeBody(PMML::ModelWriter& writer) const {
    Tessel::DecisionTree::writeNodes(tree_.selectedTree(), schema, classSchema.classes, writer);
}

void IModel::readBody(const PMML::ModelReader& reader) {
    auto [tree, labels] = Tessel::DecisionTree::readNodes(schema, classSchema.classes, reader);
    restore(std::move(tree));
    const Engine::DT::Tree& restored = tree_.tree();
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (labels[i] >= 0 && restored.nodes[i].isLeaf() &&
            tree_.classOf(static_cast<std::int32_t>(i)) != labels[i])
            throw UnsupportedPMMLFormat(
                "A leaf with the score " +
                Convert::toUtf8Lossy(classSchema.classes[static_cast<std::size_t>(labels[i])]) +
                " has another class of greatest probability.");
    const double* const counts = restored.classWeightsOf(0);
    classSchema.counts.assign(counts, counts + classSchema.classes.size());
}

void IModel::writeBody(web::json::value& model) const {
    Tessel::DecisionTree::writeTree(tree_.selectedTree(), schema, classSchema.classes, model);
}

void IModel::readBody(const JSON::Members& model) {
    restore(Tessel::DecisionTree::readTree(schema, classSchema.classes, model));
}

}  // namespace Classification::DecisionTree

namespace Regression::DecisionTree {

const ModelType& IModel::type() const {
    static const ModelType type{Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::DECISION_TREE,
                                L"TreeModel", L"DecisionTree"};
    return type;
}

void IModel::writeBody(PMML::ModelWriter& writer) const {
    Tessel::DecisionTree::writeNodes(tree_.selectedTree(), schema, {}, writer);
}
void IModel::readBody(const PMML::ModelReader& reader) {
    restoreTree(Tessel::DecisionTree::readNodes(schema, {}, reader).tree);
}
void IModel::writeBody(web::json::value& model) const {
    Tessel::DecisionTree::writeTree(tree_.selectedTree(), schema, {}, model);
}
void IModel::readBody(const JSON::Members& model) {
    restoreTree(Tessel::DecisionTree::readTree(schema, {}, model));
}

}  // namespace Regression::DecisionTree
}  // namespace Tessel
