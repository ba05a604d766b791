#include <tessel/framework/errors.h>
#include <tessel/scoring/capi/tessel_c.h>

#include "data/json_text.h"
#include "scoring/capi/arrays.h"
#include "scoring/capi/guard.h"
#include "scoring/capi/stored_model.h"

struct Tessel_Model {
    Tessel::Plain::ModelCache::Pointer model;
};

namespace Tessel::Plain {
namespace {

/// Gives every slot an empty object, or null where there is no memory for one.
template <class... Object>
void giveEmpty(Object**... slots) {
    ((slots ? void(*slots = new (std::nothrow) Object()) : void()), ...);
}

/// @throws std::bad_alloc when a wanted slot got no object.
template <class... Object>
void requireObjects(Object**... slots) {
    if (((slots && !*slots) || ...)) throw std::bad_alloc();
}

using Operation = DataFrame (StoredModel::*)(const DataFrame&) const;

/// Scores the arrays as one table.
DataFrame score(Operation operation, const wchar_t* modelText, std::uint64_t numRows,
                const Tessel_DoubleArray* numbers, const Tessel_StringArray* texts,
                const Tessel_StringArray* columnNames) {
    if (numRows == 0) throw IncompatibleSizes("There are no rows.");
    // The model comes first, so that an unreadable text is told as such whatever else is wrong.
    const ModelCache::Pointer model = storedModels().get(modelText);
    const TableArrays arrays = checkedArrays(numRows, numbers, texts, columnNames);
    if (arrays.names.size() != model->info().variableNames.size())
        throw IncompatibleSizes("There are not as many columns as the model has inputs.");
    DataFrame result = (*model.*operation)(toTable(arrays));
    if (result.getNumRows() != static_cast<int>(numRows))
        throw IncompatibleSizes("The result has not as many rows as the input.");
    return result;
}

/// What `iTessel_Predict` and `iTessel_Transform` share.
std::int32_t scoreTable(Operation operation, const wchar_t* modelText, std::uint64_t numRows,
                        const Tessel_DoubleArray* numbers, const Tessel_StringArray* texts,
                        const Tessel_StringArray* columnNames, TSLSDK_DoubleArray** resultNumbers,
                        TSLSDK_StringArray** resultColumnNames, TSLSDK_StringArray** resultTexts) {
    giveEmpty(resultNumbers, resultColumnNames, resultTexts);
    return guarded([&] {
        requireObjects(resultNumbers, resultColumnNames, resultTexts);
        const DataFrame result = score(operation, modelText, numRows, numbers, texts, columnNames);
        TSLSDK_DoubleArray numbersFound;
        TSLSDK_StringArray namesFound, textsFound;
        if (resultNumbers) storeNumbers(result, numbersFound);
        if (resultColumnNames) storeNames(result, namesFound);
        if (resultTexts) storeTexts(result, textsFound);
        if (resultNumbers) **resultNumbers = std::move(numbersFound);
        if (resultColumnNames) **resultColumnNames = std::move(namesFound);
        if (resultTexts) **resultTexts = std::move(textsFound);
    });
}

void appendMember(WString& json, WStringView name, WStringView text) {
    JSON::appendString(json, name);
    json += L':';
    JSON::appendString(json, text);
}

WString toJSON(const StoredModel& model, bool isDetailed) {
    const Scoring::ModelInfo& info = model.info();
    WString json = L"{";
    if (isDetailed) {
        appendMember(json, L"modelName", info.name);
        appendMember(json += L',', L"type", info.kind);
        appendMember(json += L',', L"algorithm", info.algorithm);
        appendMember(json += L',', L"targetName", info.targetName);
        JSON::appendArray(json += L",\"classes\":", model.classes(), JSON::appendString);
        json += L',';
    }
    json += L"\"variables\":[";
    for (std::size_t i = 0; i < info.variableNames.size(); ++i) {
        appendMember(json += i == 0 ? L"{" : L",{", L"name", info.variableNames[i]);
        appendMember(json += L',', L"type", info.variableTypes[i]);
        json += L'}';
    }
    return json += L"]}";
}

}  // namespace
}  // namespace Tessel::Plain

using namespace Tessel::Plain;

const wchar_t* TSLSDK_LastErrorText(void) { return lastErrorText().c_str(); }

// ---- Results

