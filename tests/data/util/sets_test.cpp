#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>
#include <tessel/data/util/sets.h>

#include "data/random.h"

namespace Tessel::Util {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Sets, UniqueElementsKeepTheOrderOfFirstAppearance) {
    Vector values{3, kNaN, -0.0, 3, 0.0, kInfinity, 1, kNaN};
    values.setName(L"v");
    EXPECT_EQ(uniqueElements(values), (Vector{3, 0, kInfinity, 1}));
    EXPECT_EQ(uniqueElements(values).getName(), L"v");
    EXPECT_EQ(uniqueElements(IntVector{2, -1, 2, 0}), (IntVector{2, -1, 0}));
    EXPECT_EQ(uniqueElements(StringVector{L"b", L"", L"a", L"b", L"B"}), (StringVector{L"b", L"a", L"B"}));
    EXPECT_TRUE(uniqueElements(Vector()).empty());

    DataFrame table;
    table.append(DataFrameColumn(L"t", StringVector{L"x", L"y", L"", L"z", L"y"}));
    table.append(DataFrameColumn(L"n", Vector{0.1, 2, kNaN, 0.1, 2}));
    const DataFrame rows = table(IntVector{4, 2, 1, 3}, all);
    EXPECT_EQ(uniqueElements(rows(all, L"t")), (StringVector{L"y", L"z"}));
    EXPECT_EQ(uniqueElements(rows(all, L"n")), (StringVector{L"2", L"0.1"}));
    EXPECT_EQ(numUniqueElements(rows(all, L"t")), 2);
    EXPECT_EQ(numUniqueElements(rows(all, L"n")), 2);
    EXPECT_EQ(numUniqueElements(values), 4);
    EXPECT_EQ(numUniqueElements(IntVector{5, 5}), 1);
    EXPECT_EQ(numUniqueElements(StringVector{L"", L""}), 0);
}

TEST(Sets, UniqueElementsOfManyNumbersAgreeWithSorting) {
    Random random(1);
    for (const std::uint64_t bound : {10u, 5000u, 4000000000u}) {
        Vector values(30000);
        for (double& value : values) value = (static_cast<double>(random.nextBelow(bound)) - 100.0) / 8.0;
        std::vector<double> sorted(values.begin(), values.end());
        std::sort(sorted.begin(), sorted.end());
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        std::vector<double> distinct = uniqueElements(values).elements();
        std::sort(distinct.begin(), distinct.end());
        EXPECT_EQ(distinct, sorted);
    }
}

TEST(Sets, IntersectionAndInclusion) {
    const StringVector a{L"b", L"A", L"b", L"", L"a", L"\u00C4rger", L"STRASSE"};
    const StringVector b{L"a", L"B", L"b", L"", L"\u00E4RGER", L"stra\u00DFe"};
    EXPECT_EQ(intersection(a, b), (StringVector{L"b", L"a"}));
    EXPECT_EQ(intersection(a, b, false), (StringVector{L"b", L"A", L"\u00C4rger"}));
    EXPECT_TRUE(intersection(StringVector(), b, false).empty());
    EXPECT_TRUE(intersection(a, StringVector()).empty());
    // Pairs by Python 3.11's str.lower(); the last two differ in the letter, not in its case.
    const StringVector upper{L"\u0218", L"\u0150", L"\u0178", L"\u0141", L"\u03A9",
                             L"\u0416", L"\u1EDC", L"\u00D7", L"i"};
    const StringVector lower{L"\u0219", L"\u0151", L"\u00FF", L"\u0142", L"\u03C9",
                             L"\u0436", L"\u1EDD", L"\u00F7", L"\u0130"};
    EXPECT_EQ(intersection(upper, lower, false), StringVector(upper.begin(), upper.end() - 2));

    EXPECT_TRUE(uniqueElementsOfXexistInY(Vector{1, 1, kNaN}, Vector{2, 1}));
    EXPECT_FALSE(uniqueElementsOfXexistInY(Vector{1, 3}, Vector{2, 1}));
    EXPECT_TRUE(uniqueElementsOfXexistInY(IntVector(), IntVector()));
    EXPECT_FALSE(uniqueElementsOfXexistInY(IntVector{0}, IntVector()));
    EXPECT_TRUE(uniqueElementsOfXexistInY(StringVector{L"a", L""}, StringVector{L"c", L"a"}));
    EXPECT_FALSE(uniqueElementsOfXexistInY(StringVector{L"A"}, StringVector{L"a"}));
}

