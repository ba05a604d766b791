#pragma once

#include <tessel/data/types.h>

#include "serialization/pmml/wide_xml.h"

namespace Tessel::PMML {

/// The text of a node and of all below, as `rapidxml::print` with its default flags writes it, with these
/// differences:
/// - no recursion, and indentation grows up to `maxIndentation` tabs only, because the text of a chain would
///   otherwise grow with the square of its length;
/// - characters that XML readers change unless they are written as references are written so: tabs and line
///   ends in attributes, carriage returns in texts, the first blank of a text that is only white space;
/// - @throws ConstraintViolation for characters that XML cannot carry and for names that are no XML names.
WString print(const Node& node, int maxIndentation);

}  // namespace Tessel::PMML
