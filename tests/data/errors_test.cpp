#include <map>
#include <memory>
#include <set>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include <tessel/data/errors.h>

namespace Tessel {
namespace {

/// Throws and catches as the root, as callers and the C interface do.
template <class Error>
std::pair<std::int32_t, std::string> caught(const Error& error) {
    try {
        throw error;
    } catch (const Exception& root) {
        return {root.code(), root.what()};
    }
}

TEST(ErrorsTest, messagesOfParameterErrors) {
    const std::vector<std::pair<std::pair<std::int32_t, std::string>, std::string>> cases = {
        {caught(ConstraintViolation("Depth", "p + q> 0")), "Depth violated a constraint: p + q> 0"},
        {caught(ValueOutOfRange("Depth", 2, 100)), "Depth violated a constraint: Acceptable range: [2,100]"},
        {caught(ValueOutOfRange("Shift", -7, -1)), "Shift violated a constraint: Acceptable range: [-7,-1]"},
        {caught(ValueOutOfRange("Rate", 0.0, 1.0)),
         "Rate violated a constraint: Acceptable range: [0.000000,1.000000]"},
        {caught(ValueOutOfRange("Rate", -0.5, 1e22)),
         "Rate violated a constraint: Acceptable range: [-0.500000,10000000000000000000000.000000]"},
        {caught(NotASetMember("Kind", "gini")), "Kind violated a constraint: gini must be a set member."},
        {caught(NotAValidColName("Target", "y")), "Target violated a constraint: y is not a column name."},
        {caught(IncorrectTotalValue("Priors", 0.9)), "Priors violated a constraint: sum = 0.900000."},
        {caught(UnspecifiedStringParameter("Path")), "Path violated a constraint: Value is not specified."},
    };
    for (const auto& [error, message] : cases) {
        EXPECT_EQ(error.first, 201) << message;
        EXPECT_EQ(error.second, message);
    }
    // The largest double in "%f" form has 309 digits before the point.
    const std::string huge = caught(IncorrectTotalValue("Sum", -1.7976931348623157e308)).second;
    EXPECT_EQ(huge.size(), std::string("Sum violated a constraint: sum = .").size() + 1 + 309 + 7);
}

TEST(ErrorsTest, codesAreDistinctAndMessagesTellTheArguments) {
    const std::vector<std::pair<std::pair<std::int32_t, std::string>, std::pair<int, std::string>>> cases = {
        {caught(ConversionFailure("abc", "a number")), {200, "abc"}},
        {caught(TooFewNumRows(3)), {203, "3"}},
        {caught(TooFewNumColumns(4)), {204, "4"}},
        {caught(NumRowsMismatch(5, 6)), {209, "5"}},
        {caught(NumColumnsMismatch(7, 8)), {210, "8"}},
        {caught(NumElementsMismatch(9, 5000000000)), {211, "5000000000"}},
        {caught(ColumnIndexOutOfRange(-11, 12)), {212, "-11"}},
        {caught(IndexOutOfRange(13, 14)), {217, "13"}},
        {caught(NonExistingNamedIndex("age")), {221, "age"}},
        {caught(NonBinary()), {222, "two"}},
        {caught(FileNotFound("in.csv")), {224, "in.csv"}},
        {caught(UnableToWriteFile("out.csv")), {233, "out.csv"}},
        {caught(TooLargeSampleSize(15)), {234, "15"}},
        {caught(TooLargeStratumSampleSize(16)), {235, "16"}},
        {caught(MalformedFile("quote", 17, 18)), {240, "18"}},
        {caught(InvalidEncoding("UTF-8", 19)), {241, "19"}},
        {caught(InvalidExpression("a+", "end")), {242, "a+"}},
        {caught(DuplicateName("id")), {243, "id"}},
        {caught(NonNumericData("city")), {248, "city"}},
        {caught(MalformedJSON("brace")), {251, "brace"}},
    };
    std::set<int> codes = {201};
    for (const auto& [error, expected] : cases) {
        EXPECT_EQ(error.first, expected.first) << error.second;
        EXPECT_NE(error.second.find(expected.second), std::string::npos) << error.second;
        EXPECT_TRUE(codes.insert(error.first).second) << error.first;
    }
    EXPECT_GE(*codes.begin(), 200);
    EXPECT_LE(*codes.rbegin(), 255);
    EXPECT_EQ(TooFewNumRows().code(), 203);
    EXPECT_EQ(TooFewNumColumns().code(), 204);
}

TEST(ErrorsTest, rootKeepsMessageAndCode) {
    const Exception unknown("", 217);
    EXPECT_STREQ(unknown.what(), "Unknown exception");
    Exception copy("text", 1);
    copy = unknown;
    EXPECT_STREQ(copy.what(), "Unknown exception");
    EXPECT_EQ(copy.code(), 217);
    const std::exception& standard = Exception("text", -1);
    EXPECT_STREQ(standard.what(), "text");
}

}  // namespace
}  // namespace Tessel
