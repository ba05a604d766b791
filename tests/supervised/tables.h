#pragma once

#include <cmath>
#include <string>

#include <tessel/data/data_frame.h>

namespace Tessel::Testing {

/// Deterministic numbers in [0, 1).
class Noise {
 public:
    explicit Noise(unsigned seed) : state_(seed) {}
    double operator()() {
        state_ = state_ * 1664525u + 1013904223u;
        return static_cast<double>(state_ >> 8) / 16777216.0;
    }

 private:
    unsigned state_;
};

/// A deterministic table that classifiers of every family can learn from: two numeric features that tell the
/// classes apart, a categorical one that does so in part, some missing cells, and an index column.
struct LabelledTable {
    DataFrame features;
    DataFrameColumn target;
};

inline LabelledTable labelledTable(int numRows, int numClasses) {
    Vector first, second;
    StringVector group, label, id;
    Noise uniform(12345);
    for (int row = 0; row < numRows; ++row) {
        const int k = row % numClasses;
        first.push_back(2.0 * k + uniform() + uniform());
        second.push_back(row % 11 == 5 ? std::nan("") : uniform() - k);
        group.push_back(row % 13 == 7 ? L"" : uniform() < 0.7 ? L"g" + std::to_wstring(k) : L"other");
        label.push_back(L"class " + std::to_wstring(k));
        id.push_back(L"#" + std::to_wstring(row));
    }
    LabelledTable table;
    table.features.append(DataFrameColumn(L"id", id));
    table.features.append(DataFrameColumn(L"first", first));
    table.features.append(DataFrameColumn(L"second", second));
    table.features.append(DataFrameColumn(L"group", group));
    table.features.setIndexedColNames({L"id"});
    table.target = DataFrameColumn(L"label", label);
    return table;
}

/// The same features with a numeric target "y" that follows them.
inline LabelledTable numericTable(int numRows) {
    LabelledTable table = labelledTable(numRows, 4);
    Vector target;
    for (int row = 0; row < numRows; ++row) {
        const double first = table.features(row, L"first").toDouble();
        target.push_back(std::sin(first) + 0.25 * first + 0.01 * (row % 7));
    }
    table.target = DataFrameColumn(L"y", target);
    return table;
}

}  // namespace Tessel::Testing
