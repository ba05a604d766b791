#include "framework/progress.h"

#include <tessel/framework/errors.h>

namespace Tessel {

void Progress::report(double shareDone, const WString& activity) const {
    if (callback_ && !callback_(shareDone, activity)) throw FitCancelled();
}

std::function<void(double)> Progress::watch(const WString& activity) const {
    if (!callback_) return {};
    return [this, activity](double shareDone) { report(shareDone, activity); };
}

Progress Progress::part(double begin, double end, const WString& activity) const {
    if (!callback_) return {};
    return Progress([whole = callback_, begin, end, activity](double shareDone, const WString& ofStep) {
        return whole(begin + shareDone * (end - begin), activity.empty() ? ofStep : activity);
    });
}

}  // namespace Tessel
