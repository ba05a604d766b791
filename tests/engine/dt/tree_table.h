#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "data/column_cells.h"
#include "engine/dt/model.h"

namespace Tessel::Testing {

namespace DT = Engine::DT;

/// A table in memory, as training data and as cells to score.
class TreeTable {
 public:
    void addNumbers(std::vector<double> numbers) {
        columns_.push_back({ColumnCells::ofNumbers(std::move(numbers)), {}, 0});
    }
    void addCategories(std::vector<std::int32_t> codes, std::int32_t numCategories) {
        columns_.push_back({nullptr, std::move(codes), numCategories});
    }
    std::size_t numFeatures() const { return columns_.size(); }
    std::size_t numRows() const {
        return columns_[0].cells ? static_cast<std::size_t>(columns_[0].cells->numRows())
                                 : columns_[0].codes.size();
    }
    DT::TrainingData data() const {
        DT::TrainingData data;
        data.numRows = static_cast<int>(numRows());
        for (const Column& column : columns_)
            data.features.push_back(
                column.cells ? DT::TrainingFeature::numeric(*column.cells)
                             : DT::TrainingFeature::categorical(column.codes, column.numCategories));
        return data;
    }
    std::vector<DT::Cells> cells() const {
        std::vector<DT::Cells> cells;
        for (const Column& column : columns_)
            cells.push_back(column.cells ? DT::Cells{.numbers = column.cells->numbers(), .codes = {}}
                                         : DT::Cells{.numbers = {}, .codes = column.codes});
        return cells;
    }
    /// Position of a row's cell among the categories, or its number.
    double number(std::size_t feature, std::size_t row) const {
        return columns_[feature].cells->numbers()[row];
    }
    std::int32_t code(std::size_t feature, std::size_t row) const { return columns_[feature].codes[row]; }
    bool isCategorical(std::size_t feature) const { return columns_[feature].cells == nullptr; }
    bool isMissing(std::size_t feature, std::size_t row) const {
        return isCategorical(feature) ? code(feature, row) < 0 : std::isnan(number(feature, row));
    }

 private:
    struct Column {
        std::shared_ptr<ColumnCells> cells;
        std::vector<std::int32_t> codes;
        std::int32_t numCategories;
    };
    std::vector<Column> columns_;
};

inline DT::ClassificationModel classifier(std::size_t numClasses, const DT::Limits& limits = {}) {
    DT::ClassificationModel model;
    std::vector<WString> classes;
    for (std::size_t k = 0; k < numClasses; ++k)
        classes.push_back(WString(1, static_cast<wchar_t>(L'a' + k)));
    model.setClasses(classes);
    model.setLimits(limits);
    return model;
}

/// Whether two trees are the same to the last bit.
inline bool areSame(const DT::Tree& a, const DT::Tree& b) {
    if (a.nodes.size() != b.nodes.size() || a.categorySets != b.categorySets ||
        a.classWeights != b.classWeights)
        return false;
    for (std::size_t i = 0; i < a.nodes.size(); ++i) {
        const DT::Node &x = a.nodes[i], &y = b.nodes[i];
        if (x.parent != y.parent || x.left != y.left || x.feature != y.feature ||
            x.threshold != y.threshold || x.gain != y.gain || x.weight != y.weight ||
            x.response != y.response || x.impurity != y.impurity || x.numRecords != y.numRecords)
            return false;
    }
    return true;
}

}  // namespace Tessel::Testing
