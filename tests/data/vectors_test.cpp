#include <limits>

#include <gtest/gtest.h>

#include <tessel/data/vectors.h>

namespace Tessel {
namespace {

TEST(VectorsTest, constructionAndGrowth) {
    EXPECT_EQ(IntVector(3), (IntVector{0, 0, 0}));
    EXPECT_EQ(IntVector(3, 5), (IntVector{5, 5, 5}));
    const int raw[] = {1, 2};
    EXPECT_EQ(Vector(std::begin(raw), std::end(raw)), (Vector{1, 2}));

    Vector values{1, 2, 3};
    values.append(values);
    values.append(Vector{4});
    values.resize(8, 9.0);
    EXPECT_EQ(values, (Vector{1, 2, 3, 1, 2, 3, 4, 9}));
    values.setName(L"first");
    Vector renamed = values;
    renamed.setName(L"second");
    EXPECT_EQ(values, renamed);
    EXPECT_EQ(values.getName(), L"first");
    EXPECT_EQ(values.front() + values.back(), 10);
    values.clear();
    EXPECT_TRUE(values.empty());
    EXPECT_THROW(values.front(), IndexOutOfRange);
    EXPECT_THROW(values.back(), IndexOutOfRange);
    EXPECT_THROW(renamed.at(8), IndexOutOfRange);
}

TEST(VectorsTest, manySmallAppendsCostLinearTime) {
    IntVector all;
    std::size_t numMoves = 0;
    for (int i = 0; i < 100000; ++i) {
        const int* before = all.data();
        all.append(IntVector{i});
        numMoves += all.data() != before;
    }
    EXPECT_EQ(all.back(), 99999);
    EXPECT_LT(numMoves, 1000u);  // geometric growth; exact growth would move nearly every time
}

TEST(VectorsTest, texts) {
    StringVector texts{L"b", L"c"};
    texts.insert(0, L"a");
    texts.insert(3, L"b");
    EXPECT_EQ(texts, (StringVector{L"a", L"b", L"c", L"b"}));
    EXPECT_THROW(texts.insert(5, L"x"), IndexOutOfRange);
    texts.insert(1, texts[3]);
    EXPECT_EQ(texts.find(L"b"), 1u);
    EXPECT_EQ(texts.find(L"B"), texts.size());
    EXPECT_TRUE(texts.exists(L"c"));
    EXPECT_FALSE(StringVector().exists(L""));

    EXPECT_EQ(texts.toString(), L"{a, b, b, c, b}");
    EXPECT_EQ(StringVector().toString(), L"{}");
    EXPECT_EQ((IntVector{1, -2}).toString(), L"{1, -2}");
    EXPECT_EQ((Vector{1, 2.5, std::numeric_limits<double>::quiet_NaN()}).toString(), L"{1, 2.5, NaN}");
}

}  // namespace
}  // namespace Tessel
