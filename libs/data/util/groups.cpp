#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>

#include "data/column_access.h"
#include "data/util/distinct_numbers.h"

namespace Tessel::Util {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

/// Rows put into groups that are numbered in order of first appearance.
struct Grouping {
    std::vector<std::int32_t> groups;  // per row, or kMissingCode
    StringVector names;
};

Grouping groupingOf(const ColumnCells& cells) {
    Grouping grouping;
    grouping.groups.reserve(static_cast<std::size_t>(cells.numRows()));
    if (cells.isNumeric()) {
        DistinctNumbers<double> distinct;
        for (const double number : cells.numbers())
            grouping.groups.push_back(
                std::isnan(number) ? kMissingCode : static_cast<std::int32_t>(distinct.encode(number)));
        for (const double number : distinct.distinct()) grouping.names.push_back(Convert::toString(number));
        return grouping;
    }
    std::vector<std::int32_t> groupOfCode(cells.dictionary().levels().size(), kMissingCode);
    for (const std::int32_t code : cells.presentCodes()) {
        groupOfCode[static_cast<std::size_t>(code)] = static_cast<std::int32_t>(grouping.names.size());
        grouping.names.push_back(cells.dictionary()[code]);
    }
    for (const std::int32_t code : cells.codes())
        grouping.groups.push_back(code == kMissingCode ? kMissingCode
                                                       : groupOfCode[static_cast<std::size_t>(code)]);
    return grouping;
}

/// The values of all groups, one group after the other, each in the order of the rows.
class GroupedValues {
 public:
    GroupedValues(std::span<const double> values, const Grouping& grouping)
        : starts_(grouping.names.size() + 1, 0) {
        const auto counts = [&](std::size_t row) {
            return grouping.groups[row] != kMissingCode && !std::isnan(values[row]);
        };
        for (std::size_t row = 0; row < values.size(); ++row)
            if (counts(row)) ++starts_[static_cast<std::size_t>(grouping.groups[row]) + 1];
        std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
        values_.resize(starts_.back());
        std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
        for (std::size_t row = 0; row < values.size(); ++row)
            if (counts(row)) values_[next[static_cast<std::size_t>(grouping.groups[row])]++] = values[row];
    }

    std::size_t size() const { return starts_.size() - 1; }
    std::span<double> operator[](std::size_t group) {
        return std::span(values_).subspan(starts_[group], starts_[group + 1] - starts_[group]);
    }

 private:
    std::vector<std::size_t> starts_;
    std::vector<double> values_;
};

double mean(std::span<const double> values) {
    if (values.empty()) return kMissing;
    const auto count = static_cast<double>(values.size());
    double sum = 0.0;
    for (const double value : values) sum += value;
    const double first = sum / count;
    if (!std::isfinite(first)) return first;
    // The mean of what is left over takes back the rounding of the sum.
    double rest = 0.0;
    for (const double value : values) rest += value - first;
    return first + rest / count;
}

/// Changes the order of the values.
double median(std::span<double> values) {
    if (values.empty()) return kMissing;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) return *middle;
    return std::midpoint(*std::max_element(values.begin(), middle), *middle);
}

template <class Statistic>
DataFrame groupTable(const WString& title, std::span<const double> values, const Grouping& grouping,
                     Statistic&& statistic) {
    GroupedValues grouped(values, grouping);
    Vector column(grouped.size());
    for (std::size_t group = 0; group < grouped.size(); ++group) column[group] = statistic(grouped[group]);
    DataFrame table;
    table.append(DataFrameColumn(title, std::move(column)));
    table.setRowNames(grouping.names);
    return table;
}

template <class Statistic>
DataFrame groupTable(const WString& title, const Vector& values, const StringVector& groups,
                     Statistic&& statistic) {
    if (values.size() != groups.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(values.size()),
                                  static_cast<std::int64_t>(groups.size()));
    const Grouping grouping = groupingOf(*ColumnCells::ofTexts(groups.elements()));
    return groupTable(title, std::span(values.elements()), grouping, statistic);
}

template <class Statistic>
DataFrame groupTable(const WString& title, const DataFrameColumn& values, const DataFrameColumn& groups,
                     Statistic&& statistic) {
    if (values.getNumRows() != groups.getNumRows())
        throw NumRowsMismatch(values.getNumRows(), groups.getNumRows());
    const Grouping grouping = groupingOf(*ColumnAccess::cells(groups));
    if (values.isNumeric()) return groupTable(title, values.values(), grouping, statistic);
    const Vector parsed = values.toDoubleVector();
    return groupTable(title, std::span(parsed.elements()), grouping, statistic);
}

}  // namespace

DataFrame groupMean(const Vector& values, const StringVector& groups) {
    return groupTable(L"Mean", values, groups, mean);
}
DataFrame groupMean(const DataFrameColumn& values, const DataFrameColumn& groups) {
    return groupTable(L"Mean", values, groups, mean);
}
DataFrame groupMedian(const Vector& values, const StringVector& groups) {
    return groupTable(L"Median", values, groups, median);
}
DataFrame groupMedian(const DataFrameColumn& values, const DataFrameColumn& groups) {
    return groupTable(L"Median", values, groups, median);
}

}  // namespace Tessel::Util
