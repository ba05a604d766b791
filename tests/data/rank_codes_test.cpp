#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "data/column_cells.h"
#include "data/random.h"

namespace {

using namespace Tessel;

/// Ranks by comparison sorts of the distinct values.
void expectRanks(const std::vector<double>& numbers) {
    std::vector<double> distinct;
    for (const double number : numbers)
        if (!std::isnan(number)) distinct.push_back(number);
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    const auto cells = ColumnCells::ofNumbers(numbers);
    const RankCodes& ranks = cells->rankCodes();
    EXPECT_EQ(ranks.numDistinct, distinct.size());
    EXPECT_EQ(cells->distinctNumbers(), distinct);
    EXPECT_EQ(ranks.smallest, distinct.empty() ? 0.0 : distinct.front());
    EXPECT_EQ(ranks.largest, distinct.empty() ? 0.0 : distinct.back());
    ASSERT_EQ(ranks.codes.size(), numbers.size());
    for (std::size_t row = 0; row < numbers.size(); ++row) {
        const auto found = std::lower_bound(distinct.begin(), distinct.end(), numbers[row]);
        const auto rank =
            std::isnan(numbers[row]) ? distinct.size() : static_cast<std::size_t>(found - distinct.begin());
        ASSERT_EQ(ranks.codes[row], rank) << "row " << row << ", " << numbers[row];
    }
}

TEST(RankCodes, ShortAndLongColumns) {
    using Limits = std::numeric_limits<double>;
    const double special[] = {0.0,
                              -0.0,
                              Limits::quiet_NaN(),
                              Limits::infinity(),
                              -Limits::infinity(),
                              Limits::denorm_min(),
                              -Limits::denorm_min(),
                              Limits::max(),
                              Limits::lowest()};
    Random random(5);
    for (const std::size_t size : {0u, 1u, 9u, 511u, 512u, 5000u, 140000u}) {
        std::vector<double> mixed, whole, clustered;
        for (std::size_t row = 0; row < size; ++row) {
            const std::uint64_t kind = random.nextBelow(4);
            mixed.push_back(kind == 0   ? special[row % 9]
                            : kind == 1 ? random.nextNormal() * std::exp(200.0 * random.nextNormal())
                                        : std::floor(20.0 * random.nextNormal()) / 8.0);
            whole.push_back(static_cast<double>(random.nextBelow(1000)));
            clustered.push_back(kind == 0 ? random.nextNormal() : 1.0 + 1e-12 * random.nextNormal());
        }
        expectRanks(mixed);
        expectRanks(whole);
        expectRanks(clustered);
        expectRanks(std::vector<double>(size, -1.5));
        expectRanks(std::vector<double>(size, Limits::quiet_NaN()));
    }
}

}  // namespace
