#include "data/io/text_chunks.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "data/io/parallel.h"

namespace Tessel::IO {
namespace {

/// What a block of text holds, for both answers to the question whether it begins inside quotes.
struct Block {
    bool flipsQuoting = false;
    std::array<std::size_t, 2> numLineFeeds{};   // outside quotes, by "begins inside"
    std::array<const char*, 2> firstLineFeed{};  // null: none
};

/// Like std::count, but in bytes: sums of up to 255 fit into one, so that many are added at once.
std::size_t countLineFeeds(const char* begin, const char* end) {
    std::size_t total = 0;
    while (begin != end) {
        const std::ptrdiff_t length = std::min<std::ptrdiff_t>(end - begin, 255);
        unsigned char count = 0;
        for (std::ptrdiff_t i = 0; i < length; ++i)
            count = static_cast<unsigned char>(count + (begin[i] == '\n'));
        total += count;
        begin += length;
    }
    return total;
}

Block inspect(std::string_view text) {
    Block block;
    const char* position = text.data();
    const char* const end = position + text.size();
    std::size_t inside = 0;
    while (position != end) {
        // Between two quotes all line feeds are of one kind.
        const auto* quote =
            static_cast<const char*>(std::memchr(position, '"', static_cast<std::size_t>(end - position)));
        const char* const stop = quote ? quote : end;
        const std::size_t found = countLineFeeds(position, stop);
        if (found > 0 && block.firstLineFeed[inside] == nullptr)
            block.firstLineFeed[inside] = std::find(position, stop, '\n');
        block.numLineFeeds[inside] += found;
        position = stop;
        if (quote) {
            ++position;
            inside = 1 - inside;
        }
    }
    block.flipsQuoting = inside == 1;
    return block;
}

}  // namespace

std::vector<Chunk> cutIntoChunks(std::string_view text, std::size_t size, std::size_t& numRows) {
    numRows = 0;
    if (text.empty()) return {};
    std::vector<Block> blocks((text.size() + size - 1) / size);
    forEachIndex(blocks.size(), text.size(),
                 [&](std::size_t i) { blocks[i] = inspect(text.substr(i * size, size)); });

    const char* const end = text.data() + text.size();
    std::vector<Chunk> chunks{{text.data(), end, 0}};
    std::size_t inside = 0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const char* const lineFeed = blocks[i].firstLineFeed[inside];
        if (i > 0 && lineFeed != nullptr && lineFeed + 1 != end) {
            chunks.back().end = lineFeed + 1;
            chunks.push_back({lineFeed + 1, end, numRows + 1});
        }
        numRows += blocks[i].numLineFeeds[inside];
        if (blocks[i].flipsQuoting) inside = 1 - inside;
    }
    if (inside == 1 || text.back() != '\n') ++numRows;
    return chunks;
}

}  // namespace Tessel::IO
