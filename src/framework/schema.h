#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include <tessel/data/data_frame.h>
#include <tessel/framework/pmml.h>

#include "data/column_cells.h"
#include "data/row_names.h"
#include "data/scaler.h"

// The border between tables and engines: what a fitted model remembers of its training data, and how the
// columns of a table become the spans that engines work on.

namespace Tessel {

/// A feature as a model knows it. Categories are the texts met in training; their codes are positions here.
struct FeatureSchema {
    WString name;
    bool isCategorical = false;
    std::shared_ptr<const Dictionary> categories;  // null for numeric features
    std::int32_t numCategories() const { return categories ? categories->size() : 0; }
};

/// The map x -> (x - shift) * scale.
using Engine::Scaler::Rescaling;

/// The scaling that belongs to a model: its columns by name.
class InputScaling : public PMML::ColumnScaling {
 public:
    bool isScaled(const WString& column) const override { return find(column) != nullptr; }
    double getShift(const WString& column) const override { return at(column).shift; }
    double getScale(const WString& column) const override { return at(column).scale; }

    bool isEmpty() const { return columns_.empty(); }
    void add(const WString& column, const Rescaling& rescaling) { columns_[column] = rescaling; }
    /// Null when the column is not scaled.
    const Rescaling* find(const WString& column) const;

 private:
    const Rescaling& at(const WString& column) const;

    std::unordered_map<WString, Rescaling> columns_;
};

/// What every supervised model remembers of its training data.
struct FittedSchema {
    std::vector<FeatureSchema> features;
    StringVector indexColNames;
    WString targetName;
    RowNames::Pointer rowNames;
    int numRows = 0;
    InputScaling scaling;  // numeric features only; of models that were read from a text

    StringVector featureNames() const;
    StringVector trainingRowNames() const { return RowNames::all(rowNames, numRows); }
};

/// The cells of one feature in a table, in the terms of the model: numbers (NaN = missing) or category codes
/// (`kMissingCode` = missing, the number of categories = never met in training). Keeps alive what its spans
/// show.
class FeatureColumn {
 public:
    /// @pre the cells are numeric.
    static FeatureColumn numeric(std::shared_ptr<ColumnCells> cells);
    /// The same after a change of scale, which copies the cells.
    static FeatureColumn numeric(const std::shared_ptr<ColumnCells>& cells, const Rescaling& rescaling);
    /// Cells of either type; numbers are matched by their text.
    static FeatureColumn categorical(std::shared_ptr<ColumnCells> cells, const Dictionary& categories);

    /// The cells of some rows, which `selector` holds. @param rows  the same rows.
    FeatureColumn select(RowSelector& selector, std::span<const std::int32_t> rows) const;

    /// Neighbouring rows, to be scored.
    FeatureColumn rows(std::size_t begin, std::size_t count) const;

    bool isCategorical() const { return isCategorical_; }
    /// The whole column, of which this may be some rows.
    const ColumnCells& cells() const { return *cells_; }
    /// Rows taken out of a column are gathered at the first call.
    std::span<const double> numbers() const {
        return isCategorical_ ? std::span<const double>() : cells_->numbers().subspan(begin_, count_);
    }
    std::span<const std::int32_t> codes() const { return codes_; }

 private:
    bool isCategorical_ = false;
    std::shared_ptr<ColumnCells> cells_;
    std::shared_ptr<const std::vector<std::int32_t>> mapped_;
    std::span<const std::int32_t> codes_;
    std::size_t begin_ = 0, count_ = std::dynamic_extent;  // of the numbers
};

/// Features to fit on, with the schema that the model will keep.
struct TrainingFeatures {
    FittedSchema schema;
    std::vector<FeatureColumn> columns;
};

/// The same features of some rows, repetitions allowed. @pre every row exists.
TrainingFeatures selectRows(const TrainingFeatures& features, const std::vector<std::int32_t>& rows);

/// Reads the features of a training table: all columns but index columns. Text columns are categorical, and
/// so are the numeric ones listed.
/// @param categoricalColumns  positions of columns of `features`.
/// @throws TooFewNumRows, TooFewNumColumns, DuplicateName
TrainingFeatures readTrainingFeatures(const DataFrame& features, const IntVector& categoricalColumns = {});

/// Refuses infinite numbers. Reads every cell: a family whose engine shows what it met asks only then.
/// @throws ConstraintViolation
void requireFinite(const TrainingFeatures& features);

/// Reads the same features from a table to score, by name. A categorical feature takes numbers by their text.
/// @throws NotAValidColName for a feature that the table lacks, NonNumericData for texts in a numeric one.
std::vector<FeatureColumn> readFeatures(const FittedSchema& schema, const DataFrame& table);

/// A classification target: distinct labels in order of first appearance, and the label of each row.
struct ClassTarget {
    WString name;
    StringVector classes;
    std::vector<std::int32_t> codes;
    std::vector<double> counts;  // rows per class
};

/// The labels of some rows; the classes stay, even those that no row has.
ClassTarget selectRows(const ClassTarget& target, const std::vector<std::int32_t>& rows);

/// @throws ConstraintViolation for a missing cell.
ClassTarget readClassTarget(const DataFrameColumn& target);

}  // namespace Tessel
