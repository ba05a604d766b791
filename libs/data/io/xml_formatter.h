#pragma once

#include <iosfwd>

#include <tessel/data/data_frame.h>

namespace Tessel::IO {

/// Writes a table in the XML form that `Writer::writeXml` documents.
void writeXml(const DataFrame& table, std::ostream& stream);

}  // namespace Tessel::IO
