#pragma once

#include <tessel/data/data_frame.h>

#include <iosfwd>

namespace Tessel::IO {

/// Writes a table in the XML form that `Writer::writeXml` documents.
void writeXml(const DataFrame& table, std::ostream& stream);

}  // namespace Tessel::IO
