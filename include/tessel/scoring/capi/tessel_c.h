#pragma once

// Scoring of stored models for hosts that do not use the class interface. Plain C (C11), also valid C++.
//
// The contract, for every function:
//
// - Failures. Functions that return int32_t return a status: TESSEL_OK or one of the codes below. Nothing is
//   thrown. `TSLSDK_LastErrorText` tells more.
// - Arguments. What the caller passes in stays the caller's: the library only reads it, during the call.
//   Texts are wide and end with a zero. A null pointer to an array is an empty array. A null model text, a
//   null pointer within an array, and an array with a size but without data make the call fail.
// - Results. An output slot is a pointer to a pointer of the caller. The library stores into it an object
//   that it allocates; the caller reads the object by the functions of its type and gives it back by the
//   Delete function of its type. Before anything else every slot gets an empty object, so that after a
//   failure, too, there is something to release. (Without memory even for that the slot gets null, which
//   the Delete functions and all readers accept.) What the slot held before the call is overwritten, not
//   released. Whoever does not want a result passes null for its slot.
// - Threads. Any number of threads may call at once, also with the same model and the same inputs, and read
//   one result at once.
//
// Model texts are PMML. Parsing one costs far more than scoring a row, so parsed models are kept: the last 8
// that were used, as long as their texts take at most 256 MB. A text is found again by comparing it in full,
// since the caller's memory may hold another text at the next call; that takes about a fifth of a
// millisecond for each million characters. Whoever scores single rows with large models loads them by
// `Tessel_LoadModel` and passes `Tessel_LoadedText` as model text: that text is the library's own, is
// recognised by its address, and no call reads it.
//
//     Tessel_Model* model;
//     if (Tessel_LoadModel(text, &model) == TESSEL_OK) {
//         TSLSDK_StringArray* classes;
//         const wchar_t* loaded = Tessel_LoadedText(model);
//         if (iTessel_Predict(loaded, 1, &numbers, NULL, &names, NULL, NULL, &classes) == TESSEL_OK)
//             wprintf(L"%ls\n", TSLSDK_StringArrayData(classes)[0]);
//         TSLSDK_DeleteStringArray(classes);
//     }
//     Tessel_FreeModel(model);

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include <tessel/api.h>

