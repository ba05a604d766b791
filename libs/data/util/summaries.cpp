// The tables of descriptive statistics: one row per variable, one column per statistic.

#include <algorithm>
#include <cmath>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/util/statistics.h>

#include "data/util/compensated_sum.h"
#include "data/util/sample.h"
#include "data/util/tail_probabilities.h"

namespace Tessel::Util {
namespace {

using Numeric::kNaN;

const StringVector kSummaryNames{L"Count", L"Missing", L"Mean", L"Std. dev.", L"Min",
                                 L"Q1",    L"Median",  L"Q3",   L"Max"};
const StringVector kAdvancedNames{L"Variance",
                                  L"Std. error",
                                  L"Skewness",
                                  L"Excess kurtosis",
                                  L"Sum",
                                  L"Range",
                                  L"Interquartile range",
                                  L"Coef. of variation",
                                  L"1%",
                                  L"5%",
                                  L"10%",
                                  L"90%",
                                  L"95%",
                                  L"99%",
                                  L"Mode",
                                  L"Mode count"};
const StringVector kSixSigmaNames{L"Count",  L"Mean", L"Std. dev.", L"Lower limit", L"Upper limit",
                                  L"Target", L"Cp",   L"Cpl",       L"Cpu",         L"Cpk",
                                  L"Cpm",    L"DPM",  L"Yield",     L"Sigma level", L"Observed DPM"};

/// A table that grows by one variable at a time.
class StatisticsTable {
 public:
    StatisticsTable(WString name, StringVector statistics)
        : name_(std::move(name)), statistics_(std::move(statistics)), columns_(statistics_.size()) {}

    /// @param values  one per statistic, in the order of their names.
    void addRow(WString variable, const std::vector<double>& values) {
        rowNames_.push_back(std::move(variable));
        for (std::size_t i = 0; i < columns_.size(); ++i) columns_[i].push_back(values[i]);
    }

    DataFrame finish() {
        DataFrame table(name_);
        for (std::size_t i = 0; i < columns_.size(); ++i)
            table.append(DataFrameColumn(statistics_[i], std::move(columns_[i])));
        if (!columns_.empty()) table.setRowNames(rowNames_);
        return table;
    }

