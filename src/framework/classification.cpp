#include "framework/classification.h"

#include <algorithm>
#include <cassert>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "data/column_access.h"

namespace Tessel::Classification {

// ---- model

void IModelable::setClassSchema(ClassSchema learnt) {
    classSchema = std::move(learnt);
    adoptClassRule();
}

void IModelable::setSuccessClass(const WString& label) {
    if (!classSchema.classes.exists(label)) throw InvalidSuccessLabel();
    classSchema.successClass = label;
    adoptClassRule();
}

void IModelable::setSuccessProbability(double cutOff) {
    if (!(cutOff >= 0.0 && cutOff <= 1.0)) throw ValueOutOfRange("Success probability", 0.0, 1.0);
    classSchema.successProbability = cutOff;
    adoptClassRule();
}

void IModelable::validate() const {
    const WString& label = classSchema.successClass;
    if (!label.empty() && !classSchema.classes.exists(label)) throw InvalidSuccessLabel();
    if (!(classSchema.successProbability >= 0.0 && classSchema.successProbability <= 1.0))
        throw ValueOutOfRange("Success probability", 0.0, 1.0);
}

DataFrame IModelable::priorProbability() const {
    DataFrame table(L"Prior Probabilities");
    table.append(DataFrameColumn(L"Prior Probability", classSchema.priors));
    table.setRowNames(classSchema.classes);
    return table;
}

Posteriors IModelable::posteriors(const std::vector<FeatureColumn>& columns, std::size_t numRows) const {
    Posteriors posteriors(classSchema.classes.size(), std::vector<double>(numRows));
    if (numRows > 0) score(columns, posteriors);
    return posteriors;
}

Posteriors IModelable::posteriors(const DataFrame& features) const {
    return posteriors(readFeatures(schema, features), static_cast<std::size_t>(features.getNumRows()));
}

void IModelable::classify(const std::vector<FeatureColumn>& columns, std::vector<std::int32_t>& codes) const {
    chooseClasses(posteriors(columns, codes.size()), codes);
}

void IModelable::chooseClasses(const Posteriors& posteriors, std::vector<std::int32_t>& codes) const {
    const std::size_t numClasses = posteriors.size();
    std::fill(codes.begin(), codes.end(), 0);
    const std::size_t success = classSchema.classes.find(classSchema.successClass);
    if (numClasses == 2 && success < numClasses) {
        const std::vector<double>& ofSuccess = posteriors[success];
        for (std::size_t row = 0; row < codes.size(); ++row)
            codes[row] = static_cast<std::int32_t>(
                ofSuccess[row] >= classSchema.successProbability ? success : 1 - success);
        return;
    }
    for (std::size_t k = 1; k < numClasses; ++k)
        for (std::size_t row = 0; row < codes.size(); ++row)
            if (posteriors[k][row] > posteriors[static_cast<std::size_t>(codes[row])][row])
                codes[row] = static_cast<std::int32_t>(k);
}

DataFrame IModelable::predictionTable(const DataFrame& features, std::vector<std::int32_t> codes) const {
    auto cells = ColumnCells::ofCodes(std::make_shared<const Dictionary>(classSchema.classes.elements()),
                                      std::move(codes));
    DataFrame table(L"Predictions");
    table.append(
        ColumnAccess::makeColumn(L"Predicted Class", std::move(cells), ColumnAccess::rowNames(features)));
    return table;
}

DataFrame IModelable::posteriorTable(const DataFrame& features, Posteriors posteriors) const {
    DataFrame table(L"Posterior Probabilities");
    for (std::size_t k = 0; k < posteriors.size(); ++k)
        table.append(ColumnAccess::makeColumn(posteriorColName(classSchema.classes[k]),
                                              ColumnCells::ofNumbers(std::move(posteriors[k])),
                                              ColumnAccess::rowNames(features)));
    return table;
}

DataFrame IModelable::predict(const DataFrame& features) const {
    const std::vector<FeatureColumn> columns = readFeatures(schema, features);
    std::vector<std::int32_t> codes(static_cast<std::size_t>(features.getNumRows()), 0);
    if (!codes.empty()) classify(columns, codes);
    return predictionTable(features, std::move(codes));
}

DataFrame IModelable::posteriorProbability(const DataFrame& features) const {
    return posteriorTable(features, posteriors(features));
}

DataFrame IModelable::predictWithPosterior(const DataFrame& features) const {
    Posteriors scored = posteriors(features);
    std::vector<std::int32_t> codes(static_cast<std::size_t>(features.getNumRows()), 0);
    chooseClasses(scored, codes);
    DataFrame table = predictionTable(features, std::move(codes));
    table.append(posteriorTable(features, std::move(scored)));
    return table;
}

void IModelable::describe(StringVector& labels, StringVector& values) const {
    labels.push_back(L"#Classes");
    values.push_back(Convert::toString(classSchema.classes.size()));
    if (classSchema.successClass.empty()) return;
    labels.append(StringVector{L"Success class", L"Success probability"});
    values.append(StringVector{classSchema.successClass, Convert::toString(classSchema.successProbability)});
}

void IModelable::report(DataFrameVector& tables) const { tables.push_back(priorProbability()); }

void IModelable::describeTraining(StringVector& labels, StringVector& values) const {
    for (std::size_t k = 0; k < classSchema.classes.size(); ++k) {
        labels.push_back(L"#Records of class " + classSchema.classes[k]);
        values.push_back(Convert::toString(classSchema.counts[k]));
    }
}

// ---- estimator

void IEstimator::validate() const {
    Supervised::IEstimator::validate();
    validatePriors();
}

IEstimator::CheckedData IEstimator::checkedData(const DataFrame& features,
                                                const DataFrameColumn& target) const {
    CheckedData data;
    data.features = checkedFeatures(features, target);
    data.target = readClassTarget(target);
    data.features.schema.targetName = data.target.name;
    if (data.target.classes.size() < 2) throw TooFewClassLabels();
    validateClasses(data.target);
    return data;
}

void IEstimator::validateClasses(const ClassTarget& target) const {
    if (!successClass.get().empty() && !target.classes.exists(successClass.get()))
        throw InvalidSuccessLabel();
    priors(target.classes, classSizes(target, target.counts, {}));
}

void IEstimator::validate(const DataFrame& features, const DataFrameColumn& target) const {
    requireFinite(checkedData(features, target).features);
}

std::shared_ptr<IModelable> IEstimator::fit(const DataFrame& features, const DataFrameColumn& target) const {
    CheckedData data = checkedData(features, target);
    const TrainingSet all{
        .features = data.features,
        .target = data.target,
        .priors = priors(data.target.classes, classSizes(data.target, data.target.counts, {})),
        .progress = Progress(progressCallback)};
    all.progress.report(0.0, getModelName());
    std::shared_ptr<IModelable> model = fitEngine(all);
    all.progress.report(1.0, getModelName());
    adopt(*model, all, std::move(data.features.schema), data.target.counts,
          defaultSuccessClass(data.target.classes));
    return model;
}

/// By class.
static std::vector<double> countRecords(const ClassTarget& target,
                                        std::span<const std::int32_t> multiplicities) {
    // In turns, as a count waits for the one before it.
    constexpr std::size_t kNumTurns = 4;
    const std::size_t numClasses = target.classes.size();
    std::vector<std::int64_t> parts(kNumTurns * numClasses);
    for (std::size_t row = 0; row < multiplicities.size(); ++row)
        parts[row % kNumTurns * numClasses + static_cast<std::size_t>(target.codes[row])] +=
            multiplicities[row];
    std::vector<double> counts(numClasses);
    for (std::size_t i = 0; i < parts.size(); ++i) counts[i % numClasses] += static_cast<double>(parts[i]);
    return counts;
}

std::shared_ptr<IModelable> IEstimator::fitResample(const TrainingFeatures& features,
                                                    const ClassTarget& target, Supervised::Resample& resample,
                                                    const Supervised::Preparation* preparation,
                                                    const Progress& progress) const {
    const auto classOf = [&](std::int32_t row) {
        return static_cast<std::size_t>(target.codes[static_cast<std::size_t>(row)]);
    };
    const auto fitOn = [&](const TrainingSet& data, std::vector<double> counts, std::int32_t firstRow) {
        std::shared_ptr<IModelable> model = fitEngine(data);
        FittedSchema schema = features.schema;
        schema.rowNames = nullptr;  // the records are no rows of the table
        // As in a fit on the resample alone, with two classes the one of its first row.
        const StringVector& classes = target.classes;
        adopt(*model, data, std::move(schema), std::move(counts),
              classes.size() == 2 ? classes[classOf(firstRow)] : WString());
        return model;
    };
    assert(!resample.rows.empty() || resample.multiplicities.empty());
    if (resample.rows.empty())
        return fitOn({features,
                      target,
                      priors(target.classes, classSizes(target, target.counts, {})),
                      {},
                      preparation,
                      progress},
                     target.counts, 0);
    if (takesMultiplicities()) {
        std::vector<double> counts = countRecords(target, resample.multiplicities);
        Vector shares = priors(target.classes, classSizes(target, counts, resample.multiplicities));
        const std::int32_t firstRow = resample.rows.front();
        resample.rows = std::vector<std::int32_t>();
        return fitOn({features, target, std::move(shares), resample.multiplicities, preparation, progress},
                     std::move(counts), firstRow);
    }
    const TrainingFeatures drawnFeatures = selectRows(features, resample.rows);
    const ClassTarget drawnTarget = selectRows(target, resample.rows);
    return fitOn({drawnFeatures,
                  drawnTarget,
                  priors(target.classes, classSizes(drawnTarget, drawnTarget.counts, {})),
                  {},
                  nullptr,
                  progress},
                 drawnTarget.counts, resample.rows.front());
}

/// Adds what all classifiers know of their training data.
void IEstimator::adopt(IModelable& model, const TrainingSet& data, FittedSchema schema,
                       std::vector<double> counts, const WString& defaultSuccess) const {
    model.setName(getName());
    model.schema = std::move(schema);
    model.setClassSchema({data.target.classes, data.priors, std::move(counts),
                          successClass.get().empty() ? defaultSuccess : successClass.get(),
                          successProbability.get()});
}

}  // namespace Tessel::Classification
