#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>
#include <tessel/data/util/tables.h>

#include "data/files.h"
#include "scratch_folder.h"

namespace Tessel::Util {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

DataFrame tableOf(std::initializer_list<DataFrameColumn> columns) {
    DataFrame table(L"T");
    for (const DataFrameColumn& column : columns) table.append(column);
    return table;
}
DataFrameColumn numbers(const WString& name, Vector values) { return {name, std::move(values)}; }
DataFrameColumn texts(const WString& name, const StringVector& values) { return {name, values}; }

// ---- binding

TEST(Bind, PutsColumnsSideBySide) {
    DataFrame a = tableOf({numbers(L"x", {1, 2})});
    a.setRowNames({L"r", L"s"});
    const DataFrame b = tableOf({texts(L"t", {L"u", L""}), numbers(L"x", {3, 4})});
    const DataFrame bound = colBind(a, b);
    EXPECT_EQ(bound.getColNames(), (StringVector{L"x", L"t", L"x"}));
    EXPECT_EQ(bound.getRowNames(), (StringVector{L"r", L"s"}));
    EXPECT_EQ(bound(all, 2).toDoubleVector(), (Vector{3, 4}));
    EXPECT_EQ(colBind(DataFrame(), b).getNumCols(), 2);
    EXPECT_EQ(colBind(a, DataFrame()).getNumCols(), 1);
    EXPECT_THROW(colBind(a, tableOf({numbers(L"y", {1, 2, 3})})), NumRowsMismatch);
}

TEST(Bind, PutsRowsBelowByColumnName) {
    DataFrame a = tableOf({numbers(L"x", {1, kNaN}), texts(L"id", {L"b", L"a"})});
    a.setIndexedColNames({L"id"});
    const DataFrame whole =
        tableOf({texts(L"id", {L"c", L"", L"a", L"unused"}), numbers(L"x", {3, 4, 5, 6})});
    const DataFrame b = whole(IntVector{2, 0, 1}, all);
    const DataFrame bound = rowBind(a, b);
    EXPECT_EQ(bound.getColNames(), a.getColNames());
    EXPECT_EQ(bound.getIndexedColNames(), (StringVector{L"id"}));
    EXPECT_EQ(bound.getName(), L"T");
    EXPECT_EQ(bound(all, L"id").toStringVector(), (StringVector{L"b", L"a", L"a", L"c", L""}));
    EXPECT_EQ(bound(all, L"x").toStringVector(), (StringVector{L"1", L"", L"5", L"3", L"4"}));
    EXPECT_EQ(bound.getRowNames(),
              (StringVector{L"Record 1", L"Record 2", L"Record 3", L"Record 1", L"Record 2"}));

    EXPECT_EQ(rowBind(whole, whole).getRowName(7), L"Record 8");
    DataFrame called = a;
    called.setRowNames({L"p", L"q"});
    EXPECT_EQ(rowBind(called, b).getRowNames(),
              (StringVector{L"p", L"q", L"Record 3", L"Record 1", L"Record 2"}));
    EXPECT_EQ(rowBind(DataFrame(), b).getNumRows(), 3);
    EXPECT_EQ(rowBind(a, DataFrame()).getNumRows(), 2);
    // Cut from one table, the halves share a dictionary and make the whole again.
    const DataFrame again = rowBind(whole(IntVector{0, 1}, all), whole(IntVector{2, 3}, all));
    EXPECT_EQ(again(all, L"id").toStringVector(), whole(all, L"id").toStringVector());
    EXPECT_EQ(again.getRowNames(), whole.getRowNames());
}

TEST(Bind, RefusesRowsOfAnotherShape) {
    const DataFrame a = tableOf({numbers(L"x", {1}), numbers(L"y", {2})});
    EXPECT_THROW(rowBind(a, tableOf({numbers(L"x", {1})})), NumColumnsMismatch);
    EXPECT_THROW(rowBind(a, tableOf({numbers(L"x", {1}), numbers(L"z", {2})})), NonExistingNamedIndex);
    EXPECT_THROW(rowBind(a, tableOf({numbers(L"x", {1}), texts(L"y", {L"2"})})), ConversionFailure);
    EXPECT_THROW(rowBind(tableOf({numbers(L"x", {1}), numbers(L"x", {2})}), a), DuplicateName);
}

// ---- expressions

TEST(Expression, ComputesEachRow) {
    const DataFrame whole = tableOf({numbers(L"x", {4, 1, -2.5}), numbers(L"Petal length (cm)", {0, 2, 10}),
                                     numbers(L"Gr\u00F6\u00DFe", {1, 2, 3}), numbers(L"sum", {7, 8, 9}),
                                     numbers(L"_e", {5, 5, 5}), texts(L"word", {L"a", L"b", L"c"})});
    const DataFrame table = whole(IntVector{2, 0, 1}, all);  // x = -2.5, 4, 1
    struct Case {
        const wchar_t* expression;
        Vector expected;
    };
    for (const auto& [expression, expected] : std::vector<Case>{
             {L"x", {-2.5, 4, 1}},
             {L" [x]*2 + [Petal length (cm)] ", {5, 8, 4}},
             {L"Gr\u00F6\u00DFe-1", {2, 0, 1}},
             {L"sum(sum, 1, x) + sum (1)", {8.5, 13, 11}},
             {L"_e + 1e1 - 5.E-1 + .5", {15, 15, 15}},
             {L"2^3^2 + 0*x", {512, 512, 512}},
             {L"-2^2", {-4, -4, -4}},
             {L"-x^2\t+\n1", {-5.25, -15, 0}},
             {L"7-4-2", {1, 1, 1}},
             {L"x >= 1 && x != 4 || x < -2", {1, 0, 1}},
             {L"x == 4 ? 10 : x > 0 ? 20 : 30", {30, 10, 20}},
             {L"max(x, 0, 2) + min(x, 1) + avg(x, 0)", {-1.75, 7, 3.5}},
             {L"round(x) + 10*rint(x) + 100*floor(x) + 1000*ceil(x)", {-3 - 20 - 300 - 2000, 4444, 1111}},
             {L"sign(x) + trunc(x/2) + abs(x)", {-1 - 1 + 2.5, 1 + 2 + 4, 1 + 0 + 1}},
             {L"log(exp(1)) + ln(1) + log2(8) + log10(1000) + sqrt(16)", {11, 11, 11}},
             {L"1/(x-4) + 3", {3 - 1 / 6.5, kInfinity, 3 - 1 / 3.0}},
         }) {
        const DataFrameColumn column = calculateExpression(table, expression);
        EXPECT_EQ(column.getColName(), expression);
        EXPECT_EQ(column.getRowName(0), L"Record 3");
        const Vector values = column.toDoubleVector();
        ASSERT_EQ(values.size(), 3u);
        for (std::size_t row = 0; row < 3; ++row)  // a few roundings of numbers below 3000
            EXPECT_TRUE(values[row] == expected[row] || std::abs(values[row] - expected[row]) < 1e-12)
                << expression << " row " << row << ": " << values[row] << " instead of " << expected[row];
    }
    EXPECT_EQ(calculateExpression(table(IntVector(), all), L"x + 1").getNumRows(), 0);
    EXPECT_EQ(whole(all, L"x").toDoubleVector(), (Vector{4, 1, -2.5}));
}

TEST(Expression, AgreesWithTheMathematicalIdentities) {
    const DataFrame table = tableOf({numbers(L"x", {-0.9, -0.1, 1e-9, 0.5, 0.99})});
    for (const wchar_t* zero : {L"sin(asin(x)) - x", L"cos(acos(x)) - x", L"tan(atan(x)) - x",
                                L"sinh(asinh(x)) - x", L"cosh(acosh(1+x*x)) - 1 - x*x", L"tanh(atanh(x)) - x",
                                L"log(exp(x)) - x", L"sin(x)^2 + cos(x)^2 - 1", L"10^log10(2+x) - 2 - x",
                                L"atan2(sin(x), cos(x)) - x", L"cos(_pi) + 1"})
        for (const double value : calculateExpression(table, zero).toDoubleVector())
            EXPECT_NEAR(value, 0.0, 4e-15) << zero;
}

TEST(Expression, PassesMissingCellsOn) {
    const DataFrame table = tableOf({numbers(L"x", {kNaN, 1})});
    for (const wchar_t* expression : {L"x + 1", L"min(x, 1)", L"max(1, x, 2)", L"sign(x)", L"rint(x)", L"-x",
                                      L"sum(1, x)", L"avg(x, 1)", L"sqrt(x) * 0"}) {
        const Vector values = calculateExpression(table, expression).toDoubleVector();
        EXPECT_TRUE(std::isnan(values[0]) && !std::isnan(values[1])) << expression;
    }
    EXPECT_EQ(calculateExpression(table, L"x != x ? 0 : 1").toDoubleVector(), (Vector{0, 1}));
    EXPECT_EQ(calculateExpression(table, L"(x < 1) + (x >= 1) + (x == 1)").toDoubleVector(), (Vector{0, 2}));
    EXPECT_EQ(calculateExpression(table, L"x && 1").toDoubleVector(), (Vector{1, 1}));
    EXPECT_EQ(calculateExpression(table, L"x ^ 0").toDoubleVector(), (Vector{1, 1}));
}

TEST(Expression, NamesTheFaultAndItsPlace) {
    const DataFrame table = tableOf({numbers(L"x", {1}), texts(L"t", {L"a"}), numbers(L"Sepal width", {2})});
    struct Case {
        const wchar_t* expression;
        const char* reason;
    };
    for (const auto& [expression, reason] : std::vector<Case>{
             {L"x + height", "'height' at position 5"},
             {L"[Sepal length]", "'[Sepal length]' at position 1"},
             {L"x + foo(1)", "'foo' at position 5"},
             {L"[Sepal width] = 3", "'=' at position 15"},
             {L"x += 1", "'=' at position 4"},
             {L"x = = 1", "'=' at position 3"},
             {L"[Sepal width] [Sepal width]", "'[Sepal width]' at position 15"},
             {L"2x", "'x' at position 2"},
             {L"x + [Sepal", "position 5"},
             {L"[a[b]]", "position 1"},
             {L"[Sepal width] + ) ", "')' at position 17"},
             {L"x, x", "','"},
             {L"x $ 2", "'$' at position 3"},
             {L"\"x\"", "position 1"},
             {L"x +", "ends too early at position 4"},
             {L"", "empty"},
             {L"   ", ""},
             {L"(x", "parenthesis"},
             {L"sqrt(x, 2)", "Too many arguments"},
             {L"sqrt()", "Too few arguments"},
             {L"x ? 1", "'?' without ':'"},
             {L"sqrt", "'sqrt' at position 1"},
             {L"x & x", "'&' at position 3"},
             {L"1.2.3", "position 4"},
         }) {
        try {
            calculateExpression(table, expression);
            FAIL() << expression;
        } catch (const InvalidExpression& error) {
            EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(calculateExpression(table, WString(100000, L'(')), InvalidExpression);
    EXPECT_THROW(calculateExpression(table, L"x + t"), NonNumericData);
    const DataFrame twice = tableOf({numbers(L"x", {1}), numbers(L"x", {1})});
    EXPECT_THROW(calculateExpression(twice, L"x"), DuplicateName);
    EXPECT_THROW(calculateExpression(table, WString(L"x\0 1", 4)), InvalidExpression);
}

// ---- files

TEST(ReadFile, DecodesWholeTexts) {
    const ScratchFolder folder;
    const WString path = folder.wide("read.txt");
    Files::writeBytes(path,
                      "\xEF\xBB\xBF"
                      "a\r\n\xC3\xA4");
    EXPECT_EQ(readFile(path), L"a\r\n\u00E4");
    Files::writeBytes(path, "");
    EXPECT_EQ(readFile(path), L"");
    Files::writeBytes(path, "ab\xFF");
    EXPECT_THROW(readFile(path), InvalidEncoding);
    std::filesystem::remove(Files::toPath(path));
    EXPECT_THROW(readFile(path), FileNotFound);
}

}  // namespace
}  // namespace Tessel::Util
