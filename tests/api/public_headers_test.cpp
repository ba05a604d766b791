#include <tessel/tessel.h>

// Checked before any other header can define or hide something: the public headers bring no macro of the
// build and none of the third-party libraries behind them.
#if defined(TESSEL_BUILDING)
#error "TESSEL_BUILDING is set for the SDK's own sources only"
#endif
#if defined(BOOST_VERSION) || defined(BOOST_CONFIG_HPP)
#error "a public header includes Boost"
#endif
#if defined(CPPREST_VERSION) || defined(_ASYNCRTIMP) || defined(U)
#error "a public header includes cpprestsdk"
#endif
#if defined(MUPARSER_VERSION) || defined(LXW_VERSION) || defined(LAPACK_ROW_MAJOR) || \
    defined(RAPIDXML_HPP_INCLUDED)
#error "a public header includes a third-party library"
#endif
#if defined(min) || defined(max)
#error "a public header defines min or max"
#endif

#include <cmath>

#include <gtest/gtest.h>

namespace Tessel {
namespace {

// The program links the shared library only, so each line also shows that what it uses is exported.
TEST(PublicHeaders, TablesWorkThroughTheSharedLibrary) {
    DataFrame table(L"flowers");
    table.append(DataFrameColumn(L"length", Vector{5.1, std::nan(""), 6.3}));
    table.append(DataFrameColumn(L"species", StringVector{L"setosa", L"", L"virginica"}));
    ASSERT_EQ(table.getNumRows(), 3);
    EXPECT_EQ(table.getColNames(), (StringVector{L"length", L"species"}));
    EXPECT_EQ(table.getRowName(1), L"Record 2");
    EXPECT_TRUE(table.isNumeric(L"length"));
    EXPECT_TRUE(table(1, 0).isMissing());
    EXPECT_TRUE(table(1, 1).isMissing());

    DataFrame reversed = table(IntVector{2, 1, 0}, Util::all);
    reversed(0, L"length") = 6.4;
    EXPECT_EQ(reversed(0, L"length").toDouble(), 6.4);
    EXPECT_EQ(table(2, L"length").toDouble(), 6.3);
    EXPECT_EQ(table(Util::all, L"species").select(IntVector{2, 0}).toStringVector(),
              (StringVector{L"virginica", L"setosa"}));
}

TEST(PublicHeaders, ErrorsAreCaughtByTheirClassAcrossTheBorder) {
    const DataFrame table(Matrix(2, 3, 1.0));
    EXPECT_THROW(table.getColIndex(L"absent"), NonExistingNamedIndex);
    EXPECT_THROW(table(Util::all, 3), ColumnIndexOutOfRange);
    EXPECT_THROW(Convert::toDouble(L"1,5"), ConversionFailure);
    try {
        table.getRowName(2);
        FAIL() << "row 2 of 2 has no name";
    } catch (const Exception& error) {
        EXPECT_EQ(error.code(), 217);
    }
}

}  // namespace
}  // namespace Tessel
