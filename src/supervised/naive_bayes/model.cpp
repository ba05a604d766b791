#include "supervised/naive_bayes/model.h"

#include <algorithm>
#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

namespace Tessel::Classification::NaiveBayes {
namespace {

using Engine::NB::CategoricalInput;
using Engine::NB::Fitted;
using Engine::NB::FittedInput;
using Engine::NB::GaussianInput;

/// A row per class with the density of a numeric input.
DataFrame densityTable(const WString& feature, const StringVector& classes, const GaussianInput& input) {
    Vector deviations(input.variance.begin(), input.variance.end());
    for (double& deviation : deviations) deviation = std::sqrt(deviation);
    DataFrame table(L"Normal Density: " + feature);
    table.append(DataFrameColumn(L"Mean", Vector(input.mean)));
    table.append(DataFrameColumn(L"Std. dev.", std::move(deviations)));
    table.append(DataFrameColumn(L"#Records", Vector(input.count)));
    table.setRowNames(classes);
    return table;
}

/// A row per category with its count and probability in each class.
DataFrame frequencyTable(const FeatureSchema& feature, const StringVector& classes, const Fitted& fitted,
                         const CategoricalInput& input) {
    const std::vector<double> probabilities = Engine::NB::categoryProbabilities(fitted, input);
    const auto columnOfClass = [&](const std::vector<double>& categoryByClass, std::size_t k) {
        Vector column;
        for (std::size_t cell = k; cell < categoryByClass.size(); cell += classes.size())
            column.push_back(categoryByClass[cell]);
        return column;
    };
    DataFrame table(L"Frequencies: " + feature.name);
    for (std::size_t k = 0; k < classes.size(); ++k)
        table.append(DataFrameColumn(L"#Records: " + classes[k], columnOfClass(input.counts, k)));
    for (std::size_t k = 0; k < classes.size(); ++k)
        table.append(DataFrameColumn(L"Probability: " + classes[k], columnOfClass(probabilities, k)));
    table.setRowNames(StringVector(feature.categories->levels()));
    return table;
}

}  // namespace

std::vector<Engine::NB::Input> engineInputs(const FittedSchema& schema,
                                            const std::vector<FeatureColumn>& columns) {
    std::vector<Engine::NB::Input> inputs;
    inputs.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i)
        inputs.push_back({columns[i].isCategorical(), columns[i].numbers(), columns[i].codes(),
                          schema.features[i].numCategories()});
    return inputs;
}

const ModelType& IModel::type() const {
    static const ModelType type{Ladon::TaskKind::CLASSIFICATION, Ladon::ModelAlgorithm::NAIVE_BAYES,
                                L"NaiveBayesModel", L"NaiveBayes"};
    return type;
}

void IModel::checkFitted() const {
    const auto require = [](bool holds, const char* rule) {
        if (!holds) throw ConstraintViolation("Naive Bayes model", rule);
    };
    const auto isProbability = [](double value) { return value >= 0.0 && value <= 1.0; };
    require(fitted_.laplace >= 0.0 && std::isfinite(fitted_.laplace), "has no pseudo-count >= 0");
    require(fitted_.zeroProbability > 0.0 && isProbability(fitted_.zeroProbability),
            "needs a threshold in (0, 1]");
    require(isProbability(fitted_.densityFloor), "needs a density floor in [0, 1]");
    require(
        std::any_of(classSchema.priors.begin(), classSchema.priors.end(), [](double p) { return p > 0.0; }),
        "has no class of positive prior");
    for (const FittedInput& input : fitted_.inputs) {
        if (const auto* gaussian = std::get_if<GaussianInput>(&input)) {
            for (std::size_t k = 0; k < gaussian->mean.size(); ++k)
                require(std::isfinite(gaussian->mean[k]) && std::isfinite(gaussian->variance[k]) &&
                            gaussian->variance[k] >= 0.0,
                        "has a density without finite mean and variance");
            continue;
        }
        double total = fitted_.laplace;
        for (const double count : std::get<CategoricalInput>(input).counts) {
            require(count >= 0.0 && std::isfinite(count), "has a count that is negative or not finite");
            total += count;
        }
        require(total > 0.0 && std::isfinite(total), "has an input whose counts are all 0 or overflow");
    }
}

void IModel::score(const std::vector<FeatureColumn>& columns, Posteriors& posteriors) const {
    std::vector<double> logPriors;
    for (const double prior : classSchema.priors) logPriors.push_back(std::log(prior));
    const std::vector<std::span<double>> result(posteriors.begin(), posteriors.end());
    Engine::NB::posteriorProbability(fitted_, logPriors, engineInputs(schema, columns), result);
}

void IModel::describe(StringVector& labels, StringVector& values) const {
    IModelable::describe(labels, values);
    labels.push_back(L"Laplace smoothing");
    values.push_back(Convert::toString(fitted_.laplace));
}

void IModel::report(DataFrameVector& tables) const {
    IModelable::report(tables);
    for (std::size_t i = 0; i < schema.features.size(); ++i) {
        const FittedInput& input = fitted_.inputs[i];
        if (const auto* gaussian = std::get_if<GaussianInput>(&input))
            tables.push_back(densityTable(schema.features[i].name, classSchema.classes, *gaussian));
        else
            tables.push_back(frequencyTable(schema.features[i], classSchema.classes, fitted_,
                                            std::get<CategoricalInput>(input)));
    }
}

}  // namespace Tessel::Classification::NaiveBayes
