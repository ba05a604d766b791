#include <algorithm>
#include <cmath>
#include <numeric>

#include <tessel/data/errors.h>
#include <tessel/data/util/association.h>

#include "data/util/compensated_sum.h"
#include "data/util/sample.h"

namespace Tessel::Util {
namespace {

using Numeric::kNaN;

/// @pre equally many values, none NaN.
double pearsonOf(const Numeric::Deviations& x, const Numeric::Deviations& y) {
    const double squaresX = x.powerSum(2);
    const double squaresY = y.powerSum(2);
    if (squaresX == 0.0 || squaresY == 0.0 || x.count() < 2) return kNaN;
    const double products =
        Numeric::sumOf(x.count(), [&](std::size_t i) { return x.scaled[i] * y.scaled[i]; });
    const double correlation = products / std::sqrt(squaresX * squaresY);
    return std::isnan(correlation) ? kNaN : std::clamp(correlation, -1.0, 1.0);
}

double pearsonOf(Numeric::Pairs pairs) {
    return pearsonOf(Numeric::deviationsOf(std::move(pairs.x)), Numeric::deviationsOf(std::move(pairs.y)));
}

/// Replaces the values by their ranks from 1, equal values by the average of theirs.
std::vector<double> averageRanks(const std::vector<double>& values) {
    struct Cell {
        double value;
        std::size_t position;
    };
    std::vector<Cell> cells(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) cells[i] = {values[i], i};
    std::sort(cells.begin(), cells.end(), [](const Cell& a, const Cell& b) { return a.value < b.value; });

    std::vector<double> ranks(values.size());
    for (std::size_t first = 0, end = 0; first < cells.size(); first = end) {
        while (end < cells.size() && cells[end].value == cells[first].value) ++end;
        const double rank = 0.5 * static_cast<double>(first + 1 + end);
        for (std::size_t i = first; i < end; ++i) ranks[cells[i].position] = rank;
    }
    return ranks;
}

double spearmanOf(const Numeric::Pairs& pairs) {
    return pearsonOf(Numeric::Pairs{averageRanks(pairs.x), averageRanks(pairs.y)});
}

std::int64_t pairsAmong(std::int64_t count) { return count * (count - 1) / 2; }

/// The number of pairs of equal elements of a sequence in which equal ones stand together.
template <class Iterator, class Equal>
std::int64_t tiedPairs(Iterator begin, Iterator end, Equal equal) {
    std::int64_t tied = 0;
    for (Iterator run = begin; run != end;) {
        Iterator next = run;
        while (next != end && equal(*next, *run)) ++next;
        tied += pairsAmong(next - run);
        run = next;
    }
    return tied;
}

/// Sorts the values, counting how many pairs stood in descending order: a merge sort from the bottom up.
std::int64_t sortCountingInversions(std::vector<double>& values) {
    std::int64_t inversions = 0;
    std::vector<double> merged(values.size());
    for (std::size_t width = 1; width < values.size(); width *= 2) {
        for (std::size_t begin = 0; begin < values.size(); begin += 2 * width) {
            const std::size_t middle = std::min(begin + width, values.size());
            const std::size_t end = std::min(begin + 2 * width, values.size());
            std::size_t left = begin;
            std::size_t right = middle;
            for (std::size_t out = begin; out < end; ++out) {
                if (left < middle && (right == end || values[left] <= values[right])) {
                    merged[out] = values[left++];
                } else {
                    inversions += static_cast<std::int64_t>(middle - left);
                    merged[out] = values[right++];
                }
            }
        }
        values.swap(merged);
    }
    return inversions;
}

double kendallOf(const Numeric::Pairs& pairs) {
    using Point = std::pair<double, double>;
    std::vector<Point> points(pairs.x.size());
    for (std::size_t i = 0; i < points.size(); ++i) points[i] = {pairs.x[i], pairs.y[i]};
    std::sort(points.begin(), points.end());
    const std::int64_t tiedInX = tiedPairs(points.begin(), points.end(),
                                           [](const Point& a, const Point& b) { return a.first == b.first; });
    const std::int64_t tiedInBoth = tiedPairs(points.begin(), points.end(), std::equal_to<>());

    // Among points ordered by x, and by y where x ties, the discordant pairs are the inversions of y.
    std::vector<double> y(points.size());
    std::transform(points.begin(), points.end(), y.begin(), [](const Point& point) { return point.second; });
    const std::int64_t discordant = sortCountingInversions(y);
    const std::int64_t tiedInY = tiedPairs(y.begin(), y.end(), std::equal_to<>());

    const std::int64_t total = pairsAmong(static_cast<std::int64_t>(points.size()));
    const std::int64_t concordant = total - tiedInX - tiedInY + tiedInBoth - discordant;
    const double comparable = static_cast<double>(total - tiedInX) * static_cast<double>(total - tiedInY);
    return comparable == 0.0 ? kNaN : static_cast<double>(concordant - discordant) / std::sqrt(comparable);
}

double correlationOf(CorrelationType type, const Numeric::Pairs& pairs) {
    switch (type) {
        case CorrelationType::PEARSON:
            return pearsonOf(pairs);
        case CorrelationType::SPEARMAN:
            return spearmanOf(pairs);
        case CorrelationType::KENDALL:
            return kendallOf(pairs);
    }
    throw ConstraintViolation("Correlation type", "The value must be a pre-defined set member.");
}

/// A column of a correlation matrix. Without missing cells its deviations, for Spearman those of its ranks,
/// serve for all pairs of such columns.
struct Variable {
    WString name;
    DataFrameColumn column;
    Numeric::Deviations deviations;  // empty when they cannot be shared
};

Variable makeVariable(const DataFrame& table, int position, CorrelationType type) {
    Variable variable{table.getColName(position), table(all, position), {}};
    std::vector<double> present = Numeric::presentValues(variable.column.values());
    if (present.size() < variable.column.values().size() || type == CorrelationType::KENDALL) return variable;
    if (type == CorrelationType::SPEARMAN) present = averageRanks(present);
    variable.deviations = Numeric::deviationsOf(std::move(present));
    return variable;
}

double correlationOf(CorrelationType type, const Variable& x, const Variable& y) {
    if (x.deviations.count() > 0 && y.deviations.count() > 0) return pearsonOf(x.deviations, y.deviations);
    return correlationOf(type, Numeric::completePairs(x.column.values(), y.column.values()));
}

/// 1, or NaN when the column varies too little to have a correlation with itself.
double selfCorrelation(const Variable& variable) {
    const std::vector<double> present = Numeric::presentValues(variable.column.values());
    const bool varies =
        std::adjacent_find(present.begin(), present.end(), std::not_equal_to<>()) != present.end();
    return varies ? 1.0 : kNaN;
}

}  // namespace

double pearsonCorrelation(const Vector& x, const Vector& y) {
    return pearsonOf(Numeric::completePairs(x, y));
}
double pearsonCorrelation(const DataFrameColumn& x, const DataFrameColumn& y) {
    return pearsonOf(Numeric::completePairs(x.values(), y.values()));
}

double spearmanCorrelation(const Vector& x, const Vector& y) {
    return spearmanOf(Numeric::completePairs(x, y));
}
double spearmanCorrelation(const DataFrameColumn& x, const DataFrameColumn& y) {
    return spearmanOf(Numeric::completePairs(x.values(), y.values()));
}

double kendallCorrelation(const Vector& x, const Vector& y) {
    return kendallOf(Numeric::completePairs(x, y));
}
double kendallCorrelation(const DataFrameColumn& x, const DataFrameColumn& y) {
    return kendallOf(Numeric::completePairs(x.values(), y.values()));
}

DataFrame correlationMatrix(const DataFrame& table, CorrelationType type) {
    correlationOf(type, Numeric::Pairs{});  // refuses an unknown type also for a table without columns
    std::vector<Variable> variables;
    for (const int position : Numeric::numericFeatures(table))
        variables.push_back(makeVariable(table, position, type));

    const std::size_t count = variables.size();
    std::vector<Vector> columns(count, Vector(count));
    for (std::size_t i = 0; i < count; ++i) {
        columns[i][i] = selfCorrelation(variables[i]);
        for (std::size_t j = 0; j < i; ++j)
            columns[i][j] = columns[j][i] = correlationOf(type, variables[i], variables[j]);
    }

    DataFrame matrix(L"Correlation matrix");
    StringVector names;
    for (std::size_t i = 0; i < count; ++i) {
        names.push_back(variables[i].name);
        matrix.append(DataFrameColumn(variables[i].name, std::move(columns[i])));
    }
    if (count > 0) matrix.setRowNames(names);
    return matrix;
}

}  // namespace Tessel::Util
