#pragma once

#include <tessel/data/types.h>

// Numbers as PMML texts hold them.

namespace Tessel::PMML {

/// 17 significant digits, which read back to the same bits; INF, -INF and NaN as XML spells them.
WString numberText(double value);
/// The shortest form that reads back to the same bits.
WString shortNumberText(double value);
/// The same bits without exponent: the 17 digits where these have none, else the shortest fixed-point form.
WString decimalText(double value);

/// `Convert::toDouble` and `Convert::toInt` without any allocation on ordinary texts.
double toDouble(WStringView text);
int toInt(WStringView text);

}  // namespace Tessel::PMML
