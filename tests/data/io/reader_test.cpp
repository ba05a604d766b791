#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/reader.h>

#include "data/io/io_testing.h"

namespace Tessel {
namespace {

TextOptions optionsOf(wchar_t delimiter, bool hasHeader, bool literalQuotes = true) {
    TextOptions options;
    options.delimiter = delimiter;
    options.hasHeader = hasHeader;
    options.literalQuotes = literalQuotes;
    return options;
}

/// The message of the error that a text causes, empty when it is read.
std::string errorOf(const std::string& text, const TextOptions& options = {}) {
    try {
        Reader::parseText(text, options);
    } catch (const MalformedFile& error) {
        return error.what();
    } catch (const InvalidEncoding& error) {
        return error.what();
    }
    return {};
}

TEST(ReaderTest, tellsCellsTypesAndMissingCells) {
    struct Case {
        const char* text;
        TextOptions options;
        const char* expected;
    };
    const TextOptions standard = optionsOf(L',', true);
    const Case cases[] = {
        {"a,b\n1,x\n2,y\n", standard, "a#[1|2] b$[x|y]"},
        {"a,b\r\n1,x\r\n2,y", standard, "a#[1|2] b$[x|y]"},
        {"\xEF\xBB\xBF"
         "a,b\n1,\xC3\xA4\n",
         standard, "a#[1] b$[\xC3\xA4]"},
        {"a,b\n\"x\"\"y\",\"1,5\"\n\"u\r\nv\",\"\"\n", standard, "a$[x\"y|u\r\nv] b$[1,5|~]"},
        {"a,b,c\n,NA,NA\n 2 ,  ,x\n", standard, "a#[~|2] b#[~|~] c$[~|x]"},
        {"a,b\n\"NA\",\"7\"\nu,8\n", standard, "a$[NA|u] b$[7|8]"},
        {"\"a\",\"b\"\n\"NA\",\"7\"\n\"\",\"8\"\n", optionsOf(L',', true, false), "a#[~|~] b#[7|8]"},
        {"a,b\n\"1\",\"x\"\n\"2\",\"3\"\n", TextOptions(), "a#[1|2] b$[x|3]"},
        {"1;x\n2;y\n", optionsOf(L';', false), "Var1#[1|2] Var2$[x|y]"},
        {"1-2\n3-4\n", optionsOf(L'-', false), "Var1#[1|3] Var2#[2|4]"},
        {"a,,a\n1,2,3\n", standard, "a#[1] Var2#[2] a#[3]"},
        {"a\n1\n\n3\n", standard, "a#[1|~|3]"},                      // one column: an empty line is a cell
        {"a,b\n\n1,2\r\n\r\n3,4\n\n", standard, "a#[1|3] b#[2|4]"},  // more columns: it is nothing
        {"a,b\n", standard, "a#[] b#[]"},
        {"a,b", standard, "a#[] b#[]"},
        {"", standard, ""},
        {"\xEF\xBB\xBF", standard, ""},
        {"1,", optionsOf(L',', false), "Var1#[1] Var2#[~]"},
        {"a\n1\r", standard, "a#[1]"},
        {"a,b\nx\ry,1\n", standard, "a$[x\ry] b#[1]"},
        {"a\n+5\n.5\n5.\n1E3\n-Inf\nnan\n1e999\n", standard, "a#[5|0.5|5|1000|-Infinity|~|Infinity]"},
        {"a\n1\n0x10\n", standard, "a$[1|0x10]"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(shown(Reader::parseText(std::string_view(c.text), c.options)), c.expected);
        EXPECT_EQ(shown(Reader::parseText(Convert::fromUtf8(c.text), c.options)), c.expected);
    }
}

TEST(ReaderTest, takesTypesNamesAndIndexesFromTheOptions) {
    TextOptions options;
    options.columnTypes = {{L"zip", TypeCode::TEXT}, {L"n", TypeCode::NUMERIC}};
    options.missingTexts = {L"-", L"n/a"};
    options.rowNamesColumn = L"id";
    options.indexColumns = {L"zip"};
    const std::string_view text = "id,zip,n\n7,01234,\"1\"\n8,-,n/a\n9,NA,\"-\"\n";
    const DataFrame table = Reader::parseText(text, options);
    EXPECT_EQ(shown(table), "zip$[01234|~|NA] n#[1|~|~]");
    EXPECT_EQ(table.getRowNames(), (StringVector{L"7", L"8", L"9"}));
    EXPECT_EQ(table.getIndexedColNames(), StringVector{L"zip"});

    options.columnTypes = {{L"gone", TypeCode::TEXT}};
    EXPECT_THROW(Reader::parseText(text, options), NonExistingNamedIndex);
    EXPECT_THROW(Reader::parseText(std::string_view(), options), NonExistingNamedIndex);
    options.columnTypes = {{L"a", TypeCode::TEXT}};
    EXPECT_THROW(Reader::parseText(std::string_view("a,a\n"), options), DuplicateName);
    for (const wchar_t bad : {L'"', L'\n', L'\r', L'\0', wchar_t{0xA7}})
        EXPECT_THROW(Reader::parseText(text, optionsOf(bad, true)), ConstraintViolation);
}

TEST(ReaderTest, saysWhereATextIsBroken) {
    TextOptions numeric;
    numeric.columnTypes = {{L"b", TypeCode::NUMERIC}};
    const struct {
        const char* text;
        const char* where;
        TextOptions options;
    } cases[] = {
        {"a,b\n1,2\n3\n", "Row 3, column 2: the record has too few cells", {}},
        {"a,b\n1,2,3\n", "Row 2, column 3: the record has too many cells", {}},
        {"a,b\n\"x\ny\",1\n1\n", "Row 4, column 2", {}},  // rows are lines of the file
        {"a,b\n1,\"x\"y\n", "Row 2, column 2: text behind a closing quote", {}},
        {"a,b\n1,\"x\n", "Row 2, column 2: a quote is not closed", {}},
        {"a,\"b\n", "Row 1, column 2: a quote is not closed", {}},
        {"a,b\n1,x\"y\n", "Row 2, column 2: a quote inside", {}},
        {"a,b\n1,2\n1,x\n", "Row 3, column 2: the cell is no number", numeric},
        {"a,b\n1,\xC3(\n", "UTF-8 at offset 6", {}},
        {"\xEF\xBB\xBF"
         "a\xFF,b\n",
         "UTF-8 at offset 4",
         {}},
        {"a,b\n\"q\"\"\xE2\x82\",1\n", "UTF-8 at offset 8", {}},
    };
    for (const auto& c : cases) {
        const std::string error = errorOf(c.text, c.options);
        EXPECT_NE(error.find(c.where), std::string::npos) << c.text << "\ngives: " << error;
    }
    EXPECT_THROW(Reader::readText(L"no such file.csv"), FileNotFound);
    EXPECT_THROW(Reader::readText(L"."), FileNotFound);
}

// The standard's from_chars rounds correctly; the reader must give its bits for every form of number.
TEST(ReaderTest, roundsEveryNumberCorrectly) {
    std::mt19937_64 random(20240229);
    std::vector<std::string> texts{"0",
                                   "-0",
                                   "-0.0",
                                   "00012",
                                   "9007199254740993",
                                   "9007199254740992.5",
                                   "1e22",
                                   "1e23",
                                   "123456789012345678e5",
                                   "18446744073709551616",
                                   "1e-22",
                                   "5e-324",
                                   "2.2250738585072011e-308",
                                   "1.7976931348623157e308",
                                   "0.1e-5",
                                   "1e00003"};
    for (std::uint64_t i = 0; i < 30000; ++i) {
        std::string text = random() % 3 == 0 ? "-" : "";
        const auto digits = [&](std::uint64_t most) {
            for (std::uint64_t n = random() % (most + 1); n > 0; --n)
                text += static_cast<char>('0' + random() % 10);
        };
        text += static_cast<char>('0' + random() % 10);
        digits(i % 20);
        if (random() % 4 != 0) text += '.', digits(i % 17);
        if (random() % 3 == 0)
            text += (random() % 2 == 0 ? "e-" : "E") + std::to_string(random() % (i % 2 == 0 ? 25 : 300));
        texts.push_back(text);
        if (const double value = std::bit_cast<double>(random()); std::isfinite(value)) {
            char shortest[32];
            texts.emplace_back(shortest, std::to_chars(shortest, shortest + 32, value).ptr);
        }
    }
    std::string file;
    for (const std::string& text : texts) file += text + '\n';
    const DataFrame table = Reader::parseText(file + std::string(100, '9') + '\n', optionsOf(L',', false));
    ASSERT_TRUE(table.isNumeric(0));
    const auto column = table(Util::all, 0);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        double expected = 0.0;
        if (std::from_chars(texts[i].data(), texts[i].data() + texts[i].size(), expected).ec != std::errc())
            continue;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(column.values()[i]), std::bit_cast<std::uint64_t>(expected))
            << texts[i];
    }
}

// Several megabytes, so that many chunks meet: quoted line ends that look like records, empty lines, and a
// column that shows only in its last cell that it is text.
TEST(ReaderTest, joinsChunksAtAnyNumberOfThreads) {
    constexpr int kNumRows = 120000;
    std::string text = "n,t,late\n";
    for (int row = 0; row < kNumRows; ++row) {
        if (row % 977 == 0) text += "\r\n";
        text += std::to_string(row) + ".25,\"v\n1,2,3\n" + std::to_string(row % 30011) + "\"\"\",";
        text += row + 1 < kNumRows ? "4\n" : "end\n";
    }
    ASSERT_GT(text.size(), std::size_t{3} << 20);
    for (const int numThreads : {1, 2, 3}) {
        const ThreadCount threads(numThreads);
        const DataFrame table = Reader::parseText(text);
        ASSERT_EQ(table.getNumRows(), kNumRows);
        ASSERT_FALSE(table.isNumeric(2));
        for (int row = 0; row < kNumRows; row += 7) {
            ASSERT_EQ(table(row, 0).toDouble(), row + 0.25);
            ASSERT_EQ(table(row, 1).toString(), L"v\n1,2,3\n" + std::to_wstring(row % 30011) + L"\"");
        }
        EXPECT_EQ(table(0, 2).toString(), L"4");
        EXPECT_EQ(table(kNumRows - 1, 2).toString(), L"end");
        // Of two faults in different chunks the first is told. Line: the header, 100 records of 3 lines, 1
        // empty.
        std::string broken = text;
        broken.insert(broken.find("\n100.25") + 1, "oops\n");
        broken.insert(broken.size() - 5, "\"");
        EXPECT_NE(errorOf(broken).find("Row 303, column 2"), std::string::npos) << errorOf(broken);
    }
}

// However many empty lines and columns there are, memory stays in proportion to the text.
TEST(ReaderTest, doesNotAllocateForEmptyLines) {
    const std::string text = std::string(200000, ',') + "\n" + std::string(2000000, '\n');
    EXPECT_EQ(Reader::parseText(text, optionsOf(L',', false)).getNumRows(), 1);
}

TEST(ReaderTest, readsRealTables) {
    const DataFrame iris = Reader::readText(sourceFile("examples/data/iris.csv"));
    EXPECT_EQ(iris.getNumRows(), 150);
    EXPECT_EQ(iris.getColNames(),
              (StringVector{L"SepalLength", L"SepalWidth", L"PetalLength", L"PetalWidth", L"Species"}));
    double sum = 0.0;
    for (const double length : iris(Util::all, 0).values()) sum += length;
    EXPECT_NEAR(sum, 876.5, 1e-9);  // sum(iris$Sepal.Length), R 4.2.2
    EXPECT_EQ(iris(149, 4).toString(), L"virginica");

    const DataFrame pima = Reader::readText(sourceFile("examples/data/pima_tr2.csv"));
    const auto numMissing = [&](const WString& name) {
        int count = 0;
        for (int row = 0; row < pima.getNumRows(); ++row) count += pima(row, name).isMissing();
        return count;
    };
    EXPECT_EQ(pima.getNumRows(), 300);
    EXPECT_EQ(numMissing(L"bp"), 13);  // colSums(is.na(MASS::Pima.tr2)), R 4.2.2
    EXPECT_EQ(numMissing(L"skin"), 98);
    EXPECT_EQ(numMissing(L"bmi"), 3);
    EXPECT_EQ(numMissing(L"type"), 0);
    EXPECT_EQ(Reader::readText(sourceFile("examples/data/breast_cancer.csv")).getNumCols(), 31);
}

TEST(ReaderTest, readsCorpora) {
    const ScratchFolder folder;
    folder.put("b.txt", "\xEF\xBB\xBFsecond\nof two lines");
    folder.put("a.txt", "first \xC3\xA4");
    folder.put("c.txt", "");
    folder.put("other.csv", "x");
    std::filesystem::create_directory(folder.path / "d.txt");
    const DataFrame corpus = Reader::readCorpusFolder(folder.wide());
    EXPECT_EQ(shown(corpus), "Text$[first \xC3\xA4|second\nof two lines|~]");
    EXPECT_EQ(corpus.getRowNames(), (StringVector{L"a.txt", L"b.txt", L"c.txt"}));
    EXPECT_EQ(Reader::readCorpusFolder(folder.wide(), L"").getNumRows(), 4);
    EXPECT_EQ(Reader::readCorpusFolder(folder.wide(), L".none").getNumRows(), 0);
    EXPECT_THROW(Reader::readCorpusFolder(folder.wide("none")), FileNotFound);

    folder.put("lines", "one\r\n\n \"two\", and\nthree");
    EXPECT_EQ(shown(Reader::readCorpusLines(folder.wide("lines"))), "Text$[one|~| \"two\", and|three]");
    EXPECT_THROW(Reader::readCorpusLines(folder.wide("none")), FileNotFound);
}

}  // namespace
}  // namespace Tessel