const wchar_t* TSLSDK_StringText(const TSLSDK_String* string) { return string ? string->text.c_str() : L""; }
uint64_t TSLSDK_StringLength(const TSLSDK_String* string) { return string ? string->text.size() : 0; }
const double* TSLSDK_DoubleArrayData(const TSLSDK_DoubleArray* array) {
    return array ? array->view.data() : nullptr;
}
uint64_t TSLSDK_DoubleArraySize(const TSLSDK_DoubleArray* array) { return array ? array->view.size() : 0; }
const wchar_t* const* TSLSDK_StringArrayData(const TSLSDK_StringArray* array) {
    return array ? array->view.data() : nullptr;
}
uint64_t TSLSDK_StringArraySize(const TSLSDK_StringArray* array) { return array ? array->view.size() : 0; }

void TSLSDK_DeleteString(TSLSDK_String* string) { delete string; }
void TSLSDK_DeleteDoubleArray(TSLSDK_DoubleArray* array) { delete array; }
void TSLSDK_DeleteStringArray(TSLSDK_StringArray* array) { delete array; }

// ---- Scoring

int32_t iTessel_Predict(const wchar_t* modelText, uint64_t numRows, const Tessel_DoubleArray* numbers,
                        const Tessel_StringArray* texts, const Tessel_StringArray* columnNames,
                        TSLSDK_DoubleArray** resultNumbers, TSLSDK_StringArray** resultColumnNames,
                        TSLSDK_StringArray** resultTexts) {
    return scoreTable(&StoredModel::predict, modelText, numRows, numbers, texts, columnNames, resultNumbers,
                      resultColumnNames, resultTexts);
}

int32_t iTessel_Transform(const wchar_t* modelText, uint64_t numRows, const Tessel_DoubleArray* numbers,
                          const Tessel_StringArray* texts, const Tessel_StringArray* columnNames,
                          TSLSDK_DoubleArray** resultNumbers, TSLSDK_StringArray** resultColumnNames,
                          TSLSDK_StringArray** resultTexts) {
    return scoreTable(&StoredModel::transform, modelText, numRows, numbers, texts, columnNames, resultNumbers,
                      resultColumnNames, resultTexts);
}

int32_t iTessel_Posteriors(const wchar_t* modelText, uint64_t numRows, const Tessel_DoubleArray* numbers,
                           const Tessel_StringArray* texts, const Tessel_StringArray* columnNames,
                           TSLSDK_DoubleArray** probabilities) {
    return scoreTable(&StoredModel::posteriors, modelText, numRows, numbers, texts, columnNames,
                      probabilities, nullptr, nullptr);
}

int32_t iTessel_Forecast(const wchar_t* modelText, const Tessel_DoubleArray* series, int32_t horizon,
                         TSLSDK_DoubleArray** forecast) {
    giveEmpty(forecast);
    return guarded([&] {
        requireObjects(forecast);
        static constexpr const wchar_t* kName[] = {L"Series"};
        const Tessel_StringArray name{kName, 1};
        const TableArrays arrays = checkedArrays(series ? series->size : 0, series, nullptr, &name);
        const Tessel::DataFrame result = storedModels().get(modelText)->forecast(horizon, toTable(arrays));
        TSLSDK_DoubleArray found;
        storeNumbers(result(Tessel::Util::all, Tessel::IntVector{0}), found);
        if (forecast) **forecast = std::move(found);
    });
}

// ---- What a model is

int32_t Tessel_PMMLModelVarsJSON(const wchar_t* modelText, TSLSDK_String** json, int32_t detailed) {
    giveEmpty(json);
    return guarded([&] {
        requireObjects(json);
        Tessel::WString text = toJSON(*storedModels().get(modelText), detailed != 0);
        if (json) (*json)->text = std::move(text);
    });
}

// ---- Models that stay loaded

int32_t Tessel_LoadModel(const wchar_t* modelText, Tessel_Model** model) {
    if (model) *model = nullptr;
    return guarded([&] {
        if (!model) throw Tessel::ConstraintViolation("Model", "Its slot is a null pointer.");
        auto handle = std::make_unique<Tessel_Model>();
        handle->model = storedModels().load(modelText);
        *model = handle.release();
    });
}

const wchar_t* Tessel_LoadedText(const Tessel_Model* model) {
    return model ? model->model->text().c_str() : nullptr;
}

void Tessel_FreeModel(Tessel_Model* model) {
    if (model) storedModels().unload(*model->model);
    delete model;
}
