#include "data/column_cells.h"

#include <cmath>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "data/column_access.h"

namespace Tessel {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

std::shared_ptr<const RowIndexes> rowList(RowIndexes rows) {
    return std::make_shared<const RowIndexes>(std::move(rows));
}

std::shared_ptr<ColumnCells> select(const std::shared_ptr<ColumnCells>& cells, RowIndexes rows) {
    return RowSelector(rowList(std::move(rows))).select(cells);
}

TEST(ColumnCellsTest, rankCodes) {
    struct Case {
        std::vector<double> numbers, distinct;
        std::vector<std::uint32_t> codes;
    };
    const Case cases[] = {
        {{}, {}, {}},
        {{kNaN, kNaN}, {}, {0, 0}},
        {{3, 1, 3, kNaN, 2}, {1, 2, 3}, {2, 0, 2, 3, 1}},
        {{-0.0, 1, 0.0, -0.0}, {0, 1}, {0, 1, 0, 0}},
        {{kInf, -kInf, 5e-324, 0}, {-kInf, 0, 5e-324, kInf}, {3, 0, 2, 1}},
    };
    for (const Case& known : cases) {
        const auto cells = ColumnCells::ofNumbers(known.numbers);
        EXPECT_EQ(cells->distinctNumbers(), known.distinct);
        EXPECT_EQ(cells->rankCodes().codes, known.codes);
    }
    EXPECT_FALSE(std::signbit(ColumnCells::ofNumbers({-0.0})->distinctNumbers()[0]));
    const auto chosen = select(ColumnCells::ofNumbers({9, 1, 5}), {2, 0, 2});
    EXPECT_EQ(chosen->distinctNumbers(), (std::vector<double>{5, 9}));
    EXPECT_EQ(chosen->rankCodes().codes, (std::vector<std::uint32_t>{0, 1, 0}));
}

TEST(ColumnCellsTest, factsFollowWrites) {
    auto numbers = ColumnCells::ofNumbers({2, 1});
    EXPECT_EQ(numbers->rankCodes().codes[0], 1u);
    EXPECT_EQ(numbers->distinctNumbers()[0], 1.0);
    ColumnCells::assign(numbers, 0, 0.5);
    EXPECT_EQ(numbers->rankCodes().codes[0], 0u);
    EXPECT_EQ(numbers->distinctNumbers()[0], 0.5);

    const StringVector texts{L"b", L"", L"a", L"b"};
    auto cells = ColumnCells::ofTexts(texts.elements());
    EXPECT_EQ(cells->presentCodes(), (std::vector<std::int32_t>{0, 1}));
    EXPECT_EQ(select(cells, {1, 2, 3})->presentCodes(), (std::vector<std::int32_t>{1, 0}));
    ColumnCells::assign(cells, 0, L"new");
    ColumnCells::assign(cells, 3, L"");
    EXPECT_EQ(cells->text(0), L"new");
    EXPECT_TRUE(cells->isMissing(3));
    EXPECT_EQ(cells->presentCodes(), (std::vector<std::int32_t>{2, 1}));
}

TEST(ColumnCellsTest, newTextsGrowAnOwnDictionaryOnly) {
    auto cells = ColumnCells::ofTexts(StringVector{L"a", L"b"}.elements());
    const auto original = cells->sharedDictionary();
    ColumnCells::assign(cells, 0, L"c");
    EXPECT_EQ(original->size(), 2);
    const Dictionary* own = &cells->dictionary();
    ColumnCells::assign(cells, 0, L"d");
    EXPECT_EQ(&cells->dictionary(), own);  // grown in place, so that n new texts cost n steps

    auto copy = cells;
    ColumnCells::assign(copy, 1, L"d");   // no new text: the copy keeps the dictionary ...
    ColumnCells::assign(cells, 1, L"f");  // ... which must then not grow under it
    EXPECT_EQ(copy->text(1), L"d");
    EXPECT_EQ(cells->text(1), L"f");
    EXPECT_EQ(copy->dictionary().find(L"f"), kMissingCode);
}

TEST(ColumnCellsTest, selectionsShareTheComposedRows) {
    const auto a = ColumnCells::ofNumbers({10, 20, 30, 40});
    const auto b = ColumnCells::ofTexts(StringVector{L"w", L"x", L"", L"z"}.elements());
    RowSelector outer(rowList({3, 2, 1}));
    const auto outerA = outer.select(a), outerB = outer.select(b);
    EXPECT_EQ(outerA->selection(), outerB->selection());
    RowSelector inner(rowList({2, 0, 0}));
    const auto innerA = inner.select(outerA), innerB = inner.select(outerB), innerRoot = inner.select(a);
    EXPECT_EQ(innerA->selection(), innerB->selection());
    EXPECT_EQ(*innerA->selection(), (RowIndexes{1, 3, 3}));
    EXPECT_EQ(&innerA->root(), a.get());
    EXPECT_EQ(*innerRoot->selection(), (RowIndexes{2, 0, 0}));
    EXPECT_EQ(std::vector<double>(innerA->numbers().begin(), innerA->numbers().end()),
              (std::vector<double>{20, 40, 40}));
    EXPECT_EQ(innerB->text(0) + innerB->text(2), L"xz");
    EXPECT_TRUE(outerB->isMissing(1));
    EXPECT_EQ(a->numbers().data(), a->root().numbers().data());
}

TEST(ColumnCellsTest, threadsMayAskForTheSameFact) {
    std::vector<double> numbers(50000);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = static_cast<double>(i * 7919 % numbers.size());
    RowIndexes rows(numbers.size());
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<std::int32_t>(rows.size() - 1 - i);
    const auto cells = select(ColumnCells::ofNumbers(numbers), rows);
    std::vector<const RankCodes*> seen(8);
    std::vector<double> sums(seen.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&, i] {
            seen[i] = &cells->rankCodes();
            for (const auto code : seen[i]->codes) sums[i] += code;
        });
    for (std::thread& thread : threads) thread.join();
    const auto n = static_cast<double>(numbers.size());
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i], seen[0]);
        EXPECT_EQ(sums[i], n * (n - 1) / 2);  // a permutation of 0 .. n-1
    }
}

}  // namespace
}  // namespace Tessel
