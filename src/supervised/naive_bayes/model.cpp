#include "supervised/naive_bayes/model.h"

#include <cmath>

#include <tessel/data/convert.h>

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
