#pragma once

#include <memory>

#include <tessel/data/data_frame_vector.h>
#include <tessel/data/interfaces.h>
#include <tessel/framework/ladon.h>
#include <tessel/framework/progress.h>

namespace Tessel {

class IEstimatable;  // private: the implementation of an estimator

/// What all estimators have in common: a handle that owns its implementation. A copy has parameters of its
/// own. Moving copies too, so that there is never a handle without implementation. Setters take any value;
/// whether it is in range is checked by `validate`, `isValid` and each fit, so that parameters can be set in
/// any order.
class TESSEL_API EstimatorHandle : public Identifiable,
                                   public DataFrameExportable,
                                   public Ladon::Exportable,
                                   public Ladon::Importable,
                                   public StringExportable,
                                   public DataFrameVectorExportable {
 public:
    ~EstimatorHandle() override;

    const WString& getName() const override;
    /// Who watches each fit from now on and may stop it; nobody by default or for an empty function. It is no
    /// parameter: `reset` leaves it and texts do not hold it. Copies of the estimator have it, too.
    void setProgressCallback(ProgressCallback callback);
    /// Every parameter back to its default.
    void reset();
    /// The values of the parameters, a row each, titled "Estimator: " and the kind of model.
    DataFrame toDataFrame() const override;
    /// That table, and one with key, value, default, type and admissible values of every parameter.
    DataFrameVector toDataFrameVector() const override;
    /// `toDataFrame` as text.
    WString toString() const override;
    /// The `Ladon` description; it holds the parameters that were set, not those at their defaults.
    WString toLadon() const override;
    using Ladon::Exportable::toLadon;
    void fromLadonString(const WString& text) override;

 protected:
    explicit EstimatorHandle(std::unique_ptr<IEstimatable> implementation);
    EstimatorHandle(const EstimatorHandle& other);
    EstimatorHandle& operator=(const EstimatorHandle& other);

    /// The implementation as the kind's or the family's own class.
    template <class Implementation>
    Implementation& as() const {
        return static_cast<Implementation&>(*implementation_);
    }

 private:
    void assignName(const WString& name) override;

    std::unique_ptr<IEstimatable> implementation_;
};

}  // namespace Tessel
