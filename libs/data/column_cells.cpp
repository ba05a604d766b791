#include "data/column_cells.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "data/sorted_records.h"

namespace Tessel {
namespace {

template <class T>
std::vector<T> gather(const std::vector<T>& source, const RowIndexes& rows) {
    std::vector<T> gathered(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) gathered[i] = source[static_cast<std::size_t>(rows[i])];
    return gathered;
}

RankCodes rank(std::span<const double> numbers) {
    const std::vector<SortedRecord> sorted = RecordSorter().sort(
        static_cast<std::uint32_t>(numbers.size()), [&](std::uint32_t row) { return numbers[row]; });
    RankCodes ranks;
    ranks.codes.resize(numbers.size());
    std::size_t numMissing = 0;
    while (numMissing < sorted.size() && sorted[numMissing].startsValue() == 0) ++numMissing;
    for (std::size_t i = numMissing; i < sorted.size(); ++i) {
        ranks.numDistinct += sorted[i].startsValue();
        ranks.codes[sorted[i].record()] = ranks.numDistinct - 1;
    }
    for (std::size_t i = 0; i < numMissing; ++i) ranks.codes[sorted[i].record()] = ranks.numDistinct;
    if (numMissing < sorted.size()) {
        ranks.smallest = numbers[sorted[numMissing].record()] + 0.0;  // 0 rather than -0
        ranks.largest = numbers[sorted.back().record()] + 0.0;
    }
    return ranks;
}

int checkedNumRows(std::size_t numRows) {
    if (numRows > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw IndexOutOfRange(static_cast<std::int64_t>(numRows), std::numeric_limits<int>::max());
    return static_cast<int>(numRows);
}

}  // namespace

ColumnCells::ColumnCells(TypeCode type, std::size_t numRows)
    : type_(type), numRows_(checkedNumRows(numRows)) {}

std::shared_ptr<ColumnCells> ColumnCells::ofNumbers(std::vector<double> numbers) {
    std::shared_ptr<ColumnCells> cells(new ColumnCells(TypeCode::NUMERIC, numbers.size()));
    cells->numbers_ = std::move(numbers);
    return cells;
}

std::shared_ptr<ColumnCells> ColumnCells::ofCodes(std::shared_ptr<const Dictionary> dictionary,
                                                  std::vector<std::int32_t> codes) {
    std::shared_ptr<ColumnCells> cells(new ColumnCells(TypeCode::TEXT, codes.size()));
    cells->codes_ = std::move(codes);
    cells->dictionary_ = std::move(dictionary);
    return cells;
}

std::shared_ptr<ColumnCells> ColumnCells::ofTexts(std::span<const WString> texts) {
    TextEncoder encoder;
    std::vector<std::int32_t> codes(texts.size());
    std::transform(texts.begin(), texts.end(), codes.begin(),
                   [&](const WString& text) { return encoder.encode(text); });
    return ofCodes(encoder.finish(), std::move(codes));
}

bool ColumnCells::isMissing(int row) const {
    return isNumeric() ? std::isnan(number(row)) : code(row) == kMissingCode;
}

WString ColumnCells::text(int row) const {
    if (isMissing(row)) return {};
    return isNumeric() ? Convert::toString(number(row)) : dictionary()[code(row)];
}

std::span<const double> ColumnCells::numbers() const {
    if (!root_) return numbers_;
    return gatheredNumbers_.get([this] { return gather(root_->numbers_, *selection_); });
}

std::span<const std::int32_t> ColumnCells::codes() const {
    if (!root_) return codes_;
    return gatheredCodes_.get([this] { return gather(root_->codes_, *selection_); });
}

const RankCodes& ColumnCells::rankCodes() const {
    return ranks_.get([this] { return rank(numbers()); });
}

const std::vector<double>& ColumnCells::distinctNumbers() const {
    return distinctNumbers_.get([this] {
        const RankCodes& ranks = rankCodes();
        std::vector<double> distinct(ranks.numDistinct);
        const std::span<const double> all = numbers();
        for (std::size_t row = 0; row < all.size(); ++row)
            if (ranks.codes[row] < ranks.numDistinct)
                distinct[ranks.codes[row]] = all[row] + 0.0;  // 0 rather than -0
        return distinct;
    });
}

const std::vector<std::int32_t>& ColumnCells::presentCodes() const {
    return presentCodes_.get([this] {
        std::vector<std::int32_t> present;
        std::vector<bool> seen(dictionary().levels().size(), false);
        for (int row = 0; row < numRows_ && present.size() < seen.size(); ++row) {
            const std::int32_t level = code(row);
            if (level == kMissingCode || seen[static_cast<std::size_t>(level)]) continue;
            seen[static_cast<std::size_t>(level)] = true;
            present.push_back(level);
        }
        return present;
    });
}

void ColumnCells::detach(std::shared_ptr<ColumnCells>& cells) {
    if (cells.use_count() == 1 && !cells->root_) {
        // Pairs with the release of the last other owner, so that its reads are over.
        std::atomic_thread_fence(std::memory_order_acquire);
        cells->ranks_.reset();
        cells->distinctNumbers_.reset();
        cells->presentCodes_.reset();
        return;
    }
    if (cells->isNumeric()) {
        const auto numbers = cells->numbers();
        cells = ofNumbers({numbers.begin(), numbers.end()});
    } else {
        const auto codes = cells->codes();
        cells = ofCodes(cells->sharedDictionary(), {codes.begin(), codes.end()});
    }
}

void ColumnCells::assign(std::shared_ptr<ColumnCells>& cells, int row, double number) {
    if (!cells->isNumeric())
        return assign(cells, row, std::isnan(number) ? WString() : Convert::toString(number));
    detach(cells);
    cells->numbers_[static_cast<std::size_t>(row)] = number;
}

void ColumnCells::assign(std::shared_ptr<ColumnCells>& cells, int row, const WString& text) {
    if (cells->isNumeric()) {
        const double number =
            text.empty() ? std::numeric_limits<double>::quiet_NaN() : Convert::toDouble(text);
        return assign(cells, row, number);
    }
    std::int32_t code = text.empty() ? kMissingCode : cells->dictionary().find(text);
    detach(cells);
    if (code == kMissingCode && !text.empty()) code = cells->addLevel(text);
    cells->codes_[static_cast<std::size_t>(row)] = code;
}

std::int32_t ColumnCells::addLevel(const WString& text) {
    const bool isUnshared = grownDictionary_ && grownDictionary_.use_count() == 2;  // here and dictionary_
    if (!isUnshared) {
        grownDictionary_ = std::make_shared<Dictionary>(dictionary_->levels());
        dictionary_ = grownDictionary_;
    }
    return grownDictionary_->add(text);
}

std::shared_ptr<ColumnCells> RowSelector::select(const std::shared_ptr<ColumnCells>& cells) {
    if (!lastComposed_ || cells->selection_ != lastOuter_) {
        lastOuter_ = cells->selection_;
        lastComposed_ = lastOuter_ ? std::make_shared<const RowIndexes>(gather(*lastOuter_, *rows_)) : rows_;
    }
    std::shared_ptr<ColumnCells> selected(new ColumnCells(cells->type_, rows_->size()));
    selected->root_ = cells->root_ ? cells->root_ : cells;
    selected->selection_ = lastComposed_;
    return selected;
}

}  // namespace Tessel
