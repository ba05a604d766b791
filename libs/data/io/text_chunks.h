#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace Tessel::IO {

/// A part of delimited text: whole records, and how many lines at most stand before them.
struct Chunk {
    const char* begin;
    const char* end;
    std::size_t firstRow;
};

/// Cuts text at ends of records into chunks of about `size` bytes. A record ends with a line feed outside
/// quotes; when the text breaks the rules of quoting, the cuts are right up to the first break.
/// `firstRow` of the first chunk is 0; `numRows` becomes the number of records, empty lines included.
std::vector<Chunk> cutIntoChunks(std::string_view text, std::size_t size, std::size_t& numRows);

}  // namespace Tessel::IO
