#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessel/data/errors.h>
#include <tessel/data/reader.h>

// Entry of a fuzzer for delimited text, for example clang++ -fsanitize=fuzzer,address. The first byte chooses
// the options, the others are the text. Whatever they are, the outcome is a table or a Tessel::Exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    Tessel::TextOptions options;
    options.hasHeader = (data[0] & 1) == 0;
    options.literalQuotes = (data[0] & 2) == 0;
    options.delimiter = std::wstring_view(L",;\t-")[(data[0] >> 2) & 3];
    try {
        Tessel::Reader::parseText(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1),
                                  options);
    } catch (const Tessel::Exception&) {
    }
    return 0;
}
