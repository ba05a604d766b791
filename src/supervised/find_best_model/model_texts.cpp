#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "supervised/find_best_model/model.h"
#include "supervised/learner_catalog.h"

namespace Tessel {

const ModelType& Classification::FindBestModel::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::FIND_BEST_MODEL, L"",
                                L""};
    return type;
}

const ModelType& Regression::FindBestModel::IModel::type() const {
    static const ModelType type{Ladon::TaskKind::REGRESSION, Ladon::ModelAlgorithm::FIND_BEST_MODEL, L"",
                                L""};
    return type;
}

void Classification::FindBestModel::IModel::writeBody(PMML::ModelWriter&) const {
    throw UnsupportedPMMLFormat("A model search cannot be written to PMML.");
}
void Classification::FindBestModel::IModel::readBody(const PMML::ModelReader&) {
    throw UnsupportedPMMLFormat("A model search cannot be read from PMML.");
}
void Classification::FindBestModel::IModel::writeBody(web::json::value& model) const {
    writeSearch(static_cast<int>(metric), model);
}
void Classification::FindBestModel::IModel::readBody(const JSON::Members& model) {
    const int read =
        readSearch(model, [](const WString& algorithm) -> std::shared_ptr<Classification::IModelable> {
            const auto* const family = LearnerCatalog::findClassifier(algorithm);
            return family ? family->makeBlank() : nullptr;
        });
    for (const auto& [type, learner] : models)
        if (learner->classSchema.classes != classSchema.classes)
            throw ConstraintViolation("learners", "They have the classes of the search.");
    metric = static_cast<ClassificationMetricType>(read);
    if (!metricNames().contains(metric)) throw ConstraintViolation("metric", "Unknown metric.");
}

void Regression::FindBestModel::IModel::writeBody(PMML::ModelWriter&) const {
    throw UnsupportedPMMLFormat("A model search cannot be written to PMML.");
}
void Regression::FindBestModel::IModel::readBody(const PMML::ModelReader&) {
    throw UnsupportedPMMLFormat("A model search cannot be read from PMML.");
}
void Regression::FindBestModel::IModel::writeBody(web::json::value& model) const {
    writeSearch(static_cast<int>(metric), model);
}
void Regression::FindBestModel::IModel::readBody(const JSON::Members& model) {
    const int read =
        readSearch(model, [](const WString& algorithm) -> std::shared_ptr<Regression::IModelable> {
            const auto* const family = LearnerCatalog::findRegressor(algorithm);
            return family ? family->makeBlank() : nullptr;
        });
    metric = static_cast<RegressionMetricType>(read);
    if (!metricNames().contains(metric)) throw ConstraintViolation("metric", "Unknown metric.");
}

}  // namespace Tessel
