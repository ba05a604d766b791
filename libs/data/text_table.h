#pragma once

#include <cstddef>
#include <vector>

#include <tessel/data/types.h>

namespace Tessel {

/// Lines up columns of texts for people: two blanks between columns, each as wide as its longest text in
/// code points; control characters, which would break the lines, become blanks.
class TextTable {
 public:
    enum class Align { LEFT, RIGHT };

    /// Adds a column of texts from top to bottom, a header included. @pre all columns are equally long
    void addColumn(std::vector<WString> texts, Align align);
    /// The lines, each with its line end and without blanks before it.
    WString toString() const;

    /// A number for people: whole numbers as they are, others with at most 6 significant digits; empty for
    /// NaN.
    static WString numberText(double value);

 private:
    struct Column {
        std::vector<WString> texts;
        std::size_t width;
        Align align;
    };
    std::vector<Column> columns_;
};

}  // namespace Tessel
