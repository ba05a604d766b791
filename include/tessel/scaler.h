#pragma once

#include <memory>

#include <tessel/data/data_frame_vector.h>
#include <tessel/framework/capabilities.h>
#include <tessel/framework/estimator.h>
#include <tessel/framework/fitable.h>
#include <tessel/framework/json_model.h>
#include <tessel/framework/ladon.h>
#include <tessel/framework/pmml.h>

// Changing the scale of numeric columns: x -> (x - shift) * scale, with shift and scale learned from a table.
//
//   Scaler::Model scaler =
//   Scaler::Estimator().setScalingType(Scaler::ScalingType::NORMALIZATION).fit(training); DataFrame scaled =
//   scaler.transform(table);
//
// A model that was fitted on scaled inputs takes the scaling along into its PMML text by `toPMML(scaler)`.

namespace Tessel::Scaler {

class IModel;  // private

/// How shift and scale of a column come about. Missing cells are left out. The scale stays 1 where the data
/// tell none: for a constant column (for the unit norm: of zeros), and for one without any value, whose shift
/// is 0.
enum class ScalingType : int {
    STANDARDIZATION = 0,  ///< to mean 0 and standard deviation (divisor n - 1) 1
    NORMALIZATION = 1,    ///< to the range [0, 1]
    SHIFT = 2,            ///< to mean 0; the scale stays 1
    UNIT_NORM = 3         ///< to Euclidean length 1; the shift stays 0
};

/// The display name: "Standardization", "Normalization", "Shift" or "Unit Norm".
TESSEL_API WString getScalingTypeName(ScalingType type);

/// A fitted scaling of some columns of a table. Copies share what was fitted. Missing cells stay missing.
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
    /// Scales no column: to be read from a text.
    Model();
    /// Scales the columns of these names by these numbers.
    /// @throws NumElementsMismatch, DuplicateName, ConstraintViolation for an empty name and for numbers that
    /// are not finite.
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
    /// The index columns of the table that was fitted on; a PMML text does not tell them.
    StringVector getIndexColNames() const override;
    bool isScaled(const WString& column) const override;
    double getShift(const WString& column) const override;
    double getScale(const WString& column) const override;

    /// The same table with the scaled columns changed; other columns stay as they are.
    /// @throws NotAValidColName for a scaled column that the table lacks, NonNumericData for one of text,
    /// DuplicateName when the table has two of one.
    DataFrame transform(const DataFrame& table) const override;
    /// The way back: x -> x / scale + shift; a scale of 0 gives the shift.
    DataFrame inverseTransform(const DataFrame& table) const;

    /// Tables "Model: Rescaling" with the number of columns, and "Scaling" with a row per column: "Shift",
    /// "Scale".
    DataFrameVector toDataFrameVector() const override;
    WString toString() const override;

    using JSONModel::Exportable::toJSON;
    using Ladon::Exportable::toLadon;
    using PMML::Exportable::toPMML;
    WString toJSON() const override;
    /// A `TransformationModel` with a `DerivedField` per column. Its two points tell no shift so large that
    /// adding 1 does not change it (beyond 9e15). @throws ConstraintViolation
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

/// Learns the scaling of columns from a table.
class TESSEL_API Estimator : public EstimatorHandle,
                             public Unsupervised::Fitable<Model>,
                             public Transformation::Fitable<Model> {
 public:
    Estimator();

    /// Default STANDARDIZATION.
    Estimator& setScalingType(ScalingType type);
    ScalingType getScalingType() const;
    /// The columns to scale, in the order of the model. Default: none listed, which means all numeric columns
    /// that are not index columns.
    Estimator& setColumns(const StringVector& names);
    const StringVector& getColumns() const;

    /// Fits on a table of one row or more; columns that are not scaled may hold anything.
    /// @throws ConstraintViolation for an unknown scaling type and for infinite values, TooFewNumRows for a
    /// table without rows, TooFewNumColumns for one without numeric columns; NotAValidColName, DuplicateName
    /// and NonNumericData for listed columns.
    Model fit(const DataFrame& table) const override;
    /// The same table with its columns scaled.
    DataFrame fitTransform(const DataFrame& table) const override;
    /// A table of the one column.
    DataFrame fitTransform(const DataFrameColumn& column) const override;
};

}  // namespace Tessel::Scaler
