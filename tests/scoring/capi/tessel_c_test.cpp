#include <algorithm>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include <tessel/data/convert.h>
#include <tessel/naive_bayes.h>
#include <tessel/scaler.h>
#include <tessel/scoring/capi/table_functions.h>
#include <tessel/scoring/capi/tessel_c.h>
#include <tessel/scoring/fitted_model.h>

#include "scoring/capi/arrays.h"
#include "scoring/model_texts.h"
#include "supervised/tables.h"

namespace Tessel::Plain {
namespace {

using Texts = std::vector<const wchar_t*>;

/// The arguments of one call and its results.
struct Call {
    WString model;
    std::uint64_t numRows = 0;
    std::vector<double> numbers;
    Texts texts, names;
    TSLSDK_DoubleArray* resultNumbers = nullptr;
    TSLSDK_StringArray *resultNames = nullptr, *resultTexts = nullptr;

    ~Call() { release(); }
    void release() {
        TSLSDK_DeleteDoubleArray(resultNumbers);
        TSLSDK_DeleteStringArray(resultNames);
        TSLSDK_DeleteStringArray(resultTexts);
        resultNumbers = nullptr;
        resultNames = resultTexts = nullptr;
    }

    template <class Function>
    int run(Function function) {
        release();
        const Tessel_DoubleArray numbersView{numbers.data(), numbers.size()};
        const Tessel_StringArray textsView{texts.data(), texts.size()}, namesView{names.data(), names.size()};
        return function(model.c_str(), numRows, &numbersView, &textsView, &namesView, &resultNumbers,
                        &resultNames, &resultTexts);
    }
    int predict() { return run(iTessel_Predict); }
    int posteriors() {
        return run([](auto* text, auto rows, auto* cells, auto* categories, auto* columns, auto** result,
                      auto**,
                      auto**) { return iTessel_Posteriors(text, rows, cells, categories, columns, result); });
    }
    StringVector textsFound() const {
        const wchar_t* const* const data = TSLSDK_StringArrayData(resultTexts);
        return StringVector(std::vector<WString>(data, data + TSLSDK_StringArraySize(resultTexts)));
    }
    Vector numbersFound() const {
        const double* const data = TSLSDK_DoubleArrayData(resultNumbers);
        return Vector(std::vector<double>(data, data + TSLSDK_DoubleArraySize(resultNumbers)));
    }
};

/// The rows of a table as arguments, which point into `columns` and `storage`.
void setRows(Call& call, const DataFrame& table, const StringVector& columns, StringVector& storage) {
    const int numRows = table.getNumRows();
    call.numRows = static_cast<std::uint64_t>(numRows);
    std::vector<WString> cells;
    for (int row = 0; row < numRows; ++row)
        for (const WString& name : columns)
            if (table.isNumeric(name))
                call.numbers.push_back(table(row, name).toDouble());
            else
                cells.push_back(table(row, name).toString());
    storage = StringVector(std::move(cells));
    for (const WString& text : storage) call.texts.push_back(text.c_str());
    for (const bool isNumeric : {true, false})
        for (const WString& name : columns)
            if (table.isNumeric(name) == isNumeric) call.names.push_back(name.c_str());
}

TEST(CInterface, ScoresAsTheClassInterfaceDoes) {
    for (const int numRows : {1, 255, 256, 257, 700}) {  // around the block of rows that are turned at a time
        const Testing::LabelledTable table = Testing::labelledTable(std::max(numRows, 60), 3);
        const auto model = Classification::NaiveBayes::Estimator().fit(table.features, table.target);
        IntVector rows;
        for (int row = 0; row < numRows; ++row) rows.push_back(row);
        const DataFrame input = table.features(rows, Util::all);
        Call call;
        StringVector storage;
        call.model = model.toPMML();
        const StringVector columns{L"second", L"first", L"group"};  // not the model's order
        setRows(call, input, columns, storage);
        ASSERT_EQ(call.predict(), TESSEL_OK) << numRows;
        EXPECT_EQ(call.textsFound(), model.predict(input)(Util::all, 0).toStringVector());
        EXPECT_EQ(TSLSDK_DoubleArraySize(call.resultNumbers), 0u);
        ASSERT_EQ(TSLSDK_StringArraySize(call.resultNames), 1u);
        EXPECT_EQ(TSLSDK_StringArrayData(call.resultNames)[0], model.predict(input).getColName(0));

        ASSERT_EQ(call.posteriors(), TESSEL_OK);
        const DataFrame expected = model.posteriorProbability(input);
        Vector rowMajor;
        for (int row = 0; row < numRows; ++row)
            for (int k = 0; k < 3; ++k) rowMajor.push_back(expected(row, k).toDouble());
        EXPECT_EQ(call.numbersFound(), rowMajor);
    }
}

TEST(CInterface, PredictsNumbers) {
    Call call;
    call.model = Testing::regressionTree(10, 20);
    call.numRows = 3;
    call.numbers = {-1, 0, 7};
    call.names = {L"x"};
    ASSERT_EQ(call.predict(), TESSEL_OK);
    EXPECT_EQ(call.numbersFound(), (Vector{10, 20, 20}));
    EXPECT_EQ(TSLSDK_StringArraySize(call.resultTexts), 0u);
    // Results that are not wanted are left out.
    const Tessel_DoubleArray numbers{call.numbers.data(), 3};
    const Tessel_StringArray names{call.names.data(), 1};
    EXPECT_EQ(iTessel_Predict(call.model.c_str(), 3, &numbers, nullptr, &names, nullptr, nullptr, nullptr),
              TESSEL_OK);
}

TEST(CInterface, Transforms) {
    DataFrame table;
    table.append(DataFrameColumn(L"a", Vector{1, 2, 3}));
    table.append(DataFrameColumn(L"b", Vector{10, 30, 20}));
    Call call;
    call.model = Scaler::Estimator().setScalingType(Scaler::ScalingType::NORMALIZATION).fit(table).toPMML();
    call.numRows = 3;
    call.numbers = {10, 1, 30, 2, 20, 3};
    call.names = {L"b", L"a"};
    ASSERT_EQ(call.run(iTessel_Transform), TESSEL_OK) << Convert::toUtf8(TSLSDK_LastErrorText());
    EXPECT_EQ(call.numbersFound(), (Vector{0, 0, 1, 0.5, 0.5, 1}));
    ASSERT_EQ(TSLSDK_StringArraySize(call.resultNames), 2u);
    EXPECT_EQ(WString(TSLSDK_StringArrayData(call.resultNames)[0]), L"b");
    EXPECT_EQ(WString(TSLSDK_StringArrayData(call.resultNames)[1]), L"a");
    EXPECT_EQ(call.predict(), TESSEL_REFUSED);
    DataFrame output;
    ASSERT_EQ(tesselTransform(call.model.c_str(), table, output), 0);
    EXPECT_EQ(output(Util::all, L"b").toDoubleVector(), (Vector{0, 1, 0.5}));
    output.fromJsonString(Scoring::FittedModel().score(call.model, L"b,a\n25,1\n", 0, false));
    EXPECT_EQ(output(Util::all, L"b").toDoubleVector(), (Vector{0.75}));
}

TEST(CInterface, StoresTablesOfAllKindsRowByRow) {
    DataFrame table;
    table.append(DataFrameColumn(L"a", Vector{1, 2}));
    table.append(DataFrameColumn(L"s", StringVector{L"u", L""}));
    table.append(DataFrameColumn(L"b", Vector{3, 4}));
    table.append(DataFrameColumn(L"t", StringVector{L"v", L"w"}));
    TSLSDK_DoubleArray numbers;
    TSLSDK_StringArray texts, names;
    storeNumbers(table, numbers);
    storeTexts(table, texts);
    storeNames(table, names);
    const auto moved = std::make_unique<TSLSDK_StringArray>(std::move(texts));
    EXPECT_EQ(std::vector<double>(numbers.view.begin(), numbers.view.end()),
              (std::vector<double>{1, 3, 2, 4}));
    EXPECT_EQ(std::vector<WString>(moved->view.begin(), moved->view.end()),
              (std::vector<WString>{L"u", L"v", L"", L"w"}));
    EXPECT_EQ(std::vector<WString>(names.view.begin(), names.view.end()),
              (std::vector<WString>{L"a", L"b", L"s", L"t"}));
    // Results keep what they point to.
    table = DataFrame();
    EXPECT_STREQ(moved->view[3], L"w");
}

// Shapes around the blocks of rows and the groups of columns that are turned at a time, and one for all
// threads.
TEST(CInterface, TurnsTablesOfAnyShape) {
    for (const std::size_t numColumns : {1u, 3u, 4u, 5u, 9u})
        for (const std::size_t numRows : {1u, 256u, 300u, 20000u}) {
            std::vector<double> numbers(numRows * numColumns);
            for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<double>(i);
            const Texts texts = [&] {
                Texts made;
                for (std::size_t row = 0; row < numRows; ++row) made.push_back(row % 3 == 0 ? L"" : L"text");
                return made;
            }();
            const Texts names(numColumns + 1, L"name");
            const Tessel_DoubleArray numberArray{numbers.data(), numbers.size()};
            const Tessel_StringArray textArray{texts.data(), texts.size()},
                nameArray{names.data(), names.size()};
            const DataFrame table = toTable(checkedArrays(numRows, &numberArray, &textArray, &nameArray));
            ASSERT_EQ(table.getNumCols(), static_cast<int>(numColumns) + 1);
            const int last = static_cast<int>(numColumns) - 1;
            EXPECT_EQ(table(static_cast<int>(numRows) - 1, last).toDouble(), numbers.back());
            EXPECT_EQ(table(0, last).toDouble(), static_cast<double>(last));
            TSLSDK_DoubleArray numbersBack;
            TSLSDK_StringArray textsBack;
            storeNumbers(table, numbersBack);
            storeTexts(table, textsBack);
            EXPECT_TRUE(
                std::equal(numbers.begin(), numbers.end(), numbersBack.view.begin(), numbersBack.view.end()));
            EXPECT_TRUE(std::equal(texts.begin(), texts.end(), textsBack.view.begin(), textsBack.view.end(),
                                   [](const WString& a, const WString& b) { return a == b; }));
        }
}

TEST(CInterface, TellsFailuresByStatusAndGivesEmptyResults) {
    const Testing::LabelledTable table = Testing::labelledTable(60, 2);
    Call good;
    StringVector storage;
    good.model = Classification::NaiveBayes::Estimator().fit(table.features, table.target).toPMML();
    const StringVector columns{L"first", L"second", L"group"};
    setRows(good, table.features(IntVector{0, 1}, Util::all), columns, storage);
    ASSERT_EQ(good.predict(), TESSEL_OK);
    good.release();

    const std::pair<int, void (*)(Call&)> cases[] = {
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.numRows = 0; }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.numRows = 0, call.model = L"<"; }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.numRows = 3; }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.numRows = 1; }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.numbers.pop_back(); }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.texts.pop_back(); }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.names.pop_back(); }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.names.push_back(L"id"); }},
        {TESSEL_SIZE_MISMATCH, [](Call& call) { call.numbers.clear(), call.names = {L"group"}; }},
        {TESSEL_REFUSED, [](Call& call) { call.numRows = std::uint64_t{1} << 40; }},
        {TESSEL_REFUSED, [](Call& call) { call.names[1] = L"third"; }},
        {TESSEL_REFUSED, [](Call& call) { call.names[1] = L"first"; }},
        {TESSEL_REFUSED, [](Call& call) { call.names[1] = nullptr; }},
        {TESSEL_REFUSED, [](Call& call) { call.texts[1] = nullptr; }},
        {TESSEL_REFUSED, [](Call& call) { call.model = L"<PMML/>"; }},
        {TESSEL_UNREADABLE, [](Call& call) { call.model = L"<PMML>"; }},
        {TESSEL_UNREADABLE, [](Call& call) { call.model.clear(); }},
        {TESSEL_UNREADABLE, [](Call& call) { call.model = L"{}", call.names.clear(); }},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        Call call = good;
        cases[i].second(call);
        EXPECT_EQ(call.predict(), cases[i].first) << "case " << i;
        ASSERT_TRUE(call.resultNumbers && call.resultNames && call.resultTexts);
        EXPECT_EQ(TSLSDK_DoubleArraySize(call.resultNumbers) + TSLSDK_StringArraySize(call.resultNames) +
                      TSLSDK_StringArraySize(call.resultTexts),
                  0u);
        EXPECT_NE(WString(TSLSDK_LastErrorText()), L"") << "case " << i;
        EXPECT_EQ(call.run(iTessel_Transform), cases[i].first) << "case " << i;
        EXPECT_EQ(call.posteriors(), cases[i].first) << "case " << i;
    }
    const Tessel_DoubleArray noData{nullptr, 2};
    EXPECT_EQ(iTessel_Predict(good.model.c_str(), 2, &noData, nullptr, nullptr, nullptr, nullptr, nullptr),
              TESSEL_REFUSED);
    EXPECT_EQ(iTessel_Predict(nullptr, 2, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              TESSEL_REFUSED);
    EXPECT_EQ(iTessel_Forecast(good.model.c_str(), nullptr, 1, nullptr), TESSEL_SIZE_MISMATCH);
    EXPECT_EQ(Tessel_PMMLModelVarsJSON(L"<", nullptr, 0), TESSEL_UNREADABLE);
    EXPECT_EQ(Tessel_LoadModel(good.model.c_str(), nullptr), TESSEL_REFUSED);
}

