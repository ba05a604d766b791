#include <array>
#include <charconv>

#include <tessel/data/errors.h>

namespace Tessel {
namespace {

/// The C format "%f", whatever the locale.
std::string fixed(double value) {
    std::array<char, 320> text;  // the longest double in this form has 317 characters
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
    return std::string(text.data(), end.ptr);
}

std::string range(const std::string& lower, const std::string& upper) {
    return "Acceptable range: [" + lower + "," + upper + "]";
}

}  // namespace

Exception::Exception(std::string message, std::int32_t code) : message_(std::move(message)), code_(code) {}
Exception::Exception(const Exception&) = default;
Exception& Exception::operator=(const Exception&) = default;
Exception::~Exception() = default;

const char* Exception::what() const noexcept {
    return message_.empty() ? "Unknown exception" : message_.c_str();
}

ConstraintViolation::ConstraintViolation(const std::string& parameterName, const std::string& detail)
    : Exception(parameterName + " violated a constraint: " + detail, 201) {}
ConstraintViolation::~ConstraintViolation() = default;

ValueOutOfRange::ValueOutOfRange(const std::string& parameterName, std::int32_t lower, std::int32_t upper)
    : ConstraintViolation(parameterName, range(std::to_string(lower), std::to_string(upper))) {}
ValueOutOfRange::ValueOutOfRange(const std::string& parameterName, double lower, double upper)
    : ConstraintViolation(parameterName, range(fixed(lower), fixed(upper))) {}
ValueOutOfRange::~ValueOutOfRange() = default;

NotASetMember::NotASetMember(const std::string& parameterName, const std::string& value)
    : ConstraintViolation(parameterName, value + " must be a set member.") {}
NotASetMember::~NotASetMember() = default;

NotAValidColName::NotAValidColName(const std::string& parameterName, const std::string& column)
    : ConstraintViolation(parameterName, column + " is not a column name.") {}
NotAValidColName::~NotAValidColName() = default;

IncorrectTotalValue::IncorrectTotalValue(const std::string& parameterName, double sum)
    : ConstraintViolation(parameterName, "sum = " + fixed(sum) + ".") {}
IncorrectTotalValue::~IncorrectTotalValue() = default;

UnspecifiedStringParameter::UnspecifiedStringParameter(const std::string& parameterName)
    : ConstraintViolation(parameterName, "Value is not specified.") {}
UnspecifiedStringParameter::~UnspecifiedStringParameter() = default;

ConversionFailure::ConversionFailure(const std::string& text, const std::string& target)
    : Exception("Unable to convert '" + text + "' to " + target + ".", 200) {}
ConversionFailure::~ConversionFailure() = default;

TooFewNumRows::TooFewNumRows() : Exception("The table has too few rows.", 203) {}
TooFewNumRows::TooFewNumRows(std::int32_t numRows)
    : Exception("The table has too few rows: " + std::to_string(numRows) + ".", 203) {}
TooFewNumRows::~TooFewNumRows() = default;

TooFewNumColumns::TooFewNumColumns() : Exception("The table has too few columns.", 204) {}
TooFewNumColumns::TooFewNumColumns(std::int32_t numColumns)
    : Exception("The table has too few columns: " + std::to_string(numColumns) + ".", 204) {}
TooFewNumColumns::~TooFewNumColumns() = default;

NumRowsMismatch::NumRowsMismatch(std::int32_t expected, std::int32_t actual)
    : Exception("The number of rows must be " + std::to_string(expected) + " but is " +
                    std::to_string(actual) + ".",
                209) {}
NumRowsMismatch::~NumRowsMismatch() = default;

NumColumnsMismatch::NumColumnsMismatch(std::int32_t expected, std::int32_t actual)
    : Exception("The number of columns must be " + std::to_string(expected) + " but is " +
                    std::to_string(actual) + ".",
                210) {}
NumColumnsMismatch::~NumColumnsMismatch() = default;

NumElementsMismatch::NumElementsMismatch(std::int64_t expected, std::int64_t actual)
    : Exception("The number of elements must be " + std::to_string(expected) + " but is " +
                    std::to_string(actual) + ".",
                211) {}
NumElementsMismatch::~NumElementsMismatch() = default;

ColumnIndexOutOfRange::ColumnIndexOutOfRange(std::int32_t index, std::int32_t numColumns)
    : Exception("There is no column " + std::to_string(index) +
                    ": positions count from 0 and the table has " + std::to_string(numColumns) + " columns.",
                212) {}
ColumnIndexOutOfRange::~ColumnIndexOutOfRange() = default;

IndexOutOfRange::IndexOutOfRange(std::int64_t index, std::int64_t size)
    : Exception("There is no element " + std::to_string(index) + ": positions count from 0 and there are " +
                    std::to_string(size) + ".",
                217) {}
IndexOutOfRange::~IndexOutOfRange() = default;

NonExistingNamedIndex::NonExistingNamedIndex(const std::string& name)
    : Exception("There is no element named '" + name + "'.", 221) {}
NonExistingNamedIndex::~NonExistingNamedIndex() = default;

DuplicateName::DuplicateName(const std::string& name)
    : Exception("The name '" + name + "' occurs more than once: rename the elements or use their positions.",
                243) {}
DuplicateName::~DuplicateName() = default;

NonBinary::NonBinary() : Exception("The data must have exactly two distinct values.", 222) {}
NonBinary::~NonBinary() = default;

NonNumericData::NonNumericData(const std::string& columnName)
    : Exception("The column '" + columnName + "' holds text where numbers are needed.", 248) {}
NonNumericData::~NonNumericData() = default;

TooLargeSampleSize::TooLargeSampleSize(std::int32_t numRowsAvailable)
    : Exception(
          "The sample is larger than the number of rows available: " + std::to_string(numRowsAvailable) + ".",
          234) {}
TooLargeSampleSize::~TooLargeSampleSize() = default;

TooLargeStratumSampleSize::TooLargeStratumSampleSize(std::int32_t numRowsAvailable)
    : Exception("The sample is larger than the number of rows of its stratum: " +
                    std::to_string(numRowsAvailable) + ".",
                235) {}
TooLargeStratumSampleSize::~TooLargeStratumSampleSize() = default;

FileNotFound::FileNotFound(const std::string& path)
    : Exception("The file '" + path + "' cannot be opened for reading.", 224) {}
FileNotFound::~FileNotFound() = default;

UnableToWriteFile::UnableToWriteFile(const std::string& path)
    : Exception("The file '" + path + "' cannot be written.", 233) {}
UnableToWriteFile::~UnableToWriteFile() = default;

MalformedFile::MalformedFile(const std::string& reason, std::int64_t row, std::int64_t column)
    : Exception("Row " + std::to_string(row) + ", column " + std::to_string(column) + ": " + reason, 240) {}
MalformedFile::~MalformedFile() = default;

InvalidEncoding::InvalidEncoding(const std::string& encoding, std::uint64_t offset)
    : Exception("The text is not valid " + encoding + " at offset " + std::to_string(offset) + ".", 241) {}
InvalidEncoding::~InvalidEncoding() = default;

InvalidExpression::InvalidExpression(const std::string& expression, const std::string& reason)
    : Exception("The expression '" + expression + "' is not valid: " + reason, 242) {}
InvalidExpression::~InvalidExpression() = default;

MalformedJSON::MalformedJSON(const std::string& reason)
    : Exception("The JSON text is not valid: " + reason, 251) {}
MalformedJSON::~MalformedJSON() = default;

}  // namespace Tessel
