#pragma once

#include <string>
#include <vector>

#include <tessel/data/data_frame_vector.h>

namespace Tessel::IO {

/// Names that sheets of one workbook can bear, made of the names of tables.
std::vector<WString> sheetNames(const DataFrameVector& tables);

/// The bytes of a workbook with one sheet a table, see `Writer::writeSpreadsheet`.
/// @throws ConstraintViolation, and std::runtime_error when the workbook cannot be made.
std::string makeWorkbook(const DataFrameVector& tables, bool withRowNames);

}  // namespace Tessel::IO
