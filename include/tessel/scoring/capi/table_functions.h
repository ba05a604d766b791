#pragma once

#include <cstdint>

#include <tessel/data/data_frame.h>

// Scoring of stored models by plain functions that take and return tables and never throw an error of the
// SDK.
//
// Each returns a status: 0 for success; 1 when the model text is no well-formed XML or a file is missing; 4
// when sizes do not fit together (IncompatibleSizes); 2 for any other error of the SDK; 3 for any other
// standard exception. `TSLSDK_LastErrorText` of <tessel/scoring/capi/tessel_c.h> tells the thread's last
// failure. Only what is no std::exception passes through.
//
// Outputs are assigned on success only; after a failure they are as they were.
//
// The model text is PMML, ends with a zero, and may not be null (status 2). The last models are kept parsed;
// tessel_c.h tells how, and how to make repeated calls with large models cheap.

/// Predictions by a classifier, regressor or clustering. Columns are found by name, others are ignored.
TESSEL_API std::int32_t tesselPredict(const wchar_t* modelText, const Tessel::DataFrame& input,
                                      Tessel::DataFrame& output);
/// Posterior probabilities by a classifier: a column per class.
TESSEL_API std::int32_t tesselPosteriors(const wchar_t* modelText, const Tessel::DataFrame& input,
                                         Tessel::DataFrame& output);
/// The table as a transformation changes it.
TESSEL_API std::int32_t tesselTransform(const wchar_t* modelText, const Tessel::DataFrame& input,
                                        Tessel::DataFrame& output);

// Time series: the input holds one numeric column that is not an index column (see Convert::toTimeSeries).

/// The fitted values of the input series.
TESSEL_API std::int32_t tesselPredictTS(const wchar_t* modelText, const Tessel::DataFrame& input,
                                        Tessel::DataFrame& output);
/// The forecast of one period.
TESSEL_API std::int32_t tesselForecast(const wchar_t* modelText, const Tessel::DataFrame& input,
                                       Tessel::DataFrame& output);
/// The forecast of `horizon` periods, at least 1.
TESSEL_API std::int32_t tesselForecast(const wchar_t* modelText, std::int32_t horizon,
                                       const Tessel::DataFrame& input, Tessel::DataFrame& output);

/// The model's input columns in the model's order.
/// @param names  receives their names
/// @param types  receives "continuous" or "categorical" for each; may be null
TESSEL_API std::int32_t tesselPMMLColumnInfo(const wchar_t* modelText, Tessel::StringVector& names,
                                             Tessel::StringVector* types);
/// The model's name as its maker gave it; empty when the document has none.
TESSEL_API std::int32_t tesselPMMLModelName(const wchar_t* modelText, Tessel::WString& name);
/// The kind of model as the document says it: "classification", "regression", "clustering", ...
TESSEL_API std::int32_t tesselPMMLModelType(const wchar_t* modelText, Tessel::WString& type);
