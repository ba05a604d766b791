#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>

namespace Tessel::IO {

/// Below this number of bytes or cells waking threads costs more than they save.
inline constexpr std::size_t kParallelSize = 1 << 15;

/// Calls `work(i)` for every i below `count`, on all threads when the work on `size` bytes or cells is worth
/// it. All calls run to their end; then the exception of the lowest i, if any, is thrown again, so that the
/// number of threads decides nothing.
template <class Work>
void forEachIndex(std::size_t count, [[maybe_unused]] std::size_t size, const Work& work) {
    const auto end = static_cast<std::int64_t>(count);
    std::int64_t failed = end;
    std::exception_ptr failure;
#pragma omp parallel for schedule(dynamic, 1) if (end > 1 && size > kParallelSize)
    for (std::int64_t i = 0; i < end; ++i) {
        try {
            work(static_cast<std::size_t>(i));
        } catch (...) {
#pragma omp critical(tessel_io_failure)
            if (i < failed) {
                failed = i;
                failure = std::current_exception();
            }
        }
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace Tessel::IO
