#pragma once

#include "framework/classification.h"
#include "framework/regression.h"
#include "supervised/decision_tree/tree_model.h"

namespace Tessel::Classification::DecisionTree {

inline constexpr wchar_t kModelName[] = L"Classification Tree";

class IModel : public IModelable, public Tessel::DecisionTree::ITreeModel {
 public:
    IModel() : IModelable(kModelName) {}
    IModel(const Tessel::DecisionTree::IParameters& parameters, Engine::DT::ClassificationModel tree)
        : IModelable(kModelName), ITreeModel(parameters), tree_(std::move(tree)) {}

    const ModelType& type() const override;
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

    void prune(const DataFrame& features, const DataFrameColumn& target) override;
    DataFrame pruningLog() const override;
    void classify(const std::vector<FeatureColumn>& columns,
                  std::vector<std::int32_t>& codes) const override {
        codes = tree_.predict(Tessel::DecisionTree::cellsOf(columns), codes.size());
    }

 protected:
    void score(const std::vector<FeatureColumn>& columns, Posteriors& posteriors) const override;
    void describe(StringVector& labels, StringVector& values) const override;
    void report(DataFrameVector& tables) const override;

    void writeAttributes(PMML::ModelWriter& writer) const override { writeTreeAttributes(writer); }
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
    bool writesTransformationsFirst() const override { return true; }

    Engine::DT::Model& engine() override { return tree_; }
    const Engine::DT::Model& engine() const override { return tree_; }
    const FittedSchema& fittedSchema() const override { return schema; }
    const StringVector& classLabels() const override { return classSchema.classes; }
    WString responseText(std::int32_t node) const override {
        return classSchema.classes[static_cast<std::size_t>(tree_.classOf(node))];
    }
    void adoptClassRule() override;

 private:
    void restore(Engine::DT::Tree tree);

    Engine::DT::ClassificationModel tree_;
};

}  // namespace Tessel::Classification::DecisionTree

namespace Tessel::Regression::DecisionTree {

inline constexpr wchar_t kModelName[] = L"Regression Tree";

class IModel : public IModelable, public Tessel::DecisionTree::ITreeModel {
 public:
    IModel() : IModelable(kModelName) {}
    IModel(const Tessel::DecisionTree::IParameters& parameters, Engine::DT::RegressionModel tree)
        : IModelable(kModelName), ITreeModel(parameters), tree_(std::move(tree)) {}

    const ModelType& type() const override;
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

    void prune(const DataFrame& features, const DataFrameColumn& target) override;
    DataFrame pruningLog() const override;
    void score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const override;

 protected:
    void describe(StringVector& labels, StringVector& values) const override { describeTree(labels, values); }
    void report(DataFrameVector& tables) const override { reportTree(tables); }

    void writeAttributes(PMML::ModelWriter& writer) const override { writeTreeAttributes(writer); }
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
    bool writesTransformationsFirst() const override { return true; }

    Engine::DT::Model& engine() override { return tree_; }
    const Engine::DT::Model& engine() const override { return tree_; }
    const FittedSchema& fittedSchema() const override { return schema; }
    WString responseText(std::int32_t node) const override;

 private:
    Engine::DT::RegressionModel tree_;
};

}  // namespace Tessel::Regression::DecisionTree
