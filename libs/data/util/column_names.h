#pragma once

#include <tessel/data/types.h>

namespace Tessel::Engine::Util {

/// The name of the indicator column of one category of a text column: "colour=red".
WString generateColName(WStringView column, WStringView category);

}  // namespace Tessel::Engine::Util
