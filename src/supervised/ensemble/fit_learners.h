#pragma once

#include <functional>

#include "framework/progress.h"

namespace Tessel::Ensemble {

/// "Weak Learner 3", for the learner at position 2.
WString learnerTitle(int position);

/// Calls fit(0) .. fit(count - 1), count > 0, which do not depend on each other, by all threads, lower ones
/// first; or one after another, where each is to use the threads itself. When some throw, the error is that
/// of the lowest, which a loop would have met first; later ones may then not be called at all.
/// @param fit  takes a position and the progress of that learner, which is watched where the calling thread
///             fits it.
/// @throws FitCancelled
void fitLearners(int count, const Progress& progress, const WString& title,
                 const std::function<void(int, const Progress&)>& fit, bool areSideBySide = true);

}  // namespace Tessel::Ensemble