 private:
    WString name_;
    StringVector statistics_;
    StringVector rowNames_;
    std::vector<Vector> columns_;
};

/// Calls `statisticsOf(cells)` for each numeric column and makes a table of the answers.
template <class StatisticsOf>
DataFrame describe(const DataFrame& table, WString name, StringVector statistics,
                   const StatisticsOf& statisticsOf) {
    StatisticsTable result(std::move(name), std::move(statistics));
    for (const int column : Numeric::numericFeatures(table))
        result.addRow(table.getColName(column), statisticsOf(table(all, column).values()));
    return result.finish();
}

std::vector<double> basicStatistics(std::size_t numCells, const std::vector<double>& present) {
    constexpr double probabilities[] = {0.0, 0.25, 0.5, 0.75, 1.0};
    const Numeric::Deviations deviations = Numeric::deviationsOf(present);
    std::vector<double> row{static_cast<double>(present.size()),
                            static_cast<double>(numCells - present.size()), deviations.centre.value(),
                            deviations.standardDeviation()};
    const std::vector<double> quartiles =
        Numeric::percentilesOf(present, probabilities, PercentileDefinition::LINEAR);
    row.insert(row.end(), quartiles.begin(), quartiles.end());
    return row;
}

/// A value and how often it occurs.
struct Mode {
    double value = kNaN;
    std::size_t count = 0;
};

Mode modeOf(const std::vector<double>& ascending) {
    Mode mode;
    for (auto run = ascending.begin(); run != ascending.end();) {
        const auto end = std::upper_bound(run, ascending.end(), *run);
        const auto length = static_cast<std::size_t>(end - run);
        if (length > mode.count) mode = {*run, length};
        run = end;
    }
    return mode;
}

std::vector<double> advancedStatistics(std::span<const double> cells) {
    constexpr double probabilities[] = {0.01, 0.05, 0.1, 0.9, 0.95, 0.99, 0.0, 0.25, 0.75, 1.0};
    std::vector<double> present = Numeric::presentValues(cells);
    std::vector<double> row = basicStatistics(cells.size(), present);

    const Numeric::Deviations deviations = Numeric::deviationsOf(present);
    const double total = Numeric::sumOf(present.size(), [&](std::size_t i) { return present[i]; });
    const double deviation = deviations.standardDeviation();
    const double mean = deviations.centre.value();
    std::sort(present.begin(), present.end());
    const Mode mode = modeOf(present);
    const std::vector<double> quantiles =
        Numeric::percentilesOf(std::move(present), probabilities, PercentileDefinition::LINEAR);

    row.insert(row.end(),
               {deviations.variance(), deviation / std::sqrt(static_cast<double>(deviations.count())),
                deviations.skewness(), deviations.excessKurtosis(), total, quantiles[9] - quantiles[6],
                quantiles[8] - quantiles[7], mean == 0.0 ? kNaN : deviation / std::abs(mean)});
    row.insert(row.end(), quantiles.begin(), quantiles.begin() + 6);
    row.insert(row.end(), {mode.value, static_cast<double>(mode.count)});
    return row;
}

/// @throws ConstraintViolation for limits that describe no interval.
void requireLimits(const ToleranceLimits& limits) {
    const char* const name = "Tolerance limits";
    if (std::isnan(limits.lower) && std::isnan(limits.upper))
        throw ConstraintViolation(name, "A lower or an upper limit must be given.");
    if (std::isinf(limits.lower) || std::isinf(limits.upper) || std::isinf(limits.target))
        throw ConstraintViolation(name, "The values must be finite.");
    if (limits.lower >= limits.upper)
        throw ConstraintViolation(name, "The lower limit must be less than the upper limit.");
}

double shareOutside(const std::vector<double>& present, const ToleranceLimits& limits) {
    const auto outside = std::count_if(present.begin(), present.end(), [&](double value) {
        return value < limits.lower || value > limits.upper;  // false for a limit that is NaN
    });
    return static_cast<double>(outside) / static_cast<double>(present.size());
}

std::vector<double> sixSigmaStatistics(std::span<const double> cells, const ToleranceLimits& limits) {
    constexpr double perMillion = 1e6;
    const std::vector<double> present = Numeric::presentValues(cells);
    const Numeric::Deviations deviations = Numeric::deviationsOf(present);
    const Numeric::Centre& centre = deviations.centre;
    const double deviation = deviations.standardDeviation();
    const double target = std::isnan(limits.target) ? 0.5 * limits.lower + 0.5 * limits.upper : limits.target;

    // NaN for missing limits, and for all indices when nothing varies.
    const double unit = deviation > 0.0 ? deviation : kNaN;
    const double toLower = -centre.deviation(limits.lower) / unit;
    const double toUpper = centre.deviation(limits.upper) / unit;
    const double width = (limits.upper - limits.lower) / 6.0;
    const double defects = std::isnan(unit)
                               ? kNaN
                               : (std::isnan(toLower) ? 0.0 : Numeric::normalUpperTail(toLower)) +
                                     (std::isnan(toUpper) ? 0.0 : Numeric::normalUpperTail(toUpper));
    return {static_cast<double>(present.size()),
            centre.value(),
            deviation,
            limits.lower,
            limits.upper,
            target,
            width / unit,
            toLower / 3.0,
            toUpper / 3.0,
            std::fmin(toLower, toUpper) / 3.0,  // fmin prefers a number to NaN
            width / unit / std::hypot(1.0, centre.deviation(target) / unit),
            perMillion * defects,
            100.0 * (1.0 - defects),
            std::isnan(defects) ? kNaN : Numeric::normalUpperQuantile(defects),
            perMillion * shareOutside(present, limits)};
}

DataFrame sixSigmaOfOne(const WString& name, std::span<const double> cells, const ToleranceLimits& limits) {
    requireLimits(limits);
    StatisticsTable result(L"Six sigma summary", kSixSigmaNames);
    result.addRow(name, sixSigmaStatistics(cells, limits));
    return result.finish();
}

/// "2.5%" for 0.025; rounded to 12 decimals because 100 * 0.07 is not exactly 7.
WString percentName(double probability) {
    return Convert::toString(std::round(probability * 1e14) / 1e12) + L"%";
}

}  // namespace

DataFrame percentiles(const DataFrame& table, const Vector& probabilities, PercentileDefinition definition) {
    percentiles(Vector(), probabilities, definition);  // checks the arguments also when no column is numeric
    StringVector names;
    for (const double probability : probabilities) names.push_back(percentName(probability));
    return describe(table, L"Percentiles", names, [&](std::span<const double> cells) {
        return Numeric::percentilesOf(Numeric::presentValues(cells), probabilities, definition);
    });
}

DataFrame summary(const DataFrame& table) {
    return describe(table, L"Summary", kSummaryNames, [](std::span<const double> cells) {
        return basicStatistics(cells.size(), Numeric::presentValues(cells));
    });
}

DataFrame advancedSummary(const DataFrame& table) {
    StringVector names = kSummaryNames;
    names.append(kAdvancedNames);
    return describe(table, L"Advanced summary", names, advancedStatistics);
}

DataFrame sixSigmaSummary(const Vector& values, const ToleranceLimits& limits) {
    return sixSigmaOfOne(values.getName(), values, limits);
}

DataFrame sixSigmaSummary(const DataFrameColumn& column, const ToleranceLimits& limits) {
    return sixSigmaOfOne(column.getColName(), column.values(), limits);
}

DataFrame sixSigmaSummary(const DataFrame& table, const ToleranceLimits& limits) {
    requireLimits(limits);
    return describe(table, L"Six sigma summary", kSixSigmaNames,
                    [&](std::span<const double> cells) { return sixSigmaStatistics(cells, limits); });
}

}  // namespace Tessel::Util
