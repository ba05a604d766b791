#include <bit>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/reader.h>
#include <tessel/data/writer.h>

#include "data/io/io_testing.h"
#include "data/io/spreadsheet.h"

namespace Tessel {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

DataFrame tableOf(std::initializer_list<DataFrameColumn> columns) {
    DataFrame table;
    for (const DataFrameColumn& column : columns) table.append(column);
    return table;
}

DataFrameColumn numbers(const WString& name, Vector values) { return {name, std::move(values)}; }
DataFrameColumn texts(const WString& name, const StringVector& values) { return {name, values}; }

/// Numbers bit for bit, but for the payload of NaN.
void expectSame(const DataFrame& a, const DataFrame& b) {
    ASSERT_EQ(a.getColNames(), b.getColNames());
    ASSERT_EQ(a.getNumRows(), b.getNumRows());
    EXPECT_EQ(a.getRowNames(), b.getRowNames());
    for (int column = 0; column < a.getNumCols(); ++column) {
        ASSERT_EQ(a.getTypeCode(column), b.getTypeCode(column)) << column;
        if (!a.isNumeric(column)) {
            ASSERT_EQ(a(Util::all, column).toStringVector(), b(Util::all, column).toStringVector()) << column;
            continue;
        }
        const auto first = a(Util::all, column), second = b(Util::all, column);
        for (std::size_t row = 0; row < first.values().size(); ++row) {
            const double x = first.values()[row], y = second.values()[row];
            const bool isSame = std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
            ASSERT_TRUE(isSame || (std::isnan(x) && std::isnan(y))) << x << " and " << y;
        }
    }
}

TEST(WriterTest, quotesWhereNeededAndNowhereElse) {
    TextFormat bare, named, fixed, minus, lines;
    bare.hasHeader = false;
    bare.delimiter = L';';
    named.rowNamesColumn = L"row";
    fixed.numDecimals = 2;
    minus.delimiter = L'-';
    lines.endsWithLineFeed = true;
    const struct {
        DataFrame table;
        TextFormat format;
        const char* expected;
    } cases[] = {
        {tableOf({numbers(L"n", {1.0, 0.1, kNaN, -kInf}), texts(L"t", {L"x", L"", L"a,b", L"q\"q"})}),
         {},
         "n,t\r\n1,x\r\n0.1,\r\n,\"a,b\"\r\n-Infinity,\"q\"\"q\"\r\n"},
        {tableOf({texts(L"a,b", {L" x", L"NA", L"u\nv", L"12"})}),
         {},
         "\"a,b\"\r\n\" x\"\r\n\"NA\"\r\n\"u\nv\"\r\n12\r\n"},
        {tableOf({texts(L"digits", {L"12", L"", L"01"})}), {}, "digits\r\n\"12\"\r\n\r\n\"01\"\r\n"},
        {tableOf({texts(L"none", {L"", L""})}), {}, "none\r\n\"\"\r\n\"\"\r\n"},
        {tableOf({numbers(L"n", {2.0}), texts(L"t", {L"a,b;c"})}), bare, "2;\"a,b;c\"\r\n"},
        {tableOf({numbers(L"n", {2.0})}), named, "row,n\r\nRecord 1,2\r\n"},
        {tableOf({numbers(L"n", {2.0, -0.125, 1e300 / 1e280, kNaN})}), fixed,
         "n\r\n2.00\r\n-0.12\r\n100000000000000000000.00\r\n\r\n"},
        {tableOf({numbers(L"a", {-1.0}), numbers(L"b", {5.0})}), minus, "a-b\r\n\"-1\"-5\r\n"},
        {tableOf({numbers(L"n", {2.0, 3.0}), texts(L"t", {L"a", L"u\r\nv"})}), lines,
         "n,t\n2,a\n3,\"u\r\nv\"\n"},
        {DataFrame(), {}, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(Writer::formatText(c.table, c.format), c.expected);

    for (const int bad : {-2, 18}) {
        TextFormat format;
        format.numDecimals = bad;
        EXPECT_THROW(Writer::formatText(cases[0].table, format), ValueOutOfRange);
    }
    TextFormat quote;
    quote.delimiter = L'"';
    EXPECT_THROW(Writer::formatText(cases[0].table, quote), ConstraintViolation);
}

TEST(WriterTest, whatIsWrittenReadsBackIdentically) {
    const ScratchFolder folder;
    std::mt19937_64 random(5);
    const StringVector pool{L"",   L"NA", L"12",  L" ",      L"\"",         L",",     L"a\r\nb", L"\uFEFFx",
                            L"\r", L"-",  L"nan", L"\u00E4", L"\U0001F600", L"tab\t", L"x y",    L"1e5"};
    for (const std::size_t numRows : {1u, 2u, 50u, 60000u}) {
        StringVector mixed, digits, rowNames;
        Vector bits, whole;
        for (std::size_t row = 0; row < numRows; ++row) {
            mixed.push_back(pool[random() % pool.size()]);
            digits.push_back(Convert::toString(static_cast<int>(random() % 1000)));
            rowNames.push_back(pool[random() % pool.size()] + Convert::toString(static_cast<int>(row)));
            bits.push_back(std::bit_cast<double>(random()));
            whole.push_back(random() % 9 == 0 ? kNaN : static_cast<double>(random() % 100000));
        }
        DataFrame table = tableOf({texts(L"mixed", mixed), texts(L"digits", digits), numbers(L"NA", bits),
                                   numbers(L"whole", whole), texts(L"none", StringVector(numRows)),
                                   numbers(L" \"odd\", name", Vector(numRows, kNaN))});
        table.setRowNames(rowNames);
        TextFormat format;
        TextOptions options, inMemory;
        options.literalQuotes = inMemory.literalQuotes = true;
        format.rowNamesColumn = options.rowNamesColumn = L"row";
        for (const wchar_t delimiter : {L',', L'\t', L'|'}) {
            format.delimiter = options.delimiter = delimiter;
            Writer::writeText(table, folder.wide("table.csv"), format);
            expectSame(table, Reader::readText(folder.wide("table.csv"), options));
        }
        const std::string text = Writer::formatText(table);
        for (const int numThreads : {1, 2, 3}) {
            const ThreadCount threads(numThreads);
            ASSERT_EQ(Writer::formatText(table), text);
        }
        // A selection of rows, whose dictionary has more levels than its cells.
        const DataFrame first = table(IntVector{0}, Util::all);
        EXPECT_EQ(shown(Reader::parseText(Writer::formatText(first), inMemory)), shown(first));

        Writer::writeJson(table, folder.wide("table.json"));
        DataFrame fromJson;
        fromJson.fromJsonString(Convert::fromUtf8(bytesOf(folder.path / "table.json")));
        expectSame(table, fromJson);
    }
}

TEST(WriterTest, writesXml) {
    const ScratchFolder folder;
    DataFrame table =
        tableOf({numbers(L"n<1", {0.1, kNaN}), texts(L"t", {L"a & \"b\"\r\n", L"\x01\uFFFF>"})});
    table.setName(L"T\t1");
    table.setIndexedColNames({L"t"});
    Writer::writeXml(table, folder.wide("t.xml"));
    const std::string expected =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<table name=\"T&#9;1\">\n"
        "<column name=\"n&lt;1\" type=\"numeric\"/>\n<column name=\"t\" type=\"text\" index=\"true\"/>\n"
        "<row><cell>0.1</cell><cell>a &amp; &quot;b&quot;&#13;&#10;</cell></row>\n"
        "<row><cell/><cell>\xEF\xBF\xBD\xEF\xBF\xBD&gt;</cell></row>\n</table>\n";
    EXPECT_EQ(bytesOf(folder.path / "t.xml"), expected);
    table.setRowNames({L"x", L"<y>"});
    Writer::writeXml(table, folder.wide("t.xml"));
    EXPECT_NE(bytesOf(folder.path / "t.xml").find("<row name=\"&lt;y&gt;\"><cell/>"), std::string::npos);
}

TEST(WriterTest, namesSheetsAsSpreadsheetsDemand) {
    DataFrameVector tables;
    for (const WString& name : {WString(L"a"), WString(L"A"), WString(), WString(L"[x]:*?/\\"),
                                WString(L"'q'"), WString(L"History"), WString(40, L'z'), WString(40, L'z'),
                                WString(L"Sheet3"), WString(30, L'y') + L"\U0001F600"})
        tables.push_back(DataFrame(name));
    const std::vector<WString> expected{
        L"a",          L"A (2)",         L"Sheet3",         L"_x______",
        L"_q_",        L"History_",      WString(31, L'z'), WString(27, L'z') + L" (2)",
        L"Sheet3 (2)", WString(30, L'y')};
    EXPECT_EQ(IO::sheetNames(tables), expected);
}

TEST(WriterTest, leavesNoHalfFileBehind) {
    const ScratchFolder folder;
    const DataFrame good = tableOf({numbers(L"n", {1.0, kNaN, kInf}), texts(L"t", {L"x", L"", L"\u00E4"})});
    DataFrameVector tables(good, good);
    Writer::writeSpreadsheet(tables, folder.wide("book.xlsx"), true);
    const std::string book = bytesOf(folder.path / "book.xlsx");
    EXPECT_EQ(book.substr(0, 2), "PK");  // a zip archive
    EXPECT_NE(book.find("xl/worksheets/sheet2.xml"), std::string::npos);

    const DataFrame longText = tableOf({texts(L"t", {WString(32768, L'x')})});
    const DataFrame longTable = tableOf({numbers(L"n", Vector(1048576, 0.0))});
    DataFrame wideTable;
    for (int i = 0; i < 16385; ++i) wideTable.append(numbers(L"c", {1.0}));
    for (const DataFrame& bad : {longText, longTable, wideTable})
        EXPECT_THROW(Writer::writeSpreadsheet(bad, folder.wide("book.xlsx")), ConstraintViolation);
    const wchar_t noUnicode[] = {static_cast<wchar_t>(0xDC00), 0};
    const DataFrame badText = tableOf({texts(L"t", {noUnicode})});
    const WString book1 = folder.wide("book.xlsx");
    EXPECT_THROW(Writer::writeSpreadsheet(badText, book1), InvalidEncoding);
    EXPECT_THROW(Writer::writeText(badText, book1), InvalidEncoding);
    EXPECT_THROW(Writer::writeXml(badText, book1), InvalidEncoding);
    EXPECT_THROW(Writer::writeJson(badText, book1), InvalidEncoding);
    DataFrame badRow = good;
    badRow.setRowNames({L"a", L"b", noUnicode});
    EXPECT_THROW(Writer::writeXml(badRow, book1), InvalidEncoding);  // met when rows are written already
    EXPECT_EQ(bytesOf(folder.path / "book.xlsx"), book);
    for (const char* place : {"none/x.csv", ""}) {
        EXPECT_THROW(Writer::writeText(good, folder.wide(place)), UnableToWriteFile);
        EXPECT_THROW(Writer::writeSpreadsheet(good, folder.wide(place)), UnableToWriteFile);
    }
    const auto files = std::filesystem::directory_iterator(folder.path);
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

}  // namespace
}  // namespace Tessel
