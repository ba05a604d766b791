#pragma once

#include <algorithm>
#include <atomic>
#include <cassert>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

#include "data/util/compensated_sum.h"
#include "data/util/interleaved_sum.h"
#include "engine/parallel.h"

namespace Tessel::Engine {

/// Threads that share the loops of a computation of many short ones.
///
/// The threads of OpenMP meet at the end of each loop, also those that found nothing left to do. Where other
/// programs use the machine too, each meeting waits until the last thread was given a processor, which takes
/// longer than the loop. Here the thread that runs a loop waits for begun work only.
///
/// Each thread begins with its own share of the items, which are neighbours: in loops over the same items it
/// then finds in the memory near its processor what it left there. Threads that are done take from others.
class Crew {
 public:
    /// @param size  of all threads, the one that runs the loops included; others start with a loop for them.
    explicit Crew(int size) : maxSize_(static_cast<std::size_t>(size)), shares_(maxSize_) {}
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    ~Crew();

    int size() const { return static_cast<int>(shares_.size()); }
    bool isOneThread() const { return shares_.size() == 1; }

    /// Runs work(i, thread) for i below n, those of a share in ascending order; thread is below `size`, and 0
    /// on the thread that called. Not to be called by two threads at once, nor by the work.
    /// @throws the first exception of the work, after which the rest is left out.
    /// @pre n < 2^32
    template <class Work>
    void forEach(std::size_t n, Work&& work) {
        struct Loop {
            Work& work;
            ExceptionCarrier carrier{};

            static void run(void* loop, std::uint32_t i, int thread) {
                Loop& self = *static_cast<Loop*>(loop);
                self.carrier.run([&] { self.work(std::size_t{i}, thread); });
            }
        } loop{work};
        assert(n >> 31 >> 1 == 0);
        if (n > 0) share(static_cast<std::uint32_t>(n), &Loop::run, &loop);
        loop.carrier.rethrow();
    }

 private:
    using Run = void (*)(void* loop, std::uint32_t i, int thread);

    void start(std::size_t size);
    void share(std::uint32_t n, Run run, void* loop);
    void wake();
    std::uint32_t takeAll(std::size_t thread);
    bool takeOne(std::size_t share, std::size_t thread);
    void serve(std::size_t thread);
    void waitForLoop(std::uint32_t numLoops);
    /// Of n items the first of a share, or behind the last.
    static std::uint32_t beginOf(std::size_t share, std::uint32_t n, std::size_t numShares) {
        return static_cast<std::uint32_t>(std::min(share, numShares) * n / numShares);
    }

    std::size_t maxSize_;  // as far as the system has threads
    std::vector<std::thread> helpers_;
    // What many threads write lies apart from what they read.
    // The number of the loop in the upper half, how many items of the share nobody has taken yet in the
    // lower. A loop is not over before all its items are, so who takes one has read what belongs to it.
    struct alignas(64) Share {
        std::atomic<std::uint64_t> offer{0};
    };
    std::vector<Share> shares_;                          // by thread
    alignas(64) std::atomic<std::uint32_t> numDone_{0};  // by others than the thread that runs the loop
    alignas(64) std::atomic<std::uint32_t> numItems_{0};
    std::atomic<std::size_t> numShares_{1};  // of threads that take part
    std::atomic<Run> run_{nullptr};
    std::atomic<void*> loop_{nullptr};
    std::atomic<bool> isClosed_{false};
    // A new loop wakes those that sleep: who counts itself as asleep looks at the number of loops again
    // behind that.
    std::atomic<std::uint32_t> numLoops_{0};
    alignas(64) std::atomic<int> numAsleep_{0};
    std::mutex mutex_;
    std::condition_variable wake_;
};

inline std::size_t numStretchesOf(std::size_t n) { return (n + kSizeOfStretches - 1) / kSizeOfStretches; }

/// Runs work(begin, end) over stretches of n items. The stretches do not depend on the threads.
template <class Work>
void forEachStretch(Crew& crew, std::size_t n, Work&& work) {
    const auto doOne = [&](std::size_t i, int) {
        work(i * kSizeOfStretches, std::min(n, (i + 1) * kSizeOfStretches));
    };
    const std::size_t numStretches = numStretchesOf(n);
    if (!crew.isOneThread() && numStretches > 1) return crew.forEach(numStretches, doOne);
    for (std::size_t i = 0; i < numStretches; ++i) doOne(i, 0);
}

/// The sum of term(0) .. term(n - 1), each asked for once, in the same order of additions at any number of
/// threads.
template <class Term>
double sumByStretches(Crew& crew, std::size_t n, Term&& term) {
    const auto sumOf = [&](std::size_t begin, std::size_t end) {
        return Numeric::interleavedSum<8>(end - begin, [&](std::size_t i) { return term(begin + i); });
    };
    if (n <= kSizeOfStretches) return sumOf(0, n);
    std::vector<double> sums(numStretchesOf(n));
    forEachStretch(crew, n, [&](std::size_t begin, std::size_t end) {
        sums[begin / kSizeOfStretches] = sumOf(begin, end);
    });
    return std::accumulate(sums.begin(), sums.end(), 0.0);
}

/// The same with about twice the precision of double.
template <class Term>
double compensatedSumByStretches(Crew& crew, std::size_t n, Term&& term) {
    std::vector<Numeric::CompensatedSum> sums(numStretchesOf(n));
    forEachStretch(crew, n, [&](std::size_t begin, std::size_t end) {
        sums[begin / kSizeOfStretches] =
            Numeric::compensatedSumOf(end - begin, [&](std::size_t i) { return term(begin + i); });
    });
    Numeric::CompensatedSum all;
    for (const Numeric::CompensatedSum& sum : sums) all.add(sum);
    return all.value();
}

}  // namespace Tessel::Engine
