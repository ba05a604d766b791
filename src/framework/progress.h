#pragma once

#include <tessel/framework/progress.h>

namespace Tessel {

/// The way from a fit to whoever watches it. Without a callback nothing happens.
class Progress {
 public:
    Progress() = default;
    explicit Progress(ProgressCallback callback) : callback_(std::move(callback)) {}

    bool isWatched() const { return callback_ != nullptr; }
    /// To be called by the thread that called `fit`. @throws FitCancelled
    void report(double shareDone, const WString& activity) const;
    /// The progress of one step of several, which take up the shares from `begin` to `end`.
    /// @param activity  what to tell of the step whatever itself tells; empty for that.
    Progress part(double begin, double end, const WString& activity = {}) const;

    /// For engines, which tell shares only; empty when nobody watches. It refers to this object.
    std::function<void(double)> watch(const WString& activity) const;

    const ProgressCallback& callback() const { return callback_; }

 private:
    ProgressCallback callback_;
};

}  // namespace Tessel
