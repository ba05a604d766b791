#include "framework/schema.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "data/column_access.h"

namespace Tessel {
namespace {

std::size_t at(std::int32_t position) { return static_cast<std::size_t>(position); }

/// The distinct texts of a column in the order in which its categories are numbered: texts by first
/// appearance, numbers ascending.
std::shared_ptr<const Dictionary> categoriesOf(const ColumnCells& cells) {
    std::vector<WString> texts;
    if (cells.isNumeric()) {
        for (const double value : cells.distinctNumbers()) texts.push_back(Convert::toString(value));
    } else {
        for (const std::int32_t code : cells.presentCodes()) texts.push_back(cells.dictionary()[code]);
    }
    return std::make_shared<const Dictionary>(std::move(texts));
}

/// For each code that the cells use, the code of the same text in `categories`, or their number when there is
/// none.
std::vector<std::int32_t> codeMap(const ColumnCells& cells, const Dictionary& categories) {
    const auto codeOf = [&](const WString& text) {
        const std::int32_t code = categories.find(text);
        return code == kMissingCode ? categories.size() : code;
    };
    std::vector<std::int32_t> map;
    if (cells.isNumeric()) {
        for (const double value : cells.distinctNumbers()) map.push_back(codeOf(Convert::toString(value)));
        map.push_back(kMissingCode);  // the rank of missing cells
    } else {
        map.assign(cells.dictionary().levels().size(), kMissingCode);
        for (const std::int32_t code : cells.presentCodes()) map[at(code)] = codeOf(cells.dictionary()[code]);
    }
    return map;
}

/// A text column without any text, as an empty column of a file may turn out, as missing numbers.
std::shared_ptr<ColumnCells> numbersOf(const WString& name, const ColumnCells& texts) {
    if (!texts.presentCodes().empty()) throw NonNumericData(Convert::toUtf8Lossy(name));
    return ColumnCells::ofNumbers(std::vector<double>(static_cast<std::size_t>(texts.numRows()),
                                                      std::numeric_limits<double>::quiet_NaN()));
}

/// Numbers the labels of a target by first appearance. Codes of missing cells are not below `numCodes`.
template <class Codes, class LabelOf>
void encodeClasses(const Codes& codes, std::size_t numCodes, ClassTarget& target, LabelOf labelOf) {
    std::vector<std::int32_t> classOf(numCodes, kMissingCode);
    target.codes.resize(codes.size());
    for (std::size_t row = 0; row < codes.size(); ++row) {
        const std::size_t code = static_cast<std::uint32_t>(codes[row]);
        if (code >= numCodes)
            throw ConstraintViolation(Convert::toUtf8Lossy(target.name),
                                      "The target has missing cells; remove these rows or fill the cells.");
        if (classOf[code] == kMissingCode) {
            classOf[code] = static_cast<std::int32_t>(target.classes.size());
            target.classes.push_back(labelOf(code));
        }
        target.codes[row] = classOf[code];
    }
    target.counts.resize(target.classes.size(), 0.0);
    for (const std::int32_t code : target.codes) target.counts[at(code)] += 1.0;
}

}  // namespace

StringVector FittedSchema::featureNames() const {
    StringVector names;
    for (const FeatureSchema& feature : features) names.push_back(feature.name);
    return names;
}

const Rescaling* InputScaling::find(const WString& column) const {
    const auto found = columns_.find(column);
    return found == columns_.end() ? nullptr : &found->second;
}

const Rescaling& InputScaling::at(const WString& column) const {
    const Rescaling* const rescaling = find(column);
    if (!rescaling) throw NotAValidColName("Scaled columns", Convert::toUtf8Lossy(column));
    return *rescaling;
}

FeatureColumn FeatureColumn::numeric(std::shared_ptr<ColumnCells> cells) {
    FeatureColumn column;
    column.cells_ = std::move(cells);
    return column;
}

FeatureColumn FeatureColumn::numeric(const std::shared_ptr<ColumnCells>& cells, const Rescaling& rescaling) {
    return numeric(ColumnCells::ofNumbers(Engine::Scaler::transform(cells->numbers(), rescaling)));
}

FeatureColumn FeatureColumn::categorical(std::shared_ptr<ColumnCells> cells, const Dictionary& categories) {
    FeatureColumn column;
    column.isCategorical_ = true;
    column.cells_ = std::move(cells);
    const std::vector<std::int32_t> map = codeMap(*column.cells_, categories);
    const auto mapAll = [&](const auto& codes) {
        auto mapped = std::make_shared<std::vector<std::int32_t>>();
        mapped->reserve(codes.size());
        for (const auto code : codes)
            mapped->push_back(static_cast<std::int32_t>(code) == kMissingCode
                                  ? kMissingCode
                                  : map[static_cast<std::size_t>(code)]);
        return mapped;
    };
    column.mapped_ = column.cells_->isNumeric() ? mapAll(column.cells_->rankCodes().codes)
                                                : mapAll(column.cells_->codes());
    column.codes_ = *column.mapped_;
    return column;
}

FeatureColumn FeatureColumn::select(RowSelector& selector, std::span<const std::int32_t> rows) const {
    assert(begin_ == 0 && count_ == std::dynamic_extent);
    FeatureColumn column;
    column.isCategorical_ = isCategorical_;
    column.cells_ = selector.select(cells_);
    if (!isCategorical_) return column;
    auto gathered = std::make_shared<std::vector<std::int32_t>>();
    gathered->reserve(rows.size());
    for (const std::int32_t row : rows) gathered->push_back(codes_[at(row)]);
    column.mapped_ = std::move(gathered);
    column.codes_ = *column.mapped_;
    return column;
}

FeatureColumn FeatureColumn::rows(std::size_t begin, std::size_t count) const {
    FeatureColumn some = *this;
    some.begin_ += begin;
    some.count_ = count;
    if (isCategorical_) some.codes_ = codes_.subspan(begin, count);
    return some;
}

TrainingFeatures selectRows(const TrainingFeatures& features, const std::vector<std::int32_t>& rows) {
    TrainingFeatures selected;
    selected.schema = features.schema;
    selected.schema.numRows = static_cast<int>(rows.size());
    const auto shared = std::make_shared<const RowIndexes>(rows);
    selected.schema.rowNames = RowNames::select(features.schema.rowNames, shared);
    RowSelector selector(shared);
    for (const FeatureColumn& column : features.columns)
        selected.columns.push_back(column.select(selector, rows));
    return selected;
}

TrainingFeatures readTrainingFeatures(const DataFrame& features, const IntVector& categoricalColumns) {
    if (features.getNumRows() == 0) throw TooFewNumRows(0);
    TrainingFeatures training;
    training.schema.indexColNames = features.getIndexedColNames();
    training.schema.rowNames = ColumnAccess::rowNames(features);
    training.schema.numRows = features.getNumRows();
    StringVector names;
    for (int position = 0; position < features.getNumCols(); ++position) {
        if (ColumnAccess::isIndex(features, position)) continue;
        const DataFrameColumn column = features(Util::all, position);
        const auto& cells = ColumnAccess::cells(column);
        const bool isListed = std::find(categoricalColumns.begin(), categoricalColumns.end(), position) !=
                              categoricalColumns.end();
        FeatureSchema feature{column.getColName(), !cells->isNumeric() || isListed, nullptr};
        if (feature.isCategorical) {
            feature.categories = categoriesOf(*cells);
            training.columns.push_back(FeatureColumn::categorical(cells, *feature.categories));
        } else {
            training.columns.push_back(FeatureColumn::numeric(cells));
        }
        names.push_back(feature.name);
        training.schema.features.push_back(std::move(feature));
    }
    if (training.columns.empty()) throw TooFewNumColumns(0);
    features.getColIndexes(names);  // scoring finds features by name, so a name must tell one column
    return training;
}

void requireFinite(const TrainingFeatures& features) {
    const auto isInfinite = [](double value) {
        return std::abs(value) == std::numeric_limits<double>::infinity();
    };
    for (std::size_t i = 0; i < features.columns.size(); ++i) {
        // Counting without a branch lets the compiler compare several cells at once.
        std::size_t numInfinite = 0;
        for (const double value : features.columns[i].numbers()) numInfinite += isInfinite(value);
        if (numInfinite > 0)
            throw ConstraintViolation(
                Convert::toUtf8Lossy(features.schema.features[i].name),
                "Infinite values are not allowed; remove them or mark them as missing.");
    }
}

/// Where the features are in a table. @throws NotAValidColName, DuplicateName
static IntVector positionsOf(const FittedSchema& schema, const DataFrame& table) {
    try {
        return table.getColIndexes(schema.featureNames());
    } catch (const NonExistingNamedIndex&) {
        for (const FeatureSchema& feature : schema.features)
            if (!table.isColumn(feature.name))
                throw NotAValidColName("Input table", Convert::toUtf8Lossy(feature.name));
        throw;
    }
}

std::vector<FeatureColumn> readFeatures(const FittedSchema& schema, const DataFrame& table) {
    std::vector<FeatureColumn> columns;
    columns.reserve(schema.features.size());
    const IntVector positions = positionsOf(schema, table);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const FeatureSchema& feature = schema.features[i];
        const auto& cells = ColumnAccess::cells(table, positions[i]);
        if (feature.isCategorical) {
            columns.push_back(FeatureColumn::categorical(cells, *feature.categories));
        } else {
            const auto numbers = cells->isNumeric() ? cells : numbersOf(feature.name, *cells);
            const Rescaling* const rescaling = schema.scaling.find(feature.name);
            columns.push_back(rescaling ? FeatureColumn::numeric(numbers, *rescaling)
                                        : FeatureColumn::numeric(numbers));
        }
    }
    return columns;
}

ClassTarget selectRows(const ClassTarget& target, const std::vector<std::int32_t>& rows) {
    ClassTarget selected;
    selected.name = target.name;
    selected.classes = target.classes;
    selected.counts.resize(target.classes.size(), 0.0);
    selected.codes.reserve(rows.size());
    for (const std::int32_t row : rows) {
        selected.codes.push_back(target.codes[at(row)]);
        selected.counts[at(selected.codes.back())] += 1.0;
    }
    return selected;
}

ClassTarget readClassTarget(const DataFrameColumn& target) {
    const ColumnCells& cells = *ColumnAccess::cells(target);
    ClassTarget read;
    read.name = target.getColName();
    if (cells.isNumeric()) {
        const RankCodes& ranks = cells.rankCodes();
        encodeClasses(ranks.codes, ranks.numDistinct, read,
                      [&](std::size_t rank) { return Convert::toString(cells.distinctNumbers()[rank]); });
    } else {
        const std::vector<WString>& levels = cells.dictionary().levels();
        encodeClasses(cells.codes(), levels.size(), read, [&](std::size_t code) { return levels[code]; });
    }
    return read;
}

}  // namespace Tessel
