#include "data/io/text_parser.h"

#include <algorithm>
#include <limits>
#include <optional>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "data/column_access.h"
#include "data/io/delimiter.h"
#include "data/io/number_reader.h"
#include "data/io/parallel.h"

namespace Tessel::IO {
namespace {

constexpr std::size_t kChunkSize = 1 << 20;
constexpr std::size_t kSampledChunks = 16, kSampledRecords = 32;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

std::string_view textOf(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// Moves the rows that each chunk has to where the rows of the chunk before end.
template <class T>
void closeGaps(std::vector<T>& cells, const std::vector<Chunk>& chunks,
               const std::vector<std::size_t>& counts) {
    if (cells.empty()) return;
    auto end = cells.begin();
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto from = cells.begin() + static_cast<std::ptrdiff_t>(chunks[i].firstRow);
        end = std::copy(from, from + static_cast<std::ptrdiff_t>(counts[i]), end);
    }
    cells.erase(end, cells.end());
}

}  // namespace

TextParser::TextParser(std::string_view file, const TextOptions& options)
    : file_(file), data_(file), options_(options), delimiter_(checkedDelimiter(options.delimiter)) {
    // Where the delimiter may stand in a number, cells must be cut out before they are read.
    readsInPlace_ = !mayStandInNumber(delimiter_);
    for (const WString& text : options.missingTexts) {
        const std::string bytes = Convert::toUtf8(text);
        missingTexts_.emplace_back(withoutBlanks(bytes));
    }
    beginsMissing_[' '] = beginsMissing_['\t'] = true;
    for (const std::string& text : missingTexts_)
        if (!text.empty()) beginsMissing_[static_cast<unsigned char>(text.front())] = true;
    if (data_.starts_with(kByteOrderMark)) data_.remove_prefix(kByteOrderMark.size());
    readHeader();
    applyOptions();
}

void TextParser::readHeader() {
    if (data_.empty()) return;
    CellCursor cursor{data_.data(), data_.data() + data_.size(), delimiter_};
    std::vector<Cell> cells;
    try {
        cells.push_back(cursor.next(data_.data(), 0));
        while (cursor.atDelimiter()) {
            ++cursor.position;
            cells.push_back(cursor.next(data_.data(), cells.size()));
        }
    } catch (const BadRecord& bad) {
        reject(bad);
    }
    cursor.skipLineEnd();
    for (const Cell& cell : cells) {
        Column column;
        if (options_.hasHeader) {
            column.name = cell.hasDoubledQuotes ? wide(undoubled(cell.text())) : wide(cell.text());
        }
        if (column.name.empty()) column.name = L"Var" + std::to_wstring(columns_.size() + 1);
        columns_.push_back(std::move(column));
    }
    if (options_.hasHeader) data_ = textOf(cursor.position, cursor.end);
    modes_.assign(columns_.size(), Mode::NUMBER);
    turnedText_ = std::vector<std::atomic<bool>>(columns_.size());
}

void TextParser::applyOptions() {
    for (const auto& [name, type] : options_.columnTypes) {
        const std::size_t column = columnOf(name);
        columns_[column].isInferred = false;
        columns_[column].mustBeNumeric = type == TypeCode::NUMERIC;
        if (type == TypeCode::TEXT) modes_[column] = Mode::TEXT;
    }
    for (const WString& name : options_.indexColumns) columnOf(name);
    if (options_.rowNamesColumn.empty()) return;
    const std::size_t rowNames = columnOf(options_.rowNamesColumn);
    columns_[rowNames].isInferred = columns_[rowNames].mustBeNumeric = false;
    modes_[rowNames] = Mode::TEXT;
}

std::size_t TextParser::columnOf(const WString& name) const {
    const auto hasName = [&](const Column& column) { return column.name == name; };
    const auto found = std::find_if(columns_.begin(), columns_.end(), hasName);
    if (found == columns_.end()) throw NonExistingNamedIndex(Convert::toUtf8Lossy(name));
    if (std::any_of(found + 1, columns_.end(), hasName)) throw DuplicateName(Convert::toUtf8Lossy(name));
    return static_cast<std::size_t>(found - columns_.begin());
}

DataFrame TextParser::parse() {
    if (columns_.empty()) return {};
    cut();
    sampleTypes();
    try {
        parseColumns();
        if (hasLateColumns()) parseColumns();
    } catch (const BadRecord& bad) {
        reject(bad);
    }
    closeGaps();
    return makeTable();
}

void TextParser::cut() {
    // Chunks much longer than a record keep the tables per chunk and column small beside the text.
    const std::size_t size = std::max(kChunkSize, 64 * columns_.size());
    chunks_ = cutIntoChunks(data_, size, numRows_);
    // A record has a delimiter or line end for each cell: that bounds the room it may claim, however many
    // empty lines there are.
    std::size_t room = 0;
    for (std::size_t i = 0; i < chunks_.size(); ++i) {
        const std::size_t next = i + 1 < chunks_.size() ? chunks_[i + 1].firstRow : numRows_;
        const std::size_t numLines = next - chunks_[i].firstRow;
        const std::size_t numBytes = textOf(chunks_[i].begin, chunks_[i].end).size();
        chunks_[i].firstRow = room;
        room += std::min(numLines, numBytes / columns_.size() + 1);
    }
    numRows_ = room;
    numChunkRows_.assign(chunks_.size(), 0);
}

/// Calls `onCell(position, column)`, which gives the end of the cell, for each cell of a record; gives the
/// begin of the next record.
template <class OnCell>
const char* TextParser::readRecord(const char* record, const char* end, const OnCell& onCell) const {
    const char* position = record;
    const std::size_t numColumns = columns_.size();
    for (std::size_t column = 0; column < numColumns; ++column) {
        if (column > 0) {
            if (position == end || *position != delimiter_)
                throw BadRecord{"the record has too few cells", record, column};
            ++position;
        }
        position = onCell(position, column);
    }
    CellCursor cursor{position, end, delimiter_};
    if (cursor.atDelimiter()) throw BadRecord{"the record has too many cells", record, numColumns};
    cursor.skipLineEnd();
    return cursor.position;
}

void TextParser::sampleTypes() {
    const std::size_t step = std::max<std::size_t>(1, chunks_.size() / kSampledChunks);
    for (std::size_t i = 0; i < chunks_.size(); i += step) {
        const char *record = chunks_[i].begin, *const end = chunks_[i].end;
        try {
            for (std::size_t n = 0; n < kSampledRecords && record != end; ++n)
                record = readRecord(record, end, [&](const char* position, std::size_t column) {
                    CellCursor cursor{position, end, delimiter_};
                    const Cell cell = cursor.next(record, column);
                    double number = 0.0;
                    if (columns_[column].isInferred && !toNumber(cell, column, number))
                        modes_[column] = Mode::TEXT;
                    return cursor.position;
                });
        } catch (const BadRecord&) {
            // An empty line, or a fault that the parse of everything will report.
        }
    }
}

void TextParser::parseColumns() {
    forEachIndex(columns_.size(), data_.size(), [&](std::size_t i) {
        if (modes_[i] == Mode::NUMBER) columns_[i].numbers.resize(numRows_);
        if (modes_[i] != Mode::TEXT) return;
        columns_[i].isText = true;
        columns_[i].codes.resize(numRows_);
        columns_[i].levels.resize(chunks_.size());
    });
    forEachIndex(chunks_.size(), data_.size(), [&](std::size_t chunk) { parseChunk(chunk); });
}

bool TextParser::hasLateColumns() {
    bool hasLate = false;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const bool isLate = turnedText_[i].exchange(false);
        modes_[i] = isLate ? Mode::TEXT : Mode::SKIP;
        if (isLate) columns_[i].numbers = {};
        hasLate = hasLate || isLate;
    }
    return hasLate;
}

