#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessel/data/data_frame.h>
#include <tessel/data/reader.h>

#include "data/io/cell_levels.h"
#include "data/io/text_cells.h"
#include "data/io/text_chunks.h"

namespace Tessel::IO {

/// Turns delimited text into a table.
///
/// The text is cut into chunks of whole records whose first rows are known, so that threads parse chunks
/// straight into the final columns. A column is taken for numeric until a sample or, at last, a cell shows
/// that it is text; columns found out late are parsed once more. Texts become codes of levels chunk by
/// chunk; the levels of all chunks are then joined in order of first appearance.
class TextParser {
 public:
    /// Checks the options and reads the header. @pre the bytes outlive this object
    TextParser(std::string_view file, const TextOptions& options);
    DataFrame parse();

 private:
    enum class Mode : char { NUMBER, TEXT, SKIP };
    struct Column {
        WString name;
        bool mustBeNumeric = false;
        bool isInferred = true;
        bool isText = false;
        std::vector<double> numbers;
        std::vector<std::int32_t> codes;
        std::vector<CellLevels> levels;  // by chunk
    };

    void readHeader();
    void applyOptions();
    std::size_t columnOf(const WString& name) const;

    void cut();
    void sampleTypes();
    void parseColumns();
    bool hasLateColumns();
    void parseChunk(std::size_t chunk);
    template <class OnCell>
    const char* readRecord(const char* record, const char* end, const OnCell& onCell) const;
    void readUnusualNumber(CellCursor& cursor, const char* record, std::size_t column, double& number);
    std::int32_t encodeCell(const Cell& cell, CellLevels& levels) const;
    bool isMissing(const Cell& cell) const;
    bool toNumber(const Cell& cell, std::size_t column, double& number) const;

    void closeGaps();
    void joinLevels(Column& column, std::vector<WString>& texts) const;
    WString wide(std::string_view bytes) const;
    DataFrame makeTable();
    [[noreturn]] void reject(const BadRecord& bad) const;

    std::string_view file_;
    std::string_view data_;  // the records behind the header
    const TextOptions& options_;
    char delimiter_;
    bool readsInPlace_;
    std::vector<std::string> missingTexts_;
    std::array<bool, 256> beginsMissing_{};

    std::vector<Column> columns_;
    std::vector<Mode> modes_;
    std::vector<std::atomic<bool>> turnedText_;
    std::vector<Chunk> chunks_;
    std::vector<std::size_t> numChunkRows_;
    std::size_t numRows_ = 0;
};

}  // namespace Tessel::IO
