#include "synthetic/quality.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <tessel/data/convert.h>
#include <tessel/data/util/association.h>
#include <tessel/data/util/statistics.h>

namespace Tessel::SyntheticDataGeneration {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

/// The names of the numeric columns that are no index columns. @throws DuplicateName
std::vector<WString> numericColumns(const DataFrame& table) {
    std::vector<WString> names;
    std::set<WString> seen;
    const StringVector indexNames = table.getIndexedColNames();
    for (int i = 0; i < table.getNumCols(); ++i) {
        const WString& name = table.getColName(i);
        if (indexNames.exists(name) || !table.isNumeric(i)) continue;
        if (!seen.insert(name).second) throw DuplicateName(Convert::toUtf8Lossy(name));
        names.push_back(name);
    }
    return names;
}

StringVector commonColumns(const DataFrame& original, const DataFrame& generated) {
    const std::vector<WString> others = numericColumns(generated);
    const std::set<WString> available(others.begin(), others.end());
    StringVector common;
    for (const WString& name : numericColumns(original))
        if (available.contains(name)) common.push_back(name);
    return common;
}

std::vector<double> sortedPresent(std::span<const double> cells) {
    std::vector<double> values;
    std::copy_if(cells.begin(), cells.end(), std::back_inserter(values),
                 [](double value) { return !std::isnan(value); });
    std::sort(values.begin(), values.end());
    return values;
}

struct Columns {
    WString name;
    DataFrameColumn original, generated;
};

DataFrame distanceTable(const std::vector<Columns>& columns) {
    Vector distances, originalCounts, generatedCounts;
    for (const Columns& column : columns) {
        const std::vector<double> a = sortedPresent(column.original.values());
        const std::vector<double> b = sortedPresent(column.generated.values());
        distances.push_back(kolmogorovSmirnovDistance(a, b));
        originalCounts.push_back(static_cast<double>(a.size()));
        generatedCounts.push_back(static_cast<double>(b.size()));
    }
    DataFrame table(L"Quality: Distances");
    table.append(DataFrameColumn(L"Kolmogorov-Smirnov", std::move(distances)));
    table.append(DataFrameColumn(L"Original Count", std::move(originalCounts)));
    table.append(DataFrameColumn(L"Generated Count", std::move(generatedCounts)));
    return table;
}

DataFrame momentTable(const std::vector<Columns>& columns) {
    struct Moment {
        const wchar_t* name;
        double (*of)(const DataFrameColumn&);
    };
    const Moment kMoments[] = {{L"Mean", &Util::mean},
                               {L"Std. dev.", &Util::standardDeviation},
                               {L"Skewness", &Util::skewness},
                               {L"Excess kurtosis", &Util::excessKurtosis}};
    DataFrame table(L"Quality: Moments");
    for (const Moment& moment : kMoments) {
        Vector original, generated;
        for (const Columns& column : columns) {
            original.push_back(moment.of(column.original));
            generated.push_back(moment.of(column.generated));
        }
        table.append(DataFrameColumn(L"Original " + WString(moment.name), std::move(original)));
        table.append(DataFrameColumn(L"Generated " + WString(moment.name), std::move(generated)));
    }
    return table;
}

DataFrame quantileTable(const std::vector<Columns>& columns) {
    const wchar_t* const kNames[] = {L"Min", L"1%", L"5%", L"25%", L"50%", L"75%", L"95%", L"99%", L"Max"};
    const Vector probabilities{0.0, 0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99, 1.0};
    std::vector<Vector> original(probabilities.size()), generated(probabilities.size());
    for (const Columns& column : columns) {
        const Vector a = Util::percentiles(column.original, probabilities);
        const Vector b = Util::percentiles(column.generated, probabilities);
        for (std::size_t i = 0; i < probabilities.size(); ++i) {
            original[i].push_back(a[i]);
            generated[i].push_back(b[i]);
        }
    }
    DataFrame table(L"Quality: Quantiles");
    for (std::size_t i = 0; i < probabilities.size(); ++i) {
        table.append(DataFrameColumn(L"Original " + WString(kNames[i]), std::move(original[i])));
        table.append(DataFrameColumn(L"Generated " + WString(kNames[i]), std::move(generated[i])));
    }
    return table;
}

DataFrame rankCorrelations(const DataFrame& table, const StringVector& names, const WString& title) {
    DataFrame correlations =
        Util::correlationMatrix(table(Util::all, names), Util::CorrelationType::SPEARMAN);
    correlations.setName(title);
    return correlations;
}

DataFrame difference(const DataFrame& original, const DataFrame& generated) {
    DataFrame table(L"Rank Correlation: Difference");
    for (int i = 0; i < original.getNumCols(); ++i) {
        const DataFrameColumn a = original(Util::all, i), b = generated(Util::all, i);
        Vector differences = b.toDoubleVector();
        for (std::size_t row = 0; row < differences.size(); ++row) differences[row] -= a.values()[row];
        table.append(DataFrameColumn(original.getColName(i), std::move(differences)));
    }
    table.setRowNames(original.getRowNames());
    return table;
}

/// The largest numbers of the two tables with where they stand.
DataFrame summaryTable(const DataFrame& distances, const DataFrame& differences) {
    double largestDistance = kMissing, largestDifference = kMissing;
    WString column, first, second;
    const DataFrameColumn distance = distances(Util::all, 0);
    for (int i = 0; i < distance.getNumRows(); ++i) {
        const double found = distance.values()[static_cast<std::size_t>(i)];
        if (std::isnan(found) || found <= largestDistance) continue;
        largestDistance = found;
        column = distances.getRowName(i);
    }
    for (int j = 1; j < differences.getNumCols(); ++j) {
        const DataFrameColumn cells = differences(Util::all, j);
        for (int i = 0; i < j; ++i) {
            const double found = std::abs(cells.values()[static_cast<std::size_t>(i)]);
            if (std::isnan(found) || found <= largestDifference) continue;
            largestDifference = found;
            first = differences.getColName(i);
            second = differences.getColName(j);
        }
    }
    DataFrame table(L"Quality: Summary");
    table.append(DataFrameColumn(L"Largest Kolmogorov-Smirnov Distance", Vector{largestDistance}));
    table.append(DataFrameColumn(L"Column", StringVector{column}));
    table.append(DataFrameColumn(L"Largest Rank Correlation Difference", Vector{largestDifference}));
    table.append(DataFrameColumn(L"First Column", StringVector{first}));
    table.append(DataFrameColumn(L"Second Column", StringVector{second}));
    return table;
}

}  // namespace

