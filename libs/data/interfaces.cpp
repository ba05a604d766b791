#include <tessel/data/interfaces.h>

// The destructors stand here so that the interfaces' type information has one home.

namespace Tessel {

Identifiable::~Identifiable() = default;
StringExportable::~StringExportable() = default;
DataFrameExportable::~DataFrameExportable() = default;
DataFrameVectorExportable::~DataFrameVectorExportable() = default;
JSON::StringExportable::~StringExportable() = default;
JSON::StringImportable::~StringImportable() = default;

}  // namespace Tessel