#ifdef __cplusplus
extern "C" {
#endif

// ---- Statuses

enum {
    TESSEL_OK = 0,
    TESSEL_UNREADABLE = 1,  // the model text is no well-formed XML, or a file is missing
    TESSEL_REFUSED = 2,     // any other error of the library: unsupported model, unknown column, bad cell ...
    TESSEL_FAILED = 3,      // any other failure, such as lack of memory
    TESSEL_SIZE_MISMATCH = 4  // sizes that do not fit together; no rows
};

// What the last status function that this thread called said when it failed; empty when it succeeded or when
// there was none. Never null. The library's; valid until the thread's next call of a status function.
TESSEL_API const wchar_t* TSLSDK_LastErrorText(void);

// ---- Arrays of the caller

typedef struct Tessel_DoubleArray {
    const double* data;  // `size` numbers; NaN is a missing value
    uint64_t size;
} Tessel_DoubleArray;

typedef struct Tessel_StringArray {
    const wchar_t* const* data;  // `size` texts, each ending with a zero; the empty text is a missing value
    uint64_t size;
} Tessel_StringArray;

// ---- Results, owned by the library until deleted. All functions accept null and take it as empty.

typedef struct TSLSDK_String TSLSDK_String;
typedef struct TSLSDK_DoubleArray TSLSDK_DoubleArray;
typedef struct TSLSDK_StringArray TSLSDK_StringArray;

// What these return points into the object and is valid until the object is deleted.
TESSEL_API const wchar_t* TSLSDK_StringText(const TSLSDK_String* string);  // ends with a zero; never null
TESSEL_API uint64_t TSLSDK_StringLength(const TSLSDK_String* string);      // units without the zero
TESSEL_API const double* TSLSDK_DoubleArrayData(const TSLSDK_DoubleArray* array);  // null when empty
TESSEL_API uint64_t TSLSDK_DoubleArraySize(const TSLSDK_DoubleArray* array);
// One text per element, none null. Null when empty. Equal texts may share their memory.
TESSEL_API const wchar_t* const* TSLSDK_StringArrayData(const TSLSDK_StringArray* array);
TESSEL_API uint64_t TSLSDK_StringArraySize(const TSLSDK_StringArray* array);

TESSEL_API void TSLSDK_DeleteString(TSLSDK_String* string);
TESSEL_API void TSLSDK_DeleteDoubleArray(TSLSDK_DoubleArray* array);
TESSEL_API void TSLSDK_DeleteStringArray(TSLSDK_StringArray* array);

// ---- Scoring

// Predicts the target of rows.
//
// modelText    PMML of a classifier, regressor or clustering.
// numRows      number of rows n. With 0 rows the call returns TESSEL_SIZE_MISMATCH.
// numbers      values of the numeric columns: n rows by p numbers, row after row.
// texts        values of the categorical columns: n rows by q texts, row after row.
// columnNames  p + q names: first those of the numeric columns, then those of the categorical ones. They are
//              the model's input columns (see Tessel_PMMLModelVarsJSON) in any order, p + q as many as the
//              model has; else, or when a size is no multiple of n, the call returns TESSEL_SIZE_MISMATCH.
// resultNumbers      receives the numeric columns of the result, n rows by as many columns, row after row.
// resultColumnNames  receives the names of the result's columns: first those of the numeric columns, then
//                    those of the categorical ones.
// resultTexts        receives the categorical columns of the result, as the numeric ones.
//
// The predictions of a classifier are one categorical column, those of a regressor one numeric column.
TESSEL_API int32_t iTessel_Predict(const wchar_t* modelText, uint64_t numRows,
                                   const Tessel_DoubleArray* numbers, const Tessel_StringArray* texts,
                                   const Tessel_StringArray* columnNames, TSLSDK_DoubleArray** resultNumbers,
                                   TSLSDK_StringArray** resultColumnNames, TSLSDK_StringArray** resultTexts);

// Transforms rows. As iTessel_Predict, with PMML of a transformation; the result is the transformed table.
TESSEL_API int32_t iTessel_Transform(const wchar_t* modelText, uint64_t numRows,
                                     const Tessel_DoubleArray* numbers, const Tessel_StringArray* texts,
                                     const Tessel_StringArray* columnNames,
                                     TSLSDK_DoubleArray** resultNumbers,
                                     TSLSDK_StringArray** resultColumnNames,
                                     TSLSDK_StringArray** resultTexts);

// The probabilities of the classes. As iTessel_Predict, with PMML of a classifier.
// probabilities  receives n rows by as many numbers as there are classes, row after row, in the order of the
//                classes that Tessel_PMMLModelVarsJSON tells.
TESSEL_API int32_t iTessel_Posteriors(const wchar_t* modelText, uint64_t numRows,
                                      const Tessel_DoubleArray* numbers, const Tessel_StringArray* texts,
                                      const Tessel_StringArray* columnNames,
                                      TSLSDK_DoubleArray** probabilities);

// Forecasts a time series.
// modelText  PMML of a time-series model.
// series     the values of the series, in the order of time. Without any the call returns
//            TESSEL_SIZE_MISMATCH.
// horizon    number of periods to forecast, at least 1.
// forecast   receives the forecasts, one per period.
TESSEL_API int32_t iTessel_Forecast(const wchar_t* modelText, const Tessel_DoubleArray* series,
                                    int32_t horizon, TSLSDK_DoubleArray** forecast);

// ---- What a model is

// Describes the model's inputs as JSON.
// modelText  PMML of any model, also of one that cannot be loaded.
// json       receives {"variables":[{"name":...,"type":...},...]}, in the model's order; the type is
//            "continuous" or "categorical".
// detailed   when not 0, these members stand in front of the variables: "modelName", "type" (the kind of
//            model), "algorithm", "targetName" (empty without a target), and "classes" (in the order of the
//            probabilities; empty unless the model is a classifier that can be loaded).
TESSEL_API int32_t Tessel_PMMLModelVarsJSON(const wchar_t* modelText, TSLSDK_String** json, int32_t detailed);

// ---- Models that stay loaded

typedef struct Tessel_Model Tessel_Model;

// Parses a model once and keeps it until Tessel_FreeModel.
// model  receives the model, or null when the call fails; may not be null.
TESSEL_API int32_t Tessel_LoadModel(const wchar_t* modelText, Tessel_Model** model);

// The library's copy of the model's text, to be passed as model text to any function, where it is recognised
// by its address. Valid until Tessel_FreeModel, and not to be written to. Null for null.
TESSEL_API const wchar_t* Tessel_LoadedText(const Tessel_Model* model);

// Accepts null. No call with the model's text may begin after this one or be running during it.
TESSEL_API void Tessel_FreeModel(Tessel_Model* model);

#ifdef __cplusplus
}
#endif
