#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>

// What fits that run in parallel have in common.

namespace Tessel::Engine {

/// Told now and then, by the thread that called a fit, what share of it is done; what it throws stops the fit
/// and comes out of it. Empty: nobody watches.
using Watch = std::function<void(double shareDone)>;

/// How many threads a computation may use: as many as OpenMP would, and one where it runs beside others, as
/// in a parallel region or in the loop of a crew.
int numThreads();

/// Long loops are parted into stretches of so many items, at any number of threads: sums of stretches are
/// then always the same.
inline constexpr std::uint32_t kSizeOfStretches = 2048;

/// Keeps the first exception out of a parallel region for the thread that started it; work after it is
/// skipped.
class ExceptionCarrier {
 public:
    template <class Work>
    void run(Work&& work) {
        if (isSet_) return;
        try {
            work();
        } catch (...) {
            if (!isSet_.exchange(true)) exception_ = std::current_exception();
        }
    }
    void rethrow() const {
        if (exception_) std::rethrow_exception(exception_);
    }

 private:
    std::atomic<bool> isSet_{false};
    std::exception_ptr exception_;
};

}  // namespace Tessel::Engine
