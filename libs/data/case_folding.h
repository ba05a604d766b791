#pragma once

#include <tessel/data/types.h>

namespace Tessel {

/// The text with upper case letters as lower case ones, for comparisons without regard to case. One letter
/// becomes one letter, whatever the locale: by Unicode's simple case folding for ASCII, Latin up to U+017F,
/// the accented letters of U+01A0..U+0233, U+1E00..U+1EFF, Greek and Cyrillic U+0386..U+042F, and by nothing
/// elsewhere. So U+00DF is not "ss", and the dotted capital I of Turkish stays itself.
WString foldCase(WStringView text);

}  // namespace Tessel
