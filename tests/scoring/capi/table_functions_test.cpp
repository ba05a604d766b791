#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/scoring/capi/table_functions.h>
#include <tessel/scoring/capi/tessel_c.h>

#include "scoring/capi/guard.h"
#include "scoring/capi/stored_model.h"
#include "scoring/model_texts.h"
#include "supervised/tables.h"

namespace Tessel::Plain {
namespace {

using Testing::regressionTree;

DataFrame column(const WString& name, const Vector& values) {
    DataFrame table;
    table.append(DataFrameColumn(name, values));
    return table;
}

TEST(Guard, TranslatesErrorsIntoStatuses) {
    EXPECT_EQ(guarded([] {}), 0);
    EXPECT_EQ(guarded([] { throw MalformedPMML("no end"); }), 1);
    EXPECT_EQ(guarded([] { throw FileNotFound("a.pmml"); }), 1);
    EXPECT_EQ(guarded([] { throw UnsupportedPMMLFormat(); }), 2);
    EXPECT_EQ(guarded([] { throw IncompatibleNumRows(); }), 2);
    EXPECT_EQ(guarded([] { throw IncompatibleSizes("no"); }), 4);
    EXPECT_EQ(guarded([] { throw std::bad_alloc(); }), 3);
    EXPECT_EQ(guarded([] { throw std::runtime_error("gr\xC3\xB6\xC3\x9F"); }), 3);
    EXPECT_EQ(WString(TSLSDK_LastErrorText()), L"gr\u00F6\u00DF");
    EXPECT_EQ(guarded([] { throw std::runtime_error("\xFF"); }), 3);
    EXPECT_EQ(WString(TSLSDK_LastErrorText()), L"");
    EXPECT_THROW(guarded([] { throw 5; }), int);  // what is no standard exception passes through
}

TEST(Guard, KeepsTheLastErrorPerThread) {
    EXPECT_EQ(guarded([] { throw IncompatibleSizes("mine"); }), 4);
    std::thread([] {
        EXPECT_EQ(WString(TSLSDK_LastErrorText()), L"");
        guarded([] { throw IncompatibleSizes("other"); });
    }).join();
    EXPECT_EQ(WString(TSLSDK_LastErrorText()), L"mine");
    EXPECT_EQ(guarded([] {}), 0);
    EXPECT_EQ(WString(TSLSDK_LastErrorText()), L"");
}

TEST(TableFunctions, ScoreAsTheClassInterfaceDoes) {
    const Testing::LabelledTable table = Testing::labelledTable(90, 3);
    const auto model =
        Classification::NaiveBayes::Estimator().setName(L"Kinds").fit(table.features, table.target);
    const WString text = model.toPMML();
    DataFrame output;
    ASSERT_EQ(tesselPredict(text.c_str(), table.features, output), 0);
    EXPECT_EQ(output.toJson(), model.predict(table.features).toJson());
    ASSERT_EQ(tesselPosteriors(text.c_str(), table.features, output), 0);
    EXPECT_EQ(output.toJson(), model.posteriorProbability(table.features).toJson());

    StringVector names, types;
    ASSERT_EQ(tesselPMMLColumnInfo(text.c_str(), names, &types), 0);
    EXPECT_EQ(names, (StringVector{L"first", L"second", L"group"}));
    EXPECT_EQ(types, (StringVector{L"continuous", L"continuous", L"categorical"}));
    EXPECT_EQ(tesselPMMLColumnInfo(text.c_str(), names, nullptr), 0);
    WString name, type;
    ASSERT_EQ(tesselPMMLModelName(text.c_str(), name), 0);
    EXPECT_EQ(name, L"Kinds");
    ASSERT_EQ(tesselPMMLModelType(text.c_str(), type), 0);
    EXPECT_EQ(type, L"classification");
}

TEST(TableFunctions, LeaveTheOutputAloneWhenTheyFail) {
    const WString tree = regressionTree(1, 2);
    const WString unknown = Testing::describedModel(L"NoModel", L"regression", L"A", L"");
    const DataFrame input = column(L"x", {1.0}), other = column(L"z", {1.0});
    const WString before = other.toJson();
    DataFrame output = other;
    for (const auto& [text, status] : {std::pair<const wchar_t*, int>{L"", 1},
                                       {L"<PMML>", 1},
                                       {L"{}", 1},
                                       {L"<PMML/>", 2},
                                       {unknown.c_str(), 2},
                                       {nullptr, 2}}) {
        EXPECT_EQ(tesselPredict(text, input, output), status);
        EXPECT_EQ(tesselPosteriors(text, input, output), status);
        EXPECT_EQ(tesselTransform(text, input, output), status);
        EXPECT_EQ(tesselPredictTS(text, input, output), status);
        EXPECT_EQ(tesselForecast(text, input, output), status);
        EXPECT_EQ(tesselForecast(text, 3, input, output), status);
        EXPECT_NE(WString(TSLSDK_LastErrorText()), L"");
        EXPECT_EQ(output.toJson(), before);
    }
    EXPECT_EQ(tesselPredict(tree.c_str(), other, output), 2);     // no such column
    EXPECT_EQ(tesselPosteriors(tree.c_str(), input, output), 2);  // no classifier
    EXPECT_EQ(tesselTransform(tree.c_str(), input, output), 2);
    EXPECT_EQ(output.toJson(), before);
    StringVector names{L"kept"}, types{L"kept"};
    WString text = L"kept";
    EXPECT_EQ(tesselPMMLColumnInfo(L"<", names, &types), 1);
    EXPECT_EQ(tesselPMMLModelName(L"<", text), 1);
    EXPECT_EQ(tesselPMMLModelType(L"<PMML/>", text), 2);
    EXPECT_EQ(names.toString() + types.toString() + text, L"{kept}{kept}kept");
    // A family that cannot be loaded can still say what it is.
    EXPECT_EQ(tesselPMMLModelType(unknown.c_str(), text), 0);
    EXPECT_EQ(text, L"regression");
}

TEST(ModelCache, KnowsATextAgainAndNoticesAChange) {
    ModelCache cache(8, 1 << 20);
    WString text = regressionTree(1, 2);
    const WString same = text;
    const ModelCache::Pointer first = cache.get(text.c_str());
    EXPECT_EQ(cache.get(same.c_str()), first);
    // The same memory with another text of the same length, different in one character.
    text = regressionTree(1, 3);
    ASSERT_EQ(text.size(), same.size());
    const DataFrame input = column(L"x", {5.0});
    EXPECT_EQ(cache.get(text.c_str())->predict(input)(Util::all, 0).toDoubleVector(), (Vector{3}));
    EXPECT_EQ(cache.get(same.c_str())->predict(input)(Util::all, 0).toDoubleVector(), (Vector{2}));
    EXPECT_EQ(cache.numKept(), 2u);
    // One text that begins another.
    EXPECT_NE(cache.get((same + L" ").c_str()), first);
    EXPECT_THROW(cache.get(L"<PMML>"), MalformedPMML);
    EXPECT_THROW(cache.get(L""), MalformedPMML);
    EXPECT_EQ(cache.numKept(), 3u);
}

TEST(ModelCache, IsBoundInNumberAndBytes) {
    const auto text = [](int i) { return regressionTree(i, 2); };
    ModelCache three(3, 1 << 20);
    const ModelCache::Pointer first = three.get(text(1).c_str());
    for (const int i : {2, 3, 1, 4}) three.get(text(i).c_str());  // 1 was used again, so 2 goes
    EXPECT_EQ(three.numKept(), 3u);
    EXPECT_EQ(three.get(text(1).c_str()), first);
    three.get(text(5).c_str());
    three.get(text(6).c_str());
    three.get(text(7).c_str());
    EXPECT_NE(three.get(text(1).c_str()), first);
    EXPECT_EQ(first->info().name, L"Steps");  // evicted, and still there for who uses it

    const std::size_t bytes = text(1).size() * sizeof(wchar_t);
    ModelCache twoByBytes(8, 2 * bytes), none(8, bytes - 1);
    for (int i = 1; i <= 5; ++i) {
        twoByBytes.get(text(i).c_str());
        none.get(text(i).c_str());
    }
    EXPECT_EQ(twoByBytes.numKept(), 2u);
    EXPECT_EQ(none.numKept(), 0u);
}

TEST(ModelCache, KnowsLoadedModelsByTheAddressOfTheirText) {
    ModelCache cache(1, 1 << 20);
    const WString text = regressionTree(1, 2);
    const ModelCache::Pointer model = cache.load(text.c_str());
    EXPECT_EQ(cache.get(model->text().c_str()), model);
    EXPECT_NE(cache.get(text.c_str()), model);
    cache.unload(*model);
    EXPECT_NE(cache.get(model->text().c_str()), model);
    EXPECT_THROW(cache.load(nullptr), ConstraintViolation);
}

// More models than are kept, so that they are parsed, found, evicted and used all at once.
TEST(ModelCache, ServesManyThreads) {
    ModelCache cache(3, 1 << 20);
    const DataFrame input = column(L"x", {-1.0, 1.0});
    std::vector<int> numWrong(4, 0);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 100; ++i) {
                const int model = (i * (thread + 1)) % 5;
                const WString text = regressionTree(model, model + 10);
                const ModelCache::Pointer stored =
                    i % 7 == 0 ? cache.load(text.c_str()) : cache.get(text.c_str());
                const Vector result = stored->predict(input)(Util::all, 0).toDoubleVector();
                if (result != Vector{double(model), double(model + 10)})
                    ++numWrong[static_cast<std::size_t>(thread)];
                cache.unload(*stored);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(numWrong, std::vector<int>(4, 0));
    EXPECT_LE(cache.numKept(), 3u);
}

}  // namespace
}  // namespace Tessel::Plain
