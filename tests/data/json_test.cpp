#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/data/matrix.h>

#include "data/json_text.h"
#include "data/json_value.h"

namespace Tessel {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Bit for bit, but for the payload of NaN, which JSON cannot carry.
bool sameNumbers(const Vector& a, const Vector& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
        return std::isnan(x) ? std::isnan(y)
                             : std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
    });
}

WString nested(int depth) {
    return WString(static_cast<std::size_t>(depth), L'[') + WString(static_cast<std::size_t>(depth), L']');
}

TEST(JsonTest, numbersAndTextsComeBack) {
    Vector numbers{0.0,  -0.0, 5e-324, -2.2250738585072011e-308, 1e22, 0.1,  1.7976931348623157e308,
                   kNaN, kInf, -kInf,  9007199254740993.0,       1e19, -1e19};
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) numbers.push_back(std::bit_cast<double>(random()));
    Vector readNumbers;
    readNumbers.fromJsonString(numbers.toJson());
    EXPECT_TRUE(sameNumbers(readNumbers, numbers));

    StringVector texts{
        L"",           L"a \"quoted\" \\ /",  L"line\nand\r\ttab", L"\u00e9\u4e2d\u2028\u2029\u007f",
        L"\U0001F600", WString(L"nul\0x", 5), L"\b\f\x1f"};
    StringVector readTexts{L"old"};
    readTexts.setName(L"kept");
    readTexts.fromJsonString(texts.toJson());
    EXPECT_EQ(readTexts, texts);
    EXPECT_EQ(readTexts.getName(), L"kept");

    EXPECT_EQ((Vector{1, -0.0, 0.5, kNaN, -kInf}).toJson(), L"[1,-0.0,0.5,null,\"-Infinity\"]");
    EXPECT_EQ((StringVector{L"\"\n\x01\u2028\u007f\u00e9"}).toJson(),
              L"[\"\\\"\\n\\u0001\\u2028\\u007f\u00e9\"]");
    EXPECT_EQ(Vector().toJson(), L"[]");
    EXPECT_THROW(StringVector{WString(1, static_cast<wchar_t>(0xDC00))}.toJson(), InvalidEncoding);
}

TEST(JsonTest, badTextsLeaveVectorsAndMatricesUnchanged) {
    const WString lone = L"[\"" + WString(1, static_cast<wchar_t>(0xD800)) + L"\"]";
    for (const WString& text :
         {WString(), WString(L"[1"), WString(L"{}"), WString(L"3"), WString(L"[1,true]"), WString(L"[[1]]"),
          WString(L"[\"1\"]"), WString(L"[1e999]"), WString(L"[1] 2"), WString(L"[NaN]"), nested(2000000),
          lone, WString(L"[\"\\ud800\"]")}) {
        Vector numbers{4};
        EXPECT_THROW(numbers.fromJsonString(text), MalformedJSON);
        EXPECT_EQ(numbers, Vector{4});
    }
    for (const WString& text :
         {WString(L"[1]"), WString(L"[null]"), WString(L"\"a\""), WString(L"[\"a\nb\"]"), lone}) {
        StringVector texts{L"x"};
        EXPECT_THROW(texts.fromJsonString(text), MalformedJSON);
        EXPECT_EQ(texts, StringVector{L"x"});
    }
    for (const WString text : {L"[1,2]", L"[[1,2],[3]]", L"[[1],[\"a\"]]", L"[[1],2]", L"{}"}) {
        Matrix matrix(1, 2, 5.0);
        EXPECT_THROW(matrix.fromJsonString(text), MalformedJSON);
        EXPECT_EQ(matrix, Matrix(1, 2, 5.0));
    }
    try {
        Vector().fromJsonString(L"[1,\n x]");
    } catch (const MalformedJSON& error) {
        EXPECT_EQ(std::string(error.what()).find("The JSON text is not valid: Line 2"), 0u) << error.what();
    }
}

/// All kinds of columns, names and cells.
DataFrame sampleTable() {
    DataFrame table(L"caf\u00e9 \"x\"");
    table.append(DataFrameColumn(L"n", Vector{1, kNaN, -0.0, kInf}));
    table.append(DataFrameColumn(L"t", StringVector{L"b", L"", L"a\nb", L"b"}));
    table.append(DataFrameColumn(L"n", Vector{1, 2, 3, 4}));
    table.setColName(2, L"id");
    table.setIndexedColNames({L"id"});
    table.setColName(2, L"n");
    return table;
}

void expectSameTables(const DataFrame& read, const DataFrame& table) {
    EXPECT_EQ(read.getName(), table.getName());
    EXPECT_EQ(read.getColNames(), table.getColNames());
    EXPECT_EQ(read.getRowNames(), table.getRowNames());
    EXPECT_EQ(read.getIndexedColIndices(), table.getIndexedColIndices());
    ASSERT_EQ(read.getNumCols(), table.getNumCols());
    for (int column = 0; column < table.getNumCols(); ++column) {
        ASSERT_EQ(read.getTypeCode(column), table.getTypeCode(column));
        EXPECT_EQ(read(Util::all, column).toStringVector(), table(Util::all, column).toStringVector());
        if (table.isNumeric(column)) {
            EXPECT_TRUE(sameNumbers(read(Util::all, column).toDoubleVector(),
                                    table(Util::all, column).toDoubleVector()));
        }
    }
}

