#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>

namespace Tessel {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool sameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

TEST(ConvertTest, numbersComeBackFromTheirTexts) {
    std::mt19937_64 random(20240131);
    for (int i = 0; i < 200000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (std::isnan(value)) continue;
        ASSERT_TRUE(sameBits(Convert::toDouble(Convert::toString(value)), value)) << value;
        ASSERT_TRUE(sameBits(Convert::toDouble(Convert::toDigits(value)), value)) << value;
    }
    for (const double value : {0.0, -0.0, 5e-324, -2.2250738585072009e-308, kInf, -kInf, 1e22, 0.1})
        EXPECT_TRUE(sameBits(Convert::toDouble(Convert::toString(value)), value)) << value;
    EXPECT_TRUE(std::isnan(Convert::toDouble(Convert::toString(kNaN))));
}

TEST(ConvertTest, textsOfNumbers) {
    const std::pair<double, WString> shortest[] = {
        {0.1, L"0.1"},         {1e300, L"1e+300"},          {-0.0, L"-0"},
        {kNaN, L"NaN"},        {kInf, L"Infinity"},         {12345.0, L"12345"},
        {-kInf, L"-Infinity"}, {5e-324, L"5e-324"},         {1e5, L"100000"},
        {-3e7, L"-30000000"},  {1e15, L"1000000000000000"}, {1e16, L"1e+16"},
        {1e-5, L"1e-05"}};
    for (const auto& [value, text] : shortest) EXPECT_EQ(Convert::toString(value), text);
    EXPECT_EQ(Convert::toDigits(0.1), L"0.10000000000000001");
    EXPECT_EQ(Convert::toString(std::numeric_limits<int>::min()), L"-2147483648");
    EXPECT_EQ(Convert::toString(3.14159, 2), L"3.14");
    EXPECT_EQ(Convert::toString(2.5, 0), L"2");
    EXPECT_EQ(Convert::toString(kNaN, 3), L"NaN");
    EXPECT_EQ(Convert::toString(-std::numeric_limits<double>::max(), 17).size(), 1u + 309 + 1 + 17);
    for (const int decimals : {-1, 18}) EXPECT_THROW(Convert::toString(1.0, decimals), ValueOutOfRange);
}

TEST(ConvertTest, numbersOfTexts) {
    const WString zeros(400, L'0');
    const std::pair<WString, double> good[] = {
        {L"1", 1},
        {L" +2.5\t", 2.5},
        {L"-.5e1", -5},
        {L"5.", 5},
        {L"1E3", 1000},
        {L"inf", kInf},
        {L"-Infinity", -kInf},
        {L"+INF", kInf},
        // Beyond the range: infinite when the digits and the exponent together say so, else zero.
        {L"1e400", kInf},
        {L"-1e400", -kInf},
        {L"1e-400", 0},
        {L"-1e-400", -0.0},
        {L"2e308", kInf},
        {L"2.4e-324", 0},
        {L"2.5e-324", 5e-324},
        {L"1e99999999999999999999", kInf},
        {L"1e-99999999999999999999", 0},
        {L"0e99999999999999999999", 0},
        {L"-0.000e99999999999999999999", -0.0},
        {L"1" + zeros, kInf},
        {L"1" + zeros + L"e-10", kInf},
        {L"1" + zeros + L"e-400", 1},
        {L"1" + zeros + L"e-800", 0},
        {L"0." + zeros + L"1", 0},
        {L"0." + zeros + L"1e401", 1},
        {L"0." + zeros + L"1e800", kInf},
        {L"." + zeros + L"1e10", 0},
        {L"000" + zeros + L"1", 1},
    };
    for (const auto& [text, value] : good)
        EXPECT_TRUE(sameBits(Convert::toDouble(text), value))
            << Convert::toUtf8(text) << " gave " << Convert::toDouble(text);
    EXPECT_TRUE(std::isnan(Convert::toDouble(L"-nan")));
    for (const WString text : {L"", L" ", L"+", L"-", L".", L"e5", L"1e", L"1e+", L"+-1", L"--1", L"0x10",
                               L"1,5", L"1 2", L"nan(1)", L"infinit", L"1\u0661", L"1e400x"})
        EXPECT_THROW(Convert::toDouble(text), ConversionFailure) << Convert::toUtf8(text);
    EXPECT_THROW(Convert::toDouble(WString(L"1\0", 2)), ConversionFailure);

    const std::pair<WString, int> integers[] = {
        {L"0", 0}, {L" -7 ", -7}, {L"+7", 7}, {L"2147483647", 2147483647}, {L"-2147483648", -2147483647 - 1}};
    for (const auto& [text, value] : integers) EXPECT_EQ(Convert::toInt(text), value);
    for (const WString text : {L"", L"2147483648", L"-2147483649", L"1.0", L"1e3", L"+-1", L"0x1", L"1 1"})
        EXPECT_THROW(Convert::toInt(text), ConversionFailure) << Convert::toUtf8(text);
}

TEST(ConvertTest, utf8RoundTripAndFaults) {
    // One text of each length of sequence, at the ends of their ranges.
    const std::string bytes =
        "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF";
    EXPECT_EQ(Convert::toUtf8(Convert::fromUtf8(bytes)), bytes);
    EXPECT_EQ(Convert::fromUtf8("\xC3\xA9"), L"\u00e9");
    EXPECT_EQ(Convert::fromUtf8(""), L"");

    const std::pair<std::string, int> malformed[] = {{"\x80", 0},               // a continuation alone
                                                     {"ab\xC3", 2},             // cut off
                                                     {"a\xC3(", 1},             // no continuation
                                                     {"\xC0\xAF", 0},           // overlong
                                                     {"\xE0\x9F\xBF", 0},       // overlong
                                                     {"x\xF0\x8F\xBF\xBF", 1},  // overlong
                                                     {"\xED\xA0\x80", 0},       // surrogate
                                                     {"\xF4\x90\x80\x80", 0},   // beyond U+10FFFF
                                                     {"\xF5\x80\x80\x80", 0},
                                                     {"abc\xFF", 3}};
    for (const auto& [text, offset] : malformed) try {
            Convert::fromUtf8(text);
            ADD_FAILURE() << "accepted, offset " << offset;
        } catch (const InvalidEncoding& error) {
            EXPECT_EQ(std::string(error.what()),
                      InvalidEncoding("UTF-8", static_cast<std::uint64_t>(offset)).what());
        }
    const WString lone = {L'a', static_cast<wchar_t>(0xD800), L'b'};
    EXPECT_THROW(Convert::toUtf8(lone), InvalidEncoding);
    EXPECT_EQ(Convert::toUtf8Lossy(lone),
              "a\xEF\xBF\xBD"
              "b");
}

TEST(ConvertTest, containers) {
    StringVector texts{L"1.5", L"", L"-2"};
    texts.setName(L"v");
    const Vector numbers = Convert::toDoubleVector(texts);
    EXPECT_EQ(numbers[0], 1.5);
    EXPECT_TRUE(std::isnan(numbers[1]));
    EXPECT_EQ(numbers.getName(), L"v");
    EXPECT_EQ(Convert::toDataFrame(texts).getColName(0), L"v");
    EXPECT_EQ(Convert::toStringVector(IntVector{3, -4}), (StringVector{L"3", L"-4"}));

    DataFrame table = Convert::toDataFrame(texts);
    EXPECT_THROW(Convert::toTimeSeries(table), TooFewNumColumns);
    table.append(Vector{7, kNaN, 9});
    EXPECT_EQ(Convert::toStringVector(table), (StringVector{L"1.5", L"", L"-2", L"7", L"", L"9"}));
    EXPECT_EQ(Convert::toDoubleVector(table)[5], 9);
    table.setIndexedColNames({L"v"});
    EXPECT_EQ(Convert::toTimeSeries(table).getRowName(2), L"-2");
    table.append(Vector{1, 2, 3});
    EXPECT_THROW(Convert::toTimeSeries(table), NumColumnsMismatch);
}

}  // namespace
}  // namespace Tessel
