#include "engine/copula/ranks.h"

#include <algorithm>
#include <cmath>

#include <tessel/data/util/sets.h>

#include "data/io/parallel.h"

namespace Tessel::Engine::Copula {

namespace {

/// The positions of the observations without NaN.
std::vector<std::size_t> completeRows(DataMatrix data) {
    std::vector<char> isComplete(data.front().size(), 1);
    for (const std::span<const double> variable : data)
        for (std::size_t row = 0; row < variable.size(); ++row)
            if (std::isnan(variable[row])) isComplete[row] = 0;
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < isComplete.size(); ++row)
        if (isComplete[row]) rows.push_back(row);
    return rows;
}

/// Twice the average rank of each number.
std::vector<std::uint32_t> twiceRanksOf(std::span<const double> row) {
    const std::vector<std::uint32_t> order = ascendingOrder(row);
    std::vector<std::uint32_t> twiceRanks(row.size());
    for (std::size_t first = 0, end = 0; first < order.size(); first = end) {
        while (end < order.size() && row[order[end]] == row[order[first]]) ++end;
        for (std::size_t i = first; i < end; ++i)
            twiceRanks[order[i]] = static_cast<std::uint32_t>(first + 1 + end);
    }
    return twiceRanks;
}

}  // namespace

std::vector<std::uint32_t> ascendingOrder(std::span<const double> row) {
    const IntVector order = Util::argSort(Vector(row.begin(), row.end()));
    return {order.begin(), order.end()};
}

std::optional<Ranks> rankRows(DataMatrix data) {
    const std::optional<std::size_t> length = commonLength(data);
    if (!length) return {};
    const bool hasMissing = hasNaN(data);
    const std::vector<std::size_t> complete = hasMissing ? completeRows(data) : std::vector<std::size_t>();

    Ranks ranks;
    ranks.numRows = hasMissing ? complete.size() : *length;
    if (ranks.numRows < 2) return {};
    ranks.codes.resize(data.size());
    IO::forEachIndex(data.size(), data.size() * ranks.numRows, [&](std::size_t variable) {
        std::vector<double> present;
        for (const std::size_t row : complete) present.push_back(data[variable][row]);
        ranks.codes[variable] = twiceRanksOf(hasMissing ? present : data[variable]);
    });

    std::vector<std::uint32_t> codeOf(2 * ranks.numRows + 1, 0);
    for (const std::vector<std::uint32_t>& variable : ranks.codes) {
        if (std::equal(variable.begin() + 1, variable.end(), variable.begin())) return {};
        for (const std::uint32_t twiceRank : variable) codeOf[twiceRank] = 1;
    }
    for (std::size_t twiceRank = 0; twiceRank < codeOf.size(); ++twiceRank) {
        if (codeOf[twiceRank] == 0) continue;
        codeOf[twiceRank] = static_cast<std::uint32_t>(ranks.twiceRanks.size());
        ranks.twiceRanks.push_back(static_cast<std::uint32_t>(twiceRank));
    }
    for (std::vector<std::uint32_t>& variable : ranks.codes)
        for (std::uint32_t& code : variable) code = codeOf[code];
    return ranks;
}

}  // namespace Tessel::Engine::Copula
