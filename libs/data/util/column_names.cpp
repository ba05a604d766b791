#include "data/util/column_names.h"

namespace Tessel::Engine::Util {

WString generateColName(WStringView column, WStringView category) {
    return WString(column).append(1, L'=').append(category);
}

}  // namespace Tessel::Engine::Util
