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
    publish(0);
    for (std::thread& helper : helpers_) helper.join();
}

/// @param size  of all threads
void Crew::start(std::size_t size) {
    try {
        for (int thread = static_cast<int>(helpers_.size()) + 1; helpers_.size() + 1 < size; ++thread)
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
    numItems_ = n;
    numDone_ = 0;
    publish(n);
    for (std::uint64_t offer = offer_; takeOne(offer, 0); offer = offer_) {
    }
    while (numDone_ != n) std::this_thread::yield();
}

/// A new loop, which nobody can mistake for the one before.
void Crew::publish(std::uint32_t n) {
    const std::uint64_t loop = (offer_ >> 32) + 1;
    offer_ = loop << 32 | n;
    if (numAsleep_ == 0) return;
    { const std::lock_guard lock(mutex_); }  // who saw the offer before waits by now
    wake_.notify_all();
}

/// Does one item of the loop, whoever else tries; returns false when there is none left.
bool Crew::takeOne(std::uint64_t& offer, int thread) {
    while (numLeft(offer) > 0) {
        const std::uint32_t item = numItems_ - numLeft(offer);
        const Run run = run_;
        void* const loop = loop_;
        if (!offer_.compare_exchange_weak(offer, offer - 1)) continue;
        const bool wasInLoop = std::exchange(isInLoop, true);
        run(loop, item, thread);
        isInLoop = wasInLoop;
        ++numDone_;
        return true;
    }
    return false;
}

void Crew::serve(int thread) {
    constexpr int kMaxNumTries = 200;  // before it sleeps
    for (int numTries = 0;;) {
        std::uint64_t offer = offer_;
        if (takeOne(offer, thread)) {
            numTries = 0;
        } else if (isClosed_) {
            return;
        } else if (++numTries < kMaxNumTries) {
            std::this_thread::yield();
        } else {
            std::unique_lock lock(mutex_);
            ++numAsleep_;
            wake_.wait(lock, [&] { return offer_ != offer; });
            --numAsleep_;
            numTries = 0;
        }
    }
}

}  // namespace Tessel::Engine
