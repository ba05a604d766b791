#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "data/random.h"

namespace Tessel::Util {

/// Draws positions in proportion to weights in constant time, by the alias method (Walker 1977) with the
/// construction of Vose, A linear algorithm for generating random numbers with a given distribution, IEEE
/// Transactions on Software Engineering 17, 1991.
class AliasTable {
 public:
    /// Takes over the memory of the table that was there. @pre weights finite, >= 0, not all 0
    void assign(std::span<const double> weights);

    /// What a draw takes from the generator.
    struct Lot {
        double height;  // in the column
        int column;
    };
    /// @pre size > 0, that of the table
    static Lot drawLot(Random& random, std::size_t size) {
        const auto column = static_cast<int>(random.nextBelow(size));
        return {random.nextUniform(), column};
    }
    int positionOf(Lot lot) const {
        const Column& column = columns_[static_cast<std::size_t>(lot.column)];
        // Without a branch, as nobody can tell which is next.
        const int isAlias = lot.height < column.probability ? 0 : 1;
        return lot.column + isAlias * (column.alias - lot.column);
    }

 private:
    struct Column {
        double probability;  // of the column's own position; its alias has the rest
        int alias;
    };

    void pair(std::span<const int> light, std::span<const int> heavy);

    std::vector<Column> columns_;
    std::vector<int> order_;
};

/// @throws ConstraintViolation for weights that are negative or not finite, and where fewer than `needed` are
/// positive.
void requireWeights(std::span<const double> weights, int needed);

}  // namespace Tessel::Util
