#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <ostream>
#include <string>

namespace Tessel::IO {

/// Appends the text of a block to a buffer; called from several threads.
using FormatBlock = std::function<void(std::size_t block, std::string& buffer)>;

/// Formats blocks on all threads and writes them in order. After the first failure nothing more is written,
/// and its exception is thrown again.
inline void writeBlocks(std::ostream& stream, std::size_t numBlocks, const FormatBlock& format) {
    const auto end = static_cast<std::int64_t>(numBlocks);
    std::exception_ptr failure;
#pragma omp parallel if (end > 1)
    {
        std::string buffer;
#pragma omp for ordered schedule(static, 1)
        for (std::int64_t i = 0; i < end; ++i) {
            std::exception_ptr blockFailure;
            try {
                buffer.clear();
                format(static_cast<std::size_t>(i), buffer);
            } catch (...) {
                blockFailure = std::current_exception();
            }
#pragma omp ordered
            {
                if (!failure) failure = blockFailure;
                if (!failure) stream.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
            }
        }
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace Tessel::IO
