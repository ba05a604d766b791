#pragma once

#include <functional>

#include <tessel/data/types.h>

namespace Tessel {

/// Watches a fit and may stop it. It is told now and then what share of the fit is done, from 0 to 1 and
/// never less than before, and what is being fitted. The answer says whether to go on: after `false` the fit
/// throws `FitCancelled` as soon as what is under way can be left, and there is no model. It is called by the
/// thread that called `fit` and by no other; what it throws comes out of `fit`.
using ProgressCallback = std::function<bool(double shareDone, const WString& activity)>;

}  // namespace Tessel