TEST(Groups, MeansAndMediansByGroup) {
    // R 4.2: tapply(x, g, mean, na.rm = TRUE), likewise median; group c has no value.
    const Vector values{1, 5, kNaN, 2, 9, 100, 4, kNaN};
    const StringVector groups{L"b", L"a", L"c", L"b", L"b", L"", L"b", L"a"};
    const DataFrame means = groupMean(values, groups), medians = groupMedian(values, groups);
    EXPECT_EQ(means.getColNames(), (StringVector{L"Mean"}));
    EXPECT_EQ(medians.getColNames(), (StringVector{L"Median"}));
    EXPECT_EQ(means.getRowNames(), (StringVector{L"b", L"a", L"c"}));
    EXPECT_EQ(means(L"b", 0).toDouble(), 4);
    EXPECT_EQ(medians(L"b", 0).toDouble(), 3);
    EXPECT_EQ(means(L"a", 0).toDouble(), 5);
    EXPECT_EQ(medians(L"a", 0).toDouble(), 5);
    EXPECT_TRUE(means(L"c", 0).isMissing() && medians(L"c", 0).isMissing());

    DataFrame table;
    table.append(DataFrameColumn(L"g", Vector{2.5, 1, kNaN, 2.5, 1}));
    table.append(DataFrameColumn(L"v", StringVector{L"1", L"2", L"3", L"", L"8"}));
    const DataFrame rows = table(IntVector{4, 3, 2, 1, 0}, all);
    const DataFrame byNumber = groupMean(rows(all, L"v"), rows(all, L"g"));
    EXPECT_EQ(byNumber.getRowNames(), (StringVector{L"1", L"2.5"}));
    EXPECT_EQ(byNumber(all, 0).toDoubleVector(), (Vector{5, 1}));
    EXPECT_EQ(groupMedian(rows(all, L"g"), rows(all, L"v")).getRowNames(),
              (StringVector{L"8", L"3", L"2", L"1"}));

    EXPECT_EQ(groupMean(Vector(), StringVector()).getNumRows(), 0);
    EXPECT_THROW(groupMean(Vector{1}, StringVector()), NumElementsMismatch);
    EXPECT_THROW(groupMedian(rows(all, 0), table(IntVector{0}, all)(all, 0)), NumRowsMismatch);
    // 0.1 a million times: the plain sum divided by the count is off by 1.3e-12.
    EXPECT_EQ(groupMean(Vector(1000000, 0.1), StringVector(1000000, L"g"))(0, 0).toDouble(), 0.1);
}

TEST(Orders, ArgSortIsStableWithNaNLast) {
    const Vector values{2, kNaN, -1, 2, -0.0, 0.0, kInfinity, -kInfinity, kNaN};
    EXPECT_EQ(argSort(values), (IntVector{7, 2, 4, 5, 0, 3, 6, 1, 8}));
    EXPECT_EQ(argSort(values, SortDirection::DESCENDING), (IntVector{6, 0, 3, 4, 5, 2, 7, 1, 8}));
    EXPECT_TRUE(argSort(Vector()).empty());

    Random random(5);
    for (const std::size_t size : {1999u, 2000u, 20000u}) {
        Vector many(size);
        for (double& value : many) {
            value = std::round(random.nextNormal() * 300.0) * 1e-3;
            if (random.nextBelow(20) == 0) value = kNaN;
        }
        for (const bool isDescending : {false, true}) {
            IntVector expected(size);
            std::iota(expected.begin(), expected.end(), 0);
            std::stable_sort(expected.begin(), expected.end(), [&](int i, int j) {
                const double a = many[static_cast<std::size_t>(i)], b = many[static_cast<std::size_t>(j)];
                if (std::isnan(a) || std::isnan(b)) return !std::isnan(a) && std::isnan(b);
                return isDescending ? a > b : a < b;
            });
            EXPECT_EQ(argSort(many, isDescending ? SortDirection::DESCENDING : SortDirection::ASCENDING),
                      expected);
        }
    }
}

