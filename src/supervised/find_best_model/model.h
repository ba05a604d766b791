#pragma once

#include "supervised/find_best_model/learners.h"

namespace Tessel {

namespace Classification::FindBestModel {

inline constexpr wchar_t kModelName[] = L"Model Search for Classification";

/// The names of the metrics, which are those of their columns.
const std::map<ClassificationMetricType, WString>& metricNames();

class IModel : public IModelable, public Tessel::FindBestModel::ISearched<IModelable> {
 public:
    IModel() : IModelable(kModelName), ISearched(Tessel::FindBestModel::Kind::CLASSIFICATION) {}

    const ModelType& type() const override;
    using IModelable::toPMML;
    /// The chosen model's own text, under the name of the search when it was given one. @throws NoBestLearner
    WString toPMML(const PMML::ColumnScaling* scaling, const WString& name) const override {
        return chosen().toPMML(scaling, name == kModelName ? chosen().getName() : name);
    }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

    // Rules that are set here go to all models.
    void setSuccessClass(const WString& label) override;
    void setSuccessProbability(double cutOff) override;

    ClassificationMetricType metric = ClassificationMetricType::PERCENT_CORRECT;

    WString findBestLearner(const DataFrame& features, const DataFrameColumn& target, bool useForScoring);

    // All scoring is that of the chosen model, which reads the table by its own schema.
    DataFrame predict(const DataFrame& features) const override { return chosen().predict(features); }
    DataFrame posteriorProbability(const DataFrame& features) const override {
        return chosen().posteriorProbability(features);
    }
    DataFrame predictWithPosterior(const DataFrame& features) const override {
        return chosen().predictWithPosterior(features);
    }
    void score(const std::vector<FeatureColumn>& columns, Posteriors& posteriors) const override {
        chosen().score(columns, posteriors);
    }

 protected:
    bool mayLackClasses() const override { return true; }
    /// Not called: PMML is that of the chosen model.
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
    void describe(StringVector& labels, StringVector& values) const override;
    void report(DataFrameVector& tables) const override;

 private:
    DataFrame measure(const DataFrameColumn& actual, const DataFrameColumn& predicted) const;
};

}  // namespace Classification::FindBestModel

namespace Regression::FindBestModel {

inline constexpr wchar_t kModelName[] = L"Model Search for Regression";

const std::map<RegressionMetricType, WString>& metricNames();

class IModel : public IModelable, public Tessel::FindBestModel::ISearched<IModelable> {
 public:
    IModel() : IModelable(kModelName), ISearched(Tessel::FindBestModel::Kind::REGRESSION) {}

    const ModelType& type() const override;
    using IModelable::toPMML;
    /// The chosen model's own text, under the name of the search when it was given one. @throws NoBestLearner
    WString toPMML(const PMML::ColumnScaling* scaling, const WString& name) const override {
        return chosen().toPMML(scaling, name == kModelName ? chosen().getName() : name);
    }
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

    RegressionMetricType metric = RegressionMetricType::RMSE;

    WString findBestLearner(const DataFrame& features, const DataFrameColumn& target, bool useForScoring);

    // All scoring is that of the chosen model, which reads the table by its own schema.
    DataFrame predict(const DataFrame& features) const override { return chosen().predict(features); }
    void score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const override {
        chosen().score(columns, predictions);
    }

 protected:
    /// Not called: PMML is that of the chosen model.
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
    void describe(StringVector& labels, StringVector& values) const override;
    void report(DataFrameVector& tables) const override { reportSearch(tables); }
};

}  // namespace Regression::FindBestModel
}  // namespace Tessel
