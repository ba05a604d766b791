#pragma once

#include <atomic>
#include <mutex>
#include <utility>

namespace Tessel {

/// A value computed at its first use, once, whichever thread asks first. When the computation throws,
/// nothing is kept and the next use tries again.
template <class T>
class Lazy {
 public:
    template <class Make>
    const T& get(Make&& make) const {
        if (!ready_.load(std::memory_order_acquire)) {
            const std::lock_guard lock(mutex_);
            if (!ready_.load(std::memory_order_relaxed)) {
                value_ = std::forward<Make>(make)();
                ready_.store(true, std::memory_order_release);
            }
        }
        return value_;
    }

    bool isReady() const { return ready_.load(std::memory_order_acquire); }

    /// Forgets the value; not to be called while other threads read.
    void reset() {
        if (!ready_.load(std::memory_order_relaxed)) return;
        value_ = T();
        ready_.store(false, std::memory_order_relaxed);
    }

 private:
    mutable T value_{};
    mutable std::atomic<bool> ready_{false};
    mutable std::mutex mutex_;
};

}  // namespace Tessel