TEST(Orders, FirstLargestNumberOfEachRow) {
    const Vector cells{1, 3, 3, kNaN, -kInfinity, kNaN, kNaN, kNaN, kNaN, 5, kNaN, 4};
    const IntVector expected{1, 1, -1, 0};
    const Matrix byRows(4, 3, cells);
    EXPECT_EQ(indexesOfRowMax(byRows), expected);
    Matrix byColumns(4, 3, 0.0, MatrixOrderType::COLUMN_MAJOR);
    for (int row = 0; row < 4; ++row) byColumns.setRow(row, byRows.getRow(row));
    EXPECT_EQ(indexesOfRowMax(byColumns), expected);
    DataFrame table(byRows);
    EXPECT_EQ(indexesOfRowMax(table), expected);
    table.insert(0, [] {
        DataFrame id;
        id.append(DataFrameColumn(L"id", StringVector{L"p", L"q", L"r", L"s"}));
        return id;
    }());
    EXPECT_THROW(indexesOfRowMax(table), NonNumericData);
    table.setIndexedColNames({L"id"});
    EXPECT_EQ(indexesOfRowMax(table), (IntVector{2, 2, -1, 1}));
    EXPECT_EQ(indexesOfRowMax(Matrix(2, 0)), (IntVector{-1, -1}));
}

TEST(Elements, BindRangeNamesAndJoin) {
    constexpr int kLargest = std::numeric_limits<int>::max(), kSmallest = std::numeric_limits<int>::min();
    StringVector texts{L"a", L"b", L"c"};
    texts.setName(L"n");
    EXPECT_EQ(bind(texts, IntVector{2, 0, 2}), (StringVector{L"c", L"a", L"c"}));
    EXPECT_EQ(bind(texts, IntVector()).getName(), L"n");
    EXPECT_EQ(bind(Vector{1.5, 2.5}, IntVector{1}), (Vector{2.5}));
    EXPECT_THROW(bind(texts, IntVector{3}), IndexOutOfRange);
    EXPECT_THROW(bind(IntVector{1}, IntVector{-1}), IndexOutOfRange);

    EXPECT_EQ(range(-1, 2), (IntVector{-1, 0, 1, 2}));
    EXPECT_EQ(range(3, 3), (IntVector{3}));
    EXPECT_TRUE(range(3, 2).empty());
    EXPECT_EQ(range(kLargest - 1, kLargest), (IntVector{kLargest - 1, kLargest}));
    EXPECT_TRUE(range(kLargest, kSmallest).empty());

    EXPECT_EQ(generateNames(L"PC", 9, 3), (StringVector{L"PC9", L"PC10", L"PC11"}));
    EXPECT_EQ(generateNames(L"", kLargest, 2), (StringVector{L"2147483647", L"2147483648"}));
    EXPECT_TRUE(generateNames(L"x", 1, 0).empty());
    EXPECT_THROW(generateNames(L"x", 1, -1), ValueOutOfRange);

    EXPECT_EQ(join(texts, L", ", L"{", L"}"), L"{a, b, c}");
    EXPECT_EQ(join(IntVector{1, -2}, L"|"), L"1|-2");
    EXPECT_EQ(join(Vector{0.1, kNaN}, L";"), L"0.1;NaN");
    EXPECT_EQ(join(Vector(), L";", L"[", L"]"), L"[]");
}

}  // namespace
}  // namespace Tessel::Util
