#pragma once

#include <tessel/data/vectors.h>

#include "serialization/pmml/document.h"

namespace Tessel::Scoring {

/// What a model text says of the model without loading it. Any text with a model element will do, also one of
/// a family that cannot be loaded.
struct ModelInfo {
    WString name;
    WString format;  ///< "PMML" or "JSON"
    WString kind;    ///< "classification", "regression", "clustering", "timeSeries", ...
    WString algorithm;
    StringVector variableNames;  ///< input variables, in the text's order
    StringVector variableTypes;  ///< "continuous" or "categorical", one per variable
    WString targetName;          ///< empty when there is no target

    /// @throws UnsupportedPMMLFormat and what readers of its parts throw, see PMML::translatingErrors
    static ModelInfo ofPMML(const PMML::Document& document);
    /// @throws UnsupportedJSONModel
    static ModelInfo ofJSON(const WString& text);
};

/// The two types of variables.
extern const WString kContinuous, kCategorical;

}  // namespace Tessel::Scoring
