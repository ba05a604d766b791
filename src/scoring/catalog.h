#pragma once

#include <functional>
#include <memory>
#include <span>

#include <tessel/data/data_frame_vector.h>
#include <tessel/framework/capabilities.h>
#include <tessel/framework/supervised.h>

#include "framework/portable.h"

// The one table of everything that a model text can hold. Choosing a model by PMML element, algorithm and
// function, choosing it by the "type" and "algorithm" of JSON and `Ladon`, and telling known elements from
// unknown ones all read it. A family joins by one row.

namespace Tessel::Scoring {

/// A model that was read, by what it can do; null where it cannot.
struct Loaded {
    std::shared_ptr<IPortableModel> implementation;
    std::shared_ptr<const DataFrameVectorExportable> reporter;
    std::shared_ptr<const Supervised::Scorable> scorer;
    std::shared_ptr<Supervised::Modelable> learner;
    std::shared_ptr<Supervised::Classification::Modelable> classifier;
    std::shared_ptr<const Forecastable> forecaster;
    std::shared_ptr<const Transformable> transformer;
};

/// Which facades load a kind of model.
enum class Audience { PREDICTOR, FORECASTER, TRANSFORMER, NOBODY };

struct CatalogRow {
    Audience audience;
    ModelType type;          ///< `pmmlElement` is empty for what has JSON texts only
    bool isAlgorithmNeeded;  ///< PMML: whether `algorithmName` must be that of the type
    bool isFunctionNeeded;   ///< PMML: whether `functionName` must be the kind of the type
    /// Null for a family that this version cannot read.
    std::function<std::shared_ptr<IPortableModel>()> makeBlank;
    std::function<Loaded(const std::shared_ptr<IPortableModel>&)> wrap;
};

std::span<const CatalogRow> catalog();

/// Whether any family writes this PMML element.
bool isModelElement(WStringView element);

/// @throws UnsupportedPMMLFormat when there is none, or none that can be read.
const CatalogRow& rowOfPMML(Audience audience, WStringView element, WStringView algorithm,
                            WStringView function);
/// @throws UnsupportedJSONModel
const CatalogRow& rowOfJSON(Audience audience, WStringView kind, WStringView algorithm);

}  // namespace Tessel::Scoring
