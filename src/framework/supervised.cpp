#include "framework/supervised.h"

#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

namespace Tessel::Supervised {
namespace {

DataFrame summaryTable(const WString& title, const StringVector& labels, const StringVector& values) {
    DataFrame table(title);
    table.append(DataFrameColumn(L"Value", values));
    table.setRowNames(labels);
    return table;
}

}  // namespace

DataFrameVector IModelable::toDataFrameVector() const {
    DataFrameVector tables;
    tables.setName(getModelName());
    StringVector labels, values;
    describe(labels, values);
    tables.push_back(summaryTable(L"Model: " + getModelName(), labels, values));
    report(tables);

    const auto numCategorical =
        std::count_if(schema.features.begin(), schema.features.end(),
                      [](const FeatureSchema& feature) { return feature.isCategorical; });
    labels = {L"#Training records", L"#Features", L"#Categorical features", L"Target"};
    values = {Convert::toString(schema.numRows), Convert::toString(schema.features.size()),
              Convert::toString(numCategorical), schema.targetName};
    describeTraining(labels, values);
    tables.push_back(summaryTable(L"Training Summary", labels, values));
    return tables;
}

Resample Resample::of(std::vector<std::int32_t> rows, int numTableRows) {
    Resample resample;
    resample.multiplicities.assign(static_cast<std::size_t>(numTableRows), 0);
    for (const std::int32_t row : rows) ++resample.multiplicities[static_cast<std::size_t>(row)];
    resample.rows = std::move(rows);
    return resample;
}

TrainingFeatures IEstimator::checkedFeatures(const DataFrame& features, const DataFrameColumn& target) const {
    validate();
    if (features.getNumRows() != target.getNumRows()) throw IncompatibleNumRows();
    validateAgainst(features);
    return readTrainingFeatures(features, categoricalColumns(features));
}

}  // namespace Tessel::Supervised
