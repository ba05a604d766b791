#pragma once

#include <string>

#include <tessel/data/data_frame.h>
#include <tessel/data/data_frame_vector.h>

namespace Tessel {

/// How `Writer` lays out a text file.
struct TextFormat {
    /// What separates the cells of a record: one ASCII character, but no quote and no line end.
    wchar_t delimiter = L',';
    /// Whether the first record holds the names of the columns.
    bool hasHeader = true;
    /// The header of a first column with the names of the rows; empty: no such column.
    WString rowNamesColumn;
    /// Decimals of numbers, 0..17; -1 is the shortest form that reads back to the same bits.
    int numDecimals = -1;
    /// Whether records end with LF alone, as line-oriented tools expect, instead of CR LF.
    bool endsWithLineFeed = false;
};

/// Writes tables to files.
///
/// A file appears when it is complete; a failure leaves an older file of that name as it was. All writers
/// throw `UnableToWriteFile` and, for wide texts that are no Unicode, `InvalidEncoding`.
class TESSEL_API Writer {
 public:
    /// Writes a text file by RFC 4180, in UTF-8 without byte-order mark: records end with CR LF, missing
    /// cells are empty, infinities "Infinity" and "-Infinity". With the default number form
    /// `Reader::readText` with literal quotes and the same delimiter, header and row names column reads an
    /// equal table, but for the names and types of columns without rows, empty column names and the index
    /// columns. For that a cell is quoted when it holds a delimiter, a quote or a line end, and a text also
    /// when it begins or ends with a blank, is "NA", or belongs to a column whose texts all look like
    /// numbers; a text column without any text has quoted empty cells. (A number is quoted only when it holds
    /// the delimiter, such as '-'; its column then needs its type at reading.)
    /// @throws ConstraintViolation  for a delimiter that is none.
    /// @throws ValueOutOfRange  for a number of decimals outside -1..17.
    static void writeText(const DataFrame& table, const WString& path, const TextFormat& format = {});
    /// The same into memory, as UTF-8.
    static std::string formatText(const DataFrame& table, const TextFormat& format = {});

    /// Writes `DataFrame::toJson` in UTF-8; `DataFrame::fromJsonString` reads an equal table.
    static void writeJson(const DataFrame& table, const WString& path);

    /// Writes XML 1.0 in UTF-8:
    ///
    ///     <table name="...">
    ///     <column name="..." type="numeric"/>                   one a column; type numeric or text; index
    ///     <column name="..." type="text" index="true"/>         columns are marked
    ///     <row name="..."><cell>1.5</cell><cell/></row>         one a row; a missing cell is empty
    ///     </table>
    ///
    /// Numbers are in shortest round-trip form; names of rows are left out while they are the default ones.
    /// Tabs and line ends become character references; characters that XML 1.0 cannot hold (other control
    /// characters, U+FFFE, U+FFFF) become U+FFFD.
    static void writeXml(const DataFrame& table, const WString& path);

    /// Writes a workbook (Office Open XML, .xlsx) with one sheet a table: a header row, then the rows, with a
    /// first column of row names on request. Missing cells stay empty, infinities are texts; numbers carry
    /// 16 significant digits. A sheet is named like its table; what a sheet cannot be called (empty, longer
    /// than 31 characters, one of []:*?/\, apostrophes at an end, a name that another sheet has, whatever
    /// its case) is altered: characters become '_', the end is cut, a number is added.
    /// @throws ConstraintViolation  for more than 1048576 rows, header included, more than 16384 columns, or
    ///         a text of more than 32767 characters; nothing is written then.
    static void writeSpreadsheet(const DataFrame& table, const WString& path, bool withRowNames = false);
    static void writeSpreadsheet(const DataFrameVector& tables, const WString& path,
                                 bool withRowNames = false);
};

}  // namespace Tessel
