#include <gtest/gtest.h>

#include <tessel/tessel.h>

namespace Tessel {
namespace {

// The program links the shared library only, so each call also shows that the function is exported.
TEST(PlainFunctions, ScoreThroughTheSharedLibrary) {
    DataFrame features, scored;
    features.append(DataFrameColumn(L"x", Vector{-2, -1, 1, 2}));
    const DataFrameColumn target(L"y", StringVector{L"low", L"low", L"high", L"high"});
    const auto model = Classification::NaiveBayes::Estimator().setName(L"Sides").fit(features, target);
    const WString text = model.toPMML();

    ASSERT_EQ(tesselPredict(text.c_str(), features, scored), 0);
    EXPECT_EQ(scored(Util::all, 0).toStringVector(), target.toStringVector());
    ASSERT_EQ(tesselPosteriors(text.c_str(), features, scored), 0);
    EXPECT_EQ(scored.getNumCols(), 2);
    EXPECT_NE(tesselTransform(text.c_str(), features, scored), 0);
    EXPECT_NE(tesselPredictTS(text.c_str(), features, scored), 0);
    EXPECT_NE(tesselForecast(text.c_str(), features, scored), 0);
    EXPECT_NE(tesselForecast(text.c_str(), 3, features, scored), 0);

    StringVector names, types;
    WString name, type;
    EXPECT_EQ(tesselPMMLColumnInfo(text.c_str(), names, &types), 0);
    EXPECT_EQ(tesselPMMLModelName(text.c_str(), name), 0);
    EXPECT_EQ(tesselPMMLModelType(text.c_str(), type), 0);
    EXPECT_EQ(name + L" " + type + L" " + names.toString() + types.toString(),
              L"Sides classification {x}{continuous}");

    const Scoring::FittedModel fitted(text);
    DataFrame byText;
    byText.fromJsonString(fitted.score(text, L"[-3, 3]", 0, false));
    EXPECT_EQ(byText(Util::all, 0).toStringVector(), (StringVector{L"low", L"high"}));
}

}  // namespace
}  // namespace Tessel
