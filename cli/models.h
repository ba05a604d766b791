#pragma once

#include <optional>
#include <string>

#include "data.h"

// Model texts: loading whatever they are, and writing them as one of three formats.

namespace Tessel::Cli {

/// A loaded model: a classifier or any other model that predicts.
using LoadedModel = Scoring::Classifier;

/// @param path  a file or "-". @throws Failure
LoadedModel loadModel(const std::string& path);
/// @param source  where the text comes from, for messages. @throws Failure
LoadedModel modelOf(const std::string& text, const std::string& source);

/// Changes how a classifier decides between two classes, where something is given. @throws what models throw
void setClassRule(LoadedModel& model, const std::string& successClass, const std::optional<double>& cutOff);

/// The format of a model text: `as` when given, else by the ending of the path, else "pmml".
/// @throws Failure for an ending that tells no format
std::string modelFormat(const std::string& path, const std::string& as);

/// The text of a fitted or loaded model. @throws Failure for what the format cannot hold
template <class Model>
WString modelText(const Model& model, const std::string& format) {
    if (format == "json") return model.toJSON();
    if (format == "ladon") return model.toLadon();
    return model.toPMML();
}

/// The table with the columns that the model needs, read with the types that it needs. @throws Failure
DataFrame readFor(const LoadedModel& model, const DataSource& source, const std::string& name);

}  // namespace Tessel::Cli
