#pragma once

#include <map>
#include <string_view>

#include <tessel/data/data_frame.h>

namespace Tessel {

/// How a text file holds a table.
struct TextOptions {
    /// What separates the cells of a record: one ASCII character, but no quote and no line end.
    wchar_t delimiter = L',';
    /// Whether the first record holds the names of the columns; else they are "Var1", "Var2", ...
    bool hasHeader = true;
    /// Texts that stand for a missing cell, blanks around them ignored. Besides them the empty text and
    /// blanks alone always do. Inside literal quotes only the empty text is missing.
    StringVector missingTexts{L"NA"};
    /// Whether quotes make a cell literal: then it is a text, also when it looks like a number or a missing
    /// text. Off, since many programs quote everything, a quoted cell counts like any other. Set it for files
    /// of `Writer`, which quotes texts that look like numbers.
    bool literalQuotes = false;
    /// Types of columns by their names; the types of the other columns are inferred. Quotes never hinder a
    /// cell of a column that must be numeric.
    std::map<WString, TypeCode> columnTypes;
    /// The column that becomes the names of the rows and no column of the table; empty: none.
    WString rowNamesColumn;
    /// The columns that become index columns.
    StringVector indexColumns;
};

/// Reads tables from files and texts.
///
/// Text is read by RFC 4180: records end with CR LF or LF, the last one also with the text; a cell that
/// begins with a quote ends with one and may hold delimiters, line ends and, doubled, quotes. Blanks belong
/// to a text. A record that is an empty line is a missing cell in a file of one column and is skipped in
/// wider files. The text is UTF-8, with or without byte-order mark.
///
/// A column is numeric when every cell that is not missing is a number (as `Convert::toDouble` reads it,
/// correctly rounded) and no cell is literal by its quotes; so a column without any value is numeric. A
/// quoted empty cell is missing, and when it is literal its column is text. Column names may repeat; an empty
/// name becomes "Var<position>", counted from 1. A file with a header alone gives columns without rows, an
/// empty file a table without columns.
///
/// All readers throw `InvalidEncoding` with the offset of the first bad byte when the text is no UTF-8.
class TESSEL_API Reader {
 public:
    /// Reads a text file. Several threads share the work; the result does not depend on their number.
    /// @throws FileNotFound
    /// @throws MalformedFile  for a record with too few or too many cells, a bad quote, or a cell that is no
    ///         number in a column that must be numeric. The row is the line of the file, counted from 1, on
    ///         which the record begins.
    /// @throws ConstraintViolation  for a delimiter that is none.
    /// @throws NonExistingNamedIndex, DuplicateName  when the options name a column that the file does not
    ///         have or has more than once.
    static DataFrame readText(const WString& path, const TextOptions& options = {});
    /// The same for a text in memory, UTF-8 or wide.
    static DataFrame parseText(std::string_view text, const TextOptions& options = {});
    static DataFrame parseText(const WString& text, const TextOptions& options = {});

    /// Reads the files of a folder whose names end with `ending` (empty: all files) into the text column
    /// "Text", one file a row, sorted by name; the row is named like the file. Folders inside are not
    /// entered. An empty file is a missing cell. @throws FileNotFound
    static DataFrame readCorpusFolder(const WString& folder, const WString& ending = L".txt");
    /// Reads a file of one document a line into the text column "Text". An empty line is a missing cell.
    /// @throws FileNotFound
    static DataFrame readCorpusLines(const WString& path);
};

}  // namespace Tessel
