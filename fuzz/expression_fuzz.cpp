#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/util/tables.h>

// Entry of a fuzzer for column expressions, for example clang++ -fsanitize=fuzzer,address. Whatever the text,
// the outcome is a column or a Tessel::Exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Tessel;
    DataFrame table;
    table.append(DataFrameColumn(L"x", Vector{1, -2.5, 0}));
    table.append(DataFrameColumn(L"Petal length", Vector{3, 4, 5}));
    table.append(DataFrameColumn(L"name", StringVector{L"a", L"b", L""}));
    try {
        Util::calculateExpression(
            table, Convert::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size)));
    } catch (const Exception&) {
    }
    return 0;
}