TEST(JsonTest, tablesComeBack) {
    const DataFrame table = sampleTable();
    DataFrame named = table;
    named.setRowNames({L"r1", L"r2", L"r1", L""});
    for (const DataFrame& original : {table, named, table(IntVector{3, 0, 0}, Util::all),
                                      table(IntVector(), Util::all), DataFrame(L"empty")}) {
        DataFrame read(L"old");
        read.append(Vector{1});
        read.fromJsonString(original.toJson());
        expectSameTables(read, original);
        EXPECT_EQ(read.toJson(), original.toJson());
    }
    EXPECT_EQ(table.toJson(),
              L"{\"name\":\"caf\u00e9 \\\"x\\\"\",\"indexColumns\":[2],\"columns\":["
              L"{\"name\":\"n\",\"type\":\"numeric\",\"values\":[1,null,-0.0,\"Infinity\"]},"
              L"{\"name\":\"t\",\"type\":\"text\",\"values\":[\"b\",null,\"a\\nb\",\"b\"]},"
              L"{\"name\":\"n\",\"type\":\"numeric\",\"values\":[1,2,3,4]}]}");
}

TEST(JsonTest, badTextsLeaveTablesUnchanged) {
    const WString column = L"{\"name\":\"a\",\"type\":\"numeric\",\"values\":[1,2]}";
    const auto table = [](const WString& columns, const WString& index = L"[]", const WString& more = L"") {
        return L"{\"name\":\"t\",\"columns\":[" + columns + L"],\"indexColumns\":" + index + more + L"}";
    };
    DataFrame read;
    read.fromJsonString(table(column, L"[0]", L",\"later\":{}"));
    EXPECT_EQ(read.getNumRows(), 2);

    const WString bad[] = {
        L"[]",
        L"{}",
        L"{\"name\":\"t\",\"columns\":[]}",
        L"{\"name\":1,\"columns\":[],\"indexColumns\":[]}",
        table(L"1"),
        table(column, L"[1]"),
        table(column, L"[-1]"),
        table(column, L"[0.5]"),
        table(column, L"[1e300]"),
        table(column, L"[\"a\"]"),
        table(column, L"[]", L",\"name\":\"again\""),
        table(column, L"[]", L",\"rowNames\":[\"x\"]"),
        table(column, L"[]", L",\"rowNames\":[1,2]"),
        table(column + L",{\"name\":\"b\",\"type\":\"numeric\",\"values\":[1]}"),
        table(L"{\"name\":\"a\",\"type\":\"numeric\",\"values\":[\"1\"]}"),
        table(L"{\"name\":\"a\",\"type\":\"text\",\"values\":[1]}"),
        table(L"{\"name\":\"a\",\"type\":\"date\",\"values\":[]}"),
        table(L"{\"name\":\"a\",\"values\":[]}"),
        table(L"{\"name\":\"a\",\"name\":\"b\",\"type\":\"text\",\"values\":[]}"),
        table(nested(1000)),
    };
    for (const WString& text : bad) {
        DataFrame kept = sampleTable();
        EXPECT_THROW(kept.fromJsonString(text), MalformedJSON) << Convert::toUtf8(text.substr(0, 200));
        expectSameTables(kept, sampleTable());
    }
}

TEST(JsonTest, trees) {
    web::json::value tree = web::json::value::object(true);
    const auto set = [&](const WString& name, const web::json::value& value) {
        tree[JSON::toNative(name)] = value;
    };
    set(L"z", JSON::fromNumber(-0.0));
    set(L"a", JSON::fromNumber(kInf));
    set(L"m", JSON::fromNumber(kNaN));
    set(L"\u00e9", JSON::fromText(L"\u2028\U0001F600"));
    set(L"i", web::json::value::number(std::uint64_t{18446744073709551615u}));
    set(L"b", web::json::value::array({web::json::value::boolean(true), web::json::value::number(-3)}));
    const WString json = JSON::serialize(tree);
    EXPECT_EQ(json,
              L"{\"z\":-0.0,\"a\":\"Infinity\",\"m\":null,\"\u00e9\":\"\\u2028\U0001F600\","
              L"\"i\":18446744073709551615,\"b\":[true,-3]}");

    const web::json::value read = JSON::parse(json);
    const JSON::Members members(read, "the object");
    EXPECT_TRUE(std::signbit(JSON::toNumber(members.at("z"), "z")));
    EXPECT_EQ(JSON::toNumber(members.at("a"), "a"), kInf);
    EXPECT_TRUE(std::isnan(JSON::toNumber(members.at("m"), "m")));
    EXPECT_EQ(members.find("none"), nullptr);
    EXPECT_THROW(members.at("none"), MalformedJSON);
    EXPECT_THROW(JSON::toInteger(members.at("i"), "i"), MalformedJSON);
    EXPECT_EQ(JSON::toInteger(JSON::parse(L"-2147483648"), "i"), std::numeric_limits<int>::min());
    EXPECT_THROW(JSON::Members(JSON::parse(L"{\"a\":1,\"b\":2,\"a\":3}"), "the object"), MalformedJSON);
}

}  // namespace
}  // namespace Tessel
