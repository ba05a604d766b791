#pragma once

#include <memory>

#include <tessel/data/data_frame_vector.h>
#include <tessel/framework/capabilities.h>
#include <tessel/framework/json_model.h>
#include <tessel/framework/ladon.h>
#include <tessel/framework/pmml.h>

// Changing the scale of numeric columns: x -> (x - shift) * scale, with shift and scale learned from a table.

namespace Tessel::Scaler {

class IModel;  // private

/// How shift and scale of a column come about. Missing cells are left out; a column without spread (constant,
/// or without any value) keeps the scale 1.
enum class ScalingType : int {
    STANDARDIZATION = 0,  ///< to mean 0 and standard deviation (divisor n - 1) 1
    NORMALIZATION = 1,    ///< to the range [0, 1]
    SHIFT = 2,            ///< to mean 0; the scale stays 1
    UNIT_NORM = 3         ///< to Euclidean length 1; the shift stays 0
};

/// The display name: "Standardization", "Normalization", "Shift" or "Unit Norm".
TESSEL_API WString getScalingTypeName(ScalingType type);

/// A fitted scaling of some columns of a table. Copies share what was fitted.
class TESSEL_API Model : public Identifiable,
                         public ModelNameIdentifiable,
                         public Transformable,
                         public PMML::ColumnScaling,
                         public DataFrameVectorExportable,
                         public JSONModel::Exportable,
                         public JSONModel::Importable,
                         public PMML::Exportable,
                         public PMML::Importable,
                         public Ladon::Exportable,
                         public Ladon::Importable,
                         public StringExportable {
 public:
    /// Scales the columns of these names by these numbers.
    /// @throws NumElementsMismatch, DuplicateName, ConstraintViolation for numbers that are not finite.
    Model(const StringVector& columns, const Vector& shifts, const Vector& scales);
    explicit Model(std::shared_ptr<IModel> implementation);
    Model(const Model&);
    Model& operator=(const Model&);
    ~Model() override;

    const WString& getName() const override;
    Model& setName(const WString& name);
    const WString& getModelName() const override;
    Model& setModelName(const WString& modelName);

    /// The scaled columns, in the order of the fit.
    StringVector getColNames() const override;
    StringVector getIndexColNames() const override;
    bool isScaled(const WString& column) const override;
    double getShift(const WString& column) const override;
    double getScale(const WString& column) const override;

    /// The same table with the scaled columns changed; other columns stay as they are.
    /// @throws NotAValidColName for a scaled column that the table lacks, NonNumericData for one of text.
    DataFrame transform(const DataFrame& table) const override;
    /// The way back: x -> x / scale + shift; a scale of 0 gives the shift.
    DataFrame inverseTransform(const DataFrame& table) const;

    /// "Model: Rescaling" with the number of columns, and "Scaling" with a row per column: "Shift", "Scale".
    DataFrameVector toDataFrameVector() const override;
    WString toString() const override;

    using JSONModel::Exportable::toJSON;
    using Ladon::Exportable::toLadon;
    using PMML::Exportable::toPMML;
    WString toJSON() const override;
    WString toPMML() const override;
    /// The scaling preceded by another one cannot be written. @throws ConstraintViolation
    WString toPMML(const PMML::ColumnScaling& scaler) const override;
    WString toLadon() const override;
    void fromJSONString(const WString& text) override;
    void fromPMMLString(const WString& text) override;
    void fromLadonString(const WString& text) override;

 private:
    void assignName(const WString& name) override;
    void assignModelName(const WString& modelName) override;

    std::shared_ptr<IModel> implementation_;
};

}  // namespace Tessel::Scaler
