#include "synthetic/synthetic_data_generator.h"

#include <new>
#include <set>

#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "data/io/parallel.h"

namespace Tessel {

using namespace SyntheticDataGeneration;

namespace {

/// The columns that are no index columns. @throws DuplicateName
std::vector<DataFrameColumn> columnsOf(const DataFrame& table) {
    std::vector<DataFrameColumn> columns;
    std::set<WString> names;
    const StringVector indexNames = table.getIndexedColNames();
    const std::set<WString> indexColumns(indexNames.begin(), indexNames.end());
    for (int i = 0; i < table.getNumCols(); ++i) {
        const WString& name = table.getColName(i);
        if (indexColumns.contains(name)) continue;
        if (!names.insert(name).second) throw DuplicateName(narrowText(name));
        columns.push_back(table(Util::all, i));
    }
    return columns;
}

/// @throws NotAValidColName for a column of the parameter that the table lacks.
template <class T>
void requireColumns(const ColumnParameter<T>& parameter, const std::vector<DataFrameColumn>& columns) {
    for (const auto& [name, value] : parameter.get()) {
        const bool exists = std::any_of(columns.begin(), columns.end(), [&wanted = name](const auto& column) {
            return column.getColName() == wanted;
        });
        if (!exists) throw NotAValidColName(parameter.getNarrowDescription(), narrowText(name));
    }
}

}  // namespace

ISyntheticDataGenerator::ISyntheticDataGenerator() : IEstimatable(L"Synthetic Data Generator") {}

IEstimatable::LadonIdentity ISyntheticDataGenerator::ladonIdentity() const {
    return {Ladon::Keyword::TRANSFORMER, Ladon::TaskKind::TRANSFORMATION,
            Ladon::ModelAlgorithm::SDG_TRANSFORMER};
}

ParameterList ISyntheticDataGenerator::parameters() {
    return {metalogAuto,
            numMetalogTerms,
            metalogLowerBound,
            metalogUpperBound,
            useMinMaxAsBounds,
            metalogGoodnessOfFitType,
            computeMetalogCurves,
            correlationType,
            copulas,
            generateSample,
            randomSeed,
            randomGenerator,
            samplingMethod,
            randomStream,
            sampleSize,
            expression};
}

void ISyntheticDataGenerator::validate() const {
    const auto validateAll = [](const auto&... some) { (some.validate(), ...); };
    validateAll(metalogAuto, numMetalogTerms, metalogLowerBound, metalogUpperBound, useMinMaxAsBounds,
                metalogGoodnessOfFitType, computeMetalogCurves, correlationType, copulas, generateSample,
                randomGenerator, samplingMethod, randomStream);
    if (correlationType.get() == CorrelationType::COPULA && copulas.get().empty())
        throw ConstraintViolation(copulas.getNarrowDescription(), "At least one copula must be selected.");
    IEstimatable::validate();  // what is left
}

ColumnTask ISyntheticDataGenerator::taskOf(const WString& column) const {
    ColumnTask task;
    task.isAuto = metalogAuto.get();
    task.numTerms = numMetalogTerms.getFor(column, 0);
    task.lower = metalogLowerBound.getFor(column, task.lower);
    task.upper = metalogUpperBound.getFor(column, task.upper);
    task.usesSmallest = useMinMaxAsBounds.get() && !metalogLowerBound.isSetFor(column);
    task.usesLargest = useMinMaxAsBounds.get() && !metalogUpperBound.isSetFor(column);
    task.type = metalogGoodnessOfFitType.getFor(column, kDefaultGoodnessOfFit);
    task.computesCurve = computeMetalogCurves.get();
    return task;
}

void ISyntheticDataGenerator::fit(const DataFrame& table) {
    validate();
    const std::vector<DataFrameColumn> columns = columnsOf(table);
    requireColumns(numMetalogTerms, columns);
    requireColumns(metalogLowerBound, columns);
    requireColumns(metalogUpperBound, columns);
    requireColumns(metalogGoodnessOfFitType, columns);

    Fitted fitted;
    StringVector log;
    try {
        fitted.columns.resize(columns.size());
        std::vector<StringVector> logs(columns.size());
        const std::size_t numCells = columns.size() * static_cast<std::size_t>(table.getNumRows());
        IO::forEachIndex(columns.size(), numCells, [&](std::size_t i) {
            fitted.columns[i] = fitColumn(columns[i], taskOf(columns[i].getColName()), logs[i]);
        });
        for (const StringVector& lines : logs) log.append(lines);

        std::vector<DataFrameColumn> withDistribution;
        for (std::size_t i = 0; i < columns.size(); ++i)
            if (fitted.columns[i].isFitted()) withDistribution.push_back(columns[i]);
        fitted.attempts = fitDependence(withDistribution, correlationType.get(), copulas.get(), log);
    } catch (const std::bad_alloc&) {
        throw BadAllocation("Data");
    }
    setModelName(table.getName());
    fitted_ = std::move(fitted);
    log_ = std::move(log);
}

}  // namespace Tessel
