#pragma once

#include <vector>

#include <tessel/data/data_frame_vector.h>

#include "data/scaler.h"
#include "framework/portable.h"
#include "framework/schema.h"

namespace Tessel::Scaler {

inline constexpr wchar_t kModelName[] = L"Rescaling";

class IModel : public IPortableModel {
 public:
    IModel() : IPortableModel(kModelName) { setModelName(kModelName); }
    /// @throws DuplicateName, ConstraintViolation
    explicit IModel(const StringVector& columns) : IModel() { setColumns(columns); }

    /// @pre one map per column. @throws ConstraintViolation for numbers that are not finite.
    void setRescalings(std::vector<Rescaling> rescalings);
    /// @throws NumElementsMismatch, ConstraintViolation
    void setRescalings(const Vector& shifts, const Vector& scales);

    DataFrame transform(const DataFrame& table) const;
    DataFrame inverseTransform(const DataFrame& table) const;
    DataFrameVector toDataFrameVector() const;

    const ModelType& type() const override;
    web::json::value toJSONValue() const override;
    void readJSONValue(const web::json::value& value) override;

    FittedSchema schema;   // the scaled columns, which it does not scale when they are read
    InputScaling scaling;  // the same columns by name

 protected:
    void writeDataDictionary(PMML::ModelWriter& writer) const override;
    void writeElement(PMML::ModelWriter& writer) const override;
    void readElement(PMML::ModelReader& reader) override;

 private:
    using Map = std::vector<std::vector<double>> (*)(Engine::Scaler::Columns, std::span<const Rescaling>);
    DataFrame mapped(const DataFrame& table, Map map) const;
    void setColumns(const StringVector& columns);

    std::vector<Rescaling> rescalings_;  // in the order of the columns
};

/// The cells as the engine takes them.
std::vector<std::span<const double>> engineColumns(const std::vector<FeatureColumn>& columns);

}  // namespace Tessel::Scaler
