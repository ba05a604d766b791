#include <algorithm>

#include <tessel/data/convert.h>
#include <tessel/data/util/tables.h>

#include "data/column_access.h"
#include "data/files.h"

namespace Tessel::Util {
namespace {

using Cells = std::shared_ptr<ColumnCells>;

template <class T>
std::vector<T> concatenated(std::span<const T> first, std::span<const T> second) {
    std::vector<T> both;
    both.reserve(first.size() + second.size());
    both.insert(both.end(), first.begin(), first.end());
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

/// The texts of both columns under one dictionary, which begins with that of `first`.
Cells concatenatedTexts(const ColumnCells& first, const ColumnCells& second) {
    if (first.sharedDictionary() == second.sharedDictionary())
        return ColumnCells::ofCodes(first.sharedDictionary(), concatenated(first.codes(), second.codes()));

    TextEncoder encoder(first.dictionary());
    std::vector<std::int32_t> codeInBoth(second.dictionary().levels().size(), kMissingCode);
    for (const std::int32_t code : second.presentCodes())
        codeInBoth[static_cast<std::size_t>(code)] = encoder.encode(second.dictionary()[code]);
    std::vector<std::int32_t> codes = concatenated(first.codes(), second.codes());
    for (auto code = codes.begin() + first.numRows(); code != codes.end(); ++code)
        if (*code != kMissingCode) *code = codeInBoth[static_cast<std::size_t>(*code)];
    return ColumnCells::ofCodes(encoder.finish(), std::move(codes));
}

Cells concatenated(const ColumnCells& first, const ColumnCells& second) {
    return first.isNumeric() ? ColumnCells::ofNumbers(concatenated(first.numbers(), second.numbers()))
                             : concatenatedTexts(first, second);
}

/// Per column of `a` the column of `b` that continues it.
IntVector matchedColumns(const DataFrame& a, const DataFrame& b) {
    if (a.getNumCols() != b.getNumCols()) throw NumColumnsMismatch(a.getNumCols(), b.getNumCols());
    const StringVector names = a.getColNames();
    IntVector matched(names.size());
    if (names == b.getColNames()) {
        for (std::size_t i = 0; i < matched.size(); ++i) matched[i] = static_cast<int>(i);
    } else {
        a.getColIndexes(names);  // names that a has twice tell no column of b
        matched = b.getColIndexes(names);
    }
    for (std::size_t i = 0; i < matched.size(); ++i) {
        const bool isNumeric = a.isNumeric(static_cast<int>(i));
        if (b.isNumeric(matched[i]) != isNumeric)
            throw ConversionFailure(Convert::toUtf8Lossy(names[i]),
                                    isNumeric ? "a numeric column" : "a text column");
    }
    return matched;
}

}  // namespace

DataFrame colBind(const DataFrame& a, const DataFrame& b) {
    DataFrame bound = a;
    bound.append(b);
    return bound;
}

DataFrame rowBind(const DataFrame& a, const DataFrame& b) {
    if (b.getNumCols() == 0) return a;
    if (a.getNumCols() == 0) {
        DataFrame bound = b;
        bound.setName(a.getName());
        return bound;
    }
    const IntVector matched = matchedColumns(a, b);
    const RowNames::Pointer rowNames = RowNames::concatenate(ColumnAccess::rowNames(a), a.getNumRows(),
                                                             ColumnAccess::rowNames(b), b.getNumRows());
    DataFrame bound(a.getName());
    for (int column = 0; column < a.getNumCols(); ++column) {
        const int continuation = matched[static_cast<std::size_t>(column)];
        bound.append(ColumnAccess::makeColumn(
            a.getColName(column),
            concatenated(*ColumnAccess::cells(a, column), *ColumnAccess::cells(b, continuation)), rowNames));
    }
    bound.setIndexedColNames(a.getIndexedColNames());
    return bound;
}

WString readFile(const WString& path) {
    constexpr wchar_t kByteOrderMark = 0xFEFF;
    WString text = Convert::fromUtf8(Files::readBytes(path));
    if (text.starts_with(kByteOrderMark)) text.erase(0, 1);
    return text;
}

}  // namespace Tessel::Util
