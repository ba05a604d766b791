#include "supervised/ensemble/fit_learners.h"

#include <algorithm>
#include <exception>
#include <mutex>

#include <omp.h>

#include <tessel/data/convert.h>

#include "engine/parallel.h"

namespace Tessel::Ensemble {
namespace {

/// Hands out positions in ascending order until one fails or somebody stops.
class Queue {
 public:
    explicit Queue(int count) : end_(count) {}

    /// The next position, or -1.
    int take() {
        const std::lock_guard lock(mutex_);
        return next_ < end_ ? next_++ : -1;
    }
    /// Keeps the failure of the lowest position; nothing is handed out any more.
    void fail(int position, std::exception_ptr failure) {
        const std::lock_guard lock(mutex_);
        end_ = 0;
        if (failure_ && failedPosition_ < position) return;
        failure_ = std::move(failure);
        failedPosition_ = position;
    }
    void finish() {
        const std::lock_guard lock(mutex_);
        ++numDone_;
    }
    int numDone() {
        const std::lock_guard lock(mutex_);
        return numDone_;
    }
    void rethrow() const {
        if (failure_) std::rethrow_exception(failure_);
    }

 private:
    std::mutex mutex_;
    int next_ = 0, end_, numDone_ = 0, failedPosition_ = 0;
    std::exception_ptr failure_;
};

}  // namespace

WString learnerTitle(int position) { return L"Weak Learner " + Convert::toString(position + 1); }

void fitLearners(int count, const Progress& progress, const WString& title,
                 const std::function<void(int, const Progress&)>& fit, bool areSideBySide) {
    Queue queue(count);
    const auto work = [&](bool isCaller) {
        for (int position = queue.take(); position >= 0; position = queue.take()) {
            try {
                Progress ofLearner;
                if (isCaller) {
                    const double numDone = queue.numDone();
                    ofLearner = progress.part(numDone / count, (numDone + 1.0) / count,
                                              title + L": " + learnerTitle(position));
                    ofLearner.report(0.0, {});
                }
                fit(position, ofLearner);
                queue.finish();
            } catch (...) {
                queue.fail(position, std::current_exception());
            }
        }
    };
    // A thread fits whole learners; a single learner uses the threads itself.
    const int numAtOnce = areSideBySide ? std::min(count, Engine::numThreads()) : 1;
    if (numAtOnce == 1) {
        work(true);
    } else {
#pragma omp parallel num_threads(numAtOnce)
        work(omp_get_thread_num() == 0);
    }
    queue.rethrow();
}

}  // namespace Tessel::Ensemble