void TextParser::parseChunk(std::size_t chunk) {
    const char *record = chunks_[chunk].begin, *const end = chunks_[chunk].end;
    const char* const fileEnd = data_.data() + data_.size();
    std::size_t row = chunks_[chunk].firstRow;
    while (record != end) {
        if (CellCursor empty{record, end, delimiter_}; columns_.size() > 1 && empty.atLineEnd()) {
            empty.skipLineEnd();
            record = empty.position;
            continue;
        }
        record = readRecord(record, end, [&](const char* position, std::size_t column) {
            if (modes_[column] == Mode::NUMBER) {
                double& number = columns_[column].numbers[row];
                if (readsInPlace_ && fileEnd - position >= kNumberRoom) {
                    const char* const numberEnd = readNumber(position, number);
                    if (numberEnd != nullptr && CellCursor{numberEnd, end, delimiter_}.atCellEnd())
                        return numberEnd;
                }
                CellCursor cursor{position, end, delimiter_};
                readUnusualNumber(cursor, record, column, number);
                return cursor.position;
            }
            CellCursor cursor{position, end, delimiter_};
            const Cell cell = cursor.next(record, column);
            if (modes_[column] == Mode::TEXT)
                columns_[column].codes[row] = encodeCell(cell, columns_[column].levels[chunk]);
            return cursor.position;
        });
        ++row;
    }
    numChunkRows_[chunk] = row - chunks_[chunk].firstRow;
}

