#pragma once

#include <string>

#include <tessel/tessel.h>

// Pictures of what was learned, as SVG texts.

namespace Tessel::Cli {

/// One picture with a panel per column that has a distribution: the histogram of its cells under the density
/// that was fitted. UTF-8.
/// @param table      what the generator was fitted to
/// @param generator  with curves, see `SyntheticDataGenerator::setComputeMetalogCurves`
std::string picturesOfMargins(const DataFrame& table, const SyntheticDataGenerator& generator);

}  // namespace Tessel::Cli
