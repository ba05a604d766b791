#include <tessel/data/convert.h>
#include <tessel/data/util/tables.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/ladon.h>

#include "data/files.h"

namespace Tessel::Ladon {

Exportable::~Exportable() = default;
void Exportable::toLadon(const WString& path) const { Files::writeBytes(path, Convert::toUtf8(toLadon())); }

Importable::~Importable() = default;
void Importable::fromLadonFile(const WString& path) {
    WString text;
    try {
        text = Util::readFile(path);
    } catch (const InvalidEncoding&) {
        throw UnsupportedJSONModel();
    }
    fromLadonString(text);
}

}  // namespace Tessel::Ladon
