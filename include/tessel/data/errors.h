#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include <tessel/api.h>

// The root of all errors, the errors about one named parameter, and the errors of the data library.
//
// Codes of the data library (all SDK codes lie in 200..255; the SDK's own errors use the others):
//
//   200 ConversionFailure       217 IndexOutOfRange          235 TooLargeStratumSampleSize
//   201 ConstraintViolation     221 NonExistingNamedIndex    240 MalformedFile
//   203 TooFewNumRows           222 NonBinary                241 InvalidEncoding
//   204 TooFewNumColumns        224 FileNotFound             242 InvalidExpression
//   209 NumRowsMismatch         233 UnableToWriteFile        243 DuplicateName
//   210 NumColumnsMismatch      234 TooLargeSampleSize       248 NonNumericData
//   211 NumElementsMismatch     212 ColumnIndexOutOfRange    251 MalformedJSON
//
// 252 is the code of the plain Exception for a write to a cell of a constant table.

namespace Tessel {

/// The root of everything the SDK throws: a UTF-8 message and a code in 200..255.
class TESSEL_API Exception : public std::exception {
 public:
    Exception(std::string message, std::int32_t code);
    Exception(const Exception&);
    Exception& operator=(const Exception&);
    ~Exception() override;

    std::int32_t code() const noexcept { return code_; }
    /// The message, or "Unknown exception" when there is none.
    const char* what() const noexcept override;

