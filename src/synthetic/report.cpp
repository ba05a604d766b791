#include "synthetic/report.h"

#include <array>
#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

namespace Tessel::SyntheticDataGeneration {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

StringVector columnNames(const Fitted& fitted) {
    StringVector names;
    for (const FittedColumn& column : fitted.columns) names.push_back(column.name);
    return names;
}

}  // namespace

DataFrame parameterTable(const ParameterList& parameters) {
    const wchar_t* const kTitles[] = {L"Type", L"Value", L"Default", L"Constraints"};
    constexpr std::size_t kTexts[] = {2, 0, 1, 3};  // of `describe`
    StringVector names, texts[std::size(kTitles)];
    for (const ParameterRef& parameter : parameters) {
        names.push_back(parameter.description());
        const StringVector description = parameter.describe().second;
        for (std::size_t i = 0; i < std::size(kTitles); ++i) texts[i].push_back(description[kTexts[i]]);
    }
    DataFrame table(L"Parameter Info");
    for (std::size_t i = 0; i < std::size(kTitles); ++i) table.append(DataFrameColumn(kTitles[i], texts[i]));
    table.setRowNames(names);
    return table;
}

DataFrame bestMetalogTable(const Fitted& fitted) {
    Vector terms, values;
    StringVector types;
    for (const FittedColumn& column : fitted.columns) {
        const bool isFitted = column.isFitted();
        terms.push_back(isFitted ? column.numTerms() : kMissing);
        types.push_back(isFitted ? nameOf(column.type) : WString());
        values.push_back(isFitted ? column.candidates.front().value(
                                        static_cast<Engine::Dist::GoodnessOfFitType>(column.type))
                                  : kMissing);
    }
    DataFrame table(L"Best Metalog Fit");
    table.append(DataFrameColumn(L"Number of Terms", std::move(terms)));
    table.append(DataFrameColumn(L"Goodness of Fit Type", types));
    table.append(DataFrameColumn(L"Goodness of Fit", std::move(values)));
    table.setRowNames(columnNames(fitted));
    return table;
}

DataFrame coefficientTable(const FittedColumn& column) {
    DataFrame table(L"Metalog Coefficients: " + column.name);
    StringVector names;
    for (int i = 1; i <= column.numTerms(); ++i) names.push_back(L"a" + Convert::toString(i));
    table.append(DataFrameColumn(L"Coefficient", Vector(column.coefficients)));
    table.setRowNames(names);
    return table;
}

DataFrame goodnessOfFitTable(const FittedColumn& column) {
    using Engine::Dist::FitTest;
    using Engine::Dist::GoodnessOfFit;
    constexpr std::array<FitTest GoodnessOfFit::*, 3> kTests = {
        &GoodnessOfFit::chiSquare, &GoodnessOfFit::kolmogorovSmirnov, &GoodnessOfFit::andersonDarling};

    DataFrame table(L"Metalog Goodness of Fit: " + column.name);
    Vector terms;
    StringVector rowNames;
    for (const GoodnessOfFit& candidate : column.candidates) {
        terms.push_back(candidate.numParameters);
        rowNames.push_back(Convert::toString(candidate.numParameters) + L" terms");
    }
    table.append(DataFrameColumn(L"Number of Terms", std::move(terms)));
    for (const Term<GoodnessOfFitType>& term : vocabulary<GoodnessOfFitType>()) {
        Vector values, criticalValues;
        const auto index = static_cast<std::size_t>(term.value);
        for (const GoodnessOfFit& candidate : column.candidates) {
            values.push_back(candidate.value(static_cast<Engine::Dist::GoodnessOfFitType>(term.value)));
            if (index < kTests.size()) criticalValues.push_back((candidate.*kTests[index]).criticalValue);
        }
        table.append(DataFrameColumn(term.name, std::move(values)));
        if (index < kTests.size())
            table.append(
                DataFrameColumn(L"Critical Value: " + WString(term.name), std::move(criticalValues)));
    }
    table.setRowNames(rowNames);
    return table;
}

DataFrame curveTable(const FittedColumn& column) {
    DataFrame table(L"Inverse CDF: " + column.name);
    table.append(DataFrameColumn(L"Probability", Vector(column.curve.probabilities)));
    table.append(DataFrameColumn(L"Inverse CDF", Vector(column.curve.quantiles)));
    table.append(DataFrameColumn(L"Density", Vector(column.curve.densities)));
    return table;
}

DataFrame boundsTable(const Fitted& fitted) {
    Vector lower, upper;
    for (const FittedColumn& column : fitted.columns) {
        lower.push_back(column.isFitted() ? column.lower : kMissing);
        upper.push_back(column.isFitted() ? column.upper : kMissing);
    }
    DataFrame table(L"Metalog Bounds");
    table.append(DataFrameColumn(L"Lower", std::move(lower)));
    table.append(DataFrameColumn(L"Upper", std::move(upper)));
    table.setRowNames(columnNames(fitted));
    return table;
}

DataFrame sigmaTable(const Fitted& fitted, const DependenceFit* attempt, const WString& title,
                     const WString& what) {
    if (!attempt || attempt->result.sigma.empty()) throw SDGNoCorrelationSigma(Convert::toUtf8Lossy(what));
    const StringVector names = fitted.fittedNames();
    DataFrame table(title);
    for (std::size_t column = 0; column < names.size(); ++column) {
        Vector correlations;
        for (std::size_t row = 0; row < names.size(); ++row)
            correlations.push_back(attempt->result.sigma[row * names.size() + column]);
        table.append(DataFrameColumn(names[column], std::move(correlations)));
    }
    table.setRowNames(names);
    return table;
}

DataFrame correlationFitsTable(const Fitted& fitted) {
    StringVector types, copulas;
    IntVector statuses, repairs, limits;
    Vector thetas, degreesOfFreedom, statistics;
    for (const DependenceFit& attempt : fitted.attempts) {
        types.push_back(nameOf(attempt.type));
        copulas.push_back(nameOf(attempt.copula));
        statuses.push_back(attempt.isFitted ? 1 : 0);
        repairs.push_back(attempt.result.isRepaired ? 1 : 0);
        limits.push_back(attempt.result.isAtLimit ? 1 : 0);
        thetas.push_back(attempt.result.theta);
        degreesOfFreedom.push_back(attempt.result.degreesOfFreedom);
        statistics.push_back(attempt.result.statistic);
    }
    DataFrame table(L"Correlation Fits");
    table.append(DataFrameColumn(L"Type", types));
    table.append(DataFrameColumn(L"Copula", copulas));
    table.append(DataFrameColumn(L"Status", statuses));
    table.append(DataFrameColumn(L"Theta", std::move(thetas)));
    table.append(DataFrameColumn(L"Degrees of Freedom", std::move(degreesOfFreedom)));
    table.append(DataFrameColumn(L"Statistic", std::move(statistics)));
    table.append(DataFrameColumn(L"Repaired", repairs));
    table.append(DataFrameColumn(L"At Limit", limits));
    return table;
}

DataFrame logTable(const StringVector& log) {
    DataFrame table(L"Simulation Log");
    table.append(DataFrameColumn(L"Message", log));
    return table;
}

DataFrameVector forFittedColumns(const Fitted& fitted, DataFrame (*table)(const FittedColumn&)) {
    DataFrameVector tables;
    for (const FittedColumn& column : fitted.columns)
        if (column.isFitted()) tables.push_back(table(column));
    return tables;
}

}  // namespace Tessel::SyntheticDataGeneration