void TextParser::readUnusualNumber(CellCursor& cursor, const char* record, std::size_t column,
                                   double& number) {
    const Cell cell = cursor.next(record, column);
    if (turnedText_[column].load(std::memory_order_relaxed) || toNumber(cell, column, number)) return;
    if (columns_[column].mustBeNumeric)
        throw BadRecord{"the cell is no number, as its column demands", record, column};
    turnedText_[column].store(true, std::memory_order_relaxed);
}

bool TextParser::isMissing(const Cell& cell) const {
    const std::string_view whole = cell.text();
    if (whole.empty()) return true;
    if (cell.isQuoted && options_.literalQuotes) return false;
    if (!beginsMissing_[static_cast<unsigned char>(whole.front())]) return false;
    const std::string_view text = withoutBlanks(whole);
    return text.empty() || std::find(missingTexts_.begin(), missingTexts_.end(), text) != missingTexts_.end();
}

bool TextParser::toNumber(const Cell& cell, std::size_t column, double& number) const {
    Cell bare = cell;
    if (cell.isQuoted) {
        if (options_.literalQuotes && !columns_[column].mustBeNumeric) return false;
        bare.isQuoted = false;
    }
    number = kMissing;
    return isMissing(bare) || Convert::tryToDouble(bare.text(), number);
}

std::int32_t TextParser::encodeCell(const Cell& cell, CellLevels& levels) const {
    if (isMissing(cell)) return kMissingCode;
    return cell.hasDoubledQuotes ? levels.encodeCopy(undoubled(cell.text())) : levels.encode(cell.text());
}

void TextParser::closeGaps() {
    std::size_t firstRow = 0;
    for (const std::size_t count : numChunkRows_) firstRow += count;
    if (firstRow == numRows_) return;
    numRows_ = firstRow;
    for (Column& column : columns_) {
        IO::closeGaps(column.numbers, chunks_, numChunkRows_);
        IO::closeGaps(column.codes, chunks_, numChunkRows_);
    }
    firstRow = 0;
    for (std::size_t i = 0; i < chunks_.size(); ++i) {
        chunks_[i].firstRow = firstRow;
        firstRow += numChunkRows_[i];
    }
}

void TextParser::joinLevels(Column& column, std::vector<WString>& texts) const {
    CellLevels all;
    std::vector<std::int32_t> joined;
    for (std::size_t chunk = 0; chunk < chunks_.size(); ++chunk) {
        joined.clear();
        for (const Level& level : column.levels[chunk].levels()) joined.push_back(all.encode(level));
        const auto first = column.codes.begin() + static_cast<std::ptrdiff_t>(chunks_[chunk].firstRow);
        std::for_each(first, first + static_cast<std::ptrdiff_t>(numChunkRows_[chunk]),
                      [&](std::int32_t& code) {
                          if (code != kMissingCode) code = joined[static_cast<std::size_t>(code)];
                      });
    }
    texts.reserve(all.levels().size());
    for (const Level& level : all.levels()) texts.push_back(wide(level.bytes));
    column.levels = {};
}

WString TextParser::wide(std::string_view bytes) const {
    try {
        return Convert::fromUtf8(bytes);
    } catch (const InvalidEncoding&) {
        // Whichever bad text was met first, the offset of the first bad byte of the file is reported.
        return Convert::fromUtf8(file_);
    }
}

DataFrame TextParser::makeTable() {
    std::vector<std::vector<WString>> texts(columns_.size());
    forEachIndex(columns_.size(), data_.size(), [&](std::size_t i) {
        if (columns_[i].isText) joinLevels(columns_[i], texts[i]);
    });
    DataFrame table;
    std::optional<StringVector> rowNames;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Column& column = columns_[i];
        if (!options_.rowNamesColumn.empty() && column.name == options_.rowNamesColumn) {
            rowNames.emplace(column.codes.size());
            for (std::size_t row = 0; row < column.codes.size(); ++row)
                if (const std::int32_t code = column.codes[row]; code != kMissingCode)
                    (*rowNames)[row] = texts[i][static_cast<std::size_t>(code)];
            continue;
        }
        auto cells = column.isText
                         ? ColumnCells::ofCodes(std::make_shared<const Dictionary>(std::move(texts[i])),
                                                std::move(column.codes))
                         : ColumnCells::ofNumbers(std::move(column.numbers));
        table.append(ColumnAccess::makeColumn(std::move(column.name), std::move(cells)));
    }
    if (rowNames && table.getNumCols() > 0) table.setRowNames(*rowNames);
    table.setIndexedColNames(options_.indexColumns);
    return table;
}

void TextParser::reject(const BadRecord& bad) const {
    const auto line = std::count(file_.data(), bad.begin, '\n') + 1;
    throw MalformedFile(bad.reason, line, static_cast<std::int64_t>(bad.column) + 1);
}

}  // namespace Tessel::IO