TEST(CInterface, ServesManyThreadsWithOneModel) {
    Call shared;
    shared.model = Testing::regressionTree(10, 20);
    shared.numRows = 2;
    shared.numbers = {-1, 1};
    shared.names = {L"x"};
    Tessel_Model* model = nullptr;
    ASSERT_EQ(Tessel_LoadModel(shared.model.c_str(), &model), TESSEL_OK);
    const Tessel_DoubleArray numbers{shared.numbers.data(), 2};
    const Tessel_StringArray names{shared.names.data(), 1};
    std::vector<int> numWrong(4, 0);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 200; ++i) {
                TSLSDK_DoubleArray* result = nullptr;
                const wchar_t* const text = i % 2 ? shared.model.c_str() : Tessel_LoadedText(model);
                const int status =
                    iTessel_Predict(text, 2, &numbers, nullptr, &names, &result, nullptr, nullptr);
                const double* const found = TSLSDK_DoubleArrayData(result);
                numWrong[thread] += status != TESSEL_OK || found[0] != 10 || found[1] != 20;
                TSLSDK_DeleteDoubleArray(result);
                if (i % 10 == 0)
                    numWrong[thread] += iTessel_Predict(L"<", 2, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                        nullptr) != TESSEL_UNREADABLE;
            }
        });
    for (std::thread& thread : threads) thread.join();
    Tessel_FreeModel(model);
    EXPECT_EQ(numWrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace Tessel::Plain
