#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/data/data_frame_vector.h>

#include "data/column_access.h"

namespace Tessel {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
using Util::all;

/// id (text), x (numbers), city (text with a missing cell); three rows.
DataFrame sample() {
    DataFrame table(L"people");
    table.append(DataFrameColumn(L"id", StringVector{L"p1", L"p2", L"p3"}));
    table.append(DataFrameColumn(L"x", Vector{1.5, kNaN, 3}));
    table.append(DataFrameColumn(L"city", StringVector{L"Oslo", L"", L"Rome"}));
    return table;
}

bool sharesCells(const DataFrame& a, const DataFrame& b, int column) {
    return ColumnAccess::cells(a, column) == ColumnAccess::cells(b, column);
}

TEST(DataFrameTest, shapeNamesAndTypes) {
    DataFrame table = sample();
    EXPECT_EQ(table.getNumRows(), 3);
    EXPECT_EQ(table.getNumCols(), 3);
    EXPECT_EQ(table.getColNames(IntVector{2, 0}), (StringVector{L"city", L"id"}));
    EXPECT_EQ(table.getColIndexes({L"x", L"id"}), (IntVector{1, 0}));
    EXPECT_EQ(table.getTypeCode(L"x"), TypeCode::NUMERIC);
    EXPECT_EQ(table.getTypeName(1) + table.getTypeName(2), L"numerictext");
    EXPECT_FALSE(table.isNumeric(L"city"));
    table.setColName(L"x", L"weight");
    table.setColName(0, L"key");
    EXPECT_EQ(table.getColNames(), (StringVector{L"key", L"weight", L"city"}));
    EXPECT_FALSE(table.isColumn(L"x"));
    EXPECT_THROW(table.setColNames({L"a"}), NumElementsMismatch);
    EXPECT_THROW(table.getColIndex(L"x"), NonExistingNamedIndex);
    EXPECT_THROW(table.getColName(3), ColumnIndexOutOfRange);
    EXPECT_THROW(table.getTypeCode(-1), ColumnIndexOutOfRange);

    table.setIndexedColNames({L"key", L"city"});
    EXPECT_THROW(table.setIndexedColNames({L"weight", L"none"}), NonExistingNamedIndex);
    EXPECT_EQ(table.getIndexedColIndices(), (IntVector{0, 2}));
    EXPECT_TRUE(table.isIndexColumn(L"city"));
    EXPECT_EQ(table(all, StringVector{L"city", L"weight"}).getIndexedColNames(), (StringVector{L"city"}));
    table.clear();
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(table.getName(), L"people");
}

TEST(DataFrameTest, whatWasMovedFromStaysUsable) {
    DataFrameColumn column = sample()(all, L"x");
    const DataFrameColumn movedColumn = std::move(column);
    EXPECT_EQ(movedColumn.getNumRows(), 3);
    EXPECT_EQ(column.toStringVector(), movedColumn.toStringVector());
    DataFrame table = sample();
    const DataFrame movedTable = std::move(table);
    EXPECT_EQ(movedTable.toJson(), sample().toJson());
    EXPECT_EQ(table.getNumRows(), 0);
    table.append(movedColumn);
    EXPECT_EQ(table.getColNames(), (StringVector{L"x"}));
}

TEST(DataFrameTest, listsBetweenBracesSelect) {
    const DataFrame table = sample();
    EXPECT_EQ(table(all, {L"x", L"id"}).getColNames(), (StringVector{L"x", L"id"}));
    EXPECT_EQ(table(all, {L"x"}).getColNames(), (StringVector{L"x"}));
    EXPECT_EQ(table(all, {0, 2}).getColNames(), (StringVector{L"id", L"city"}));
    EXPECT_EQ(table(all, {0}).getColNames(), (StringVector{L"id"}));
    EXPECT_EQ(table({0}, all).getRowNames(), (StringVector{L"Record 1"}));
    EXPECT_EQ(table({2, 1}, all).getRowNames(), (StringVector{L"Record 3", L"Record 2"}));
    EXPECT_EQ(table(all, Util::except({L"x", L"id"})).getColNames(), (StringVector{L"city"}));
    EXPECT_EQ(table(Util::except({0, 1}), all).getRowNames(), (StringVector{L"Record 3"}));
}

TEST(DataFrameTest, duplicateNames) {
    DataFrame table = sample();
    table.setColName(2, L"x");
    EXPECT_THROW(table.getColIndex(L"x"), DuplicateName);
    EXPECT_THROW(table(all, L"x"), DuplicateName);
    // The same answers for many names, which are looked up another way.
    EXPECT_THROW(table.getColIndexes(StringVector(40, L"x")), DuplicateName);
    EXPECT_THROW(table.getColIndexes(StringVector(40, L"y")), NonExistingNamedIndex);
    EXPECT_EQ(table.getColIndexes(StringVector(40, L"id")), IntVector(40, 0));
    EXPECT_EQ(table(2, 2).toString(), L"Rome");
    table.setRowNames({L"a", L"b", L"a"});
    EXPECT_THROW(table.getRowIndex(L"a"), DuplicateName);
    EXPECT_EQ(table.getRowIndex(L"b"), 1);
}

TEST(DataFrameTest, rowNames) {
    DataFrame table = sample();
    EXPECT_EQ(table.getRowNames(), (StringVector{L"Record 1", L"Record 2", L"Record 3"}));
    EXPECT_EQ(table.getRowIndex(L"Record 3"), 2);
    for (const WString name : {L"Record 0", L"Record 4", L"Record 03", L"Record -2147483648", L"Record", L""})
        EXPECT_THROW(table.getRowIndex(name), NonExistingNamedIndex);
    // Rows keep their names through selections of selections.
    const DataFrame chosen = table(IntVector{2, 0, 2}, all)(IntVector{1, 2}, all);
    EXPECT_EQ(chosen.getRowNames(), (StringVector{L"Record 1", L"Record 3"}));
    EXPECT_EQ(chosen.getRowIndex(L"Record 3"), 1);
    EXPECT_EQ(chosen(L"Record 3", L"city").toString(), L"Rome");

    DataFrame copy = table;
    copy.setRowName(1, L"mid");
    copy.setRowName(2, L"last");
    EXPECT_EQ(copy.getRowIndex(L"last"), 2);
    DataFrame second = copy;
    second.setRowName(0, L"top");
    EXPECT_EQ(copy.getRowNames(), (StringVector{L"Record 1", L"mid", L"last"}));
    EXPECT_EQ(second.getRowNames(), (StringVector{L"top", L"mid", L"last"}));
    EXPECT_THROW(second.getRowIndex(L"Record 1"), NonExistingNamedIndex);
    EXPECT_EQ(table.getRowName(1), L"Record 2");
    EXPECT_THROW(table.setRowName(3, L"x"), IndexOutOfRange);
    EXPECT_THROW(table.setRowNames({L"x"}), NumElementsMismatch);
}

TEST(DataFrameTest, selections) {
    const DataFrame table = sample();
    EXPECT_EQ(table(all, L"city").toStringVector(), (StringVector{L"Oslo", L"", L"Rome"}));
    EXPECT_EQ(table(all, 0).getColName(), L"id");
    EXPECT_EQ(table(all, StringVector{L"x", L"id"}).getColNames(), (StringVector{L"x", L"id"}));
    EXPECT_EQ(table(all, IntVector{2, 2}).getColNames(), (StringVector{L"city", L"city"}));
    EXPECT_EQ(table(all, Util::except(StringVector{L"x", L"x"})).getColNames(),
              (StringVector{L"id", L"city"}));
    EXPECT_EQ(table(all, Util::except(IntVector{0, 2})).getColNames(), (StringVector{L"x"}));
    EXPECT_EQ(table(all, Util::except(IntVector())).getNumCols(), 3);
    EXPECT_TRUE(sharesCells(table, table(all, Util::except(IntVector{2})), 0));

    const auto ids = [](const DataFrame& rows) { return rows(all, L"id").toStringVector(); };
    EXPECT_EQ(ids(table(IntVector{2, 0, 2}, all)), (StringVector{L"p3", L"p1", L"p3"}));
    EXPECT_EQ(ids(table(StringVector{L"Record 2"}, all)), (StringVector{L"p2"}));
    EXPECT_EQ(ids(table(Util::except(IntVector{0, 0}), all)), (StringVector{L"p2", L"p3"}));
    EXPECT_EQ(ids(table(Util::except(StringVector{L"Record 3"}), all)), (StringVector{L"p1", L"p2"}));
    EXPECT_EQ(table(IntVector(), all).getNumRows(), 0);
    EXPECT_EQ(table(IntVector(), all).getNumCols(), 3);
    EXPECT_EQ(table(all, L"id").select(IntVector{1})(0).toString(), L"p2");

    EXPECT_THROW(table(IntVector{3}, all), IndexOutOfRange);
    EXPECT_THROW(table(Util::except(IntVector{-1}), all), IndexOutOfRange);
    EXPECT_THROW(table(all, Util::except(IntVector{3})), ColumnIndexOutOfRange);
    EXPECT_THROW(table(all, Util::except(StringVector{L"none"})), NonExistingNamedIndex);
    EXPECT_THROW(table(0, L"none"), NonExistingNamedIndex);
    EXPECT_THROW(table(3, 0), IndexOutOfRange);
    EXPECT_THROW(table(L"Record 9", 0), NonExistingNamedIndex);
}

TEST(DataFrameTest, writesLeaveOtherTablesAlone) {
    const DataFrame table = sample();
    DataFrame copy = table;
    DataFrame rows = table(IntVector{2, 2, 0}, all);
    DataFrameColumn column = table(all, L"x");
    copy(0, L"x") = 7;
    rows(1, L"city") = WString(L"Bern");
    column(2) = -1;
    EXPECT_EQ(table(0, L"x").toDouble(), 1.5);
    EXPECT_EQ(table(2, L"x").toDouble(), 3);
    EXPECT_EQ(copy(0, L"x").toDouble(), 7);
    EXPECT_TRUE(sharesCells(copy, table, 0) && sharesCells(copy, table, 2));
    EXPECT_FALSE(sharesCells(copy, table, 1));
    EXPECT_EQ(rows(all, L"city").toStringVector(), (StringVector{L"Rome", L"Bern", L"Oslo"}));
    EXPECT_EQ(table(2, L"city").toString(), L"Rome");
    EXPECT_EQ(column.toDoubleVector()[2], -1);
    const double* cells = copy(all, L"x").values().data();
    copy(1, L"x") = 8;  // nobody else sees the column now
    EXPECT_EQ(copy(all, L"x").values().data(), cells);
}

TEST(DataFrameTest, elements) {
    DataFrame table = sample();
    EXPECT_EQ(table(0, L"x").toString(), L"1.5");
    EXPECT_THROW(table(0, L"x").toInt(), ConversionFailure);
    EXPECT_THROW(table(1, L"x").toInt(), ConversionFailure);
    EXPECT_THROW(table(0, L"city").toDouble(), ConversionFailure);
    EXPECT_TRUE(table(1, L"x").isMissing() && table(1, L"city").isMissing());
    EXPECT_TRUE(std::isnan(table(1, L"city").toDouble()));

    table(0, L"city") = 12;
    EXPECT_EQ(table(0, L"city").toInt(), 12);
    table(1, L"x") = WString(L" 2e1 ");
    EXPECT_EQ(table(1, L"x").toInt(), 20);
    EXPECT_THROW(table(1, L"x") = WString(L"many"), ConversionFailure);
    EXPECT_EQ(table(1, L"x").toInt(), 20);
    table(1, L"x") = WString();
    table(0, L"city") = kNaN;
    EXPECT_TRUE(table(1, L"x").isMissing() && table(0, L"city").isMissing());

    // Cells assigned from cells take the value.
    table(0, L"id") = table(2, L"city");
    table(1, L"city") = table(0, L"x");
    table(2, L"x") = table(1, L"x");
    EXPECT_EQ(table(0, L"id").toString(), L"Rome");
    EXPECT_EQ(table(1, L"city").toString(), L"1.5");
    EXPECT_TRUE(table(2, L"x").isMissing());
    EXPECT_THROW(table(2, L"x") = table(2, L"city"), ConversionFailure);

    const DataFrame& constant = table;
    EXPECT_THROW(const_cast<DataFrameElement&&>(constant(0, 0)) = 1.0, Exception);
    EXPECT_EQ(table(0, L"id").toString(), L"Rome");
}

TEST(DataFrameTest, columnConversions) {
    const DataFrameColumn column(L"t", StringVector{L"2", L"", L"-3"});
    EXPECT_EQ(column.toDoubleVector()[2], -3);
    EXPECT_TRUE(std::isnan(column.toDoubleVector()[1]));
    EXPECT_THROW(column.toIntVector(), ConversionFailure);
    EXPECT_EQ(column.select(IntVector{2, 0}).toIntVector(), (IntVector{-3, 2}));
    EXPECT_THROW(column.values(), NonNumericData);
    EXPECT_THROW(DataFrameColumn(L"t", StringVector{L"2", L"two"}).toDoubleVector(), ConversionFailure);
    EXPECT_EQ(DataFrameColumn(L"i", IntVector{4, 5}).toStringVector(), (StringVector{L"4", L"5"}));
    EXPECT_EQ(DataFrameColumn().getNumRows(), 0);
    EXPECT_THROW(column(3), IndexOutOfRange);
}

TEST(DataFrameTest, growth) {
    DataFrame table = sample();
    table.append(Vector{1, 2, 3});
    Vector named{4, 5, 6};
    named.setName(L"named");
    table.append(named);
    table.append(IntVector{7, 8, 9});
    table.append(StringVector{L"a", L"b", L"c"});
    EXPECT_EQ(table.getColNames(IntVector{3, 4, 5, 6}), (StringVector{L"Var4", L"named", L"Var6", L"Var7"}));

    table = sample();
    table.setIndexedColNames({L"id"});
    table.insert(1, table);
    EXPECT_EQ(table.getColNames(), (StringVector{L"id", L"id", L"x", L"city", L"x", L"city"}));
    EXPECT_EQ(table.getIndexedColIndices(), (IntVector{0, 1}));
    table.append(table);
    EXPECT_EQ(table.getNumCols(), 12);

    const DataFrame before = sample();
    DataFrame kept = before;
    EXPECT_THROW(kept.append(Vector{1, 2}), NumRowsMismatch);
    EXPECT_THROW(kept.append(before(IntVector{0}, all)), NumRowsMismatch);
    EXPECT_THROW(kept.insert(4, before), ColumnIndexOutOfRange);
    EXPECT_THROW(kept.insert(-1, before), ColumnIndexOutOfRange);
    EXPECT_EQ(kept.getColNames(), before.getColNames());

    DataFrame empty;
    empty.append(before(IntVector{2, 1}, all)(all, L"x"));
    EXPECT_EQ(empty.getRowNames(), (StringVector{L"Record 3", L"Record 2"}));
    empty.append(DataFrame());
    EXPECT_EQ(empty.getNumCols(), 1);
}

TEST(DataFrameTest, textForPeople) {
    DataFrame table = sample();
    table(0, L"x") = 1234567.0;
    table(2, L"x") = -0.123456789;
    table(2, L"id") = WString(L"\u00e9\n");
    table.setRowName(1, L"two");
    EXPECT_EQ(table.toString(),
              L"people\n"
              L"          id          x  city\n"
              L"Record 1  p1    1234567  Oslo\n"
              L"two       p2\n"
              L"Record 3  \u00e9   -0.123457  Rome\n");
    table.setName(L"");
    EXPECT_EQ(table(all, StringVector{L"x"}).toString(1),
              L"                x\nRecord 1  1234567\n... 2 more rows\n");
    EXPECT_EQ(table(all, StringVector{L"x"}).toString(0), L"  x\n... 3 more rows\n");
    EXPECT_EQ(DataFrame(L"none").toString(), L"none\n");
    EXPECT_THROW(table.toString(-1), ValueOutOfRange);
}

TEST(DataFrameTest, collections) {
    DataFrameVector tables(DataFrame(L"a"), DataFrame(L"b"));
    tables.append(tables);
    tables.push_back(sample());
    EXPECT_EQ(tables.size(), 5u);
    tables.remove(L"a");
    EXPECT_EQ(tables[0].getName() + tables[1].getName(), L"ba");
    EXPECT_TRUE(tables.exists(L"people"));
    tables[L"people"](0, L"x") = 2;
    EXPECT_EQ(tables.at(L"people")(0, 1).toInt(), 2);
    EXPECT_THROW(tables.at(L"c"), NonExistingNamedIndex);
    EXPECT_THROW(tables.remove(L"c"), NonExistingNamedIndex);
    EXPECT_THROW(tables[4], IndexOutOfRange);
    EXPECT_EQ(tables.toString().substr(0, 5), L"b\n\na\n");
}

}  // namespace
}  // namespace Tessel
