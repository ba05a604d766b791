#pragma once

#include <cmath>
#include <string>

#include <tessel/data/data_frame.h>

namespace Tessel::Testing {

/// The quantiles of a logistic distribution at (i - 1/2) / n, in an order that depends on `step`, which has
/// no divisor in common with n. A metalog of two terms is a logistic distribution: its coefficients are
/// location and scale.
inline Vector logisticSample(int n, double location, double scale, int step) {
    Vector values;
    for (int i = 0; i < n; ++i) {
        const double p = (i * step % n + 0.5) / n;
        values.push_back(location + scale * std::log(p / (1.0 - p)));
    }
    return values;
}

/// Three columns; "b" follows "a" and "c" does not.
inline DataFrame numericTable(int n = 211) {
    const Vector a = logisticSample(n, 10.0, 2.0, 17), noise = logisticSample(n, 0.0, 1.0, 73);
    Vector b, c;
    for (std::size_t i = 0; i < a.size(); ++i) {
        b.push_back(a[i] + noise[i]);
        c.push_back(std::exp(0.5 * noise[(i * 5 + 3) % noise.size()]));
    }
    DataFrame table(L"machines");
    table.append(DataFrameColumn(L"a", a));
    table.append(DataFrameColumn(L"b", b));
    table.append(DataFrameColumn(L"c", c));
    return table;
}

/// Whether two tables have the same columns with the same bits.
inline bool areIdentical(const DataFrame& first, const DataFrame& second) {
    if (first.getColNames() != second.getColNames() || first.getNumRows() != second.getNumRows())
        return false;
    for (int i = 0; i < first.getNumCols(); ++i) {
        const DataFrameColumn a = first(Util::all, i), b = second(Util::all, i);
        for (std::size_t row = 0; row < a.values().size(); ++row)
            if (a.values()[row] != b.values()[row]) return false;
    }
    return true;
}

}  // namespace Tessel::Testing
