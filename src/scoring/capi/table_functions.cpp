#include <utility>

#include <tessel/data/convert.h>
#include <tessel/scoring/capi/table_functions.h>

#include "scoring/capi/guard.h"
#include "scoring/capi/stored_model.h"

using Tessel::DataFrame;
using Tessel::StringVector;
using Tessel::WString;
using Tessel::Plain::guarded;
using Tessel::Plain::storedModels;

std::int32_t tesselPredict(const wchar_t* modelText, const DataFrame& input, DataFrame& output) {
    return guarded([&] { output = storedModels().get(modelText)->predict(input); });
}
std::int32_t tesselPosteriors(const wchar_t* modelText, const DataFrame& input, DataFrame& output) {
    return guarded([&] { output = storedModels().get(modelText)->posteriors(input); });
}
std::int32_t tesselTransform(const wchar_t* modelText, const DataFrame& input, DataFrame& output) {
    return guarded([&] { output = storedModels().get(modelText)->transform(input); });
}
std::int32_t tesselPredictTS(const wchar_t* modelText, const DataFrame& input, DataFrame& output) {
    return guarded([&] { output = storedModels().get(modelText)->fittedSeries(input); });
}
std::int32_t tesselForecast(const wchar_t* modelText, const DataFrame& input, DataFrame& output) {
    return tesselForecast(modelText, 1, input, output);
}
std::int32_t tesselForecast(const wchar_t* modelText, std::int32_t horizon, const DataFrame& input,
                            DataFrame& output) {
    return guarded([&] { output = storedModels().get(modelText)->forecast(horizon, input); });
}

std::int32_t tesselPMMLColumnInfo(const wchar_t* modelText, StringVector& names, StringVector* types) {
    return guarded([&] {
        Tessel::Scoring::ModelInfo info = storedModels().get(modelText)->info();
        names = std::move(info.variableNames);
        if (types) *types = std::move(info.variableTypes);
    });
}
std::int32_t tesselPMMLModelName(const wchar_t* modelText, WString& name) {
    return guarded([&] { name = storedModels().get(modelText)->info().name; });
}
std::int32_t tesselPMMLModelType(const wchar_t* modelText, WString& type) {
    return guarded([&] { type = storedModels().get(modelText)->info().kind; });
}