double kolmogorovSmirnovDistance(std::span<const double> a, std::span<const double> b) {
    if (a.empty() || b.empty()) return kMissing;
    double largest = 0.0;
    std::size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        // Past all values that are equal: between them the functions are not compared.
        const double value = std::min(a[i], b[j]);
        while (i < a.size() && a[i] <= value) ++i;
        while (j < b.size() && b[j] <= value) ++j;
        largest = std::max(largest, std::abs(static_cast<double>(i) / static_cast<double>(a.size()) -
                                             static_cast<double>(j) / static_cast<double>(b.size())));
    }
    return largest;
}

DataFrameVector qualityReport(const DataFrame& original, const DataFrame& generated) {
    const StringVector names = commonColumns(original, generated);
    if (names.empty()) throw TooFewNumColumns();
    std::vector<Columns> columns;
    for (const WString& name : names)
        columns.push_back({name, original(Util::all, name), generated(Util::all, name)});

    DataFrameVector tables;
    for (DataFrame table : {distanceTable(columns), momentTable(columns), quantileTable(columns)}) {
        table.setRowNames(names);
        tables.push_back(std::move(table));
    }
    const DataFrame first = rankCorrelations(original, names, L"Rank Correlation: Original");
    const DataFrame second = rankCorrelations(generated, names, L"Rank Correlation: Generated");
    const DataFrame differences = difference(first, second);
    DataFrameVector report;
    report.push_back(summaryTable(tables[std::size_t{0}], differences));
    report.append(tables);
    report.push_back(first);
    report.push_back(second);
    report.push_back(differences);
    return report;
}

}  // namespace Tessel::SyntheticDataGeneration
