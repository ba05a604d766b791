#pragma once

#include <tessel/data/data_frame.h>

namespace Tessel::Scoring {

/// The table that a data text holds; see FittedModel::score for its forms.
/// @param names  the expected columns, in order
/// @param types  "continuous" columns are numbers, all others texts
/// @throws IncorrectDataFormat when the text does not hold these columns, or no rows.
DataFrame readTextData(WString text, const StringVector& names, const StringVector& types);

}  // namespace Tessel::Scoring
