#include "engine/crew.h"

#include <system_error>
#include <utility>

#include <omp.h>

namespace Tessel::Engine {

namespace {

thread_local bool isInLoop = false;

std::uint32_t numLeft(std::uint64_t offer) { return static_cast<std::uint32_t>(offer); }

}  // namespace

int numThreads() { return isInLoop || omp_in_parallel() ? 1 : omp_get_max_threads(); }

Crew::~Crew() {
    isClosed_ = true;
    wake();
    for (std::thread& helper : helpers_) helper.join();
}

/// @param size  of all threads
void Crew::start(std::size_t size) {
    try {
        for (std::size_t thread = helpers_.size() + 1; thread < size; ++thread)
            helpers_.emplace_back([this, thread] { serve(thread); });
    } catch (const std::system_error&) {  // the system has no more: those that are there do
        maxSize_ = helpers_.size() + 1;
    }
}

void Crew::share(std::uint32_t n, Run run, void* loop) {
    const std::size_t wanted = std::min<std::size_t>(maxSize_, n);
    if (helpers_.size() + 1 < wanted) start(wanted);
    run_ = run;
    loop_ = loop;
    const std::size_t numShares = std::min<std::size_t>(maxSize_, n);
    numItems_ = n;
    numShares_ = numShares;
    numDone_ = 0;
    const std::uint64_t number = std::uint64_t{numLoops_ + 1} << 32;
    for (std::size_t i = 0; i < shares_.size(); ++i)
        shares_[i].offer = number | (beginOf(i + 1, n, numShares) - beginOf(i, n, numShares));
    wake();
    const std::uint32_t numOthers = n - takeAll(0);
    while (numDone_ != numOthers) std::this_thread::yield();
}

/// Counts a new loop and tells those that sleep.
void Crew::wake() {
    ++numLoops_;
    if (numAsleep_ == 0) return;
    { const std::lock_guard lock(mutex_); }  // who saw the number before waits by now
    wake_.notify_all();
}

/// Does items of the loop, those of the own share first, until none is left; returns how many.
std::uint32_t Crew::takeAll(std::size_t thread) {
    std::uint32_t numTaken = 0;
    for (std::size_t i = 0; i < shares_.size(); ++i)
        while (takeOne((thread + i) % shares_.size(), thread)) ++numTaken;
    return numTaken;
}

/// Does an item of a share, whoever else tries; returns false when none is left.
bool Crew::takeOne(std::size_t share, std::size_t thread) {
    for (std::uint64_t offer = shares_[share].offer; numLeft(offer) > 0;) {
        const std::uint32_t item = beginOf(share + 1, numItems_, numShares_) - numLeft(offer);
        const Run run = run_;
        void* const loop = loop_;
        if (!shares_[share].offer.compare_exchange_weak(offer, offer - 1)) continue;
        const bool wasInLoop = std::exchange(isInLoop, true);
        run(loop, item, static_cast<int>(thread));
        isInLoop = wasInLoop;
        return true;
    }
    return false;
}

void Crew::serve(std::size_t thread) {
    for (;;) {
        const std::uint32_t numLoops = numLoops_;
        if (const std::uint32_t numTaken = takeAll(thread); numTaken > 0) numDone_ += numTaken;
        if (isClosed_) return;
        waitForLoop(numLoops);
    }
}

/// Until there have been more loops.
void Crew::waitForLoop(std::uint32_t numLoops) {
    constexpr int kMaxNumTries = 200;  // before it sleeps
    for (int numTries = 0; numTries < kMaxNumTries; ++numTries) {
        if (numLoops_ != numLoops) return;
        std::this_thread::yield();
    }
    std::unique_lock lock(mutex_);
    ++numAsleep_;
    wake_.wait(lock, [&] { return numLoops_ != numLoops; });
    --numAsleep_;
}

}  // namespace Tessel::Engine
