#include <tessel/data/convert.h>
#include <tessel/framework/ladon.h>

#include "data/files.h"

namespace Tessel::Ladon {

Exportable::~Exportable() = default;
void Exportable::toLadon(const WString& path) const { Files::writeBytes(path, Convert::toUtf8(toLadon())); }

Importable::~Importable() = default;
void Importable::fromLadonFile(const WString& path) {
    fromLadonString(Convert::fromUtf8(Files::readBytes(path)));
}

}  // namespace Tessel::Ladon