 private:
    std::string message_;
    std::int32_t code_;
};

/// An error about one named parameter: "<name> violated a constraint: <detail>", code 201.
class TESSEL_API ConstraintViolation : public Exception {
 public:
    ConstraintViolation(const std::string& parameterName, const std::string& detail);
    ~ConstraintViolation() override;
};

/// A value outside its closed range: "Acceptable range: [lower,upper]".
class TESSEL_API ValueOutOfRange : public ConstraintViolation {
 public:
    ValueOutOfRange(const std::string& parameterName, std::int32_t lower, std::int32_t upper);
    ValueOutOfRange(const std::string& parameterName, double lower, double upper);
    ~ValueOutOfRange() override;
};

/// A value that is not among the admissible ones: "<value> must be a set member."
class TESSEL_API NotASetMember : public ConstraintViolation {
 public:
    NotASetMember(const std::string& parameterName, const std::string& value);
    ~NotASetMember() override;
};

/// A parameter names a column that the table lacks: "<column> is not a column name."
class TESSEL_API NotAValidColName : public ConstraintViolation {
 public:
    NotAValidColName(const std::string& parameterName, const std::string& column);
    ~NotAValidColName() override;
};

/// Values that do not add up to what they should: "sum = <sum>."
class TESSEL_API IncorrectTotalValue : public ConstraintViolation {
 public:
    IncorrectTotalValue(const std::string& parameterName, double sum);
    ~IncorrectTotalValue() override;
};

/// A text parameter that must be given is not: "Value is not specified."
class TESSEL_API UnspecifiedStringParameter : public ConstraintViolation {
 public:
    explicit UnspecifiedStringParameter(const std::string& parameterName);
    ~UnspecifiedStringParameter() override;
};

/// A text that is not the number it should be, or a number that does not fit its target type.
class TESSEL_API ConversionFailure : public Exception {
 public:
    /// "Unable to convert '<text>' to <target>."
    ConversionFailure(const std::string& text, const std::string& target);
    ~ConversionFailure() override;
};

/// An input table has fewer rows than an algorithm needs.
class TESSEL_API TooFewNumRows : public Exception {
 public:
    TooFewNumRows();
    explicit TooFewNumRows(std::int32_t numRows);
    ~TooFewNumRows() override;
};

/// An input table has fewer columns than an algorithm needs.
class TESSEL_API TooFewNumColumns : public Exception {
 public:
    TooFewNumColumns();
    explicit TooFewNumColumns(std::int32_t numColumns);
    ~TooFewNumColumns() override;
};

/// Two tables or columns that belong together differ in their number of rows.
class TESSEL_API NumRowsMismatch : public Exception {
 public:
    NumRowsMismatch(std::int32_t expected, std::int32_t actual);
    ~NumRowsMismatch() override;
};

/// A table has another number of columns than needed.
class TESSEL_API NumColumnsMismatch : public Exception {
 public:
    NumColumnsMismatch(std::int32_t expected, std::int32_t actual);
    ~NumColumnsMismatch() override;
};

/// A vector has another number of elements than needed.
class TESSEL_API NumElementsMismatch : public Exception {
 public:
    NumElementsMismatch(std::int64_t expected, std::int64_t actual);
    ~NumElementsMismatch() override;
};

/// A column position outside 0 .. number of columns - 1.
class TESSEL_API ColumnIndexOutOfRange : public Exception {
 public:
    ColumnIndexOutOfRange(std::int32_t index, std::int32_t numColumns);
    ~ColumnIndexOutOfRange() override;
};

/// A row or element position outside 0 .. size - 1.
class TESSEL_API IndexOutOfRange : public Exception {
 public:
    IndexOutOfRange(std::int64_t index, std::int64_t size);
    ~IndexOutOfRange() override;
};

/// A name that is not a column, row or table of the addressed object.
class TESSEL_API NonExistingNamedIndex : public Exception {
 public:
    explicit NonExistingNamedIndex(const std::string& name);
    ~NonExistingNamedIndex() override;
};

/// A name that occurs more than once where it must tell one thing.
class TESSEL_API DuplicateName : public Exception {
 public:
    explicit DuplicateName(const std::string& name);
    ~DuplicateName() override;
};

/// Data that must have exactly two distinct values have not.
class TESSEL_API NonBinary : public Exception {
 public:
    NonBinary();
    ~NonBinary() override;
};

/// A text column where numbers are needed.
class TESSEL_API NonNumericData : public Exception {
 public:
    explicit NonNumericData(const std::string& columnName);
    ~NonNumericData() override;
};

/// A requested sample is larger than the table.
class TESSEL_API TooLargeSampleSize : public Exception {
 public:
    explicit TooLargeSampleSize(std::int32_t numRowsAvailable);
    ~TooLargeSampleSize() override;
};

/// A requested sample of a stratum is larger than the stratum.
class TESSEL_API TooLargeStratumSampleSize : public Exception {
 public:
    explicit TooLargeStratumSampleSize(std::int32_t numRowsAvailable);
    ~TooLargeStratumSampleSize() override;
};

/// A file that cannot be opened for reading.
class TESSEL_API FileNotFound : public Exception {
 public:
    explicit FileNotFound(const std::string& path);
    ~FileNotFound() override;
};

/// A file that cannot be written.
class TESSEL_API UnableToWriteFile : public Exception {
 public:
    explicit UnableToWriteFile(const std::string& path);
    ~UnableToWriteFile() override;
};

/// A data file that breaks the rules of its format; rows and columns count from 1.
class TESSEL_API MalformedFile : public Exception {
 public:
    MalformedFile(const std::string& reason, std::int64_t row, std::int64_t column);
    ~MalformedFile() override;
};

/// Bytes that are not UTF-8, or wide units that are no Unicode text.
class TESSEL_API InvalidEncoding : public Exception {
 public:
    /// @param offset  position of the first bad byte or unit, from 0.
    InvalidEncoding(const std::string& encoding, std::uint64_t offset);
    ~InvalidEncoding() override;
};

/// A column expression that cannot be understood or computed.
class TESSEL_API InvalidExpression : public Exception {
 public:
    InvalidExpression(const std::string& expression, const std::string& reason);
    ~InvalidExpression() override;
};

/// A JSON text that is malformed or does not have the members of the object it should become.
class TESSEL_API MalformedJSON : public Exception {
 public:
    explicit MalformedJSON(const std::string& reason);
    ~MalformedJSON() override;
};

}  // namespace Tessel
