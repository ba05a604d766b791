#pragma once

#include <tessel/data/types.h>

namespace Tessel::PMML {

/// The local time: year-month-day hour:minute:second without zero padding.
WString localTimestamp();

}  // namespace Tessel::PMML
